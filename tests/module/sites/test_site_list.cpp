/*
 * Site list: counting the "site" children of an answer, parsing one site with its
 * access-server groups, matching a site against the client's SSO host, and releasing a
 * site array.
 */
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "sites_test.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using Group = tagLOGIN_S_ACCESS_SERVER;

class SiteListTest : public ModuleTest {};

/* ---- GetSiteNumber ---------------------------------------------------------------------- */

TEST_F(SiteListTest, SiteNumberCountsOnlySiteChildren)
{
    ParsedXml oXml("<servicetp><site name=\"a\"/><version>3</version><site name=\"b\"/><x/><site/></servicetp>");
    EXPECT_EQ(GetSiteNumber(oXml.Root()), 3u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("site"), UrlMiss("site")));
    for (const TraceLine &stLine : m_traces.Lines()) {
        EXPECT_EQ(stLine.strFunc, "GetSiteNumber");
    }
}

TEST_F(SiteListTest, SiteNumberOfAParentWithoutChildrenIsZero)
{
    ParsedXml oXml("<servicetp>text only</servicetp>");
    EXPECT_EQ(GetSiteNumber(oXml.Root()), 0u);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(SiteListTest, SiteNumberOfANullParentIsZero)
{
    EXPECT_EQ(GetSiteNumber(nullptr), 0u);
}

TEST_F(SiteListTest, SiteNumberMatchesPrefixedSiteElements)
{
    ParsedXml oXml("<servicetp xmlns:p=\"urn:x\"><p:site/><site/></servicetp>");
    EXPECT_EQ(GetSiteNumber(oXml.Root()), 2u);
}

/* ---- XmlAtriumParseSite ----------------------------------------------------------------- */

class ParseSiteTest : public ModuleTest {
protected:
    void TearDown() override
    {
        freeSiteMem(m_pstSites, 1);
        ModuleTest::TearDown();
    }
    /* Parses one site element into a fresh zero-filled site record. */
    uint32_t Parse(const std::string &strSite, char *pcAtrium = nullptr, uint32_t uiAtriumLen = 0)
    {
        ParsedXml oXml(strSite);
        m_pstSites = NewSites(1);
        return XmlAtriumParseSite(oXml.Root(), m_pstSites, pcAtrium, uiAtriumLen);
    }
    tagLOGIN_S_SITE &Site() { return m_pstSites[0]; }

    tagLOGIN_S_SITE *m_pstSites = nullptr;
};

TEST_F(ParseSiteTest, CompleteSiteFillsEveryField)
{
    ASSERT_EQ(Parse("<site name=\"north\" priority=\"3\">"
                    "<sso_hostname uri=\"sso.north.example.com\"/>"
                    "<sbc domain=\"sbc.north.example.com\"/>"
                    "<accessservergroup>"
                    "<accessserver name=\"north-a\"><sip uri=\"192.0.2.10:5060\"/></accessserver>"
                    "<accessserver name=\"north-b\"><sip uri=\"192.0.2.11:5060\"/></accessserver>"
                    "</accessservergroup>"
                    "<tmstr069auth defaultaccount=\"acs-north\" defaultpwd=\"n0rth-secret\"/>"
                    "</site>"),
              0u);
    EXPECT_STREQ(Site().acSiteName, "north");
    EXPECT_EQ(Site().uiPriority, 3u);
    EXPECT_STREQ(Site().acSbcDomain, "sbc.north.example.com");
    EXPECT_STREQ(Site().acDefaultAccount, "acs-north");
    EXPECT_STREQ(Site().acDefaultPwd, "n0rth-secret");
    ASSERT_EQ(Site().uiNumOfAccessServer, 2u);
    ASSERT_NE(Site().pstAccessServer, nullptr);
    EXPECT_STREQ(Site().pstAccessServer[0].acName, "north-a");
    EXPECT_STREQ(Site().pstAccessServer[0].acSipUri, "192.0.2.10:5060");
    EXPECT_STREQ(Site().pstAccessServer[1].acName, "north-b");
    EXPECT_STREQ(Site().pstAccessServer[1].acSipUri, "192.0.2.11:5060");
    EXPECT_EQ(Site().pstAccessServer[0].uiPriority, 3u);
    EXPECT_EQ(Site().pstAccessServer[1].uiPriority, 3u);
    EXPECT_EQ(m_traces.Count(2, "total server 2"), 1u);
}

TEST_F(ParseSiteTest, SiteLevelTracesComeInLookupOrderAroundTheGroups)
{
    ASSERT_EQ(Parse("<site><accessservergroup><accessserver/></accessservergroup></site>"), 0u);
    std::vector<std::string> vecSiteTexts;
    for (const TraceLine &stLine : m_traces.Lines()) {
        if (stLine.strFunc == "XmlAtriumParseSite") {
            vecSiteTexts.push_back("L" + std::to_string(stLine.uiLevel) + " " + stLine.strText);
        }
    }
    EXPECT_THAT(vecSiteTexts, ElementsAre(UrlMiss("site.sbc"), "L2 total server 1", UrlMiss("site.tmstr069auth")));
    const std::vector<std::string> vecTexts = m_traces.Texts();
    EXPECT_EQ(vecTexts.front(), UrlMiss("site.sbc"));
    EXPECT_EQ(vecTexts[1], UrlMiss("accessserver.sip")) << "the group is parsed after the sbc lookup";
    EXPECT_EQ(vecTexts.back(), UrlMiss("site.tmstr069auth"));
}

TEST_F(ParseSiteTest, EmptyAccessServerGroupGivesCountZeroNullPointerAndNoTotalTrace)
{
    ASSERT_EQ(Parse("<site name=\"s\"><accessservergroup>  </accessservergroup></site>"), 0u);
    EXPECT_EQ(Site().uiNumOfAccessServer, 0u);
    EXPECT_EQ(Site().pstAccessServer, nullptr);
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("site.sbc"), UrlMiss("site.tmstr069auth")));
}

