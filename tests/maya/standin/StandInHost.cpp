// Stand-in host services: MEL, selection, time, files, arguments, proxies and registration.
#include <maya/MAnimControl.h>
#include <maya/MArgList.h>
#include <maya/MCommandResult.h>
#include <maya/MDoubleArray.h>
#include <maya/MFileObject.h>
#include <maya/MGlobal.h>
#include <maya/MIntArray.h>
#include <maya/MPxCommand.h>
#include <maya/MPxFileTranslator.h>
#include <maya/MSelectionList.h>
#include <maya/MStringArray.h>
#include <maya/MVector.h>
#include <maya/MVectorArray.h>

#define MNoVersionString
#include <maya/MFnPlugin.h>

#include <cmath>
#include <fstream>

#include "StandInScene.h"

using standin::Scene;

int MGlobal::apiVersion() { return MAYA_API_VERSION; }
MStatus MGlobal::getActiveSelectionList(MSelectionList& dest, bool)
{
    dest.m_items.clear();
    for (int node : Scene().selection)
        dest.add(MObject::StandInNode(node));
    return MStatus();
}
// A script file sources when it exists on disk.
MStatus MGlobal::sourceFile(const MString& fileName)
{
    Scene().commandLog.push_back(std::string("source ") + fileName.asChar());
    return std::ifstream(fileName.asChar()).good() ? MStatus() : MStatus(MStatus::kFailure);
}
MStatus MGlobal::executeCommand(const MString& command, bool display, bool undo)
{
    MCommandResult ignored;
    return executeCommand(command, ignored, display, undo);
}
MStatus MGlobal::executeCommand(const MString& command, MCommandResult& result, bool, bool)
{
    Scene().commandLog.push_back(command.asChar());
    const auto found = Scene().mel.find(command.asChar());
    if (found == Scene().mel.end() || found->second.fails)
        return MStatus(MStatus::kFailure);
    result.StandInSet(found->second.value);
    return MStatus();
}
void MGlobal::displayInfo(const MString& text) { Scene().infoLog.push_back(text.asChar()); }

MCommandResult::MCommandResult(MStatus*) {}
MCommandResult::~MCommandResult() = default;
MCommandResult::Type MCommandResult::resultType(MStatus*) const { return m_value.type; }
MStatus MCommandResult::getResult(int& result) const
{
    result = m_value.numbers.empty() ? 0 : static_cast<int>(m_value.numbers[0]);
    return MStatus();
}
MStatus MCommandResult::getResult(MIntArray& result) const
{
    for (double d : m_value.numbers)
        result.append(static_cast<int>(d));
    return MStatus();
}
MStatus MCommandResult::getResult(double& result) const
{
    result = m_value.numbers.empty() ? 0.0 : m_value.numbers[0];
    return MStatus();
}
MStatus MCommandResult::getResult(MDoubleArray& result) const
{
    for (double d : m_value.numbers)
        result.append(d);
    return MStatus();
}
MString MCommandResult::stringResult(MStatus*) const
{
    return MString(m_value.strings.empty() ? "" : m_value.strings[0].c_str());
}
MStatus MCommandResult::getResult(MStringArray& result) const
{
    for (const std::string& s : m_value.strings)
        result.append(MString(s.c_str()));
    return MStatus();
}
MStatus MCommandResult::getResult(MVector& result) const
{
    if (m_value.numbers.size() < 3)
        return MStatus(MStatus::kFailure);
    result = MVector(m_value.numbers[0], m_value.numbers[1], m_value.numbers[2]);
    return MStatus();
}
MStatus MCommandResult::getResult(MVectorArray& result) const
{
    for (size_t i = 0; i + 2 < m_value.numbers.size(); i += 3)
        result.append(MVector(m_value.numbers[i], m_value.numbers[i + 1], m_value.numbers[i + 2]));
    return MStatus();
}
MStatus MCommandResult::getResult(MDoubleArray& result, int& rows, int& columns) const
{
    rows = m_value.rows;
    columns = m_value.columns;
    return getResult(result);
}

MSelectionList::MSelectionList() = default;
MSelectionList::MSelectionList(const MSelectionList&) = default;
MSelectionList::~MSelectionList() = default;
unsigned int MSelectionList::length(MStatus*) const { return static_cast<unsigned int>(m_items.size()); }
MStatus MSelectionList::getDependNode(unsigned int index, MObject& object) const
{
    if (index >= m_items.size())
        return MStatus(MStatus::kInvalidParameter);
    object = m_items[index];
    return MStatus();
}
MStatus MSelectionList::add(const MObject& object, const bool)
{
    m_items.push_back(object);
    return MStatus();
}

