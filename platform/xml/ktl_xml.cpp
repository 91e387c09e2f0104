/*
 * ktl_xml.cpp - the XML document library, a thin adapter over pugixml.
 *
 * KTL_XML_Parse allocates one block: a Document, room for its element array, and a copy of
 * the caller's text, which pugixml parses in place; then one breadth-first walk of
 * pugixml's tree lists every element in an array of _NODE records, so that the element
 * children of any element are contiguous. Each record keeps what readers ask for: the name
 * and its length, where a prefixed name's local part starts, the element's value, its
 * children's place in the array, and pugixml's node for its attributes. Names, values and
 * attribute texts point into the document's copy of the text, so callers may overwrite them
 * in place. Every _NODE handed out is a record of that array; the root is its first record.
 *
 * Why the array: pugixml's accessors are out-of-line calls, and a parser reads dozens of
 * keys under one element, so asking pugixml for names, siblings and values on every lookup
 * cost far more than the parse. The walk asks once per node; lookups and value reads then
 * touch only the records.
 *
 * Dotted-path lookups: parsers read their keys mostly in document order. Each Document
 * keeps a few child cursors (one per recently searched parent) that remember where the last
 * match was and which names occur up to it, so the next lookup under that parent goes on
 * from there; the first matching child is still the one returned (see FindChild). A path
 * comes as text (split and hashed per call) or split beforehand (KTL_XML_PATH, which the
 * parsers build at compile time); both follow the same components the same way.
 *
 * Navigation sees element nodes only. Every walk is a loop: documents may nest deeper
 * than any stack.
 */
#include "ktl_xml.h"
#include "ktl_xml_ext.h"
#include "atrium_test_control.h"
#include "ktl_xml_options.h"

#include <pugixml.hpp>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string>

namespace {
struct Document;
}

/* One element of a parsed document (see the file comment). Trivially copyable: the array
 * grows by copying. */
struct _NODE {
    pugi::xml_node xElement; /* pugixml's element: its attributes are read from there */
    Document *pstDoc;
    char *pcName;
    char *pcValue;          /* first run of character data that is not whitespace only, or null */
    uint32_t uiNameLen;
    uint32_t uiLocalAt;     /* start of the part after the first ':' of a prefixed name; 0: none */
    uint32_t uiNameHash;    /* HashName of the name, and of its local part when prefixed */
    uint32_t uiLocalHash;
    uint32_t uiFirstChild;  /* index of the first element child in the document's array */
    uint32_t uiChildren;    /* element children, contiguous from uiFirstChild */
    bool bLastChild;        /* no element sibling follows (the next record is not a sibling) */
};

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

using ktl_xml::HashName;

/* Enters an element's name under both forms a path component can match (NameMatches): the
 * whole name and, for a prefixed name, its local part. */
void AddName(NameFilter &stFilter, const _NODE &stElement)
{
    stFilter.Add(stElement.uiNameHash);
    if (stElement.uiLocalAt != 0) {
        stFilter.Add(stElement.uiLocalHash);
    }
}

/*
 * Lookups under one parent. pstLast is the child the last forward search matched (null:
 * none yet); stBeforeLast holds the names of every element child before pstLast, stUpToLast
 * those and pstLast's own. stAfter, once bAfterKnown, holds at least the names of every
 * element child after pstLast (a forward search that ran to the end filled it; moving
 * pstLast on only shrinks that set, so it stays a superset).
 */
struct ChildCursor {
    const _NODE *pstParent = nullptr; /* null: unused; the rest is set on first use */
    const _NODE *pstLast;
    NameFilter stBeforeLast;
    NameFilter stUpToLast;
    NameFilter stAfter;
    bool bAfterKnown;

    void Reset(const _NODE *pstNewParent)
    {
        pstParent = pstNewParent;
        pstLast = nullptr;
        stBeforeLast.Clear();
        stUpToLast.Clear();
        stAfter.Clear();
        bAfterKnown = false;
    }
};

/* A parent with no more element children than this is searched from its first child
 * without a cursor: comparing a few hashes costs less than keeping the cursor. */
const uint32_t CHILDREN_SCANNED_WHOLE = 16;

/* Parents a parser alternates between (a group, its media list, its STG group, ...). */
const uint32_t CURSORS_PER_DOCUMENT = 4;

