#include "QuantisationError.h"

#include <algorithm>
#include <cmath>

#include "QMXTMath.h"
#include "QMXTMeshStreams.h"

namespace
{
bool IsPackedType(uint32_t type)
{
    return type >= EQMXTDataRGBA && type <= EQMXTDataDEC3N;
}

const CTVOData* StreamAt(const STVOMesh& mesh, size_t index)
{
    if (index == 0)
        return &mesh.sVertex;
    if (index == 1)
        return &mesh.sNormals;
    const size_t set = index - 2;
    return mesh.psUVW && set < mesh.nNumUVW ? &mesh.psUVW[set] : nullptr;
}

uint32_t FormatOf(size_t index)
{
    if (index == 0)
        return COptionsData::eVcOptPos;
    if (index == 1)
        return COptionsData::eVcOptNor;
    return COptionsData::eVcOptUVW0 + static_cast<uint32_t>(index - 2);
}

const uint8_t* VertexBytes(const STVOMesh& mesh, const CTVOData& d, uint32_t v)
{
    return QMXTStreamVertex(const_cast<STVOMesh&>(mesh), d, v);
}
} // namespace

void CQuantisationProbe::Take(const STVOMesh& mesh)
{
    m_streams.clear();
    const size_t count = 2 + std::min<uint32_t>(mesh.nNumUVW, 8);
    for (size_t i = 0; i < count; ++i)
    {
        SCopy copy;
        const CTVOData* d = StreamAt(mesh, i);
        if (d && QMXTStreamPresent(mesh, *d) && !IsPackedType(d->eType) && d->n <= 4)
        {
            copy.n = d->n;
            copy.values.resize(static_cast<size_t>(mesh.nNumVertex) * copy.n);
            for (uint32_t v = 0; v < mesh.nNumVertex; ++v)
            {
                float value[4];
                QMXTVertexRead(value, VertexBytes(mesh, *d, v), d->eType, d->n);
                std::copy(value, value + copy.n, copy.values.begin() + static_cast<size_t>(v) * copy.n);
            }
        }
        m_streams.push_back(std::move(copy));
    }
}

SQuantisationError CQuantisationProbe::Compare(const STVOMesh& mesh, const SBuilderSettings& s) const
{
    SQuantisationError result;
    for (size_t i = 0; i < m_streams.size(); ++i)
    {
        const SCopy& copy = m_streams[i];
        const CTVOData* d = StreamAt(mesh, i);
        double worst = -1.0;
        if (copy.n && d && QMXTStreamPresent(mesh, *d) && d->eType != EQMXTDataFloat)
        {
            // The stored components, in order, are the source components the format's mask selects.
            const uint32_t mask = s.formats[FormatOf(i)].GetOption(CVectorOpt::eEnable);
            uint32_t source[4], stored = 0;
            for (uint32_t c = 0; c < 4 && c < copy.n; ++c)
                if (mask & (1u << c))
                    source[stored++] = c;
            stored = std::min(stored, IsPackedType(d->eType) ? QMXTModelTVODataTypeComponentCount(d->eType) : d->n);
            const bool mirror = i < 2 && s.IsDirectX();
            QMXTMATRIXf unpack;
            std::copy(mesh.mUnpackMatrix, mesh.mUnpackMatrix + 16, unpack.f);
            const bool unpackPositions = i == 0 && s.bUnpackMatrix;
            worst = 0.0;
            for (uint32_t v = 0; v < mesh.nNumVertex; ++v)
            {
                float value[4];
                QMXTVertexRead(value, VertexBytes(mesh, *d, v), d->eType, d->n);
                if (unpackPositions)
                {
                    QMXTVECTOR3f packed{value[0], value[1], value[2]}, scene;
                    QMXTTransform(scene, packed, unpack);
                    value[0] = scene.x, value[1] = scene.y, value[2] = scene.z;
                }
                double sum = 0.0;
                for (uint32_t k = 0; k < stored; ++k)
                {
                    double original = copy.values[static_cast<size_t>(v) * copy.n + source[k]];
                    if (mirror && source[k] == 2)
                        original = -original;
                    const double delta = value[k] - original;
                    sum += delta * delta;
                }
                worst = std::max(worst, std::sqrt(sum));
            }
        }
        if (i == 0)
            result.positions = worst;
        else if (i == 1)
            result.normals = worst;
        else if (d)
            result.uvw.push_back(worst);
    }
    return result;
}
