// The influences one skinned vertex keeps: at most kMaxBoneInfluences, each a joint's node index and
// its weight, renormalised to sum 1.
//
// Influences are taken in Maya's order; a weight that is not positive, or whose influence has no
// exported joint (-1 in the map), is ignored. Once four are held, a larger weight replaces the
// smallest held one (the first of equal ones) and a smaller one is dropped; either way the vertex
// counts as having too many influences. When the total lies outside 1 +- 0.00001 the held weights
// are divided by it (an empty list stays empty). Cost: linear in the influences.
#pragma once

#include <vector>

#include "Content.h"

const int kMaxBoneInfluences = 4;

// Returns true when some influence was dropped or replaced.
bool PickBoneWeights(const double* weights, unsigned int count, const std::vector<int>& influenceNodes, SBonedVtx& out);
