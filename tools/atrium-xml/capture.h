/*
 * capture.h - an answer as field engineers capture it: saved with the HTTP response's status
 * line and headers on top, sent in chunks, in UTF-16, with a byte-order mark. Before the
 * module sees the body, the tool takes it out of what wraps it, and tells each step as a
 * note on the answer ("HTTP/1.1 200 headers removed; body starts at byte 187").
 */
#ifndef ATRIUM_TOOL_CAPTURE_H
#define ATRIUM_TOOL_CAPTURE_H

#include <cstdint>
#include <string>
#include <vector>

namespace atrium_tool {

struct Capture {
    std::string strBody;               /* what the module is given */
    std::vector<std::string> vecNotes; /* each unwrapping, in order */
};

/*
 * Reads strPath ("-": standard input), at most uiMaxBytes, and unwraps it: an HTTP
 * response's status line and headers (a chunked body decoded, a charset of Content-Type
 * other than UTF-8 converted), a UTF-16 text with its byte-order mark (converted to UTF-8),
 * a UTF-8 byte-order mark. False with strError when the input cannot be read or is still not
 * text afterwards (strError then shows its first bytes, printable ones as they are and the
 * others as \xNN).
 */
bool ReadCapture(const std::string &strPath, uint64_t uiMaxBytes, Capture &stCapture, std::string &strError);

/* The same unwrapping of bytes already read (for the tests and standard input). */
bool UnwrapCapture(const std::string &strBytes, Capture &stCapture, std::string &strError);

/* Bytes shown safely: printable ASCII as it is, a backslash as \\, anything else as \xNN. */
std::string SafeBytes(const std::string &strBytes, size_t uiMax);

/*
 * Where a text that is not well-formed XML goes wrong, for a reader: "error at byte 312
 * (line 9, column 14)", and for a text that ends with elements still open "ends at byte
 * 4096 inside <site> opened at line 12". Empty when the text is well-formed.
 */
std::string LocateXmlError(const std::string &strBody);

} // namespace atrium_tool

#endif /* ATRIUM_TOOL_CAPTURE_H */
