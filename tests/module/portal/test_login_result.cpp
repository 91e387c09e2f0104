/*
 * Portal login answer: every step of the answer in order (token, extra parameters, account
 * facts, SIP identity with its fall-back, FuncType, sites with own and main site, further
 * servers, unified-messaging accounts), the misses that write defaults, the exact traces,
 * what is handed to the caller and the paths that fail or keep the document.
 */
#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "portal_test.h"

using ::testing::ElementsAre;
using ::testing::Pair;
using namespace portal_test;

namespace {

const char PARSER[] = "XmlParseAtriumLoginResult";
const char OWN_HOST[] = "portal-west.corp.example";

class LoginResultTest : public PortalUserTest {
protected:
    static std::string Token()
    {
        return "<LoginToken><AccessToken>tok</AccessToken><ExpireIn>60</ExpireIn></LoginToken>";
    }
    static std::string Answer(const std::string &strInner)
    {
        return "<?xml version=\"1.0\"?><UserInfo>" + Token() + strInner + "</UserInfo>";
    }
    /* One site; each group gets a SIP server 10.9.<site index>.<group index>. */
    static std::string Site(const std::string &strName, const std::string &strPriority, const std::string &strSsoHost,
                            const std::vector<std::string> &vecGroups)
    {
        std::string strSite = "<site";
        if (!strName.empty()) {
            strSite += " name=\"" + strName + "\"";
        }
        strSite += " priority=\"" + strPriority + "\">";
        if (!strSsoHost.empty()) {
            strSite += "<sso_hostname uri=\"" + strSsoHost + "\"/>";
        }
        if (!vecGroups.empty()) {
            strSite += "<accessservergroup>";
            for (size_t i = 0; i < vecGroups.size(); ++i) {
                strSite += "<accessserver name=\"" + vecGroups[i] + "\"><sip uri=\"10.9." +
                           std::to_string(vecGroups.size()) + "." + std::to_string(i + 1) + ":5060\"/></accessserver>";
            }
            strSite += "</accessservergroup>";
        }
        return strSite + "</site>";
    }
    static std::string ServiceTp(const std::string &strChildren)
    {
        return "<servicetp>" + strChildren + "</servicetp>";
    }
    static std::string MainSite(const std::string &strName) { return "<ecsmainsite name=\"" + strName + "\"/>"; }