TEST_F(ParseSiteTest, MissingAccessServerGroupLeavesTheCount)
{
    ASSERT_EQ(Parse("<site/>"), 0u);
    EXPECT_EQ(Site().uiNumOfAccessServer, 0u);
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(UrlMiss("site.sbc"), UrlMiss("site.accessservergroup"), UrlMiss("site.tmstr069auth")));
}

TEST_F(ParseSiteTest, MissingElementsLeaveFieldsAsTheCallerGaveThem)
{
    ParsedXml oXml("<site/>");
    m_pstSites = NewSites(1);
    std::strcpy(Site().acSiteName, "name-before");
    std::strcpy(Site().acSbcDomain, "sbc-before");
    std::strcpy(Site().acDefaultAccount, "account-before");
    std::strcpy(Site().acDefaultPwd, "pwd-before");
    Site().uiPriority = 77;
    Site().uiNumOfAccessServer = 5;
    ASSERT_EQ(XmlAtriumParseSite(oXml.Root(), m_pstSites, nullptr, 0), 0u);
    EXPECT_STREQ(Site().acSiteName, "name-before");
    EXPECT_STREQ(Site().acSbcDomain, "sbc-before");
    EXPECT_STREQ(Site().acDefaultAccount, "account-before");
    EXPECT_STREQ(Site().acDefaultPwd, "pwd-before");
    EXPECT_EQ(Site().uiPriority, 77u);
    EXPECT_EQ(Site().uiNumOfAccessServer, 5u);
}

TEST_F(ParseSiteTest, SiteWithoutPriorityKeepsTheCallersZero)
{
    ASSERT_EQ(Parse("<site name=\"s\"/>"), 0u);
    EXPECT_EQ(Site().uiPriority, 0u);
}

TEST_F(ParseSiteTest, PriorityIsConvertedInBaseZero)
{
    const struct {
        const char *pcText;
        uint32_t uiExpected;
    } astCases[] = {{"0x10", 16}, {"010", 8}, {"42", 42}, {"high", 0}};
    for (const auto &stCase : astCases) {
        freeSiteMem(m_pstSites, 1);
        ASSERT_EQ(Parse(std::string("<site priority=\"") + stCase.pcText + "\"/>"), 0u);
        EXPECT_EQ(Site().uiPriority, stCase.uiExpected) << stCase.pcText;
    }
}

TEST_F(ParseSiteTest, EveryGroupTakesTheSitesPriority)
{
    ASSERT_EQ(Parse("<site priority=\"0x10\"><accessservergroup><accessserver/><accessserver/><accessserver/>"
                    "</accessservergroup></site>"),
              0u);
    ASSERT_EQ(Site().uiNumOfAccessServer, 3u);
    for (uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(Site().pstAccessServer[i].uiPriority, 16u) << i;
    }
}

