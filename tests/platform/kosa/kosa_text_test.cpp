// KOSA text routines (null-tolerant) and number conversions.
#include "kosa.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

// ---- text ----------------------------------------------------------------------------

TEST(KosaText, StrLenCountsBytesAndTreatsNullAsEmpty)
{
    EXPECT_EQ(KOSA_StrLen("abc"), 3u);
    EXPECT_EQ(KOSA_StrLen(""), 0u);
    EXPECT_EQ(KOSA_StrLen(nullptr), 0u);
}

TEST(KosaText, StrCmpOrdersLikeStrcmpWithNullFirst)
{
    EXPECT_EQ(KOSA_StrCmp("abc", "abc"), 0);
    EXPECT_LT(KOSA_StrCmp("abc", "abd"), 0);
    EXPECT_GT(KOSA_StrCmp("abd", "abc"), 0);
    EXPECT_LT(KOSA_StrCmp("ab", "abc"), 0);
    EXPECT_EQ(KOSA_StrCmp(nullptr, nullptr), 0);
    EXPECT_LT(KOSA_StrCmp(nullptr, ""), 0);
    EXPECT_GT(KOSA_StrCmp("", nullptr), 0);
    EXPECT_EQ(KOSA_StrCmp("YES", "YES"), 0);
    EXPECT_NE(KOSA_StrCmp("yes", "YES"), 0);
}

TEST(KosaText, StrChrFindsFirstOccurrence)
{
    const char *pcText = "host:5060:x";
    EXPECT_EQ(KOSA_StrChr(pcText, ':'), pcText + 4);
    EXPECT_EQ(KOSA_StrChr(pcText, 'z'), nullptr);
    EXPECT_EQ(KOSA_StrChr(pcText, '\0'), pcText + 11);
    EXPECT_EQ(KOSA_StrChr(nullptr, ':'), nullptr);
}

TEST(KosaText, StrStrFindsFirstOccurrenceAndToleratesNull)
{
    const char *pcText = "a.b.c.b";
    EXPECT_EQ(KOSA_StrStr(pcText, ".b"), pcText + 1);
    EXPECT_EQ(KOSA_StrStr(pcText, "x"), nullptr);
    EXPECT_EQ(KOSA_StrStr(pcText, ""), pcText);
    EXPECT_EQ(KOSA_StrStr(nullptr, "a"), nullptr);
    EXPECT_EQ(KOSA_StrStr(pcText, nullptr), nullptr);
    EXPECT_EQ(KOSA_StrStr(nullptr, nullptr), nullptr);
}

TEST(KosaText, MemCmpComparesBytesAndZeroLengthIsEqual)
{
    const unsigned char aucA[] = {1, 2, 3, 0, 5};
    const unsigned char aucB[] = {1, 2, 3, 0, 6};
    EXPECT_EQ(KOSA_MemCmp(aucA, aucB, 4), 0); // past the zero byte too
    EXPECT_LT(KOSA_MemCmp(aucA, aucB, 5), 0);
    EXPECT_GT(KOSA_MemCmp(aucB, aucA, 5), 0);
    EXPECT_EQ(KOSA_MemCmp(nullptr, nullptr, 0), 0);
}

// ---- KOSA_Strtoul --------------------------------------------------------------------

TEST(KosaStrtoul, BaseZeroAcceptsDecimalHexAndOctal)
{
    EXPECT_EQ(KOSA_Strtoul("10", nullptr, 0), 10u);
    EXPECT_EQ(KOSA_Strtoul("0x10", nullptr, 0), 16u);
    EXPECT_EQ(KOSA_Strtoul("0X1f", nullptr, 0), 31u);
    EXPECT_EQ(KOSA_Strtoul("010", nullptr, 0), 8u);
    EXPECT_EQ(KOSA_Strtoul("0", nullptr, 0), 0u);
}

TEST(KosaStrtoul, ExplicitBases)
{
    EXPECT_EQ(KOSA_Strtoul("ff", nullptr, 16), 255u);
    EXPECT_EQ(KOSA_Strtoul("010", nullptr, 10), 10u);
    EXPECT_EQ(KOSA_Strtoul("777", nullptr, 8), 511u);
}

TEST(KosaStrtoul, NonNumbersGiveZero)
{
    EXPECT_EQ(KOSA_Strtoul("abc", nullptr, 0), 0u);
    EXPECT_EQ(KOSA_Strtoul("", nullptr, 0), 0u);
    EXPECT_EQ(KOSA_Strtoul(nullptr, nullptr, 0), 0u);
    EXPECT_EQ(KOSA_Strtoul("-", nullptr, 0), 0u);
}

TEST(KosaStrtoul, LeadingWhiteSpaceAndPlusAreAccepted)
{
    EXPECT_EQ(KOSA_Strtoul("  7", nullptr, 0), 7u);
    EXPECT_EQ(KOSA_Strtoul("\t\n 42", nullptr, 0), 42u);
    EXPECT_EQ(KOSA_Strtoul("+9", nullptr, 0), 9u);
}

TEST(KosaStrtoul, MinusNegatesModulo2To32)
{
    EXPECT_EQ(KOSA_Strtoul("-1", nullptr, 0), 0xFFFFFFFFu);
    EXPECT_EQ(KOSA_Strtoul("-2", nullptr, 0), 0xFFFFFFFEu);
    EXPECT_EQ(KOSA_Strtoul("-0", nullptr, 0), 0u);
    EXPECT_EQ(KOSA_Strtoul("-4294967295", nullptr, 0), 1u);
    EXPECT_EQ(KOSA_Strtoul("-0x10", nullptr, 0), 0xFFFFFFF0u);
}