/*
 * Blocks from pugixml's allocation function (the function a program may set for all of
 * pugixml's memory) aligned for the library's records whatever that function returns: the
 * block is taken BLOCK_SLACK bytes larger and used from its first suitably aligned byte;
 * the block's own start is kept to hand back. pugixml asks no more of the function than
 * pointer alignment, and the records may want more (64-bit words on a 32-bit target).
 */
constexpr size_t RECORD_ALIGN = alignof(std::max_align_t);
constexpr size_t BLOCK_SLACK = RECORD_ALIGN - 1;

struct AlignedBlock {
    void *pvBlock;  /* what the allocation function returned, to be handed back */
    char *pcStart;  /* its first byte aligned to RECORD_ALIGN */
};

AlignedBlock AllocateAligned(size_t uiSize)
{
    if (uiSize > SIZE_MAX - BLOCK_SLACK) {
        return AlignedBlock{nullptr, nullptr};
    }
    void *pvBlock = pugi::get_memory_allocation_function()(uiSize + BLOCK_SLACK);
    if (pvBlock == nullptr) {
        return AlignedBlock{nullptr, nullptr};
    }
    void *pvStart = pvBlock;
    size_t uiSpace = uiSize + BLOCK_SLACK;
    return AlignedBlock{pvBlock, static_cast<char *>(std::align(RECORD_ALIGN, uiSize, pvStart, uiSpace))};
}

/* What KTL_XML_Parse allocates, as one block from pugixml's allocation functions (like
 * the rest of the document's memory): the pugixml document and the lookup state of its
 * readers, then room for the element array, then the copy of the text pugixml parses in
 * place. An answer's elements nearly always fit the room the text's length predicts; an
 * array that outgrows it moves to a block of its own. */
struct Document {
    pugi::xml_document xDoc;
    void *const pvBlock;      /* the block holding this document, to hand back */
    _NODE *const pstRoom;
    _NODE *pstElements;
    void *pvMovedElements;    /* the block of an element array that outgrew the room, or null */
    uint32_t uiElements = 0;
    uint32_t uiCapacity;
    ChildCursor astCursors[CURSORS_PER_DOCUMENT];
    uint32_t uiNextCursor = 0;

    Document(void *pvOwnBlock, _NODE *pstRoomInBlock, uint32_t uiRoom)
        : pvBlock(pvOwnBlock), pstRoom(pstRoomInBlock), pstElements(pstRoomInBlock), pvMovedElements(nullptr),
          uiCapacity(uiRoom)
    {
    }
    Document(const Document &) = delete;
    Document &operator=(const Document &) = delete;
    ~Document()
    {
        if (pvMovedElements != nullptr) {
            pugi::get_memory_deallocation_function()(pvMovedElements);
        }
    }
};

/* Where the element room starts in a document's block: the root record is aligned as a
 * block of malloc is. */
constexpr size_t ROOM_OFFSET = (sizeof(Document) + RECORD_ALIGN - 1) / RECORD_ALIGN * RECORD_ALIGN;
static_assert(alignof(Document) <= RECORD_ALIGN && alignof(_NODE) <= RECORD_ALIGN,
              "an aligned block is aligned for both");

/* The cursor of a parent, or a recycled one reset for it. */
ChildCursor &CursorFor(Document &stDoc, const _NODE *pstParent)
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

/* ---- parsing and the element array -------------------------------------------------- */

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

/* Whether a handle holds a node or an attribute (pugixml's accessors: inline when pugixml is
 * compiled in). */
bool Holds(pugi::xml_node xNode)
{
    return !xNode.empty();
}

bool Holds(pugi::xml_attribute xAttr)
{
    return !xAttr.empty();
}

/* pugixml (in fragment mode) accepts several top-level elements and text beside them; an
 * answer must be one document, so the first of them in document order is refused: a second
 * element, or text or CDATA (whitespace-only text is not kept, so it is accepted). 0 when
 * the root stands alone. */
uint32_t TopLevelFault(const pugi::xml_document &xDoc)
{
    uint32_t uiElements = 0;
    for (pugi::xml_node xChild = xDoc.first_child(); xChild; xChild = xChild.next_sibling()) {
        const pugi::xml_node_type eType = xChild.type();
        if (eType == pugi::node_pcdata || eType == pugi::node_cdata) {
            return KTL_XML_ERR_TEXT_OUTSIDE_ROOT;
        }
        if (eType == pugi::node_element && ++uiElements > 1) {
            return KTL_XML_ERR_NOT_WELL_FORMED;
        }
    }
    return 0;
}

