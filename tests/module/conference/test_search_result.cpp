/*
 * Conference search answer: up to five (priority, SSO host) pairs, in document order,
 * appended after what the caller's record holds.
 */
#include <gmock/gmock.h>

#include <string>

#include "conference_test.h"

using ::testing::ElementsAre;
using namespace conference_test;

namespace {

using SearchRecord = tagXML_S_TANDEM_SEARCH_RESULT;

std::string ServiceTp(const std::string &strInner)
{
    return "<?xml version=\"1.0\"?><servicetp>" + strInner + "</servicetp>";
}

std::string Site(const std::string &strPriority, const std::string &strUri)
{
    return "<site priority=\"" + strPriority + "\"><sbc domain=\"sbc\"/><sso_hostname uri=\"" + strUri +
           "\"/></site>";
}

std::string Sites(uint32_t uiFirst, uint32_t uiCount)
{
    std::string strSites;
    for (uint32_t i = uiFirst; i < uiFirst + uiCount; ++i) {
        strSites += Site(std::to_string(i + 1), "sso" + std::to_string(i) + ".example");
    }
    return strSites;
}

class TandemSearchTest : public ModuleTest {};

TEST_F(TandemSearchTest, UsableSitesAreKeptInDocumentOrder)
{
    SearchRecord stRecord{};
    const std::string strBody = ServiceTp(Site("3", "sso-c.example") + Site("1", "sso-a.example") +
                                          Site("2", "sso-b.example"));

    ASSERT_EQ(XmlParseTandemSearchResult(strBody.c_str(), &stRecord), 0u);

    ASSERT_EQ(stRecord.uiSiteNum, 3u);
    EXPECT_EQ(stRecord.auiPriority[0], 3u);
    EXPECT_STREQ(stRecord.acSsoHostName[0], "sso-c.example");
    EXPECT_EQ(stRecord.auiPriority[1], 1u);
    EXPECT_STREQ(stRecord.acSsoHostName[1], "sso-a.example");
    EXPECT_EQ(stRecord.auiPriority[2], 2u);
    EXPECT_STREQ(stRecord.acSsoHostName[2], "sso-b.example");
    EXPECT_STREQ(stRecord.acSsoHostName[3], "");
    EXPECT_TRUE(m_traces.Texts().empty());
}

TEST_F(TandemSearchTest, SevenUsableSitesYieldTheFirstFiveAndTheWalkStops)
{
    SearchRecord stRecord{};
    /* A foreign child after the fifth site would be traced if the walk went on. */
    const std::string strBody = ServiceTp(Sites(0, 5) + "<other/>" + Sites(5, 2));

    ASSERT_EQ(XmlParseTandemSearchResult(strBody.c_str(), &stRecord), 0u);

    ASSERT_EQ(stRecord.uiSiteNum, 5u);
    for (uint32_t i = 0; i < 5; ++i) {
        EXPECT_EQ(stRecord.auiPriority[i], i + 1);
        EXPECT_EQ(std::string(stRecord.acSsoHostName[i]), "sso" + std::to_string(i) + ".example");
    }
    EXPECT_TRUE(m_traces.Texts().empty());
}

TEST_F(TandemSearchTest, ExactlyFiveSitesFillTheRecord)
{
    SearchRecord stRecord{};
    const std::string strBody = ServiceTp(Sites(0, 5));
    ASSERT_EQ(XmlParseTandemSearchResult(strBody.c_str(), &stRecord), 0u);
    EXPECT_EQ(stRecord.uiSiteNum, 5u);
    EXPECT_STREQ(stRecord.acSsoHostName[4], "sso4.example");
}

TEST_F(TandemSearchTest, SiteWithPriorityZeroIsSkippedEvenWithAUri)
{
    SearchRecord stRecord{};
    const std::string strBody = ServiceTp(Site("0", "zero.example") + Site("5", "five.example"));
    ASSERT_EQ(XmlParseTandemSearchResult(strBody.c_str(), &stRecord), 0u);
    ASSERT_EQ(stRecord.uiSiteNum, 1u);
    EXPECT_EQ(stRecord.auiPriority[0], 5u);
    EXPECT_STREQ(stRecord.acSsoHostName[0], "five.example");
    EXPECT_TRUE(m_traces.Texts().empty()) << "a skipped site is skipped silently";
}

TEST_F(TandemSearchTest, PriorityIsConvertedInBaseZero)
{
    SearchRecord stRecord{};
    const std::string strBody = ServiceTp(Site("0x2", "hex.example") + Site("010", "oct.example"));
    ASSERT_EQ(XmlParseTandemSearchResult(strBody.c_str(), &stRecord), 0u);
    ASSERT_EQ(stRecord.uiSiteNum, 2u);
    EXPECT_EQ(stRecord.auiPriority[0], 2u);
    EXPECT_EQ(stRecord.auiPriority[1], 8u);
}

TEST_F(TandemSearchTest, SiteWithoutOrWithNonNumericPriorityIsSkipped)
{
    SearchRecord stRecord{};
    const std::string strBody = ServiceTp("<site><sso_hostname uri=\"none.example\"/></site>" +
                                          Site("abc", "abc.example") + Site("", "empty.example"));
    ASSERT_EQ(XmlParseTandemSearchResult(strBody.c_str(), &stRecord), 0u);
    EXPECT_EQ(stRecord.uiSiteNum, 0u);
    EXPECT_STREQ(stRecord.acSsoHostName[0], "");
}

TEST_F(TandemSearchTest, SiteWithoutSsoHostIsSkippedWithTheLookupTrace)
{
    SearchRecord stRecord{};
    const std::string strBody = ServiceTp("<site priority=\"1\"><sbc domain=\"x\"/></site>" + Site("2", "b.example"));

    ASSERT_EQ(XmlParseTandemSearchResult(strBody.c_str(), &stRecord), 0u);

    ASSERT_EQ(stRecord.uiSiteNum, 1u);
    EXPECT_STREQ(stRecord.acSsoHostName[0], "b.example");
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("site.sso_hostname")));
    EXPECT_EQ(m_traces.Lines()[0].strFunc, "XmlParseTandemSearchResult");
}

