/*
 * Access-server record: one "accessserver" element of a site's group list, read key by key
 * in a fixed lookup order (which is also the order of its trace lines), with the STG
 * group nested, eight numbered media servers, the TLS address on the element that follows
 * "siptls", and the portal address going to the caller's buffer.
 */
#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "sites_test.h"

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

namespace {

using Group = tagLOGIN_S_ACCESS_SERVER;

/* Every child an access-server element can have, with realistic values. */
std::string CompleteChildren()
{
    std::string strMs;
    for (int i = 1; i <= 8; ++i) {
        strMs += "<ms" + std::to_string(i) + " uri=\"192.0.2.6" + std::to_string(i) + ":9000\"/>";
    }
    return "<sip uri=\"sip.a.example.com:5060\"/>"
           "<svn uri=\"192.0.2.20:443\"/>"
           "<httpsproxy uri=\"192.0.2.21:8443\"/>"
           "<eserver uri=\"es.a.example.com:8080\"/>"
           "<eserver1 uri=\"192.0.2.32:8080\"/>"
           "<conf uri=\"https://conf.a.example.com/cms\"/>"
           "<conf_type cmstype=\"smc\"/>"
           "<maa uri=\"192.0.2.40:443\"/>"
           "<maa1 uri=\"192.0.2.41:443\"/>"
           "<maaproxy uri=\"mp.a.example.com:443\"/>"
           "<maadrproxy uri=\"mdr.a.example.com\"/>"
           "<androidpush uri=\"push.a.example.com:5223\"/>"
           "<msparam uri=\"https://ms.a.example.com/param\"/>"
           "<msparampath uri=\"/ms/param/path\"/>"
           "<eab uri=\"https://eab.a.example.com/\"/>"
           "<prophoto uri=\"https://photo.a.example.com/\"/>"
           "<tmstr069 uri=\"https://acs.a.example.com:7547/\"/>"
           "<eua uri=\"ldap://eua.a.example.com:389\"/>"
           "<stggroup><stg uri=\"198.51.100.1:443\"/><auth account=\"stg-user\" pwd=\"stg-pass\"/>"
           "<sipstg uri=\"198.51.100.2:5061\"/><eserverstg uri=\"198.51.100.3:8443\"/>"
           "<eserverstg1 uri=\"198.51.100.4:8443\"/><maastg uri=\"198.51.100.5:443\"/>"
           "<maastg1 uri=\"198.51.100.6:443\"/><msstggroup><msstg1 uri=\"198.51.100.11:9000\"/>"
           "<msstg2 uri=\"198.51.100.12:9000\"/><msstg3 uri=\"198.51.100.13:9000\"/>"
           "<msstg4 uri=\"198.51.100.14:9000\"/><msstg5 uri=\"198.51.100.15:9000\"/>"
           "<msstg6 uri=\"198.51.100.16:9000\"/><msstg7 uri=\"198.51.100.17:9000\"/>"
           "<msstg8 uri=\"198.51.100.18:9000\"/></msstggroup></stggroup>"
           "<msgroup>" + strMs + "</msgroup>"
           "<siptls isactive=\"true\" uri=\"not-this-one\"/>"
           "<siptlsaddr uri=\"sips:sip.a.example.com:5061\"/>"
           "<srtp isactive=\"true\"/>"
           "<atrium uri=\"https://portal.a.example.com\"/>";
}

/* The lookups of an access-server element without children, in order. */
std::vector<std::string> EveryLookupMissed(bool bWithAtrium)
{
    std::vector<std::string> vecTexts;
    for (const char *pcKey : {"sip", "svn", "httpsproxy", "eserver", "eserver1", "conf", "conf_type", "maa",
                              "maa1", "maaproxy"}) {
        vecTexts.push_back(UrlMiss(std::string("accessserver.") + pcKey));
    }
    vecTexts.push_back("L2 mmaproxy : ");
    for (const char *pcKey : {"maadrproxy", "androidpush", "msparam", "msparampath", "eab", "prophoto",
                              "tmstr069", "eua"}) {
        vecTexts.push_back(UrlMiss(std::string("accessserver.") + pcKey));
    }
    vecTexts.push_back("L2 eua_uri:");
    vecTexts.push_back(UrlMiss("accessserver.stggroup"));
    for (int i = 1; i <= 8; ++i) {
        vecTexts.push_back(UrlMiss("accessserver.msgroup.ms" + std::to_string(i)));
    }
    vecTexts.push_back(UrlMiss("accessserver.siptls"));
    vecTexts.push_back(UrlMiss("accessserver.srtp"));
    if (bWithAtrium) {
        vecTexts.push_back(UrlMiss("accessserver.atrium"));
    }
    return vecTexts;
}

class AccessServerTest : public ModuleTest {
protected:
    uint32_t Parse(const std::string &strInner, Group *pstGroup, char *pcAtrium = nullptr,
                   uint32_t uiAtriumLen = 0, const std::string &strAttrs = " name=\"grp-a\"")
    {
        ParsedXml oXml("<accessserver" + strAttrs + ">" + strInner + "</accessserver>");
        return XmlAtriumParseAccessServer(oXml.Root(), pstGroup, pcAtrium, uiAtriumLen);
    }
    /* A sentinel record whose two traced fields still end in a terminator. */
    static Group KeepRecord()
    {
        Group stGroup = SentinelRecord<Group>();
        stGroup.acMaaProxyAddr[sizeof(stGroup.acMaaProxyAddr) - 1] = '\0';
        stGroup.acEuaUri[sizeof(stGroup.acEuaUri) - 1] = '\0';
        return stGroup;
    }
};

TEST_F(AccessServerTest, CompleteElementFillsEveryField)
{
    m_resolver.Answer("es.a.example.com", 2, 0, {"192.0.2.30", "192.0.2.31"});
    m_resolver.Answer("mp.a.example.com", 2, 0, {"192.0.2.50"});
    Group stGroup{};
    char acAtrium[256] = "";

    ASSERT_EQ(Parse(CompleteChildren(), &stGroup, acAtrium, sizeof(acAtrium)), 0u);

    EXPECT_STREQ(stGroup.acName, "grp-a");
    EXPECT_STREQ(stGroup.acSipUri, "sip.a.example.com:5060");
    EXPECT_STREQ(stGroup.acSvnUri, "192.0.2.20:443");
    EXPECT_STREQ(stGroup.acHttpsProxyUri, "192.0.2.21:8443");
    EXPECT_STREQ(stGroup.acEserverAddr, "192.0.2.30:8080;192.0.2.31:8080");
    EXPECT_STREQ(stGroup.acEserver1Addr, "192.0.2.32:8080");
    EXPECT_STREQ(stGroup.acConfUri, "https://conf.a.example.com/cms");
    EXPECT_STREQ(stGroup.acConfType, "smc");
    EXPECT_STREQ(stGroup.acMaaUri, "192.0.2.40:443");
    EXPECT_STREQ(stGroup.acMaa1Uri, "192.0.2.41:443");
    EXPECT_STREQ(stGroup.acMaaProxyAddr, "192.0.2.50:443");
    EXPECT_STREQ(stGroup.acMaaDrProxyAddr, "mdr.a.example.com");
    EXPECT_STREQ(stGroup.acAndroidPushUri, "push.a.example.com:5223");
    EXPECT_STREQ(stGroup.acMsParamUri, "https://ms.a.example.com/param");
    EXPECT_STREQ(stGroup.acMsParamPathUri, "/ms/param/path");
    EXPECT_STREQ(stGroup.acEabUri, "https://eab.a.example.com/");
    EXPECT_STREQ(stGroup.acProPhotoUri, "https://photo.a.example.com/");
    EXPECT_STREQ(stGroup.acTmsTr069Uri, "https://acs.a.example.com:7547/");
    EXPECT_STREQ(stGroup.acEuaUri, "ldap://eua.a.example.com:389");
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(std::string(stGroup.aacMsUri[i]), "192.0.2.6" + std::to_string(i + 1) + ":9000") << i;
    }
    EXPECT_STREQ(stGroup.stStgGroup.acStgUri, "198.51.100.1:443");
    EXPECT_STREQ(stGroup.stStgGroup.acAuthAccount, "stg-user");
    EXPECT_STREQ(stGroup.stStgGroup.acAuthPwd, "stg-pass");
    EXPECT_STREQ(stGroup.stStgGroup.acSipStgUri, "198.51.100.2:5061");
    EXPECT_STREQ(stGroup.stStgGroup.acEserverStgAddr, "198.51.100.3:8443");
    EXPECT_STREQ(stGroup.stStgGroup.acEserverStg1Addr, "198.51.100.4:8443");
    EXPECT_STREQ(stGroup.stStgGroup.acMaaStgUri, "198.51.100.5:443");
    EXPECT_STREQ(stGroup.stStgGroup.acMaaStg1Uri, "198.51.100.6:443");
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(std::string(stGroup.stStgGroup.aacMsStgUri[i]), "198.51.100.1" + std::to_string(i + 1) + ":9000");
    }
    EXPECT_EQ(stGroup.uiSipTlsActive, 1u);
    EXPECT_STREQ(stGroup.acSipTlsUri, "sips:sip.a.example.com:5061");
    EXPECT_EQ(stGroup.uiSrtpActive, 1u);
    EXPECT_EQ(stGroup.uiPriority, 0u) << "the site's priority is set by the site parser";
    EXPECT_EQ(stGroup.uiIsMainSite, 0u) << "set only when the group is selected";
    EXPECT_STREQ(acAtrium, "https://portal.a.example.com");
}

