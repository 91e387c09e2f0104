/*
 * ktl_xml_read_test.cpp - reading a parsed document: navigation, dotted paths, values and
 * attributes.
 *
 * Each test parses a small text, reads it through the library's operations and checks one
 * pinned behaviour: element-only navigation, how a path component matches (bare or
 * prefixed name, first of several, no backtracking, first component is the start node),
 * which character data counts as an element's value, and how attributes are found.
 */
#include "atrium_test_control.h"
#include "ktl_xml.h"
#include "ktl_xml_ext.h"
#include "ktl_xml_test.h"
#include "reference_lookup.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

/* ---- navigation ---------------------------------------------------------------------- */

TEST(KtlXmlNavigation, SeesElementsOnly)
{
    ParsedDocument oDoc("<!DOCTYPE r [<!ELEMENT r ANY>]>"
                        "<r>lead<!-- c --><?pi data?><![CDATA[cd]]><a/>mid<b>t</b>"
                        "<!-- c2 --><c/>tail</r>");
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_STREQ(ElementName(oDoc.Root()), "r");

    uint32_t uiNum = 0;
    ASSERT_EQ(KTL_XML_GetNodeChildNum(oDoc.Root(), &uiNum), 0u);
    EXPECT_EQ(uiNum, 3u);

    _NODE *pstChild = KTL_XML_GetNodeFirstChild(oDoc.Root());
    EXPECT_STREQ(ElementName(pstChild), "a");
    pstChild = KTL_XML_GetNodeNextSibling(pstChild);
    EXPECT_STREQ(ElementName(pstChild), "b");
    pstChild = KTL_XML_GetNodeNextSibling(pstChild);
    EXPECT_STREQ(ElementName(pstChild), "c");
    EXPECT_EQ(KTL_XML_GetNodeNextSibling(pstChild), nullptr);
}

TEST(KtlXmlNavigation, ElementWithTextOnlyHasNoChildren)
{
    ParsedDocument oDoc("<r><b>text<!-- c --></b></r>");
    ASSERT_EQ(oDoc.Code(), 0u);
    _NODE *pstLeaf = NodeAt(oDoc.Root(), "r.b");
    uint32_t uiNum = 99;
    ASSERT_EQ(KTL_XML_GetNodeChildNum(pstLeaf, &uiNum), 0u);
    EXPECT_EQ(uiNum, 0u);
    EXPECT_EQ(KTL_XML_GetNodeFirstChild(pstLeaf), nullptr);
}

TEST(KtlXmlNavigation, EveryElementOfADocumentOfTinyElementsIsReachable)
{
    /* "<a/>" is the shortest element: far more elements per byte than answers hold, so the
     * library's list of elements has to grow while the document is read. */
    const uint32_t uiCount = 20000;
    std::string strText = "<r>";
    for (uint32_t i = 0; i < uiCount; ++i) {
        strText += (i % 1000 == 999) ? "<a><b/>" + std::to_string(i) + "</a>" : std::string("<a/>");
    }
    strText += "<z>end</z></r>";
    ParsedDocument oDoc(strText.c_str());
    ASSERT_EQ(oDoc.Code(), 0u);

    uint32_t uiNum = 0;
    ASSERT_EQ(KTL_XML_GetNodeChildNum(oDoc.Root(), &uiNum), 0u);
    EXPECT_EQ(uiNum, uiCount + 1);
    uint32_t uiWalked = 0;
    uint32_t uiWithChild = 0;
    _NODE *pstLast = nullptr;
    for (_NODE *pstChild = KTL_XML_GetNodeFirstChild(oDoc.Root()); pstChild != nullptr;
         pstChild = KTL_XML_GetNodeNextSibling(pstChild)) {
        ++uiWalked;
        if (KTL_XML_GetNodeFirstChild(pstChild) != nullptr) {
            ++uiWithChild;
            EXPECT_STREQ(ValueOf(pstChild), std::to_string(uiWalked - 1).c_str());
            EXPECT_EQ(KTL_XML_GetNodeNextSibling(KTL_XML_GetNodeFirstChild(pstChild)), nullptr);
        }
        pstLast = pstChild;
    }
    EXPECT_EQ(uiWalked, uiCount + 1);
    EXPECT_EQ(uiWithChild, uiCount / 1000);
    EXPECT_EQ(pstLast, NodeAt(oDoc.Root(), "r.z"));
    EXPECT_STREQ(ValueAt(oDoc.Root(), "r.z"), "end");
    EXPECT_STREQ(ValueAt(oDoc.Root(), "r.a"), nullptr) << "the first <a> holds nothing";
}

