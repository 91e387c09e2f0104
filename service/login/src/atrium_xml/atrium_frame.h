/*
 * atrium_frame.h - the parse frame every parser of the module follows (module-private).
 *
 * A parser checks its arguments, parses the body into a document, looks each wanted value
 * up by dotted path with the shared per-key step, copies it with a bounded routine or
 * converts it, traces every miss, releases the document and returns a result code. This
 * header gives that skeleton its pieces: the one trace macro family, the document's owner,
 * the per-key step, one key row with its builders and the loop that reads a table of them,
 * a range over an element's children, and the module's memory macros.
 *
 * Traces of a shared step carry the call site of the parser that invoked it (function,
 * file, line), so a table-driven parser traces exactly as if it had the code inline.
 */
#ifndef ATRIUM_FRAME_H
#define ATRIUM_FRAME_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "atrium_xml.h"
#include "ktl_xml_ext.h"
#include "qev_bounded.h"

/* ---- traces -------------------------------------------------------------------------- */

/* The calling site of a trace: function as declared, source path, line. */
struct AtriumCallSite {
    const char *pcFunc;
    const char *pcFile;
    uint32_t uiLine;
};

#define ATRIUM_HERE (AtriumCallSite{__func__, __FILE__, static_cast<uint32_t>(__LINE__)})

/* The module's trace macros: module "", this function, file and line ... */
#define ATRIUM_TRACE(uiLevel, ...) \
    LoginTraceCB("", (uiLevel), __func__, __FILE__, static_cast<uint32_t>(__LINE__), __VA_ARGS__)

/* ... or on behalf of a call site (used by shared steps). */
#define ATRIUM_TRACE_AT(stSite, uiLevel, ...) \
    LoginTraceCB("", (uiLevel), (stSite).pcFunc, (stSite).pcFile, (stSite).uiLine, __VA_ARGS__)

/* ---- the document ------------------------------------------------------------------ */

/*
 * Owns a parsed answer and releases it on every way out of the parser. A few answers
 * leave their document unreleased on purpose at one exit (the login service is built
 * against those exits as they are): they say so at that exit with KeepUnreleased().
 */
class AtriumDocument {
public:
    AtriumDocument() = default;
    ~AtriumDocument()
    {
        if (!m_bKeepUnreleased) {
            KTL_XML_FreeNode(m_pstRoot);
        }
    }
    AtriumDocument(const AtriumDocument &) = delete;
    AtriumDocument &operator=(const AtriumDocument &) = delete;

    _NODE *Root() const { return m_pstRoot; }
    _NODE **RootSlot() { return &m_pstRoot; }
    void KeepUnreleased() { m_bKeepUnreleased = true; }

private:
    _NODE *m_pstRoot = nullptr;
    bool m_bKeepUnreleased = false;
};

/*
 * How a parser opens its answer: the argument check and the parse, each with the parser's
 * own level-0 message (the texts differ from parser to parser on purpose).
 */
struct AtriumOpening {
    const char *pcNullMessage;  /* traced when the body or the record is null; null: silent */
    const char *pcParseFormat;  /* traced with the library's code when the body is not XML */
    uint32_t uiParseFailure;    /* result for text that is not XML; ATRIUM_PARSE_CODE: the
                                   library's own code */
};

const uint32_t ATRIUM_PARSE_CODE = 0;

/* Parses pcBody into *ppstRoot. Returns 0, or (after tracing pcParseFormat with the
 * library's code) uiParseFailure for text that is not XML. */
uint32_t AtriumParseAnswer(const char *pcBody, const char *pcParseFormat, uint32_t uiParseFailure,
                           _NODE **ppstRoot, const AtriumCallSite &stSite);

/* Argument check of body and record (2 for a null one), then AtriumParseAnswer. */
uint32_t AtriumOpenAnswer(const char *pcBody, const void *pvRecord, const AtriumOpening &stOpening,
                          AtriumDocument &stDocument, const AtriumCallSite &stSite);

