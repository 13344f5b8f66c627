// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MStatus.h>
#include <maya/MTypes.h>

#include <string>

class MString;

class MFileObject
{
  public:
    MFileObject();
    MFileObject(const MFileObject&);
    virtual ~MFileObject();
    MFileObject& operator=(const MFileObject&);
    MStatus setRawFullName(const MString& fullName);
    MString expandedFullName() const;

  private:
    std::string m_fullName;
};
