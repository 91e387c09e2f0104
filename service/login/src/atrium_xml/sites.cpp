/*
 * sites.cpp - the site machinery: sites, their access-server groups, and the choice of
 * the groups a client uses.
 *
 * Parsing: the caller counts the "site" children of an answer (GetSiteNumber), allocates a
 * zero-filled site array and parses each site (XmlAtriumParseSite). A site's
 * "accessserver" children become group records (XmlAtriumParseAccessServer, with the
 * nested "stggroup" through XmlAtriumParseStgInfo). Almost every group field is one
 * attribute of one child element, so each record is described by a table of the frame's
 * key rows that the frame's loop reads; a few addresses are host names rewritten to
 * address lists through the login service's resolver (XmlAtriumGetIpFromDomain).
 *
 * Selection: from the parsed array the caller builds the selected site (getSiteInfo): a
 * copy of its own site holding at most three randomly drawn groups per site, own site
 * first, then the top-priority site, then the others in array order. It also gathers
 * every SIP server of every group (getAllSipServer), then releases the array
 * (freeSiteMem). Everything handed to the caller is allocated through the memory ledger.
 *
 * A site whose group pointer is null has no groups, whatever its count says: that is what
 * a failed group allocation leaves behind, and the parsers' callers go on with it.
 */
#include "atrium_frame.h"

#include <array>
#include <cstring>

