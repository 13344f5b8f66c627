// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MStatus.h>

#include <string>

class MStringArray;

class MString
{
  public:
    MString();
    MString(const char*);
    MString(const char*, int charLength);
    MString(const MString&);
    ~MString();
    MString& operator+=(const MString&);
    MString& operator+=(const char*);
    MString& operator+=(int);
    MString& operator=(const MString&);
    MString& operator=(const char*);
    bool operator==(const MString&) const;
    bool operator==(const char*) const;
    bool operator!=(const MString&) const;
    bool operator!=(const char*) const;
    MString operator+(const MString&) const;
    MString operator+(const char*) const;
    friend MString operator+(const char*, const MString&);
    friend std::ostream& operator<<(std::ostream&, const MString&);
    const char* asChar() const;
    unsigned int length() const;
    void clear();
    int index(char) const;
    int rindex(char) const;
    MStatus split(char, MStringArray&) const;
    MString substring(int start, int end) const;

  private:
    std::string m_text;
};
