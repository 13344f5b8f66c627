// Feeds arbitrary bytes to the .tvo reader. Besides the sanitizers' checks it asserts two properties:
// a scene that reads can be written, and writing what was read is stable (write, read, write gives
// the same bytes); and a scene that reads can be queried for every node's world matrix.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "QMXTError.h"
#include "QMXTModelTVO.h"
#include "QMXTSink.h"

namespace
{
void Check(bool condition)
{
    if (!condition)
        std::abort();
}

void Quiet()
{
    static bool done = false;
    if (!done)
        QMXTSetErrorSink([](const std::string&) {});
    done = true;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Quiet();
    if (size > UINT32_MAX)
        return 0;
    const uint32_t n = static_cast<uint32_t>(size);
    CQMXTModelTVO model;
    if (model.ReadFromMemory(data, n) == 0)
    {
        CSinkMemory first;
        Check(model.SaveTVO(first, "o", "h") == 0);
        CQMXTModelTVO again;
        Check(again.ReadFromMemory(first.Data().data(), static_cast<uint32_t>(first.Data().size())) == 0);
        CSinkMemory second;
        Check(again.SaveTVO(second, "o", "h") == 0);
        Check(first.Data() == second.Data());

        CQMXTModelTVO copy;
        Check(copy.CopyFromMemory(model) == 0);

        model.SetFrame(model.nNumFrame > 1 ? static_cast<float>(model.nNumFrame) - 1.5f : 0.0f);
        for (uint32_t i = 0; i < model.nNumNode; ++i)
            model.GetWorldMatrix(model.pNode[i]);
    }
    char options[16], history[8];
    CQMXTModelTVO texts;
    texts.ReadFromMemory(data, n, options, sizeof options, history, sizeof history);
    texts.ReadFromMemory(data, n, nullptr, 0, history, sizeof history);
    return 0;
}
