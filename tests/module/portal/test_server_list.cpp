/*
 * Server-list answer: the SIP account read from each element's "val" attribute, FuncType
 * defaulting to 5, every site child parsed (other children stepped over), site 0 as own
 * and main site, and nothing written outside the SIP-account and site fields.
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

const char PARSER[] = "XmlParseAtriumGetServerListRst";

class ServerListTest : public PortalUserTest {
protected:
    static std::string Answer(const std::string &strInner)
    {
        return "<?xml version=\"1.0\"?><servicetp>" + strInner + "</servicetp>";
    }
    static std::string SipInfo(const std::string &strInner) { return "<sipinfo>" + strInner + "</sipinfo>"; }
    static std::string Site(const std::string &strName, const std::string &strPriority,
                            const std::vector<std::pair<std::string, std::string>> &vecGroups)
    {
        std::string strSite = "<site name=\"" + strName + "\" priority=\"" + strPriority +
                              "\"><sso_hostname uri=\"" + strName + ".corp.example\"/><accessservergroup>";
        for (const auto &stGroup : vecGroups) {
            strSite += "<accessserver name=\"" + stGroup.first + "\"><sip uri=\"" + stGroup.second +
                       "\"/></accessserver>";
        }
        return strSite + "</accessservergroup></site>";
    }
    static std::vector<std::string> SipHosts(const tagLOGIN_S_ATRIUM_USER_INFO &stUser)
    {
        std::vector<std::string> vecHosts;
        for (uint32_t i = 0; i < stUser.stSipServerList.uiNum && stUser.stSipServerList.pstServer != nullptr; ++i) {
            vecHosts.push_back(Format("%s:%u", stUser.stSipServerList.pstServer[i].acHost,
                                      stUser.stSipServerList.pstServer[i].uiPort));
        }
        return vecHosts;
    }
    std::vector<std::string> OwnTraces() const { return TextsOf(m_traces, PARSER); }
};

const char FULL_SIP_INFO[] = "<sipinfo><impu val=\"+15550100@corp.example\"/><impi val=\"alice.impi\"/>"
                             "<pwdtype val=\"0\"/><passwd val=\"sip-Secret!1\"/><domain val=\"corp.example\"/>"
                             "<FuncType val=\"2\" terminalScene=\"office\"/></sipinfo>";

TEST_F(ServerListTest, CompleteAnswerFillsTheSipAccountFromValAttributes)
{
    RandomFeed feed({0});
    std::string strBody = Answer(std::string(FULL_SIP_INFO) + Site("east", "2", {{"e1", "10.1.0.1:5060"}}));

    ASSERT_EQ(XmlParseAtriumGetServerListRst(strBody.c_str(), &m_stUser), 0u);

    EXPECT_STREQ(m_stUser.acSipAccount, "+15550100@corp.example");
    EXPECT_STREQ(m_stUser.acSipImpi, "alice.impi");
    EXPECT_EQ(m_stUser.bPwdTypeZero, 1u);
    EXPECT_STREQ(m_stUser.acSipPassword, "sip-Secret!1");
    EXPECT_STREQ(m_stUser.acSipDomain, "corp.example");
    EXPECT_EQ(m_stUser.iFuncType, 2);
    EXPECT_STREQ(m_stUser.acTerminalScene, "office");
    EXPECT_EQ(m_stUser.bSiteInfoValid, 1u);
    /* the sipinfo child is stepped over when the sites are harvested */
    EXPECT_THAT(OwnTraces(), ElementsAre("L2 the sip FuncType 2", "L2 the terminal scene is office", UrlMiss("site")));
}

