/*
 * Random draws: the 32-bit random number, k distinct positions out of n by a partial
 * Fisher-Yates draw (fed values through the random test hook, and the real generator),
 * and the copy of up to three drawn groups.
 */
#include <gmock/gmock.h>

#include <set>
#include <string>
#include <vector>

#include "sites_test.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using Group = tagLOGIN_S_ACCESS_SERVER;

class RandomDrawTest : public ModuleTest {
protected:
    /* getSeveralRandom into a vector of k positions (filled with a marker first). */
    uint32_t Draw(uint32_t uiK, uint32_t uiN, std::vector<uint32_t> *pvecPos)
    {
        pvecPos->assign(uiK == 0 ? 1 : uiK, 0xEEEEEEEEu);
        return getSeveralRandom(pvecPos->data(), uiK, uiN);
    }
};

/* ---- getRealRandom ----------------------------------------------------------------------- */

TEST_F(RandomDrawTest, RealRandomIsOneFourByteDrawOfTheGenerator)
{
    RandomFeed oFeed({0xDEADBEEFu, 0x01020304u});
    EXPECT_EQ(getRealRandom(), 0xDEADBEEFu);
    EXPECT_EQ(getRealRandom(), 0x01020304u);
    EXPECT_EQ(oFeed.Drawn(), 2u);
}

TEST_F(RandomDrawTest, RealRandomFromTheRealGeneratorVaries)
{
    std::set<uint32_t> setValues;
    for (int i = 0; i < 16; ++i) {
        setValues.insert(getRealRandom());
    }
    EXPECT_GT(setValues.size(), 1u);
}

/* ---- getSeveralRandom ------------------------------------------------------------------- */

/* 5 live: 7 % 5 = 2 takes 2 and moves 4 into slot 2 -> [0 1 4 3];
 * 4 live: 2 % 4 = 2 takes 4 and moves 3 into slot 2 -> [0 1 3];
 * 3 live: 9 % 3 = 0 takes 0. */
