/*
 * Authentication-token answer: the smallest complete parser, end to end through the
 * parse frame (argument check, parse, per-key lookups, bounded copies, traces, release).
 */
#include <gmock/gmock.h>

#include <cstring>
#include <string>

#include "portal_test.h"

using ::testing::ElementsAre;

namespace {

using AuthTokenTest = portal_test::TokenAnswerTest;

TEST_F(AuthTokenTest, FullAnswerFillsEveryField)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser{};
    std::string strBody = Answer(Token("tok-123", "3600") +
                                 "<RealUserAccount>alice@corp.example</RealUserAccount>"
                                 "<FirstLogin>YES</FirstLogin><PWDExpireTime>90</PWDExpireTime>");

    ASSERT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 0u);

    EXPECT_STREQ(stUser.acAccessToken, "tok-123");
    EXPECT_EQ(stUser.uiExpireIn, 3600u);
    EXPECT_STREQ(stUser.acRealUserAccount, "alice@corp.example");
    EXPECT_EQ(stUser.bFirstLogin, 1u);
    EXPECT_EQ(stUser.uiPwdExpireTime, 90u);
    EXPECT_EQ(stUser.uiDeployMode, 3u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L2 get real user account"));
}

TEST_F(AuthTokenTest, BundledSampleParses)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser{};
    std::string strBody = ReadTestFile("../../examples/answers/portal-auth-token.xml");
    ASSERT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 0u);
    EXPECT_STREQ(stUser.acAccessToken, "7f3c9a2e51b44d0e9c1a2b8e6f4d9a17");
    EXPECT_EQ(stUser.uiExpireIn, 3600u);
    EXPECT_EQ(stUser.uiDeployMode, 3u);
}

TEST_F(AuthTokenTest, OnlyTokenAndLifetimeLeavesOptionalFieldsAsGiven)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser = SentinelRecord<tagLOGIN_S_ATRIUM_USER_INFO>();
    tagLOGIN_S_ATRIUM_USER_INFO stBefore = stUser;
    std::string strBody = Answer(Token("abc", "60"));

    ASSERT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 0u);

    EXPECT_STREQ(stUser.acAccessToken, "abc");
    EXPECT_EQ(stUser.uiExpireIn, 60u);
    EXPECT_EQ(stUser.uiDeployMode, 3u);
    EXPECT_EQ(0, std::memcmp(stUser.acRealUserAccount, stBefore.acRealUserAccount,
                             sizeof(stUser.acRealUserAccount)));
    EXPECT_EQ(stUser.bFirstLogin, stBefore.bFirstLogin);
    EXPECT_EQ(stUser.uiPwdExpireTime, stBefore.uiPwdExpireTime);
    /* Optional keys cost only the per-key level-1 traces, no "Not Find" message. */
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(UrlMiss("UserInfo.RealUserAccount"), UrlMiss("UserInfo.FirstLogin"),
                            UrlMiss("UserInfo.PWDExpireTime")));
}

TEST_F(AuthTokenTest, MissTracesNameTheParserAndShareOneLinePerKey)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser{};
    std::string strBody = Answer(Token("abc", "60"));
    ASSERT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 0u);
    std::vector<TraceLine> vecLines = m_traces.Lines();
    ASSERT_EQ(vecLines.size(), 3u);
    for (const TraceLine &stLine : vecLines) {
        EXPECT_EQ(stLine.strFunc, "XmlParseAtriumAuthToken");
        EXPECT_EQ(stLine.strFile, "service/login/src/atrium_xml/portal.cpp");
        EXPECT_GT(stLine.uiLine, 0u);
        EXPECT_EQ(stLine.uiLine, vecLines[0].uiLine);
    }
}

TEST_F(AuthTokenTest, FirstLoginIsSetOnlyByExactYes)
{
    for (const char *pcValue : {"yes", "NO", "Yes", "YES "}) {
        tagLOGIN_S_ATRIUM_USER_INFO stUser{};
        std::string strBody = Answer(Token("t", "1") + "<FirstLogin>" + pcValue + "</FirstLogin>");
        ASSERT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 0u) << pcValue;
        EXPECT_EQ(stUser.bFirstLogin, 0u) << pcValue;
    }
}

TEST_F(AuthTokenTest, FirstLoginIsNeverClearedByOtherValues)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser{};
    stUser.bFirstLogin = 1;
    std::string strBody = Answer(Token("t", "1") + "<FirstLogin>NO</FirstLogin>");
    ASSERT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 0u);
    EXPECT_EQ(stUser.bFirstLogin, 1u);
}

