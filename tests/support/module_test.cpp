/*
 * module_test.cpp - the login-service test double and the module tests' fixture.
 */
#include "module_test.h"

#include <arpa/inet.h>

#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <sstream>

/* ---- TraceCapture ------------------------------------------------------------------ */

TraceCapture::TraceCapture() : m_uiSavedLevel(LoginServiceGetTraceLevel())
{
    LoginServiceSetTraceSink(&TraceCapture::Sink, this);
    LoginServiceSetTraceLevel(LOGIN_TRACE_DUMP);
}

TraceCapture::~TraceCapture()
{
    LoginServiceSetTraceSink(nullptr, nullptr);
    LoginServiceSetTraceLevel(m_uiSavedLevel);
}

void TraceCapture::Sink(void *pvCtx, uint32_t uiLevel, const char *pcFunc, const char *pcFile,
                        uint32_t uiLine, const char *pcMessage)
{
    auto *pThis = static_cast<TraceCapture *>(pvCtx);
    std::lock_guard<std::mutex> lock(pThis->m_mutex);
    pThis->m_lines.push_back(TraceLine{uiLevel, pcFunc ? pcFunc : "", pcFile ? pcFile : "",
                                       uiLine, pcMessage ? pcMessage : ""});
}

std::vector<TraceLine> TraceCapture::Lines() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_lines;
}

std::vector<std::string> TraceCapture::Texts() const
{
    std::vector<std::string> vecTexts;
    for (const TraceLine &stLine : Lines()) {
        vecTexts.push_back("L" + std::to_string(stLine.uiLevel) + " " + stLine.strText);
    }
    return vecTexts;
}

std::vector<std::string> TraceCapture::TextsAt(uint32_t uiLevel) const
{
    std::vector<std::string> vecTexts;
    for (const TraceLine &stLine : Lines()) {
        if (stLine.uiLevel == uiLevel) {
            vecTexts.push_back(stLine.strText);
        }
    }
    return vecTexts;
}

size_t TraceCapture::Count(uint32_t uiLevel, const std::string &strText) const
{
    size_t uiCount = 0;
    for (const TraceLine &stLine : Lines()) {
        uiCount += (stLine.uiLevel == uiLevel && stLine.strText == strText) ? 1 : 0;
    }
    return uiCount;
}

void TraceCapture::Clear()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_lines.clear();
}

/* ---- FakeResolver ------------------------------------------------------------------ */

FakeResolver::FakeResolver()
{
    LoginServiceSetResolver(&FakeResolver::Resolve, this);
}

FakeResolver::~FakeResolver()
{
    LoginServiceSetResolver(nullptr, nullptr);
}

void FakeResolver::Answer(const std::string &strHost, uint32_t uiType, uint32_t uiCode,
                          const std::vector<std::string> &vecAddrs)
{
    std::vector<uint32_t> vecBinary;
    for (const std::string &strAddr : vecAddrs) {
        in_addr stAddr{};
        if (inet_pton(AF_INET, strAddr.c_str(), &stAddr) != 1) {
            ADD_FAILURE() << "bad scripted address " << strAddr;
        }
        vecBinary.push_back(stAddr.s_addr);
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    m_answers[{strHost, uiType}] = {uiCode, vecBinary};
}

std::vector<FakeResolver::Call> FakeResolver::Calls() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_calls;
}

uint32_t FakeResolver::Resolve(void *pvCtx, const char *pcHost, uint32_t uiType,
                               tagLOGIN_S_SRV_IP_ENTRY *pstEntries, uint32_t *puiCount)
{
    auto *pThis = static_cast<FakeResolver *>(pvCtx);
    std::lock_guard<std::mutex> lock(pThis->m_mutex);
    pThis->m_calls.push_back(Call{pcHost ? pcHost : "", uiType, puiCount ? *puiCount : 0});
    auto it = pThis->m_answers.find({pcHost ? pcHost : "", uiType});
    if (it == pThis->m_answers.end()) {
        return 99;
    }
    if (it->second.first != 0) {
        return it->second.first;
    }
    uint32_t uiFilled = 0;
    for (uint32_t uiAddr : it->second.second) {
        if (uiFilled == *puiCount) {
            break;
        }
        pstEntries[uiFilled++].uiAddr = uiAddr;
    }
    *puiCount = uiFilled;
    return 0;
}

