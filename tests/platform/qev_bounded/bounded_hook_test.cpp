// The per-thread diagnostic hook of the bounded routines.
#include "qev_bounded.h"
#include "atrium_test_control.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace {

struct Call {
    std::string strRoutine;
    uint32_t uiDestSize;
    uint32_t uiNeeded;
};

void Record(void *pvCtx, const char *pcRoutine, uint32_t uiDestSize, uint32_t uiNeeded)
{
    static_cast<std::vector<Call> *>(pvCtx)->push_back(Call{pcRoutine, uiDestSize, uiNeeded});
}

class QevHook : public ::testing::Test {
protected:
    void SetUp() override { qev_SetDiagHook(Record, &m_calls); }
    void TearDown() override { qev_SetDiagHook(nullptr, nullptr); }
    std::vector<Call> m_calls;
};

TEST_F(QevHook, NotCalledOnSuccess)
{
    char acBuf[32] = "";
    int iA = 0;
    EXPECT_EQ(qev_strcpy_s(acBuf, sizeof(acBuf), "abc"), QEV_OK);
    EXPECT_EQ(qev_strncpy_s(acBuf, sizeof(acBuf), "abc", 4), QEV_OK);
    EXPECT_EQ(qev_strcat_s(acBuf, sizeof(acBuf), "def"), QEV_OK);
    EXPECT_EQ(qev_memcpy_s(acBuf, sizeof(acBuf), "xyz", 3), QEV_OK);
    EXPECT_EQ(qev_memset_s(acBuf, sizeof(acBuf), 0, sizeof(acBuf)), QEV_OK);
    EXPECT_EQ(qev_sprintf_s(acBuf, sizeof(acBuf), "%d", 5), 1);
    EXPECT_EQ(qev_sscanf_s("host:1", "%[^:]:%d", acBuf, 32u, &iA), 2);
    // A matching failure is an ordinary scan result, not a failed routine.
    EXPECT_EQ(qev_sscanf_s(":abc", ":%d", &iA), 0);
    EXPECT_TRUE(m_calls.empty());
}

TEST_F(QevHook, StrcpyRangeReportsCapacityAndNeededSize)
{
    char acBuf[4];
    EXPECT_EQ(qev_strcpy_s(acBuf, sizeof(acBuf), "abcdef"), QEV_ERANGE);
    ASSERT_EQ(m_calls.size(), 1u);
    EXPECT_EQ(m_calls[0].strRoutine, "qev_strcpy_s");
    EXPECT_EQ(m_calls[0].uiDestSize, 4u);
    EXPECT_EQ(m_calls[0].uiNeeded, 7u);
}

TEST_F(QevHook, StrncpyAndStrcatReportTheirNames)
{
    char acBuf[4] = "ab";
    EXPECT_EQ(qev_strncpy_s(acBuf, sizeof(acBuf), "abcdef", 5), QEV_ERANGE);
    EXPECT_EQ(qev_strcpy_s(acBuf, sizeof(acBuf), "ab"), QEV_OK);
    EXPECT_EQ(qev_strcat_s(acBuf, sizeof(acBuf), "cd"), QEV_ERANGE);
    ASSERT_EQ(m_calls.size(), 2u);
    EXPECT_EQ(m_calls[0].strRoutine, "qev_strncpy_s");
    EXPECT_EQ(m_calls[0].uiDestSize, 4u);
    EXPECT_EQ(m_calls[0].uiNeeded, 6u);
    EXPECT_EQ(m_calls[1].strRoutine, "qev_strcat_s");
    EXPECT_EQ(m_calls[1].uiDestSize, 4u);
    EXPECT_EQ(m_calls[1].uiNeeded, 5u);
}

TEST_F(QevHook, MemoryRoutinesReportTheirNames)
{
    unsigned char aucBuf[4];
    EXPECT_EQ(qev_memcpy_s(aucBuf, sizeof(aucBuf), "abcde", 5), QEV_ERANGE);
    EXPECT_EQ(qev_memset_s(aucBuf, sizeof(aucBuf), 0, 9), QEV_ERANGE);
    ASSERT_EQ(m_calls.size(), 2u);
    EXPECT_EQ(m_calls[0].strRoutine, "qev_memcpy_s");
    EXPECT_EQ(m_calls[0].uiDestSize, 4u);
    EXPECT_EQ(m_calls[0].uiNeeded, 5u);
    EXPECT_EQ(m_calls[1].strRoutine, "qev_memset_s");
    EXPECT_EQ(m_calls[1].uiDestSize, 4u);
    EXPECT_EQ(m_calls[1].uiNeeded, 9u);
}

TEST_F(QevHook, FormattingRoutinesReportTheirNames)
{
    char acBuf[4];
    EXPECT_EQ(qev_sprintf_s(acBuf, sizeof(acBuf), "%s", "abcdef"), -1);
    const std::string strLong(300, 'h');
    char acHost[256];
    EXPECT_EQ(qev_sscanf_s(strLong.c_str(), "%[^:]", acHost, 256u), 0);
    ASSERT_EQ(m_calls.size(), 2u);
    EXPECT_EQ(m_calls[0].strRoutine, "qev_sprintf_s");
    EXPECT_EQ(m_calls[0].uiDestSize, 4u);
    EXPECT_EQ(m_calls[0].uiNeeded, 7u);
    EXPECT_EQ(m_calls[1].strRoutine, "qev_sscanf_s");
    EXPECT_EQ(m_calls[1].uiDestSize, 256u);
    EXPECT_EQ(m_calls[1].uiNeeded, 301u);
}

TEST_F(QevHook, InvalidArgumentsAreReportedWithNeededZero)
{
    EXPECT_EQ(qev_strcpy_s(nullptr, 8, "a"), QEV_EINVAL);
    ASSERT_EQ(m_calls.size(), 1u);
    EXPECT_EQ(m_calls[0].strRoutine, "qev_strcpy_s");
    EXPECT_EQ(m_calls[0].uiDestSize, 8u);
    EXPECT_EQ(m_calls[0].uiNeeded, 0u);
}

TEST_F(QevHook, NullHookTurnsReportingOff)
{
    qev_SetDiagHook(nullptr, &m_calls);
    char acBuf[2];
    EXPECT_EQ(qev_strcpy_s(acBuf, sizeof(acBuf), "abc"), QEV_ERANGE);
    EXPECT_TRUE(m_calls.empty());
}

TEST_F(QevHook, HookIsPerThread)
{
    std::vector<Call> otherCalls;
    std::thread other([&otherCalls] {
        char acBuf[2];
        // No hook on this thread yet: this failure goes nowhere.
        EXPECT_EQ(qev_strcpy_s(acBuf, sizeof(acBuf), "abc"), QEV_ERANGE);
        qev_SetDiagHook(Record, &otherCalls);
        EXPECT_EQ(qev_strcat_s(acBuf, sizeof(acBuf), "abc"), QEV_ERANGE);
        qev_SetDiagHook(nullptr, nullptr);
    });
    other.join();
    ASSERT_EQ(otherCalls.size(), 1u);
    EXPECT_EQ(otherCalls[0].strRoutine, "qev_strcat_s");
    EXPECT_TRUE(m_calls.empty()) << "another thread's failure reached this thread's hook";

    // This thread's hook is still in place.
    char acBuf[2];
    EXPECT_EQ(qev_strcpy_s(acBuf, sizeof(acBuf), "abc"), QEV_ERANGE);
    EXPECT_EQ(m_calls.size(), 1u);
}

} // namespace
