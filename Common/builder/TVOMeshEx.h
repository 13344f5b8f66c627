// Mesh assembly: one builder mesh made from the faces of a content node that share a material.
//
// Content geometry indexes positions, normals, colours and texture coordinates separately; the
// scene model has one index a vertex. Each face corner becomes a candidate vertex (SOneVertex) that
// the vertex store (CVertex) finds or adds, and each face a triangle of those indices that the
// triangle store (CTris) finds or adds. Finalise turns both stores into the scene model mesh.
#pragma once

#include <cstdint>
#include <vector>

#include "BuilderSettings.h"
#include "Content.h"
#include "QMXTLargeArray.h"
#include "QMXTModelTVO.h"

// One candidate vertex, built per face corner.
struct SOneVertex
{
    float position[3] = {0.0f, 0.0f, 0.0f};
    int group = 0;
    float normal[3] = {0.0f, 0.0f, 0.0f};
    std::vector<QMXTVECTOR3f> uvw; // one a mapping channel
    std::vector<uint32_t> colour;  // the packed colour, when the corner has one
    std::vector<int> boneIndices;  // skin influences of the position
    std::vector<float> boneWeights;

    // Position, normal, colour list, uvw list and group equal, floats compared as floats (a NaN
    // never equals, 0 equals -0). Bone lists are not compared.
    bool operator==(const SOneVertex& o) const;
};

// The distinct vertices of one mesh. Vertices are kept flat: a fixed-size key a vertex (position,
// group, normal, uvw, colour) and the bone influences in a shared pool.
class CVertex
{
  public:
    // Sets the number of uvw sets every vertex carries and empties the store.
    void Init(uint32_t uvwCount);
    // Index of the vertex equal to v, or of v appended as a new vertex. With useHash the lookup goes
    // through a hash of the key; without, every vertex is compared from the last backwards. Both
    // give the same index. v must carry Init's number of uvw sets.
    uint32_t FindOrCreate(const SOneVertex* v, bool useHash);
    // The same in two steps, so that several lookups can overlap: Prepare writes v's key (KeyWords()
    // words) and returns its hash; FindOrCreate with that key and hash then does the lookup.
    uint32_t Prepare(const SOneVertex& v, uint32_t* key) const;
    uint32_t FindOrCreate(const SOneVertex& v, const uint32_t* key, uint32_t hash, bool useHash);
    uint32_t KeyWords() const;

    uint32_t Count() const { return m_nCount; }
    const float* Position(uint32_t i) const { return Floats(i); }
    const float* Normal(uint32_t i) const { return Floats(i) + 4; }
    const float* UVW(uint32_t i, uint32_t set) const { return Floats(i) + 7 + 3 * set; }
    bool HasColour(uint32_t i) const { return Key(i)[m_nColourWord] != 0; }
    uint32_t Colour(uint32_t i) const { return Key(i)[m_nColourWord + 1]; }
    uint32_t InfluenceCount(uint32_t i) const { return m_boneStart[i + 1] - m_boneStart[i]; }
    const int* BoneIndices(uint32_t i) const { return m_boneIdx.data() + m_boneStart[i]; }
    const float* BoneWeights(uint32_t i) const { return m_boneWt.data() + m_boneStart[i]; }
    // The largest influence count of any vertex.
    uint32_t MaxInfluences() const { return m_nMaxInfluences; }
    // Frees all memory.
    void Clear();

  private:
    const uint32_t* Key(uint32_t i) const { return m_key.data() + static_cast<size_t>(i) * m_nKeyWords; }
    const float* Floats(uint32_t i) const { return reinterpret_cast<const float*>(Key(i)); }
    void MakeKey(const SOneVertex& v, uint32_t* key) const;
    bool KeyEqual(const uint32_t* a, const uint32_t* b) const;
    uint32_t HashKey(const uint32_t* key) const;
    uint32_t Append(const SOneVertex& v, const uint32_t* key);
    void GrowTable();

    uint32_t m_nUVW = 0;
    uint32_t m_nKeyWords = 9; // 3 position, group, 3 normal, 3 a uvw set, colour flag and value
    uint32_t m_nColourWord = 7;
    uint32_t m_nCount = 0;
    uint32_t m_nMaxInfluences = 0;
    QMXTLargeVector<uint32_t> m_key;
    // Open addressing: the key's hash in the high half, vertex index + 1 in the low half, 0 = empty.
    QMXTLargeVector<uint64_t> m_table;
    // The same entries for the vertices met last, one per hash value modulo its size: host meshes
    // repeat a vertex soon after its first corner, and this small table answers those from cache.
    std::vector<uint64_t> m_recent;
    uint32_t m_nTableLimit = 0;       // entries before the table grows (three quarters full)
    QMXTLargeVector<uint32_t> m_boneStart; // Count() + 1 entries
    QMXTLargeVector<int> m_boneIdx;
    QMXTLargeVector<float> m_boneWt;
    std::vector<uint32_t> m_scratch; // key of the candidate
};