namespace {

const uint32_t HOST_CAPACITY = 256;          /* host part of "host:port" */
const uint32_t ADDR_TEXT_CAPACITY = 32;      /* one "a.b.c.d" or "a.b.c.d:port" */
const uint32_t RESOLVER_ENTRIES = 12;        /* capacity of one resolver answer */
const uint32_t RESOLVER_TYPE_FIRST = 2;
const uint32_t RESOLVER_TYPE_SECOND = 1;
const uint32_t GROUPS_PER_SITE = 3;          /* groups a site contributes to a selection */

using Group = tagLOGIN_S_ACCESS_SERVER;
using StgGroup = tagLOGIN_S_STG_GROUP;
using Site = tagLOGIN_S_SITE;

/* ---- key tables ---------------------------------------------------------------------- */

/* Attribute pcName of a node when present and not empty, else null. */
const char *NonEmptyAttr(_NODE *pstNode, const char *pcName)
{
    const char *pcAttr = AtriumAttr(pstNode, pcName);
    return (pcAttr == nullptr || pcAttr[0] == '\0') ? nullptr : pcAttr;
}

/* Attribute pcName of the element at stPath, when not empty: the element is looked up with
 * the per-key step, and its attribute read whatever its value read gave. */
const char *FoundAttr(_NODE *pstStart, const AtriumPath &stPath, const char *pcName, const AtriumCallSite &stSite)
{
    _NODE *pstNode = AtriumFindElement(pstStart, stPath, stSite);
    return pstNode == nullptr ? nullptr : NonEmptyAttr(pstNode, pcName);
}

void CopyText(char *pcField, uint32_t uiCapacity, const char *pcText)
{
    if (pcText != nullptr) {
        (void)qev_strcpy_s(pcField, uiCapacity, pcText);
    }
}

/* Attribute "uri" of the element at pcPath into the record field; the other builders name
 * their attribute. */
constexpr AtriumKey Uri(const char *pcPath, uint32_t uiOffset, uint32_t uiCapacity)
{
    return AttributeText(pcPath, "uri", uiOffset, uiCapacity);
}

/* The same, a host name rewritten to the list of its addresses (XmlAtriumGetIpFromDomain). */
constexpr AtriumKey ResolvedUri(const char *pcPath, uint32_t uiOffset, uint32_t uiCapacity)
{
    return AttributeText(pcPath, "uri", uiOffset, uiCapacity, AtriumStore::Address);
}

static_assert(LOGIN_MEDIA_SERVER_NUM == 8, "eight paths per numbered list below");

constexpr AtriumKey g_astStgKeys[] = {
    Uri("stggroup.stg", ATRIUM_FIELD(StgGroup, acStgUri)),
    AttributeText("stggroup.auth", "account", ATRIUM_FIELD(StgGroup, acAuthAccount)),
    AttributeText("stggroup.auth", "pwd", ATRIUM_FIELD(StgGroup, acAuthPwd)),
    Uri("stggroup.sipstg", ATRIUM_FIELD(StgGroup, acSipStgUri)),
    ResolvedUri("stggroup.eserverstg", ATRIUM_FIELD(StgGroup, acEserverStgAddr)),
    ResolvedUri("stggroup.eserverstg1", ATRIUM_FIELD(StgGroup, acEserverStg1Addr)),
    Uri("stggroup.maastg", ATRIUM_FIELD(StgGroup, acMaaStgUri)),
    Uri("stggroup.maastg1", ATRIUM_FIELD(StgGroup, acMaaStg1Uri)),
};

/* The group's addresses before its STG group, in lookup order (the order of the traces). */
constexpr AtriumKey g_astAccessServerKeys[] = {
    Uri("accessserver.sip", ATRIUM_FIELD(Group, acSipUri)),
    Uri("accessserver.svn", ATRIUM_FIELD(Group, acSvnUri)),
    Uri("accessserver.httpsproxy", ATRIUM_FIELD(Group, acHttpsProxyUri)),
    ResolvedUri("accessserver.eserver", ATRIUM_FIELD(Group, acEserverAddr)),
    ResolvedUri("accessserver.eserver1", ATRIUM_FIELD(Group, acEserver1Addr)),
    Uri("accessserver.conf", ATRIUM_FIELD(Group, acConfUri)),
    AttributeText("accessserver.conf_type", "cmstype", ATRIUM_FIELD(Group, acConfType)),
    Uri("accessserver.maa", ATRIUM_FIELD(Group, acMaaUri)),
    Uri("accessserver.maa1", ATRIUM_FIELD(Group, acMaa1Uri)),
    ResolvedUri("accessserver.maaproxy", ATRIUM_FIELD(Group, acMaaProxyAddr)).SayAfter("mmaproxy : %s"),
    ResolvedUri("accessserver.maadrproxy", ATRIUM_FIELD(Group, acMaaDrProxyAddr)),
    Uri("accessserver.androidpush", ATRIUM_FIELD(Group, acAndroidPushUri)),
    Uri("accessserver.msparam", ATRIUM_FIELD(Group, acMsParamUri)),
    Uri("accessserver.msparampath", ATRIUM_FIELD(Group, acMsParamPathUri)),
    Uri("accessserver.eab", ATRIUM_FIELD(Group, acEabUri)),
    Uri("accessserver.prophoto", ATRIUM_FIELD(Group, acProPhotoUri)),
    Uri("accessserver.tmstr069", ATRIUM_FIELD(Group, acTmsTr069Uri)),
    Uri("accessserver.eua", ATRIUM_FIELD(Group, acEuaUri)).SayAfter("eua_uri:%s"),
};

/* The "uri" of eight numbered elements into the eight entries of an array of texts; the
 * count is fixed, a missing element is traced and skipped, a ninth is never read. */
constexpr std::array<AtriumKey, LOGIN_MEDIA_SERVER_NUM>
NumberedUris(const char *const (&apcPaths)[LOGIN_MEDIA_SERVER_NUM], uint32_t uiOffset, uint32_t uiEntrySize)
{
    std::array<AtriumKey, LOGIN_MEDIA_SERVER_NUM> astKeys{};
    for (uint32_t i = 0; i < LOGIN_MEDIA_SERVER_NUM; ++i) {
        astKeys[i] = Uri(apcPaths[i], uiOffset + i * uiEntrySize, uiEntrySize);
    }
    return astKeys;
}

constexpr const char *g_apcMsStgPaths[] = {
    "stggroup.msstggroup.msstg1", "stggroup.msstggroup.msstg2", "stggroup.msstggroup.msstg3",
    "stggroup.msstggroup.msstg4", "stggroup.msstggroup.msstg5", "stggroup.msstggroup.msstg6",
    "stggroup.msstggroup.msstg7", "stggroup.msstggroup.msstg8",
};
constexpr auto g_astMsStgKeys = NumberedUris(g_apcMsStgPaths, ATRIUM_FIELD_AT(StgGroup, aacMsStgUri, 0));

/* The group's media servers, read after its STG group. */
constexpr const char *g_apcMsPaths[] = {
    "accessserver.msgroup.ms1", "accessserver.msgroup.ms2", "accessserver.msgroup.ms3", "accessserver.msgroup.ms4",
    "accessserver.msgroup.ms5", "accessserver.msgroup.ms6", "accessserver.msgroup.ms7", "accessserver.msgroup.ms8",
};
constexpr auto g_astMediaServerKeys = NumberedUris(g_apcMsPaths, ATRIUM_FIELD_AT(Group, aacMsUri, 0));


/* "isactive" switches the SRTP flag on only when it is exactly "true"; read after siptls. */
constexpr AtriumKey g_astSrtpKeys[] = {
    AttributeText("accessserver.srtp", "isactive", ATRIUM_FIELD(Group, uiSrtpActive), AtriumStore::TrueFlag),
};

/* The TLS flag as "isactive" sets it, and the TLS address, which the element that follows
 * "siptls" carries, not siptls itself: the server lists it that way. */
void ReadSipTls(_NODE *pstNode, Group *pstServer, const AtriumCallSite &stSite)
{
    _NODE *pstSipTls = AtriumFindElement(pstNode, ATRIUM_PATH("accessserver.siptls"), stSite);
    if (pstSipTls == nullptr) {
        return;
    }
    const char *pcActive = NonEmptyAttr(pstSipTls, "isactive");
    if (pcActive != nullptr && KOSA_StrCmp(pcActive, "true") == 0) {
        pstServer->uiSipTlsActive = 1;
    }
    _NODE *pstFollowing = KTL_XML_GetNodeNextSibling(pstSipTls);
    if (pstFollowing != nullptr) {
        CopyText(pstServer->acSipTlsUri, sizeof(pstServer->acSipTlsUri), NonEmptyAttr(pstFollowing, "uri"));
    }
}

/* ---- memory ------------------------------------------------------------------------ */

/* The allocators take a 32-bit size: an array that needs more is refused as if the
 * allocation had failed, rather than allocated short. */
bool FitsAllocator(uint64_t ulCount, size_t uiRecordSize)
{
    return ulCount <= UINT32_MAX / uiRecordSize;
}

template <typename T>
T *AllocZeroedArray(uint64_t ulCount)
{
    if (!FitsAllocator(ulCount, sizeof(T))) {
        return nullptr;
    }
    return static_cast<T *>(ATRIUM_MALLOC_S(static_cast<uint32_t>(ulCount * sizeof(T))));
}

/* ---- sites ------------------------------------------------------------------------- */

/* Parses the children of an accessservergroup into the site's group array. The portal
 * address is offered to a group only while the caller's buffer is still empty, so the
 * first group that has one keeps it. */
void ParseSiteGroups(_NODE *pstGroupList, Site *pstSite, char *pcAtriumAddr, uint32_t uiAtriumAddrLen)
{
    Group *pstGroup = pstSite->pstAccessServer;
    for (_NODE *pstChild : AtriumChildren(pstGroupList)) {
        const bool bWantAtrium = pcAtriumAddr != nullptr && KOSA_StrLen(pcAtriumAddr) == 0;
        (void)XmlAtriumParseAccessServer(pstChild, pstGroup, bWantAtrium ? pcAtriumAddr : nullptr,
                                         bWantAtrium ? uiAtriumAddrLen : 0);
        pstGroup->uiPriority = pstSite->uiPriority;
        ++pstGroup;
    }
}

/* The number of groups a consumer may read from a site: none when its array is missing. */
uint32_t UsableGroups(const Site &stSite)
{
    return stSite.pstAccessServer == nullptr ? 0 : stSite.uiNumOfAccessServer;
}

uint32_t CopySiteGroups(Group *pstDst, const Site &stSite, bool bIsMainSite)
{
    return copyAccessGroup(pstDst, stSite.pstAccessServer, stSite.uiNumOfAccessServer, bIsMainSite ? 1 : 0);
}

} // namespace

