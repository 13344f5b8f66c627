// The largest error that storing a mesh's positions, normals and texture coordinates in a compact
// data type introduced, measured by the builder only when asked (CTVO::MeasureQuantisation).
//
// Take runs before the vertex-format pass and copies those streams as floats; Compare runs after
// it and measures, per vertex, the distance between the copied value and the stored one read back
// (positions through the unpack matrix when one was made, in scene units; the z mirror of the
// DirectX coordinate system undone). Cost: O(vertices) time and a float copy of the three streams,
// nothing when not asked.
#pragma once

#include <cstdint>
#include <vector>

#include "BuilderSettings.h"
#include "QMXTModelTVO.h"

struct SQuantisationError
{
    // Largest Euclidean distance over the vertices, or -1 when the stream is absent or stored as
    // float (no compact type, nothing to measure).
    double positions = -1.0;
    double normals = -1.0;
    std::vector<double> uvw; // one per texture coordinate set that is written
};

class CQuantisationProbe
{
  public:
    // Copies the float values of the mesh's positions, normals and texture coordinates.
    void Take(const STVOMesh& mesh);
    // Measures the mesh as the vertex-format pass left it (not interleaved), with the settings that
    // pass used: their component masks, the DirectX z mirror and the unpack matrix.
    SQuantisationError Compare(const STVOMesh& mesh, const SBuilderSettings& settings) const;

  private:
    struct SCopy
    {
        uint32_t n = 0;           // components copied a vertex (up to 4)
        std::vector<float> values; // n a vertex
    };
    std::vector<SCopy> m_streams; // positions, normals, then each uvw set
};