    static std::vector<std::string> SipServers(const tagLOGIN_S_ATRIUM_USER_INFO &stUser)
    {
        std::vector<std::string> vecServers;
        for (uint32_t i = 0; i < stUser.stSipServerList.uiNum && stUser.stSipServerList.pstServer != nullptr; ++i) {
            const tagLOGIN_S_SERVER_ADDR_INFO &stServer = stUser.stSipServerList.pstServer[i];
            vecServers.push_back(Format("%s:%u/%u", stServer.acHost, stServer.uiPort, stServer.uiTransport));
        }
        return vecServers;
    }
    /* Size of a live module block, or 0 when the ledger does not list blocks. */
    static uint32_t BlockSize(const void *pvBlock)
    {
        struct Search {
            const void *pvWanted;
            uint32_t uiSize;
        } stSearch{pvBlock, 0};
        KOSA_MemForEachLive(
            [](void *pvCtx, const void *pvLive, uint32_t uiSize, const char *, uint32_t) {
                auto *pstSearch = static_cast<Search *>(pvCtx);
                if (pvLive == pstSearch->pvWanted) {
                    pstSearch->uiSize = uiSize;
                }
            },
            &stSearch);
        return stSearch.uiSize;
    }
    std::vector<std::string> OwnTraces() const { return TextsOf(m_traces, PARSER); }
    /* Level-2 texts that begin with strPrefix, in order. */
    std::vector<std::string> TracesStartingWith(const std::string &strPrefix) const
    {
        std::vector<std::string> vecTexts;
        for (const std::string &strText : m_traces.TextsAt(LOGIN_TRACE_PROGRESS)) {
            if (strText.compare(0, strPrefix.size(), strPrefix) == 0) {
                vecTexts.push_back(strText);
            }
        }
        return vecTexts;
    }
};

/* ---- a complete answer ---- */

TEST_F(LoginResultTest, CompleteAnswerFillsTheRecordFieldByField)
{
    RandomFeed feed({0});
    std::string strBody = ReadTestFile("portal/login-full.xml");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_STREQ(m_stUser.acAccessToken, "4c1d7a90e2f34b6c8d5e0f1a2b3c4d5e");
    EXPECT_STREQ(m_stUser.acSipAccount, "+15550100@corp.example");
    EXPECT_STREQ(m_stUser.acSipImpi, "alice.impi@corp.example");
    EXPECT_STREQ(m_stUser.acShortNumber, "6100");
    EXPECT_EQ(m_stUser.bPwdTypeZero, 1u);
    EXPECT_STREQ(m_stUser.acSipPassword, "sip-Secret!1");
    EXPECT_STREQ(m_stUser.acSipDomain, "corp.example");
    EXPECT_EQ(m_stUser.iFuncType, 3);
    EXPECT_EQ(m_stUser.uiExpireIn, 86400u);
    EXPECT_EQ(m_stUser.bSiteInfoValid, 1u);
    EXPECT_EQ(m_stUser.uiDeployMode, 1u);
    EXPECT_EQ(m_stUser.bFirstLogin, 1u);
    EXPECT_EQ(m_stUser.uiPwdExpireTime, 30u);
    EXPECT_STREQ(m_stUser.acRealUserAccount, "alice.real@corp.example");
    EXPECT_STREQ(m_stUser.acEabUri, "https://eab.corp.example:443/eab");
    EXPECT_STREQ(m_stUser.acGroupServerUri, "https://group.corp.example/gs");
    /* base64 of "https://tms.corp.example:9443/acs" */
    EXPECT_STREQ(m_stUser.acTmsTr069Uri, "aHR0cHM6Ly90bXMuY29ycC5leGFtcGxlOjk0NDMvYWNz");
    EXPECT_STREQ(m_stUser.acSname, "Alice E.");
    EXPECT_STREQ(m_stUser.astUmsInfo[0].acDn, "6100");
    EXPECT_STREQ(m_stUser.astUmsInfo[0].acUmsAccount, "alice.vm");
    EXPECT_STREQ(m_stUser.astUmsInfo[0].acPwd, "vm-pass-1");
    EXPECT_STREQ(m_stUser.astUmsInfo[1].acDn, "6101");
    EXPECT_STREQ(m_stUser.astUmsInfo[1].acUmsAccount, "alice.fax");
    EXPECT_STREQ(m_stUser.astUmsInfo[1].acPwd, "fax-pass-2");
    EXPECT_STREQ(m_stUser.astUmsInfo[2].acDn, "") << "the first empty dn ends the list";
    EXPECT_STREQ(m_stUser.acDisplayName, "Alice Example");
    EXPECT_EQ(m_stUser.bHasUserType, 1u);
    EXPECT_STREQ(m_stUser.acFileDockServiceType, "objstore");
    EXPECT_STREQ(m_stUser.acFileDockAppId, "fd-app-77");
    EXPECT_STREQ(m_stUser.acFileDockServerAddr, "https://files.corp.example:8443");
    EXPECT_STREQ(m_stUser.acTerminalScene, "office");
    EXPECT_STREQ(m_stUser.acPrivacyVersion, "v3.2");
    ASSERT_EQ(m_stUser.uiExtraParmNum, 3u);
    ASSERT_NE(m_stUser.pstExtraParm, nullptr);
    EXPECT_STREQ(m_stUser.pstExtraParm[0].acName, "callRecordSync");
    EXPECT_STREQ(m_stUser.pstExtraParm[0].acValue, "on");
    EXPECT_STREQ(m_stUser.pstExtraParm[1].acName, "maxVideoBitrate");
    EXPECT_STREQ(m_stUser.pstExtraParm[1].acValue, "2048");
    EXPECT_STREQ(m_stUser.pstExtraParm[2].acName, "helpUrl");
    EXPECT_STREQ(m_stUser.pstExtraParm[2].acValue, "https://help.corp.example/uc?lang=en&v=2");
    EXPECT_EQ(m_stUser.uiDataConf, 0u);
}

TEST_F(LoginResultTest, CompleteAnswerSelectsOwnSiteFirstThenTopPriorityThenTheOthers)
{
    /* Every draw 0: three groups come out as 0,2,1, four as 0,3,2, two as 0,1. */
    RandomFeed feed({0});
    std::string strBody = ReadTestFile("portal/login-full.xml");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    ASSERT_NE(m_stUser.pstSiteInfo, nullptr);
    const tagLOGIN_S_SITE &stSite = *m_stUser.pstSiteInfo;
    EXPECT_STREQ(stSite.acSiteName, "site-west") << "a copy of the own site";
    EXPECT_STREQ(stSite.acSbcDomain, "sbc-west.corp.example");
    EXPECT_STREQ(stSite.acDefaultAccount, "tr069-west");
    EXPECT_STREQ(stSite.acDefaultPwd, "tr-west-pw");
    EXPECT_EQ(stSite.uiPriority, 3u);
    /* own site-west, then site-central (top priority and main site), then site-east */
    EXPECT_THAT(SelectedGroups(m_stUser),
                ElementsAre(Pair("west-g1", 0u), Pair("west-g2", 0u), Pair("central-g1", 1u), Pair("central-g4", 1u),
                            Pair("central-g3", 1u), Pair("east-g1", 0u), Pair("east-g3", 0u), Pair("east-g2", 0u)));
    EXPECT_EQ(feed.Drawn(), 8u);
    ASSERT_EQ(stSite.uiNumOfAccessServer, 8u);
    EXPECT_EQ(stSite.pstAccessServer[0].uiPriority, 3u);
    EXPECT_EQ(stSite.pstAccessServer[2].uiPriority, 1u);
    EXPECT_EQ(stSite.pstAccessServer[5].uiPriority, 2u);
    EXPECT_STREQ(stSite.pstAccessServer[4].acSipTlsUri, "10.2.0.31:5061;transport=tls");
    EXPECT_EQ(stSite.pstAccessServer[4].uiSipTlsActive, 1u);
}

TEST_F(LoginResultTest, CompleteAnswerListsEverySipServerOfEverySiteInOrder)
{
    RandomFeed feed({0});
    std::string strBody = ReadTestFile("portal/login-full.xml");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_EQ(m_stUser.stSipServerList.uiNum, 11u);
    EXPECT_THAT(SipServers(m_stUser),
                ElementsAre("10.1.0.11:5060/0", "10.1.0.21:5060/1", "10.1.0.21:5061/2", "10.1.0.31:5060/0",
                            "10.2.0.11:5060/0", "10.2.0.21:5060/0", "10.2.0.31:5080/0", "10.2.0.31:5061/2",
                            "10.2.0.41:5060/0", "10.3.0.11:5060/0", "10.3.0.21:5060/0"));
}

TEST_F(LoginResultTest, CompleteAnswerTracesItsProgressInStepOrder)
{
    RandomFeed feed({0});
    std::string strBody = ReadTestFile("portal/login-full.xml");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_THAT(OwnTraces(),
                ElementsAre("L2 get extra parameters", "L2 get 3 extra parameter", "L2 get real user account",
                            "L2 get diplay name", "L2 the sip FuncType 3", "L2 the terminal scene is office",
                            /* the ecsmainsite child after the sites */
                            UrlMiss("site"),
                            "L2 Find the Server name:eab uri:https://eab.corp.example:443/eab",
                            "L2 Find the Server name:groupserver uri:https://group.corp.example/gs",
                            "L2 Find the Server name:tmstr069 uri:https://tms.corp.example:9443/acs",
                            "L2 Find the Server name:presence uri:https://presence.corp.example",
                            "L2 ums_account:alice.vm", "L2 ums_account:alice.fax"));
    for (const TraceLine &stLine : m_traces.Lines()) {
        if (stLine.strFunc == PARSER) {
            EXPECT_EQ(stLine.strFile, "service/login/src/atrium_xml/portal.cpp");
        }
    }
}

TEST_F(LoginResultTest, NoBlocksAreLeftOnceTheCallerFreesWhatWasHandedOver)
{
    RandomFeed feed({0});
    std::string strBody = ReadTestFile("portal/login-full.xml");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    /* selected site, its group array, the SIP server list, the extra parameters */
    EXPECT_EQ(LiveBlocksSinceStart(), 4u) << DescribeLiveBlocks();
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
    ReleaseUserHandedOver(m_stUser);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u) << DescribeLiveBlocks();
}

/* ---- arguments, parse, required keys ---- */

TEST_F(LoginResultTest, NullBodyOrRecordYieldsTwoAndTouchesNothing)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser = SentinelRecord<tagLOGIN_S_ATRIUM_USER_INFO>();
    const tagLOGIN_S_ATRIUM_USER_INFO stBefore = stUser;

    EXPECT_EQ(XmlParseAtriumLoginResult(nullptr, OWN_HOST, &stUser), 2u);
    EXPECT_EQ(XmlParseAtriumLoginResult(Answer("").c_str(), OWN_HOST, nullptr), 2u);

    EXPECT_TRUE(SameBytes(stUser, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 atrium: Conf Login Parse download xmlBody pointer empty!",
                                              "L0 atrium: Conf Login Parse download xmlBody pointer empty!"));
}

TEST_F(LoginResultTest, TextThatIsNotXmlYieldsTheLibraryCodeUnchanged)
{
    for (const char *pcBody : {"", "<UserInfo><LoginToken>", "503 Service Unavailable"}) {
        m_traces.Clear();
        const uint32_t uiLibraryCode = LibraryParseCode(pcBody);
        ASSERT_GT(uiLibraryCode, 255u) << pcBody;
        tagLOGIN_S_ATRIUM_USER_INFO stUser = SentinelRecord<tagLOGIN_S_ATRIUM_USER_INFO>();
        const tagLOGIN_S_ATRIUM_USER_INFO stBefore = stUser;

        EXPECT_EQ(XmlParseAtriumLoginResult(pcBody, OWN_HOST, &stUser), uiLibraryCode) << pcBody;

        EXPECT_TRUE(SameBytes(stUser, stBefore)) << pcBody;
        EXPECT_THAT(m_traces.Texts(),
                    ElementsAre(Format("L0 atrium: Conf Login KTL_XML_Parse failed errno=[0x%x]!", uiLibraryCode)))
            << pcBody;
    }
}

