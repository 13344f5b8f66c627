// One export of a scene file that Assimp reads: load, fill the scene content, build, write the
// output atomically (CSafeOutput), run the post-export actions the options allow, and write the
// textures the input embeds next to the output. Shared by the command line and the options window
// program, so both export exactly alike.
//
// Messages go through Log and ProgressUpdate: progress steps and stage lines at levels 1 and 4,
// the importer's recovered errors as warnings. Nothing is printed directly and nothing throws.
// Every warning is also kept in the summary; with strict, any warning fails the job before the
// output is committed. The files the importer opened, the textures the materials name and the
// job's options files are the summary's dependencies, written as a Make-format file when depfile
// is set (after the output, and only when the export succeeded).
// Cost: dominated by the builder (see CTVO::Process); the importer's scene is freed as soon as the
// content is filled.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Options.h"
#include "QuantisationError.h"

struct SExportJob
{
    std::string input;  // scene file
    std::string output; // .tvo, .h or .cpp; the options' eExpFormat says which is written
    COptions options;   // as prepared (defaults, profile, options file, settings)
    std::vector<std::string> selection; // node names; empty exports the whole scene
    std::string animation;              // name or index; empty means the first animation
    int fps = 0;                        // 0: the animation's own rate
    unsigned threads = 0;               // for the per-mesh passes; 0: one a core
    bool runPostExport = true;          // run the post-export actions the options carry
    bool view = false;                  // open the written file in the default viewer afterwards
    // Pipelines (all off by default):
    std::string depfile;                  // write a Make-format dependency file here after the output
    std::vector<std::string> optionFiles; // files the options were read from, listed in the depfile
    bool strict = false;                  // any warning fails the export before the output is written
    std::vector<std::string> warnings;    // warnings already given while preparing the options
    bool measureQuantisation = false;     // fill SMeshSummary::quantisation
};

// One written mesh: its vertex format and how it is drawn.
struct SMeshSummary
{
    struct SStream
    {
        std::string name; // "positions", "normals", "tangents", "binormals", "uvw0".., "colours",
                          // "boneIndices", "boneWeights"
        std::string type; // data type name as the options show it ("float", "short normalised", ...)
        uint32_t components = 0;
    };
    uint32_t vertices = 0, triangles = 0, strips = 0, boneBatches = 0;
    bool interleaved = false;
    uint64_t bytes = 0; // vertex data, indices and strip lengths as written
    std::vector<SStream> streams;
    SQuantisationError quantisation; // measured only when the job asks
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
    uint32_t bones = 0;                  // distinct joints the meshes' bone batches name
    std::vector<SMeshSummary> meshList;  // one a mesh, in file order
    std::vector<std::string> warnings;   // every warning of the export, in order
    std::vector<std::string> dependencies; // what the export read (absolute paths), for the depfile
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
