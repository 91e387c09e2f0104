// KTL_BASE64Encode / KTL_BASE64Decode / KTL_BASE64Free over libsodium.
#include "ktl_base64.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

std::string Encode(const std::string &strData)
{
    char *pcText = KTL_BASE64Encode(strData.data(), static_cast<uint32_t>(strData.size()));
    EXPECT_NE(pcText, nullptr);
    std::string strText = pcText != nullptr ? pcText : "<null>";
    KTL_BASE64Free(&pcText);
    return strText;
}

// Decodes strText; returns the result code and the decoded bytes (empty when none).
std::pair<int32_t, std::string> Decode(const std::string &strText)
{
    char acSentinel[1] = {'S'};
    char *pcOut = acSentinel; // anything but null: the call must reset it
    const int32_t iRet = KTL_BASE64Decode(strText.data(), static_cast<uint32_t>(strText.size()), &pcOut);
    std::string strOut;
    if (iRet > 0) {
        EXPECT_NE(pcOut, nullptr);
        if (pcOut != nullptr) {
            EXPECT_EQ(pcOut[iRet], '\0') << "missing terminating zero byte";
            strOut.assign(pcOut, static_cast<size_t>(iRet));
        }
    } else {
        EXPECT_EQ(pcOut, nullptr) << "no buffer expected for result " << iRet;
    }
    KTL_BASE64Free(&pcOut);
    return {iRet, strOut};
}

const std::pair<const char *, const char *> kRfc4648[] = {
    {"", ""},         {"f", "Zg=="},         {"fo", "Zm8="},         {"foo", "Zm9v"},
    {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"},
};

TEST(Base64, EncodesTheRfc4648Vectors)
{
    for (const auto &v : kRfc4648) {
        EXPECT_EQ(Encode(v.first), v.second) << '"' << v.first << '"';
    }
}

TEST(Base64, DecodesTheRfc4648Vectors)
{
    for (const auto &v : kRfc4648) {
        const auto result = Decode(v.second);
        EXPECT_EQ(result.first, static_cast<int32_t>(std::strlen(v.first))) << v.second;
        EXPECT_EQ(result.second, v.first) << v.second;
    }
}

TEST(Base64, RoundTripsRandomDataOfEveryLengthUpTo300)
{
    std::mt19937 rng(12345);
    for (size_t uiLen = 0; uiLen <= 300; ++uiLen) {
        std::string strData(uiLen, '\0');
        for (char &c : strData) {
            c = static_cast<char>(rng() & 0xFF);
        }
        const std::string strText = Encode(strData);
        EXPECT_EQ(strText.size(), (uiLen + 2) / 3 * 4) << "length " << uiLen;
        const auto result = Decode(strText);
        EXPECT_EQ(result.first, static_cast<int32_t>(uiLen)) << "length " << uiLen;
        EXPECT_EQ(result.second, strData) << "length " << uiLen;
    }
}

TEST(Base64, EmptyEncodingIsAnEmptyText)
{
    char *pcText = KTL_BASE64Encode("", 0);
    ASSERT_NE(pcText, nullptr);
    EXPECT_STREQ(pcText, "");
    KTL_BASE64Free(&pcText);

    pcText = KTL_BASE64Encode(nullptr, 0);
    ASSERT_NE(pcText, nullptr);
    EXPECT_STREQ(pcText, "");
    KTL_BASE64Free(&pcText);
}

TEST(Base64, EncodeOfNullDataWithALengthIsNull)
{
    EXPECT_EQ(KTL_BASE64Encode(nullptr, 3), nullptr);
}

TEST(Base64, EmptyOrWhiteSpaceOnlyInputDecodesToZero)
{
    EXPECT_EQ(Decode("").first, 0);
    EXPECT_EQ(Decode(" \t\r\n").first, 0);
}

TEST(Base64, WrappedTextWithLineBreaksDecodes)
{
    const std::string strData = "the quick brown fox jumps over the lazy dog";
    const std::string strText = Encode(strData);
    std::string strWrapped;
    for (size_t i = 0; i < strText.size(); i += 16) {
        strWrapped += strText.substr(i, 16) + "\r\n";
    }
    strWrapped = " \t" + strWrapped;
    const auto result = Decode(strWrapped);
    EXPECT_EQ(result.first, static_cast<int32_t>(strData.size()));
    EXPECT_EQ(result.second, strData);
}

TEST(Base64, WhiteSpaceAroundPaddingIsIgnored)
{
    const auto result = Decode("Zm9v Yg =\n= \n");
    EXPECT_EQ(result.first, 4);
    EXPECT_EQ(result.second, "foob");
}

TEST(Base64, OnlyTheGivenLengthIsRead)
{
    char *pcOut = nullptr;
    EXPECT_EQ(KTL_BASE64Decode("Zm9vYmFy", 4, &pcOut), 3);
    ASSERT_NE(pcOut, nullptr);
    EXPECT_STREQ(pcOut, "foo");
    KTL_BASE64Free(&pcOut);
}

TEST(Base64, InvalidTextIsRejected)
{
    const char *apcInvalid[] = {
        "Zm9v!",       // a character outside the alphabet
        "Zm-v",        // URL-safe alphabet is not the standard one
        "Zm_v",
        "Zg",          // missing padding
        "Zg=",         // truncated padding
        "Zm8",         // missing padding
        "Zm9vY",       // truncated group
        "Zg===",       // too much padding
        "Zm9v====",    // padding without a partial group
        "=",           // padding only
        "Zg==Zg==",    // data after the padding
        "Zm9vYg==x",   // trailing garbage
        "Zm9v\v",      // vertical tab is not one of the ignored characters
        "Zh==",        // non-zero bits after the last byte
    };
    for (const char *pcText : apcInvalid) {
        const auto result = Decode(pcText);
        EXPECT_LE(result.first, 0) << '"' << pcText << '"';
        EXPECT_EQ(result.first, -1) << '"' << pcText << '"';
    }
}

TEST(Base64, EmbeddedNulByteIsInvalid)
{
    const std::string strText("Zm9v\0Zm9v", 9);
    EXPECT_EQ(Decode(strText).first, -1);
}

TEST(Base64, NullArgumentsAreMinusOne)
{
    char acSentinel[1] = {'S'};
    char *pcOut = acSentinel;
    EXPECT_EQ(KTL_BASE64Decode(nullptr, 4, &pcOut), -1);
    EXPECT_EQ(pcOut, nullptr);
    EXPECT_EQ(KTL_BASE64Decode("Zm9v", 4, nullptr), -1);
}

TEST(Base64, FreeSetsThePointerToNullAndToleratesNull)
{
    char *pcText = KTL_BASE64Encode("abc", 3);
    ASSERT_NE(pcText, nullptr);
    KTL_BASE64Free(&pcText);
    EXPECT_EQ(pcText, nullptr);
    KTL_BASE64Free(&pcText); // already null
    KTL_BASE64Free(nullptr);
    EXPECT_EQ(pcText, nullptr);
}

} // namespace
