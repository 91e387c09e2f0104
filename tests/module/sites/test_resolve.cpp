/*
 * Server address resolution: "host:port" with a domain host becomes the list of the
 * host's addresses through the login service's resolver (scripted here); anything else is
 * copied unchanged.
 */
#include <gmock/gmock.h>

#include <arpa/inet.h>

#include <string>
#include <vector>

#include "sites_test.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class ResolveTest : public ModuleTest {
protected:
    /* Resolves into a 256-byte output that starts as a sentinel. */
    uint32_t Resolve(const std::string &strUri, std::string *pstrOut)
    {
        char acOut[256];
        std::memset(acOut, 'x', sizeof(acOut));
        acOut[sizeof(acOut) - 1] = '\0';
        const uint32_t uiRet = XmlAtriumGetIpFromDomain(acOut, sizeof(acOut), strUri.c_str());
        *pstrOut = acOut;
        return uiRet;
    }
    std::vector<uint32_t> CalledTypes() const
    {
        std::vector<uint32_t> vecTypes;
        for (const FakeResolver::Call &stCall : m_resolver.Calls()) {
            vecTypes.push_back(stCall.uiType);
        }
        return vecTypes;
    }
};

/* A resolver of the test's own, for answers the fake cannot give (a failing call that
 * changes the count, a count above the capacity); installed around one call. */
struct ScriptedCall {
    uint32_t uiCode;
    uint32_t uiCountOut;
    std::vector<std::string> vecAddrs;
};
struct CustomResolver {
    std::vector<ScriptedCall> vecScript;
    std::vector<uint32_t> vecCountIn;
    static uint32_t Resolve(void *pvCtx, const char *, uint32_t, tagLOGIN_S_SRV_IP_ENTRY *pstEntries,
                            uint32_t *puiCount)
    {
        auto *pThis = static_cast<CustomResolver *>(pvCtx);
        const ScriptedCall &stCall = pThis->vecScript[pThis->vecCountIn.size()];
        pThis->vecCountIn.push_back(*puiCount);
        for (size_t i = 0; i < stCall.vecAddrs.size(); ++i) {
            in_addr stAddr{};
            inet_pton(AF_INET, stCall.vecAddrs[i].c_str(), &stAddr);
            pstEntries[i].uiAddr = stAddr.s_addr;
        }
        *puiCount = stCall.uiCountOut;
        return stCall.uiCode;
    }
};

