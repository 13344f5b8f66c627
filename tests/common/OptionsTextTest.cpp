// Export options: defaults, the text form and its parser, consistency rules and the operators.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "Options.h"
#include "OptionsTestSupport.h"

namespace
{
const char* const kDefaultText =
    "bFlipTextureV=0\nbIndexed=1\nbInterleaved=1\nbSortVertices=1\nbTangentSpace=0\nbExportAnimations=0\n"
    "bIndexAnimations=0\nbExportGeometry=1\nbExportMatrices=0\nbExportMappingChannels=0\nbExportMaterials=1\n"
    "bExportSkin=0\nbInvertTransparency=0\nbExportModelSpace=1\nbMerge=0\nbUseCustomOptSettings=0\n"
    "bExportUserData=0\nbUnpackMatrix=0\nbExportBoneGeometry=0\nbAlignData=1\nbDisplayInDravik=0\n"
    "bUsePostExportCL=0\n"
    "fTangentSpaceVtxSplit=0.00\n"
    "eExpFormat=0\ncS=2\neTriSort=1\nePrimType=0\n"
    "sClPostTarget=\nsClPostArgs=\nsClPostCWD=\nsPathToDravik=\nsMergeSrc=\nsScriptFile=\n"
    "uiStaticFrame=0\nuiBoneLimit=9\nuiPadDataTo=4\nuiTSUseUVW=0\n"
    "sVcOptPos.bExport=1\nsVcOptPos.eType=1\nsVcOptPos.nEnable=135\n"
    "sVcOptNor.bExport=1\nsVcOptNor.eType=1\nsVcOptNor.nEnable=135\n"
    "sVcOptTan.bExport=1\nsVcOptTan.eType=1\nsVcOptTan.nEnable=135\n"
    "sVcOptBin.bExport=1\nsVcOptBin.eType=1\nsVcOptBin.nEnable=135\n"
    "sVcOptCol.bExport=0\nsVcOptCol.eType=5\nsVcOptCol.nEnable=15\n"
    "sVcOptBoneInd.bExport=1\nsVcOptBoneInd.eType=10\nsVcOptBoneInd.nEnable=15\n"
    "sVcOptBoneWt.bExport=1\nsVcOptBoneWt.eType=1\nsVcOptBoneWt.nEnable=15\n"
    "psVcOptUVW[0].bExport=1\npsVcOptUVW[0].eType=1\npsVcOptUVW[0].nEnable=131\n"
    "psVcOptUVW[1].bExport=0\npsVcOptUVW[1].eType=1\npsVcOptUVW[1].nEnable=131\n"
    "psVcOptUVW[2].bExport=0\npsVcOptUVW[2].eType=1\npsVcOptUVW[2].nEnable=131\n"
    "psVcOptUVW[3].bExport=0\npsVcOptUVW[3].eType=1\npsVcOptUVW[3].nEnable=131\n"
    "psVcOptUVW[4].bExport=0\npsVcOptUVW[4].eType=1\npsVcOptUVW[4].nEnable=131\n"
    "psVcOptUVW[5].bExport=0\npsVcOptUVW[5].eType=1\npsVcOptUVW[5].nEnable=131\n"
    "psVcOptUVW[6].bExport=0\npsVcOptUVW[6].eType=1\npsVcOptUVW[6].nEnable=131\n"
    "psVcOptUVW[7].bExport=0\npsVcOptUVW[7].eType=1\npsVcOptUVW[7].nEnable=131\n";

using O = COptionsData;
} // namespace

// Every option set away from its default (custom optimisation settings on, so nothing is derived).
COptionsData NonDefaultOptions()
{
    COptionsData options;
    for (int i = 0; i < O::eNumBools; ++i)
        options.SetOption(static_cast<O::EBools>(i), !options.GetOption(static_cast<O::EBools>(i)));
    options.SetOption(O::eUseCustomOptSettings, true);
    options.SetOption(O::eTangentSpaceVtxSplit, 0.75f);
    options.SetOption(O::eExpFormat, eExportFormatSource);
    options.SetOption(O::eCS, eCoordSystemDirectX);
    options.SetOption(O::eTriSort, eTriSortD3DX);
    options.SetOption(O::ePrimType, ePrimTriangleStrips);
    for (int i = 0; i < O::eNumStrings; ++i)
        options.SetOption(static_cast<O::EStrings>(i),
                          CQMXTString(("value " + std::to_string(i) + " = x").c_str()));
    for (int i = 0; i < O::eNumInts; ++i)
        options.SetOption(static_cast<O::EInts>(i), 100u + i);
    options.SetOption(O::eStaticFrame, 4000000000u);
    for (int i = 0; i < O::eNumVectorFormats; ++i)
    {
        const auto format = static_cast<O::EVectorFormats>(i);
        options.SetOption(format, CVectorOpt(i % 2 == 0, static_cast<EQMXTDataType>(2 + i), 0x81u + i % 4));
    }
    return options;
}

