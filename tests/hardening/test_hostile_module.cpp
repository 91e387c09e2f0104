/*
 * Hostile answers through the module's parsers: each must end with the library's code for
 * malformed text or with the parse its documentation gives, with every document and block
 * released (the fixture checks), and without reading any file. Sizes are asserted, not time:
 * every case here stays well under a second in a normal build.
 */
#include <gmock/gmock.h>

#include <cstdio>
#include <memory>
#include <string>

#include "hardening_support.h"

namespace {

using hardening::FlattenUser;
using hardening::ReadAnswer;
using ::testing::ElementsAre;

using User = tagLOGIN_S_ATRIUM_USER_INFO;

const uint32_t DEEP = 100000;
const size_t BIG_VALUE = 16u << 20;

template <typename Record>
Record Cleared()
{
    Record stRecord;
    std::memset(&stRecord, 0, sizeof(stRecord));
    return stRecord;
}

std::string Repeat(const std::string &strUnit, size_t uiCount)
{
    std::string strText;
    strText.reserve(strUnit.size() * uiCount);
    for (size_t i = 0; i < uiCount; ++i) {
        strText += strUnit;
    }
    return strText;
}

std::string Token()
{
    return "<LoginToken><AccessToken>tok</AccessToken><ExpireIn>60</ExpireIn></LoginToken>";
}

std::string ParseFailure(const char *pcFormat, const std::string &strBody)
{
    _NODE *pstRoot = nullptr;
    uint32_t uiCode = KTL_XML_Parse(strBody.c_str(), &pstRoot);
    KTL_XML_FreeNode(pstRoot);
    char acText[128];
    std::snprintf(acText, sizeof(acText), pcFormat, uiCode);
    return acText;
}

uint32_t ParseCode(const std::string &strBody)
{
    _NODE *pstRoot = nullptr;
    uint32_t uiCode = KTL_XML_Parse(strBody.c_str(), &pstRoot);
    KTL_XML_FreeNode(pstRoot);
    return uiCode;
}

class HostileModuleTest : public ModuleTest {
protected:
    /* Portal login with the own host of the hardening answers; the caller frees with
     * ReleaseUserHandedOver. */
    uint32_t Login(const std::string &strBody, User &stUser)
    {
        RandomFeed feed({3, 1, 4, 1, 5});
        stUser = Cleared<User>();
        return XmlParseAtriumLoginResult(strBody.c_str(), hardening::OWN_SITE_HOST, &stUser);
    }

    /* Server-list answer with the first group drawn; freed like a login. */
    uint32_t ServerList(const std::string &strBody, User &stUser)
    {
        RandomFeed feed({0});
        stUser = Cleared<User>();
        return XmlParseAtriumGetServerListRst(strBody.c_str(), &stUser);
    }
};

/* ---- depth --------------------------------------------------------------------------------- */

TEST_F(HostileModuleTest, HundredThousandLevelsUnderTheExtraParametersDropThem)
{
    std::string strBody = "<UserInfo>" + Token() + "<ExtraParms>" + Repeat("<x>", DEEP) + "v" + Repeat("</x>", DEEP) +
                          "</ExtraParms></UserInfo>";
    User stUser;
    ASSERT_EQ(Login(strBody, stUser), 0u);
    EXPECT_STREQ(stUser.acAccessToken, "tok");
    EXPECT_EQ(stUser.uiExtraParmNum, 0u) << "the outer element has no text of its own";
    EXPECT_EQ(stUser.pstExtraParm, nullptr);
    ReleaseUserHandedOver(stUser);
}

TEST_F(HostileModuleTest, HundredThousandLevelsOfResultsInAConferenceLogin)
{
    std::string strBody = "<loginResult>" + Repeat("<result>", DEEP) + Repeat("</result>", DEEP) + "</loginResult>";
    auto stResult = Cleared<tagXML_S_TANDEM_LOGIN_RESULT>();
    EXPECT_EQ(XmlParseTandmLoginResult(strBody.c_str(), &stResult), 1u);
    EXPECT_TRUE(m_traces.Contains(LOGIN_TRACE_ERROR, "resultCode empty"));
}

TEST_F(HostileModuleTest, HundredThousandUnclosedLevelsGiveTheLibraryCode)
{
    std::string strBody = "<UserInfo>" + Token() + Repeat("<x>", DEEP);
    User stUser;
    EXPECT_EQ(Login(strBody, stUser), ParseCode(strBody));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("L0 " + ParseFailure("atrium: Conf Login KTL_XML_Parse failed errno=[0x%x]!", strBody)));
    EXPECT_TRUE(FlattenUser(stUser) == FlattenUser(Cleared<User>())) << "nothing written";
}

