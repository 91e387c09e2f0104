/*
 * Concurrency: the module keeps no state between calls, so any number of threads may call it
 * at once on records of their own. Eight threads run every exported text function thousands
 * of times each, interleaved so that the same function and different functions run at the
 * same moment, and every call must give exactly the record, hand-over and traces that a
 * single-threaded call gives. Built with ThreadSanitizer by `make tsan`.
 */
#include <gtest/gtest.h>

#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <sstream>
#include <thread>

#include "hardening_support.h"

namespace {

using hardening::CallContext;
using hardening::Catalogue;
using hardening::CatalogueEntry;
using hardening::Outcome;
using hardening::ThreadTraces;

const uint32_t THREADS = 8;
/* Rounds per thread; each round calls every function on every one of its answers. 256
 * rounds on 8 threads make 2048 calls per answer. Slow checkers (valgrind) may lower it
 * through HARDENING_ROUNDS; the default is what CI and `make tsan` run. */
const uint32_t DEFAULT_ROUNDS = 256;

uint32_t Rounds()
{
    const char *pcRounds = std::getenv("HARDENING_ROUNDS");
    if (pcRounds == nullptr || std::atoi(pcRounds) <= 0) {
        return DEFAULT_ROUNDS;
    }
    return static_cast<uint32_t>(std::atoi(pcRounds));
}

/* One call to make: a function of the catalogue on one of its answers, and what a
 * single-threaded call gave. */
struct Job {
    const CatalogueEntry *pstEntry;
    size_t uiBody;
    Outcome stExpected;
    std::vector<std::string> vecExpectedTraces;
};

/* Lets every thread start at the same moment. */
class StartLine {
public:
    void Wait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_cond.wait(lock, [this] { return m_bOpen; });
    }
    void Open()
    {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_bOpen = true;
        }
        m_cond.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_cond;
    bool m_bOpen = false;
};

/* This thread's traces, with its scratch file's name (which the profile save traces) replaced
 * by a placeholder, so that they compare across threads. */
std::vector<std::string> TakeTraces(const CallContext &stCtx)
{
    std::vector<std::string> vecTraces = ThreadTraces::Take();
    for (std::string &strTrace : vecTraces) {
        size_t uiAt = strTrace.find(stCtx.strScratchFile);
        if (uiAt != std::string::npos) {
            strTrace.replace(uiAt, stCtx.strScratchFile.size(), "<scratch>");
        }
    }
    return vecTraces;
}

struct ThreadReport {
    uint64_t uiCalls = 0;
    uint64_t uiMismatches = 0;
    std::string strFirstMismatch;
};

std::vector<Job> SingleThreadedReferences()
{
    std::vector<Job> vecJobs;
    CallContext stCtx{hardening::ScratchPath("reference")};
    for (const CatalogueEntry &stEntry : Catalogue()) {
        for (size_t i = 0; i < stEntry.vecBodies.size(); ++i) {
            ThreadTraces::Take();
            Outcome stOut = stEntry.fnRun(stEntry.vecBodies[i], stCtx);
            vecJobs.push_back(Job{&stEntry, i, stOut, TakeTraces(stCtx)});
        }
    }
    return vecJobs;
}

/* Thread uiThread walks the jobs from its own offset, so that at any moment the threads are
 * in different functions, and each round shifts the walk, so that they also meet in the
 * same function. */