/* ---- dotted paths and the per-key step --------------------------------------------- */

/*
 * A key's dotted path, split and hashed by the compiler: every document is read with the
 * same few hundred paths, so the per-key step never splits or hashes their text. Key tables
 * are constexpr (a path that cannot be split stops the build); a call site names its path
 * with ATRIUM_PATH("a.b").
 */
struct AtriumPath {
    KTL_XML_PATH stSplit;

    constexpr AtriumPath() : stSplit{} {}
    /* A JSON member's row has no path: null gives the empty split. */
    constexpr AtriumPath(const char *pcText) : stSplit(pcText != nullptr ? ktl_xml::CompilePath(pcText) : KTL_XML_PATH{})
    {
    }
    const char *Text() const { return stSplit.pcText; }
};

#define ATRIUM_PATH(pcLiteral) \
    ([]() -> const AtriumPath & { static constexpr AtriumPath s_stPath(pcLiteral); return s_stPath; }())

/*
 * The lookup under the per-key step, for the few elements an answer may or may not carry
 * whose absence is not a miss (a block, a wrapper): no trace. The element at stPath goes
 * to *ppstNode (null when not found, whatever the code). Returns the library's code.
 */
uint32_t AtriumLookUp(_NODE *pstStart, const AtriumPath &stPath, _NODE **ppstNode);

/*
 * The shared per-key step. Looks stPath up from pstStart and reads the found element's
 * value: *ppstNode and *ppcValue are reset first, a lookup failure traces level 1
 * "KTL_XML_GetNodeByUrl %s failed=0x%x", a value failure level 1
 * "KTL_XML_GetNodeValue %s failed=0x%x", both with the path's text on the caller's line.
 * Returns the last library code. The key is present only when *ppcValue is not null.
 */
uint32_t AtriumGetNodeValueByUri(_NODE *pstStart, const AtriumPath &stPath, _NODE **ppstNode, char **ppcValue,
                                 const AtriumCallSite &stSite);
/* A path given as text would be split on every call: name it with ATRIUM_PATH instead (the
 * same holds for AtriumFindElement below). */
uint32_t AtriumGetNodeValueByUri(_NODE *pstStart, const char *pcPath, _NODE **ppstNode, char **ppcValue,
                                 const AtriumCallSite &stSite) = delete;

/* The per-key step when only the element matters (its value is read and a failure traced,
 * but not kept): the element at stPath, or null. */
_NODE *AtriumFindElement(_NODE *pstStart, const AtriumPath &stPath, const AtriumCallSite &stSite);
_NODE *AtriumFindElement(_NODE *pstStart, const char *pcPath, const AtriumCallSite &stSite) = delete;

#define XML_D_GET_NODEVALUE_BYURI(pstStart, pcLiteral, ppstNode, ppcValue) \
    AtriumGetNodeValueByUri((pstStart), ATRIUM_PATH(pcLiteral), (ppstNode), (ppcValue), ATRIUM_HERE)

/* An attribute's text when the element has it (possibly ""), else null. The text lives in
 * the document's writable memory. */
char *AtriumAttr(_NODE *pstNode, const char *pcName);

/* ---- children ------------------------------------------------------------------------ */

/* The element children of an element, first to last: for (_NODE *p : AtriumChildren(e)). */
class AtriumChildren {
public:
    class Iterator {
    public:
        explicit Iterator(_NODE *pstNode) : m_pstNode(pstNode) {}
        _NODE *operator*() const { return m_pstNode; }
        Iterator &operator++()
        {
            m_pstNode = KTL_XML_GetNodeNextSibling(m_pstNode);
            return *this;
        }
        bool operator!=(const Iterator &stOther) const { return m_pstNode != stOther.m_pstNode; }

    private:
        _NODE *m_pstNode;
    };

    explicit AtriumChildren(_NODE *pstParent) : m_pstParent(pstParent) {}
    Iterator begin() const { return Iterator(KTL_XML_GetNodeFirstChild(m_pstParent)); }
    Iterator end() const { return Iterator(nullptr); }

private:
    _NODE *m_pstParent;
};

