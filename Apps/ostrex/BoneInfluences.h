// Limiting a vertex's bone influences to the four the scene model can carry.
//
// Influences are offered one at a time in influence order. Weights that are not positive are
// ignored. While fewer than four are held the influence is appended; otherwise the held influence
// with the smallest weight (the first of equal ones) is replaced when the new weight is larger, and
// the new one dropped when not; either way Dropped() turns true. Finish divides the weights by their
// total unless that lies within 1e-5 of 1. Cost: constant per influence.
#pragma once

#include "Content.h"
#include "QMXTVertexData.h"

class CInfluenceLimiter
{
  public:
    enum
    {
        eMaxInfluences = eQMXTMaxBonesPerVertex
    };

    void Add(int bone, float weight);
    // The held influences, renormalised; the limiter starts afresh for the next vertex.
    SBonedVtx Finish();
    // True once any influence was dropped since construction (kept across vertices).
    bool Dropped() const { return m_bDropped; }

  private:
    SBonedVtx m_vertex;
    float m_fTotal = 0.0f;
    bool m_bDropped = false;
};
