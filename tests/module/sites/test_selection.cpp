/*
 * Site and access-group selection: the top-priority site, the groups of a single site,
 * the groups of several sites (own site first, then the top-priority site, then the others
 * in index order, at most three each, marked main when they come from the main site), and
 * the selected site handed to the caller. Draws are fed through the random test hook.
 */
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "sites_test.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using Group = tagLOGIN_S_ACCESS_SERVER;
using Site = tagLOGIN_S_SITE;

/* ---- getTopPriorityPos ------------------------------------------------------------------- */

class TopPriorityTest : public ModuleTest {
protected:
    uint32_t Top(const std::vector<uint32_t> &vecPriorities)
    {
        std::vector<Site> vecSites(vecPriorities.size());
        for (size_t i = 0; i < vecPriorities.size(); ++i) {
            vecSites[i].uiPriority = vecPriorities[i];
        }
        return getTopPriorityPos(vecSites.data(), static_cast<uint32_t>(vecSites.size()));
    }
};

TEST_F(TopPriorityTest, SmallestPriorityIsTop)
{
    EXPECT_EQ(Top({5, 3, 9}), 1u);
    EXPECT_EQ(Top({5, 9, 3}), 2u);
    EXPECT_EQ(Top({1, 9, 3}), 0u);
}

TEST_F(TopPriorityTest, EqualSmallestPrioritiesGiveTheLowerIndex)
{
    EXPECT_EQ(Top({4, 1, 7, 1}), 1u);
    EXPECT_EQ(Top({2, 2}), 0u);
}

TEST_F(TopPriorityTest, PrioritiesCompareUnsigned)
{
    EXPECT_EQ(Top({0xFFFFFFFFu, 0x7FFFFFFFu}), 1u);
    EXPECT_EQ(Top({0x80000000u, 0}), 1u);
}

/* ---- getSingleSiteAccessGroup ------------------------------------------------------------- */

class SingleSiteTest : public ModuleTest {
protected:
    void TearDown() override
    {
        freeSiteMem(m_pstOut, 1);
        freeSiteMem(m_pstSites, m_uiSites);
        ModuleTest::TearDown();
    }
    void MakeInput(const std::vector<SitePlan> &vecPlans)
    {
        m_pstSites = MakeSites(vecPlans);
        m_uiSites = static_cast<uint32_t>(vecPlans.size());
        m_pstOut = NewSites(1);
    }
    Site *m_pstSites = nullptr;
    uint32_t m_uiSites = 0;
    Site *m_pstOut = nullptr;
};

TEST_F(SingleSiteTest, FiveGroupsGiveThreeDistinctGroupsMarkedMainWhenMainSiteIsZero)
{
    MakeInput({{"s", 1, 5}});
    RandomFeed oFeed({7, 2, 9});
    EXPECT_EQ(getSingleSiteAccessGroup(m_pstSites, m_pstOut, 0), 0u);
    EXPECT_THAT(GroupNames(*m_pstOut), ElementsAre("s-g2", "s-g4", "s-g0"));
    EXPECT_THAT(MainFlags(*m_pstOut), ElementsAre(1u, 1u, 1u));
    EXPECT_NE(m_pstOut->pstAccessServer, m_pstSites[0].pstAccessServer);
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("L2 num of access group:5", "L2 pos[0]:2", "L2 pos[1]:4", "L2 pos[2]:0"));
    EXPECT_EQ(m_traces.Lines()[0].strFunc, "getSingleSiteAccessGroup");
}

TEST_F(SingleSiteTest, MainSiteArgumentOneMarksTheGroupsNotMain)
{
    MakeInput({{"s", 1, 5}});
    RandomFeed oFeed({0});
    EXPECT_EQ(getSingleSiteAccessGroup(m_pstSites, m_pstOut, 1), 0u);
    EXPECT_THAT(GroupNames(*m_pstOut), ElementsAre("s-g0", "s-g4", "s-g3"));
    EXPECT_THAT(MainFlags(*m_pstOut), ElementsAre(0u, 0u, 0u));
}

