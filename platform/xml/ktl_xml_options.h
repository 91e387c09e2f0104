/*
 * ktl_xml_options.h - how the XML document library asks pugixml to parse (C++ only).
 *
 * Shared with the benchmarks, whose raw parse must be the library's own parse of the same
 * bytes. Not installed: callers of the library never see pugixml.
 */
#ifndef KTL_XML_OPTIONS_H
#define KTL_XML_OPTIONS_H

#include <pugixml.hpp>

/* pugixml's defaults (CDATA kept, entities and character references decoded, line ends
 * normalised, whitespace-only text dropped), plus: an element's first text is stored in the
 * element itself rather than in a child node of its own (answers are mostly elements holding
 * one text each, so this halves the nodes the parser allocates and the reader walks); and
 * text outside the root element is kept as nodes of the document rather than dropped, so
 * that the library can refuse it (pugixml's fragment mode; a text without any element still
 * has no root, which the library refuses too). */
constexpr unsigned int KTL_XML_PUGIXML_OPTIONS = pugi::parse_default | pugi::parse_embed_pcdata | pugi::parse_fragment;

#endif /* KTL_XML_OPTIONS_H */