/* ---- address resolution ------------------------------------------------------------ */

static void AddrToStr(uint32_t uiAddr, char *pcBuf, uint32_t uiLen)
{
    (void)qev_strcpy_s(pcBuf, uiLen, KOSA_InetNtoa(uiAddr));
}

uint32_t XmlAtriumGetIpFromDomain(char *pcOut, uint32_t uiOutLen, const char *pcUri)
{
    char acHost[HOST_CAPACITY];
    int32_t iPort = 0;

    /* The host buffer is only ever read as a string, and a scanned host brings its own
     * terminator: clearing its first byte gives the empty host without a 256-byte fill per
     * address. */
    acHost[0] = '\0';
    const char *pcColon = KOSA_StrChr(pcUri, ':');
    if (pcColon != nullptr) {
        /* The host is what "%[^:]" scans: everything before the first ':'. A host that
         * fits is copied as the scan would copy it, without interpreting the format once
         * per address; an empty or over-long one gets the scan's own outcome. */
        const size_t uiHostLen = static_cast<size_t>(pcColon - pcUri);
        if (uiHostLen != 0 && uiHostLen < HOST_CAPACITY) {
            std::memcpy(acHost, pcUri, uiHostLen);
            acHost[uiHostLen] = '\0';
        } else {
            (void)qev_sscanf_s(pcUri, "%[^:]", acHost, HOST_CAPACITY);
        }
    }
    if (CheckIsDomain(acHost) == 0) {
        (void)qev_strcpy_s(pcOut, uiOutLen, pcUri);
        return 0;
    }
    /* Only a host that is resolved needs its port; most addresses are IP literals. A host
     * that is a domain was scanned before a ':', so the colon is there. */
    (void)qev_sscanf_s(pcColon, ":%d", &iPort);

    tagLOGIN_S_SRV_IP_ENTRY astEntries[RESOLVER_ENTRIES];
    uint32_t uiCount = RESOLVER_ENTRIES;
    (void)qev_memset_s(astEntries, sizeof(astEntries), 0, sizeof(astEntries));
    uint32_t uiRet = AtriumGetSrvIpListByHost(acHost, RESOLVER_TYPE_FIRST, astEntries, &uiCount);
    if (uiRet != 0) {
        /* the count is deliberately not reset: the second type sees what the first left */
        uiRet = AtriumGetSrvIpListByHost(acHost, RESOLVER_TYPE_SECOND, astEntries, &uiCount);
    }
    if (uiRet != 0) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "dns err:%s ret:%u", acHost, uiRet);
        return ATRIUM_NOT_RESOLVED;
    }

    /* Appends are not checked: an overflowing one leaves pcOut empty and the join goes on
     * from there with the next address. */
    (void)qev_memset_s(pcOut, uiOutLen, 0, uiOutLen);
    const uint32_t uiFilled = uiCount < RESOLVER_ENTRIES ? uiCount : RESOLVER_ENTRIES;
    for (uint32_t i = 0; i < uiFilled; ++i) {
        if (astEntries[i].uiAddr == 0) {
            continue;
        }
        char acAddr[ADDR_TEXT_CAPACITY];
        char acAddrPort[ADDR_TEXT_CAPACITY];
        AddrToStr(astEntries[i].uiAddr, acAddr, sizeof(acAddr));
        if (pcOut[0] != '\0') {
            (void)qev_strcat_s(pcOut, uiOutLen, ";");
        }
        if (iPort != 0) {
            (void)qev_sprintf_s(acAddrPort, sizeof(acAddrPort), "%s:%u", acAddr, static_cast<uint32_t>(iPort));
            (void)qev_strcat_s(pcOut, uiOutLen, acAddrPort);
        } else {
            (void)qev_strcat_s(pcOut, uiOutLen, acAddr);
        }
    }
    return 0;
}

