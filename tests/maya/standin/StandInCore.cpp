// Stand-in values: status, strings, math, objects, time and DAG paths.
#include <maya/MColor.h>
#include <maya/MDagPath.h>
#include <maya/MFloatVector.h>
#include <maya/MMatrix.h>
#include <maya/MObject.h>
#include <maya/MPoint.h>
#include <maya/MStatus.h>
#include <maya/MString.h>
#include <maya/MStringArray.h>
#include <maya/MTime.h>
#include <maya/MVector.h>

#include <cmath>
#include <cstdio>

#include "StandInScene.h"

using standin::Scene;

MStatus::MStatus(MStatusCode code) : fStatusCode(code), fInternalStatusCode(0), fSuccess(code == kSuccess) {}

void MStatus::perror(const char* text) const
{
    Scene().perrors.push_back(text);
    std::fprintf(stderr, "%s\n", text);
}

void MStatus::perror(const MString& text) const
{
    perror(text.asChar());
}

MString::MString() = default;
MString::MString(const char* text) : m_text(text ? text : "") {}
MString::MString(const char* text, int length) : m_text(text, static_cast<size_t>(length)) {}
MString::MString(const MString&) = default;
MString::~MString() = default;
MString& MString::operator=(const MString&) = default;
MString& MString::operator=(const char* text)
{
    m_text = text ? text : "";
    return *this;
}
MString& MString::operator+=(const MString& o)
{
    m_text += o.m_text;
    return *this;
}
MString& MString::operator+=(const char* text)
{
    m_text += text ? text : "";
    return *this;
}
MString& MString::operator+=(int value)
{
    m_text += std::to_string(value);
    return *this;
}
bool MString::operator==(const MString& o) const { return m_text == o.m_text; }
bool MString::operator==(const char* text) const { return m_text == (text ? text : ""); }
bool MString::operator!=(const MString& o) const { return !(*this == o); }
bool MString::operator!=(const char* text) const { return !(*this == text); }
MString MString::operator+(const MString& o) const { return MString((m_text + o.m_text).c_str()); }
MString MString::operator+(const char* text) const { return *this + MString(text); }
MString operator+(const char* text, const MString& s) { return MString(text) + s; }
std::ostream& operator<<(std::ostream& out, const MString& s) { return out << s.m_text; }
const char* MString::asChar() const { return m_text.c_str(); }
unsigned int MString::length() const { return static_cast<unsigned int>(m_text.size()); }
void MString::clear() { m_text.clear(); }
int MString::index(char c) const
{
    const size_t at = m_text.find(c);
    return at == std::string::npos ? -1 : static_cast<int>(at);
}
int MString::rindex(char c) const
{
    const size_t at = m_text.rfind(c);
    return at == std::string::npos ? -1 : static_cast<int>(at);
}
MString MString::substring(int start, int end) const
{
    if (start < 0 || end < start || start >= static_cast<int>(m_text.size()))
        return MString();
    return MString(m_text.substr(static_cast<size_t>(start), static_cast<size_t>(end - start + 1)).c_str());
}
// Empty pieces are dropped.
MStatus MString::split(char delimiter, MStringArray& pieces) const
{
    pieces.clear();
    size_t start = 0;
    while (start <= m_text.size())
    {
        size_t end = m_text.find(delimiter, start);
        if (end == std::string::npos)
            end = m_text.size();
        if (end > start)
            pieces.append(MString(m_text.substr(start, end - start).c_str()));
        start = end + 1;
    }
    return MStatus();
}

const MPoint MPoint::origin;
const MVector MVector::zero;
const MFloatVector MFloatVector::zero;
const MColor MColor::kOpaqueBlack;
const MMatrix MMatrix::identity;

double MVector::length() const { return std::sqrt(x * x + y * y + z * z); }
MStatus MVector::normalize()
{
    const double l = length();
    if (l > 0.0)
    {
        x /= l;
        y /= l;
        z /= l;
    }
    return MStatus();
}

MMatrix::MMatrix()
{
    for (unsigned int r = 0; r < 4; ++r)
        for (unsigned int c = 0; c < 4; ++c)
            matrix[r][c] = r == c ? 1.0 : 0.0;
}
MMatrix MMatrix::operator*(const MMatrix& o) const
{
    MMatrix out;
    for (unsigned int r = 0; r < 4; ++r)
        for (unsigned int c = 0; c < 4; ++c)
        {
            double sum = 0.0;
            for (unsigned int k = 0; k < 4; ++k)
                sum += matrix[r][k] * o.matrix[k][c];
            out.matrix[r][c] = sum;
        }
    return out;
}
double MMatrix::det3x3() const
{
    const auto& m = matrix;
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) - m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
           m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