bool IsXmlSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

/* True when the text holds a character other than space, tab, CR and LF. (Inline: almost
 * every value is asked about, and almost every one answers at its first character.) */
bool HasNonWhitespace(const char *pcText)
{
    while (IsXmlSpace(*pcText)) {
        ++pcText;
    }
    return *pcText != '\0';
}

/* Room for uiWanted records, moving those already there. False when out of memory. */
bool ReserveElements(Document &stDoc, uint32_t uiWanted)
{
    if (uiWanted <= stDoc.uiCapacity) {
        return true;
    }
    const size_t uiNewCapacity = std::max<size_t>(uiWanted, size_t{stDoc.uiCapacity} * 2);
    if (uiNewCapacity > UINT32_MAX || uiNewCapacity > SIZE_MAX / sizeof(_NODE)) {
        return false;
    }
    const AlignedBlock stBlock = AllocateAligned(uiNewCapacity * sizeof(_NODE));
    if (stBlock.pvBlock == nullptr) {
        return false;
    }
    auto *pstNew = reinterpret_cast<_NODE *>(stBlock.pcStart);
    std::copy_n(stDoc.pstElements, stDoc.uiElements, pstNew);
    if (stDoc.pvMovedElements != nullptr) {
        pugi::get_memory_deallocation_function()(stDoc.pvMovedElements);
    }
    stDoc.pvMovedElements = stBlock.pvBlock;
    stDoc.pstElements = pstNew;
    stDoc.uiCapacity = static_cast<uint32_t>(uiNewCapacity);
    return true;
}

/* Appends pugixml's element xElement, whose name is pcName, as the last child so far of its
 * parent. The parent fills in the links (uiFirstChild, uiChildren) once all its children
 * are in. */
bool AppendElement(Document &stDoc, pugi::xml_node xElement, char *pcName)
{
    if (!ReserveElements(stDoc, stDoc.uiElements + 1)) {
        return false;
    }
    /* The name's length, then its first ':' within it (the C library's scanners, which read
     * several bytes at a time). */
    const size_t uiNameLen = std::strlen(pcName);
    const char *pcColon = static_cast<const char *>(std::memchr(pcName, ':', uiNameLen));
    const uint32_t uiLocalAt =
        (pcColon != nullptr && pcColon != pcName) ? static_cast<uint32_t>(pcColon + 1 - pcName) : 0;
    const uint32_t uiLocalHash = (uiLocalAt != 0) ? HashName(pcName + uiLocalAt, uiNameLen - uiLocalAt) : 0;
    new (&stDoc.pstElements[stDoc.uiElements++])
        _NODE{xElement, &stDoc, pcName, nullptr, static_cast<uint32_t>(uiNameLen), uiLocalAt,
              HashName(pcName, uiNameLen), uiLocalHash, 0, 0, false};
    return true;
}

/* With these options pugixml makes no declaration, processing-instruction, doctype or
 * comment nodes, so a child of an element is an element (named) or text or CDATA (no name):
 * the name the walk needs anyway tells an element apart, without asking for the type. */
static_assert((KTL_XML_PUGIXML_OPTIONS & (pugi::parse_declaration | pugi::parse_pi | pugi::parse_doctype |
                                          pugi::parse_comments)) == 0,
              "only elements have names among the children of an element");

/*
 * Lists every element breadth first: the array itself is the queue. For each element, its
 * children are appended in document order, and its value is found on the way: the text
 * pugixml stored in the element (its first child, when that was text) or else the first
 * text or CDATA child that is not whitespace only. False when out of memory.
 */
bool ListElements(Document &stDoc, pugi::xml_node xRoot)
{
    if (!AppendElement(stDoc, xRoot, const_cast<char *>(xRoot.name()))) {
        return false;
    }
    stDoc.pstElements[0].bLastChild = true;
    for (uint32_t i = 0; i < stDoc.uiElements; ++i) {
        const pugi::xml_node xElement = stDoc.pstElements[i].xElement;
        const uint32_t uiFirstChild = stDoc.uiElements;
        char *pcValue = const_cast<char *>(xElement.value());
        pcValue = HasNonWhitespace(pcValue) ? pcValue : nullptr;
        for (pugi::xml_node xChild = xElement.first_child(); Holds(xChild); xChild = xChild.next_sibling()) {
            char *pcName = const_cast<char *>(xChild.name());
            if (*pcName != '\0') {
                if (!AppendElement(stDoc, xChild, pcName)) {
                    return false;
                }
            } else if (pcValue == nullptr && HasNonWhitespace(xChild.value())) {
                pcValue = const_cast<char *>(xChild.value());
            }
        }
        _NODE &stElement = stDoc.pstElements[i]; /* the array may have moved */
        stElement.pcValue = pcValue;
        stElement.uiFirstChild = uiFirstChild;
        stElement.uiChildren = stDoc.uiElements - uiFirstChild;
        if (stElement.uiChildren != 0) {
            stDoc.pstElements[stDoc.uiElements - 1].bLastChild = true;
        }
    }
    return true;
}

