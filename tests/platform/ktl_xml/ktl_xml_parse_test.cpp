/*
 * ktl_xml_parse_test.cpp - parsing and document lifetime of the XML document library.
 *
 * Covers what KTL_XML_Parse promises about the caller's text (private copy, bytes kept,
 * text ends at the first NUL), about entities (predefined and character references
 * decoded, everything else left literal, nothing from a DTD expanded or loaded), about
 * failures (codes above 255, no document left behind) and about the live-document count.
 */
#include "atrium_test_control.h"
#include "ktl_xml.h"
#include "ktl_xml_options.h"
#include "ktl_xml_test.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <cstdlib>
#include <cstdint>
#include <cstring>
#include <string>

namespace {

std::string NestedElements(size_t uiDepth)
{
    std::string strText;
    strText.reserve(uiDepth * 7);
    for (size_t i = 0; i < uiDepth; ++i) {
        strText += "<a>";
    }
    for (size_t i = 0; i < uiDepth; ++i) {
        strText += "</a>";
    }
    return strText;
}

std::string DottedPath(size_t uiComponents)
{
    std::string strPath = "a";
    for (size_t i = 1; i < uiComponents; ++i) {
        strPath += ".a";
    }
    return strPath;
}

TEST(KtlXmlParse, CallersTextStaysByteIdenticalAfterParseAndInPlaceWipe)
{
    /* Entities and CDATA make an in-place parser rewrite its buffer. */
    char acText[] = "<r><pw>s&amp;cret</pw><c><![CDATA[x]]></c><e a=\"&lt;\"/></r>";
    const std::string strBefore(acText, sizeof(acText));

    ParsedDocument oDoc(acText);
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_EQ(std::string(acText, sizeof(acText)), strBefore);

    char *pcPassword = ValueAt(oDoc.Root(), "r.pw");
    ASSERT_NE(pcPassword, nullptr);
    std::memset(pcPassword, 0, std::strlen(pcPassword));
    EXPECT_EQ(std::string(acText, sizeof(acText)), strBefore);
}

TEST(KtlXmlParse, ValueAndAttributeTextsAreWritableInPlace)
{
    ParsedDocument oDoc("<r><pw>secret</pw><k id=\"token\"/></r>");
    ASSERT_EQ(oDoc.Code(), 0u);

    char *pcValue = ValueAt(oDoc.Root(), "r.pw");
    ASSERT_STREQ(pcValue, "secret");
    std::memset(pcValue, 'x', std::strlen(pcValue));
    EXPECT_STREQ(ValueAt(oDoc.Root(), "r.pw"), "xxxxxx");

    _NODE *pstKey = nullptr;
    ASSERT_EQ(KTL_XML_GetNodeByUrl(oDoc.Root(), "r.k", &pstKey), 0u);
    char *pcAttr = nullptr;
    ASSERT_EQ(KTL_XML_GetAttr(pstKey, 0, "id", &pcAttr), 0u);
    pcAttr[0] = 'T';
    char *pcAgain = nullptr;
    ASSERT_EQ(KTL_XML_GetAttr(pstKey, 0, "id", &pcAgain), 0u);
    EXPECT_STREQ(pcAgain, "Token");
}

TEST(KtlXmlParse, RootIsTheDocumentElement)
{
    ParsedDocument oDoc("<?xml version=\"1.0\"?><!-- lead --><UserInfo><a/></UserInfo>");
    ASSERT_EQ(oDoc.Code(), 0u);
    char *pcName = nullptr;
    char *pcValue = nullptr;
    ASSERT_EQ(KTL_XML_GetNodeValue(oDoc.Root(), nullptr, 0, &pcName, &pcValue), 0u);
    EXPECT_STREQ(pcName, "UserInfo");
}

TEST(KtlXmlParse, PredefinedEntitiesAndCharacterReferencesAreDecoded)
{
    ParsedDocument oDoc("<r><t>&lt;&gt;&amp;&apos;&quot;&#65;&#x42;&#x20AC;</t>"
                        "<e v=\"&amp;&#67;\"/></r>");
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_STREQ(ValueAt(oDoc.Root(), "r.t"), "<>&'\"AB\xE2\x82\xAC");

    _NODE *pstNode = nullptr;
    ASSERT_EQ(KTL_XML_GetNodeByUrl(oDoc.Root(), "r.e", &pstNode), 0u);
    char *pcAttr = nullptr;
    ASSERT_EQ(KTL_XML_GetAttr(pstNode, 0, "v", &pcAttr), 0u);
    EXPECT_STREQ(pcAttr, "&C");
}

TEST(KtlXmlParse, UnknownEntityStaysLiteral)
{
    ParsedDocument oDoc("<r>x&foo;y</r>");
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_STREQ(ValueAt(oDoc.Root(), "r"), "x&foo;y");
}

TEST(KtlXmlParse, InternalDtdEntityIsNotExpanded)
{
    const char *pcLaughs =
        "<!DOCTYPE lolz [<!ENTITY lol \"lol\">"
        "<!ENTITY lol1 \"&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;\">"
        "<!ENTITY lol2 \"&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;\">"
        "<!ENTITY lol3 \"&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;\">"
        "<!ENTITY lol4 \"&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;\">"
        "<!ENTITY lol5 \"&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;\">"
        "<!ENTITY lol6 \"&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;\">"
        "<!ENTITY lol7 \"&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;\">"
        "<!ENTITY lol8 \"&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;\">"
        "<!ENTITY lol9 \"&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;\">"
        "]><lolz>&lol9;</lolz>";
    ParsedDocument oDoc(pcLaughs);
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_STREQ(ValueAt(oDoc.Root(), "lolz"), "&lol9;");
}

TEST(KtlXmlParse, ExternalEntityIsNotLoaded)
{
    ParsedDocument oDoc("<!DOCTYPE r [<!ENTITY xxe SYSTEM \"file:///etc/passwd\">]>"
                        "<r>&xxe;</r>");
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_STREQ(ValueAt(oDoc.Root(), "r"), "&xxe;");
}

TEST(KtlXmlParse, InvalidUtf8BytesAreKeptAsBytes)
{
    ParsedDocument oDoc("<r>a\xFF\xFE\xC3(z</r>");
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_STREQ(ValueAt(oDoc.Root(), "r"), "a\xFF\xFE\xC3(z");
}

TEST(KtlXmlParse, TextEndsAtFirstNul)
{
    const char acWhole[] = "<r>one</r>\0<broken";
    ParsedDocument oWhole(acWhole);
    ASSERT_EQ(oWhole.Code(), 0u);
    EXPECT_STREQ(ValueAt(oWhole.Root(), "r"), "one");

    const char acCut[] = "<r>on\0e</r>";
    ParsedDocument oCut(acCut);
    EXPECT_GT(oCut.Code(), 255u);
    EXPECT_EQ(oCut.Root(), nullptr);
}

TEST(KtlXmlParse, HundredThousandLevelsParseNavigateAndFree)
{
    const size_t uiDepth = 100000;
    const std::string strText = NestedElements(uiDepth);
    const uint32_t uiLiveBefore = KTL_XML_LiveDocuments();

    _NODE *pstRoot = nullptr;
    ASSERT_EQ(KTL_XML_Parse(strText.c_str(), &pstRoot), 0u);

    _NODE *pstDeepest = nullptr;
    ASSERT_EQ(KTL_XML_GetNodeByUrl(pstRoot, DottedPath(uiDepth).c_str(), &pstDeepest), 0u);
    ASSERT_NE(pstDeepest, nullptr);
    EXPECT_EQ(KTL_XML_GetNodeFirstChild(pstDeepest), nullptr);

    _NODE *pstBeyond = nullptr;
    EXPECT_EQ(KTL_XML_GetNodeByUrl(pstRoot, DottedPath(uiDepth + 1).c_str(), &pstBeyond),
              KTL_XML_ERR_NOT_FOUND);

    KTL_XML_FreeNode(pstRoot);
    EXPECT_EQ(KTL_XML_LiveDocuments(), uiLiveBefore);
}

TEST(KtlXmlParse, NullTextFailsWithoutDocument)
{
    const uint32_t uiLiveBefore = KTL_XML_LiveDocuments();
    _NODE *pstRoot = reinterpret_cast<_NODE *>(&pstRoot);
    EXPECT_EQ(KTL_XML_Parse(nullptr, &pstRoot), KTL_XML_ERR_NULL_ARG);
    EXPECT_EQ(pstRoot, nullptr);
    EXPECT_EQ(KTL_XML_LiveDocuments(), uiLiveBefore);
}

TEST(KtlXmlParse, NullRootOutPointerFails)
{
    const uint32_t uiLiveBefore = KTL_XML_LiveDocuments();
    EXPECT_EQ(KTL_XML_Parse("<r/>", nullptr), KTL_XML_ERR_NULL_ARG);
    EXPECT_EQ(KTL_XML_LiveDocuments(), uiLiveBefore);
}

TEST(KtlXmlParse, TextWithoutRootElementFailsWithNoRoot)
{
    const uint32_t uiLiveBefore = KTL_XML_LiveDocuments();
    for (const char *pcText : {"", "   \n", "not xml", "<?xml version=\"1.0\"?>", "<!-- c -->"}) {
        _NODE *pstRoot = reinterpret_cast<_NODE *>(&pstRoot);
        EXPECT_EQ(KTL_XML_Parse(pcText, &pstRoot), KTL_XML_ERR_NO_ROOT) << '"' << pcText << '"';
        EXPECT_EQ(pstRoot, nullptr);
    }
    EXPECT_EQ(KTL_XML_LiveDocuments(), uiLiveBefore);
}

TEST(KtlXmlParse, SeveralRootElementsAreNotOneDocument)
{
    const uint32_t uiLiveBefore = KTL_XML_LiveDocuments();
    for (const char *pcText : {"<a/><b/>", "<a/>\n<b>x</b>", "<a><c/></a><a/>"}) {
        _NODE *pstRoot = reinterpret_cast<_NODE *>(&pstRoot);
        EXPECT_EQ(KTL_XML_Parse(pcText, &pstRoot), KTL_XML_ERR_NOT_WELL_FORMED) << pcText;
        EXPECT_EQ(pstRoot, nullptr);
    }
    EXPECT_EQ(KTL_XML_LiveDocuments(), uiLiveBefore);
}

TEST(KtlXmlParse, TextOutsideTheRootElementIsNotOneDocument)
{
    const uint32_t uiLiveBefore = KTL_XML_LiveDocuments();
    for (const char *pcText :
         {"abc<a>v</a>", "<a>v</a>abc", "<a/>\n x \n", "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\n\r\n<a/>",
          "<a/><![CDATA[x]]>", "<![CDATA[x]]><a/>", "<?xml version=\"1.0\"?>junk<a/>", "<a/><!-- c -->&amp;",
          "\xEF\xBB\xBFx<a/>"}) {
        _NODE *pstRoot = reinterpret_cast<_NODE *>(&pstRoot);
        EXPECT_EQ(KTL_XML_Parse(pcText, &pstRoot), KTL_XML_ERR_TEXT_OUTSIDE_ROOT) << pcText;
        EXPECT_EQ(pstRoot, nullptr);
    }
    /* the first fault in document order decides */
    _NODE *pstRoot = nullptr;
    EXPECT_EQ(KTL_XML_Parse("<a/><b/>junk", &pstRoot), KTL_XML_ERR_NOT_WELL_FORMED);
    EXPECT_EQ(KTL_XML_Parse("<a/>junk<b/>", &pstRoot), KTL_XML_ERR_TEXT_OUTSIDE_ROOT);
    EXPECT_EQ(KTL_XML_LiveDocuments(), uiLiveBefore);
}

TEST(KtlXmlParse, WhitespaceAndAByteOrderMarkAroundTheRootAreAccepted)
{
    for (const char *pcText : {" \t\r\n<a>v</a> \t\r\n", "\xEF\xBB\xBF<a>v</a>\n"}) {
        _NODE *pstRoot = nullptr;
        ASSERT_EQ(KTL_XML_Parse(pcText, &pstRoot), 0u) << pcText;
        char *pcValue = nullptr;
        ASSERT_EQ(KTL_XML_GetNodeValue(pstRoot, nullptr, 0, nullptr, &pcValue), 0u);
        EXPECT_STREQ(pcValue, "v");
        KTL_XML_FreeNode(pstRoot);
    }
}

TEST(KtlXmlParse, PrologCommentsAndWhitespaceAroundTheRootAreAccepted)
{
    _NODE *pstRoot = nullptr;
    ASSERT_EQ(KTL_XML_Parse("<?xml version=\"1.0\"?>\n<!-- c --><?pi x?>\n<a/>\n<!-- d -->\n", &pstRoot), 0u);
    char *pcName = nullptr;
    char *pcValue = nullptr;
    ASSERT_EQ(KTL_XML_GetNodeValue(pstRoot, nullptr, 0, &pcName, &pcValue), 0u);
    EXPECT_STREQ(pcName, "a");
    KTL_XML_FreeNode(pstRoot);
}

TEST(KtlXmlParse, MalformedTextFailsWithParseCode)
{
    const uint32_t uiLiveBefore = KTL_XML_LiveDocuments();
    for (const char *pcText : {"<r>", "<r></s>", "<r a=1/>", "<r><!-- x</r>", "<<r/>"}) {
        _NODE *pstRoot = reinterpret_cast<_NODE *>(&pstRoot);
        const uint32_t uiCode = KTL_XML_Parse(pcText, &pstRoot);
        EXPECT_GT(uiCode, KTL_XML_ERR_PARSE_BASE) << pcText;
        EXPECT_LT(uiCode, KTL_XML_ERR_PARSE_BASE + 16u) << pcText;
        EXPECT_EQ(pstRoot, nullptr);
    }
    EXPECT_EQ(KTL_XML_LiveDocuments(), uiLiveBefore);
}

/* While it lives, pugixml's allocations (the library's block per document, pugixml's pages,
 * the moves of an outgrown list of elements) go through here: the one after uiSucceed more
 * fails, and every block handed out is counted until released. Create and destroy it while
 * no document is alive. */
class FailingXmlAllocator {
public:
    explicit FailingXmlAllocator(uint32_t uiSucceed)
        : m_pfnOldAllocate(pugi::get_memory_allocation_function()),
          m_pfnOldDeallocate(pugi::get_memory_deallocation_function())
    {
        s_uiLeft = uiSucceed;
        s_uiAllocations = 0;
        s_iLiveBlocks = 0;
        s_bFailed = false;
        pugi::set_memory_management_functions(&Allocate, &Deallocate);
    }
    ~FailingXmlAllocator() { pugi::set_memory_management_functions(m_pfnOldAllocate, m_pfnOldDeallocate); }
    FailingXmlAllocator(const FailingXmlAllocator &) = delete;
    FailingXmlAllocator &operator=(const FailingXmlAllocator &) = delete;