TEST(KtlXmlNavigation, NullNodeGivesNullOrFailure)
{
    EXPECT_EQ(KTL_XML_GetNodeFirstChild(nullptr), nullptr);
    EXPECT_EQ(KTL_XML_GetNodeNextSibling(nullptr), nullptr);

    uint32_t uiNum = 7;
    EXPECT_EQ(KTL_XML_GetNodeChildNum(nullptr, &uiNum), KTL_XML_ERR_NULL_ARG);
    EXPECT_EQ(uiNum, 0u);

    ParsedDocument oDoc("<r/>");
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_EQ(KTL_XML_GetNodeChildNum(oDoc.Root(), nullptr), KTL_XML_ERR_NULL_ARG);
}

/* ---- dotted paths -------------------------------------------------------------------- */

TEST(KtlXmlPath, BareNameMatchesPrefixedElement)
{
    ParsedDocument oDoc("<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\">"
                        "<soap:Body><Answer>42</Answer></soap:Body></soap:Envelope>");
    ASSERT_EQ(oDoc.Code(), 0u);

    EXPECT_EQ(NodeAt(oDoc.Root(), "Envelope"), oDoc.Root());
    _NODE *pstBody = NodeAt(oDoc.Root(), "Envelope.Body");
    EXPECT_STREQ(ElementName(pstBody), "soap:Body");
    EXPECT_STREQ(ValueAt(pstBody, "Body.Answer"), "42");
}

TEST(KtlXmlPath, PrefixedComponentMatchesExactName)
{
    ParsedDocument oDoc("<soap:Envelope><soap:Body>x</soap:Body></soap:Envelope>");
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_STREQ(ValueAt(oDoc.Root(), "soap:Envelope.soap:Body"), "x");
}

TEST(KtlXmlPath, ExactNameMatches)
{
    ParsedDocument oDoc("<UserInfo><LoginToken><AccessToken>tok</AccessToken></LoginToken>"
                        "</UserInfo>");
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_STREQ(ValueAt(oDoc.Root(), "UserInfo.LoginToken.AccessToken"), "tok");
}

TEST(KtlXmlPath, ComponentMustMatchWholeNameOrWholeLocalPart)
{
    /* ":Body" has an empty prefix, so only its whole name matches. */
    ParsedDocument oDoc("<r><Bodyx>1</Bodyx><xBody>2</xBody><ns:Bo>3</ns:Bo><:Body>4</:Body></r>");
    ASSERT_EQ(oDoc.Code(), 0u);
    for (const char *pcPath : {"r.Body", "r.B", "r.ns", "r.Bodyxx"}) {
        _NODE *pstNode = Poisoned<_NODE>();
        EXPECT_EQ(KTL_XML_GetNodeByUrl(oDoc.Root(), pcPath, &pstNode), KTL_XML_ERR_NOT_FOUND)
            << pcPath;
        EXPECT_EQ(pstNode, nullptr);
    }
}

TEST(KtlXmlPath, StepTakesFirstOfSameNamedChildren)
{
    ParsedDocument oDoc("<a><b>first</b><b>second</b><x:b>third</x:b></a>");
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_STREQ(ValueAt(oDoc.Root(), "a.b"), "first");
}