TEST_F(TandemSearchTest, SsoHostWithoutUriOrWithAnEmptyOneIsSkippedSilently)
{
    SearchRecord stRecord{};
    const std::string strBody = ServiceTp("<site priority=\"1\"><sso_hostname/></site>" + Site("2", "") +
                                          Site("3", "c.example"));
    ASSERT_EQ(XmlParseTandemSearchResult(strBody.c_str(), &stRecord), 0u);
    ASSERT_EQ(stRecord.uiSiteNum, 1u);
    EXPECT_EQ(stRecord.auiPriority[0], 3u);
    EXPECT_TRUE(m_traces.Texts().empty());
}

TEST_F(TandemSearchTest, UriOfFullCapacityIsSkipped)
{
    SearchRecord stRecord{};
    const std::string strFits(255, 'h');
    const std::string strBody = ServiceTp(Site("1", std::string(256, 'h')) + Site("2", strFits));
    ASSERT_EQ(XmlParseTandemSearchResult(strBody.c_str(), &stRecord), 0u);
    ASSERT_EQ(stRecord.uiSiteNum, 1u);
    EXPECT_EQ(std::string(stRecord.acSsoHostName[0]), strFits);
}

TEST_F(TandemSearchTest, ChildOfAnotherNameCannotMatchAndIsTraced)
{
    SearchRecord stRecord{};
    const std::string strBody =
        ServiceTp("<portal priority=\"1\"><sso_hostname uri=\"p.example\"/></portal>" + Site("2", "s.example"));
    ASSERT_EQ(XmlParseTandemSearchResult(strBody.c_str(), &stRecord), 0u);
    ASSERT_EQ(stRecord.uiSiteNum, 1u);
    EXPECT_STREQ(stRecord.acSsoHostName[0], "s.example");
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("site.sso_hostname")));
}

