// The one door for messages leaving the exporter core.
//
// Log and ProgressUpdate format into a 1024-byte buffer (longer text is cut) and hand the text to
// the installed sink. Levels: 0 success (dark green), 1 information, 2 warning, 3 error; other
// levels, such as 4 (detail), are passed on for sinks that show details and ignored by the rest.
// Neither throws: a message that cannot be made or kept for want of memory is dropped, so an
// out-of-memory error can be logged from the handler that caught std::bad_alloc.
#pragma once

#include <string>
#include <vector>

enum ELogLevel : int
{
    eLogSuccess = 0,
    eLogInfo = 1,
    eLogWarning = 2,
    eLogError = 3,
    eLogDetail = 4
};

class ILogSink
{
  public:
    virtual ~ILogSink() = default;
    virtual void OnLog(int level, const std::string& text) = 0;
    virtual void OnProgress(int percent, const std::string& text) = 0;
};

void Log(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));
void ProgressUpdate(int percent, const char* format, ...) __attribute__((format(printf, 2, 3)));

// Installs a sink (not owned) and returns the previous one. nullptr drops every message.
ILogSink* SetLogSink(ILogSink* sink);
ILogSink* GetLogSink();
// Installs a sink (not owned) for the calling thread only, in front of the installed sink, and
// returns the thread's previous one; nullptr goes back to the installed sink. Worker threads keep
// their messages with it, so that they can be passed on in a fixed order.
ILogSink* SetThreadLogSink(ILogSink* sink);

// Keeps every message and progress step, for tests. Installs itself for its lifetime.
class CRecordingLogSink : public ILogSink
{
  public:
    struct SEntry
    {
        int level;
        std::string text;
    };
    struct SProgress
    {
        int percent;
        std::string text;
    };

    CRecordingLogSink();
    ~CRecordingLogSink() override;
    CRecordingLogSink(const CRecordingLogSink&) = delete;
    CRecordingLogSink& operator=(const CRecordingLogSink&) = delete;

    void OnLog(int level, const std::string& text) override;
    void OnProgress(int percent, const std::string& text) override;

    // True when some message of this level has exactly this text.
    bool Has(int level, const std::string& text) const;
    // Number of messages with exactly this text, at any level.
    int Count(const std::string& text) const;
    void Clear();

    std::vector<SEntry> entries;
    std::vector<SProgress> progress;

  private:
    ILogSink* m_pPrevious;
};
