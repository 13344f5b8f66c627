// COptionsData: every setting that steers one export, as typed option tables read by table and
// index (GetOption/SetOption). Each option has a key for the text form ("bExportGeometry"), an
// optional alias accepted when reading text ("exportGeom"), and a path under a key prefix in the
// preferences store ("/ExportGeometry").
//
// Text form (ToString): one "key=value" line per option in table order: 22 booleans (0/1), the
// float with two decimals, export format, coordinate system, triangle sort, primitive type, the 6
// strings, the 4 unsigned integers, then three lines "key.bExport=", "key.eType=", "key.nEnable="
// for each of the 15 vertex formats. Only primary keys are written.
//
// Parsing (SetFromString) takes any text and never fails: lines without "=", with an empty key or
// an empty value, and unknown keys are skipped; aliases and the legacy keys "exportNormals" and
// "exportVertexColor" are accepted; the count of options set is returned. Afterwards the masks are
// limited to what each attribute allows, and bUseCustomOptSettings is inferred when the text did not
// set it (true when bSortVertices differs from bIndexed or the triangle sort is not the automatic
// choice for the primitive type); when it did, HandleOptimisations runs.
//
// Choices made here where the format leaves room:
//  - Numbers are read and written independently of the C locale (a host may set a decimal comma).
//  - A line's trailing "\r" is dropped, so files with CR LF line ends parse like the others.
//  - A string value cannot hold a line break in this one-line-per-value text; ToString writes CR
//    and LF inside strings as spaces so they cannot inject lines.
//  - Unsigned integers are written with %u, so values above 2^31 stay positive; both spellings
//    read back to the same value.
//  - A float value that is not finite ("nan", "inf") is refused; other text takes atof's value.
//  - A vertex data type that is no EQMXTDataType id is refused (text and preferences alike); eType
//    also accepts the type's display name.
//  - Every change of a vertex format's mask through SetOption is limited to the allowed mask at
//    once, not only after parsing and assignment.
#pragma once

#include <cstdint>
#include <string>

#include "OptionsVectorOpt.h"
#include "QMXPrefsStorable.h"
#include "QMXTString.h"

class CQMXPreferences;

// Output form of the written file.
enum EExportFormat : uint32_t
{
    eExportFormatBinary = 0, // .tvo
    eExportFormatHeader = 1, // .h embedding the .tvo
    eExportFormatSource = 2  // .cpp embedding the .tvo
};

// Coordinate system of the exported data. The host's own system (right-handed, as OpenGL) is
// written unchanged; DirectX flips handedness.
enum ECoordSystem : uint32_t
{
    eCoordSystemHost = 0,
    eCoordSystemDirectX = 1,
    eCoordSystemOpenGL = 2
};

enum ETriSortMethod : uint32_t
{
    eTriSortNone = 0,
    eTriSortGeometrySort = 1, // block sort for the vertex cache
    eTriSortD3DX = 2,         // accepted and stored; the builder leaves the order unchanged
    eTriSortStrips = 3        // strip order
};

enum EPrimType : uint32_t
{
    ePrimTriangleList = 0,
    ePrimTriangleStrips = 1
};

// Names of one option: text key, alias accepted when reading text (or null), preferences path.
struct SOptionNames
{
    const char* pszKey;
    const char* pszAlias;
    const char* pszPath;
};

class COptionsData : public CQMXPrefsStorable
{
  public:
    enum EBools
    {
        eFlipTextureV = 0,
        eIndexed,
        eInterleaved,
        eSortVertices,
        eTangentSpace,
        eExportAnimations,
        eIndexAnimations,
        eExportGeometry,
        eExportMatrices,
        eExportMappingChannels,
        eExportMaterials,
        eExportSkin,
        eInvertTransparency,
        eExportModelSpace,
        eMerge,
        eUseCustomOptSettings,
        eExportUserData,
        eUnpackMatrix,
        eExportBoneGeometry,
        eAlignData,
        eDisplayInDravik,
        eUsePostExportCL,
        eNumBools
    };
    enum EFloats
    {
        eTangentSpaceVtxSplit = 0,
        eNumFloats
    };
    enum EExportFormats
    {
        eExpFormat = 0
    };
    enum ECoordSystems
    {
        eCS = 0
    };
    enum ETriSortMethods
    {
        eTriSort = 0
    };
    enum EPrimTypes
    {
        ePrimType = 0
    };
    enum EStrings
    {
        eClPostTarget = 0,
        eClPostArgs,
        eClPostCWD,
        ePathToDravik,
        eMergeSrc,
        eScriptFile,
        eNumStrings
    };
    enum EInts
    {
        eStaticFrame = 0,
        eBoneLimit,
        ePadDataTo,
        eTSUseUVW,
        eNumInts
    };
    enum EVectorFormats
    {
        eVcOptPos = 0,
        eVcOptNor,
        eVcOptTan,
        eVcOptBin,
        eVcOptCol,
        eVcOptBoneInd,
        eVcOptBoneWt,
        eVcOptUVW0,
        eVcOptUVW1,
        eVcOptUVW2,
        eVcOptUVW3,
        eVcOptUVW4,
        eVcOptUVW5,
        eVcOptUVW6,
        eVcOptUVW7,
        eNumVectorFormats
    };
    enum
    {
        eNumUVWFormats = eNumVectorFormats - eVcOptUVW0 // one a mapping channel, 0 to 7
    };

