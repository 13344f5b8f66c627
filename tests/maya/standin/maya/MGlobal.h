// Stand-in for the Maya devkit header of the same name. Commands answer from the stand-in scene's
// table of MEL results; every command and every displayed line is recorded there.
#pragma once

#include <maya/MStatus.h>
#include <maya/MString.h>

class MCommandResult;
class MSelectionList;

class MGlobal
{
  public:
    static int apiVersion();
    static MStatus getActiveSelectionList(MSelectionList& dest, bool orderedSelectionIfAvailable = false);
    static MStatus sourceFile(const MString& fileName);
    static MStatus executeCommand(const MString& command, bool displayEnabled = false, bool undoEnabled = false);
    static MStatus executeCommand(const MString& command, MCommandResult& result, bool displayEnabled = false,
                                  bool undoEnabled = false);
    static void displayInfo(const MString& text);
};
