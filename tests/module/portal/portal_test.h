/*
 * portal_test.h - small helpers shared by the portal answers' tests.
 */
#ifndef ATRIUM_XML_PORTAL_TEST_H
#define ATRIUM_XML_PORTAL_TEST_H

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "module_test.h"

namespace portal_test {

/* printf into a std::string. */
inline std::string Format(const char *pcFormat, ...)
{
    char acText[1024];
    va_list args;
    va_start(args, pcFormat);
    std::vsnprintf(acText, sizeof(acText), pcFormat, args);
    va_end(args);
    return acText;
}

/* The level-1 trace of the per-key step for a path that is not in the answer. */
inline std::string UrlMiss(const std::string &strPath)
{
    return Format("L1 KTL_XML_GetNodeByUrl %s failed=0x%x", strPath.c_str(), KTL_XML_ERR_NOT_FOUND);
}

/* The traces written under one function's name, as "L<level> <text>", in order. */
inline std::vector<std::string> TextsOf(const TraceCapture &traces, const std::string &strFunc)
{
    std::vector<std::string> vecTexts;
    for (const TraceLine &stLine : traces.Lines()) {
        if (stLine.strFunc == strFunc) {
            vecTexts.push_back("L" + std::to_string(stLine.uiLevel) + " " + stLine.strText);
        }
    }
    return vecTexts;
}

/* The library's parse code for a text that is not XML. */
inline uint32_t ParseCodeOf(const char *pcBody)
{
    _NODE *pstRoot = nullptr;
    uint32_t uiRet = KTL_XML_Parse(pcBody, &pstRoot);
    KTL_XML_FreeNode(pstRoot);
    return uiRet;
}

/* A record whose every byte is a sentinel, so "untouched" can be checked exactly. */
template <typename Record>
Record SentinelRecord()
{
    Record stRecord;
    std::memset(&stRecord, 0x5A, sizeof(stRecord));
    return stRecord;
}

template <typename Record>
bool SameBytes(const Record &a, const Record &b)
{
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

} // namespace portal_test

#endif /* ATRIUM_XML_PORTAL_TEST_H */
