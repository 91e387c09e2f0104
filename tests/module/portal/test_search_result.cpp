/*
 * Portal search answer: up to five (priority, portal uri) pairs in document order, sites
 * without a usable priority or uri left out, entries appended after the caller's.
 */
#include <gmock/gmock.h>

#include <string>

#include "portal_test.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace portal_test;

namespace {

class SearchResultTest : public ModuleTest {
protected:
    static std::string Answer(const std::string &strSites)
    {
        return "<?xml version=\"1.0\"?><UserInfo><servicetp>" + strSites + "</servicetp></UserInfo>";
    }
    static std::string SearchSite(const std::string &strPriority, const std::string &strUri)
    {
        return "<site name=\"s\" priority=\"" + strPriority + "\"><sso_hostname uri=\"" + strUri +
               "\"/></site>";
    }
};

TEST_F(SearchResultTest, SitesAreTakenInDocumentOrderWithoutSorting)
{
    tagLOGIN_S_ATRIUM_SEARCH_RESULT stResult{};
    std::string strBody = Answer(SearchSite("3", "portal-c.example.com") + SearchSite("1", "portal-a.example.com") +
                                 SearchSite("2", "10.0.0.2"));

    ASSERT_EQ(XmlParseAtriumSearchResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiSiteNum, 3u);
    EXPECT_EQ(stResult.auiPriority[0], 3u);
    EXPECT_STREQ(stResult.aacSiteUri[0], "portal-c.example.com");
    EXPECT_EQ(stResult.auiPriority[1], 1u);
    EXPECT_STREQ(stResult.aacSiteUri[1], "portal-a.example.com");
    EXPECT_EQ(stResult.auiPriority[2], 2u);
    EXPECT_STREQ(stResult.aacSiteUri[2], "10.0.0.2");
    EXPECT_STREQ(stResult.aacSiteUri[3], "");
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(SearchResultTest, SevenValidSitesKeepTheFirstFiveAndTheWalkStopsAfterTheFifth)
{
    tagLOGIN_S_ATRIUM_SEARCH_RESULT stResult{};
    std::string strSites;
    for (int i = 1; i <= 5; ++i) {
        strSites += SearchSite(std::to_string(i), "p" + std::to_string(i) + ".example.com");
    }
    /* Were the walk to look past the fifth site, these would trace a lookup miss. */
    strSites += "<other/>" + SearchSite("6", "p6.example.com") + SearchSite("7", "p7.example.com");

    ASSERT_EQ(XmlParseAtriumSearchResult(Answer(strSites).c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiSiteNum, 5u);
    for (uint32_t i = 0; i < 5; ++i) {
        EXPECT_EQ(stResult.auiPriority[i], i + 1);
        EXPECT_EQ(std::string(stResult.aacSiteUri[i]), "p" + std::to_string(i + 1) + ".example.com");
    }
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(SearchResultTest, PriorityZeroIsSkippedEvenWithAValidUri)
{
    tagLOGIN_S_ATRIUM_SEARCH_RESULT stResult{};
    std::string strBody = Answer(SearchSite("0", "zero.example.com") + SearchSite("4", "four.example.com"));

    ASSERT_EQ(XmlParseAtriumSearchResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiSiteNum, 1u);
    EXPECT_EQ(stResult.auiPriority[0], 4u);
    EXPECT_STREQ(stResult.aacSiteUri[0], "four.example.com");
}

TEST_F(SearchResultTest, DefaultUriIsSkippedButTheComparisonIsExact)
{
    tagLOGIN_S_ATRIUM_SEARCH_RESULT stResult{};
    std::string strBody = Answer(SearchSite("1", "default") + SearchSite("2", "Default") +
                                 SearchSite("3", "default ") + SearchSite("4", "defaults"));

    ASSERT_EQ(XmlParseAtriumSearchResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiSiteNum, 3u);
    EXPECT_STREQ(stResult.aacSiteUri[0], "Default");
    EXPECT_EQ(stResult.auiPriority[0], 2u);
    EXPECT_STREQ(stResult.aacSiteUri[1], "default ");
    EXPECT_STREQ(stResult.aacSiteUri[2], "defaults");
}

TEST_F(SearchResultTest, PriorityThatIsNotANumberConvertsToZeroAndSkipsTheSite)
{
    tagLOGIN_S_ATRIUM_SEARCH_RESULT stResult{};
    std::string strBody = Answer(SearchSite("abc", "abc.example.com") + SearchSite("", "empty.example.com"));

    ASSERT_EQ(XmlParseAtriumSearchResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiSiteNum, 0u);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(SearchResultTest, PriorityIsConvertedInBaseZero)
{
    tagLOGIN_S_ATRIUM_SEARCH_RESULT stResult{};
    std::string strBody = Answer(SearchSite("0x10", "hex.example.com") + SearchSite("010", "oct.example.com"));

    ASSERT_EQ(XmlParseAtriumSearchResult(strBody.c_str(), &stResult), 0u);

    ASSERT_EQ(stResult.uiSiteNum, 2u);
    EXPECT_EQ(stResult.auiPriority[0], 16u);
    EXPECT_EQ(stResult.auiPriority[1], 8u);
}

TEST_F(SearchResultTest, SiteWithoutPriorityIsSkipped)
{
    tagLOGIN_S_ATRIUM_SEARCH_RESULT stResult{};
    std::string strBody = Answer("<site name=\"s\"><sso_hostname uri=\"np.example.com\"/></site>");

    ASSERT_EQ(XmlParseAtriumSearchResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiSiteNum, 0u);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(SearchResultTest, SiteWithoutSsoHostOrUriIsSkippedWithOnlyTheLookupTrace)
{
    tagLOGIN_S_ATRIUM_SEARCH_RESULT stResult{};
    std::string strBody = Answer("<site priority=\"1\"/>"
                                 "<site priority=\"2\"><sso_hostname/></site>"
                                 "<site priority=\"3\"><sso_hostname uri=\"\"/></site>" +
                                 SearchSite("4", "ok.example.com"));

    ASSERT_EQ(XmlParseAtriumSearchResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiSiteNum, 1u);
    EXPECT_EQ(stResult.auiPriority[0], 4u);
    EXPECT_STREQ(stResult.aacSiteUri[0], "ok.example.com");
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("site.sso_hostname")));
}

TEST_F(SearchResultTest, ChildThatIsNotASiteIsSkippedAndTheWalkGoesOn)
{
    tagLOGIN_S_ATRIUM_SEARCH_RESULT stResult{};
    std::string strBody = Answer("<ecsmainsite name=\"x\" priority=\"1\"><sso_hostname uri=\"no.example.com\"/>"
                                 "</ecsmainsite>" +
                                 SearchSite("5", "yes.example.com"));

    ASSERT_EQ(XmlParseAtriumSearchResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiSiteNum, 1u);
    EXPECT_STREQ(stResult.aacSiteUri[0], "yes.example.com");
    std::vector<TraceLine> vecLines = m_traces.Lines();
    ASSERT_EQ(vecLines.size(), 1u);
    EXPECT_EQ("L1 " + vecLines[0].strText, UrlMiss("site.sso_hostname"));
    EXPECT_EQ(vecLines[0].strFunc, "XmlParseAtriumSearchResult");
    EXPECT_EQ(vecLines[0].strFile, "service/login/src/atrium_xml/portal.cpp");
}

TEST_F(SearchResultTest, UriTooLongForItsBufferIsSkipped)
{
    tagLOGIN_S_ATRIUM_SEARCH_RESULT stResult{};
    std::string strBody = Answer(SearchSite("1", std::string(256, 'u')) + SearchSite("2", std::string(255, 'v')));

    ASSERT_EQ(XmlParseAtriumSearchResult(strBody.c_str(), &stResult), 0u);

    ASSERT_EQ(stResult.uiSiteNum, 1u);
    EXPECT_EQ(stResult.auiPriority[0], 2u);
    EXPECT_EQ(std::string(stResult.aacSiteUri[0]), std::string(255, 'v'));
}

TEST_F(SearchResultTest, EntriesAreAppendedAfterTheCallersCount)
{
    tagLOGIN_S_ATRIUM_SEARCH_RESULT stResult{};
    stResult.uiSiteNum = 3;
    std::strcpy(stResult.aacSiteUri[0], "kept.example.com");
    std::string strBody = Answer(SearchSite("7", "a.example.com") + SearchSite("8", "b.example.com") +
                                 SearchSite("9", "c.example.com"));

    ASSERT_EQ(XmlParseAtriumSearchResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiSiteNum, 5u);
    EXPECT_STREQ(stResult.aacSiteUri[0], "kept.example.com");
    EXPECT_EQ(stResult.auiPriority[3], 7u);
    EXPECT_STREQ(stResult.aacSiteUri[3], "a.example.com");
    EXPECT_EQ(stResult.auiPriority[4], 8u);
    EXPECT_STREQ(stResult.aacSiteUri[4], "b.example.com");
}

TEST_F(SearchResultTest, CallerCountAtTheRecordsLimitAppendsNothing)
{
    tagLOGIN_S_ATRIUM_SEARCH_RESULT stResult = SentinelRecord<tagLOGIN_S_ATRIUM_SEARCH_RESULT>();
    stResult.uiSiteNum = 5;
    const tagLOGIN_S_ATRIUM_SEARCH_RESULT stBefore = stResult;

    ASSERT_EQ(XmlParseAtriumSearchResult(Answer(SearchSite("1", "a.example.com")).c_str(), &stResult), 0u);

    EXPECT_TRUE(SameBytes(stResult, stBefore));
}

TEST_F(SearchResultTest, NoServiceTpReturnsZeroWithTheCountUnchanged)
{
    tagLOGIN_S_ATRIUM_SEARCH_RESULT stResult = SentinelRecord<tagLOGIN_S_ATRIUM_SEARCH_RESULT>();
    stResult.uiSiteNum = 2;
    const tagLOGIN_S_ATRIUM_SEARCH_RESULT stBefore = stResult;

    ASSERT_EQ(XmlParseAtriumSearchResult("<UserInfo><sites/></UserInfo>", &stResult), 0u);

    EXPECT_TRUE(SameBytes(stResult, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("UserInfo.servicetp")));
}

TEST_F(SearchResultTest, EmptyServiceTpReturnsZeroWithNothingAppended)
{
    tagLOGIN_S_ATRIUM_SEARCH_RESULT stResult{};
    ASSERT_EQ(XmlParseAtriumSearchResult(Answer("").c_str(), &stResult), 0u);
    EXPECT_EQ(stResult.uiSiteNum, 0u);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(SearchResultTest, TextThatIsNotXmlYieldsTheLibraryCodeUnchanged)
{
    for (const char *pcBody : {"", "<UserInfo>", "search failed"}) {
        m_traces.Clear();
        const uint32_t uiLibraryCode = LibraryParseCode(pcBody);
        ASSERT_GT(uiLibraryCode, 255u) << pcBody;
        tagLOGIN_S_ATRIUM_SEARCH_RESULT stResult = SentinelRecord<tagLOGIN_S_ATRIUM_SEARCH_RESULT>();
        const tagLOGIN_S_ATRIUM_SEARCH_RESULT stBefore = stResult;

        EXPECT_EQ(XmlParseAtriumSearchResult(pcBody, &stResult), uiLibraryCode) << pcBody;

        EXPECT_TRUE(SameBytes(stResult, stBefore)) << pcBody;
        EXPECT_THAT(m_traces.Texts(),
                    ElementsAre(Format("L0 atrium: KTL_XML_Parse failed errno=[0x%x]!", uiLibraryCode)))
            << pcBody;
    }
}

TEST_F(SearchResultTest, NullBodyIsHandedToTheParserUnchecked)
{
    /* No argument check of its own: the library's code for a null text comes back. */
    tagLOGIN_S_ATRIUM_SEARCH_RESULT stResult{};
    EXPECT_EQ(XmlParseAtriumSearchResult(nullptr, &stResult), KTL_XML_ERR_NULL_ARG);
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(Format("L0 atrium: KTL_XML_Parse failed errno=[0x%x]!", KTL_XML_ERR_NULL_ARG)));
}

} // namespace
