/*
 * The tool's commands on their own (atrium_xml_inspect): every sample answer is detected
 * as its kind, parsed with the result code its README names, and once the outcome is gone
 * everything the parser handed over is released (the fixture checks the memory ledger and
 * the live XML documents; three samples take paths on which the module keeps its document
 * on purpose). Detection of cut-short and foreign input, and the routing of traces and
 * dropped values to the thread that parses, are checked here too.
 */
#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include "answers.h"
#include "detect.h"
#include "login_service_default.h"
#include "module_test.h"

using namespace atrium_tool;

namespace {

std::string ReadSample(const std::string &strName)
{
    std::ifstream stFile(std::string(ATRIUM_XML_SAMPLES_DIR) + "/" + strName, std::ios::binary);
    std::ostringstream os;
    os << stFile.rdbuf();
    return os.str();
}

struct Sample {
    const char *pcFile;
    const char *pcKind;
    int64_t iCode;
    uint32_t uiBlocksHeld;    /* module blocks the record holds until it is released */
    uint32_t uiDocumentsKept; /* documents the module keeps on purpose */
};

void PrintTo(const Sample &stSample, std::ostream *pOs)
{
    *pOs << stSample.pcFile;
}

class SampleAnswerTest : public ModuleTest, public ::testing::WithParamInterface<Sample> {};

TEST_P(SampleAnswerTest, IsDetectedParsedAndReleased)
{
    const Sample &stSample = GetParam();
    const std::string strBody = ReadSample(stSample.pcFile);
    ASSERT_FALSE(strBody.empty());
    std::string strWhy;
    const AnswerKind *pstKind = DetectKind(strBody, strWhy);
    ASSERT_NE(pstKind, nullptr) << strWhy;
    EXPECT_STREQ(pstKind->pcName, stSample.pcKind);

    ParseOptions stOptions;
    stOptions.strHost = "sso-sz.corp.example";
    stOptions.uiSeed = 1;
    {
        const std::unique_ptr<ParsedAnswer> pParsed = ParseAnswer(*pstKind, strBody, stOptions);
        ASSERT_TRUE(pParsed->iCode.has_value()) << pParsed->strException;
        EXPECT_EQ(*pParsed->iCode, stSample.iCode);
        EXPECT_EQ(LiveBlocksSinceStart(), stSample.uiBlocksHeld);
    }
    ExpectDocumentsKept(stSample.uiDocumentsKept);
}

INSTANTIATE_TEST_SUITE_P(
    Samples, SampleAnswerTest,
    ::testing::Values(
        Sample{"portal-auth-token.xml", "auth-token", 0, 0, 0},
        Sample{"portal-auth-token-minimal.xml", "auth-token", 0, 0, 0},
        Sample{"portal-auth-token-no-token.xml", "auth-token", 1, 0, 0},
        Sample{"portal-login-two-sites.xml", "portal-login", 0, 4, 0},
        Sample{"portal-login-one-site.xml", "portal-login", 0, 3, 0},
        Sample{"portal-login-server-without-uri.xml", "portal-login", 1, 3, 0},
        Sample{"server-list.xml", "server-list", 0, 3, 0}, Sample{"portal-search.xml", "portal-search", 0, 0, 0},
        Sample{"token-info.xml", "token-info", 0, 0, 0}, Sample{"right-config.xml", "right-config", 0, 0, 1},
        Sample{"right-config-refused.xml", "right-config", 0, 0, 0}, Sample{"conf-login.xml", "conf-login", 0, 0, 0},
        Sample{"conf-login-refused.xml", "conf-login", 0, 0, 0}, Sample{"conf-version.xml", "conf-version", 0, 0, 0},
        Sample{"random-key.xml", "random-key", 0, 0, 0}, Sample{"random-key-error-403.xml", "random-key", 36, 0, 1},
        Sample{"conf-search.xml", "conf-search", 0, 0, 0}, Sample{"guest-sites.xml", "guest-sites", 0, 2, 0},
        Sample{"guest-sip.xml", "guest-sip", 0, 0, 0}, Sample{"guest-sip-error-404.xml", "guest-sip", 34, 0, 1},
        Sample{"guest-conf.xml", "guest-conf", 0, 0, 0}, Sample{"guest-bigparam.xml", "guest-bigparam", 0, 0, 0},
        Sample{"guest-account.xml", "guest-account", 0, 0, 0}, Sample{"nearby-access.xml", "nearby-access", 0, 1, 0},
        Sample{"endpoint-message.xml", "endpoint-message", 0, 0, 0},
        Sample{"endpoint-message-error.xml", "endpoint-message", 0, 0, 0}, Sample{"unicall.json", "unicall", 0, 0, 0},
        Sample{"unicall-error.json", "unicall", 0, 0, 0}, Sample{"linked-phones.json", "linked-phones", 0, 0, 0}));

TEST(DetectKindTest, ACaptureCutShortIsNamedByWhatCameBeforeTheCut)
{
    const std::string strBody = ReadSample("portal-login-two-sites.xml").substr(0, 700);
    std::string strWhy;
    const AnswerKind *pstKind = DetectKind(strBody, strWhy);
    ASSERT_NE(pstKind, nullptr) << strWhy;
    EXPECT_STREQ(pstKind->pcName, "portal-login");
}

TEST(DetectKindTest, ForeignInputIsRefusedWithTheReason)
{
    std::string strWhy;
    EXPECT_EQ(DetectKind("<html><body>502 Bad Gateway</body></html>", strWhy), nullptr);
    EXPECT_EQ(strWhy, "unknown root element <html>");
    EXPECT_EQ(DetectKind("<ConfParam><other/></ConfParam>", strWhy), nullptr);
    EXPECT_EQ(strWhy, "a ConfParam answer without any block the module reads");
    EXPECT_EQ(DetectKind("{\"impuList\": [\"sip:a@x\"]}", strWhy), nullptr);
    EXPECT_EQ(strWhy, "a linked-phone request, not an answer (see the build command)");
    EXPECT_EQ(DetectKind("<?xml version=\"1.0\"?><!-- nothing -->", strWhy), nullptr);
    EXPECT_EQ(strWhy, "XML without a root element");
    EXPECT_EQ(DetectKind("Service Unavailable", strWhy), nullptr);
    EXPECT_EQ(strWhy, "neither XML nor JSON");
}

TEST(DetectKindTest, TheChildrenOfASharedRootDecide)
{
    std::string strWhy;
    EXPECT_STREQ(DetectKind("<UserInfo><LoginToken/><Account/></UserInfo>", strWhy)->pcName, "token-info");
    EXPECT_STREQ(DetectKind("<UserInfo><LoginToken/><servicetp/></UserInfo>", strWhy)->pcName, "portal-login");
    EXPECT_STREQ(DetectKind("<UserInfo><servicetp/></UserInfo>", strWhy)->pcName, "portal-search");
    EXPECT_STREQ(DetectKind("<UserInfo><LoginToken/></UserInfo>", strWhy)->pcName, "auth-token");
    EXPECT_STREQ(DetectKind("<ConfParam><errorCode>1</errorCode></ConfParam>", strWhy)->pcName, "guest-sip");
    EXPECT_STREQ(DetectKind("<sites><site/></sites>", strWhy)->pcName, "guest-sites");
    EXPECT_STREQ(DetectKind("garbage before {\"returnCode\": 3}", strWhy)->pcName, "unicall");
}

TEST(FirstSiteKeyTest, IsTheSsoHostOfTheFirstSiteThatHasOne)
{
    EXPECT_EQ(FirstSiteKey("<servicetp><x/><site/><site><sso_hostname uri=\"b\"/></site>"
                           "<site><sso_hostname uri=\"c\"/></site></servicetp>"),
              "b");
    EXPECT_EQ(FirstSiteKey("not xml"), "");
}

/* Two threads parse at once, each observing its own answer: the process-wide trace sink
 * and the per-thread bounded-routine hook must not mix them up. */
TEST(ObserveTest, EachThreadSeesOnlyWhatItsOwnAnswerCaused)
{
    InstallTraceSink(kNoTrace);
    const std::string strNoToken = ReadSample("portal-auth-token-no-token.xml");
    const std::string strLong = "<UserInfo><LoginToken><AccessToken>t</AccessToken><ExpireIn>1"
                                "</ExpireIn></LoginToken><RealUserAccount>" +
                                std::string(200, 'a') + "</RealUserAccount></UserInfo>";
    const AnswerKind &stKind = *FindAnswerKind("auth-token");
    std::atomic<bool> bMixed{false};
    auto Run = [&](const std::string &strBody, bool bExpectMissing) {
        for (int i = 0; i < 200; ++i) {
            const std::unique_ptr<ParsedAnswer> pParsed = ParseAnswer(stKind, strBody, ParseOptions());
            const Observations &stSeen = pParsed->stSeen;
            const bool bRight =
                bExpectMissing ? stSeen.vecMissing == std::vector<std::string>{"Not Find the AccessToKen"} &&
                                     stSeen.vecDropped.empty()
                               : stSeen.vecMissing.empty() && stSeen.vecDropped.size() == 1 &&
                                     stSeen.vecDropped[0].uiCapacity == 128 && stSeen.vecDropped[0].uiNeeded == 201;
            if (!bRight) {
                bMixed = true;
            }
        }
    };
    std::thread stMissing(Run, std::cref(strNoToken), true);
    std::thread stDropped(Run, std::cref(strLong), false);
    stMissing.join();
    stDropped.join();
    LoginServiceSetTraceSink(nullptr, nullptr);
    EXPECT_FALSE(bMixed);
}

} // namespace
