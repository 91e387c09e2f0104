/*
 * Conference-server login answer: result, profile and the five conference-client blocks
 * (SIP, directory, STG, TMS, portal addresses), the refusal with its alternative portal
 * addresses, and the address lists with their uneven limits.
 */
#include <gmock/gmock.h>

#include <cstddef>
#include <string>
#include <vector>

#include "conference_test.h"

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using namespace conference_test;

namespace {

using LoginRecord = tagXML_S_TANDEM_LOGIN_RESULT;

const char *const FILE_PATH = "service/login/src/atrium_xml/conference.cpp";

std::string Result(const std::string &strCode = "0", const std::string &strDesc = "ok")
{
    return "<result><resultCode>" + strCode + "</resultCode><resultDesc>" + strDesc + "</resultDesc></result>";
}

std::string LoginAnswer(const std::string &strInner)
{
    return "<?xml version=\"1.0\"?><loginResult>" + strInner + "</loginResult>";
}

std::string ClientInfo(const std::string &strInner)
{
    return "<conferenceClientInfo>" + strInner + "</conferenceClientInfo>";
}

/* uiCount elements <strName>prefix-i</strName>. */
std::string Elements(const std::string &strName, uint32_t uiCount, const std::string &strPrefix = "addr")
{
    std::string strRun;
    for (uint32_t i = 0; i < uiCount; ++i) {
        strRun += "<" + strName + ">" + strPrefix + "-" + std::to_string(i) + "</" + strName + ">";
    }
    return strRun;
}

/* A sentinel record whose dumped text fields still end in a terminator. */
LoginRecord DumpSafeSentinel()
{
    LoginRecord stRecord = SentinelRecord<LoginRecord>();
    for (char *pcField : {stRecord.stProfile.acSupportMediaTypes, stRecord.stSip.acDomain, stRecord.stSip.acProxy,
                          stRecord.stEua.acAddress[0], stRecord.stEua.acBaseDN, stRecord.stEua.acUserName,
                          stRecord.stStg.acUserName, stRecord.stTms.acUserName}) {
        pcField[127] = '\0';
    }
    return stRecord;
}

class TandemLoginTest : public ModuleTest {};

/* ---- argument check and parse failures -------------------------------------------- */

TEST_F(TandemLoginTest, NullBodyYieldsTwoAndTouchesNothing)
{
    LoginRecord stRecord = DumpSafeSentinel();
    const LoginRecord stBefore = stRecord;
    EXPECT_EQ(XmlParseTandmLoginResult(nullptr, &stRecord), 2u);
    EXPECT_TRUE(SameBytes(stRecord, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 Tandem: Conf Login Parse download xmlBody pointer empty!"));
}

TEST_F(TandemLoginTest, NullRecordYieldsTwoWithoutParsing)
{
    const std::string strBody = LoginAnswer(Result());
    EXPECT_EQ(XmlParseTandmLoginResult(strBody.c_str(), nullptr), 2u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 Tandem: Conf Login Parse download xmlBody pointer empty!"));
}

TEST_F(TandemLoginTest, TextThatIsNotXmlYieldsTheLibraryCodeUnchanged)
{
    for (const char *const *ppcBody = NotXmlBodies(); *ppcBody != nullptr; ++ppcBody) {
        m_traces.Clear();
        const uint32_t uiCode = LibraryParseCode(*ppcBody);
        ASSERT_GT(uiCode, 255u) << *ppcBody;
        LoginRecord stRecord = DumpSafeSentinel();
        const LoginRecord stBefore = stRecord;

        EXPECT_EQ(XmlParseTandmLoginResult(*ppcBody, &stRecord), uiCode) << *ppcBody;

        EXPECT_TRUE(SameBytes(stRecord, stBefore)) << *ppcBody;
        EXPECT_THAT(m_traces.Texts(),
                    ElementsAre(At(0, Format("Tandem: Conf Login KTL_XML_Parse failed errno=[0x%x]!", uiCode))))
            << *ppcBody;
    }
}

/* ---- complete answers --------------------------------------------------------------- */

TEST_F(TandemLoginTest, CompleteSuccessAnswerFillsEveryField)
{
    LoginRecord stRecord{};
    const std::string strBody = ReadTestFile("conference/login-success.xml");

    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_EQ(stRecord.stResult.uiResultCode, 0u);
    EXPECT_STREQ(stRecord.stResult.acResultDesc, "success");
    EXPECT_STREQ(stRecord.stProfile.acToken, "c1f0a7d2-4e8b-4f3a-9d61-2b7e5c0a9f44");
    EXPECT_STREQ(stRecord.stProfile.acSupportMediaTypes, "audio,video,data");

    EXPECT_STREQ(stRecord.stSip.acDomain, "conf.corp.example");
    EXPECT_STREQ(stRecord.stSip.acProxy, "10.20.30.40:5061");
    EXPECT_STREQ(stRecord.stSip.acUserName, "+4930123456@conf.corp.example");
    EXPECT_STREQ(stRecord.stSip.acPassword, "s1p-Secret");
    EXPECT_STREQ(stRecord.stSip.acAuthName, "4930123456");

    ASSERT_EQ(stRecord.stEua.uiAddressNum, 3u);
    EXPECT_STREQ(stRecord.stEua.acAddress[0], "ldap://10.1.1.1:389");
    EXPECT_STREQ(stRecord.stEua.acAddress[1], "ldap://10.1.1.2:389");
    EXPECT_STREQ(stRecord.stEua.acAddress[2], "ldaps://eua.corp.example:636");
    EXPECT_STREQ(stRecord.stEua.acAddress[3], "");
    EXPECT_STREQ(stRecord.stEua.acUserName, "cn=conf,ou=svc");
    EXPECT_STREQ(stRecord.stEua.acPassword, "eua-Secret");
    EXPECT_STREQ(stRecord.stEua.acBaseDN, "dc=corp,dc=example");

    ASSERT_EQ(stRecord.stStg.uiStgNum, 2u);
    EXPECT_STREQ(stRecord.stStg.acStgAddress[0], "203.0.113.10:443");
    EXPECT_STREQ(stRecord.stStg.acStgAddress[1], "203.0.113.11:443");
    ASSERT_EQ(stRecord.stStg.uiSbcNum, 1u);
    EXPECT_STREQ(stRecord.stStg.acSbcInnerAddress[0], "192.168.50.5:5060");
    EXPECT_STREQ(stRecord.stStg.acUserName, "stg-user");
    EXPECT_STREQ(stRecord.stStg.acPassword, "stg-Secret");

    ASSERT_EQ(stRecord.stTms.uiTmsNum, 1u);
    EXPECT_STREQ(stRecord.stTms.acAddress[0], "https://tms.corp.example:8443");
    EXPECT_STREQ(stRecord.stTms.acUserName, "tms-user");
    EXPECT_STREQ(stRecord.stTms.acPassword, "tms-Secret");

    ASSERT_EQ(stRecord.stAtrium.uiAtriumNum, 2u);
    EXPECT_STREQ(stRecord.stAtrium.acAddress[0], "https://portal1.corp.example");
    EXPECT_STREQ(stRecord.stAtrium.acAddress[1], "https://portal2.corp.example");

    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("L3 resultcode: 0", "L3 mediatypes: audio,video,data",
                            "L3 acDomain: conf.corp.example, acProxy: 10.20.30.40:5061",
                            "L3 acAddress: ldap://10.1.1.1:389, acBaseDN: dc=corp,dc=example, "
                            "acUserName: cn=conf,ou=svc",
                            "L3 stgnum: 2, uiSbcNum: 1, acUserName: stg-user", "L3 tmsnum: 1, acUserName: tms-user",
                            "L3 atrium num: 2"));
}

TEST_F(TandemLoginTest, DumpsAreTracedByTheExportedParser)
{
    LoginRecord stRecord{};
    const std::string strBody = ReadTestFile("conference/login-success.xml");
    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);
    const std::vector<TraceLine> vecLines = m_traces.Lines();
    ASSERT_EQ(vecLines.size(), 7u);
    for (const TraceLine &stLine : vecLines) {
        EXPECT_EQ(stLine.strFunc, "XmlParseTandmLoginResult");
        EXPECT_EQ(stLine.strFile, FILE_PATH);
        EXPECT_GT(stLine.uiLine, 0u);
    }
}

TEST_F(TandemLoginTest, RefusalWithFailBlockFillsOnlyResultAndPortalAddresses)
{
    LoginRecord stRecord = DumpSafeSentinel();
    const LoginRecord stBefore = stRecord;
    const std::string strBody = ReadTestFile("conference/login-refusal.xml");

    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_EQ(stRecord.stResult.uiResultCode, 0x193u);
    EXPECT_STREQ(stRecord.stResult.acResultDesc, "user not allowed on this conference server");
    ASSERT_EQ(stRecord.stAtrium.uiAtriumNum, 3u);
    EXPECT_STREQ(stRecord.stAtrium.acAddress[0], "https://portal-a.corp.example");
    EXPECT_STREQ(stRecord.stAtrium.acAddress[1], "https://portal-b.corp.example");
    EXPECT_STREQ(stRecord.stAtrium.acAddress[2], "https://portal-c.corp.example");
    EXPECT_TRUE(SameBytes(stRecord.stProfile, stBefore.stProfile));
    EXPECT_TRUE(SameBytes(stRecord.stSip, stBefore.stSip));
    EXPECT_TRUE(SameBytes(stRecord.stEua, stBefore.stEua));
    EXPECT_TRUE(SameBytes(stRecord.stStg, stBefore.stStg));
    EXPECT_TRUE(SameBytes(stRecord.stTms, stBefore.stTms));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L1 Not Find the logResult", "L3 resultcode: 403", "L3 atrium num: 3"));
}

TEST_F(TandemLoginTest, AnswerRootedAtResultIsParsedFromTheRoot)
{
    LoginRecord stRecord = DumpSafeSentinel();
    const LoginRecord stBefore = stRecord;
    const std::string strBody = "<result><resultDesc>refused</resultDesc><resultCode>7</resultCode></result>";

    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_EQ(stRecord.stResult.uiResultCode, 7u);
    EXPECT_STREQ(stRecord.stResult.acResultDesc, "refused");
    EXPECT_TRUE(SameBytes(stRecord.stAtrium, stBefore.stAtrium)) << "no fail block: nothing more is read";
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L1 Not Find the logResult", "L3 resultcode: 7"));
}

TEST_F(TandemLoginTest, LoginResultWithoutClientBlockReadsNothingMore)
{
    LoginRecord stRecord = DumpSafeSentinel();
    const LoginRecord stBefore = stRecord;
    const std::string strBody = LoginAnswer(Result("2", "denied"));

    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_EQ(stRecord.stResult.uiResultCode, 2u);
    EXPECT_TRUE(SameBytes(stRecord.stAtrium, stBefore.stAtrium));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L3 resultcode: 2"));
}

TEST_F(TandemLoginTest, FailBlockUnderTheLoginResultWrapperIsNotRead)
{
    /* The fail block is looked up as "result.failConferenceClientInfo" from the root, so it
     * is found only in an answer rooted at "result". */
    LoginRecord stRecord = DumpSafeSentinel();
    const LoginRecord stBefore = stRecord;
    const std::string strBody =
        LoginAnswer("<result><resultCode>1</resultCode><resultDesc>no</resultDesc><failConferenceClientInfo>"
                    "<atriumInfo><address>p</address></atriumInfo></failConferenceClientInfo></result>");

    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_TRUE(SameBytes(stRecord.stAtrium, stBefore.stAtrium));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L3 resultcode: 1"));
}

TEST_F(TandemLoginTest, ClientBlockWinsOverAFailBlock)
{
    LoginRecord stRecord{};
    const std::string strBody = LoginAnswer(
        "<result><resultCode>0</resultCode><resultDesc>ok</resultDesc><failConferenceClientInfo><atriumInfo>"
        "<address>fail-portal</address></atriumInfo></failConferenceClientInfo></result>" +
        ClientInfo("<atriumInfo><address>client-portal</address></atriumInfo>"));

    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);

    ASSERT_EQ(stRecord.stAtrium.uiAtriumNum, 1u);
    EXPECT_STREQ(stRecord.stAtrium.acAddress[0], "client-portal");
    EXPECT_EQ(m_traces.Count(LOGIN_TRACE_DUMP, "atrium num: 1"), 1u);
}

TEST_F(TandemLoginTest, FailBlockWithoutAddressesGivesAnEmptyList)
{
    LoginRecord stRecord = DumpSafeSentinel();
    const std::string strBody =
        "<result><resultCode>9</resultCode><resultDesc>d</resultDesc><failConferenceClientInfo/></result>";

    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_EQ(stRecord.stAtrium.uiAtriumNum, 0u);
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("L1 Not Find the logResult", "L3 resultcode: 9",
                            UrlMiss("failConferenceClientInfo.atriumInfo.address"), "L3 atrium num: 0"));
}

