// The JSON report of one export (--report-json): what was read and written, the counts, each
// mesh's vertex format and size, the quantisation error when measured, every warning, the time
// taken, and the error when the export failed. The keys are documented in docs/pipelines.md and
// stay stable; new keys may be added, none renamed or removed without raising "version".
#pragma once

#include <string>

#include "ExportJob.h"

// The report as one JSON object, ending with a newline.
std::string ExportReportJson(const SExportJob& job, const SExportOutcome& outcome);

// Writes the report to path ("-" for standard output) whole or not at all. False with the reason.
bool WriteExportReport(const std::string& path, const std::string& json, std::string& error);