TEST_F(TandemSearchTest, UriNamedDefaultIsKept)
{
    SearchRecord stRecord{};
    const std::string strBody = ServiceTp(Site("1", "default"));
    ASSERT_EQ(XmlParseTandemSearchResult(strBody.c_str(), &stRecord), 0u);
    ASSERT_EQ(stRecord.uiSiteNum, 1u);
    EXPECT_STREQ(stRecord.acSsoHostName[0], "default");
}

TEST_F(TandemSearchTest, RecordWithFourEntriesGetsOneMoreAndTheWalkStops)
{
    SearchRecord stRecord{};
    stRecord.uiSiteNum = 4;
    std::strcpy(stRecord.acSsoHostName[0], "earlier");
    const std::string strBody = ServiceTp(Site("9", "ninth.example") + "<other/>" + Site("8", "eighth.example"));

    ASSERT_EQ(XmlParseTandemSearchResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_EQ(stRecord.uiSiteNum, 5u);
    EXPECT_EQ(stRecord.auiPriority[4], 9u);
    EXPECT_STREQ(stRecord.acSsoHostName[4], "ninth.example");
    EXPECT_STREQ(stRecord.acSsoHostName[0], "earlier");
    EXPECT_TRUE(m_traces.Texts().empty());
}

TEST_F(TandemSearchTest, FullRecordIsNotWrittenBeyondItsEnd)
{
    SearchRecord stRecord = SentinelRecord<SearchRecord>();
    stRecord.uiSiteNum = 5;
    const SearchRecord stBefore = stRecord;
    const std::string strBody = ServiceTp(Sites(0, 2));

    ASSERT_EQ(XmlParseTandemSearchResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_TRUE(SameBytes(stRecord, stBefore));
}

TEST_F(TandemSearchTest, EmptyServiceTpLeavesTheRecordUntouched)
{
    SearchRecord stRecord = SentinelRecord<SearchRecord>();
    stRecord.uiSiteNum = 0;
    const SearchRecord stBefore = stRecord;
    ASSERT_EQ(XmlParseTandemSearchResult(ServiceTp("").c_str(), &stRecord), 0u);
    EXPECT_TRUE(SameBytes(stRecord, stBefore));
    EXPECT_TRUE(m_traces.Texts().empty());
}

TEST_F(TandemSearchTest, AnswerWithAnotherRootYieldsZeroWithTheLookupTrace)
{
    SearchRecord stRecord = SentinelRecord<SearchRecord>();
    stRecord.uiSiteNum = 0;
    const SearchRecord stBefore = stRecord;
    const std::string strBody = "<UserInfo><servicetp>" + Site("1", "a.example") + "</servicetp></UserInfo>";

    ASSERT_EQ(XmlParseTandemSearchResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_TRUE(SameBytes(stRecord, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("servicetp")));
}

TEST_F(TandemSearchTest, TextThatIsNotXmlYieldsTheLibraryCode)
{
    for (const char *const *ppcBody = NotXmlBodies(); *ppcBody != nullptr; ++ppcBody) {
        m_traces.Clear();
        const uint32_t uiCode = LibraryParseCode(*ppcBody);
        SearchRecord stRecord{};
        EXPECT_EQ(XmlParseTandemSearchResult(*ppcBody, &stRecord), uiCode) << *ppcBody;
        EXPECT_EQ(stRecord.uiSiteNum, 0u);
        EXPECT_THAT(m_traces.Texts(), ElementsAre(At(0, Format("atrium: KTL_XML_Parse failed errno=[0x%x]!", uiCode))));
    }
}

TEST_F(TandemSearchTest, NullBodyYieldsTwo)
{
    SearchRecord stRecord = SentinelRecord<SearchRecord>();
    const SearchRecord stBefore = stRecord;
    EXPECT_EQ(XmlParseTandemSearchResult(nullptr, &stRecord), 2u);
    EXPECT_TRUE(SameBytes(stRecord, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 atrium: Conf Search Parse xmlBody pointer empty!"));
}

TEST_F(TandemSearchTest, NullRecordYieldsTwo)
{
    EXPECT_EQ(XmlParseTandemSearchResult(ServiceTp(Sites(0, 1)).c_str(), nullptr), 2u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 atrium: Conf Search Parse xmlBody pointer empty!"));
}

} // namespace
