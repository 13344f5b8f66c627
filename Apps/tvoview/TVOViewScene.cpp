#include "TVOViewScene.h"

#include "QMXTError.h"
#include "QMXTResourceFile.h"
#include "QMXTSource.h"
#include "TVOSceneCheck.h"

std::string CTVOViewScene::Open(const std::string& path)
{
    // The reader's own debug messages are summed up by its one error line.
    QMXTSetErrorSink([](const std::string&) {});
    CQMXTResourceFile file(path.c_str());
    if (!file.IsOpen())
        return "cannot open the file, or it is empty";
    CSourceStream source;
    source.Init(file.DataPtr(), file.Size());
    // A successful read also makes the model ready for animation queries (InitImpl).
    if (m_model.ReadFromSource(source) != 0)
        return source.DescribeError();
    const std::string problem = TVOCheckSceneForDrawing(m_model);
    if (!problem.empty())
        return problem;
    m_facts.sPath = path;
    m_facts.nSize = file.Size();
    TVOReadFileTexts(file.DataPtr(), file.Size(), m_facts);
    return {};
}

std::string CTVOViewScene::Folder() const
{
    const size_t slash = m_facts.sPath.find_last_of('/');
    return slash == std::string::npos ? "." : m_facts.sPath.substr(0, slash == 0 ? 1 : slash);
}

float CTVOViewScene::LastFrame() const
{
    return m_model.nNumFrame > 1 ? static_cast<float>(m_model.nNumFrame - 1) : 0.0f;
}
