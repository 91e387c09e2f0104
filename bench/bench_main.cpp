/*
 * bench_main.cpp - times every answer of the module against the parse of its bytes.
 *
 * For each case (cases.h) three benchmarks run in the same process, one after the other:
 *   <case>/raw     the underlying library alone on the same bytes: pugixml's load_buffer
 *                  for XML, Json::Reader for JSON, copy-and-render of the same Json::Value
 *                  for the request builders;
 *   <case>/floor   raw, plus the caller's clear of the record, plus a replay with
 *                  memset/memcpy of the writes the call must make (ledger.h: zero-filled
 *                  module allocations, qev_memcpy_s copies, wipes of module blocks);
 *   <case>/reads   the value and attribute reads one call makes through the XML library,
 *                  replayed on the same nodes without any lookup (required_reads.h):
 *                  floor + reads bounds from below any reader that keeps the per-key step;
 *   <case>/walk    the least walk through pugixml's API, in the same bytes parsed once,
 *                  that reaches every element the call reads (reader_walk.h);
 *   <case>/copies  the bounded copies of the texts those reads returned into their fields,
 *                  replayed from the same texts (required_reads.h); floor + walk + reads +
 *                  copies bounds from below any reader of the answer built on pugixml;
 *   <case>/module  the caller's clear, the exported function, the release of what it
 *                  handed over.
 * The portal logins also run through libxml2 with one XPath query per key
 * (<case>/libxml2_xpath). The site machinery runs alone (getSiteInfo + getAllSipServer on
 * a parsed site array), and the portal login runs at 1, 2, 4, 8 and 16 sites of 8 groups.
 *
 * Before anything is timed every case is called once and checked: expected result, no
 * module block or XML document left behind, and for the XPath alternative the very record
 * the module produces. Then one counting call and one recording call give the allocation
 * counters and the floor's writes.
 *
 * Options of our own (the rest go to Google Benchmark):
 *   --probe=<name> [--calls=N]       run the module call of the case of that name (or of
 *                                    every case whose name contains it) N times (default
 *                                    200) without timing, for callgrind; the random source
 *                                    is a fixed sequence so instruction counts repeat
 *   --module-only                    with --probe: the module call alone, without the raw
 *                                    parse and the floor's writes (for perf, which cannot
 *                                    collect one function's callees as callgrind can)
 *   --dump-answers=<dir>             write every generated answer to <dir> and exit
 *   --malloc-fixed                   fix glibc's mmap (32 MiB) and trim (64 MiB) thresholds before
 *                                    timing, instead of its dynamic adjustment
 *   --fixed-random                   draw the group selection from a fixed sequence instead of
 *                                    the platform's random source (to tell its cost apart)
 * At the end a table with the ratios is printed (table.h).
 */
#include "answers.h"
#include "cases.h"
#include "ledger.h"
#include "reader_walk.h"
#include "required_reads.h"
#include "table.h"
#include "xpath_login.h"

#include "atrium_xml.h"
#include "login_service_default.h"
#include "ktl_xml_options.h"

