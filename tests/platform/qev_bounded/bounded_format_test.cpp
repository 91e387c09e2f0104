// qev_sprintf_s and qev_sscanf_s.
#include "qev_bounded.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

// ---- qev_sprintf_s -------------------------------------------------------------------

TEST(QevSprintf, ReturnsTheCountWhenTheTextFits)
{
    char acBuf[100];
    EXPECT_EQ(qev_sprintf_s(acBuf, sizeof(acBuf), "stggroup.msstggroup.msstg%u", 3u), 26);
    EXPECT_STREQ(acBuf, "stggroup.msstggroup.msstg3");
    EXPECT_EQ(qev_sprintf_s(acBuf, 32, "%s:%u", "10.0.0.1", 5060u), 13);
    EXPECT_STREQ(acBuf, "10.0.0.1:5060");
}

TEST(QevSprintf, ExactFit)
{
    char acBuf[8];
    EXPECT_EQ(qev_sprintf_s(acBuf, 6, "%s", "abcde"), 5);
    EXPECT_STREQ(acBuf, "abcde");
}

TEST(QevSprintf, OneCharacterTooManyGivesMinusOneAndEmpty)
{
    char acBuf[8];
    std::memset(acBuf, 'X', sizeof(acBuf));
    EXPECT_EQ(qev_sprintf_s(acBuf, 5, "%s", "abcde"), -1);
    EXPECT_STREQ(acBuf, "");
    EXPECT_EQ(acBuf[5], 'X') << "wrote beyond the given size";
}

TEST(QevSprintf, EmptyResult)
{
    char acBuf[1];
    EXPECT_EQ(qev_sprintf_s(acBuf, 1, "%s", ""), 0);
    EXPECT_STREQ(acBuf, "");
}

TEST(QevSprintf, InvalidArguments)
{
    char acBuf[8] = "keep";
    EXPECT_EQ(qev_sprintf_s(nullptr, 8, "x"), -1);
    EXPECT_EQ(qev_sprintf_s(acBuf, 0, "x"), -1);
    EXPECT_STREQ(acBuf, "keep");
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
#pragma GCC diagnostic ignored "-Wformat-extra-args"
#endif
    const char *pcNullFormat = nullptr;
    EXPECT_EQ(qev_sprintf_s(acBuf, sizeof(acBuf), pcNullFormat), -1);
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
    EXPECT_STREQ(acBuf, "");
}

// ---- qev_sscanf_s: the module's two uses ---------------------------------------------

TEST(QevSscanf, HostBeforeTheColon)
{
    char acHost[256];
    EXPECT_EQ(qev_sscanf_s("host:5060", "%[^:]", acHost, 256), 1);
    EXPECT_STREQ(acHost, "host");
}

TEST(QevSscanf, HostWithoutColonTakesEverything)
{
    char acHost[256];
    EXPECT_EQ(qev_sscanf_s("example.com", "%[^:]", acHost, 256), 1);
    EXPECT_STREQ(acHost, "example.com");
}

TEST(QevSscanf, TooLongHostLeavesEmptyAndStopsTheScan)
{
    const std::string strUri = std::string(300, 'h') + ":5060";
    char acHost[256];
    std::memset(acHost, 'X', sizeof(acHost));
    int iPort = -7;
    EXPECT_EQ(qev_sscanf_s(strUri.c_str(), "%[^:]:%d", acHost, 256, &iPort), 0);
    EXPECT_STREQ(acHost, "");
    EXPECT_EQ(iPort, -7) << "the scan went on after the overflow";
}

TEST(QevSscanf, HostExactlyFitsItsCapacity)
{
    const std::string strHost(255, 'h');
    char acHost[256];
    EXPECT_EQ(qev_sscanf_s((strHost + ":1").c_str(), "%[^:]", acHost, 256), 1);
    EXPECT_EQ(std::string(acHost), strHost);

    const std::string strLonger(256, 'h');
    EXPECT_EQ(qev_sscanf_s((strLonger + ":1").c_str(), "%[^:]", acHost, 256), 0);
    EXPECT_STREQ(acHost, "");
}

TEST(QevSscanf, PortAfterTheColon)
{
    int iPort = 0;
    EXPECT_EQ(qev_sscanf_s(":5060", ":%d", &iPort), 1);
    EXPECT_EQ(iPort, 5060);
}

