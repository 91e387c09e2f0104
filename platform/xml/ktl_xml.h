/*
 * ktl_xml.h - the XML document library: eight DOM operations over a parsed answer, and
 * the dotted-path lookup again for paths split beforehand.
 *
 * A thin adapter over pugixml. KTL_XML_Parse makes a private copy of the text, parses it
 * in place and hands back the root element; every other operation reads from that
 * document until KTL_XML_FreeNode releases it with all its nodes and value strings.
 *
 * Pinned behaviour (callers rely on each point):
 *  - The caller's text is never modified. No external resource is ever loaded and no
 *    entity declared in a DTD is expanded; the five predefined entities and character
 *    references are decoded. An unknown reference such as "&foo;" stays literal text.
 *  - Bytes are kept as they come: invalid UTF-8 is not rejected or repaired.
 *  - A document has exactly one root element; character data outside it is ignored.
 *  - Navigation sees element nodes only (text, CDATA, comments, processing instructions
 *    and the DOCTYPE are skipped by child counts, first child and next sibling).
 *  - Dotted path "A.B.C": A must name the start node itself, each further component a
 *    child element of the previous one. A component matches an element whose name equals
 *    it or whose name is "prefix:" followed by it. Of several same-named children a step
 *    takes the first (there is no backtracking into later siblings).
 *  - An element's value is its own first run of character data (text or CDATA directly
 *    inside it) that is not whitespace only. Without one: code 0 and a null value.
 *  - Duplicated attributes are accepted (the parser does not reject them); of duplicates
 *    the first wins.
 *  - Value, name and attribute texts live in the document's own writable memory until
 *    KTL_XML_FreeNode; callers may overwrite them in place (for example to wipe a
 *    password) but must not write past their terminator.
 *  - Every failure code is above 255 (KTL_XML_ERR_*), so it never equals a module code.
 *
 * Thread safety: documents are independent; any number of threads may parse and read
 * their own documents at once. A document must not be used by two threads at a time.
 */
#ifndef KTL_XML_H
#define KTL_XML_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Opaque node of a parsed document. The root node stands for the whole document. */
typedef struct _NODE _NODE;

/* Failure codes. A parse failure is KTL_XML_ERR_PARSE_BASE plus the parser's status. */
#define KTL_XML_ERR_NULL_ARG    0x1001u /* a required pointer argument was null */
#define KTL_XML_ERR_NOT_FOUND   0x1002u /* no element at that path, or no such attribute */
#define KTL_XML_ERR_BAD_PATH    0x1003u /* empty path or empty path component */
#define KTL_XML_ERR_NO_MEMORY   0x1004u /* the document could not be allocated */
#define KTL_XML_ERR_NO_ROOT     0x1005u /* no root element (empty text, only a prolog) */
#define KTL_XML_ERR_NOT_WELL_FORMED 0x1006u /* several top-level elements */
#define KTL_XML_ERR_INJECTED    0x1007u /* a failure injected by KTL_XML_FailValueReadsAfter */
#define KTL_XML_ERR_PARSE_BASE  0x1100u /* + pugixml's xml_parse_status of a syntax error */

/*
 * Parses pcText (NUL-terminated) into a new document.
 * On 0, *ppstRoot is the root element and the caller owns the document: release it once
 * with KTL_XML_FreeNode. On failure *ppstRoot is set to null (when ppstRoot is not null)
 * and nothing is allocated. A null pcText yields KTL_XML_ERR_NULL_ARG.
 */
uint32_t KTL_XML_Parse(const char *pcText, _NODE **ppstRoot);

/*
 * Resolves the dotted path pcPath from pstStart. On 0, *ppstNode is the element found.
 * KTL_XML_ERR_NOT_FOUND when a component does not match; *ppstNode is then null.
 */
uint32_t KTL_XML_GetNodeByUrl(_NODE *pstStart, const char *pcPath, _NODE **ppstNode);

/*
 * A dotted path split into its components and hashed once, for callers that look the same
 * paths up on every document (a parser's keys). KTL_XML_GetNodeByPath with it finds the very
 * element KTL_XML_GetNodeByUrl finds with pcText, without reading the text to split and
 * hash it again. C++ callers build one at compile time with ktl_xml::CompilePath (below).
 */
#define KTL_XML_PATH_STEPS_MAX 4u /* components of a split path; longer paths: by text */

typedef struct {
    uint32_t uiHash; /* ktl_xml::HashName of the component */
    uint16_t usAt;   /* where the component starts in pcText */
    uint16_t usLen;  /* its length (never 0) */
} KTL_XML_PATH_STEP;

typedef struct {
    const char *pcText; /* the dotted path, NUL-terminated; the components point into it */
    uint32_t uiSteps;   /* 1 .. KTL_XML_PATH_STEPS_MAX; 0 for a path that cannot be split */
    KTL_XML_PATH_STEP astSteps[KTL_XML_PATH_STEPS_MAX];
} KTL_XML_PATH;

