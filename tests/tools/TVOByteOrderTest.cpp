// The byte-order layer under the file (its little-endian assembly is checked through the file tests):
// bounds of allocating reads, and the in-place swap of interleaved vertices on big-endian hosts.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "QMXTModelTVOFile.h"
#include "QMXTSink.h"
#include "QMXTSource.h"
#include "TVOTestScenes.h"

TEST(TVOByteOrder, ReadAfterAllocChecksLengthBeforeAllocating)
{
    const uint8_t bytes[] = {1, 0, 2, 0, 3, 0};
    CSourceStream s;
    s.Init(bytes, sizeof bytes);
    uint16_t* p = nullptr;
    EXPECT_FALSE(s.ReadAfterAlloc16(p, 5)); // not a whole number of elements
    EXPECT_EQ(p, nullptr);
    EXPECT_FALSE(s.ReadAfterAlloc16(p, 8)); // more than remains
    EXPECT_EQ(p, nullptr);
    ASSERT_TRUE(s.ReadAfterAlloc16(p, 6));
    EXPECT_EQ(p[0], 1);
    EXPECT_EQ(p[2], 3);
    std::free(p);
    uint8_t* none = nullptr;
    EXPECT_TRUE(SafeAlloc(none, 0));
    EXPECT_EQ(none, nullptr);
}

TEST(TVOByteOrder, InterleavedSwapReversesEachComponentOnly)
{
    CQMXTModelTVO s;
    tvotest::MakeBigScene(s, 2, true); // float x3, float x3, unsigned short x2: 28 bytes a vertex
    STVOMesh& m = s.pMesh[0];
    std::vector<uint8_t> before(m.pInterleaved, m.pInterleaved + 56);
    QMXTTVOSwapInterleaved(m);
    for (int v = 0; v < 2; ++v)
    {
        const uint8_t* a = before.data() + 28 * v;
        const uint8_t* b = m.pInterleaved + 28 * v;
        for (int i = 0; i < 24; i += 4) // floats
            EXPECT_TRUE(b[i] == a[i + 3] && b[i + 1] == a[i + 2] && b[i + 2] == a[i + 1] && b[i + 3] == a[i]);
        for (int i = 24; i < 28; i += 2) // unsigned shorts
            EXPECT_TRUE(b[i] == a[i + 1] && b[i + 1] == a[i]);
    }
    QMXTTVOSwapInterleaved(m);
    EXPECT_EQ(std::memcmp(before.data(), m.pInterleaved, 56), 0);
}
