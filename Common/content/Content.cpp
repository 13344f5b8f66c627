#include "Content.h"

#include <cstring>

SNodeTM::SNodeTM()
    : pos{0.0f, 0.0f, 0.0f}, rot{0.0f, 0.0f, 0.0f, 1.0f}, scale{1.0f, 1.0f, 1.0f},
      stretch{0.0f, 0.0f, 0.0f, 0.0f}, matrix{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}
{
}

bool SNodeTM::operator==(const SNodeTM& o) const
{
    return std::memcmp(pos, o.pos, sizeof pos) == 0 && std::memcmp(rot, o.rot, sizeof rot) == 0 &&
           std::memcmp(scale, o.scale, sizeof scale) == 0 && std::memcmp(stretch, o.stretch, sizeof stretch) == 0 &&
           std::memcmp(matrix, o.matrix, sizeof matrix) == 0;
}

int SContent::AddNode(const CNode& node)
{
    nodes.push_back(node);
    const int index = static_cast<int>(nodes.size() - 1);
    nodes.back().index = index;
    return index;
}