TEST_F(SingleSiteTest, AnyNonZeroMainSiteArgumentMarksTheGroupsNotMain)
{
    MakeInput({{"s", 1, 2}});
    RandomFeed oFeed({0});
    EXPECT_EQ(getSingleSiteAccessGroup(m_pstSites, m_pstOut, 5), 0u);
    EXPECT_THAT(MainFlags(*m_pstOut), ElementsAre(0u, 0u));
}

TEST_F(SingleSiteTest, TwoGroupsAreBothTakenInDrawOrder)
{
    MakeInput({{"s", 1, 2}});
    RandomFeed oFeed({1, 0});
    EXPECT_EQ(getSingleSiteAccessGroup(m_pstSites, m_pstOut, 0), 0u);
    EXPECT_EQ(m_pstOut->uiNumOfAccessServer, 2u);
    EXPECT_THAT(GroupNames(*m_pstOut), ElementsAre("s-g1", "s-g0"));
}

TEST_F(SingleSiteTest, OnlyTheFirstSiteIsUsed)
{
    MakeInput({{"first", 1, 1}, {"second", 0, 3}});
    EXPECT_EQ(getSingleSiteAccessGroup(m_pstSites, m_pstOut, 0), 0u);
    EXPECT_THAT(GroupNames(*m_pstOut), ElementsAre("first-g0"));
}

