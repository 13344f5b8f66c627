#include "BoneInfluences.h"

void CInfluenceLimiter::Add(int bone, float weight)
{
    if (!(weight > 0.0f))
        return;
    std::vector<CBoneWeight>& held = m_vertex.weights;
    if (held.size() < eMaxInfluences)
    {
        held.push_back({bone, weight});
        m_fTotal += weight;
        return;
    }
    m_bDropped = true;
    size_t smallest = 0;
    float smallestWeight = held[0].weight;
    for (size_t i = 1; i < held.size(); ++i)
    {
        if (held[i].weight < smallestWeight)
        {
            smallestWeight = held[i].weight;
            smallest = i;
        }
    }
    if (weight > smallestWeight)
    {
        held[smallest] = {bone, weight};
        m_fTotal += weight - smallestWeight;
    }
}

SBonedVtx CInfluenceLimiter::Finish()
{
    SBonedVtx out;
    out.weights.swap(m_vertex.weights);
    if ((m_fTotal < 0.99999f || m_fTotal > 1.00001f) && m_fTotal > 0.0f)
        for (CBoneWeight& w : out.weights)
            w.weight /= m_fTotal;
    m_fTotal = 0.0f;
    return out;
}
