// Merging material settings between scenes by name (the export's merge test checks the blend
// settings and opacity through a file).
#include <gtest/gtest.h>

#include "QMXTModelTVOTransform.h"
#include "TransformFixtures.h"

namespace
{
void AddTextures(CQMXTModelTVO& s, const std::vector<const char*>& names)
{
    s.nNumTexture = static_cast<uint32_t>(names.size());
    s.pTexture = static_cast<STVOTexture*>(std::calloc(names.size(), sizeof(STVOTexture)));
    for (size_t i = 0; i < names.size(); ++i)
        s.pTexture[i].pszName = HeapString(names[i]);
}

// Materials of the given names, every texture slot empty.
void AddMaterials(CQMXTModelTVO& s, const std::vector<const char*>& names)
{
    s.nNumMaterial = static_cast<uint32_t>(names.size());
    s.pMaterial = static_cast<STVOMaterial*>(std::calloc(names.size(), sizeof(STVOMaterial)));
    for (size_t i = 0; i < names.size(); ++i)
    {
        s.pMaterial[i].pszName = HeapString(names[i]);
        s.pMaterial[i].fMatOpacity = 1;
        for (int32_t& t : s.pMaterial[i].nIdxTexture)
            t = -1;
    }
}
} // namespace

TEST(TransformMerge, MatchesByNameAndMergesTexturesAndBlending)
{
    SMeshHolder source(0), destination(0);
    CQMXTModelTVO &src = source.scene, &dst = destination.scene;
    AddTextures(src, {"wood.png", "bump.png", "steel.png", "oak.png"});
    AddMaterials(src, {"wood", "metal", "wood", "ghost"});
    STVOMaterial& sw = src.pMaterial[0];
    sw.nIdxTexture[eTVOTexDiffuse] = 0;
    sw.nIdxTexture[eTVOTexBump] = 1;
    sw.nIdxTexture[eTVOTexOpacity] = 99; // out of range: ignored
    sw.eBlendSrcRGB = eTVOBlendSrcAlpha;
    sw.eBlendOpRGB = eTVOBlendOpMax;
    sw.pfBlendColour[3] = 0.5f;
    sw.nFlags = 5;
    sw.pszEffectFile = HeapString("lit.xef");
    sw.pszEffectName = HeapString("");
    src.pMaterial[1].nIdxTexture[eTVOTexDiffuse] = 2;
    src.pMaterial[2].nIdxTexture[eTVOTexDiffuse] = 3;
    src.pMaterial[2].nFlags = 9;

    AddTextures(dst, {"wood.qmx", "chrome.png", "oak.png"});
    AddMaterials(dst, {"Wood", "wood", "metal", "wood"});
    dst.pMaterial[1].nIdxTexture[eTVOTexDiffuse] = 0;
    dst.pMaterial[1].pszEffectName = HeapString("Keep");
    dst.pMaterial[2].nIdxTexture[eTVOTexDiffuse] = 1;
    dst.pMaterial[3].nIdxTexture[eTVOTexDiffuse] = 2;

    ASSERT_EQ(QMXTModelTVOMergeMaterials(src, dst), 0);
    const STVOMaterial& dw = dst.pMaterial[1];
    EXPECT_STREQ(dst.pTexture[0].pszName, "wood.png");   // same base name: takes the source's
    EXPECT_STREQ(dst.pTexture[1].pszName, "chrome.png"); // another texture: kept
    ASSERT_EQ(dst.nNumTexture, 4u);                      // bump.png appended for the empty slot
    EXPECT_EQ(dw.nIdxTexture[eTVOTexBump], 3);
    EXPECT_STREQ(dst.pTexture[3].pszName, "bump.png");
    EXPECT_EQ(dw.nIdxTexture[eTVOTexOpacity], -1);
    EXPECT_EQ(dw.eBlendOpRGB, eTVOBlendOpMax);
    EXPECT_EQ(dw.pfBlendColour[3], 0.5f);
    EXPECT_EQ(dw.nFlags, 5u);
    EXPECT_STREQ(dw.pszEffectFile, "lit.xef");
    EXPECT_STREQ(dw.pszEffectName, "Keep"); // the source has none
    EXPECT_EQ(dst.pMaterial[3].nFlags, 9u); // the second "wood" meets the second "wood"
    EXPECT_EQ(dst.pMaterial[0].nFlags, 0u); // names are case-sensitive
    EXPECT_STREQ(dst.pTexture[2].pszName, "oak.png");
}

TEST(TransformMerge, ScenesWithoutMaterialsMergeTrivially)
{
    SMeshHolder source(0), destination(0);
    CQMXTModelTVO &src = source.scene, &dst = destination.scene;
    AddMaterials(dst, {"wood"});
    EXPECT_EQ(QMXTModelTVOMergeMaterials(src, dst), 0);
    EXPECT_EQ(QMXTModelTVOMergeMaterials(dst, src), 0);
    EXPECT_EQ(src.nNumMaterial, 0u);
}
