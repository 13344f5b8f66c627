// One export of a scene file that Assimp reads: load, fill the scene content, build, write the
// output atomically (CSafeOutput), run the post-export actions the options allow, and write the
// textures the input embeds next to the output. Shared by the command line and the options window
// program, so both export exactly alike.
//
// Messages go through Log and ProgressUpdate: progress steps and stage lines at levels 1 and 4,
// the importer's recovered errors as warnings. Nothing is printed directly and nothing throws.
// Cost: dominated by the builder (see CTVO::Process); the importer's scene is freed as soon as the
// content is filled.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Options.h"

struct SExportJob
{
    std::string input;  // scene file
    std::string output; // .tvo, .h or .cpp; the options' eExpFormat says which is written
    COptions options;   // as prepared (defaults, profile, options file, settings)
    std::vector<std::string> selection; // node names; empty exports the whole scene
    std::string animation;              // name or index; empty means the first animation
    int fps = 0;                        // 0: the animation's own rate
    bool runPostExport = true;          // run the post-export actions the options carry
    bool view = false;                  // open the written file in the default viewer afterwards
};

// What was written, for the summary line and for reports.
struct SExportSummary
{
    std::string output;
    uint64_t bytes = 0;
    uint32_t nodes = 0, meshes = 0, materials = 0, frames = 0;
    uint64_t triangles = 0, vertices = 0;
    double seconds = 0.0;
    std::vector<std::string> extraFiles; // embedded textures written next to the output
};

struct SExportOutcome
{
    bool ok = false;
    std::string subject; // the file the error is about
    std::string error;   // one line, when not ok
    SExportSummary summary;
};

SExportOutcome RunExportJob(SExportJob& job);

// "Wrote out/a.tvo: 12597 bytes, 7 nodes, 2 meshes, 140 triangles, 96 vertices, 2 materials,
// 30 frames in 0.05 s".
std::string ExportSummaryLine(const SExportSummary& summary);

// The history text stored in the written file: the input's file name, and the time
// SOURCE_DATE_EPOCH names when it is set (UTC), so the same inputs always give the same bytes.
std::string ExportHistory(const std::string& input);
