/*
 * ktl_xml.cpp - the XML document library, a thin adapter over pugixml.
 *
 * KTL_XML_Parse allocates one pugi::xml_document, lets pugixml copy the caller's text into
 * a buffer of its own and parse it there, and hands out the root element. Every _NODE is a
 * pugi::xml_node_struct seen through an opaque pointer; names, values and attribute texts
 * point into pugixml's private buffer, so callers may overwrite them in place.
 *
 * No table maps a root back to its document: the document node struct lives at a fixed
 * offset inside pugi::xml_document, so KTL_XML_FreeNode walks root element -> document
 * node -> xml_document by that offset. The offset is measured once and checked on every
 * parse, so a pugixml with another layout makes parsing fail instead of freeing garbage.
 *
 * Navigation sees element nodes only. Every walk is a loop: documents may nest deeper
 * than any stack.
 */
#include "ktl_xml.h"

#include <pugixml.hpp>

#include <atomic>
#include <cstddef>
#include <cstring>
#include <new>

namespace {

std::atomic<uint32_t> g_uiLiveDocuments{0};

/* Value reads this thread may still make before the injected failure. */
thread_local uint32_t t_uiValueReadsBeforeFailure = KTL_XML_FAIL_NEVER;

/* True when the injected failure fires for this call (and disarms the thread). */
bool InjectedValueReadFailure()
{
    const uint32_t uiLeft = t_uiValueReadsBeforeFailure;
    if (uiLeft == KTL_XML_FAIL_NEVER) {
        return false;
    }
    t_uiValueReadsBeforeFailure = (uiLeft == 0) ? KTL_XML_FAIL_NEVER : uiLeft - 1;
    return uiLeft == 0;
}

_NODE *ToNode(pugi::xml_node xNode)
{
    return reinterpret_cast<_NODE *>(xNode.internal_object());
}

pugi::xml_node FromNode(_NODE *pstNode)
{
    return pugi::xml_node(reinterpret_cast<pugi::xml_node_struct *>(pstNode));
}

bool IsElement(pugi::xml_node xNode)
{
    return xNode.type() == pugi::node_element;
}

/* Offset of the document node struct inside a pugi::xml_document. */
std::ptrdiff_t DocumentNodeOffsetOf(const pugi::xml_document &xDoc)
{
    return reinterpret_cast<const char *>(xDoc.internal_object()) -
           reinterpret_cast<const char *>(&xDoc);
}

std::ptrdiff_t ExpectedDocumentNodeOffset()
{
    static const std::ptrdiff_t s_iOffset = [] {
        pugi::xml_document xProbe;
        return DocumentNodeOffsetOf(xProbe);
    }();
    return s_iOffset;
}

pugi::xml_document *DocumentOfRoot(_NODE *pstRoot)
{
    char *pcDocNode = reinterpret_cast<char *>(FromNode(pstRoot).root().internal_object());
    return reinterpret_cast<pugi::xml_document *>(pcDocNode - ExpectedDocumentNodeOffset());
}

uint32_t CodeOfParseStatus(pugi::xml_parse_status eStatus)
{
    switch (eStatus) {
    case pugi::status_out_of_memory:
        return KTL_XML_ERR_NO_MEMORY;
    case pugi::status_no_document_element:
        return KTL_XML_ERR_NO_ROOT;
    default:
        return KTL_XML_ERR_PARSE_BASE + static_cast<uint32_t>(eStatus);
    }
}

/* pugixml accepts several top-level elements; an answer must be one document, so a second
 * root element is refused. (Character data beside the root is dropped by pugixml itself and
 * never reaches a caller.) */
bool HasSingleRootElement(const pugi::xml_document &xDoc)
{
    uint32_t uiElements = 0;
    for (pugi::xml_node xChild = xDoc.first_child(); xChild; xChild = xChild.next_sibling()) {
        uiElements += IsElement(xChild) ? 1 : 0;
    }
    return uiElements == 1;
}

/* pugixml keeps the private copy and parses it in place; only the part of the text
 * before its terminator is handed over, and DTD entities stay unexpanded (pugixml never
 * expands or loads them). */
uint32_t LoadText(pugi::xml_document *pxDoc, const char *pcText)
{
    pugi::xml_parse_result xResult = pxDoc->load_buffer(pcText, std::strlen(pcText),
                                                        pugi::parse_default,
                                                        pugi::encoding_utf8);
    if (xResult.status != pugi::status_ok) {
        return CodeOfParseStatus(xResult.status);
    }
    if (!pxDoc->document_element()) {
        return KTL_XML_ERR_NO_ROOT;
    }
    if (!HasSingleRootElement(*pxDoc)) {
        return KTL_XML_ERR_NOT_WELL_FORMED;
    }
    return 0;
}

/* True when the text holds a character other than space, tab, CR and LF. */
bool HasNonWhitespace(const char *pcText)
{
    return pcText[std::strspn(pcText, " \t\r\n")] != '\0';
}

bool IsCharacterData(pugi::xml_node xNode)
{
    return xNode.type() == pugi::node_pcdata || xNode.type() == pugi::node_cdata;
}

/* Path component [pcComp, pcComp + uiLen) against an element name: equal, or equal to the
 * part after the first ':' of a prefixed name. */
bool NameMatches(const char *pcName, const char *pcComp, size_t uiLen)
{
    if (std::strncmp(pcName, pcComp, uiLen) == 0 && pcName[uiLen] == '\0') {
        return true;
    }
    const char *pcColon = std::strchr(pcName, ':');
    if (pcColon == nullptr || pcColon == pcName) {
        return false;
    }
    const char *pcLocal = pcColon + 1;
    return std::strncmp(pcLocal, pcComp, uiLen) == 0 && pcLocal[uiLen] == '\0';
}

/* A path is well formed when it is not empty and no component is empty. */
bool IsWellFormedPath(const char *pcPath)
{
    if (*pcPath == '\0' || *pcPath == '.') {
        return false;
    }
    for (const char *pc = pcPath; *pc != '\0'; ++pc) {
        if (*pc == '.' && (pc[1] == '.' || pc[1] == '\0')) {
            return false;
        }
    }
    return true;
}

size_t ComponentLength(const char *pcComp)
{
    return std::strcspn(pcComp, ".");
}

pugi::xml_node FirstMatchingChild(pugi::xml_node xParent, const char *pcComp, size_t uiLen)
{
    for (pugi::xml_node xChild = xParent.first_child(); xChild; xChild = xChild.next_sibling()) {
        if (IsElement(xChild) && NameMatches(xChild.name(), pcComp, uiLen)) {
            return xChild;
        }
    }
    return pugi::xml_node();
}

pugi::xml_node FirstElementFrom(pugi::xml_node xNode)
{
    while (xNode && !IsElement(xNode)) {
        xNode = xNode.next_sibling();
    }
    return xNode;
}

} // namespace