/* ---- the result element ----------------------------------------------------------- */

TEST_F(TandemLoginTest, NeitherLoginResultNorResultYieldsTheLookupCode)
{
    LoginRecord stRecord = DumpSafeSentinel();
    const LoginRecord stBefore = stRecord;
    const std::string strBody = "<answer><result><resultCode>0</resultCode></result></answer>";

    EXPECT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), KTL_XML_ERR_NOT_FOUND);

    EXPECT_TRUE(SameBytes(stRecord, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L1 Not Find the logResult", "L0 Not Find the result"));
}

TEST_F(TandemLoginTest, LoginResultWithoutResultElementYieldsTheLookupCode)
{
    LoginRecord stRecord{};
    const std::string strBody = LoginAnswer(ClientInfo("<serviceDomain>d</serviceDomain>"));

    EXPECT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), KTL_XML_ERR_NOT_FOUND);

    EXPECT_STREQ(stRecord.stSip.acDomain, "") << "nothing after the result is read";
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L1 Not Find the logResult", "L0 Not Find the result"));
}

TEST_F(TandemLoginTest, MissingResultCodeFailsWithOneAndWritesNothing)
{
    LoginRecord stRecord = DumpSafeSentinel();
    const LoginRecord stBefore = stRecord;
    const std::string strBody =
        LoginAnswer("<result><resultDesc>ok</resultDesc></result>" + ClientInfo("<serviceDomain>d</serviceDomain>"));

    EXPECT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 1u);

    EXPECT_TRUE(SameBytes(stRecord, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("result.resultCode"), "L0 resultCode empty",
                                              "L0 Tandem: Conf Create ParseConfInfo failed errno=[0x1]!"));
}