    bool Failed() const { return s_bFailed; }
    uint32_t Allocations() const { return s_uiAllocations; }
    int LiveBlocks() const { return s_iLiveBlocks; }

private:
    static void *Allocate(size_t uiSize)
    {
        if (!s_bFailed && s_uiLeft-- == 0) {
            s_bFailed = true;
            return nullptr;
        }
        void *pvBlock = std::malloc(uiSize);
        s_uiAllocations += (pvBlock != nullptr) ? 1 : 0;
        s_iLiveBlocks += (pvBlock != nullptr) ? 1 : 0;
        return pvBlock;
    }
    static void Deallocate(void *pvBlock)
    {
        s_iLiveBlocks -= (pvBlock != nullptr) ? 1 : 0;
        std::free(pvBlock);
    }

    static uint32_t s_uiLeft;
    static uint32_t s_uiAllocations;
    static int s_iLiveBlocks;
    static bool s_bFailed;
    pugi::allocation_function m_pfnOldAllocate;
    pugi::deallocation_function m_pfnOldDeallocate;
};
uint32_t FailingXmlAllocator::s_uiLeft;
uint32_t FailingXmlAllocator::s_uiAllocations;
int FailingXmlAllocator::s_iLiveBlocks;
bool FailingXmlAllocator::s_bFailed;

TEST(KtlXmlParse, AnAllocationThatFailsGivesNoMemoryAndLeavesNothing)
{
    /* Thousands of the shortest elements: several parser pages, and a list of elements that
     * has to grow twice, so every kind of allocation of a parse is made to fail in turn. */
    std::string strText = "<r>";
    for (int i = 0; i < 3000; ++i) {
        strText += "<a/>";
    }
    strText += "<b>v</b></r>";
    const uint32_t uiLiveBefore = KTL_XML_LiveDocuments();

    uint32_t uiFailures = 0;
    bool bParsed = false;
    for (uint32_t uiSucceed = 0; !bParsed && uiSucceed < 1000; ++uiSucceed) {
        FailingXmlAllocator oAllocator(uiSucceed);
        _NODE *pstRoot = nullptr;
        const uint32_t uiRet = KTL_XML_Parse(strText.c_str(), &pstRoot);
        if (uiRet == 0) {
            bParsed = true;
            EXPECT_FALSE(oAllocator.Failed()) << "a parse succeeded although an allocation failed";
            EXPECT_STREQ(ValueAt(pstRoot, "r.b"), "v");
            KTL_XML_FreeNode(pstRoot);
        } else {
            ++uiFailures;
            EXPECT_EQ(uiRet, KTL_XML_ERR_NO_MEMORY) << "allocation " << uiSucceed;
            EXPECT_EQ(pstRoot, nullptr);
        }
        EXPECT_EQ(oAllocator.LiveBlocks(), 0) << "allocation " << uiSucceed;
        EXPECT_EQ(KTL_XML_LiveDocuments(), uiLiveBefore);
    }
    EXPECT_TRUE(bParsed);

    /* The sweep failed each allocation of a parse once: the document's block (with the copy
     * of the text and the first room for its elements), pugixml's pages, and the two moves
     * of the outgrown element list. */
    uint32_t uiPageAllocations = 0;
    {
        std::string strCopy = strText;
        FailingXmlAllocator oCounter(UINT32_MAX);
        pugi::xml_document xDoc;
        ASSERT_TRUE(xDoc.load_buffer_inplace(&strCopy[0], strCopy.size() + 1, KTL_XML_PUGIXML_OPTIONS,
                                             pugi::encoding_utf8));
        uiPageAllocations = oCounter.Allocations();
    }
    EXPECT_GT(uiPageAllocations, 1u) << "the text fills several pages";
    EXPECT_EQ(uiFailures, 1 + uiPageAllocations + 2);
}

/* While it lives, pugixml's allocations get blocks aligned to a pointer's size and no more
 * (each one starts a pointer's size past a block of malloc, which is aligned to more): the
 * least a program that sets pugixml's memory functions may hand out. */
class PointerAlignedXmlAllocator {
public:
    PointerAlignedXmlAllocator()
        : m_pfnOldAllocate(pugi::get_memory_allocation_function()),
          m_pfnOldDeallocate(pugi::get_memory_deallocation_function())
    {
        pugi::set_memory_management_functions(&Allocate, &Deallocate);
    }
    ~PointerAlignedXmlAllocator() { pugi::set_memory_management_functions(m_pfnOldAllocate, m_pfnOldDeallocate); }
    PointerAlignedXmlAllocator(const PointerAlignedXmlAllocator &) = delete;
    PointerAlignedXmlAllocator &operator=(const PointerAlignedXmlAllocator &) = delete;

