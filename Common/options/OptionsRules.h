// Rules over a whole option set, shared by every host and window:
//  - which streams a host extracts from its scene (both hosts read an option alike);
//  - the check that refuses, before any work, option sets that cannot produce a file;
//  - the trust rule: options read from a file are data, so the options that start a program after
//    export (the post-export command and the viewer launch) are taken only from the user.
#pragma once

#include <string>

#include "OptionsData.h"

// What a host extracts: UVs only with bExportMappingChannels, normals only when the normal format
// is exported, colours only when the colour format is, materials only with bExportMaterials, skins
// only with bExportSkin (a host without skins writes meshes in their bind pose).
struct SExtractedStreams
{
    bool mappingChannels = false;
    bool normals = false;
    bool colours = false;
    bool materials = false;
    bool skins = false;
};
SExtractedStreams ExtractedStreams(const COptionsData& options);

// Largest uiPadDataTo: interleaved vertex data is aligned to a power of two from 1 to 256 bytes.
const uint32_t kMaxPadDataTo = 256;

// False with one line naming the option and why when the options cannot produce a file:
//  - bExportGeometry with positions switched off (sVcOptPos.bExport=0) or given no component
//    (sVcOptPos.nEnable without any of bits 0-3);
//  - any other exported vertex format whose component mask selects nothing;
//  - eExpFormat, cS, eTriSort or ePrimType outside their values;
//  - bAlignData with bInterleaved and a uiPadDataTo that is not a power of two from 1 to 256;
//  - bTangentSpace with uiTSUseUVW beyond the eight mapping channels.
// Cost: constant.
bool CheckExportOptions(const COptionsData& options, std::string& error);

// The options that start a program after export: sClPostTarget, sClPostArgs, sClPostCWD,
// bUsePostExportCL, bDisplayInDravik and sPathToDravik.
// Puts back in options the values those had in before, and returns true when a file read between
// the two had changed them so as to start a program (the caller then says once that the file's
// command was not run).
bool KeepProgramLaunchesOf(const COptionsData& before, COptionsData& options);
