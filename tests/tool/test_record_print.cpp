/*
 * What is driven by the record descriptions: texts read within their capacity and shown
 * whatever their bytes, arrays showing only the entries that hold data, JSON and text
 * printing, request records read back from JSON with field-naming errors, release of what
 * a parser hands over (checked against the memory ledger by the fixture), and numbers
 * read by dotted path.
 */
#include <gtest/gtest.h>

#include <cstring>
#include <regex>
#include <sstream>
#include <string>

#include "module_test.h"
#include "record_print.h"

using namespace atrium_records;

namespace {

const FieldDesc &Row(const RecordDesc &stDesc, const char *pcName)
{
    const FieldDesc *pstField = stDesc.Find(pcName);
    EXPECT_NE(pstField, nullptr) << pcName;
    return *pstField;
}

/* ---- texts ------------------------------------------------------------------------- */

TEST(RecordTextTest, AFieldWithoutTerminatorIsReadUpToItsCapacity)
{
    tagLOGIN_S_ENDPOINT_MSG_RESULT stMsg;
    std::memset(&stMsg, 0, sizeof(stMsg));
    std::memcpy(stMsg.acRegIpAddress, "192.168.100.200X", 16); /* all 16 bytes, no NUL */
    stMsg.acRegPassword[0] = 'p';
    EXPECT_EQ(TextValue(stMsg.acRegIpAddress, 16, Escape::Json), "192.168.100.200X");
    EXPECT_EQ(RecordToJson(g_stEndpointMsgResultDesc, &stMsg)["acRegIpAddress"].asString(), "192.168.100.200X");
}

TEST(RecordTextTest, BytesThatAreNotUtf8AreShownAsHexAndUtf8IsKept)
{
    const char acField[16] = "a\xC3\xA9z\xFF\xC3";
    EXPECT_EQ(TextValue(acField, sizeof(acField), Escape::Json), "a\xC3\xA9z\\xFF\\xC3");
    const char acSurrogate[8] = "\xED\xA0\x80";
    EXPECT_EQ(TextValue(acSurrogate, sizeof(acSurrogate), Escape::Json), "\\xED\\xA0\\x80");
}

TEST(RecordTextTest, TheQuotedFormEscapesQuotesBackslashesAndControls)
{
    const char acField[32] = "say \"hi\"\\\n\t\x01";
    EXPECT_EQ(TextValue(acField, sizeof(acField), Escape::Quoted), "\"say \\\"hi\\\"\\\\\\n\\t\\x01\"");
}

/* ---- filled entries ---------------------------------------------------------------- */

TEST(FilledEntriesTest, ACountedArrayShowsNoMoreThanItsCapacity)
{
    tagLOGIN_S_LINKED_PHONE_RESULT stResult;
    std::memset(&stResult, 0, sizeof(stResult));
    stResult.uiLinkedPhoneNum = 30; /* what the parser stores for 30 identities */
    EXPECT_EQ(FilledEntries(Row(g_stLinkedPhoneResultDesc, "astLinkedPhone"), &stResult), 29u);
    stResult.uiLinkedPhoneNum = 2;
    EXPECT_EQ(FilledEntries(Row(g_stLinkedPhoneResultDesc, "astLinkedPhone"), &stResult), 2u);
}

TEST(FilledEntriesTest, UmsAccountsEndAtTheFirstEmptyDn)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser;
    std::memset(&stUser, 0, sizeof(stUser));
    std::strcpy(stUser.astUmsInfo[0].acDn, "+4969555014");
    std::strcpy(stUser.astUmsInfo[1].acDn, "+4969555099");
    std::strcpy(stUser.astUmsInfo[3].acDn, "+4969555000"); /* after the end: not shown */
    EXPECT_EQ(FilledEntries(Row(g_stAtriumUserInfoDesc, "astUmsInfo"), &stUser), 2u);
    EXPECT_EQ(RecordToJson(g_stAtriumUserInfoDesc, &stUser)["astUmsInfo"].size(), 2u);
}

TEST(FilledEntriesTest, FixedSlotsAreAllShownInJsonAndOnlySetOnesInText)
{
    tagLOGIN_S_ACCESS_SERVER stGroup;
    std::memset(&stGroup, 0, sizeof(stGroup));
    std::strcpy(stGroup.aacMsUri[2], "10.0.0.3:9000");
    const Json::Value jsGroup = RecordToJson(g_stAccessServerDesc, &stGroup);
    ASSERT_EQ(jsGroup["aacMsUri"].size(), 8u);
    EXPECT_EQ(jsGroup["aacMsUri"][2].asString(), "10.0.0.3:9000");

    std::ostringstream os;
    PrintRecordText(os, g_stAccessServerDesc, &stGroup, 0);
    EXPECT_NE(os.str().find("aacMsUri          1 of 8 set\n  [2]  \"10.0.0.3:9000\"\n"), std::string::npos) << os.str();
}