/* Parses the text's copy in place and lists its elements. The copy holds the terminator
 * too and is handed over whole, as pugixml hands over the copy it makes itself, so the parse
 * is the very one of load_buffer; DTD entities stay unexpanded (pugixml never expands or
 * loads them). */
uint32_t LoadCopy(Document &stDoc, char *pcCopy, size_t uiCopyLen)
{
    pugi::xml_parse_result xResult =
        stDoc.xDoc.load_buffer_inplace(pcCopy, uiCopyLen, KTL_XML_PUGIXML_OPTIONS, pugi::encoding_utf8);
    if (xResult.status != pugi::status_ok) {
        return CodeOfParseStatus(xResult.status);
    }
    const pugi::xml_node xRoot = stDoc.xDoc.document_element();
    if (!xRoot) {
        return KTL_XML_ERR_NO_ROOT;
    }
    const uint32_t uiFault = TopLevelFault(stDoc.xDoc);
    if (uiFault != 0) {
        return uiFault;
    }
    return ListElements(stDoc, xRoot) ? 0 : KTL_XML_ERR_NO_MEMORY;
}

void DestroyDocument(Document *pstDoc)
{
    void *pvBlock = pstDoc->pvBlock;
    pstDoc->~Document();
    pugi::get_memory_deallocation_function()(pvBlock);
}

/* ---- lookups ------------------------------------------------------------------------ */

/* A component of a dotted path: its characters and their HashName. */
struct Component {
    const char *pcText;
    size_t uiLen;
    uint32_t uiHash;
};

/* A path component against an element's name: equal, or equal to the part after the first
 * ':' of a prefixed name. The hashes turn most names away before any character is read. */
bool NameMatches(const _NODE &stElement, const Component &stComp)
{
    if (stElement.uiNameHash == stComp.uiHash && stElement.uiNameLen == stComp.uiLen &&
        std::memcmp(stElement.pcName, stComp.pcText, stComp.uiLen) == 0) {
        return true;
    }
    return stElement.uiLocalAt != 0 && stElement.uiLocalHash == stComp.uiHash &&
           stElement.uiNameLen - stElement.uiLocalAt == stComp.uiLen &&
           std::memcmp(stElement.pcName + stElement.uiLocalAt, stComp.pcText, stComp.uiLen) == 0;
}

/*
 * The first element child of stParent whose name matches the component - the very child a
 * walk from the first child finds - found from the parent's cursor. A match before the
 * cursor is possible only when the filter of those names may hold the component; the
 * cursor's own child answers at once when nothing before it can match (a key read twice, or
 * the parent of a run of numbered keys); otherwise the part up to the cursor is searched
 * from the first child. Without a match there the search goes on after the cursor, and a
 * match found there moves the cursor to it. A parent of a few children is simply searched
 * from its first child.
 */
