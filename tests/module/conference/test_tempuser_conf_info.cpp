/*
 * Guest conference parameters: the detailed ConfInfo block, and the large-parameter
 * answer that is either three flat keys or a detailed block handed on. Both report every
 * parse failure as 5.
 */
#include <gmock/gmock.h>

#include <string>

#include "conference_test.h"

using ::testing::ElementsAre;
using namespace conference_test;

namespace {

using TempUser = tagXML_S_TANDEM_TEMPUSER_INFO;

const std::string FULL_CONFINFO = "<ConfInfo><accesscode>88005555</accesscode><confid>4401927</confid>"
                                  "<confpwd>246810</confpwd><chairmanpwd>135790</chairmanpwd>"
                                  "<accessaddress>https://conf.example/access</accessaddress>"
                                  "<mediatype>audio|video</mediatype><user_role>0x2</user_role></ConfInfo>";

const std::string SHORT_FORM = "<access_code>77001111</access_code><conf_id>990011</conf_id>"
                               "<conf_pass>4321</conf_pass>";

void ExpectFullConfInfo(const TempUser &stUser)
{
    EXPECT_STREQ(stUser.acAccessCode, "88005555");
    EXPECT_STREQ(stUser.acConfId, "4401927");
    EXPECT_STREQ(stUser.acConfPwd, "246810");
    EXPECT_STREQ(stUser.acChairmanPwd, "135790");
    EXPECT_STREQ(stUser.acAccessAddress, "https://conf.example/access");
    EXPECT_STREQ(stUser.acMediaType, "audio|video");
    EXPECT_EQ(stUser.uiUserRole, 2u);
}

class TempuserConfInfoTest : public ModuleTest {};

/* ---- detailed block ---------------------------------------------------------------- */

TEST_F(TempuserConfInfoTest, DetailedBlockFillsTheSevenFields)
{
    TempUser stUser{};
    ASSERT_EQ(XmlParseTempuserConfInfo(ConfParam(FULL_CONFINFO).c_str(), &stUser), 0u);
    ExpectFullConfInfo(stUser);
    EXPECT_TRUE(m_traces.Texts().empty());
}

TEST_F(TempuserConfInfoTest, DetailedBlockLeavesTheSipIdentityUntouched)
{
    TempUser stUser = SentinelRecord<TempUser>();
    const TempUser stBefore = stUser;
    ASSERT_EQ(XmlParseTempuserConfInfo(ConfParam(FULL_CONFINFO).c_str(), &stUser), 0u);
    EXPECT_EQ(0, std::memcmp(&stUser, &stBefore, offsetof(TempUser, acAccessCode)));
    EXPECT_EQ(0, std::memcmp(stUser.acAtriumUri, stBefore.acAtriumUri, sizeof(stUser.acAtriumUri)));
}

TEST_F(TempuserConfInfoTest, UserRoleIsConvertedInBaseZero)
{
    for (const auto &stCase : {std::make_pair("0x2", 2u), std::make_pair("3", 3u), std::make_pair("010", 8u),
                               std::make_pair("chair", 0u)}) {
        TempUser stUser{};
        stUser.uiUserRole = 77;
        const std::string strBody =
            ConfParam(std::string("<ConfInfo><user_role>") + stCase.first + "</user_role></ConfInfo>");
        ASSERT_EQ(XmlParseTempuserConfInfo(strBody.c_str(), &stUser), 0u) << stCase.first;
        EXPECT_EQ(stUser.uiUserRole, stCase.second) << stCase.first;
    }
}

TEST_F(TempuserConfInfoTest, EmptyDetailedBlockTracesSevenMissesInOrder)
{
    TempUser stUser = SentinelRecord<TempUser>();
    const TempUser stBefore = stUser;

    ASSERT_EQ(XmlParseTempuserConfInfo(ConfParam("<ConfInfo/>").c_str(), &stUser), 0u);

    EXPECT_TRUE(SameBytes(stUser, stBefore));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(UrlMiss("ConfParam.ConfInfo.accesscode"), "L1 Not Find the accesscode",
                            UrlMiss("ConfParam.ConfInfo.confid"), "L1 Not Find the confid",
                            UrlMiss("ConfParam.ConfInfo.confpwd"), "L1 Not Find the confpwd",
                            UrlMiss("ConfParam.ConfInfo.chairmanpwd"), "L1 Not Find the chairmanpwd",
                            UrlMiss("ConfParam.ConfInfo.accessaddress"), "L1 Not Find the accessaddress",
                            UrlMiss("ConfParam.ConfInfo.mediatype"), "L1 Not Find the mediatype",
                            UrlMiss("ConfParam.ConfInfo.user_role"), "L1 Not Find the user_role"));
    for (const TraceLine &stLine : m_traces.Lines()) {
        EXPECT_EQ(stLine.strFunc, "XmlParseTempuserConfInfo");
    }
}