TEST(KtlXmlPath, PrefixedElementBeforeExactOneIsTakenFirst)
{
    ParsedDocument oDoc("<a><x:b>prefixed</x:b><b>bare</b></a>");
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_STREQ(ValueAt(oDoc.Root(), "a.b"), "prefixed");
}

TEST(KtlXmlPath, NoBacktrackingIntoLaterSiblings)
{
    ParsedDocument oDoc("<a><b/><b><c>deep</c></b></a>");
    ASSERT_EQ(oDoc.Code(), 0u);
    _NODE *pstNode = Poisoned<_NODE>();
    EXPECT_EQ(KTL_XML_GetNodeByUrl(oDoc.Root(), "a.b.c", &pstNode), KTL_XML_ERR_NOT_FOUND);
    EXPECT_EQ(pstNode, nullptr);
}

TEST(KtlXmlPath, FirstComponentMustNameTheStartNode)
{
    ParsedDocument oDoc("<a><b><c>v</c></b></a>");
    ASSERT_EQ(oDoc.Code(), 0u);

    EXPECT_EQ(NodeAt(oDoc.Root(), "a"), oDoc.Root());
    _NODE *pstNode = Poisoned<_NODE>();
    EXPECT_EQ(KTL_XML_GetNodeByUrl(oDoc.Root(), "b.c", &pstNode), KTL_XML_ERR_NOT_FOUND);
    EXPECT_EQ(pstNode, nullptr);

    _NODE *pstB = NodeAt(oDoc.Root(), "a.b");
    EXPECT_STREQ(ValueAt(pstB, "b.c"), "v");
    EXPECT_EQ(KTL_XML_GetNodeByUrl(pstB, "a.b.c", &pstNode), KTL_XML_ERR_NOT_FOUND);
}

TEST(KtlXmlPath, EmptyPathOrComponentIsBadPath)
{
    ParsedDocument oDoc("<a><b/></a>");
    ASSERT_EQ(oDoc.Code(), 0u);
    for (const char *pcPath : {"", ".", "a.", ".a", "a..b", "a.b."}) {
        _NODE *pstNode = Poisoned<_NODE>();
        EXPECT_EQ(KTL_XML_GetNodeByUrl(oDoc.Root(), pcPath, &pstNode), KTL_XML_ERR_BAD_PATH)
            << '"' << pcPath << '"';
        EXPECT_EQ(pstNode, nullptr);
    }
}

TEST(KtlXmlPath, NullArgumentsFail)
{
    ParsedDocument oDoc("<a/>");
    ASSERT_EQ(oDoc.Code(), 0u);
    _NODE *pstNode = Poisoned<_NODE>();
    EXPECT_EQ(KTL_XML_GetNodeByUrl(nullptr, "a", &pstNode), KTL_XML_ERR_NULL_ARG);
    EXPECT_EQ(pstNode, nullptr);
    pstNode = Poisoned<_NODE>();
    EXPECT_EQ(KTL_XML_GetNodeByUrl(oDoc.Root(), nullptr, &pstNode), KTL_XML_ERR_NULL_ARG);
    EXPECT_EQ(pstNode, nullptr);
    EXPECT_EQ(KTL_XML_GetNodeByUrl(oDoc.Root(), "a", nullptr), KTL_XML_ERR_NULL_ARG);
}

/* Split paths: the components and hashes of the library, made by the compiler. */
constexpr KTL_XML_PATH SPLIT_LOGIN_PATH = ktl_xml::CompilePath("UserInfo.sipinfo.impu");
static_assert(SPLIT_LOGIN_PATH.uiSteps == 3, "a path is split when the module is compiled");

