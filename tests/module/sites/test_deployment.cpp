/*
 * A realistic three-site deployment (tests/data/sites/deployment.xml) taken down the whole
 * site road as the login answers take it: count the sites, parse each into a zero-filled
 * array with the portal address captured, pick the own site by SSO host, build the
 * selected site and the SIP server list, release the array, and finally release what the
 * caller was handed.
 */
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "sites_test.h"

using ::testing::ElementsAre;

namespace {

using Group = tagLOGIN_S_ACCESS_SERVER;
using Site = tagLOGIN_S_SITE;

class DeploymentTest : public ModuleTest {
protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        m_resolver.Answer("eserver.north.example.com", 2, 0, {"192.0.2.13"});
        m_resolver.Answer("maaproxy.north.example.com", 2, 0, {"192.0.2.17", "192.0.2.117"});
        m_resolver.Answer("stg-es.north.example.com", 2, 0, {"198.51.100.3"});
    }
    void TearDown() override
    {
        freeSiteMem(m_pstSites, m_uiSites);
        ModuleTest::TearDown();
    }
    /* Counts and parses every site of the answer, as the login answers do. */
    void ParseSites(const ParsedXml &oXml, const char *pcOwnHost)
    {
        m_uiSites = GetSiteNumber(oXml.Root());
        ASSERT_EQ(m_uiSites, 3u);
        m_pstSites = NewSites(m_uiSites);
        uint32_t uiParsed = 0;
        uint32_t uiChildren = 0;
        (void)KTL_XML_GetNodeChildNum(oXml.Root(), &uiChildren);
        _NODE *pstChild = KTL_XML_GetNodeFirstChild(oXml.Root());
        for (uint32_t i = 0; i < uiChildren && pstChild != nullptr; ++i) {
            _NODE *pstSite = nullptr;
            if (KTL_XML_GetNodeByUrl(pstChild, "site", &pstSite) == 0) {
                ASSERT_LT(uiParsed, m_uiSites);
                ASSERT_EQ(XmlAtriumParseSite(pstChild, &m_pstSites[uiParsed], m_acAtrium, sizeof(m_acAtrium)), 0u);
                if (IsMatchingSite(pstChild, pcOwnHost) != 0) {
                    m_uiOwnSite = uiParsed;
                }
                ++uiParsed;
            }
            pstChild = KTL_XML_GetNodeNextSibling(pstChild);
        }
        ASSERT_EQ(uiParsed, m_uiSites);
    }
    const Group &GroupAt(uint32_t uiSite, uint32_t uiGroup) const
    {
        return m_pstSites[uiSite].pstAccessServer[uiGroup];
    }

    Site *m_pstSites = nullptr;
    uint32_t m_uiSites = 0;
    uint32_t m_uiOwnSite = 0;
    char m_acAtrium[256] = "";
};

