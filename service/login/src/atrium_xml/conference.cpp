/*
 * conference.cpp - the conference (Tandem) server's answers and the temporary user's.
 *
 * Each answer arrives as an XML body; its parser checks the arguments, parses the body,
 * reads its keys with the shared per-key step (single keys through key tables), fills the
 * caller's record and releases the document. The conference login fills seven sub-records,
 * one static sub-parser each; the address lists among them are runs of same-named siblings
 * read by one walk. The version, random-key and search answers fill small records of their
 * own. The guest's service-site answer takes the short road through the site machinery
 * (sites.cpp): the site matching the guest's SSO host is parsed, copied into a record the
 * caller owns and given its own randomly chosen access groups. The guest's SIP, conference
 * and account answers fill the temporary-user record and the account record; the
 * nearby-access answer is base64-decoded into a buffer the caller owns.
 *
 * These answers differ on purpose in their messages and prefixes, result codes, trace
 * levels and in the two server-error paths that return without releasing the document;
 * the login service is built against each of them as it is.
 */
#include "atrium_frame.h"
#include "ktl_base64.h"

namespace {

/* ---- key-table rows ---------------------------------------------------------------- */

/* A key whose absence costs only the per-key traces. */
constexpr AtriumValueKey PlainKey(const char *pcPath, uint32_t uiOffset, uint32_t uiCapacity,
                                  AtriumConv eConv = AtriumConv::Text)
{
    return AtriumValueKey{pcPath, uiOffset, uiCapacity, eConv, false, nullptr, 0, nullptr, false, 0};
}

/* An optional key whose absence is also told by its own level-1 message. */
constexpr AtriumValueKey TracedKey(const char *pcPath, uint32_t uiOffset, uint32_t uiCapacity,
                                   const char *pcMissMessage, AtriumConv eConv = AtriumConv::Text)
{
    return AtriumValueKey{pcPath,        uiOffset,         uiCapacity, eConv, false,
                          pcMissMessage, LOGIN_TRACE_MISS, nullptr,    false, 0};
}

/* A key whose absence stops the table with result 1, told at uiMissLevel. */
constexpr AtriumValueKey RequiredKey(const char *pcPath, uint32_t uiOffset, uint32_t uiCapacity,
                                     const char *pcMissMessage, uint32_t uiMissLevel,
                                     AtriumConv eConv = AtriumConv::Text)
{
    return AtriumValueKey{pcPath, uiOffset, uiCapacity, eConv, true, pcMissMessage, uiMissLevel, nullptr, false, 0};
}

/* The same row, writing uiDefault to its field when the key is absent. */
constexpr AtriumValueKey DefaultOnMiss(AtriumValueKey stKey, uint32_t uiDefault)
{
    stKey.bMissDefault = true;
    stKey.uiMissDefault = uiDefault;
    return stKey;
}

/* A lookup whose miss is not traced; a null node is a miss whatever the code says. */
bool TandemFindNode(_NODE *pstStart, const char *pcPath, _NODE **ppstNode)
{
    *ppstNode = nullptr;
    return KTL_XML_GetNodeByUrl(pstStart, pcPath, ppstNode) == 0 && *ppstNode != nullptr;
}

/* ---- conference login: the address-list walk --------------------------------------- */

const uint32_t TANDEM_ADDRESS_LEN = 256;

/* A list's limit is its entry count in the record: 18, 5, 5, 5 and 6, deliberately uneven. */
template <size_t N>
constexpr uint32_t ListLimit(const char (&)[N][TANDEM_ADDRESS_LEN])
{
    return static_cast<uint32_t>(N);
}

/*
 * Reads the run of consecutive siblings named pcSiblingName that starts at stFirstPath
 * into at most uiLimit entries; *puiCount ends as the number read. A sibling of another
 * name, or one without text, ends the run; siblings past the limit are left unread. The
 * lookup of the first element traces on behalf of the sub-parser that owns the list.
 */
void TandemReadAddressList(_NODE *pstStart, const AtriumPath &stFirstPath, const char *pcSiblingName,
                           uint32_t uiLimit, uint32_t *puiCount, char (*aacEntries)[TANDEM_ADDRESS_LEN],
                           const AtriumCallSite &stSite)
{
    _NODE *pstNode = nullptr;
    char *pcValue = nullptr;

    *puiCount = 0;
    (void)AtriumGetNodeValueByUri(pstStart, stFirstPath, &pstNode, &pcValue, stSite);
    while (pstNode != nullptr && *puiCount < uiLimit) {
        char *pcName = nullptr;
        pcValue = nullptr;
        (void)KTL_XML_GetNodeValue(pstNode, nullptr, 0, &pcName, &pcValue);
        if (pcName == nullptr || pcValue == nullptr || KOSA_StrCmp(pcName, pcSiblingName) != 0) {
            break;
        }
        (void)qev_strcpy_s(aacEntries[*puiCount], TANDEM_ADDRESS_LEN, pcValue);
        pstNode = KTL_XML_GetNodeNextSibling(pstNode);
        ++*puiCount;
    }
}

/* ---- conference login: key tables of the sub-records -------------------------------- */

using TandemResult = tagXML_S_TANDEM_RESULT;
using TandemProfile = tagXML_S_TANDEM_PROFILE;
using TandemSip = tagXML_S_TANDEM_SIP;
using TandemEua = tagXML_S_TANDEM_EUA;
using TandemStg = tagXML_S_TANDEM_STG;
using TandemTms = tagXML_S_TANDEM_TMS;

constexpr AtriumValueKey g_astResultKeys[] = {
    RequiredKey("result.resultCode", ATRIUM_FIELD(TandemResult, uiResultCode), "resultCode empty",
                LOGIN_TRACE_ERROR, AtriumConv::Strtoul),
    RequiredKey("result.resultDesc", ATRIUM_FIELD(TandemResult, acResultDesc), "resultDesc empty",
                LOGIN_TRACE_ERROR),
};

constexpr AtriumValueKey g_astProfileKeys[] = {
    PlainKey("profile.token", ATRIUM_FIELD(TandemProfile, acToken)),
    PlainKey("profile.supportMediaTypes", ATRIUM_FIELD(TandemProfile, acSupportMediaTypes)),
};

constexpr AtriumValueKey g_astSipKeys[] = {
    PlainKey("conferenceClientInfo.serviceDomain", ATRIUM_FIELD(TandemSip, acDomain)),
    PlainKey("conferenceClientInfo.proxyServer", ATRIUM_FIELD(TandemSip, acProxy)),
    PlainKey("conferenceClientInfo.userName", ATRIUM_FIELD(TandemSip, acUserName)),
    PlainKey("conferenceClientInfo.userPassword", ATRIUM_FIELD(TandemSip, acPassword)),
    PlainKey("conferenceClientInfo.authorizedName", ATRIUM_FIELD(TandemSip, acAuthName)),
};

constexpr AtriumValueKey g_astEuaKeys[] = {
    PlainKey("conferenceClientInfo.euaInfo.userName", ATRIUM_FIELD(TandemEua, acUserName)),
    PlainKey("conferenceClientInfo.euaInfo.password", ATRIUM_FIELD(TandemEua, acPassword)),
    PlainKey("conferenceClientInfo.euaInfo.baseDN", ATRIUM_FIELD(TandemEua, acBaseDN)),
};

constexpr AtriumValueKey g_astStgKeys[] = {
    PlainKey("conferenceClientInfo.stgInfo.userName", ATRIUM_FIELD(TandemStg, acUserName)),
    PlainKey("conferenceClientInfo.stgInfo.password", ATRIUM_FIELD(TandemStg, acPassword)),
};

constexpr AtriumValueKey g_astTmsKeys[] = {
    PlainKey("conferenceClientInfo.tmsInfo.userName", ATRIUM_FIELD(TandemTms, acUserName)),
    PlainKey("conferenceClientInfo.tmsInfo.password", ATRIUM_FIELD(TandemTms, acPassword)),
};

} // namespace

