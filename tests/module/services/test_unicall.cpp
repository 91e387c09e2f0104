/*
 * Unified-call configuration: the JSON answer read into the record, and one rule of the
 * record built back into the set request's body.
 */
#include <gmock/gmock.h>

#include <cstring>
#include <memory>
#include <string>

#include "services_test.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const char *const SERVICES_FILE = "service/login/src/atrium_xml/services.cpp";

/* The record lives on the heap: it is large, and a sentinel fill shows every written byte. */
std::unique_ptr<tagLOGIN_S_UNICALL_CFG> NewRecord(int iFill = 0)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg(new tagLOGIN_S_UNICALL_CFG);
    std::memset(pstCfg.get(), iFill, sizeof(*pstCfg));
    return pstCfg;
}

bool SameBytes(const tagLOGIN_S_UNICALL_CFG &a, const tagLOGIN_S_UNICALL_CFG &b)
{
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

const uint32_t SENTINEL_WORD = 0x5A5A5A5Au;

std::string Rule(const std::string &strId, const std::string &strExtra = "")
{
    return "{\"ruleid\":\"" + strId + "\"" + strExtra + "}";
}

std::string Rules(uint32_t uiCount, const std::string &strExtra = "")
{
    std::string strRules;
    for (uint32_t i = 0; i < uiCount; ++i) {
        strRules += (i ? "," : "") + Rule("r" + std::to_string(i), strExtra);
    }
    return "[" + strRules + "]";
}

std::string Callees(uint32_t uiCount)
{
    std::string strList;
    for (uint32_t i = 0; i < uiCount; ++i) {
        strList += (i ? ",\"c" : "\"c") + std::to_string(i) + "\"";
    }
    return ",\"calleeList\":[" + strList + "]";
}

class UniCallParseTest : public ModuleTest {};

class UniCallBuildTest : public ModuleTest {
protected:
    /* A record with three rules, every field set to a value of its own. */
    static std::unique_ptr<tagLOGIN_S_UNICALL_CFG> FilledRecord()
    {
        std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord();
        pstCfg->uiOperate = 2;
        pstCfg->uiSrvType = 1;
        std::strcpy(pstCfg->acDspNum, "+861088880000");
        std::strcpy(pstCfg->acErrorCode, "E1");
        pstCfg->uiShowCallerNum = 9;
        pstCfg->uiUniCallBeanNum = 3;
        for (uint32_t i = 0; i < 3; ++i) {
            tagLOGIN_S_UNICALL_BEAN &stBean = pstCfg->astUniCallBean[i];
            std::snprintf(stBean.acRuleId, sizeof(stBean.acRuleId), "rule-%u", i);
            stBean.uiAllTime = i;
            stBean.uiCycleType = 10 + i;
            std::strcpy(stBean.acStartDate, "0101");
            std::strcpy(stBean.acEndDate, "1231");
            std::strcpy(stBean.acDayInWeek, "12345");
            std::strcpy(stBean.acStartTime, "0800");
            std::strcpy(stBean.acEndTime, "1800");
            stBean.uiCalleeIndex = 20 + i;
            for (uint32_t j = 0; j < 10; ++j) {
                std::snprintf(stBean.aacCalleeList[j], sizeof(stBean.aacCalleeList[j]), "callee-%u-%u", i, j);
            }
            stBean.uiCalleeNum = 2;
            stBean.uiRType = 30 + i;
            stBean.uiOperateType = 40 + i;
        }
        return pstCfg;
    }

    /* The body the builder must produce for rule uiIndex, as JsonCpp's styled writer gives it. */
    static Json::Value ExpectedBody(const tagLOGIN_S_UNICALL_CFG &stCfg, uint32_t uiIndex)
    {
        const tagLOGIN_S_UNICALL_BEAN &stBean = stCfg.astUniCallBean[uiIndex];
        Json::Value stTime(Json::objectValue);
        stTime["allTime"] = Json::Value(static_cast<Json::UInt>(stBean.uiAllTime));
        stTime["cycleType"] = Json::Value(static_cast<Json::UInt>(stBean.uiCycleType));
        stTime["startDate"] = stBean.acStartDate;
        stTime["endDate"] = stBean.acEndDate;
        stTime["dayInWeek"] = stBean.acDayInWeek;
        stTime["startTime"] = stBean.acStartTime;
        stTime["endTime"] = stBean.acEndTime;
        Json::Value stCallees(Json::arrayValue);
        for (uint32_t j = 0; j < stBean.uiCalleeNum; ++j) {
            stCallees.append(stBean.aacCalleeList[j]);
        }
        Json::Value stRule(Json::objectValue);
        stRule["ruleid"] = stBean.acRuleId;
        stRule["timeInfo"] = stTime;
        stRule["calleeIndex"] = Json::Value(static_cast<Json::UInt>(stBean.uiCalleeIndex));
        stRule["calleeList"] = stCallees;
        stRule["rtype"] = Json::Value(static_cast<Json::UInt>(stBean.uiRType));
        stRule["operateType"] = Json::Value(static_cast<Json::UInt>(stBean.uiOperateType));
        Json::Value stRoot(Json::objectValue);
        stRoot["operate"] = Json::Value(static_cast<Json::UInt>(stCfg.uiOperate));
        stRoot["srvtype"] = Json::Value(static_cast<Json::UInt>(stCfg.uiSrvType));
        stRoot["dspnum"] = stCfg.acDspNum;
        stRoot["unicallBeans"].append(stRule);
        return stRoot;
    }

    static void ExpectUnsigned(const Json::Value &stValue, uint32_t uiExpected, const char *pcName)
    {
        /* Read back, an integer up to the signed maximum is intValue whichever way it was
         * written; NumbersAreWrittenUnsigned tells the two apart. */
        EXPECT_TRUE(stValue.type() == Json::intValue || stValue.type() == Json::uintValue) << pcName;
        EXPECT_EQ(stValue.asUInt(), uiExpected) << pcName;
    }
    static void ExpectString(const Json::Value &stValue, const char *pcExpected, const char *pcName)
    {
        ASSERT_TRUE(stValue.isString()) << pcName;
        EXPECT_STREQ(stValue.asCString(), pcExpected) << pcName;
    }
};

/* ---- JsonParseUniCallCfgResult ----------------------------------------------------- */

TEST_F(UniCallParseTest, SampleAnswerFillsEveryField)
{
    const std::string strBody = ReadTestFile("services/unicall-answer.json");
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord();

    ASSERT_EQ(JsonParseUniCallCfgResult(strBody.c_str(), pstCfg.get()), 0);

    EXPECT_EQ(pstCfg->uiReturnCode, 0u);
    EXPECT_EQ(pstCfg->uiOperate, 1u);
    EXPECT_EQ(pstCfg->uiSrvType, 1u);
    EXPECT_STREQ(pstCfg->acDspNum, "+861088880000");
    EXPECT_STREQ(pstCfg->acErrorCode, "0");
    EXPECT_EQ(pstCfg->uiShowCallerNum, 1u);
    EXPECT_EQ(pstCfg->uiUniCallBeanNum, 2u);
    const tagLOGIN_S_UNICALL_BEAN &stFirst = pstCfg->astUniCallBean[0];
    EXPECT_STREQ(stFirst.acRuleId, "rule-0001");
    EXPECT_EQ(stFirst.uiAllTime, 0u);
    EXPECT_EQ(stFirst.uiCycleType, 2u);
    EXPECT_STREQ(stFirst.acStartDate, "0101");
    EXPECT_STREQ(stFirst.acEndDate, "1231");
    EXPECT_STREQ(stFirst.acDayInWeek, "12345");
    EXPECT_STREQ(stFirst.acStartTime, "0800");
    EXPECT_STREQ(stFirst.acEndTime, "1800");
    EXPECT_EQ(stFirst.uiCalleeIndex, 1u);
    EXPECT_STREQ(stFirst.aacCalleeList[0], "13800000001");
    EXPECT_STREQ(stFirst.aacCalleeList[1], "sip:desk@uc.example.com");
    EXPECT_STREQ(stFirst.aacCalleeList[2], "");
    EXPECT_EQ(stFirst.uiCalleeNum, 2u);
    EXPECT_EQ(stFirst.uiRType, 3u);
    EXPECT_EQ(stFirst.uiOperateType, 0u);
    const tagLOGIN_S_UNICALL_BEAN &stSecond = pstCfg->astUniCallBean[1];
    EXPECT_STREQ(stSecond.acRuleId, "rule-0002");
    EXPECT_EQ(stSecond.uiAllTime, 1u);
    EXPECT_STREQ(stSecond.acStartDate, "");
    EXPECT_STREQ(stSecond.acDayInWeek, "67");
    EXPECT_STREQ(stSecond.aacCalleeList[0], "13800000002");
    EXPECT_EQ(stSecond.uiCalleeNum, 2u) << "the rule count, not this rule's one callee";
    EXPECT_EQ(stSecond.uiRType, 1u);
    EXPECT_EQ(stSecond.uiOperateType, 2u);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(UniCallParseTest, TextBeforeTheFirstBraceIsSkipped)
{
    const std::string strBody = "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n\r\n"
                                "{\"returnCode\":0,\"data\":{\"operate\":4}}";
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord();

    ASSERT_EQ(JsonParseUniCallCfgResult(strBody.c_str(), pstCfg.get()), 0);

    EXPECT_EQ(pstCfg->uiOperate, 4u);
}

TEST_F(UniCallParseTest, NullTextYieldsTwo)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord(0x5A);
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstBefore = NewRecord(0x5A);

    EXPECT_EQ(JsonParseUniCallCfgResult(nullptr, pstCfg.get()), 2);

    EXPECT_TRUE(SameBytes(*pstCfg, *pstBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 pcJsonBody pointer empty!"));
}

TEST_F(UniCallParseTest, NullRecordYieldsTwo)
{
    EXPECT_EQ(JsonParseUniCallCfgResult("{\"returnCode\":0}", nullptr), 2);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 pcJsonBody pointer empty!"));
}

TEST_F(UniCallParseTest, TextWithoutABraceYieldsTwo)
{
    for (const char *pcBody : {"", "[1,2]", "returnCode: 0", "null"}) {
        m_traces.Clear();
        std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord(0x5A);
        std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstBefore = NewRecord(0x5A);

        EXPECT_EQ(JsonParseUniCallCfgResult(pcBody, pstCfg.get()), 2) << pcBody;

        EXPECT_TRUE(SameBytes(*pstCfg, *pstBefore)) << pcBody;
        EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 pszJsonBody empty!")) << pcBody;
    }
}

TEST_F(UniCallParseTest, TextThatIsNotJsonYieldsFortySixWithReturnCodeOne)
{
    for (const char *pcBody : {"{", "{\"returnCode\":", "{returnCode:0}", "{\"a\":1,}x", "<html>{oops}</html>"}) {
        m_traces.Clear();
        std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord(0x5A);
        std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstBefore = NewRecord(0x5A);
        pstBefore->uiReturnCode = 1;

        EXPECT_EQ(JsonParseUniCallCfgResult(pcBody, pstCfg.get()), 46) << pcBody;

        EXPECT_TRUE(SameBytes(*pstCfg, *pstBefore)) << pcBody << ": only uiReturnCode is written";
        EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 json parse failed")) << pcBody;
    }
}

TEST_F(UniCallParseTest, ServerReturnCodeIsStoredAndNothingElseIsRead)
{
    const std::string strBody = "{\"returnCode\":5,\"data\":{\"operate\":1,\"dspnum\":\"x\",\"unicallBeans\":" +
                                Rules(2) + "}}";
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord(0x5A);
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstBefore = NewRecord(0x5A);
    pstBefore->uiReturnCode = 5;

    EXPECT_EQ(JsonParseUniCallCfgResult(strBody.c_str(), pstCfg.get()), 0);

    EXPECT_TRUE(SameBytes(*pstCfg, *pstBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 return_code: 5"));
}

TEST_F(UniCallParseTest, AnswerWithoutReturnCodeIsSuccess)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord(0x5A);

    EXPECT_EQ(JsonParseUniCallCfgResult("{\"data\":{\"operate\":3,\"srvtype\":0}}", pstCfg.get()), 0);

    EXPECT_EQ(pstCfg->uiReturnCode, 0u);
    EXPECT_EQ(pstCfg->uiOperate, 3u);
    EXPECT_EQ(pstCfg->uiSrvType, 0u);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(UniCallParseTest, NullReturnCodeReadsAsZero)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord(0x5A);
    EXPECT_EQ(JsonParseUniCallCfgResult("{\"returnCode\":null,\"data\":{\"operate\":3}}", pstCfg.get()), 0);
    EXPECT_EQ(pstCfg->uiReturnCode, 0u);
    EXPECT_EQ(pstCfg->uiOperate, 3u);
}

TEST_F(UniCallParseTest, AnswerWithoutDataWritesOnlyTheReturnCode)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord(0x5A);
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstBefore = NewRecord(0x5A);
    pstBefore->uiReturnCode = 0;

    EXPECT_EQ(JsonParseUniCallCfgResult("{\"returnCode\":0}", pstCfg.get()), 0);

    EXPECT_TRUE(SameBytes(*pstCfg, *pstBefore));
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(UniCallParseTest, AnswerWithoutUnicallBeansLeavesTheRuleCountUntouched)
{
    for (const char *pcBody : {"{\"data\":{\"dspnum\":\"123\"}}", "{\"data\":{\"dspnum\":\"123\",\"unicallBeans\":null}}"}) {
        std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord(0x5A);

        EXPECT_EQ(JsonParseUniCallCfgResult(pcBody, pstCfg.get()), 0) << pcBody;

        EXPECT_STREQ(pstCfg->acDspNum, "123") << pcBody;
        EXPECT_EQ(pstCfg->uiUniCallBeanNum, SENTINEL_WORD) << pcBody;
        EXPECT_EQ(pstCfg->astUniCallBean[0].acRuleId[0], 0x5A) << pcBody;
    }
}

TEST_F(UniCallParseTest, EmptyRuleArrayStoresZeroRules)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord(0x5A);
    EXPECT_EQ(JsonParseUniCallCfgResult("{\"data\":{\"unicallBeans\":[]}}", pstCfg.get()), 0);
    EXPECT_EQ(pstCfg->uiUniCallBeanNum, 0u);
}

TEST_F(UniCallParseTest, AbsentAndNullMembersLeaveTheirFieldsAsGiven)
{
    const std::string strBody = "{\"data\":{\"operate\":null,\"dspnum\":null,\"unicallBeans\":[{\"ruleid\":null,"
                                "\"timeInfo\":{\"allTime\":null,\"startDate\":null},\"calleeList\":null}]}}";
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord(0x5A);
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstBefore = NewRecord(0x5A);
    pstBefore->uiReturnCode = 0;
    pstBefore->uiUniCallBeanNum = 1;

    EXPECT_EQ(JsonParseUniCallCfgResult(strBody.c_str(), pstCfg.get()), 0);

    EXPECT_TRUE(SameBytes(*pstCfg, *pstBefore)) << "a rule without a callee list keeps its uiCalleeNum too";
}

TEST_F(UniCallParseTest, TwentyFiveRulesStoreTheFirstTwenty)
{
    const std::string strBody = "{\"data\":{\"unicallBeans\":" + Rules(25) + "}}";
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord();

    ASSERT_EQ(JsonParseUniCallCfgResult(strBody.c_str(), pstCfg.get()), 0);

    EXPECT_EQ(pstCfg->uiUniCallBeanNum, 20u);
    for (uint32_t i = 0; i < 20; ++i) {
        EXPECT_EQ(std::string(pstCfg->astUniCallBean[i].acRuleId), "r" + std::to_string(i));
    }
    EXPECT_EQ(pstCfg->uiShowCallerNum, 0u) << "nothing is written past the array";
}

TEST_F(UniCallParseTest, FifteenCalleesStoreTenAndTheRuleCount)
{
    const std::string strBody = "{\"data\":{\"unicallBeans\":[" + Rule("a", Callees(15)) + "," + Rule("b") + "," +
                                Rule("c", Callees(1)) + "]}}";
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord();
    pstCfg->astUniCallBean[1].uiCalleeNum = 77;

    ASSERT_EQ(JsonParseUniCallCfgResult(strBody.c_str(), pstCfg.get()), 0);

    const tagLOGIN_S_UNICALL_BEAN &stFirst = pstCfg->astUniCallBean[0];
    for (uint32_t j = 0; j < 10; ++j) {
        EXPECT_EQ(std::string(stFirst.aacCalleeList[j]), "c" + std::to_string(j));
    }
    EXPECT_EQ(stFirst.uiCalleeNum, 3u) << "the number of rules, not ten";
    EXPECT_EQ(pstCfg->astUniCallBean[1].uiCalleeNum, 77u) << "no callee list: untouched";
    EXPECT_EQ(pstCfg->astUniCallBean[2].uiCalleeNum, 3u);
    EXPECT_STREQ(pstCfg->astUniCallBean[2].aacCalleeList[0], "c0");
    EXPECT_STREQ(pstCfg->astUniCallBean[2].aacCalleeList[1], "");
}

TEST_F(UniCallParseTest, CalleeNumberOfACappedAnswerIsTwenty)
{
    const std::string strBody = "{\"data\":{\"unicallBeans\":" + Rules(22, Callees(2)) + "}}";
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord();

    ASSERT_EQ(JsonParseUniCallCfgResult(strBody.c_str(), pstCfg.get()), 0);

    EXPECT_EQ(pstCfg->astUniCallBean[0].uiCalleeNum, 20u);
    EXPECT_EQ(pstCfg->astUniCallBean[19].uiCalleeNum, 20u);
}

TEST_F(UniCallParseTest, TextTooLongForItsFieldLeavesItEmptyAndParsingGoesOn)
{
    const std::string strBody = "{\"data\":{\"dspnum\":\"" + std::string(256, 'd') +
                                "\",\"errorCode\":\"123456789012\",\"showCallerNum\":1,\"unicallBeans\":[{"
                                "\"timeInfo\":{\"startDate\":\"20240101\",\"endDate\":\"1231\"},\"rtype\":6}]}}";
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord(0x5A);

    ASSERT_EQ(JsonParseUniCallCfgResult(strBody.c_str(), pstCfg.get()), 0);

    EXPECT_STREQ(pstCfg->acDspNum, "");
    EXPECT_STREQ(pstCfg->acErrorCode, "");
    EXPECT_EQ(pstCfg->uiShowCallerNum, 1u);
    EXPECT_STREQ(pstCfg->astUniCallBean[0].acStartDate, "");
    EXPECT_STREQ(pstCfg->astUniCallBean[0].acEndDate, "1231");
    EXPECT_EQ(pstCfg->astUniCallBean[0].uiRType, 6u);
}

TEST_F(UniCallParseTest, TextOfCapacityMinusOneFits)
{
    const std::string strBody = "{\"data\":{\"dspnum\":\"" + std::string(255, 'd') +
                                "\",\"errorCode\":\"12345678901\",\"unicallBeans\":[{\"ruleid\":\"" +
                                std::string(63, 'r') + "\",\"timeInfo\":{\"startDate\":\"2024010\"}}]}}";
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord();

    ASSERT_EQ(JsonParseUniCallCfgResult(strBody.c_str(), pstCfg.get()), 0);

    EXPECT_EQ(std::string(pstCfg->acDspNum), std::string(255, 'd'));
    EXPECT_STREQ(pstCfg->acErrorCode, "12345678901");
    EXPECT_EQ(std::string(pstCfg->astUniCallBean[0].acRuleId), std::string(63, 'r'));
    EXPECT_STREQ(pstCfg->astUniCallBean[0].acStartDate, "2024010");
}

TEST_F(UniCallParseTest, NumbersAreReadAsUnsigned)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord();
    EXPECT_EQ(JsonParseUniCallCfgResult("{\"data\":{\"operate\":4294967295,\"srvtype\":7.0,\"showCallerNum\":true}}",
                                        pstCfg.get()),
              0);
    EXPECT_EQ(pstCfg->uiOperate, 4294967295u);
    EXPECT_EQ(pstCfg->uiSrvType, 7u);
    EXPECT_EQ(pstCfg->uiShowCallerNum, 1u);
}

TEST_F(UniCallParseTest, WronglyTypedMemberThrowsAfterTheFieldsBeforeIt)
{
    const std::string strBody = "{\"data\":{\"operate\":6,\"srvtype\":1,\"dspnum\":5,\"errorCode\":\"e\"}}";
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord(0x5A);
    const uint32_t uiBlocksBefore = KOSA_MemLiveBlocks();

    EXPECT_THROW(JsonParseUniCallCfgResult(strBody.c_str(), pstCfg.get()), Json::LogicError);

    EXPECT_EQ(KOSA_MemLiveBlocks(), uiBlocksBefore);
    EXPECT_EQ(pstCfg->uiReturnCode, 0u);
    EXPECT_EQ(pstCfg->uiOperate, 6u);
    EXPECT_EQ(pstCfg->uiSrvType, 1u);
    EXPECT_EQ(pstCfg->acDspNum[0], 0x5A) << "the member that threw is not written";
    EXPECT_EQ(pstCfg->acErrorCode[0], 0x5A) << "members after it are not read";
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(UniCallParseTest, WronglyTypedCalleeThrowsAfterTheEarlierRulesAndCallees)
{
    const std::string strBody = "{\"data\":{\"unicallBeans\":[" + Rule("a", Callees(2)) +
                                ",{\"ruleid\":\"b\",\"rtype\":4,\"calleeList\":[\"x\",12]}]}}";
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord();
    const uint32_t uiBlocksBefore = KOSA_MemLiveBlocks();

    EXPECT_THROW(JsonParseUniCallCfgResult(strBody.c_str(), pstCfg.get()), Json::LogicError);

    EXPECT_EQ(KOSA_MemLiveBlocks(), uiBlocksBefore);
    EXPECT_EQ(pstCfg->uiUniCallBeanNum, 2u);
    EXPECT_STREQ(pstCfg->astUniCallBean[0].aacCalleeList[1], "c1");
    EXPECT_EQ(pstCfg->astUniCallBean[0].uiCalleeNum, 2u);
    EXPECT_STREQ(pstCfg->astUniCallBean[1].acRuleId, "b");
    EXPECT_EQ(pstCfg->astUniCallBean[1].uiRType, 4u);
    EXPECT_STREQ(pstCfg->astUniCallBean[1].aacCalleeList[0], "x");
    EXPECT_EQ(pstCfg->astUniCallBean[1].uiCalleeNum, 0u) << "set only once the whole list is read";
}

TEST_F(UniCallParseTest, NegativeOrTextualNumberThrows)
{
    for (const char *pcBody : {"{\"returnCode\":-1}", "{\"returnCode\":\"0\"}", "{\"data\":{\"operate\":\"1\"}}"}) {
        std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord();
        EXPECT_THROW(JsonParseUniCallCfgResult(pcBody, pstCfg.get()), Json::LogicError) << pcBody;
    }
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
}

TEST_F(UniCallParseTest, NestingBeyondTheReadersLimitThrows)
{
    const std::string strBody = "{\"data\":" + std::string(2000, '[') + std::string(2000, ']') + "}";
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord(0x5A);
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstBefore = NewRecord(0x5A);

    EXPECT_THROW(JsonParseUniCallCfgResult(strBody.c_str(), pstCfg.get()), Json::RuntimeError);

    EXPECT_TRUE(SameBytes(*pstCfg, *pstBefore));
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
}

TEST_F(UniCallParseTest, TracesNameTheParser)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord();
    (void)JsonParseUniCallCfgResult("{\"returnCode\":9}", pstCfg.get());
    const std::vector<TraceLine> vecLines = m_traces.Lines();
    ASSERT_EQ(vecLines.size(), 1u);
    EXPECT_EQ(vecLines[0].strFunc, "JsonParseUniCallCfgResult");
    EXPECT_EQ(vecLines[0].strFile, SERVICES_FILE);
    EXPECT_EQ(vecLines[0].uiLevel, 0u);
}

/* ---- JsonBuildSetUniCallCfgBody ---------------------------------------------------- */

TEST_F(UniCallBuildTest, BodyIsTheStyledTextOfTheChosenRule)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = FilledRecord();
    OwnedBody stBody;

    ASSERT_EQ(JsonBuildSetUniCallCfgBody(pstCfg.get(), 1, &stBody.pcText, &stBody.uiLen), 0u);

    ExpectTerminatedBody(stBody);
    EXPECT_EQ(std::string(stBody.pcText), ExpectedBody(*pstCfg, 1).toStyledString());
    EXPECT_EQ(LiveBlocksSinceStart(), 1u) << "the body is the caller's block";
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(UniCallBuildTest, BodyParsesBackMemberByMemberAndTypeByType)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = FilledRecord();
    OwnedBody stBody;
    ASSERT_EQ(JsonBuildSetUniCallCfgBody(pstCfg.get(), 2, &stBody.pcText, &stBody.uiLen), 0u);

    const Json::Value stRoot = ParseJsonBack(stBody.pcText);

    ASSERT_TRUE(stRoot.isObject());
    EXPECT_THAT(stRoot.getMemberNames(), ElementsAre("dspnum", "operate", "srvtype", "unicallBeans"))
        << "errorCode and showCallerNum are never written";
    ExpectUnsigned(stRoot["operate"], 2, "operate");
    ExpectUnsigned(stRoot["srvtype"], 1, "srvtype");
    ExpectString(stRoot["dspnum"], "+861088880000", "dspnum");
    const Json::Value &stBeans = stRoot["unicallBeans"];
    ASSERT_TRUE(stBeans.isArray());
    ASSERT_EQ(stBeans.size(), 1u);
    const Json::Value &stRule = stBeans[0];
    ASSERT_TRUE(stRule.isObject());
    EXPECT_THAT(stRule.getMemberNames(),
                ElementsAre("calleeIndex", "calleeList", "operateType", "rtype", "ruleid", "timeInfo"));
    ExpectString(stRule["ruleid"], "rule-2", "ruleid");
    ExpectUnsigned(stRule["calleeIndex"], 22, "calleeIndex");
    ExpectUnsigned(stRule["rtype"], 32, "rtype");
    ExpectUnsigned(stRule["operateType"], 42, "operateType");
    const Json::Value &stTime = stRule["timeInfo"];
    ASSERT_TRUE(stTime.isObject());
    EXPECT_THAT(stTime.getMemberNames(),
                ElementsAre("allTime", "cycleType", "dayInWeek", "endDate", "endTime", "startDate", "startTime"));
    ExpectUnsigned(stTime["allTime"], 2, "allTime");
    ExpectUnsigned(stTime["cycleType"], 12, "cycleType");
    ExpectString(stTime["startDate"], "0101", "startDate");
    ExpectString(stTime["endDate"], "1231", "endDate");
    ExpectString(stTime["dayInWeek"], "12345", "dayInWeek");
    ExpectString(stTime["startTime"], "0800", "startTime");
    ExpectString(stTime["endTime"], "1800", "endTime");
    const Json::Value &stCallees = stRule["calleeList"];
    ASSERT_TRUE(stCallees.isArray());
    ASSERT_EQ(stCallees.size(), 2u);
    ExpectString(stCallees[0], "callee-2-0", "calleeList[0]");
    ExpectString(stCallees[1], "callee-2-1", "calleeList[1]");
}

TEST_F(UniCallBuildTest, NumbersAreWrittenUnsigned)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = FilledRecord();
    pstCfg->uiOperate = 0xFFFFFFFFu;
    tagLOGIN_S_UNICALL_BEAN &stBean = pstCfg->astUniCallBean[0];
    stBean.uiAllTime = 0x80000000u;
    stBean.uiCycleType = 0xFFFFFFFEu;
    stBean.uiCalleeIndex = 0xFFFFFFFFu;
    stBean.uiRType = 3000000000u;
    stBean.uiOperateType = 0x90000000u;
    OwnedBody stBody;

    ASSERT_EQ(JsonBuildSetUniCallCfgBody(pstCfg.get(), 0, &stBody.pcText, &stBody.uiLen), 0u);

    const Json::Value stRoot = ParseJsonBack(stBody.pcText);
    /* Beyond the signed range a number reads back as unsigned only when it was written so. */
    EXPECT_EQ(stRoot["operate"].type(), Json::uintValue);
    EXPECT_EQ(stRoot["operate"].asUInt(), 0xFFFFFFFFu);
    const Json::Value &stRule = stRoot["unicallBeans"][0];
    EXPECT_EQ(stRule["timeInfo"]["allTime"].type(), Json::uintValue);
    EXPECT_EQ(stRule["timeInfo"]["allTime"].asUInt(), 0x80000000u);
    EXPECT_EQ(stRule["timeInfo"]["cycleType"].asUInt(), 0xFFFFFFFEu);
    EXPECT_EQ(stRule["calleeIndex"].asUInt(), 0xFFFFFFFFu);
    EXPECT_EQ(stRule["rtype"].asUInt(), 3000000000u);
    EXPECT_EQ(stRule["operateType"].type(), Json::uintValue);
    EXPECT_EQ(std::string(stBody.pcText), ExpectedBody(*pstCfg, 0).toStyledString());
    EXPECT_NE(std::string(stBody.pcText).find("4294967295"), std::string::npos);
}

