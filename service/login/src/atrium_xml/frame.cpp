/*
 * frame.cpp - the shared steps of the parse frame: opening an answer, the per-key step, the
 * store of a key row's value, the XML keys' source, and the search answers' site reader
 * both servers' parsers share.
 *
 * Every XML parser opens its answer through AtriumOpenAnswer (argument check and parse, with
 * the parser's own messages) into an AtriumDocument that releases it, and reads its keys
 * through AtriumGetNodeValueByUri: one dotted-path lookup, one value read, level-1 traces
 * for misses on the caller's line. Key tables (AtriumKey rows) are read by one loop,
 * AtriumReadKeys, which asks a source for each row's value (AtriumXmlSource here; the JSON
 * services have theirs) and stores it with AtriumStoreValue.
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
                          AtriumDocument &stDocument, const AtriumCallSite &stSite)
{
    if (pcBody == nullptr || pvRecord == nullptr) {
        if (stOpening.pcNullMessage != nullptr) {
            ATRIUM_TRACE_AT(stSite, LOGIN_TRACE_ERROR, "%s", stOpening.pcNullMessage);
        }
        return ATRIUM_NULL_ARGUMENT;
    }
    return AtriumParseAnswer(pcBody, stOpening.pcParseFormat, stOpening.uiParseFailure, stDocument.RootSlot(),
                             stSite);
}

uint32_t AtriumLookUp(_NODE *pstStart, const AtriumPath &stPath, _NODE **ppstNode)
{
    return KTL_XML_GetNodeByPath(pstStart, &stPath.stSplit, ppstNode);
}

/* The per-key step (inlined into the XML key loop). */
static uint32_t GetNodeValue(_NODE *pstStart, const AtriumPath &stPath, _NODE **ppstNode, char **ppcValue,
                             const AtriumCallSite &stSite)
{
    *ppcValue = nullptr;
    uint32_t uiRet = AtriumLookUp(pstStart, stPath, ppstNode);
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

uint32_t AtriumGetNodeValueByUri(_NODE *pstStart, const AtriumPath &stPath, _NODE **ppstNode, char **ppcValue,
                                 const AtriumCallSite &stSite)
{
    return GetNodeValue(pstStart, stPath, ppstNode, ppcValue, stSite);
}

_NODE *AtriumFindElement(_NODE *pstStart, const AtriumPath &stPath, const AtriumCallSite &stSite)
{
    _NODE *pstNode = nullptr;
    char *pcValue = nullptr;
    (void)AtriumGetNodeValueByUri(pstStart, stPath, &pstNode, &pcValue, stSite);
    return pstNode;
}

char *AtriumAttr(_NODE *pstNode, const char *pcName)
{
    char *pcValue = nullptr;
    return (KTL_XML_GetAttr(pstNode, 0, pcName, &pcValue) == 0) ? pcValue : nullptr;
}

void AtriumCollectSearchSites(_NODE *pstServiceTp, const AtriumSearchEntries &stEntries, const char *pcRefusedUri,
                              const AtriumCallSite &stSite)
{
    for (_NODE *pstChild : AtriumChildren(pstServiceTp)) {
        const uint32_t uiEntry = *stEntries.puiSiteNum;
        if (uiEntry >= stEntries.uiMax) {
            break;
        }
        uint32_t uiPriority = 0;
        char acUri[256] = {};
        const char *pcPriority = AtriumAttr(pstChild, "priority");
        if (pcPriority != nullptr) {
            uiPriority = KOSA_Strtoul(pcPriority, nullptr, 0);
        }
        _NODE *pstSsoHost = AtriumFindElement(pstChild, ATRIUM_PATH("site.sso_hostname"), stSite);
        const char *pcUri = (pstSsoHost != nullptr) ? AtriumAttr(pstSsoHost, "uri") : nullptr;
        if (pcUri != nullptr) {
            (void)qev_strcpy_s(acUri, sizeof(acUri), pcUri);
        }
        if (uiPriority == 0 || acUri[0] == '\0' || (pcRefusedUri != nullptr && KOSA_StrCmp(acUri, pcRefusedUri) == 0)) {
            continue;
        }
        stEntries.puiPriority[uiEntry] = uiPriority;
        (void)qev_strcpy_s(stEntries.aacUri[uiEntry], sizeof(stEntries.aacUri[uiEntry]), acUri);
        *stEntries.puiSiteNum = uiEntry + 1;
    }
}

/* A present value into its field as the row says (inlined into the XML key loop). */
static void StoreValue(const AtriumKey &stKey, char *pcField, const AtriumValue &stValue)
{
    const char *pcText = stValue.pcText;
    uint32_t uiWord = 0;
    switch (stKey.eStore) {
    case AtriumStore::Text:
        (void)qev_strcpy_s(pcField, stKey.uiCapacity, pcText);
        return;
    case AtriumStore::CountedText:
        (void)qev_strncpy_s(pcField, stKey.uiCapacity, pcText, KOSA_StrLen(pcText) + 1);
        return;
    case AtriumStore::Address:
        (void)XmlAtriumGetIpFromDomain(pcField, stKey.uiCapacity, pcText);
        return;
    case AtriumStore::Strtoul:
        uiWord = KOSA_Strtoul(pcText, nullptr, 0);
        break;
    case AtriumStore::StrToInt32: {
        /* a failed conversion leaves whatever it wrote, so it starts from the field */
        int32_t iNumber = 0;
        std::memcpy(&iNumber, pcField, sizeof(iNumber));
        (void)KOSA_StrToInt32(pcText, &iNumber);
        std::memcpy(pcField, &iNumber, sizeof(iNumber));
        return;
    }
    case AtriumStore::YesFlag:
    case AtriumStore::TrueFlag:
        if (KOSA_StrCmp(pcText, stKey.eStore == AtriumStore::YesFlag ? "YES" : "true") != 0) {
            return;
        }
        uiWord = 1;
        break;
    case AtriumStore::ZeroFlag:
        uiWord = (KOSA_Strtoul(pcText, nullptr, 0) == 0) ? 1u : 0u;
        break;
    case AtriumStore::PresentFlag:
        uiWord = 1;
        break;
    case AtriumStore::JsonNumber:
    case AtriumStore::JsonBoolean:
        uiWord = stValue.uiWord;
        break;
    }
    std::memcpy(pcField, &uiWord, sizeof(uiWord));
}

void AtriumStoreValue(const AtriumKey &stKey, char *pcField, const AtriumValue &stValue)
{
    StoreValue(stKey, pcField, stValue);
}

void AtriumXmlSource::Store(const AtriumKey &stKey, char *pcField, const AtriumValue &stValue) const
{
    StoreValue(stKey, pcField, stValue);
}

AtriumFound AtriumXmlSource::Find(const AtriumKey &stKey, AtriumValue &stValue, const AtriumCallSite &stSite) const
{
    _NODE *pstNode = nullptr;
    char *pcValue = nullptr;
    (void)GetNodeValue(pstStart, stKey.stPath, &pstNode, &pcValue, stSite);
    if (stKey.eSource == AtriumSource::Value) {
        stValue.pcText = pcValue;
        return (pcValue != nullptr) ? AtriumFound::Present : AtriumFound::Missing;
    }
    /* An attribute key: its element is the key, read whatever its value read gave. */
    if (pstNode == nullptr) {
        return AtriumFound::Missing;
    }
    const char *pcAttr = AtriumAttr(pstNode, stKey.pcName);
    const bool bEmptyIsAbsent = stKey.eSource == AtriumSource::Attribute;
    if (pcAttr == nullptr || (bEmptyIsAbsent && pcAttr[0] == '\0')) {
        return AtriumFound::LeftAlone;
    }
    stValue.pcText = pcAttr;
    return AtriumFound::Present;
}

template uint32_t AtriumReadKeys<AtriumXmlSource>(const AtriumXmlSource &, const AtriumKey *, size_t, void *,
                                                  const AtriumCallSite &);

std::vector<AtriumKeyTable> AtriumKeyTables()
{
    std::vector<AtriumKeyTable> vecAll;
    for (const auto &vecFile : {AtriumSiteKeyTables(), AtriumPortalKeyTables(), AtriumConferenceKeyTables(),
                                AtriumServiceKeyTables()}) {
        vecAll.insert(vecAll.end(), vecFile.begin(), vecFile.end());
    }
    return vecAll;
}
