/*
 * module_test.h - the login-service test double and the fixture of every module test.
 *
 * TraceCapture replaces the default login service's trace sink while it lives and keeps
 * every trace (level, function, file, line, formatted text). FakeResolver answers
 * AtriumGetSrvIpListByHost from a script and records the calls. ModuleTest installs both,
 * records the live memory blocks and XML documents at the start of a test and checks at
 * its end that both are back (except for documents the test declares kept on purpose).
 */
#ifndef ATRIUM_XML_MODULE_TEST_H
#define ATRIUM_XML_MODULE_TEST_H

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "atrium_test_control.h"
#include "atrium_xml.h"
#include "login_service_default.h"

struct TraceLine {
    uint32_t uiLevel;
    std::string strFunc;
    std::string strFile;
    uint32_t uiLine;
    std::string strText;
};

class TraceCapture {
public:
    TraceCapture();
    ~TraceCapture();
    TraceCapture(const TraceCapture &) = delete;
    TraceCapture &operator=(const TraceCapture &) = delete;

    std::vector<TraceLine> Lines() const;
    /* Each trace as "L<level> <text>", in order. */
    std::vector<std::string> Texts() const;
    /* Texts of the traces of one level, in order. */
    std::vector<std::string> TextsAt(uint32_t uiLevel) const;
    /* Number of traces with exactly this level and text. */
    size_t Count(uint32_t uiLevel, const std::string &strText) const;
    bool Contains(uint32_t uiLevel, const std::string &strText) const
    {
        return Count(uiLevel, strText) != 0;
    }
    void Clear();

private:
    static void Sink(void *pvCtx, uint32_t uiLevel, const char *pcFunc, const char *pcFile,
                     uint32_t uiLine, const char *pcMessage);
    mutable std::mutex m_mutex;
    std::vector<TraceLine> m_lines;
    uint32_t m_uiSavedLevel;
};

class FakeResolver {
public:
    struct Call {
        std::string strHost;
        uint32_t uiType;
        uint32_t uiCountIn;
    };
    FakeResolver();
    ~FakeResolver();
    FakeResolver(const FakeResolver &) = delete;
    FakeResolver &operator=(const FakeResolver &) = delete;

    /* Scripts the answer for (host, type): a result code and, for 0, dotted IPv4 addresses
     * ("0.0.0.0" gives an entry of address 0). Unscripted lookups fail with code 99. */
    void Answer(const std::string &strHost, uint32_t uiType, uint32_t uiCode,
                const std::vector<std::string> &vecAddrs = {});
    std::vector<Call> Calls() const;

private:
    static uint32_t Resolve(void *pvCtx, const char *pcHost, uint32_t uiType,
                            tagLOGIN_S_SRV_IP_ENTRY *pstEntries, uint32_t *puiCount);
    mutable std::mutex m_mutex;
    std::map<std::pair<std::string, uint32_t>, std::pair<uint32_t, std::vector<uint32_t>>> m_answers;
    std::vector<Call> m_calls;
};

/* Feeds QEV_CPYPT_RealRandom on this thread with the given 32-bit values while it lives;
 * past the end the values repeat from the start. */
class RandomFeed {
public:
    explicit RandomFeed(std::vector<uint32_t> vecValues);
    ~RandomFeed();
    RandomFeed(const RandomFeed &) = delete;
    RandomFeed &operator=(const RandomFeed &) = delete;
    size_t Drawn() const { return m_uiNext; }

private:
    static uint32_t Next(void *pvCtx);
    std::vector<uint32_t> m_vecValues;
    size_t m_uiNext = 0;
};

class ModuleTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /* The path under test keeps uiCount documents unreleased on purpose (the login service
     * is built against that exit as it is). */
    void ExpectDocumentsKept(uint32_t uiCount = 1) { m_uiKeptDocuments += uiCount; }
    /* The path under test leaves uiCount module blocks unreleased on purpose. */
    void ExpectBlocksKept(uint32_t uiCount = 1) { m_uiKeptBlocks += uiCount; }
    /* Documents parsed and not yet released since the test began. */
    uint32_t LiveDocumentsSinceStart() const { return KTL_XML_LiveDocuments() - m_uiBaseDocuments; }
    /* Module memory blocks not yet freed since the test began. */
    uint32_t LiveBlocksSinceStart() const { return KOSA_MemLiveBlocks() - m_uiBaseBlocks; }

    /* Reads tests/data/<name> whole. */
    static std::string ReadTestFile(const std::string &strName);

    TraceCapture m_traces;
    FakeResolver m_resolver;

private:
    uint32_t m_uiBaseDocuments = 0;
    uint32_t m_uiBaseBlocks = 0;
    uint32_t m_uiKeptDocuments = 0;
    uint32_t m_uiKeptBlocks = 0;
};

/* Describes the live memory blocks of the ledger, for failure messages. */
std::string DescribeLiveBlocks();

/* ---- helpers for expected values ----------------------------------------------------- */

/* printf into a std::string. */
std::string Format(const char *pcFormat, ...) __attribute__((format(printf, 1, 2)));

/* The per-key step's trace for a path that does not resolve, without and with its level as
 * TraceCapture::Texts() renders it: "KTL_XML_GetNodeByUrl <path> failed=0x1002". */
std::string UrlMissText(const std::string &strPath);
std::string UrlMiss(const std::string &strPath);

/* The XML library's own code for a text it cannot parse (0 when it can). */
uint32_t LibraryParseCode(const char *pcBody);

/* A record whose every byte is a sentinel, so "left untouched" can be checked exactly. */
template <typename Record>
Record SentinelRecord(unsigned char ucByte = 0x5A)
{
    Record stRecord;
    std::memset(&stRecord, ucByte, sizeof(stRecord));
    return stRecord;
}

template <typename Record>
bool SameBytes(const Record &stLeft, const Record &stRight)
{
    return std::memcmp(&stLeft, &stRight, sizeof(Record)) == 0;
}

#endif /* ATRIUM_XML_MODULE_TEST_H */
