/*
 * Conference-server version answer: every key required, a miss returns the XML library's
 * own code, a parse failure returns 5.
 */
#include <gmock/gmock.h>

#include <string>

#include "conference_test.h"

using ::testing::ElementsAre;
using namespace conference_test;

namespace {

using VersionRecord = tagXML_S_TANDEM_VERSION_RESULT;

std::string VersionAnswer(const std::string &strResult, const std::string &strVersion)
{
    return "<?xml version=\"1.0\"?><versionResult><result>" + strResult + "</result>" + strVersion +
           "</versionResult>";
}

const std::string COMPLETE_RESULT = "<resultCode>0</resultCode><resultDesc>success</resultDesc>";

class TandemVersionTest : public ModuleTest {
protected:
    static std::string NullTrace(const void *pvBody, const void *pvRecord)
    {
        return At(0, Format("RestConf: ParseVersionXML Param KOS_NULL_PTR! pcXmlBody(%p), pstVersionResult(%p)", pvBody,
                            pvRecord));
    }
};

TEST_F(TandemVersionTest, CompleteAnswerFillsTheThreeFields)
{
    VersionRecord stRecord{};
    const std::string strBody = VersionAnswer(COMPLETE_RESULT, "<versionNumber>V600R019C10</versionNumber>");

    ASSERT_EQ(XmlParseGetTandemVersionResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_EQ(stRecord.uiResultCode, 0u);
    EXPECT_STREQ(stRecord.acResultDesc, "success");
    EXPECT_STREQ(stRecord.acVersionNumber, "V600R019C10");
    EXPECT_TRUE(m_traces.Texts().empty());
}

TEST_F(TandemVersionTest, NullBodyYieldsTwoAndNamesBothPointers)
{
    VersionRecord stRecord = SentinelRecord<VersionRecord>();
    const VersionRecord stBefore = stRecord;
    EXPECT_EQ(XmlParseGetTandemVersionResult(nullptr, &stRecord), 2u);
    EXPECT_TRUE(SameBytes(stRecord, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre(NullTrace(nullptr, &stRecord)));
}

TEST_F(TandemVersionTest, NullRecordYieldsTwoAndNamesBothPointers)
{
    const std::string strBody = VersionAnswer(COMPLETE_RESULT, "<versionNumber>1</versionNumber>");
    EXPECT_EQ(XmlParseGetTandemVersionResult(strBody.c_str(), nullptr), 2u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre(NullTrace(strBody.c_str(), nullptr)));
}

TEST_F(TandemVersionTest, TextThatIsNotXmlYieldsFiveWhateverTheLibrarySaid)
{
    for (const char *const *ppcBody = NotXmlBodies(); *ppcBody != nullptr; ++ppcBody) {
        m_traces.Clear();
        const uint32_t uiCode = LibraryParseCode(*ppcBody);
        ASSERT_NE(uiCode, 5u);
        VersionRecord stRecord = SentinelRecord<VersionRecord>();
        const VersionRecord stBefore = stRecord;

        EXPECT_EQ(XmlParseGetTandemVersionResult(*ppcBody, &stRecord), 5u) << *ppcBody;

        EXPECT_TRUE(SameBytes(stRecord, stBefore));
        EXPECT_THAT(m_traces.Texts(),
                    ElementsAre(At(0, Format("RestConf: ParseVersionXML Parse failed, ulRet[0x%x]!", uiCode))));
    }
}

TEST_F(TandemVersionTest, MissingResultElementYieldsTheLookupCode)
{
    VersionRecord stRecord = SentinelRecord<VersionRecord>();
    const VersionRecord stBefore = stRecord;
    const std::string strBody = "<versionResult><versionNumber>1.0</versionNumber></versionResult>";

    EXPECT_EQ(XmlParseGetTandemVersionResult(strBody.c_str(), &stRecord), KTL_XML_ERR_NOT_FOUND);

    EXPECT_TRUE(SameBytes(stRecord, stBefore));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(At(0, Format("RestConf: ParseVersionXML GetNodeByUrl [versionResult.result] failed, "
                                         "ulRet[0x%x]!",
                                         KTL_XML_ERR_NOT_FOUND))));
}

TEST_F(TandemVersionTest, AnswerWithAnotherRootYieldsTheLookupCode)
{
    VersionRecord stRecord{};
    const std::string strBody = "<version><result><resultCode>0</resultCode></result></version>";
    EXPECT_EQ(XmlParseGetTandemVersionResult(strBody.c_str(), &stRecord), KTL_XML_ERR_NOT_FOUND);
    EXPECT_EQ(m_traces.TextsAt(0).size(), 1u);
}

TEST_F(TandemVersionTest, MissingResultCodeYieldsTheLookupCodeAndWritesNothing)
{
    VersionRecord stRecord = SentinelRecord<VersionRecord>();
    const VersionRecord stBefore = stRecord;
    const std::string strBody =
        VersionAnswer("<resultDesc>success</resultDesc>", "<versionNumber>1.0</versionNumber>");

    EXPECT_EQ(XmlParseGetTandemVersionResult(strBody.c_str(), &stRecord), KTL_XML_ERR_NOT_FOUND);

    EXPECT_TRUE(SameBytes(stRecord, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("versionResult.result.resultCode")));
}

TEST_F(TandemVersionTest, MissingResultDescYieldsTheLookupCodeWithTheCodeWritten)
{
    VersionRecord stRecord = SentinelRecord<VersionRecord>();
    const VersionRecord stBefore = stRecord;
    const std::string strBody = VersionAnswer("<resultCode>0x10</resultCode>", "<versionNumber>1.0</versionNumber>");

    EXPECT_EQ(XmlParseGetTandemVersionResult(strBody.c_str(), &stRecord), KTL_XML_ERR_NOT_FOUND);

    EXPECT_EQ(stRecord.uiResultCode, 16u);
    EXPECT_EQ(0, std::memcmp(stRecord.acResultDesc, stBefore.acResultDesc, sizeof(stRecord.acResultDesc)));
    EXPECT_EQ(0, std::memcmp(stRecord.acVersionNumber, stBefore.acVersionNumber, sizeof(stRecord.acVersionNumber)));
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("versionResult.result.resultDesc")));
}

