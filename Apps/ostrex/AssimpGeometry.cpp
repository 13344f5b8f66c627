// Meshes and skins of the Assimp scene filler: indexed triangle lists, smooth normals where the
// file has none, and skinned meshes deformed at frame 0.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <unordered_map>

#include "AssimpInternal.h"
#include "BoneInfluences.h"
#include "Log.h"

namespace
{

bool IsFinite(const aiVector3D& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool IsUsableNormal(const aiVector3D& n)
{
    return IsFinite(n) && n.SquareLength() > 1e-24f;
}

QMXTVECTOR3f ToVec(const aiVector3D& v)
{
    return {v.x, v.y, v.z};
}

aiVector3D Normalised(const aiVector3D& v)
{
    const ai_real len = v.Length();
    return len > 0 ? v / len : v;
}

// The vertex indices of a triangle; null for points and lines (and for polygons, which the
// importer has already split into triangles) and when an index is out of range.
const unsigned* TriangleOf(const aiFace& face, unsigned vertexCount)
{
    if (face.mNumIndices != 3 || !face.mIndices)
        return nullptr;
    for (unsigned i = 0; i < 3; ++i)
        if (face.mIndices[i] >= vertexCount)
            return nullptr;
    return face.mIndices;
}

// The bit pattern of a position, for grouping equal positions (a strict order even with NaN).
std::array<uint32_t, 3> PositionBits(const aiVector3D& v)
{
    std::array<uint32_t, 3> bits;
    std::memcpy(bits.data(), &v.x, sizeof(float));
    std::memcpy(bits.data() + 1, &v.y, sizeof(float));
    std::memcpy(bits.data() + 2, &v.z, sizeof(float));
    return bits;
}

// Smooth normals: area-weighted face normals summed over every vertex at the same place. Vertices
// are grouped by sorting them by position. Cost: O(v log v + corners).
std::vector<aiVector3D> SmoothNormals(const aiMesh& mesh)
{
    const unsigned count = mesh.mNumVertices;
    std::vector<aiVector3D> sums(count, aiVector3D(0, 0, 0));
    for (unsigned f = 0; f < mesh.mNumFaces; ++f)
    {
        const unsigned* tri = TriangleOf(mesh.mFaces[f], count);
        if (!tri)
            continue;
        const aiVector3D& a = mesh.mVertices[tri[0]];
        const aiVector3D n = (mesh.mVertices[tri[1]] - a) ^ (mesh.mVertices[tri[2]] - a);
        if (IsFinite(n))
            for (int c = 0; c < 3; ++c)
                sums[tri[c]] += n;
    }
    std::vector<std::pair<std::array<uint32_t, 3>, unsigned>> order(count);
    for (unsigned v = 0; v < count; ++v)
        order[v] = {PositionBits(mesh.mVertices[v]), v};
    std::sort(order.begin(), order.end());
    std::vector<aiVector3D> normals(count, aiVector3D(0, 0, 1));
    for (size_t begin = 0, end = 0; begin < order.size(); begin = end)
    {
        aiVector3D total(0, 0, 0);
        for (end = begin; end < order.size() && order[end].first == order[begin].first; ++end)
            total += sums[order[end].second];
        if (IsUsableNormal(total))
            for (size_t i = begin; i < end; ++i)
                normals[order[i].second] = Normalised(total);
    }
    return normals;
}

// Compacted UV channels of a mesh: the filled ones among the first eight.
std::vector<unsigned> UsedChannels(const aiMesh& mesh)
{
    std::vector<unsigned> used;
    for (unsigned k = 0; k < AI_MAX_NUMBER_OF_TEXTURECOORDS && used.size() < SGeomData::eMaxMappingChannels; ++k)
        if (mesh.mTextureCoords[k])
            used.push_back(k);
    return used;
}

// Per-vertex data of one mesh as it goes into the node: positions and normals in the node's space,
// and for a skin the influences (bones as graph node indices).
struct SMeshVertices
{
    std::vector<aiVector3D> positions;
    std::vector<aiVector3D> normals;
    std::vector<SBonedVtx> influences; // empty when the mesh is not skinned
};

// Influences of every vertex in bone order, limited to four. False when a bone names no node.
bool GatherInfluences(const aiMesh& mesh, const CAssimpGraph& graph, CInfluenceLimiter& limiter,
                      std::vector<SBonedVtx>& out)
{
    struct SRaw
    {
        int bone;
        float weight;
    };
    std::vector<std::vector<SRaw>> raw(mesh.mNumVertices);
    for (unsigned b = 0; b < mesh.mNumBones; ++b)
    {
        const aiBone* bone = mesh.mBones[b];
        if (!bone)
            continue;
        const int node = graph.Find(bone->mName.C_Str());
        if (node < 0)
        {
            Log(eLogError, "Error: Joint %s could not be found for skinning.", bone->mName.C_Str());
            return false;
        }
        for (unsigned w = 0; bone->mWeights && w < bone->mNumWeights; ++w)
            if (bone->mWeights[w].mVertexId < mesh.mNumVertices)
                raw[bone->mWeights[w].mVertexId].push_back({node, bone->mWeights[w].mWeight});
    }
    out.resize(mesh.mNumVertices);
    for (unsigned v = 0; v < mesh.mNumVertices; ++v)
    {
        for (const SRaw& r : raw[v])
            limiter.Add(r.bone, r.weight);
        out[v] = limiter.Finish();
    }
    return true;
}

// The skinning matrix of each bone of the mesh at frame 0: global(bone) x offset, by graph node.
std::unordered_map<int, aiMatrix4x4> BoneMatrices(const aiMesh& mesh, const CAssimpGraph& graph,
                                                  const std::vector<aiMatrix4x4>& globals0)
{
    std::unordered_map<int, aiMatrix4x4> matrices;
    for (unsigned b = 0; b < mesh.mNumBones; ++b)
    {
        const aiBone* bone = mesh.mBones[b];
        const int node = bone ? graph.Find(bone->mName.C_Str()) : -1;
        if (node >= 0 && !matrices.count(node))
            matrices.emplace(node, globals0[node] * bone->mOffsetMatrix);
    }
    return matrices;
}

aiMatrix3x3 NormalMatrix(const aiMatrix4x4& m)
{
    aiMatrix3x3 n(m);
    if (std::fabs(n.Determinant()) > 1e-30f)
        n.Inverse().Transpose();
    return n;
}

// Positions and normals of a mesh in the node's space; a skinned mesh deformed at frame 0. A vertex
// without influences follows the node itself (graph index nodeIndex).
void MeshVertices(const aiMesh& mesh, int nodeIndex, const CAssimpGraph& graph,
                  const std::vector<aiMatrix4x4>& globals0, bool normals, CInfluenceLimiter& limiter,
                  SMeshVertices& out)
{
    out.positions.assign(mesh.mVertices, mesh.mVertices + mesh.mNumVertices);
    out.normals.clear();
    if (normals)
        out.normals = mesh.mNormals ? std::vector<aiVector3D>(mesh.mNormals, mesh.mNormals + mesh.mNumVertices)
                                    : SmoothNormals(mesh);
    out.influences.clear();
    if (mesh.mNumBones == 0 || !mesh.mBones || !GatherInfluences(mesh, graph, limiter, out.influences))
        return;

    for (SBonedVtx& influence : out.influences)
        if (influence.weights.empty())
            influence.weights.push_back({nodeIndex, 1.0f});
    const aiMatrix4x4& node0 = globals0[nodeIndex];
    if (!(std::fabs(node0.Determinant()) > 1e-30f))
    {
        Log(eLogWarning,
            "Warning (%s): The node of a skinned mesh has a singular transform; the mesh keeps its bind "
            "pose.",
            graph.Node(nodeIndex).mName.C_Str());
        return;
    }
    const aiMatrix4x4 toNode = aiMatrix4x4(node0).Inverse();
    const aiMatrix3x3 normalToNode = aiMatrix3x3(node0).Transpose();
    const std::unordered_map<int, aiMatrix4x4> bones = BoneMatrices(mesh, graph, globals0);
    for (unsigned v = 0; v < mesh.mNumVertices; ++v)
    {
        aiMatrix4x4 blend = aiMatrix4x4() * 0.0f;
        for (const CBoneWeight& w : out.influences[v].weights)
        {
            const auto bone = bones.find(w.bone);
            const aiMatrix4x4& m = bone == bones.end() ? node0 : bone->second; // the node itself
            blend = blend + m * w.weight;
        }
        out.positions[v] = toNode * (blend * out.positions[v]);
        if (normals)
            out.normals[v] = Normalised(normalToNode * (NormalMatrix(blend) * out.normals[v]));
    }
}

// The unit normal of a triangle, (0, 0, 1) for a degenerate one: what a corner without a usable
// normal of its own gets.
aiVector3D FaceNormal(const std::vector<aiVector3D>& positions, const unsigned* v)
{
    const aiVector3D n = (positions[v[1]] - positions[v[0]]) ^ (positions[v[2]] - positions[v[0]]);
    return IsUsableNormal(n) ? Normalised(n) : aiVector3D(0, 0, 1);
}

struct SFillCounts
{
    unsigned skippedPrimitives = 0;
    unsigned nonFinite = 0;
};

// Where one mesh's vertices start in each list of the geometry.
struct SMeshBase
{
    int position = 0;
    int normal = 0;
    int colour = 0;
    int uvw = 0;
};

// The texture coordinates of vertex v in channel k of the node (zeros where the mesh has fewer).
QMXTVECTOR3f VertexUVW(const aiMesh& mesh, const std::vector<unsigned>& used, size_t k, unsigned v)
{
    if (k >= used.size())
        return {0.0f, 0.0f, 0.0f};
    const aiVector3D& uv = mesh.mTextureCoords[used[k]][v];
    const unsigned comps = mesh.mNumUVComponents[used[k]];
    return {uv.x, comps >= 2 ? uv.y : 0.0f, comps >= 3 ? uv.z : 0.0f};
}

// Appends vertex v of the mesh to every list the node keeps (and to the skin, when given).
void AppendVertex(SGeomData& geom, SModifier* skin, const aiMesh& mesh, const SMeshVertices& verts,
                  const std::vector<unsigned>& used, unsigned v, int nodeIndex, bool normals, bool colours)
{
    geom.positions.push_back(ToVec(verts.positions[v]));
    // A vertex normal that is not usable is never referenced (its corners take their triangle's);
    // its entry is a unit vector all the same, so every normal of the geometry is one.
    if (normals)
        geom.normals.push_back(IsUsableNormal(verts.normals[v]) ? ToVec(Normalised(verts.normals[v]))
                                                                : QMXTVECTOR3f{0.0f, 0.0f, 1.0f});
    if (colours)
    {
        const aiColor4D& col = mesh.mColors[0][v];
        geom.colours.push_back({col.r, col.g, col.b, col.a});
    }
    for (size_t k = 0; k < geom.channels.size(); ++k)
        geom.channels[k].uvw.push_back(VertexUVW(mesh, used, k, v));
    if (skin)
    {
        if (verts.influences.empty())
            skin->vertices.push_back(SBonedVtx{{{nodeIndex, 1.0f}}});
        else
            skin->vertices.push_back(verts.influences[v]);
    }
}

// Appends the triangles of one mesh to the geometry (and skin, when given). The geometry is indexed:
// each mesh vertex is stored once and the builder welds equal corners by value. A triangle that
// names one vertex twice gets copies of its vertices, so that it stays a triangle of three corners
// for the builder exactly as a triangle of distinct vertices does.
void AppendMesh(SGeomData& geom, SModifier* skin, const aiMesh& mesh, const SMeshVertices& verts,
                int material, int nodeIndex, bool colours, SFillCounts& counts)
{
    const std::vector<unsigned> used = UsedChannels(mesh);
    colours = colours && mesh.mColors[0] != nullptr;
    const bool normals = !verts.normals.empty();
    const SMeshBase base{static_cast<int>(geom.positions.size()), static_cast<int>(geom.normals.size()),
                         static_cast<int>(geom.colours.size()),
                         geom.channels.empty() ? 0 : static_cast<int>(geom.channels[0].uvw.size())};
    for (unsigned v = 0; v < mesh.mNumVertices; ++v)
        AppendVertex(geom, skin, mesh, verts, used, v, nodeIndex, normals, colours);
    for (unsigned f = 0; f < mesh.mNumFaces; ++f)
    {
        const unsigned* tri = TriangleOf(mesh.mFaces[f], mesh.mNumVertices);
        if (!tri)
        {
            ++counts.skippedPrimitives;
            continue;
        }
        const unsigned v[3] = {tri[0], tri[1], tri[2]};
        if (!IsFinite(verts.positions[v[0]]) || !IsFinite(verts.positions[v[1]]) ||
            !IsFinite(verts.positions[v[2]]))
        {
            ++counts.nonFinite;
            continue;
        }
        const bool repeats = v[0] == v[1] || v[1] == v[2] || v[0] == v[2];
        SFace face;
        face.group = -1;
        face.material = material;
        CTriIdx uvwIdx;
        for (int c = 0; c < 3; ++c)
        {
            int position = base.position + static_cast<int>(v[c]);
            int colour = base.colour + static_cast<int>(v[c]);
            int uvw = base.uvw + static_cast<int>(v[c]);
            if (repeats)
            {
                position = static_cast<int>(geom.positions.size());
                colour = static_cast<int>(geom.colours.size());
                uvw = geom.channels.empty() ? 0 : static_cast<int>(geom.channels[0].uvw.size());
                AppendVertex(geom, skin, mesh, verts, used, v[c], nodeIndex, false, colours);
            }
            face.pos[c] = position;
            if (colours)
                face.colour[c] = colour;
            uvwIdx.idx[c] = uvw;
            if (normals && IsUsableNormal(verts.normals[v[c]]))
                face.normal[c] = base.normal + static_cast<int>(v[c]);
            else if (normals)
            {
                // A corner without a usable normal of its own takes its triangle's.
                face.normal[c] = static_cast<int>(geom.normals.size());
                geom.normals.push_back(ToVec(FaceNormal(verts.positions, v)));
            }
        }
        geom.faces.push_back(face);
        for (SMappingChannel& channel : geom.channels)
            channel.faces.push_back(uvwIdx);
    }
}

// Room for every vertex and triangle the meshes can give, so the lists grow once (triangles that
// name a vertex twice, or corners without a usable normal, add a few entries beyond).
void Reserve(SGeomData& geom, const std::vector<const aiMesh*>& meshes, size_t channelCount,
             const SExtractedStreams& streams)
{
    size_t faces = 0, vertices = 0, coloured = 0;
    for (const aiMesh* mesh : meshes)
    {
        for (unsigned f = 0; f < mesh->mNumFaces; ++f)
            faces += mesh->mFaces[f].mNumIndices == 3 ? 1 : 0;
        vertices += mesh->mNumVertices;
        coloured += mesh->mColors[0] && streams.colours ? mesh->mNumVertices : 0;
    }
    geom.faces.reserve(faces);
    geom.positions.reserve(vertices);
    geom.normals.reserve(streams.normals ? vertices : 0);
    geom.colours.reserve(coloured);
    geom.channels.resize(channelCount);
    for (SMappingChannel& channel : geom.channels)
    {
        channel.faces.reserve(faces);
        channel.uvw.reserve(vertices);
    }
}
} // namespace

void FillAssimpGeometry(CNode& node, int graphIndex, const aiScene& scene, const CAssimpGraph& graph,
                        const std::vector<aiMatrix4x4>& globals0, CAssimpMaterials& materials,
                        const SExtractedStreams& streams)
{
    const aiNode& source = graph.Node(graphIndex);
    std::vector<const aiMesh*> meshes;
    size_t channelCount = 0;
    bool skinned = false;
    for (unsigned i = 0; i < source.mNumMeshes; ++i)
    {
        const unsigned m = source.mMeshes ? source.mMeshes[i] : scene.mNumMeshes;
        if (m >= scene.mNumMeshes || !scene.mMeshes[m] || !scene.mMeshes[m]->mVertices ||
            !scene.mMeshes[m]->mFaces)
            continue;
        meshes.push_back(scene.mMeshes[m]);
        if (streams.mappingChannels)
            channelCount = std::max(channelCount, UsedChannels(*meshes.back()).size());
        skinned = skinned || meshes.back()->mNumBones > 0;
    }
    Reserve(node.geom, meshes, channelCount, streams);
    const bool keepSkin = skinned && streams.skins;
    SModifier skin;
    skin.name = "Skin";
    skin.kind = eModifierSkin;
    CInfluenceLimiter limiter;
    SFillCounts counts;
    SMeshVertices verts;
    for (const aiMesh* mesh : meshes)
    {
        if (keepSkin && skin.vertices.empty())
            skin.vertices.reserve(node.geom.positions.capacity());
        MeshVertices(*mesh, graphIndex, graph, globals0, streams.normals, limiter, verts);
        const int material = streams.materials ? materials.Use(mesh->mMaterialIndex) : -1;
        AppendMesh(node.geom, keepSkin ? &skin : nullptr, *mesh, verts, material, graphIndex, streams.colours,
                   counts);
    }
    if (counts.skippedPrimitives)
        Log(eLogWarning,
            "Warning: '%s': %u point and line primitives (or faces with bad indices) are not exported.",
            node.name.c_str(), counts.skippedPrimitives);
    if (counts.nonFinite)
        Log(eLogWarning, "Warning: '%s': %u triangles with non-finite positions are not exported.",
            node.name.c_str(), counts.nonFinite);
    if (keepSkin && !node.geom.faces.empty())
    {
        if (limiter.Dropped())
            Log(eLogWarning,
                "Warning (%s): Ignoring some bone influences. \nThe maximum number of bone influences a "
                "vertex may "
                "have is %i.",
                node.name.c_str(), static_cast<int>(CInfluenceLimiter::eMaxInfluences));
        node.modifiers.push_back(std::move(skin));
    }
}
