// KOSA memory ledger: live-block counting, zero fill, size 0, failure injection,
// KOSA_MemFreeSetNullD and KOSA_MemForEachLive.
#include "kosa.h"
#include "atrium_test_control.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

const char kFile[] = "tests/platform/kosa/kosa_memory_test.cpp";

class KosaMemory : public ::testing::Test {
protected:
    void SetUp() override
    {
        KOSA_MemFailAfter(KOSA_MEM_FAIL_NEVER);
        m_uiLiveAtStart = KOSA_MemLiveBlocks();
    }
    void TearDown() override
    {
        KOSA_MemFailAfter(KOSA_MEM_FAIL_NEVER);
        EXPECT_EQ(KOSA_MemLiveBlocks(), m_uiLiveAtStart) << "the test leaked KOSA blocks";
    }
    uint32_t m_uiLiveAtStart = 0;
};

TEST_F(KosaMemory, LiveBlocksCountsEveryAllocationUntilFreed)
{
    void *pvA = KOSA_MemMallocS(16, 0, __LINE__, kFile);
    void *pvB = KOSA_MemMallocD(32, __LINE__, kFile);
    ASSERT_NE(pvA, nullptr);
    ASSERT_NE(pvB, nullptr);
    EXPECT_EQ(KOSA_MemLiveBlocks(), m_uiLiveAtStart + 2);
    KOSA_MemFreeD(pvA, __LINE__, kFile);
    EXPECT_EQ(KOSA_MemLiveBlocks(), m_uiLiveAtStart + 1);
    KOSA_MemFreeD(pvB, __LINE__, kFile);
    EXPECT_EQ(KOSA_MemLiveBlocks(), m_uiLiveAtStart);
}

TEST_F(KosaMemory, MallocSZeroFillsEveryByte)
{
    // Dirty the heap first so that a zero fill is not a lucky accident.
    void *pvDirty = KOSA_MemMallocD(4096, __LINE__, kFile);
    ASSERT_NE(pvDirty, nullptr);
    std::memset(pvDirty, 0xA5, 4096);
    KOSA_MemFreeD(pvDirty, __LINE__, kFile);

    unsigned char *pucMem = static_cast<unsigned char *>(KOSA_MemMallocS(4096, 0, __LINE__, kFile));
    ASSERT_NE(pucMem, nullptr);
    for (size_t i = 0; i < 4096; ++i) {
        ASSERT_EQ(pucMem[i], 0u) << "byte " << i;
    }
    KOSA_MemFreeD(pucMem, __LINE__, kFile);
}

TEST_F(KosaMemory, BlocksAreAlignedForAnyType)
{
    for (uint32_t uiSize : {1u, 3u, 8u, 17u, 100u}) {
        void *pvS = KOSA_MemMallocS(uiSize, 0, __LINE__, kFile);
        void *pvD = KOSA_MemMallocD(uiSize, __LINE__, kFile);
        ASSERT_NE(pvS, nullptr);
        ASSERT_NE(pvD, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(pvS) % alignof(std::max_align_t), 0u);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(pvD) % alignof(std::max_align_t), 0u);
        KOSA_MemFreeD(pvS, __LINE__, kFile);
        KOSA_MemFreeD(pvD, __LINE__, kFile);
    }
}

TEST_F(KosaMemory, SizeZeroGivesValidUniqueBlocks)
{
    void *pvA = KOSA_MemMallocS(0, 0, __LINE__, kFile);
    void *pvB = KOSA_MemMallocS(0, 0, __LINE__, kFile);
    void *pvC = KOSA_MemMallocD(0, __LINE__, kFile);
    ASSERT_NE(pvA, nullptr);
    ASSERT_NE(pvB, nullptr);
    ASSERT_NE(pvC, nullptr);
    EXPECT_NE(pvA, pvB);
    EXPECT_NE(pvA, pvC);
    EXPECT_NE(pvB, pvC);
    EXPECT_EQ(KOSA_MemLiveBlocks(), m_uiLiveAtStart + 3);
    KOSA_MemFreeD(pvA, __LINE__, kFile);
    KOSA_MemFreeD(pvB, __LINE__, kFile);
    KOSA_MemFreeD(pvC, __LINE__, kFile);
}