/* ---- conference login -------------------------------------------------------------- */

/* The five sub-parsers of the conference-client block share one null-argument message. */
#define TANDEM_CONF_CLIENT_NULL_MESSAGE "Tandem: Parse ConfClient Pointer empty!\n"

static uint32_t XmlTandemParseResult(_NODE *pstNode, tagXML_S_TANDEM_RESULT *pstResult)
{
    if (pstNode == nullptr || pstResult == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "Tandem: Parse Result Pointer empty!\n");
        return 2;
    }
    return AtriumReadValueKeys(pstNode, g_astResultKeys, pstResult, ATRIUM_HERE);
}

static uint32_t XmlTandemParseProfile(_NODE *pstNode, tagXML_S_TANDEM_PROFILE *pstProfile)
{
    if (pstNode == nullptr || pstProfile == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "Tandem: Parse Profile Pointer empty!\n");
        return 2;
    }
    (void)AtriumReadValueKeys(pstNode, g_astProfileKeys, pstProfile, ATRIUM_HERE);
    return 0;
}

static uint32_t XmlTandemParseSip(_NODE *pstNode, tagXML_S_TANDEM_SIP *pstSip)
{
    if (pstNode == nullptr || pstSip == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, TANDEM_CONF_CLIENT_NULL_MESSAGE);
        return 2;
    }
    (void)AtriumReadValueKeys(pstNode, g_astSipKeys, pstSip, ATRIUM_HERE);
    return 0;
}

static uint32_t XmlTandemParseEua(_NODE *pstNode, tagXML_S_TANDEM_EUA *pstEua)
{
    if (pstNode == nullptr || pstEua == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, TANDEM_CONF_CLIENT_NULL_MESSAGE);
        return 2;
    }
    TandemReadAddressList(pstNode, ATRIUM_PATH("conferenceClientInfo.euaInfo.address"), "address",
                          ListLimit(pstEua->acAddress), &pstEua->uiAddressNum, pstEua->acAddress, ATRIUM_HERE);
    (void)AtriumReadValueKeys(pstNode, g_astEuaKeys, pstEua, ATRIUM_HERE);
    return 0;
}