TEST_F(AccessServerTest, CompleteElementTracesOnlyTheTwoProgressLines)
{
    m_resolver.Answer("es.a.example.com", 2, 0, {"192.0.2.30"});
    m_resolver.Answer("mp.a.example.com", 2, 0, {"192.0.2.50"});
    Group stGroup{};
    char acAtrium[256] = "";
    ASSERT_EQ(Parse(CompleteChildren(), &stGroup, acAtrium, sizeof(acAtrium)), 0u);
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("L2 mmaproxy : 192.0.2.50:443", "L2 eua_uri:ldap://eua.a.example.com:389"));
}

TEST_F(AccessServerTest, EmptyElementTracesEveryLookupInOrder)
{
    Group stGroup{};
    char acAtrium[256] = "";
    ASSERT_EQ(Parse("", &stGroup, acAtrium, sizeof(acAtrium)), 0u);
    EXPECT_THAT(m_traces.Texts(), ElementsAreArray(EveryLookupMissed(true)));
    for (const TraceLine &stLine : m_traces.Lines()) {
        EXPECT_EQ(stLine.strFunc, "XmlAtriumParseAccessServer");
        EXPECT_EQ(stLine.strFile, "service/login/src/atrium_xml/sites.cpp");
    }
}

TEST_F(AccessServerTest, EmptyStgGroupTracesItsRowsBetweenEuaAndTheMediaServers)
{
    Group stGroup{};
    ASSERT_EQ(Parse("<stggroup/>", &stGroup), 0u);
    std::vector<std::string> vecExpected = EveryLookupMissed(false);
    auto itStg = std::find(vecExpected.begin(), vecExpected.end(), UrlMiss("accessserver.stggroup"));
    ASSERT_NE(itStg, vecExpected.end());
    itStg = vecExpected.erase(itStg);
    std::vector<std::string> vecStg = {UrlMiss("stggroup.stg"),         UrlMiss("stggroup.auth"),
                                       UrlMiss("stggroup.auth"),        UrlMiss("stggroup.sipstg"),
                                       UrlMiss("stggroup.eserverstg"),  UrlMiss("stggroup.eserverstg1"),
                                       UrlMiss("stggroup.maastg"),      UrlMiss("stggroup.maastg1")};
    for (int i = 1; i <= 8; ++i) {
        vecStg.push_back(UrlMiss("stggroup.msstggroup.msstg" + std::to_string(i)));
    }
    vecExpected.insert(itStg, vecStg.begin(), vecStg.end());
    EXPECT_THAT(m_traces.Texts(), ElementsAreArray(vecExpected));
    size_t uiStgLines = 0;
    for (const TraceLine &stLine : m_traces.Lines()) {
        uiStgLines += stLine.strFunc == "XmlAtriumParseStgInfo" ? 1 : 0;
    }
    EXPECT_EQ(uiStgLines, 16u);
}

