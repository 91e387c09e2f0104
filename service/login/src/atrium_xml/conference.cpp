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
 * levels and in the two server-error exits that leave the document unreleased (each says
 * so with KeepUnreleased()); the login service is built against each of them as it is.
 */
#include "atrium_frame.h"
#include "ktl_base64.h"

namespace {

/* An optional text key whose absence is also told by its own level-1 message. */
constexpr AtriumKey TracedText(const char *pcPath, uint32_t uiOffset, uint32_t uiCapacity, const char *pcMissMessage)
{
    return ValueText(pcPath, uiOffset, uiCapacity).TracedMiss(pcMissMessage);
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

constexpr AtriumKey g_astResultKeys[] = {
    ValueNumber("result.resultCode", ATRIUM_FIELD(TandemResult, uiResultCode))
        .Required("resultCode empty", LOGIN_TRACE_ERROR),
    ValueText("result.resultDesc", ATRIUM_FIELD(TandemResult, acResultDesc))
        .Required("resultDesc empty", LOGIN_TRACE_ERROR),
};

constexpr AtriumKey g_astProfileKeys[] = {
    ValueText("profile.token", ATRIUM_FIELD(TandemProfile, acToken)),
    ValueText("profile.supportMediaTypes", ATRIUM_FIELD(TandemProfile, acSupportMediaTypes)),
};

constexpr AtriumKey g_astSipKeys[] = {
    ValueText("conferenceClientInfo.serviceDomain", ATRIUM_FIELD(TandemSip, acDomain)),
    ValueText("conferenceClientInfo.proxyServer", ATRIUM_FIELD(TandemSip, acProxy)),
    ValueText("conferenceClientInfo.userName", ATRIUM_FIELD(TandemSip, acUserName)),
    ValueText("conferenceClientInfo.userPassword", ATRIUM_FIELD(TandemSip, acPassword)),
    ValueText("conferenceClientInfo.authorizedName", ATRIUM_FIELD(TandemSip, acAuthName)),
};

constexpr AtriumKey g_astEuaKeys[] = {
    ValueText("conferenceClientInfo.euaInfo.userName", ATRIUM_FIELD(TandemEua, acUserName)),
    ValueText("conferenceClientInfo.euaInfo.password", ATRIUM_FIELD(TandemEua, acPassword)),
    ValueText("conferenceClientInfo.euaInfo.baseDN", ATRIUM_FIELD(TandemEua, acBaseDN)),
};

constexpr AtriumKey g_astStgKeys[] = {
    ValueText("conferenceClientInfo.stgInfo.userName", ATRIUM_FIELD(TandemStg, acUserName)),
    ValueText("conferenceClientInfo.stgInfo.password", ATRIUM_FIELD(TandemStg, acPassword)),
};

constexpr AtriumKey g_astTmsKeys[] = {
    ValueText("conferenceClientInfo.tmsInfo.userName", ATRIUM_FIELD(TandemTms, acUserName)),
    ValueText("conferenceClientInfo.tmsInfo.password", ATRIUM_FIELD(TandemTms, acPassword)),
};

} // namespace

/* ---- conference login -------------------------------------------------------------- */

/*
 * The sub-parsers fill one sub-record each, from the element the answer keeps it under. They
 * are given a found element and a member of the caller's record, never null, so of their
 * results only the result block's can tell anything: a missing code or description.
 */

static uint32_t XmlTandemParseResult(_NODE *pstNode, tagXML_S_TANDEM_RESULT *pstResult)
{
    return AtriumReadXmlKeys(pstNode, g_astResultKeys, pstResult, ATRIUM_HERE);
}

static void XmlTandemParseProfile(_NODE *pstNode, tagXML_S_TANDEM_PROFILE *pstProfile)
{
    (void)AtriumReadXmlKeys(pstNode, g_astProfileKeys, pstProfile, ATRIUM_HERE);
}

static void XmlTandemParseSip(_NODE *pstNode, tagXML_S_TANDEM_SIP *pstSip)
{
    (void)AtriumReadXmlKeys(pstNode, g_astSipKeys, pstSip, ATRIUM_HERE);
}

static void XmlTandemParseEua(_NODE *pstNode, tagXML_S_TANDEM_EUA *pstEua)
{
    TandemReadAddressList(pstNode, ATRIUM_PATH("conferenceClientInfo.euaInfo.address"), "address",
                          ListLimit(pstEua->acAddress), &pstEua->uiAddressNum, pstEua->acAddress, ATRIUM_HERE);
    (void)AtriumReadXmlKeys(pstNode, g_astEuaKeys, pstEua, ATRIUM_HERE);
}

static void XmlTandemParseStg(_NODE *pstNode, tagXML_S_TANDEM_STG *pstStg)
{
    (void)AtriumReadXmlKeys(pstNode, g_astStgKeys, pstStg, ATRIUM_HERE);
    TandemReadAddressList(pstNode, ATRIUM_PATH("conferenceClientInfo.stgInfo.stgAddress"), "stgAddress",
                          ListLimit(pstStg->acStgAddress), &pstStg->uiStgNum, pstStg->acStgAddress, ATRIUM_HERE);
    TandemReadAddressList(pstNode, ATRIUM_PATH("conferenceClientInfo.stgInfo.sbcInnerAddress"), "sbcInnerAddress",
                          ListLimit(pstStg->acSbcInnerAddress), &pstStg->uiSbcNum, pstStg->acSbcInnerAddress,
                          ATRIUM_HERE);
}

static void XmlTandemParseTms(_NODE *pstNode, tagXML_S_TANDEM_TMS *pstTms)
{
    (void)AtriumReadXmlKeys(pstNode, g_astTmsKeys, pstTms, ATRIUM_HERE);
    TandemReadAddressList(pstNode, ATRIUM_PATH("conferenceClientInfo.tmsInfo.address"), "address",
                          ListLimit(pstTms->acAddress), &pstTms->uiTmsNum, pstTms->acAddress, ATRIUM_HERE);
}

/* stPath names the first address element, so one routine serves the success answer and
 * the refusal's failConferenceClientInfo block. */
static void XmlTandemParseAtrium(_NODE *pstNode, tagXML_S_TANDEM_ATRIUM *pstAtrium, const AtriumPath &stPath)
{
    TandemReadAddressList(pstNode, stPath, "address", ListLimit(pstAtrium->acAddress), &pstAtrium->uiAtriumNum,
                          pstAtrium->acAddress, ATRIUM_HERE);
}

uint32_t XmlParseTandmLoginResult(const char *pcXmlBody, tagXML_S_TANDEM_LOGIN_RESULT *pstResult)
{
    AtriumDocument stDocument;
    _NODE *pstNode = nullptr;

    const AtriumOpening stOpening = {"Tandem: Conf Login Parse download xmlBody pointer empty!",
                                     "Tandem: Conf Login KTL_XML_Parse failed errno=[0x%x]!", ATRIUM_PARSE_CODE};
    uint32_t uiRet = AtriumOpenAnswer(pcXmlBody, pstResult, stOpening, stDocument, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    _NODE *pstRoot = stDocument.Root();

    /* A refusal may come as a bare "result" root instead of the "loginResult" wrapper. */
    if (AtriumLookUp(pstRoot, ATRIUM_PATH("loginResult.result"), &pstNode) != 0) {
        ATRIUM_TRACE(LOGIN_TRACE_MISS, "Not Find the logResult");
        uiRet = AtriumLookUp(pstRoot, ATRIUM_PATH("result"), &pstNode);
        if (uiRet != 0) {
            ATRIUM_TRACE(LOGIN_TRACE_ERROR, "Not Find the result");
            return uiRet;
        }
    }
    uiRet = XmlTandemParseResult(pstNode, &pstResult->stResult);
    if (uiRet != 0) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "Tandem: Conf Create ParseConfInfo failed errno=[0x%x]!", uiRet);
        return uiRet;
    }
    /* The server's verdict stays in uiResultCode; a refusal is still a parsed answer. */
    ATRIUM_TRACE(LOGIN_TRACE_DUMP, "resultcode: %u", pstResult->stResult.uiResultCode);