MTime MAnimControl::minTime() { return MTime(Scene().minFrame, Scene().unit); }
MTime MAnimControl::maxTime() { return MTime(Scene().maxFrame, Scene().unit); }
MTime MAnimControl::currentTime() { return MTime(Scene().currentFrame, Scene().unit); }
MStatus MAnimControl::setCurrentTime(const MTime& time)
{
    Scene().currentFrame = time.as(Scene().unit);
    Scene().commandLog.push_back("currentTime " + std::to_string(Scene().currentFrame));
    return MStatus();
}

MFileObject::MFileObject() = default;
MFileObject::MFileObject(const MFileObject&) = default;
MFileObject::~MFileObject() = default;
MFileObject& MFileObject::operator=(const MFileObject&) = default;
MStatus MFileObject::setRawFullName(const MString& name)
{
    m_fullName = name.asChar();
    return MStatus();
}
// No environment variables are expanded in the stand-in.
MString MFileObject::expandedFullName() const { return MString(m_fullName.c_str()); }

MArgList::MArgList() = default;
MArgList::MArgList(const MArgList&) = default;
MArgList::~MArgList() = default;
unsigned int MArgList::length(MStatus*) const { return static_cast<unsigned int>(m_args.size()); }
MString MArgList::asString(unsigned int index, MStatus* status) const
{
    if (index >= m_args.size())
    {
        if (status)
            *status = MStatus(MStatus::kInvalidParameter);
        return MString();
    }
    if (status)
        *status = MStatus();
    return m_args[index];
}
MStatus MArgList::addArg(const MString& arg)
{
    m_args.push_back(arg);
    return MStatus();
}

MPxFileTranslator::MPxFileTranslator() = default;
MPxFileTranslator::~MPxFileTranslator() = default;
MStatus MPxFileTranslator::writer(const MFileObject&, const MString&, FileAccessMode) { return MStatus(MStatus::kFailure); }
bool MPxFileTranslator::haveWriteMethod() const { return false; }
MString MPxFileTranslator::defaultExtension() const { return MString("mb"); }
MString MPxFileTranslator::filter() const { return MString("*.*"); }
MPxFileTranslator::MFileKind MPxFileTranslator::identifyFile(const MFileObject&, const char*, short) const
{
    return kNotMyFileType;
}

MPxCommand::MPxCommand() = default;
MPxCommand::~MPxCommand() = default;
MStatus MPxCommand::doIt(const MArgList&) { return MStatus(MStatus::kFailure); }

const MString MFnPlugin::kDefaultDataLocation;
MFnPlugin::MFnPlugin() = default;
MFnPlugin::MFnPlugin(MObject&, const char* vendor, const char* version, const char* api, MStatus*)
{
    Scene().plugin.vendor = vendor;
    Scene().plugin.version = version;
    Scene().plugin.apiVersion = api;
}
MFnPlugin::~MFnPlugin() = default;
MStatus MFnPlugin::registerCommand(const MString& name, MCreatorFunction creator, MCreateSyntaxFunction)
{
    if (Scene().failCommandRegistration)
        return MStatus(MStatus::kFailure);
    Scene().plugin.commands.insert(name.asChar());
    Scene().plugin.creators[name.asChar()] = creator;
    return MStatus();
}
MStatus MFnPlugin::deregisterCommand(const MString& name)
{
    return Scene().plugin.commands.erase(name.asChar()) ? MStatus() : MStatus(MStatus::kFailure);
}
MStatus MFnPlugin::registerFileTranslator(const MString& name, const char* pixmap, MCreatorFunction creator,
                                          const char* script, const char* defaults, bool fullMel, MString)
{
    if (Scene().failTranslatorRegistration)
        return MStatus(MStatus::kFailure);
    Scene().plugin.creators[name.asChar()] = creator;
    Scene().plugin.translators[name.asChar()] = pixmap ? pixmap : "(null)";
    Scene().plugin.translatorOptionsGiven = script || defaults || fullMel;
    return MStatus();
}
MStatus MFnPlugin::deregisterFileTranslator(const MString& name)
{
    return Scene().plugin.translators.erase(name.asChar()) ? MStatus() : MStatus(MStatus::kFailure);
}