TEST_F(AccessServerTest, MissingElementsLeaveFieldsAsTheCallerGaveThem)
{
    Group stGroup = KeepRecord();
    const Group stBefore = stGroup;
    ASSERT_EQ(Parse("", &stGroup, nullptr, 0, ""), 0u);
    EXPECT_TRUE(SameBytes(stGroup, stBefore));
}

TEST_F(AccessServerTest, NameComesFromTheElementItself)
{
    Group stGroup{};
    ASSERT_EQ(Parse("<name uri=\"child\"/>", &stGroup, nullptr, 0, " name=\"group-7\""), 0u);
    EXPECT_STREQ(stGroup.acName, "group-7");
}

TEST_F(AccessServerTest, ConfTypeComesFromTheCmstypeAttribute)
{
    Group stGroup{};
    ASSERT_EQ(Parse("<conf_type uri=\"not-this\" cmstype=\"mcu\"/>", &stGroup), 0u);
    EXPECT_STREQ(stGroup.acConfType, "mcu");
}

TEST_F(AccessServerTest, AttributeIsReadFromAnElementThatAlsoHasText)
{
    Group stGroup{};
    ASSERT_EQ(Parse("<sip uri=\"sip.example.com\">text of the element</sip>", &stGroup), 0u);
    EXPECT_STREQ(stGroup.acSipUri, "sip.example.com");
}

