// One Maya polygon mesh to one mesh node: an unwelded triangle list with one position, normal,
// colour and UV entry per triangle corner. Welding is the builder's work.
#include "Ostrex.h"

#include <maya/MColor.h>
#include <maya/MColorArray.h>
#include <maya/MFloatVectorArray.h>
#include <maya/MFnMesh.h>
#include <maya/MFnTransform.h>
#include <maya/MItMeshPolygon.h>
#include <maya/MStringArray.h>
#include <maya/MVector.h>

#include <functional>
#include <utility>

#include "Log.h"
#include "MeshWalk.h"
#include "OptionsRules.h"

namespace
{
const unsigned int kMaxUVSets = SGeomData::eMaxMappingChannels;

class CMeshCorners : public IMeshCornerVisitor
{
  public:
    CMeshCorners(SGeomData& geom, const MStringArray& uvSets, bool normals, bool colours,
                 std::function<int(const MObject&)> materialOf)
        : m_geom(geom), m_uvSets(uvSets), m_bNormals(normals), m_bColours(colours),
          m_channels(uvSets.length()), m_materialOf(std::move(materialOf))
    {
    }

    void BeginSet(const MObject& set) override { m_material = m_materialOf(set); }

    void Corner(MItMeshPolygon& polygon, const MPoint& point, int vertexId, int local) override
    {
        if (vertexId >= 0)
        {
            for (unsigned int s = 0; s < m_uvSets.length(); ++s)
            {
                float2 uv = {0.0f, 0.0f};
                const MString set = m_uvSets[s];
                polygon.getUV(local, uv, &set);
                m_triangleUV[s].idx[m_corner] = static_cast<int>(m_channels[s].uvw.size());
                m_channels[s].uvw.push_back(QMXTVECTOR3f{uv[0], uv[1], 0.0f});
            }
            if (m_bNormals)
            {
                MVector normal;
                polygon.getNormal(static_cast<unsigned int>(local), normal, MSpace::kObject);
                normal.normalize();
                m_face.normal[m_corner] = static_cast<int>(m_geom.normals.size());
                m_geom.normals.push_back(QMXTVECTOR3f{float(normal.x), float(normal.y), float(normal.z)});
            }
            if (m_bColours)
            {
                MColor colour;
                polygon.getColor(colour, local);
                m_face.colour[m_corner] = static_cast<int>(m_geom.colours.size());
                m_geom.colours.push_back(QMXTVECTOR4f{colour.r, colour.g, colour.b, colour.a});
            }
        }
        m_face.pos[m_corner] = static_cast<int>(m_geom.positions.size());
        m_geom.positions.push_back(QMXTVECTOR3f{float(point.x), float(point.y), float(point.z)});
        ++m_corner;
    }

    void EndTriangle() override
    {
        m_face.group = -1;
        m_face.material = m_material;
        m_geom.faces.push_back(m_face);
        for (unsigned int s = 0; s < m_uvSets.length(); ++s)
            m_channels[s].faces.push_back(m_triangleUV[s]);
        m_face = SFace();
        m_corner = 0;
    }

    std::vector<SMappingChannel>& Channels() { return m_channels; }

  private:
    SGeomData& m_geom;
    const MStringArray& m_uvSets;
    bool m_bNormals, m_bColours;
    std::vector<SMappingChannel> m_channels;
    std::function<int(const MObject&)> m_materialOf;
    int m_material = -1;
    SFace m_face;
    CTriIdx m_triangleUV[kMaxUVSets];
    int m_corner = 0;
};

// The first eight UV sets, without the empty ones (channel numbers are compacted).
MStringArray UsedUVSets(MFnMesh& mesh)
{
    MStringArray names, used;
    mesh.getUVSetNames(names);
    for (unsigned int i = 0; i < names.length() && i < kMaxUVSets; ++i)
        if (mesh.numUVs(names[i]) > 0)
            used.append(names[i]);
    return used;
}
} // namespace

int Ostrex::ConvertMesh(MFnMesh& mesh, MFnTransform& transform, int parentIndex)
{
    const SExtractedStreams streams = ExtractedStreams(m_options);
    const MStringArray uvSets = streams.mappingChannels ? UsedUVSets(mesh) : MStringArray();
    bool normals = streams.normals;
    if (normals)
    {
        MFloatVectorArray all;
        normals = mesh.getNormals(all, MSpace::kObject) == MStatus::kSuccess && all.length() > 0;
    }
    bool colours = streams.colours;
    if (colours)
    {
        MColorArray all;
        colours = mesh.getVertexColors(all) == MStatus::kSuccess && all.length() > 0;
    }

    CNode node = StartNode(mesh, transform, parentIndex, eNodeMesh);

    const bool materials = streams.materials;
    CMeshCorners corners(node.geom, uvSets, normals, colours,
                         [&](const MObject& set) { return materials ? GetMaterialID(set) : -1; });
    if (!WalkMeshCorners(mesh, corners))
    {
        // The mesh is dropped; its children hang under the parent.
        Log(eLogError, "Failed to get connected sets and members for '%s'", node.name.c_str());
        return parentIndex;
    }
    for (SMappingChannel& channel : corners.Channels())
        node.geom.channels.push_back(std::move(channel));
    AddAnimation(&node, transform);
    if (node.geom.positions.empty())
    {
        node.type = eNodePlain;
        Log(eLogWarning, "Warning: MFn::kMesh '%s' has no polygon data. Exporting as a dummy node.", node.name.c_str());
    }
    m_matches.push_back(SMatch{mesh.fullPathName(), node.index});
    return m_pContent->AddNode(node);
}