    if (AtriumLookUp(pstRoot, ATRIUM_PATH("loginResult.profile"), &pstNode) == 0) {
        XmlTandemParseProfile(pstNode, &pstResult->stProfile);
        ATRIUM_TRACE(LOGIN_TRACE_DUMP, "mediatypes: %s", pstResult->stProfile.acSupportMediaTypes);
    }

    if (AtriumLookUp(pstRoot, ATRIUM_PATH("loginResult.conferenceClientInfo"), &pstNode) == 0) {
        XmlTandemParseSip(pstNode, &pstResult->stSip);
        ATRIUM_TRACE(LOGIN_TRACE_DUMP, "acDomain: %s, acProxy: %s", pstResult->stSip.acDomain,
                     pstResult->stSip.acProxy);
        XmlTandemParseEua(pstNode, &pstResult->stEua);
        ATRIUM_TRACE(LOGIN_TRACE_DUMP, "acAddress: %s, acBaseDN: %s, acUserName: %s", pstResult->stEua.acAddress[0],
                     pstResult->stEua.acBaseDN, pstResult->stEua.acUserName);
        XmlTandemParseStg(pstNode, &pstResult->stStg);
        ATRIUM_TRACE(LOGIN_TRACE_DUMP, "stgnum: %u, uiSbcNum: %u, acUserName: %s", pstResult->stStg.uiStgNum,
                     pstResult->stStg.uiSbcNum, pstResult->stStg.acUserName);
        XmlTandemParseTms(pstNode, &pstResult->stTms);
        ATRIUM_TRACE(LOGIN_TRACE_DUMP, "tmsnum: %u, acUserName: %s", pstResult->stTms.uiTmsNum,
                     pstResult->stTms.acUserName);
        XmlTandemParseAtrium(pstNode, &pstResult->stAtrium, ATRIUM_PATH("conferenceClientInfo.atriumInfo.address"));
        ATRIUM_TRACE(LOGIN_TRACE_DUMP, "atrium num: %u", pstResult->stAtrium.uiAtriumNum);
    } else if (AtriumLookUp(pstRoot, ATRIUM_PATH("result.failConferenceClientInfo"), &pstNode) == 0) {
        /* A refusal may still name the portal addresses the client can turn to. */
        XmlTandemParseAtrium(pstNode, &pstResult->stAtrium, ATRIUM_PATH("failConferenceClientInfo.atriumInfo.address"));
        ATRIUM_TRACE(LOGIN_TRACE_DUMP, "atrium num: %u", pstResult->stAtrium.uiAtriumNum);
    }
    return 0;
}

