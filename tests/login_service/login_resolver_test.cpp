/*
 * login_resolver_test.cpp - AtriumGetSrvIpListByHost, replaced and real.
 *
 * A recording resolver shows that the installed one gets the call (with its context) and
 * that its answer is passed through; the real resolver is checked on names that need no
 * network: "localhost" and numeric addresses from the hosts file or the text itself, and a
 * name under the reserved ".invalid" domain that never resolves.
 */
#include "login_service_default.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>

#include <string>

namespace {

struct RecordingResolver {
    int iCalls = 0;
    std::string strHost;
    uint32_t uiType = 0;
    uint32_t uiCapacity = 0;
    uint32_t uiAnswer = 0;
};

uint32_t RecordAndAnswer(void *pvCtx, const char *pcHost, uint32_t uiType,
                         tagLOGIN_S_SRV_IP_ENTRY *pstEntries, uint32_t *puiCount)
{
    RecordingResolver *pstRec = static_cast<RecordingResolver *>(pvCtx);
    ++pstRec->iCalls;
    pstRec->strHost = pcHost;
    pstRec->uiType = uiType;
    pstRec->uiCapacity = *puiCount;
    if (pstRec->uiAnswer == 0) {
        pstEntries[0].uiAddr = inet_addr("192.0.2.1");
        pstEntries[1].uiAddr = inet_addr("192.0.2.2");
        *puiCount = 2;
    }
    return pstRec->uiAnswer;
}

uint32_t Ipv4(const char *pcDotted)
{
    return inet_addr(pcDotted);
}

class LoginResolver : public testing::Test {
protected:
    void TearDown() override { LoginServiceSetResolver(nullptr, nullptr); }
};

TEST_F(LoginResolver, InstalledResolverGetsTheCallWithItsContext)
{
    RecordingResolver oRec;
    LoginServiceSetResolver(RecordAndAnswer, &oRec);
    tagLOGIN_S_SRV_IP_ENTRY astEntries[12] = {};
    uint32_t uiCount = 12;

    ASSERT_EQ(AtriumGetSrvIpListByHost("sip.example.com", 2, astEntries, &uiCount), 0u);
    EXPECT_EQ(oRec.iCalls, 1);
    EXPECT_EQ(oRec.strHost, "sip.example.com");
    EXPECT_EQ(oRec.uiType, 2u);
    EXPECT_EQ(oRec.uiCapacity, 12u);
    ASSERT_EQ(uiCount, 2u);
    EXPECT_EQ(astEntries[0].uiAddr, Ipv4("192.0.2.1"));
    EXPECT_EQ(astEntries[1].uiAddr, Ipv4("192.0.2.2"));
}

TEST_F(LoginResolver, InstalledResolversFailureIsPassedThrough)
{
    RecordingResolver oRec;
    oRec.uiAnswer = 77;
    LoginServiceSetResolver(RecordAndAnswer, &oRec);
    tagLOGIN_S_SRV_IP_ENTRY astEntries[4] = {};
    uint32_t uiCount = 4;
    EXPECT_EQ(AtriumGetSrvIpListByHost("h", 1, astEntries, &uiCount), 77u);
}

TEST_F(LoginResolver, NullRestoresSystemResolver)
{
    RecordingResolver oRec;
    LoginServiceSetResolver(RecordAndAnswer, &oRec);
    LoginServiceSetResolver(nullptr, &oRec);
    tagLOGIN_S_SRV_IP_ENTRY astEntries[4] = {};
    uint32_t uiCount = 4;

    ASSERT_EQ(AtriumGetSrvIpListByHost("192.0.2.7", 1, astEntries, &uiCount), 0u);
    EXPECT_EQ(oRec.iCalls, 0);
    ASSERT_EQ(uiCount, 1u);
    EXPECT_EQ(astEntries[0].uiAddr, Ipv4("192.0.2.7"));
}

TEST_F(LoginResolver, LocalhostWithType1GivesLoopback)
{
    tagLOGIN_S_SRV_IP_ENTRY astEntries[12] = {};
    uint32_t uiCount = 12;
    ASSERT_EQ(AtriumGetSrvIpListByHost("localhost", 1, astEntries, &uiCount), 0u);
    ASSERT_GE(uiCount, 1u);
    ASSERT_LE(uiCount, 12u);
    bool bLoopback = false;
    for (uint32_t i = 0; i < uiCount; ++i) {
        bLoopback = bLoopback || astEntries[i].uiAddr == Ipv4("127.0.0.1");
    }
    EXPECT_TRUE(bLoopback);
}

TEST_F(LoginResolver, FillsNoMoreThanTheCapacity)
{
    const uint32_t uiUntouched = 0xDEADBEEFu;
    tagLOGIN_S_SRV_IP_ENTRY astEntries[3] = {{uiUntouched}, {uiUntouched}, {uiUntouched}};
    uint32_t uiCount = 1;
    ASSERT_EQ(AtriumGetSrvIpListByHost("localhost", 1, astEntries, &uiCount), 0u);
    EXPECT_EQ(uiCount, 1u);
    EXPECT_NE(astEntries[0].uiAddr, uiUntouched);
    EXPECT_EQ(astEntries[1].uiAddr, uiUntouched);
    EXPECT_EQ(astEntries[2].uiAddr, uiUntouched);
}

TEST_F(LoginResolver, UnknownNameFailsWithResolverCodeAndKeepsCount)
{
    tagLOGIN_S_SRV_IP_ENTRY astEntries[12] = {};
    uint32_t uiCount = 12;
    const uint32_t uiRet =
        AtriumGetSrvIpListByHost("no-such-host.invalid", 1, astEntries, &uiCount);
    EXPECT_GT(uiRet, LOGIN_RESOLVE_ERR_BASE);
    /* The count is kept as the capacity, so a caller may retry with another type. */
    EXPECT_EQ(uiCount, 12u);
}

TEST_F(LoginResolver, UnknownTypeFailsAndKeepsCount)
{
    tagLOGIN_S_SRV_IP_ENTRY astEntries[4] = {};
    for (uint32_t uiType : {0u, 3u}) {
        uint32_t uiCount = 4;
        EXPECT_EQ(AtriumGetSrvIpListByHost("localhost", uiType, astEntries, &uiCount),
                  LOGIN_RESOLVE_ERR_TYPE);
        EXPECT_EQ(uiCount, 4u);
    }
}

TEST_F(LoginResolver, BadArgumentsFail)
{
    RecordingResolver oRec;
    LoginServiceSetResolver(RecordAndAnswer, &oRec);
    tagLOGIN_S_SRV_IP_ENTRY astEntries[4] = {};
    uint32_t uiCount = 4;
    uint32_t uiNoRoom = 0;

    EXPECT_EQ(AtriumGetSrvIpListByHost(nullptr, 1, astEntries, &uiCount), LOGIN_RESOLVE_ERR_ARG);
    EXPECT_EQ(AtriumGetSrvIpListByHost("", 1, astEntries, &uiCount), LOGIN_RESOLVE_ERR_ARG);
    EXPECT_EQ(AtriumGetSrvIpListByHost("h", 1, nullptr, &uiCount), LOGIN_RESOLVE_ERR_ARG);
    EXPECT_EQ(AtriumGetSrvIpListByHost("h", 1, astEntries, nullptr), LOGIN_RESOLVE_ERR_ARG);
    EXPECT_EQ(AtriumGetSrvIpListByHost("h", 1, astEntries, &uiNoRoom), LOGIN_RESOLVE_ERR_ARG);
    EXPECT_EQ(oRec.iCalls, 0);
}

} // namespace
