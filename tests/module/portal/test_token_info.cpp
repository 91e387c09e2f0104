/*
 * Token-information answer: its own messages, the checked token copy, and the two paths
 * (token or lifetime missing) that return the last library code and keep the document.
 */
#include <gmock/gmock.h>

#include <string>

#include "portal_test.h"
#include "qev_bounded.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace portal_test;

namespace {

using TokenInfoTest = portal_test::TokenAnswerTest;

TEST_F(TokenInfoTest, FullAnswerFillsEveryField)
{
    tagLOGIN_S_ATRIUM_TOKEN_INFO stInfo{};
    std::string strBody = Answer(Token("tok-9f2", "7200") + "<Account>carol@corp.example</Account><PWD>s3cret</PWD>");

    ASSERT_EQ(XmlParseAtriumTokenInfo(strBody.c_str(), &stInfo), 0u);

    EXPECT_STREQ(stInfo.acAccessToken, "tok-9f2");
    EXPECT_EQ(stInfo.iExpireIn, 7200);
    EXPECT_STREQ(stInfo.acAccount, "carol@corp.example");
    EXPECT_STREQ(stInfo.acPassword, "s3cret");
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(TokenInfoTest, NegativeLifetimeIsConvertedSigned)
{
    tagLOGIN_S_ATRIUM_TOKEN_INFO stInfo{};
    ASSERT_EQ(XmlParseAtriumTokenInfo(Answer(Token("t", "-5")).c_str(), &stInfo), 0u);
    EXPECT_EQ(stInfo.iExpireIn, -5);
}

TEST_F(TokenInfoTest, LifetimeThatIsNotANumberLeavesTheFieldAndStillSucceeds)
{
    tagLOGIN_S_ATRIUM_TOKEN_INFO stInfo{};
    stInfo.iExpireIn = 11;
    ASSERT_EQ(XmlParseAtriumTokenInfo(Answer(Token("t", "abc")).c_str(), &stInfo), 0u);
    EXPECT_EQ(stInfo.iExpireIn, 11);
    EXPECT_STREQ(stInfo.acAccessToken, "t");
}

TEST_F(TokenInfoTest, MissingAccountAndPasswordLeaveTheFieldsAsGiven)
{
    tagLOGIN_S_ATRIUM_TOKEN_INFO stInfo = SentinelRecord<tagLOGIN_S_ATRIUM_TOKEN_INFO>();
    const tagLOGIN_S_ATRIUM_TOKEN_INFO stBefore = stInfo;

    ASSERT_EQ(XmlParseAtriumTokenInfo(Answer(Token("t", "1")).c_str(), &stInfo), 0u);

    EXPECT_EQ(0, std::memcmp(stInfo.acAccount, stBefore.acAccount, sizeof(stInfo.acAccount)));
    EXPECT_EQ(0, std::memcmp(stInfo.acPassword, stBefore.acPassword, sizeof(stInfo.acPassword)));
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("UserInfo.Account"), UrlMiss("UserInfo.PWD")));
}

TEST_F(TokenInfoTest, AccountTooLongIsLeftEmptyAndTheParseSucceeds)
{
    tagLOGIN_S_ATRIUM_TOKEN_INFO stInfo{};
    std::strcpy(stInfo.acAccount, "before");
    std::string strBody = Answer(Token("t", "1") + "<Account>" + std::string(128, 'a') + "</Account><PWD>" +
                                 std::string(127, 'p') + "</PWD>");

    ASSERT_EQ(XmlParseAtriumTokenInfo(strBody.c_str(), &stInfo), 0u);

    EXPECT_STREQ(stInfo.acAccount, "");
    EXPECT_EQ(std::string(stInfo.acPassword), std::string(127, 'p'));
}

TEST_F(TokenInfoTest, TokenTooLongFailsWithTheCopyCodeAndReleasesTheDocument)
{
    tagLOGIN_S_ATRIUM_TOKEN_INFO stInfo{};
    std::string strBody = Answer(Token(std::string(256, 'k'), "60") + "<Account>acc</Account>");

    EXPECT_EQ(XmlParseAtriumTokenInfo(strBody.c_str(), &stInfo), static_cast<uint32_t>(QEV_ERANGE));

    EXPECT_STREQ(stInfo.acAccessToken, "");
    EXPECT_EQ(stInfo.iExpireIn, 0) << "nothing after the token is read";
    EXPECT_STREQ(stInfo.acAccount, "");
    EXPECT_THAT(m_traces.Texts(), ElementsAre(Format("L0 qev_strncpy_s failed : %u !!", QEV_ERANGE)));
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
}

TEST_F(TokenInfoTest, TokenOfExactlyCapacityMinusOneFits)
{
    tagLOGIN_S_ATRIUM_TOKEN_INFO stInfo{};
    ASSERT_EQ(XmlParseAtriumTokenInfo(Answer(Token(std::string(255, 'k'), "60")).c_str(), &stInfo), 0u);
    EXPECT_EQ(std::string(stInfo.acAccessToken), std::string(255, 'k'));
}