/* ---- STG group and access-server records -------------------------------------------- */

uint32_t XmlAtriumParseStgInfo(_NODE *pstNode, tagLOGIN_S_STG_GROUP *pstStg)
{
    if (pstNode == nullptr || pstStg == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "XmlAtriumParseStgInfo failed param is null\n");
        return 2;
    }
    (void)AtriumReadXmlKeys(pstNode, g_astStgKeys, pstStg, ATRIUM_HERE);
    (void)AtriumReadXmlKeys(pstNode, g_astMsStgKeys, pstStg, ATRIUM_HERE);
    return 0;
}

uint32_t XmlAtriumParseAccessServer(_NODE *pstNode, tagLOGIN_S_ACCESS_SERVER *pstServer,
                                    char *pcAtriumAddr, uint32_t uiAtriumAddrLen)
{
    if (pstNode == nullptr || pstServer == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "XmlAtriumParseAccessServer failed param is null\n");
        return 2;
    }
    CopyText(pstServer->acName, sizeof(pstServer->acName), NonEmptyAttr(pstNode, "name"));
    (void)AtriumReadXmlKeys(pstNode, g_astAccessServerKeys, pstServer, ATRIUM_HERE);

    /* The STG group parser fails only for a null argument, which a found element is not. */
    _NODE *pstStg = AtriumFindElement(pstNode, ATRIUM_PATH("accessserver.stggroup"), ATRIUM_HERE);
    if (pstStg != nullptr) {
        (void)XmlAtriumParseStgInfo(pstStg, &pstServer->stStgGroup);
    }
    (void)AtriumReadXmlKeys(pstNode, g_astMediaServerKeys, pstServer, ATRIUM_HERE);
    ReadSipTls(pstNode, pstServer, ATRIUM_HERE);
    (void)AtriumReadXmlKeys(pstNode, g_astSrtpKeys, pstServer, ATRIUM_HERE);
    if (pcAtriumAddr != nullptr) {
        CopyText(pcAtriumAddr, uiAtriumAddrLen,
                 FoundAttr(pstNode, ATRIUM_PATH("accessserver.atrium"), "uri", ATRIUM_HERE));
    }
    return 0;
}

