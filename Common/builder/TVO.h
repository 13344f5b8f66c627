// The builder facade: scene content and export options in, one scene model out, written as a
// binary .tvo file or as C++ source that embeds it.
//
// Process runs the stages: GenA (content to scene model, "Export stage 1", 0 %), GenB (index
// resolution, "Export stage 2", 40 %), GenC (node animation, "Export stage 3", 50 %), GenD (the
// geometry pass of every mesh, "Final export stage", 75 %); then flattening to world space, the
// DirectX mirror of node animation, the vertex-format pass and interleaving of every mesh, and
// merging materials from an existing file. Write saves the result and runs the post-export actions.
#pragma once

#include <string>

#include "BuilderSettings.h"
#include "Content.h"
#include "PostExport.h"
#include "QuantisationError.h"
#include "TVOSceneEx.h"

class CTVO
{
  public:
    CTVO() = default;
    ~CTVO();
    CTVO(const CTVO&) = delete;
    CTVO& operator=(const CTVO&) = delete;

    // Builds the scene with the options read once into SBuilderSettings.
    bool Process(const SContent& content, const COptions& options);
    // The same scene from content the caller gives up: each node's geometry is freed as soon as its
    // meshes are built, which lowers the peak memory of large exports. The content keeps its nodes,
    // materials and animation; its geometry is empty afterwards.
    bool Process(SContent&& content, const COptions& options);
    // Saves the scene in the format eExpFormat names (recording path as the options' export
    // target), then runs the post-export actions when asked. False, logged as "Failed to write
    // output file", when nothing complete was written.
    bool Write(const char* path, COptions& options, const char* history, bool runPostExport);
    // The user's command line and the viewer, for the export target the options carry.
    void RunPostExport(const COptions& options);

    // Builds the scene. False when a stage fails; the partly built scene is kept until the next
    // Process.
    bool ProcessWith(const SContent& content, const SBuilderSettings& settings);

    // Threads for the per-mesh passes of the next Process (0, the default: one a core). The scene,
    // its bytes and the messages are the same for every count.
    void SetThreads(unsigned threads) { m_nThreads = threads; }

    // The scene built by the last Process, or null.
    CTVOSceneEx* Scene() const { return m_pScene; }

    // When on, Process measures the error the vertex types introduce (see CQuantisationProbe); the
    // result has one entry per mesh of Scene(). Off by default, at no cost.
    void MeasureQuantisation(bool on) { m_bMeasureQuantisation = on; }
    const std::vector<SQuantisationError>& QuantisationErrors() const { return m_quantisationErrors; }

  private:
    // RunStages with std::bad_alloc reported as the out-of-memory error. consumable, when given, is
    // content (the same object) whose geometry the stages may free once built.
    bool RunGuarded(const SContent& content, const SBuilderSettings& settings, SContent* consumable);
    bool RunStages(const SContent& content, const SBuilderSettings& settings, SContent* consumable);
    // Writes the scene in the options' format; false when nothing complete was written.
    bool Save(const char* path, COptions& options, const char* history);
    void DestroyScene();
    CTVOSceneEx* m_pScene = nullptr;
    bool m_bMeasureQuantisation = false;
    unsigned m_nThreads = 0;
    std::vector<SQuantisationError> m_quantisationErrors;
};

// Writes the scene as source text embedding its .tvo form: a comment holding the options text
// (between "\tExpOpt{\n" and "\t}ExpOpt\n") and the history, then the wrapped file registered as
// the output's base name with the extension ".tvo". Returns 0 on success.
int WriteWithBintuck(const char* path, COptions& options, const char* history, CTVOSceneEx* scene);
// "<base name without extension>.tvo" of an output path.
std::string EmbeddedFileName(const char* path);

// Mirrors node animation through the xy plane: z of every position key, z of every rotation
// quaternion, and the matrix elements with exactly one of row and column equal to 2.
void FlipNodeAnimation(STVOScene& scene);
