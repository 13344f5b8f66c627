#include <gtest/gtest.h>
#include <new>
#include <string>
#include <vector>

#include "Log.h"
#include "ModelCompare.h"
#include "OrderedWork.h"
#include "SceneFixtures.h"
#include "TVO.h"

namespace
{
// Runs 40 items on 4 threads; item `stop` fails (or throws, with `raise`), and `after` fails at
// item `refuse`. Returns the messages in the order the caller saw them.
std::vector<std::string> RunItems(uint32_t stop, bool raise, bool& result, uint32_t refuse = UINT32_MAX)
{
    CRecordingLogSink log;
    std::vector<std::string> seen;
    result = RunInOrder(
        40, 4,
        [&](uint32_t i)
        {
            Log(eLogInfo, "work %u", i);
            if (i == stop && raise)
                throw std::bad_alloc();
            return i != stop;
        },
        [](uint32_t i) { Log(eLogInfo, "before %u", i); },
        [&](uint32_t i)
        {
            Log(eLogInfo, "after %u", i);
            return i != refuse;
        });
    for (const CRecordingLogSink::SEntry& e : log.entries)
        seen.push_back(e.text);
    return seen;
}

std::vector<std::string> Expected(uint32_t last, bool lastDone)
{
    std::vector<std::string> want;
    for (uint32_t i = 0; i <= last; ++i)
        for (const char* step : {"before", "work", "after"})
            if (i < last || lastDone || std::string(step) != "after")
                want.push_back(std::string(step) + " " + std::to_string(i));
    return want;
}
} // namespace

TEST(OrderedWork, MessagesFailuresAndExceptionsComeInItemOrder)
{
    bool result = false;
    EXPECT_EQ(RunItems(UINT32_MAX, false, result), Expected(39, true));
    EXPECT_TRUE(result);
    EXPECT_EQ(RunItems(17, false, result), Expected(17, false));
    EXPECT_FALSE(result);
    EXPECT_THROW(RunItems(5, true, result), std::bad_alloc);
    EXPECT_EQ(RunItems(UINT32_MAX, false, result, 9), Expected(9, true));
    EXPECT_FALSE(result);
}

TEST(OrderedWork, SceneIsTheSameForAnyThreadCount)
{
    SContent content;
    for (int n = 0; n < 6; ++n)
        content.AddNode(MeshNode("Grid" + std::to_string(n), GridGeometry(4 + 3 * n)));
    COptions options;
    CTVO one, many;
    one.SetThreads(1);
    many.SetThreads(3);
    CRecordingLogSink logOne;
    ASSERT_TRUE(one.Process(content, options));
    CRecordingLogSink logMany;
    ASSERT_TRUE(many.Process(content, options));
    EXPECT_EQ(DescribeModelDifference(*one.Scene(), *many.Scene()), "");
    ASSERT_EQ(logOne.entries.size(), logMany.entries.size());
    for (size_t i = 0; i < logOne.entries.size(); ++i)
        EXPECT_EQ(logOne.entries[i].text, logMany.entries[i].text);
}
