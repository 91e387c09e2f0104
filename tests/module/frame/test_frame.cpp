/*
 * The parse frame's shared pieces: the per-key step and the key-table reader.
 */
#include <gmock/gmock.h>

#include <cstring>

#include "atrium_frame.h"
#include "module_test.h"

using ::testing::ElementsAre;

namespace {

struct FrameRecord {
    char acText[8];
    uint32_t uiNumber;
    int32_t iSigned;
    uint32_t bYes;
    uint32_t bZero;
    uint32_t bPresent;
    uint32_t uiDefaulted;
};

constexpr AtriumKey g_astKeys[] = {
    ValueText("r.text", ATRIUM_FIELD(FrameRecord, acText)).TracedMiss("Not Find the text", 1),
    ValueNumber("r.number", ATRIUM_FIELD(FrameRecord, uiNumber)).SayWhenPresent("got number"),
    ValueNumber("r.signed", ATRIUM_FIELD(FrameRecord, iSigned), AtriumStore::StrToInt32)
        .DefaultOnMiss(static_cast<uint32_t>(-1)),
    ValueNumber("r.yes", ATRIUM_FIELD(FrameRecord, bYes), AtriumStore::YesFlag),
    ValueNumber("r.zero", ATRIUM_FIELD(FrameRecord, bZero), AtriumStore::ZeroFlag).DefaultOnMiss(0),
    ValueNumber("r.present", ATRIUM_FIELD(FrameRecord, bPresent), AtriumStore::PresentFlag)
        .TracedMiss("Not Find present", 3)
        .DefaultOnMiss(0),
    ValueNumber("r.must", ATRIUM_FIELD(FrameRecord, uiDefaulted)).Required("Not Find the must", 0),
    ValueNumber("r.after", ATRIUM_FIELD(FrameRecord, uiDefaulted)).DefaultOnMiss(77),
};

class FrameTest : public ModuleTest {
protected:
    uint32_t Read(const std::string &strBody, FrameRecord *pstRecord)
    {
        AtriumDocument stDocument;
        EXPECT_EQ(KTL_XML_Parse(strBody.c_str(), stDocument.RootSlot()), 0u);
        return AtriumReadXmlKeys(stDocument.Root(), g_astKeys, pstRecord, ATRIUM_HERE);
    }
};

TEST_F(FrameTest, PerKeyStepFindsAValue)
{
    _NODE *pstRoot = nullptr;
    ASSERT_EQ(KTL_XML_Parse("<a><b>v</b></a>", &pstRoot), 0u);
    _NODE *pstNode = reinterpret_cast<_NODE *>(1);
    char *pcValue = nullptr;
    EXPECT_EQ(XML_D_GET_NODEVALUE_BYURI(pstRoot, "a.b", &pstNode, &pcValue), 0u);
    ASSERT_NE(pcValue, nullptr);
    EXPECT_STREQ(pcValue, "v");
    EXPECT_NE(pstNode, nullptr);
    EXPECT_TRUE(m_traces.Lines().empty());
    KTL_XML_FreeNode(pstRoot);
}

TEST_F(FrameTest, PerKeyStepTracesALookupMissOnTheCallersLine)
{
    _NODE *pstRoot = nullptr;
    ASSERT_EQ(KTL_XML_Parse("<a><b>v</b></a>", &pstRoot), 0u);
    _NODE *pstNode = nullptr;
    char *pcValue = reinterpret_cast<char *>(1);
    const uint32_t uiLine = __LINE__ + 1;
    const uint32_t uiRet = XML_D_GET_NODEVALUE_BYURI(pstRoot, "a.c", &pstNode, &pcValue);
    EXPECT_EQ(uiRet, KTL_XML_ERR_NOT_FOUND);
    EXPECT_EQ(pstNode, nullptr);
    EXPECT_EQ(pcValue, nullptr);
    std::vector<TraceLine> vecLines = m_traces.Lines();
    ASSERT_EQ(vecLines.size(), 1u);
    EXPECT_EQ(vecLines[0].uiLevel, 1u);
    EXPECT_EQ(vecLines[0].strText, "KTL_XML_GetNodeByUrl a.c failed=0x1002");
    EXPECT_EQ(vecLines[0].strFunc, "TestBody");
    EXPECT_EQ(vecLines[0].uiLine, uiLine);
    EXPECT_EQ(vecLines[0].strFile, "tests/module/frame/test_frame.cpp");
    KTL_XML_FreeNode(pstRoot);
}

TEST_F(FrameTest, PerKeyStepOnAnEmptyElementFindsTheNodeButNoValue)
{
    _NODE *pstRoot = nullptr;
    ASSERT_EQ(KTL_XML_Parse("<a><b/></a>", &pstRoot), 0u);
    _NODE *pstNode = nullptr;
    char *pcValue = nullptr;
    EXPECT_EQ(XML_D_GET_NODEVALUE_BYURI(pstRoot, "a.b", &pstNode, &pcValue), 0u);
    EXPECT_NE(pstNode, nullptr);
    EXPECT_EQ(pcValue, nullptr);
    EXPECT_TRUE(m_traces.Lines().empty());
    KTL_XML_FreeNode(pstRoot);
}

TEST_F(FrameTest, KeyTableStoresEveryConversion)
{
    FrameRecord stRecord{};
    const std::string strBody = "<r><text>abc</text><number>0x20</number><signed>-5</signed><yes>YES</yes>"
                                "<zero>0</zero><present>whatever</present><must>3</must><after>4</after></r>";
    ASSERT_EQ(Read(strBody, &stRecord), 0u);
    EXPECT_STREQ(stRecord.acText, "abc");
    EXPECT_EQ(stRecord.uiNumber, 32u);
    EXPECT_EQ(stRecord.iSigned, -5);
    EXPECT_EQ(stRecord.bYes, 1u);
    EXPECT_EQ(stRecord.bZero, 1u);
    EXPECT_EQ(stRecord.bPresent, 1u);
    EXPECT_EQ(stRecord.uiDefaulted, 4u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L2 got number"));
}

TEST_F(FrameTest, KeyTableMissesTraceAndWriteDefaults)
{
    FrameRecord stRecord{};
    std::strcpy(stRecord.acText, "keep");
    stRecord.bYes = 1;
    stRecord.iSigned = 9;
    stRecord.bZero = 1;
    stRecord.bPresent = 1;
    ASSERT_EQ(Read("<r><must>1</must></r>", &stRecord), 0u);
    EXPECT_STREQ(stRecord.acText, "keep") << "no default for text";
    EXPECT_EQ(stRecord.iSigned, -1);
    EXPECT_EQ(stRecord.bYes, 1u) << "no default: untouched";
    EXPECT_EQ(stRecord.bZero, 0u);
    EXPECT_EQ(stRecord.bPresent, 0u);
    EXPECT_EQ(stRecord.uiDefaulted, 77u);
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("L1 KTL_XML_GetNodeByUrl r.text failed=0x1002", "L1 Not Find the text",
                            "L1 KTL_XML_GetNodeByUrl r.number failed=0x1002",
                            "L1 KTL_XML_GetNodeByUrl r.signed failed=0x1002",
                            "L1 KTL_XML_GetNodeByUrl r.yes failed=0x1002",
                            "L1 KTL_XML_GetNodeByUrl r.zero failed=0x1002",
                            "L1 KTL_XML_GetNodeByUrl r.present failed=0x1002", "L3 Not Find present",
                            "L1 KTL_XML_GetNodeByUrl r.after failed=0x1002"));
}

TEST_F(FrameTest, KeyTableStopsAtAMissingRequiredKey)
{
    FrameRecord stRecord{};
    ASSERT_EQ(Read("<r><text>x</text><after>4</after></r>", &stRecord), 1u);
    EXPECT_STREQ(stRecord.acText, "x");
    EXPECT_EQ(stRecord.uiDefaulted, 0u) << "rows after the required miss are not read";
    EXPECT_EQ(m_traces.Texts().back(), "L0 Not Find the must");
}

TEST_F(FrameTest, KeyTableValueThatDoesNotFitLeavesTheFieldEmpty)
{
    FrameRecord stRecord{};
    std::strcpy(stRecord.acText, "old");
    ASSERT_EQ(Read("<r><text>12345678</text><must>1</must></r>", &stRecord), 0u);
    EXPECT_STREQ(stRecord.acText, "");
    ASSERT_EQ(Read("<r><text>1234567</text><must>1</must></r>", &stRecord), 0u);
    EXPECT_STREQ(stRecord.acText, "1234567");
}

TEST_F(FrameTest, KeyTableInvalidNumbersConvertSilently)
{
    FrameRecord stRecord{};
    stRecord.iSigned = 12;
    ASSERT_EQ(Read("<r><number>abc</number><signed>abc</signed><zero>xyz</zero><must>1</must></r>", &stRecord),
              0u);
    EXPECT_EQ(stRecord.uiNumber, 0u);
    EXPECT_EQ(stRecord.iSigned, 12) << "a failed signed conversion writes nothing";
    EXPECT_EQ(stRecord.bZero, 1u) << "a non-number converts to 0";
}

} // namespace