TEST_F(ParseSiteTest, OnlyTheSecondGroupHavingAnAtriumAddressFillsTheBuffer)
{
    char acAtrium[256] = "";
    ASSERT_EQ(Parse("<site><accessservergroup><accessserver/>"
                    "<accessserver><atrium uri=\"https://second.example.com\"/></accessserver>"
                    "</accessservergroup></site>",
                    acAtrium, sizeof(acAtrium)),
              0u);
    EXPECT_STREQ(acAtrium, "https://second.example.com");
}

TEST_F(ParseSiteTest, WhenBothGroupsHaveAnAtriumAddressTheFirstIsKept)
{
    char acAtrium[256] = "";
    ASSERT_EQ(Parse("<site><accessservergroup>"
                    "<accessserver><atrium uri=\"https://first.example.com\"/></accessserver>"
                    "<accessserver><atrium uri=\"https://second.example.com\"/></accessserver>"
                    "</accessservergroup></site>",
                    acAtrium, sizeof(acAtrium)),
              0u);
    EXPECT_STREQ(acAtrium, "https://first.example.com");
    /* The second group was not offered the buffer, so it did not even look for the element. */
    EXPECT_EQ(m_traces.Count(1, UrlMiss("accessserver.atrium").substr(3)), 0u);
}

TEST_F(ParseSiteTest, ABufferThatAlreadyHoldsAnAddressIsNeverOffered)
{
    char acAtrium[256] = "https://given.example.com";
    ASSERT_EQ(Parse("<site><accessservergroup><accessserver/>"
                    "<accessserver><atrium uri=\"https://second.example.com\"/></accessserver>"
                    "</accessservergroup></site>",
                    acAtrium, sizeof(acAtrium)),
              0u);
    EXPECT_STREQ(acAtrium, "https://given.example.com");
    EXPECT_EQ(m_traces.Count(1, UrlMiss("accessserver.atrium").substr(3)), 0u);
}

TEST_F(ParseSiteTest, EveryGroupLooksForTheAtriumAddressWhileTheBufferStaysEmpty)
{
    char acAtrium[256] = "";
    ASSERT_EQ(Parse("<site><accessservergroup><accessserver/><accessserver/></accessservergroup></site>", acAtrium,
                    sizeof(acAtrium)),
              0u);
    EXPECT_STREQ(acAtrium, "");
    EXPECT_EQ(m_traces.Count(1, UrlMiss("accessserver.atrium").substr(3)), 2u);
}

TEST_F(ParseSiteTest, GroupArrayAllocationFailureReturnsOneAndSkipsTheRest)
{
    ParsedXml oXml("<site name=\"s\" priority=\"2\"><sbc domain=\"sbc.example.com\"/>"
                   "<accessservergroup><accessserver/><accessserver/></accessservergroup>"
                   "<tmstr069auth defaultaccount=\"acs\" defaultpwd=\"pwd\"/></site>");
    m_pstSites = NewSites(1);
    KOSA_MemFailAfter(0);
    EXPECT_EQ(XmlAtriumParseSite(oXml.Root(), m_pstSites, nullptr, 0), 1u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 mem malloc failed"));
    EXPECT_EQ(m_traces.Lines()[0].strFunc, "XmlAtriumParseSite");
    EXPECT_STREQ(Site().acSiteName, "s");
    EXPECT_EQ(Site().uiPriority, 2u);
    EXPECT_STREQ(Site().acSbcDomain, "sbc.example.com");
    EXPECT_EQ(Site().uiNumOfAccessServer, 2u) << "the count stays set";
    EXPECT_EQ(Site().pstAccessServer, nullptr);
    EXPECT_STREQ(Site().acDefaultAccount, "") << "tmstr069auth is not read after the failure";
    EXPECT_STREQ(Site().acDefaultPwd, "");
}

TEST_F(ParseSiteTest, GroupArrayTooLargeForTheAllocatorIsRefusedLikeAFailedAllocation)
{
    const uint64_t ulChildren = UINT32_MAX / sizeof(Group) + 1;
    std::string strSite = "<site><accessservergroup>";
    strSite.reserve(ulChildren * 4 + 64);
    for (uint64_t i = 0; i < ulChildren; ++i) {
        strSite += "<a/>";
    }
    strSite += "</accessservergroup></site>";
    const uint32_t uiBlocks = LiveBlocksSinceStart();
    EXPECT_EQ(Parse(strSite), 1u);
    EXPECT_EQ(LiveBlocksSinceStart(), uiBlocks + 1) << "only the site array itself";
    EXPECT_EQ(Site().uiNumOfAccessServer, ulChildren);
    EXPECT_EQ(Site().pstAccessServer, nullptr);
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("site.sbc"), "L0 mem malloc failed"));
}

