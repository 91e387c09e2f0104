/*
 * Hostile documents against the XML document library itself: what a network peer can put in
 * an answer to exhaust the stack, the memory or the file system of the phone. Every case
 * must end with the library's own code for malformed text, or with a document that reads as
 * the library's header says, and every document is released.
 */
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "hardening_support.h"

namespace {

const uint32_t DEEP = 100000;
const size_t BIG_ATTRIBUTE = 16u << 20;

std::string Nested(uint32_t uiDepth, const std::string &strInner, bool bClosed = true)
{
    std::string strText;
    strText.reserve(uiDepth * 7 + strInner.size());
    for (uint32_t i = 0; i < uiDepth; ++i) {
        strText += "<a>";
    }
    strText += strInner;
    for (uint32_t i = 0; bClosed && i < uiDepth; ++i) {
        strText += "</a>";
    }
    return strText;
}

std::string ValueOf(_NODE *pstNode)
{
    char *pcValue = nullptr;
    EXPECT_EQ(KTL_XML_GetNodeValue(pstNode, nullptr, 0, nullptr, &pcValue), 0u);
    return pcValue == nullptr ? "<null>" : pcValue;
}

std::string NameOf(_NODE *pstNode)
{
    char *pcName = nullptr;
    char *pcValue = nullptr;
    EXPECT_EQ(KTL_XML_GetNodeValue(pstNode, nullptr, 0, &pcName, &pcValue), 0u);
    return pcName == nullptr ? "<null>" : pcName;
}

std::string AttrOf(_NODE *pstNode, const char *pcName)
{
    char *pcValue = nullptr;
    return KTL_XML_GetAttr(pstNode, 0, pcName, &pcValue) == 0 && pcValue != nullptr ? pcValue : "<none>";
}

/* Documents parsed here are released by the end of each test. */
class HostileXmlTest : public ::testing::Test {
protected:
    void SetUp() override { m_uiBaseDocuments = KTL_XML_LiveDocuments(); }
    void TearDown() override
    {
        KTL_XML_FreeNode(m_pstRoot);
        EXPECT_EQ(KTL_XML_LiveDocuments(), m_uiBaseDocuments);
    }
    uint32_t Parse(const std::string &strText)
    {
        KTL_XML_FreeNode(m_pstRoot);
        m_pstRoot = nullptr;
        return KTL_XML_Parse(strText.c_str(), &m_pstRoot);
    }
    /* A malformed text gives a library code (above 255), no root and no document. */
    void ExpectMalformed(const std::string &strText)
    {
        KTL_XML_FreeNode(m_pstRoot);
        m_pstRoot = nullptr;
        uint32_t uiBefore = KTL_XML_LiveDocuments();
        uint32_t uiRet = Parse(strText);
        EXPECT_GT(uiRet, 255u);
        EXPECT_EQ(m_pstRoot, nullptr);
        EXPECT_EQ(KTL_XML_LiveDocuments(), uiBefore);
    }