TEST_F(LoginResultTest, MissingTokenFailsWithOneBeforeAnythingElseIsRead)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser = SentinelRecord<tagLOGIN_S_ATRIUM_USER_INFO>();
    const tagLOGIN_S_ATRIUM_USER_INFO stBefore = stUser;
    std::string strBody = "<UserInfo><LoginToken><AccessToken/><ExpireIn>60</ExpireIn></LoginToken>"
                          "<ExtraParms><a>1</a></ExtraParms></UserInfo>";

    EXPECT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &stUser), 1u);

    EXPECT_TRUE(SameBytes(stUser, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 Not Find the AccessToKen"));
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
}

TEST_F(LoginResultTest, MissingLifetimeFailsWithOneAfterTheTokenWasCopied)
{
    std::string strBody = "<UserInfo><LoginToken><AccessToken>tok</AccessToken></LoginToken>"
                          "<ExtraParms><a>1</a></ExtraParms><displayname>d</displayname></UserInfo>";

    EXPECT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 1u);

    EXPECT_STREQ(m_stUser.acAccessToken, "tok");
    EXPECT_EQ(m_stUser.pstExtraParm, nullptr);
    EXPECT_STREQ(m_stUser.acDisplayName, "");
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("UserInfo.LoginToken.ExpireIn"), "L0 Not Find the ExpireIn"));
}

/* ---- the misses of an answer with only token and lifetime ---- */

TEST_F(LoginResultTest, AnswerWithOnlyTokenAndLifetimeTracesEveryMissInOrder)
{
    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("").c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(UrlMiss("UserInfo.ExtraParms"), "L2 not find the ExtraParms",
                            UrlMiss("UserInfo.RealUserAccount"), UrlMiss("UserInfo.displayname"),
                            UrlMiss("UserInfo.sipinfo.impu"), "L1 Not Find the sip impu, look for account",
                            UrlMiss("UserInfo.sipinfo.account"), "L1 Not Find the sip account",
                            UrlMiss("UserInfo.sipinfo.impi"), "L1 Not Find the sip impi",
                            UrlMiss("UserInfo.sipinfo.short_number"), "L1 Not Find the sip short_number",
                            UrlMiss("UserInfo.sipinfo.pwdtype"), "L1 Not Find the pwdtype",
                            UrlMiss("UserInfo.sipinfo.passwd"), "L1 Not Find the sip passwd",
                            UrlMiss("UserInfo.sipinfo.domain"), "L1 Not Find the sip account",
                            UrlMiss("UserInfo.sipinfo.FuncType"), "L1 Not Find the sip FuncType",
                            UrlMiss("UserInfo.sipinfo.sname"), "L1 Not Find the sip sname",
                            UrlMiss("UserInfo.fileDockServiceType"), "L1 Not Find the fileDockServiceType",
                            UrlMiss("UserInfo.fileDockAppId"), "L1 Not Find the fileDockAppId",
                            UrlMiss("UserInfo.fileDockServerAddr"), "L1 Not Find the fileDockServerAddr",
                            UrlMiss("UserInfo.privacyVersion"), "L1 Not Find the privacyVersion",
                            UrlMiss("UserInfo.userType"), "L1 Not Find the user type",
                            UrlMiss("UserInfo.servicetp.ecsmainsite"), "L1 Not Find the ecs main site",
                            UrlMiss("UserInfo.servicetp"), UrlMiss("UserInfo.DeployMode"),
                            "L1 Not Find the DeployMode", UrlMiss("UserInfo.dataConf"), "L3 Not Find the dataConf",
                            UrlMiss("UserInfo.FirstLogin"), UrlMiss("UserInfo.PWDExpireTime")));
}

TEST_F(LoginResultTest, MissTracesNameTheParserAndItsSource)
{
    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("").c_str(), OWN_HOST, &m_stUser), 0u);
    for (const TraceLine &stLine : m_traces.Lines()) {
        EXPECT_EQ(stLine.strFunc, PARSER) << stLine.strText;
        EXPECT_EQ(stLine.strFile, "service/login/src/atrium_xml/portal.cpp") << stLine.strText;
        EXPECT_GT(stLine.uiLine, 0u);
    }
}

TEST_F(LoginResultTest, MissesWriteTheirDefaultsAndLeaveEveryOtherFieldAsGiven)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser = SentinelRecord<tagLOGIN_S_ATRIUM_USER_INFO>();
    tagLOGIN_S_ATRIUM_USER_INFO stExpected = stUser;

    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("").c_str(), OWN_HOST, &stUser), 0u);

    std::strcpy(stExpected.acAccessToken, "tok");
    stExpected.uiExpireIn = 60;
    stExpected.iFuncType = -1;
    stExpected.uiDataConf = 1;
    stExpected.bPwdTypeZero = 0;
    stExpected.bHasUserType = 0;
    EXPECT_TRUE(SameBytes(stUser, stExpected));
}

/* ---- extra parameters ---- */

TEST_F(LoginResultTest, ExtraParametersAreHandedOverInAnArrayOfTheirCount)
{
    std::string strBody = Answer("<ExtraParms><alpha>1</alpha><beta>two</beta><gamma>3</gamma></ExtraParms>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    ASSERT_EQ(m_stUser.uiExtraParmNum, 3u);
    EXPECT_STREQ(m_stUser.pstExtraParm[1].acName, "beta");
    EXPECT_STREQ(m_stUser.pstExtraParm[1].acValue, "two");
    if (KOSA_MemForEachLive(nullptr, nullptr) != 0) {
        EXPECT_EQ(BlockSize(m_stUser.pstExtraParm), 3 * sizeof(tagLOGIN_S_EXTRA_PARM));
    }
    EXPECT_THAT(OwnTraces(), testing::IsSupersetOf({"L2 get extra parameters", "L2 get 3 extra parameter"}));
}

TEST_F(LoginResultTest, ThreeHundredExtraParametersAreCappedAt256InAnArraySizedByTheCap)
{
    std::string strParms;
    for (int i = 0; i < 300; ++i) {
        strParms += "<p" + std::to_string(i) + ">v" + std::to_string(i) + "</p" + std::to_string(i) + ">";
    }

    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("<ExtraParms>" + strParms + "</ExtraParms>").c_str(), OWN_HOST,
                                        &m_stUser),
              0u);

    ASSERT_EQ(m_stUser.uiExtraParmNum, 256u);
    EXPECT_STREQ(m_stUser.pstExtraParm[0].acName, "p0");
    EXPECT_STREQ(m_stUser.pstExtraParm[255].acName, "p255");
    EXPECT_STREQ(m_stUser.pstExtraParm[255].acValue, "v255");
    if (KOSA_MemForEachLive(nullptr, nullptr) != 0) {
        EXPECT_EQ(BlockSize(m_stUser.pstExtraParm), 256 * sizeof(tagLOGIN_S_EXTRA_PARM));
    }
    EXPECT_EQ(m_traces.Count(LOGIN_TRACE_PROGRESS, "get 256 extra parameter"), 1u);
}

