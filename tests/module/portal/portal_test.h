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

} // namespace portal_test

#endif /* ATRIUM_XML_PORTAL_TEST_H */
