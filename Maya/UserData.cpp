// User data: the results of the user's MEL procedures, packed into bytes the builder writes as they
// are (32-bit values in the machine's order, strings with a closing zero byte).
#include "Ostrex.h"

#include <maya/MCommandResult.h>
#include <maya/MDoubleArray.h>
#include <maya/MGlobal.h>
#include <maya/MIntArray.h>
#include <maya/MStringArray.h>
#include <maya/MVector.h>
#include <maya/MVectorArray.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "Log.h"

namespace
{
template <class T> void Append32(std::vector<uint8_t>& data, T value)
{
    static_assert(sizeof(T) == 4, "32-bit values only");
    uint8_t bytes[4];
    std::memcpy(bytes, &value, 4);
    data.insert(data.end(), bytes, bytes + 4);
}

void AppendString(std::vector<uint8_t>& data, const MString& text)
{
    const char* chars = text.asChar();
    data.insert(data.end(), chars, chars + std::strlen(chars) + 1);
}

void AppendVector(std::vector<uint8_t>& data, const MVector& v)
{
    Append32(data, static_cast<float>(v.x));
    Append32(data, static_cast<float>(v.y));
    Append32(data, static_cast<float>(v.z));
}

// False for result types that carry nothing the file can hold.
bool AppendResult(std::vector<uint8_t>& data, const MCommandResult& result)
{
    switch (result.resultType())
    {
    case MCommandResult::kInvalid:
        return true;
    case MCommandResult::kInt:
    {
        int value = 0;
        result.getResult(value);
        Append32(data, static_cast<int32_t>(value));
        return true;
    }
    case MCommandResult::kIntArray:
    {
        MIntArray values;
        result.getResult(values);
        for (unsigned int i = 0; i < values.length(); ++i)
            Append32(data, static_cast<int32_t>(values[i]));
        return true;
    }
    case MCommandResult::kDouble:
    {
        double value = 0.0;
        result.getResult(value);
        Append32(data, static_cast<float>(value));
        return true;
    }
    case MCommandResult::kDoubleArray:
    case MCommandResult::kMatrix:
    {
        // A matrix comes flat, row by row.
        MDoubleArray values;
        if (result.resultType() == MCommandResult::kMatrix)
        {
            int rows = 0, columns = 0;
            result.getResult(values, rows, columns);
        }
        else
            result.getResult(values);
        for (unsigned int i = 0; i < values.length(); ++i)
            Append32(data, static_cast<float>(values[i]));
        return true;
    }
    case MCommandResult::kString:
        AppendString(data, result.stringResult());
        return true;
    case MCommandResult::kStringArray:
    {
        MStringArray values;
        result.getResult(values);
        for (unsigned int i = 0; i < values.length(); ++i)
            AppendString(data, values[i]);
        return true;
    }
    case MCommandResult::kVector:
    {
        MVector value;
        result.getResult(value);
        AppendVector(data, value);
        return true;
    }
    case MCommandResult::kVectorArray:
    {
        MVectorArray values;
        result.getResult(values);
        for (unsigned int i = 0; i < values.length(); ++i)
            AppendVector(data, values[i]);
        return true;
    }
    default:
        return false;
    }
}
} // namespace

bool Ostrex::ExecuteScriptCommand(std::vector<uint8_t>& data, const char* format, ...)
{
    if (!m_bUserScriptLoaded)
        return true;
    char command[1024];
    va_list args;
    va_start(args, format);
    std::vsnprintf(command, sizeof command, format, args);
    va_end(args);
    MCommandResult result;
    if (MGlobal::executeCommand(MString(command), result, false, false) != MStatus::kSuccess)
    {
        Log(eLogError, "Failed to execute command '%s'", command);
        return false;
    }
    return AppendResult(data, result);
}
