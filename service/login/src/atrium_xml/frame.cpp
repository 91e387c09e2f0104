/*
 * frame.cpp - the shared steps of the parse frame: opening an answer, the per-key step and
 * the key-table reader, and the search answers' site reader both servers' parsers share.
 *
 * Every XML parser opens its answer through AtriumOpenAnswer (argument check and parse, with
 * the parser's own messages) and reads its keys through AtriumGetNodeValueByUri: one
 * dotted-path lookup, one value read, level-1 traces for misses on the caller's line.
 * Parsers that are plain lists of keys describe them as AtriumValueKey tables, which
 * AtriumReadValueKeys runs row by row: per-key step, then copy or conversion into the
 * record, or the row's miss message and default.
 */
#include "atrium_frame.h"

#include <cstring>

uint32_t AtriumParseAnswer(const char *pcBody, const char *pcParseFormat, uint32_t uiParseFailure,
                           _NODE **ppstRoot, const AtriumCallSite &stSite)
{
    const uint32_t uiRet = KTL_XML_Parse(pcBody, ppstRoot);
    if (uiRet == 0) {
        return 0;
    }
    ATRIUM_TRACE_AT(stSite, LOGIN_TRACE_ERROR, pcParseFormat, uiRet);
    return (uiParseFailure == ATRIUM_PARSE_CODE) ? uiRet : uiParseFailure;
}

uint32_t AtriumOpenAnswer(const char *pcBody, const void *pvRecord, const AtriumOpening &stOpening,
                          _NODE **ppstRoot, const AtriumCallSite &stSite)
{
    if (pcBody == nullptr || pvRecord == nullptr) {
        if (stOpening.pcNullMessage != nullptr) {
            ATRIUM_TRACE_AT(stSite, LOGIN_TRACE_ERROR, "%s", stOpening.pcNullMessage);
        }
        return 2;
    }
    return AtriumParseAnswer(pcBody, stOpening.pcParseFormat, stOpening.uiParseFailure, ppstRoot, stSite);
}

uint32_t AtriumGetNodeValueByUri(_NODE *pstStart, const AtriumPath &stPath, _NODE **ppstNode, char **ppcValue,
                                 const AtriumCallSite &stSite)
{
    *ppstNode = nullptr;
    *ppcValue = nullptr;
    uint32_t uiRet = KTL_XML_GetNodeByPath(pstStart, &stPath.stSplit, ppstNode);
    if (uiRet != 0) {
        ATRIUM_TRACE_AT(stSite, LOGIN_TRACE_MISS, "KTL_XML_GetNodeByUrl %s failed=0x%x", stPath.Text(), uiRet);
        return uiRet;
    }
    uiRet = KTL_XML_GetNodeValue(*ppstNode, nullptr, 0, nullptr, ppcValue);
    if (uiRet != 0) {
        ATRIUM_TRACE_AT(stSite, LOGIN_TRACE_MISS, "KTL_XML_GetNodeValue %s failed=0x%x", stPath.Text(), uiRet);
    }
    return uiRet;
}

_NODE *AtriumFindElement(_NODE *pstStart, const AtriumPath &stPath, const AtriumCallSite &stSite)
{
    _NODE *pstNode = nullptr;
    char *pcValue = nullptr;
    (void)AtriumGetNodeValueByUri(pstStart, stPath, &pstNode, &pcValue, stSite);
    return pstNode;
}

AtriumSearchSite AtriumReadSearchSite(_NODE *pstChild, const AtriumCallSite &stSite)
{
    AtriumSearchSite stFound = {0, {}};
    char *pcValue = nullptr;
    if (KTL_XML_GetAttr(pstChild, 0, "priority", &pcValue) == 0) {
        stFound.uiPriority = KOSA_Strtoul(pcValue, nullptr, 0);
    }
    _NODE *pstSsoHost = AtriumFindElement(pstChild, ATRIUM_PATH("site.sso_hostname"), stSite);
    if (pstSsoHost != nullptr && KTL_XML_GetAttr(pstSsoHost, 0, "uri", &pcValue) == 0) {
        (void)qev_strcpy_s(stFound.acUri, sizeof(stFound.acUri), pcValue);
    }
    return stFound;
}

static void AtriumStoreValue(const AtriumValueKey &stKey, char *pcField, const char *pcValue)
{
    uint32_t uiWord = 0;
    switch (stKey.eConv) {
    case AtriumConv::Text:
        (void)qev_strcpy_s(pcField, stKey.uiCapacity, pcValue);
        return;
    case AtriumConv::Strtoul:
        uiWord = KOSA_Strtoul(pcValue, nullptr, 0);
        break;
    case AtriumConv::StrToInt32: {
        int32_t iNumber = 0;
        std::memcpy(&iNumber, pcField, sizeof(iNumber));
        (void)KOSA_StrToInt32(pcValue, &iNumber);
        std::memcpy(pcField, &iNumber, sizeof(iNumber));
        return;
    }
    case AtriumConv::YesFlag:
        if (KOSA_StrCmp(pcValue, "YES") != 0) {
            return;
        }
        uiWord = 1;
        break;
    case AtriumConv::ZeroFlag:
        uiWord = (KOSA_Strtoul(pcValue, nullptr, 0) == 0) ? 1u : 0u;
        break;
    case AtriumConv::PresentFlag:
        uiWord = 1;
        break;
    }
    std::memcpy(pcField, &uiWord, sizeof(uiWord));
}

uint32_t AtriumReadValueKeys(_NODE *pstStart, const AtriumValueKey *pstKeys, size_t uiCount,
                             void *pvRecord, const AtriumCallSite &stSite)
{
    char *pcRecord = static_cast<char *>(pvRecord);
    for (size_t i = 0; i < uiCount; ++i) {
        const AtriumValueKey &stKey = pstKeys[i];
        _NODE *pstNode = nullptr;
        char *pcValue = nullptr;
        (void)AtriumGetNodeValueByUri(pstStart, stKey.stPath, &pstNode, &pcValue, stSite);
        char *pcField = pcRecord + stKey.uiOffset;
        if (pcValue != nullptr) {
            if (stKey.pcPresentMessage != nullptr) {
                ATRIUM_TRACE_AT(stSite, LOGIN_TRACE_PROGRESS, "%s", stKey.pcPresentMessage);
            }
            AtriumStoreValue(stKey, pcField, pcValue);
            continue;
        }
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
    return 0;
}
