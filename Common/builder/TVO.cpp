#include "TVO.h"

#include <memory>
#include <new>
#include <sstream>

#include "Bintuck.h"
#include "Log.h"
#include "QMXTSink.h"
#include "QMXTModelTVOTransform.h"
#include "TVOBuilderStrings.h"
#include "TVOMeshPasses.h"

namespace
{
const char* Text(int n)
{
    return CTVOBuilderStrings::CStrText(n);
}

bool OutOfMemory()
{
    Log(eLogError, "Error: out of memory while building the scene.");
    return false;
}

void FlipKeys(float* keys, uint32_t count, uint32_t keySize, const int* elements, int elementCount)
{
    if (!keys)
        return;
    for (uint32_t k = 0; k + keySize <= count; k += keySize)
        for (int e = 0; e < elementCount; ++e)
            keys[k + elements[e]] = -keys[k + elements[e]];
}
} // namespace

void FlipNodeAnimation(STVOScene& scene)
{
    static const int z[1] = {2};
    static const int matrix[6] = {2, 6, 8, 9, 11, 14};
    for (uint32_t i = 0; i < scene.nNumNode; ++i)
    {
        STVONode& n = scene.pNode[i];
        auto frames = [&](uint32_t flag) { return (n.nAnimationFlags & flag) ? scene.nNumFrame : 1u; };
        FlipKeys(n.pfAnimPosition,
                 QMXTModelTVOGetAnimArraySize(n.pnAnimPositionIdx, frames(eTVOHasPositionAnimation), 3), 3, z,
                 1);
        FlipKeys(n.pfAnimRotation,
                 QMXTModelTVOGetAnimArraySize(n.pnAnimRotationIdx, frames(eTVOHasRotationAnimation), 4), 4, z,
                 1);
        FlipKeys(n.pfAnimMatrix,
                 QMXTModelTVOGetAnimArraySize(n.pnAnimMatrixIdx, frames(eTVOHasMatrixAnimation), 16), 16,
                 matrix, 6);
    }
}

CTVO::~CTVO()
{
    DestroyScene();
}

void CTVO::DestroyScene()
{
    delete m_pScene;
    m_pScene = nullptr;
}

bool CTVO::Process(const SContent& content, const COptions& options)
{
    return ProcessWith(content, SBuilderSettings::FromOptions(options));
}

bool CTVO::Process(SContent&& content, const COptions& options)
{
    return RunGuarded(content, SBuilderSettings::FromOptions(options), &content);
}

bool CTVO::ProcessWith(const SContent& content, const SBuilderSettings& s)
{
    return RunGuarded(content, s, nullptr);
}

bool CTVO::RunGuarded(const SContent& content, const SBuilderSettings& s, SContent* consumable)
{
    // Nothing may leave the builder as an exception: running out of memory fails the export.
    try
    {
        return RunStages(content, s, consumable);
    }
    catch (const std::bad_alloc&)
    {
        return OutOfMemory();
    }
}

bool CTVO::RunStages(const SContent& content, const SBuilderSettings& s, SContent* consumable)
{
    DestroyScene();
    m_pScene = new CTVOSceneEx();
    m_pScene->FreeGeometryOnceBuilt(consumable);
    m_pScene->SetThreads(m_nThreads);

    // The first text initialises the string table here, before the stages' worker threads read it.
    ProgressUpdate(0, "%s", Text(CTVOBuilderStrings::eExportStage1));
    if (!m_pScene->GenA(&content, s))
        return false;
    Log(eLogInfo, "%s", Text(CTVOBuilderStrings::eComplete));
    ProgressUpdate(40, "%s", Text(CTVOBuilderStrings::eExportStage2));
    // GenB fails only for want of memory; the stages after it need its arrays.
    if (!m_pScene->GenB())
        return OutOfMemory();
    Log(eLogInfo, "%s", Text(CTVOBuilderStrings::eComplete));
    ProgressUpdate(50, "%s", Text(CTVOBuilderStrings::eExportStage3));
    m_pScene->GenC(s);
    Log(eLogInfo, "%s", Text(CTVOBuilderStrings::eComplete));
    ProgressUpdate(75, "%s", Text(CTVOBuilderStrings::eFinalExportStage));
    if (!m_pScene->GenD(s))
        return false;

    if (!s.bExportModelSpace)
    {
        if (m_pScene->InitImpl() != 0)
            return OutOfMemory();
        const uint32_t frame = m_pScene->nNumFrame > s.uiStaticFrame ? s.uiStaticFrame : 0u;
        m_pScene->SetFrame(static_cast<float>(frame));
        std::unique_ptr<CTVOSceneEx> world(new CTVOSceneEx());
        const int flattened = QMXTModelTVOFlattenToWorldSpace(*m_pScene, *world);
        DestroyScene();
        m_pScene = world.release();
        if (flattened != 0)
        {
            Log(eLogError, "Error: the scene could not be flattened to world space.");
            return false;
        }
    }

    if (s.IsDirectX())
        FlipNodeAnimation(*m_pScene);

    m_quantisationErrors.clear();
    for (uint32_t i = 0; i < m_pScene->nNumMesh; ++i)
    {
        STVOMesh& mesh = m_pScene->pMesh[i];
        CQuantisationProbe probe;
        if (m_bMeasureQuantisation)
            probe.Take(mesh);
        VertexFormatPass(mesh, s);
        if (m_bMeasureQuantisation)
            m_quantisationErrors.push_back(probe.Compare(mesh, s));
        if (s.bInterleaved)
            RequireMemory(QMXTModelTVOToggleInterleaved(mesh, s.bAlignData ? s.uiPadDataTo : 1) == 0);
    }

    if (s.bMerge && !s.sMergeSource.empty())
    {
        CQMXTModelTVO source;
        if (source.ReadFromFile(s.sMergeSource.c_str(), nullptr, 0, nullptr, 0) == 0)
            QMXTModelTVOMergeMaterials(source, *m_pScene);
        source.Destroy();
    }
    Log(eLogInfo, "%s", Text(CTVOBuilderStrings::eComplete));
    return m_pScene->InitImpl() == 0 || OutOfMemory();
}