    static bool BlocksWereShifted() { return s_bShifted; }

private:
    static void *Allocate(size_t uiSize)
    {
        char *pcBlock = static_cast<char *>(std::malloc(uiSize + sizeof(void *)));
        if (pcBlock == nullptr) {
            return nullptr;
        }
        s_bShifted = s_bShifted || (reinterpret_cast<uintptr_t>(pcBlock + sizeof(void *)) % alignof(std::max_align_t)) != 0;
        return pcBlock + sizeof(void *);
    }
    static void Deallocate(void *pvBlock)
    {
        if (pvBlock != nullptr) {
            std::free(static_cast<char *>(pvBlock) - sizeof(void *));
        }
    }
    static bool s_bShifted;
    pugi::allocation_function m_pfnOldAllocate;
    pugi::deallocation_function m_pfnOldDeallocate;
};
bool PointerAlignedXmlAllocator::s_bShifted = false;

TEST(KtlXmlParse, DocumentsAreAlignedWhateverTheAllocatorHandsOut)
{
    /* enough elements that the element list outgrows its first room and moves */
    std::string strText = "<r>";
    for (int i = 0; i < 400; ++i) {
        strText += "<e><f>v</f></e>";
    }
    strText += "<b>last</b></r>";
    const uint32_t uiLiveBefore = KTL_XML_LiveDocuments();
    {
        PointerAlignedXmlAllocator oAllocator;
        _NODE *pstRoot = nullptr;
        ASSERT_EQ(KTL_XML_Parse(strText.c_str(), &pstRoot), 0u);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(pstRoot) % alignof(std::max_align_t), 0u);
        EXPECT_STREQ(ValueAt(pstRoot, "r.b"), "last");
        uint32_t uiChildren = 0;
        ASSERT_EQ(KTL_XML_GetNodeChildNum(pstRoot, &uiChildren), 0u);
        EXPECT_EQ(uiChildren, 401u);
        KTL_XML_FreeNode(pstRoot);
    }
    EXPECT_TRUE(PointerAlignedXmlAllocator::BlocksWereShifted()) << "the test's blocks were aligned to more anyway";
    EXPECT_EQ(KTL_XML_LiveDocuments(), uiLiveBefore);
}