TEST(KosaStrtoul, SaturatesAbove32Bits)
{
    EXPECT_EQ(KOSA_Strtoul("4294967295", nullptr, 0), 0xFFFFFFFFu);
    EXPECT_EQ(KOSA_Strtoul("4294967296", nullptr, 0), 0xFFFFFFFFu);
    EXPECT_EQ(KOSA_Strtoul("0x100000000", nullptr, 0), 0xFFFFFFFFu);
    EXPECT_EQ(KOSA_Strtoul("99999999999999999999999", nullptr, 0), 0xFFFFFFFFu);
    EXPECT_EQ(KOSA_Strtoul("-4294967296", nullptr, 0), 0xFFFFFFFFu);
    EXPECT_EQ(KOSA_Strtoul("-99999999999999999999999", nullptr, 0), 0xFFFFFFFFu);
}

TEST(KosaStrtoul, EndPointerMarksTheEndOfTheNumber)
{
    const char *pcText = "12abc";
    char *pcEnd = nullptr;
    EXPECT_EQ(KOSA_Strtoul(pcText, &pcEnd, 0), 12u);
    EXPECT_EQ(pcEnd, pcText + 2);

    const char *pcBig = "4294967296 rest";
    EXPECT_EQ(KOSA_Strtoul(pcBig, &pcEnd, 0), 0xFFFFFFFFu);
    EXPECT_EQ(pcEnd, pcBig + 10);
}

TEST(KosaStrtoul, EndPointerIsTheTextWhenThereIsNoNumber)
{
    const char *pcText = "  abc";
    char *pcEnd = nullptr;
    EXPECT_EQ(KOSA_Strtoul(pcText, &pcEnd, 0), 0u);
    EXPECT_EQ(pcEnd, pcText);

    char *pcEnd2 = reinterpret_cast<char *>(&pcEnd);
    EXPECT_EQ(KOSA_Strtoul(nullptr, &pcEnd2, 0), 0u);
    EXPECT_EQ(pcEnd2, nullptr);

    // An invalid base is "no number" as well.
    EXPECT_EQ(KOSA_Strtoul(pcText + 2, &pcEnd, 99), 0u);
    EXPECT_EQ(pcEnd, pcText + 2);
}

// ---- KOSA_StrToInt32 -----------------------------------------------------------------

constexpr int32_t kUntouched = 0x5A5A5A5A;

TEST(KosaStrToInt32, AcceptsDecimalWithOptionalSign)
{
    int32_t iOut = kUntouched;
    EXPECT_EQ(KOSA_StrToInt32("42", &iOut), 0u);
    EXPECT_EQ(iOut, 42);
    EXPECT_EQ(KOSA_StrToInt32("-5", &iOut), 0u);
    EXPECT_EQ(iOut, -5);
    EXPECT_EQ(KOSA_StrToInt32("+12", &iOut), 0u);
    EXPECT_EQ(iOut, 12);
    EXPECT_EQ(KOSA_StrToInt32("0", &iOut), 0u);
    EXPECT_EQ(iOut, 0);
    EXPECT_EQ(KOSA_StrToInt32("-0", &iOut), 0u);
    EXPECT_EQ(iOut, 0);
    EXPECT_EQ(KOSA_StrToInt32("007", &iOut), 0u); // decimal, not octal
    EXPECT_EQ(iOut, 7);
}

TEST(KosaStrToInt32, AcceptsBothLimits)
{
    int32_t iOut = kUntouched;
    EXPECT_EQ(KOSA_StrToInt32("2147483647", &iOut), 0u);
    EXPECT_EQ(iOut, INT32_MAX);
    EXPECT_EQ(KOSA_StrToInt32("-2147483648", &iOut), 0u);
    EXPECT_EQ(iOut, INT32_MIN);
}

TEST(KosaStrToInt32, RejectsOneBeyondEitherLimitAsOverflow)
{
    int32_t iOut = kUntouched;
    EXPECT_EQ(KOSA_StrToInt32("2147483648", &iOut), KOSA_STRTOINT_OVERFLOW);
    EXPECT_EQ(KOSA_StrToInt32("-2147483649", &iOut), KOSA_STRTOINT_OVERFLOW);
    EXPECT_EQ(KOSA_StrToInt32("99999999999999999999999", &iOut), KOSA_STRTOINT_OVERFLOW);
    EXPECT_EQ(KOSA_StrToInt32("-99999999999999999999999", &iOut), KOSA_STRTOINT_OVERFLOW);
    EXPECT_EQ(iOut, kUntouched);
}

TEST(KosaStrToInt32, NullAndEmptyTextAreEmpty)
{
    int32_t iOut = kUntouched;
    EXPECT_EQ(KOSA_StrToInt32(nullptr, &iOut), KOSA_STRTOINT_EMPTY);
    EXPECT_EQ(KOSA_StrToInt32("", &iOut), KOSA_STRTOINT_EMPTY);
    EXPECT_EQ(iOut, kUntouched);
}

TEST(KosaStrToInt32, AnyOtherCharacterIsSyntax)
{
    int32_t iOut = kUntouched;
    for (const char *pcText : {"-", "+", "12a", "a12", " 12", "12 ", "1 2", "0x10", "--1", "+-1",
                               "1.5", "\t7"}) {
        EXPECT_EQ(KOSA_StrToInt32(pcText, &iOut), KOSA_STRTOINT_SYNTAX) << '"' << pcText << '"';
    }
    EXPECT_EQ(iOut, kUntouched);
}

} // namespace