/* ---- site list ----------------------------------------------------------------------- */

uint32_t GetSiteNumber(_NODE *pstNode)
{
    uint32_t uiSites = 0;
    for (_NODE *pstChild : AtriumChildren(pstNode)) {
        if (AtriumFindElement(pstChild, ATRIUM_PATH("site"), ATRIUM_HERE) != nullptr) {
            ++uiSites;
        }
    }
    return uiSites;
}

uint32_t XmlAtriumParseSite(_NODE *pstNode, tagLOGIN_S_SITE *pstSite, char *pcAtriumAddr,
                            uint32_t uiAtriumAddrLen)
{
    if (pstNode == nullptr || pstSite == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "XmlAtriumParseSite failed param is null\n");
        return 2;
    }
    CopyText(pstSite->acSiteName, sizeof(pstSite->acSiteName), NonEmptyAttr(pstNode, "name"));
    const char *pcPriority = NonEmptyAttr(pstNode, "priority");
    if (pcPriority != nullptr) {
        pstSite->uiPriority = KOSA_Strtoul(pcPriority, nullptr, 0);
    }
    _NODE *pstSbc = AtriumFindElement(pstNode, ATRIUM_PATH("site.sbc"), ATRIUM_HERE);
    if (pstSbc != nullptr) {
        CopyText(pstSite->acSbcDomain, sizeof(pstSite->acSbcDomain), NonEmptyAttr(pstSbc, "domain"));
    }

    _NODE *pstGroupList = AtriumFindElement(pstNode, ATRIUM_PATH("site.accessservergroup"), ATRIUM_HERE);
    if (pstGroupList != nullptr) {
        (void)KTL_XML_GetNodeChildNum(pstGroupList, &pstSite->uiNumOfAccessServer);
        if (pstSite->uiNumOfAccessServer != 0) {
            pstSite->pstAccessServer = AllocZeroedArray<Group>(pstSite->uiNumOfAccessServer);
            if (pstSite->pstAccessServer == nullptr) {
                ATRIUM_TRACE(LOGIN_TRACE_ERROR, "mem malloc failed");
                return 1;
            }
            ParseSiteGroups(pstGroupList, pstSite, pcAtriumAddr, uiAtriumAddrLen);
            ATRIUM_TRACE(LOGIN_TRACE_PROGRESS, "total server %u", pstSite->uiNumOfAccessServer);
        }
    }

    _NODE *pstAuth = AtriumFindElement(pstNode, ATRIUM_PATH("site.tmstr069auth"), ATRIUM_HERE);
    if (pstAuth != nullptr) {
        CopyText(pstSite->acDefaultAccount, sizeof(pstSite->acDefaultAccount),
                 NonEmptyAttr(pstAuth, "defaultaccount"));
        CopyText(pstSite->acDefaultPwd, sizeof(pstSite->acDefaultPwd), NonEmptyAttr(pstAuth, "defaultpwd"));
    }
    return 0;
}

