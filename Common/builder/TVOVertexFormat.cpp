// The vertex-format pass.
#include <vector>

#include "Log.h"
#include "QMXTModelTVOTransform.h"
#include "TVOMeshPasses.h"

namespace
{
bool IsPacked(uint32_t type)
{
    return type >= EQMXTDataRGBA && type <= EQMXTDataDEC3N;
}

// Channel list picking the components of mask that a stream of n components has, ended by 0.
// Returns false when it keeps every component in order (nothing to do).
bool MaskChannels(uint32_t mask, uint32_t n, int32_t channels[5])
{
    static const int32_t letters[4] = {'x', 'y', 'z', 'w'};
    int k = 0;
    bool identity = true;
    for (uint32_t c = 0; c < 4 && c < n; ++c)
        if (mask & (1u << c))
        {
            identity = identity && static_cast<uint32_t>(k) == c;
            channels[k++] = letters[c];
        }
        else
            identity = false;
    channels[k] = 0;
    return !identity;
}

// One stream to its vertex format. Scalar streams are shredded before conversion (so any type can
// be reduced), packed ones (colours) after conversion to a scalar type.
void FormatStream(CTVOData& d, uint32_t vertexCount, const CVectorOpt& fmt, bool mirrorZ, bool quantise,
                  STVOMesh& mesh, bool isPosition)
{
    if (d.n == 0 || !d.pData)
        return;
    const uint32_t mask = fmt.GetOption(CVectorOpt::eEnable);
    if (!fmt.GetOption(CVectorOpt::eExport) || (mask & 0xF) == 0)
    {
        d.Reset();
        return;
    }
    if (mirrorZ && !IsPacked(d.eType) && d.n >= 3)
    {
        const int32_t flip[4] = {'x', 'y', -'z', d.n > 3 ? 'w' : 0};
        const int32_t list[5] = {flip[0], flip[1], flip[2], flip[3], 0};
        RequireMemory(QMXTModelTVODataShred(d, vertexCount, list) == 0);
    }
    int32_t channels[5];
    const bool wasPacked = IsPacked(d.eType);
    if (!wasPacked && MaskChannels(mask, d.n, channels))
        RequireMemory(QMXTModelTVODataShred(d, vertexCount, channels) == 0);
    const EQMXTDataType target = fmt.GetOption(CVectorOpt::eDataType);
    if (isPosition && quantise && target != EQMXTDataFloat)
        RequireMemory(QMXTModelTVOScaleAndConvertVtxData(mesh, target) == 0);
    else
        RequireMemory(QMXTModelTVODataConvert(d, vertexCount, target) == 0);
    if (wasPacked && !IsPacked(d.eType) && MaskChannels(mask, d.n, channels))
        RequireMemory(QMXTModelTVODataShred(d, vertexCount, channels) == 0);
}
} // namespace

void VertexFormatPass(STVOMesh& mesh, const SBuilderSettings& s)
{
    if (mesh.pInterleaved)
        RequireMemory(QMXTModelTVOToggleInterleaved(mesh, 0) == 0);
    if (mesh.nNumFaces && mesh.nNumVertex <= eTVOMaxShortIndexedVertices && mesh.sFaces.pData)
        RequireMemory(QMXTModelTVODataConvert(mesh.sFaces, QMXTModelTVOCountIndices(mesh),
                                              EQMXTDataUnsignedShort) == 0);

    const uint32_t n = mesh.nNumVertex;
    const bool mirror = s.IsDirectX();
    struct SStream
    {
        CTVOData* data;
        uint32_t format;
        bool mirror;
    };
    std::vector<SStream> streams = {{&mesh.sVertex, COptionsData::eVcOptPos, mirror},
                                    {&mesh.sNormals, COptionsData::eVcOptNor, mirror},
                                    {&mesh.sTangents, COptionsData::eVcOptTan, mirror},
                                    {&mesh.sBinormals, COptionsData::eVcOptBin, mirror},
                                    {&mesh.sVtxColours, COptionsData::eVcOptCol, false},
                                    {&mesh.sBoneIdx, COptionsData::eVcOptBoneInd, false},
                                    {&mesh.sBoneWeight, COptionsData::eVcOptBoneWt, false}};
    for (uint32_t i = 0; i < mesh.nNumUVW && i < 8; ++i)
        streams.push_back({&mesh.psUVW[i], COptionsData::eVcOptUVW0 + i, false});
    for (const SStream& st : streams)
        FormatStream(*st.data, n, s.formats[st.format], st.mirror, s.bUnpackMatrix, mesh, st.data == &mesh.sVertex);
    // Sets beyond the eighth have no format and are not written; nor are trailing unwritten sets.
    for (uint32_t i = 8; i < mesh.nNumUVW; ++i)
        mesh.psUVW[i].Reset();
    if (mesh.nNumUVW > 8)
        mesh.nNumUVW = 8;
    while (mesh.nNumUVW && mesh.psUVW[mesh.nNumUVW - 1].n == 0)
        --mesh.nNumUVW;
}
