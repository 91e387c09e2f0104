/*
 * ktl_xml.h - the XML document library: eight DOM operations over a parsed answer.
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
 *  - A document is exactly one root element with nothing but whitespace, comments,
 *    processing instructions and a document type declaration around it: text or CDATA
 *    before or after it fails with KTL_XML_ERR_TEXT_OUTSIDE_ROOT, a second element with
 *    KTL_XML_ERR_NOT_WELL_FORMED, a text without any element with KTL_XML_ERR_NO_ROOT.
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
 * Lookups by paths split at compile time (ktl_xml_ext.h) and the test hooks
 * (atrium_test_control.h) are declared elsewhere: this header is what a caller of the
 * eight operations needs.
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
#define KTL_XML_ERR_TEXT_OUTSIDE_ROOT 0x1008u /* text (or CDATA) before or after the root element */
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

#ifdef __cplusplus
}
#endif

#endif /* KTL_XML_H */