#include <benchmark/benchmark.h>
#include <json/json.h>
#include <malloc.h>
#include <pugixml.hpp>
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace bench {

namespace {

/* ---- a case made ready for timing -------------------------------------------------------- */

/* The floor's writes, replayed into an arena laid out like separate blocks. */
struct FloorPlan {
    std::vector<FloorWrite> vecWrites;
    std::vector<char> vecArena;
    std::vector<char> vecSource;
    uint64_t ulBytes = 0;
};

struct PreparedCase {
    AnswerCase stCase;
    std::unique_ptr<std::max_align_t[]> pRecord;
    FloorPlan stFloor;
    CallCounts stCounts;
    RequiredReads stReads;  /* the value and attribute reads of one call, on kept documents */
    WalkPlan stWalk;        /* XML answers: the least walk through pugixml to what the call reads */
    Json::Value stPrebuilt; /* builders: the value the raw benchmark copies and renders */
};

void *RecordOf(PreparedCase &stPrepared)
{
    return stPrepared.pRecord.get();
}

void ClearRecord(PreparedCase &stPrepared)
{
    if (stPrepared.stCase.bCallerClears) {
        std::memset(RecordOf(stPrepared), 0, stPrepared.stCase.uiRecordSize);
    }
}

FloorPlan PlanFloor(std::vector<FloorWrite> vecWrites)
{
    FloorPlan stPlan;
    size_t uiArena = 0;
    size_t uiSource = 0;
    for (const FloorWrite &stWrite : vecWrites) {
        uiArena += stWrite.uiSize;
        if (stWrite.eKind == FloorWrite::Kind::Copy && stWrite.uiSize > uiSource) {
            uiSource = stWrite.uiSize;
        }
    }
    stPlan.vecWrites = std::move(vecWrites);
    stPlan.vecArena.assign(uiArena + 1, 0);
    stPlan.vecSource.assign(uiSource + 1, 'x');
    stPlan.ulBytes = uiArena;
    return stPlan;
}

void ReplayFloor(FloorPlan &stPlan)
{
    char *pcAt = stPlan.vecArena.data();
    for (const FloorWrite &stWrite : stPlan.vecWrites) {
        if (stWrite.eKind == FloorWrite::Kind::Zero) {
            std::memset(pcAt, 0, stWrite.uiSize);
        } else {
            std::memcpy(pcAt, stPlan.vecSource.data(), stWrite.uiSize);
        }
        pcAt += stWrite.uiSize;
    }
    benchmark::ClobberMemory();
}

/* ---- the raw parses ---------------------------------------------------------------------- */

void RawXml(const std::string &strBody)
{
    pugi::xml_document xDoc;
    const pugi::xml_parse_result xResult =
        xDoc.load_buffer(strBody.data(), strBody.size(), KTL_XML_PUGIXML_OPTIONS, pugi::encoding_utf8);
    benchmark::DoNotOptimize(xResult.status);
    benchmark::DoNotOptimize(xDoc.first_child().internal_object());
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
bool ReadJson(const std::string &strBody, Json::Value &stRoot)
{
    Json::Reader stReader;
    return stReader.parse(strBody.data(), strBody.data() + strBody.size(), stRoot, true);
}
#pragma GCC diagnostic pop

void RawJson(const std::string &strBody)
{
    Json::Value stRoot;
    benchmark::DoNotOptimize(ReadJson(strBody, stRoot));
    benchmark::DoNotOptimize(&stRoot);
}

void RawJsonBuild(const Json::Value &stPrebuilt)
{
    const Json::Value stCopy(stPrebuilt);
    const std::string strText = stCopy.toStyledString();
    benchmark::DoNotOptimize(strText.data());
}

void RawParse(PreparedCase &stPrepared)
{
    switch (stPrepared.stCase.eRaw) {
    case RawParser::Xml:
        RawXml(stPrepared.stCase.strBody);
        break;
    case RawParser::Json:
        RawJson(stPrepared.stCase.strBody);
        break;
    case RawParser::JsonBuild:
        RawJsonBuild(stPrepared.stPrebuilt);
        break;
    }
}

/* ---- preparation and checks ------------------------------------------------------------ */

[[noreturn]] void Die(const std::string &strWhat)
{
    std::fprintf(stderr, "bench: %s\n", strWhat.c_str());
    std::exit(1);
}

/* One call, checked: its result, and nothing of the module's left behind. */
void CheckedCall(PreparedCase &stPrepared)
{
    const uint32_t uiBlocks = KOSA_MemLiveBlocks();
    const uint32_t uiDocuments = KTL_XML_LiveDocuments();
    ClearRecord(stPrepared);
    const uint32_t uiRet = stPrepared.stCase.fnCall(stPrepared.stCase.strBody, RecordOf(stPrepared));
    if (uiRet != stPrepared.stCase.uiExpectedResult) {
        Die(stPrepared.stCase.strName + ": result " + std::to_string(uiRet));
    }
    if (KOSA_MemLiveBlocks() != uiBlocks || KTL_XML_LiveDocuments() != uiDocuments) {
        Die(stPrepared.stCase.strName + ": the call leaves module blocks or documents behind");
    }
}

/* A case with its record, its request filled (builders) and its first call checked. */
std::unique_ptr<PreparedCase> MakeReady(AnswerCase stCase)
{
    auto pPrepared = std::make_unique<PreparedCase>();
    const size_t uiWords = (stCase.uiRecordSize + sizeof(std::max_align_t) - 1) / sizeof(std::max_align_t);
    pPrepared->pRecord.reset(new std::max_align_t[uiWords]());
    pPrepared->stCase = std::move(stCase);
    if (pPrepared->stCase.fnPrepare) {
        pPrepared->stCase.fnPrepare(RecordOf(*pPrepared));
    }
    if (pPrepared->stCase.eRaw == RawParser::JsonBuild && !ReadJson(pPrepared->stCase.strBody, pPrepared->stPrebuilt)) {
        Die(pPrepared->stCase.strName + ": the rendered body does not read back");
    }
    CheckedCall(*pPrepared); /* also the warm-up of lazily initialised platform state */
    return pPrepared;
}

/* One recording call: the writes the floor replays. */
void RecordFloor(PreparedCase &stPrepared)
{
    ClearRecord(stPrepared);
    StartRecording();
    (void)stPrepared.stCase.fnCall(stPrepared.stCase.strBody, RecordOf(stPrepared));
    stPrepared.stFloor = PlanFloor(StopRecording());
}

/* One call whose value and attribute reads are noted, its documents kept for the replay. */
void RecordReads(PreparedCase &stPrepared)
{
    ClearRecord(stPrepared);
    StartRecordingReads();
    (void)stPrepared.stCase.fnCall(stPrepared.stCase.strBody, RecordOf(stPrepared));
    stPrepared.stReads = StopRecordingReads();
}

/* Ready for timing: checked, counted once, floor and required reads recorded. */
std::unique_ptr<PreparedCase> Prepare(AnswerCase stCase)
{
    std::unique_ptr<PreparedCase> pPrepared = MakeReady(std::move(stCase));
    ClearRecord(*pPrepared);
    StartCounting();
    (void)pPrepared->stCase.fnCall(pPrepared->stCase.strBody, RecordOf(*pPrepared));
    pPrepared->stCounts = StopCounting();
    RecordFloor(*pPrepared);
    RecordReads(*pPrepared);
    std::string strWhy;
    if (pPrepared->stCase.eRaw == RawParser::Xml &&
        !PlanWalk(pPrepared->stCase.strBody, pPrepared->stReads, pPrepared->stWalk, strWhy)) {
        Die(pPrepared->stCase.strName + ": no walk: " + strWhy);
    }
    return pPrepared;
}

/* ---- the deterministic random source of probes and checks -------------------------------- */

uint32_t g_uiRandomState = 0;

uint32_t NextFixedRandom(void *)
{
    g_uiRandomState = g_uiRandomState * 1664525u + 1013904223u;
    return g_uiRandomState >> 8;
}

void UseFixedRandom()
{
    g_uiRandomState = 12345;
    QEV_CPYPT_SetRandomHook(NextFixedRandom, nullptr);
}

/* ---- the XPath alternative must build the module's record -------------------------------- */

using UserRecord = tagLOGIN_S_ATRIUM_USER_INFO;

bool SameSite(const tagLOGIN_S_SITE &stA, const tagLOGIN_S_SITE &stB)
{
    tagLOGIN_S_SITE stLeft = stA;
    tagLOGIN_S_SITE stRight = stB;
    stLeft.pstAccessServer = stRight.pstAccessServer = nullptr;
    if (std::memcmp(&stLeft, &stRight, sizeof(stLeft)) != 0 || stA.uiNumOfAccessServer != stB.uiNumOfAccessServer) {
        return false;
    }
    return stA.uiNumOfAccessServer == 0 || std::memcmp(stA.pstAccessServer, stB.pstAccessServer,
                                                       stA.uiNumOfAccessServer * sizeof(tagLOGIN_S_ACCESS_SERVER)) == 0;
}

bool SameUser(const UserRecord &stA, const UserRecord &stB)
{
    UserRecord stLeft = stA;
    UserRecord stRight = stB;
    stLeft.pstSiteInfo = stRight.pstSiteInfo = nullptr;
    stLeft.stSipServerList.pstServer = stRight.stSipServerList.pstServer = nullptr;
    stLeft.pstExtraParm = stRight.pstExtraParm = nullptr;
    if (std::memcmp(&stLeft, &stRight, sizeof(stLeft)) != 0) {
        return false;
    }
    if ((stA.pstSiteInfo == nullptr) != (stB.pstSiteInfo == nullptr) ||
        (stA.pstSiteInfo != nullptr && !SameSite(*stA.pstSiteInfo, *stB.pstSiteInfo))) {
        return false;
    }
    const size_t uiServers = stA.stSipServerList.uiNum * sizeof(tagLOGIN_S_SERVER_ADDR_INFO);
    const size_t uiParms = stA.uiExtraParmNum * sizeof(tagLOGIN_S_EXTRA_PARM);
    return std::memcmp(stA.stSipServerList.pstServer, stB.stSipServerList.pstServer, uiServers) == 0 &&
           (uiParms == 0 || std::memcmp(stA.pstExtraParm, stB.pstExtraParm, uiParms) == 0);
}

void CheckXPathAlternative(const std::string &strName, const std::string &strBody, const std::string &strHost)
{
    auto pModule = std::make_unique<UserRecord>();
    auto pXPath = std::make_unique<UserRecord>();
    std::memset(pModule.get(), 0, sizeof(UserRecord));
    std::memset(pXPath.get(), 0, sizeof(UserRecord));
    UseFixedRandom();
    const uint32_t uiModule = XmlParseAtriumLoginResult(strBody.c_str(), strHost.c_str(), pModule.get());
    UseFixedRandom();
    const uint32_t uiXPath = XPathParseLogin(strBody, strHost.c_str(), pXPath.get());
    QEV_CPYPT_SetRandomHook(nullptr, nullptr);
    const bool bSame = uiModule == uiXPath && SameUser(*pModule, *pXPath);
    ReleaseUserHandedOver(*pModule);
    ReleaseUserHandedOver(*pXPath);
    if (!bSame) {
        Die(strName + ": the libxml2 + XPath reading does not produce the module's record");
    }
}

/* ---- the site machinery alone --------------------------------------------------------- */

/* A parsed site array of a portal login, kept for the whole run. */
struct ParsedSites {
    std::string strName;
    tagLOGIN_S_SITE *pstSites = nullptr;
    uint32_t uiNumOfSite = 0;
    uint32_t uiOwnSite = 0;
    uint32_t uiMainSite = 0;
    FloorPlan stFloor;
    CallCounts stCounts;
};

void RunSiteMachinery(ParsedSites &stSites)
{
    tagLOGIN_S_SITE *pstSelected = nullptr;
    tagLOGIN_S_SERVER_LIST stList = {0, nullptr};
    (void)getSiteInfo(stSites.pstSites, stSites.uiNumOfSite, stSites.uiOwnSite, stSites.uiMainSite, &pstSelected);
    (void)getAllSipServer(stSites.pstSites, stSites.uiNumOfSite, &stList);
    freeSiteMem(pstSelected, 1);
    KOSA_MemFreeD(stList.pstServer, static_cast<uint32_t>(__LINE__), __FILE__);
}

std::unique_ptr<ParsedSites> ParseSites(const SiteMachineryCase &stCase)
{
    const PortalShape stShape{stCase.uiSites, stCase.uiGroupsPerSite, 0, 0};
    const std::string strBody = ServerListAnswer(stShape);
    auto pSites = std::make_unique<ParsedSites>();
    pSites->strName = stCase.strName;
    _NODE *pstRoot = nullptr;
    if (KTL_XML_Parse(strBody.c_str(), &pstRoot) != 0) {
        Die(stCase.strName + ": answer does not parse");
    }
    pSites->uiNumOfSite = GetSiteNumber(pstRoot);
    pSites->pstSites = static_cast<tagLOGIN_S_SITE *>(
        KOSA_MemMallocS(static_cast<uint32_t>(pSites->uiNumOfSite * sizeof(tagLOGIN_S_SITE)), 0,
                        static_cast<uint32_t>(__LINE__), __FILE__));
    uint32_t uiParsed = 0;
    for (_NODE *pstChild = KTL_XML_GetNodeFirstChild(pstRoot); pstChild != nullptr;
         pstChild = KTL_XML_GetNodeNextSibling(pstChild)) {
        char *pcName = nullptr;
        char *pcValue = nullptr;
        (void)KTL_XML_GetNodeValue(pstChild, nullptr, 0, &pcName, &pcValue);
        if (pcName != nullptr && std::strcmp(pcName, "site") == 0) {
            (void)XmlAtriumParseSite(pstChild, &pSites->pstSites[uiParsed++], nullptr, 0);
        }
    }
    KTL_XML_FreeNode(pstRoot);
    /* as in the portal login answers: own site the last, main site the second */
    pSites->uiOwnSite = pSites->uiNumOfSite - 1;
    pSites->uiMainSite = pSites->uiNumOfSite > 1 ? 1 : 0;

    RunSiteMachinery(*pSites);
    StartCounting();
    RunSiteMachinery(*pSites);
    pSites->stCounts = StopCounting();
    StartRecording();
    RunSiteMachinery(*pSites);
    pSites->stFloor = PlanFloor(StopRecording());
    return pSites;
}

/* ---- benchmark bodies ------------------------------------------------------------------ */

void SetCounters(benchmark::State &state, const CallCounts &stCounts, uint64_t ulFloorBytes, size_t uiBodyBytes)
{
    state.counters["body_B"] = static_cast<double>(uiBodyBytes);
    state.counters["kosa_blocks"] = static_cast<double>(stCounts.ulModuleBlocks);
    state.counters["xml_allocs"] = static_cast<double>(stCounts.ulXmlAllocs);
    state.counters["heap_allocs"] = static_cast<double>(stCounts.ulHeapAllocs);
    state.counters["peak_B"] = static_cast<double>(stCounts.ulPeakBytes);
    state.counters["floor_write_B"] = static_cast<double>(ulFloorBytes);
}

uint64_t FloorBytesOf(const PreparedCase &stPrepared)
{
    return stPrepared.stFloor.ulBytes + (stPrepared.stCase.bCallerClears ? stPrepared.stCase.uiRecordSize : 0);
}

/* Minor page faults of this process so far: the allocator handing memory back to the
 * system and taking it again shows here (each fault is a page zeroed by the kernel). */
long MinorFaults()
{
    struct rusage stUsage;
    getrusage(RUSAGE_SELF, &stUsage);
    return stUsage.ru_minflt;
}

void BenchModule(benchmark::State &state, PreparedCase *pstPrepared)
{
    const std::string &strBody = pstPrepared->stCase.strBody;
    void *pvRecord = RecordOf(*pstPrepared);
    const long lFaults = MinorFaults();
    for (auto _ : state) {
        ClearRecord(*pstPrepared);
        benchmark::DoNotOptimize(pstPrepared->stCase.fnCall(strBody, pvRecord));
    }
    const long lCallFaults = MinorFaults() - lFaults;
    SetCounters(state, pstPrepared->stCounts, FloorBytesOf(*pstPrepared), strBody.size());
    state.counters["faults"] = benchmark::Counter(static_cast<double>(lCallFaults), benchmark::Counter::kAvgIterations);
}

void BenchRaw(benchmark::State &state, PreparedCase *pstPrepared)
{
    for (auto _ : state) {
        RawParse(*pstPrepared);
    }
}

void BenchFloor(benchmark::State &state, PreparedCase *pstPrepared)
{
    for (auto _ : state) {
        RawParse(*pstPrepared);
        ClearRecord(*pstPrepared);
        ReplayFloor(pstPrepared->stFloor);
    }
}

void BenchReads(benchmark::State &state, PreparedCase *pstPrepared)
{
    for (auto _ : state) {
        ReplayReads(pstPrepared->stReads);
    }
    state.counters["reads"] = benchmark::Counter(static_cast<double>(pstPrepared->stReads.vecReads.size()));
}

void BenchWalk(benchmark::State &state, PreparedCase *pstPrepared)
{
    const std::unique_ptr<pugi::xml_document> pDoc = ParseForWalk(pstPrepared->stCase.strBody);
    for (auto _ : state) {
        benchmark::DoNotOptimize(WalkPassed(*pDoc, pstPrepared->stWalk));
    }
    state.counters["passed"] = benchmark::Counter(static_cast<double>(pstPrepared->stWalk.uiPassed));
}

void BenchCopies(benchmark::State &state, PreparedCase *pstPrepared)
{
    std::vector<char> vecArena(CopyArenaSize(pstPrepared->stReads));
    for (auto _ : state) {
        ReplayCopies(pstPrepared->stReads, vecArena.data());
    }
    state.counters["copies"] = benchmark::Counter(static_cast<double>(pstPrepared->stReads.vecCopies.size()));
}

void BenchXPath(benchmark::State &state, PreparedCase *pstPrepared, std::string strHost)
{
    auto pUser = std::make_unique<UserRecord>();
    for (auto _ : state) {
        std::memset(pUser.get(), 0, sizeof(UserRecord));
        benchmark::DoNotOptimize(XPathParseLogin(pstPrepared->stCase.strBody, strHost.c_str(), pUser.get()));
        ReleaseUserHandedOver(*pUser);
    }
}

void BenchSiteMachinery(benchmark::State &state, ParsedSites *pstSites)
{
    for (auto _ : state) {
        RunSiteMachinery(*pstSites);
    }
    SetCounters(state, pstSites->stCounts, pstSites->stFloor.ulBytes, 0);
}

void BenchSiteFloor(benchmark::State &state, ParsedSites *pstSites)
{
    for (auto _ : state) {
        ReplayFloor(pstSites->stFloor);
    }
}

/* ---- registration ---------------------------------------------------------------------- */

struct Registry {
    std::vector<std::unique_ptr<PreparedCase>> vecCases;
    std::vector<std::unique_ptr<ParsedSites>> vecSites;
};

void RegisterTimings(PreparedCase *pstPrepared)
{
    const std::string &strName = pstPrepared->stCase.strName;
    benchmark::RegisterBenchmark((strName + "/raw").c_str(), BenchRaw, pstPrepared);
    benchmark::RegisterBenchmark((strName + "/floor").c_str(), BenchFloor, pstPrepared);
    if (!pstPrepared->stReads.vecReads.empty()) {
        benchmark::RegisterBenchmark((strName + "/reads").c_str(), BenchReads, pstPrepared);
    }
    if (!pstPrepared->stWalk.vecSteps.empty()) {
        benchmark::RegisterBenchmark((strName + "/walk").c_str(), BenchWalk, pstPrepared);
    }
    if (!pstPrepared->stReads.vecCopies.empty()) {
        benchmark::RegisterBenchmark((strName + "/copies").c_str(), BenchCopies, pstPrepared);
    }
    benchmark::RegisterBenchmark((strName + "/module").c_str(), BenchModule, pstPrepared);
}

void RegisterAll(Registry &stRegistry, TableReporter &oTable)
{
    for (AnswerCase &stCase : AllCases()) {
        stRegistry.vecCases.push_back(Prepare(std::move(stCase)));
        PreparedCase *pstPrepared = stRegistry.vecCases.back().get();
        const AnswerCase &stPrepared = pstPrepared->stCase;
        oTable.AddCase(stPrepared.strName, stPrepared.strBody.size(), pstPrepared->stCounts,
                       FloorBytesOf(*pstPrepared));
        RegisterTimings(pstPrepared);
        if (!stPrepared.strXPathHost.empty()) {
            CheckXPathAlternative(stPrepared.strName, stPrepared.strBody, stPrepared.strXPathHost);
            benchmark::RegisterBenchmark((stPrepared.strName + "/libxml2_xpath").c_str(), BenchXPath, pstPrepared,
                                         stPrepared.strXPathHost);
        }
    }
    for (const SiteMachineryCase &stCase : SiteMachineryCases()) {
        stRegistry.vecSites.push_back(ParseSites(stCase));
        ParsedSites *pstSites = stRegistry.vecSites.back().get();
        oTable.AddSiteMachinery(pstSites->strName, pstSites->stCounts, pstSites->stFloor.ulBytes);
        benchmark::RegisterBenchmark((pstSites->strName + "/floor").c_str(), BenchSiteFloor, pstSites);
        benchmark::RegisterBenchmark((pstSites->strName + "/module").c_str(), BenchSiteMachinery, pstSites);
    }
    for (GrowthCase &stGrowth : GrowthCases()) {
        oTable.AddGrowth(stGrowth.stCase.strName, stGrowth.uiSites, stGrowth.uiGroups);
        stRegistry.vecCases.push_back(Prepare(std::move(stGrowth.stCase)));
        RegisterTimings(stRegistry.vecCases.back().get());
    }
}

/* ---- probes and dumps ------------------------------------------------------------------ */

/* Every answer the tables time, the growth series included. */
std::vector<AnswerCase> EveryAnswer()
{
    std::vector<AnswerCase> vecCases = AllCases();
    for (GrowthCase &stGrowth : GrowthCases()) {
        vecCases.push_back(std::move(stGrowth.stCase));
    }
    return vecCases;
}

/* Kept out of line so that callgrind can collect each alone (--toggle-collect): the module
 * call without the caller's clear of the record, the raw parse, and the floor's writes. */
__attribute__((noinline)) uint32_t ProbeModuleCall(PreparedCase &stPrepared)
{
    return stPrepared.stCase.fnCall(stPrepared.stCase.strBody, RecordOf(stPrepared));
}

__attribute__((noinline)) void ProbeRawParse(PreparedCase &stPrepared)
{
    RawParse(stPrepared);
}

__attribute__((noinline)) void ProbeFloorWrites(PreparedCase &stPrepared)
{
    ReplayFloor(stPrepared.stFloor);
}

void RunProbeCalls(PreparedCase &stPrepared, uint32_t uiCalls, bool bModuleOnly)
{
    for (uint32_t i = 0; i < uiCalls; ++i) {
        ClearRecord(stPrepared);
        benchmark::DoNotOptimize(ProbeModuleCall(stPrepared));
        if (!bModuleOnly) {
            ProbeRawParse(stPrepared);
            ProbeFloorWrites(stPrepared);
        }
    }
}

int Probe(const std::string &strPattern, uint32_t uiCalls, bool bModuleOnly)
{
    std::vector<AnswerCase> vecCases = EveryAnswer();
    /* a case named exactly so runs alone; otherwise every case whose name contains it */
    const bool bExact = std::any_of(vecCases.begin(), vecCases.end(),
                                    [&](const AnswerCase &stCase) { return stCase.strName == strPattern; });
    UseFixedRandom();
    int iRun = 0;
    for (AnswerCase &stCase : vecCases) {
        if (bExact ? stCase.strName != strPattern : stCase.strName.find(strPattern) == std::string::npos) {
            continue;
        }
        std::unique_ptr<PreparedCase> pPrepared = MakeReady(std::move(stCase));
        RecordFloor(*pPrepared);
        RunProbeCalls(*pPrepared, uiCalls, bModuleOnly);
        std::printf("probe %s: %u calls\n", pPrepared->stCase.strName.c_str(), uiCalls);
        ++iRun;
    }
    return iRun > 0 ? 0 : 1;
}

int DumpAnswers(const std::string &strDir)
{
    std::vector<AnswerCase> vecCases = EveryAnswer();
    for (const AnswerCase &stCase : vecCases) {
        std::string strFile = stCase.strName;
        for (char &c : strFile) {
            c = (c == '/') ? '-' : c;
        }
        strFile = strDir + "/" + strFile + (stCase.eRaw == RawParser::Xml ? ".xml" : ".json");
        std::ofstream oOut(strFile, std::ios::binary);
        oOut << stCase.strBody;
        if (!oOut) {
            Die("cannot write " + strFile);
        }
    }
    std::printf("%zu answers written to %s\n", vecCases.size(), strDir.c_str());
    return 0;
}

void NullSink(void *, uint32_t, const char *, const char *, uint32_t, const char *) {}

/* Takes our options out of argv; the rest is Google Benchmark's. */
struct Options {
    std::string strProbe;
    uint32_t uiCalls = 200;
    std::string strDumpDir;
    bool bMallocFixed = false;
    bool bFixedRandom = false;
    bool bModuleOnly = false;
};

Options TakeOptions(int &argc, char **argv)
{
    Options stOptions;
    int iOut = 1;
    for (int i = 1; i < argc; ++i) {
        const std::string strArg = argv[i];
        if (strArg.rfind("--probe=", 0) == 0) {
            stOptions.strProbe = strArg.substr(8);
        } else if (strArg.rfind("--calls=", 0) == 0) {
            stOptions.uiCalls = static_cast<uint32_t>(std::strtoul(strArg.c_str() + 8, nullptr, 10));
        } else if (strArg.rfind("--dump-answers=", 0) == 0) {
            stOptions.strDumpDir = strArg.substr(15);
        } else if (strArg == "--malloc-fixed") {
            stOptions.bMallocFixed = true;
        } else if (strArg == "--fixed-random") {
            stOptions.bFixedRandom = true;
        } else if (strArg == "--module-only") {
            stOptions.bModuleOnly = true;
        } else {
            argv[iOut++] = argv[i];
        }
    }
    argc = iOut;
    return stOptions;
}

} // namespace

} // namespace bench

int main(int argc, char **argv)
{
    using namespace bench;
    const Options stOptions = TakeOptions(argc, argv);
    if (stOptions.bMallocFixed) {
        (void)mallopt(M_MMAP_THRESHOLD, 32 << 20); /* glibc's largest */
        (void)mallopt(M_TRIM_THRESHOLD, 64 << 20);
    }
    /* A phone traces errors only; nothing in these answers is one, and nothing is written. */
    LoginServiceSetTraceSink(NullSink, nullptr);
    LoginServiceSetTraceLevel(LOGIN_TRACE_ERROR);
    XPathInit();

    if (!stOptions.strDumpDir.empty()) {
        return DumpAnswers(stOptions.strDumpDir);
    }
    if (!stOptions.strProbe.empty()) {
        return Probe(stOptions.strProbe, stOptions.uiCalls, stOptions.bModuleOnly);
    }

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    TableReporter oTable(stOptions.bMallocFixed ? "glibc mmap threshold 32 MiB, trim 64 MiB, fixed" : "glibc defaults");
    Registry stRegistry;
    RegisterAll(stRegistry, oTable);
    if (stOptions.bFixedRandom) {
        UseFixedRandom();
    }
    benchmark::RunSpecifiedBenchmarks(&oTable);
    benchmark::Shutdown();
    XPathShutdown();
    return 0;
}