TEST_F(AccessServerTest, EmptyUriLeavesTheField)
{
    Group stGroup{};
    std::strcpy(stGroup.acSipUri, "previous");
    ASSERT_EQ(Parse("<sip uri=\"\"/>", &stGroup), 0u);
    EXPECT_STREQ(stGroup.acSipUri, "previous");
}

TEST_F(AccessServerTest, ActiveFlagsAreSetOnlyByExactTrue)
{
    for (const char *pcValue : {"TRUE", "1", "True", "yes", ""}) {
        Group stGroup{};
        const std::string strActive = std::string(" isactive=\"") + pcValue + "\"";
        ASSERT_EQ(Parse("<siptls" + strActive + "/><srtp" + strActive + "/>", &stGroup), 0u);
        EXPECT_EQ(stGroup.uiSipTlsActive, 0u) << pcValue;
        EXPECT_EQ(stGroup.uiSrtpActive, 0u) << pcValue;
    }
    Group stGroup{};
    ASSERT_EQ(Parse("<siptls isactive=\"true\"/><srtp isactive=\"true\"/>", &stGroup), 0u);
    EXPECT_EQ(stGroup.uiSipTlsActive, 1u);
    EXPECT_EQ(stGroup.uiSrtpActive, 1u);
}

TEST_F(AccessServerTest, ActiveFlagsAreNeverClearedByTheAnswer)
{
    Group stGroup{};
    stGroup.uiSipTlsActive = 1;
    stGroup.uiSrtpActive = 1;
    ASSERT_EQ(Parse("<siptls isactive=\"false\"/><srtp isactive=\"false\"/>", &stGroup), 0u);
    EXPECT_EQ(stGroup.uiSipTlsActive, 1u);
    EXPECT_EQ(stGroup.uiSrtpActive, 1u);
}