extern "C" uint32_t KTL_XML_Parse(const char *pcText, _NODE **ppstRoot)
{
    if (ppstRoot == nullptr) {
        return KTL_XML_ERR_NULL_ARG;
    }
    *ppstRoot = nullptr;
    if (pcText == nullptr) {
        return KTL_XML_ERR_NULL_ARG;
    }

    pugi::xml_document *pxDoc = new (std::nothrow) pugi::xml_document;
    if (pxDoc == nullptr) {
        return KTL_XML_ERR_NO_MEMORY;
    }
    if (DocumentNodeOffsetOf(*pxDoc) != ExpectedDocumentNodeOffset()) {
        delete pxDoc;
        return CodeOfParseStatus(pugi::status_internal_error);
    }
    uint32_t uiRet = LoadText(pxDoc, pcText);
    if (uiRet != 0) {
        delete pxDoc;
        return uiRet;
    }

    g_uiLiveDocuments.fetch_add(1, std::memory_order_relaxed);
    *ppstRoot = ToNode(pxDoc->document_element());
    return 0;
}

extern "C" void KTL_XML_FreeNode(_NODE *pstRoot)
{
    if (pstRoot == nullptr) {
        return;
    }
    delete DocumentOfRoot(pstRoot);
    g_uiLiveDocuments.fetch_sub(1, std::memory_order_relaxed);
}

extern "C" uint32_t KTL_XML_LiveDocuments(void)
{
    return g_uiLiveDocuments.load(std::memory_order_relaxed);
}

extern "C" void KTL_XML_FailValueReadsAfter(uint32_t uiSucceed)
{
    t_uiValueReadsBeforeFailure = uiSucceed;
}

