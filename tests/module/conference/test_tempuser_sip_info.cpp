/*
 * Guest SIP identity: the eight sipinfo keys with their own miss messages, and the
 * server's error code, whose presence (not its value) refuses the guest on a path that
 * keeps the document.
 */
#include <gmock/gmock.h>

#include <string>

#include "conference_test.h"

using ::testing::ElementsAre;
using namespace conference_test;

namespace {

using TempUser = tagXML_S_TANDEM_TEMPUSER_INFO;

const std::string FULL_SIPINFO = "<sipinfo><impu>sip:guest-17@conf.example</impu><impi>guest-17</impi>"
                                 "<pwdtype>0</pwdtype><passwd>g-Secret</passwd><domain>conf.example</domain>"
                                 "<accesscode>88001234</accesscode><confid>7265551</confid>"
                                 "<confpwd>112233</confpwd></sipinfo>";

class TempuserSipInfoTest : public ModuleTest {};

TEST_F(TempuserSipInfoTest, CompleteIdentityFillsTheEightFields)
{
    TempUser stUser{};
    const std::string strBody = ConfParam(FULL_SIPINFO);

    ASSERT_EQ(XmlParseTandemTempuserSipInfo(strBody.c_str(), &stUser), 0u);

    EXPECT_STREQ(stUser.acImpu, "sip:guest-17@conf.example");
    EXPECT_STREQ(stUser.acImpi, "guest-17");
    EXPECT_EQ(stUser.bPwdTypeZero, 1u);
    EXPECT_STREQ(stUser.acPasswd, "g-Secret");
    EXPECT_STREQ(stUser.acDomain, "conf.example");
    EXPECT_STREQ(stUser.acAccessCode, "88001234");
    EXPECT_STREQ(stUser.acConfId, "7265551");
    EXPECT_STREQ(stUser.acConfPwd, "112233");
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("ConfParam.errorCode")));
}

TEST_F(TempuserSipInfoTest, IdentityLeavesTheOtherFieldsUntouched)
{
    TempUser stUser = SentinelRecord<TempUser>();
    const TempUser stBefore = stUser;
    ASSERT_EQ(XmlParseTandemTempuserSipInfo(ConfParam(FULL_SIPINFO).c_str(), &stUser), 0u);
    EXPECT_EQ(0, std::memcmp(stUser.acAtriumUri, stBefore.acAtriumUri,
                             sizeof(TempUser) - offsetof(TempUser, acAtriumUri)));
}

