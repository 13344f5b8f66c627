// A log sink that keeps the text of every warning (level 2) and passes every message and progress
// step on to the sink that was installed before it, so --strict and the JSON report can count
// warnings without the core knowing. Installs itself for its lifetime.
#pragma once

#include <string>
#include <vector>

#include "Log.h"

class CWarningTee : public ILogSink
{
  public:
    CWarningTee();
    ~CWarningTee() override;
    CWarningTee(const CWarningTee&) = delete;
    CWarningTee& operator=(const CWarningTee&) = delete;

    void OnLog(int level, const std::string& text) override;
    void OnProgress(int percent, const std::string& text) override;

    std::vector<std::string> warnings;

  private:
    ILogSink* m_pNext;
};
