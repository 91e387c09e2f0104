/*
 * input.cpp - reads an input whole, in chunks, stopping one byte past the limit so that a
 * huge or endless input (a pipe) costs no more than the limit.
 */
#include "input.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include <sys/stat.h>

namespace atrium_tool {

namespace {

std::string DescribeLimit(uint64_t uiBytes)
{
    const uint64_t uiMiB = 1024u * 1024u;
    if (uiBytes >= uiMiB && uiBytes % uiMiB == 0) {
        return std::to_string(uiBytes / uiMiB) + " MiB";
    }
    return std::to_string(uiBytes) + " bytes";
}

using FileCloser = int (*)(FILE *);

bool ReadStream(FILE *pFile, uint64_t uiMaxBytes, std::string &strText)
{
    char acChunk[65536];
    size_t uiGot;
    strText.clear();
    while ((uiGot = std::fread(acChunk, 1, sizeof(acChunk), pFile)) > 0) {
        strText.append(acChunk, uiGot);
        if (strText.size() > uiMaxBytes) {
            return true; /* the caller reports the limit */
        }
    }
    return std::ferror(pFile) == 0;
}

} // namespace

std::string InputName(const std::string &strPath)
{
    return strPath == "-" ? "standard input" : strPath;
}

bool ReadRawInput(const std::string &strPath, uint64_t uiMaxBytes, std::string &strText, std::string &strError)
{
    std::unique_ptr<FILE, FileCloser> pFile(nullptr, std::fclose);
    if (strPath == "-") {
        pFile = std::unique_ptr<FILE, FileCloser>(stdin, [](FILE *) { return 0; });
    } else {
        struct stat stInfo;
        if (stat(strPath.c_str(), &stInfo) == 0 && S_ISDIR(stInfo.st_mode)) {
            strError = "is a directory, not an answer file";
            return false;
        }
        pFile.reset(std::fopen(strPath.c_str(), "rb"));
        if (!pFile) {
            strError = std::string("cannot open: ") + std::strerror(errno);
            return false;
        }
    }
    if (!ReadStream(pFile.get(), uiMaxBytes, strText)) {
        strError = std::string("cannot read: ") + std::strerror(errno);
        return false;
    }
    if (strText.size() > uiMaxBytes) {
        strError = "larger than the input limit of " + DescribeLimit(uiMaxBytes) + " (raise it with --max-size)";
        return false;
    }
    if (strText.empty()) {
        strError = "empty input";
        return false;
    }
    return true;
}

bool ReadInput(const std::string &strPath, uint64_t uiMaxBytes, std::string &strText, std::string &strError)
{
    if (!ReadRawInput(strPath, uiMaxBytes, strText, strError)) {
        return false;
    }
    const size_t uiNul = strText.find('\0');
    if (uiNul != std::string::npos) {
        strError = "binary input (a NUL byte at offset " + std::to_string(uiNul) + "), not an XML or JSON answer";
        return false;
    }
    return true;
}

} // namespace atrium_tool
