/*
 * Guest service site: the first site whose SSO host matches the guest's key is parsed,
 * copied into a record the caller owns and given at most three of its groups (randomly
 * drawn, none marked main); the first portal address of its groups is captured.
 */
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "conference_test.h"

using ::testing::ElementsAre;
using namespace conference_test;

namespace {

using TempUser = tagXML_S_TANDEM_TEMPUSER_INFO;

const char *const GUEST_KEY = "sso.guest.example";

std::string SiteList(const std::string &strSites)
{
    return "<?xml version=\"1.0\"?><servicetp>" + strSites + "</servicetp>";
}

/* A site whose groups are named prefix-0 .. prefix-(n-1). */
std::string Site(const std::string &strName, const std::string &strSso, uint32_t uiGroups)
{
    std::string strSite = "<site name=\"" + strName + "\" priority=\"4\"><sso_hostname uri=\"" + strSso +
                          "\"/><accessservergroup>";
    for (uint32_t i = 0; i < uiGroups; ++i) {
        strSite += "<accessserver name=\"" + strName + "-" + std::to_string(i) + "\"/>";
    }
    return strSite + "</accessservergroup></site>";
}

std::vector<std::string> GroupNames(const tagLOGIN_S_SITE &stSite)
{
    std::vector<std::string> vecNames;
    for (uint32_t i = 0; stSite.pstAccessServer != nullptr && i < stSite.uiNumOfAccessServer; ++i) {
        vecNames.push_back(stSite.pstAccessServer[i].acName);
    }
    return vecNames;
}

class TempuserServiceTpTest : public ModuleTest {
protected:
    /* Traces written by the parser itself (not by the site machinery it drives). */
    std::vector<std::string> OwnTraces() const
    {
        std::vector<std::string> vecTexts;
        for (const TraceLine &stLine : m_traces.Lines()) {
            if (stLine.strFunc == "XmlParseTandemTempuserServiceTp") {
                vecTexts.push_back(At(stLine.uiLevel, stLine.strText));
            }
        }
        return vecTexts;
    }
    static bool AllZero(const tagLOGIN_S_SITE &stSite)
    {
        const tagLOGIN_S_SITE stZero{};
        return SameBytes(stSite, stZero);
    }
};

TEST_F(TempuserServiceTpTest, MatchingSiteIsCopiedWithThreeGroupsInDrawOrder)
{
    TempUser stUser{};
    const std::string strBody = ReadTestFile("conference/guest-servicetp.xml");
    RandomFeed feed({1});  // draws positions 1, 4, 3 out of five groups

    ASSERT_EQ(XmlParseTandemTempuserServiceTp(strBody.c_str(), GUEST_KEY, &stUser), 0u);

    ASSERT_NE(stUser.pstSite, nullptr);
    const tagLOGIN_S_SITE &stSite = *stUser.pstSite;
    EXPECT_STREQ(stSite.acSiteName, "guest-site");
    EXPECT_STREQ(stSite.acSbcDomain, "sbc.guest.example");
    EXPECT_STREQ(stSite.acDefaultAccount, "acs-guest");
    EXPECT_STREQ(stSite.acDefaultPwd, "acs-Secret");
    EXPECT_EQ(stSite.uiPriority, 2u);
    ASSERT_EQ(stSite.uiNumOfAccessServer, 3u);
    EXPECT_THAT(GroupNames(stSite), ElementsAre("guest-g1", "guest-g4", "guest-g3"));
    EXPECT_STREQ(stSite.pstAccessServer[0].acSipUri, "10.1.0.11:5061");
    EXPECT_STREQ(stSite.pstAccessServer[1].acSipUri, "10.1.0.14:5061");
    for (uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(stSite.pstAccessServer[i].uiIsMainSite, 0u) << "group " << i;
        EXPECT_EQ(stSite.pstAccessServer[i].uiPriority, 2u) << "group " << i;
    }
    EXPECT_STREQ(stUser.acAtriumUri, "https://portal-1.guest.example") << "the first group naming a portal wins";
    EXPECT_EQ(feed.Drawn(), 3u);
    EXPECT_TRUE(OwnTraces().empty());
    EXPECT_TRUE(m_traces.Contains(LOGIN_TRACE_PROGRESS, "num of access group:5"));

    /* The caller owns the copy and its group array; releasing them leaves nothing behind. */
    EXPECT_EQ(LiveBlocksSinceStart(), 2u);
    freeSiteMem(stUser.pstSite, 1);
}

TEST_F(TempuserServiceTpTest, OtherDrawsGiveOtherGroupsStillNoneMain)
{
    TempUser stUser{};
    const std::string strBody = ReadTestFile("conference/guest-servicetp.xml");
    RandomFeed feed({7});  // positions 2, 3, 1

    ASSERT_EQ(XmlParseTandemTempuserServiceTp(strBody.c_str(), GUEST_KEY, &stUser), 0u);

    ASSERT_NE(stUser.pstSite, nullptr);
    EXPECT_THAT(GroupNames(*stUser.pstSite), ElementsAre("guest-g2", "guest-g3", "guest-g1"));
    for (uint32_t i = 0; i < stUser.pstSite->uiNumOfAccessServer; ++i) {
        EXPECT_EQ(stUser.pstSite->pstAccessServer[i].uiIsMainSite, 0u);
    }
    freeSiteMem(stUser.pstSite, 1);
}

TEST_F(TempuserServiceTpTest, SiteWithTwoGroupsKeepsBothInDrawOrder)
{
    TempUser stUser{};
    const std::string strBody = SiteList(Site("pair", GUEST_KEY, 2));
    RandomFeed feed({1});  // positions 1, 0

    ASSERT_EQ(XmlParseTandemTempuserServiceTp(strBody.c_str(), GUEST_KEY, &stUser), 0u);

    ASSERT_NE(stUser.pstSite, nullptr);
    EXPECT_THAT(GroupNames(*stUser.pstSite), ElementsAre("pair-1", "pair-0"));
    freeSiteMem(stUser.pstSite, 1);
}

TEST_F(TempuserServiceTpTest, OnlyTheFirstOfTwoMatchingSitesIsUsed)
{
    TempUser stUser{};
    const std::string strBody = SiteList(Site("other", "sso.other.example", 1) + Site("first", GUEST_KEY, 1) +
                                         Site("second", GUEST_KEY, 1));

    ASSERT_EQ(XmlParseTandemTempuserServiceTp(strBody.c_str(), GUEST_KEY, &stUser), 0u);

    ASSERT_NE(stUser.pstSite, nullptr);
    EXPECT_STREQ(stUser.pstSite->acSiteName, "first");
    EXPECT_THAT(GroupNames(*stUser.pstSite), ElementsAre("first-0"));
    freeSiteMem(stUser.pstSite, 1);
}

TEST_F(TempuserServiceTpTest, PortalAddressAlreadyHeldIsNotOverwritten)
{
    TempUser stUser{};
    std::strcpy(stUser.acAtriumUri, "https://portal.earlier.example");
    const std::string strBody = ReadTestFile("conference/guest-servicetp.xml");

    ASSERT_EQ(XmlParseTandemTempuserServiceTp(strBody.c_str(), GUEST_KEY, &stUser), 0u);

    EXPECT_STREQ(stUser.acAtriumUri, "https://portal.earlier.example");
    ASSERT_NE(stUser.pstSite, nullptr);
    freeSiteMem(stUser.pstSite, 1);
}

TEST_F(TempuserServiceTpTest, OnlyTheSiteFieldsOfTheRecordAreWritten)
{
    TempUser stUser = SentinelRecord<TempUser>();
    stUser.acAtriumUri[0] = '\0';
    const TempUser stBefore = stUser;
    const std::string strBody = ReadTestFile("conference/guest-servicetp.xml");

    ASSERT_EQ(XmlParseTandemTempuserServiceTp(strBody.c_str(), GUEST_KEY, &stUser), 0u);

    EXPECT_EQ(0, std::memcmp(&stUser, &stBefore, offsetof(TempUser, acAtriumUri)));
    EXPECT_EQ(0, std::memcmp(stUser.acChairmanPwd, stBefore.acChairmanPwd,
                             sizeof(TempUser) - offsetof(TempUser, acChairmanPwd)));
    freeSiteMem(stUser.pstSite, 1);
}

TEST_F(TempuserServiceTpTest, RootWithoutChildrenYieldsAnEmptySiteCopy)
{
    TempUser stUser{};

    ASSERT_EQ(XmlParseTandemTempuserServiceTp(SiteList("").c_str(), GUEST_KEY, &stUser), 0u);

    ASSERT_NE(stUser.pstSite, nullptr);
    EXPECT_TRUE(AllZero(*stUser.pstSite));
    EXPECT_STREQ(stUser.acAtriumUri, "");
    EXPECT_TRUE(OwnTraces().empty());
    EXPECT_EQ(LiveBlocksSinceStart(), 1u);
    freeSiteMem(stUser.pstSite, 1);
}

TEST_F(TempuserServiceTpTest, NoMatchingSiteYieldsAnEmptySiteCopy)
{
    TempUser stUser{};
    /* The SSO host is compared exactly, letter case included. */
    const std::string strBody = SiteList(Site("upper", "SSO.GUEST.EXAMPLE", 2) + Site("other", "sso.other.example", 1));

    ASSERT_EQ(XmlParseTandemTempuserServiceTp(strBody.c_str(), GUEST_KEY, &stUser), 0u);

    ASSERT_NE(stUser.pstSite, nullptr);
    EXPECT_TRUE(AllZero(*stUser.pstSite));
    EXPECT_TRUE(OwnTraces().empty());
    freeSiteMem(stUser.pstSite, 1);
}

TEST_F(TempuserServiceTpTest, FailedSiteCopyYieldsOneAndReleasesTheParsedGroups)
{
    TempUser stUser{};
    stUser.pstSite = reinterpret_cast<tagLOGIN_S_SITE *>(0x1);
    const std::string strBody = ReadTestFile("conference/guest-servicetp.xml");
    KOSA_MemFailAfter(1);  // the parsed site's group array succeeds, its copy does not

    EXPECT_EQ(XmlParseTandemTempuserServiceTp(strBody.c_str(), GUEST_KEY, &stUser), 1u);

    EXPECT_EQ(stUser.pstSite, nullptr);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
    EXPECT_TRUE(OwnTraces().empty()) << "this failure is not traced";
    EXPECT_STREQ(stUser.acAtriumUri, "https://portal-1.guest.example");
}

TEST_F(TempuserServiceTpTest, FailedSiteCopyWithoutAMatchYieldsOne)
{
    TempUser stUser{};
    KOSA_MemFailAfter(0);
    EXPECT_EQ(XmlParseTandemTempuserServiceTp(SiteList("").c_str(), GUEST_KEY, &stUser), 1u);
    EXPECT_EQ(stUser.pstSite, nullptr);
    EXPECT_TRUE(OwnTraces().empty());
}

TEST_F(TempuserServiceTpTest, FailedGroupArrayLeavesTheCopyWithoutGroups)
{
    TempUser stUser{};
    const std::string strBody = ReadTestFile("conference/guest-servicetp.xml");
    KOSA_MemFailAfter(2);  // parsed groups and site copy succeed, the copy's group array does not

    ASSERT_EQ(XmlParseTandemTempuserServiceTp(strBody.c_str(), GUEST_KEY, &stUser), 0u);

    ASSERT_NE(stUser.pstSite, nullptr);
    EXPECT_EQ(stUser.pstSite->pstAccessServer, nullptr);
    EXPECT_STREQ(stUser.pstSite->acSiteName, "guest-site");
    EXPECT_TRUE(m_traces.Contains(LOGIN_TRACE_ERROR, "mem malloc failed"));
    EXPECT_EQ(LiveBlocksSinceStart(), 1u);
    freeSiteMem(stUser.pstSite, 1);
}

TEST_F(TempuserServiceTpTest, SecondCallOverwritesTheEarlierCopyWithoutFreeingIt)
{
    TempUser stUser{};
    const std::string strBody = SiteList(Site("once", GUEST_KEY, 1));
    ASSERT_EQ(XmlParseTandemTempuserServiceTp(strBody.c_str(), GUEST_KEY, &stUser), 0u);
    tagLOGIN_S_SITE *pstFirst = stUser.pstSite;

    ASSERT_EQ(XmlParseTandemTempuserServiceTp(strBody.c_str(), GUEST_KEY, &stUser), 0u);

    EXPECT_NE(stUser.pstSite, pstFirst);
    EXPECT_EQ(LiveBlocksSinceStart(), 4u) << "both copies with their groups are the caller's";
    freeSiteMem(pstFirst, 1);
    freeSiteMem(stUser.pstSite, 1);
}

TEST_F(TempuserServiceTpTest, NullArgumentsYieldTwo)
{
    TempUser stUser = SentinelRecord<TempUser>();
    const TempUser stBefore = stUser;
    const std::string strBody = SiteList(Site("s", GUEST_KEY, 1));

    EXPECT_EQ(XmlParseTandemTempuserServiceTp(nullptr, GUEST_KEY, &stUser), 2u);
    EXPECT_EQ(XmlParseTandemTempuserServiceTp(strBody.c_str(), nullptr, &stUser), 2u);
    EXPECT_EQ(XmlParseTandemTempuserServiceTp(strBody.c_str(), GUEST_KEY, nullptr), 2u);

    EXPECT_TRUE(SameBytes(stUser, stBefore));
    const std::string strTrace = "L0 XmlParseTandemTempuserServiceTp failed param is null\n";
    EXPECT_THAT(m_traces.Texts(), ElementsAre(strTrace, strTrace, strTrace));
}

TEST_F(TempuserServiceTpTest, TextThatIsNotXmlYieldsTheLibraryCodeWithThePortalPrefix)
{
    for (const char *const *ppcBody = NotXmlBodies(); *ppcBody != nullptr; ++ppcBody) {
        m_traces.Clear();
        const uint32_t uiCode = LibraryParseCode(*ppcBody);
        TempUser stUser{};
        EXPECT_EQ(XmlParseTandemTempuserServiceTp(*ppcBody, GUEST_KEY, &stUser), uiCode) << *ppcBody;
        EXPECT_GT(uiCode, 255u);
        EXPECT_EQ(stUser.pstSite, nullptr);
        EXPECT_THAT(m_traces.Texts(),
                    ElementsAre(At(0, Format("atrium: Conf Login KTL_XML_Parse failed errno=[0x%x]!", uiCode))));
    }
}

} // namespace