/* ---- key rows ------------------------------------------------------------------------ */

/* Where a key's value is. */
enum class AtriumSource : uint8_t {
    Value,         /* the element's value, read by the per-key step */
    Attribute,     /* an attribute of the element, when not empty */
    AnyAttribute,  /* an attribute of the element, empty included */
    JsonMember,    /* a member of a JSON object (the JSON services) */
};

/* How a present value is stored. */
enum class AtriumStore : uint8_t {
    Text,         /* qev_strcpy_s into a char field of uiCapacity bytes */
    CountedText,  /* qev_strncpy_s with the value's length + 1 */
    Address,      /* XmlAtriumGetIpFromDomain into the field; its result is not looked at */
    Strtoul,      /* uint32_t = KOSA_Strtoul(value, null, 0) */
    StrToInt32,   /* int32_t via KOSA_StrToInt32 (result ignored) */
    YesFlag,      /* uint32_t = 1 when the value is exactly "YES"; otherwise untouched */
    TrueFlag,     /* uint32_t = 1 when the value is exactly "true"; otherwise untouched */
    ZeroFlag,     /* uint32_t = 1 when KOSA_Strtoul(value) is 0, else 0 */
    PresentFlag,  /* uint32_t = 1 (the value itself is not kept) */
    JsonNumber,   /* uint32_t = the member as an unsigned number */
    JsonBoolean,  /* uint32_t = 1 or 0, the member as a boolean */
};

/*
 * One key: where its value is, the record field it fills, and what its absence costs. A
 * value key is missing when its element has no value; an attribute key when its element is
 * not there (an element without the attribute leaves the field alone, silently). Rows are
 * made with the builders below and adjusted with the modifiers, one line per key.
 */
struct AtriumKey {
    AtriumPath stPath;            /* dotted path from the start node (XML) */
    const char *pcName;           /* the attribute, or the JSON member */
    AtriumSource eSource;
    AtriumStore eStore;
    uint32_t uiOffset;            /* field offset in the record */
    uint32_t uiCapacity;          /* field capacity */
    bool bRequired;               /* a miss stops the table with result 1 */
    const char *pcMissMessage;    /* traced when missing (null: the per-key traces only) */
    uint32_t uiMissLevel;
    const char *pcPresentMessage; /* traced at level 2 before a present value is stored */
    const char *pcAfterFormat;    /* level-2 trace of the field ("%s") once the row is read */
    bool bMissDefault;            /* write uiMissDefault (32 bits) to the field when missing */
    uint32_t uiMissDefault;

    /* A miss is told at uiLevel with pcMessage. */
    constexpr AtriumKey TracedMiss(const char *pcMessage, uint32_t uiLevel = LOGIN_TRACE_MISS) const
    {
        AtriumKey stKey = *this;
        stKey.pcMissMessage = pcMessage;
        stKey.uiMissLevel = uiLevel;
        return stKey;
    }
    /* A miss is told at uiLevel with pcMessage and stops the table with result 1. */
    constexpr AtriumKey Required(const char *pcMessage, uint32_t uiLevel) const
    {
        AtriumKey stKey = TracedMiss(pcMessage, uiLevel);
        stKey.bRequired = true;
        return stKey;
    }
    /* A miss writes uiDefault to the field. */
    constexpr AtriumKey DefaultOnMiss(uint32_t uiDefault) const
    {
        AtriumKey stKey = *this;
        stKey.bMissDefault = true;
        stKey.uiMissDefault = uiDefault;
        return stKey;
    }
    /* A present value is announced at level 2 before it is stored. */
    constexpr AtriumKey SayWhenPresent(const char *pcMessage) const
    {
        AtriumKey stKey = *this;
        stKey.pcPresentMessage = pcMessage;
        return stKey;
    }
    /* The field is traced at level 2 with pcFormat once the row is read, found or not. */
    constexpr AtriumKey SayAfter(const char *pcFormat) const
    {
        AtriumKey stKey = *this;
        stKey.pcAfterFormat = pcFormat;
        return stKey;
    }
};

