// QEV_CPYPT_RealRandom and its per-thread hook.
#include "atrium_test_control.h"
#include "qev_random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <set>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace {

// Hook that returns 0x11111111, 0x22222222, ... and counts its calls in the context.
uint32_t Sequence(void *pvCtx)
{
    uint32_t *puiCalls = static_cast<uint32_t *>(pvCtx);
    ++*puiCalls;
    return 0x11111111u * *puiCalls;
}

uint32_t Constant(void *pvCtx)
{
    return *static_cast<const uint32_t *>(pvCtx);
}

class QevRandom : public ::testing::Test {
protected:
    void TearDown() override { QEV_CPYPT_SetRandomHook(nullptr, nullptr); }
};

TEST_F(QevRandom, HookGivesSuccessiveValuesInNativeOrder)
{
    uint32_t uiCalls = 0;
    QEV_CPYPT_SetRandomHook(Sequence, &uiCalls);
    uint32_t auiOut[3] = {};
    EXPECT_EQ(QEV_CPYPT_RealRandom(auiOut, sizeof(auiOut)), 0u);
    EXPECT_EQ(uiCalls, 3u);
    EXPECT_EQ(auiOut[0], 0x11111111u);
    EXPECT_EQ(auiOut[1], 0x22222222u);
    EXPECT_EQ(auiOut[2], 0x33333333u);
}

TEST_F(QevRandom, OneValueFillsFourBytesInNativeOrder)
{
    uint32_t uiValue = 0x01020304u;
    QEV_CPYPT_SetRandomHook(Constant, &uiValue);
    unsigned char aucOut[4] = {};
    EXPECT_EQ(QEV_CPYPT_RealRandom(aucOut, sizeof(aucOut)), 0u);
    unsigned char aucExpected[4];
    std::memcpy(aucExpected, &uiValue, sizeof(aucExpected));
    EXPECT_EQ(std::memcmp(aucOut, aucExpected, 4), 0);
}

TEST_F(QevRandom, PartialLastChunkTakesTheFirstBytesOfOneMoreValue)
{
    uint32_t uiCalls = 0;
    QEV_CPYPT_SetRandomHook(Sequence, &uiCalls);
    unsigned char aucOut[8];
    std::memset(aucOut, 0xEE, sizeof(aucOut));
    EXPECT_EQ(QEV_CPYPT_RealRandom(aucOut, 6), 0u);
    EXPECT_EQ(uiCalls, 2u);
    const uint32_t auiValues[2] = {0x11111111u, 0x22222222u};
    EXPECT_EQ(std::memcmp(aucOut, auiValues, 6), 0);
    EXPECT_EQ(aucOut[6], 0xEE) << "wrote past the requested length";
    EXPECT_EQ(aucOut[7], 0xEE);
}

TEST_F(QevRandom, HookIsPerThread)
{
    uint32_t uiValue = 0xABCDEF01u;
    QEV_CPYPT_SetRandomHook(Constant, &uiValue);

    uint32_t uiOtherCalls = 0;
    uint32_t auiOther[8] = {};
    uint32_t uiOtherHooked = 0;
    std::thread other([&] {
        // No hook on this thread: real random bytes, the main thread's hook is not used.
        EXPECT_EQ(QEV_CPYPT_RealRandom(auiOther, sizeof(auiOther)), 0u);
        QEV_CPYPT_SetRandomHook(Sequence, &uiOtherCalls);
        EXPECT_EQ(QEV_CPYPT_RealRandom(&uiOtherHooked, sizeof(uiOtherHooked)), 0u);
    });
    other.join();
    int iConstant = 0;
    for (uint32_t uiWord : auiOther) {
        iConstant += (uiWord == uiValue) ? 1 : 0;
    }
    EXPECT_LT(iConstant, 8) << "the other thread used this thread's hook";
    EXPECT_EQ(uiOtherHooked, 0x11111111u);
    EXPECT_EQ(uiOtherCalls, 1u);

    // This thread's hook is unchanged by the other thread's.
    uint32_t uiMine = 0;
    EXPECT_EQ(QEV_CPYPT_RealRandom(&uiMine, sizeof(uiMine)), 0u);
    EXPECT_EQ(uiMine, uiValue);
}

TEST_F(QevRandom, RemovingTheHookRestoresRealRandomness)
{
    uint32_t uiValue = 0;
    QEV_CPYPT_SetRandomHook(Constant, &uiValue);
    QEV_CPYPT_SetRandomHook(nullptr, nullptr);
    unsigned char aucA[32] = {};
    unsigned char aucB[32] = {};
    EXPECT_EQ(QEV_CPYPT_RealRandom(aucA, sizeof(aucA)), 0u);
    EXPECT_EQ(QEV_CPYPT_RealRandom(aucB, sizeof(aucB)), 0u);
    EXPECT_NE(std::memcmp(aucA, aucB, sizeof(aucA)), 0);
    const unsigned char aucZero[32] = {};
    EXPECT_NE(std::memcmp(aucA, aucZero, sizeof(aucA)), 0);
}