TEST_F(ServerListTest, OnlyTheSipAccountAndSiteFieldsAreWritten)
{
    RandomFeed feed({0});
    tagLOGIN_S_ATRIUM_USER_INFO stUser = SentinelRecord<tagLOGIN_S_ATRIUM_USER_INFO>();
    std::string strBody = Answer(std::string(FULL_SIP_INFO) + Site("east", "2", {{"e1", "10.1.0.1:5060"}}));

    ASSERT_EQ(XmlParseAtriumGetServerListRst(strBody.c_str(), &stUser), 0u);

    tagLOGIN_S_ATRIUM_USER_INFO stExpected = SentinelRecord<tagLOGIN_S_ATRIUM_USER_INFO>();
    std::memcpy(stExpected.acSipAccount, stUser.acSipAccount, sizeof(stUser.acSipAccount));
    std::memcpy(stExpected.acSipImpi, stUser.acSipImpi, sizeof(stUser.acSipImpi));
    stExpected.bPwdTypeZero = stUser.bPwdTypeZero;
    std::memcpy(stExpected.acSipPassword, stUser.acSipPassword, sizeof(stUser.acSipPassword));
    std::memcpy(stExpected.acSipDomain, stUser.acSipDomain, sizeof(stUser.acSipDomain));
    stExpected.iFuncType = stUser.iFuncType;
    std::memcpy(stExpected.acTerminalScene, stUser.acTerminalScene, sizeof(stUser.acTerminalScene));
    stExpected.pstSiteInfo = stUser.pstSiteInfo;
    stExpected.bSiteInfoValid = stUser.bSiteInfoValid;
    stExpected.stSipServerList = stUser.stSipServerList;
    EXPECT_TRUE(SameBytes(stUser, stExpected));
    EXPECT_EQ(stUser.bSiteInfoValid, 1u);
    stUser.pstExtraParm = nullptr; /* still the sentinel: this answer hands over no extra parameters */
    ReleaseUserHandedOver(stUser);
}

TEST_F(ServerListTest, ValueAsElementTextWithoutValAttributeIsIgnored)
{
    std::strcpy(m_stUser.acSipAccount, "kept");
    std::string strBody = Answer(SipInfo("<impu>+1555@corp.example</impu><passwd>text-pw</passwd>"));

    ASSERT_EQ(XmlParseAtriumGetServerListRst(strBody.c_str(), &m_stUser), 0u);

    EXPECT_STREQ(m_stUser.acSipAccount, "kept");
    EXPECT_STREQ(m_stUser.acSipPassword, "");
}

TEST_F(ServerListTest, MissingImpuDoesNotFallBackToAnAccount)
{
    std::string strBody = Answer(SipInfo("<account val=\"acc\"/>"));

    ASSERT_EQ(XmlParseAtriumGetServerListRst(strBody.c_str(), &m_stUser), 0u);

    EXPECT_STREQ(m_stUser.acSipAccount, "");
}

TEST_F(ServerListTest, MissingFuncTypeWritesFive)
{
    m_stUser.iFuncType = -1;
    ASSERT_EQ(XmlParseAtriumGetServerListRst(Answer(SipInfo("")).c_str(), &m_stUser), 0u);

    EXPECT_EQ(m_stUser.iFuncType, 5);
    EXPECT_THAT(OwnTraces(), ElementsAre(UrlMiss("servicetp.sipinfo.impu"), UrlMiss("servicetp.sipinfo.impi"),
                                         UrlMiss("servicetp.sipinfo.pwdtype"), UrlMiss("servicetp.sipinfo.passwd"),
                                         UrlMiss("servicetp.sipinfo.domain"), UrlMiss("servicetp.sipinfo.FuncType"),
                                         "L1 Not Find the sip FuncType, set default 5"));
}

TEST_F(ServerListTest, FuncTypeWithoutValButWithSceneLeavesTheTypeAndCopiesTheScene)
{
    m_stUser.iFuncType = 9;
    ASSERT_EQ(XmlParseAtriumGetServerListRst(Answer(SipInfo("<FuncType terminalScene=\"car\"/>")).c_str(), &m_stUser),
              0u);

    EXPECT_EQ(m_stUser.iFuncType, 9);
    EXPECT_STREQ(m_stUser.acTerminalScene, "car");
    EXPECT_EQ(OwnTraces().back(), "L2 the terminal scene is car");
}

TEST_F(ServerListTest, FuncTypeThatIsNotANumberIsTracedAndItsSceneStillCopied)
{
    m_stUser.iFuncType = 9;
    ASSERT_EQ(XmlParseAtriumGetServerListRst(
                  Answer(SipInfo("<FuncType val=\"abc\" terminalScene=\"home\"/>")).c_str(), &m_stUser),
              0u);

    EXPECT_EQ(m_stUser.iFuncType, 9);
    EXPECT_STREQ(m_stUser.acTerminalScene, "home");
    std::vector<std::string> vecOwn = OwnTraces();
    ASSERT_GE(vecOwn.size(), 2u);
    EXPECT_EQ(vecOwn[vecOwn.size() - 2], "L1 the sip FuncType value is invaild");
    EXPECT_EQ(vecOwn.back(), "L2 the terminal scene is home");
}