TEST_F(AccessServerTest, TlsUriComesFromTheElementFollowingSiptls)
{
    Group stGroup{};
    ASSERT_EQ(Parse("<siptls isactive=\"true\" uri=\"siptls-own\"/><anything uri=\"sips:tls.example.com:5061\"/>"
                    "<srtp isactive=\"true\"/>",
                    &stGroup),
              0u);
    EXPECT_STREQ(stGroup.acSipTlsUri, "sips:tls.example.com:5061");
    EXPECT_EQ(stGroup.uiSipTlsActive, 1u);
}

TEST_F(AccessServerTest, TlsUriIsTakenEvenWhenSiptlsIsInactive)
{
    Group stGroup{};
    ASSERT_EQ(Parse("<siptls isactive=\"false\"/><srtp uri=\"sips:tls.example.com\"/>", &stGroup), 0u);
    EXPECT_EQ(stGroup.uiSipTlsActive, 0u);
    EXPECT_STREQ(stGroup.acSipTlsUri, "sips:tls.example.com");
}

TEST_F(AccessServerTest, SiptlsAsLastChildSetsTheFlagButNoUri)
{
    Group stGroup{};
    ASSERT_EQ(Parse("<srtp isactive=\"true\"/><siptls isactive=\"true\" uri=\"siptls-own\"/>", &stGroup), 0u);
    EXPECT_EQ(stGroup.uiSipTlsActive, 1u);
    EXPECT_STREQ(stGroup.acSipTlsUri, "");
}

TEST_F(AccessServerTest, UriOf256CharactersLeavesItsFieldEmptyAndParsingGoesOn)
{
    Group stGroup{};
    std::strcpy(stGroup.acSipUri, "previous");
    ASSERT_EQ(Parse("<sip uri=\"" + std::string(256, 's') + "\"/><svn uri=\"" + std::string(255, 'v') + "\"/>",
                    &stGroup),
              0u);
    EXPECT_STREQ(stGroup.acSipUri, "");
    EXPECT_EQ(std::string(stGroup.acSvnUri), std::string(255, 'v'));
}

TEST_F(AccessServerTest, NinthMediaServerIsNeverRead)
{
    Group stGroup = KeepRecord();
    const Group stBefore = stGroup;
    ASSERT_EQ(Parse("<msgroup><ms9 uri=\"192.0.2.69:9000\"/></msgroup>", &stGroup, nullptr, 0, ""), 0u);
    EXPECT_TRUE(SameBytes(stGroup, stBefore));
    for (const std::string &strText : m_traces.Texts()) {
        EXPECT_EQ(strText.find("ms9"), std::string::npos) << strText;
    }
    EXPECT_EQ(m_traces.Count(1, UrlMiss("accessserver.msgroup.ms8").substr(3)), 1u);
}

TEST_F(AccessServerTest, MissingMediaServersAreSkippedWithoutStoppingTheLoop)
{
    Group stGroup{};
    ASSERT_EQ(Parse("<msgroup><ms3 uri=\"three\"/><ms8 uri=\"eight\"/></msgroup>", &stGroup), 0u);
    EXPECT_STREQ(stGroup.aacMsUri[2], "three");
    EXPECT_STREQ(stGroup.aacMsUri[7], "eight");
    for (int i : {1, 2, 4, 5, 6, 7}) {
        EXPECT_EQ(m_traces.Count(1, UrlMiss("accessserver.msgroup.ms" + std::to_string(i)).substr(3)), 1u) << i;
    }
}

TEST_F(AccessServerTest, EserverHostNameWithPortBecomesItsAddressList)
{
    m_resolver.Answer("es.example.com", 2, 0, {"192.0.2.30", "192.0.2.31"});
    Group stGroup{};
    ASSERT_EQ(Parse("<eserver uri=\"es.example.com:8080\"/>", &stGroup), 0u);
    EXPECT_STREQ(stGroup.acEserverAddr, "192.0.2.30:8080;192.0.2.31:8080");
}

TEST_F(AccessServerTest, EserverGivenAsPlainIpWithoutPortIsCopiedAsIs)
{
    Group stGroup{};
    ASSERT_EQ(Parse("<eserver uri=\"192.0.2.30\"/>", &stGroup), 0u);
    EXPECT_STREQ(stGroup.acEserverAddr, "192.0.2.30");
    EXPECT_THAT(m_resolver.Calls(), IsEmpty());
}