TEST_F(QevRandom, NullBufferWithALengthIsOne)
{
    EXPECT_EQ(QEV_CPYPT_RealRandom(nullptr, 4), 1u);
}

TEST_F(QevRandom, ZeroLengthIsANoOp)
{
    uint32_t uiCalls = 0;
    QEV_CPYPT_SetRandomHook(Sequence, &uiCalls);
    EXPECT_EQ(QEV_CPYPT_RealRandom(nullptr, 0), 0u);
    unsigned char ucByte = 0x5A;
    EXPECT_EQ(QEV_CPYPT_RealRandom(&ucByte, 0), 0u);
    EXPECT_EQ(ucByte, 0x5A);
    EXPECT_EQ(uiCalls, 0u);
}

// Small draws come from a pool refilled in bulk: across many refills no bytes come twice.
// (Two equal 8-byte draws out of 200 happen by chance with probability about 1e-15.)
TEST_F(QevRandom, SmallDrawsNeverRepeatAcrossRefills)
{
    std::set<uint64_t> setSeen;
    for (int i = 0; i < 200; ++i) {
        uint64_t ulDraw = 0;
        ASSERT_EQ(QEV_CPYPT_RealRandom(&ulDraw, sizeof(ulDraw)), 0u);
        EXPECT_TRUE(setSeen.insert(ulDraw).second) << "draw " << i << " repeated an earlier one";
    }
}

// Draws of every size up to and past what the pool serves fill exactly what was asked:
// nothing past it, and the asked bytes are not left as they were (for 4 bytes or more, all
// of them coming out as the marker has a chance of 2^-32).
TEST_F(QevRandom, DrawsOfEverySizeFillExactlyTheirLength)
{
    for (uint32_t uiLen = 1; uiLen <= 80; ++uiLen) {
        unsigned char aucOut[96];
        std::memset(aucOut, 0xEE, sizeof(aucOut));
        ASSERT_EQ(QEV_CPYPT_RealRandom(aucOut, uiLen), 0u);
        for (uint32_t i = uiLen; i < sizeof(aucOut); ++i) {
            ASSERT_EQ(aucOut[i], 0xEE) << "a draw of " << uiLen << " bytes wrote byte " << i;
        }
        if (uiLen >= 4) {
            const bool bUntouched = std::all_of(aucOut, aucOut + uiLen, [](unsigned char uc) { return uc == 0xEE; });
            EXPECT_FALSE(bUntouched) << "a draw of " << uiLen << " bytes left them as they were";
        }
    }
}

// A forked child must not hand out the bytes its parent will: the pool it inherited is
// dropped, so the child's next draw and the parent's next draw differ.
TEST_F(QevRandom, AForkedChildDoesNotRepeatItsParentsDraws)
{
    uint64_t ulWarm = 0;
    ASSERT_EQ(QEV_CPYPT_RealRandom(&ulWarm, sizeof(ulWarm)), 0u); // the pool now holds bytes
    int aiPipe[2];
    ASSERT_EQ(pipe(aiPipe), 0);
    const pid_t iChild = fork();
    ASSERT_NE(iChild, -1);
    if (iChild == 0) {
        uint64_t ulChild = 0;
        const bool bOk = QEV_CPYPT_RealRandom(&ulChild, sizeof(ulChild)) == 0 &&
                         write(aiPipe[1], &ulChild, sizeof(ulChild)) == static_cast<ssize_t>(sizeof(ulChild));
        _exit(bOk ? 0 : 1);
    }
    close(aiPipe[1]);
    uint64_t ulParent = 0;
    ASSERT_EQ(QEV_CPYPT_RealRandom(&ulParent, sizeof(ulParent)), 0u);
    uint64_t ulChild = 0;
    const ssize_t iRead = read(aiPipe[0], &ulChild, sizeof(ulChild));
    close(aiPipe[0]);
    int iStatus = 0;
    ASSERT_EQ(waitpid(iChild, &iStatus, 0), iChild);
    ASSERT_TRUE(WIFEXITED(iStatus) && WEXITSTATUS(iStatus) == 0);
    ASSERT_EQ(iRead, static_cast<ssize_t>(sizeof(ulChild)));
    EXPECT_NE(ulChild, ulParent) << "the child drew the bytes its parent drew";
}

} // namespace
