// The message seam: formatting, the 1024-byte cut, progress, sinks and their nesting.
#include <gtest/gtest.h>

#include <string>

#include "Log.h"

TEST(LogSeam, RecordsFormatsCutsAndNests)
{
    CRecordingLogSink outer;
    {
        CRecordingLogSink sink;
        Log(eLogWarning, "Instancing mesh %s (%d)", "Box", 3);
        ProgressUpdate(40, "Export stage %d", 2);
        Log(eLogInfo, "%s", std::string(5000, 'x').c_str());
        ASSERT_EQ(sink.entries.size(), 2u);
        EXPECT_TRUE(sink.Has(eLogWarning, "Instancing mesh Box (3)"));
        EXPECT_FALSE(sink.Has(eLogError, "Instancing mesh Box (3)"));
        EXPECT_EQ(sink.entries[1].text, std::string(1023, 'x'));
        ASSERT_EQ(sink.progress.size(), 1u);
        EXPECT_EQ(sink.progress[0].percent, 40);
        EXPECT_EQ(sink.progress[0].text, "Export stage 2");
    }
    // With the inner sink gone the outer one is back, and saw nothing of the inner messages.
    Log(eLogError, "outer");
    EXPECT_EQ(GetLogSink(), &outer);
    ASSERT_EQ(outer.entries.size(), 1u);
    EXPECT_EQ(outer.entries[0].text, "outer");
}
