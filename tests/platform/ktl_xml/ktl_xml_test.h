/*
 * ktl_xml_test.h - helpers shared by the XML document library's tests.
 */
#ifndef KTL_XML_TEST_H
#define KTL_XML_TEST_H

#include <cstdint>

#include <gtest/gtest.h>

#include "ktl_xml.h"

/* A non-null pointer that no operation may hand back, to prove an out-pointer was reset. */
template <typename T> T *Poisoned()
{
    static char s_cMarker;
    return reinterpret_cast<T *>(&s_cMarker);
}

/* The value of pstNode (null when it has none); the test fails when the read fails. The
 * text is the document's own, writable in place. */
inline char *ValueOf(_NODE *pstNode)
{
    char *pcValue = Poisoned<char>();
    EXPECT_EQ(KTL_XML_GetNodeValue(pstNode, nullptr, 0, nullptr, &pcValue), 0u);
    return pcValue;
}

/* The element at pcPath from pstStart; the test fails when there is none. */
inline _NODE *NodeAt(_NODE *pstStart, const char *pcPath)
{
    _NODE *pstNode = nullptr;
    EXPECT_EQ(KTL_XML_GetNodeByUrl(pstStart, pcPath, &pstNode), 0u) << pcPath;
    return pstNode;
}

/* The value of the element at pcPath (null when there is none, and the test then fails). */
inline char *ValueAt(_NODE *pstStart, const char *pcPath)
{
    _NODE *pstNode = NodeAt(pstStart, pcPath);
    return pstNode == nullptr ? nullptr : ValueOf(pstNode);
}

/* Owns one parse: frees the document when the test leaves. */
class ParsedDocument {
public:
    explicit ParsedDocument(const char *pcText) : m_uiCode(KTL_XML_Parse(pcText, &m_pstRoot)) {}
    ~ParsedDocument() { KTL_XML_FreeNode(m_pstRoot); }
    ParsedDocument(const ParsedDocument &) = delete;
    ParsedDocument &operator=(const ParsedDocument &) = delete;

    uint32_t Code() const { return m_uiCode; }
    _NODE *Root() const { return m_pstRoot; }

private:
    _NODE *m_pstRoot = nullptr;
    uint32_t m_uiCode;
};

#endif /* KTL_XML_TEST_H */