static uint32_t XmlTandemParseStg(_NODE *pstNode, tagXML_S_TANDEM_STG *pstStg)
{
    if (pstNode == nullptr || pstStg == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, TANDEM_CONF_CLIENT_NULL_MESSAGE);
        return 2;
    }
    (void)AtriumReadValueKeys(pstNode, g_astStgKeys, pstStg, ATRIUM_HERE);
    TandemReadAddressList(pstNode, ATRIUM_PATH("conferenceClientInfo.stgInfo.stgAddress"), "stgAddress",
                          ListLimit(pstStg->acStgAddress), &pstStg->uiStgNum, pstStg->acStgAddress, ATRIUM_HERE);
    TandemReadAddressList(pstNode, ATRIUM_PATH("conferenceClientInfo.stgInfo.sbcInnerAddress"), "sbcInnerAddress",
                          ListLimit(pstStg->acSbcInnerAddress), &pstStg->uiSbcNum, pstStg->acSbcInnerAddress,
                          ATRIUM_HERE);
    return 0;
}

static uint32_t XmlTandemParseTms(_NODE *pstNode, tagXML_S_TANDEM_TMS *pstTms)
{
    if (pstNode == nullptr || pstTms == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, TANDEM_CONF_CLIENT_NULL_MESSAGE);
        return 2;
    }
    (void)AtriumReadValueKeys(pstNode, g_astTmsKeys, pstTms, ATRIUM_HERE);
    TandemReadAddressList(pstNode, ATRIUM_PATH("conferenceClientInfo.tmsInfo.address"), "address",
                          ListLimit(pstTms->acAddress), &pstTms->uiTmsNum, pstTms->acAddress, ATRIUM_HERE);
    return 0;
}

/* stPath names the first address element, so one routine serves the success answer and
 * the refusal's failConferenceClientInfo block. */
static uint32_t XmlTandemParseAtrium(_NODE *pstNode, tagXML_S_TANDEM_ATRIUM *pstAtrium, const AtriumPath &stPath)
{
    if (pstNode == nullptr || pstAtrium == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, TANDEM_CONF_CLIENT_NULL_MESSAGE);
        return 2;
    }
    TandemReadAddressList(pstNode, stPath, "address", ListLimit(pstAtrium->acAddress), &pstAtrium->uiAtriumNum,
                          pstAtrium->acAddress, ATRIUM_HERE);
    return 0;
}

uint32_t XmlParseTandmLoginResult(const char *pcXmlBody, tagXML_S_TANDEM_LOGIN_RESULT *pstResult)
{
    _NODE *pstRoot = nullptr;
    _NODE *pstNode = nullptr;

    const AtriumOpening stOpening = {"Tandem: Conf Login Parse download xmlBody pointer empty!",
                                     "Tandem: Conf Login KTL_XML_Parse failed errno=[0x%x]!", ATRIUM_PARSE_CODE};
    uint32_t uiRet = AtriumOpenAnswer(pcXmlBody, pstResult, stOpening, &pstRoot, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }

    /* A refusal may come as a bare "result" root instead of the "loginResult" wrapper. */
    uiRet = KTL_XML_GetNodeByUrl(pstRoot, "loginResult.result", &pstNode);
    if (uiRet != 0 || pstNode == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_MISS, "Not Find the logResult");
        uiRet = KTL_XML_GetNodeByUrl(pstRoot, "result", &pstNode);
        if (uiRet != 0 || pstNode == nullptr) {
            ATRIUM_TRACE(LOGIN_TRACE_ERROR, "Not Find the result");
            KTL_XML_FreeNode(pstRoot);
            return uiRet;
        }
    }
    uiRet = XmlTandemParseResult(pstNode, &pstResult->stResult);
    if (uiRet != 0) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "Tandem: Conf Create ParseConfInfo failed errno=[0x%x]!", uiRet);
        KTL_XML_FreeNode(pstRoot);
        return uiRet;
    }
    /* The server's verdict stays in uiResultCode; a refusal is still a parsed answer. */
    ATRIUM_TRACE(LOGIN_TRACE_DUMP, "resultcode: %u", pstResult->stResult.uiResultCode);

    if (TandemFindNode(pstRoot, "loginResult.profile", &pstNode)) {
        uiRet = XmlTandemParseProfile(pstNode, &pstResult->stProfile);
        if (uiRet != 0) {
            ATRIUM_TRACE(LOGIN_TRACE_ERROR, "Tandem: Conf Login ParseProfile failed errno=[0x%x]!", uiRet);
            KTL_XML_FreeNode(pstRoot);
            return uiRet;
        }
        ATRIUM_TRACE(LOGIN_TRACE_DUMP, "mediatypes: %s", pstResult->stProfile.acSupportMediaTypes);
    }

    if (TandemFindNode(pstRoot, "loginResult.conferenceClientInfo", &pstNode)) {
        /* Each block is independent: a failing one is told and the others still read. */
        uiRet = XmlTandemParseSip(pstNode, &pstResult->stSip);
        if (uiRet != 0) {
            ATRIUM_TRACE(LOGIN_TRACE_MISS, "Tandem: Conf Login Parse ConferenceClientInfo sip failed errno=[0x%x]!",
                         uiRet);
        } else {
            ATRIUM_TRACE(LOGIN_TRACE_DUMP, "acDomain: %s, acProxy: %s", pstResult->stSip.acDomain,
                         pstResult->stSip.acProxy);
        }
        uiRet = XmlTandemParseEua(pstNode, &pstResult->stEua);
        if (uiRet != 0) {
            ATRIUM_TRACE(LOGIN_TRACE_MISS, "Tandem: Conf Login Parse ConferenceClientInfo eua failed errno=[0x%x]!",
                         uiRet);
        } else {
            ATRIUM_TRACE(LOGIN_TRACE_DUMP, "acAddress: %s, acBaseDN: %s, acUserName: %s",
                         pstResult->stEua.acAddress[0], pstResult->stEua.acBaseDN, pstResult->stEua.acUserName);
        }
        uiRet = XmlTandemParseStg(pstNode, &pstResult->stStg);
        if (uiRet != 0) {
            ATRIUM_TRACE(LOGIN_TRACE_MISS,
                         "Tandem: Conf Login Parse ConferenceClientInfo stginfo failed errno=[0x%x]!", uiRet);
        } else {
            ATRIUM_TRACE(LOGIN_TRACE_DUMP, "stgnum: %u, uiSbcNum: %u, acUserName: %s", pstResult->stStg.uiStgNum,
                         pstResult->stStg.uiSbcNum, pstResult->stStg.acUserName);
        }
        uiRet = XmlTandemParseTms(pstNode, &pstResult->stTms);
        if (uiRet != 0) {
            ATRIUM_TRACE(LOGIN_TRACE_MISS,
                         "Tandem: Conf Login Parse ConferenceClientInfo tmsInfo failed errno=[0x%x]!", uiRet);
        } else {
            ATRIUM_TRACE(LOGIN_TRACE_DUMP, "tmsnum: %u, acUserName: %s", pstResult->stTms.uiTmsNum,
                         pstResult->stTms.acUserName);
        }
        uiRet =
            XmlTandemParseAtrium(pstNode, &pstResult->stAtrium, ATRIUM_PATH("conferenceClientInfo.atriumInfo.address"));
        if (uiRet != 0) {
            ATRIUM_TRACE(LOGIN_TRACE_MISS,
                         "Tandem: Conf Login Parse ConferenceClientInfo atriumInfo failed errno=[0x%x]!", uiRet);
        } else {
            ATRIUM_TRACE(LOGIN_TRACE_DUMP, "atrium num: %u", pstResult->stAtrium.uiAtriumNum);
        }
    } else if (TandemFindNode(pstRoot, "result.failConferenceClientInfo", &pstNode)) {
        /* A refusal may still name the portal addresses the client can turn to. */
        uiRet = XmlTandemParseAtrium(pstNode, &pstResult->stAtrium,
                                     ATRIUM_PATH("failConferenceClientInfo.atriumInfo.address"));
        if (uiRet != 0) {
            ATRIUM_TRACE(LOGIN_TRACE_MISS,
                         "Tandem: Conf Login Parse failConferenceClientInfo AtriumInfo failed errno=[0x%x]!", uiRet);
        } else {
            ATRIUM_TRACE(LOGIN_TRACE_DUMP, "atrium num: %u", pstResult->stAtrium.uiAtriumNum);
        }
    }
    KTL_XML_FreeNode(pstRoot);
    return 0;
}

