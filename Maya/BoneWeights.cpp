#include "BoneWeights.h"

bool PickBoneWeights(const double* weights, unsigned int count, const std::vector<int>& influenceNodes, SBonedVtx& out)
{
    out.weights.clear();
    bool tooMany = false;
    float total = 0.0f;
    for (unsigned int j = 0; j < count && j < influenceNodes.size(); ++j)
    {
        const float w = static_cast<float>(weights[j]);
        if (!(w > 0.0f) || influenceNodes[j] == -1)
            continue;
        if (out.weights.size() < static_cast<size_t>(kMaxBoneInfluences))
        {
            out.weights.push_back(CBoneWeight{influenceNodes[j], w});
            total += w;
            continue;
        }
        tooMany = true;
        size_t smallest = 0;
        float bound = 999.9f;
        for (size_t k = 0; k < out.weights.size(); ++k)
            if (out.weights[k].weight < bound)
            {
                bound = out.weights[k].weight;
                smallest = k;
            }
        if (w > bound)
        {
            out.weights[smallest] = CBoneWeight{influenceNodes[j], w};
            total += w - bound;
        }
    }
    if (total < 0.99999f || total > 1.00001f)
        for (CBoneWeight& b : out.weights)
            b.weight /= total;
    return tooMany;
}
