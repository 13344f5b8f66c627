#include "FakeHostWindows.h"

#include "HostWindows.h"

SFakeOptionsWindow& FakeOptionsWindow()
{
    static SFakeOptionsWindow window;
    return window;
}

bool ShowExportOptions(COptions&, bool launchedFromMel)
{
    ++FakeOptionsWindow().calls;
    FakeOptionsWindow().lastLaunchedFromMel = launchedFromMel;
    return FakeOptionsWindow().answer;
}
