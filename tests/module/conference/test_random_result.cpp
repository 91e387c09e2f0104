/*
 * Guest site URL and random key: the two required keys (missed at level 1), and the
 * server's error codes mapped to the login service's codes on a path that keeps the
 * document.
 */
#include <gmock/gmock.h>

#include <string>

#include "conference_test.h"

using ::testing::ElementsAre;
using namespace conference_test;

namespace {

using RandomRecord = tagXML_S_TANDEM_RANDOM_RESULT;

std::string ConfInfo(const std::string &strInner)
{
    return "<?xml version=\"1.0\"?><confinfo>" + strInner + "</confinfo>";
}

const std::string SITE_AND_RANDOM = "<site_url>https://guest.conf.example:8443/join</site_url>"
                                    "<random>4f1c8e0a9b7d</random>";

class TandemRandomTest : public ModuleTest {};

TEST_F(TandemRandomTest, ZeroErrorCodeWithSiteAndRandomFillsBoth)
{
    RandomRecord stRecord{};
    const std::string strBody = ConfInfo("<errorCode>0</errorCode>" + SITE_AND_RANDOM);

    ASSERT_EQ(XmlParseTandemRandomResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_STREQ(stRecord.acSiteUrl, "https://guest.conf.example:8443/join");
    EXPECT_STREQ(stRecord.acRandom, "4f1c8e0a9b7d");
    EXPECT_TRUE(m_traces.Texts().empty());
}

TEST_F(TandemRandomTest, AnswerWithoutErrorCodeIsASuccess)
{
    RandomRecord stRecord{};
    const std::string strBody = ConfInfo(SITE_AND_RANDOM);

    ASSERT_EQ(XmlParseTandemRandomResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_STREQ(stRecord.acRandom, "4f1c8e0a9b7d");
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("confinfo.errorCode")));
}

TEST_F(TandemRandomTest, EmptyOrNonNumericErrorCodeIsASuccess)
{
    for (const char *pcCode : {"<errorCode/>", "<errorCode>none</errorCode>", "<errorCode>0x0</errorCode>"}) {
        m_traces.Clear();
        RandomRecord stRecord{};
        const std::string strBody = ConfInfo(pcCode + SITE_AND_RANDOM);
        ASSERT_EQ(XmlParseTandemRandomResult(strBody.c_str(), &stRecord), 0u) << pcCode;
        EXPECT_STREQ(stRecord.acSiteUrl, "https://guest.conf.example:8443/join") << pcCode;
        EXPECT_TRUE(m_traces.Texts().empty()) << pcCode;
    }
}

TEST_F(TandemRandomTest, NullBodyYieldsTwo)
{
    RandomRecord stRecord = SentinelRecord<RandomRecord>();
    const RandomRecord stBefore = stRecord;
    EXPECT_EQ(XmlParseTandemRandomResult(nullptr, &stRecord), 2u);
    EXPECT_TRUE(SameBytes(stRecord, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 Tandem: Conf Login Parse xmlBody pointer empty!"));
}

TEST_F(TandemRandomTest, NullRecordYieldsTwo)
{
    const std::string strBody = ConfInfo(SITE_AND_RANDOM);
    EXPECT_EQ(XmlParseTandemRandomResult(strBody.c_str(), nullptr), 2u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 Tandem: Conf Login Parse xmlBody pointer empty!"));
}

TEST_F(TandemRandomTest, TextThatIsNotXmlYieldsTheLibraryCodeWithThePortalPrefix)
{
    for (const char *const *ppcBody = NotXmlBodies(); *ppcBody != nullptr; ++ppcBody) {
        m_traces.Clear();
        const uint32_t uiCode = LibraryParseCode(*ppcBody);
        RandomRecord stRecord = SentinelRecord<RandomRecord>();
        const RandomRecord stBefore = stRecord;

        EXPECT_EQ(XmlParseTandemRandomResult(*ppcBody, &stRecord), uiCode) << *ppcBody;

        EXPECT_GT(uiCode, 255u);
        EXPECT_TRUE(SameBytes(stRecord, stBefore));
        EXPECT_THAT(m_traces.Texts(),
                    ElementsAre(At(0, Format("atrium: Conf Login KTL_XML_Parse failed errno=[0x%x]!", uiCode))));
    }
}

TEST_F(TandemRandomTest, MissingSiteUrlFailsWithOneAtLevelOne)
{
    RandomRecord stRecord = SentinelRecord<RandomRecord>();
    const RandomRecord stBefore = stRecord;
    const std::string strBody = ConfInfo("<errorCode>0</errorCode><random>abc</random>");

    EXPECT_EQ(XmlParseTandemRandomResult(strBody.c_str(), &stRecord), 1u);

    EXPECT_TRUE(SameBytes(stRecord, stBefore)) << "the random is not read after the miss";
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("confinfo.site_url"), "L1 Not Find the site_url"));
}

TEST_F(TandemRandomTest, MissingRandomFailsWithOneAfterTheSiteUrlWasWritten)
{
    RandomRecord stRecord = SentinelRecord<RandomRecord>();
    const RandomRecord stBefore = stRecord;
    const std::string strBody = ConfInfo("<site_url>https://s</site_url><random></random>");

    EXPECT_EQ(XmlParseTandemRandomResult(strBody.c_str(), &stRecord), 1u);

    EXPECT_STREQ(stRecord.acSiteUrl, "https://s");
    EXPECT_EQ(0, std::memcmp(stRecord.acRandom, stBefore.acRandom, sizeof(stRecord.acRandom)));
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("confinfo.errorCode"), "L1 Not Find the random"));
}