const _NODE *FindChild(const _NODE &stParent, const Component &stComp)
{
    Document &stDoc = *stParent.pstDoc;
    const _NODE *pstFirst = stDoc.pstElements + stParent.uiFirstChild;
    const _NODE *pstEnd = pstFirst + stParent.uiChildren;
    if (stParent.uiChildren <= CHILDREN_SCANNED_WHOLE) {
        for (const _NODE *pstChild = pstFirst; pstChild < pstEnd; ++pstChild) {
            if (NameMatches(*pstChild, stComp)) {
                return pstChild;
            }
        }
        return nullptr;
    }
    ChildCursor &stCursor = CursorFor(stDoc, &stParent);
    const _NODE *pstLast = stCursor.pstLast;
    const uint32_t uiHash = stComp.uiHash;
    if (pstLast != nullptr && stCursor.stUpToLast.MayHold(uiHash)) {
        if (!stCursor.stBeforeLast.MayHold(uiHash) && NameMatches(*pstLast, stComp)) {
            return pstLast;
        }
        for (const _NODE *pstChild = pstFirst; pstChild <= pstLast; ++pstChild) {
            if (NameMatches(*pstChild, stComp)) {
                return pstChild;
            }
        }
    }
    if (stCursor.bAfterKnown && !stCursor.stAfter.MayHold(uiHash)) {
        return nullptr;
    }
    NameFilter stPassed;
    stPassed.Clear();
    for (const _NODE *pstChild = (pstLast != nullptr) ? pstLast + 1 : pstFirst; pstChild < pstEnd; ++pstChild) {
        if (NameMatches(*pstChild, stComp)) {
            stCursor.stBeforeLast = stCursor.stUpToLast;
            stCursor.stBeforeLast.Merge(stPassed);
            stCursor.stUpToLast = stCursor.stBeforeLast;
            AddName(stCursor.stUpToLast, *pstChild);
            stCursor.pstLast = pstChild;
            return pstChild;
        }
        AddName(stPassed, *pstChild);
    }
    stCursor.stAfter = stPassed;
    stCursor.bAfterKnown = true;
    return nullptr;
}

/* One component of a path from pstCurrent: the first names the start node itself, each
 * further one a child. */
const _NODE *FollowComponent(const _NODE &stCurrent, bool bFirst, const Component &stComp)
{
    if (bFirst) {
        return NameMatches(stCurrent, stComp) ? &stCurrent : nullptr;
    }
    return FindChild(stCurrent, stComp);
}

/* What a lookup that ended at pstFound (null: a component did not match) hands back. */
uint32_t Answer(const _NODE *pstFound, _NODE **ppstNode)
{
    if (pstFound == nullptr) {
        return KTL_XML_ERR_NOT_FOUND;
    }
    *ppstNode = const_cast<_NODE *>(pstFound);
    return 0;
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

    /* An element takes at least 4 bytes ("<a/>"); those of answers take about 20, so the
     * room holds one record per 16 bytes of text, and the array moves out when a text
     * holds more. Only the part of the text before its terminator is parsed. */
    const size_t uiTextLen = std::strlen(pcText);
    if (uiTextLen > (SIZE_MAX - ROOM_OFFSET) / 8) { /* the block's size (under 5 bytes per byte) would overflow */
        return KTL_XML_ERR_NO_MEMORY;
    }
    const size_t uiRoom = std::min<size_t>(uiTextLen / 16 + 16, UINT32_MAX);
    const size_t uiCopyAt = ROOM_OFFSET + uiRoom * sizeof(_NODE);
    const AlignedBlock stBlock = AllocateAligned(uiCopyAt + uiTextLen + 1);
    if (stBlock.pvBlock == nullptr) {
        return KTL_XML_ERR_NO_MEMORY;
    }
    char *pcBlock = stBlock.pcStart;
    auto *pstDoc = new (pcBlock) Document(stBlock.pvBlock, reinterpret_cast<_NODE *>(pcBlock + ROOM_OFFSET),
                                          static_cast<uint32_t>(uiRoom));
    std::memcpy(pcBlock + uiCopyAt, pcText, uiTextLen + 1);
    const uint32_t uiRet = LoadCopy(*pstDoc, pcBlock + uiCopyAt, uiTextLen + 1);
    if (uiRet != 0) {
        DestroyDocument(pstDoc);
        return uiRet;
    }

    g_uiLiveDocuments.fetch_add(1, std::memory_order_relaxed);
    *ppstRoot = &pstDoc->pstElements[0];
    return 0;
}

extern "C" void KTL_XML_FreeNode(_NODE *pstRoot)
{
    if (pstRoot == nullptr) {
        return;
    }
    DestroyDocument(pstRoot->pstDoc);
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

    /* Each component is matched as soon as its end is found (strcspn: one pass finds the
     * next dot or the terminator). After a component fails to match, the rest of the path
     * is still checked, so that an empty component is refused whatever the document holds. */
    const _NODE *pstCurrent = pstStart;
    for (const char *pcComp = pcPath;;) {
        const char *pcEnd = pcComp + std::strcspn(pcComp, ".");
        const size_t uiLen = static_cast<size_t>(pcEnd - pcComp);
        if (uiLen == 0) {
            return KTL_XML_ERR_BAD_PATH;
        }
        if (pstCurrent != nullptr) {
            pstCurrent =
                FollowComponent(*pstCurrent, pcComp == pcPath, Component{pcComp, uiLen, HashName(pcComp, uiLen)});
        }
        if (*pcEnd == '\0') {
            break;
        }
        pcComp = pcEnd + 1;
    }
    return Answer(pstCurrent, ppstNode);
}

