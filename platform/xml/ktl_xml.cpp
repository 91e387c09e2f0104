/*
 * ktl_xml.cpp - the XML document library, a thin adapter over pugixml.
 *
 * KTL_XML_Parse allocates one pugi::xml_document, lets pugixml copy the caller's text into
 * a buffer of its own and parse it there, and hands out the root element. Every _NODE is a
 * pugi::xml_node_struct seen through an opaque pointer; names, values and attribute texts
 * point into pugixml's private buffer, so callers may overwrite them in place.
 *
 * No table maps a root back to its document: the document node struct lives at a fixed
 * offset inside our Document (whose first member is the pugi::xml_document), so
 * KTL_XML_FreeNode walks root element -> document node -> Document by that offset. The
 * offset is measured once and checked on every parse, so a pugixml with another layout
 * makes parsing fail instead of freeing garbage.
 *
 * Dotted-path lookups: parsers read dozens of keys under one element, mostly in document
 * order, and a plain walk from the first child per key made a group of ~50 keys cost
 * several times its parse. Each Document therefore keeps a few child cursors (one per
 * recently searched parent) that remember where the last match was and which names occur
 * up to it, so the next lookup under that parent goes on from there; the first matching
 * child is still the one returned (see FindChild).
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

/* ---- child cursors ------------------------------------------------------------------ */

/* A 256-bit Bloom filter of element names (two bits per name): "no" is certain, "maybe"
 * is checked against the names themselves. */
class NameFilter {
public:
    void Clear() { m_aulBits[0] = m_aulBits[1] = m_aulBits[2] = m_aulBits[3] = 0; }
    void Add(uint32_t uiHash)
    {
        m_aulBits[(uiHash >> 6) & 3] |= 1ull << (uiHash & 63);
        m_aulBits[(uiHash >> 14) & 3] |= 1ull << ((uiHash >> 8) & 63);
    }
    bool MayHold(uint32_t uiHash) const
    {
        return (m_aulBits[(uiHash >> 6) & 3] & (1ull << (uiHash & 63))) != 0 &&
               (m_aulBits[(uiHash >> 14) & 3] & (1ull << ((uiHash >> 8) & 63))) != 0;
    }
    void Merge(const NameFilter &stOther)
    {
        for (int i = 0; i < 4; ++i) {
            m_aulBits[i] |= stOther.m_aulBits[i];
        }
    }

private:
    uint64_t m_aulBits[4]; /* set by Clear before first use (documents are made often) */
};

/* A hash of [pcText, pcText + uiLen) from its length and four of its characters (first,
 * second, middle, last), mixed by MurmurHash3's finaliser: constant time per name, and
 * names that share all five land on the same bits, which only costs a search. */
uint32_t HashName(const char *pcText, size_t uiLen)
{
    uint32_t uiHash = static_cast<uint32_t>(uiLen);
    if (uiLen != 0) {
        const auto Byte = [pcText](size_t i) { return static_cast<uint32_t>(static_cast<unsigned char>(pcText[i])); };
        uiHash ^= Byte(0) << 8 ^ Byte(uiLen > 1 ? 1 : 0) << 16 ^ Byte(uiLen / 2) << 24 ^ Byte(uiLen - 1) * 0x9E3779B1u;
    }
    uiHash ^= uiHash >> 16;
    uiHash *= 0x85EBCA6Bu;
    uiHash ^= uiHash >> 13;
    uiHash *= 0xC2B2AE35u;
    uiHash ^= uiHash >> 16;
    return uiHash;
}

/* Enters an element name of uiLen characters, whose whole-name hash is uiHash, under both
 * forms a path component can match (NameMatches): the whole name and, for a prefixed name,
 * the part after its first ':'. */
void AddName(NameFilter &stFilter, const char *pcName, size_t uiLen, uint32_t uiHash)
{
    stFilter.Add(uiHash);
    const char *pcColon = static_cast<const char *>(std::memchr(pcName, ':', uiLen));
    if (pcColon != nullptr && pcColon != pcName) {
        stFilter.Add(HashName(pcColon + 1, uiLen - static_cast<size_t>(pcColon + 1 - pcName)));
    }
}

void AddName(NameFilter &stFilter, const char *pcName)
{
    const size_t uiLen = std::strlen(pcName);
    AddName(stFilter, pcName, uiLen, HashName(pcName, uiLen));
}