TEST_F(ServerListTest, PasswordTypeFollowsItsValAttribute)
{
    const struct {
        const char *pcElement;
        uint32_t uiBefore;
        uint32_t uiExpected;
    } astCases[] = {{"<pwdtype val=\"0\"/>", 7, 1}, {"<pwdtype val=\"1\"/>", 7, 0}, {"<pwdtype val=\"abc\"/>", 7, 1},
                    {"<pwdtype>0</pwdtype>", 7, 7} /* no "val": untouched */, {"", 7, 0} /* absent: 0 */};
    for (const auto &stCase : astCases) {
        tagLOGIN_S_ATRIUM_USER_INFO stUser{};
        stUser.bPwdTypeZero = stCase.uiBefore;
        ASSERT_EQ(XmlParseAtriumGetServerListRst(Answer(SipInfo(stCase.pcElement)).c_str(), &stUser), 0u)
            << stCase.pcElement;
        EXPECT_EQ(stUser.bPwdTypeZero, stCase.uiExpected) << stCase.pcElement;
    }
}

TEST_F(ServerListTest, ValuesAreCopiedWithTheirCapacities)
{
    std::string strBody = Answer(SipInfo("<impu val=\"" + std::string(128, 'u') + "\"/><impi val=\"" +
                                         std::string(127, 'i') + "\"/><domain val=\"" + std::string(255, 'd') +
                                         "\"/><FuncType val=\"1\" terminalScene=\"" + std::string(15, 's') + "\"/>"));

    ASSERT_EQ(XmlParseAtriumGetServerListRst(strBody.c_str(), &m_stUser), 0u);

    EXPECT_STREQ(m_stUser.acSipAccount, "");
    EXPECT_EQ(std::string(m_stUser.acSipImpi), std::string(127, 'i'));
    EXPECT_EQ(std::string(m_stUser.acSipDomain), std::string(255, 'd'));
    EXPECT_EQ(std::string(m_stUser.acTerminalScene), std::string(15, 's'));
}

TEST_F(ServerListTest, SingleSiteIsOwnAndMainSite)
{
    RandomFeed feed({0});
    std::string strBody = Answer(Site("only", "4", {{"g1", "10.1.0.1:5060"}, {"g2", "10.1.0.2:5060"}}));

    ASSERT_EQ(XmlParseAtriumGetServerListRst(strBody.c_str(), &m_stUser), 0u);

    EXPECT_EQ(m_stUser.bSiteInfoValid, 1u);
    ASSERT_NE(m_stUser.pstSiteInfo, nullptr);
    EXPECT_STREQ(m_stUser.pstSiteInfo->acSiteName, "only");
    EXPECT_THAT(SelectedGroups(m_stUser), ElementsAre(Pair("g1", 1u), Pair("g2", 1u)));
    EXPECT_THAT(SipHosts(m_stUser), ElementsAre("10.1.0.1:5060", "10.1.0.2:5060"));
}

TEST_F(ServerListTest, SiteZeroIsOwnAndMainSiteWhateverThePriorities)
{
    RandomFeed feed({0});
    std::string strBody = Answer(Site("first", "3", {{"a1", "10.1.0.1:5060"}}) +
                                 Site("second", "1", {{"b1", "10.2.0.1:5060"}}) +
                                 Site("third", "2", {{"c1", "10.3.0.1:5060"}}));

    ASSERT_EQ(XmlParseAtriumGetServerListRst(strBody.c_str(), &m_stUser), 0u);

    ASSERT_NE(m_stUser.pstSiteInfo, nullptr);
    EXPECT_STREQ(m_stUser.pstSiteInfo->acSiteName, "first");
    /* own (and main) site 0, then the top-priority site, then the rest */
    EXPECT_THAT(SelectedGroups(m_stUser), ElementsAre(Pair("a1", 1u), Pair("b1", 0u), Pair("c1", 0u)));
}

