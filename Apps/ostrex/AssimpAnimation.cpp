// The node tree and animation sampling of the Assimp scene filler.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <unordered_set>

#include "AssimpInternal.h"
#include "Log.h"

QMXTMATRIXf AssimpRowMatrix(const aiMatrix4x4& m)
{
    const ai_real* rows[4] = {m[0], m[1], m[2], m[3]};
    QMXTMATRIXf out;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            out(r, c) = static_cast<float>(rows[c][r]);
    return out;
}

aiMatrix4x4 AssimpCompose(const aiVector3D& scaling, const aiQuaternion& rotation, const aiVector3D& position)
{
    const aiMatrix3x3 r = rotation.GetMatrix();
    return aiMatrix4x4(r.a1 * scaling.x, r.a2 * scaling.y, r.a3 * scaling.z, position.x, r.b1 * scaling.x,
                       r.b2 * scaling.y, r.b3 * scaling.z, position.y, r.c1 * scaling.x, r.c2 * scaling.y,
                       r.c3 * scaling.z, position.z, 0, 0, 0, 1);
}

bool CAssimpGraph::Build(const aiScene& scene, std::string& error)
{
    m_nodes.clear();
    m_parents.clear();
    m_children.clear();
    m_byName.clear();
    if (!scene.mRootNode)
    {
        error = "the file holds no scene (no root node)";
        return false;
    }
    // Depth-first with an explicit stack, children in their stored order.
    std::unordered_set<const aiNode*> seen;
    std::vector<std::pair<const aiNode*, int>> stack = {{scene.mRootNode, -1}};
    while (!stack.empty())
    {
        const auto [node, parent] = stack.back();
        stack.pop_back();
        if (!seen.insert(node).second)
        {
            error = "the node tree is not a tree (node '" + std::string(node->mName.C_Str()) +
                    "' is reached twice)";
            return false;
        }
        const int index = static_cast<int>(m_nodes.size());
        m_nodes.push_back(node);
        m_parents.push_back(parent);
        m_children.emplace_back();
        if (parent >= 0)
            m_children[parent].push_back(index);
        m_byName.emplace(node->mName.C_Str(), index); // keeps the first of equal names
        for (unsigned i = node->mNumChildren; i-- > 0;)
            if (node->mChildren && node->mChildren[i])
                stack.push_back({node->mChildren[i], index});
    }
    return true;
}

int CAssimpGraph::Find(const std::string& name) const
{
    const auto it = m_byName.find(name);
    return it == m_byName.end() ? -1 : it->second;
}

