// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MIOStream.h>
#include <maya/MTypes.h>

class MString;

class MStatus
{
  public:
    enum MStatusCode
    {
        kSuccess = 0,
        kFailure = 1,
        kInsufficientMemory = 2,
        kInvalidParameter = 3,
        kLicenseFailure = 4,
        kUnknownParameter = 5,
        kNotImplemented = 6,
        kNotFound = 7,
        kEndOfFile = 8
    };
    MStatus() : fStatusCode(kSuccess), fInternalStatusCode(0), fSuccess(true) {}
    MStatus(MStatusCode);
    MStatus(const MStatus&) = default;
    MStatus& operator=(const MStatus&) = default;
    bool operator==(const MStatus& other) const { return fStatusCode == other.fStatusCode; }
    bool operator==(const MStatusCode code) const { return fStatusCode == code; }
    bool operator!=(const MStatus& other) const { return fStatusCode != other.fStatusCode; }
    bool operator!=(const MStatusCode code) const { return fStatusCode != code; }
    bool error() const { return !fSuccess; }
    void clear();
    void perror(const char*) const;
    void perror(const MString&) const;
    operator bool() const { return fSuccess; }

  private:
    unsigned char fStatusCode;
    unsigned char fInternalStatusCode;
    bool fSuccess;
};

typedef MStatus MS;
