// Quantising of mesh positions into a compact type, with the unpack matrix that restores them.
#include <cmath>
#include <cstring>

#include "QMXTError.h"
#include "QMXTMeshStreams.h"
#include "QMXTModelTVOTransform.h"

namespace
{
struct SRange
{
    double lo, hi;  // the target range [m, M]
    double perUnit; // stored steps per unit of the range (the writer's scale for the type)
};

bool TargetRange(uint32_t type, SRange& r)
{
    const double big = 1073741824.0; // 2^30
    switch (type)
    {
    case EQMXTDataInt: r = {-big, big, 1}; return true;
    case EQMXTDataUnsignedShort: r = {0, 65535, 1}; return true;
    case EQMXTDataRGBA:
    case EQMXTDataARGB:
    case EQMXTDataD3DCOLOR: r = {0, 1, 255}; return true;
    case EQMXTDataUBYTE4:
    case EQMXTDataUnsignedByte: r = {0, 255, 1}; return true;
    case EQMXTDataDEC3N: r = {-511, 511, 511}; return true;
    case EQMXTDataFixed16_16: r = {-32767, 32767, 65536}; return true;
    case EQMXTDataShort: r = {-32767, 32767, 1}; return true;
    case EQMXTDataShortNorm: r = {-1, 1, 32767}; return true;
    case EQMXTDataByteNorm: r = {-1, 1, 127}; return true;
    case EQMXTDataUnsignedByteNorm: r = {-1, 1, 255}; return true;
    case EQMXTDataUnsignedShortNorm: r = {-1, 1, 65535}; return true;
    case EQMXTDataByte: r = {-127, 127, 1}; return true;
    case EQMXTDataUnsignedInt: r = {0, big, 1}; return true;
    default: return false; // float and unknown ids
    }
}

// The value to write so that the truncating type writer stores the step nearest to q: the nearest
// step, pushed a quarter step away from zero so that truncation cannot fall one step short.
float OnNearestStep(double q, const SRange& r)
{
    double step = std::nearbyint(q * r.perUnit);
    step = std::fmax(r.lo * r.perUnit, std::fmin(r.hi * r.perUnit, step));
    const double nudge = step > 0 ? 0.25 : (step < 0 ? -0.25 : 0.0);
    return static_cast<float>((step + nudge) / r.perUnit);
}

struct SBox
{
    double min[3] = {HUGE_VAL, HUGE_VAL, HUGE_VAL};
    double max[3] = {-HUGE_VAL, -HUGE_VAL, -HUGE_VAL};
};

SBox PositionBox(STVOMesh& mesh, uint32_t axes)
{
    SBox box;
    for (uint32_t v = 0; v < mesh.nNumVertex; ++v)
    {
        float p[4];
        QMXTVertexRead(p, QMXTStreamVertex(mesh, mesh.sVertex, v), mesh.sVertex.eType, mesh.sVertex.n);
        for (uint32_t a = 0; a < axes; ++a)
        {
            box.min[a] = std::fmin(box.min[a], p[a]);
            box.max[a] = std::fmax(box.max[a], p[a]);
        }
    }
    for (uint32_t a = axes; a < 3; ++a)
        box.min[a] = box.max[a] = 0.0;
    return box;
}
} // namespace

int QMXTModelTVOScaleAndConvertVtxData(STVOMesh& mesh, EQMXTDataType target)
{
    QMXTMATRIXf unpack;
    QMXTMatrixIdentityF(unpack);
    if (mesh.nNumVertex == 0)
    {
        std::memcpy(mesh.mUnpackMatrix, unpack.f, sizeof mesh.mUnpackMatrix);
        return 0;
    }
    const bool interleaved = QMXTIsInterleaved(mesh);
    if (interleaved && mesh.sVertex.eType != EQMXTDataFloat)
    {
        QMXTErrorOutputDebug("ScaleAndConvertVtxData: interleaved positions must be float.\n");
        return 1;
    }
    SRange range;
    if (!TargetRange(target, range))
    {
        QMXTErrorOutputDebug("ScaleAndConvertVtxData: no quantising range for type %u.\n", static_cast<unsigned>(target));
        return 1;
    }
    if (!QMXTStreamsConsistent(mesh))
        return 1;
    // Checked before anything changes, so a failed call leaves the mesh (and its matrix) as it was.
    std::memcpy(mesh.mUnpackMatrix, unpack.f, sizeof mesh.mUnpackMatrix);
    if (!QMXTStreamPresent(mesh, mesh.sVertex))
        return 0;
    // Array positions of another type are brought to float first so the scaled values fit.
    if (!interleaved && QMXTModelTVODataConvert(mesh.sVertex, mesh.nNumVertex, EQMXTDataFloat) != 0)
        return 1;

    const uint32_t axes = mesh.sVertex.n < 3 ? mesh.sVertex.n : 3;
    const SBox box = PositionBox(mesh, axes);
    double scale[3];
    for (uint32_t a = 0; a < 3; ++a)
    {
        const double extent = box.max[a] - box.min[a];
        scale[a] = extent > 0 ? (range.hi - range.lo) / extent : 1.0; // zero extent: every value stores m
    }
    for (uint32_t v = 0; v < mesh.nNumVertex; ++v)
    {
        uint8_t* at = QMXTStreamVertex(mesh, mesh.sVertex, v);
        float p[4];
        QMXTVertexRead(p, at, mesh.sVertex.eType, mesh.sVertex.n);
        for (uint32_t a = 0; a < axes; ++a)
        {
            const double q = (p[a] - box.min[a]) * scale[a] + range.lo;
            p[a] = interleaved ? static_cast<float>(q) : OnNearestStep(q, range);
        }
        QMXTVertexWrite(at, mesh.sVertex.eType, mesh.sVertex.n, p);
    }
    const float m = static_cast<float>(range.lo);
    QMXTMATRIXf toZero, unscale, toMin;
    QMXTMatrixTranslationF(toZero, -m, -m, -m);
    QMXTMatrixScalingF(unscale, static_cast<float>(1.0 / scale[0]), static_cast<float>(1.0 / scale[1]),
                       static_cast<float>(1.0 / scale[2]));
    QMXTMatrixTranslationF(toMin, static_cast<float>(box.min[0]), static_cast<float>(box.min[1]),
                           static_cast<float>(box.min[2]));
    QMXTMatrixMultiplyF(unpack, toZero, unscale);
    QMXTMatrixMultiplyF(unpack, unpack, toMin);
    std::memcpy(mesh.mUnpackMatrix, unpack.f, sizeof mesh.mUnpackMatrix);
    // Converted last: should it fail, the scaled float positions and the matrix still agree.
    return interleaved ? 0 : QMXTModelTVODataConvert(mesh.sVertex, mesh.nNumVertex, target);
}