int ChooseAssimpAnimation(const aiScene& scene, const std::string& request, std::string& error)
{
    if (request.empty())
        return scene.mNumAnimations > 0 && scene.mAnimations[0] ? 0 : -1;
    for (unsigned i = 0; i < scene.mNumAnimations; ++i)
        if (scene.mAnimations[i] && request == scene.mAnimations[i]->mName.C_Str())
            return static_cast<int>(i);
    const bool digits =
        std::all_of(request.begin(), request.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (digits && request.size() < 10)
    {
        const long index = std::atol(request.c_str());
        if (index < static_cast<long>(scene.mNumAnimations) && scene.mAnimations[index])
            return static_cast<int>(index);
    }
    error = "no animation '" + request + "' (the file has " + std::to_string(scene.mNumAnimations) +
            (scene.mNumAnimations == 1 ? " animation" : " animations");
    for (unsigned i = 0; i < scene.mNumAnimations && i < 10; ++i)
        error += std::string(i == 0 ? ": " : ", ") + std::to_string(i) + " '" +
                 (scene.mAnimations[i] ? scene.mAnimations[i]->mName.C_Str() : "") + "'";
    error += ")";
    return -2;
}

int AssimpAnimationRate(const aiAnimation& anim)
{
    if (anim.mTicksPerSecond >= 1.0 && anim.mTicksPerSecond <= 240.0)
        return static_cast<int>(std::lround(anim.mTicksPerSecond));
    return 30;
}

namespace
{
// Index of the first key later than t (keys in time order), so keys[i - 1] <= t < keys[i].
template <class Key> unsigned KeyAfter(const Key* keys, unsigned count, double t)
{
    const Key* it =
        std::upper_bound(keys, keys + count, t, [](double v, const Key& k) { return v < k.mTime; });
    return static_cast<unsigned>(it - keys);
}

template <class Key> double Blend(const Key& a, const Key& b, double t)
{
    const double span = b.mTime - a.mTime;
    return span > 0.0 ? (t - a.mTime) / span : 0.0;
}

template <class Key> double LatestKey(const Key* keys, unsigned count, double latest)
{
    for (unsigned i = 0; keys && i < count; ++i)
        latest = std::max(latest, keys[i].mTime);
    return latest;
}

// The largest key time of an animation: its duration, or a later key when the file says less.
double LastTick(const aiAnimation& anim)
{
    double last = std::isfinite(anim.mDuration) && anim.mDuration > 0.0 ? anim.mDuration : 0.0;
    for (unsigned c = 0; c < anim.mNumChannels; ++c)
    {
        const aiNodeAnim* ch = anim.mChannels[c];
        if (!ch)
            continue;
        last = LatestKey(ch->mPositionKeys, ch->mNumPositionKeys, last);
        last = LatestKey(ch->mRotationKeys, ch->mNumRotationKeys, last);
        last = LatestKey(ch->mScalingKeys, ch->mNumScalingKeys, last);
    }
    return std::isfinite(last) ? last : 0.0;
}

// The pair of keys around t: both the same key before the first, after the last, and where t is
// the key's own time up to tolerance (key times stored in float precision then give the key's
// value exactly, so equal poses give equal bytes). blend is the weight of the second key.
template <class Key>
void Around(const Key* keys, unsigned count, double t, double tolerance, const Key*& a, const Key*& b, double& blend)
{
    const unsigned after = KeyAfter(keys, count, t);
    blend = 0.0;
    if (after == 0 || after == count)
    {
        a = b = &keys[after == 0 ? 0 : count - 1];
        return;
    }
    a = &keys[after - 1];
    b = &keys[after];
    if (t - a->mTime <= tolerance)
        b = a;
    else if (b->mTime - t <= tolerance)
        a = b;
    else
        blend = Blend(*a, *b, t);
}

// The value a fraction f of the way from a to b: linear for vectors, spherical for rotations,
// computed in double and rounded once.
aiVector3D Between(const aiVector3D& a, const aiVector3D& b, double f)
{
    auto lerp = [f](ai_real x, ai_real y) { return static_cast<ai_real>(x + (double(y) - double(x)) * f); };
    return {lerp(a.x, b.x), lerp(a.y, b.y), lerp(a.z, b.z)};
}

aiQuaternion Between(const aiQuaternion& a, const aiQuaternion& b, double f)
{
    const aiQuaterniont<double> qa(a.w, a.x, a.y, a.z);
    const aiQuaterniont<double> qb(b.w, b.x, b.y, b.z);
    aiQuaterniont<double> out;
    aiQuaterniont<double>::Interpolate(out, qa, qb, f);
    out.Normalize();
    return aiQuaternion(static_cast<ai_real>(out.w), static_cast<ai_real>(out.x), static_cast<ai_real>(out.y),
                        static_cast<ai_real>(out.z));
}
} // namespace

template <class Key>
AssimpKeyValue<Key> SampleAssimpKeys(const Key* keys, unsigned count, double t, const AssimpKeyValue<Key>& fallback,
                                     double tolerance)
{
    if (!keys || count == 0)
        return fallback;
    const Key *a, *b;
    double f;
    Around(keys, count, t, tolerance, a, b, f);
    return a == b ? a->mValue : Between(a->mValue, b->mValue, f);
}

template aiVector3D SampleAssimpKeys(const aiVectorKey*, unsigned, double, const aiVector3D&, double);
template aiQuaternion SampleAssimpKeys(const aiQuatKey*, unsigned, double, const aiQuaternion&, double);

namespace
{
template <class Key> std::vector<Key> InTimeOrder(const Key* keys, unsigned count, bool& reordered)
{
    std::vector<Key> out(keys, keys + (keys ? count : 0));
    auto earlier = [](const Key& a, const Key& b) { return a.mTime < b.mTime; };
    if (!std::is_sorted(out.begin(), out.end(), earlier))
    {
        std::stable_sort(out.begin(), out.end(), earlier);
        reordered = true;
    }
    return out;
}
} // namespace

bool CAssimpSampler::Init(const CAssimpGraph& graph, const aiAnimation* anim, int fps, std::string& error)
{
    m_pGraph = &graph;
    m_channelOf.assign(graph.Count(), -1);
    m_channelKeys.clear();
    m_iFrames = 1;
    m_iFps = fps > 0 ? fps : 30;
    if (!anim)
        return true;

    int animated = 0;
    for (unsigned c = 0; c < anim->mNumChannels; ++c)
    {
        const aiNodeAnim* ch = anim->mChannels[c];
        const int node = ch ? graph.Find(ch->mNodeName.C_Str()) : -1;
        if (node < 0 || m_channelOf[node] >= 0) // the first channel of a node wins
            continue;
        bool reordered = false;
        SChannel keys;
        keys.positions = InTimeOrder(ch->mPositionKeys, ch->mNumPositionKeys, reordered);
        keys.rotations = InTimeOrder(ch->mRotationKeys, ch->mNumRotationKeys, reordered);
        keys.scalings = InTimeOrder(ch->mScalingKeys, ch->mNumScalingKeys, reordered);
        if (reordered)
            Log(eLogWarning,
                "Warning: The animation keys of '%s' are out of time order; they are used sorted.",
                ch->mNodeName.C_Str());
        m_channelOf[node] = static_cast<int>(m_channelKeys.size());
        m_channelKeys.push_back(std::move(keys));
        ++animated;
    }
    m_iFps = fps > 0 ? fps : AssimpAnimationRate(*anim);
    // Ticks a second: 0 means the file gives none; 25 is the importer's customary default.
    const double tps =
        anim->mTicksPerSecond > 0.0 && std::isfinite(anim->mTicksPerSecond) ? anim->mTicksPerSecond : 25.0;
    m_dTicksPerFrame = tps / m_iFps;
    m_dLastTick = LastTick(*anim);
    const double frames = std::floor(m_dLastTick / m_dTicksPerFrame + 0.5) + 1.0;
    const double samples = frames * std::max(animated, 1);
    if (!(frames <= 1e7) || samples > static_cast<double>(kMaxSamples))
    {
        error =
            "the animation '" + std::string(anim->mName.C_Str()) +
            "' is too long to sample: " + std::to_string(static_cast<long long>(std::fmin(frames, 1e15))) +
            " frames at " + std::to_string(m_iFps) + " frames per second for " + std::to_string(animated) +
            " animated nodes (at most " + std::to_string(kMaxSamples) + " node-frames); choose a lower --fps";
        return false;
    }
    m_iFrames = static_cast<int>(frames);
    return true;
}

double CAssimpSampler::TimeOfFrame(int frame) const
{
    return std::min(frame * m_dTicksPerFrame, m_dLastTick);
}

aiMatrix4x4 CAssimpSampler::Local(int node, int frame) const
{
    const aiNode& n = m_pGraph->Node(node);
    if (m_channelOf[node] < 0)
        return n.mTransformation;
    const SChannel& ch = m_channelKeys[m_channelOf[node]];
    aiVector3D scaling, position;
    aiQuaternion rotation;
    n.mTransformation.Decompose(scaling, rotation, position);
    const double t = TimeOfFrame(frame);
    // Far below a frame and far above the float rounding of a stored key time.
    const double tolerance = std::min(1e-6 * std::max(std::fabs(t), m_dTicksPerFrame), 0.25 * m_dTicksPerFrame);
    auto sample = [t, tolerance](const auto& keys, const auto& fallback) {
        return SampleAssimpKeys(keys.data(), static_cast<unsigned>(keys.size()), t, fallback, tolerance);
    };
    position = sample(ch.positions, position);
    rotation = sample(ch.rotations, rotation);
    scaling = sample(ch.scalings, scaling);
    return AssimpCompose(scaling, rotation, position);
}

void CAssimpSampler::Globals(int frame, std::vector<aiMatrix4x4>& out) const
{
    const int count = m_pGraph->Count();
    out.resize(count);
    for (int i = 0; i < count; ++i) // parents come before their children
    {
        const int parent = m_pGraph->Parent(i);
        out[i] = parent >= 0 ? out[parent] * Local(i, frame) : Local(i, frame);
    }
}
