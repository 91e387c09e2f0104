// qev_strcpy_s, qev_strncpy_s, qev_strcat_s at every boundary.
#include "qev_bounded.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

// A destination pre-filled with garbage, so that "" after a failure is observable.
struct Dest {
    explicit Dest(char cFill = 'X') { std::memset(acBuf, cFill, sizeof(acBuf)); }
    char acBuf[16];
};

// ---- qev_strcpy_s --------------------------------------------------------------------

TEST(QevStrcpy, CopiesWhenTheTextExactlyFits)
{
    Dest d;
    EXPECT_EQ(qev_strcpy_s(d.acBuf, 4, "abc"), QEV_OK);
    EXPECT_STREQ(d.acBuf, "abc");
    EXPECT_EQ(d.acBuf[4], 'X') << "wrote past the terminator";
}

TEST(QevStrcpy, OneCharacterTooManyIsRangeAndLeavesEmpty)
{
    Dest d;
    EXPECT_EQ(qev_strcpy_s(d.acBuf, 3, "abc"), QEV_ERANGE);
    EXPECT_STREQ(d.acBuf, "");
}

TEST(QevStrcpy, EmptySourceIntoSizeOne)
{
    Dest d;
    EXPECT_EQ(qev_strcpy_s(d.acBuf, 1, ""), QEV_OK);
    EXPECT_STREQ(d.acBuf, "");
}

TEST(QevStrcpy, SizeZeroIsInvalidAndUntouched)
{
    Dest d;
    EXPECT_EQ(qev_strcpy_s(d.acBuf, 0, "a"), QEV_EINVAL);
    EXPECT_EQ(d.acBuf[0], 'X');
}

TEST(QevStrcpy, HugeSizeIsInvalidAndUntouched)
{
    Dest d;
    EXPECT_EQ(qev_strcpy_s(d.acBuf, QEV_MAX_DEST_SIZE + 1u, "a"), QEV_EINVAL);
    EXPECT_EQ(d.acBuf[0], 'X');
}

TEST(QevStrcpy, NullDestinationIsInvalid)
{
    EXPECT_EQ(qev_strcpy_s(nullptr, 8, "a"), QEV_EINVAL);
}

TEST(QevStrcpy, NullSourceIsInvalidAndLeavesEmpty)
{
    Dest d;
    EXPECT_EQ(qev_strcpy_s(d.acBuf, 8, nullptr), QEV_EINVAL);
    EXPECT_STREQ(d.acBuf, "");
}

TEST(QevStrcpy, LongSourceIsRange)
{
    const std::string strLong(1000, 'a');
    Dest d;
    EXPECT_EQ(qev_strcpy_s(d.acBuf, sizeof(d.acBuf), strLong.c_str()), QEV_ERANGE);
    EXPECT_STREQ(d.acBuf, "");
}

// ---- qev_strncpy_s -------------------------------------------------------------------

TEST(QevStrncpy, CountLengthPlusOneCopiesTheWholeText)
{
    Dest d;
    EXPECT_EQ(qev_strncpy_s(d.acBuf, 4, "abc", 4), QEV_OK);
    EXPECT_STREQ(d.acBuf, "abc");
}

TEST(QevStrncpy, CountSmallerThanLengthCopiesAPrefix)
{
    Dest d;
    EXPECT_EQ(qev_strncpy_s(d.acBuf, sizeof(d.acBuf), "abcdef", 3), QEV_OK);
    EXPECT_STREQ(d.acBuf, "abc");
}

TEST(QevStrncpy, PrefixExactlyFits)
{
    Dest d;
    EXPECT_EQ(qev_strncpy_s(d.acBuf, 4, "abcdef", 3), QEV_OK);
    EXPECT_STREQ(d.acBuf, "abc");
}

TEST(QevStrncpy, PrefixOneTooManyIsRange)
{
    Dest d;
    EXPECT_EQ(qev_strncpy_s(d.acBuf, 3, "abcdef", 3), QEV_ERANGE);
    EXPECT_STREQ(d.acBuf, "");
}

TEST(QevStrncpy, CountLargerThanLengthStopsAtTheTerminator)
{
    Dest d;
    EXPECT_EQ(qev_strncpy_s(d.acBuf, 4, "abc", 100), QEV_OK);
    EXPECT_STREQ(d.acBuf, "abc");
}

