/*
 * table.h - the console reporter of the benchmarks: Google Benchmark's lines as usual, with
 * the ratios added as counters, and at the end one table per question (answers against
 * their floor and raw parse, the libxml2 + XPath alternative, the site machinery alone,
 * growth per access group) with the targets checked.
 *
 * Times are CPU time per call; with repetitions the median is used.
 */
#ifndef ATRIUM_BENCH_TABLE_H
#define ATRIUM_BENCH_TABLE_H

#include "ledger.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace bench {

class TableReporter : public benchmark::ConsoleReporter {
public:
    explicit TableReporter(std::string strAllocator);

    void AddCase(const std::string &strName, size_t uiBodyBytes, const CallCounts &stCounts, uint64_t ulFloorBytes);
    void AddSiteMachinery(const std::string &strName, const CallCounts &stCounts, uint64_t ulFloorBytes);
    void AddGrowth(const std::string &strName, uint32_t uiSites, uint32_t uiGroups);

    void ReportRuns(const std::vector<Run> &vecRuns) override;
    void Finalize() override;

private:
    struct CaseRow {
        std::string strName;
        size_t uiBodyBytes;
        CallCounts stCounts;
        uint64_t ulFloorBytes;
    };
    struct GrowthRow {
        std::string strName;
        uint32_t uiSites;
        uint32_t uiGroups;
    };

    /* CPU ns per call of a benchmark: the median when there were repetitions, else the
     * last run; negative when it did not run. */
    double TimeOf(const std::string &strBenchmark) const;
    double TimeOf(const std::string &strBenchmark, const std::string &strAggregate) const;

    bool AnyRan(const std::vector<CaseRow> &vecRows, const char *pcSuffix) const;
    void PrintAnswers(std::ostream &oOut) const;
    void PrintXPath(std::ostream &oOut) const;
    void PrintSiteMachinery(std::ostream &oOut) const;
    void PrintGrowth(std::ostream &oOut) const;

    std::string m_strAllocator;
    std::vector<CaseRow> m_vecCases;
    std::vector<CaseRow> m_vecSiteMachinery;
    std::vector<GrowthRow> m_vecGrowth;
    /* benchmark name -> aggregate name ("" for plain runs) -> CPU ns per call */
    std::map<std::string, std::map<std::string, double>> m_mapTimes;
};

} // namespace bench

#endif /* ATRIUM_BENCH_TABLE_H */
