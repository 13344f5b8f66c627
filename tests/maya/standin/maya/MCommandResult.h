// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MStatus.h>

#include <string>
#include <vector>

class MDoubleArray;
class MIntArray;
class MString;
class MStringArray;
class MVector;
class MVectorArray;

class MCommandResult
{
  public:
    enum Type
    {
        kInvalid = 0,
        kInt = 1,
        kInt64 = 2,
        kIntArray = 3,
        kInt64Array = 4,
        kDouble = 5,
        kDoubleArray = 6,
        kString = 7,
        kStringArray = 8,
        kVector = 9,
        kVectorArray = 10,
        kMatrix = 11,
        kMatrixArray = 12
    };
    MCommandResult(MStatus* ReturnStatus = NULL);
    virtual ~MCommandResult();
    Type resultType(MStatus* ReturnStatus = NULL) const;
    MStatus getResult(int& result) const;
    MStatus getResult(MIntArray& result) const;
    MStatus getResult(double& result) const;
    MStatus getResult(MDoubleArray& result) const;
    MString stringResult(MStatus* ReturnStatus = NULL) const;
    MStatus getResult(MStringArray& result) const;
    MStatus getResult(MVector& result) const;
    MStatus getResult(MVectorArray& result) const;
    MStatus getResult(MDoubleArray& result, int& numRows, int& numColumns) const;

    // Stand-in only: the value a command answers.
    struct SValue
    {
        Type type = kInvalid;
        std::vector<double> numbers; // ints, doubles, vectors (3 each) or a matrix, flat
        std::vector<std::string> strings;
        int rows = 0, columns = 0;
    };
    void StandInSet(const SValue& value) { m_value = value; }

  private:
    MCommandResult(const MCommandResult&) = delete;
    MCommandResult& operator=(const MCommandResult&) = delete;
    SValue m_value;
};