TEST_F(UniCallBuildTest, CalleeListHoldsTheStoredCount)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = FilledRecord();
    pstCfg->astUniCallBean[0].uiCalleeNum = 10;
    OwnedBody stBody;

    ASSERT_EQ(JsonBuildSetUniCallCfgBody(pstCfg.get(), 0, &stBody.pcText, &stBody.uiLen), 0u);

    const Json::Value stList = ParseJsonBack(stBody.pcText)["unicallBeans"][0]["calleeList"];
    ASSERT_EQ(stList.size(), 10u);
    EXPECT_STREQ(stList[9].asCString(), "callee-0-9");
}

TEST_F(UniCallBuildTest, RuleWithoutCalleesHasAnEmptyList)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = FilledRecord();
    pstCfg->astUniCallBean[0].uiCalleeNum = 0;
    OwnedBody stBody;

    ASSERT_EQ(JsonBuildSetUniCallCfgBody(pstCfg.get(), 0, &stBody.pcText, &stBody.uiLen), 0u);

    const Json::Value stRule = ParseJsonBack(stBody.pcText)["unicallBeans"][0];
    EXPECT_TRUE(stRule["calleeList"].isArray());
    EXPECT_EQ(stRule["calleeList"].size(), 0u);
    EXPECT_EQ(std::string(stBody.pcText), ExpectedBody(*pstCfg, 0).toStyledString());
}