TEST_F(KosaMemory, FreeOfNullIsANoOp)
{
    KOSA_MemFreeD(nullptr, __LINE__, kFile);
    EXPECT_EQ(KOSA_MemLiveBlocks(), m_uiLiveAtStart);
}

TEST_F(KosaMemory, FreeSetNullFreesAndNullsThePointer)
{
    void *pvMem = KOSA_MemMallocS(8, 0, __LINE__, kFile);
    ASSERT_NE(pvMem, nullptr);
    KOSA_MemFreeSetNullD(&pvMem, __LINE__, kFile);
    EXPECT_EQ(pvMem, nullptr);
    EXPECT_EQ(KOSA_MemLiveBlocks(), m_uiLiveAtStart);

    // A null pointer inside, and a null address, are both ignored.
    KOSA_MemFreeSetNullD(&pvMem, __LINE__, kFile);
    EXPECT_EQ(pvMem, nullptr);
    KOSA_MemFreeSetNullD(nullptr, __LINE__, kFile);
    EXPECT_EQ(KOSA_MemLiveBlocks(), m_uiLiveAtStart);
}

TEST_F(KosaMemory, FailAfterZeroFailsTheFirstAllocation)
{
    KOSA_MemFailAfter(0);
    EXPECT_EQ(KOSA_MemMallocS(8, 0, __LINE__, kFile), nullptr);
    EXPECT_EQ(KOSA_MemLiveBlocks(), m_uiLiveAtStart);
}

TEST_F(KosaMemory, FailAfterTwoFailsTheThirdAllocation)
{
    KOSA_MemFailAfter(2);
    void *pvA = KOSA_MemMallocS(8, 0, __LINE__, kFile);
    void *pvB = KOSA_MemMallocD(8, __LINE__, kFile);
    void *pvC = KOSA_MemMallocS(8, 0, __LINE__, kFile);
    EXPECT_NE(pvA, nullptr);
    EXPECT_NE(pvB, nullptr);
    EXPECT_EQ(pvC, nullptr);
    EXPECT_EQ(KOSA_MemLiveBlocks(), m_uiLiveAtStart + 2);
    KOSA_MemFreeD(pvA, __LINE__, kFile);
    KOSA_MemFreeD(pvB, __LINE__, kFile);
}

TEST_F(KosaMemory, FailureInjectionAppliesToMallocD)
{
    KOSA_MemFailAfter(0);
    EXPECT_EQ(KOSA_MemMallocD(8, __LINE__, kFile), nullptr);
}

TEST_F(KosaMemory, InjectionDisarmsAfterOneFailure)
{
    KOSA_MemFailAfter(0);
    EXPECT_EQ(KOSA_MemMallocS(8, 0, __LINE__, kFile), nullptr);
    std::vector<void *> blocks;
    for (int i = 0; i < 10; ++i) {
        void *pv = KOSA_MemMallocS(8, 0, __LINE__, kFile);
        EXPECT_NE(pv, nullptr) << "allocation " << i << " after the injected failure";
        blocks.push_back(pv);
    }
    for (void *pv : blocks) {
        KOSA_MemFreeD(pv, __LINE__, kFile);
    }
}

TEST_F(KosaMemory, FailNeverDisarms)
{
    KOSA_MemFailAfter(0);
    KOSA_MemFailAfter(KOSA_MEM_FAIL_NEVER);
    void *pv = KOSA_MemMallocS(8, 0, __LINE__, kFile);
    EXPECT_NE(pv, nullptr);
    KOSA_MemFreeD(pv, __LINE__, kFile);
}