TEST_F(TempuserConfInfoTest, ConfIdOfFullCapacityIsLeftEmptyAndParsingGoesOn)
{
    TempUser stUser{};
    const std::string strBody =
        ConfParam("<ConfInfo><confid>" + std::string(16, '4') + "</confid><mediatype>audio</mediatype></ConfInfo>");
    ASSERT_EQ(XmlParseTempuserConfInfo(strBody.c_str(), &stUser), 0u);
    EXPECT_STREQ(stUser.acConfId, "");
    EXPECT_STREQ(stUser.acMediaType, "audio");
}

TEST_F(TempuserConfInfoTest, DetailedParserWithNullArgumentsYieldsTwo)
{
    TempUser stUser = SentinelRecord<TempUser>();
    const TempUser stBefore = stUser;
    EXPECT_EQ(XmlParseTempuserConfInfo(nullptr, &stUser), 2u);
    EXPECT_EQ(XmlParseTempuserConfInfo(ConfParam(FULL_CONFINFO).c_str(), nullptr), 2u);
    EXPECT_TRUE(SameBytes(stUser, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 CMS:Conf Login Parse xmlBody pointer empty!",
                                              "L0 CMS:Conf Login Parse xmlBody pointer empty!"));
}

TEST_F(TempuserConfInfoTest, DetailedParserReportsTextThatIsNotXmlAsFive)
{
    for (const char *const *ppcBody = NotXmlBodies(); *ppcBody != nullptr; ++ppcBody) {
        m_traces.Clear();
        const uint32_t uiCode = LibraryParseCode(*ppcBody);
        ASSERT_NE(uiCode, 5u);
        TempUser stUser{};
        EXPECT_EQ(XmlParseTempuserConfInfo(*ppcBody, &stUser), 5u) << *ppcBody;
        EXPECT_THAT(m_traces.Texts(),
                    ElementsAre(At(0, Format("Conf Login KTL_XML_Parse failed errno=[0x%x]!", uiCode))));
    }
}

/* ---- large-parameter answer -------------------------------------------------------- */

TEST_F(TempuserConfInfoTest, ShortFormFillsTheThreeFlatKeys)
{
    TempUser stUser = SentinelRecord<TempUser>();
    const TempUser stBefore = stUser;

    ASSERT_EQ(XmlParseBigParamConfInfo(ConfParam(SHORT_FORM).c_str(), &stUser), 0u);

    EXPECT_STREQ(stUser.acAccessCode, "77001111");
    EXPECT_STREQ(stUser.acConfId, "990011");
    EXPECT_STREQ(stUser.acConfPwd, "4321");
    EXPECT_EQ(0, std::memcmp(stUser.acChairmanPwd, stBefore.acChairmanPwd,
                             sizeof(TempUser) - offsetof(TempUser, acChairmanPwd)));
    EXPECT_TRUE(m_traces.Texts().empty()) << "the ConfInfo lookup is not traced";
}

TEST_F(TempuserConfInfoTest, ShortFormWithoutConfPassTracesOneMiss)
{
    TempUser stUser{};
    std::strcpy(stUser.acConfPwd, "earlier");
    const std::string strBody = ConfParam("<access_code>1</access_code><conf_id>2</conf_id>");

    ASSERT_EQ(XmlParseBigParamConfInfo(strBody.c_str(), &stUser), 0u);

    EXPECT_STREQ(stUser.acConfPwd, "earlier");
    EXPECT_STREQ(stUser.acAccessCode, "1");
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("ConfParam.conf_pass"), "L1 Not Find the confpwd"));
    EXPECT_EQ(m_traces.Lines()[0].strFunc, "XmlParseBigParamConfInfo");
}