uint32_t IsMatchingSite(_NODE *pstNode, const char *pcHost)
{
    const char *pcSsoHost = FoundAttr(pstNode, ATRIUM_PATH("site.sso_hostname"), "uri", ATRIUM_HERE);
    return (pcSsoHost != nullptr && KOSA_StrCmp(pcSsoHost, pcHost) == 0) ? 1 : 0;
}

void freeSiteMem(tagLOGIN_S_SITE *pstSites, uint32_t uiNum)
{
    if (pstSites == nullptr) {
        return;
    }
    for (uint32_t i = 0; i < uiNum; ++i) {
        if (pstSites[i].pstAccessServer != nullptr) {
            /* deliberately one group record's worth, not the whole array */
            (void)qev_memset_s(pstSites[i].pstAccessServer, sizeof(Group), 0, sizeof(Group));
            ATRIUM_FREE(pstSites[i].pstAccessServer);
        }
    }
    const uint32_t uiBytes = static_cast<uint32_t>(uiNum * sizeof(Site));
    (void)qev_memset_s(pstSites, uiBytes, 0, uiBytes);
    ATRIUM_FREE(pstSites);
}

/* ---- site and access-group selection ------------------------------------------------ */

uint32_t getRealRandom(void)
{
    uint32_t uiRandom = 0;
    (void)QEV_CPYPT_RealRandom(&uiRandom, sizeof(uiRandom));
    return uiRandom;
}

uint32_t getSeveralRandom(uint32_t *puiPos, uint32_t uiK, uint32_t uiN)
{
    if (puiPos == nullptr || uiK > uiN || uiN == 0 || !FitsAllocator(uiN, sizeof(uint32_t))) {
        return 1;
    }
    uint32_t *puiLive = static_cast<uint32_t *>(ATRIUM_MALLOC_D(uiN * static_cast<uint32_t>(sizeof(uint32_t))));
    if (puiLive == nullptr) {
        return 1;
    }
    for (uint32_t j = 0; j < uiN; ++j) {
        puiLive[j] = j;
    }
    /* Partial Fisher-Yates: draw among the m positions still live, then move the last live
     * one into the taken slot. */
    for (uint32_t i = 0; i < uiK; ++i) {
        const uint32_t uiLiveNum = uiN - i;
        const uint32_t uiTaken = getRealRandom() % uiLiveNum;
        puiPos[i] = puiLive[uiTaken];
        ATRIUM_TRACE(LOGIN_TRACE_PROGRESS, "pos[%u]:%u", i, puiPos[i]);
        if (uiTaken != uiLiveNum - 1) {
            puiLive[uiTaken] = puiLive[uiLiveNum - 1];
        }
    }
    ATRIUM_FREE(puiLive);
    return 0;
}