TEST(KtlXmlParse, LiveDocumentCountFollowsParseAndFree)
{
    const uint32_t uiBase = KTL_XML_LiveDocuments();
    _NODE *pstFirst = nullptr;
    _NODE *pstSecond = nullptr;
    ASSERT_EQ(KTL_XML_Parse("<a/>", &pstFirst), 0u);
    ASSERT_EQ(KTL_XML_Parse("<b/>", &pstSecond), 0u);
    EXPECT_EQ(KTL_XML_LiveDocuments(), uiBase + 2);

    _NODE *pstFailed = nullptr;
    EXPECT_NE(KTL_XML_Parse("<c>", &pstFailed), 0u);
    EXPECT_EQ(KTL_XML_LiveDocuments(), uiBase + 2);

    KTL_XML_FreeNode(pstFirst);
    EXPECT_EQ(KTL_XML_LiveDocuments(), uiBase + 1);
    KTL_XML_FreeNode(pstSecond);
    EXPECT_EQ(KTL_XML_LiveDocuments(), uiBase);
}

TEST(KtlXmlParse, FreeingNullIsIgnored)
{
    const uint32_t uiBase = KTL_XML_LiveDocuments();
    KTL_XML_FreeNode(nullptr);
    EXPECT_EQ(KTL_XML_LiveDocuments(), uiBase);
}

