#include "QMXTError.h"

#include <cstdarg>
#include <cstdio>
#include <utility>
#include <vector>

namespace
{
QMXTErrorSink& Sink()
{
    static QMXTErrorSink sink;
    return sink;
}
} // namespace

void QMXTErrorOutputDebug(const char* format, ...)
{
    if (!format)
        return;
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::string text;
    if (length > 0)
    {
        std::vector<char> buffer(static_cast<size_t>(length) + 1);
        std::vsnprintf(buffer.data(), buffer.size(), format, args);
        text.assign(buffer.data(), static_cast<size_t>(length));
    }
    va_end(args);

    if (Sink())
        Sink()(text);
    else
        std::fputs(text.c_str(), stderr);
}

QMXTErrorSink QMXTSetErrorSink(QMXTErrorSink sink)
{
    return std::exchange(Sink(), std::move(sink));
}
