/*
 * Guest short-lived account: five optional keys with mixed-case names, each with its own
 * miss message; a parse failure is reported as 5.
 */
#include <gmock/gmock.h>

#include <string>

#include "conference_test.h"

using ::testing::ElementsAre;
using namespace conference_test;

namespace {

using Account = tagXML_S_TEMPUSER_ACCOUNT_INFO;

std::string AccountAnswer(const std::string &strInner)
{
    return "<?xml version=\"1.0\"?><ConfParam><AccountInfo>" + strInner + "</AccountInfo></ConfParam>";
}

class TempuserAccountTest : public ModuleTest {};

TEST_F(TempuserAccountTest, CompleteAccountFillsEveryField)
{
    Account stAccount{};
    const std::string strBody = AccountAnswer(
        "<account>guest_0042</account><password>Tmp#2024</password><pwdType>0x10</pwdType>"
        "<accessURL>https://access1.conf.example</accessURL><secondAccessURL>https://access2.conf.example"
        "</secondAccessURL>");

    ASSERT_EQ(XmlParseTempuserAccountInfo(strBody.c_str(), &stAccount), 0u);

    EXPECT_STREQ(stAccount.acAccount, "guest_0042");
    EXPECT_STREQ(stAccount.acPassword, "Tmp#2024");
    EXPECT_EQ(stAccount.uiPwdType, 16u);
    EXPECT_STREQ(stAccount.acAccessUrl, "https://access1.conf.example");
    EXPECT_STREQ(stAccount.acSecondAccessUrl, "https://access2.conf.example");
    EXPECT_TRUE(m_traces.Texts().empty());
}

TEST_F(TempuserAccountTest, EmptyConfParamTracesFiveMissesAndLeavesTheRecord)
{
    Account stAccount = SentinelRecord<Account>();
    const Account stBefore = stAccount;

    ASSERT_EQ(XmlParseTempuserAccountInfo("<ConfParam/>", &stAccount), 0u);

    EXPECT_TRUE(SameBytes(stAccount, stBefore));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(UrlMiss("ConfParam.AccountInfo.account"), "L1 Not Find the account",
                            UrlMiss("ConfParam.AccountInfo.password"), "L1 Not Find the pwd",
                            UrlMiss("ConfParam.AccountInfo.pwdType"), "L1 Not Find the pwdType",
                            UrlMiss("ConfParam.AccountInfo.accessURL"), "L1 Not Find the accessURL",
                            UrlMiss("ConfParam.AccountInfo.secondAccessURL"), "L1 Not Find the secondAccessURL"));
    for (const TraceLine &stLine : m_traces.Lines()) {
        EXPECT_EQ(stLine.strFunc, "XmlParseTempuserAccountInfo");
    }
}

TEST_F(TempuserAccountTest, PasswordTypeIsConvertedInBaseZero)
{
    for (const auto &stCase : {std::make_pair("0x10", 16u), std::make_pair("010", 8u), std::make_pair("2", 2u),
                               std::make_pair("plain", 0u)}) {
        Account stAccount{};
        stAccount.uiPwdType = 99;
        const std::string strBody = AccountAnswer(std::string("<pwdType>") + stCase.first + "</pwdType>");
        ASSERT_EQ(XmlParseTempuserAccountInfo(strBody.c_str(), &stAccount), 0u) << stCase.first;
        EXPECT_EQ(stAccount.uiPwdType, stCase.second) << stCase.first;
    }
}

TEST_F(TempuserAccountTest, KeysAreMatchedWithTheirExactCase)
{
    Account stAccount = SentinelRecord<Account>();
    const Account stBefore = stAccount;
    const std::string strBody = AccountAnswer("<pwdtype>3</pwdtype><accessurl>a</accessurl>"
                                              "<secondaccessurl>b</secondaccessurl>");

    ASSERT_EQ(XmlParseTempuserAccountInfo(strBody.c_str(), &stAccount), 0u);

    EXPECT_TRUE(SameBytes(stAccount, stBefore));
    EXPECT_EQ(m_traces.Count(LOGIN_TRACE_MISS, "Not Find the pwdType"), 1u);
    EXPECT_EQ(m_traces.Count(LOGIN_TRACE_MISS, "Not Find the accessURL"), 1u);
    EXPECT_EQ(m_traces.Count(LOGIN_TRACE_MISS, "Not Find the secondAccessURL"), 1u);
}

TEST_F(TempuserAccountTest, AccountOfFullCapacityIsLeftEmptyAndParsingGoesOn)
{
    Account stAccount{};
    std::strcpy(stAccount.acAccount, "old");
    const std::string strBody = AccountAnswer("<account>" + std::string(128, 'a') + "</account><password>p</password>");

    ASSERT_EQ(XmlParseTempuserAccountInfo(strBody.c_str(), &stAccount), 0u);

    EXPECT_STREQ(stAccount.acAccount, "");
    EXPECT_STREQ(stAccount.acPassword, "p");
}

TEST_F(TempuserAccountTest, AccountJustBelowCapacityFits)
{
    Account stAccount{};
    const std::string strName(127, 'a');
    ASSERT_EQ(XmlParseTempuserAccountInfo(AccountAnswer("<account>" + strName + "</account>").c_str(), &stAccount), 0u);
    EXPECT_EQ(std::string(stAccount.acAccount), strName);
}

TEST_F(TempuserAccountTest, TextFieldsTakeTwoHundredFiftyFiveCharacters)
{
    Account stAccount{};
    const std::string strFits(255, 'u');
    const std::string strBody = AccountAnswer("<password>" + std::string(256, 'p') + "</password><accessURL>" +
                                              strFits + "</accessURL><secondAccessURL>" + strFits +
                                              "x</secondAccessURL>");
    ASSERT_EQ(XmlParseTempuserAccountInfo(strBody.c_str(), &stAccount), 0u);
    EXPECT_STREQ(stAccount.acPassword, "");
    EXPECT_EQ(std::string(stAccount.acAccessUrl), strFits);
    EXPECT_STREQ(stAccount.acSecondAccessUrl, "");
}

TEST_F(TempuserAccountTest, NullArgumentsYieldTwoWithTheBlankAfterThePrefix)
{
    Account stAccount = SentinelRecord<Account>();
    const Account stBefore = stAccount;
    EXPECT_EQ(XmlParseTempuserAccountInfo(nullptr, &stAccount), 2u);
    EXPECT_EQ(XmlParseTempuserAccountInfo(AccountAnswer("").c_str(), nullptr), 2u);
    EXPECT_TRUE(SameBytes(stAccount, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 CMS: Conf Login Parse xmlBody pointer empty!",
                                              "L0 CMS: Conf Login Parse xmlBody pointer empty!"));
}

TEST_F(TempuserAccountTest, TextThatIsNotXmlYieldsFive)
{
    for (const char *const *ppcBody = NotXmlBodies(); *ppcBody != nullptr; ++ppcBody) {
        m_traces.Clear();
        const uint32_t uiCode = LibraryParseCode(*ppcBody);
        ASSERT_NE(uiCode, 5u);
        Account stAccount = SentinelRecord<Account>();
        const Account stBefore = stAccount;
        EXPECT_EQ(XmlParseTempuserAccountInfo(*ppcBody, &stAccount), 5u) << *ppcBody;
        EXPECT_TRUE(SameBytes(stAccount, stBefore));
        EXPECT_THAT(m_traces.Texts(),
                    ElementsAre(At(0, Format("Conf Login KTL_XML_Parse failed errno=[0x%x]!", uiCode))));
    }
}

} // namespace
