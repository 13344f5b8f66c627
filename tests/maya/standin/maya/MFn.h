// Stand-in for the Maya devkit header of the same name: the enumerators the plug-in and its tests
// use, with the 2016 values.
#pragma once

class MFn
{
  public:
    enum Type
    {
        kInvalid = 0,
        kBase = 1,
        kNamedObject = 2,
        kDependencyNode = 4,
        kDagNode = 107,
        kTransform = 110,
        kLookAt = 112,
        kJoint = 121,
        kWorld = 247,
        kShape = 248,
        kCamera = 250,
        kLocator = 281,
        kPlane = 288,
        kSketchPlane = 289,
        kGroundPlane = 290,
        kOrthoGrid = 291,
        kMesh = 296,
        kLight = 302,
        kAmbientLight = 303,
        kNonAmbientLight = 304,
        kNonExtendedLight = 307,
        kDirectionalLight = 308,
        kPointLight = 309,
        kSpotLight = 310,
        kShadingEngine = 320,
        kGeometryFilt = 334,
        kLambert = 366,
        kReflect = 367,
        kBlinn = 368,
        kPhong = 369,
        kSet = 464,
        kFileTexture = 493,
        kMeshPolygonComponent = 545,
        kMeshVertComponent = 547,
        kSkinClusterFilter = 678,
        kLast = 1106
    };
};
