// Feeds arbitrary text to the export-options parser. Besides the sanitizers' checks it asserts that
// every vertex format ends with a known data type and a mask inside its allowed components, and
// that the text form is a fixed point: parsing what ToString wrote and writing again gives the same
// text (the first parse may hold more than text keeps, such as a float's third decimal).
#include <cstdint>
#include <cstdlib>
#include <string>

#include "OptionsData.h"

namespace
{
void Check(bool condition)
{
    if (!condition)
        std::abort();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    COptionsData options;
    const int count = options.SetFromString(text.c_str());
    Check(count >= 0 && static_cast<size_t>(count) <= size);
    for (int i = 0; i < COptionsData::eNumVectorFormats; ++i)
    {
        const auto format = static_cast<COptionsData::EVectorFormats>(i);
        Check((options.GetOption(format, CVectorOpt::eEnable) & ~COptionsData::AllowedMask(format)) == 0);
        Check(IsVertexDataType(options.GetOption(format, CVectorOpt::eDataType)));
    }
    const CQMXTString written = options.ToString();
    COptionsData again;
    again.SetFromString(written.c_str());
    Check(again.ToString() == written);
    return 0;
}