TEST_F(LoginResultTest, UnreadableExtraParameterReturnsTheCodeKeepingDocumentAndArray)
{
    std::string strBody = Answer("<ExtraParms><a>1</a><b>2</b></ExtraParms><displayname>Bob</displayname>");
    /* Value reads before the walk: the token, its lifetime and the ExtraParms element. The
     * walk's second child is the one that fails. */
    KTL_XML_FailValueReadsAfter(4);

    EXPECT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), KTL_XML_ERR_INJECTED);
    KTL_XML_FailValueReadsAfter(KTL_XML_FAIL_NEVER);

    EXPECT_STREQ(m_stUser.acAccessToken, "tok") << "fields read before stay";
    EXPECT_EQ(m_stUser.uiExtraParmNum, 0u);
    EXPECT_EQ(m_stUser.pstExtraParm, nullptr) << "the array is not handed over";
    EXPECT_STREQ(m_stUser.acDisplayName, "") << "nothing after the failure is read";
    char acExpected[64];
    std::snprintf(acExpected, sizeof(acExpected), "L0 KTL_XML_GetNodeValue failed uiRet:%u", KTL_XML_ERR_INJECTED);
    EXPECT_EQ(m_traces.Texts().back(), acExpected);
    ExpectDocumentsKept(1);
    ExpectBlocksKept(1);
}