/* ---- version ----------------------------------------------------------------------- */

namespace {

/* Some parsers report any parse failure with this code instead of the library's own. */
const uint32_t TANDEM_RET_NOT_XML = 5;

/*
 * Every key of the version answer is required, and a miss returns the library's own code
 * (not 1). The decision rests on the codes alone, so an empty element passes: it stores
 * 0 or "".
 */
uint32_t TandemReadVersionKeys(_NODE *pstRoot, tagXML_S_TANDEM_VERSION_RESULT *pstVersion,
                               const AtriumCallSite &stSite)
{
    _NODE *pstNode = nullptr;
    char *pcValue = nullptr;

    uint32_t uiRet =
        AtriumGetNodeValueByUri(pstRoot, ATRIUM_PATH("versionResult.result.resultCode"), &pstNode, &pcValue, stSite);
    if (uiRet != 0) {
        return uiRet;
    }
    pstVersion->uiResultCode = KOSA_Strtoul(pcValue, nullptr, 0);
    uiRet =
        AtriumGetNodeValueByUri(pstRoot, ATRIUM_PATH("versionResult.result.resultDesc"), &pstNode, &pcValue, stSite);
    if (uiRet != 0) {
        return uiRet;
    }
    (void)qev_strcpy_s(pstVersion->acResultDesc, sizeof(pstVersion->acResultDesc), pcValue ? pcValue : "");
    uiRet = AtriumGetNodeValueByUri(pstRoot, ATRIUM_PATH("versionResult.versionNumber"), &pstNode, &pcValue, stSite);
    if (uiRet != 0) {
        return uiRet;
    }
    (void)qev_strcpy_s(pstVersion->acVersionNumber, sizeof(pstVersion->acVersionNumber), pcValue ? pcValue : "");
    return 0;
}

} // namespace

