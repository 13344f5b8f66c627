// Stand-in for the Maya devkit header of the same name. Function sets attach to a scene node (and,
// for DAG sets, to a path); an object of the wrong kind fails the attach through the status.
#pragma once

#include <maya/MFn.h>
#include <maya/MObject.h>
#include <maya/MStatus.h>

#include <vector>

class MDagPath;

class MFnBase
{
  public:
    virtual ~MFnBase();
    virtual MFn::Type type() const;
    MObject object(MStatus* ReturnStatus = NULL) const;

  protected:
    MFnBase();
    MFnBase(const MFnBase&) = delete;
    MFnBase& operator=(const MFnBase&) = delete;
    // Stand-in only.
    void StandInAttach(const MObject& object, MFn::Type required, MStatus* status);
    void StandInAttach(const MDagPath& path, MFn::Type required, MStatus* status);
    int StandInNode() const { return m_object.StandInId(); }
    MObject m_object;
    std::vector<int> m_chain; // the DAG path a DAG set was attached through
};

// Constructors, type queries and the copy and address rules of every function set.
#define MAYA_STANDIN_FN_SET(Cls)                                                                                     \
  public:                                                                                                            \
    Cls();                                                                                                           \
    Cls(MObject& object, MStatus* ReturnStatus = NULL);                                                              \
    Cls(const MObject& object, MStatus* ReturnStatus = NULL);                                                        \
    ~Cls() override;                                                                                                 \
    MFn::Type type() const override;                                                                                 \
    static const char* className();                                                                                  \
                                                                                                                     \
  private:                                                                                                           \
    Cls(const Cls&) = delete;                                                                                        \
    Cls& operator=(const Cls&) = delete;                                                                             \
    const Cls* operator&() const;                                                                                    \
                                                                                                                     \
  public:

#define MAYA_STANDIN_DAG_FN_SET(Cls)                                                                                 \
    MAYA_STANDIN_FN_SET(Cls)                                                                                         \
    Cls(const MDagPath& path, MStatus* ReturnStatus = NULL);
