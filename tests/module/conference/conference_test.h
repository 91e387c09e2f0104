/*
 * conference_test.h - small helpers shared by the conference-server and guest answer tests:
 * expected trace texts as the fixture renders them ("L<level> <text>"), sentinel records,
 * and the library's own code for a body that is not XML.
 */
#ifndef ATRIUM_XML_CONFERENCE_TEST_H
#define ATRIUM_XML_CONFERENCE_TEST_H

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "module_test.h"

namespace conference_test {

/* printf into a std::string. */
inline std::string Format(const char *pcFormat, ...) __attribute__((format(printf, 1, 2)));
inline std::string Format(const char *pcFormat, ...)
{
    char acText[1024];
    va_list args;
    va_start(args, pcFormat);
    std::vsnprintf(acText, sizeof(acText), pcFormat, args);
    va_end(args);
    return acText;
}

/* A trace as TraceCapture::Texts() renders it. */
inline std::string At(uint32_t uiLevel, const std::string &strText)
{
    return "L" + std::to_string(uiLevel) + " " + strText;
}

/* The per-key step's level-1 trace for a path that does not resolve. */
inline std::string UrlMiss(const std::string &strPath)
{
    return At(LOGIN_TRACE_MISS, Format("KTL_XML_GetNodeByUrl %s failed=0x%x", strPath.c_str(), KTL_XML_ERR_NOT_FOUND));
}

/* The XML library's own code for a text it cannot parse. */
inline uint32_t LibraryParseCode(const char *pcBody)
{
    _NODE *pstRoot = nullptr;
    const uint32_t uiCode = KTL_XML_Parse(pcBody, &pstRoot);
    KTL_XML_FreeNode(pstRoot);
    return uiCode;
}

/* A record whose every byte is a sentinel, so "untouched" can be checked exactly. */
template <typename Record>
Record Sentinel(int iByte = 0x5A)
{
    Record stRecord;
    std::memset(&stRecord, iByte, sizeof(stRecord));
    return stRecord;
}

template <typename Record>
bool SameBytes(const Record &stLeft, const Record &stRight)
{
    return std::memcmp(&stLeft, &stRight, sizeof(Record)) == 0;
}

/* Bodies that no XML parser accepts, for the parse-failure paths. */
inline const char *const *NotXmlBodies()
{
    static const char *const apcBodies[] = {"", "not xml at all", "<ConfParam><sipinfo>", "<a></b>", nullptr};
    return apcBodies;
}

} // namespace conference_test

#endif /* ATRIUM_XML_CONFERENCE_TEST_H */