/*
 * Lookups under one parent. pstLast is the child the last forward search matched (null:
 * none yet); stBeforeLast holds the names of every element child before pstLast, stUpToLast
 * those and pstLast's own. stAfter, once bAfterKnown, holds at least the names of every
 * element child after pstLast (a forward search that ran to the end filled it; moving
 * pstLast on only shrinks that set, so it stays a superset).
 */
struct ChildCursor {
    pugi::xml_node_struct *pstParent = nullptr; /* null: unused; the rest is set on first use */
    pugi::xml_node_struct *pstLast;
    NameFilter stBeforeLast;
    NameFilter stUpToLast;
    NameFilter stAfter;
    bool bAfterKnown;

    void Reset(pugi::xml_node_struct *pstNewParent)
    {
        pstParent = pstNewParent;
        pstLast = nullptr;
        stBeforeLast.Clear();
        stUpToLast.Clear();
        stAfter.Clear();
        bAfterKnown = false;
    }
};

/* Parents a parser alternates between (a group, its media list, its STG group, ...). */
const uint32_t CURSORS_PER_DOCUMENT = 4;

/* What KTL_XML_Parse allocates: the pugixml document and the lookup state of its readers. */
struct Document {
    pugi::xml_document xDoc; /* first member: see DocumentOfNode */
    ChildCursor astCursors[CURSORS_PER_DOCUMENT];
    uint32_t uiNextCursor = 0;
};

/* Offset of the document node struct inside a Document. */
std::ptrdiff_t DocumentNodeOffsetOf(const Document &stDoc)
{
    return reinterpret_cast<const char *>(stDoc.xDoc.internal_object()) -
           reinterpret_cast<const char *>(&stDoc);
}

std::ptrdiff_t ExpectedDocumentNodeOffset()
{
    static const std::ptrdiff_t s_iOffset = [] {
        Document stProbe;
        return DocumentNodeOffsetOf(stProbe);
    }();
    return s_iOffset;
}

/* The Document of any node (pugixml finds a node's document node without walking up). */
Document *DocumentOfNode(pugi::xml_node xNode)
{
    char *pcDocNode = reinterpret_cast<char *>(xNode.root().internal_object());
    return reinterpret_cast<Document *>(pcDocNode - ExpectedDocumentNodeOffset());
}

Document *DocumentOfRoot(_NODE *pstRoot)
{
    return DocumentOfNode(FromNode(pstRoot));
}