TEST_F(TandemLoginTest, EmptyResultCodeCountsAsMissing)
{
    LoginRecord stRecord = DumpSafeSentinel();
    const LoginRecord stBefore = stRecord;
    const std::string strBody = LoginAnswer("<result><resultCode/><resultDesc>ok</resultDesc></result>");

    EXPECT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 1u);

    EXPECT_TRUE(SameBytes(stRecord, stBefore));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("L0 resultCode empty", "L0 Tandem: Conf Create ParseConfInfo failed errno=[0x1]!"));
}

TEST_F(TandemLoginTest, MissingResultDescFailsWithOneAfterTheCodeWasWritten)
{
    LoginRecord stRecord = DumpSafeSentinel();
    const LoginRecord stBefore = stRecord;
    const std::string strBody = LoginAnswer("<result><resultCode>12</resultCode></result>" +
                                            ClientInfo("<serviceDomain>d</serviceDomain>"));

    EXPECT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 1u);

    EXPECT_EQ(stRecord.stResult.uiResultCode, 12u);
    EXPECT_EQ(0, std::memcmp(stRecord.stResult.acResultDesc, stBefore.stResult.acResultDesc,
                             sizeof(stRecord.stResult.acResultDesc)));
    EXPECT_TRUE(SameBytes(stRecord.stSip, stBefore.stSip));
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("result.resultDesc"), "L0 resultDesc empty",
                                              "L0 Tandem: Conf Create ParseConfInfo failed errno=[0x1]!"));
}

