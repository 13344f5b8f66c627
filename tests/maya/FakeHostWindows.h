// The options window as the tests see it: how often it was asked for, with which flag, and what
// it answers (OK by default).
#pragma once

struct SFakeOptionsWindow
{
    int calls = 0;
    bool lastLaunchedFromMel = false;
    bool answer = true;
};

SFakeOptionsWindow& FakeOptionsWindow();