extern "C" uint32_t KTL_XML_GetNodeByPath(_NODE *pstStart, const KTL_XML_PATH *pstPath, _NODE **ppstNode)
{
    if (ppstNode == nullptr) {
        return KTL_XML_ERR_NULL_ARG;
    }
    *ppstNode = nullptr;
    if (pstStart == nullptr || pstPath == nullptr || pstPath->pcText == nullptr) {
        return KTL_XML_ERR_NULL_ARG;
    }
    if (pstPath->uiSteps == 0 || pstPath->uiSteps > KTL_XML_PATH_STEPS_MAX) {
        return KTL_XML_ERR_BAD_PATH;
    }

    const _NODE *pstCurrent = pstStart;
    for (uint32_t i = 0; i < pstPath->uiSteps && pstCurrent != nullptr; ++i) {
        const KTL_XML_PATH_STEP &stStep = pstPath->astSteps[i];
        pstCurrent =
            FollowComponent(*pstCurrent, i == 0, Component{pstPath->pcText + stStep.usAt, stStep.usLen, stStep.uiHash});
    }
    return Answer(pstCurrent, ppstNode);
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

    if (ppcName != nullptr) {
        *ppcName = pstNode->pcName;
    }
    *ppcValue = pstNode->pcValue;
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

    /* pugixml's own search, one call: the first attribute of that name, as a walk finds. */
    const pugi::xml_attribute xAttr = pstNode->xElement.attribute(pcName);
    if (Holds(xAttr)) {
        *ppcValue = const_cast<char *>(xAttr.value());
        return 0;
    }
    return KTL_XML_ERR_NOT_FOUND;
}

extern "C" _NODE *KTL_XML_GetNodeFirstChild(_NODE *pstNode)
{
    if (pstNode == nullptr || pstNode->uiChildren == 0) {
        return nullptr;
    }
    return pstNode->pstDoc->pstElements + pstNode->uiFirstChild;
}

extern "C" _NODE *KTL_XML_GetNodeNextSibling(_NODE *pstNode)
{
    if (pstNode == nullptr || pstNode->bLastChild) {
        return nullptr;
    }
    return pstNode + 1;
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
    *puiNum = pstNode->uiChildren;
    return 0;
}

extern "C" const char *KTL_XML_CodeText(uint32_t uiCode)
{
    switch (uiCode) {
    case KTL_XML_ERR_NULL_ARG:
        return "a null argument";
    case KTL_XML_ERR_NOT_FOUND:
        return "no such element";
    case KTL_XML_ERR_BAD_PATH:
        return "a bad path";
    case KTL_XML_ERR_NO_MEMORY:
        return "out of memory";
    case KTL_XML_ERR_NO_ROOT:
        return "no root element";
    case KTL_XML_ERR_NOT_WELL_FORMED:
        return "not well-formed XML: more than one root element";
    case KTL_XML_ERR_INJECTED:
        return "a failure injected by a test";
    case KTL_XML_ERR_TEXT_OUTSIDE_ROOT:
        return "not well-formed XML: text outside the root element";
    default:
        break;
    }
    /* The statuses pugixml has; the parse never gives one above the last. */
    constexpr uint32_t STATUSES = pugi::status_no_document_element + 1;
    const uint32_t uiStatus = uiCode - KTL_XML_ERR_PARSE_BASE;
    if (uiCode <= KTL_XML_ERR_PARSE_BASE || uiStatus >= STATUSES) {
        return nullptr;
    }
    /* pugixml's own description of each status, made once into static texts. */
    static const std::array<std::string, STATUSES> s_astrTexts = [] {
        std::array<std::string, STATUSES> astrTexts;
        for (uint32_t i = 0; i < astrTexts.size(); ++i) {
            pugi::xml_parse_result xResult;
            xResult.status = static_cast<pugi::xml_parse_status>(i);
            astrTexts[i] = std::string("not well-formed XML: ") + xResult.description();
        }
        return astrTexts;
    }();
    return s_astrTexts[uiStatus].c_str();
}