TEST_F(AuthTokenTest, LifetimeIsConvertedInBaseZero)
{
    const struct {
        const char *pcText;
        uint32_t uiExpected;
    } astCases[] = {{"0x10", 16}, {"010", 8}, {"42", 42}, {"abc", 0}, {"12abc", 12}};
    for (const auto &stCase : astCases) {
        tagLOGIN_S_ATRIUM_USER_INFO stUser{};
        std::string strBody = Answer(Token("t", stCase.pcText));
        ASSERT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 0u) << stCase.pcText;
        EXPECT_EQ(stUser.uiExpireIn, stCase.uiExpected) << stCase.pcText;
    }
}

TEST_F(AuthTokenTest, PasswordExpiryIsConvertedInBaseZero)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser{};
    std::string strBody = Answer(Token("t", "1") + "<PWDExpireTime>0x1F</PWDExpireTime>");
    ASSERT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 0u);
    EXPECT_EQ(stUser.uiPwdExpireTime, 31u);
}

TEST_F(AuthTokenTest, MissingTokenFailsWithOneAndLeavesRecordUntouched)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser = SentinelRecord<tagLOGIN_S_ATRIUM_USER_INFO>();
    const tagLOGIN_S_ATRIUM_USER_INFO stBefore = stUser;
    std::string strBody = Answer("<LoginToken><ExpireIn>60</ExpireIn></LoginToken>");

    EXPECT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 1u);

    EXPECT_TRUE(SameBytes(stUser, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("UserInfo.LoginToken.AccessToken"),
                                              "L0 Not Find the AccessToKen"));
}

TEST_F(AuthTokenTest, EmptyTokenElementCountsAsMissing)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser = SentinelRecord<tagLOGIN_S_ATRIUM_USER_INFO>();
    const tagLOGIN_S_ATRIUM_USER_INFO stBefore = stUser;
    for (const char *pcToken : {"<AccessToken></AccessToken>", "<AccessToken/>", "<AccessToken>  \n </AccessToken>"}) {
        m_traces.Clear();
        std::string strBody =
            Answer(std::string("<LoginToken>") + pcToken + "<ExpireIn>60</ExpireIn></LoginToken>");
        EXPECT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 1u) << pcToken;
        EXPECT_TRUE(SameBytes(stUser, stBefore)) << pcToken;
        /* The element exists, so there is no lookup miss: only the required-key message. */
        EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 Not Find the AccessToKen")) << pcToken;
    }
}

TEST_F(AuthTokenTest, MissingLifetimeFailsWithOneAfterTheTokenWasCopied)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser{};
    std::string strBody = Answer("<LoginToken><AccessToken>tok</AccessToken></LoginToken>"
                                 "<RealUserAccount>bob</RealUserAccount>");

    EXPECT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 1u);

    EXPECT_STREQ(stUser.acAccessToken, "tok");
    EXPECT_STREQ(stUser.acRealUserAccount, "") << "keys after the failure are not read";
    EXPECT_EQ(stUser.uiDeployMode, 0u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("UserInfo.LoginToken.ExpireIn"),
                                              "L0 Not Find the ExpireIn"));
}

TEST_F(AuthTokenTest, TokenOfExactlyCapacityMinusOneFits)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser{};
    std::string strToken(255, 'k');
    std::string strBody = Answer(Token(strToken, "1"));
    ASSERT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 0u);
    EXPECT_EQ(std::string(stUser.acAccessToken), strToken);
}

TEST_F(AuthTokenTest, ValueTooLongForItsFieldLeavesItEmptyAndParsingGoesOn)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser{};
    std::strcpy(stUser.acAccessToken, "previous");
    std::string strBody = Answer(Token(std::string(256, 'k'), "77") + "<RealUserAccount>" +
                                 std::string(128, 'u') + "</RealUserAccount><PWDExpireTime>5</PWDExpireTime>");

    ASSERT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 0u);

    EXPECT_STREQ(stUser.acAccessToken, "");
    EXPECT_STREQ(stUser.acRealUserAccount, "");
    EXPECT_EQ(stUser.uiExpireIn, 77u);
    EXPECT_EQ(stUser.uiPwdExpireTime, 5u);
    EXPECT_EQ(stUser.uiDeployMode, 3u);
}

