/*
 * Guest nearby-access block: the base64 text of ConfParam.nearbyaccess decoded into a new
 * zero-terminated buffer that the caller owns and frees.
 */
#include <gmock/gmock.h>

#include <string>

#include "conference_test.h"
#include "ktl_base64.h"

using ::testing::ElementsAre;
using namespace conference_test;

namespace {

std::string Base64(const std::string &strData)
{
    char *pcText = KTL_BASE64Encode(strData.data(), static_cast<uint32_t>(strData.size()));
    EXPECT_NE(pcText, nullptr);
    std::string strText = pcText != nullptr ? pcText : "";
    KTL_BASE64Free(&pcText);
    return strText;
}

std::string NearbyAnswer(const std::string &strElement)
{
    return "<?xml version=\"1.0\"?><ConfParam><random>r</random>" + strElement + "</ConfParam>";
}

/* Sizes of the ledger's live blocks. */
std::vector<uint32_t> LiveBlockSizes()
{
    std::vector<uint32_t> vecSizes;
    KOSA_MemForEachLive(
        [](void *pvCtx, const void *, uint32_t uiSize, const char *, uint32_t) {
            static_cast<std::vector<uint32_t> *>(pvCtx)->push_back(uiSize);
        },
        &vecSizes);
    return vecSizes;
}

char *const NOT_SET = reinterpret_cast<char *>(0x1);

class ServiceTpFromRandomTest : public ModuleTest {};

TEST_F(ServiceTpFromRandomTest, DecodedBlockIsHandedOverWithATerminatingZero)
{
    std::string strText;
    for (int i = 0; strText.size() < 300; ++i) {
        strText += "<servicetp><site name=\"s" + std::to_string(i) + "\"/></servicetp>";
    }
    strText.resize(300);
    const std::string strBody = NearbyAnswer("<nearbyaccess>" + Base64(strText) + "</nearbyaccess>");
    const std::vector<uint32_t> vecBefore = LiveBlockSizes();
    char *pcServiceTp = nullptr;

    ASSERT_EQ(XmlParseGetServiceTPFromRandom(strBody.c_str(), &pcServiceTp), 0u);

    ASSERT_NE(pcServiceTp, nullptr);
    EXPECT_EQ(std::string(pcServiceTp, 300), strText);
    EXPECT_EQ(pcServiceTp[300], '\0');
    std::vector<uint32_t> vecAfter = LiveBlockSizes();
    ASSERT_EQ(vecAfter.size(), vecBefore.size() + 1);
    EXPECT_EQ(LiveBlocksSinceStart(), 1u);
    EXPECT_THAT(vecAfter, ::testing::Contains(301u));
    EXPECT_TRUE(m_traces.Texts().empty());

    KOSA_MemFreeD(pcServiceTp, __LINE__, __FILE__);
}

TEST_F(ServiceTpFromRandomTest, BinaryBytesAreCopiedAsTheyCome)
{
    const std::string strData("\x00\x01\xFF\x00zz\x80", 7);
    const std::string strBody = NearbyAnswer("<nearbyaccess>" + Base64(strData) + "</nearbyaccess>");
    char *pcServiceTp = nullptr;

    ASSERT_EQ(XmlParseGetServiceTPFromRandom(strBody.c_str(), &pcServiceTp), 0u);

    ASSERT_NE(pcServiceTp, nullptr);
    EXPECT_EQ(std::string(pcServiceTp, 7), strData);
    EXPECT_EQ(pcServiceTp[7], '\0');
    KOSA_MemFreeD(pcServiceTp, __LINE__, __FILE__);
}

TEST_F(ServiceTpFromRandomTest, NullOutPointerYieldsOne)
{
    const std::string strBody = NearbyAnswer("<nearbyaccess>" + Base64("x") + "</nearbyaccess>");
    EXPECT_EQ(XmlParseGetServiceTPFromRandom(strBody.c_str(), nullptr), 1u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 atrium: ppcServiceTp is NULL"));
}

TEST_F(ServiceTpFromRandomTest, NullBodyGoesToTheXmlLibrary)
{
    char *pcServiceTp = NOT_SET;
    EXPECT_EQ(XmlParseGetServiceTPFromRandom(nullptr, &pcServiceTp), KTL_XML_ERR_NULL_ARG);
    EXPECT_EQ(pcServiceTp, NOT_SET);
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(At(0, Format("atrium: KTL_XML_Parse failed errno=[0x%x]!", KTL_XML_ERR_NULL_ARG))));
}

TEST_F(ServiceTpFromRandomTest, TextThatIsNotXmlYieldsTheLibraryCode)
{
    for (const char *const *ppcBody = NotXmlBodies(); *ppcBody != nullptr; ++ppcBody) {
        m_traces.Clear();
        const uint32_t uiCode = LibraryParseCode(*ppcBody);
        char *pcServiceTp = NOT_SET;
        EXPECT_EQ(XmlParseGetServiceTPFromRandom(*ppcBody, &pcServiceTp), uiCode) << *ppcBody;
        EXPECT_GT(uiCode, 255u);
        EXPECT_EQ(pcServiceTp, NOT_SET);
        EXPECT_THAT(m_traces.Texts(), ElementsAre(At(0, Format("atrium: KTL_XML_Parse failed errno=[0x%x]!", uiCode))));
    }
}

TEST_F(ServiceTpFromRandomTest, MissingElementYieldsOne)
{
    char *pcServiceTp = NOT_SET;
    EXPECT_EQ(XmlParseGetServiceTPFromRandom(NearbyAnswer("").c_str(), &pcServiceTp), 1u);
    EXPECT_EQ(pcServiceTp, NOT_SET);
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("ConfParam.nearbyaccess"),
                                              "L0 atrium: can not find ConfParam.nearbyaccess !"));
    for (const TraceLine &stLine : m_traces.Lines()) {
        EXPECT_EQ(stLine.strFunc, "XmlParseGetServiceTPFromRandom");
    }
}