TEST_F(AccessServerTest, EveryResolvedFieldGoesThroughTheResolver)
{
    m_resolver.Answer("e1.example.com", 2, 0, {"192.0.2.1"});
    m_resolver.Answer("mp.example.com", 2, 0, {"192.0.2.2"});
    m_resolver.Answer("mdr.example.com", 2, 0, {"192.0.2.3"});
    Group stGroup{};
    ASSERT_EQ(Parse("<eserver1 uri=\"e1.example.com:1\"/><maaproxy uri=\"mp.example.com:2\"/>"
                    "<maadrproxy uri=\"mdr.example.com:3\"/><maa uri=\"maa.example.com:4\"/>",
                    &stGroup),
              0u);
    EXPECT_STREQ(stGroup.acEserver1Addr, "192.0.2.1:1");
    EXPECT_STREQ(stGroup.acMaaProxyAddr, "192.0.2.2:2");
    EXPECT_STREQ(stGroup.acMaaDrProxyAddr, "192.0.2.3:3");
    EXPECT_STREQ(stGroup.acMaaUri, "maa.example.com:4") << "copied fields are never resolved";
    EXPECT_EQ(m_resolver.Calls().size(), 3u);
}

TEST_F(AccessServerTest, UnresolvableAddressIsTracedLeftAsItWasAndParsingGoesOn)
{
    Group stGroup{};
    std::strcpy(stGroup.acMaaProxyAddr, "previous");
    ASSERT_EQ(Parse("<maaproxy uri=\"nowhere.example.com:443\"/><eua uri=\"ldap://eua\"/>", &stGroup), 0u);
    EXPECT_STREQ(stGroup.acMaaProxyAddr, "previous");
    EXPECT_STREQ(stGroup.acEuaUri, "ldap://eua");
    const std::vector<std::string> vecTexts = m_traces.Texts();
    const auto itDns = std::find(vecTexts.begin(), vecTexts.end(), "L0 dns err:nowhere.example.com ret:99");
    ASSERT_NE(itDns, vecTexts.end());
    EXPECT_EQ(*(itDns + 1), "L2 mmaproxy : previous");
}

TEST_F(AccessServerTest, AtriumAddressGoesToTheCallersBufferWithItsCapacity)
{
    Group stGroup{};
    char acAtrium[18] = ""; /* exactly the 17 characters and the terminator */
    ASSERT_EQ(Parse("<atrium uri=\"https://p.example\"/>", &stGroup, acAtrium, sizeof(acAtrium)), 0u);
    EXPECT_STREQ(acAtrium, "https://p.example");

    char acSmall[17] = "";
    ASSERT_EQ(Parse("<atrium uri=\"https://p.example\"/>", &stGroup, acSmall, sizeof(acSmall)), 0u);
    EXPECT_STREQ(acSmall, "");
}

TEST_F(AccessServerTest, WithoutABufferTheAtriumElementIsNotRead)
{
    Group stGroup{};
    ASSERT_EQ(Parse("", &stGroup), 0u);
    EXPECT_THAT(m_traces.Texts(), ElementsAreArray(EveryLookupMissed(false)));
}

TEST_F(AccessServerTest, NullNodeYieldsTwo)
{
    Group stGroup{};
    EXPECT_EQ(XmlAtriumParseAccessServer(nullptr, &stGroup, nullptr, 0), 2u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 XmlAtriumParseAccessServer failed param is null\n"));
}

TEST_F(AccessServerTest, NullRecordYieldsTwo)
{
    ParsedXml oXml("<accessserver><sip uri=\"s\"/></accessserver>");
    char acAtrium[64] = "";
    EXPECT_EQ(XmlAtriumParseAccessServer(oXml.Root(), nullptr, acAtrium, sizeof(acAtrium)), 2u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 XmlAtriumParseAccessServer failed param is null\n"));
}

} // namespace