TEST_F(AuthTokenTest, NullBodyYieldsTwoAndTouchesNothing)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser = SentinelRecord<tagLOGIN_S_ATRIUM_USER_INFO>();
    const tagLOGIN_S_ATRIUM_USER_INFO stBefore = stUser;
    EXPECT_EQ(XmlParseAtriumAuthToken(nullptr, &stUser), 2u);
    EXPECT_TRUE(SameBytes(stUser, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 atrium: Conf Login Parse download xmlBody pointer empty!"));
}

TEST_F(AuthTokenTest, NullRecordYieldsTwo)
{
    std::string strBody = Answer(Token("t", "1"));
    EXPECT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), nullptr), 2u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 atrium: Conf Login Parse download xmlBody pointer empty!"));
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
}

TEST_F(AuthTokenTest, TextThatIsNotXmlYieldsTheLibraryCodeUnchanged)
{
    for (const char *pcBody : {"", "not xml at all", "<UserInfo><LoginToken>", "<a></b>"}) {
        m_traces.Clear();
        _NODE *pstRoot = nullptr;
        const uint32_t uiLibraryCode = KTL_XML_Parse(pcBody, &pstRoot);
        ASSERT_NE(uiLibraryCode, 0u) << pcBody;
        tagLOGIN_S_ATRIUM_USER_INFO stUser = SentinelRecord<tagLOGIN_S_ATRIUM_USER_INFO>();
        const tagLOGIN_S_ATRIUM_USER_INFO stBefore = stUser;

        EXPECT_EQ(XmlParseAtriumAuthToken(pcBody, &stUser), uiLibraryCode) << pcBody;

        EXPECT_GT(uiLibraryCode, 255u);
        EXPECT_TRUE(SameBytes(stUser, stBefore)) << pcBody;
        char acExpected[128];
        std::snprintf(acExpected, sizeof(acExpected),
                      "L0 atrium: Conf Login KTL_XML_Parse failed errno=[0x%x]!", uiLibraryCode);
        EXPECT_THAT(m_traces.Texts(), ElementsAre(acExpected)) << pcBody;
    }
}

TEST_F(AuthTokenTest, AnswerWithAnotherRootFailsOnTheToken)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser{};
    std::string strBody = "<Other><LoginToken><AccessToken>t</AccessToken><ExpireIn>1</ExpireIn>"
                          "</LoginToken></Other>";
    EXPECT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 1u);
    EXPECT_STREQ(stUser.acAccessToken, "");
}

TEST_F(AuthTokenTest, PrefixedElementsAreFoundByBareNames)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser{};
    std::string strBody = "<p:UserInfo xmlns:p=\"urn:x\"><p:LoginToken><p:AccessToken>tp</p:AccessToken>"
                          "<p:ExpireIn>9</p:ExpireIn></p:LoginToken></p:UserInfo>";
    ASSERT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 0u);
    EXPECT_STREQ(stUser.acAccessToken, "tp");
    EXPECT_EQ(stUser.uiExpireIn, 9u);
}

TEST_F(AuthTokenTest, EscapedTextIsDecodedAndBytesAreKept)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser{};
    std::string strBody = Answer(Token("a&amp;b&#x41;\xC3\xA9\xFF", "1"));
    ASSERT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), 0u);
    EXPECT_STREQ(stUser.acAccessToken, "a&bA\xC3\xA9\xFF");
}

TEST_F(AuthTokenTest, TextOutsideTheRootIsRefusedWithTheLibraryCode)
{
    const std::string strAnswer = Answer(Token("tok", "60"));
    for (const std::string &strBody : {"HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\n\r\n" + strAnswer,
                                       strAnswer + "\n--boundary--\n", "x" + strAnswer}) {
        m_traces.Clear();
        tagLOGIN_S_ATRIUM_USER_INFO stUser = SentinelRecord<tagLOGIN_S_ATRIUM_USER_INFO>();
        const tagLOGIN_S_ATRIUM_USER_INFO stBefore = stUser;

        EXPECT_EQ(XmlParseAtriumAuthToken(strBody.c_str(), &stUser), KTL_XML_ERR_TEXT_OUTSIDE_ROOT) << strBody;

        EXPECT_TRUE(SameBytes(stUser, stBefore)) << strBody;
        EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 atrium: Conf Login KTL_XML_Parse failed errno=[0x1008]!"));
        EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
        EXPECT_EQ(LiveBlocksSinceStart(), 0u);
    }
}

} // namespace