TEST_F(ServerListTest, OtherChildrenBetweenSitesAreSteppedOverAndEverySiteIsParsed)
{
    RandomFeed feed({0});
    std::string strBody = Answer("<ecsmainsite name=\"x\"/>" + Site("a", "1", {{"a1", "10.1.0.1:5060"}}) +
                                 "<note/>" + SipInfo("<impu val=\"u\"/>") +
                                 Site("b", "2", {{"b1", "10.2.0.1:5060"}, {"b2", "10.2.0.2:5070"}}));

    ASSERT_EQ(XmlParseAtriumGetServerListRst(strBody.c_str(), &m_stUser), 0u);

    EXPECT_STREQ(m_stUser.acSipAccount, "u");
    EXPECT_THAT(SipHosts(m_stUser), ElementsAre("10.1.0.1:5060", "10.2.0.1:5060", "10.2.0.2:5070"));
    EXPECT_THAT(SelectedGroups(m_stUser), ElementsAre(Pair("a1", 1u), Pair("b1", 0u), Pair("b2", 0u)));
    std::vector<std::string> vecOwn = OwnTraces();
    EXPECT_EQ(std::count(vecOwn.begin(), vecOwn.end(), UrlMiss("site")), 3) << "each other child looked at once";
}

TEST_F(ServerListTest, AnswerWithoutServiceTpYieldsZeroWithOnlyLookupTraces)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser = SentinelRecord<tagLOGIN_S_ATRIUM_USER_INFO>();
    tagLOGIN_S_ATRIUM_USER_INFO stExpected = stUser;

    ASSERT_EQ(XmlParseAtriumGetServerListRst("<UserInfo><sipinfo><impu val=\"u\"/></sipinfo></UserInfo>", &stUser),
              0u);

    stExpected.bPwdTypeZero = 0;
    stExpected.iFuncType = 5;
    EXPECT_TRUE(SameBytes(stUser, stExpected));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(UrlMiss("servicetp.sipinfo.impu"), UrlMiss("servicetp.sipinfo.impi"),
                            UrlMiss("servicetp.sipinfo.pwdtype"), UrlMiss("servicetp.sipinfo.passwd"),
                            UrlMiss("servicetp.sipinfo.domain"), UrlMiss("servicetp.sipinfo.FuncType"),
                            "L1 Not Find the sip FuncType, set default 5", UrlMiss("servicetp")));
}

TEST_F(ServerListTest, AnswerWithoutSitesBuildsNothing)
{
    ASSERT_EQ(XmlParseAtriumGetServerListRst(Answer(SipInfo("<impu val=\"u\"/>")).c_str(), &m_stUser), 0u);

    EXPECT_EQ(m_stUser.bSiteInfoValid, 0u);
    EXPECT_EQ(m_stUser.pstSiteInfo, nullptr);
    EXPECT_EQ(m_stUser.stSipServerList.pstServer, nullptr);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
}

TEST_F(ServerListTest, SiteArrayThatCannotBeAllocatedFailsWithOne)
{
    KOSA_MemFailAfter(0);
    std::string strBody = Answer(SipInfo("<impu val=\"u\"/>") + Site("a", "1", {{"a1", "10.1.0.1:5060"}}));

    EXPECT_EQ(XmlParseAtriumGetServerListRst(strBody.c_str(), &m_stUser), 1u);

    EXPECT_STREQ(m_stUser.acSipAccount, "u") << "fields read before the failure stay";
    EXPECT_EQ(m_stUser.pstSiteInfo, nullptr);
    EXPECT_EQ(OwnTraces().back(), "L0 mem malloc failed");
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
}

TEST_F(ServerListTest, SelectedSiteThatCannotBeAllocatedIsTracedAndTheAnswerSucceeds)
{
    /* site array, then the selected-site record (the site has no groups to allocate) */
    KOSA_MemFailAfter(1);
    std::string strBody = Answer("<site name=\"a\" priority=\"1\"/>");

    ASSERT_EQ(XmlParseAtriumGetServerListRst(strBody.c_str(), &m_stUser), 0u);

    EXPECT_EQ(m_stUser.bSiteInfoValid, 0u);
    EXPECT_EQ(m_stUser.pstSiteInfo, nullptr);
    EXPECT_THAT(m_traces.TextsAt(LOGIN_TRACE_ERROR), ElementsAre("getSiteInfo failed 1"));
}

