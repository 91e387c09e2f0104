/*
 * STG group: the "stggroup" element of an access-server group, read row by row (one
 * lookup per field, in field order), with eight numbered media STGs and two addresses
 * resolved through the login service.
 */
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "sites_test.h"

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

namespace {

class StgGroupTest : public ModuleTest {
protected:
    /* Parses "<stggroup>inner</stggroup>" into *pstStg. */
    uint32_t Parse(const std::string &strInner, tagLOGIN_S_STG_GROUP *pstStg)
    {
        ParsedXml oXml("<stggroup>" + strInner + "</stggroup>");
        return XmlAtriumParseStgInfo(oXml.Root(), pstStg);
    }
    static std::vector<std::string> MsStgMisses(std::vector<int> vecNumbers)
    {
        std::vector<std::string> vecTexts;
        for (int i : vecNumbers) {
            vecTexts.push_back(UrlMiss("stggroup.msstggroup.msstg" + std::to_string(i)));
        }
        return vecTexts;
    }
};

TEST_F(StgGroupTest, CompleteGroupFillsEveryField)
{
    m_resolver.Answer("ess.example.com", 2, 0, {"198.51.100.7", "198.51.100.8"});
    std::string strMs;
    for (int i = 1; i <= 8; ++i) {
        strMs += "<msstg" + std::to_string(i) + " uri=\"203.0.113." + std::to_string(i) + ":9000\"/>";
    }
    tagLOGIN_S_STG_GROUP stStg{};
    ASSERT_EQ(Parse("<stg uri=\"198.51.100.1:443\"/>"
                    "<auth account=\"stg-user\" pwd=\"stg-pass\"/>"
                    "<sipstg uri=\"198.51.100.2:5061\"/>"
                    "<eserverstg uri=\"ess.example.com:8443\"/>"
                    "<eserverstg1 uri=\"198.51.100.4:8080\"/>"
                    "<maastg uri=\"198.51.100.5:443\"/>"
                    "<maastg1 uri=\"198.51.100.6:443\"/>"
                    "<msstggroup>" + strMs + "</msstggroup>",
                    &stStg),
              0u);

    EXPECT_STREQ(stStg.acStgUri, "198.51.100.1:443");
    EXPECT_STREQ(stStg.acAuthAccount, "stg-user");
    EXPECT_STREQ(stStg.acAuthPwd, "stg-pass");
    EXPECT_STREQ(stStg.acSipStgUri, "198.51.100.2:5061");
    EXPECT_STREQ(stStg.acEserverStgAddr, "198.51.100.7:8443;198.51.100.8:8443");
    EXPECT_STREQ(stStg.acEserverStg1Addr, "198.51.100.4:8080");
    EXPECT_STREQ(stStg.acMaaStgUri, "198.51.100.5:443");
    EXPECT_STREQ(stStg.acMaaStg1Uri, "198.51.100.6:443");
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(std::string(stStg.aacMsStgUri[i]), "203.0.113." + std::to_string(i + 1) + ":9000") << i;
    }
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(StgGroupTest, EmptyGroupTracesEveryRowInFieldOrderAndLeavesTheRecord)
{
    auto stStg = SentinelRecord<tagLOGIN_S_STG_GROUP>();
    const auto stBefore = stStg;
    ASSERT_EQ(Parse("", &stStg), 0u);

    EXPECT_TRUE(SameBytes(stStg, stBefore));
    std::vector<std::string> vecExpected = {
        UrlMiss("stggroup.stg"),         UrlMiss("stggroup.auth"),       UrlMiss("stggroup.auth"),
        UrlMiss("stggroup.sipstg"),      UrlMiss("stggroup.eserverstg"), UrlMiss("stggroup.eserverstg1"),
        UrlMiss("stggroup.maastg"),      UrlMiss("stggroup.maastg1")};
    for (const std::string &strMiss : MsStgMisses({1, 2, 3, 4, 5, 6, 7, 8})) {
        vecExpected.push_back(strMiss);
    }
    EXPECT_THAT(m_traces.Texts(), ElementsAreArray(vecExpected));
    for (const TraceLine &stLine : m_traces.Lines()) {
        EXPECT_EQ(stLine.strFunc, "XmlAtriumParseStgInfo");
        EXPECT_EQ(stLine.strFile, "service/login/src/atrium_xml/sites.cpp");
    }
}

TEST_F(StgGroupTest, AccountOf128CharactersDoesNotFitAndParsingGoesOn)
{
    tagLOGIN_S_STG_GROUP stStg{};
    std::strcpy(stStg.acAuthAccount, "previous");
    ASSERT_EQ(Parse("<auth account=\"" + std::string(128, 'a') + "\" pwd=\"secret\"/><maastg uri=\"m\"/>", &stStg),
              0u);
    EXPECT_STREQ(stStg.acAuthAccount, "");
    EXPECT_STREQ(stStg.acAuthPwd, "secret");
    EXPECT_STREQ(stStg.acMaaStgUri, "m");
}

TEST_F(StgGroupTest, AccountOf127CharactersFits)
{
    tagLOGIN_S_STG_GROUP stStg{};
    ASSERT_EQ(Parse("<auth account=\"" + std::string(127, 'a') + "\"/>", &stStg), 0u);
    EXPECT_EQ(std::string(stStg.acAuthAccount), std::string(127, 'a'));
}

TEST_F(StgGroupTest, NinthMediaStgIsNeverRead)
{
    auto stStg = SentinelRecord<tagLOGIN_S_STG_GROUP>();
    const auto stBefore = stStg;
    ASSERT_EQ(Parse("<msstggroup><msstg9 uri=\"203.0.113.9:9000\"/></msstggroup>", &stStg), 0u);
    EXPECT_TRUE(SameBytes(stStg, stBefore));
    const std::vector<std::string> vecTexts = m_traces.Texts();
    const std::vector<std::string> vecMsMisses(vecTexts.end() - 8, vecTexts.end());
    EXPECT_THAT(vecMsMisses, ElementsAreArray(MsStgMisses({1, 2, 3, 4, 5, 6, 7, 8})));
    for (const std::string &strText : vecTexts) {
        EXPECT_EQ(strText.find("msstg9"), std::string::npos) << strText;
    }
}

TEST_F(StgGroupTest, MissingMediaStgsAreSkippedWithoutStoppingTheLoop)
{
    tagLOGIN_S_STG_GROUP stStg{};
    ASSERT_EQ(Parse("<stg uri=\"s\"/><auth account=\"a\" pwd=\"p\"/><sipstg uri=\"ss\"/>"
                    "<eserverstg uri=\"192.0.2.1\"/><eserverstg1 uri=\"192.0.2.2\"/><maastg uri=\"m\"/>"
                    "<maastg1 uri=\"m1\"/><msstggroup><msstg2 uri=\"two\"/><msstg8 uri=\"eight\"/></msstggroup>",
                    &stStg),
              0u);
    EXPECT_STREQ(stStg.aacMsStgUri[0], "");
    EXPECT_STREQ(stStg.aacMsStgUri[1], "two");
    EXPECT_STREQ(stStg.aacMsStgUri[7], "eight");
    EXPECT_THAT(m_traces.Texts(), ElementsAreArray(MsStgMisses({1, 3, 4, 5, 6, 7})));
}

TEST_F(StgGroupTest, EserverStgGivenAsPlainIpIsCopiedUnchanged)
{
    tagLOGIN_S_STG_GROUP stStg{};
    ASSERT_EQ(Parse("<eserverstg uri=\"192.0.2.44:8443\"/><eserverstg1 uri=\"192.0.2.45\"/>", &stStg), 0u);
    EXPECT_STREQ(stStg.acEserverStgAddr, "192.0.2.44:8443");
    EXPECT_STREQ(stStg.acEserverStg1Addr, "192.0.2.45");
    EXPECT_THAT(m_resolver.Calls(), IsEmpty());
}

TEST_F(StgGroupTest, EserverStg1HostNameIsResolvedToo)
{
    m_resolver.Answer("ess1.example.com", 2, 0, {"192.0.2.46"});
    tagLOGIN_S_STG_GROUP stStg{};
    ASSERT_EQ(Parse("<eserverstg1 uri=\"ess1.example.com:0\"/>", &stStg), 0u);
    EXPECT_STREQ(stStg.acEserverStg1Addr, "192.0.2.46");
}

TEST_F(StgGroupTest, UnresolvableEserverStgLeavesTheFieldAndParsingGoesOn)
{
    tagLOGIN_S_STG_GROUP stStg{};
    std::strcpy(stStg.acEserverStgAddr, "previous");
    ASSERT_EQ(Parse("<eserverstg uri=\"nowhere.example.com:80\"/><maastg uri=\"m\"/>", &stStg), 0u);
    EXPECT_STREQ(stStg.acEserverStgAddr, "previous");
    EXPECT_STREQ(stStg.acMaaStgUri, "m");
    EXPECT_EQ(m_traces.Count(0, "dns err:nowhere.example.com ret:99"), 1u);
}

TEST_F(StgGroupTest, AttributeIsReadWhateverTheElementsTextAndCredentialsShareOneElement)
{
    tagLOGIN_S_STG_GROUP stStg{};
    ASSERT_EQ(Parse("<stg uri=\"with-text\">some text</stg><auth pwd=\"only-pwd\"/>", &stStg), 0u);
    EXPECT_STREQ(stStg.acStgUri, "with-text");
    EXPECT_STREQ(stStg.acAuthAccount, "");
    EXPECT_STREQ(stStg.acAuthPwd, "only-pwd");
}

TEST_F(StgGroupTest, EmptyOrAbsentAttributeLeavesTheField)
{
    auto stStg = SentinelRecord<tagLOGIN_S_STG_GROUP>();
    const auto stBefore = stStg;
    ASSERT_EQ(Parse("<stg uri=\"\"/><sipstg other=\"x\"/>", &stStg), 0u);
    EXPECT_TRUE(SameBytes(stStg, stBefore));
}

TEST_F(StgGroupTest, NullNodeYieldsTwo)
{
    tagLOGIN_S_STG_GROUP stStg{};
    EXPECT_EQ(XmlAtriumParseStgInfo(nullptr, &stStg), 2u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 XmlAtriumParseStgInfo failed param is null\n"));
}

TEST_F(StgGroupTest, NullRecordYieldsTwo)
{
    ParsedXml oXml("<stggroup><stg uri=\"s\"/></stggroup>");
    EXPECT_EQ(XmlAtriumParseStgInfo(oXml.Root(), nullptr), 2u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 XmlAtriumParseStgInfo failed param is null\n"));
}

} // namespace