/* Offset and capacity of a record field, for the builders. */
#define ATRIUM_FIELD(Record, field) \
    static_cast<uint32_t>(offsetof(Record, field)), static_cast<uint32_t>(sizeof(Record::field))
/* ... and of entry uiIndex of an array of texts. */
#define ATRIUM_FIELD_AT(Record, field, uiIndex)                                                 \
    static_cast<uint32_t>(offsetof(Record, field) + (uiIndex) * sizeof(Record::field[0])), \
        static_cast<uint32_t>(sizeof(Record::field[0]))

constexpr AtriumKey AtriumRow(const char *pcPath, const char *pcName, AtriumSource eSource, AtriumStore eStore,
                              uint32_t uiOffset, uint32_t uiCapacity)
{
    return AtriumKey{pcPath, pcName, eSource, eStore, uiOffset, uiCapacity, false, nullptr, 0, nullptr, nullptr,
                     false, 0};
}

/* The element's value copied into a text field. */
constexpr AtriumKey ValueText(const char *pcPath, uint32_t uiOffset, uint32_t uiCapacity)
{
    return AtriumRow(pcPath, nullptr, AtriumSource::Value, AtriumStore::Text, uiOffset, uiCapacity);
}

/* The element's value copied with a counted copy (its length + 1). */
constexpr AtriumKey CountedText(const char *pcPath, uint32_t uiOffset, uint32_t uiCapacity)
{
    return AtriumRow(pcPath, nullptr, AtriumSource::Value, AtriumStore::CountedText, uiOffset, uiCapacity);
}

/* The element's value converted into a number or flag field (eStore: Strtoul, StrToInt32,
 * YesFlag, ZeroFlag, PresentFlag). */
constexpr AtriumKey ValueNumber(const char *pcPath, uint32_t uiOffset, uint32_t uiCapacity,
                                AtriumStore eStore = AtriumStore::Strtoul)
{
    return AtriumRow(pcPath, nullptr, AtriumSource::Value, eStore, uiOffset, uiCapacity);
}

/* A non-empty attribute of the element, copied (or, with eStore Address, resolved). */
constexpr AtriumKey AttributeText(const char *pcPath, const char *pcAttr, uint32_t uiOffset, uint32_t uiCapacity,
                                  AtriumStore eStore = AtriumStore::Text)
{
    return AtriumRow(pcPath, pcAttr, AtriumSource::Attribute, eStore, uiOffset, uiCapacity);
}

/* An attribute of the element, empty included (eStore: Text or a conversion). */
constexpr AtriumKey AnyAttribute(const char *pcPath, const char *pcAttr, uint32_t uiOffset, uint32_t uiCapacity,
                                 AtriumStore eStore = AtriumStore::Text)
{
    return AtriumRow(pcPath, pcAttr, AtriumSource::AnyAttribute, eStore, uiOffset, uiCapacity);
}

/* A member of a JSON object (eStore: Text, JsonNumber or JsonBoolean). */
constexpr AtriumKey JsonMember(const char *pcMember, uint32_t uiOffset, uint32_t uiCapacity,
                               AtriumStore eStore = AtriumStore::Text)
{
    return AtriumRow(nullptr, pcMember, AtriumSource::JsonMember, eStore, uiOffset, uiCapacity);
}

/* What a source found for one key. */
enum class AtriumFound : uint8_t {
    Present,     /* a value to store */
    Missing,     /* the key is missing: its miss message, requirement and default apply */
    LeftAlone,   /* the element is there without the attribute: nothing is done */
};

/* A value a source found: its text, or for JSON numbers and booleans, its word. */
struct AtriumValue {
    const char *pcText;
    uint32_t uiWord;
};

