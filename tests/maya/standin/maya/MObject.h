// Stand-in for the Maya devkit header of the same name. An object is a node of the stand-in scene
// (by id) or a mesh component (a list of face or vertex ids).
#pragma once

#include <maya/MFn.h>

#include <memory>
#include <vector>

class MObject
{
  public:
    MObject();
    MObject(const MObject&);
    ~MObject();
    MObject& operator=(const MObject&);
    bool hasFn(MFn::Type) const;
    bool isNull() const;
    MFn::Type apiType() const;
    const char* apiTypeStr() const;
    bool operator==(const MObject&) const;
    bool operator!=(const MObject&) const;
    static MObject kNullObj;

    // Stand-in only: a scene node, or a component of a node's mesh.
    static MObject StandInNode(int node);
    static MObject StandInComponent(int node, MFn::Type kind, std::vector<int> items);
    int StandInId() const { return m_node; }
    const std::vector<int>* StandInItems() const { return m_items.get(); }

  private:
    int m_node;
    MFn::Type m_component;
    std::shared_ptr<const std::vector<int>> m_items;
};
