// Stand-in for the Maya devkit header of the same name. A plug is an attribute name on a node.
#pragma once

#include <maya/MDGContext.h>
#include <maya/MObject.h>
#include <maya/MStatus.h>

#include <string>

class MPlugArray;
class MString;

class MPlug
{
  public:
    MPlug();
    MPlug(const MPlug&);
    virtual ~MPlug();
    MPlug& operator=(const MPlug&);
    bool isNull(MStatus* ReturnStatus = NULL) const;
    MString name(MStatus* ReturnStatus = NULL) const;
    MObject node(MStatus* ReturnStatus = NULL) const;
    bool connectedTo(MPlugArray& array, bool asDst, bool asSrc, MStatus* ReturnStatus = NULL) const;
    MStatus getValue(MString& value, MDGContext& ctx = MDGContext::fsNormal) const;
    MString asString(MDGContext& ctx = MDGContext::fsNormal, MStatus* ReturnStatus = NULL) const;
    bool operator==(const MPlug&) const;

    // Stand-in only.
    MPlug(int node, std::string attribute) : m_node(node), m_attribute(std::move(attribute)) {}
    int StandInNode() const { return m_node; }
    const std::string& StandInAttribute() const { return m_attribute; }

  private:
    int m_node;
    std::string m_attribute;
};
