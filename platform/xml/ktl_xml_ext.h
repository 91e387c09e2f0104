/*
 * ktl_xml_ext.h - what the module uses of the XML document library beyond the eight
 * operations (C++ only; not installed): the lookup by a dotted path split beforehand, the
 * compile-time splitting and hashing of such paths, and the texts of the library's codes.
 *
 * The module reads every document with the same few hundred key paths, so it splits and
 * hashes them once, at compile time (ktl_xml::CompilePath in a constexpr key table), and
 * looks them up with KTL_XML_GetNodeByPath, which finds the very element
 * KTL_XML_GetNodeByUrl finds with the path's text.
 */
#ifndef KTL_XML_PATH_H
#define KTL_XML_PATH_H

#include <stddef.h>
#include <stdint.h>

#include "ktl_xml.h"

extern "C" {

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

/* A short static English text for a failure code of this library (KTL_XML_ERR_*, including
 * KTL_XML_ERR_PARSE_BASE plus any parse status), or null for a code that is not the
 * library's. The text is never freed. */
const char *KTL_XML_CodeText(uint32_t uiCode);

} // extern "C"

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

#endif /* KTL_XML_PATH_H */
