// tvoinfo: inspects and validates a .tvo scene file.
//
//   tvoinfo FILE            readable summary of the scene and its texts
//   tvoinfo --json FILE     the same summary as JSON
//   tvoinfo --blocks FILE   the raw block tree (offset, tag, name, length)
//   tvoinfo --options FILE  the export options stored in the file, one KEY=VALUE a line
//
// Exit status 0 for a valid file; 1 for an invalid or unreadable one, with one line on stderr naming
// the file, the byte offset and the block where reading failed; 2 for a usage error.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "QMXTError.h"
#include "QMXTModelTVO.h"
#include "QMXTResourceFile.h"
#include "QMXTSource.h"
#include "QMXTTVOBlocks.h"
#include "TVOBlockTree.h"
#include "TVOSummary.h"

namespace
{
enum EMode
{
    eSummary,
    eJson,
    eBlocks,
    eOptions
};

int Usage()
{
    std::fprintf(stderr, "usage: tvoinfo [--json | --blocks | --options] FILE\n");
    return 2;
}

int Invalid(const char* path, const std::string& why)
{
    std::fprintf(stderr, "tvoinfo: %s: %s\n", path, why.c_str());
    return 1;
}

// One of the two texts, read on its own so the other's absence does not matter.
bool ReadText(const CQMXTResourceFile& file, bool history, std::string& text)
{
    std::vector<char> buffer(static_cast<size_t>(file.Size()) + 1, 0);
    CQMXTModelTVO reader;
    const int result =
        history ? reader.ReadFromMemory(file.DataPtr(), file.Size(), nullptr, 0, buffer.data(), file.Size())
                : reader.ReadFromMemory(file.DataPtr(), file.Size(), buffer.data(), file.Size());
    if (result != 0)
        return false;
    text.assign(buffer.data());
    return true;
}
} // namespace

int main(int argc, char** argv)
{
    EMode mode = eSummary;
    const char* path = nullptr;
    for (int i = 1; i < argc; ++i)
    {
        if (std::strcmp(argv[i], "--json") == 0)
            mode = eJson;
        else if (std::strcmp(argv[i], "--blocks") == 0)
            mode = eBlocks;
        else if (std::strcmp(argv[i], "--options") == 0)
            mode = eOptions;
        else if (argv[i][0] == '-' && argv[i][1] != 0)
            return Usage();
        else if (path)
            return Usage();
        else
            path = argv[i];
    }
    if (!path)
        return Usage();

    // The reader's own messages (byte order, fixed point) are repeated in the one error line.
    QMXTSetErrorSink([](const std::string&) {});
    CQMXTResourceFile file(path);
    if (!file.IsOpen())
        return Invalid(path, "cannot open the file, or it is empty");
    CSourceStream source;
    source.Init(file.DataPtr(), file.Size());

    if (mode == eBlocks)
    {
        std::string tree;
        const bool ok = TVOBlockTree(source, tree);
        std::fputs(tree.c_str(), stdout);
        return ok ? 0 : Invalid(path, source.DescribeError());
    }

    CQMXTModelTVO scene;
    if (scene.ReadFromSource(source) != 0)
        return Invalid(path, QMXTTVOStartsWithVersion(file.DataPtr(), file.Size()) ? source.DescribeError()
                                                 : "not a .tvo file (bad magic: it does not start with the "
                                                   "version block \"" + std::string(kTVOVersion) + "\")");
    STVOFileFacts facts;
    facts.sPath = path;
    facts.nSize = file.Size();
    facts.bHasOptions = ReadText(file, false, facts.sOptions);
    facts.bHasHistory = ReadText(file, true, facts.sHistory);
    if (mode == eOptions)
    {
        if (!facts.bHasOptions)
            return Invalid(path, "holds no export options");
        std::fputs(facts.sOptions.c_str(), stdout);
        return 0;
    }
    const std::string text = mode == eJson ? TVOSummaryJson(scene, facts) : TVOSummaryText(scene, facts);
    std::fputs(text.c_str(), stdout);
    return 0;
}
