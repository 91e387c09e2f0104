/*
 * build.h - the build command: a request record described in JSON (field names as the
 * parse command prints them) in, the request body the module builds out.
 */
#ifndef ATRIUM_TOOL_BUILD_H
#define ATRIUM_TOOL_BUILD_H

#include <cstdint>
#include <string>

namespace atrium_tool {

struct BuildOptions {
    std::string strRequest; /* unicall, linked-phone-set, linked-phone-get */
    std::string strPath;    /* the JSON description, "-" for standard input */
    uint32_t uiIndex;       /* unicall: the rule to send */
    uint64_t uiMaxBytes;
};

/* The request kinds, "unicall, linked-phone-set, linked-phone-get". */
std::string RequestKindNames();
bool IsRequestKind(const std::string &strName);

/* Prints the body on success (exit 0); one error line otherwise (1: the module refused,
 * 2: the description could not be read). */
int RunBuild(const BuildOptions &stOptions);

} // namespace atrium_tool

#endif /* ATRIUM_TOOL_BUILD_H */