/* Stores a present value into its field as the row says. */
void AtriumStoreValue(const AtriumKey &stKey, char *pcField, const AtriumValue &stValue);

/*
 * The one loop over a key table. stSource finds each row's value
 * (AtriumFound Find(const AtriumKey &, AtriumValue &, const AtriumCallSite &)) and stores a
 * present one (void Store(const AtriumKey &, char *, const AtriumValue &), which is
 * AtriumStoreValue): the document's keys for XML (AtriumXmlSource), a JSON object's
 * members for the services.
 * Rows are read in order, tracing on behalf of stSite. Returns 0, or 1 at the first
 * required row that is missing (its miss message traced; later rows are not read).
 */
template <typename Source>
uint32_t AtriumReadKeys(const Source &stSource, const AtriumKey *pstKeys, size_t uiCount, void *pvRecord,
                        const AtriumCallSite &stSite)
{
    char *pcRecord = static_cast<char *>(pvRecord);
    for (size_t i = 0; i < uiCount; ++i) {
        const AtriumKey &stKey = pstKeys[i];
        char *pcField = pcRecord + stKey.uiOffset;
        AtriumValue stValue{nullptr, 0};
        const AtriumFound eFound = stSource.Find(stKey, stValue, stSite);
        if (eFound == AtriumFound::Present) {
            if (stKey.pcPresentMessage != nullptr) {
                ATRIUM_TRACE_AT(stSite, LOGIN_TRACE_PROGRESS, "%s", stKey.pcPresentMessage);
            }
            stSource.Store(stKey, pcField, stValue);
        } else if (eFound == AtriumFound::Missing) {
            if (stKey.pcMissMessage != nullptr) {
                ATRIUM_TRACE_AT(stSite, stKey.uiMissLevel, "%s", stKey.pcMissMessage);
            }
            if (stKey.bRequired) {
                return 1;
            }
            if (stKey.bMissDefault) {
                std::memcpy(pcField, &stKey.uiMissDefault, sizeof(stKey.uiMissDefault));
            }
        }
        if (stKey.pcAfterFormat != nullptr) {
            ATRIUM_TRACE_AT(stSite, LOGIN_TRACE_PROGRESS, stKey.pcAfterFormat, pcField);
        }
    }
    return 0;
}

template <typename Source, size_t N>
uint32_t AtriumReadKeys(const Source &stSource, const AtriumKey (&astKeys)[N], void *pvRecord,
                        const AtriumCallSite &stSite)
{
    return AtriumReadKeys(stSource, astKeys, N, pvRecord, stSite);
}

/* The keys of an XML answer, found from one start node with the per-key step. */
struct AtriumXmlSource {
    _NODE *pstStart;

    AtriumFound Find(const AtriumKey &stKey, AtriumValue &stValue, const AtriumCallSite &stSite) const;
    void Store(const AtriumKey &stKey, char *pcField, const AtriumValue &stValue) const;
};

/* The loop over XML keys is compiled once, in frame.cpp, beside the per-key step and the
 * store it calls for every row. */
extern template uint32_t AtriumReadKeys<AtriumXmlSource>(const AtriumXmlSource &, const AtriumKey *, size_t, void *,
                                                         const AtriumCallSite &);

/* Reads an XML key table from pstStart (see AtriumReadKeys). */
template <size_t N>
uint32_t AtriumReadXmlKeys(_NODE *pstStart, const AtriumKey (&astKeys)[N], void *pvRecord,
                           const AtriumCallSite &stSite)
{
    return AtriumReadKeys(AtriumXmlSource{pstStart}, astKeys, N, pvRecord, stSite);
}

template <size_t N>
uint32_t AtriumReadXmlKeys(_NODE *pstStart, const std::array<AtriumKey, N> &astKeys, void *pvRecord,
                           const AtriumCallSite &stSite)
{
    return AtriumReadKeys(AtriumXmlSource{pstStart}, astKeys.data(), N, pvRecord, stSite);
}