TEST(FilledEntriesTest, ANullHeapArrayHasNoEntriesWhateverItsCounterSays)
{
    tagLOGIN_S_SITE stSite;
    std::memset(&stSite, 0, sizeof(stSite));
    stSite.uiNumOfAccessServer = 3;
    EXPECT_EQ(FilledEntries(Row(g_stSiteDesc, "pstAccessServer"), &stSite), 0u);
    EXPECT_TRUE(RecordToJson(g_stSiteDesc, &stSite)["pstAccessServer"].isNull());
}

/* ---- printing ---------------------------------------------------------------------- */

TEST(RecordPrintTest, JsonShowsEveryFieldByNameWithNumbersAsNumbers)
{
    tagLOGIN_S_ATRIUM_TOKEN_INFO stInfo;
    std::memset(&stInfo, 0, sizeof(stInfo));
    std::strcpy(stInfo.acAccessToken, "tok");
    stInfo.iExpireIn = -5;
    const Json::Value jsInfo = RecordToJson(g_stAtriumTokenInfoDesc, &stInfo);
    EXPECT_EQ(jsInfo.getMemberNames(),
              (std::vector<std::string>{"acAccessToken", "acAccount", "acPassword", "iExpireIn"}));
    EXPECT_EQ(jsInfo["acAccessToken"].asString(), "*** (3 bytes)") << "a secret is masked by default";
    EXPECT_TRUE(jsInfo["iExpireIn"].isInt());
    EXPECT_EQ(jsInfo["iExpireIn"].asInt(), -5);
    EXPECT_EQ(jsInfo["acAccount"].asString(), "");
    EXPECT_EQ(jsInfo["acPassword"].asString(), "") << "an empty secret has nothing to hide";
}

TEST(RecordPrintTest, SecretsPrintAsTheyAreOnlyWhenAskedFor)
{
    tagLOGIN_S_ATRIUM_TOKEN_INFO stInfo;
    std::memset(&stInfo, 0, sizeof(stInfo));
    std::strcpy(stInfo.acPassword, "s3cret");
    std::ostringstream osMasked;
    PrintRecordText(osMasked, g_stAtriumTokenInfoDesc, &stInfo, 0);
    EXPECT_NE(osMasked.str().find("acPassword     *** (6 bytes)\n"), std::string::npos) << osMasked.str();
    EXPECT_EQ(osMasked.str().find("s3cret"), std::string::npos);

    ShowSecrets(true);
    std::ostringstream osShown;
    PrintRecordText(osShown, g_stAtriumTokenInfoDesc, &stInfo, 0);
    const Json::Value jsShown = RecordToJson(g_stAtriumTokenInfoDesc, &stInfo);
    ShowSecrets(false);
    EXPECT_NE(osShown.str().find("acPassword     \"s3cret\"\n"), std::string::npos) << osShown.str();
    EXPECT_EQ(jsShown["acPassword"].asString(), "s3cret");
}

TEST(RecordDescTest, EveryPasswordTokenAndKeyIsMarkedSecret)
{
    /* texts that hold passwords, tokens, the device key or the random key, by their names */
    const std::regex reSecretName("Pwd|Passw|Token|DevKey|acRandom");
    size_t uiSecrets = 0;
    for (const RecordDesc *pstRecord : AllRecords()) {
        for (const FieldDesc &stField : *pstRecord) {
            const bool bLooksSecret =
                stField.eKind == FieldKind::Text && std::regex_search(stField.pcName, reSecretName);
            EXPECT_EQ(stField.bSecret, bLooksSecret) << pstRecord->pcName << "." << stField.pcName;
            uiSecrets += stField.bSecret ? 1 : 0;
        }
    }
    EXPECT_EQ(uiSecrets, 19u);
}

TEST(RecordPrintTest, TextAlignsValuesAndIndentsNestedRecords)
{
    tagXML_S_TANDEM_LOGIN_RESULT stResult;
    std::memset(&stResult, 0, sizeof(stResult));
    stResult.stResult.uiResultCode = 20002;
    std::strcpy(stResult.stAtrium.acAddress[0], "https://portal-fra.corp.example");
    stResult.stAtrium.uiAtriumNum = 1;
    std::ostringstream os;
    PrintRecordText(os, g_stTandemLoginResultDesc, &stResult, 2);
    const std::string strText = os.str();
    EXPECT_EQ(strText.substr(0, strText.find("  stProfile")), "  stResult   tagXML_S_TANDEM_RESULT\n"
                                                              "    uiResultCode  20002\n"
                                                              "    acResultDesc  \"\"\n");
    EXPECT_NE(strText.find("  stAtrium   tagXML_S_TANDEM_ATRIUM\n"
                           "    uiAtriumNum  1\n"
                           "    acAddress    1 of 6\n"
                           "      [0]  \"https://portal-fra.corp.example\"\n"),
              std::string::npos)
        << strText;
}