TEST_F(ServiceTpFromRandomTest, TextThatIsNotBase64YieldsOneWithTheDecodersLength)
{
    char *pcDecoded = nullptr;
    const int32_t iLen = KTL_BASE64Decode("not*base64!", 11, &pcDecoded);
    ASSERT_LE(iLen, 0);
    char *pcServiceTp = NOT_SET;

    EXPECT_EQ(XmlParseGetServiceTPFromRandom(NearbyAnswer("<nearbyaccess>not*base64!</nearbyaccess>").c_str(),
                                             &pcServiceTp),
              1u);

    EXPECT_EQ(pcServiceTp, NOT_SET);
    EXPECT_THAT(m_traces.Texts(), ElementsAre(At(0, Format("atrium: KTL_BASE64Decode fail, iLen:%d", iLen))));
}

TEST_F(ServiceTpFromRandomTest, ElementWithoutTextDecodesAsLengthZero)
{
    for (const char *pcElement : {"<nearbyaccess/>", "<nearbyaccess>  </nearbyaccess>"}) {
        m_traces.Clear();
        char *pcServiceTp = NOT_SET;
        EXPECT_EQ(XmlParseGetServiceTPFromRandom(NearbyAnswer(pcElement).c_str(), &pcServiceTp), 1u) << pcElement;
        EXPECT_EQ(pcServiceTp, NOT_SET);
        EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 atrium: KTL_BASE64Decode fail, iLen:0")) << pcElement;
    }
}

TEST_F(ServiceTpFromRandomTest, FailedBufferAllocationHandsOverANullPointer)
{
    const std::string strBody = NearbyAnswer("<nearbyaccess>" + Base64("nearby access block") + "</nearbyaccess>");
    char *pcServiceTp = NOT_SET;
    KOSA_MemFailAfter(0);

    EXPECT_EQ(XmlParseGetServiceTPFromRandom(strBody.c_str(), &pcServiceTp), 1u);

    EXPECT_EQ(pcServiceTp, nullptr);
    EXPECT_EQ(LiveBlocksSinceStart(), 0u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 atrium: KOSA_MemMallocSetNull fail"));
}

TEST_F(ServiceTpFromRandomTest, WrappedBase64IsDecoded)
{
    const std::string strData(120, 'w');
    std::string strText = Base64(strData);
    strText.insert(76, "\n");
    char *pcServiceTp = nullptr;
    ASSERT_EQ(XmlParseGetServiceTPFromRandom(NearbyAnswer("<nearbyaccess>" + strText + "</nearbyaccess>").c_str(),
                                             &pcServiceTp),
              0u);
    ASSERT_NE(pcServiceTp, nullptr);
    EXPECT_EQ(std::string(pcServiceTp), strData);
    KOSA_MemFreeD(pcServiceTp, __LINE__, __FILE__);
}

} // namespace