TEST_F(TandemLoginTest, ResultKeyMissesAreTracedByTheResultSubParser)
{
    LoginRecord stRecord{};
    const std::string strBody = LoginAnswer("<result><resultCode>1</resultCode></result>");
    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 1u);
    const std::vector<TraceLine> vecLines = m_traces.Lines();
    ASSERT_EQ(vecLines.size(), 3u);
    EXPECT_EQ(vecLines[0].strFunc, "XmlTandemParseResult");
    EXPECT_EQ(vecLines[1].strFunc, "XmlTandemParseResult");
    EXPECT_EQ(vecLines[0].uiLine, vecLines[1].uiLine);
    EXPECT_EQ(vecLines[2].strFunc, "XmlParseTandmLoginResult");
}

TEST_F(TandemLoginTest, ResultCodeIsConvertedInBaseZero)
{
    const struct {
        const char *pcText;
        uint32_t uiExpected;
    } astCases[] = {{"0x10", 16}, {"010", 8}, {"401", 401}, {"abc", 0}};
    for (const auto &stCase : astCases) {
        m_traces.Clear();
        LoginRecord stRecord{};
        const std::string strBody = LoginAnswer(Result(stCase.pcText));
        ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u) << stCase.pcText;
        EXPECT_EQ(stRecord.stResult.uiResultCode, stCase.uiExpected) << stCase.pcText;
        EXPECT_THAT(m_traces.Texts(), ElementsAre(At(3, Format("resultcode: %u", stCase.uiExpected))));
    }
}

TEST_F(TandemLoginTest, TooLongResultDescIsLeftEmpty)
{
    LoginRecord stRecord{};
    std::strcpy(stRecord.stResult.acResultDesc, "previous");
    const std::string strBody = LoginAnswer(Result("0", std::string(256, 'd')));
    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);
    EXPECT_STREQ(stRecord.stResult.acResultDesc, "");
}

/* ---- profile ------------------------------------------------------------------------ */

TEST_F(TandemLoginTest, SuccessWithoutProfileLeavesProfileUntouched)
{
    LoginRecord stRecord = DumpSafeSentinel();
    const LoginRecord stBefore = stRecord;
    const std::string strBody = LoginAnswer(Result() + ClientInfo("<serviceDomain>dom</serviceDomain>"));

    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_TRUE(SameBytes(stRecord.stProfile, stBefore.stProfile));
    EXPECT_STREQ(stRecord.stSip.acDomain, "dom");
    EXPECT_EQ(m_traces.TextsAt(3).size(), 6u) << "resultcode and the five block dumps, no mediatypes";
    EXPECT_EQ(m_traces.TextsAt(3)[1].rfind("acDomain: dom, acProxy: ", 0), 0u);
}

TEST_F(TandemLoginTest, ProfileKeysAreOptional)
{
    LoginRecord stRecord{};
    std::strcpy(stRecord.stProfile.acSupportMediaTypes, "kept");
    const std::string strBody = LoginAnswer(Result() + "<profile><token>tk</token></profile>");

    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_STREQ(stRecord.stProfile.acToken, "tk");
    EXPECT_STREQ(stRecord.stProfile.acSupportMediaTypes, "kept");
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("L3 resultcode: 0", UrlMiss("profile.supportMediaTypes"), "L3 mediatypes: kept"));
    EXPECT_EQ(m_traces.Lines()[1].strFunc, "XmlTandemParseProfile");
}

TEST_F(TandemLoginTest, EmptyProfileTracesBothMisses)
{
    LoginRecord stRecord{};
    const std::string strBody = LoginAnswer(Result() + "<profile/>");
    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L3 resultcode: 0", UrlMiss("profile.token"),
                                              UrlMiss("profile.supportMediaTypes"), "L3 mediatypes: "));
}

/* ---- conference-client blocks ------------------------------------------------------ */

TEST_F(TandemLoginTest, EmptyClientBlockKeepsTextFieldsAndResetsOnlyTheCounters)
{
    LoginRecord stRecord = DumpSafeSentinel();
    const LoginRecord stBefore = stRecord;
    const std::string strBody = LoginAnswer(Result() + "<conferenceClientInfo/>");

    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_TRUE(SameBytes(stRecord.stSip, stBefore.stSip));
    EXPECT_EQ(stRecord.stEua.uiAddressNum, 0u);
    EXPECT_EQ(stRecord.stStg.uiStgNum, 0u);
    EXPECT_EQ(stRecord.stStg.uiSbcNum, 0u);
    EXPECT_EQ(stRecord.stTms.uiTmsNum, 0u);
    EXPECT_EQ(stRecord.stAtrium.uiAtriumNum, 0u);
    /* Everything but the five counters is as the caller left it. */
    LoginRecord stExpected = stBefore;
    stExpected.stEua.uiAddressNum = 0;
    stExpected.stStg.uiStgNum = 0;
    stExpected.stStg.uiSbcNum = 0;
    stExpected.stTms.uiTmsNum = 0;
    stExpected.stAtrium.uiAtriumNum = 0;
    stExpected.stResult = stRecord.stResult;
    EXPECT_TRUE(SameBytes(stRecord, stExpected));
}