TEST(OptionsText, DefaultsAsText)
{
    const COptionsData options;
    EXPECT_STREQ(options.ToString().c_str(), kDefaultText);
    COptionsData parsed;
    EXPECT_EQ(parsed.SetFromString(kDefaultText), kOptionLines - O::eNumStrings); // empty values are skipped
    EXPECT_TRUE(parsed == options);
    EXPECT_FALSE(parsed != options);
}

TEST(OptionsText, EveryOptionRoundTrips)
{
    const COptionsData options = NonDefaultOptions();
    const std::string text = options.ToString().c_str();
    EXPECT_NE(text.find("uiStaticFrame=4000000000\n"), std::string::npos);
    EXPECT_NE(text.find("sClPostArgs=value 1 = x\n"), std::string::npos); // the value keeps its own "="
    EXPECT_NE(text.find("psVcOptUVW[7].eType=16\n"), std::string::npos);
    COptionsData parsed;
    EXPECT_EQ(parsed.SetFromString(text.c_str()), kOptionLines);
    EXPECT_TRUE(parsed == options) << parsed.ToString().c_str();
    EXPECT_STREQ(parsed.ToString().c_str(), text.c_str());
}

TEST(OptionsText, RealsKeepTwoDecimalsAndLineBreaksInStringsCannotInjectOptions)
{
    COptionsData options;
    options.SetOption(O::eTangentSpaceVtxSplit, -0.125f); // a tie rounds as printf does, to even
    options.SetOption(O::eClPostArgs, CQMXTString("a\nbMerge=1\r\nb"));
    const std::string text = options.ToString().c_str();
    EXPECT_NE(text.find("fTangentSpaceVtxSplit=-0.12\n"), std::string::npos);
    EXPECT_NE(text.find("sClPostArgs=a bMerge=1  b\n"), std::string::npos);
    COptionsData parsed;
    parsed.SetFromString(text.c_str());
    EXPECT_FALSE(parsed.GetOption(O::eMerge));
    options.SetOption(O::eTangentSpaceVtxSplit, 0.3456f);
    EXPECT_NE(std::string(options.ToString().c_str()).find("fTangentSpaceVtxSplit=0.35\n"),
              std::string::npos);
}