TEST_F(TempuserConfInfoTest, EmptyShortFormTracesThreeMisses)
{
    TempUser stUser = SentinelRecord<TempUser>();
    const TempUser stBefore = stUser;
    ASSERT_EQ(XmlParseBigParamConfInfo(ConfParam("").c_str(), &stUser), 0u);
    EXPECT_TRUE(SameBytes(stUser, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("ConfParam.access_code"), "L1 Not Find the accesscode",
                                              UrlMiss("ConfParam.conf_id"), "L1 Not Find the confid",
                                              UrlMiss("ConfParam.conf_pass"), "L1 Not Find the confpwd"));
}

TEST_F(TempuserConfInfoTest, DetailedBlockIsHandedOnAndParsedASecondTime)
{
    TempUser stUser{};
    ASSERT_EQ(XmlParseBigParamConfInfo(ConfParam(FULL_CONFINFO).c_str(), &stUser), 0u);
    ExpectFullConfInfo(stUser);
    EXPECT_TRUE(m_traces.Texts().empty());
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u) << "both documents are released";
}

TEST_F(TempuserConfInfoTest, DetailedBlockWinsOverFlatKeys)
{
    TempUser stUser{};
    const std::string strBody = ConfParam(SHORT_FORM + "<ConfInfo><confid>from-block</confid></ConfInfo>");

    ASSERT_EQ(XmlParseBigParamConfInfo(strBody.c_str(), &stUser), 0u);

    EXPECT_STREQ(stUser.acConfId, "from-block");
    EXPECT_STREQ(stUser.acAccessCode, "") << "the flat access_code is not used";
    EXPECT_STREQ(stUser.acConfPwd, "");
    /* The misses are the detailed parser's own. */
    EXPECT_EQ(m_traces.Count(LOGIN_TRACE_MISS, "Not Find the accesscode"), 1u);
    EXPECT_EQ(m_traces.Lines()[0].strFunc, "XmlParseTempuserConfInfo");
    EXPECT_EQ(m_traces.Lines()[0].strText, UrlMiss("ConfParam.ConfInfo.accesscode").substr(3));
}

TEST_F(TempuserConfInfoTest, LargeParameterParserWithNullArgumentsYieldsTwo)
{
    TempUser stUser = SentinelRecord<TempUser>();
    const TempUser stBefore = stUser;
    EXPECT_EQ(XmlParseBigParamConfInfo(nullptr, &stUser), 2u);
    EXPECT_EQ(XmlParseBigParamConfInfo(ConfParam(SHORT_FORM).c_str(), nullptr), 2u);
    EXPECT_TRUE(SameBytes(stUser, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 Tandem: Conf Login Parse xmlBody pointer empty!",
                                              "L0 Tandem: Conf Login Parse xmlBody pointer empty!"));
}

TEST_F(TempuserConfInfoTest, LargeParameterParserReportsTextThatIsNotXmlAsFive)
{
    for (const char *const *ppcBody = NotXmlBodies(); *ppcBody != nullptr; ++ppcBody) {
        m_traces.Clear();
        const uint32_t uiCode = LibraryParseCode(*ppcBody);
        TempUser stUser{};
        EXPECT_EQ(XmlParseBigParamConfInfo(*ppcBody, &stUser), 5u) << *ppcBody;
        EXPECT_THAT(m_traces.Texts(),
                    ElementsAre(At(0, Format("atrium: Conf Login KTL_XML_Parse failed errno=[0x%x]!", uiCode))));
    }
}

TEST_F(TempuserConfInfoTest, LastParserOfTheSharedFieldsWins)
{
    TempUser stUser{};
    const std::string strSip = ConfParam("<sipinfo><accesscode>sip-code</accesscode><confid>sip-id</confid>"
                                         "<confpwd>sip-pwd</confpwd></sipinfo>");
    ASSERT_EQ(XmlParseTandemTempuserSipInfo(strSip.c_str(), &stUser), 0u);
    ASSERT_EQ(XmlParseBigParamConfInfo(ConfParam("<conf_id>flat-id</conf_id>").c_str(), &stUser), 0u);

    EXPECT_STREQ(stUser.acAccessCode, "sip-code");
    EXPECT_STREQ(stUser.acConfId, "flat-id");
    EXPECT_STREQ(stUser.acConfPwd, "sip-pwd");
}

} // namespace