TEST(KtlXmlSplitPath, HoldsEachComponentsPlaceLengthAndHash)
{
    const KTL_XML_PATH &stPath = SPLIT_LOGIN_PATH;
    EXPECT_STREQ(stPath.pcText, "UserInfo.sipinfo.impu");
    const struct {
        uint16_t usAt;
        uint16_t usLen;
        const char *pcComponent;
    } astExpected[] = {{0, 8, "UserInfo"}, {9, 7, "sipinfo"}, {17, 4, "impu"}};
    for (uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(stPath.astSteps[i].usAt, astExpected[i].usAt) << i;
        EXPECT_EQ(stPath.astSteps[i].usLen, astExpected[i].usLen) << i;
        EXPECT_EQ(stPath.astSteps[i].uiHash,
                  ktl_xml::HashName(astExpected[i].pcComponent, std::strlen(astExpected[i].pcComponent)))
            << i;
    }
}

TEST(KtlXmlSplitPath, FindsWhatTheTextFinds)
{
    ParsedDocument oDoc("<UserInfo><x/><sipinfo><impi>i</impi><impu>u</impu></sipinfo>"
                        "<sipinfo><impu>second</impu></sipinfo></UserInfo>");
    ASSERT_EQ(oDoc.Code(), 0u);
    _NODE *pstNode = Poisoned<_NODE>();
    ASSERT_EQ(KTL_XML_GetNodeByPath(oDoc.Root(), &SPLIT_LOGIN_PATH, &pstNode), 0u);
    EXPECT_EQ(pstNode, NodeAt(oDoc.Root(), "UserInfo.sipinfo.impu"));
    EXPECT_STREQ(ValueOf(pstNode), "u");

    const KTL_XML_PATH stMissing = ktl_xml::CompilePath("UserInfo.sipinfo.domain");
    pstNode = Poisoned<_NODE>();
    EXPECT_EQ(KTL_XML_GetNodeByPath(oDoc.Root(), &stMissing, &pstNode), KTL_XML_ERR_NOT_FOUND);
    EXPECT_EQ(pstNode, nullptr);
    const KTL_XML_PATH stOtherStart = ktl_xml::CompilePath("sipinfo.impu");
    pstNode = Poisoned<_NODE>();
    EXPECT_EQ(KTL_XML_GetNodeByPath(oDoc.Root(), &stOtherStart, &pstNode), KTL_XML_ERR_NOT_FOUND);
    EXPECT_EQ(pstNode, nullptr);
}

TEST(KtlXmlSplitPath, PathsTheTextLookupRefusesOrOfTooManyComponentsAreNotSplit)
{
    ParsedDocument oDoc("<a><b><c><d><e/></d></c></b></a>");
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_EQ(ktl_xml::CompilePath("a.b.c.d").uiSteps, 4u);
    for (const char *pcPath : {"", ".", "a.", ".a", "a..b", "a.b.", "a.b.c.d.e"}) {
        const KTL_XML_PATH stPath = ktl_xml::CompilePath(pcPath);
        EXPECT_EQ(stPath.uiSteps, 0u) << '"' << pcPath << '"';
        EXPECT_EQ(stPath.pcText, pcPath);
        _NODE *pstNode = Poisoned<_NODE>();
        EXPECT_EQ(KTL_XML_GetNodeByPath(oDoc.Root(), &stPath, &pstNode), KTL_XML_ERR_BAD_PATH) << pcPath;
        EXPECT_EQ(pstNode, nullptr);
    }
    /* a longer path is looked up by its text */
    EXPECT_NE(NodeAt(oDoc.Root(), "a.b.c.d.e"), nullptr);
}