// Each row: a text parsed over the defaults, the lines it sets, and lines of the text written then
// (nullptr: the defaults, unchanged).
TEST(OptionsText, LinesAreReadByNameAliasOrIdAndTheRestIsSkipped)
{
    struct SRow
    {
        const char* text;
        int count;
        const char* written;
    };
    const SRow rows[] = {
        {"exportGeom=0\nexportControllers=1\nexportMatrices=1\nexportMappingChannel=1\n", 4,
         "bExportGeometry=0\nbExportAnimations=1\nbExportMatrices=1\nbExportMappingChannels=1"},
        {"exportMaterials=0\nexportSkin=1\nm_bInvertTransparency=1\nexportObjectSpace=0\n", 4,
         "bExportMaterials=0\nbExportSkin=1\nbInvertTransparency=1\nbExportModelSpace=0"},
        {"exportBoneGeometry=1\nm_bDisplayInDravik=1\nexportNormals=0\nexportVertexColor=1\n", 4,
         "bExportBoneGeometry=1\nbDisplayInDravik=1\nsVcOptNor.bExport=0\nsVcOptCol.bExport=1"},
        {"m_sMergeSrc=/a b/c.tvo\nm_sScriptFile=s.mel\nstaticFrame=12\ndwBoneLimit=30\n", 4,
         "sMergeSrc=/a b/c.tvo\nsScriptFile=s.mel\nuiStaticFrame=12\nuiBoneLimit=30"},
        {"bIndexed=0\nbSortVtx=1\n", 2, "bIndexed=0\nbSortVertices=1\nbUseCustomOptSettings=1"},
        // Masks are limited to the allowed components.
        {"sVcOptPos.nEnable=255\nsVcOptCol.nEnable=255\npsVcOptUVW[3].nEnable=-1\n", 3,
         "sVcOptPos.nEnable=143\nsVcOptCol.nEnable=15\npsVcOptUVW[3].nEnable=143"},
        // Data types by id or name; ids and names that are no vertex data type are refused.
        {"sVcOptNor.eType=8\nsVcOptTan.eType=short, normalised\nsVcOptBin.eType=dec3n\n", 3,
         "sVcOptNor.eType=8\nsVcOptTan.eType=12\nsVcOptBin.eType=8"},
        {"sVcOptPos.eType=0\nsVcOptPos.eType=18\nsVcOptPos.eType=quad\n", 0, nullptr},
        {"sVcOptPos.bogus=1\nsVcOptNone.bExport=1\nsVcOptPos.=1\n", 0, nullptr},
        // Reals as atof reads them (no number is 0); NaN and infinity are refused.
        {"fTangentSpaceVtxSplit= -0.5e0xyz\n", 1, "fTangentSpaceVtxSplit=-0.50"},
        {"fTangentSpaceVtxSplit=0.75\nfTangentSpaceVtxSplit=abc\n", 2, "fTangentSpaceVtxSplit=0.00"},
        {"fTangentSpaceVtxSplit=0.25\nfTangentSpaceVtxSplit=nan\nfTangentSpaceVtxSplit=1e99\n", 1,
         "fTangentSpaceVtxSplit=0.25"},
        // Numbers as atoi reads them, without its overflow; unsigned options take the full 32 bits.
        {"uiBoneLimit=  12abc\nuiPadDataTo=99999999999999999999\n", 2,
         "uiBoneLimit=12\nuiPadDataTo=4294967295"},
        {"uiPadDataTo=-1\nuiBoneLimit=-99999999999\n", 2, "uiPadDataTo=4294967295\nuiBoneLimit=2147483648"},
        // Custom optimisation settings are inferred unless the text states them; stated, the
        // derived options follow.
        {"ePrimType=1\neTriSort=3\n", 2, "bUseCustomOptSettings=0"},
        {"ePrimType=1\neTriSort=1\n", 2, "bUseCustomOptSettings=1"},
        {"bUseCustomOptSettings=0\nbIndexed=0\nbSortVertices=1\nePrimType=1\neTriSort=0\n", 5,
         "bUseCustomOptSettings=0\nbSortVertices=0\neTriSort=3"},
        {"bUseCustomOptSettings=1\nbIndexed=0\nbSortVertices=1\neTriSort=0\n", 4,
         "bSortVertices=1\neTriSort=0"},
        // Skipped: no value, no key, no "=", unknown or miscased keys, leading blanks.
        {"bMerge=\n=1\nbMerge\n\n\nunknown=1\nbmerge=1\n bMerge=1\n", 0, nullptr},
        // Leading blank lines, CR LF line ends and a last line without a newline.
        {"\n\n\nbMerge=1\r\nsClPostArgs=-x \"a b\"\r\nuiPadDataTo=16", 3,
         "bMerge=1\nsClPostArgs=-x \"a b\"\nuiPadDataTo=16"},
    };
    for (const SRow& row : rows)
    {
        COptionsData options;
        EXPECT_EQ(options.SetFromString(row.text), row.count) << row.text;
        const std::string text = "\n" + std::string(options.ToString().c_str());
        if (!row.written)
        {
            EXPECT_EQ(text.substr(1), kDefaultText) << row.text;
        }
        std::istringstream lines(row.written ? row.written : "");
        for (std::string line; std::getline(lines, line);)
            EXPECT_NE(text.find("\n" + line + "\n"), std::string::npos) << row.text << " gives no " << line;
    }
    EXPECT_EQ(COptionsData().SetFromString(nullptr), 0);

    // The mask limit holds for the setters and for assignment of a whole format too.
    COptionsData options;
    options.SetOption(O::eVcOptBoneWt, CVectorOpt::eEnable, 0xFFu);
    EXPECT_EQ(options.GetOption(O::eVcOptBoneWt, CVectorOpt::eEnable), 0x0Fu);
    options.SetOption(O::eVcOptBoneInd, CVectorOpt(true, EQMXTDataUnsignedByte, 0x87));
    EXPECT_EQ(options.GetOption(O::eVcOptBoneInd, CVectorOpt::eEnable), 0x07u);
    for (int i = 0; i < O::eNumVectorFormats; ++i)
        EXPECT_EQ(O::AllowedMask(static_cast<O::EVectorFormats>(i)), i >= 4 && i <= 6 ? 0x0Fu : 0x8Fu);
    const std::string huge = "sClPostArgs=" + std::string(4u << 20, 'x'); // a huge value is read whole
    EXPECT_EQ(options.SetFromString(huge.c_str()), 1);
    EXPECT_EQ(options.GetOption(O::eClPostArgs).length(), 4u << 20);
}

TEST(OptionsOperators, EqualityNoticesEveryOption)
{
    // Custom settings on in both, so no option is derived from another; then each line where the
    // non-default text differs from the default one is applied alone, and must be noticed.
    COptionsData base;
    base.SetOption(O::eUseCustomOptSettings, true);
    std::istringstream changedLines(NonDefaultOptions().ToString().c_str()),
        baseLines(base.ToString().c_str());
    int differing = 0;
    for (std::string line, baseLine; std::getline(changedLines, line) && std::getline(baseLines, baseLine);)
    {
        if (line == baseLine)
            continue;
        ++differing;
        COptionsData changed(base);
        ASSERT_EQ(changed.SetFromString(line.c_str()), 1) << line;
        EXPECT_TRUE(changed != base) << line;
        EXPECT_FALSE(changed == base) << line;
    }
    EXPECT_GE(differing, 70); // every table and every field of the vertex formats took part
}

TEST(OptionsOperators, AssignmentCopiesEverythingAndDefaultsReset)
{
    const COptionsData source = NonDefaultOptions();
    COptions target;
    target.m_sPath = "/out/scene.tvo";
    target.m_nDriverValue = 7;
    target = source;
    EXPECT_TRUE(static_cast<const COptionsData&>(target) == source);
    EXPECT_STREQ(target.m_sPath.c_str(), "/out/scene.tvo"); // only the options part is copied

    target.ConfigDefault();
    EXPECT_STREQ(target.ToString().c_str(), kDefaultText);
    EXPECT_STREQ(target.m_sPath.c_str(), "");
    EXPECT_EQ(target.m_nDriverValue, 0);
}