/* ---- reading requests -------------------------------------------------------------- */

Json::Value ParseJson(const std::string &strText)
{
    Json::CharReaderBuilder stBuilder;
    std::unique_ptr<Json::CharReader> pReader(stBuilder.newCharReader());
    Json::Value jsRoot;
    std::string strErrors;
    EXPECT_TRUE(pReader->parse(strText.data(), strText.data() + strText.size(), &jsRoot, &strErrors)) << strErrors;
    return jsRoot;
}

TEST(RecordFromJsonTest, WhatIsPrintedReadsBackToTheSameBytes)
{
    tagLOGIN_S_UNICALL_CFG stCfg;
    std::memset(&stCfg, 0, sizeof(stCfg));
    stCfg.uiOperate = 1;
    std::strcpy(stCfg.acDspNum, "+4969555014");
    stCfg.uiUniCallBeanNum = 2;
    std::strcpy(stCfg.astUniCallBean[1].acRuleId, "rule-2");
    std::strcpy(stCfg.astUniCallBean[1].aacCalleeList[0], "+4915155501401");
    stCfg.astUniCallBean[1].uiCalleeNum = 1;
    std::strcpy(stCfg.astUniCallBean[1].acStartTime, "0800");

    tagLOGIN_S_UNICALL_CFG stBack;
    std::memset(&stBack, 0, sizeof(stBack));
    std::string strError;
    ASSERT_TRUE(RecordFromJson(g_stUniCallCfgDesc, RecordToJson(g_stUniCallCfgDesc, &stCfg), &stBack, strError))
        << strError;
    EXPECT_EQ(std::memcmp(&stCfg, &stBack, sizeof(stCfg)), 0);
}

TEST(RecordFromJsonTest, ACountedArrayGivenWithoutItsCounterCountsItsEntries)
{
    tagLOGIN_S_LINKED_PHONE_INFO stInfo;
    std::memset(&stInfo, 0, sizeof(stInfo));
    std::string strError;
    ASSERT_TRUE(RecordFromJson(g_stLinkedPhoneInfoDesc,
                               ParseJson(R"({"astLinkedPhone": [{"acImpu": "sip:a@x"}, {"acImpu": "sip:b@x"}]})"),
                               &stInfo, strError))
        << strError;
    EXPECT_EQ(stInfo.uiImpuNum, 2u);
    EXPECT_STREQ(stInfo.astLinkedPhone[1].acImpu, "sip:b@x");
}

struct BadRequest {
    const char *pcJson;
    const char *pcError;
};

class RecordFromJsonErrorTest : public ::testing::TestWithParam<BadRequest> {};

TEST_P(RecordFromJsonErrorTest, ARefusalNamesTheField)
{
    tagLOGIN_S_UNICALL_CFG stCfg;
    std::memset(&stCfg, 0, sizeof(stCfg));
    std::string strError;
    EXPECT_FALSE(RecordFromJson(g_stUniCallCfgDesc, ParseJson(GetParam().pcJson), &stCfg, strError));
    EXPECT_EQ(strError, GetParam().pcError);
}

INSTANTIATE_TEST_SUITE_P(
    Requests, RecordFromJsonErrorTest,
    ::testing::Values(
        BadRequest{R"([1, 2])", "tagLOGIN_S_UNICALL_CFG: expected an object (tagLOGIN_S_UNICALL_CFG)"},
        BadRequest{R"({"uiOperat": 1})", "uiOperat: no such field in tagLOGIN_S_UNICALL_CFG"},
        BadRequest{R"({"uiOperate": -1})", "uiOperate: expected a number from 0 to 4294967295"},
        BadRequest{R"({"uiOperate": "1"})", "uiOperate: expected a number from 0 to 4294967295"},
        BadRequest{R"({"acDspNum": 5})", "acDspNum: expected a text"},
        BadRequest{R"({"acErrorCode": "123456789012"})",
                   "acErrorCode: text of 12 bytes does not fit its 12-byte field"},
        BadRequest{R"({"astUniCallBean": [{"acStartDate": "20240101"}]})",
                   "astUniCallBean[0].acStartDate: text of 8 bytes does not fit its 8-byte field"},
        BadRequest{R"({"astUniCallBean": [{"aacCalleeList": [1]}]})",
                   "astUniCallBean[0].aacCalleeList[0]: expected a text"},
        BadRequest{R"({"astUniCallBean": {}})", "astUniCallBean: expected an array"},
        BadRequest{R"({"astUniCallBean": [{"x": 1}]})",
                   "astUniCallBean[0].x: no such field in tagLOGIN_S_UNICALL_BEAN"},
        BadRequest{R"({"astUniCallBean": [[]]})", "astUniCallBean[0]: expected an object (tagLOGIN_S_UNICALL_BEAN)"},
        BadRequest{R"({"uiUniCallBeanNum": 21})", "uiUniCallBeanNum: 21 exceeds the 20 entries of astUniCallBean"},
        BadRequest{R"({"astUniCallBean": [{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{}]})",
                   "astUniCallBean: 21 entries given, the field holds 20"}),
    /* Named by their place in the list: the default name would be the bytes of the two
     * pointers, which differ from run to run. */
    [](const ::testing::TestParamInfo<BadRequest> &stInfo) { return "Case" + std::to_string(stInfo.index); });

