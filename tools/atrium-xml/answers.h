/*
 * answers.h - the answer kinds the tool decodes, one row per exported answer parser, and
 * the run of one parser on one body: a zeroed record in, result code, filled record and
 * what was observed out, and whatever the parser handed over released afterwards.
 */
#ifndef ATRIUM_TOOL_ANSWERS_H
#define ATRIUM_TOOL_ANSWERS_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "observe.h"
#include "record_desc.h"

namespace atrium_tool {

/* Inputs some parsers take besides the body. */
struct ParseOptions {
    std::string strHost;                       /* own SSO host of a portal login */
    std::optional<std::string> strSiteKey;     /* guest's site; default: the first site's */
    std::optional<std::string> strProfileFile; /* right configuration; default: a temporary
                                                  file, removed afterwards */
    std::optional<uint64_t> uiSeed;            /* deterministic group selection */
};

/* What the parser receives besides body and record, settled for one answer. */
struct ParseInputs {
    const char *pcHost;
    const char *pcSiteKey;
    const char *pcProfileFile;
};

/* Inputs that cost something to settle, taken only by the parsers that read them (the
 * own host is a plain text, handed to every parser's inputs). */
constexpr uint8_t kTakesSiteKey = 0x1;
constexpr uint8_t kTakesProfileFile = 0x2;

struct CodeMeaning {
    int64_t iCode;
    const char *pcMeaning;
};

struct AnswerKind {
    const char *pcName;     /* "portal-login" */
    const char *pcFunction; /* "XmlParseAtriumLoginResult" */
    const char *pcAnswer;   /* what the answer is, for --help */
    const atrium_records::RecordDesc *pstRecord;
    int64_t (*pfnParse)(const char *pcBody, void *pvRecord, const ParseInputs &stInputs);
    std::vector<CodeMeaning> vecMeanings; /* codes particular to this parser */
    const char *pcVerdict;                /* the server's own verdict inside the record, or null */
    uint8_t uiTakes;                      /* kTakes* flags */
};

const std::vector<AnswerKind> &AnswerKinds();
const AnswerKind *FindAnswerKind(const std::string &strName);
/* "auth-token, portal-login, ..." */
std::string AnswerKindNames();

/* What a code of the XML document library (above 255) means. */
std::string LibraryCodeMeaning(int64_t iCode);

/* What a result code of this kind's parser means. */
std::string ResultMeaning(const AnswerKind &stKind, int64_t iCode);

/* The record is released (what the parser handed over included) when this goes. */
class RecordBuffer {
public:
    explicit RecordBuffer(const atrium_records::RecordDesc &stDesc);
    ~RecordBuffer();
    RecordBuffer(const RecordBuffer &) = delete;
    RecordBuffer &operator=(const RecordBuffer &) = delete;
    void *Get() const { return m_pvRecord; }

private:
    const atrium_records::RecordDesc &m_stDesc;
    void *m_pvRecord;
};

struct ParsedAnswer {
    const AnswerKind *pstKind = nullptr;
    std::unique_ptr<RecordBuffer> pRecord;
    std::optional<int64_t> iCode; /* empty when the module threw */
    std::string strException;
    Observations stSeen;
    std::optional<uint64_t> uiProfileBytes; /* bytes of the saved profile */
    std::optional<uint32_t> uiVerdict;      /* the server's own non-zero verdict in the record */
    std::vector<std::string> vecCaptureNotes; /* what was taken off the capture (capture.h) */
    std::string strErrorAt;                   /* where a text that is not XML goes wrong */

    bool Failed() const { return !iCode.has_value() || *iCode != 0; }
    std::string Meaning() const;
};

/* Runs the kind's parser on strBody on this thread. */
std::unique_ptr<ParsedAnswer> ParseAnswer(const AnswerKind &stKind, const std::string &strBody,
                                          const ParseOptions &stOptions);

} // namespace atrium_tool

#endif /* ATRIUM_TOOL_ANSWERS_H */