/* ---- version ----------------------------------------------------------------------- */

namespace {

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
    AtriumDocument stDocument;
    _NODE *pstNode = nullptr;

    if (pcXmlBody == nullptr || pstVersionResult == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR,
                     "RestConf: ParseVersionXML Param KOS_NULL_PTR! pcXmlBody(%p), pstVersionResult(%p)",
                     static_cast<const void *>(pcXmlBody), static_cast<void *>(pstVersionResult));
        return 2;
    }
    uint32_t uiRet = AtriumParseAnswer(pcXmlBody, "RestConf: ParseVersionXML Parse failed, ulRet[0x%x]!",
                                       ATRIUM_NOT_XML, stDocument.RootSlot(), ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    uiRet = AtriumLookUp(stDocument.Root(), ATRIUM_PATH("versionResult.result"), &pstNode);
    if (uiRet != 0) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR,
                     "RestConf: ParseVersionXML GetNodeByUrl [versionResult.result] failed, ulRet[0x%x]!", uiRet);
        return uiRet;
    }
    uiRet = TandemReadVersionKeys(stDocument.Root(), pstVersionResult, ATRIUM_HERE);
    return uiRet;
}

/* ---- guest random key -------------------------------------------------------------- */

namespace {

using RandomRecord = tagXML_S_TANDEM_RANDOM_RESULT;

/* Both keys are required, and their misses are told at level 1, unlike most of the module. */
constexpr AtriumKey g_astRandomKeys[] = {
    ValueText("confinfo.site_url", ATRIUM_FIELD(RandomRecord, acSiteUrl)).Required("Not Find the site_url", LOGIN_TRACE_MISS),
    ValueText("confinfo.random", ATRIUM_FIELD(RandomRecord, acRandom)).Required("Not Find the random", LOGIN_TRACE_MISS),
};

/* How the guest's random-key and SIP answers open. */
const AtriumOpening GUEST_OPENING = {"Tandem: Conf Login Parse xmlBody pointer empty!",
                                     "atrium: Conf Login KTL_XML_Parse failed errno=[0x%x]!", ATRIUM_PARSE_CODE};

/* The error code a guest answer carries at stPath in place of its payload, converted; false
 * when it carries none (no element, or one without text). */
bool TandemServerErrorCode(_NODE *pstRoot, const AtriumPath &stPath, uint32_t *puiErrorCode,
                           const AtriumCallSite &stSite)
{
    _NODE *pstNode = nullptr;
    char *pcValue = nullptr;
    (void)AtriumGetNodeValueByUri(pstRoot, stPath, &pstNode, &pcValue, stSite);
    if (pcValue == nullptr) {
        return false;
    }
    *puiErrorCode = KOSA_Strtoul(pcValue, nullptr, 0);
    return true;
}

/* The login service's codes for the server's errors; 404 shares code 2 with a null argument
 * and 11028/11029 map in reverse order, as the login service expects them. */
const struct {
    uint32_t uiServerCode;
    uint32_t uiResult;
} g_astRandomErrorMap[] = {
    {401, ATRIUM_RANDOM_KEY_UNAUTHORIZED},  {403, ATRIUM_RANDOM_KEY_FORBIDDEN},
    {404, ATRIUM_RANDOM_KEY_NOT_FOUND},     {413, ATRIUM_RANDOM_KEY_TOO_LARGE},
    {11028, ATRIUM_RANDOM_KEY_SERVER_11028}, {11029, ATRIUM_RANDOM_KEY_SERVER_11029},
};

} // namespace