TEST(KtlXmlSplitPath, NullArgumentsAndStepCountsOutOfRangeFail)
{
    ParsedDocument oDoc("<a/>");
    ASSERT_EQ(oDoc.Code(), 0u);
    const KTL_XML_PATH stPath = ktl_xml::CompilePath("a");
    _NODE *pstNode = Poisoned<_NODE>();
    EXPECT_EQ(KTL_XML_GetNodeByPath(nullptr, &stPath, &pstNode), KTL_XML_ERR_NULL_ARG);
    EXPECT_EQ(pstNode, nullptr);
    pstNode = Poisoned<_NODE>();
    EXPECT_EQ(KTL_XML_GetNodeByPath(oDoc.Root(), nullptr, &pstNode), KTL_XML_ERR_NULL_ARG);
    EXPECT_EQ(pstNode, nullptr);
    EXPECT_EQ(KTL_XML_GetNodeByPath(oDoc.Root(), &stPath, nullptr), KTL_XML_ERR_NULL_ARG);

    KTL_XML_PATH stNoText = stPath;
    stNoText.pcText = nullptr;
    pstNode = Poisoned<_NODE>();
    EXPECT_EQ(KTL_XML_GetNodeByPath(oDoc.Root(), &stNoText, &pstNode), KTL_XML_ERR_NULL_ARG);
    EXPECT_EQ(pstNode, nullptr);
    KTL_XML_PATH stTooMany = stPath;
    stTooMany.uiSteps = KTL_XML_PATH_STEPS_MAX + 1;
    pstNode = Poisoned<_NODE>();
    EXPECT_EQ(KTL_XML_GetNodeByPath(oDoc.Root(), &stTooMany, &pstNode), KTL_XML_ERR_BAD_PATH);
    EXPECT_EQ(pstNode, nullptr);

    pstNode = nullptr;
    EXPECT_EQ(KTL_XML_GetNodeByPath(oDoc.Root(), &stPath, &pstNode), 0u);
    EXPECT_EQ(pstNode, oDoc.Root());
}

/*
 * Lookups remember where they last matched under a parent, so that a parser reading its
 * keys in document order does not rescan from the first child; the answer must still be the
 * child a walk from the first child finds (reference_lookup.h). Random documents (repeated,
 * prefixed and almost-equal names among comments and text) are searched in random order
 * from random start nodes.
 */
const char *const g_apcNames[] = {"a", "b", "c", "ab", "a1", "a2", "x:a", "y:a", "x:b", "x:ab", ":a", "ns:c"};
const char *const g_apcComponents[] = {"a", "b", "c", "ab", "a1", "a2", "x:a", "x:b", "y:a", "ns", "abc", ":a"};

void AppendRandomElement(std::mt19937 &oRandom, std::ostringstream &oText, uint32_t uiDepth)
{
    const char *pcName = g_apcNames[oRandom() % std::size(g_apcNames)];
    oText << '<' << pcName << '>';
    /* Above the leaves, half the elements have more children than the library searches
     * without a cursor, so that both ways of searching are checked. */
    const uint32_t uiChildren = uiDepth == 0 ? 0
                                : (uiDepth > 1 && oRandom() % 2 == 0) ? 17 + oRandom() % 24
                                                                        : oRandom() % 14;
    for (uint32_t i = 0; i < uiChildren; ++i) {
        switch (oRandom() % 8) {
        case 0:
            oText << "<!-- c -->";
            break;
        case 1:
            oText << "text";
            break;
        default:
            break;
        }
        AppendRandomElement(oRandom, oText, uiDepth - 1);
    }
    oText << "</" << pcName << '>';
}

void CollectElements(_NODE *pstNode, std::vector<_NODE *> &vecNodes)
{
    vecNodes.push_back(pstNode);
    for (_NODE *pstChild = KTL_XML_GetNodeFirstChild(pstNode); pstChild != nullptr;
         pstChild = KTL_XML_GetNodeNextSibling(pstChild)) {
        CollectElements(pstChild, vecNodes);
    }
}

