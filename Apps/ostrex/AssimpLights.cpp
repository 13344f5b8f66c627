// Lights and cameras of the Assimp scene filler.
#include <cmath>
#include <cstring>

#include "AssimpInternal.h"
#include "QMXTModelTVO.h"

namespace
{
aiVector3D Unit(const aiVector3D& v, const aiVector3D& fallback)
{
    const ai_real len = v.Length();
    return std::isfinite(len) && len > 1e-12f ? v / len : fallback;
}

// Some unit vector perpendicular to the unit vector d.
aiVector3D AnyPerpendicular(const aiVector3D& d)
{
    const aiVector3D helper = std::fabs(d.y) < 0.9f ? aiVector3D(0, 1, 0) : aiVector3D(1, 0, 0);
    return Unit(helper - d * (helper * d), aiVector3D(1, 0, 0));
}
} // namespace

QMXTMATRIXf AssimpViewFrame(const aiVector3D& position, const aiVector3D& direction, const aiVector3D& up)
{
    const aiVector3D d = Unit(direction, aiVector3D(0, 0, -1));
    aiVector3D u = up - d * (up * d);
    u = u.Length() > 1e-6f * std::max<ai_real>(up.Length(), 1e-30f) && std::isfinite(u.Length())
            ? u.Normalize()
            : AnyPerpendicular(d);
    const aiVector3D row1 = -d, row2 = -u;
    const aiVector3D row0 = row1 ^ row2;
    QMXTMATRIXf m = {{row0.x, row0.y, row0.z, 0, row1.x, row1.y, row1.z, 0, row2.x, row2.y, row2.z, 0,
                      position.x, position.y, position.z, 1}};
    return m;
}

SAssimpQuirks AssimpQuirksOf(const aiScene& scene)
{
    SAssimpQuirks quirks;
    aiString format;
    if (scene.mMetaData && scene.mMetaData->Get("SourceAsset_Format", format) &&
        std::strcmp(format.C_Str(), "glTF2 Importer") == 0)
    {
        quirks.fovIsVerticalTimesAspect = true;
        quirks.cameraPositionRepeatsNode = true;
        quirks.coneAnglesFromAxis = true;
    }
    return quirks;
}

bool FillAssimpLight(const aiLight& source, const SAssimpQuirks& quirks, SLightData& light)
{
    light = SLightData();
    switch (source.mType)
    {
    case aiLightSource_POINT:
        light.lightType = eTVOLightPoint;
        break;
    case aiLightSource_DIRECTIONAL:
        light.lightType = eTVOLightDirectional;
        break;
    case aiLightSource_SPOT:
        light.lightType = eTVOLightSpot;
        light.falloffAngle =
            quirks.coneAnglesFromAxis ? 2.0f * source.mAngleOuterCone : source.mAngleOuterCone;
        break;
    default:
        return false;
    }
    light.colour[0] = source.mColorDiffuse.r;
    light.colour[1] = source.mColorDiffuse.g;
    light.colour[2] = source.mColorDiffuse.b;
    if (source.mType != aiLightSource_DIRECTIONAL)
    {
        // A file without any falloff leaves all three at zero; that means no falloff.
        const bool none = source.mAttenuationConstant == 0 && source.mAttenuationLinear == 0 &&
                          source.mAttenuationQuadratic == 0;
        light.constantAttenuation = none ? 1.0f : source.mAttenuationConstant;
        light.linearAttenuation = source.mAttenuationLinear;
        light.quadraticAttenuation = source.mAttenuationQuadratic;
    }
    return true;
}

float AssimpVerticalFov(const aiCamera& camera, const SAssimpQuirks& quirks)
{
    const double aspect = camera.mAspect > 0.0f && std::isfinite(camera.mAspect) ? camera.mAspect : 1.0;
    if (quirks.fovIsVerticalTimesAspect)
        return static_cast<float>(camera.mHorizontalFOV / aspect);
    return static_cast<float>(2.0 * std::atan(std::tan(0.5 * camera.mHorizontalFOV) / aspect));
}

aiVector3D AssimpCameraPosition(const aiCamera& camera, const SAssimpQuirks& quirks)
{
    return quirks.cameraPositionRepeatsNode ? aiVector3D(0, 0, 0) : camera.mPosition;
}