uint32_t getTopPriorityPos(tagLOGIN_S_SITE *pstSites, uint32_t uiNumOfSite)
{
    uint32_t uiBest = pstSites[0].uiPriority;
    uint32_t uiPos = 0;
    for (uint32_t i = 1; i < uiNumOfSite; ++i) {
        if (pstSites[i].uiPriority < uiBest) {
            uiBest = pstSites[i].uiPriority;
            uiPos = i;
        }
    }
    return uiPos;
}

uint32_t copyAccessGroup(tagLOGIN_S_ACCESS_SERVER *pstDst, tagLOGIN_S_ACCESS_SERVER *pstSrc,
                         uint32_t uiNumOfGroup, uint32_t uiIsMainSite)
{
    const uint32_t uiTake = pstSrc == nullptr ? 0 : (uiNumOfGroup < GROUPS_PER_SITE ? uiNumOfGroup : GROUPS_PER_SITE);
    uint32_t auiPos[GROUPS_PER_SITE];

    if (uiTake == 0 || getSeveralRandom(auiPos, uiTake, uiNumOfGroup) != 0) {
        return 0;
    }
    for (uint32_t i = 0; i < uiTake; ++i) {
        (void)qev_memcpy_s(&pstDst[i], sizeof(Group), &pstSrc[auiPos[i]], sizeof(Group));
        pstDst[i].uiIsMainSite = uiIsMainSite;
    }
    return uiTake;
}

uint32_t getSingleSiteAccessGroup(tagLOGIN_S_SITE *pstSites, tagLOGIN_S_SITE *pstOut, uint32_t uiMainSite)
{
    ATRIUM_TRACE(LOGIN_TRACE_PROGRESS, "num of access group:%u", pstSites[0].uiNumOfAccessServer);
    pstOut->pstAccessServer = AllocZeroedArray<Group>(GROUPS_PER_SITE);
    if (pstOut->pstAccessServer == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "mem malloc failed");
        return 1;
    }
    /* The argument names the main site's index, and the only site is index 0: its groups
     * are main when the argument is 0. */
    const uint32_t uiCopied = CopySiteGroups(pstOut->pstAccessServer, pstSites[0], uiMainSite == 0);
    if (uiCopied == 0) {
        ATRIUM_FREE_SET_NULL(&pstOut->pstAccessServer);
    }
    pstOut->uiNumOfAccessServer = uiCopied;
    return 0;
}

uint32_t getMultAccessGroup(tagLOGIN_S_SITE *pstSites, uint32_t uiNumOfSite, uint32_t uiOwnSite,
                            uint32_t uiMainSite, uint32_t uiTopPrioritySite, tagLOGIN_S_SITE *pstOut)
{
    ATRIUM_TRACE(LOGIN_TRACE_PROGRESS, "uiNumOfSite:%u, uiOwnSite:%u, uiMainSite:%u, uiTopPrioritySite:%u",
                 uiNumOfSite, uiOwnSite, uiMainSite, uiTopPrioritySite);
    pstOut->pstAccessServer = AllocZeroedArray<Group>(static_cast<uint64_t>(GROUPS_PER_SITE) * uiNumOfSite);
    if (pstOut->pstAccessServer == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "mem malloc failed");
        return 1;
    }
    Group *pstGroups = pstOut->pstAccessServer;
    uint32_t uiTotal = CopySiteGroups(pstGroups, pstSites[uiOwnSite], uiOwnSite == uiMainSite);
    if (uiTopPrioritySite != uiOwnSite) {
        uiTotal += CopySiteGroups(pstGroups + uiTotal, pstSites[uiTopPrioritySite],
                                  uiTopPrioritySite == uiMainSite);
    }
    for (uint32_t i = 0; i < uiNumOfSite; ++i) {
        if (i != uiOwnSite && i != uiTopPrioritySite) {
            uiTotal += CopySiteGroups(pstGroups + uiTotal, pstSites[i], i == uiMainSite);
        }
    }
    if (uiTotal == 0) {
        ATRIUM_FREE_SET_NULL(&pstOut->pstAccessServer);
    }
    pstOut->uiNumOfAccessServer = uiTotal;
    return 0;
}