TEST(KtlXmlPath, EveryLookupFindsTheChildAWalkFromTheFirstChildFinds)
{
    std::mt19937 oRandom(20261121);
    uint64_t ulFound = 0;
    uint64_t ulLookups = 0;
    for (int iDocument = 0; iDocument < 300; ++iDocument) {
        std::ostringstream oText;
        AppendRandomElement(oRandom, oText, 3);
        ParsedDocument oDoc(oText.str().c_str());
        ASSERT_EQ(oDoc.Code(), 0u) << oText.str();
        std::vector<_NODE *> vecNodes;
        CollectElements(oDoc.Root(), vecNodes);

        for (int iLookup = 0; iLookup < 300; ++iLookup) {
            /* mostly a parent: most elements of a tree are leaves */
            _NODE *pstStart = vecNodes[oRandom() % vecNodes.size()];
            for (int iTry = 0; iTry < 8 && KTL_XML_GetNodeFirstChild(pstStart) == nullptr; ++iTry) {
                pstStart = vecNodes[oRandom() % vecNodes.size()];
            }
            /* the start component is mostly the start node's own name, so that paths go on */
            std::vector<std::string> vecComps{oRandom() % 4 != 0
                                                  ? std::string(ElementName(pstStart))
                                                  : g_apcComponents[oRandom() % std::size(g_apcComponents)]};
            /* further components mostly name a real child (whole name or local part), so
             * that lookups meet repeated and prefixed names under one parent */
            const uint32_t uiMore = 1 + oRandom() % 3;
            _NODE *pstAlong = pstStart;
            for (uint32_t i = 0; i < uiMore; ++i) {
                std::vector<_NODE *> vecChildren;
                for (_NODE *pstChild = KTL_XML_GetNodeFirstChild(pstAlong); pstChild != nullptr;
                     pstChild = KTL_XML_GetNodeNextSibling(pstChild)) {
                    vecChildren.push_back(pstChild);
                }
                if (vecChildren.empty() || oRandom() % 8 == 0) {
                    vecComps.push_back(g_apcComponents[oRandom() % std::size(g_apcComponents)]);
                    break;
                }
                pstAlong = vecChildren[oRandom() % vecChildren.size()];
                const std::string strName = ElementName(pstAlong);
                const size_t uiColon = strName.find(':');
                const bool bLocal = uiColon != std::string::npos && uiColon != 0 && oRandom() % 2 == 0;
                vecComps.push_back(bLocal ? strName.substr(uiColon + 1) : strName);
            }
            std::string strPath = vecComps[0];
            for (size_t i = 1; i < vecComps.size(); ++i) {
                strPath += "." + vecComps[i];
            }

            /* The same path split once is looked up too, before or after the text, so that
             * either kind of lookup meets cursors the other one left. */
            _NODE *pstExpected = WalkFromFirstChild(pstStart, vecComps);
            const KTL_XML_PATH stSplit = ktl_xml::CompilePath(strPath.c_str());
            ASSERT_EQ(stSplit.uiSteps, vecComps.size()) << strPath;
            const bool bSplitFirst = oRandom() % 2 == 0;
            for (int iKind = 0; iKind < 2; ++iKind) {
                const bool bSplit = (iKind == 0) == bSplitFirst;
                _NODE *pstFound = Poisoned<_NODE>();
                const uint32_t uiRet = bSplit ? KTL_XML_GetNodeByPath(pstStart, &stSplit, &pstFound)
                                              : KTL_XML_GetNodeByUrl(pstStart, strPath.c_str(), &pstFound);
                ASSERT_EQ(pstFound, pstExpected) << (bSplit ? "split " : "text ") << strPath << " from "
                                                 << ElementName(pstStart) << " in " << oText.str();
                ASSERT_EQ(uiRet, pstExpected != nullptr ? 0u : KTL_XML_ERR_NOT_FOUND) << strPath;
            }
            ++ulLookups;
            ulFound += pstExpected != nullptr ? 1 : 0;
        }
    }
    /* the documents and paths are such that both outcomes are common */
    EXPECT_GT(ulFound, ulLookups / 10);
    EXPECT_LT(ulFound, ulLookups * 9 / 10);
}

/* ---- values -------------------------------------------------------------------------- */

TEST(KtlXmlValue, TextBeforeChildElementIsTheValue)
{
    ParsedDocument oDoc("<a> lead <b>inner</b>tail</a>");
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_STREQ(ValueOf(oDoc.Root()), " lead ");
}

TEST(KtlXmlValue, TextAfterChildElementCountsWhenNoneBefore)
{
    ParsedDocument oDoc("<a><b>inner</b>tail</a>");
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_STREQ(ValueOf(oDoc.Root()), "tail");
}

