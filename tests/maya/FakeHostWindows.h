// The Qt side of the plug-in as the tests see it: how often the options window was asked for, with
// which flag and what it answers (OK by default); whether the output log was opened; the paths
// given to the recent-files list.
#pragma once

#include <string>
#include <vector>

struct SFakeOptionsWindow
{
    int calls = 0;
    bool lastLaunchedFromMel = false;
    bool answer = true;
    int logOpened = 0, logClosed = 0;
    std::vector<std::string> recentFiles;
};

SFakeOptionsWindow& FakeOptionsWindow();