TEST_F(ParseSiteTest, SsoHostNameIsNotStored)
{
    ASSERT_EQ(Parse("<site><sso_hostname uri=\"sso.example.com\"/></site>"), 0u);
    const tagLOGIN_S_SITE stZero{};
    EXPECT_TRUE(SameBytes(Site(), stZero));
}

TEST_F(ParseSiteTest, NullNodeYieldsTwo)
{
    m_pstSites = NewSites(1);
    EXPECT_EQ(XmlAtriumParseSite(nullptr, m_pstSites, nullptr, 0), 2u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 XmlAtriumParseSite failed param is null\n"));
}

TEST_F(ParseSiteTest, NullRecordYieldsTwo)
{
    ParsedXml oXml("<site name=\"s\"/>");
    EXPECT_EQ(XmlAtriumParseSite(oXml.Root(), nullptr, nullptr, 0), 2u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 XmlAtriumParseSite failed param is null\n"));
}

/* ---- IsMatchingSite --------------------------------------------------------------------- */

TEST_F(SiteListTest, MatchingSiteHasExactlyThatSsoHost)
{
    ParsedXml oXml("<site><sso_hostname uri=\"sso.north.example.com\"/></site>");
    EXPECT_EQ(IsMatchingSite(oXml.Root(), "sso.north.example.com"), 1u);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(SiteListTest, SsoHostDifferingOnlyInLetterCaseDoesNotMatch)
{
    ParsedXml oXml("<site><sso_hostname uri=\"sso.north.example.com\"/></site>");
    EXPECT_EQ(IsMatchingSite(oXml.Root(), "SSO.North.Example.com"), 0u);
}

TEST_F(SiteListTest, SsoHostThatIsOnlyAPrefixDoesNotMatch)
{
    ParsedXml oXml("<site><sso_hostname uri=\"sso.north.example.com\"/></site>");
    EXPECT_EQ(IsMatchingSite(oXml.Root(), "sso.north"), 0u);
    EXPECT_EQ(IsMatchingSite(oXml.Root(), "sso.north.example.com.org"), 0u);
}

TEST_F(SiteListTest, SiteWithoutSsoHostNeverMatchesAndTracesTheMiss)
{
    ParsedXml oXml("<site name=\"s\"/>");
    EXPECT_EQ(IsMatchingSite(oXml.Root(), "sso.example.com"), 0u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("site.sso_hostname")));
    EXPECT_EQ(m_traces.Lines()[0].strFunc, "IsMatchingSite");
}

TEST_F(SiteListTest, EmptyOrAbsentSsoUriNeverMatchesEvenAnEmptyHost)
{
    ParsedXml oEmpty("<site><sso_hostname uri=\"\"/></site>");
    EXPECT_EQ(IsMatchingSite(oEmpty.Root(), ""), 0u);
    ParsedXml oAbsent("<site><sso_hostname/></site>");
    EXPECT_EQ(IsMatchingSite(oAbsent.Root(), ""), 0u);
}

/* ---- freeSiteMem ------------------------------------------------------------------------ */

TEST_F(SiteListTest, FreeSiteMemReleasesTheArrayAndEveryGroupArray)
{
    const uint32_t uiBefore = KOSA_MemLiveBlocks();
    tagLOGIN_S_SITE *pstSites = MakeSites({{"a", 1, 3}, {"b", 2, 0}, {"c", 3, 1}});
    EXPECT_EQ(KOSA_MemLiveBlocks(), uiBefore + 3);
    freeSiteMem(pstSites, 3);
    EXPECT_EQ(KOSA_MemLiveBlocks(), uiBefore);
}

TEST_F(SiteListTest, FreeSiteMemOfNullIsHarmless)
{
    freeSiteMem(nullptr, 0);
    freeSiteMem(nullptr, 2);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
}

} // namespace