TEST_F(SingleSiteTest, SiteWithoutGroupsLeavesNoArrayAndCountZero)
{
    MakeInput({{"s", 1, 0}});
    m_pstOut->uiNumOfAccessServer = 99;
    EXPECT_EQ(getSingleSiteAccessGroup(m_pstSites, m_pstOut, 0), 0u);
    EXPECT_EQ(m_pstOut->pstAccessServer, nullptr);
    EXPECT_EQ(m_pstOut->uiNumOfAccessServer, 0u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L2 num of access group:0"));
}

TEST_F(SingleSiteTest, ArrayAllocationFailureReturnsOneWithNullArrayAndCountUntouched)
{
    MakeInput({{"s", 1, 4}});
    m_pstOut->uiNumOfAccessServer = 99;
    KOSA_MemFailAfter(0);
    EXPECT_EQ(getSingleSiteAccessGroup(m_pstSites, m_pstOut, 0), 1u);
    EXPECT_EQ(m_pstOut->pstAccessServer, nullptr);
    EXPECT_EQ(m_pstOut->uiNumOfAccessServer, 99u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L2 num of access group:4", "L0 mem malloc failed"));
}

TEST_F(SingleSiteTest, FailedDrawReleasesTheArrayAndLeavesNoGroups)
{
    MakeInput({{"s", 1, 4}});
    KOSA_MemFailAfter(1); /* the group array succeeds, the draw's scratch array fails */
    EXPECT_EQ(getSingleSiteAccessGroup(m_pstSites, m_pstOut, 0), 0u);
    EXPECT_EQ(m_pstOut->pstAccessServer, nullptr);
    EXPECT_EQ(m_pstOut->uiNumOfAccessServer, 0u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L2 num of access group:4"));
}

/* ---- getMultAccessGroup ------------------------------------------------------------------ */

/* Sites A (priority 2, 4 groups), B (priority 1, 2 groups: the top-priority site) and C
 * (priority 3, 1 group). */
class MultSiteTest : public SingleSiteTest {
protected:
    void SetUp() override
    {
        SingleSiteTest::SetUp();
        MakeInput({{"A", 2, 4}, {"B", 1, 2}, {"C", 3, 1}});
    }
    uint32_t Select(uint32_t uiOwn, uint32_t uiMain)
    {
        return getMultAccessGroup(m_pstSites, 3, uiOwn, uiMain, 1, m_pstOut);
    }
};

/* Own = top = B: B drawn with 1, 5 (B-g1, B-g0); then A with 6, 7, 8 (A-g2, A-g1, A-g0);
 * then C with 0. */
TEST_F(MultSiteTest, OwnSiteThatIsAlsoTopComesOnceThenTheOthersInIndexOrder)
{
    RandomFeed oFeed({1, 5, 6, 7, 8, 0});
    EXPECT_EQ(Select(1, 1), 0u);
    EXPECT_EQ(m_pstOut->uiNumOfAccessServer, 6u);
    EXPECT_THAT(GroupNames(*m_pstOut), ElementsAre("B-g1", "B-g0", "A-g2", "A-g1", "A-g0", "C-g0"));
    EXPECT_THAT(MainFlags(*m_pstOut), ElementsAre(1u, 1u, 0u, 0u, 0u, 0u));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("L2 uiNumOfSite:3, uiOwnSite:1, uiMainSite:1, uiTopPrioritySite:1", "L2 pos[0]:1",
                            "L2 pos[1]:0", "L2 pos[0]:2", "L2 pos[1]:1", "L2 pos[2]:0", "L2 pos[0]:0"));
}

/* Own = A, top = B, main = C: A drawn with 1, 5, 6 (A-g1, A-g2, A-g0); B with 7, 8 (B-g1,
 * B-g0); C with 0. Only C's group is main. */
TEST_F(MultSiteTest, OwnSiteFirstThenTopThenOthersWithTheMainSiteElsewhere)
{
    RandomFeed oFeed({1, 5, 6, 7, 8, 0});
    EXPECT_EQ(Select(0, 2), 0u);
    EXPECT_THAT(GroupNames(*m_pstOut), ElementsAre("A-g1", "A-g2", "A-g0", "B-g1", "B-g0", "C-g0"));
    EXPECT_THAT(MainFlags(*m_pstOut), ElementsAre(0u, 0u, 0u, 0u, 0u, 1u));
}

TEST_F(MultSiteTest, OwnSiteThatIsMainIsTheOnlyOneMarkedMain)
{
    RandomFeed oFeed({1, 5, 6, 7, 8, 0});
    EXPECT_EQ(Select(0, 0), 0u);
    EXPECT_THAT(GroupNames(*m_pstOut), ElementsAre("A-g1", "A-g2", "A-g0", "B-g1", "B-g0", "C-g0"));
    EXPECT_THAT(MainFlags(*m_pstOut), ElementsAre(1u, 1u, 1u, 0u, 0u, 0u));
}

/* Own = C, top = main = B: C first, then B, then A; every draw fed 0. */
TEST_F(MultSiteTest, TopSiteThatIsMainIsMarkedMainAfterTheOwnSite)
{
    RandomFeed oFeed({0});
    EXPECT_EQ(Select(2, 1), 0u);
    EXPECT_THAT(GroupNames(*m_pstOut), ElementsAre("C-g0", "B-g0", "B-g1", "A-g0", "A-g3", "A-g2"));
    EXPECT_THAT(MainFlags(*m_pstOut), ElementsAre(0u, 1u, 1u, 0u, 0u, 0u));
}

TEST_F(MultSiteTest, WithoutAMainSiteNoGroupIsMarkedMain)
{
    RandomFeed oFeed({0});
    EXPECT_EQ(Select(0, 3), 0u);
    EXPECT_THAT(GroupNames(*m_pstOut), ElementsAre("A-g0", "A-g3", "A-g2", "B-g0", "B-g1", "C-g0"));
    EXPECT_THAT(MainFlags(*m_pstOut), ElementsAre(0u, 0u, 0u, 0u, 0u, 0u));
}

TEST_F(MultSiteTest, ArrayAllocationFailureReturnsOneWithNullArrayAndCountUntouched)
{
    m_pstOut->uiNumOfAccessServer = 99;
    KOSA_MemFailAfter(0);
    EXPECT_EQ(Select(0, 0), 1u);
    EXPECT_EQ(m_pstOut->pstAccessServer, nullptr);
    EXPECT_EQ(m_pstOut->uiNumOfAccessServer, 99u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L2 uiNumOfSite:3, uiOwnSite:0, uiMainSite:0, uiTopPrioritySite:1",
                                              "L0 mem malloc failed"));
}

TEST_F(MultSiteTest, FailedDrawOfOneSiteLeavesOnlyThatSiteOut)
{
    RandomFeed oFeed({0});
    KOSA_MemFailAfter(1); /* the group array succeeds, the own site's draw fails */
    EXPECT_EQ(Select(0, 0), 0u);
    EXPECT_THAT(GroupNames(*m_pstOut), ElementsAre("B-g0", "B-g1", "C-g0"));
}

class MultSiteLayoutTest : public SingleSiteTest {};

TEST_F(MultSiteLayoutTest, OthersFollowInIndexOrderSkippingOwnAndTop)
{
    MakeInput({{"P0", 5, 1}, {"P1", 1, 1}, {"P2", 7, 1}, {"P3", 9, 1}});
    EXPECT_EQ(getMultAccessGroup(m_pstSites, 4, 2, 0, 1, m_pstOut), 0u);
    EXPECT_THAT(GroupNames(*m_pstOut), ElementsAre("P2-g0", "P1-g0", "P0-g0", "P3-g0"));
    EXPECT_THAT(MainFlags(*m_pstOut), ElementsAre(0u, 0u, 1u, 0u));
}

TEST_F(MultSiteLayoutTest, EverySiteContributesAtMostThreeGroups)
{
    MakeInput({{"a", 1, 5}, {"b", 2, 4}, {"c", 3, 3}});
    EXPECT_EQ(getMultAccessGroup(m_pstSites, 3, 0, 0, 0, m_pstOut), 0u);
    EXPECT_EQ(m_pstOut->uiNumOfAccessServer, 9u);
    const std::vector<std::string> vecNames = GroupNames(*m_pstOut);
    for (size_t i = 0; i < vecNames.size(); ++i) {
        EXPECT_EQ(vecNames[i][0], "abc"[i / 3]) << vecNames[i];
    }
}

TEST_F(MultSiteLayoutTest, SitesWithoutGroupsLeaveNoArrayAndCountZero)
{
    MakeInput({{"a", 1, 0}, {"b", 2, 0}});
    m_pstOut->uiNumOfAccessServer = 99;
    EXPECT_EQ(getMultAccessGroup(m_pstSites, 2, 0, 0, 0, m_pstOut), 0u);
    EXPECT_EQ(m_pstOut->pstAccessServer, nullptr);
    EXPECT_EQ(m_pstOut->uiNumOfAccessServer, 0u);
}

TEST_F(MultSiteLayoutTest, SiteWithANullGroupArrayContributesNothing)
{
    MakeInput({{"a", 1, 1}, {"b", 2, 0}});
    m_pstSites[1].uiNumOfAccessServer = 4; /* what a failed group allocation leaves */
    EXPECT_EQ(getMultAccessGroup(m_pstSites, 2, 1, 0, 0, m_pstOut), 0u);
    EXPECT_THAT(GroupNames(*m_pstOut), ElementsAre("a-g0"));
}

/* ---- getSiteInfo ------------------------------------------------------------------------- */

class SiteInfoTest : public ModuleTest {
protected:
    void TearDown() override
    {
        freeSiteMem(m_pstSelected, 1);
        freeSiteMem(m_pstSites, m_uiSites);
        ModuleTest::TearDown();
    }
    void MakeInput(const std::vector<SitePlan> &vecPlans)
    {
        m_pstSites = MakeSites(vecPlans);
        m_uiSites = static_cast<uint32_t>(vecPlans.size());
    }
    Site *m_pstSites = nullptr;
    uint32_t m_uiSites = 0;
    Site *m_pstSelected = nullptr;
};

TEST_F(SiteInfoTest, ZeroSitesReturnOneAndLeaveTheOutPointer)
{
    Site stDummy{};
    Site *pstOut = &stDummy;
    EXPECT_EQ(getSiteInfo(nullptr, 0, 0, 0, &pstOut), 1u);
    EXPECT_EQ(pstOut, &stDummy);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(SiteInfoTest, RecordAllocationFailureReturnsOneAndLeavesTheOutPointer)
{
    MakeInput({{"s", 1, 2}});
    Site stDummy{};
    Site *pstOut = &stDummy;
    KOSA_MemFailAfter(0);
    EXPECT_EQ(getSiteInfo(m_pstSites, 1, 0, 0, &pstOut), 1u);
    EXPECT_EQ(pstOut, &stDummy);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(SiteInfoTest, SingleSiteIsCopiedWithItsOwnGroupArray)
{
    MakeInput({{"solo", 4, 5}});
    RandomFeed oFeed({7, 2, 9});
    ASSERT_EQ(getSiteInfo(m_pstSites, 1, 0, 0, &m_pstSelected), 0u);
    ASSERT_NE(m_pstSelected, nullptr);
    EXPECT_STREQ(m_pstSelected->acSiteName, "solo");
    EXPECT_STREQ(m_pstSelected->acSbcDomain, "sbc.solo.example.com");
    EXPECT_STREQ(m_pstSelected->acDefaultAccount, "acs-solo");
    EXPECT_STREQ(m_pstSelected->acDefaultPwd, "pwd-solo");
    EXPECT_EQ(m_pstSelected->uiPriority, 4u);
    EXPECT_NE(m_pstSelected->pstAccessServer, m_pstSites[0].pstAccessServer);
    EXPECT_THAT(GroupNames(*m_pstSelected), ElementsAre("solo-g2", "solo-g4", "solo-g0"));
    EXPECT_THAT(MainFlags(*m_pstSelected), ElementsAre(1u, 1u, 1u));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("L2 uiNumOfSite:1, uiOwnSite:0, uiMainSite:0", "L2 num of access group:5",
                            "L2 pos[0]:2", "L2 pos[1]:4", "L2 pos[2]:0"));
    EXPECT_EQ(m_traces.Lines()[0].strFunc, "getSiteInfo");
}

TEST_F(SiteInfoTest, SingleSiteWithAnotherMainIndexIsNotMain)
{
    MakeInput({{"solo", 4, 1}});
    ASSERT_EQ(getSiteInfo(m_pstSites, 1, 0, 1, &m_pstSelected), 0u);
    EXPECT_THAT(MainFlags(*m_pstSelected), ElementsAre(0u));
}

TEST_F(SiteInfoTest, SeveralSitesCopyTheOwnSiteAndSelectAcrossSites)
{
    MakeInput({{"A", 2, 4}, {"B", 1, 2}, {"C", 3, 1}});
    RandomFeed oFeed({0});
    ASSERT_EQ(getSiteInfo(m_pstSites, 3, 2, 1, &m_pstSelected), 0u);
    EXPECT_STREQ(m_pstSelected->acSiteName, "C");
    EXPECT_STREQ(m_pstSelected->acSbcDomain, "sbc.C.example.com");
    EXPECT_EQ(m_pstSelected->uiPriority, 3u);
    EXPECT_THAT(GroupNames(*m_pstSelected), ElementsAre("C-g0", "B-g0", "B-g1", "A-g0", "A-g3", "A-g2"));
    EXPECT_THAT(MainFlags(*m_pstSelected), ElementsAre(0u, 1u, 1u, 0u, 0u, 0u));
    EXPECT_EQ(m_traces.Texts()[0], "L2 uiNumOfSite:3, uiOwnSite:2, uiMainSite:1, uiTopPrioritySite:1");
}

TEST_F(SiteInfoTest, EqualSmallestPrioritiesMakeTheLowerIndexTop)
{
    MakeInput({{"A", 5, 1}, {"B", 1, 1}, {"C", 9, 1}, {"D", 1, 1}});
    ASSERT_EQ(getSiteInfo(m_pstSites, 4, 2, 2, &m_pstSelected), 0u);
    EXPECT_THAT(GroupNames(*m_pstSelected), ElementsAre("C-g0", "B-g0", "A-g0", "D-g0"));
}

TEST_F(SiteInfoTest, SitesWithoutGroupsGiveNullArrayCountZeroAndResultZero)
{
    MakeInput({{"A", 2, 0}, {"B", 1, 0}});
    ASSERT_EQ(getSiteInfo(m_pstSites, 2, 0, 0, &m_pstSelected), 0u);
    EXPECT_EQ(m_pstSelected->pstAccessServer, nullptr);
    EXPECT_EQ(m_pstSelected->uiNumOfAccessServer, 0u);
}

TEST_F(SiteInfoTest, GroupArrayFailureOfOneSiteStillReturnsZeroWithNullArrayAndOwnCount)
{
    MakeInput({{"solo", 4, 5}});
    KOSA_MemFailAfter(1); /* the record succeeds, its group array fails */
    ASSERT_EQ(getSiteInfo(m_pstSites, 1, 0, 0, &m_pstSelected), 0u);
    ASSERT_NE(m_pstSelected, nullptr);
    EXPECT_EQ(m_pstSelected->pstAccessServer, nullptr);
    EXPECT_EQ(m_pstSelected->uiNumOfAccessServer, 5u) << "the own site's count, copied with the record";
    EXPECT_STREQ(m_pstSelected->acSiteName, "solo");
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L2 uiNumOfSite:1, uiOwnSite:0, uiMainSite:0",
                                              "L2 num of access group:5", "L0 mem malloc failed"));
}