TEST_F(ServerListTest, SipServerListThatCannotBeAllocatedIsTracedAndTheAnswerSucceeds)
{
    /* site array, selected-site record, its group array, then the SIP server list */
    KOSA_MemFailAfter(3);
    std::string strBody = Answer("<site name=\"a\" priority=\"1\"/>");

    ASSERT_EQ(XmlParseAtriumGetServerListRst(strBody.c_str(), &m_stUser), 0u);

    EXPECT_EQ(m_stUser.bSiteInfoValid, 1u);
    EXPECT_EQ(m_stUser.stSipServerList.pstServer, nullptr);
    /* the list's own allocation trace, then the answer's */
    EXPECT_THAT(m_traces.TextsAt(LOGIN_TRACE_ERROR), ElementsAre("mem malloc failed", "getAllSipServer failed 1"));
    EXPECT_EQ(OwnTraces().back(), "L0 getAllSipServer failed 1");
}

TEST_F(ServerListTest, NoBlocksAreLeftOnceTheCallerFreesWhatWasHandedOver)
{
    RandomFeed feed({0});
    std::string strBody = Answer(Site("a", "1", {{"a1", "10.1.0.1:5060"}}) + Site("b", "2", {{"b1", "10.2.0.1:5060"}}));

    ASSERT_EQ(XmlParseAtriumGetServerListRst(strBody.c_str(), &m_stUser), 0u);

    EXPECT_EQ(LiveBlocksSinceStart(), 3u) << DescribeLiveBlocks();
    ReleaseUserHandedOver(m_stUser);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u) << DescribeLiveBlocks();
}

TEST_F(ServerListTest, NullBodyOrRecordYieldsTwo)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser = SentinelRecord<tagLOGIN_S_ATRIUM_USER_INFO>();
    const tagLOGIN_S_ATRIUM_USER_INFO stBefore = stUser;

    EXPECT_EQ(XmlParseAtriumGetServerListRst(nullptr, &stUser), 2u);
    EXPECT_EQ(XmlParseAtriumGetServerListRst(Answer("").c_str(), nullptr), 2u);

    EXPECT_TRUE(SameBytes(stUser, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 atrium: Conf Login Parse download xmlBody pointer empty!",
                                              "L0 atrium: Conf Login Parse download xmlBody pointer empty!"));
}

TEST_F(ServerListTest, TextThatIsNotXmlYieldsTheLibraryCodeUnchanged)
{
    for (const char *pcBody : {"", "<servicetp>", "busy"}) {
        m_traces.Clear();
        const uint32_t uiLibraryCode = LibraryParseCode(pcBody);
        ASSERT_GT(uiLibraryCode, 255u) << pcBody;
        tagLOGIN_S_ATRIUM_USER_INFO stUser = SentinelRecord<tagLOGIN_S_ATRIUM_USER_INFO>();
        const tagLOGIN_S_ATRIUM_USER_INFO stBefore = stUser;

        EXPECT_EQ(XmlParseAtriumGetServerListRst(pcBody, &stUser), uiLibraryCode) << pcBody;

        EXPECT_TRUE(SameBytes(stUser, stBefore)) << pcBody;
        EXPECT_THAT(m_traces.Texts(),
                    ElementsAre(Format("L0 atrium: Conf Login KTL_XML_Parse failed errno=[0x%x]!", uiLibraryCode)))
            << pcBody;
    }
}

TEST_F(ServerListTest, TextOutsideTheRootIsRefusedBeforeAnySiteIsParsed)
{
    const std::string strBody =
        Answer(std::string(FULL_SIP_INFO) + Site("east", "2", {{"e1", "10.1.0.1:5060"}})) + "trailing junk";
    tagLOGIN_S_ATRIUM_USER_INFO stUser = SentinelRecord<tagLOGIN_S_ATRIUM_USER_INFO>();
    const tagLOGIN_S_ATRIUM_USER_INFO stBefore = stUser;

    EXPECT_EQ(XmlParseAtriumGetServerListRst(strBody.c_str(), &stUser), KTL_XML_ERR_TEXT_OUTSIDE_ROOT);

    EXPECT_TRUE(SameBytes(stUser, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 atrium: Conf Login KTL_XML_Parse failed errno=[0x1008]!"));
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
}

} // namespace