/* ---- RandomFeed -------------------------------------------------------------------- */

RandomFeed::RandomFeed(std::vector<uint32_t> vecValues) : m_vecValues(std::move(vecValues))
{
    QEV_CPYPT_SetRandomHook(&RandomFeed::Next, this);
}

RandomFeed::~RandomFeed()
{
    QEV_CPYPT_SetRandomHook(nullptr, nullptr);
}

uint32_t RandomFeed::Next(void *pvCtx)
{
    auto *pThis = static_cast<RandomFeed *>(pvCtx);
    if (pThis->m_vecValues.empty()) {
        return 0;
    }
    uint32_t uiValue = pThis->m_vecValues[pThis->m_uiNext % pThis->m_vecValues.size()];
    ++pThis->m_uiNext;
    return uiValue;
}

/* ---- ModuleTest -------------------------------------------------------------------- */

void ModuleTest::SetUp()
{
    KOSA_MemFailAfter(KOSA_MEM_FAIL_NEVER);
    m_uiBaseDocuments = KTL_XML_LiveDocuments();
    m_uiBaseBlocks = KOSA_MemLiveBlocks();
    m_uiKeptDocuments = 0;
    m_uiKeptBlocks = 0;
}

void ModuleTest::TearDown()
{
    KOSA_MemFailAfter(KOSA_MEM_FAIL_NEVER);
    EXPECT_EQ(KTL_XML_LiveDocuments(), m_uiBaseDocuments + m_uiKeptDocuments)
        << "XML documents left unreleased (or released that should have been kept)";
    EXPECT_EQ(KOSA_MemLiveBlocks(), m_uiBaseBlocks + m_uiKeptBlocks)
        << "module memory blocks leaked:\n" << DescribeLiveBlocks();
}

std::string ModuleTest::ReadTestFile(const std::string &strName)
{
    std::ifstream file(std::string(ATRIUM_XML_TEST_DATA_DIR) + "/" + strName, std::ios::binary);
    EXPECT_TRUE(file.good()) << "missing test data " << strName;
    std::ostringstream stream;
    stream << file.rdbuf();
    return stream.str();
}

static void DescribeOneBlock(void *pvCtx, const void *pvBlock, uint32_t uiSize, const char *pcFile,
                             uint32_t uiLine)
{
    auto *pText = static_cast<std::string *>(pvCtx);
    std::ostringstream stream;
    stream << "  " << pvBlock << " " << uiSize << " bytes from " << (pcFile ? pcFile : "?") << ":"
           << uiLine << "\n";
    *pText += stream.str();
}

std::string DescribeLiveBlocks()
{
    std::string strText;
    KOSA_MemForEachLive(&DescribeOneBlock, &strText);
    return strText;
}

/* ---- helpers for expected values ----------------------------------------------------- */

std::string Format(const char *pcFormat, ...)
{
    va_list args;
    va_start(args, pcFormat);
    va_list argsAgain;
    va_copy(argsAgain, args);
    const int iLength = std::vsnprintf(nullptr, 0, pcFormat, args);
    va_end(args);
    std::string strText(iLength > 0 ? static_cast<size_t>(iLength) : 0, '\0');
    if (iLength > 0) {
        std::vsnprintf(&strText[0], strText.size() + 1, pcFormat, argsAgain);
    }
    va_end(argsAgain);
    return strText;
}

std::string UrlMissText(const std::string &strPath)
{
    return Format("KTL_XML_GetNodeByUrl %s failed=0x%x", strPath.c_str(), KTL_XML_ERR_NOT_FOUND);
}

std::string UrlMiss(const std::string &strPath)
{
    return "L1 " + UrlMissText(strPath);
}

uint32_t LibraryParseCode(const char *pcBody)
{
    _NODE *pstRoot = nullptr;
    const uint32_t uiCode = KTL_XML_Parse(pcBody, &pstRoot);
    KTL_XML_FreeNode(pstRoot);
    return uiCode;
}