std::string EmbeddedFileName(const char* path)
{
    std::string name = BaseName(path ? path : "");
    const size_t dot = name.rfind('.');
    if (dot != std::string::npos)
        name.erase(dot);
    return name + ".tvo";
}

int WriteWithBintuck(const char* path, COptions& options, const char* history, CTVOSceneEx* scene)
{
    if (!path || !scene)
        return 1;
    try
    {
        const CQMXTString optionsText = options.ToString();
        CSinkMemory binary;
        if (scene->SaveTVO(binary, optionsText.c_str(), history) != 0)
            return 1;
        std::ostringstream text;
        text << "/*\n"
             << "\tExpOpt{\n"
             << optionsText.c_str() << "\t}ExpOpt\n\n"
             << "\tHistory{\n"
             << (history ? history : "") << "\n\t}History\n"
             << "*/\n";
        WriteHeader(text, 0);
        WrapData(text, binary.Data().data(), binary.Data().size(), EmbeddedFileName(path), 0);
        return FileOut(path, text, std::ios_base::trunc) ? 0 : 1;
    }
    catch (const std::bad_alloc&)
    {
        return 1;
    }
}

bool CTVO::Write(const char* path, COptions& options, const char* history, bool runPostExport)
{
    ProgressUpdate(95, "%s", Text(CTVOBuilderStrings::eSaving));
    bool ok = false;
    if (m_pScene && path)
        ok = Save(path, options, history);
    if (!ok)
    {
        Log(eLogError, "%s", Text(CTVOBuilderStrings::eFailedToWriteOutput));
        return false;
    }
    ProgressUpdate(100, "%s", Text(CTVOBuilderStrings::eComplete));
    if (runPostExport)
        RunPostExport(options);
    return true;
}

bool CTVO::Save(const char* path, COptions& options, const char* history)
{
    // Running out of memory while saving fails the write like any other write error.
    try
    {
        options.m_sPath = path;
        switch (options.GetOption(COptionsData::eExpFormat))
        {
        case eExportFormatBinary:
            return m_pScene->SaveTVO(path, options.ToString().c_str(), history) == 0;
        case eExportFormatHeader:
        case eExportFormatSource:
            return WriteWithBintuck(path, options, history, m_pScene) == 0;
        default:
            return false;
        }
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

void CTVO::RunPostExport(const COptions& options)
{
    SPostExportSettings s;
    s.sClPostTarget = options.GetOption(COptionsData::eClPostTarget).c_str();
    s.sClPostArgs = options.GetOption(COptionsData::eClPostArgs).c_str();
    s.sClPostCWD = options.GetOption(COptionsData::eClPostCWD).c_str();
    s.sPathToDravik = options.GetOption(COptionsData::ePathToDravik).c_str();
    s.bDisplayInDravik = options.GetOption(COptionsData::eDisplayInDravik);
    s.eExpFormat = options.GetOption(COptionsData::eExpFormat);
    s.sOutputPath = options.m_sPath.c_str();
    RunPostExportActions(s);
}
