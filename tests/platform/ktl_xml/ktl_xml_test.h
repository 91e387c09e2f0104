/*
 * ktl_xml_test.h - helpers shared by the XML document library's tests.
 */
#ifndef KTL_XML_TEST_H
#define KTL_XML_TEST_H

#include <cstdint>

#include "ktl_xml.h"

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