TEST_F(UniCallBuildTest, ServiceTypesZeroAndOneAreAccepted)
{
    for (uint32_t uiType : {0u, 1u}) {
        std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = FilledRecord();
        pstCfg->uiSrvType = uiType;
        OwnedBody stBody;
        ASSERT_EQ(JsonBuildSetUniCallCfgBody(pstCfg.get(), 0, &stBody.pcText, &stBody.uiLen), 0u) << uiType;
        EXPECT_EQ(ParseJsonBack(stBody.pcText)["srvtype"].asUInt(), uiType);
    }
}

TEST_F(UniCallBuildTest, ServiceTypeTwoFailsWithOne)
{
    for (uint32_t uiType : {2u, 0xFFFFFFFFu}) {
        m_traces.Clear();
        std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = FilledRecord();
        pstCfg->uiSrvType = uiType;
        char acMarker = 0;
        char *pcBody = &acMarker;
        uint32_t uiLen = 77;

        EXPECT_EQ(JsonBuildSetUniCallCfgBody(pstCfg.get(), 0, &pcBody, &uiLen), 1u) << uiType;

        EXPECT_EQ(pcBody, &acMarker) << "no body handed over";
        EXPECT_EQ(uiLen, 77u);
        EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 srv_type type is error"));
    }
}