uint32_t getSiteInfo(tagLOGIN_S_SITE *pstSites, uint32_t uiNumOfSite, uint32_t uiOwnSite,
                     uint32_t uiMainSite, tagLOGIN_S_SITE **ppstSite)
{
    if (uiNumOfSite == 0) {
        return 1;
    }
    Site *pstSelected = AllocZeroedArray<Site>(1);
    if (pstSelected == nullptr) {
        return 1;
    }
    *ppstSite = pstSelected;
    /* The copy shares the own site's group pointer only until the group step replaces it. */
    (void)qev_memcpy_s(pstSelected, sizeof(Site), &pstSites[uiOwnSite], sizeof(Site));
    /* The group step's failure leaves a null group array in the selected site, which its
     * consumers read as no groups; the selected site itself stands, so the result is 0. */
    if (uiNumOfSite == 1) {
        ATRIUM_TRACE(LOGIN_TRACE_PROGRESS, "uiNumOfSite:%u, uiOwnSite:%u, uiMainSite:%u", uiNumOfSite, uiOwnSite,
                     uiMainSite);
        (void)getSingleSiteAccessGroup(pstSites, pstSelected, uiMainSite);
    } else {
        const uint32_t uiTop = getTopPriorityPos(pstSites, uiNumOfSite);
        (void)getMultAccessGroup(pstSites, uiNumOfSite, uiOwnSite, uiMainSite, uiTop, pstSelected);
    }
    return 0;
}

/* ---- SIP server list ----------------------------------------------------------------- */

uint32_t getAllSipServer(tagLOGIN_S_SITE *pstSites, uint32_t uiNumOfSite, tagLOGIN_S_SERVER_LIST *pstList)
{
    uint32_t uiTotal = 0;
    for (uint32_t i = 0; i < uiNumOfSite; ++i) {
        for (uint32_t j = 0; j < UsableGroups(pstSites[i]); ++j) {
            uiTotal += (pstSites[i].pstAccessServer[j].acSipTlsUri[0] != '\0') ? 2 : 1;
        }
    }
    /* the count is stored first, so it stays set when the allocation fails */
    pstList->uiNum = uiTotal;
    pstList->pstServer = AllocZeroedArray<tagLOGIN_S_SERVER_ADDR_INFO>(uiTotal);
    if (pstList->pstServer == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "mem malloc failed");
        return 1;
    }
    tagLOGIN_S_SERVER_ADDR_INFO *pstEntry = pstList->pstServer;
    for (uint32_t i = 0; i < uiNumOfSite; ++i) {
        for (uint32_t j = 0; j < UsableGroups(pstSites[i]); ++j) {
            const Group &stGroup = pstSites[i].pstAccessServer[j];
            (void)LoginDataGetServerFormString(stGroup.acSipUri, pstEntry++);
            if (stGroup.acSipTlsUri[0] != '\0') {
                (void)LoginDataGetServerFormString(stGroup.acSipTlsUri, pstEntry++);
            }
        }
    }
    return 0;
}

/* ---- key tables, for those who describe them ----------------------------------------- */

std::vector<AtriumKeyTable> AtriumSiteKeyTables()
{
    return {
        AtriumTable("XmlAtriumParseStgInfo", "tagLOGIN_S_STG_GROUP", g_astStgKeys),
        AtriumTable("XmlAtriumParseStgInfo", "tagLOGIN_S_STG_GROUP", g_astMsStgKeys),
        AtriumTable("XmlAtriumParseAccessServer", "tagLOGIN_S_ACCESS_SERVER", g_astAccessServerKeys),
        AtriumTable("XmlAtriumParseAccessServer", "tagLOGIN_S_ACCESS_SERVER", g_astMediaServerKeys),
        AtriumTable("XmlAtriumParseAccessServer", "tagLOGIN_S_ACCESS_SERVER", g_astSrtpKeys),
    };
}