TEST_F(DeploymentTest, EverySiteAndGroupFieldIsParsed)
{
    ParsedXml oXml(ReadTestFile("sites/deployment.xml"));
    ParseSites(oXml, "sso.south.example.com");

    const Site &stNorth = m_pstSites[0];
    EXPECT_STREQ(stNorth.acSiteName, "north");
    EXPECT_STREQ(stNorth.acSbcDomain, "sbc.north.example.com");
    EXPECT_STREQ(stNorth.acDefaultAccount, "acs-north");
    EXPECT_STREQ(stNorth.acDefaultPwd, "n0rth-acs-pass");
    EXPECT_EQ(stNorth.uiPriority, 2u);
    ASSERT_EQ(stNorth.uiNumOfAccessServer, 3u);

    const Group &stNa = GroupAt(0, 0);
    EXPECT_STREQ(stNa.acName, "north-a");
    EXPECT_STREQ(stNa.acSipUri, "192.0.2.10:5060");
    EXPECT_STREQ(stNa.acSvnUri, "192.0.2.11:443");
    EXPECT_STREQ(stNa.acHttpsProxyUri, "192.0.2.12:8443");
    EXPECT_STREQ(stNa.acEserverAddr, "192.0.2.13:8080");
    EXPECT_STREQ(stNa.acEserver1Addr, "192.0.2.14:8080");
    EXPECT_STREQ(stNa.acConfUri, "https://conf.north.example.com/cms");
    EXPECT_STREQ(stNa.acConfType, "smc");
    EXPECT_STREQ(stNa.acMaaUri, "192.0.2.15:443");
    EXPECT_STREQ(stNa.acMaa1Uri, "192.0.2.16:443");
    EXPECT_STREQ(stNa.acMaaProxyAddr, "192.0.2.17:443;192.0.2.117:443");
    EXPECT_STREQ(stNa.acMaaDrProxyAddr, "192.0.2.18:443");
    EXPECT_STREQ(stNa.acAndroidPushUri, "push.north.example.com:5223");
    EXPECT_STREQ(stNa.acMsParamUri, "https://ms.north.example.com/param");
    EXPECT_STREQ(stNa.acMsParamPathUri, "/ms/param/path");
    EXPECT_STREQ(stNa.acEabUri, "https://eab.north.example.com/");
    EXPECT_STREQ(stNa.acProPhotoUri, "https://photo.north.example.com/");
    EXPECT_STREQ(stNa.acTmsTr069Uri, "https://acs.north.example.com:7547/");
    EXPECT_STREQ(stNa.acEuaUri, "ldap://eua.north.example.com:389");
    EXPECT_STREQ(stNa.aacMsUri[0], "192.0.2.21:9000");
    EXPECT_STREQ(stNa.aacMsUri[1], "192.0.2.22:9000");
    for (int i = 2; i < 8; ++i) {
        EXPECT_STREQ(stNa.aacMsUri[i], "") << i;
    }
    EXPECT_STREQ(stNa.stStgGroup.acStgUri, "198.51.100.1:443");
    EXPECT_STREQ(stNa.stStgGroup.acAuthAccount, "stg-north");
    EXPECT_STREQ(stNa.stStgGroup.acAuthPwd, "stg-north-pass");
    EXPECT_STREQ(stNa.stStgGroup.acSipStgUri, "198.51.100.2:5061");
    EXPECT_STREQ(stNa.stStgGroup.acEserverStgAddr, "198.51.100.3:8443");
    EXPECT_STREQ(stNa.stStgGroup.acEserverStg1Addr, "198.51.100.4:8443");
    EXPECT_STREQ(stNa.stStgGroup.acMaaStgUri, "198.51.100.5:443");
    EXPECT_STREQ(stNa.stStgGroup.acMaaStg1Uri, "198.51.100.6:443");
    EXPECT_STREQ(stNa.stStgGroup.aacMsStgUri[0], "198.51.100.11:9000");
    EXPECT_STREQ(stNa.stStgGroup.aacMsStgUri[1], "198.51.100.12:9000");
    EXPECT_STREQ(stNa.stStgGroup.aacMsStgUri[2], "198.51.100.13:9000");
    EXPECT_STREQ(stNa.stStgGroup.aacMsStgUri[3], "");
    EXPECT_EQ(stNa.uiPriority, 2u);
    EXPECT_EQ(stNa.uiSipTlsActive, 1u);
    EXPECT_STREQ(stNa.acSipTlsUri, "sips:192.0.2.10:5061");
    EXPECT_EQ(stNa.uiSrtpActive, 1u);
    EXPECT_EQ(stNa.uiIsMainSite, 0u);

    const Group &stNb = GroupAt(0, 1);
    EXPECT_STREQ(stNb.acName, "north-b");
    EXPECT_STREQ(stNb.acSipUri, "192.0.2.30:5060");
    EXPECT_STREQ(stNb.acEuaUri, "ldap://eua2.north.example.com:389");
    EXPECT_STREQ(stNb.acEserverAddr, "");
    EXPECT_EQ(stNb.uiSipTlsActive, 0u);
    EXPECT_STREQ(stNb.acSipTlsUri, "sips:192.0.2.30:5061");
    EXPECT_EQ(stNb.uiSrtpActive, 0u);
    EXPECT_EQ(stNb.uiPriority, 2u);

    const Group &stNc = GroupAt(0, 2);
    EXPECT_STREQ(stNc.acName, "north-c");
    EXPECT_STREQ(stNc.acSipUri, "192.0.2.40:5060");
    EXPECT_STREQ(stNc.acSipTlsUri, "");
    const Group stEmpty{};
    EXPECT_EQ(0, std::memcmp(&stNc.stStgGroup, &stEmpty.stStgGroup, sizeof(stEmpty.stStgGroup)));

    const Site &stSouth = m_pstSites[1];
    EXPECT_STREQ(stSouth.acSiteName, "south");
    EXPECT_STREQ(stSouth.acSbcDomain, "sbc.south.example.com");
    EXPECT_STREQ(stSouth.acDefaultAccount, "");
    EXPECT_STREQ(stSouth.acDefaultPwd, "");
    EXPECT_EQ(stSouth.uiPriority, 1u);
    ASSERT_EQ(stSouth.uiNumOfAccessServer, 2u);
    EXPECT_STREQ(GroupAt(1, 0).acName, "south-a");
    EXPECT_STREQ(GroupAt(1, 0).acSipUri, "203.0.113.10:5060;transport=tcp");
    EXPECT_STREQ(GroupAt(1, 0).stStgGroup.acStgUri, "203.0.113.100:443");
    EXPECT_STREQ(GroupAt(1, 0).stStgGroup.aacMsStgUri[0], "203.0.113.101:9000");
    EXPECT_EQ(GroupAt(1, 0).uiPriority, 1u);
    EXPECT_STREQ(GroupAt(1, 1).acName, "south-b");
    EXPECT_EQ(GroupAt(1, 1).uiSipTlsActive, 1u);
    EXPECT_STREQ(GroupAt(1, 1).acSipTlsUri, "sips:203.0.113.20:5061");

    const Site &stWest = m_pstSites[2];
    EXPECT_STREQ(stWest.acSiteName, "west");
    EXPECT_STREQ(stWest.acSbcDomain, "");
    EXPECT_STREQ(stWest.acDefaultAccount, "acs-west");
    EXPECT_STREQ(stWest.acDefaultPwd, "w3st-acs-pass");
    EXPECT_EQ(stWest.uiPriority, 16u);
    ASSERT_EQ(stWest.uiNumOfAccessServer, 1u);
    EXPECT_STREQ(GroupAt(2, 0).acSipUri, "sip.west.example.com");
    EXPECT_EQ(GroupAt(2, 0).uiPriority, 16u);

    EXPECT_STREQ(m_acAtrium, "https://portal.north.example.com:443");
    EXPECT_EQ(m_uiOwnSite, 1u);
}