TEST(KtlXmlParse, EveryFailureCodeIsAbove255)
{
    ParsedDocument oDoc("<r a=\"1\"><b/></r>");
    ASSERT_EQ(oDoc.Code(), 0u);
    _NODE *pstNode = nullptr;
    char *pcText = nullptr;
    uint32_t uiNum = 0;

    _NODE *pstIgnored = nullptr;
    const uint32_t auiCodes[] = {
        KTL_XML_Parse(nullptr, &pstIgnored),
        KTL_XML_Parse("", &pstIgnored),
        KTL_XML_Parse("<r>", &pstIgnored),
        KTL_XML_GetNodeByUrl(nullptr, "r", &pstNode),
        KTL_XML_GetNodeByUrl(oDoc.Root(), "", &pstNode),
        KTL_XML_GetNodeByUrl(oDoc.Root(), "r.x", &pstNode),
        KTL_XML_GetNodeValue(nullptr, nullptr, 0, nullptr, &pcText),
        KTL_XML_GetAttr(oDoc.Root(), 0, "missing", &pcText),
        KTL_XML_GetAttr(nullptr, 0, "a", &pcText),
        KTL_XML_GetNodeChildNum(nullptr, &uiNum),
    };
    for (uint32_t uiCode : auiCodes) {
        EXPECT_GT(uiCode, 255u);
    }
}

} // namespace