    COptionsData();
    COptionsData(const COptionsData& other);
    COptionsData& operator=(const COptionsData& other);
    ~COptionsData() override;

    // Preferences: every option as prefix + its path; a vertex format as prefix + path + "/Export",
    // "/DataType" and "/Enable".
    bool Save(CQMXPreferences& prefs, const char* prefix) const override;
    bool Load(CQMXPreferences& prefs, const char* prefix) override;

    virtual CQMXTString ToString() const;
    virtual int SetFromString(const char* text);
    // Without custom optimisation settings: bSortVertices follows bIndexed, and the triangle sort is
    // strip order for strips and the vertex-cache block sort otherwise.
    virtual void HandleOptimisations();
    // Defaults, then HandleOptimisations and EnforceAllowedAxes.
    virtual void ConfigDefault();
    // Limits every vertex format's mask to the components its attribute allows.
    void EnforceAllowedAxes();

    void SetOption(EBools option, bool value);
    bool GetOption(EBools option) const;
    void SetOption(EFloats option, float value);
    float GetOption(EFloats option) const;
    void SetOption(EInts option, unsigned int value);
    unsigned int GetOption(EInts option) const;
    void SetOption(EExportFormats option, EExportFormat value);
    EExportFormat GetOption(EExportFormats option) const;
    void SetOption(ECoordSystems option, ECoordSystem value);
    ECoordSystem GetOption(ECoordSystems option) const;
    void SetOption(ETriSortMethods option, ETriSortMethod value);
    ETriSortMethod GetOption(ETriSortMethods option) const;
    void SetOption(EPrimTypes option, EPrimType value);
    EPrimType GetOption(EPrimTypes option) const;
    void SetOption(EStrings option, const CQMXTString& value);
    CQMXTString GetOption(EStrings option) const;
    void SetOption(EVectorFormats option, const CVectorOpt& value);
    const CVectorOpt& GetOption(EVectorFormats option) const;
    void SetOption(EVectorFormats option, CVectorOpt::EBools which, bool value);
    bool GetOption(EVectorFormats option, CVectorOpt::EBools which) const;
    void SetOption(EVectorFormats option, CVectorOpt::EDataTypes which, EQMXTDataType value);
    EQMXTDataType GetOption(EVectorFormats option, CVectorOpt::EDataTypes which) const;
    void SetOption(EVectorFormats option, CVectorOpt::EUnsignedInts which, uint32_t value);
    uint32_t GetOption(EVectorFormats option, CVectorOpt::EUnsignedInts which) const;

    bool operator==(const COptionsData& other) const;
    bool operator!=(const COptionsData& other) const { return !(*this == other); }

    // Names of each option (index out of range: null names).
    static const SOptionNames& Names(EBools option);
    static const SOptionNames& Names(EFloats option);
    static const SOptionNames& Names(EExportFormats option);
    static const SOptionNames& Names(ECoordSystems option);
    static const SOptionNames& Names(ETriSortMethods option);
    static const SOptionNames& Names(EPrimTypes option);
    static const SOptionNames& Names(EStrings option);
    static const SOptionNames& Names(EInts option);
    static const SOptionNames& Names(EVectorFormats option);
    // The mask bits a vertex format may use.
    static uint32_t AllowedMask(EVectorFormats option);
    // The triangle sort that goes with a primitive type when the program decides.
    static ETriSortMethod AutomaticTriSort(EPrimType primType);

  private:
    void CopyFrom(const COptionsData& other);
    // One "key=value" line; true when it set an option. Notes a hit on bUseCustomOptSettings.
    bool SetOneFromString(const std::string& key, const char* value, bool& customSet);

    bool m_bBools[eNumBools];
    float m_fFloats[eNumFloats];
    EExportFormat m_eExportFormat;
    ECoordSystem m_eCoordSystem;
    ETriSortMethod m_eTriSort;
    EPrimType m_ePrimType;
    CQMXTString m_sStrings[eNumStrings];
    uint32_t m_uiInts[eNumInts];
    CVectorOpt m_vectorOpts[eNumVectorFormats];
};
