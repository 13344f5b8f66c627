// Several scenes in one call (ostrex --out-dir DIR [-j N] SCENE...): each scene is exported to
// DIR/<name>.<format> in a child process of its own, at most N at a time, so a scene that fails,
// or even crashes the importer, costs only its own export. Each child's messages are collected
// and printed as one block when it ends (blocks never interleave); a final line counts the scenes.
// The children run the same export as a single call, so the bytes do not depend on N or on order.
#pragma once

#include <functional>
#include <string>
#include <vector>

struct SBatchScene
{
    std::string input;
    std::string output;
};

// DIR/<file name without extension>.<extension> for each input. False with the reason when two
// inputs would write the same output.
bool PlanBatch(const std::vector<std::string>& inputs, const std::string& dir, const std::string& extension,
               std::vector<SBatchScene>& plan, std::string& error);

// The processor count, at least 1.
int DefaultJobCount();

// Runs exportOne for every scene in a forked child (its return value is the child's exit code;
// what it writes to stderr is collected), at most jobs at a time. Returns how many scenes failed
// (a non-zero exit or a signal, which is reported on stderr naming the scene).
int RunBatch(const std::vector<SBatchScene>& plan, int jobs, const std::function<int(const SBatchScene&)>& exportOne);