TEST_F(LoginResultTest, EmptyExtraParameterDropsThemAllButTheParseGoesOn)
{
    std::string strBody = Answer("<ExtraParms><a>1</a><b></b><c>3</c></ExtraParms><displayname>Bob</displayname>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_EQ(m_stUser.uiExtraParmNum, 0u);
    EXPECT_EQ(m_stUser.pstExtraParm, nullptr);
    EXPECT_STREQ(m_stUser.acDisplayName, "Bob");
    EXPECT_EQ(LiveBlocksSinceStart(), 0u) << "the array was released";
    EXPECT_THAT(OwnTraces(), testing::Contains("L2 get extra parameters"));
    EXPECT_EQ(m_traces.Count(LOGIN_TRACE_PROGRESS, "get 1 extra parameter"), 0u);
}

TEST_F(LoginResultTest, ExtraParameterValueTooLongDropsThemAll)
{
    std::string strBody = Answer("<ExtraParms><a>1</a><b>" + std::string(256, 'x') + "</b></ExtraParms>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_EQ(m_stUser.uiExtraParmNum, 0u);
    EXPECT_EQ(m_stUser.pstExtraParm, nullptr);
}

TEST_F(LoginResultTest, ExtraParameterValueOf255CharactersIsKept)
{
    std::string strBody = Answer("<ExtraParms><a>" + std::string(255, 'x') + "</a></ExtraParms>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    ASSERT_EQ(m_stUser.uiExtraParmNum, 1u);
    EXPECT_EQ(std::string(m_stUser.pstExtraParm[0].acValue), std::string(255, 'x'));
}

TEST_F(LoginResultTest, ExtraParmsWithoutChildrenAllocateNothing)
{
    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("<ExtraParms/>").c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_EQ(m_stUser.uiExtraParmNum, 0u);
    EXPECT_EQ(m_stUser.pstExtraParm, nullptr);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
    std::vector<std::string> vecOwn = OwnTraces();
    ASSERT_GE(vecOwn.size(), 2u);
    EXPECT_THAT(std::vector<std::string>(vecOwn.begin(), vecOwn.begin() + 2),
                ElementsAre("L2 get extra parameters", UrlMiss("UserInfo.RealUserAccount")));
}

TEST_F(LoginResultTest, ExtraParameterArrayThatCannotBeAllocatedIsSkippedSilently)
{
    KOSA_MemFailAfter(0);
    std::string strBody = Answer("<ExtraParms><a>1</a></ExtraParms><displayname>Bob</displayname>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_EQ(m_stUser.uiExtraParmNum, 0u);
    EXPECT_EQ(m_stUser.pstExtraParm, nullptr);
    EXPECT_STREQ(m_stUser.acDisplayName, "Bob");
    std::vector<std::string> vecOwn = OwnTraces();
    ASSERT_GE(vecOwn.size(), 3u);
    EXPECT_THAT(std::vector<std::string>(vecOwn.begin(), vecOwn.begin() + 3),
                ElementsAre("L2 get extra parameters", UrlMiss("UserInfo.RealUserAccount"), "L2 get diplay name"));
    EXPECT_EQ(m_traces.TextsAt(LOGIN_TRACE_ERROR).size(), 0u);
}

/* ---- account facts and SIP identity ---- */

TEST_F(LoginResultTest, DisplayNameKeepsItsCapacityOf289)
{
    ASSERT_EQ(XmlParseAtriumLoginResult(
                  Answer("<displayname>" + std::string(288, 'd') + "</displayname>").c_str(), OWN_HOST, &m_stUser),
              0u);
    EXPECT_EQ(std::string(m_stUser.acDisplayName), std::string(288, 'd'));

    ASSERT_EQ(XmlParseAtriumLoginResult(
                  Answer("<displayname>" + std::string(289, 'd') + "</displayname>").c_str(), OWN_HOST, &m_stUser),
              0u);
    EXPECT_STREQ(m_stUser.acDisplayName, "");
}

TEST_F(LoginResultTest, AccountIsTheSipIdentityWhenThereIsNoImpu)
{
    std::string strBody = Answer("<sipinfo><account>alice@corp.example</account></sipinfo>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_STREQ(m_stUser.acSipAccount, "alice@corp.example");
    std::vector<std::string> vecTraces = OwnTraces();
    EXPECT_THAT(std::vector<std::string>(vecTraces.begin() + 4, vecTraces.begin() + 7),
                ElementsAre(UrlMiss("UserInfo.sipinfo.impu"), "L1 Not Find the sip impu, look for account",
                            UrlMiss("UserInfo.sipinfo.impi")));
}

TEST_F(LoginResultTest, EmptyImpuFallsBackToTheAccount)
{
    std::string strBody = Answer("<sipinfo><impu/><account>acc</account></sipinfo>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_STREQ(m_stUser.acSipAccount, "acc");
    EXPECT_TRUE(m_traces.Contains(LOGIN_TRACE_MISS, "Not Find the sip impu, look for account"));
}

TEST_F(LoginResultTest, ImpuWinsAndTheAccountIsNotLookedUp)
{
    std::string strBody = Answer("<sipinfo><impu>+1555</impu><account>acc</account><domain>d</domain></sipinfo>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_STREQ(m_stUser.acSipAccount, "+1555");
    EXPECT_EQ(m_traces.Count(LOGIN_TRACE_MISS, "Not Find the sip impu, look for account"), 0u);
    EXPECT_EQ(m_traces.Count(LOGIN_TRACE_MISS, "Not Find the sip account"), 0u);
}

TEST_F(LoginResultTest, ImpuTooLongLeavesTheIdentityEmptyWithoutFallingBack)
{
    std::string strBody = Answer("<sipinfo><impu>" + std::string(128, 'i') + "</impu><account>acc</account></sipinfo>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_STREQ(m_stUser.acSipAccount, "");
    EXPECT_EQ(m_traces.Count(LOGIN_TRACE_MISS, "Not Find the sip impu, look for account"), 0u);
}

TEST_F(LoginResultTest, MissingDomainReusesTheAccountsMessage)
{
    std::string strBody = Answer("<sipinfo><impu>u</impu><impi>i</impi><short_number>1</short_number>"
                                 "<pwdtype>1</pwdtype><passwd>p</passwd></sipinfo>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    std::vector<std::string> vecTraces = OwnTraces();
    auto it = std::find(vecTraces.begin(), vecTraces.end(), UrlMiss("UserInfo.sipinfo.domain"));
    ASSERT_NE(it, vecTraces.end());
    ASSERT_NE(it + 1, vecTraces.end());
    EXPECT_EQ(*(it + 1), "L1 Not Find the sip account");
    EXPECT_EQ(m_traces.Count(LOGIN_TRACE_MISS, "Not Find the sip account"), 1u);
}

TEST_F(LoginResultTest, SipFieldsAreCopiedWithTheirCapacities)
{
    std::string strBody = Answer("<sipinfo><impu>u</impu><impi>" + std::string(127, 'i') + "</impi><short_number>" +
                                 std::string(128, 's') + "</short_number><passwd>" + std::string(127, 'p') +
                                 "</passwd><domain>" + std::string(255, 'd') + "</domain><sname>" +
                                 std::string(256, 'n') + "</sname></sipinfo>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_EQ(std::string(m_stUser.acSipImpi), std::string(127, 'i'));
    EXPECT_STREQ(m_stUser.acShortNumber, "");
    EXPECT_EQ(std::string(m_stUser.acSipPassword), std::string(127, 'p'));
    EXPECT_EQ(std::string(m_stUser.acSipDomain), std::string(255, 'd'));
    EXPECT_STREQ(m_stUser.acSname, "");
}

TEST_F(LoginResultTest, PasswordTypeZeroSetsTheFlagAndAnyOtherNumberClearsIt)
{
    const struct {
        const char *pcValue;
        uint32_t uiExpected;
    } astCases[] = {{"0", 1}, {"1", 0}, {"2", 0}, {"abc", 1}, {"0x0", 1}, {"0x1", 0}};
    for (const auto &stCase : astCases) {
        tagLOGIN_S_ATRIUM_USER_INFO stUser{};
        stUser.bPwdTypeZero = 7;
        std::string strBody = Answer(std::string("<sipinfo><pwdtype>") + stCase.pcValue + "</pwdtype></sipinfo>");
        ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &stUser), 0u) << stCase.pcValue;
        EXPECT_EQ(stUser.bPwdTypeZero, stCase.uiExpected) << stCase.pcValue;
    }
}

TEST_F(LoginResultTest, MissingPasswordTypeWritesZero)
{
    m_stUser.bPwdTypeZero = 1;
    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("<sipinfo><pwdtype/></sipinfo>").c_str(), OWN_HOST, &m_stUser), 0u);
    EXPECT_EQ(m_stUser.bPwdTypeZero, 0u);
    EXPECT_TRUE(m_traces.Contains(LOGIN_TRACE_MISS, "Not Find the pwdtype"));
}

/* ---- FuncType ---- */

TEST_F(LoginResultTest, FuncTypeIsASignedNumberAndItsSceneIsCopied)
{
    std::string strBody = Answer("<sipinfo><FuncType terminalScene=\"meeting-room\">-2</FuncType></sipinfo>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_EQ(m_stUser.iFuncType, -2);
    EXPECT_STREQ(m_stUser.acTerminalScene, "meeting-room");
    std::vector<std::string> vecTraces = OwnTraces();
    auto it = std::find(vecTraces.begin(), vecTraces.end(), "L2 the sip FuncType -2");
    ASSERT_NE(it, vecTraces.end());
    ASSERT_NE(it + 1, vecTraces.end());
    EXPECT_EQ(*(it + 1), "L2 the terminal scene is meeting-room");
}

TEST_F(LoginResultTest, FuncTypeThatIsNotANumberIsTracedAndItsSceneStillCopied)
{
    m_stUser.iFuncType = 4;
    std::string strBody = Answer("<sipinfo><FuncType terminalScene=\"home\">abc</FuncType></sipinfo>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_EQ(m_stUser.iFuncType, 4) << "the failed conversion wrote nothing";
    EXPECT_STREQ(m_stUser.acTerminalScene, "home");
    std::vector<std::string> vecTraces = OwnTraces();
    auto it = std::find(vecTraces.begin(), vecTraces.end(), "L1 the sip FuncType value is invaild");
    ASSERT_NE(it, vecTraces.end());
    ASSERT_NE(it + 1, vecTraces.end());
    EXPECT_EQ(*(it + 1), "L2 the terminal scene is home");
}

TEST_F(LoginResultTest, MissingFuncTypeWritesMinusOneAndDoesNotReadTheScene)
{
    std::strcpy(m_stUser.acTerminalScene, "kept");
    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("<sipinfo><FuncType terminalScene=\"x\"/></sipinfo>").c_str(), OWN_HOST,
                                        &m_stUser),
              0u);
    EXPECT_EQ(m_stUser.iFuncType, -1);
    EXPECT_STREQ(m_stUser.acTerminalScene, "kept");
    EXPECT_TRUE(m_traces.Contains(LOGIN_TRACE_MISS, "Not Find the sip FuncType"));
}

TEST_F(LoginResultTest, FuncTypeWithoutSceneLeavesTheSceneAsGiven)
{
    std::strcpy(m_stUser.acTerminalScene, "kept");
    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("<sipinfo><FuncType>1</FuncType></sipinfo>").c_str(), OWN_HOST,
                                        &m_stUser),
              0u);
    EXPECT_EQ(m_stUser.iFuncType, 1);
    EXPECT_STREQ(m_stUser.acTerminalScene, "kept");
}

TEST_F(LoginResultTest, SceneTooLongForItsSixteenBytesLeavesTheFieldEmpty)
{
    std::strcpy(m_stUser.acTerminalScene, "kept");
    ASSERT_EQ(XmlParseAtriumLoginResult(
                  Answer("<sipinfo><FuncType terminalScene=\"0123456789abcdef\">1</FuncType></sipinfo>").c_str(),
                  OWN_HOST, &m_stUser),
              0u);
    EXPECT_STREQ(m_stUser.acTerminalScene, "");
    EXPECT_TRUE(m_traces.Contains(LOGIN_TRACE_PROGRESS, "the terminal scene is "));
}

/* ---- account facts after the SIP information ---- */

TEST_F(LoginResultTest, UserTypeRecordsOnlyItsPresence)
{
    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("<userType>0</userType>").c_str(), OWN_HOST, &m_stUser), 0u);
    EXPECT_EQ(m_stUser.bHasUserType, 1u);

    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("<userType/>").c_str(), OWN_HOST, &m_stUser), 0u);
    EXPECT_EQ(m_stUser.bHasUserType, 0u);
    EXPECT_TRUE(m_traces.Contains(LOGIN_TRACE_MISS, "Not Find the user type"));
}