uint32_t XmlParseGetTandemVersionResult(const char *pcXmlBody, tagXML_S_TANDEM_VERSION_RESULT *pstVersionResult)
{
    _NODE *pstRoot = nullptr;
    _NODE *pstNode = nullptr;

    if (pcXmlBody == nullptr || pstVersionResult == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR,
                     "RestConf: ParseVersionXML Param KOS_NULL_PTR! pcXmlBody(%p), pstVersionResult(%p)",
                     static_cast<const void *>(pcXmlBody), static_cast<void *>(pstVersionResult));
        return 2;
    }
    uint32_t uiRet = AtriumParseAnswer(pcXmlBody, "RestConf: ParseVersionXML Parse failed, ulRet[0x%x]!",
                                       TANDEM_RET_NOT_XML, &pstRoot, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    uiRet = KTL_XML_GetNodeByUrl(pstRoot, "versionResult.result", &pstNode);
    if (uiRet != 0 || pstNode == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR,
                     "RestConf: ParseVersionXML GetNodeByUrl [versionResult.result] failed, ulRet[0x%x]!", uiRet);
        KTL_XML_FreeNode(pstRoot);
        return uiRet;
    }
    uiRet = TandemReadVersionKeys(pstRoot, pstVersionResult, ATRIUM_HERE);
    KTL_XML_FreeNode(pstRoot);
    return uiRet;
}

/* ---- guest random key -------------------------------------------------------------- */

namespace {

using RandomRecord = tagXML_S_TANDEM_RANDOM_RESULT;

/* Both keys are required, and their misses are told at level 1, unlike most of the module. */
constexpr AtriumValueKey g_astRandomKeys[] = {
    RequiredKey("confinfo.site_url", ATRIUM_FIELD(RandomRecord, acSiteUrl), "Not Find the site_url", LOGIN_TRACE_MISS),
    RequiredKey("confinfo.random", ATRIUM_FIELD(RandomRecord, acRandom), "Not Find the random", LOGIN_TRACE_MISS),
};

/* Any server error that has no code of its own in the login service. */
const uint32_t TANDEM_RET_SERVER_ERROR = 11;

/* The login service's codes for the server's errors; 404 shares code 2 with a null argument
 * and 11028/11029 map in reverse order, as the login service expects them. */
const struct {
    uint32_t uiServerCode;
    uint32_t uiResult;
} g_astRandomErrorMap[] = {
    {401, 35}, {403, 36}, {404, 2}, {413, 37}, {11028, 40}, {11029, 39},
};

} // namespace

uint32_t XmlParseTandemRandomErrorcode(uint32_t uiErrorCode)
{
    for (const auto &stEntry : g_astRandomErrorMap) {
        if (stEntry.uiServerCode == uiErrorCode) {
            return stEntry.uiResult;
        }
    }
    return TANDEM_RET_SERVER_ERROR;
}

