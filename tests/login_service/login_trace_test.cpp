/*
 * login_trace_test.cpp - the default login service's trace callback.
 *
 * A capturing sink stands in for stderr in most tests; it records every line it receives,
 * so the tests can count deliveries (a trace above the threshold never reaches the sink)
 * and compare messages whole. The stderr sink is checked through gtest's stderr capture.
 * The threshold's start value comes from LOGIN_TRACE_LEVEL, read once per process, so
 * those tests run in a fresh child process each (threadsafe death-test style re-executes
 * the test binary) with the variable set inside the child.
 */
#include "login_service_default.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>
#include <string>
#include <vector>

namespace {

struct TraceLine {
    uint32_t uiLevel;
    std::string strFunc;
    std::string strFile;
    uint32_t uiLine;
    std::string strMessage;
};

struct TraceCapture {
    std::vector<TraceLine> vecLines;
};

void CaptureSink(void *pvCtx, uint32_t uiLevel, const char *pcFunc, const char *pcFile,
                 uint32_t uiLine, const char *pcMessage)
{
    static_cast<TraceCapture *>(pvCtx)->vecLines.push_back(
        TraceLine{uiLevel, pcFunc, pcFile, uiLine, pcMessage});
}

class LoginTrace : public testing::Test {
protected:
    void SetUp() override
    {
        m_uiSavedLevel = LoginServiceGetTraceLevel();
        LoginServiceSetTraceLevel(LOGIN_TRACE_DUMP);
        LoginServiceSetTraceSink(CaptureSink, &m_oCapture);
    }
    void TearDown() override
    {
        LoginServiceSetTraceSink(nullptr, nullptr);
        LoginServiceSetTraceLevel(m_uiSavedLevel);
    }

    TraceCapture m_oCapture;

private:
    uint32_t m_uiSavedLevel = LOGIN_TRACE_OFF;
};

TEST_F(LoginTrace, SinkReceivesFormattedMessageAndCallSite)
{
    LoginTraceCB("", LOGIN_TRACE_MISS, "XmlParseSomething", "src/parse.cpp", 42,
                 "KTL_XML_GetNodeByUrl %s failed=0x%x", "UserInfo.Token", 0x1002u);

    ASSERT_EQ(m_oCapture.vecLines.size(), 1u);
    const TraceLine &stLine = m_oCapture.vecLines[0];
    EXPECT_EQ(stLine.uiLevel, LOGIN_TRACE_MISS);
    EXPECT_EQ(stLine.strFunc, "XmlParseSomething");
    EXPECT_EQ(stLine.strFile, "src/parse.cpp");
    EXPECT_EQ(stLine.uiLine, 42u);
    EXPECT_EQ(stLine.strMessage, "KTL_XML_GetNodeByUrl UserInfo.Token failed=0x1002");
}

TEST_F(LoginTrace, ReplacingTheSinkSwitchesContextToo)
{
    TraceCapture oOther;
    LoginServiceSetTraceSink(CaptureSink, &oOther);
    LoginTraceCB("", LOGIN_TRACE_ERROR, "F", "f.c", 1, "to the other");

    EXPECT_TRUE(m_oCapture.vecLines.empty());
    ASSERT_EQ(oOther.vecLines.size(), 1u);
    EXPECT_EQ(oOther.vecLines[0].strMessage, "to the other");
}

TEST_F(LoginTrace, NullSinkRestoresStderr)
{
    LoginServiceSetTraceSink(nullptr, &m_oCapture);
    testing::internal::CaptureStderr();
    LoginTraceCB("", LOGIN_TRACE_ERROR, "XmlParseAtriumLoginResult", "f.c", 7, "dns err:%s ret:%u",
                 "example.com", 1002u);
    const std::string strErr = testing::internal::GetCapturedStderr();

    EXPECT_EQ(strErr, "L0 XmlParseAtriumLoginResult: dns err:example.com ret:1002\n");
    EXPECT_TRUE(m_oCapture.vecLines.empty());
}

TEST_F(LoginTrace, LevelsAboveThresholdAreDropped)
{
    LoginServiceSetTraceLevel(LOGIN_TRACE_MISS);
    for (uint32_t uiLevel = LOGIN_TRACE_ERROR; uiLevel <= LOGIN_TRACE_DUMP; ++uiLevel) {
        LoginTraceCB("", uiLevel, "F", "f.c", 1, "level %u", uiLevel);
    }

    ASSERT_EQ(m_oCapture.vecLines.size(), 2u);
    EXPECT_EQ(m_oCapture.vecLines[0].strMessage, "level 0");
    EXPECT_EQ(m_oCapture.vecLines[1].strMessage, "level 1");
}

TEST_F(LoginTrace, OffDropsEveryLevel)
{
    LoginServiceSetTraceLevel(LOGIN_TRACE_OFF);
    for (uint32_t uiLevel : {0u, 1u, 2u, 3u, 0xFFFFFFFEu, LOGIN_TRACE_OFF}) {
        LoginTraceCB("", uiLevel, "F", "f.c", 1, "dropped");
    }
    EXPECT_TRUE(m_oCapture.vecLines.empty());
}

TEST_F(LoginTrace, LevelSetterAndGetterAgree)
{
    LoginServiceSetTraceLevel(LOGIN_TRACE_PROGRESS);
    EXPECT_EQ(LoginServiceGetTraceLevel(), LOGIN_TRACE_PROGRESS);
    LoginServiceSetTraceLevel(LOGIN_TRACE_OFF);
    EXPECT_EQ(LoginServiceGetTraceLevel(), LOGIN_TRACE_OFF);
}

TEST_F(LoginTrace, MessagesAroundTheStackBufferSizeArriveWhole)
{
    for (size_t uiLen : {1023u, 1024u, 1025u, 5000u}) {
        const std::string strBody(uiLen - 4, 'x');
        LoginTraceCB("", LOGIN_TRACE_ERROR, "F", "f.c", 1, "[%s]%02d", strBody.c_str(), 7);
        ASSERT_FALSE(m_oCapture.vecLines.empty());
        EXPECT_EQ(m_oCapture.vecLines.back().strMessage, "[" + strBody + "]07") << uiLen;
    }
    EXPECT_EQ(m_oCapture.vecLines.size(), 4u);
}

TEST_F(LoginTrace, LongMessageReachesStderrWhole)
{
    LoginServiceSetTraceSink(nullptr, nullptr);
    const std::string strBody(3000, 'y');
    testing::internal::CaptureStderr();
    LoginTraceCB("", LOGIN_TRACE_DUMP, "F", "f.c", 1, "%s", strBody.c_str());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "L3 F: " + strBody + "\n");
}