/* The cursor of a parent, or a recycled one reset for it. */
ChildCursor &CursorFor(Document &stDoc, pugi::xml_node_struct *pstParent)
{
    for (ChildCursor &stCursor : stDoc.astCursors) {
        if (stCursor.pstParent == pstParent) {
            return stCursor;
        }
    }
    ChildCursor &stCursor = stDoc.astCursors[stDoc.uiNextCursor];
    stDoc.uiNextCursor = (stDoc.uiNextCursor + 1) % CURSORS_PER_DOCUMENT;
    stCursor.Reset(pstParent);
    return stCursor;
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

/* A path of uiLen characters is well formed when it is not empty and no component is
 * empty: it neither starts nor ends with '.', and no '.' follows another. (The dots are
 * found with memchr: every key's path is checked before its lookup.) */
bool IsWellFormedPath(const char *pcPath, size_t uiLen)
{
    if (uiLen == 0 || pcPath[0] == '.' || pcPath[uiLen - 1] == '.') {
        return false;
    }
    const char *pcEnd = pcPath + uiLen;
    for (const char *pcDot = static_cast<const char *>(std::memchr(pcPath, '.', uiLen)); pcDot != nullptr;
         pcDot = static_cast<const char *>(std::memchr(pcDot + 1, '.', static_cast<size_t>(pcEnd - pcDot - 1)))) {
        if (pcDot[1] == '.') {
            return false;
        }
    }
    return true;
}

/* Characters of the component at pcComp, up to the next '.' or pcEnd. */
size_t ComponentLength(const char *pcComp, const char *pcEnd)
{
    const void *pvDot = std::memchr(pcComp, '.', static_cast<size_t>(pcEnd - pcComp));
    return static_cast<size_t>((pvDot != nullptr ? static_cast<const char *>(pvDot) : pcEnd) - pcComp);
}

pugi::xml_node FirstElementFrom(pugi::xml_node xNode)
{
    while (xNode && !IsElement(xNode)) {
        xNode = xNode.next_sibling();
    }
    return xNode;
}

/* The first element child of xParent up to and including xLast that matches, or none. */
pugi::xml_node FirstMatchUpTo(pugi::xml_node xParent, pugi::xml_node xLast, const char *pcComp, size_t uiLen)
{
    for (pugi::xml_node xChild = FirstElementFrom(xParent.first_child()); xChild;
         xChild = FirstElementFrom(xChild.next_sibling())) {
        if (NameMatches(xChild.name(), pcComp, uiLen)) {
            return xChild;
        }
        if (xChild == xLast) {
            break;
        }
    }
    return pugi::xml_node();
}

/*
 * The first element child of xParent whose name matches the component - the very child a
 * walk from the first child finds - found from the parent's cursor. A match before the
 * cursor is possible only when the filter of those names may hold the component; the
 * cursor's own child answers at once when nothing before it can match (a key read twice, or
 * the parent of a run of numbered keys); otherwise the part up to the cursor is searched
 * from the first child. Without a match there the search goes on after the cursor, and a
 * match found there moves the cursor to it.
 */
pugi::xml_node FindChild(Document &stDoc, pugi::xml_node xParent, const char *pcComp, size_t uiLen)
{
    ChildCursor &stCursor = CursorFor(stDoc, xParent.internal_object());
    const pugi::xml_node xLast(stCursor.pstLast);
    const uint32_t uiHash = HashName(pcComp, uiLen);
    if (stCursor.pstLast != nullptr && stCursor.stUpToLast.MayHold(uiHash)) {
        if (!stCursor.stBeforeLast.MayHold(uiHash) && NameMatches(xLast.name(), pcComp, uiLen)) {
            return xLast;
        }
        const pugi::xml_node xEarlier = FirstMatchUpTo(xParent, xLast, pcComp, uiLen);
        if (xEarlier) {
            return xEarlier;
        }
    }
    if (stCursor.bAfterKnown && !stCursor.stAfter.MayHold(uiHash)) {
        return pugi::xml_node();
    }
    NameFilter stPassed;
    stPassed.Clear();
    const pugi::xml_node xFrom = (stCursor.pstLast != nullptr) ? xLast.next_sibling() : xParent.first_child();
    for (pugi::xml_node xChild = FirstElementFrom(xFrom); xChild; xChild = FirstElementFrom(xChild.next_sibling())) {
        const char *pcName = xChild.name();
        if (NameMatches(pcName, pcComp, uiLen)) {
            stCursor.stBeforeLast = stCursor.stUpToLast;
            stCursor.stBeforeLast.Merge(stPassed);
            stCursor.stUpToLast = stCursor.stBeforeLast;
            /* usually the name is the component itself, whose hash is known */
            if (pcName[uiLen] == '\0' && std::memcmp(pcName, pcComp, uiLen) == 0) {
                AddName(stCursor.stUpToLast, pcName, uiLen, uiHash);
            } else {
                AddName(stCursor.stUpToLast, pcName);
            }
            stCursor.pstLast = xChild.internal_object();
            return xChild;
        }
        AddName(stPassed, pcName);
    }
    stCursor.stAfter = stPassed;
    stCursor.bAfterKnown = true;
    return pugi::xml_node();
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

    Document *pstDoc = new (std::nothrow) Document;
    if (pstDoc == nullptr) {
        return KTL_XML_ERR_NO_MEMORY;
    }
    if (DocumentNodeOffsetOf(*pstDoc) != ExpectedDocumentNodeOffset()) {
        delete pstDoc;
        return CodeOfParseStatus(pugi::status_internal_error);
    }
    uint32_t uiRet = LoadText(&pstDoc->xDoc, pcText);
    if (uiRet != 0) {
        delete pstDoc;
        return uiRet;
    }

    g_uiLiveDocuments.fetch_add(1, std::memory_order_relaxed);
    *ppstRoot = ToNode(pstDoc->xDoc.document_element());
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
    const size_t uiPathLen = std::strlen(pcPath);
    if (!IsWellFormedPath(pcPath, uiPathLen)) {
        return KTL_XML_ERR_BAD_PATH;
    }

    pugi::xml_node xCurrent = FromNode(pstStart);
    const char *pcEnd = pcPath + uiPathLen;
    const char *pcComp = pcPath;
    size_t uiLen = ComponentLength(pcComp, pcEnd);
    if (!NameMatches(xCurrent.name(), pcComp, uiLen)) {
        return KTL_XML_ERR_NOT_FOUND;
    }
    Document *pstDoc = (pcComp + uiLen != pcEnd) ? DocumentOfNode(xCurrent) : nullptr;
    while (pcComp + uiLen != pcEnd) {
        pcComp += uiLen + 1;
        uiLen = ComponentLength(pcComp, pcEnd);
        xCurrent = FindChild(*pstDoc, xCurrent, pcComp, uiLen);
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
