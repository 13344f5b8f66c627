// A scene file opened for viewing: read with the project's reader, checked for drawing, with its
// file facts for the summary.
#pragma once

#include <string>

#include "QMXTModelTVO.h"
#include "TVOSummary.h"

class CTVOViewScene
{
  public:
    // Reads and checks the file. Returns an empty string on success, else one line: the reader's
    // message (where and why reading failed) or what the drawing checks refused.
    std::string Open(const std::string& path);

    CQMXTModelTVO& Model() { return m_model; }
    const STVOFileFacts& Facts() const { return m_facts; }
    // Folder of the file, for textures named relative to it.
    std::string Folder() const;
    // Last frame that can be shown (0 for a static scene).
    float LastFrame() const;

  private:
    CQMXTModelTVO m_model;
    STVOFileFacts m_facts;
};