// The distinct triangles of one mesh: three vertex indices each, a triangle equal to an earlier one
// (same indices in the same order) is not added again. Equal triangles share their first index, so
// each vertex keeps a chain of the triangles that start with it; vertices are made in the order
// faces arrive, which keeps those lookups in cache.
class CTris
{
  public:
    // Empties the store and prepares it for about n triangles (it grows beyond as needed).
    void Init(uint32_t n);
    // Index of the equal triangle, or of tri appended.
    uint32_t FindOrCreate(const uint32_t* tri);
    uint32_t Count() const { return static_cast<uint32_t>(m_tris.size() / 3); }
    const uint32_t* Data() const { return m_tris.data(); }
    void Clear();

  private:
    QMXTLargeVector<uint32_t> m_tris;
    QMXTLargeVector<uint32_t> m_head; // per first vertex: its latest triangle + 1, 0 = none
    QMXTLargeVector<uint32_t> m_next;  // per triangle: the previous one with the same first vertex + 1
};

// Remembers, for each position of a content geometry, the vertex its latest corner became in which
// mesh, with the indices of that corner. A later corner with the same indices (equal indices give
// equal values) takes that vertex without being keyed and looked up again: indexed content meets
// each vertex about six times. One memo serves every mesh built from the geometry.
class CCornerMemo
{
  public:
    // For positionCount positions and channelCount texture-coordinate sets.
    CCornerMemo(size_t positionCount, size_t channelCount);
    // The vertex the corner became in mesh owner (a number above 0), or UINT32_MAX when unknown.
    uint32_t Find(uint32_t owner, const SFace& face, int corner, const SGeomData& geom, uint32_t faceIndex) const;
    void Remember(uint32_t owner, const SFace& face, int corner, const SGeomData& geom, uint32_t faceIndex,
                  uint32_t vertex);

  private:
    void Record(uint32_t owner, const SFace& face, int corner, const SGeomData& geom, uint32_t faceIndex,
                uint32_t* out) const;
    size_t m_nStride; // 0 when the memo is off
    std::vector<uint32_t> m_words; // per position: owner, vertex, normal, colour, group, uvw indices
};

// A mesh under construction. After Finalise, mesh holds the scene model mesh and the stores are
// freed; the mesh's arrays belong to this object until they are handed to the scene (Release).
class CTVOMeshEx
{
  public:
    CTVOMeshEx();
    ~CTVOMeshEx();
    CTVOMeshEx(const CTVOMeshEx&) = delete;
    CTVOMeshEx& operator=(const CTVOMeshEx&) = delete;

    // Sizes the triangle store for faceCount faces and sets the number of uvw sets.
    void Init(uint32_t faceCount, uint32_t uvwCount);
    // Adds face faceIndex of geom; skin, when given, holds one entry a position.
    void AddFace(uint32_t faceIndex, const SGeomData* geom, const SBonedVtx* skin,
                 const SBuilderSettings& settings);
    // Lets AddFace take corners it has met through memo (made for the geometry its faces come from),
    // where this mesh is known as owner (a number above 0, its own among the memo's meshes).
    void UseCornerMemo(CCornerMemo* memo, uint32_t owner)
    {
        m_pMemo = memo;
        m_nMemoOwner = owner;
    }
    // Builds the vertex streams and the index list from the stores and frees the stores.
    bool Finalise(const SBuilderSettings& settings);
    // True when both meshes are equal in every stream, index, strip and batch.
    bool Compare(const CTVOMeshEx& other) const;
    // Frees the mesh data and the stores.
    void Reset();
    // Hands the mesh record (and its arrays) to the caller and leaves this one empty.
    STVOMesh Release();

    STVOMesh mesh;
    CVertex vertices;
    CTris tris;

  private:
    uint32_t m_nUVW = 0;
    SOneVertex m_corner[3];       // reused for every face, so building one allocates nothing
    std::vector<uint32_t> m_keys; // their keys
    CCornerMemo* m_pMemo = nullptr;
    uint32_t m_nMemoOwner = 0;
};

// Zeroed mesh record with an identity unpack matrix and the triangle-list primitive type.
STVOMesh EmptyTVOMesh();
// Frees every array of a mesh record and leaves it as EmptyTVOMesh.
void FreeTVOMesh(STVOMesh& mesh);
// Packs a colour as alpha in bits 24-31, blue 16-23, green 8-15 and red 0-7, each component times
// 255, truncated and clamped to 0..255.
uint32_t PackColour(const QMXTVECTOR4f& c);