TEST_F(TandemLoginTest, EmptyClientBlockTracesInBlockOrderWithTheSubParsersNames)
{
    LoginRecord stRecord{};
    const std::string strBody = LoginAnswer(Result() + "<conferenceClientInfo/>");

    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("L3 resultcode: 0", UrlMiss("conferenceClientInfo.serviceDomain"),
                            UrlMiss("conferenceClientInfo.proxyServer"), UrlMiss("conferenceClientInfo.userName"),
                            UrlMiss("conferenceClientInfo.userPassword"),
                            UrlMiss("conferenceClientInfo.authorizedName"),
                            "L3 acDomain: , acProxy: ", UrlMiss("conferenceClientInfo.euaInfo.address"),
                            UrlMiss("conferenceClientInfo.euaInfo.userName"),
                            UrlMiss("conferenceClientInfo.euaInfo.password"),
                            UrlMiss("conferenceClientInfo.euaInfo.baseDN"), "L3 acAddress: , acBaseDN: , acUserName: ",
                            UrlMiss("conferenceClientInfo.stgInfo.userName"),
                            UrlMiss("conferenceClientInfo.stgInfo.password"),
                            UrlMiss("conferenceClientInfo.stgInfo.stgAddress"),
                            UrlMiss("conferenceClientInfo.stgInfo.sbcInnerAddress"),
                            "L3 stgnum: 0, uiSbcNum: 0, acUserName: ", UrlMiss("conferenceClientInfo.tmsInfo.userName"),
                            UrlMiss("conferenceClientInfo.tmsInfo.password"),
                            UrlMiss("conferenceClientInfo.tmsInfo.address"), "L3 tmsnum: 0, acUserName: ",
                            UrlMiss("conferenceClientInfo.atriumInfo.address"), "L3 atrium num: 0"));

    const char *const apcFuncs[] = {
        "XmlParseTandmLoginResult", "XmlTandemParseSip", "XmlTandemParseSip", "XmlTandemParseSip",
        "XmlTandemParseSip",        "XmlTandemParseSip", "XmlParseTandmLoginResult", "XmlTandemParseEua",
        "XmlTandemParseEua",        "XmlTandemParseEua", "XmlTandemParseEua", "XmlParseTandmLoginResult",
        "XmlTandemParseStg",        "XmlTandemParseStg", "XmlTandemParseStg", "XmlTandemParseStg",
        "XmlParseTandmLoginResult", "XmlTandemParseTms", "XmlTandemParseTms", "XmlTandemParseTms",
        "XmlParseTandmLoginResult", "XmlTandemParseAtrium", "XmlParseTandmLoginResult",
    };
    const std::vector<TraceLine> vecLines = m_traces.Lines();
    ASSERT_EQ(vecLines.size(), std::size(apcFuncs));
    for (size_t i = 0; i < vecLines.size(); ++i) {
        EXPECT_EQ(vecLines[i].strFunc, apcFuncs[i]) << "trace " << i;
        EXPECT_EQ(vecLines[i].strFile, FILE_PATH) << "trace " << i;
    }
}

TEST_F(TandemLoginTest, SingleElementsMayComeInAnyOrder)
{
    LoginRecord stRecord{};
    const std::string strBody =
        "<loginResult>" +
        ClientInfo("<authorizedName>auth</authorizedName><tmsInfo><address>t1</address><password>tp</password>"
                   "<userName>tu</userName></tmsInfo><userName>user</userName><proxyServer>proxy</proxyServer>"
                   "<euaInfo><baseDN>dn</baseDN><address>e1</address><address>e2</address></euaInfo>"
                   "<serviceDomain>dom</serviceDomain><userPassword>pw</userPassword>") +
        "<profile><supportMediaTypes>audio</supportMediaTypes><token>t</token></profile>" +
        "<result><resultDesc>d</resultDesc><resultCode>0</resultCode></result></loginResult>";

    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_STREQ(stRecord.stSip.acDomain, "dom");
    EXPECT_STREQ(stRecord.stSip.acProxy, "proxy");
    EXPECT_STREQ(stRecord.stSip.acUserName, "user");
    EXPECT_STREQ(stRecord.stSip.acPassword, "pw");
    EXPECT_STREQ(stRecord.stSip.acAuthName, "auth");
    EXPECT_STREQ(stRecord.stProfile.acToken, "t");
    EXPECT_STREQ(stRecord.stProfile.acSupportMediaTypes, "audio");
    EXPECT_EQ(stRecord.stEua.uiAddressNum, 2u);
    EXPECT_STREQ(stRecord.stEua.acBaseDN, "dn");
    EXPECT_EQ(stRecord.stTms.uiTmsNum, 1u);
    EXPECT_STREQ(stRecord.stTms.acUserName, "tu");
    EXPECT_STREQ(stRecord.stTms.acPassword, "tp");
}

