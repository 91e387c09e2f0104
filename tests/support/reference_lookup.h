/*
 * reference_lookup.h - what a dotted-path lookup of the XML document library must find,
 * found the slow way: through the navigation operations, each step walking the children
 * from the first. Header only, with no test framework in it: the library's unit tests and
 * its fuzz target compare every lookup with this walk.
 */
#ifndef ATRIUM_XML_REFERENCE_LOOKUP_H
#define ATRIUM_XML_REFERENCE_LOOKUP_H

#include <cstring>
#include <string>
#include <vector>

#include "ktl_xml.h"

/* A path component against an element's name: equal, or equal to the part after the first
 * ':' of a prefixed name (a name starting with ':' has no prefix). A null name matches
 * nothing. */
inline bool ComponentNamesElement(const std::string &strComp, const char *pcName)
{
    if (pcName == nullptr) {
        return false;
    }
    const char *pcColon = std::strchr(pcName, ':');
    return strComp == pcName || (pcColon != nullptr && pcColon != pcName && strComp == pcColon + 1);
}

inline const char *ElementName(_NODE *pstNode)
{
    char *pcName = nullptr;
    char *pcValue = nullptr;
    return KTL_XML_GetNodeValue(pstNode, nullptr, 0, &pcName, &pcValue) == 0 ? pcName : nullptr;
}

/* The element a lookup of the components vecComps (at least one) from pstStart must give:
 * the first names pstStart itself, each further one the first element child, walking from
 * the first child, that it names. Null when a component names none. */
inline _NODE *WalkFromFirstChild(_NODE *pstStart, const std::vector<std::string> &vecComps)
{
    if (!ComponentNamesElement(vecComps[0], ElementName(pstStart))) {
        return nullptr;
    }
    _NODE *pstCurrent = pstStart;
    for (size_t i = 1; i < vecComps.size() && pstCurrent != nullptr; ++i) {
        _NODE *pstChild = KTL_XML_GetNodeFirstChild(pstCurrent);
        while (pstChild != nullptr && !ComponentNamesElement(vecComps[i], ElementName(pstChild))) {
            pstChild = KTL_XML_GetNodeNextSibling(pstChild);
        }
        pstCurrent = pstChild;
    }
    return pstCurrent;
}

#endif /* ATRIUM_XML_REFERENCE_LOOKUP_H */
