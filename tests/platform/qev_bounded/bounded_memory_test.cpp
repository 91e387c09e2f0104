// qev_memcpy_s and qev_memset_s at every boundary.
#include "qev_bounded.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

bool AllEqual(const unsigned char *puc, size_t uiLen, unsigned char ucValue)
{
    for (size_t i = 0; i < uiLen; ++i) {
        if (puc[i] != ucValue) {
            return false;
        }
    }
    return true;
}

// ---- qev_memcpy_s --------------------------------------------------------------------

TEST(QevMemcpy, CountEqualToSizeCopiesWithoutTerminator)
{
    unsigned char aucDst[6];
    std::memset(aucDst, 0xEE, sizeof(aucDst));
    EXPECT_EQ(qev_memcpy_s(aucDst, 4, "abcd", 4), QEV_OK);
    EXPECT_EQ(std::memcmp(aucDst, "abcd", 4), 0);
    EXPECT_EQ(aucDst[4], 0xEE) << "a terminator or extra byte was written";
}

TEST(QevMemcpy, CountSmallerThanSize)
{
    unsigned char aucDst[8];
    std::memset(aucDst, 0xEE, sizeof(aucDst));
    EXPECT_EQ(qev_memcpy_s(aucDst, sizeof(aucDst), "ab", 2), QEV_OK);
    EXPECT_EQ(std::memcmp(aucDst, "ab", 2), 0);
    EXPECT_TRUE(AllEqual(aucDst + 2, 6, 0xEE));
}

TEST(QevMemcpy, CountOneAboveSizeIsRangeAndZeroesTheDestination)
{
    unsigned char aucDst[6];
    std::memset(aucDst, 0xEE, sizeof(aucDst));
    EXPECT_EQ(qev_memcpy_s(aucDst, 4, "abcde", 5), QEV_ERANGE);
    EXPECT_TRUE(AllEqual(aucDst, 4, 0));
    EXPECT_TRUE(AllEqual(aucDst + 4, 2, 0xEE)) << "zeroed beyond the given size";
}

TEST(QevMemcpy, CountZeroIsANoOpEvenWithNullPointers)
{
    unsigned char aucDst[2] = {1, 2};
    EXPECT_EQ(qev_memcpy_s(aucDst, sizeof(aucDst), nullptr, 0), QEV_OK);
    EXPECT_EQ(qev_memcpy_s(nullptr, 0, nullptr, 0), QEV_OK);
    EXPECT_EQ(aucDst[0], 1);
}

TEST(QevMemcpy, SizeZeroWithACountIsRange)
{
    unsigned char aucDst[2] = {1, 2};
    EXPECT_EQ(qev_memcpy_s(aucDst, 0, "a", 1), QEV_ERANGE);
    EXPECT_EQ(aucDst[0], 1);
}

TEST(QevMemcpy, NullDestinationIsInvalid)
{
    EXPECT_EQ(qev_memcpy_s(nullptr, 4, "ab", 2), QEV_EINVAL);
}

TEST(QevMemcpy, NullSourceIsInvalidAndZeroesTheDestination)
{
    unsigned char aucDst[4];
    std::memset(aucDst, 0xEE, sizeof(aucDst));
    EXPECT_EQ(qev_memcpy_s(aucDst, sizeof(aucDst), nullptr, 2), QEV_EINVAL);
    EXPECT_TRUE(AllEqual(aucDst, sizeof(aucDst), 0));
}

TEST(QevMemcpy, HugeSizeIsInvalidAndUntouched)
{
    unsigned char aucDst[4];
    std::memset(aucDst, 0xEE, sizeof(aucDst));
    EXPECT_EQ(qev_memcpy_s(aucDst, QEV_MAX_DEST_SIZE + 1u, "ab", 2), QEV_EINVAL);
    EXPECT_TRUE(AllEqual(aucDst, sizeof(aucDst), 0xEE));
}