TEST_F(TandemLoginTest, BaseDnOfFullCapacityIsLeftEmptyAndParsingGoesOn)
{
    LoginRecord stRecord{};
    std::strcpy(stRecord.stEua.acBaseDN, "previous");
    const std::string strBody =
        LoginAnswer(Result() + ClientInfo("<euaInfo><baseDN>" + std::string(128, 'b') + "</baseDN></euaInfo>"
                                          "<tmsInfo><userName>tms</userName></tmsInfo>"));

    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_STREQ(stRecord.stEua.acBaseDN, "");
    EXPECT_STREQ(stRecord.stTms.acUserName, "tms");
}

TEST_F(TandemLoginTest, BaseDnJustBelowCapacityFits)
{
    LoginRecord stRecord{};
    const std::string strDn(127, 'b');
    const std::string strBody = LoginAnswer(Result() + ClientInfo("<euaInfo><baseDN>" + strDn + "</baseDN></euaInfo>"));
    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);
    EXPECT_EQ(std::string(stRecord.stEua.acBaseDN), strDn);
}

TEST_F(TandemLoginTest, OtherFieldsTakeTwoHundredFiftyFiveCharacters)
{
    LoginRecord stRecord{};
    const std::string strFits(255, 'p');
    const std::string strBody = LoginAnswer(Result() + ClientInfo("<proxyServer>" + strFits + "</proxyServer>"
                                                                  "<userName>" + strFits + "x</userName>"));
    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);
    EXPECT_EQ(std::string(stRecord.stSip.acProxy), strFits);
    EXPECT_STREQ(stRecord.stSip.acUserName, "");
}

TEST_F(TandemLoginTest, RecordKeepsTheLayoutTheLoginServiceReads)
{
    EXPECT_LT(offsetof(LoginRecord, stResult), offsetof(LoginRecord, stProfile));
    EXPECT_LT(offsetof(LoginRecord, stProfile), offsetof(LoginRecord, stEua));
    EXPECT_LT(offsetof(LoginRecord, stEua), offsetof(LoginRecord, stSip));
    EXPECT_LT(offsetof(LoginRecord, stSip), offsetof(LoginRecord, stStg));
    EXPECT_LT(offsetof(LoginRecord, stStg), offsetof(LoginRecord, stTms));
    EXPECT_LT(offsetof(LoginRecord, stTms), offsetof(LoginRecord, stAtrium));
    EXPECT_EQ(sizeof(tagXML_S_TANDEM_EUA::acAddress), 18u * 256u);
    EXPECT_EQ(sizeof(tagXML_S_TANDEM_EUA::acBaseDN), 128u);
    EXPECT_EQ(sizeof(tagXML_S_TANDEM_STG::acStgAddress), 5u * 256u);
    EXPECT_EQ(sizeof(tagXML_S_TANDEM_STG::acSbcInnerAddress), 5u * 256u);
    EXPECT_EQ(sizeof(tagXML_S_TANDEM_TMS::acAddress), 5u * 256u);
    EXPECT_EQ(sizeof(tagXML_S_TANDEM_ATRIUM::acAddress), 6u * 256u);
}

/* ---- the address lists ------------------------------------------------------------- */

/* One address list of the answer: where its run goes and where the parser puts it. */
struct ListCase {
    const char *pcName;
    const char *pcElement;
    uint32_t uiLimit;
    const char *pcFirstPath;
    std::string (*pfnBody)(const std::string &strRun);
    uint32_t (*pfnCount)(const LoginRecord &stRecord);
    const char *(*pfnEntry)(const LoginRecord &stRecord, uint32_t uiIndex);
};