TEST_F(SiteInfoTest, GroupArrayFailureOfSeveralSitesStillReturnsZeroWithNullArrayAndOwnCount)
{
    MakeInput({{"A", 2, 4}, {"B", 1, 2}});
    KOSA_MemFailAfter(1);
    ASSERT_EQ(getSiteInfo(m_pstSites, 2, 1, 0, &m_pstSelected), 0u);
    EXPECT_EQ(m_pstSelected->pstAccessServer, nullptr);
    EXPECT_EQ(m_pstSelected->uiNumOfAccessServer, 2u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L2 uiNumOfSite:2, uiOwnSite:1, uiMainSite:0, uiTopPrioritySite:1",
                                              "L0 mem malloc failed"));
}

TEST_F(SiteInfoTest, InputSitesAndTheirGroupsAreNotChanged)
{
    MakeInput({{"A", 2, 4}, {"B", 1, 2}, {"C", 3, 1}});
    std::vector<Site> vecSites(m_pstSites, m_pstSites + 3);
    std::vector<std::vector<Group>> vecGroups;
    for (const Site &stSite : vecSites) {
        vecGroups.emplace_back(stSite.pstAccessServer, stSite.pstAccessServer + stSite.uiNumOfAccessServer);
    }
    ASSERT_EQ(getSiteInfo(m_pstSites, 3, 0, 2, &m_pstSelected), 0u);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(SameBytes(m_pstSites[i], vecSites[i])) << i;
        for (size_t j = 0; j < vecGroups[i].size(); ++j) {
            EXPECT_TRUE(SameBytes(m_pstSites[i].pstAccessServer[j], vecGroups[i][j])) << i << "," << j;
        }
    }
}

TEST_F(SiteInfoTest, SelectedSiteIsReleasedByFreeSiteMemOfOne)
{
    MakeInput({{"A", 2, 4}, {"B", 1, 2}});
    const uint32_t uiBefore = KOSA_MemLiveBlocks();
    ASSERT_EQ(getSiteInfo(m_pstSites, 2, 0, 0, &m_pstSelected), 0u);
    EXPECT_EQ(KOSA_MemLiveBlocks(), uiBefore + 2) << "the record and its group array";
    freeSiteMem(m_pstSelected, 1);
    m_pstSelected = nullptr;
    EXPECT_EQ(KOSA_MemLiveBlocks(), uiBefore);
}

} // namespace
