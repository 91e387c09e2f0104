/*
 * SIP server list: one entry per group of every site (also for an empty SIP address), plus
 * one for each group's TLS address right after it, read by the login service's address
 * reader into an array the caller owns.
 */
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "sites_test.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class SipServerTest : public ModuleTest {
protected:
    void TearDown() override
    {
        KOSA_MemFreeD(m_stList.pstServer, __LINE__, __FILE__);
        freeSiteMem(m_pstSites, m_uiSites);
        ModuleTest::TearDown();
    }
    void MakeInput(const std::vector<SitePlan> &vecPlans)
    {
        m_pstSites = MakeSites(vecPlans);
        m_uiSites = static_cast<uint32_t>(vecPlans.size());
    }
    /* "host port transport" of every entry. */
    std::vector<std::string> Entries() const
    {
        std::vector<std::string> vecEntries;
        for (uint32_t i = 0; m_stList.pstServer != nullptr && i < m_stList.uiNum; ++i) {
            const tagLOGIN_S_SERVER_ADDR_INFO &stEntry = m_stList.pstServer[i];
            vecEntries.push_back(std::string(stEntry.acHost) + " " + std::to_string(stEntry.uiPort) + " " +
                                 std::to_string(stEntry.uiTransport));
        }
        return vecEntries;
    }
    tagLOGIN_S_SITE *m_pstSites = nullptr;
    uint32_t m_uiSites = 0;
    tagLOGIN_S_SERVER_LIST m_stList{};
};

TEST_F(SipServerTest, EveryGroupOfEverySiteInOrderWithTheTlsAddressRightAfterItsGroup)
{
    MakeInput({{"a", 1, 2}, {"b", 2, 1}});
    std::strcpy(m_pstSites[0].pstAccessServer[1].acSipTlsUri, "sips:tls.a1.example.com:5061");
    ASSERT_EQ(getAllSipServer(m_pstSites, 2, &m_stList), 0u);
    EXPECT_EQ(m_stList.uiNum, 4u);
    EXPECT_THAT(Entries(), ElementsAre("sip.a0.example.com 5060 0", "sip.a1.example.com 5060 0",
                                       "tls.a1.example.com 5061 2", "sip.b0.example.com 5060 0"));
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(SipServerTest, AllGroupsAreListedNotOnlyASelection)
{
    MakeInput({{"a", 1, 5}});
    ASSERT_EQ(getAllSipServer(m_pstSites, 1, &m_stList), 0u);
    EXPECT_EQ(m_stList.uiNum, 5u);
    EXPECT_EQ(Entries().back(), "sip.a4.example.com 5060 0");
}

TEST_F(SipServerTest, EmptyOrUnreadableSipAddressStillTakesItsEntry)
{
    MakeInput({{"a", 1, 3}});
    m_pstSites[0].pstAccessServer[0].acSipUri[0] = '\0';
    std::strcpy(m_pstSites[0].pstAccessServer[1].acSipUri, "[not an address");
    ASSERT_EQ(getAllSipServer(m_pstSites, 1, &m_stList), 0u);
    EXPECT_THAT(Entries(), ElementsAre(" 0 0", " 0 0", "sip.a2.example.com 5060 0"));
}

TEST_F(SipServerTest, ZeroGroupsGiveCountZeroAndAnEmptyArrayTheCallerFrees)
{
    MakeInput({{"a", 1, 0}, {"b", 2, 0}});
    ASSERT_EQ(getAllSipServer(m_pstSites, 2, &m_stList), 0u);
    EXPECT_EQ(m_stList.uiNum, 0u);
    EXPECT_NE(m_stList.pstServer, nullptr);
}

TEST_F(SipServerTest, ZeroSitesGiveCountZero)
{
    ASSERT_EQ(getAllSipServer(nullptr, 0, &m_stList), 0u);
    EXPECT_EQ(m_stList.uiNum, 0u);
}

TEST_F(SipServerTest, AllocationFailureKeepsTheCountAndReturnsOne)
{
    MakeInput({{"a", 1, 2}});
    std::strcpy(m_pstSites[0].pstAccessServer[0].acSipTlsUri, "sips:tls.example.com");
    KOSA_MemFailAfter(0);
    EXPECT_EQ(getAllSipServer(m_pstSites, 1, &m_stList), 1u);
    EXPECT_EQ(m_stList.uiNum, 3u);
    EXPECT_EQ(m_stList.pstServer, nullptr);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 mem malloc failed"));
    EXPECT_EQ(m_traces.Lines()[0].strFunc, "getAllSipServer");
}

TEST_F(SipServerTest, SiteWithANullGroupArrayHasNoServers)
{
    MakeInput({{"a", 1, 1}, {"b", 2, 0}});
    m_pstSites[1].uiNumOfAccessServer = 3; /* what a failed group allocation leaves */
    ASSERT_EQ(getAllSipServer(m_pstSites, 2, &m_stList), 0u);
    EXPECT_THAT(Entries(), ElementsAre("sip.a0.example.com 5060 0"));
}

} // namespace