TEST(QevSscanf, PortThatIsNotANumberAssignsNothing)
{
    int iPort = -7;
    EXPECT_EQ(qev_sscanf_s(":abc", ":%d", &iPort), 0);
    EXPECT_EQ(iPort, -7);
}

TEST(QevSscanf, LiteralMismatchAssignsNothing)
{
    int iPort = -7;
    EXPECT_EQ(qev_sscanf_s("5060", ":%d", &iPort), 0);
    EXPECT_EQ(iPort, -7);
}

// ---- qev_sscanf_s: conversions -------------------------------------------------------

TEST(QevSscanf, IntegerConversions)
{
    int iD = 0;
    int iI = 0;
    unsigned int uU = 0;
    unsigned int uX = 0;
    unsigned int uO = 0;
    EXPECT_EQ(qev_sscanf_s("-12 0x1F 42 ff 17", "%d %i %u %x %o", &iD, &iI, &uU, &uX, &uO), 5);
    EXPECT_EQ(iD, -12);
    EXPECT_EQ(iI, 31);
    EXPECT_EQ(uU, 42u);
    EXPECT_EQ(uX, 0xFFu);
    EXPECT_EQ(uO, 15u);
}

TEST(QevSscanf, IntegerConversionsSkipLeadingWhiteSpace)
{
    int iA = 0;
    int iB = 0;
    EXPECT_EQ(qev_sscanf_s("  \t7,\n 8", "%d,%d", &iA, &iB), 2);
    EXPECT_EQ(iA, 7);
    EXPECT_EQ(iB, 8);
}

TEST(QevSscanf, WidthLimitsAnIntegerField)
{
    int iA = 0;
    int iB = 0;
    EXPECT_EQ(qev_sscanf_s("123456", "%2d%3d", &iA, &iB), 2);
    EXPECT_EQ(iA, 12);
    EXPECT_EQ(iB, 345);
}

TEST(QevSscanf, UnsignedConversionWrapsANegativeNumber)
{
    unsigned int uU = 0;
    EXPECT_EQ(qev_sscanf_s("-1", "%u", &uU), 1);
    EXPECT_EQ(uU, 0xFFFFFFFFu);
}

TEST(QevSscanf, StringConversionStopsAtWhiteSpace)
{
    char acA[8];
    char acB[8];
    EXPECT_EQ(qev_sscanf_s("  abc def", "%s %s", acA, 8u, acB, 8u), 2);
    EXPECT_STREQ(acA, "abc");
    EXPECT_STREQ(acB, "def");
}

TEST(QevSscanf, StringWidth)
{
    char acA[8];
    char acB[8];
    EXPECT_EQ(qev_sscanf_s("abcdef", "%3s%s", acA, 8u, acB, 8u), 2);
    EXPECT_STREQ(acA, "abc");
    EXPECT_STREQ(acB, "def");
}

TEST(QevSscanf, StringOverflowLeavesEmptyAndStops)
{
    char acA[4];
    char acB[8] = "keep";
    EXPECT_EQ(qev_sscanf_s("abcd efg", "%s %s", acA, 4u, acB, 8u), 0);
    EXPECT_STREQ(acA, "");
    EXPECT_STREQ(acB, "keep");
}

TEST(QevSscanf, CharConversionTakesExactlyWidthCharactersWithoutTerminator)
{
    char acC[4] = {'X', 'X', 'X', 'X'};
    EXPECT_EQ(qev_sscanf_s(" ab", "%c", acC, 4u), 1);
    EXPECT_EQ(acC[0], ' ') << "%c must not skip white space";
    EXPECT_EQ(acC[1], 'X');

    std::memset(acC, 'X', sizeof(acC));
    EXPECT_EQ(qev_sscanf_s("abc", "%3c", acC, 3u), 1);
    EXPECT_EQ(std::memcmp(acC, "abc", 3), 0);
    EXPECT_EQ(acC[3], 'X');
}

TEST(QevSscanf, CharConversionAboveCapacityLeavesEmpty)
{
    char acC[2] = {'X', 'X'};
    EXPECT_EQ(qev_sscanf_s("abc", "%3c", acC, 2u), 0);
    EXPECT_EQ(acC[0], '\0');
}