uint32_t XmlParseTandemRandomResult(const char *pcXmlBody, tagXML_S_TANDEM_RANDOM_RESULT *pstRandomResult)
{
    _NODE *pstRoot = nullptr;
    _NODE *pstNode = nullptr;
    char *pcValue = nullptr;

    const AtriumOpening stOpening = {"Tandem: Conf Login Parse xmlBody pointer empty!",
                                     "atrium: Conf Login KTL_XML_Parse failed errno=[0x%x]!", ATRIUM_PARSE_CODE};
    uint32_t uiRet = AtriumOpenAnswer(pcXmlBody, pstRandomResult, stOpening, &pstRoot, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    (void)XML_D_GET_NODEVALUE_BYURI(pstRoot, "confinfo.errorCode", &pstNode, &pcValue);
    if (pcValue != nullptr) {
        const uint32_t uiErrorCode = KOSA_Strtoul(pcValue, nullptr, 0);
        if (uiErrorCode != 0) {
            ATRIUM_TRACE(LOGIN_TRACE_MISS, "Find errorcode(%u),get tempuser siteurl fail", uiErrorCode);
            /* Deliberately returns without releasing the document (kept as built). */
            return XmlParseTandemRandomErrorcode(uiErrorCode);
        }
    }
    uiRet = AtriumReadValueKeys(pstRoot, g_astRandomKeys, pstRandomResult, ATRIUM_HERE);
    KTL_XML_FreeNode(pstRoot);
    return uiRet;
}

/* ---- conference search ------------------------------------------------------------- */

uint32_t XmlParseTandemSearchResult(const char *pcXmlBody, tagXML_S_TANDEM_SEARCH_RESULT *pstSearchResult)
{
    _NODE *pstRoot = nullptr;
    _NODE *pstServiceTp = nullptr;
    char *pcValue = nullptr;
    const uint32_t uiMaxSites = static_cast<uint32_t>(sizeof(pstSearchResult->auiPriority) / sizeof(uint32_t));

    /* Callers never pass null; the check keeps a null record from being written through. */
    const AtriumOpening stOpening = {"atrium: Conf Search Parse xmlBody pointer empty!",
                                     "atrium: KTL_XML_Parse failed errno=[0x%x]!", ATRIUM_PARSE_CODE};
    uint32_t uiRet = AtriumOpenAnswer(pcXmlBody, pstSearchResult, stOpening, &pstRoot, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    (void)XML_D_GET_NODEVALUE_BYURI(pstRoot, "servicetp", &pstServiceTp, &pcValue);
    /* Entries are appended after what the caller holds; the walk ends once the record is full. */
    for (_NODE *pstChild = KTL_XML_GetNodeFirstChild(pstServiceTp);
         pstChild != nullptr && pstSearchResult->uiSiteNum < uiMaxSites;
         pstChild = KTL_XML_GetNodeNextSibling(pstChild)) {
        const AtriumSearchSite stFound = AtriumReadSearchSite(pstChild, ATRIUM_HERE);
        if (stFound.uiPriority == 0 || stFound.acUri[0] == '\0') {
            continue;
        }
        const uint32_t uiIndex = pstSearchResult->uiSiteNum;
        pstSearchResult->auiPriority[uiIndex] = stFound.uiPriority;
        (void)qev_strcpy_s(pstSearchResult->acSsoHostName[uiIndex], sizeof(pstSearchResult->acSsoHostName[uiIndex]),
                           stFound.acUri);
        pstSearchResult->uiSiteNum = uiIndex + 1;
    }
    KTL_XML_FreeNode(pstRoot);
    return 0;
}

/* ---- guest service site ------------------------------------------------------------ */

namespace {

/*
 * Parses into pstSite the first child of pstRoot whose SSO host is pcSiteKey; the first
 * group that names a portal address writes it to pcAtriumUri while that is still empty.
 * Without a match pstSite stays as it was (all zero).
 */
void TandemParseGuestSite(_NODE *pstRoot, const char *pcSiteKey, tagLOGIN_S_SITE *pstSite, char *pcAtriumUri,
                          uint32_t uiAtriumUriLen)
{
    uint32_t uiCount = 0;
    (void)KTL_XML_GetNodeChildNum(pstRoot, &uiCount);
    _NODE *pstChild = KTL_XML_GetNodeFirstChild(pstRoot);
    for (uint32_t i = 0; i < uiCount && pstChild != nullptr; ++i) {
        if (IsMatchingSite(pstChild, pcSiteKey) != 0) {
            (void)XmlAtriumParseSite(pstChild, pstSite, pcAtriumUri, uiAtriumUriLen);
            return;
        }
        pstChild = KTL_XML_GetNodeNextSibling(pstChild);
    }
}

/* Releases the parsed site's group array (the copy never keeps it). Only the first
 * group's worth of bytes is wiped, deliberately, as the site machinery's release does. */
void TandemReleaseGuestGroups(tagLOGIN_S_SITE *pstSite)
{
    if (pstSite->pstAccessServer == nullptr) {
        return;
    }
    (void)qev_memset_s(pstSite->pstAccessServer, sizeof(tagLOGIN_S_ACCESS_SERVER), 0, sizeof(tagLOGIN_S_ACCESS_SERVER));
    ATRIUM_FREE(pstSite->pstAccessServer);
}

/* getSingleSiteAccessGroup marks its groups as main only for 0: the guest's are not. */
const uint32_t TANDEM_GUEST_SITE_NOT_MAIN = 1;

} // namespace

uint32_t XmlParseTandemTempuserServiceTp(const char *pcXmlBody, const char *pcSiteKey,
                                         tagXML_S_TANDEM_TEMPUSER_INFO *pstTempUser)
{
    _NODE *pstRoot = nullptr;
    tagLOGIN_S_SITE stSite{};

    if (pcXmlBody == nullptr || pcSiteKey == nullptr || pstTempUser == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "XmlParseTandemTempuserServiceTp failed param is null\n");
        return 2;
    }
    const uint32_t uiRet = AtriumParseAnswer(pcXmlBody, "atrium: Conf Login KTL_XML_Parse failed errno=[0x%x]!",
                                             ATRIUM_PARSE_CODE, &pstRoot, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    TandemParseGuestSite(pstRoot, pcSiteKey, &stSite, pstTempUser->acAtriumUri,
                         static_cast<uint32_t>(sizeof(pstTempUser->acAtriumUri)));

    pstTempUser->pstSite = static_cast<tagLOGIN_S_SITE *>(ATRIUM_MALLOC_S(sizeof(tagLOGIN_S_SITE)));
    if (pstTempUser->pstSite == nullptr) {
        TandemReleaseGuestGroups(&stSite);
        KTL_XML_FreeNode(pstRoot);
        return 1;
    }
    (void)qev_memcpy_s(pstTempUser->pstSite, sizeof(tagLOGIN_S_SITE), &stSite, sizeof(stSite));
    /* The copy gets a group array of its own, so the parsed one can go. */
    (void)getSingleSiteAccessGroup(&stSite, pstTempUser->pstSite, TANDEM_GUEST_SITE_NOT_MAIN);
    TandemReleaseGuestGroups(&stSite);
    KTL_XML_FreeNode(pstRoot);
    return 0;
}

/* ---- guest SIP identity ------------------------------------------------------------ */

namespace {

using TempUser = tagXML_S_TANDEM_TEMPUSER_INFO;

constexpr AtriumValueKey g_astTempuserSipKeys[] = {
    TracedKey("ConfParam.sipinfo.impu", ATRIUM_FIELD(TempUser, acImpu), "Not Find the sip impu"),
    TracedKey("ConfParam.sipinfo.impi", ATRIUM_FIELD(TempUser, acImpi), "Not Find the sip impi"),
    DefaultOnMiss(TracedKey("ConfParam.sipinfo.pwdtype", ATRIUM_FIELD(TempUser, bPwdTypeZero), "Not Find the pwdtype",
                            AtriumConv::ZeroFlag),
                  0),
    TracedKey("ConfParam.sipinfo.passwd", ATRIUM_FIELD(TempUser, acPasswd), "Not Find the sip passwd"),
    TracedKey("ConfParam.sipinfo.domain", ATRIUM_FIELD(TempUser, acDomain), "Not Find the sip account"),
    TracedKey("ConfParam.sipinfo.accesscode", ATRIUM_FIELD(TempUser, acAccessCode), "Not Find the sip accesscode"),
    TracedKey("ConfParam.sipinfo.confid", ATRIUM_FIELD(TempUser, acConfId), "Not Find the sip confid"),
    TracedKey("ConfParam.sipinfo.confpwd", ATRIUM_FIELD(TempUser, acConfPwd), "Not Find the sip confpwd"),
};

/* The server's 404 for a guest's SIP identity: the login service's code for "no such user". */
const uint32_t TANDEM_RET_TEMPUSER_NOT_FOUND = 34;
const uint32_t TANDEM_SERVER_NOT_FOUND = 404;

} // namespace

uint32_t XmlParseTandemTempuserSipInfo(const char *pcXmlBody, tagXML_S_TANDEM_TEMPUSER_INFO *pstTempUser)
{
    _NODE *pstRoot = nullptr;
    _NODE *pstNode = nullptr;
    char *pcValue = nullptr;

    const AtriumOpening stOpening = {"Tandem: Conf Login Parse xmlBody pointer empty!",
                                     "atrium: Conf Login KTL_XML_Parse failed errno=[0x%x]!", ATRIUM_PARSE_CODE};
    uint32_t uiRet = AtriumOpenAnswer(pcXmlBody, pstTempUser, stOpening, &pstRoot, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    /* Any error code refuses the guest, "0" included: its presence decides, not its value. */
    (void)XML_D_GET_NODEVALUE_BYURI(pstRoot, "ConfParam.errorCode", &pstNode, &pcValue);
    if (pcValue != nullptr) {
        const uint32_t uiErrorCode = KOSA_Strtoul(pcValue, nullptr, 0);
        ATRIUM_TRACE(LOGIN_TRACE_MISS, "Find errorcode(%u),get tempuser fail", uiErrorCode);
        /* Deliberately returns without releasing the document (kept as built). */
        return (uiErrorCode == TANDEM_SERVER_NOT_FOUND) ? TANDEM_RET_TEMPUSER_NOT_FOUND : TANDEM_RET_SERVER_ERROR;
    }
    (void)AtriumReadValueKeys(pstRoot, g_astTempuserSipKeys, pstTempUser, ATRIUM_HERE);
    KTL_XML_FreeNode(pstRoot);
    return 0;
}

/* ---- guest conference parameters --------------------------------------------------- */

namespace {

constexpr AtriumValueKey g_astTempuserConfKeys[] = {
    TracedKey("ConfParam.ConfInfo.accesscode", ATRIUM_FIELD(TempUser, acAccessCode), "Not Find the accesscode"),
    TracedKey("ConfParam.ConfInfo.confid", ATRIUM_FIELD(TempUser, acConfId), "Not Find the confid"),
    TracedKey("ConfParam.ConfInfo.confpwd", ATRIUM_FIELD(TempUser, acConfPwd), "Not Find the confpwd"),
    TracedKey("ConfParam.ConfInfo.chairmanpwd", ATRIUM_FIELD(TempUser, acChairmanPwd), "Not Find the chairmanpwd"),
    TracedKey("ConfParam.ConfInfo.accessaddress", ATRIUM_FIELD(TempUser, acAccessAddress),
              "Not Find the accessaddress"),
    TracedKey("ConfParam.ConfInfo.mediatype", ATRIUM_FIELD(TempUser, acMediaType), "Not Find the mediatype"),
    TracedKey("ConfParam.ConfInfo.user_role", ATRIUM_FIELD(TempUser, uiUserRole), "Not Find the user_role",
              AtriumConv::Strtoul),
};

/* The short form: three flat keys straight under ConfParam, same fields and messages. */
constexpr AtriumValueKey g_astTempuserShortConfKeys[] = {
    TracedKey("ConfParam.access_code", ATRIUM_FIELD(TempUser, acAccessCode), "Not Find the accesscode"),
    TracedKey("ConfParam.conf_id", ATRIUM_FIELD(TempUser, acConfId), "Not Find the confid"),
    TracedKey("ConfParam.conf_pass", ATRIUM_FIELD(TempUser, acConfPwd), "Not Find the confpwd"),
};

} // namespace

uint32_t XmlParseTempuserConfInfo(const char *pcXmlBody, tagXML_S_TANDEM_TEMPUSER_INFO *pstTempUser)
{
    _NODE *pstRoot = nullptr;

    const AtriumOpening stOpening = {"CMS:Conf Login Parse xmlBody pointer empty!",
                                     "Conf Login KTL_XML_Parse failed errno=[0x%x]!", TANDEM_RET_NOT_XML};
    const uint32_t uiRet = AtriumOpenAnswer(pcXmlBody, pstTempUser, stOpening, &pstRoot, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    (void)AtriumReadValueKeys(pstRoot, g_astTempuserConfKeys, pstTempUser, ATRIUM_HERE);
    KTL_XML_FreeNode(pstRoot);
    return 0;
}

uint32_t XmlParseBigParamConfInfo(const char *pcXmlBody, tagXML_S_TANDEM_TEMPUSER_INFO *pstTempUser)
{
    _NODE *pstRoot = nullptr;
    _NODE *pstConfInfo = nullptr;

    const AtriumOpening stOpening = {"Tandem: Conf Login Parse xmlBody pointer empty!",
                                     "atrium: Conf Login KTL_XML_Parse failed errno=[0x%x]!", TANDEM_RET_NOT_XML};
    const uint32_t uiRet = AtriumOpenAnswer(pcXmlBody, pstTempUser, stOpening, &pstRoot, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    if (TandemFindNode(pstRoot, "ConfParam.ConfInfo", &pstConfInfo)) {
        /* The detailed block is the other parser's answer; it parses the body on its own. */
        (void)XmlParseTempuserConfInfo(pcXmlBody, pstTempUser);
    } else {
        (void)AtriumReadValueKeys(pstRoot, g_astTempuserShortConfKeys, pstTempUser, ATRIUM_HERE);
    }
    KTL_XML_FreeNode(pstRoot);
    return 0;
}

/* ---- guest account ----------------------------------------------------------------- */

namespace {

using TempAccount = tagXML_S_TEMPUSER_ACCOUNT_INFO;

/* The server spells these keys in mixed case, unlike its other guest answers. */
constexpr AtriumValueKey g_astTempuserAccountKeys[] = {
    TracedKey("ConfParam.AccountInfo.account", ATRIUM_FIELD(TempAccount, acAccount), "Not Find the account"),
    TracedKey("ConfParam.AccountInfo.password", ATRIUM_FIELD(TempAccount, acPassword), "Not Find the pwd"),
    TracedKey("ConfParam.AccountInfo.pwdType", ATRIUM_FIELD(TempAccount, uiPwdType), "Not Find the pwdType",
              AtriumConv::Strtoul),
    TracedKey("ConfParam.AccountInfo.accessURL", ATRIUM_FIELD(TempAccount, acAccessUrl), "Not Find the accessURL"),
    TracedKey("ConfParam.AccountInfo.secondAccessURL", ATRIUM_FIELD(TempAccount, acSecondAccessUrl),
              "Not Find the secondAccessURL"),
};

} // namespace

uint32_t XmlParseTempuserAccountInfo(const char *pcXmlBody, tagXML_S_TEMPUSER_ACCOUNT_INFO *pstAccount)
{
    _NODE *pstRoot = nullptr;

    const AtriumOpening stOpening = {"CMS: Conf Login Parse xmlBody pointer empty!",
                                     "Conf Login KTL_XML_Parse failed errno=[0x%x]!", TANDEM_RET_NOT_XML};
    const uint32_t uiRet = AtriumOpenAnswer(pcXmlBody, pstAccount, stOpening, &pstRoot, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    (void)AtriumReadValueKeys(pstRoot, g_astTempuserAccountKeys, pstAccount, ATRIUM_HERE);
    KTL_XML_FreeNode(pstRoot);
    return 0;
}

/* ---- guest nearby-access block ----------------------------------------------------- */

uint32_t XmlParseGetServiceTPFromRandom(const char *pcXmlBody, char **ppcServiceTp)
{
    _NODE *pstRoot = nullptr;
    _NODE *pstNode = nullptr;
    char *pcValue = nullptr;
    char *pcDecoded = nullptr;

    if (ppcServiceTp == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "atrium: ppcServiceTp is NULL");
        return 1;
    }
    /* The body is not checked here: a null body is the XML library's parse failure. */
    uint32_t uiRet = AtriumParseAnswer(pcXmlBody, "atrium: KTL_XML_Parse failed errno=[0x%x]!",
                                       ATRIUM_PARSE_CODE, &pstRoot, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    /* The element must exist; an element without text goes on and fails to decode. */
    (void)XML_D_GET_NODEVALUE_BYURI(pstRoot, "ConfParam.nearbyaccess", &pstNode, &pcValue);
    if (pstNode == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "atrium: can not find ConfParam.nearbyaccess !");
        KTL_XML_FreeNode(pstRoot);
        return 1;
    }
    const char *pcText = (pcValue != nullptr) ? pcValue : "";
    const int32_t iLen = KTL_BASE64Decode(pcText, KOSA_StrLen(pcText), &pcDecoded);
    if (iLen <= 0) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "atrium: KTL_BASE64Decode fail, iLen:%d", iLen);
        KTL_XML_FreeNode(pstRoot);
        return 1;
    }
    /* The zero fill supplies the terminator after the decoded bytes. */
    const uint32_t uiSize = static_cast<uint32_t>(iLen) + 1;
    *ppcServiceTp = static_cast<char *>(ATRIUM_MALLOC_S(uiSize));
    if (*ppcServiceTp == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "atrium: KOSA_MemMallocSetNull fail");
        KTL_BASE64Free(&pcDecoded);
        KTL_XML_FreeNode(pstRoot);
        return 1;
    }
    (void)qev_memcpy_s(*ppcServiceTp, uiSize, pcDecoded, static_cast<uint32_t>(iLen));
    KTL_BASE64Free(&pcDecoded);
    KTL_XML_FreeNode(pstRoot);
    return 0;
}