/* ---- size -------------------------------------------------------------------------------- */

TEST_F(HostileModuleTest, SixteenMebibyteAttributesLeaveTheirFieldsEmpty)
{
    const std::string strHuge(BIG_VALUE, 'h');
    std::string strBody = "<servicetp><site name=\"" + strHuge +
                          "\" priority=\"1\"><accessservergroup>"
                          "<accessserver name=\"g\"><sip uri=\"" +
                          strHuge +
                          "\"/><svn uri=\"10.0.0.1\"/>"
                          "<eserver uri=\"" +
                          strHuge +
                          ":80\"/></accessserver>"
                          "</accessservergroup></site></servicetp>";
    User stUser;
    ASSERT_EQ(ServerList(strBody, stUser), 0u);
    ASSERT_NE(stUser.pstSiteInfo, nullptr);
    EXPECT_STREQ(stUser.pstSiteInfo->acSiteName, "");
    ASSERT_EQ(stUser.pstSiteInfo->uiNumOfAccessServer, 1u);
    const tagLOGIN_S_ACCESS_SERVER &stGroup = stUser.pstSiteInfo->pstAccessServer[0];
    EXPECT_STREQ(stGroup.acSipUri, "");
    EXPECT_STREQ(stGroup.acEserverAddr, "");
    EXPECT_STREQ(stGroup.acSvnUri, "10.0.0.1") << "the keys after a huge one are still read";
    EXPECT_TRUE(m_resolver.Calls().empty()) << "an over-long host is never resolved";
    ASSERT_EQ(stUser.stSipServerList.uiNum, 1u);
    EXPECT_STREQ(stUser.stSipServerList.pstServer[0].acHost, "");
    ReleaseUserHandedOver(stUser);
}

TEST_F(HostileModuleTest, SixteenMebibyteTokenIsNotCopiedAndTheParseGoesOn)
{
    std::string strBody = "<UserInfo><LoginToken><AccessToken>" + std::string(BIG_VALUE, 't') +
                          "</AccessToken><ExpireIn>5</ExpireIn></LoginToken></UserInfo>";
    auto stUser = Cleared<User>();
    EXPECT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 0u);
    EXPECT_STREQ(stUser.acAccessToken, "");
    EXPECT_EQ(stUser.uiExpireIn, 5u);
    EXPECT_EQ(stUser.uiDeployMode, 3u);
}

TEST_F(HostileModuleTest, SixteenMebibyteEmbeddedJsonIsScannedWithinItsFields)
{
    std::string strJson =
        "{\"Uri\":\"" + std::string(BIG_VALUE, 'u') + "\",\"RegPassword\":\"pw\",\"RegIpAddress\":\"10.0.0.2\"}";
    std::string strBody = "<Envelope><Body><GetEndPointMessageJsonResponse xmlns=\"" LOGIN_MGMT_SERVICE_NAMESPACE "\">"
                          "<GetEndPointMessageJsonResult><ErrCode>0</ErrCode></GetEndPointMessageJsonResult>"
                          "<result>" +
                          strJson + "</result></GetEndPointMessageJsonResponse></Body></Envelope>";
    auto stResult = Cleared<tagLOGIN_S_ENDPOINT_MSG_RESULT>();
    EXPECT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);
    EXPECT_EQ(std::string(stResult.acUri, sizeof(stResult.acUri)), std::string(sizeof(stResult.acUri), '\0'))
        << "a value that does not fit is not copied";
    EXPECT_STREQ(stResult.acRegPassword, "pw");
    EXPECT_STREQ(stResult.acRegIpAddress, "10.0.0.2");
}