/* ---- threshold from the environment -------------------------------------------------- */

/* Exit code of a child that reports its threshold: the level itself, 255 for "off". */
int ExitCodeOfLevel(uint32_t uiLevel)
{
    return uiLevel == LOGIN_TRACE_OFF ? 255 : static_cast<int>(uiLevel);
}

/* Runs in the child only: sets (or, for null, removes) the variable before anything reads
 * the threshold, then exits with the threshold that was read. */
void ExitWithThresholdReadFrom(const char *pcValue)
{
    if (pcValue == nullptr) {
        unsetenv("LOGIN_TRACE_LEVEL");
    } else {
        setenv("LOGIN_TRACE_LEVEL", pcValue, 1);
    }
    std::exit(ExitCodeOfLevel(LoginServiceGetTraceLevel()));
}

struct EnvironmentCase {
    const char *pcValue; /* null: variable unset */
    uint32_t uiLevel;
};

void PrintTo(const EnvironmentCase &stCase, std::ostream *pOut)
{
    if (stCase.pcValue == nullptr) {
        *pOut << "unset";
    } else {
        *pOut << '"' << stCase.pcValue << '"';
    }
}

class LoginTraceEnvironmentDeathTest : public testing::TestWithParam<EnvironmentCase> {};

TEST_P(LoginTraceEnvironmentDeathTest, ThresholdIsReadFromVariable)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const char *pcValue = GetParam().pcValue;
    EXPECT_EXIT(ExitWithThresholdReadFrom(pcValue),
                testing::ExitedWithCode(ExitCodeOfLevel(GetParam().uiLevel)), "");
}

INSTANTIATE_TEST_SUITE_P(
    Values, LoginTraceEnvironmentDeathTest,
    testing::Values(EnvironmentCase{nullptr, LOGIN_TRACE_ERROR},
                    EnvironmentCase{"0", LOGIN_TRACE_ERROR}, EnvironmentCase{"1", LOGIN_TRACE_MISS},
                    EnvironmentCase{"2", LOGIN_TRACE_PROGRESS},
                    EnvironmentCase{"3", LOGIN_TRACE_DUMP}, EnvironmentCase{"off", LOGIN_TRACE_OFF},
                    EnvironmentCase{"-1", LOGIN_TRACE_OFF}, EnvironmentCase{"", LOGIN_TRACE_ERROR},
                    EnvironmentCase{"4", LOGIN_TRACE_ERROR},
                    EnvironmentCase{"2x", LOGIN_TRACE_ERROR},
                    EnvironmentCase{"verbose", LOGIN_TRACE_ERROR}));

TEST(LoginTraceDefaultSinkDeathTest, VariableThresholdFiltersStderrLines)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            setenv("LOGIN_TRACE_LEVEL", "1", 1);
            LoginTraceCB("", LOGIN_TRACE_PROGRESS, "F", "f.c", 1, "hidden");
            LoginTraceCB("", LOGIN_TRACE_MISS, "F", "f.c", 2, "shown %d", 1);
            std::exit(0);
        },
        testing::ExitedWithCode(0), "^L1 F: shown 1\n$");
}

} // namespace
