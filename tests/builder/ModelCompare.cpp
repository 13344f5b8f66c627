#include "ModelCompare.h"

#include <algorithm>

#include "QMXTModelTVOFile.h"
#include "QMXTSink.h"

// The writer stores every field a reader can see, so equal bytes mean equal scenes for any user of
// the file; an unwritable scene never compares equal.
std::string DescribeModelDifference(const STVOScene& a, const STVOScene& b)
{
    CSinkMemory fileA, fileB;
    if (QMXTTVOWriteScene(a, fileA, "", "") != 0 || QMXTTVOWriteScene(b, fileB, "", "") != 0)
        return "a scene cannot be written";
    const std::vector<uint8_t>& x = fileA.Data();
    const std::vector<uint8_t>& y = fileB.Data();
    const auto parted = std::mismatch(x.begin(), x.end(), y.begin(), y.end());
    if (parted.first == x.end() && parted.second == y.end())
        return "";
    return "files of " + std::to_string(x.size()) + " and " + std::to_string(y.size()) +
           " bytes part at byte " + std::to_string(parted.first - x.begin());
}