TEST_F(TandemRandomTest, MissTracesNameTheParser)
{
    RandomRecord stRecord{};
    const std::string strBody = ConfInfo("");
    EXPECT_EQ(XmlParseTandemRandomResult(strBody.c_str(), &stRecord), 1u);
    for (const TraceLine &stLine : m_traces.Lines()) {
        EXPECT_EQ(stLine.strFunc, "XmlParseTandemRandomResult");
    }
    EXPECT_EQ(m_traces.Lines().size(), 3u);
}

TEST_F(TandemRandomTest, RandomOfFullCapacityIsLeftEmptyAndTheResultIsZero)
{
    RandomRecord stRecord{};
    std::strcpy(stRecord.acRandom, "old");
    const std::string strBody = ConfInfo("<site_url>u</site_url><random>" + std::string(32, 'r') + "</random>");

    EXPECT_EQ(XmlParseTandemRandomResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_STREQ(stRecord.acRandom, "");
    EXPECT_STREQ(stRecord.acSiteUrl, "u");
}

TEST_F(TandemRandomTest, RandomJustBelowCapacityFits)
{
    RandomRecord stRecord{};
    const std::string strRandom(31, 'r');
    const std::string strBody = ConfInfo("<site_url>u</site_url><random>" + strRandom + "</random>");
    EXPECT_EQ(XmlParseTandemRandomResult(strBody.c_str(), &stRecord), 0u);
    EXPECT_EQ(std::string(stRecord.acRandom), strRandom);
}

TEST_F(TandemRandomTest, SiteUrlOfFullCapacityIsLeftEmpty)
{
    RandomRecord stRecord{};
    const std::string strBody = ConfInfo("<site_url>" + std::string(256, 'u') + "</site_url><random>r</random>");
    EXPECT_EQ(XmlParseTandemRandomResult(strBody.c_str(), &stRecord), 0u);
    EXPECT_STREQ(stRecord.acSiteUrl, "");
    EXPECT_STREQ(stRecord.acRandom, "r");
}

/* ---- server error codes ------------------------------------------------------------ */

struct ErrorCase {
    const char *pcText;      /* as the server writes it */
    uint32_t uiServerCode;   /* as converted in base 0 */
    uint32_t uiExpected;
};

void PrintTo(const ErrorCase &stCase, std::ostream *pOut)
{
    *pOut << "server code " << stCase.pcText;
}

class TandemRandomErrorTest : public ModuleTest, public ::testing::WithParamInterface<ErrorCase> {};

TEST_P(TandemRandomErrorTest, ServerErrorIsMappedAndTheDocumentKept)
{
    RandomRecord stRecord = SentinelRecord<RandomRecord>();
    const RandomRecord stBefore = stRecord;
    const std::string strBody =
        ConfInfo(std::string("<errorCode>") + GetParam().pcText + "</errorCode>" + SITE_AND_RANDOM);
    ExpectDocumentsKept(1);

    EXPECT_EQ(XmlParseTandemRandomResult(strBody.c_str(), &stRecord), GetParam().uiExpected);

    EXPECT_TRUE(SameBytes(stRecord, stBefore));
    EXPECT_EQ(LiveDocumentsSinceStart(), 1u);
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(At(1, Format("Find errorcode(%u),get tempuser siteurl fail", GetParam().uiServerCode))));
    EXPECT_EQ(m_traces.Lines()[0].strFunc, "XmlParseTandemRandomResult");
}

TEST_P(TandemRandomErrorTest, MapFunctionGivesTheSameCode)
{
    EXPECT_EQ(XmlParseTandemRandomErrorcode(GetParam().uiServerCode), GetParam().uiExpected);
    EXPECT_TRUE(m_traces.Texts().empty());
}

const ErrorCase g_astErrorCases[] = {
    {"401", 401, 35},     {"403", 403, 36},     {"404", 404, 2},    {"413", 413, 37}, {"11028", 11028, 40},
    {"11029", 11029, 39}, {"500", 500, 11},     {"0x191", 401, 35}, {"1", 1, 11},     {"0624", 404, 2},
};

INSTANTIATE_TEST_SUITE_P(Codes, TandemRandomErrorTest, ::testing::ValuesIn(g_astErrorCases),
                         [](const ::testing::TestParamInfo<ErrorCase> &stInfo) {
                             return "Server" + std::string(stInfo.param.pcText);
                         });

TEST_F(TandemRandomTest, CodesOutsideTheMapAllGiveEleven)
{
    for (uint32_t uiCode : {0u, 2u, 400u, 402u, 405u, 412u, 414u, 11027u, 11030u, 0xFFFFFFFFu}) {
        EXPECT_EQ(XmlParseTandemRandomErrorcode(uiCode), 11u) << uiCode;
    }
}

} // namespace