TEST_F(TokenInfoTest, MissingTokenReturnsTheLookupCodeAndKeepsTheDocument)
{
    ExpectDocumentsKept(1);
    tagLOGIN_S_ATRIUM_TOKEN_INFO stInfo = SentinelRecord<tagLOGIN_S_ATRIUM_TOKEN_INFO>();
    const tagLOGIN_S_ATRIUM_TOKEN_INFO stBefore = stInfo;

    EXPECT_EQ(XmlParseAtriumTokenInfo(Answer("<LoginToken><ExpireIn>60</ExpireIn></LoginToken>").c_str(), &stInfo),
              KTL_XML_ERR_NOT_FOUND);

    EXPECT_TRUE(SameBytes(stInfo, stBefore));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(UrlMiss("UserInfo.LoginToken.AccessToken"),
                            "L0 XML_D_GET_NODEVALUE_BYURI failed : UserInfo.LoginToken.AccessToken !!"));
    EXPECT_EQ(LiveDocumentsSinceStart(), 1u);
}

TEST_F(TokenInfoTest, EmptyTokenReturnsZeroWithNothingFilledAndKeepsTheDocument)
{
    ExpectDocumentsKept(1);
    tagLOGIN_S_ATRIUM_TOKEN_INFO stInfo = SentinelRecord<tagLOGIN_S_ATRIUM_TOKEN_INFO>();
    const tagLOGIN_S_ATRIUM_TOKEN_INFO stBefore = stInfo;

    EXPECT_EQ(XmlParseAtriumTokenInfo(Answer(Token("", "60") + "<Account>a</Account>").c_str(), &stInfo), 0u);

    EXPECT_TRUE(SameBytes(stInfo, stBefore));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("L0 XML_D_GET_NODEVALUE_BYURI failed : UserInfo.LoginToken.AccessToken !!"));
}

TEST_F(TokenInfoTest, MissingLifetimeReturnsTheLookupCodeAfterTheTokenAndKeepsTheDocument)
{
    ExpectDocumentsKept(1);
    tagLOGIN_S_ATRIUM_TOKEN_INFO stInfo{};
    stInfo.iExpireIn = 3;
    std::string strBody = Answer("<LoginToken><AccessToken>tok</AccessToken></LoginToken><Account>a</Account>");

    EXPECT_EQ(XmlParseAtriumTokenInfo(strBody.c_str(), &stInfo), KTL_XML_ERR_NOT_FOUND);

    EXPECT_STREQ(stInfo.acAccessToken, "tok");
    EXPECT_EQ(stInfo.iExpireIn, 3);
    EXPECT_STREQ(stInfo.acAccount, "");
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("UserInfo.LoginToken.ExpireIn"),
                                              "L0 Parse XMLBody failed : UserInfo.LoginToken.ExpireIn !!"));
}

TEST_F(TokenInfoTest, EmptyLifetimeReturnsZeroAndKeepsTheDocument)
{
    ExpectDocumentsKept(1);
    tagLOGIN_S_ATRIUM_TOKEN_INFO stInfo{};
    EXPECT_EQ(XmlParseAtriumTokenInfo(Answer(Token("tok", "")).c_str(), &stInfo), 0u);
    EXPECT_STREQ(stInfo.acAccessToken, "tok");
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 Parse XMLBody failed : UserInfo.LoginToken.ExpireIn !!"));
}

TEST_F(TokenInfoTest, NullArgumentsReturnTwoWithoutATrace)
{
    tagLOGIN_S_ATRIUM_TOKEN_INFO stInfo = SentinelRecord<tagLOGIN_S_ATRIUM_TOKEN_INFO>();
    const tagLOGIN_S_ATRIUM_TOKEN_INFO stBefore = stInfo;

    EXPECT_EQ(XmlParseAtriumTokenInfo(nullptr, &stInfo), 2u);
    EXPECT_EQ(XmlParseAtriumTokenInfo(Answer(Token("t", "1")).c_str(), nullptr), 2u);

    EXPECT_TRUE(SameBytes(stInfo, stBefore));
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(TokenInfoTest, TextThatIsNotXmlYieldsTheLibraryCodeWithItsOwnMessage)
{
    for (const char *pcBody : {"", "<UserInfo><LoginToken>", "token"}) {
        m_traces.Clear();
        const uint32_t uiLibraryCode = LibraryParseCode(pcBody);
        ASSERT_GT(uiLibraryCode, 255u) << pcBody;
        tagLOGIN_S_ATRIUM_TOKEN_INFO stInfo = SentinelRecord<tagLOGIN_S_ATRIUM_TOKEN_INFO>();
        const tagLOGIN_S_ATRIUM_TOKEN_INFO stBefore = stInfo;

        EXPECT_EQ(XmlParseAtriumTokenInfo(pcBody, &stInfo), uiLibraryCode) << pcBody;

        EXPECT_TRUE(SameBytes(stInfo, stBefore)) << pcBody;
        EXPECT_THAT(m_traces.Texts(), ElementsAre(Format("L0 Parse XMLBody failed : %u !!", uiLibraryCode)))
            << pcBody;
    }
}

TEST_F(TokenInfoTest, TracesNameTheParser)
{
    ExpectDocumentsKept(1);
    tagLOGIN_S_ATRIUM_TOKEN_INFO stInfo{};
    ASSERT_EQ(XmlParseAtriumTokenInfo(Answer("").c_str(), &stInfo), KTL_XML_ERR_NOT_FOUND);
    std::vector<TraceLine> vecLines = m_traces.Lines();
    ASSERT_EQ(vecLines.size(), 2u);
    for (const TraceLine &stLine : vecLines) {
        EXPECT_EQ(stLine.strFunc, "XmlParseAtriumTokenInfo");
        EXPECT_EQ(stLine.strFile, "service/login/src/atrium_xml/portal.cpp");
    }
}

} // namespace
