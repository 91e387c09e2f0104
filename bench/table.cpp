/*
 * table.cpp - the reporter and the tables of table.h.
 */
#include "table.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <ostream>

namespace bench {

namespace {

/* Targets of the benchmarks. */
const double TARGET_FLOOR_RATIO = 1.5;
const double TARGET_XPATH_FACTOR = 10.0;
const double TARGET_GROWTH_SPREAD = 1.2;

double NanosecondsPerUnit(benchmark::TimeUnit eUnit)
{
    switch (eUnit) {
    case benchmark::kSecond:
        return 1e9;
    case benchmark::kMillisecond:
        return 1e6;
    case benchmark::kMicrosecond:
        return 1e3;
    case benchmark::kNanosecond:
        break;
    }
    return 1.0;
}

bool EndsWith(const std::string &strText, const std::string &strTail)
{
    return strText.size() >= strTail.size() &&
           strText.compare(strText.size() - strTail.size(), strTail.size(), strTail) == 0;
}

#if defined(__GNUC__)
__attribute__((format(printf, 2, 3)))
#endif
void Print(std::ostream &oOut, const char *pcFormat, ...)
{
    char acLine[512];
    va_list vaArgs;
    va_start(vaArgs, pcFormat);
    std::vsnprintf(acLine, sizeof(acLine), pcFormat, vaArgs);
    va_end(vaArgs);
    oOut << acLine;
}

std::string Micro(double dNs)
{
    char acText[32];
    if (dNs < 0) {
        return "-";
    }
    std::snprintf(acText, sizeof(acText), dNs < 10000.0 ? "%.2f" : "%.1f", dNs / 1000.0);
    return acText;
}

std::string Ratio(double dTop, double dBottom)
{
    char acText[32];
    if (dTop < 0 || dBottom <= 0) {
        return "-";
    }
    std::snprintf(acText, sizeof(acText), "%.2f", dTop / dBottom);
    return acText;
}

std::string KiB(uint64_t ulBytes)
{
    char acText[32];
    std::snprintf(acText, sizeof(acText), "%.1f", static_cast<double>(ulBytes) / 1024.0);
    return acText;
}

} // namespace

TableReporter::TableReporter(std::string strAllocator)
    : benchmark::ConsoleReporter(OO_None), m_strAllocator(std::move(strAllocator))
{}

void TableReporter::AddCase(const std::string &strName, size_t uiBodyBytes, const CallCounts &stCounts,
                            uint64_t ulFloorBytes)
{
    m_vecCases.push_back(CaseRow{strName, uiBodyBytes, stCounts, ulFloorBytes});
}

void TableReporter::AddSiteMachinery(const std::string &strName, const CallCounts &stCounts, uint64_t ulFloorBytes)
{
    m_vecSiteMachinery.push_back(CaseRow{strName, 0, stCounts, ulFloorBytes});
}

void TableReporter::AddGrowth(const std::string &strName, uint32_t uiSites, uint32_t uiGroups)
{
    m_vecGrowth.push_back(GrowthRow{strName, uiSites, uiGroups});
}

double TableReporter::TimeOf(const std::string &strBenchmark, const std::string &strAggregate) const
{
    const auto itBenchmark = m_mapTimes.find(strBenchmark);
    if (itBenchmark == m_mapTimes.end()) {
        return -1.0;
    }
    const auto itTime = itBenchmark->second.find(strAggregate);
    return itTime == itBenchmark->second.end() ? -1.0 : itTime->second;
}

double TableReporter::TimeOf(const std::string &strBenchmark) const
{
    const double dMedian = TimeOf(strBenchmark, "median");
    return dMedian >= 0 ? dMedian : TimeOf(strBenchmark, "");
}

void TableReporter::ReportRuns(const std::vector<Run> &vecRuns)
{
    std::vector<Run> vecShown = vecRuns;
    for (Run &stRun : vecShown) {
        if (stRun.error_occurred || (stRun.run_type == Run::RT_Aggregate && stRun.aggregate_unit != benchmark::kTime)) {
            continue;
        }
        const std::string &strName = stRun.run_name.function_name;
        const std::string strAggregate = stRun.run_type == Run::RT_Aggregate ? stRun.aggregate_name : "";
        if (strAggregate == "stddev" || strAggregate == "cv") {
            continue;
        }
        const double dNs = stRun.GetAdjustedCPUTime() * NanosecondsPerUnit(stRun.time_unit);
        m_mapTimes[strName][strAggregate] = dNs;

        /* ratios of this run against the runs of its case reported before it */
        const std::string strCase = strName.substr(0, strName.rfind('/'));
        if (EndsWith(strName, "/module")) {
            const double dFloor = TimeOf(strCase + "/floor", strAggregate);
            const double dRaw = TimeOf(strCase + "/raw", strAggregate);
            if (dFloor > 0) {
                stRun.counters["x_floor"] = benchmark::Counter(dNs / dFloor);
            }
            if (dRaw > 0) {
                stRun.counters["x_raw"] = benchmark::Counter(dNs / dRaw);
            }
        } else if (EndsWith(strName, "/libxml2_xpath")) {
            const double dModule = TimeOf(strCase + "/module", strAggregate);
            if (dModule > 0) {
                stRun.counters["x_module"] = benchmark::Counter(dNs / dModule);
            }
        }
    }
    benchmark::ConsoleReporter::ReportRuns(vecShown);
}

bool TableReporter::AnyRan(const std::vector<CaseRow> &vecRows, const char *pcSuffix) const
{
    return std::any_of(vecRows.begin(), vecRows.end(),
                       [&](const CaseRow &stRow) { return TimeOf(stRow.strName + pcSuffix) >= 0; });
}

void TableReporter::PrintAnswers(std::ostream &oOut) const
{
    if (!AnyRan(m_vecCases, "/module")) {
        return;
    }
    Print(oOut, "\nEvery answer against its floor (raw parse + caller's clear + the writes the call must make)\n");
    Print(oOut, "%-36s %7s %9s %9s %9s %8s %8s %8s %6s %6s %6s %6s %5s %5s %5s %8s %8s  %s\n", "answer", "body_B",
          "module_us", "raw_us", "floor_us", "reads_us", "walk_us", "copy_us", "x_flr", "x_raw", "x_bnd", "x_min",
          "kosa", "xml", "heap", "peak_KiB", "flr_KiB", "module<=1.5x floor");
    for (const CaseRow &stRow : m_vecCases) {
        const double dModule = TimeOf(stRow.strName + "/module");
        const double dRaw = TimeOf(stRow.strName + "/raw");
        const double dFloor = TimeOf(stRow.strName + "/floor");
        /* a part that did not run has nothing to replay (no reads, no copies) */
        const double dReads = std::max(0.0, TimeOf(stRow.strName + "/reads"));
        const double dWalk = TimeOf(stRow.strName + "/walk");
        const double dCopies = std::max(0.0, TimeOf(stRow.strName + "/copies"));
        if (dModule < 0) {
            continue;
        }
        std::string strVerdict = "-";
        if (dFloor > 0) {
            const double dRatio = dModule / dFloor;
            char acVerdict[48];
            std::snprintf(acVerdict, sizeof(acVerdict), dRatio <= TARGET_FLOOR_RATIO ? "ok" : "MISSED by %.0f%%",
                          (dRatio / TARGET_FLOOR_RATIO - 1.0) * 100.0);
            strVerdict = acVerdict;
        }
        const double dLeast = dWalk < 0 ? -1.0 : dFloor + dWalk + dReads + dCopies; /* no walk: not XML */
        Print(oOut, "%-36s %7zu %9s %9s %9s %8s %8s %8s %6s %6s %6s %6s %5llu %5llu %5llu %8s %8s  %s\n",
              stRow.strName.c_str(), stRow.uiBodyBytes, Micro(dModule).c_str(), Micro(dRaw).c_str(),
              Micro(dFloor).c_str(), Micro(dReads).c_str(), Micro(dWalk).c_str(), Micro(dCopies).c_str(),
              Ratio(dModule, dFloor).c_str(), Ratio(dModule, dRaw).c_str(), Ratio(dFloor + dReads, dFloor).c_str(),
              Ratio(dLeast, dFloor).c_str(), static_cast<unsigned long long>(stRow.stCounts.ulModuleBlocks),
              static_cast<unsigned long long>(stRow.stCounts.ulXmlAllocs),
              static_cast<unsigned long long>(stRow.stCounts.ulHeapAllocs), KiB(stRow.stCounts.ulPeakBytes).c_str(),
              KiB(stRow.ulFloorBytes).c_str(), strVerdict.c_str());
    }
    Print(oOut, "raw: pugixml load_buffer (XML), Json::Reader (JSON answers), copy + toStyledString of the same value "
                "(builders)\n");
    Print(oOut, "reads: the call's value and attribute reads through the XML library, replayed without lookups; "
                "x_bnd = (floor + reads) / floor, the least x_flr of any reader that keeps the per-key step\n");
    Print(oOut, "walk: the elements read, their ancestors and the siblings before them, visited through pugixml's "
                "API (first child, next sibling, name, value); copy: the bounded copies of the texts read into their "
                "fields; x_min = (floor + walk + reads + copy) / floor, the least x_flr of any reader built on "
                "pugixml\n");
    Print(oOut, "kosa: module blocks (KOSA_MemMallocS/D); xml: pugixml's allocations; heap: every allocation of the "
                "call; peak: live heap at its peak\n");
}

void TableReporter::PrintXPath(std::ostream &oOut) const
{
    if (!AnyRan(m_vecCases, "/libxml2_xpath")) {
        return;
    }
    Print(oOut, "\nPortal logins against libxml2 with one XPath query per key\n");
    Print(oOut, "%-36s %11s %15s %9s  %s\n", "answer", "module_us", "libxml2_xpath_us", "x_module",
          "module>=10x faster");
    for (const CaseRow &stRow : m_vecCases) {
        const double dXPath = TimeOf(stRow.strName + "/libxml2_xpath");
        const double dModule = TimeOf(stRow.strName + "/module");
        if (dXPath < 0 || dModule <= 0) {
            continue;
        }
        Print(oOut, "%-36s %11s %15s %9s  %s\n", stRow.strName.c_str(), Micro(dModule).c_str(), Micro(dXPath).c_str(),
              Ratio(dXPath, dModule).c_str(), dXPath / dModule >= TARGET_XPATH_FACTOR ? "ok" : "MISSED");
    }
}

void TableReporter::PrintSiteMachinery(std::ostream &oOut) const
{
    if (!AnyRan(m_vecSiteMachinery, "/module")) {
        return;
    }
    Print(oOut, "\nSite machinery alone: getSiteInfo + getAllSipServer + the caller's release\n");
    Print(oOut, "%-36s %9s %9s %6s %5s %5s %8s %8s\n", "sites", "module_us", "floor_us", "x_flr", "kosa", "heap",
          "peak_KiB", "flr_KiB");
    for (const CaseRow &stRow : m_vecSiteMachinery) {
        const double dModule = TimeOf(stRow.strName + "/module");
        const double dFloor = TimeOf(stRow.strName + "/floor");
        if (dModule < 0) {
            continue;
        }
        Print(oOut, "%-36s %9s %9s %6s %5llu %5llu %8s %8s\n", stRow.strName.c_str(), Micro(dModule).c_str(),
              Micro(dFloor).c_str(), Ratio(dModule, dFloor).c_str(),
              static_cast<unsigned long long>(stRow.stCounts.ulModuleBlocks),
              static_cast<unsigned long long>(stRow.stCounts.ulHeapAllocs), KiB(stRow.stCounts.ulPeakBytes).c_str(),
              KiB(stRow.ulFloorBytes).c_str());
    }
}

void TableReporter::PrintGrowth(std::ostream &oOut) const
{
    if (std::none_of(m_vecGrowth.begin(), m_vecGrowth.end(),
                     [&](const GrowthRow &stRow) { return TimeOf(stRow.strName + "/module") >= 0; })) {
        return;
    }
    Print(oOut, "\nGrowth: portal login at 1..16 sites of 8 groups (allocator: %s)\n", m_strAllocator.c_str());
    Print(oOut, "%-22s %5s %6s %10s %12s %12s %12s %6s\n", "answer", "sites", "groups", "module_us", "module_us/grp",
          "floor_us/grp", "raw_us/grp", "x_flr");
    double dMin = -1.0;
    double dMax = -1.0;
    for (const GrowthRow &stRow : m_vecGrowth) {
        const double dModule = TimeOf(stRow.strName + "/module");
        if (dModule < 0) {
            continue;
        }
        const double dPerGroup = dModule / stRow.uiGroups;
        dMin = dMin < 0 ? dPerGroup : std::min(dMin, dPerGroup);
        dMax = std::max(dMax, dPerGroup);
        const double dFloor = TimeOf(stRow.strName + "/floor");
        const double dRaw = TimeOf(stRow.strName + "/raw");
        Print(oOut, "%-22s %5u %6u %10s %12s %12s %12s %6s\n", stRow.strName.c_str(), stRow.uiSites, stRow.uiGroups,
              Micro(dModule).c_str(), Micro(dPerGroup).c_str(),
              Micro(dFloor < 0 ? -1.0 : dFloor / stRow.uiGroups).c_str(),
              Micro(dRaw < 0 ? -1.0 : dRaw / stRow.uiGroups).c_str(), Ratio(dModule, dFloor).c_str());
    }
    if (dMin > 0) {
        Print(oOut, "time per group: max/min %.2f  (target <= %.2f: %s)\n", dMax / dMin, TARGET_GROWTH_SPREAD,
              dMax / dMin <= TARGET_GROWTH_SPREAD ? "ok" : "MISSED");
    }
}

void TableReporter::Finalize()
{
    benchmark::ConsoleReporter::Finalize();
    std::ostream &oOut = GetOutputStream();
    PrintAnswers(oOut);
    PrintXPath(oOut);
    PrintSiteMachinery(oOut);
    PrintGrowth(oOut);
    oOut.flush();
}

} // namespace bench