TEST(QevSscanf, PercentMatchesALiteralPercent)
{
    int iA = 0;
    EXPECT_EQ(qev_sscanf_s("50%", "%d%%", &iA), 1);
    EXPECT_EQ(iA, 50);
    int iB = 0;
    EXPECT_EQ(qev_sscanf_s("%7", "%%%d", &iB), 1);
    EXPECT_EQ(iB, 7);
    EXPECT_EQ(qev_sscanf_s("x7", "%%%d", &iB), 0);
}

TEST(QevSscanf, ScanSetWithRangesAndLeadingBracket)
{
    char acA[16];
    EXPECT_EQ(qev_sscanf_s("abc123-x", "%[a-c0-9]", acA, 16u), 1);
    EXPECT_STREQ(acA, "abc123");
    EXPECT_EQ(qev_sscanf_s("]]x", "%[]]", acA, 16u), 1);
    EXPECT_STREQ(acA, "]]");
    EXPECT_EQ(qev_sscanf_s("ab]c", "%[^]]", acA, 16u), 1);
    EXPECT_STREQ(acA, "ab");
}

TEST(QevSscanf, ScanSetMatchingNothingIsAMatchingFailure)
{
    char acA[8] = "keep";
    EXPECT_EQ(qev_sscanf_s(":5060", "%[^:]", acA, 8u), 0);
    EXPECT_STREQ(acA, "keep");
}

// ---- qev_sscanf_s: input ending, bad formats and arguments ---------------------------

TEST(QevSscanf, InputEndingBeforeTheFirstConversionIsMinusOne)
{
    int iA = -7;
    char acA[8] = "keep";
    EXPECT_EQ(qev_sscanf_s("", "%d", &iA), -1);
    EXPECT_EQ(qev_sscanf_s("   ", "%d", &iA), -1);
    EXPECT_EQ(qev_sscanf_s("", "%[^:]", acA, 8u), -1);
    EXPECT_EQ(qev_sscanf_s(":", ":%d", &iA), -1);
    EXPECT_EQ(iA, -7);
    EXPECT_STREQ(acA, "keep");
}

TEST(QevSscanf, InputEndingAfterAConversionReturnsWhatWasAssigned)
{
    int iA = 0;
    int iB = -7;
    EXPECT_EQ(qev_sscanf_s("5", "%d:%d", &iA, &iB), 1);
    EXPECT_EQ(iA, 5);
    EXPECT_EQ(iB, -7);
}

TEST(QevSscanf, UnsupportedOrInvalidFormatIsMinusOne)
{
    int iA = -7;
    long lA = 0;
    float fA = 0;
    EXPECT_EQ(qev_sscanf_s("5", "%ld", &lA), -1);
    EXPECT_EQ(qev_sscanf_s("5", "%f", &fA), -1);
    EXPECT_EQ(qev_sscanf_s("5", "%*d"), -1);
    EXPECT_EQ(qev_sscanf_s("5", "%n", &iA), -1);
    EXPECT_EQ(qev_sscanf_s("5", "%"), -1);
    EXPECT_EQ(qev_sscanf_s("abc", "%[abc", &iA, 8u), -1);
    // Checked up front: an unsupported conversion later in the format is still refused.
    EXPECT_EQ(qev_sscanf_s("5", "%d%f", &iA, &fA), -1);
    EXPECT_EQ(iA, -7);
}

TEST(QevSscanf, NullArgumentsAreMinusOne)
{
    int iA = 0;
    EXPECT_EQ(qev_sscanf_s(nullptr, "%d", &iA), -1);
    EXPECT_EQ(qev_sscanf_s("5", nullptr), -1);
    EXPECT_EQ(qev_sscanf_s("5", "%d", static_cast<int *>(nullptr)), -1);
    EXPECT_EQ(qev_sscanf_s("ab", "%s", static_cast<char *>(nullptr), 8u), -1);
    char acA[4] = "k";
    EXPECT_EQ(qev_sscanf_s("ab", "%s", acA, 0u), -1);
    EXPECT_STREQ(acA, "k");
}

TEST(QevSscanf, FormatWithoutConversionsAssignsNothing)
{
    EXPECT_EQ(qev_sscanf_s("abc", "abc"), 0);
    EXPECT_EQ(qev_sscanf_s("abc", ""), 0);
}

} // namespace