TEST_F(UniCallBuildTest, ServiceTypeIsCheckedBeforeTheRuleIndex)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = FilledRecord();
    pstCfg->uiSrvType = 2;
    char *pcBody = nullptr;
    uint32_t uiLen = 0;
    EXPECT_EQ(JsonBuildSetUniCallCfgBody(pstCfg.get(), 99, &pcBody, &uiLen), 1u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 srv_type type is error"));
}

TEST_F(UniCallBuildTest, IndexEqualToTheRuleCountFailsWithOne)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = FilledRecord();
    for (uint32_t uiIndex : {3u, 4u, 0xFFFFFFFFu}) {
        m_traces.Clear();
        char *pcBody = nullptr;
        uint32_t uiLen = 77;

        EXPECT_EQ(JsonBuildSetUniCallCfgBody(pstCfg.get(), uiIndex, &pcBody, &uiLen), 1u) << uiIndex;

        EXPECT_EQ(pcBody, nullptr);
        EXPECT_EQ(uiLen, 77u);
        EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 out buffer array!"));
    }
}

TEST_F(UniCallBuildTest, RecordWithoutRulesHasNoValidIndex)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = FilledRecord();
    pstCfg->uiUniCallBeanNum = 0;
    char *pcBody = nullptr;
    uint32_t uiLen = 0;
    EXPECT_EQ(JsonBuildSetUniCallCfgBody(pstCfg.get(), 0, &pcBody, &uiLen), 1u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 out buffer array!"));
}

