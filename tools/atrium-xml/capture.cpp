/*
 * capture.cpp - taking an answer out of what wraps it in a capture, and locating where a
 * text that is not well-formed XML goes wrong.
 *
 * The steps, in order: a whole text in UTF-16 (told by its byte-order mark) is converted to
 * UTF-8; an HTTP response loses its status line and headers (its chunked body decoded, its
 * Content-Type charset converted, or a UTF-16 byte-order mark at the body's start); a UTF-8
 * byte-order mark is dropped. Conversions go through iconv(3). What is left must be text (no
 * NUL byte). Errors are located by pugixml's own parse of the body with the XML library's
 * options, so the position is the one the module's parse stopped at.
 */
#include "capture.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include <iconv.h>

#include "input.h"
#include "ktl_xml_options.h"

namespace atrium_tool {

namespace {

bool StartsWith(const std::string &strText, const char *pcPrefix)
{
    return strText.compare(0, std::strlen(pcPrefix), pcPrefix) == 0;
}

std::string Lower(std::string strText)
{
    for (char &c : strText) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return strText;
}

std::string Trimmed(const std::string &strText)
{
    const size_t uiFirst = strText.find_first_not_of(" \t\r\n");
    if (uiFirst == std::string::npos) {
        return "";
    }
    return strText.substr(uiFirst, strText.find_last_not_of(" \t\r\n") - uiFirst + 1);
}

/* strIn from the character set pcFrom to UTF-8; false with strError when iconv cannot. */
bool ToUtf8(const std::string &strIn, const char *pcFrom, std::string &strOut, std::string &strError)
{
    iconv_t hConv = iconv_open("UTF-8", pcFrom);
    if (hConv == reinterpret_cast<iconv_t>(-1)) {
        strError = std::string("no converter from ") + pcFrom + " to UTF-8";
        return false;
    }
    std::unique_ptr<void, int (*)(iconv_t)> pClose(hConv, iconv_close);
    std::string strIn2 = strIn;
    char *pcIn = strIn2.empty() ? nullptr : &strIn2[0];
    size_t uiInLeft = strIn2.size();
    strOut.clear();
    char acChunk[4096];
    while (uiInLeft > 0) {
        char *pcOut = acChunk;
        size_t uiOutLeft = sizeof(acChunk);
        const size_t uiRet = iconv(hConv, &pcIn, &uiInLeft, &pcOut, &uiOutLeft);
        strOut.append(acChunk, sizeof(acChunk) - uiOutLeft);
        if (uiRet == static_cast<size_t>(-1) && errno != E2BIG) {
            strError = std::string("not valid ") + pcFrom + " at byte " +
                       std::to_string(strIn2.size() - uiInLeft) + " (" + std::strerror(errno) + ")";
            return false;
        }
    }
    return true;
}

/* A text that starts with a UTF-16 byte-order mark, converted; false when it has none or
 * cannot be converted (strError set for the latter). */
bool FromUtf16(std::string &strText, std::vector<std::string> &vecNotes, bool &bConverted, std::string &strError)
{
    const char *pcFrom = nullptr;
    if (StartsWith(strText, "\xFF\xFE")) {
        pcFrom = "UTF-16LE";
    } else if (StartsWith(strText, "\xFE\xFF")) {
        pcFrom = "UTF-16BE";
    } else {
        bConverted = false;
        return true;
    }
    std::string strOut;
    if (!ToUtf8(strText.substr(2), pcFrom, strOut, strError)) {
        return false;
    }
    strText = strOut;
    vecNotes.push_back(std::string("converted from ") + pcFrom);
    bConverted = true;
    return true;
}

/* A chunked body decoded; false with strError when it does not decode. */
bool Dechunk(const std::string &strChunked, std::string &strBody, size_t &uiChunks, std::string &strError)
{
    size_t uiAt = 0;
    strBody.clear();
    uiChunks = 0;
    for (;;) {
        const size_t uiLineEnd = strChunked.find('\n', uiAt);
        if (uiLineEnd == std::string::npos) {
            strError = "a chunked body that ends without its last chunk";
            return false;
        }
        const std::string strSize = Trimmed(strChunked.substr(uiAt, uiLineEnd - uiAt));
        char *pcEnd = nullptr;
        const unsigned long ulSize = std::strtoul(strSize.c_str(), &pcEnd, 16);
        if (strSize.empty() || (*pcEnd != '\0' && *pcEnd != ';')) {
            strError = "a chunked body with a chunk size that is not hexadecimal at byte " + std::to_string(uiAt);
            return false;
        }
        uiAt = uiLineEnd + 1;
        if (ulSize == 0) {
            return true; /* trailers, if any, are not part of the body */
        }
        if (ulSize > strChunked.size() - uiAt) {
            strError = "a chunked body whose chunk at byte " + std::to_string(uiAt) + " is cut short";
            return false;
        }
        strBody.append(strChunked, uiAt, ulSize);
        ++uiChunks;
        uiAt += ulSize;
        uiAt += StartsWith(strChunked.substr(uiAt, 2), "\r\n") ? 2 : (StartsWith(strChunked.substr(uiAt, 1), "\n") ? 1 : 0);
    }
}

/* The parameter charset of a Content-Type value, lower case, or "". */
std::string CharsetOf(const std::string &strContentType)
{
    const std::string strLower = Lower(strContentType);
    const size_t uiAt = strLower.find("charset=");
    if (uiAt == std::string::npos) {
        return "";
    }
    std::string strCharset = strLower.substr(uiAt + 8);
    strCharset = strCharset.substr(0, strCharset.find_first_of("; \t\r"));
    if (strCharset.size() >= 2 && strCharset.front() == '"' && strCharset.back() == '"') {
        strCharset = strCharset.substr(1, strCharset.size() - 2);
    }
    return strCharset;
}

/* An HTTP response's body, out of its status line and headers. */
bool UnwrapHttp(std::string &strText, std::vector<std::string> &vecNotes, std::string &strError)
{
    size_t uiHeadEnd = strText.find("\r\n\r\n");
    size_t uiBodyAt = uiHeadEnd + 4;
    const size_t uiBareEnd = strText.find("\n\n");
    if (uiBareEnd != std::string::npos && (uiHeadEnd == std::string::npos || uiBareEnd < uiHeadEnd)) {
        uiHeadEnd = uiBareEnd;
        uiBodyAt = uiBareEnd + 2;
    }
    if (uiHeadEnd == std::string::npos) {
        strError = "an HTTP response without the blank line that ends its headers";
        return false;
    }
    const std::string strHead = strText.substr(0, uiHeadEnd);
    const std::string strStatus = Trimmed(strHead.substr(0, strHead.find('\n')));
    /* "HTTP/1.1 200 OK" is told as "HTTP/1.1 200" */
    const size_t uiReason = strStatus.find(' ', strStatus.find(' ') + 1);
    std::string strChunked;
    std::string strCharset;
    size_t uiLineAt = strHead.find('\n');
    while (uiLineAt != std::string::npos) {
        const size_t uiNext = strHead.find('\n', uiLineAt + 1);
        const std::string strLine = Trimmed(strHead.substr(uiLineAt + 1, uiNext - uiLineAt - 1));
        const size_t uiColon = strLine.find(':');
        if (uiColon != std::string::npos) {
            const std::string strName = Lower(Trimmed(strLine.substr(0, uiColon)));
            const std::string strValue = Trimmed(strLine.substr(uiColon + 1));
            if (strName == "transfer-encoding" && Lower(strValue).find("chunked") != std::string::npos) {
                strChunked = strValue;
            } else if (strName == "content-type") {
                strCharset = CharsetOf(strValue);
            }
        }
        uiLineAt = uiNext;
    }
    std::string strBody = strText.substr(uiBodyAt);
    vecNotes.push_back(strStatus.substr(0, uiReason) + " headers removed; body starts at byte " +
                       std::to_string(uiBodyAt));
    if (!strChunked.empty()) {
        std::string strDecoded;
        size_t uiChunks = 0;
        if (!Dechunk(strBody, strDecoded, uiChunks, strError)) {
            return false;
        }
        strBody = strDecoded;
        vecNotes.push_back("chunked transfer coding decoded (" + std::to_string(uiChunks) + " chunks)");
    }
    bool bConverted = false;
    if (!FromUtf16(strBody, vecNotes, bConverted, strError)) {
        return false;
    }
    if (!bConverted && !strCharset.empty() && strCharset != "utf-8" && strCharset != "utf8" &&
        strCharset != "us-ascii") {
        std::string strOut;
        if (!ToUtf8(strBody, strCharset.c_str(), strOut, strError)) {
            return false;
        }
        strBody = strOut;
        vecNotes.push_back("converted from " + strCharset + " (the Content-Type's charset)");
    }
    strText = strBody;
    return true;
}

} // namespace

std::string SafeBytes(const std::string &strBytes, size_t uiMax)
{
    std::string strOut;
    for (size_t i = 0; i < strBytes.size() && i < uiMax; ++i) {
        const unsigned char c = static_cast<unsigned char>(strBytes[i]);
        if (c == '\\') {
            strOut += "\\\\";
        } else if (c >= 0x20 && c < 0x7F) {
            strOut += static_cast<char>(c);
        } else {
            char acByte[8];
            std::snprintf(acByte, sizeof(acByte), "\\x%02X", c);
            strOut += acByte;
        }
    }
    return strOut;
}

bool UnwrapCapture(const std::string &strBytes, Capture &stCapture, std::string &strError)
{
    stCapture.strBody = strBytes;
    stCapture.vecNotes.clear();
    bool bConverted = false;
    if (!FromUtf16(stCapture.strBody, stCapture.vecNotes, bConverted, strError)) {
        return false;
    }
    if (StartsWith(stCapture.strBody, "HTTP/") && !UnwrapHttp(stCapture.strBody, stCapture.vecNotes, strError)) {
        return false;
    }
    if (StartsWith(stCapture.strBody, "\xEF\xBB\xBF")) {
        stCapture.strBody.erase(0, 3);
        stCapture.vecNotes.push_back("UTF-8 byte-order mark removed");
    }
    if (Trimmed(stCapture.strBody).empty()) {
        strError = stCapture.vecNotes.empty() ? "empty input" : "no answer after " + stCapture.vecNotes.back();
        return false;
    }
    const size_t uiNul = stCapture.strBody.find('\0');
    if (uiNul != std::string::npos) {
        strError = "binary input (a NUL byte at offset " + std::to_string(uiNul) +
                   "), not an XML or JSON answer; it starts with \"" + SafeBytes(stCapture.strBody, 24) + "\"";
        return false;
    }
    return true;
}

bool ReadCapture(const std::string &strPath, uint64_t uiMaxBytes, Capture &stCapture, std::string &strError)
{
    std::string strBytes;
    return ReadRawInput(strPath, uiMaxBytes, strBytes, strError) && UnwrapCapture(strBytes, stCapture, strError);
}

namespace {

/* "byte 312 (line 9, column 14)" for a byte offset of strText; lines and columns from 1. */
std::string Position(const std::string &strText, size_t uiOffset)
{
    size_t uiLine = 1;
    size_t uiLineStart = 0;
    for (size_t i = 0; i < uiOffset && i < strText.size(); ++i) {
        if (strText[i] == '\n') {
            ++uiLine;
            uiLineStart = i + 1;
        }
    }
    return "byte " + std::to_string(uiOffset) + " (line " + std::to_string(uiLine) + ", column " +
           std::to_string(uiOffset - uiLineStart + 1) + ")";
}

size_t LineOf(const std::string &strText, size_t uiOffset)
{
    size_t uiLine = 1;
    for (size_t i = 0; i < uiOffset && i < strText.size(); ++i) {
        uiLine += (strText[i] == '\n') ? 1 : 0;
    }
    return uiLine;
}

/* The innermost element still open where a cut text ends: on the chain of last elements
 * from the root, the deepest one whose start tag is whole and whose end tag does not follow
 * it (an element whose start tag the cut went through is not one yet). */
pugi::xml_node InnermostOpen(const pugi::xml_document &xDoc, const std::string &strText)
{
    pugi::xml_node xOpen;
    for (pugi::xml_node xNode = xDoc.last_child(); xNode; xNode = xNode.last_child()) {
        while (xNode && xNode.type() != pugi::node_element) {
            xNode = xNode.previous_sibling();
        }
        if (!xNode) {
            break;
        }
        const size_t uiStart = static_cast<size_t>(xNode.offset_debug());
        const std::string strEnd = std::string("</") + xNode.name();
        if (strText.find('>', uiStart) != std::string::npos && strText.find(strEnd, uiStart) == std::string::npos) {
            xOpen = xNode;
        }
    }
    return xOpen;
}

} // namespace

std::string LocateXmlError(const std::string &strBody)
{
    pugi::xml_document xDoc;
    const pugi::xml_parse_result xResult =
        xDoc.load_buffer(strBody.data(), strBody.size(), KTL_XML_PUGIXML_OPTIONS, pugi::encoding_utf8);
    if (xResult.status != pugi::status_ok) {
        const pugi::xml_node xOpen = InnermostOpen(xDoc, strBody);
        if (static_cast<size_t>(xResult.offset) + 1 >= Trimmed(strBody).size() && xOpen) {
            return "ends at byte " + std::to_string(strBody.size()) + " inside <" + xOpen.name() + "> opened at line " +
                   std::to_string(LineOf(strBody, static_cast<size_t>(xOpen.offset_debug())));
        }
        return std::string(xResult.description()) + " at " + Position(strBody, static_cast<size_t>(xResult.offset));
    }
    /* what the XML library refuses beside the root */
    uint32_t uiElements = 0;
    for (pugi::xml_node xNode = xDoc.first_child(); xNode; xNode = xNode.next_sibling()) {
        const pugi::xml_node_type eType = xNode.type();
        if (eType == pugi::node_pcdata || eType == pugi::node_cdata) {
            /* where the text itself starts, after the line ends and blanks before it */
            const size_t uiBlanks = std::strspn(xNode.value(), " \t\r\n");
            return "text outside the root element at " +
                   Position(strBody, static_cast<size_t>(xNode.offset_debug()) + uiBlanks);
        }
        if (eType == pugi::node_element && ++uiElements > 1) {
            /* pugixml places an element at its name; its '<' is one byte before */
            return std::string("a second root element <") + xNode.name() + "> at " +
                   Position(strBody, static_cast<size_t>(xNode.offset_debug()) - 1);
        }
    }
    return uiElements == 0 ? "no root element" : "";
}

} // namespace atrium_tool