const ListCase g_astListCases[] = {
    {"Eua", "address", 18, "conferenceClientInfo.euaInfo.address",
     [](const std::string &strRun) { return LoginAnswer(Result() + ClientInfo("<euaInfo>" + strRun + "</euaInfo>")); },
     [](const LoginRecord &stRecord) { return stRecord.stEua.uiAddressNum; },
     [](const LoginRecord &stRecord, uint32_t i) { return static_cast<const char *>(stRecord.stEua.acAddress[i]); }},
    {"StgAddress", "stgAddress", 5, "conferenceClientInfo.stgInfo.stgAddress",
     [](const std::string &strRun) { return LoginAnswer(Result() + ClientInfo("<stgInfo>" + strRun + "</stgInfo>")); },
     [](const LoginRecord &stRecord) { return stRecord.stStg.uiStgNum; },
     [](const LoginRecord &stRecord, uint32_t i) { return static_cast<const char *>(stRecord.stStg.acStgAddress[i]); }},
    {"SbcInnerAddress", "sbcInnerAddress", 5, "conferenceClientInfo.stgInfo.sbcInnerAddress",
     [](const std::string &strRun) { return LoginAnswer(Result() + ClientInfo("<stgInfo>" + strRun + "</stgInfo>")); },
     [](const LoginRecord &stRecord) { return stRecord.stStg.uiSbcNum; },
     [](const LoginRecord &stRecord, uint32_t i) {
         return static_cast<const char *>(stRecord.stStg.acSbcInnerAddress[i]);
     }},
    {"Tms", "address", 5, "conferenceClientInfo.tmsInfo.address",
     [](const std::string &strRun) { return LoginAnswer(Result() + ClientInfo("<tmsInfo>" + strRun + "</tmsInfo>")); },
     [](const LoginRecord &stRecord) { return stRecord.stTms.uiTmsNum; },
     [](const LoginRecord &stRecord, uint32_t i) { return static_cast<const char *>(stRecord.stTms.acAddress[i]); }},
    {"Atrium", "address", 6, "conferenceClientInfo.atriumInfo.address",
     [](const std::string &strRun) {
         return LoginAnswer(Result() + ClientInfo("<atriumInfo>" + strRun + "</atriumInfo>"));
     },
     [](const LoginRecord &stRecord) { return stRecord.stAtrium.uiAtriumNum; },
     [](const LoginRecord &stRecord, uint32_t i) { return static_cast<const char *>(stRecord.stAtrium.acAddress[i]); }},
    {"RefusalAtrium", "address", 6, "failConferenceClientInfo.atriumInfo.address",
     [](const std::string &strRun) {
         return "<result><resultCode>1</resultCode><resultDesc>no</resultDesc><failConferenceClientInfo><atriumInfo>" +
                strRun + "</atriumInfo></failConferenceClientInfo></result>";
     },
     [](const LoginRecord &stRecord) { return stRecord.stAtrium.uiAtriumNum; },
     [](const LoginRecord &stRecord, uint32_t i) { return static_cast<const char *>(stRecord.stAtrium.acAddress[i]); }},
};

void PrintTo(const ListCase &stCase, std::ostream *pOut)
{
    *pOut << stCase.pcName;
}

class TandemAddressListTest : public ModuleTest, public ::testing::WithParamInterface<ListCase> {
protected:
    uint32_t Parse(const std::string &strRun, LoginRecord *pstRecord)
    {
        const std::string strBody = GetParam().pfnBody(strRun);
        return XmlParseTandmLoginResult(strBody.c_str(), pstRecord);
    }
    void ExpectEntries(const LoginRecord &stRecord, uint32_t uiCount)
    {
        ASSERT_EQ(GetParam().pfnCount(stRecord), uiCount);
        for (uint32_t i = 0; i < uiCount; ++i) {
            EXPECT_EQ(std::string(GetParam().pfnEntry(stRecord, i)), "addr-" + std::to_string(i)) << "entry " << i;
        }
    }
};

TEST_P(TandemAddressListTest, RunBelowTheLimitIsReadWhole)
{
    LoginRecord stRecord{};
    const uint32_t uiCount = GetParam().uiLimit - 1;
    ASSERT_EQ(Parse(Elements(GetParam().pcElement, uiCount), &stRecord), 0u);
    ExpectEntries(stRecord, uiCount);
    EXPECT_STREQ(GetParam().pfnEntry(stRecord, uiCount), "");
}

TEST_P(TandemAddressListTest, RunAtTheLimitIsReadWhole)
{
    LoginRecord stRecord{};
    ASSERT_EQ(Parse(Elements(GetParam().pcElement, GetParam().uiLimit), &stRecord), 0u);
    ExpectEntries(stRecord, GetParam().uiLimit);
}

TEST_P(TandemAddressListTest, RunAboveTheLimitStopsAtTheLimitWithoutATrace)
{
    LoginRecord stRecord{};
    ASSERT_EQ(Parse(Elements(GetParam().pcElement, GetParam().uiLimit + 2), &stRecord), 0u);
    ExpectEntries(stRecord, GetParam().uiLimit);
    for (const std::string &strText : m_traces.TextsAt(LOGIN_TRACE_MISS)) {
        EXPECT_EQ(strText.find(GetParam().pcFirstPath), std::string::npos) << strText;
    }
}

TEST_P(TandemAddressListTest, ForeignSiblingEndsTheRun)
{
    LoginRecord stRecord{};
    const std::string strElement = GetParam().pcElement;
    const std::string strRun = "<" + strElement + ">addr-0</" + strElement + "><other>x</other><" + strElement +
                               ">addr-1</" + strElement + ">";
    ASSERT_EQ(Parse(strRun, &stRecord), 0u);
    ExpectEntries(stRecord, 1);
}

TEST_P(TandemAddressListTest, ElementWithoutTextEndsTheRun)
{
    LoginRecord stRecord{};
    const std::string strElement = GetParam().pcElement;
    const std::string strRun = Elements(strElement, 2) + "<" + strElement + "/>" + "<" + strElement + ">late</" +
                               strElement + ">";
    ASSERT_EQ(Parse(strRun, &stRecord), 0u);
    ExpectEntries(stRecord, 2);
}

TEST_P(TandemAddressListTest, RunStartsAtTheFirstElementOfItsName)
{
    LoginRecord stRecord{};
    ASSERT_EQ(Parse("<other>x</other>" + Elements(GetParam().pcElement, 2), &stRecord), 0u);
    ExpectEntries(stRecord, 2);
}

TEST_P(TandemAddressListTest, FirstElementWithoutTextGivesAnEmptyList)
{
    LoginRecord stRecord{};
    const std::string strElement = GetParam().pcElement;
    ASSERT_EQ(Parse("<" + strElement + "></" + strElement + ">" + Elements(strElement, 2), &stRecord), 0u);
    ExpectEntries(stRecord, 0);
}