TEST(KtlXmlValue, WhitespaceOnlyRunIsSkipped)
{
    ParsedDocument oDoc("<a>\r\n\t <b/>  x\n</a>");
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_STREQ(ValueOf(oDoc.Root()), "  x\n");
}

TEST(KtlXmlValue, CdataIsCharacterData)
{
    ParsedDocument oDoc("<r><a><![CDATA[<raw & text>]]></a><b><![CDATA[ \t]]><c/>after</b></r>");
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_STREQ(ValueAt(oDoc.Root(), "r.a"), "<raw & text>");
    EXPECT_STREQ(ValueAt(oDoc.Root(), "r.b"), "after");
}

TEST(KtlXmlValue, TextAfterACommentOrAWhitespaceOnlyCdataIsTheValue)
{
    /* The parser keeps no comment node, so the text after one is the element's first child;
     * a CDATA section is a child of its own and comes first when it holds characters. */
    ParsedDocument oDoc("<r><a><!-- note -->text</a><b><![CDATA[  ]]> t </b><c><![CDATA[cd]]>text</c></r>");
    ASSERT_EQ(oDoc.Code(), 0u);
    EXPECT_STREQ(ValueAt(oDoc.Root(), "r.a"), "text");
    EXPECT_STREQ(ValueAt(oDoc.Root(), "r.b"), " t ");
    EXPECT_STREQ(ValueAt(oDoc.Root(), "r.c"), "cd");
}

TEST(KtlXmlValue, ElementWithoutCharacterDataGivesZeroAndNull)
{
    ParsedDocument oDoc("<r><empty/><spaces>  \n </spaces><parent><c>child text</c></parent></r>");
    ASSERT_EQ(oDoc.Code(), 0u);
    for (const char *pcPath : {"r.empty", "r.spaces", "r.parent"}) {
        char *pcValue = Poisoned<char>();
        EXPECT_EQ(KTL_XML_GetNodeValue(NodeAt(oDoc.Root(), pcPath), nullptr, 0, nullptr, &pcValue),
                  0u);
        EXPECT_EQ(pcValue, nullptr) << pcPath;
    }
}

TEST(KtlXmlValue, NameIsGivenWhenAskedAndUnusedWordIsUntouched)
{
    ParsedDocument oDoc("<ns:r>v</ns:r>");
    ASSERT_EQ(oDoc.Code(), 0u);
    uint32_t uiUnused = 0xA5A5A5A5u;
    char *pcName = nullptr;
    char *pcValue = nullptr;
    ASSERT_EQ(KTL_XML_GetNodeValue(oDoc.Root(), &uiUnused, 0, &pcName, &pcValue), 0u);
    EXPECT_STREQ(pcName, "ns:r");
    EXPECT_STREQ(pcValue, "v");
    EXPECT_EQ(uiUnused, 0xA5A5A5A5u);
}

TEST(KtlXmlValue, NullNodeFailsAndClearsOutPointers)
{
    char *pcName = Poisoned<char>();
    char *pcValue = Poisoned<char>();
    EXPECT_EQ(KTL_XML_GetNodeValue(nullptr, nullptr, 0, &pcName, &pcValue), KTL_XML_ERR_NULL_ARG);
    EXPECT_EQ(pcName, nullptr);
    EXPECT_EQ(pcValue, nullptr);
}

/* ---- attributes ---------------------------------------------------------------------- */

TEST(KtlXmlAttr, PresentEmptyAndMissing)
{
    ParsedDocument oDoc("<r id=\"7\" empty=\"\" x:name=\"n\"/>");
    ASSERT_EQ(oDoc.Code(), 0u);

    char *pcValue = nullptr;
    ASSERT_EQ(KTL_XML_GetAttr(oDoc.Root(), 0, "id", &pcValue), 0u);
    EXPECT_STREQ(pcValue, "7");

    pcValue = nullptr;
    ASSERT_EQ(KTL_XML_GetAttr(oDoc.Root(), 0, "empty", &pcValue), 0u);
    EXPECT_STREQ(pcValue, "");

    for (const char *pcName : {"missing", "ID", "name"}) {
        pcValue = Poisoned<char>();
        EXPECT_EQ(KTL_XML_GetAttr(oDoc.Root(), 0, pcName, &pcValue), KTL_XML_ERR_NOT_FOUND)
            << pcName;
        EXPECT_EQ(pcValue, nullptr);
    }
}

