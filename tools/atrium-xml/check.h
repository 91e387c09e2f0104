/*
 * check.h - the check command: many captured answers at once, each read, its kind
 * detected and parsed, one report line per answer and a summary.
 */
#ifndef ATRIUM_TOOL_CHECK_H
#define ATRIUM_TOOL_CHECK_H

#include <cstdint>
#include <string>
#include <vector>

#include "answers.h"
#include "print.h"

namespace atrium_tool {

struct CheckOptions {
    std::vector<std::string> vecPaths; /* files, and folders searched for *.xml and *.json */
    ParseOptions stParse;
    uint64_t uiMaxBytes;
    unsigned uiJobs; /* 0: one per core */
    Format eFormat;
};

/* Exit status: 0 when every answer parsed with result 0, 1 when one did not, 2 when a
 * path names nothing. */
int RunCheck(const CheckOptions &stOptions);

} // namespace atrium_tool

#endif /* ATRIUM_TOOL_CHECK_H */
