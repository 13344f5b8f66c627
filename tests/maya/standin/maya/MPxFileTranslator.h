// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MStatus.h>
#include <maya/MString.h>

class MFileObject;

class MPxFileTranslator
{
  public:
    enum MFileKind
    {
        kIsMyFileType = 0,
        kCouldBeMyFileType = 1,
        kNotMyFileType = 2
    };
    enum FileAccessMode
    {
        kUnknownAccessMode = 0,
        kOpenAccessMode = 1,
        kReferenceAccessMode = 2,
        kImportAccessMode = 3,
        kSaveAccessMode = 4,
        kExportAccessMode = 5,
        kExportActiveAccessMode = 6
    };
    MPxFileTranslator();
    virtual ~MPxFileTranslator();
    virtual MStatus writer(const MFileObject& file, const MString& optionsString, FileAccessMode mode);
    virtual bool haveWriteMethod() const;
    virtual MString defaultExtension() const;
    virtual MString filter() const;
    virtual MPxFileTranslator::MFileKind identifyFile(const MFileObject& file, const char* buffer, short size) const;
};