extern "C" uint32_t KTL_XML_GetNodeByUrl(_NODE *pstStart, const char *pcPath, _NODE **ppstNode)
{
    if (ppstNode == nullptr) {
        return KTL_XML_ERR_NULL_ARG;
    }
    *ppstNode = nullptr;
    if (pstStart == nullptr || pcPath == nullptr) {
        return KTL_XML_ERR_NULL_ARG;
    }
    if (!IsWellFormedPath(pcPath)) {
        return KTL_XML_ERR_BAD_PATH;
    }

    pugi::xml_node xCurrent = FromNode(pstStart);
    const char *pcComp = pcPath;
    size_t uiLen = ComponentLength(pcComp);
    if (!NameMatches(xCurrent.name(), pcComp, uiLen)) {
        return KTL_XML_ERR_NOT_FOUND;
    }
    while (pcComp[uiLen] == '.') {
        pcComp += uiLen + 1;
        uiLen = ComponentLength(pcComp);
        xCurrent = FirstMatchingChild(xCurrent, pcComp, uiLen);
        if (!xCurrent) {
            return KTL_XML_ERR_NOT_FOUND;
        }
    }

    *ppstNode = ToNode(xCurrent);
    return 0;
}

extern "C" uint32_t KTL_XML_GetNodeValue(_NODE *pstNode, uint32_t *puiUnused, uint32_t uiZero,
                                         char **ppcName, char **ppcValue)
{
    (void)puiUnused;
    (void)uiZero;
    if (ppcName != nullptr) {
        *ppcName = nullptr;
    }
    if (ppcValue != nullptr) {
        *ppcValue = nullptr;
    }
    if (pstNode == nullptr || ppcValue == nullptr) {
        return KTL_XML_ERR_NULL_ARG;
    }
    if (InjectedValueReadFailure()) {
        return KTL_XML_ERR_INJECTED;
    }

    pugi::xml_node xNode = FromNode(pstNode);
    if (ppcName != nullptr) {
        /* Names point into the document's private, writable buffer. */
        *ppcName = const_cast<char *>(xNode.name());
    }
    for (pugi::xml_node xChild = xNode.first_child(); xChild; xChild = xChild.next_sibling()) {
        if (IsCharacterData(xChild) && HasNonWhitespace(xChild.value())) {
            *ppcValue = const_cast<char *>(xChild.value());
            break;
        }
    }
    return 0;
}

extern "C" uint32_t KTL_XML_GetAttr(_NODE *pstNode, uint32_t uiZero, const char *pcName,
                                    char **ppcValue)
{
    (void)uiZero;
    if (ppcValue == nullptr) {
        return KTL_XML_ERR_NULL_ARG;
    }
    *ppcValue = nullptr;
    if (pstNode == nullptr || pcName == nullptr) {
        return KTL_XML_ERR_NULL_ARG;
    }

    for (pugi::xml_attribute xAttr = FromNode(pstNode).first_attribute(); xAttr;
         xAttr = xAttr.next_attribute()) {
        if (std::strcmp(xAttr.name(), pcName) == 0) {
            *ppcValue = const_cast<char *>(xAttr.value());
            return 0;
        }
    }
    return KTL_XML_ERR_NOT_FOUND;
}

extern "C" _NODE *KTL_XML_GetNodeFirstChild(_NODE *pstNode)
{
    if (pstNode == nullptr) {
        return nullptr;
    }
    return ToNode(FirstElementFrom(FromNode(pstNode).first_child()));
}

extern "C" _NODE *KTL_XML_GetNodeNextSibling(_NODE *pstNode)
{
    if (pstNode == nullptr) {
        return nullptr;
    }
    return ToNode(FirstElementFrom(FromNode(pstNode).next_sibling()));
}

extern "C" uint32_t KTL_XML_GetNodeChildNum(_NODE *pstNode, uint32_t *puiNum)
{
    if (puiNum == nullptr) {
        return KTL_XML_ERR_NULL_ARG;
    }
    *puiNum = 0;
    if (pstNode == nullptr) {
        return KTL_XML_ERR_NULL_ARG;
    }

    uint32_t uiCount = 0;
    for (pugi::xml_node xChild = FromNode(pstNode).first_child(); xChild;
         xChild = xChild.next_sibling()) {
        if (IsElement(xChild)) {
            ++uiCount;
        }
    }
    *puiNum = uiCount;
    return 0;
}