TEST_F(DeploymentTest, ProgressTracesFollowTheGroupsOfEachSite)
{
    ParsedXml oXml(ReadTestFile("sites/deployment.xml"));
    ParseSites(oXml, "sso.south.example.com");
    EXPECT_THAT(m_traces.TextsAt(2),
                ElementsAre("mmaproxy : 192.0.2.17:443;192.0.2.117:443", "eua_uri:ldap://eua.north.example.com:389",
                            "mmaproxy : ", "eua_uri:ldap://eua2.north.example.com:389", "mmaproxy : ", "eua_uri:",
                            "total server 3", "mmaproxy : ", "eua_uri:", "mmaproxy : ", "eua_uri:", "total server 2",
                            "mmaproxy : ", "eua_uri:", "total server 1"));
    EXPECT_EQ(m_traces.Count(1, "KTL_XML_GetNodeByUrl site failed=0x1002"), 1u) << "the version child";
}

/* Own site south is also the top-priority site; north is the main site. Every draw is fed
 * 0: south's two groups in order, then north's three as a, c, b, then west's one. */
TEST_F(DeploymentTest, SelectedSiteAndSipServerListBelongToTheCaller)
{
    ParsedXml oXml(ReadTestFile("sites/deployment.xml"));
    ParseSites(oXml, "sso.south.example.com");
    Site *pstSelected = nullptr;
    tagLOGIN_S_SERVER_LIST stList{};
    {
        RandomFeed oFeed({0});
        ASSERT_EQ(getSiteInfo(m_pstSites, m_uiSites, m_uiOwnSite, 0, &pstSelected), 0u);
    }
    ASSERT_EQ(getAllSipServer(m_pstSites, m_uiSites, &stList), 0u);
    freeSiteMem(m_pstSites, m_uiSites);
    m_pstSites = nullptr;

    /* What the caller holds stays valid once the parsed array is gone. */
    ASSERT_NE(pstSelected, nullptr);
    EXPECT_STREQ(pstSelected->acSiteName, "south");
    EXPECT_STREQ(pstSelected->acSbcDomain, "sbc.south.example.com");
    EXPECT_EQ(pstSelected->uiPriority, 1u);
    EXPECT_THAT(GroupNames(*pstSelected), ElementsAre("south-a", "south-b", "north-a", "north-c", "north-b", "west-a"));
    EXPECT_THAT(MainFlags(*pstSelected), ElementsAre(0u, 0u, 1u, 1u, 1u, 0u));
    EXPECT_STREQ(pstSelected->pstAccessServer[2].acMaaProxyAddr, "192.0.2.17:443;192.0.2.117:443");
    EXPECT_STREQ(pstSelected->pstAccessServer[2].stStgGroup.aacMsStgUri[2], "198.51.100.13:9000");

    ASSERT_EQ(stList.uiNum, 9u);
    std::vector<std::string> vecEntries;
    for (uint32_t i = 0; i < stList.uiNum; ++i) {
        vecEntries.push_back(std::string(stList.pstServer[i].acHost) + " " +
                             std::to_string(stList.pstServer[i].uiPort) + " " +
                             std::to_string(stList.pstServer[i].uiTransport));
    }
    EXPECT_THAT(vecEntries, ElementsAre("192.0.2.10 5060 0", "192.0.2.10 5061 2", "192.0.2.30 5060 0",
                                        "192.0.2.30 5061 2", "192.0.2.40 5060 0", "203.0.113.10 5060 1",
                                        "203.0.113.20 5060 0", "203.0.113.20 5061 2", "sip.west.example.com 0 0"));

    EXPECT_EQ(LiveBlocksSinceStart(), 3u) << "the selected record, its groups and the server array";
    freeSiteMem(pstSelected, 1);
    KOSA_MemFreeD(stList.pstServer, __LINE__, __FILE__);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
}

} // namespace