TEST_F(RandomDrawTest, FedValuesGiveExactPositionsAndTraces)
{
    RandomFeed oFeed({7, 2, 9});
    std::vector<uint32_t> vecPos;
    ASSERT_EQ(Draw(3, 5, &vecPos), 0u);
    EXPECT_THAT(vecPos, ElementsAre(2u, 4u, 0u));
    EXPECT_EQ(oFeed.Drawn(), 3u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L2 pos[0]:2", "L2 pos[1]:4", "L2 pos[2]:0"));
    for (const TraceLine &stLine : m_traces.Lines()) {
        EXPECT_EQ(stLine.strFunc, "getSeveralRandom");
    }
}

/* Drawing the last live slot moves nothing: 4 % 5 = 4 takes 4, then 3 % 4 = 3 takes 3,
 * then 0 % 3 = 0 takes 0. */
TEST_F(RandomDrawTest, DrawingTheLastLiveSlotTakesItsValue)
{
    RandomFeed oFeed({4, 3, 0});
    std::vector<uint32_t> vecPos;
    ASSERT_EQ(Draw(3, 5, &vecPos), 0u);
    EXPECT_THAT(vecPos, ElementsAre(4u, 3u, 0u));
}

/* The slot taken first is refilled from the end: 0 takes 0 and moves 3 in, so the next
 * draw of slot 0 takes 3, which moves 2 in. */
TEST_F(RandomDrawTest, TakenSlotIsRefilledWithTheLastLiveValue)
{
    RandomFeed oFeed({0, 0, 0, 0});
    std::vector<uint32_t> vecPos;
    ASSERT_EQ(Draw(4, 4, &vecPos), 0u);
    EXPECT_THAT(vecPos, ElementsAre(0u, 3u, 2u, 1u));
}

/* 0xFFFFFFFF % 7 is 3 as an unsigned remainder (it would be -1 % 7 = -1 if signed). */
TEST_F(RandomDrawTest, RemainderIsUnsigned)
{
    RandomFeed oFeed({0xFFFFFFFFu});
    std::vector<uint32_t> vecPos;
    ASSERT_EQ(Draw(1, 7, &vecPos), 0u);
    EXPECT_THAT(vecPos, ElementsAre(3u));
}

TEST_F(RandomDrawTest, EveryFedSequenceOfAFullDrawGivesAPermutation)
{
    for (uint32_t a = 0; a < 6; ++a) {
        for (uint32_t b = 0; b < 6; ++b) {
            RandomFeed oFeed({a, b, a + b, 0});
            std::vector<uint32_t> vecPos;
            ASSERT_EQ(Draw(4, 4, &vecPos), 0u);
            EXPECT_EQ(std::set<uint32_t>(vecPos.begin(), vecPos.end()), (std::set<uint32_t>{0, 1, 2, 3}))
                << a << "," << b;
        }
    }
}

TEST_F(RandomDrawTest, FullDrawWithTheRealGeneratorIsAPermutation)
{
    std::vector<uint32_t> vecPos;
    ASSERT_EQ(Draw(9, 9, &vecPos), 0u);
    EXPECT_EQ(std::set<uint32_t>(vecPos.begin(), vecPos.end()).size(), 9u);
    for (uint32_t uiPos : vecPos) {
        EXPECT_LT(uiPos, 9u);
    }
}

TEST_F(RandomDrawTest, MoreThanAvailableIsRefused)
{
    RandomFeed oFeed({1});
    std::vector<uint32_t> vecPos;
    EXPECT_EQ(Draw(4, 3, &vecPos), 1u);
    EXPECT_EQ(oFeed.Drawn(), 0u);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(RandomDrawTest, NothingToDrawFromIsRefused)
{
    std::vector<uint32_t> vecPos;
    EXPECT_EQ(Draw(0, 0, &vecPos), 1u);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(RandomDrawTest, NullOutputIsRefused)
{
    EXPECT_EQ(getSeveralRandom(nullptr, 1, 3), 1u);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(RandomDrawTest, ZeroPositionsDrawsNothing)
{
    RandomFeed oFeed({1});
    std::vector<uint32_t> vecPos;
    EXPECT_EQ(Draw(0, 3, &vecPos), 0u);
    EXPECT_EQ(oFeed.Drawn(), 0u);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(RandomDrawTest, ScratchAllocationFailureIsRefusedSilently)
{
    RandomFeed oFeed({1});
    std::vector<uint32_t> vecPos;
    KOSA_MemFailAfter(0);
    EXPECT_EQ(Draw(2, 3, &vecPos), 1u);
    EXPECT_EQ(oFeed.Drawn(), 0u);
    EXPECT_THAT(vecPos, ElementsAre(0xEEEEEEEEu, 0xEEEEEEEEu));
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(RandomDrawTest, ScratchTooLargeForTheAllocatorIsRefused)
{
    std::vector<uint32_t> vecPos;
    EXPECT_EQ(Draw(1, 0x40000000u, &vecPos), 1u);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
}

/* Three of five over many draws with the real generator: every group is chosen sometimes,
 * never twice in one draw, and always within range. */
TEST_F(RandomDrawTest, RealGeneratorSpreadsThreeOfFive)
{
    LoginServiceSetTraceLevel(LOGIN_TRACE_MISS); /* keep the capture small */
    std::vector<uint32_t> vecChosen(5, 0);
    const int iDraws = 2000;
    for (int i = 0; i < iDraws; ++i) {
        std::vector<uint32_t> vecPos;
        ASSERT_EQ(Draw(3, 5, &vecPos), 0u);
        ASSERT_EQ(std::set<uint32_t>(vecPos.begin(), vecPos.end()).size(), 3u) << "a position drawn twice";
        for (uint32_t uiPos : vecPos) {
            ASSERT_LT(uiPos, 5u);
            ++vecChosen[uiPos];
        }
    }
    /* Each group is expected 1200 times (3/5 of the draws); 1000 is more than nine
     * standard deviations away. */
    for (size_t j = 0; j < vecChosen.size(); ++j) {
        EXPECT_GT(vecChosen[j], 1000u) << "group " << j;
    }
}

/* ---- copyAccessGroup -------------------------------------------------------------------- */

class CopyGroupTest : public ModuleTest {
protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        m_pstSites = MakeSites({{"s", 1, 5}, {"two", 1, 2}});
    }
    void TearDown() override
    {
        freeSiteMem(m_pstSites, 2);
        ModuleTest::TearDown();
    }
    static std::vector<std::string> Names(const Group *pstGroups, uint32_t uiCount)
    {
        std::vector<std::string> vecNames;
        for (uint32_t i = 0; i < uiCount; ++i) {
            vecNames.push_back(pstGroups[i].acName);
        }
        return vecNames;
    }
    tagLOGIN_S_SITE *m_pstSites = nullptr;
    Group m_astDst[4]{};
};

TEST_F(CopyGroupTest, ThreeOfFiveAreCopiedInDrawOrderWithTheGivenFlag)
{
    RandomFeed oFeed({7, 2, 9});
    EXPECT_EQ(copyAccessGroup(m_astDst, m_pstSites[0].pstAccessServer, 5, 1), 3u);
    EXPECT_THAT(Names(m_astDst, 4), ElementsAre("s-g2", "s-g4", "s-g0", ""));
    EXPECT_EQ(m_astDst[0].uiIsMainSite, 1u);
    EXPECT_EQ(m_astDst[1].uiIsMainSite, 1u);
    EXPECT_EQ(m_astDst[2].uiIsMainSite, 1u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L2 pos[0]:2", "L2 pos[1]:4", "L2 pos[2]:0"));
}

TEST_F(CopyGroupTest, FlagZeroMarksCopiesAsNotMain)
{
    RandomFeed oFeed({0});
    EXPECT_EQ(copyAccessGroup(m_astDst, m_pstSites[0].pstAccessServer, 5, 0), 3u);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(m_astDst[i].uiIsMainSite, 0u) << i;
    }
}

TEST_F(CopyGroupTest, WholeRecordIsCopied)
{
    Group &stSource = m_pstSites[0].pstAccessServer[3];
    std::strcpy(stSource.stStgGroup.aacMsStgUri[7], "last stg field");
    std::strcpy(stSource.acMaaDrProxyAddr, "last field");
    stSource.uiSrtpActive = 1;
    RandomFeed oFeed({3});
    ASSERT_EQ(copyAccessGroup(m_astDst, m_pstSites[0].pstAccessServer, 5, 1), 3u);
    Group stExpected = stSource;
    stExpected.uiIsMainSite = 1;
    EXPECT_TRUE(SameBytes(m_astDst[0], stExpected));
}

TEST_F(CopyGroupTest, TwoGroupsAreBothCopiedInDrawOrder)
{
    RandomFeed oFeed({1, 0});
    EXPECT_EQ(copyAccessGroup(m_astDst, m_pstSites[1].pstAccessServer, 2, 0), 2u);
    EXPECT_THAT(Names(m_astDst, 3), ElementsAre("two-g1", "two-g0", ""));
}

TEST_F(CopyGroupTest, NoGroupsCopiesNothingAndDrawsNothing)
{
    RandomFeed oFeed({1});
    EXPECT_EQ(copyAccessGroup(m_astDst, m_pstSites[0].pstAccessServer, 0, 1), 0u);
    EXPECT_EQ(oFeed.Drawn(), 0u);
    EXPECT_THAT(Names(m_astDst, 1), ElementsAre(""));
}

TEST_F(CopyGroupTest, NullGroupArrayCountsAsNoGroups)
{
    RandomFeed oFeed({1});
    EXPECT_EQ(copyAccessGroup(m_astDst, nullptr, 4, 1), 0u);
    EXPECT_EQ(oFeed.Drawn(), 0u);
}

TEST_F(CopyGroupTest, FailedDrawCopiesNothing)
{
    KOSA_MemFailAfter(0);
    EXPECT_EQ(copyAccessGroup(m_astDst, m_pstSites[0].pstAccessServer, 5, 1), 0u);
    EXPECT_THAT(Names(m_astDst, 1), ElementsAre(""));
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

} // namespace