/* The scanner steps two bytes past the key (its closing quote and the colon): a key that
 * ends the text, or ends one byte before it, must not take it past the terminator. The text
 * sits in a block of exactly its size, so AddressSanitizer sees any such read. */
TEST_F(HostileModuleTest, ScannerKeyAtTheEndOfTheTextCopiesNothing)
{
    for (const std::string strJson : {"{\"Uri", "{\"Uri\"", "Uri", ""}) {
        SCOPED_TRACE(strJson);
        std::unique_ptr<char[]> pcJson(new char[strJson.size() + 1]);
        std::memcpy(pcJson.get(), strJson.c_str(), strJson.size() + 1);
        char acDst[16];
        std::memset(acDst, 'x', sizeof(acDst));
        XmlGetStringValueByKeyFromJson(strJson.empty() ? "" : "Uri", pcJson.get(), acDst, sizeof(acDst));
        EXPECT_EQ(std::string(acDst, sizeof(acDst)), std::string(sizeof(acDst), 'x'));
    }
}

/* ---- breadth ------------------------------------------------------------------------------- */

TEST_F(HostileModuleTest, TwoThousandSitesAreAllParsedSelectedAndListed)
{
    const uint32_t uiSites = 2000;
    std::string strSites;
    for (uint32_t i = 0; i < uiSites; ++i) {
        std::string strN = std::to_string(i);
        strSites += "<site name=\"s" + strN + "\" priority=\"" + std::to_string(i + 1) +
                    "\"><accessservergroup>"
                    "<accessserver name=\"g" +
                    strN + "\"><sip uri=\"10." + std::to_string(i / 256) + "." + std::to_string(i % 256) +
                    ".1\"/></accessserver></accessservergroup></site>";
    }
    User stUser;
    ASSERT_EQ(Login("<UserInfo>" + Token() + "<servicetp>" + strSites + "</servicetp></UserInfo>", stUser), 0u);
    ASSERT_NE(stUser.pstSiteInfo, nullptr);
    EXPECT_STREQ(stUser.pstSiteInfo->acSiteName, "s0") << "no SSO host matches: site 0 is the own site";
    EXPECT_EQ(stUser.pstSiteInfo->uiNumOfAccessServer, uiSites) << "one group from every site";
    EXPECT_EQ(stUser.stSipServerList.uiNum, uiSites);
    EXPECT_STREQ(stUser.stSipServerList.pstServer[uiSites - 1].acHost, "10.7.207.1");
    EXPECT_EQ(LiveBlocksSinceStart(), 3u) << "the caller holds the selected site's record and groups, and the SIP list";
    ReleaseUserHandedOver(stUser);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
}

TEST_F(HostileModuleTest, ThreeThousandGroupsInOneSiteGiveThreeSelectedAndEverySipServer)
{
    const uint32_t uiGroups = 3000;
    std::string strGroups;
    for (uint32_t i = 0; i < uiGroups; ++i) {
        strGroups += "<accessserver name=\"g" + std::to_string(i) + "\"><sip uri=\"10.9." + std::to_string(i / 256) +
                     "." + std::to_string(i % 256) + "\"/></accessserver>";
    }
    User stUser;
    ASSERT_EQ(Login("<UserInfo>" + Token() + "<servicetp><site name=\"big\"><accessservergroup>" + strGroups +
                        "</accessservergroup></site></servicetp></UserInfo>",
                    stUser),
              0u);
    ASSERT_NE(stUser.pstSiteInfo, nullptr);
    EXPECT_EQ(stUser.pstSiteInfo->uiNumOfAccessServer, 3u);
    EXPECT_EQ(stUser.stSipServerList.uiNum, uiGroups);
    ReleaseUserHandedOver(stUser);
}