TEST(QevMemcpy, OverlapIsRefusedAndLeavesTheDestinationUntouched)
{
    unsigned char aucBuf[10] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    const unsigned char aucBefore[10] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    EXPECT_EQ(qev_memcpy_s(aucBuf + 2, 8, aucBuf, 4), QEV_EOVERLAP);   // source first
    EXPECT_EQ(qev_memcpy_s(aucBuf, 10, aucBuf + 3, 4), QEV_EOVERLAP);  // destination first
    EXPECT_EQ(qev_memcpy_s(aucBuf, 10, aucBuf, 1), QEV_EOVERLAP);      // same span
    EXPECT_EQ(std::memcmp(aucBuf, aucBefore, sizeof(aucBuf)), 0);
}

TEST(QevMemcpy, AdjacentSpansDoNotOverlap)
{
    unsigned char aucBuf[8] = {0, 1, 2, 3, 4, 5, 6, 7};
    EXPECT_EQ(qev_memcpy_s(aucBuf + 4, 4, aucBuf, 4), QEV_OK);
    const unsigned char aucExpected[8] = {0, 1, 2, 3, 0, 1, 2, 3};
    EXPECT_EQ(std::memcmp(aucBuf, aucExpected, sizeof(aucBuf)), 0);
}

// ---- qev_memset_s --------------------------------------------------------------------

TEST(QevMemset, SetsExactlyCountBytes)
{
    unsigned char aucBuf[8];
    std::memset(aucBuf, 0xEE, sizeof(aucBuf));
    EXPECT_EQ(qev_memset_s(aucBuf, sizeof(aucBuf), 0x41, 5), QEV_OK);
    EXPECT_TRUE(AllEqual(aucBuf, 5, 0x41));
    EXPECT_TRUE(AllEqual(aucBuf + 5, 3, 0xEE));
}

TEST(QevMemset, ValueIsTakenAsUnsignedChar)
{
    unsigned char aucBuf[4] = {};
    EXPECT_EQ(qev_memset_s(aucBuf, sizeof(aucBuf), 0x1FF, sizeof(aucBuf)), QEV_OK);
    EXPECT_TRUE(AllEqual(aucBuf, sizeof(aucBuf), 0xFF));
}

TEST(QevMemset, CountAboveSizeSetsTheSizeAndIsRange)
{
    unsigned char aucBuf[8];
    std::memset(aucBuf, 0xEE, sizeof(aucBuf));
    EXPECT_EQ(qev_memset_s(aucBuf, 4, 0, 6), QEV_ERANGE);
    EXPECT_TRUE(AllEqual(aucBuf, 4, 0));
    EXPECT_TRUE(AllEqual(aucBuf + 4, 4, 0xEE)) << "set beyond the given size";
}

TEST(QevMemset, CountZeroAndSizeZero)
{
    unsigned char aucBuf[2] = {7, 7};
    EXPECT_EQ(qev_memset_s(aucBuf, 0, 0, 0), QEV_OK);
    EXPECT_EQ(qev_memset_s(aucBuf, 0, 0, 1), QEV_ERANGE);
    EXPECT_EQ(aucBuf[0], 7);
}

TEST(QevMemset, InvalidArguments)
{
    unsigned char aucBuf[2] = {7, 7};
    EXPECT_EQ(qev_memset_s(nullptr, 4, 0, 4), QEV_EINVAL);
    EXPECT_EQ(qev_memset_s(aucBuf, QEV_MAX_DEST_SIZE + 1u, 0, 2), QEV_EINVAL);
    EXPECT_EQ(aucBuf[0], 7);
}

TEST(QevMemset, WipesASecretThatIsNotReadAfterwards)
{
    // The wipe of a dead buffer must still happen; observe it through a volatile view.
    char acSecret[16] = "password123";
    EXPECT_EQ(qev_memset_s(acSecret, sizeof(acSecret), 0, sizeof(acSecret)), QEV_OK);
    const volatile char *pcView = acSecret;
    for (size_t i = 0; i < sizeof(acSecret); ++i) {
        EXPECT_EQ(pcView[i], 0) << "byte " << i;
    }
}

} // namespace