TEST(RecordFromJsonTest, APointerCannotBeGiven)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser;
    std::memset(&stUser, 0, sizeof(stUser));
    std::string strError;
    EXPECT_FALSE(RecordFromJson(g_stAtriumUserInfoDesc, ParseJson(R"({"pstSiteInfo": {}})"), &stUser, strError));
    EXPECT_EQ(strError, "pstSiteInfo: is set by the module and cannot be given");
    EXPECT_TRUE(RecordFromJson(g_stAtriumUserInfoDesc, ParseJson(R"({"pstSiteInfo": null})"), &stUser, strError));
}

/* ---- release and lookup ------------------------------------------------------------ */

class ReleaseRecordTest : public ModuleTest {};

TEST_F(ReleaseRecordTest, ReleasesTheSelectedSiteTheSipServersAndTheExtraParameters)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser;
    std::memset(&stUser, 0, sizeof(stUser));
    stUser.pstSiteInfo =
        static_cast<tagLOGIN_S_SITE *>(KOSA_MemMallocS(sizeof(tagLOGIN_S_SITE), 0, __LINE__, __FILE__));
    ASSERT_NE(stUser.pstSiteInfo, nullptr);
    stUser.pstSiteInfo->uiNumOfAccessServer = 2;
    stUser.pstSiteInfo->pstAccessServer = static_cast<tagLOGIN_S_ACCESS_SERVER *>(
        KOSA_MemMallocS(2 * sizeof(tagLOGIN_S_ACCESS_SERVER), 0, __LINE__, __FILE__));
    stUser.stSipServerList.uiNum = 1;
    stUser.stSipServerList.pstServer = static_cast<tagLOGIN_S_SERVER_ADDR_INFO *>(
        KOSA_MemMallocS(sizeof(tagLOGIN_S_SERVER_ADDR_INFO), 0, __LINE__, __FILE__));
    stUser.uiExtraParmNum = 1;
    stUser.pstExtraParm =
        static_cast<tagLOGIN_S_EXTRA_PARM *>(KOSA_MemMallocS(sizeof(tagLOGIN_S_EXTRA_PARM), 0, __LINE__, __FILE__));
    ASSERT_EQ(LiveBlocksSinceStart(), 4u);

    ReleaseRecord(g_stAtriumUserInfoDesc, &stUser);

    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
    EXPECT_EQ(stUser.pstSiteInfo, nullptr);
    EXPECT_EQ(stUser.stSipServerList.pstServer, nullptr);
    EXPECT_EQ(stUser.pstExtraParm, nullptr);
    EXPECT_EQ(stUser.uiExtraParmNum, 1u); /* counts are left as the parser wrote them */
}

TEST_F(ReleaseRecordTest, ReleasesTheDecodedNearbyAccessBlock)
{
    tagTOOL_S_SERVICE_TP stOut{static_cast<char *>(KOSA_MemMallocS(8, 0, __LINE__, __FILE__))};
    ASSERT_EQ(LiveBlocksSinceStart(), 1u);
    ReleaseRecord(g_stServiceTpDesc, &stOut);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
    EXPECT_EQ(stOut.pcServiceTp, nullptr);
}

TEST(ReadU32Test, ReadsANumberThroughNestedRecords)
{
    tagXML_S_TANDEM_LOGIN_RESULT stResult;
    std::memset(&stResult, 0, sizeof(stResult));
    stResult.stResult.uiResultCode = 401;
    uint32_t uiValue = 0;
    EXPECT_TRUE(ReadU32(g_stTandemLoginResultDesc, &stResult, "stResult.uiResultCode", uiValue));
    EXPECT_EQ(uiValue, 401u);
    EXPECT_FALSE(ReadU32(g_stTandemLoginResultDesc, &stResult, "stResult.acResultDesc", uiValue));
    EXPECT_FALSE(ReadU32(g_stTandemLoginResultDesc, &stResult, "stResult", uiValue));
    EXPECT_FALSE(ReadU32(g_stTandemLoginResultDesc, &stResult, "stNothing.uiX", uiValue));
}

} // namespace