TEST_F(HostileModuleTest, LongListsStopAtTheirCapacities)
{
    std::string strBody = "<UserInfo>" + Token() + "<ExtraParms>" + Repeat("<p>v</p>", 5000) + "</ExtraParms>" +
                          "<umsinfo>" + Repeat("<ums dn=\"1\" umsaccount=\"a\" pwd=\"p\"/>", 5000) +
                          "</umsinfo></UserInfo>";
    User stUser;
    ASSERT_EQ(Login(strBody, stUser), 0u);
    EXPECT_EQ(stUser.uiExtraParmNum, LOGIN_EXTRA_PARM_MAX);
    EXPECT_STREQ(stUser.astUmsInfo[LOGIN_UMS_INFO_NUM - 1].acDn, "1");
    ReleaseUserHandedOver(stUser);

    std::string strAddresses = Repeat("<address>a</address>", 10000);
    std::string strConference = "<loginResult><result><resultCode>0</resultCode><resultDesc>d</resultDesc></result>"
                                "<conferenceClientInfo><euaInfo>" +
                                strAddresses + "</euaInfo><stgInfo>" + Repeat("<stgAddress>s</stgAddress>", 10000) +
                                Repeat("<sbcInnerAddress>b</sbcInnerAddress>", 10000) + "</stgInfo><tmsInfo>" +
                                strAddresses + "</tmsInfo><atriumInfo>" + strAddresses +
                                "</atriumInfo></conferenceClientInfo></loginResult>";
    auto stConf = Cleared<tagXML_S_TANDEM_LOGIN_RESULT>();
    ASSERT_EQ(XmlParseTandmLoginResult(strConference.c_str(), &stConf), 0u);
    EXPECT_EQ(stConf.stEua.uiAddressNum, 18u);
    EXPECT_EQ(stConf.stStg.uiStgNum, 5u);
    EXPECT_EQ(stConf.stStg.uiSbcNum, 5u);
    EXPECT_EQ(stConf.stTms.uiTmsNum, 5u);
    EXPECT_EQ(stConf.stAtrium.uiAtriumNum, 6u);

    std::string strSearch =
        "<servicetp>" + Repeat("<site priority=\"1\"><sso_hostname uri=\"h\"/></site>", 5000) + "</servicetp>";
    auto stSearch = Cleared<tagXML_S_TANDEM_SEARCH_RESULT>();
    ASSERT_EQ(XmlParseTandemSearchResult(strSearch.c_str(), &stSearch), 0u);
    EXPECT_EQ(stSearch.uiSiteNum, 5u);
}

/* ---- entities ------------------------------------------------------------------------------ */

std::string EntityHeader(const std::string &strDeclarations)
{
    return "<?xml version=\"1.0\"?>\n<!DOCTYPE UserInfo [\n" + strDeclarations + "]>\n";
}

TEST_F(HostileModuleTest, BillionLaughsStaysLiteralText)
{
    std::string strDeclarations = "<!ENTITY lol \"lol\">\n";
    for (int i = 1; i <= 9; ++i) {
        strDeclarations += "<!ENTITY lol" + std::to_string(i) + " \"" +
                           Repeat("&lol" + (i == 1 ? std::string() : std::to_string(i - 1)) + ";", 10) + "\">\n";
    }
    std::string strBody = EntityHeader(strDeclarations) +
                          "<UserInfo><LoginToken><AccessToken>&lol9;</AccessToken><ExpireIn>1</ExpireIn></LoginToken>"
                          "<displayname>&lol9;&lol9;</displayname></UserInfo>";
    User stUser;
    ASSERT_EQ(Login(strBody, stUser), 0u);
    EXPECT_STREQ(stUser.acAccessToken, "&lol9;");
    EXPECT_STREQ(stUser.acDisplayName, "&lol9;&lol9;");
    ReleaseUserHandedOver(stUser);
}

