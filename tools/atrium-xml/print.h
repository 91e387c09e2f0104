/*
 * print.h - how the tool shows a parsed answer: JSON (for scripts and the tests) or
 * aligned text (for people), with the result code and its meaning, what was observed
 * (dropped values, missing required keys) and the whole record.
 */
#ifndef ATRIUM_TOOL_PRINT_H
#define ATRIUM_TOOL_PRINT_H

#include <ostream>
#include <string>

#include <json/json.h>

#include "answers.h"

namespace atrium_tool {

enum class Format { Json, Text };

/* Two-space indented JSON, UTF-8 kept, ending with a line break. */
std::string JsonText(const Json::Value &jsValue);

/* Result, verdict and observations of one answer (without the record). */
Json::Value AnswerSummaryJson(const std::string &strAnswer, const ParsedAnswer &stParsed);

void PrintParsedAnswer(std::ostream &os, const std::string &strAnswer, const ParsedAnswer &stParsed, Format eFormat);

/* Traces kept for --trace, one per line. */
void PrintTraces(std::ostream &os, const Observations &stSeen, const std::string &strPrefix);

} // namespace atrium_tool

#endif /* ATRIUM_TOOL_PRINT_H */