TEST_F(LoginResultTest, DataConfIsANumberAndItsMissWritesOneAtDumpLevel)
{
    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("<dataConf>0</dataConf>").c_str(), OWN_HOST, &m_stUser), 0u);
    EXPECT_EQ(m_stUser.uiDataConf, 0u);

    m_stUser.uiDataConf = 7;
    m_traces.Clear();
    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("").c_str(), OWN_HOST, &m_stUser), 0u);
    EXPECT_EQ(m_stUser.uiDataConf, 1u);
    EXPECT_EQ(m_traces.Count(LOGIN_TRACE_DUMP, "Not Find the dataConf"), 1u);
    EXPECT_EQ(m_traces.Count(LOGIN_TRACE_MISS, "Not Find the dataConf"), 0u);
}

TEST_F(LoginResultTest, DeployModeAndPasswordExpiryAreConvertedInBaseZero)
{
    std::string strBody = Answer("<DeployMode>0x2</DeployMode><PWDExpireTime>010</PWDExpireTime>");
    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);
    EXPECT_EQ(m_stUser.uiDeployMode, 2u);
    EXPECT_EQ(m_stUser.uiPwdExpireTime, 8u);
}

TEST_F(LoginResultTest, MissingDeployModeLeavesTheFieldAsGiven)
{
    m_stUser.uiDeployMode = 3;
    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("").c_str(), OWN_HOST, &m_stUser), 0u);
    EXPECT_EQ(m_stUser.uiDeployMode, 3u);
}

TEST_F(LoginResultTest, FirstLoginIsSetOnlyByExactYesAndNeverCleared)
{
    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("<FirstLogin>yes</FirstLogin>").c_str(), OWN_HOST, &m_stUser), 0u);
    EXPECT_EQ(m_stUser.bFirstLogin, 0u);

    m_stUser.bFirstLogin = 1;
    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("<FirstLogin>NO</FirstLogin>").c_str(), OWN_HOST, &m_stUser), 0u);
    EXPECT_EQ(m_stUser.bFirstLogin, 1u);
}

/* ---- sites: own site, main site, harvest ---- */

TEST_F(LoginResultTest, LaterOfTwoSitesMatchingTheOwnHostIsTheOwnSite)
{
    RandomFeed feed({0});
    std::string strBody = Answer(ServiceTp(Site("first", "1", OWN_HOST, {"first-g"}) +
                                           Site("other", "2", "portal-x.corp.example", {"other-g"}) +
                                           Site("second", "3", OWN_HOST, {"second-g"})));

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    ASSERT_NE(m_stUser.pstSiteInfo, nullptr);
    EXPECT_STREQ(m_stUser.pstSiteInfo->acSiteName, "second");
    /* own site first, then the top-priority site, then the rest; no main site */
    EXPECT_THAT(SelectedGroups(m_stUser),
                ElementsAre(Pair("second-g", 0u), Pair("first-g", 0u), Pair("other-g", 0u)));
}

TEST_F(LoginResultTest, OwnHostMatchingNoSiteTakesSiteZero)
{
    RandomFeed feed({0});
    std::string strBody = Answer(ServiceTp(Site("a", "2", "portal-a.corp.example", {"a-g"}) +
                                           Site("b", "1", "portal-b.corp.example", {"b-g"})));

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    ASSERT_NE(m_stUser.pstSiteInfo, nullptr);
    EXPECT_STREQ(m_stUser.pstSiteInfo->acSiteName, "a");
    EXPECT_THAT(SelectedGroups(m_stUser), ElementsAre(Pair("a-g", 0u), Pair("b-g", 0u)));
}

TEST_F(LoginResultTest, OwnHostComparisonIsCaseSensitive)
{
    RandomFeed feed({0});
    std::string strBody = Answer(ServiceTp(Site("a", "1", OWN_HOST, {"a-g"}) +
                                           Site("b", "2", "PORTAL-WEST.corp.example", {"b-g"})));

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), "PORTAL-WEST.corp.example", &m_stUser), 0u);

    ASSERT_NE(m_stUser.pstSiteInfo, nullptr);
    EXPECT_STREQ(m_stUser.pstSiteInfo->acSiteName, "b");
}

TEST_F(LoginResultTest, MainSiteIsTheLastSiteOfNonZeroPriorityWithTheMainName)
{
    RandomFeed feed({0});
    std::string strBody = Answer(ServiceTp(Site("main", "1", OWN_HOST, {"a-g"}) + Site("main", "2", "", {"b-g"}) +
                                           Site("other", "3", "", {"c-g"}) + MainSite("main")));

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_THAT(SelectedGroups(m_stUser), ElementsAre(Pair("a-g", 0u), Pair("b-g", 1u), Pair("c-g", 0u)));
}

TEST_F(LoginResultTest, MainSiteOfPriorityZeroIsNeverChosen)
{
    RandomFeed feed({0});
    std::string strBody = Answer(ServiceTp(Site("a", "1", OWN_HOST, {"a-g"}) + Site("main", "0", "", {"b-g"}) +
                                           MainSite("main")));

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    /* the main index stays at the site count: no group is marked main */
    EXPECT_THAT(SelectedGroups(m_stUser), ElementsAre(Pair("a-g", 0u), Pair("b-g", 0u)));
}

TEST_F(LoginResultTest, WithoutAMainSiteNoGroupIsMarkedMain)
{
    RandomFeed feed({0});
    std::string strBody = Answer(ServiceTp(Site("a", "1", OWN_HOST, {"a-g"}) + Site("b", "2", "", {"b-g"})));

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    /* Site 0 is the own site; were the main index 0 rather than the count, a-g would be main. */
    EXPECT_THAT(SelectedGroups(m_stUser), ElementsAre(Pair("a-g", 0u), Pair("b-g", 0u)));
    EXPECT_TRUE(m_traces.Contains(LOGIN_TRACE_MISS, "Not Find the ecs main site"));
}

TEST_F(LoginResultTest, SingleSiteNamedAsMainSiteHasItsGroupsMarkedMain)
{
    RandomFeed feed({0});
    std::string strBody = Answer(ServiceTp(Site("only", "5", OWN_HOST, {"g1", "g2"}) + MainSite("only")));

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_THAT(SelectedGroups(m_stUser), ElementsAre(Pair("g1", 1u), Pair("g2", 1u)));
}

TEST_F(LoginResultTest, SingleSiteWithoutMainSiteHasNoGroupMarkedMain)
{
    RandomFeed feed({0});
    std::string strBody = Answer(ServiceTp(Site("only", "5", OWN_HOST, {"g1", "g2"}) + MainSite("elsewhere")));

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_THAT(SelectedGroups(m_stUser), ElementsAre(Pair("g1", 0u), Pair("g2", 0u)));
}

TEST_F(LoginResultTest, EmptyMainSiteNameMatchesNoUnnamedSite)
{
    RandomFeed feed({0});
    std::string strBody = Answer(ServiceTp(Site("", "4", OWN_HOST, {"g1"}) + MainSite("")));

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_THAT(SelectedGroups(m_stUser), ElementsAre(Pair("g1", 0u)));
}