TEST_F(UniCallBuildTest, NullOutPointerFailsWithOne)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = FilledRecord();
    uint32_t uiLen = 77;
    EXPECT_EQ(JsonBuildSetUniCallCfgBody(pstCfg.get(), 0, nullptr, &uiLen), 1u);
    EXPECT_EQ(uiLen, 77u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 param is null!"));
}

TEST_F(UniCallBuildTest, AllocationFailureFailsWithOneAndHandsNothingOver)
{
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = FilledRecord();
    char acMarker = 0;
    char *pcBody = &acMarker;
    uint32_t uiLen = 77;

    KOSA_MemFailAfter(0);
    EXPECT_EQ(JsonBuildSetUniCallCfgBody(pstCfg.get(), 0, &pcBody, &uiLen), 1u);

    EXPECT_EQ(pcBody, nullptr);
    EXPECT_EQ(uiLen, 77u);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 malloc failed!"));
    const std::vector<TraceLine> vecLines = m_traces.Lines();
    EXPECT_EQ(vecLines[0].strFunc, "JsonBuildSetUniCallCfgBody");
    EXPECT_EQ(vecLines[0].strFile, SERVICES_FILE);
}

TEST_F(UniCallBuildTest, ParsedAnswerBuildsBackItsRule)
{
    const std::string strAnswer = ReadTestFile("services/unicall-answer.json");
    std::unique_ptr<tagLOGIN_S_UNICALL_CFG> pstCfg = NewRecord();
    ASSERT_EQ(JsonParseUniCallCfgResult(strAnswer.c_str(), pstCfg.get()), 0);
    OwnedBody stBody;

    ASSERT_EQ(JsonBuildSetUniCallCfgBody(pstCfg.get(), 0, &stBody.pcText, &stBody.uiLen), 0u);

    const Json::Value stAnswerRule = ParseJsonBack(strAnswer)["data"]["unicallBeans"][0];
    const Json::Value stBuiltRule = ParseJsonBack(stBody.pcText)["unicallBeans"][0];
    EXPECT_EQ(stBuiltRule, stAnswerRule) << "the answer's rule has exactly as many callees as there are rules";
}

} // namespace