TEST_F(HostileModuleTest, ExternalEntityNamingALocalFileReadsNothing)
{
    const std::string strMarker = "HARDENING-MARKER-51c9";
    const std::string strPath = hardening::ScratchPath("marker");
    FILE *pFile = std::fopen(strPath.c_str(), "w");
    ASSERT_NE(pFile, nullptr);
    std::fputs(strMarker.c_str(), pFile);
    std::fclose(pFile);

    std::string strBody = EntityHeader("<!ENTITY xxe SYSTEM \"file://" + strPath +
                                       "\">\n<!ENTITY % pe SYSTEM \"file://" + strPath + "\">\n%pe;\n") +
                          "<UserInfo><LoginToken><AccessToken>&xxe;</AccessToken><ExpireIn>1</ExpireIn></LoginToken>"
                          "<RealUserAccount>&xxe;</RealUserAccount><sipinfo><impu>&xxe;</impu></sipinfo></UserInfo>";
    User stUser;
    ASSERT_EQ(Login(strBody, stUser), 0u);
    std::remove(strPath.c_str());
    EXPECT_STREQ(stUser.acAccessToken, "&xxe;");
    EXPECT_STREQ(stUser.acRealUserAccount, "&xxe;");
    EXPECT_STREQ(stUser.acSipAccount, "&xxe;");
    EXPECT_EQ(FlattenUser(stUser).find(strMarker), std::string::npos);
    for (const std::string &strTrace : m_traces.Texts()) {
        EXPECT_EQ(strTrace.find(strMarker), std::string::npos) << strTrace;
    }
    ReleaseUserHandedOver(stUser);
}

/* ---- bytes --------------------------------------------------------------------------------- */

TEST_F(HostileModuleTest, InvalidUtf8IsCopiedByteForByte)
{
    const std::string strBytes = "\xff\xfe\xc3\x28\xed\xa0\x80\xf8\x88\x80\x80\x80";
    std::string strBody = "<UserInfo><LoginToken><AccessToken>" + strBytes +
                          "</AccessToken><ExpireIn>1</ExpireIn>"
                          "</LoginToken><RealUserAccount>" +
                          strBytes + "</RealUserAccount></UserInfo>";
    auto stUser = Cleared<User>();
    ASSERT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 0u);
    EXPECT_EQ(std::string(stUser.acAccessToken), strBytes);
    EXPECT_EQ(std::string(stUser.acRealUserAccount), strBytes);

    std::string strConference = "<result><resultCode>1</resultCode><resultDesc>" + strBytes + "</resultDesc></result>";
    auto stConf = Cleared<tagXML_S_TANDEM_LOGIN_RESULT>();
    ASSERT_EQ(XmlParseTandmLoginResult(strConference.c_str(), &stConf), 0u);
    EXPECT_EQ(std::string(stConf.stResult.acResultDesc), strBytes);
}

TEST_F(HostileModuleTest, NulAfterTheRootHidesTheRest)
{
    const std::string strAnswer = ReadAnswer("portal-login.xml");
    User stReference;
    uint32_t uiReference = Login(strAnswer, stReference);
    std::string strReference = FlattenUser(stReference);
    ReleaseUserHandedOver(stReference);

    std::string strWithTail = strAnswer + std::string(1, '\0') + "<UserInfo><LoginToken><AccessToken>evil";
    User stUser;
    EXPECT_EQ(Login(strWithTail, stUser), uiReference);
    EXPECT_TRUE(FlattenUser(stUser) == strReference);
    ReleaseUserHandedOver(stUser);
}

TEST_F(HostileModuleTest, NulInsideTheAnswerCutsItIntoMalformedText)
{
    std::string strBody = "<UserInfo><LoginToken><AccessToken>to" + std::string(1, '\0') +
                          "ken</AccessToken><ExpireIn>1</ExpireIn></LoginToken></UserInfo>";
    User stUser;
    uint32_t uiCode = ParseCode(strBody);
    ASSERT_GT(uiCode, 255u);
    EXPECT_EQ(Login(strBody, stUser), uiCode);
    EXPECT_STREQ(stUser.acAccessToken, "");
}

