/*
 * input.h - reading one answer or request whole into memory, from a file or from standard
 * input ("-"), with a size limit. Every refusal comes back as a short reason (missing, a
 * directory, empty, binary, too large).
 */
#ifndef ATRIUM_TOOL_INPUT_H
#define ATRIUM_TOOL_INPUT_H

#include <cstdint>
#include <string>

namespace atrium_tool {

constexpr uint64_t kDefaultMaxInput = 16u * 1024u * 1024u;

/* "standard input" for "-", else the path as given. */
std::string InputName(const std::string &strPath);

/*
 * Reads strPath ("-": standard input) into strText. Refuses an input that is missing or
 * unreadable, a directory, empty, larger than uiMaxBytes, or binary (a NUL byte: the module
 * reads NUL-terminated text and would never see what follows it); strError then says why,
 * for the caller to put after the input's name.
 */
bool ReadInput(const std::string &strPath, uint64_t uiMaxBytes, std::string &strText, std::string &strError);

/* The same, without the refusal of binary input (a capture in UTF-16 holds NUL bytes until
 * it is converted: see capture.h). */
bool ReadRawInput(const std::string &strPath, uint64_t uiMaxBytes, std::string &strText, std::string &strError);

} // namespace atrium_tool

#endif /* ATRIUM_TOOL_INPUT_H */
