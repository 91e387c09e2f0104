/*
 * detect.h - telling an answer's kind from the document itself: the root element and the
 * children it holds for XML, the shape of the top-level members for JSON.
 */
#ifndef ATRIUM_TOOL_DETECT_H
#define ATRIUM_TOOL_DETECT_H

#include <string>

#include "answers.h"

namespace atrium_tool {

/* The kind strBody looks like, or null with the reason in strWhy. */
const AnswerKind *DetectKind(const std::string &strBody, std::string &strWhy);

/* The SSO host ("sso_hostname" uri) of the first site among the root's children, or "". */
std::string FirstSiteKey(const std::string &strBody);

} // namespace atrium_tool

#endif /* ATRIUM_TOOL_DETECT_H */