TEST_F(KosaMemory, InjectionIsPerThread)
{
    KOSA_MemFailAfter(0); // armed here, on the test's thread only

    void *pvOther = nullptr;
    void *pvOtherAfterArming = reinterpret_cast<void *>(1);
    std::thread other([&] {
        pvOther = KOSA_MemMallocS(8, 0, __LINE__, kFile); // not armed: succeeds
        KOSA_MemFailAfter(0);
        pvOtherAfterArming = KOSA_MemMallocS(8, 0, __LINE__, kFile); // armed here: fails
    });
    other.join();
    EXPECT_NE(pvOther, nullptr);
    EXPECT_EQ(pvOtherAfterArming, nullptr);

    // Still armed on this thread, and the other thread's failure did not consume it.
    EXPECT_EQ(KOSA_MemMallocS(8, 0, __LINE__, kFile), nullptr);
    KOSA_MemFreeD(pvOther, __LINE__, kFile);
}

TEST_F(KosaMemory, LiveCountIsProcessWideAcrossThreads)
{
    constexpr int kThreads = 4;
    constexpr int kPerThread = 100;
    std::vector<std::vector<void *>> blocks(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&blocks, t] {
            for (int i = 0; i < kPerThread; ++i) {
                blocks[t].push_back(KOSA_MemMallocS(24, 0, __LINE__, kFile));
            }
        });
    }
    for (std::thread &th : threads) {
        th.join();
    }
    EXPECT_EQ(KOSA_MemLiveBlocks(), m_uiLiveAtStart + kThreads * kPerThread);
    threads.clear();
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&blocks, t] {
            for (void *pv : blocks[t]) {
                KOSA_MemFreeD(pv, __LINE__, kFile);
            }
        });
    }
    for (std::thread &th : threads) {
        th.join();
    }
    EXPECT_EQ(KOSA_MemLiveBlocks(), m_uiLiveAtStart);
}

struct Visit {
    const void *pvBlock;
    uint32_t uiSize;
    std::string strFile;
    uint32_t uiLine;
};

void Collect(void *pvCtx, const void *pvBlock, uint32_t uiSize, const char *pcFile, uint32_t uiLine)
{
    static_cast<std::vector<Visit> *>(pvCtx)->push_back(
        Visit{pvBlock, uiSize, pcFile != nullptr ? pcFile : "", uiLine});
}

TEST_F(KosaMemory, ForEachLiveVisitsLiveBlocksWithSizeFileAndLine)
{
    const uint32_t uiLine = __LINE__ + 1;
    void *pvMem = KOSA_MemMallocS(77, 0, uiLine, kFile);
    ASSERT_NE(pvMem, nullptr);

    std::vector<Visit> visits;
    const uint32_t uiVisited = KOSA_MemForEachLive(Collect, &visits);
    EXPECT_EQ(uiVisited, visits.size());
#ifndef NDEBUG
    EXPECT_EQ(uiVisited, KOSA_MemLiveBlocks());
    const Visit *pstFound = nullptr;
    for (const Visit &v : visits) {
        if (v.pvBlock == pvMem) {
            pstFound = &v;
        }
    }
    ASSERT_NE(pstFound, nullptr) << "the live block was not visited";
    EXPECT_EQ(pstFound->uiSize, 77u);
    EXPECT_EQ(pstFound->strFile, kFile);
    EXPECT_EQ(pstFound->uiLine, uiLine);
#endif
    KOSA_MemFreeD(pvMem, __LINE__, kFile);

    visits.clear();
    KOSA_MemForEachLive(Collect, &visits);
    for (const Visit &v : visits) {
        EXPECT_NE(v.pvBlock, pvMem) << "a freed block was visited";
    }
}

TEST_F(KosaMemory, ForEachLiveWithoutCallbackOnlyCounts)
{
    void *pvMem = KOSA_MemMallocD(5, __LINE__, kFile);
    ASSERT_NE(pvMem, nullptr);
#ifndef NDEBUG
    EXPECT_EQ(KOSA_MemForEachLive(nullptr, nullptr), KOSA_MemLiveBlocks());
#else
    (void)KOSA_MemForEachLive(nullptr, nullptr);
#endif
    KOSA_MemFreeD(pvMem, __LINE__, kFile);
}

} // namespace
