/*
 * Captures as field engineers make them: the inspector takes the answer out of an HTTP
 * response (headers, chunks, charset), out of UTF-16 and from behind a byte-order mark, says
 * what it took off, refuses what is still not text with its first bytes shown safely, and
 * tells where a text that is not well-formed XML goes wrong.
 */
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "capture.h"

using namespace atrium_tool;

namespace {

const std::string ANSWER = "<UserInfo><LoginToken><AccessToken>t</AccessToken></LoginToken></UserInfo>";

Capture Unwrapped(const std::string &strBytes)
{
    Capture stCapture;
    std::string strError;
    EXPECT_TRUE(UnwrapCapture(strBytes, stCapture, strError)) << strError;
    return stCapture;
}

std::string RefusalOf(const std::string &strBytes)
{
    Capture stCapture;
    std::string strError;
    EXPECT_FALSE(UnwrapCapture(strBytes, stCapture, strError));
    return strError;
}

TEST(Capture, AnAnswerAsItIsComesThroughUntouched)
{
    const Capture stCapture = Unwrapped(ANSWER);
    EXPECT_EQ(stCapture.strBody, ANSWER);
    EXPECT_TRUE(stCapture.vecNotes.empty());
}

TEST(Capture, HttpHeadersAreRemovedAndSaidSo)
{
    const std::string strHead = "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nContent-Length: 75\r\n\r\n";
    const Capture stCapture = Unwrapped(strHead + ANSWER);
    EXPECT_EQ(stCapture.strBody, ANSWER);
    EXPECT_EQ(stCapture.vecNotes, std::vector<std::string>{"HTTP/1.1 200 headers removed; body starts at byte " +
                                                           std::to_string(strHead.size())});
    /* lines ended by a bare line feed, as some tools save them */
    EXPECT_EQ(Unwrapped("HTTP/1.0 403 Forbidden\nServer: x\n\n" + ANSWER).vecNotes.front(),
              "HTTP/1.0 403 headers removed; body starts at byte 34");
}

TEST(Capture, AChunkedBodyIsDecoded)
{
    char acSecond[16];
    std::snprintf(acSecond, sizeof(acSecond), "%zx;ext=1", ANSWER.size() - 10);
    const std::string strBody = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" "a\r\n" +
                                ANSWER.substr(0, 10) + "\r\n" + acSecond + "\r\n" + ANSWER.substr(10) +
                                "\r\n0\r\n\r\n";
    const Capture stCapture = Unwrapped(strBody);
    EXPECT_EQ(stCapture.strBody, ANSWER);
    ASSERT_EQ(stCapture.vecNotes.size(), 2u);
    EXPECT_EQ(stCapture.vecNotes[1], "chunked transfer coding decoded (2 chunks)");
    EXPECT_EQ(RefusalOf("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n<a/>\r\n0\r\n\r\n"),
              "a chunked body with a chunk size that is not hexadecimal at byte 0");
    EXPECT_EQ(RefusalOf("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nff\r\n<a/>"),
              "a chunked body whose chunk at byte 4 is cut short");
}

TEST(Capture, TheCharsetOfTheContentTypeIsHonoured)
{
    const Capture stCapture =
        Unwrapped("HTTP/1.1 200 OK\r\nContent-Type: text/xml; charset=\"ISO-8859-1\"\r\n\r\n<a>caf\xE9</a>");
    EXPECT_EQ(stCapture.strBody, "<a>caf\xC3\xA9</a>");
    EXPECT_EQ(stCapture.vecNotes.back(), "converted from iso-8859-1 (the Content-Type's charset)");
}

TEST(Capture, Utf16IsConvertedWithARealConverter)
{
    std::string strLe = "\xFF\xFE";
    std::string strBe = "\xFE\xFF";
    /* "<a>é</a>" in UTF-16: é is U+00E9 */
    for (const char16_t c : std::u16string(u"<a>\u00E9</a>")) {
        strLe += static_cast<char>(c & 0xFF);
        strLe += static_cast<char>(c >> 8);
        strBe += static_cast<char>(c >> 8);
        strBe += static_cast<char>(c & 0xFF);
    }
    const Capture stLe = Unwrapped(strLe);
    EXPECT_EQ(stLe.strBody, "<a>\xC3\xA9</a>");
    EXPECT_EQ(stLe.vecNotes, std::vector<std::string>{"converted from UTF-16LE"});
    EXPECT_EQ(Unwrapped(strBe).vecNotes, std::vector<std::string>{"converted from UTF-16BE"});
    const Capture stHttp = Unwrapped("HTTP/1.1 200 OK\r\n\r\n" + strLe);
    EXPECT_EQ(stHttp.strBody, "<a>\xC3\xA9</a>");
    EXPECT_EQ(stHttp.vecNotes.back(), "converted from UTF-16LE");
    /* a lone high surrogate is no UTF-16 */
    const std::string strRefusal = RefusalOf(std::string("\xFF\xFE<\x00\x00\xD8" "a\x00", 8));
    EXPECT_EQ(strRefusal.rfind("not valid UTF-16LE at byte 2 (", 0), 0u) << strRefusal; /* then the C library's words */
}

TEST(Capture, AUtf8ByteOrderMarkIsDropped)
{
    const Capture stCapture = Unwrapped("\xEF\xBB\xBF" + ANSWER);
    EXPECT_EQ(stCapture.strBody, ANSWER);
    EXPECT_EQ(stCapture.vecNotes, std::vector<std::string>{"UTF-8 byte-order mark removed"});
}

TEST(Capture, WhatIsStillNotTextIsShownSafely)
{
    EXPECT_EQ(RefusalOf(std::string("\x89PNG\r\n\x1A\n\0\0", 10)),
              "binary input (a NUL byte at offset 8), not an XML or JSON answer; it starts with "
              "\"\\x89PNG\\x0D\\x0A\\x1A\\x0A\\x00\\x00\"");
    EXPECT_EQ(RefusalOf("HTTP/1.1 200 OK\r\nServer: x\r\n"), "an HTTP response without the blank line that ends its headers");
    EXPECT_EQ(RefusalOf("HTTP/1.1 204 No Content\r\n\r\n"),
              "no answer after HTTP/1.1 204 headers removed; body starts at byte 27");
    EXPECT_EQ(SafeBytes("a\\b\xFC\x01", 16), "a\\\\b\\xFC\\x01");
    EXPECT_EQ(SafeBytes("abcdef", 3), "abc");
}

TEST(Capture, AnXmlErrorIsLocatedByLineAndColumn)
{
    EXPECT_EQ(LocateXmlError(ANSWER), "");
    EXPECT_EQ(LocateXmlError("<a>\n  <b x=1/>\n</a>"), "Error parsing element attribute at byte 11 (line 2, column 8)");
    EXPECT_EQ(LocateXmlError("<a>\n <site>\n  <b>x</b>\n  <c"), "ends at byte 27 inside <site> opened at line 2");
    EXPECT_EQ(LocateXmlError("<a/>\n\n  junk\n"), "text outside the root element at byte 8 (line 3, column 3)");
    EXPECT_EQ(LocateXmlError("<a/><b/>"), "a second root element <b> at byte 4 (line 1, column 5)");
    EXPECT_EQ(LocateXmlError("   "), "no root element");
}

} // namespace