/*
 * A parser that is one key table: opens the answer (AtriumOpenAnswer), reads the table
 * from its root and releases it. Returns the opening's failure, or the table's result.
 */
template <size_t N>
uint32_t AtriumParseKeyTable(const char *pcBody, void *pvRecord, const AtriumOpening &stOpening,
                             const AtriumKey (&astKeys)[N], const AtriumCallSite &stSite)
{
    AtriumDocument stDocument;
    const uint32_t uiRet = AtriumOpenAnswer(pcBody, pvRecord, stOpening, stDocument, stSite);
    if (uiRet != 0) {
        return uiRet;
    }
    return AtriumReadXmlKeys(stDocument.Root(), astKeys, pvRecord, stSite);
}

/* ---- the module's key tables, for those who describe them ------------------------------ */

/* A key table as the inspector and the tests see it: which parser reads it, which record its
 * offsets point into (the C type's name), and its rows. */
struct AtriumKeyTable {
    const char *pcParser;
    const char *pcRecord;
    const AtriumKey *pstKeys;
    size_t uiCount;

    const AtriumKey *begin() const { return pstKeys; }
    const AtriumKey *end() const { return pstKeys + uiCount; }
};

/* Every key table of the module (each file lists its own). */
std::vector<AtriumKeyTable> AtriumKeyTables();
std::vector<AtriumKeyTable> AtriumSiteKeyTables();
std::vector<AtriumKeyTable> AtriumPortalKeyTables();
std::vector<AtriumKeyTable> AtriumConferenceKeyTables();
std::vector<AtriumKeyTable> AtriumServiceKeyTables();

template <size_t N>
AtriumKeyTable AtriumTable(const char *pcParser, const char *pcRecord, const AtriumKey (&astKeys)[N])
{
    return AtriumKeyTable{pcParser, pcRecord, astKeys, N};
}

template <size_t N>
AtriumKeyTable AtriumTable(const char *pcParser, const char *pcRecord, const std::array<AtriumKey, N> &astKeys)
{
    return AtriumKeyTable{pcParser, pcRecord, astKeys.data(), N};
}

/* ---- search answers ------------------------------------------------------------------ */

/* A search record's entries: the count (also the next entry's index) and the parallel
 * arrays of priorities and uris, of uiMax entries each. */
struct AtriumSearchEntries {
    uint32_t *puiSiteNum;
    uint32_t *puiPriority;
    char (*aacUri)[256];
    uint32_t uiMax;
};

/*
 * The sites the portal's and the conference server's search answers offer, appended after
 * the entries the caller's record holds until it is full. Each "servicetp" child gives its
 * "priority" attribute (0 when absent or not a number) and the "uri" of its sso_hostname
 * ("" when absent or too long), found with the per-key step, so a child that is not a
 * "site" costs its miss trace on stSite's line. A site is kept when its priority is not 0,
 * it has a uri and that uri is not pcRefusedUri (null: none is refused).
 */
void AtriumCollectSearchSites(_NODE *pstServiceTp, const AtriumSearchEntries &stEntries, const char *pcRefusedUri,
                              const AtriumCallSite &stSite);

/* ---- memory -------------------------------------------------------------------------- */

/* The module's allocations, with this source position for the memory ledger. */
#define ATRIUM_MALLOC_S(uiSize) KOSA_MemMallocS((uiSize), 0, static_cast<uint32_t>(__LINE__), __FILE__)
#define ATRIUM_MALLOC_D(uiSize) KOSA_MemMallocD((uiSize), static_cast<uint32_t>(__LINE__), __FILE__)
#define ATRIUM_FREE(pvMem) KOSA_MemFreeD((pvMem), static_cast<uint32_t>(__LINE__), __FILE__)
#define ATRIUM_FREE_SET_NULL(ppvMem) \
    KOSA_MemFreeSetNullD(reinterpret_cast<void **>(ppvMem), static_cast<uint32_t>(__LINE__), __FILE__)

#endif /* ATRIUM_FRAME_H */
