/*
 * Linked phones: the JSON answer listing identities and their links, and the bodies of the
 * set request (one identity's link) and the get request (a list of identities).
 */
#include <gmock/gmock.h>

#include <cstring>
#include <string>

#include "services_test.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const char *const SERVICES_FILE = "service/login/src/atrium_xml/services.cpp";

tagLOGIN_S_LINKED_PHONE_RESULT SentinelResult()
{
    tagLOGIN_S_LINKED_PHONE_RESULT stResult;
    std::memset(&stResult, 0x5A, sizeof(stResult));
    return stResult;
}

bool SameBytes(const tagLOGIN_S_LINKED_PHONE_RESULT &a, const tagLOGIN_S_LINKED_PHONE_RESULT &b)
{
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

std::string Identities(uint32_t uiCount)
{
    std::string strList;
    for (uint32_t i = 0; i < uiCount; ++i) {
        strList += (i ? "," : "") + std::string("{\"impu\":\"sip:") + std::to_string(i) +
                   "@x\",\"active\":true,\"linkedPhone\":\"" + std::to_string(1000 + i) + "\"}";
    }
    return "{\"returnCode\":0,\"data\":[" + strList + "]}";
}

class LinkedPhoneParseTest : public ModuleTest {};

class LinkedPhoneBuildTest : public ModuleTest {
protected:
    static tagLOGIN_S_LINKED_PHONE Phone(const char *pcImpu, uint32_t uiActive, const char *pcLinked)
    {
        tagLOGIN_S_LINKED_PHONE stPhone{};
        std::strcpy(stPhone.acImpu, pcImpu);
        stPhone.uiActive = uiActive;
        std::strcpy(stPhone.acLinkedPhone, pcLinked);
        return stPhone;
    }
    static tagLOGIN_S_LINKED_PHONE_INFO Request(uint32_t uiCount)
    {
        tagLOGIN_S_LINKED_PHONE_INFO stInfo{};
        stInfo.uiImpuNum = uiCount;
        for (uint32_t i = 0; i < LOGIN_LINKED_PHONE_MAX; ++i) {
            std::snprintf(stInfo.astLinkedPhone[i].acImpu, sizeof(stInfo.astLinkedPhone[i].acImpu),
                          "sip:+86108888%04u@uc.example.com", i);
            std::strcpy(stInfo.astLinkedPhone[i].acLinkedPhone, "not sent");
            stInfo.astLinkedPhone[i].uiActive = 1;
        }
        return stInfo;
    }
};

/* ---- JsonParseLinkedPhoneResult ---------------------------------------------------- */

TEST_F(LinkedPhoneParseTest, SampleAnswerFillsEveryEntry)
{
    const std::string strBody = ReadTestFile("services/linked-phone-answer.json");
    tagLOGIN_S_LINKED_PHONE_RESULT stResult{};

    ASSERT_EQ(JsonParseLinkedPhoneResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiLinkedPhoneNum, 3u);
    EXPECT_STREQ(stResult.astLinkedPhone[0].acImpu, "sip:+861088880001@uc.example.com");
    EXPECT_EQ(stResult.astLinkedPhone[0].uiActive, 1u);
    EXPECT_STREQ(stResult.astLinkedPhone[0].acLinkedPhone, "13900000001");
    EXPECT_STREQ(stResult.astLinkedPhone[1].acImpu, "sip:+861088880002@uc.example.com");
    EXPECT_EQ(stResult.astLinkedPhone[1].uiActive, 0u);
    EXPECT_STREQ(stResult.astLinkedPhone[1].acLinkedPhone, "");
    EXPECT_STREQ(stResult.astLinkedPhone[2].acImpu, "tel:+861088880003");
    EXPECT_EQ(stResult.astLinkedPhone[2].uiActive, 1u);
    EXPECT_STREQ(stResult.astLinkedPhone[2].acLinkedPhone, "13900000003");
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(LinkedPhoneParseTest, ActiveIsReadAsABoolean)
{
    const struct {
        const char *pcActive;
        uint32_t uiExpected;
    } astCases[] = {{"true", 1}, {"false", 0}, {"1", 1}, {"0", 0}, {"7", 1}, {"-2", 1}, {"0.5", 1}, {"0.0", 0}};
    for (const auto &stCase : astCases) {
        tagLOGIN_S_LINKED_PHONE_RESULT stResult = SentinelResult();
        const std::string strBody = std::string("{\"data\":[{\"active\":") + stCase.pcActive + "}]}";

        ASSERT_EQ(JsonParseLinkedPhoneResult(strBody.c_str(), &stResult), 0u) << stCase.pcActive;

        EXPECT_EQ(stResult.astLinkedPhone[0].uiActive, stCase.uiExpected) << stCase.pcActive;
    }
}

TEST_F(LinkedPhoneParseTest, TwentyNineIdentitiesAreAccepted)
{
    const std::string strBody = Identities(29);
    tagLOGIN_S_LINKED_PHONE_RESULT stResult{};

    ASSERT_EQ(JsonParseLinkedPhoneResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiLinkedPhoneNum, 29u);
    for (uint32_t i = 0; i < 29; ++i) {
        EXPECT_EQ(std::string(stResult.astLinkedPhone[i].acImpu), "sip:" + std::to_string(i) + "@x");
        EXPECT_EQ(stResult.astLinkedPhone[i].uiActive, 1u);
        EXPECT_EQ(std::string(stResult.astLinkedPhone[i].acLinkedPhone), std::to_string(1000 + i));
    }
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(LinkedPhoneParseTest, ThirtyIdentitiesFailWithElevenAndTheCountStored)
{
    for (uint32_t uiCount : {30u, 31u, 100u}) {
        m_traces.Clear();
        const std::string strBody = Identities(uiCount);
        tagLOGIN_S_LINKED_PHONE_RESULT stResult = SentinelResult();
        tagLOGIN_S_LINKED_PHONE_RESULT stBefore = stResult;
        stBefore.uiLinkedPhoneNum = uiCount;

        EXPECT_EQ(JsonParseLinkedPhoneResult(strBody.c_str(), &stResult), 11u) << uiCount;

        EXPECT_TRUE(SameBytes(stResult, stBefore)) << uiCount << ": no entry is written";
        EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 linkedPhoneBeans_count error!")) << uiCount;
    }
}

TEST_F(LinkedPhoneParseTest, AnswerWithoutDataStoresZero)
{
    tagLOGIN_S_LINKED_PHONE_RESULT stResult = SentinelResult();
    tagLOGIN_S_LINKED_PHONE_RESULT stBefore = stResult;
    stBefore.uiLinkedPhoneNum = 0;

    EXPECT_EQ(JsonParseLinkedPhoneResult("{\"returnCode\":0}", &stResult), 0u);

    EXPECT_TRUE(SameBytes(stResult, stBefore));
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(LinkedPhoneParseTest, ReturnCodeIsNotRead)
{
    tagLOGIN_S_LINKED_PHONE_RESULT stResult{};
    EXPECT_EQ(JsonParseLinkedPhoneResult("{\"returnCode\":5,\"data\":[{\"impu\":\"a\"}]}", &stResult), 0u);
    EXPECT_EQ(stResult.uiLinkedPhoneNum, 1u);
    EXPECT_STREQ(stResult.astLinkedPhone[0].acImpu, "a");
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(LinkedPhoneParseTest, AbsentAndNullMembersLeaveTheirFieldsAsGiven)
{
    const std::string strBody = "{\"data\":[{\"impu\":null},{\"active\":null,\"linkedPhone\":\"9\"},null]}";
    tagLOGIN_S_LINKED_PHONE_RESULT stResult = SentinelResult();
    tagLOGIN_S_LINKED_PHONE_RESULT stBefore = stResult;
    stBefore.uiLinkedPhoneNum = 3;
    std::strcpy(stBefore.astLinkedPhone[1].acLinkedPhone, "9");

    EXPECT_EQ(JsonParseLinkedPhoneResult(strBody.c_str(), &stResult), 0u);

    EXPECT_TRUE(SameBytes(stResult, stBefore));
}

TEST_F(LinkedPhoneParseTest, TextTooLongForItsFieldLeavesItEmptyAndParsingGoesOn)
{
    const std::string strBody = "{\"data\":[{\"impu\":\"" + std::string(128, 'i') + "\",\"active\":true,"
                                "\"linkedPhone\":\"" + std::string(32, '1') + "\"},{\"impu\":\"" +
                                std::string(127, 'j') + "\",\"linkedPhone\":\"" + std::string(31, '2') + "\"}]}";
    tagLOGIN_S_LINKED_PHONE_RESULT stResult = SentinelResult();

    ASSERT_EQ(JsonParseLinkedPhoneResult(strBody.c_str(), &stResult), 0u);

    EXPECT_STREQ(stResult.astLinkedPhone[0].acImpu, "");
    EXPECT_EQ(stResult.astLinkedPhone[0].uiActive, 1u);
    EXPECT_STREQ(stResult.astLinkedPhone[0].acLinkedPhone, "");
    EXPECT_EQ(std::string(stResult.astLinkedPhone[1].acImpu), std::string(127, 'j'));
    EXPECT_EQ(std::string(stResult.astLinkedPhone[1].acLinkedPhone), std::string(31, '2'));
}

TEST_F(LinkedPhoneParseTest, NullArgumentsYieldTwo)
{
    tagLOGIN_S_LINKED_PHONE_RESULT stResult = SentinelResult();
    const tagLOGIN_S_LINKED_PHONE_RESULT stBefore = stResult;

    EXPECT_EQ(JsonParseLinkedPhoneResult(nullptr, &stResult), 2u);
    EXPECT_EQ(JsonParseLinkedPhoneResult("{\"data\":[]}", nullptr), 2u);

    EXPECT_TRUE(SameBytes(stResult, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 pcBody pointer empty!", "L0 pcBody pointer empty!"));
}

TEST_F(LinkedPhoneParseTest, TextThatIsNotJsonYieldsFortySixAndTouchesNothing)
{
    for (const char *pcBody : {"", "{", "{\"data\":[}", "not json"}) {
        m_traces.Clear();
        tagLOGIN_S_LINKED_PHONE_RESULT stResult = SentinelResult();
        const tagLOGIN_S_LINKED_PHONE_RESULT stBefore = stResult;

        EXPECT_EQ(JsonParseLinkedPhoneResult(pcBody, &stResult), 46u) << pcBody;

        EXPECT_TRUE(SameBytes(stResult, stBefore)) << pcBody;
        EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 json parse failed")) << pcBody;
    }
}

TEST_F(LinkedPhoneParseTest, TextBeforeTheObjectIsNotSkipped)
{
    /* Unlike the unified-call answer, the whole text must be JSON. */
    tagLOGIN_S_LINKED_PHONE_RESULT stResult = SentinelResult();
    const tagLOGIN_S_LINKED_PHONE_RESULT stBefore = stResult;

    EXPECT_EQ(JsonParseLinkedPhoneResult("HTTP/1.1 200 OK\r\n\r\n{\"data\":[]}", &stResult), 46u);

    EXPECT_TRUE(SameBytes(stResult, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 json parse failed"));
}

TEST_F(LinkedPhoneParseTest, WronglyTypedImpuThrowsAfterTheEntriesBeforeIt)
{
    const std::string strBody = "{\"data\":[{\"impu\":\"sip:a@x\",\"active\":true,\"linkedPhone\":\"1\"},"
                                "{\"impu\":12,\"active\":true}]}";
    tagLOGIN_S_LINKED_PHONE_RESULT stResult = SentinelResult();
    const uint32_t uiBlocksBefore = KOSA_MemLiveBlocks();

    EXPECT_THROW(JsonParseLinkedPhoneResult(strBody.c_str(), &stResult), Json::LogicError);

    EXPECT_EQ(KOSA_MemLiveBlocks(), uiBlocksBefore);
    EXPECT_EQ(stResult.uiLinkedPhoneNum, 2u);
    EXPECT_STREQ(stResult.astLinkedPhone[0].acImpu, "sip:a@x");
    EXPECT_EQ(stResult.astLinkedPhone[0].uiActive, 1u);
    EXPECT_STREQ(stResult.astLinkedPhone[0].acLinkedPhone, "1");
    EXPECT_EQ(stResult.astLinkedPhone[1].acImpu[0], 0x5A);
    EXPECT_EQ(stResult.astLinkedPhone[1].uiActive, 0x5A5A5A5Au) << "members after it are not read";
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(LinkedPhoneParseTest, ActiveAsTextThrows)
{
    tagLOGIN_S_LINKED_PHONE_RESULT stResult{};
    EXPECT_THROW(JsonParseLinkedPhoneResult("{\"data\":[{\"impu\":\"a\",\"active\":\"yes\"}]}", &stResult),
                 Json::LogicError);
    EXPECT_STREQ(stResult.astLinkedPhone[0].acImpu, "a");
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
}

TEST_F(LinkedPhoneParseTest, DataThatIsAnObjectThrows)
{
    tagLOGIN_S_LINKED_PHONE_RESULT stResult{};
    EXPECT_THROW(JsonParseLinkedPhoneResult("{\"data\":{\"impu\":\"a\"}}", &stResult), Json::LogicError);
    EXPECT_EQ(stResult.uiLinkedPhoneNum, 1u) << "the member count was stored before the element access threw";
}

/* ---- JsonBuildSetLinkedPhoneInfoBody ----------------------------------------------- */

TEST_F(LinkedPhoneBuildTest, ActiveLinkCarriesTheNumberAsSignedOne)
{
    tagLOGIN_S_LINKED_PHONE stPhone = Phone("sip:+861088880001@uc.example.com", 1, "13900000001");
    OwnedBody stBody;

    ASSERT_EQ(JsonBuildSetLinkedPhoneInfoBody(&stPhone, &stBody.pcText, &stBody.uiLen), 0u);

    ExpectTerminatedBody(stBody);
    const Json::Value stRoot = ParseJsonBack(stBody.pcText);
    ASSERT_TRUE(stRoot.isObject());
    EXPECT_THAT(stRoot.getMemberNames(), ElementsAre("active", "impu", "linkedPhone"));
    ASSERT_TRUE(stRoot["impu"].isString());
    EXPECT_STREQ(stRoot["impu"].asCString(), "sip:+861088880001@uc.example.com");
    EXPECT_EQ(stRoot["active"].type(), Json::intValue) << "a number, not a boolean";
    EXPECT_EQ(stRoot["active"].asInt(), 1);
    ASSERT_TRUE(stRoot["linkedPhone"].isString());
    EXPECT_STREQ(stRoot["linkedPhone"].asCString(), "13900000001");

    Json::Value stExpected(Json::objectValue);
    stExpected["impu"] = "sip:+861088880001@uc.example.com";
    stExpected["active"] = Json::Value(static_cast<Json::Int>(1));
    stExpected["linkedPhone"] = "13900000001";
    EXPECT_EQ(std::string(stBody.pcText), stExpected.toStyledString());
    EXPECT_EQ(LiveBlocksSinceStart(), 1u);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(LinkedPhoneBuildTest, AnyNonZeroActiveIsWrittenAsOne)
{
    tagLOGIN_S_LINKED_PHONE stPhone = Phone("a", 0xFFFFFFFFu, "5");
    OwnedBody stBody;
    ASSERT_EQ(JsonBuildSetLinkedPhoneInfoBody(&stPhone, &stBody.pcText, &stBody.uiLen), 0u);
    const Json::Value stRoot = ParseJsonBack(stBody.pcText);
    EXPECT_EQ(stRoot["active"].type(), Json::intValue);
    EXPECT_EQ(stRoot["active"].asInt(), 1);
}

TEST_F(LinkedPhoneBuildTest, InactiveLinkCarriesOnlyImpuAndActiveZero)
{
    tagLOGIN_S_LINKED_PHONE stPhone = Phone("sip:b@x", 0, "13900000002");
    OwnedBody stBody;

    ASSERT_EQ(JsonBuildSetLinkedPhoneInfoBody(&stPhone, &stBody.pcText, &stBody.uiLen), 0u);

    ExpectTerminatedBody(stBody);
    const Json::Value stRoot = ParseJsonBack(stBody.pcText);
    EXPECT_THAT(stRoot.getMemberNames(), ElementsAre("active", "impu"));
    EXPECT_EQ(stRoot["active"].type(), Json::intValue);
    EXPECT_EQ(stRoot["active"].asInt(), 0);
    EXPECT_STREQ(stRoot["impu"].asCString(), "sip:b@x");

    Json::Value stExpected(Json::objectValue);
    stExpected["impu"] = "sip:b@x";
    stExpected["active"] = Json::Value(static_cast<Json::Int>(0));
    EXPECT_EQ(std::string(stBody.pcText), stExpected.toStyledString());
}

TEST_F(LinkedPhoneBuildTest, InactiveLinkNeedsNoNumber)
{
    tagLOGIN_S_LINKED_PHONE stPhone = Phone("sip:b@x", 0, "");
    OwnedBody stBody;
    EXPECT_EQ(JsonBuildSetLinkedPhoneInfoBody(&stPhone, &stBody.pcText, &stBody.uiLen), 0u);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(LinkedPhoneBuildTest, ActiveLinkWithoutNumberFailsWithOne)
{
    tagLOGIN_S_LINKED_PHONE stPhone = Phone("sip:c@x", 1, "");
    char acMarker = 0;
    char *pcBody = &acMarker;
    uint32_t uiLen = 77;

    EXPECT_EQ(JsonBuildSetLinkedPhoneInfoBody(&stPhone, &pcBody, &uiLen), 1u);

    EXPECT_EQ(pcBody, &acMarker);
    EXPECT_EQ(uiLen, 77u);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 param linkedPhone is error"));
}

TEST_F(LinkedPhoneBuildTest, SetWithNullOutPointerFailsWithOne)
{
    tagLOGIN_S_LINKED_PHONE stPhone = Phone("sip:c@x", 1, "1");
    uint32_t uiLen = 77;
    EXPECT_EQ(JsonBuildSetLinkedPhoneInfoBody(&stPhone, nullptr, &uiLen), 1u);
    EXPECT_EQ(uiLen, 77u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 ppBody is NULL!"));
}

TEST_F(LinkedPhoneBuildTest, SetAllocationFailureFailsWithOne)
{
    tagLOGIN_S_LINKED_PHONE stPhone = Phone("sip:c@x", 1, "1");
    char acMarker = 0;
    char *pcBody = &acMarker;
    uint32_t uiLen = 77;

    KOSA_MemFailAfter(0);
    EXPECT_EQ(JsonBuildSetLinkedPhoneInfoBody(&stPhone, &pcBody, &uiLen), 1u);

    EXPECT_EQ(pcBody, nullptr);
    EXPECT_EQ(uiLen, 77u);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 malloc failed!"));
    EXPECT_EQ(m_traces.Lines()[0].strFunc, "JsonBuildSetLinkedPhoneInfoBody");
    EXPECT_EQ(m_traces.Lines()[0].strFile, SERVICES_FILE);
}

TEST_F(LinkedPhoneBuildTest, ParsedAnswerEntryBuildsItsSetBody)
{
    const std::string strAnswer = ReadTestFile("services/linked-phone-answer.json");
    tagLOGIN_S_LINKED_PHONE_RESULT stResult{};
    ASSERT_EQ(JsonParseLinkedPhoneResult(strAnswer.c_str(), &stResult), 0u);
    OwnedBody stBody;

    ASSERT_EQ(JsonBuildSetLinkedPhoneInfoBody(&stResult.astLinkedPhone[0], &stBody.pcText, &stBody.uiLen), 0u);

    const Json::Value stRoot = ParseJsonBack(stBody.pcText);
    EXPECT_STREQ(stRoot["impu"].asCString(), "sip:+861088880001@uc.example.com");
    EXPECT_EQ(stRoot["active"].asInt(), 1);
    EXPECT_FALSE(stRoot["active"].isBool()) << "the answer's boolean goes back as a number";
    EXPECT_STREQ(stRoot["linkedPhone"].asCString(), "13900000001");
}

/* ---- JsonBuildGetLinkedPhoneInfoBody ----------------------------------------------- */

TEST_F(LinkedPhoneBuildTest, OneIdentityGivesAnArrayOfOneString)
{
    tagLOGIN_S_LINKED_PHONE_INFO stInfo = Request(1);
    OwnedBody stBody;

    ASSERT_EQ(JsonBuildGetLinkedPhoneInfoBody(&stInfo, &stBody.pcText, &stBody.uiLen), 0u);

    ExpectTerminatedBody(stBody);
    const Json::Value stRoot = ParseJsonBack(stBody.pcText);
    ASSERT_TRUE(stRoot.isObject());
    EXPECT_THAT(stRoot.getMemberNames(), ElementsAre("impuList"));
    const Json::Value &stList = stRoot["impuList"];
    ASSERT_TRUE(stList.isArray());
    ASSERT_EQ(stList.size(), 1u);
    ASSERT_TRUE(stList[0].isString());
    EXPECT_STREQ(stList[0].asCString(), "sip:+861088880000@uc.example.com");

    Json::Value stExpected(Json::objectValue);
    stExpected["impuList"].append("sip:+861088880000@uc.example.com");
    EXPECT_EQ(std::string(stBody.pcText), stExpected.toStyledString());
    EXPECT_EQ(LiveBlocksSinceStart(), 1u);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(LinkedPhoneBuildTest, EveryIdentityIsListedInOrder)
{
    tagLOGIN_S_LINKED_PHONE_INFO stInfo = Request(LOGIN_LINKED_PHONE_MAX);
    OwnedBody stBody;

    ASSERT_EQ(JsonBuildGetLinkedPhoneInfoBody(&stInfo, &stBody.pcText, &stBody.uiLen), 0u);

    ExpectTerminatedBody(stBody);
    Json::Value stExpected(Json::objectValue);
    stExpected["impuList"] = Json::Value(Json::arrayValue);
    for (uint32_t i = 0; i < LOGIN_LINKED_PHONE_MAX; ++i) {
        stExpected["impuList"].append(stInfo.astLinkedPhone[i].acImpu);
    }
    EXPECT_EQ(ParseJsonBack(stBody.pcText), stExpected);
    EXPECT_EQ(std::string(stBody.pcText), stExpected.toStyledString());
}

TEST_F(LinkedPhoneBuildTest, GetWithNullOutPointerFailsWithOne)
{
    tagLOGIN_S_LINKED_PHONE_INFO stInfo = Request(1);
    EXPECT_EQ(JsonBuildGetLinkedPhoneInfoBody(&stInfo, nullptr, nullptr), 1u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 ppBody is NULL!"));
}

TEST_F(LinkedPhoneBuildTest, GetWithoutRequestOrIdentitiesFailsWithTwo)
{
    tagLOGIN_S_LINKED_PHONE_INFO stInfo = Request(0);
    char acMarker = 0;
    char *pcBody = &acMarker;
    uint32_t uiLen = 77;

    EXPECT_EQ(JsonBuildGetLinkedPhoneInfoBody(nullptr, &pcBody, &uiLen), 2u);
    EXPECT_EQ(JsonBuildGetLinkedPhoneInfoBody(&stInfo, &pcBody, &uiLen), 2u);

    EXPECT_EQ(pcBody, &acMarker);
    EXPECT_EQ(uiLen, 77u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 pstLinkedPhoneInfo is null or impuNum is 0 !",
                                              "L0 pstLinkedPhoneInfo is null or impuNum is 0 !"));
}

TEST_F(LinkedPhoneBuildTest, OutPointerIsCheckedBeforeTheRequest)
{
    EXPECT_EQ(JsonBuildGetLinkedPhoneInfoBody(nullptr, nullptr, nullptr), 1u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 ppBody is NULL!"));
}

TEST_F(LinkedPhoneBuildTest, GetAllocationFailureFailsWithFour)
{
    tagLOGIN_S_LINKED_PHONE_INFO stInfo = Request(2);
    char acMarker = 0;
    char *pcBody = &acMarker;
    uint32_t uiLen = 77;

    KOSA_MemFailAfter(0);
    EXPECT_EQ(JsonBuildGetLinkedPhoneInfoBody(&stInfo, &pcBody, &uiLen), 4u);

    EXPECT_EQ(pcBody, nullptr);
    EXPECT_EQ(uiLen, 77u);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 malloc failed!"));
    EXPECT_EQ(m_traces.Lines()[0].strFunc, "JsonBuildGetLinkedPhoneInfoBody");
}

} // namespace