TEST_P(TandemAddressListTest, MissingListResetsTheCounterWithALookupTrace)
{
    LoginRecord stRecord = DumpSafeSentinel();
    ASSERT_EQ(Parse("<unrelated>x</unrelated>", &stRecord), 0u);
    EXPECT_EQ(GetParam().pfnCount(stRecord), 0u);
    EXPECT_EQ(m_traces.Count(LOGIN_TRACE_MISS, UrlMiss(GetParam().pcFirstPath).substr(3)), 1u);
}

TEST_P(TandemAddressListTest, EntryTooLongIsCountedButLeftEmpty)
{
    LoginRecord stRecord{};
    const std::string strElement = GetParam().pcElement;
    const std::string strRun = "<" + strElement + ">" + std::string(256, 'x') + "</" + strElement + "><" +
                               strElement + ">second</" + strElement + ">";
    ASSERT_EQ(Parse(strRun, &stRecord), 0u);
    ASSERT_EQ(GetParam().pfnCount(stRecord), 2u);
    EXPECT_STREQ(GetParam().pfnEntry(stRecord, 0), "");
    EXPECT_STREQ(GetParam().pfnEntry(stRecord, 1), "second");
}

INSTANTIATE_TEST_SUITE_P(Lists, TandemAddressListTest, ::testing::ValuesIn(g_astListCases),
                         [](const ::testing::TestParamInfo<ListCase> &stInfo) {
                             return std::string(stInfo.param.pcName);
                         });

TEST_F(TandemLoginTest, TwentyDirectoryAddressesYieldEighteen)
{
    LoginRecord stRecord{};
    const std::string strBody =
        LoginAnswer(Result() + ClientInfo("<euaInfo>" + Elements("address", 20) + "</euaInfo>"));
    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);
    EXPECT_EQ(stRecord.stEua.uiAddressNum, 18u);
    EXPECT_STREQ(stRecord.stEua.acAddress[17], "addr-17");
}

TEST_F(TandemLoginTest, SevenPortalAddressesYieldSix)
{
    LoginRecord stRecord{};
    const std::string strBody =
        LoginAnswer(Result() + ClientInfo("<atriumInfo>" + Elements("address", 7) + "</atriumInfo>"));
    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);
    EXPECT_EQ(stRecord.stAtrium.uiAtriumNum, 6u);
    EXPECT_STREQ(stRecord.stAtrium.acAddress[5], "addr-5");
    EXPECT_THAT(m_traces.TextsAt(3).back(), "atrium num: 6");
}

TEST_F(TandemLoginTest, SixStgAddressesYieldFive)
{
    LoginRecord stRecord{};
    const std::string strBody =
        LoginAnswer(Result() + ClientInfo("<stgInfo>" + Elements("stgAddress", 6) + "</stgInfo>"));
    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);
    EXPECT_EQ(stRecord.stStg.uiStgNum, 5u);
    EXPECT_EQ(stRecord.stStg.uiSbcNum, 0u);
}

TEST_F(TandemLoginTest, AddressThenForeignThenAddressYieldsOneEntry)
{
    LoginRecord stRecord{};
    const std::string strBody = LoginAnswer(
        Result() + ClientInfo("<euaInfo><address>a1</address><userName>u</userName><address>a2</address></euaInfo>"));
    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);
    EXPECT_EQ(stRecord.stEua.uiAddressNum, 1u);
    EXPECT_STREQ(stRecord.stEua.acAddress[0], "a1");
    EXPECT_STREQ(stRecord.stEua.acAddress[1], "");
    EXPECT_STREQ(stRecord.stEua.acUserName, "u");
}

TEST_F(TandemLoginTest, StgAndSbcRunsAreReadIndependently)
{
    LoginRecord stRecord{};
    const std::string strBody = LoginAnswer(
        Result() + ClientInfo("<stgInfo>" + Elements("stgAddress", 3, "stg") + Elements("sbcInnerAddress", 4, "sbc") +
                              "</stgInfo>"));
    ASSERT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), 0u);
    ASSERT_EQ(stRecord.stStg.uiStgNum, 3u);
    ASSERT_EQ(stRecord.stStg.uiSbcNum, 4u);
    EXPECT_STREQ(stRecord.stStg.acStgAddress[2], "stg-2");
    EXPECT_STREQ(stRecord.stStg.acSbcInnerAddress[3], "sbc-3");
    EXPECT_THAT(m_traces.TextsAt(3)[3], "stgnum: 3, uiSbcNum: 4, acUserName: ");
}

TEST_F(TandemLoginTest, TextOutsideTheRootIsRefusedWithTheLibraryCode)
{
    const std::string strBody = "200 OK\n" + LoginAnswer(Result());
    LoginRecord stRecord = DumpSafeSentinel();
    const LoginRecord stBefore = stRecord;

    EXPECT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stRecord), KTL_XML_ERR_TEXT_OUTSIDE_ROOT);

    EXPECT_TRUE(SameBytes(stRecord, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 Tandem: Conf Login KTL_XML_Parse failed errno=[0x1008]!"));
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
}

} // namespace