TEST(QevStrncpy, WholeTextOneTooManyIsRange)
{
    Dest d;
    EXPECT_EQ(qev_strncpy_s(d.acBuf, 3, "abc", 4), QEV_ERANGE);
    EXPECT_STREQ(d.acBuf, "");
}

TEST(QevStrncpy, CountZeroGivesEmpty)
{
    Dest d;
    EXPECT_EQ(qev_strncpy_s(d.acBuf, 4, "abc", 0), QEV_OK);
    EXPECT_STREQ(d.acBuf, "");
}

TEST(QevStrncpy, SourceNeedNotBeTerminatedWithinCount)
{
    const char acRaw[3] = {'x', 'y', 'z'}; // no terminator
    Dest d;
    EXPECT_EQ(qev_strncpy_s(d.acBuf, sizeof(d.acBuf), acRaw, 3), QEV_OK);
    EXPECT_STREQ(d.acBuf, "xyz");
}

TEST(QevStrncpy, InvalidArguments)
{
    Dest d;
    EXPECT_EQ(qev_strncpy_s(nullptr, 8, "a", 2), QEV_EINVAL);
    EXPECT_EQ(qev_strncpy_s(d.acBuf, 0, "a", 2), QEV_EINVAL);
    EXPECT_EQ(d.acBuf[0], 'X');
    EXPECT_EQ(qev_strncpy_s(d.acBuf, 8, nullptr, 2), QEV_EINVAL);
    EXPECT_STREQ(d.acBuf, "");
}

// ---- qev_strcat_s --------------------------------------------------------------------

TEST(QevStrcat, JoinsPieces)
{
    char acBuf[32] = "1.1.1.1";
    EXPECT_EQ(qev_strcat_s(acBuf, sizeof(acBuf), ";"), QEV_OK);
    EXPECT_EQ(qev_strcat_s(acBuf, sizeof(acBuf), "2.2.2.2"), QEV_OK);
    EXPECT_STREQ(acBuf, "1.1.1.1;2.2.2.2");
}

TEST(QevStrcat, JoinedTextExactlyFits)
{
    char acBuf[7] = "abc";
    EXPECT_EQ(qev_strcat_s(acBuf, sizeof(acBuf), "def"), QEV_OK);
    EXPECT_STREQ(acBuf, "abcdef");
}

TEST(QevStrcat, OneCharacterTooManyDropsEverything)
{
    char acBuf[7] = "abc";
    EXPECT_EQ(qev_strcat_s(acBuf, sizeof(acBuf), "defg"), QEV_ERANGE);
    EXPECT_STREQ(acBuf, "") << "the previous content must be dropped too";
}

TEST(QevStrcat, AppendingEmptyToAFullString)
{
    char acBuf[4] = "abc";
    EXPECT_EQ(qev_strcat_s(acBuf, sizeof(acBuf), ""), QEV_OK);
    EXPECT_STREQ(acBuf, "abc");
}

TEST(QevStrcat, UnterminatedDestinationIsRangeAndLeavesEmpty)
{
    char acBuf[4] = {'a', 'b', 'c', 'd'};
    EXPECT_EQ(qev_strcat_s(acBuf, sizeof(acBuf), "x"), QEV_ERANGE);
    EXPECT_EQ(acBuf[0], '\0');
}

TEST(QevStrcat, TerminatorBeyondTheGivenSizeCountsAsUnterminated)
{
    char acBuf[8] = "abcdef";
    EXPECT_EQ(qev_strcat_s(acBuf, 4, ""), QEV_ERANGE);
    EXPECT_EQ(acBuf[0], '\0');
}

TEST(QevStrcat, InvalidArguments)
{
    char acBuf[8] = "ab";
    EXPECT_EQ(qev_strcat_s(nullptr, 8, "a"), QEV_EINVAL);
    EXPECT_EQ(qev_strcat_s(acBuf, 0, "a"), QEV_EINVAL);
    EXPECT_STREQ(acBuf, "ab");
    EXPECT_EQ(qev_strcat_s(acBuf, sizeof(acBuf), nullptr), QEV_EINVAL);
    EXPECT_STREQ(acBuf, "");
}

} // namespace