    _NODE *m_pstRoot = nullptr;
    uint32_t m_uiBaseDocuments = 0;
};

TEST_F(HostileXmlTest, HundredThousandNestedElementsParseWalkAndFree)
{
    ASSERT_EQ(Parse(Nested(DEEP, "bottom")), 0u);
    _NODE *pstNode = m_pstRoot;
    uint32_t uiDepth = 1;
    for (_NODE *pstChild = KTL_XML_GetNodeFirstChild(pstNode); pstChild != nullptr;
         pstChild = KTL_XML_GetNodeFirstChild(pstChild)) {
        pstNode = pstChild;
        ++uiDepth;
    }
    EXPECT_EQ(uiDepth, DEEP);
    EXPECT_EQ(ValueOf(pstNode), "bottom");

    std::string strPath = "a";
    for (uint32_t i = 1; i < 1000; ++i) {
        strPath += ".a";
    }
    _NODE *pstFound = nullptr;
    EXPECT_EQ(KTL_XML_GetNodeByUrl(m_pstRoot, strPath.c_str(), &pstFound), 0u);
    EXPECT_NE(pstFound, nullptr);
}

TEST_F(HostileXmlTest, HundredThousandUnclosedElementsAreMalformed)
{
    ExpectMalformed(Nested(DEEP, "bottom", false));
}

TEST_F(HostileXmlTest, SixteenMebibyteAttributeIsReadWhole)
{
    std::string strText = "<r big=\"" + std::string(BIG_ATTRIBUTE, 'v') + "\" small=\"s\"/>";
    ASSERT_EQ(Parse(strText), 0u);
    EXPECT_EQ(AttrOf(m_pstRoot, "big").size(), BIG_ATTRIBUTE);
    EXPECT_EQ(AttrOf(m_pstRoot, "small"), "s");
}

TEST_F(HostileXmlTest, HundredThousandSiblingsAreCounted)
{
    std::string strText = "<r>";
    for (uint32_t i = 0; i < DEEP; ++i) {
        strText += "<s/>";
    }
    ASSERT_EQ(Parse(strText + "</r>"), 0u);
    uint32_t uiNum = 0;
    EXPECT_EQ(KTL_XML_GetNodeChildNum(m_pstRoot, &uiNum), 0u);
    EXPECT_EQ(uiNum, DEEP);
}

/* The classic exponential entity document: nine levels of ten references each. */
std::string BillionLaughs(const std::string &strUse)
{
    std::string strText = "<?xml version=\"1.0\"?>\n<!DOCTYPE lolz [\n<!ENTITY lol \"lol\">\n";
    for (int i = 1; i <= 9; ++i) {
        strText += "<!ENTITY lol" + std::to_string(i) + " \"";
        for (int j = 0; j < 10; ++j) {
            strText += "&lol" + (i == 1 ? std::string() : std::to_string(i - 1)) + ";";
        }
        strText += "\">\n";
    }
    return strText + "]>\n" + strUse;
}

TEST_F(HostileXmlTest, BillionLaughsIsNotExpanded)
{
    std::string strText = BillionLaughs("<lolz a=\"&lol9;\">&lol9;</lolz>");
    ASSERT_EQ(Parse(strText), 0u);
    EXPECT_EQ(ValueOf(m_pstRoot), "&lol9;");
    EXPECT_EQ(AttrOf(m_pstRoot, "a"), "&lol9;");
}

/* A local file holding a marker that must never reach a document. */
class MarkerFile {
public:
    explicit MarkerFile(const std::string &strMarker) : m_strPath(hardening::ScratchPath("marker"))
    {
        FILE *pFile = std::fopen(m_strPath.c_str(), "w");
        EXPECT_NE(pFile, nullptr);
        if (pFile != nullptr) {
            std::fputs(strMarker.c_str(), pFile);
            std::fclose(pFile);
        }
    }
    ~MarkerFile() { std::remove(m_strPath.c_str()); }
    const std::string &Path() const { return m_strPath; }

private:
    std::string m_strPath;
};

TEST_F(HostileXmlTest, ExternalEntitiesAreNeitherLoadedNorExpanded)
{
    const std::string strMarker = "HARDENING-MARKER-7f3a";
    MarkerFile file(strMarker);
    std::string strText = "<?xml version=\"1.0\"?><!DOCTYPE r [<!ENTITY xxe SYSTEM \"file://" + file.Path() +
                          "\"><!ENTITY % pe SYSTEM \"file://" + file.Path() + "\"> %pe;]><r a=\"&xxe;\">&xxe;</r>";
    ASSERT_EQ(Parse(strText), 0u);
    EXPECT_EQ(ValueOf(m_pstRoot), "&xxe;");
    EXPECT_EQ(AttrOf(m_pstRoot, "a"), "&xxe;");
}

TEST_F(HostileXmlTest, InvalidUtf8IsKeptAsBytes)
{
    const std::string strBytes = "\xff\xfe\xc3\x28\xe2\x82\xf0\x80";
    ASSERT_EQ(Parse("<r a=\"" + strBytes + "\">" + strBytes + "</r>"), 0u);
    EXPECT_EQ(ValueOf(m_pstRoot), strBytes);
    EXPECT_EQ(AttrOf(m_pstRoot, "a"), strBytes);
}

TEST_F(HostileXmlTest, TextEndsAtTheFirstNul)
{
    std::string strWhole = std::string("<r>kept</r>\0<trailing garbage", 30);
    ASSERT_EQ(Parse(strWhole), 0u);
    EXPECT_EQ(ValueOf(m_pstRoot), "kept");
    ExpectMalformed(std::string("<r>cut\0</r>", 11));
}

TEST_F(HostileXmlTest, DuplicatedAttributeGivesTheFirst)
{
    ASSERT_EQ(Parse("<r name=\"first\" name=\"second\"/>"), 0u);
    EXPECT_EQ(AttrOf(m_pstRoot, "name"), "first");
}

TEST_F(HostileXmlTest, PrefixedAndUnprefixedNamesMatchTheSamePath)
{
    ASSERT_EQ(Parse("<x:Envelope xmlns:x=\"urn:a\"><x:Body>one</x:Body><Body>two</Body>"
                    "<Header><y:Item>three</y:Item></Header></x:Envelope>"),
              0u);
    _NODE *pstNode = nullptr;
    ASSERT_EQ(KTL_XML_GetNodeByUrl(m_pstRoot, "Envelope.Body", &pstNode), 0u);
    EXPECT_EQ(ValueOf(pstNode), "one") << "of two matching children the first is taken";
    EXPECT_EQ(NameOf(pstNode), "x:Body") << "the name is handed out as written";
    ASSERT_EQ(KTL_XML_GetNodeByUrl(m_pstRoot, "Envelope.Header.Item", &pstNode), 0u);
    EXPECT_EQ(ValueOf(pstNode), "three");
    EXPECT_EQ(KTL_XML_GetNodeByUrl(m_pstRoot, "x:Envelope.x:Body", &pstNode), 0u)
        << "a prefixed component matches the prefixed name";
    EXPECT_EQ(KTL_XML_GetNodeByUrl(m_pstRoot, "Envelope.y:Body", &pstNode), KTL_XML_ERR_NOT_FOUND);
}

TEST_F(HostileXmlTest, EveryPrefixOfADocumentIsMalformedUntilItsRootCloses)
{
    const std::string strWhole = hardening::ReadAnswer("conference-login.xml");
    const size_t uiRootEnd = strWhole.rfind('>') + 1;
    for (size_t uiLen = 0; uiLen < uiRootEnd; ++uiLen) {
        SCOPED_TRACE("prefix of " + std::to_string(uiLen) + " bytes");
        ExpectMalformed(strWhole.substr(0, uiLen));
    }
    EXPECT_EQ(Parse(strWhole.substr(0, uiRootEnd)), 0u);
}

} // namespace