void RaceThroughJobs(uint32_t uiThread, uint32_t uiRounds, const std::vector<Job> &vecJobs, StartLine &start,
                     ThreadReport &report)
{
    CallContext stCtx{hardening::ScratchPath("thread" + std::to_string(uiThread))};
    start.Wait();
    for (uint32_t uiRound = 0; uiRound < uiRounds; ++uiRound) {
        for (size_t j = 0; j < vecJobs.size(); ++j) {
            const Job &stJob = vecJobs[(j + uiThread * 3 + uiRound) % vecJobs.size()];
            Outcome stOut = stJob.pstEntry->fnRun(stJob.pstEntry->vecBodies[stJob.uiBody], stCtx);
            std::vector<std::string> vecTraces = TakeTraces(stCtx);
            ++report.uiCalls;
            if (stOut == stJob.stExpected && vecTraces == stJob.vecExpectedTraces) {
                continue;
            }
            if (report.uiMismatches++ == 0) {
                std::ostringstream text;
                text << stJob.pstEntry->strName << " answer " << stJob.uiBody << " thread " << uiThread << " round "
                     << uiRound << ": result " << stOut.uiResult << " (expected " << stJob.stExpected.uiResult
                     << "), record " << (stOut.strRecord == stJob.stExpected.strRecord ? "same" : "differs")
                     << ", traces " << (vecTraces == stJob.vecExpectedTraces ? "same" : "differ");
                report.strFirstMismatch = text.str();
            }
        }
    }
}

class ConcurrencyTest : public ModuleTest {};

TEST_F(ConcurrencyTest, EveryExportedTextFunctionOnEightThreadsMatchesTheSingleThreadedRun)
{
    hardening::DeterministicResolver resolver;
    ThreadTraces traces;
    std::vector<Job> vecJobs = SingleThreadedReferences();
    ASSERT_EQ(LiveBlocksSinceStart(), 0u);
    ASSERT_EQ(LiveDocumentsSinceStart(), 0u);

    const uint32_t uiRounds = Rounds();
    StartLine start;
    std::vector<ThreadReport> vecReports(THREADS);
    std::vector<std::thread> vecThreads;
    for (uint32_t t = 0; t < THREADS; ++t) {
        vecThreads.emplace_back(RaceThroughJobs, t, uiRounds, std::cref(vecJobs), std::ref(start),
                                std::ref(vecReports[t]));
    }
    start.Open();
    for (std::thread &thread : vecThreads) {
        thread.join();
    }

    for (uint32_t t = 0; t < THREADS; ++t) {
        EXPECT_EQ(vecReports[t].uiCalls, uint64_t(uiRounds) * vecJobs.size());
        EXPECT_EQ(vecReports[t].uiMismatches, 0u) << vecReports[t].strFirstMismatch;
    }
}

TEST_F(ConcurrencyTest, ReferenceAnswersTakeTheirSuccessPathsAndReleaseEverything)
{
    /* The race is only as good as its references: every answer takes its function's success
     * path (result 0, no error trace) except the right configuration without a profile, which
     * is there for its failure path, and the unified-call builder's extra call one past the
     * last rule ("out buffer array!"); none keeps a document or a block. */
    hardening::DeterministicResolver resolver;
    ThreadTraces traces;
    std::vector<Job> vecJobs = SingleThreadedReferences();
    EXPECT_GE(vecJobs.size(), 30u);
    for (const Job &stJob : vecJobs) {
        const bool bProfileMissing = stJob.pstEntry->strName == "XmlParseAtriumRightConfig" && stJob.uiBody == 1;
        EXPECT_EQ(stJob.stExpected.uiResult, bProfileMissing ? KTL_XML_ERR_NOT_FOUND : 0u)
            << stJob.pstEntry->strName << " answer " << stJob.uiBody;
        EXPECT_FALSE(stJob.stExpected.bThrew) << stJob.pstEntry->strName;
        size_t uiErrors = 0;
        for (const std::string &strTrace : stJob.vecExpectedTraces) {
            uiErrors += strTrace.compare(0, 3, "L0 ") == 0 ? 1 : 0;
        }
        const bool bPastLastRule = stJob.pstEntry->strName == "JsonBuildSetUniCallCfgBody";
        EXPECT_EQ(uiErrors, (bProfileMissing || bPastLastRule) ? 1u : 0u)
            << stJob.pstEntry->strName << " answer " << stJob.uiBody;
    }
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
}

} // namespace
