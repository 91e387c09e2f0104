/*
 * atrium_frame.h - the parse frame every parser of the module follows (module-private).
 *
 * A parser checks its arguments, parses the body into a document, looks each wanted value
 * up by dotted path with the shared per-key step, copies it with a bounded routine or
 * converts it, traces every miss, releases the document and returns a result code. This
 * header gives that skeleton its pieces: the one trace macro, the per-key step, key tables
 * for parsers that are lists of keys, and the module's memory macros.
 *
 * Traces of a shared step carry the call site of the parser that invoked it (function,
 * file, line), so a table-driven parser traces exactly as if it had the code inline.
 */
#ifndef ATRIUM_FRAME_H
#define ATRIUM_FRAME_H

#include <cstddef>
#include <cstdint>

#include "atrium_xml.h"
#include "qev_bounded.h"

/* The calling site of a trace: function as declared, source path, line. */
struct AtriumCallSite {
    const char *pcFunc;
    const char *pcFile;
    uint32_t uiLine;
};

#define ATRIUM_HERE (AtriumCallSite{__func__, __FILE__, static_cast<uint32_t>(__LINE__)})

/* The module's one trace macro: module "", this function, file and line. */
#define ATRIUM_TRACE(uiLevel, ...) \
    LoginTraceCB("", (uiLevel), __func__, __FILE__, static_cast<uint32_t>(__LINE__), __VA_ARGS__)

/* Trace on behalf of a call site (used by shared steps). */
#define ATRIUM_TRACE_AT(stSite, uiLevel, ...) \
    LoginTraceCB("", (uiLevel), (stSite).pcFunc, (stSite).pcFile, (stSite).uiLine, __VA_ARGS__)

/*
 * A key's dotted path, split and hashed by the compiler: every document is read with the
 * same few hundred paths, so the per-key step never splits or hashes their text. Key tables
 * are constexpr (a path that cannot be split stops the build); a call site names its path
 * with ATRIUM_PATH("a.b").
 */
struct AtriumPath {
    KTL_XML_PATH stSplit;

    constexpr AtriumPath() : stSplit{} {}
    constexpr AtriumPath(const char *pcText) : stSplit(ktl_xml::CompilePath(pcText)) {}
    const char *Text() const { return stSplit.pcText; }
};

#define ATRIUM_PATH(pcLiteral) \
    ([]() -> const AtriumPath & { static constexpr AtriumPath s_stPath(pcLiteral); return s_stPath; }())

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

/* Parses pcBody into *ppstRoot. Returns 0, or (after tracing pcParseFormat with the library's
 * code) the opening's result for text that is not XML. */
uint32_t AtriumParseAnswer(const char *pcBody, const char *pcParseFormat, uint32_t uiParseFailure,
                           _NODE **ppstRoot, const AtriumCallSite &stSite);

/* Argument check of body and record (2 for a null one), then AtriumParseAnswer. */
uint32_t AtriumOpenAnswer(const char *pcBody, const void *pvRecord, const AtriumOpening &stOpening,
                          _NODE **ppstRoot, const AtriumCallSite &stSite);

/* How a present value is stored. */
enum class AtriumConv : uint8_t {
    Text,         /* qev_strcpy_s into a char field of uiCapacity bytes */
    Strtoul,      /* uint32_t = KOSA_Strtoul(value, null, 0) */
    StrToInt32,   /* int32_t via KOSA_StrToInt32 (result ignored) */
    YesFlag,      /* uint32_t = 1 when the value is exactly "YES"; otherwise untouched */
    ZeroFlag,     /* uint32_t = 1 when KOSA_Strtoul(value) is 0, else 0 */
    PresentFlag,  /* uint32_t = 1 (the value itself is not kept) */
};

/* One row of a key table: where the value is and what to do with it and with its miss. */
struct AtriumValueKey {
    AtriumPath stPath;          /* dotted path from the start node */
    uint32_t uiOffset;          /* field offset in the record */
    uint32_t uiCapacity;        /* field capacity (Text) */
    AtriumConv eConv;
    bool bRequired;             /* a miss stops the table with result 1 */
    const char *pcMissMessage;  /* traced when absent (null: the per-key traces only) */
    uint32_t uiMissLevel;
    const char *pcPresentMessage; /* traced at level 2 before a present value is stored */
    bool bMissDefault;          /* write uiMissDefault (32 bits) to the field when absent */
    uint32_t uiMissDefault;
};

#define ATRIUM_FIELD(Record, field) \
    static_cast<uint32_t>(offsetof(Record, field)), static_cast<uint32_t>(sizeof(Record::field))

/*
 * Runs the rows of a key table from pstStart in order, tracing on behalf of stSite.
 * Returns 0, or 1 at the first required row that is absent (its miss message traced;
 * later rows are not read). The caller releases the document.
 */
uint32_t AtriumReadValueKeys(_NODE *pstStart, const AtriumValueKey *pstKeys, size_t uiCount,
                             void *pvRecord, const AtriumCallSite &stSite);

template <size_t N>
inline uint32_t AtriumReadValueKeys(_NODE *pstStart, const AtriumValueKey (&astKeys)[N],
                                    void *pvRecord, const AtriumCallSite &stSite)
{
    return AtriumReadValueKeys(pstStart, astKeys, N, pvRecord, stSite);
}

/*
 * A site the portal's and the conference server's search answers offer (a "servicetp"
 * child): its "priority" attribute (0 when absent or not a number) and the "uri" of its
 * sso_hostname ("" when absent or too long). The sso_hostname is found with the per-key
 * step, so a child that is not a "site" costs its miss trace, on stSite's line.
 */
struct AtriumSearchSite {
    uint32_t uiPriority;
    char acUri[256];
};

AtriumSearchSite AtriumReadSearchSite(_NODE *pstChild, const AtriumCallSite &stSite);

/* The module's allocations, with this source position for the memory ledger. */
#define ATRIUM_MALLOC_S(uiSize) KOSA_MemMallocS((uiSize), 0, static_cast<uint32_t>(__LINE__), __FILE__)
#define ATRIUM_MALLOC_D(uiSize) KOSA_MemMallocD((uiSize), static_cast<uint32_t>(__LINE__), __FILE__)
#define ATRIUM_FREE(pvMem) KOSA_MemFreeD((pvMem), static_cast<uint32_t>(__LINE__), __FILE__)
#define ATRIUM_FREE_SET_NULL(ppvMem) \
    KOSA_MemFreeSetNullD(reinterpret_cast<void **>(ppvMem), static_cast<uint32_t>(__LINE__), __FILE__)

#endif /* ATRIUM_FRAME_H */