/* ---- truncation ---------------------------------------------------------------------------- */

/* Cuts the answer after every byte: each cut that leaves the root open gives the library's
 * parse code with the parser's one error trace and writes nothing; the others read as the
 * whole answer does. */
TEST_F(HostileModuleTest, PortalLoginCutAtEveryByte)
{
    const std::string strAnswer = ReadAnswer("portal-login.xml");
    User stReference;
    ASSERT_EQ(Login(strAnswer, stReference), 0u);
    const std::string strReference = FlattenUser(stReference);
    ReleaseUserHandedOver(stReference);
    const std::string strUntouched = FlattenUser(Cleared<User>());

    size_t uiMalformed = 0;
    for (size_t uiLen = 0; uiLen <= strAnswer.size(); ++uiLen) {
        SCOPED_TRACE("cut after " + std::to_string(uiLen) + " bytes");
        const std::string strCut = strAnswer.substr(0, uiLen);
        m_traces.Clear();
        User stUser;
        uint32_t uiRet = Login(strCut, stUser);
        uint32_t uiCode = ParseCode(strCut);
        if (uiCode != 0) {
            ++uiMalformed;
            EXPECT_EQ(uiRet, uiCode);
            EXPECT_THAT(
                m_traces.Texts(),
                ElementsAre("L0 " + ParseFailure("atrium: Conf Login KTL_XML_Parse failed errno=[0x%x]!", strCut)));
            EXPECT_TRUE(FlattenUser(stUser) == strUntouched);
        } else {
            EXPECT_EQ(uiRet, 0u);
            EXPECT_TRUE(FlattenUser(stUser) == strReference);
        }
        ReleaseUserHandedOver(stUser);
        ASSERT_EQ(LiveBlocksSinceStart(), 0u);
        ASSERT_EQ(LiveDocumentsSinceStart(), 0u);
    }
    EXPECT_EQ(uiMalformed, strAnswer.rfind("</UserInfo>") + std::string("</UserInfo>").size());
}

TEST_F(HostileModuleTest, ConferenceLoginCutAtEveryByte)
{
    const std::string strAnswer = ReadAnswer("conference-login.xml");
    auto stReference = Cleared<tagXML_S_TANDEM_LOGIN_RESULT>();
    ASSERT_EQ(XmlParseTandmLoginResult(strAnswer.c_str(), &stReference), 0u);
    const auto stUntouched = Cleared<tagXML_S_TANDEM_LOGIN_RESULT>();

    size_t uiMalformed = 0;
    for (size_t uiLen = 0; uiLen <= strAnswer.size(); ++uiLen) {
        SCOPED_TRACE("cut after " + std::to_string(uiLen) + " bytes");
        const std::string strCut = strAnswer.substr(0, uiLen);
        m_traces.Clear();
        auto stResult = Cleared<tagXML_S_TANDEM_LOGIN_RESULT>();
        uint32_t uiRet = XmlParseTandmLoginResult(strCut.c_str(), &stResult);
        uint32_t uiCode = ParseCode(strCut);
        if (uiCode != 0) {
            ++uiMalformed;
            EXPECT_EQ(uiRet, uiCode);
            EXPECT_THAT(
                m_traces.Texts(),
                ElementsAre("L0 " + ParseFailure("Tandem: Conf Login KTL_XML_Parse failed errno=[0x%x]!", strCut)));
            EXPECT_EQ(hardening::BytesOf(stResult), hardening::BytesOf(stUntouched));
        } else {
            EXPECT_EQ(uiRet, 0u);
            EXPECT_EQ(hardening::BytesOf(stResult), hardening::BytesOf(stReference));
        }
        ASSERT_EQ(LiveDocumentsSinceStart(), 0u);
    }
    EXPECT_EQ(uiMalformed, strAnswer.rfind("</loginResult>") + std::string("</loginResult>").size());
}

