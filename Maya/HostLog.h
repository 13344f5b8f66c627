// The host side of the message seam: while an export runs, every Log and ProgressUpdate text is
// printed on standard output with a line end and shown in Maya's script editor
// (MGlobal::displayInfo), then handed on to the sink that was installed before (the output log
// window, a test's recorder). The progress percentage is ignored; detail messages (level 4) are
// only handed on.
#pragma once

#include "Log.h"

class CMayaLogSink : public ILogSink
{
  public:
    explicit CMayaLogSink(ILogSink* next) : m_pNext(next) {}
    void OnLog(int level, const std::string& text) override;
    void OnProgress(int percent, const std::string& text) override;

  private:
    void Show(const std::string& text);
    ILogSink* m_pNext;
};

// Installs a CMayaLogSink for its lifetime and puts the previous sink back.
class CHostLogScope
{
  public:
    CHostLogScope();
    ~CHostLogScope();
    CHostLogScope(const CHostLogScope&) = delete;
    CHostLogScope& operator=(const CHostLogScope&) = delete;

  private:
    CMayaLogSink m_sink;
    ILogSink* m_pPrevious;
};
