// Stand-in for the Maya devkit header of the same name: upstream, breadth first, node level.
#pragma once

#include <maya/MFn.h>
#include <maya/MObject.h>
#include <maya/MStatus.h>

#include <vector>

class MPlug;

class MItDependencyGraph
{
  public:
    enum Direction
    {
        kDownstream = 0,
        kUpstream = 1
    };
    enum Traversal
    {
        kDepthFirst = 0,
        kBreadthFirst = 1
    };
    enum Level
    {
        kNodeLevel = 0,
        kPlugLevel = 1
    };
    MItDependencyGraph(MObject& rootNode, MFn::Type filter = MFn::kInvalid, Direction direction = kDownstream,
                       Traversal traversal = kDepthFirst, Level level = kNodeLevel, MStatus* ReturnStatus = NULL);
    MItDependencyGraph(MPlug& rootPlug, MFn::Type filter = MFn::kInvalid, Direction direction = kDownstream,
                       Traversal traversal = kDepthFirst, Level level = kPlugLevel, MStatus* ReturnStatus = NULL);
    ~MItDependencyGraph();
    bool isDone(MStatus* ReturnStatus = NULL);
    MStatus next();
    MStatus reset();
    MObject currentItem(MStatus* ReturnStatus = NULL);
    MStatus disablePruningOnFilter();

  private:
    void Build();
    std::vector<int> m_roots;
    MFn::Type m_filter;
    bool m_pruning = true;
    bool m_built = false;
    std::vector<int> m_items;
    unsigned int m_at = 0;
};
