// Diagnostic output of the scene-model library. Text goes to stderr unless a sink is installed
// (tests install one to assert on what was said).
#pragma once

#include <functional>
#include <string>

// printf-style; the formatted text is handed to the sink as it stands (no newline is added).
void QMXTErrorOutputDebug(const char* format, ...) __attribute__((format(printf, 1, 2)));

using QMXTErrorSink = std::function<void(const std::string&)>;
// Installs a sink and returns the previous one; an empty sink restores stderr.
QMXTErrorSink QMXTSetErrorSink(QMXTErrorSink sink);