TEST_F(TandemVersionTest, MissingVersionNumberYieldsTheLookupCodeWithResultFieldsWritten)
{
    VersionRecord stRecord{};
    std::strcpy(stRecord.acVersionNumber, "old");
    const std::string strBody = VersionAnswer(COMPLETE_RESULT, "");

    EXPECT_EQ(XmlParseGetTandemVersionResult(strBody.c_str(), &stRecord), KTL_XML_ERR_NOT_FOUND);

    EXPECT_EQ(stRecord.uiResultCode, 0u);
    EXPECT_STREQ(stRecord.acResultDesc, "success");
    EXPECT_STREQ(stRecord.acVersionNumber, "old");
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("versionResult.versionNumber")));
}

TEST_F(TandemVersionTest, MissTracesNameTheParser)
{
    VersionRecord stRecord{};
    const std::string strBody = VersionAnswer(COMPLETE_RESULT, "");
    EXPECT_EQ(XmlParseGetTandemVersionResult(strBody.c_str(), &stRecord), KTL_XML_ERR_NOT_FOUND);
    ASSERT_EQ(m_traces.Lines().size(), 1u);
    EXPECT_EQ(m_traces.Lines()[0].strFunc, "XmlParseGetTandemVersionResult");
    EXPECT_EQ(m_traces.Lines()[0].strFile, "service/login/src/atrium_xml/conference.cpp");
}

TEST_F(TandemVersionTest, VersionNumberOfFullCapacityIsLeftEmptyAndTheResultIsZero)
{
    VersionRecord stRecord{};
    std::strcpy(stRecord.acVersionNumber, "old");
    const std::string strBody =
        VersionAnswer(COMPLETE_RESULT, "<versionNumber>" + std::string(16, '9') + "</versionNumber>");

    EXPECT_EQ(XmlParseGetTandemVersionResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_STREQ(stRecord.acVersionNumber, "");
    EXPECT_STREQ(stRecord.acResultDesc, "success");
}

TEST_F(TandemVersionTest, VersionNumberJustBelowCapacityFits)
{
    VersionRecord stRecord{};
    const std::string strVersion(15, '9');
    const std::string strBody = VersionAnswer(COMPLETE_RESULT, "<versionNumber>" + strVersion + "</versionNumber>");
    EXPECT_EQ(XmlParseGetTandemVersionResult(strBody.c_str(), &stRecord), 0u);
    EXPECT_EQ(std::string(stRecord.acVersionNumber), strVersion);
}

TEST_F(TandemVersionTest, ResultDescOfFullCapacityIsLeftEmpty)
{
    VersionRecord stRecord{};
    const std::string strBody = VersionAnswer("<resultCode>3</resultCode><resultDesc>" + std::string(128, 'd') +
                                                  "</resultDesc>",
                                              "<versionNumber>2</versionNumber>");
    EXPECT_EQ(XmlParseGetTandemVersionResult(strBody.c_str(), &stRecord), 0u);
    EXPECT_EQ(stRecord.uiResultCode, 3u);
    EXPECT_STREQ(stRecord.acResultDesc, "");
    EXPECT_STREQ(stRecord.acVersionNumber, "2");
}

TEST_F(TandemVersionTest, EmptyElementsPassAndStoreZeroAndEmptyText)
{
    /* The decision rests on the library's codes: an element without text is present. */
    VersionRecord stRecord = SentinelRecord<VersionRecord>();
    const std::string strBody =
        VersionAnswer("<resultCode/><resultDesc></resultDesc>", "<versionNumber> </versionNumber>");

    EXPECT_EQ(XmlParseGetTandemVersionResult(strBody.c_str(), &stRecord), 0u);

    EXPECT_EQ(stRecord.uiResultCode, 0u);
    EXPECT_STREQ(stRecord.acResultDesc, "");
    EXPECT_STREQ(stRecord.acVersionNumber, "");
    EXPECT_TRUE(m_traces.Texts().empty());
}

TEST_F(TandemVersionTest, ResultCodeIsConvertedInBaseZero)
{
    const struct {
        const char *pcText;
        uint32_t uiExpected;
    } astCases[] = {{"0x1F", 31}, {"017", 15}, {"200", 200}, {"n/a", 0}};
    for (const auto &stCase : astCases) {
        VersionRecord stRecord{};
        const std::string strBody = VersionAnswer(std::string("<resultCode>") + stCase.pcText +
                                                      "</resultCode><resultDesc>d</resultDesc>",
                                                  "<versionNumber>1</versionNumber>");
        EXPECT_EQ(XmlParseGetTandemVersionResult(strBody.c_str(), &stRecord), 0u) << stCase.pcText;
        EXPECT_EQ(stRecord.uiResultCode, stCase.uiExpected) << stCase.pcText;
    }
}

} // namespace