TEST_F(TempuserSipInfoTest, ErrorCodeZeroRefusesEvenWithACompleteIdentity)
{
    TempUser stUser = SentinelRecord<TempUser>();
    const TempUser stBefore = stUser;
    const std::string strBody = ConfParam("<errorCode>0</errorCode>" + FULL_SIPINFO);
    ExpectDocumentsKept(1);

    EXPECT_EQ(XmlParseTandemTempuserSipInfo(strBody.c_str(), &stUser), 11u);

    EXPECT_TRUE(SameBytes(stUser, stBefore));
    EXPECT_EQ(LiveDocumentsSinceStart(), 1u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L1 Find errorcode(0),get tempuser fail"));
}

TEST_F(TempuserSipInfoTest, ErrorCode404YieldsThirtyFourAndKeepsTheDocument)
{
    TempUser stUser = SentinelRecord<TempUser>();
    const TempUser stBefore = stUser;
    ExpectDocumentsKept(1);

    EXPECT_EQ(XmlParseTandemTempuserSipInfo(ConfParam("<errorCode>404</errorCode>").c_str(), &stUser), 34u);

    EXPECT_TRUE(SameBytes(stUser, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L1 Find errorcode(404),get tempuser fail"));
    EXPECT_EQ(m_traces.Lines()[0].strFunc, "XmlParseTandemTempuserSipInfo");
}

TEST_F(TempuserSipInfoTest, ErrorCode404InHexadecimalYieldsThirtyFour)
{
    TempUser stUser{};
    ExpectDocumentsKept(1);
    EXPECT_EQ(XmlParseTandemTempuserSipInfo(ConfParam("<errorCode>0x194</errorCode>").c_str(), &stUser), 34u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L1 Find errorcode(404),get tempuser fail"));
}

TEST_F(TempuserSipInfoTest, OtherErrorCodesYieldEleven)
{
    for (const char *pcCode : {"500", "401", "11028", "abc"}) {
        m_traces.Clear();
        TempUser stUser{};
        ExpectDocumentsKept(1);
        const std::string strBody = ConfParam(std::string("<errorCode>") + pcCode + "</errorCode>" + FULL_SIPINFO);
        EXPECT_EQ(XmlParseTandemTempuserSipInfo(strBody.c_str(), &stUser), 11u) << pcCode;
        EXPECT_STREQ(stUser.acImpu, "") << pcCode;
        EXPECT_THAT(m_traces.Texts(),
                    ElementsAre(At(1, Format("Find errorcode(%u),get tempuser fail",
                                             KOSA_Strtoul(pcCode, nullptr, 0)))));
    }
}

TEST_F(TempuserSipInfoTest, EmptyErrorCodeElementIsNotAnError)
{
    TempUser stUser{};
    const std::string strBody = ConfParam("<errorCode/>" + FULL_SIPINFO);
    ASSERT_EQ(XmlParseTandemTempuserSipInfo(strBody.c_str(), &stUser), 0u);
    EXPECT_STREQ(stUser.acImpi, "guest-17");
    EXPECT_TRUE(m_traces.Texts().empty());
}

TEST_F(TempuserSipInfoTest, PasswordTypeZeroSetsTheFlag)
{
    TempUser stUser{};
    const std::string strBody = ConfParam("<sipinfo><pwdtype>0</pwdtype></sipinfo>");
    ASSERT_EQ(XmlParseTandemTempuserSipInfo(strBody.c_str(), &stUser), 0u);
    EXPECT_EQ(stUser.bPwdTypeZero, 1u);
}

TEST_F(TempuserSipInfoTest, OtherPasswordTypesClearTheFlag)
{
    for (const char *pcType : {"1", "2", "0x1", "010"}) {
        TempUser stUser{};
        stUser.bPwdTypeZero = 1;
        const std::string strBody = ConfParam(std::string("<sipinfo><pwdtype>") + pcType + "</pwdtype></sipinfo>");
        ASSERT_EQ(XmlParseTandemTempuserSipInfo(strBody.c_str(), &stUser), 0u) << pcType;
        EXPECT_EQ(stUser.bPwdTypeZero, 0u) << pcType;
    }
}

TEST_F(TempuserSipInfoTest, MissingPasswordTypeClearsTheFlag)
{
    TempUser stUser{};
    stUser.bPwdTypeZero = 1;
    const std::string strBody = ConfParam("<sipinfo><impu>u</impu></sipinfo>");
    ASSERT_EQ(XmlParseTandemTempuserSipInfo(strBody.c_str(), &stUser), 0u);
    EXPECT_EQ(stUser.bPwdTypeZero, 0u);
    EXPECT_EQ(m_traces.Count(LOGIN_TRACE_MISS, "Not Find the pwdtype"), 1u);
}

TEST_F(TempuserSipInfoTest, ConfIdOfFullCapacityIsLeftEmptyAndParsingGoesOn)
{
    TempUser stUser{};
    std::strcpy(stUser.acConfId, "old");
    const std::string strBody =
        ConfParam("<sipinfo><confid>" + std::string(16, '7') + "</confid><confpwd>pw</confpwd></sipinfo>");
    ASSERT_EQ(XmlParseTandemTempuserSipInfo(strBody.c_str(), &stUser), 0u);
    EXPECT_STREQ(stUser.acConfId, "");
    EXPECT_STREQ(stUser.acConfPwd, "pw");
}

TEST_F(TempuserSipInfoTest, ConfIdJustBelowCapacityFits)
{
    TempUser stUser{};
    const std::string strConfId(15, '7');
    const std::string strBody = ConfParam("<sipinfo><confid>" + strConfId + "</confid></sipinfo>");
    ASSERT_EQ(XmlParseTandemTempuserSipInfo(strBody.c_str(), &stUser), 0u);
    EXPECT_EQ(std::string(stUser.acConfId), strConfId);
}

TEST_F(TempuserSipInfoTest, FieldCapacitiesAreThoseOfTheRecord)
{
    TempUser stUser{};
    const std::string strBody =
        ConfParam("<sipinfo><impu>" + std::string(127, 'u') + "</impu><impi>" + std::string(128, 'i') +
                  "</impi><passwd>" + std::string(128, 'p') + "</passwd><domain>" + std::string(255, 'd') +
                  "</domain><accesscode>" + std::string(128, 'a') + "</accesscode><confpwd>" + std::string(255, 'c') +
                  "</confpwd></sipinfo>");
    ASSERT_EQ(XmlParseTandemTempuserSipInfo(strBody.c_str(), &stUser), 0u);
    EXPECT_EQ(std::string(stUser.acImpu), std::string(127, 'u'));
    EXPECT_STREQ(stUser.acImpi, "");
    EXPECT_STREQ(stUser.acPasswd, "");
    EXPECT_EQ(std::string(stUser.acDomain), std::string(255, 'd'));
    EXPECT_STREQ(stUser.acAccessCode, "");
    EXPECT_EQ(std::string(stUser.acConfPwd), std::string(255, 'c'));
}

TEST_F(TempuserSipInfoTest, EmptyConfParamTracesEightMissesAndClearsOnlyTheFlag)
{
    TempUser stUser = SentinelRecord<TempUser>();
    const TempUser stBefore = stUser;

    ASSERT_EQ(XmlParseTandemTempuserSipInfo(ConfParam("").c_str(), &stUser), 0u);

    TempUser stExpected = stBefore;
    stExpected.bPwdTypeZero = 0;
    EXPECT_TRUE(SameBytes(stUser, stExpected));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(UrlMiss("ConfParam.errorCode"), UrlMiss("ConfParam.sipinfo.impu"),
                            "L1 Not Find the sip impu",
                            UrlMiss("ConfParam.sipinfo.impi"), "L1 Not Find the sip impi",
                            UrlMiss("ConfParam.sipinfo.pwdtype"), "L1 Not Find the pwdtype",
                            UrlMiss("ConfParam.sipinfo.passwd"), "L1 Not Find the sip passwd",
                            UrlMiss("ConfParam.sipinfo.domain"), "L1 Not Find the sip account",
                            UrlMiss("ConfParam.sipinfo.accesscode"), "L1 Not Find the sip accesscode",
                            UrlMiss("ConfParam.sipinfo.confid"), "L1 Not Find the sip confid",
                            UrlMiss("ConfParam.sipinfo.confpwd"), "L1 Not Find the sip confpwd"));
    for (const TraceLine &stLine : m_traces.Lines()) {
        EXPECT_EQ(stLine.strFunc, "XmlParseTandemTempuserSipInfo");
    }
}

TEST_F(TempuserSipInfoTest, EmptyElementsCountAsMissing)
{
    TempUser stUser{};
    std::strcpy(stUser.acDomain, "kept");
    const std::string strBody = ConfParam("<sipinfo><impu>u</impu><impi/><pwdtype/><passwd/><domain></domain>"
                                          "<accesscode/><confid/><confpwd/></sipinfo>");
    ASSERT_EQ(XmlParseTandemTempuserSipInfo(strBody.c_str(), &stUser), 0u);
    EXPECT_STREQ(stUser.acDomain, "kept");
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(UrlMiss("ConfParam.errorCode"), "L1 Not Find the sip impi", "L1 Not Find the pwdtype",
                            "L1 Not Find the sip passwd", "L1 Not Find the sip account",
                            "L1 Not Find the sip accesscode", "L1 Not Find the sip confid",
                            "L1 Not Find the sip confpwd"));
}

TEST_F(TempuserSipInfoTest, NullBodyYieldsTwo)
{
    TempUser stUser = SentinelRecord<TempUser>();
    const TempUser stBefore = stUser;
    EXPECT_EQ(XmlParseTandemTempuserSipInfo(nullptr, &stUser), 2u);
    EXPECT_TRUE(SameBytes(stUser, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 Tandem: Conf Login Parse xmlBody pointer empty!"));
}

TEST_F(TempuserSipInfoTest, NullRecordYieldsTwo)
{
    EXPECT_EQ(XmlParseTandemTempuserSipInfo(ConfParam(FULL_SIPINFO).c_str(), nullptr), 2u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 Tandem: Conf Login Parse xmlBody pointer empty!"));
}

TEST_F(TempuserSipInfoTest, TextThatIsNotXmlYieldsTheLibraryCodeWithThePortalPrefix)
{
    for (const char *const *ppcBody = NotXmlBodies(); *ppcBody != nullptr; ++ppcBody) {
        m_traces.Clear();
        const uint32_t uiCode = LibraryParseCode(*ppcBody);
        TempUser stUser = SentinelRecord<TempUser>();
        const TempUser stBefore = stUser;
        EXPECT_EQ(XmlParseTandemTempuserSipInfo(*ppcBody, &stUser), uiCode) << *ppcBody;
        EXPECT_GT(uiCode, 255u);
        EXPECT_TRUE(SameBytes(stUser, stBefore));
        EXPECT_THAT(m_traces.Texts(),
                    ElementsAre(At(0, Format("atrium: Conf Login KTL_XML_Parse failed errno=[0x%x]!", uiCode))));
    }
}

} // namespace