TEST_F(LoginResultTest, MainSiteElementWithoutNameChoosesNoMainSite)
{
    RandomFeed feed({0});
    std::string strBody = Answer(ServiceTp(Site("a", "4", OWN_HOST, {"g1"}) + "<ecsmainsite/>"));

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_THAT(SelectedGroups(m_stUser), ElementsAre(Pair("g1", 0u)));
    EXPECT_FALSE(m_traces.Contains(LOGIN_TRACE_MISS, "Not Find the ecs main site"));
}

TEST_F(LoginResultTest, FirstChildThatIsNotASiteLeavesEverySiteUnparsed)
{
    std::string strBody = Answer(ServiceTp(MainSite("a") + Site("a", "1", OWN_HOST, {"a-g"}) +
                                           Site("b", "2", "", {"b-g"})));

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    /* The selection and the SIP list are still built, from the two all-zero sites. */
    EXPECT_EQ(m_stUser.bSiteInfoValid, 1u);
    ASSERT_NE(m_stUser.pstSiteInfo, nullptr);
    EXPECT_STREQ(m_stUser.pstSiteInfo->acSiteName, "");
    EXPECT_EQ(m_stUser.pstSiteInfo->pstAccessServer, nullptr);
    EXPECT_EQ(m_stUser.pstSiteInfo->uiNumOfAccessServer, 0u);
    EXPECT_EQ(m_stUser.stSipServerList.uiNum, 0u);
    /* the first child is looked at again on each of the three turns */
    EXPECT_EQ(m_traces.Count(LOGIN_TRACE_MISS, "KTL_XML_GetNodeByUrl site failed=0x1002"), 1u + 3u)
        << "one from counting the sites, three from the harvest";
    std::vector<std::string> vecOwn = OwnTraces();
    EXPECT_EQ(std::count(vecOwn.begin(), vecOwn.end(), UrlMiss("site")), 3);
}

TEST_F(LoginResultTest, ChildThatIsNotASiteEndsTheHarvest)
{
    RandomFeed feed({0});
    std::string strBody = Answer(ServiceTp(Site("a", "1", OWN_HOST, {"a-g"}) + "<note/>" +
                                           Site("b", "2", "", {"b-g1", "b-g2"})));

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_THAT(SelectedGroups(m_stUser), ElementsAre(Pair("a-g", 0u)));
    EXPECT_EQ(m_stUser.stSipServerList.uiNum, 1u) << "site b was counted but never parsed";
    std::vector<std::string> vecOwn = OwnTraces();
    EXPECT_EQ(std::count(vecOwn.begin(), vecOwn.end(), UrlMiss("site")), 2) << "turns 1 and 2 both look at <note/>";
}