TEST(KtlXmlAttr, DuplicatedAttributeIsAcceptedAndFirstWins)
{
    ParsedDocument oDoc("<r a=\"first\" a=\"second\"/>");
    ASSERT_EQ(oDoc.Code(), 0u);
    char *pcValue = nullptr;
    ASSERT_EQ(KTL_XML_GetAttr(oDoc.Root(), 0, "a", &pcValue), 0u);
    EXPECT_STREQ(pcValue, "first");
}

TEST(KtlXmlAttr, NullArgumentsFail)
{
    ParsedDocument oDoc("<r a=\"1\"/>");
    ASSERT_EQ(oDoc.Code(), 0u);
    char *pcValue = Poisoned<char>();
    EXPECT_EQ(KTL_XML_GetAttr(nullptr, 0, "a", &pcValue), KTL_XML_ERR_NULL_ARG);
    EXPECT_EQ(pcValue, nullptr);
    pcValue = Poisoned<char>();
    EXPECT_EQ(KTL_XML_GetAttr(oDoc.Root(), 0, nullptr, &pcValue), KTL_XML_ERR_NULL_ARG);
    EXPECT_EQ(pcValue, nullptr);
    EXPECT_EQ(KTL_XML_GetAttr(oDoc.Root(), 0, "a", nullptr), KTL_XML_ERR_NULL_ARG);
}

} // namespace

TEST(KtlXmlFaultHook, FailsTheValueReadAfterTheGivenNumberAndDisarms)
{
    _NODE *pstRoot = nullptr;
    ASSERT_EQ(KTL_XML_Parse("<a>x</a>", &pstRoot), 0u);
    char *pcValue = nullptr;
    KTL_XML_FailValueReadsAfter(1);
    EXPECT_EQ(KTL_XML_GetNodeValue(pstRoot, nullptr, 0, nullptr, &pcValue), 0u);
    EXPECT_STREQ(pcValue, "x");
    char *pcName = reinterpret_cast<char *>(1);
    EXPECT_EQ(KTL_XML_GetNodeValue(pstRoot, nullptr, 0, &pcName, &pcValue), KTL_XML_ERR_INJECTED);
    EXPECT_EQ(pcValue, nullptr);
    EXPECT_EQ(pcName, nullptr);
    EXPECT_EQ(KTL_XML_GetNodeValue(pstRoot, nullptr, 0, nullptr, &pcValue), 0u) << "disarmed after firing";
    EXPECT_STREQ(pcValue, "x");
    KTL_XML_FreeNode(pstRoot);
}

TEST(KtlXmlFaultHook, NeverDisarmsAndOtherThreadsAreNotAffected)
{
    _NODE *pstRoot = nullptr;
    ASSERT_EQ(KTL_XML_Parse("<a>x</a>", &pstRoot), 0u);
    KTL_XML_FailValueReadsAfter(0);
    uint32_t uiOtherThread = 1;
    std::thread([&] {
        char *pcValue = nullptr;
        uiOtherThread = KTL_XML_GetNodeValue(pstRoot, nullptr, 0, nullptr, &pcValue);
    }).join();
    EXPECT_EQ(uiOtherThread, 0u);
    KTL_XML_FailValueReadsAfter(KTL_XML_FAIL_NEVER);
    char *pcValue = nullptr;
    EXPECT_EQ(KTL_XML_GetNodeValue(pstRoot, nullptr, 0, nullptr, &pcValue), 0u);
    KTL_XML_FreeNode(pstRoot);
}