uint32_t XmlParseTandemRandomErrorcode(uint32_t uiErrorCode)
{
    for (const auto &stEntry : g_astRandomErrorMap) {
        if (stEntry.uiServerCode == uiErrorCode) {
            return stEntry.uiResult;
        }
    }
    return ATRIUM_SERVER_ERROR;
}

uint32_t XmlParseTandemRandomResult(const char *pcXmlBody, tagXML_S_TANDEM_RANDOM_RESULT *pstRandomResult)
{
    AtriumDocument stDocument;
    const uint32_t uiRet = AtriumOpenAnswer(pcXmlBody, pstRandomResult, GUEST_OPENING, stDocument, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    /* An error code of 0 is no error: the answer goes on. */
    uint32_t uiErrorCode = 0;
    if (TandemServerErrorCode(stDocument.Root(), ATRIUM_PATH("confinfo.errorCode"), &uiErrorCode, ATRIUM_HERE) &&
        uiErrorCode != 0) {
        ATRIUM_TRACE(LOGIN_TRACE_MISS, "Find errorcode(%u),get tempuser siteurl fail", uiErrorCode);
        stDocument.KeepUnreleased(); /* the login service knows this exit without the release */
        return XmlParseTandemRandomErrorcode(uiErrorCode);
    }
    return AtriumReadXmlKeys(stDocument.Root(), g_astRandomKeys, pstRandomResult, ATRIUM_HERE);
}

/* ---- conference search ------------------------------------------------------------- */

uint32_t XmlParseTandemSearchResult(const char *pcXmlBody, tagXML_S_TANDEM_SEARCH_RESULT *pstSearchResult)
{
    AtriumDocument stDocument;
    _NODE *pstServiceTp = nullptr;
    char *pcValue = nullptr;

    /* Callers never pass null; the check keeps a null record from being written through. */
    const AtriumOpening stOpening = {"atrium: Conf Search Parse xmlBody pointer empty!",
                                     "atrium: KTL_XML_Parse failed errno=[0x%x]!", ATRIUM_PARSE_CODE};
    uint32_t uiRet = AtriumOpenAnswer(pcXmlBody, pstSearchResult, stOpening, stDocument, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    (void)XML_D_GET_NODEVALUE_BYURI(stDocument.Root(), "servicetp", &pstServiceTp, &pcValue);
    /* Entries are appended after what the caller holds; the walk ends once the record is full. */
    const AtriumSearchEntries stEntries = {&pstSearchResult->uiSiteNum, pstSearchResult->auiPriority,
                                           pstSearchResult->acSsoHostName, LOGIN_SEARCH_SITE_MAX};
    AtriumCollectSearchSites(pstServiceTp, stEntries, nullptr, ATRIUM_HERE);
    return 0;
}

/* ---- guest service site ------------------------------------------------------------ */

namespace {

/*
 * Parses into pstSite the first child of pstSiteList whose SSO host is pcSiteKey; the first
 * group that names a portal address writes it to pcAtriumUri while that is still empty.
 * Without a match pstSite stays as it was (all zero).
 */
void TandemParseGuestSite(_NODE *pstSiteList, const char *pcSiteKey, tagLOGIN_S_SITE *pstSite, char *pcAtriumUri,
                          uint32_t uiAtriumUriLen)
{
    for (_NODE *pstChild : AtriumChildren(pstSiteList)) {
        if (IsMatchingSite(pstChild, pcSiteKey) != 0) {
            (void)XmlAtriumParseSite(pstChild, pstSite, pcAtriumUri, uiAtriumUriLen);
            return;
        }
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
    AtriumDocument stDocument;
    tagLOGIN_S_SITE stSite{};

    if (pcXmlBody == nullptr || pcSiteKey == nullptr || pstTempUser == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "XmlParseTandemTempuserServiceTp failed param is null\n");
        return 2;
    }
    const uint32_t uiRet = AtriumParseAnswer(pcXmlBody, "atrium: Conf Login KTL_XML_Parse failed errno=[0x%x]!",
                                             ATRIUM_PARSE_CODE, stDocument.RootSlot(), ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    TandemParseGuestSite(stDocument.Root(), pcSiteKey, &stSite, pstTempUser->acAtriumUri,
                         static_cast<uint32_t>(sizeof(pstTempUser->acAtriumUri)));

    pstTempUser->pstSite = static_cast<tagLOGIN_S_SITE *>(ATRIUM_MALLOC_S(sizeof(tagLOGIN_S_SITE)));
    if (pstTempUser->pstSite == nullptr) {
        TandemReleaseGuestGroups(&stSite);
        return 1;
    }
    (void)qev_memcpy_s(pstTempUser->pstSite, sizeof(tagLOGIN_S_SITE), &stSite, sizeof(stSite));
    /* The copy gets a group array of its own, so the parsed one can go. */
    (void)getSingleSiteAccessGroup(&stSite, pstTempUser->pstSite, TANDEM_GUEST_SITE_NOT_MAIN);
    TandemReleaseGuestGroups(&stSite);
    return 0;
}

/* ---- guest SIP identity ------------------------------------------------------------ */

namespace {

using TempUser = tagXML_S_TANDEM_TEMPUSER_INFO;

constexpr AtriumKey g_astTempuserSipKeys[] = {
    TracedText("ConfParam.sipinfo.impu", ATRIUM_FIELD(TempUser, acImpu), "Not Find the sip impu"),
    TracedText("ConfParam.sipinfo.impi", ATRIUM_FIELD(TempUser, acImpi), "Not Find the sip impi"),
    ValueNumber("ConfParam.sipinfo.pwdtype", ATRIUM_FIELD(TempUser, bPwdTypeZero), AtriumStore::ZeroFlag)
        .TracedMiss("Not Find the pwdtype")
        .DefaultOnMiss(0),
    TracedText("ConfParam.sipinfo.passwd", ATRIUM_FIELD(TempUser, acPasswd), "Not Find the sip passwd"),
    TracedText("ConfParam.sipinfo.domain", ATRIUM_FIELD(TempUser, acDomain), "Not Find the sip account"),
    TracedText("ConfParam.sipinfo.accesscode", ATRIUM_FIELD(TempUser, acAccessCode), "Not Find the sip accesscode"),
    TracedText("ConfParam.sipinfo.confid", ATRIUM_FIELD(TempUser, acConfId), "Not Find the sip confid"),
    TracedText("ConfParam.sipinfo.confpwd", ATRIUM_FIELD(TempUser, acConfPwd), "Not Find the sip confpwd"),
};

/* The server's 404 for a guest's SIP identity. */
const uint32_t TANDEM_SERVER_NOT_FOUND = 404;

} // namespace

uint32_t XmlParseTandemTempuserSipInfo(const char *pcXmlBody, tagXML_S_TANDEM_TEMPUSER_INFO *pstTempUser)
{
    AtriumDocument stDocument;
    const uint32_t uiRet = AtriumOpenAnswer(pcXmlBody, pstTempUser, GUEST_OPENING, stDocument, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    /* Any error code refuses the guest, "0" included: its presence decides, not its value. */
    uint32_t uiErrorCode = 0;
    if (TandemServerErrorCode(stDocument.Root(), ATRIUM_PATH("ConfParam.errorCode"), &uiErrorCode, ATRIUM_HERE)) {
        ATRIUM_TRACE(LOGIN_TRACE_MISS, "Find errorcode(%u),get tempuser fail", uiErrorCode);
        stDocument.KeepUnreleased(); /* the login service knows this exit without the release */
        return (uiErrorCode == TANDEM_SERVER_NOT_FOUND) ? ATRIUM_GUEST_NOT_FOUND : ATRIUM_SERVER_ERROR;
    }
    (void)AtriumReadXmlKeys(stDocument.Root(), g_astTempuserSipKeys, pstTempUser, ATRIUM_HERE);
    return 0;
}

/* ---- guest conference parameters --------------------------------------------------- */

namespace {

constexpr AtriumKey g_astTempuserConfKeys[] = {
    TracedText("ConfParam.ConfInfo.accesscode", ATRIUM_FIELD(TempUser, acAccessCode), "Not Find the accesscode"),
    TracedText("ConfParam.ConfInfo.confid", ATRIUM_FIELD(TempUser, acConfId), "Not Find the confid"),
    TracedText("ConfParam.ConfInfo.confpwd", ATRIUM_FIELD(TempUser, acConfPwd), "Not Find the confpwd"),
    TracedText("ConfParam.ConfInfo.chairmanpwd", ATRIUM_FIELD(TempUser, acChairmanPwd), "Not Find the chairmanpwd"),
    TracedText("ConfParam.ConfInfo.accessaddress", ATRIUM_FIELD(TempUser, acAccessAddress),
              "Not Find the accessaddress"),
    TracedText("ConfParam.ConfInfo.mediatype", ATRIUM_FIELD(TempUser, acMediaType), "Not Find the mediatype"),
    ValueNumber("ConfParam.ConfInfo.user_role", ATRIUM_FIELD(TempUser, uiUserRole)).TracedMiss("Not Find the user_role"),
};

/* The short form: three flat keys straight under ConfParam, same fields and messages. */
constexpr AtriumKey g_astTempuserShortConfKeys[] = {
    TracedText("ConfParam.access_code", ATRIUM_FIELD(TempUser, acAccessCode), "Not Find the accesscode"),
    TracedText("ConfParam.conf_id", ATRIUM_FIELD(TempUser, acConfId), "Not Find the confid"),
    TracedText("ConfParam.conf_pass", ATRIUM_FIELD(TempUser, acConfPwd), "Not Find the confpwd"),
};

} // namespace

uint32_t XmlParseTempuserConfInfo(const char *pcXmlBody, tagXML_S_TANDEM_TEMPUSER_INFO *pstTempUser)
{
    /* Every key is optional, so the table's result is the opening's. */
    const AtriumOpening stOpening = {"CMS:Conf Login Parse xmlBody pointer empty!",
                                     "Conf Login KTL_XML_Parse failed errno=[0x%x]!", ATRIUM_NOT_XML};
    return AtriumParseKeyTable(pcXmlBody, pstTempUser, stOpening, g_astTempuserConfKeys, ATRIUM_HERE);
}

uint32_t XmlParseBigParamConfInfo(const char *pcXmlBody, tagXML_S_TANDEM_TEMPUSER_INFO *pstTempUser)
{
    AtriumDocument stDocument;
    _NODE *pstConfInfo = nullptr;

    const AtriumOpening stOpening = {"Tandem: Conf Login Parse xmlBody pointer empty!",
                                     "atrium: Conf Login KTL_XML_Parse failed errno=[0x%x]!", ATRIUM_NOT_XML};
    const uint32_t uiRet = AtriumOpenAnswer(pcXmlBody, pstTempUser, stOpening, stDocument, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    if (AtriumLookUp(stDocument.Root(), ATRIUM_PATH("ConfParam.ConfInfo"), &pstConfInfo) == 0) {
        /* The detailed block is the other parser's answer; it parses the body on its own. */
        (void)XmlParseTempuserConfInfo(pcXmlBody, pstTempUser);
    } else {
        (void)AtriumReadXmlKeys(stDocument.Root(), g_astTempuserShortConfKeys, pstTempUser, ATRIUM_HERE);
    }
    return 0;
}

/* ---- guest account ----------------------------------------------------------------- */

namespace {

using TempAccount = tagXML_S_TEMPUSER_ACCOUNT_INFO;

/* The server spells these keys in mixed case, unlike its other guest answers. */
constexpr AtriumKey g_astTempuserAccountKeys[] = {
    TracedText("ConfParam.AccountInfo.account", ATRIUM_FIELD(TempAccount, acAccount), "Not Find the account"),
    TracedText("ConfParam.AccountInfo.password", ATRIUM_FIELD(TempAccount, acPassword), "Not Find the pwd"),
    ValueNumber("ConfParam.AccountInfo.pwdType", ATRIUM_FIELD(TempAccount, uiPwdType)).TracedMiss("Not Find the pwdType"),
    TracedText("ConfParam.AccountInfo.accessURL", ATRIUM_FIELD(TempAccount, acAccessUrl), "Not Find the accessURL"),
    TracedText("ConfParam.AccountInfo.secondAccessURL", ATRIUM_FIELD(TempAccount, acSecondAccessUrl),
              "Not Find the secondAccessURL"),
};

} // namespace

uint32_t XmlParseTempuserAccountInfo(const char *pcXmlBody, tagXML_S_TEMPUSER_ACCOUNT_INFO *pstAccount)
{
    /* Every key is optional, so the table's result is the opening's. */
    const AtriumOpening stOpening = {"CMS: Conf Login Parse xmlBody pointer empty!",
                                     "Conf Login KTL_XML_Parse failed errno=[0x%x]!", ATRIUM_NOT_XML};
    return AtriumParseKeyTable(pcXmlBody, pstAccount, stOpening, g_astTempuserAccountKeys, ATRIUM_HERE);
}

/* ---- guest nearby-access block ----------------------------------------------------- */

uint32_t XmlParseGetServiceTPFromRandom(const char *pcXmlBody, char **ppcServiceTp)
{
    AtriumDocument stDocument;
    _NODE *pstNode = nullptr;
    char *pcValue = nullptr;
    char *pcDecoded = nullptr;

    if (ppcServiceTp == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "atrium: ppcServiceTp is NULL");
        return 1;
    }
    /* The body is not checked here: a null body is the XML library's parse failure. */
    uint32_t uiRet = AtriumParseAnswer(pcXmlBody, "atrium: KTL_XML_Parse failed errno=[0x%x]!",
                                       ATRIUM_PARSE_CODE, stDocument.RootSlot(), ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    /* The element must exist; an element without text goes on and fails to decode. */
    (void)XML_D_GET_NODEVALUE_BYURI(stDocument.Root(), "ConfParam.nearbyaccess", &pstNode, &pcValue);
    if (pstNode == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "atrium: can not find ConfParam.nearbyaccess !");
        return 1;
    }
    const char *pcText = (pcValue != nullptr) ? pcValue : "";
    const int32_t iLen = KTL_BASE64Decode(pcText, KOSA_StrLen(pcText), &pcDecoded);
    if (iLen <= 0) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "atrium: KTL_BASE64Decode fail, iLen:%d", iLen);
        return 1;
    }
    /* The zero fill supplies the terminator after the decoded bytes. */
    const uint32_t uiSize = static_cast<uint32_t>(iLen) + 1;
    *ppcServiceTp = static_cast<char *>(ATRIUM_MALLOC_S(uiSize));
    if (*ppcServiceTp == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "atrium: KOSA_MemMallocSetNull fail");
        KTL_BASE64Free(&pcDecoded);
        return 1;
    }
    (void)qev_memcpy_s(*ppcServiceTp, uiSize, pcDecoded, static_cast<uint32_t>(iLen));
    KTL_BASE64Free(&pcDecoded);
    return 0;
}

/* ---- key tables, for those who describe them ----------------------------------------- */

std::vector<AtriumKeyTable> AtriumConferenceKeyTables()
{
    return {
        AtriumTable("XmlParseTandmLoginResult", "tagXML_S_TANDEM_RESULT", g_astResultKeys),
        AtriumTable("XmlParseTandmLoginResult", "tagXML_S_TANDEM_PROFILE", g_astProfileKeys),
        AtriumTable("XmlParseTandmLoginResult", "tagXML_S_TANDEM_SIP", g_astSipKeys),
        AtriumTable("XmlParseTandmLoginResult", "tagXML_S_TANDEM_EUA", g_astEuaKeys),
        AtriumTable("XmlParseTandmLoginResult", "tagXML_S_TANDEM_STG", g_astStgKeys),
        AtriumTable("XmlParseTandmLoginResult", "tagXML_S_TANDEM_TMS", g_astTmsKeys),
        AtriumTable("XmlParseTandemRandomResult", "tagXML_S_TANDEM_RANDOM_RESULT", g_astRandomKeys),
        AtriumTable("XmlParseTandemTempuserSipInfo", "tagXML_S_TANDEM_TEMPUSER_INFO", g_astTempuserSipKeys),
        AtriumTable("XmlParseTempuserConfInfo", "tagXML_S_TANDEM_TEMPUSER_INFO", g_astTempuserConfKeys),
        AtriumTable("XmlParseBigParamConfInfo", "tagXML_S_TANDEM_TEMPUSER_INFO", g_astTempuserShortConfKeys),
        AtriumTable("XmlParseTempuserAccountInfo", "tagXML_S_TEMPUSER_ACCOUNT_INFO", g_astTempuserAccountKeys),
    };
}