TEST_F(LoginResultTest, ServiceTpWithoutSitesBuildsNothing)
{
    ASSERT_EQ(XmlParseAtriumLoginResult(Answer(ServiceTp(MainSite("a"))).c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_EQ(m_stUser.bSiteInfoValid, 0u);
    EXPECT_EQ(m_stUser.pstSiteInfo, nullptr);
    EXPECT_EQ(m_stUser.stSipServerList.pstServer, nullptr);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
}

TEST_F(LoginResultTest, SiteArrayThatCannotBeAllocatedFailsWithOneAfterEarlierFieldsWereFilled)
{
    /* The extra-parameter array is the first allocation, the site array the second. */
    KOSA_MemFailAfter(1);
    std::string strBody = Answer("<ExtraParms><a>1</a></ExtraParms><sipinfo><impu>u</impu></sipinfo>" +
                                 ServiceTp(Site("a", "1", OWN_HOST, {"a-g"})) + "<DeployMode>2</DeployMode>");

    EXPECT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 1u);

    EXPECT_STREQ(m_stUser.acSipAccount, "u");
    EXPECT_EQ(m_stUser.uiExtraParmNum, 1u) << "handed over before the failure, freed by the caller";
    EXPECT_EQ(m_stUser.pstSiteInfo, nullptr);
    EXPECT_EQ(m_stUser.uiDeployMode, 0u) << "nothing after the sites is read";
    EXPECT_EQ(OwnTraces().back(), "L0 mem malloc failed");
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
}

TEST_F(LoginResultTest, SelectedSiteThatCannotBeAllocatedIsTracedAndTheParseSucceeds)
{
    /* site array, then the selected-site record (the sites have no groups to allocate) */
    KOSA_MemFailAfter(1);
    std::string strBody = Answer(ServiceTp(Site("a", "1", OWN_HOST, {}) + Site("b", "2", "", {})) +
                                 "<DeployMode>2</DeployMode>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_EQ(m_stUser.bSiteInfoValid, 0u);
    EXPECT_EQ(m_stUser.pstSiteInfo, nullptr);
    EXPECT_EQ(m_stUser.uiDeployMode, 2u);
    EXPECT_TRUE(m_traces.Contains(LOGIN_TRACE_ERROR, "getSiteInfo failed 1"));
    EXPECT_FALSE(m_traces.Contains(LOGIN_TRACE_ERROR, "getAllSipServer failed 1"));
}

TEST_F(LoginResultTest, SipServerListThatCannotBeAllocatedIsTracedAndTheParseSucceeds)
{
    /* site array, selected-site record, its group array, then the SIP server list */
    KOSA_MemFailAfter(3);
    std::string strBody = Answer(ServiceTp(Site("a", "1", OWN_HOST, {}) + Site("b", "2", "", {})) +
                                 "<DeployMode>2</DeployMode>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_EQ(m_stUser.bSiteInfoValid, 1u);
    EXPECT_EQ(m_stUser.stSipServerList.pstServer, nullptr);
    EXPECT_EQ(m_stUser.uiDeployMode, 2u);
    EXPECT_TRUE(m_traces.Contains(LOGIN_TRACE_ERROR, "getAllSipServer failed 1"));
}

/* ---- further servers ---- */

TEST_F(LoginResultTest, ServersAreKeptByNameAndALaterEntryOverwritesAnEarlierOne)
{
    std::string strBody = Answer("<serverList><server name=\"eab\" uri=\"https://eab1\"/>"
                                 "<server name=\"groupserver\" uri=\"gs\"/><server name=\"EAB\" uri=\"upper\"/>"
                                 "<server name=\"eab\" uri=\"https://eab2\"/><server name=\"other\" uri=\"o\"/>"
                                 "</serverList>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_STREQ(m_stUser.acEabUri, "https://eab2");
    EXPECT_STREQ(m_stUser.acGroupServerUri, "gs");
    EXPECT_STREQ(m_stUser.acTmsTr069Uri, "");
    EXPECT_THAT(TracesStartingWith("Find the Server"),
                ElementsAre("Find the Server name:eab uri:https://eab1", "Find the Server name:groupserver uri:gs",
                            "Find the Server name:EAB uri:upper", "Find the Server name:eab uri:https://eab2",
                            "Find the Server name:other uri:o"));
}

TEST_F(LoginResultTest, Tr069UriIsStoredBase64Encoded)
{
    std::string strBody = Answer("<serverList><server name=\"tmstr069\" uri=\"10.0.0.1:7547\"/></serverList>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_STREQ(m_stUser.acTmsTr069Uri, "MTAuMC4wLjE6NzU0Nw==");
    EXPECT_TRUE(m_traces.Contains(LOGIN_TRACE_PROGRESS, "Find the Server name:tmstr069 uri:10.0.0.1:7547"));
}

TEST_F(LoginResultTest, EmptyTr069UriEncodesToEmptyText)
{
    std::strcpy(m_stUser.acTmsTr069Uri, "old");
    std::string strBody = Answer("<serverList><server name=\"tmstr069\" uri=\"\"/></serverList>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_STREQ(m_stUser.acTmsTr069Uri, "");
}

TEST_F(LoginResultTest, Tr069UriWhoseEncodingDoesNotFitLeavesTheFieldEmpty)
{
    /* 192 bytes encode to 256 characters, one more than the field holds */
    std::strcpy(m_stUser.acTmsTr069Uri, "old");
    std::string strBody =
        Answer("<serverList><server name=\"tmstr069\" uri=\"" + std::string(192, 'u') + "\"/></serverList>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_STREQ(m_stUser.acTmsTr069Uri, "");
}

TEST_F(LoginResultTest, ServerWithoutUriFailsTheParseAfterTokenSipAccountAndSitesWereFilled)
{
    RandomFeed feed({0});
    std::string strBody = Answer("<sipinfo><impu>u</impu></sipinfo>" + ServiceTp(Site("a", "1", OWN_HOST, {"a-g"})) +
                                 "<serverList><server name=\"eab\" uri=\"e\"/><server name=\"groupserver\"/>"
                                 "</serverList><umsinfo><ums dn=\"1\" umsaccount=\"a\" pwd=\"p\"/></umsinfo>");

    EXPECT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 1u);

    EXPECT_STREQ(m_stUser.acAccessToken, "tok");
    EXPECT_STREQ(m_stUser.acSipAccount, "u");
    EXPECT_EQ(m_stUser.bSiteInfoValid, 1u);
    EXPECT_THAT(SelectedGroups(m_stUser), ElementsAre(Pair("a-g", 0u)));
    EXPECT_EQ(m_stUser.stSipServerList.uiNum, 1u);
    EXPECT_STREQ(m_stUser.acEabUri, "e");
    EXPECT_STREQ(m_stUser.astUmsInfo[0].acDn, "") << "nothing after the failure is read";
    EXPECT_EQ(OwnTraces().back(), "L0 pcUri is null");
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
}

TEST_F(LoginResultTest, ServerWithoutNameFailsTheParse)
{
    std::string strBody = Answer("<serverList><server uri=\"x\"/></serverList>");

    EXPECT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 1u);

    EXPECT_EQ(OwnTraces().back(), "L0 pcName is null");
}

TEST_F(LoginResultTest, MissingServerListIsNotTraced)
{
    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("").c_str(), OWN_HOST, &m_stUser), 0u);
    for (const std::string &strText : m_traces.Texts()) {
        EXPECT_EQ(strText.find("serverList"), std::string::npos) << strText;
    }
}

/* ---- unified-messaging accounts ---- */

TEST_F(LoginResultTest, ThirtyUmsAccountsKeepTheFirst24)
{
    std::string strUms;
    for (int i = 0; i < 30; ++i) {
        strUms += "<ums dn=\"" + std::to_string(6000 + i) + "\" umsaccount=\"acc" + std::to_string(i) + "\" pwd=\"pw" +
                  std::to_string(i) + "\"/>";
    }

    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("<umsinfo>" + strUms + "</umsinfo>").c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_STREQ(m_stUser.astUmsInfo[0].acDn, "6000");
    EXPECT_STREQ(m_stUser.astUmsInfo[23].acDn, "6023");
    EXPECT_STREQ(m_stUser.astUmsInfo[23].acUmsAccount, "acc23");
    EXPECT_STREQ(m_stUser.astUmsInfo[23].acPwd, "pw23");
    EXPECT_STREQ(m_stUser.acDisplayName, "") << "the field after the array is untouched";
    std::vector<std::string> vecUms = TracesStartingWith("ums_account:");
    EXPECT_EQ(vecUms.size(), 24u);
    EXPECT_EQ(vecUms.back(), "ums_account:acc23");
}

TEST_F(LoginResultTest, UmsAccountsAreCopiedWithTheirCapacities)
{
    std::string strBody = Answer("<umsinfo><ums dn=\"" + std::string(255, 'd') + "\" umsaccount=\"" +
                                 std::string(128, 'a') + "\" pwd=\"" + std::string(256, 'p') + "\"/></umsinfo>");

    ASSERT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &m_stUser), 0u);

    EXPECT_EQ(std::string(m_stUser.astUmsInfo[0].acDn), std::string(255, 'd'));
    EXPECT_STREQ(m_stUser.astUmsInfo[0].acUmsAccount, "");
    EXPECT_STREQ(m_stUser.astUmsInfo[0].acPwd, "");
    EXPECT_TRUE(m_traces.Contains(LOGIN_TRACE_PROGRESS, "ums_account:"));
}

TEST_F(LoginResultTest, UmsAccountMissingAnAttributeFailsTheParseWithItsMessage)
{
    const struct {
        const char *pcEntry;
        const char *pcMessage;
    } astCases[] = {{"<ums umsaccount=\"a\" pwd=\"p\"/>", "L0 pcDn is null"},
                    {"<ums dn=\"1\" pwd=\"p\"/>", "L0 pcUmsAccount is null"},
                    {"<ums dn=\"1\" umsaccount=\"a\"/>", "L0 pcPwd is null"}};
    for (const auto &stCase : astCases) {
        m_traces.Clear();
        tagLOGIN_S_ATRIUM_USER_INFO stUser{};
        std::string strBody = Answer(std::string("<umsinfo><ums dn=\"0\" umsaccount=\"first\" pwd=\"x\"/>") +
                                     stCase.pcEntry + "</umsinfo>");

        EXPECT_EQ(XmlParseAtriumLoginResult(strBody.c_str(), OWN_HOST, &stUser), 1u) << stCase.pcEntry;

        EXPECT_STREQ(stUser.astUmsInfo[0].acUmsAccount, "first") << "entries before stay filled";
        EXPECT_STREQ(stUser.astUmsInfo[1].acDn, "") << stCase.pcEntry;
        EXPECT_EQ(OwnTraces().back(), stCase.pcMessage);
    }
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
}

TEST_F(LoginResultTest, MissingUmsInfoStillSucceedsWithoutATrace)
{
    ASSERT_EQ(XmlParseAtriumLoginResult(Answer("<PWDExpireTime>5</PWDExpireTime>").c_str(), OWN_HOST, &m_stUser), 0u);
    EXPECT_EQ(m_stUser.uiPwdExpireTime, 5u);
    EXPECT_EQ(OwnTraces().back(), UrlMiss("UserInfo.FirstLogin")) << "nothing is traced after the last key";
    for (const std::string &strText : m_traces.Texts()) {
        EXPECT_EQ(strText.find("umsinfo"), std::string::npos) << strText;
    }
}

} // namespace
