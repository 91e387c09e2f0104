/*
 * conference_test.h - small helpers shared by the conference-server and guest answer tests:
 * expected trace texts as the fixture renders them ("L<level> <text>"), sentinel records,
 * the library's own code for a body that is not XML, and the conference-parameter wrapper.
 */
#ifndef ATRIUM_XML_CONFERENCE_TEST_H
#define ATRIUM_XML_CONFERENCE_TEST_H

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "module_test.h"

namespace conference_test {

/* A trace as TraceCapture::Texts() renders it. */
inline std::string At(uint32_t uiLevel, const std::string &strText)
{
    return "L" + std::to_string(uiLevel) + " " + strText;
}

/* Bodies that no XML parser accepts, for the parse-failure paths. */
inline const char *const *NotXmlBodies()
{
    static const char *const apcBodies[] = {"", "not xml at all", "<ConfParam><sipinfo>", "<a></b>", nullptr};
    return apcBodies;
}

/* A conference-parameter answer around the given elements. */
inline std::string ConfParam(const std::string &strInner)
{
    return "<?xml version=\"1.0\"?><ConfParam>" + strInner + "</ConfParam>";
}

} // namespace conference_test

#endif /* ATRIUM_XML_CONFERENCE_TEST_H */