/* ---- names --------------------------------------------------------------------------------- */

TEST_F(HostileModuleTest, DuplicatedAttributesGiveTheFirst)
{
    std::string strBody =
        "<servicetp><site name=\"first\" name=\"second\" priority=\"2\" priority=\"9\">"
        "<accessservergroup><accessserver name=\"g1\" name=\"g2\"><sip uri=\"10.0.0.1\" uri=\"10.0.0.2\"/>"
        "<siptls isactive=\"true\" isactive=\"false\"/><next uri=\"t1\" uri=\"t2\"/></accessserver>"
        "</accessservergroup></site></servicetp>";
    User stUser;
    ASSERT_EQ(ServerList(strBody, stUser), 0u);
    ASSERT_NE(stUser.pstSiteInfo, nullptr);
    EXPECT_STREQ(stUser.pstSiteInfo->acSiteName, "first");
    EXPECT_EQ(stUser.pstSiteInfo->uiPriority, 2u);
    ASSERT_EQ(stUser.pstSiteInfo->uiNumOfAccessServer, 1u);
    EXPECT_STREQ(stUser.pstSiteInfo->pstAccessServer[0].acName, "g1");
    EXPECT_STREQ(stUser.pstSiteInfo->pstAccessServer[0].acSipUri, "10.0.0.1");
    EXPECT_EQ(stUser.pstSiteInfo->pstAccessServer[0].uiSipTlsActive, 1u);
    EXPECT_STREQ(stUser.pstSiteInfo->pstAccessServer[0].acSipTlsUri, "t1");
    ReleaseUserHandedOver(stUser);
}

TEST_F(HostileModuleTest, PrefixedAndUnprefixedNamesMixed)
{
    std::string strBody =
        "<p:UserInfo xmlns:p=\"urn:p\" xmlns:q=\"urn:q\"><p:LoginToken><AccessToken>mixed</AccessToken>"
        "<q:ExpireIn>9</q:ExpireIn></p:LoginToken><LoginToken><AccessToken>second</AccessToken></LoginToken>"
        "<q:servicetp><q:site name=\"qs\"><sso_hostname uri=\"sso.a.example\"/><accessservergroup>"
        "<p:accessserver name=\"pg\"><q:sip uri=\"10.0.0.7\"/></p:accessserver></accessservergroup>"
        "</q:site></q:servicetp></p:UserInfo>";
    User stUser;
    ASSERT_EQ(Login(strBody, stUser), 0u);
    EXPECT_STREQ(stUser.acAccessToken, "mixed") << "the first matching LoginToken is taken";
    EXPECT_EQ(stUser.uiExpireIn, 9u);
    ASSERT_NE(stUser.pstSiteInfo, nullptr);
    EXPECT_STREQ(stUser.pstSiteInfo->acSiteName, "qs");
    ASSERT_EQ(stUser.stSipServerList.uiNum, 1u);
    EXPECT_STREQ(stUser.stSipServerList.pstServer[0].acHost, "10.0.0.7");
    ReleaseUserHandedOver(stUser);

    /* The conference address lists compare each element's name exactly with "address": a
     * prefixed first address is found by its path but ends the list at once. */
    std::string strConference = "<result><resultCode>1</resultCode><resultDesc>d</resultDesc><failConferenceClientInfo>"
                                "<atriumInfo><address>one</address><n:address xmlns:n=\"urn:n\">two</n:address>"
                                "</atriumInfo></failConferenceClientInfo></result>";
    auto stConf = Cleared<tagXML_S_TANDEM_LOGIN_RESULT>();
    ASSERT_EQ(XmlParseTandmLoginResult(strConference.c_str(), &stConf), 0u);
    EXPECT_EQ(stConf.stAtrium.uiAtriumNum, 1u);
    EXPECT_STREQ(stConf.stAtrium.acAddress[0], "one");
}

} // namespace
