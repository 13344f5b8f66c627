#include "MelLauncher.h"

#include <maya/MArgList.h>
#include <maya/MFileObject.h>
#include <maya/MGlobal.h>
#include <maya/MString.h>

#include "Ostrex.h"

void* MelLauncher::creator()
{
    return new MelLauncher;
}

MStatus MelLauncher::doIt(const MArgList& args)
{
    if (args.length() == 0)
    {
        MGlobal::displayInfo("Error: Insufficient arguments to complete export.");
        MGlobal::displayInfo("e.g.Ostrex_Export(\"filename.tvo\") - Export the .tvo file using the settings stored "
                             "from the last export");
        MGlobal::displayInfo("Ostrex_Export(\"filename.tvo\", \"optionsfilename.txt\") - Export the .tvo file using "
                             "the settings stored in optionsfilename.txt");
        MGlobal::displayInfo("Ostrex_Export(\"filename.tvo\", \"optionsfilename.txt\", exportActive) - Export only "
                             "the selected meshes using the settins stored in optionsfilename.txt");
        return MStatus(MStatus::kFailure);
    }
    Ostrex exporter;
    MFileObject file;
    file.setRawFullName(args.asString(0));

    MString options("LaunchedFromMELCommand;");
    MPxFileTranslator::FileAccessMode mode = MPxFileTranslator::kExportAccessMode;
    if (args.length() > 1)
    {
        options += args.asString(1);
        options += ";";
        MStatus read;
        if (args.asString(2, &read) == "exportActive")
            mode = MPxFileTranslator::kExportActiveAccessMode;
    }
    return exporter.writer(file, options, mode);
}