/*
 * Resolves a split path from pstStart, as KTL_XML_GetNodeByUrl resolves its text. On 0,
 * *ppstNode is the element found. KTL_XML_ERR_NOT_FOUND when a component does not match,
 * KTL_XML_ERR_BAD_PATH when uiSteps is 0 or above KTL_XML_PATH_STEPS_MAX, KTL_XML_ERR_NULL_ARG
 * for a null argument or text; *ppstNode is null on every failure.
 */
uint32_t KTL_XML_GetNodeByPath(_NODE *pstStart, const KTL_XML_PATH *pstPath, _NODE **ppstNode);

/*
 * Reads an element's name (when ppcName is not null) and value (see above); ppcValue must
 * not be null.
 * puiUnused is never read or written and may be null; uiZero must be 0 and is ignored.
 * On 0, *ppcValue is the value or null when the element has no character data.
 */
uint32_t KTL_XML_GetNodeValue(_NODE *pstNode, uint32_t *puiUnused, uint32_t uiZero,
                              char **ppcName, char **ppcValue);

/* Reads attribute pcName (exact name). On 0, *ppcValue is non-null (possibly ""). */
uint32_t KTL_XML_GetAttr(_NODE *pstNode, uint32_t uiZero, const char *pcName, char **ppcValue);

/* First element child, or null (also for a null node). */
_NODE *KTL_XML_GetNodeFirstChild(_NODE *pstNode);

/* Next element sibling, or null (also for a null node). */
_NODE *KTL_XML_GetNodeNextSibling(_NODE *pstNode);

/* Number of element children. On a failure *puiNum is 0 when puiNum is not null. */
uint32_t KTL_XML_GetNodeChildNum(_NODE *pstNode, uint32_t *puiNum);

/* Releases the document of root node pstRoot. A null pointer is ignored. Passing any
 * node other than a root returned by KTL_XML_Parse is undefined behaviour. */
void KTL_XML_FreeNode(_NODE *pstRoot);

/* Test hook: documents parsed and not yet released, process-wide. */
uint32_t KTL_XML_LiveDocuments(void);

/* Test hook, this thread only: uiSucceed more calls of KTL_XML_GetNodeValue behave normally,
 * the next one fails with KTL_XML_ERR_INJECTED (out-pointers null), then the thread is back
 * to normal. KTL_XML_FAIL_NEVER disarms. Lets a test reach the paths of a value read that
 * fails, which a well-formed document never gives otherwise. */
#define KTL_XML_FAIL_NEVER 0xFFFFFFFFu
void KTL_XML_FailValueReadsAfter(uint32_t uiSucceed);

#ifdef __cplusplus
}

#include <stddef.h>

namespace ktl_xml {

/* The hash the library gives element names and path components: their length and four of
 * their characters (first, second, middle, last), mixed by one multiplication. Constant
 * time per name; names that share all five only cost a comparison more. */
constexpr uint32_t HashName(const char *pcText, size_t uiLen)
{
    uint32_t uiPacked = static_cast<uint32_t>(uiLen) * 0x01000193u;
    if (uiLen != 0) {
        const auto Byte = [pcText](size_t i) { return static_cast<uint32_t>(static_cast<unsigned char>(pcText[i])); };
        uiPacked ^= Byte(0) | Byte(uiLen > 1 ? 1 : 0) << 8 | Byte(uiLen / 2) << 16 | Byte(uiLen - 1) << 24;
    }
    const uint32_t uiMixed = uiPacked * 0x9E3779B1u;
    return uiMixed ^ (uiMixed >> 15);
}

/* What CompilePath gives for a path it cannot split. Deliberately not constexpr: a path
 * compiled in a constant expression (a constexpr key table) that would come to this stops
 * the build instead. */
inline KTL_XML_PATH UnsplitPath(const char *pcText)
{
    KTL_XML_PATH stPath{};
    stPath.pcText = pcText;
    return stPath;
}

/* Splits pcText at its dots and hashes each component. A path KTL_XML_GetNodeByUrl refuses
 * (empty, or with an empty component), one of more than KTL_XML_PATH_STEPS_MAX components
 * or one longer than 65,535 characters cannot be split: see UnsplitPath. */
constexpr KTL_XML_PATH CompilePath(const char *pcText)
{
    KTL_XML_PATH stPath{};
    stPath.pcText = pcText;
    size_t uiAt = 0;
    for (;;) {
        size_t uiEnd = uiAt;
        while (pcText[uiEnd] != '\0' && pcText[uiEnd] != '.') {
            ++uiEnd;
        }
        if (uiEnd == uiAt || uiEnd > 0xFFFFu || stPath.uiSteps == KTL_XML_PATH_STEPS_MAX) {
            return UnsplitPath(pcText);
        }
        KTL_XML_PATH_STEP &stStep = stPath.astSteps[stPath.uiSteps++];
        stStep.uiHash = HashName(pcText + uiAt, uiEnd - uiAt);
        stStep.usAt = static_cast<uint16_t>(uiAt);
        stStep.usLen = static_cast<uint16_t>(uiEnd - uiAt);
        if (pcText[uiEnd] == '\0') {
            return stPath;
        }
        uiAt = uiEnd + 1;
    }
}

} // namespace ktl_xml
#endif

#endif /* KTL_XML_H */
