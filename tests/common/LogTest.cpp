// The message seam: formatting, the 1024-byte cut, sinks and their nesting.
#include <gtest/gtest.h>

#include <string>

#include "Log.h"

TEST(LogSeam, RecordsLevelsTextsAndProgress)
{
    CRecordingLogSink sink;
    Log(eLogWarning, "Instancing mesh %s (%d)", "Box", 3);
    ProgressUpdate(40, "Export stage %d", 2);
    ASSERT_EQ(sink.entries.size(), 1u);
    EXPECT_TRUE(sink.Has(eLogWarning, "Instancing mesh Box (3)"));
    EXPECT_FALSE(sink.Has(eLogError, "Instancing mesh Box (3)"));
    ASSERT_EQ(sink.progress.size(), 1u);
    EXPECT_EQ(sink.progress[0].percent, 40);
    EXPECT_EQ(sink.progress[0].text, "Export stage 2");
}

TEST(LogSeam, LongTextIsCutAt1023Characters)
{
    CRecordingLogSink sink;
    const std::string longText(5000, 'x');
    Log(eLogInfo, "%s", longText.c_str());
    ASSERT_EQ(sink.entries.size(), 1u);
    EXPECT_EQ(sink.entries[0].text.size(), 1023u);
}

TEST(LogSeam, NestedSinksRestoreThePreviousOne)
{
    CRecordingLogSink outer;
    {
        CRecordingLogSink inner;
        Log(eLogError, "inner");
        EXPECT_EQ(inner.Count("inner"), 1);
    }
    Log(eLogError, "outer");
    EXPECT_EQ(outer.Count("inner"), 0);
    EXPECT_EQ(outer.Count("outer"), 1);
    EXPECT_EQ(GetLogSink(), &outer);
}
