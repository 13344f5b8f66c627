#include "ExportReport.h"

#include <cstdio>

#include "JsonWriter.h"
#include "SafeOutput.h"

namespace
{
const int kReportVersion = 1;

// A measured error, or null for a stream that is absent or stored as float.
void Error(CJsonWriter& j, const char* key, double error)
{
    if (error < 0.0)
        j.Null(key);
    else
        j.Float(key, static_cast<float>(error));
}

void Strings(CJsonWriter& j, const char* key, const std::vector<std::string>& values)
{
    j.BeginArray(key);
    for (const std::string& value : values)
        j.String(nullptr, value.c_str());
    j.EndArray();
}

void Mesh(CJsonWriter& j, const SMeshSummary& m, bool measured)
{
    j.BeginObject();
    j.Int("vertices", m.vertices);
    j.Int("triangles", m.triangles);
    j.String("primitive", m.strips ? "strips" : "list");
    j.Int("strips", m.strips);
    j.Int("boneBatches", m.boneBatches);
    j.Bool("interleaved", m.interleaved);
    j.Int("bytes", static_cast<int64_t>(m.bytes));
    j.BeginArray("vertexFormat");
    for (const SMeshSummary::SStream& s : m.streams)
    {
        j.BeginObject();
        j.String("stream", s.name.c_str());
        j.String("type", s.type.c_str());
        j.Int("components", s.components);
        j.EndObject();
    }
    j.EndArray();
    if (!measured)
    {
        j.Null("quantisationError");
    }
    else
    {
        j.BeginObject("quantisationError");
        Error(j, "positions", m.quantisation.positions);
        Error(j, "normals", m.quantisation.normals);
        j.BeginArray("uvw");
        for (double e : m.quantisation.uvw)
            Error(j, nullptr, e);
        j.EndArray();
        j.EndObject();
    }
    j.EndObject();
}
} // namespace

std::string ExportReportJson(const SExportJob& job, const SExportOutcome& outcome)
{
    const SExportSummary& s = outcome.summary;
    CJsonWriter j;
    j.BeginObject();
    j.String("report", "ostrex export");
    j.Int("version", kReportVersion);
    j.String("input", job.input.c_str());
    j.String("output", job.output.c_str());
    j.Bool("ok", outcome.ok);
    if (outcome.ok)
    {
        j.Null("error");
    }
    else
    {
        j.BeginObject("error");
        j.String("subject", outcome.subject.c_str());
        j.String("message", outcome.error.c_str());
        j.EndObject();
    }
    j.Int("bytes", static_cast<int64_t>(s.bytes));
    j.Int("nodes", s.nodes);
    j.Int("meshes", s.meshes);
    j.Int("triangles", static_cast<int64_t>(s.triangles));
    j.Int("vertices", static_cast<int64_t>(s.vertices));
    j.Int("materials", s.materials);
    j.Int("bones", s.bones);
    j.Int("frames", s.frames);
    j.Float("seconds", static_cast<float>(s.seconds));
    Strings(j, "warnings", s.warnings);
    Strings(j, "extraFiles", s.extraFiles);
    Strings(j, "dependencies", s.dependencies);
    j.BeginArray("meshDetails");
    for (const SMeshSummary& m : s.meshList)
        Mesh(j, m, job.measureQuantisation);
    j.EndArray();
    j.EndObject();
    return j.Text() + "\n";
}

bool WriteExportReport(const std::string& path, const std::string& json, std::string& error)
{
    if (path != "-")
        return WriteFileSafely(path, json.data(), json.size(), error);
    if (std::fwrite(json.data(), 1, json.size(), stdout) != json.size() || std::fflush(stdout) != 0)
    {
        error = "standard output could not be written";
        return false;
    }
    return true;
}