MObject MObject::kNullObj;
MObject::MObject() : m_node(-1), m_component(MFn::kInvalid) {}
MObject::MObject(const MObject&) = default;
MObject::~MObject() = default;
MObject& MObject::operator=(const MObject&) = default;
MObject MObject::StandInNode(int node)
{
    MObject o;
    o.m_node = node;
    return o;
}
MObject MObject::StandInComponent(int node, MFn::Type kind, std::vector<int> items)
{
    MObject o = StandInNode(node);
    o.m_component = kind;
    o.m_items = std::make_shared<const std::vector<int>>(std::move(items));
    return o;
}
bool MObject::isNull() const { return m_node < 0; }
MFn::Type MObject::apiType() const
{
    if (m_component != MFn::kInvalid)
        return m_component;
    return isNull() ? MFn::kInvalid : Scene().nodes[m_node].type;
}
bool MObject::hasFn(MFn::Type type) const
{
    return m_component != MFn::kInvalid ? type == m_component : Scene().HasFn(m_node, type);
}
const char* MObject::apiTypeStr() const
{
    switch (apiType())
    {
    case MFn::kAmbientLight:
        return "kAmbientLight";
    case MFn::kMesh:
        return "kMesh";
    case MFn::kTransform:
        return "kTransform";
    default:
        return "kUnknown";
    }
}
bool MObject::operator==(const MObject& o) const
{
    return m_node == o.m_node && m_component == o.m_component && (m_items == o.m_items || (m_items && o.m_items && *m_items == *o.m_items));
}
bool MObject::operator!=(const MObject& o) const { return !(*this == o); }

MTime::MTime() : m_value(0.0), m_unit(uiUnit()) {}
MTime::MTime(const MTime&) = default;
MTime::MTime(double value, Unit unit) : m_value(value), m_unit(unit) {}
MTime::~MTime() = default;
MTime& MTime::operator=(const MTime&) = default;
MTime::Unit MTime::unit() const { return m_unit; }
double MTime::value() const { return m_value; }
double MTime::as(Unit unit) const { return m_value / standin::FramesPerSecond(m_unit) * standin::FramesPerSecond(unit); }
MTime::Unit MTime::uiUnit() { return Scene().unit; }

MDagPath::MDagPath() = default;
MDagPath::MDagPath(const MDagPath&) = default;
MDagPath::~MDagPath() = default;
MDagPath& MDagPath::operator=(const MDagPath&) = default;
MStatus MDagPath::getAPathTo(const MObject& object, MDagPath& path)
{
    std::vector<int> chain;
    for (int node = object.StandInId(); node > 0 && chain.size() < Scene().nodes.size();)
    {
        chain.insert(chain.begin(), node);
        const std::vector<int>& parents = Scene().nodes[node].parents;
        node = parents.empty() ? -1 : parents.front();
    }
    if (chain.empty() || !Scene().HasFn(chain.back(), MFn::kDagNode))
        return MStatus(MStatus::kInvalidParameter);
    path.m_chain = chain;
    return MStatus();
}
MObject MDagPath::node(MStatus*) const { return m_chain.empty() ? MObject() : MObject::StandInNode(m_chain.back()); }
MFn::Type MDagPath::apiType(MStatus*) const { return node().apiType(); }
bool MDagPath::hasFn(MFn::Type type, MStatus*) const { return node().hasFn(type); }
MMatrix MDagPath::inclusiveMatrix(MStatus*) const
{
    MMatrix m;
    for (auto it = m_chain.rbegin(); it != m_chain.rend(); ++it)
        m = m * Scene().LocalMatrix(*it);
    return m;
}
MString MDagPath::fullPathName(MStatus*) const
{
    std::string path;
    for (int node : m_chain)
        path += "|" + Scene().nodes[node].name;
    return MString(path.c_str());
}
MString MDagPath::partialPathName(MStatus*) const
{
    return m_chain.empty() ? MString() : MString(Scene().nodes[m_chain.back()].name.c_str());
}
bool MDagPath::operator==(const MDagPath& o) const { return m_chain == o.m_chain; }
