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

void OpenExportLog()
{
    ++FakeOptionsWindow().logOpened;
}

void CloseExportLog()
{
    ++FakeOptionsWindow().logClosed;
}

bool SaveToRegistry(const char* exportedPath)
{
    FakeOptionsWindow().recentFiles.insert(FakeOptionsWindow().recentFiles.begin(), exportedPath);
    return true;
}
