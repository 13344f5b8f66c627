// Stand-in for the Maya devkit header of the same name: the declarations the plug-in uses.
#pragma once

#define MAYA_API_VERSION 201602

#ifndef DLL_PUBLIC
#define DLL_PUBLIC __attribute__((visibility("default")))
#endif
#ifndef PLUGIN_EXPORT
#define PLUGIN_EXPORT DLL_PUBLIC
#endif

#ifndef NULL
#define NULL 0
#endif

class MSyntax;
class MStatus;

typedef long MInt64;
typedef unsigned long MUint64;
typedef float float2[2];
typedef float float3[3];
typedef double double3[3];

typedef void* (*MCreatorFunction)();
typedef MSyntax (*MCreateSyntaxFunction)();
typedef MStatus (*MInitializeFunction)();

class MSpace
{
  public:
    enum Space
    {
        kInvalid = 0,
        kTransform = 1,
        kPreTransform = 2,
        kPostTransform = 3,
        kWorld = 4,
        kObject = kPreTransform,
        kLast = 5
    };
};