TEST_F(ResolveTest, DomainWithPortBecomesEveryAddressWithThatPort)
{
    m_resolver.Answer("eserver.example.com", 2, 0, {"192.0.2.1", "192.0.2.2"});
    std::string strOut;
    EXPECT_EQ(Resolve("eserver.example.com:8080", &strOut), 0u);
    EXPECT_EQ(strOut, "192.0.2.1:8080;192.0.2.2:8080");
    ASSERT_EQ(m_resolver.Calls().size(), 1u);
    EXPECT_EQ(m_resolver.Calls()[0].strHost, "eserver.example.com");
    EXPECT_EQ(m_resolver.Calls()[0].uiType, 2u);
    EXPECT_EQ(m_resolver.Calls()[0].uiCountIn, 12u);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(ResolveTest, IpLiteralWithPortIsCopiedUnchanged)
{
    std::string strOut;
    EXPECT_EQ(Resolve("192.0.2.7:8080", &strOut), 0u);
    EXPECT_EQ(strOut, "192.0.2.7:8080");
    EXPECT_THAT(m_resolver.Calls(), IsEmpty());
}

TEST_F(ResolveTest, TextWithoutColonIsCopiedUnchangedEvenWhenItIsAHostName)
{
    m_resolver.Answer("eserver.example.com", 2, 0, {"192.0.2.1"});
    std::string strOut;
    EXPECT_EQ(Resolve("eserver.example.com", &strOut), 0u);
    EXPECT_EQ(strOut, "eserver.example.com");
    EXPECT_THAT(m_resolver.Calls(), IsEmpty());
}

TEST_F(ResolveTest, TextStartingWithColonHasNoHostAndIsCopiedUnchanged)
{
    std::string strOut;
    EXPECT_EQ(Resolve(":5060", &strOut), 0u);
    EXPECT_EQ(strOut, ":5060");
    EXPECT_THAT(m_resolver.Calls(), IsEmpty());
}

TEST_F(ResolveTest, HostTooLongForItsBufferIsNotResolved)
{
    const std::string strUri = std::string(256, 'h') + ":80";
    char acOut[512];
    EXPECT_EQ(XmlAtriumGetIpFromDomain(acOut, sizeof(acOut), strUri.c_str()), 0u);
    EXPECT_EQ(std::string(acOut), strUri);
    EXPECT_THAT(m_resolver.Calls(), IsEmpty());
}

/* The longest host name there is (253 characters and the root's dot) is read whole. */
TEST_F(ResolveTest, LongestHostNameIsReadWholeAndResolved)
{
    const std::string strLabel(63, 'h');
    const std::string strHost = strLabel + "." + strLabel + "." + strLabel + "." + std::string(61, 'h') + ".";
    ASSERT_EQ(strHost.size(), 254u);
    m_resolver.Answer(strHost, 2, 0, {"192.0.2.9"});
    std::string strOut;
    EXPECT_EQ(Resolve(strHost + ":80", &strOut), 0u);
    EXPECT_EQ(strOut, "192.0.2.9:80");
    ASSERT_EQ(m_resolver.Calls().size(), 1u);
    EXPECT_EQ(m_resolver.Calls()[0].strHost, strHost);
}

TEST_F(ResolveTest, PortZeroGivesBareAddresses)
{
    m_resolver.Answer("h.example.com", 2, 0, {"192.0.2.1", "192.0.2.2"});
    std::string strOut;
    EXPECT_EQ(Resolve("h.example.com:0", &strOut), 0u);
    EXPECT_EQ(strOut, "192.0.2.1;192.0.2.2");
}

TEST_F(ResolveTest, PortThatIsNotANumberGivesBareAddresses)
{
    m_resolver.Answer("h.example.com", 2, 0, {"192.0.2.1", "192.0.2.2"});
    std::string strOut;
    EXPECT_EQ(Resolve("h.example.com:sip", &strOut), 0u);
    EXPECT_EQ(strOut, "192.0.2.1;192.0.2.2");
}

TEST_F(ResolveTest, SecondTypeIsAskedWhenTheFirstFails)
{
    m_resolver.Answer("h.example.com", 2, 5);
    m_resolver.Answer("h.example.com", 1, 0, {"198.51.100.9"});
    std::string strOut;
    EXPECT_EQ(Resolve("h.example.com:443", &strOut), 0u);
    EXPECT_EQ(strOut, "198.51.100.9:443");
    EXPECT_THAT(CalledTypes(), ElementsAre(2u, 1u));
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(ResolveTest, FirstTypeSucceedingIsTheOnlyCall)
{
    m_resolver.Answer("h.example.com", 2, 0, {"198.51.100.1"});
    m_resolver.Answer("h.example.com", 1, 0, {"198.51.100.2"});
    std::string strOut;
    EXPECT_EQ(Resolve("h.example.com:443", &strOut), 0u);
    EXPECT_EQ(strOut, "198.51.100.1:443");
    EXPECT_THAT(CalledTypes(), ElementsAre(2u));
}

TEST_F(ResolveTest, SecondCallSeesTheCountTheFirstLeft)
{
    CustomResolver stResolver;
    stResolver.vecScript = {{5, 3, {}}, {0, 3, {"192.0.2.1", "192.0.2.2", "192.0.2.3"}}};
    LoginServiceSetResolver(&CustomResolver::Resolve, &stResolver);
    std::string strOut;
    const uint32_t uiRet = Resolve("h.example.com:80", &strOut);
    LoginServiceSetResolver(nullptr, nullptr);

    EXPECT_EQ(uiRet, 0u);
    EXPECT_THAT(stResolver.vecCountIn, ElementsAre(12u, 3u));
    EXPECT_EQ(strOut, "192.0.2.1:80;192.0.2.2:80;192.0.2.3:80");
}

TEST_F(ResolveTest, CountAboveTheAnswerCapacityReadsOnlyTheTwelveEntries)
{
    CustomResolver stResolver;
    std::vector<std::string> vecAddrs;
    for (int i = 1; i <= 12; ++i) {
        vecAddrs.push_back("10.0.0." + std::to_string(i));
    }
    stResolver.vecScript = {{0, 40, vecAddrs}};
    LoginServiceSetResolver(&CustomResolver::Resolve, &stResolver);
    std::string strOut;
    const uint32_t uiRet = Resolve("h.example.com:0", &strOut);
    LoginServiceSetResolver(nullptr, nullptr);

    EXPECT_EQ(uiRet, 0u);
    EXPECT_EQ(strOut, "10.0.0.1;10.0.0.2;10.0.0.3;10.0.0.4;10.0.0.5;10.0.0.6;10.0.0.7;10.0.0.8;10.0.0.9;"
                      "10.0.0.10;10.0.0.11;10.0.0.12");
}

TEST_F(ResolveTest, BothTypesFailingGivesSevenTracesTheHostAndLeavesOutputUntouched)
{
    m_resolver.Answer("h.example.com", 2, 5);
    m_resolver.Answer("h.example.com", 1, 9);
    std::string strOut;
    EXPECT_EQ(Resolve("h.example.com:80", &strOut), 7u);
    EXPECT_EQ(strOut, std::string(255, 'x'));
    EXPECT_THAT(CalledTypes(), ElementsAre(2u, 1u));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 dns err:h.example.com ret:9"));
    ASSERT_EQ(m_traces.Lines().size(), 1u);
    EXPECT_EQ(m_traces.Lines()[0].strFunc, "XmlAtriumGetIpFromDomain");
    EXPECT_EQ(m_traces.Lines()[0].strFile, "service/login/src/atrium_xml/sites.cpp");
}

TEST_F(ResolveTest, SuccessWithoutAddressesLeavesAnEmptyOutput)
{
    m_resolver.Answer("h.example.com", 2, 0, {});
    std::string strOut;
    EXPECT_EQ(Resolve("h.example.com:80", &strOut), 0u);
    EXPECT_EQ(strOut, "");
}

TEST_F(ResolveTest, EntriesOfAddressZeroAreSkippedWithoutASeparator)
{
    m_resolver.Answer("h.example.com", 2, 0, {"0.0.0.0", "192.0.2.1", "0.0.0.0", "192.0.2.2", "0.0.0.0"});
    std::string strOut;
    EXPECT_EQ(Resolve("h.example.com:5060", &strOut), 0u);
    EXPECT_EQ(strOut, "192.0.2.1:5060;192.0.2.2:5060");
}

/* Twelve addresses of 21 characters each ("a.b.c.d:ppppp") with separators need 263
 * characters: the twelfth append overflows the 256-byte output, and the bounded append
 * then leaves it empty. Eleven still fit. */
TEST_F(ResolveTest, TwelveLongAddressesOverflowTheOutputWhichIsThenEmpty)
{
    std::vector<std::string> vecAddrs;
    std::string strEleven;
    for (int i = 101; i <= 112; ++i) {
        vecAddrs.push_back("192.168.100." + std::to_string(i));
        if (i <= 111) {
            strEleven += (strEleven.empty() ? "" : ";") + vecAddrs.back() + ":65535";
        }
    }
    ASSERT_EQ(strEleven.size(), 241u);

    m_resolver.Answer("eleven.example.com", 2, 0, std::vector<std::string>(vecAddrs.begin(), vecAddrs.end() - 1));
    std::string strOut;
    EXPECT_EQ(Resolve("eleven.example.com:65535", &strOut), 0u);
    EXPECT_EQ(strOut, strEleven);

    m_resolver.Answer("twelve.example.com", 2, 0, vecAddrs);
    EXPECT_EQ(Resolve("twelve.example.com:65535", &strOut), 0u);
    EXPECT_EQ(strOut, "");
}

/* In a smaller output the overflow comes earlier, and the join goes on from the empty
 * text: the output then holds the addresses appended after the overflow. */
TEST_F(ResolveTest, AfterAnOverflowTheOutputHoldsTheAddressesAppendedLater)
{
    m_resolver.Answer("h.example.com", 2, 0,
                      {"10.0.0.1", "10.0.0.2", "10.0.0.3", "10.0.0.4", "10.0.0.5", "10.0.0.6"});
    char acOut[64];
    EXPECT_EQ(XmlAtriumGetIpFromDomain(acOut, sizeof(acOut), "h.example.com:5060"), 0u);
    EXPECT_STREQ(acOut, "10.0.0.6:5060");
}

} // namespace
