/*
 * portal.cpp - the portal (Atrium) server's answers.
 *
 * Each answer arrives as an XML body; its parser checks the arguments, parses the body,
 * reads its keys from the root with the shared per-key step (most of them through key
 * tables), fills the caller's record and releases the document. The login and
 * server-list answers also drive the site machinery (sites.cpp): they count and parse the
 * sites into a zero-filled array, pick the own and main site, build the selected site and
 * the SIP server list that they hand to the caller, and release the array.
 *
 * The login answer is a list of steps in answer order: plain keys run by the frame's key
 * reader, and small steps of their own for what is more than one key (extra parameters,
 * the SIP identity's fall-back, FuncType, the main-site name, the sites, the further
 * servers, the unified-messaging accounts). The step order is the trace order.
 *
 * Every answer's document is owned by an AtriumDocument. A few exits leave it unreleased
 * on purpose (token information without token or lifetime, a saved right-configuration
 * profile, an unreadable extra parameter): the login service is built against them as they
 * are, and each says so with KeepUnreleased().
 */
#include "atrium_frame.h"
#include "ktl_base64.h"

#include <cstring>

namespace {

using UserRecord = tagLOGIN_S_ATRIUM_USER_INFO;
using Site = tagLOGIN_S_SITE;


/* ---- shared steps ------------------------------------------------------------------- */

/* The opening of the answers that report as the login does (login, authentication token,
 * server list). */
const AtriumOpening LOGIN_OPENING = {"atrium: Conf Login Parse download xmlBody pointer empty!",
                                     "atrium: Conf Login KTL_XML_Parse failed errno=[0x%x]!", ATRIUM_PARSE_CODE};

/* A FuncType value: a failed conversion leaves whatever it wrote. */
void StoreFuncType(const char *pcValue, int32_t *piFuncType, const AtriumCallSite &stSite)
{
    if (KOSA_StrToInt32(pcValue, piFuncType) == 0) {
        ATRIUM_TRACE_AT(stSite, LOGIN_TRACE_PROGRESS, "the sip FuncType %d", *piFuncType);
    } else {
        ATRIUM_TRACE_AT(stSite, LOGIN_TRACE_MISS, "the sip FuncType value is invaild");
    }
}

/* The "terminalScene" attribute of the FuncType element, when it has one. */
void StoreTerminalScene(_NODE *pstFuncType, UserRecord *pstUser, const AtriumCallSite &stSite)
{
    const char *pcScene = AtriumAttr(pstFuncType, "terminalScene");
    if (pcScene == nullptr) {
        return;
    }
    (void)qev_strcpy_s(pstUser->acTerminalScene, sizeof(pstUser->acTerminalScene), pcScene);
    ATRIUM_TRACE_AT(stSite, LOGIN_TRACE_PROGRESS, "the terminal scene is %s", pstUser->acTerminalScene);
}

/* True when the child is a "site" element (the per-key step traces the others). */
bool IsSiteElement(_NODE *pstChild, const AtriumCallSite &stSite)
{
    return AtriumFindElement(pstChild, ATRIUM_PATH("site"), stSite) != nullptr;
}

/* A zero-filled array of uiNumOfSite sites, or null (traced). A count whose size does not
 * fit the allocator's 32-bit size cannot be allocated either. */
Site *NewSiteArray(uint32_t uiNumOfSite, const AtriumCallSite &stSite)
{
    Site *pstSites = nullptr;
    if (uiNumOfSite <= UINT32_MAX / sizeof(Site)) {
        pstSites = static_cast<Site *>(ATRIUM_MALLOC_S(static_cast<uint32_t>(uiNumOfSite * sizeof(Site))));
    }
    if (pstSites == nullptr) {
        ATRIUM_TRACE_AT(stSite, LOGIN_TRACE_ERROR, "mem malloc failed");
    }
    return pstSites;
}

/* Builds the selected site and the SIP server list into the user record, then releases
 * the site array. Failures here are traced and do not fail the answer. */
void HandOverSites(Site *pstSites, uint32_t uiNumOfSite, uint32_t uiOwnSite, uint32_t uiMainSite,
                   UserRecord *pstUser, const AtriumCallSite &stSite)
{
    uint32_t uiRet = getSiteInfo(pstSites, uiNumOfSite, uiOwnSite, uiMainSite, &pstUser->pstSiteInfo);
    if (uiRet != 0) {
        ATRIUM_TRACE_AT(stSite, LOGIN_TRACE_ERROR, "getSiteInfo failed %u", uiRet);
    } else {
        pstUser->bSiteInfoValid = 1;
    }
    uiRet = getAllSipServer(pstSites, uiNumOfSite, &pstUser->stSipServerList);
    if (uiRet != 0) {
        ATRIUM_TRACE_AT(stSite, LOGIN_TRACE_ERROR, "getAllSipServer failed %u", uiRet);
    }
    freeSiteMem(pstSites, uiNumOfSite);
}

/* Keys of the user record that the login and authentication-token answers read alike. The
 * capital K of "AccessToKen" is the login service's own spelling. */
constexpr AtriumKey KEY_ACCESS_TOKEN = ValueText("UserInfo.LoginToken.AccessToken",
                                                 ATRIUM_FIELD(UserRecord, acAccessToken))
                                           .Required("Not Find the AccessToKen", LOGIN_TRACE_ERROR);
constexpr AtriumKey KEY_EXPIRE_IN = ValueNumber("UserInfo.LoginToken.ExpireIn", ATRIUM_FIELD(UserRecord, uiExpireIn))
                                        .Required("Not Find the ExpireIn", LOGIN_TRACE_ERROR);
constexpr AtriumKey KEY_REAL_USER_ACCOUNT =
    ValueText("UserInfo.RealUserAccount", ATRIUM_FIELD(UserRecord, acRealUserAccount))
        .SayWhenPresent("get real user account");
constexpr AtriumKey KEY_FIRST_LOGIN =
    ValueNumber("UserInfo.FirstLogin", ATRIUM_FIELD(UserRecord, bFirstLogin), AtriumStore::YesFlag);
constexpr AtriumKey KEY_PWD_EXPIRE_TIME = ValueNumber("UserInfo.PWDExpireTime", ATRIUM_FIELD(UserRecord, uiPwdExpireTime));

} // namespace

/* ---- authentication token ---------------------------------------------------------- */

namespace {

constexpr AtriumKey g_astAuthTokenKeys[] = {
    KEY_ACCESS_TOKEN, KEY_EXPIRE_IN, KEY_REAL_USER_ACCOUNT, KEY_FIRST_LOGIN, KEY_PWD_EXPIRE_TIME,
};

const uint32_t ATRIUM_DEPLOY_MODE_AUTH_TOKEN = 3;

} // namespace

uint32_t XmlParseAtriumAuthToken(const char *pcXmlBody, tagLOGIN_S_ATRIUM_USER_INFO *pstUserInfo)
{
    const uint32_t uiRet = AtriumParseKeyTable(pcXmlBody, pstUserInfo, LOGIN_OPENING, g_astAuthTokenKeys, ATRIUM_HERE);
    if (uiRet == 0) {
        pstUserInfo->uiDeployMode = ATRIUM_DEPLOY_MODE_AUTH_TOKEN;
    }
    return uiRet;
}

/* ---- login ------------------------------------------------------------------------- */

namespace {

const uint32_t EXTRA_PARM_MAX = LOGIN_EXTRA_PARM_MAX;
const uint32_t UMS_INFO_MAX = LOGIN_UMS_INFO_NUM;
const uint32_t MAIN_SITE_NAME_CAPACITY = 256;

/* One login answer being read. */
struct LoginAnswer {
    _NODE *pstRoot;
    const char *pcOwnSiteHost;
    UserRecord *pstUser;
    char acMainSiteName[MAIN_SITE_NAME_CAPACITY];  /* from "ecsmainsite", read before the sites */
    AtriumCallSite stSite;                         /* the parser, for the traces of every step */
};

/* What a step leaves the parser to do. */
struct LoginVerdict {
    bool bStop;
    uint32_t uiRet;        /* the parser's result when it stops */
    bool bKeepUnreleased;  /* stop without releasing the document */
};

const LoginVerdict LOGIN_GO_ON = {false, 0, false};
const LoginVerdict LOGIN_FAIL = {true, ATRIUM_FAILED, false};

using LoginStepFn = LoginVerdict (*)(LoginAnswer &stAnswer);

/* One step: a plain key (read by the frame's key loop), or a step of its own. */
struct LoginStep {
    AtriumKey stKey;
    LoginStepFn pfnOwn;
};

constexpr LoginStep Key(const AtriumKey &stKey)
{
    return LoginStep{stKey, nullptr};
}

constexpr LoginStep Own(LoginStepFn pfnOwn)
{
    return LoginStep{AtriumKey{}, pfnOwn};
}

/* Extra parameters: every child of "ExtraParms" as a (name, text) pair, at most 256. One
 * that cannot be copied drops them all; the parse goes on either way. */
LoginVerdict ReadExtraParms(LoginAnswer &stAnswer)
{
    _NODE *pstParms = AtriumFindElement(stAnswer.pstRoot, ATRIUM_PATH("UserInfo.ExtraParms"), stAnswer.stSite);
    if (pstParms == nullptr) {
        ATRIUM_TRACE_AT(stAnswer.stSite, LOGIN_TRACE_PROGRESS, "not find the ExtraParms");
        return LOGIN_GO_ON;
    }
    ATRIUM_TRACE_AT(stAnswer.stSite, LOGIN_TRACE_PROGRESS, "get extra parameters");
    uint32_t uiCount = 0;
    (void)KTL_XML_GetNodeChildNum(pstParms, &uiCount);
    if (uiCount == 0) {
        return LOGIN_GO_ON;
    }
    if (uiCount > EXTRA_PARM_MAX) {
        uiCount = EXTRA_PARM_MAX;
    }
    /* A null array is not reported: the walk below then takes nothing. */
    const auto uiBytes = static_cast<uint32_t>(uiCount * sizeof(tagLOGIN_S_EXTRA_PARM));
    auto *pstParm = static_cast<tagLOGIN_S_EXTRA_PARM *>(ATRIUM_MALLOC_S(uiBytes));
    uint32_t uiTaken = 0;
    for (_NODE *pstChild : AtriumChildren(pstParms)) {
        if (pstParm == nullptr || uiTaken == EXTRA_PARM_MAX) {
            break;
        }
        char *pcName = nullptr;
        char *pcText = nullptr;
        const uint32_t uiRet = KTL_XML_GetNodeValue(pstChild, nullptr, 0, &pcName, &pcText);
        if (uiRet != 0) {
            ATRIUM_TRACE_AT(stAnswer.stSite, LOGIN_TRACE_ERROR, "KTL_XML_GetNodeValue failed uiRet:%u", uiRet);
            /* The login service knows this exit as it is: the document is not released, and
             * the array is neither freed nor handed over. */
            return LoginVerdict{true, uiRet, true};
        }
        tagLOGIN_S_EXTRA_PARM &stParm = pstParm[uiTaken];
        if (qev_strcpy_s(stParm.acName, sizeof(stParm.acName), pcName) != 0 ||
            qev_strcpy_s(stParm.acValue, sizeof(stParm.acValue), pcText) != 0) {
            ATRIUM_FREE_SET_NULL(&pstParm);
            uiTaken = 0;
            break;
        }
        ++uiTaken;
    }
    if (uiTaken > 0) {
        ATRIUM_TRACE_AT(stAnswer.stSite, LOGIN_TRACE_PROGRESS, "get %d extra parameter", static_cast<int>(uiTaken));
        stAnswer.pstUser->uiExtraParmNum = uiTaken;
        stAnswer.pstUser->pstExtraParm = pstParm;
    }
    return LOGIN_GO_ON;
}

/* Read only when the answer has no impu. */
constexpr AtriumKey g_astSipAccountFallBack[] = {
    ValueText("UserInfo.sipinfo.account", ATRIUM_FIELD(UserRecord, acSipAccount)).TracedMiss("Not Find the sip account"),
};

/* The SIP identity: the impu, or the account when there is no impu. */
LoginVerdict ReadSipIdentity(LoginAnswer &stAnswer)
{
    _NODE *pstNode = nullptr;
    char *pcValue = nullptr;
    (void)AtriumGetNodeValueByUri(stAnswer.pstRoot, ATRIUM_PATH("UserInfo.sipinfo.impu"), &pstNode, &pcValue,
                                  stAnswer.stSite);
    if (pcValue != nullptr) {
        (void)qev_strcpy_s(stAnswer.pstUser->acSipAccount, sizeof(stAnswer.pstUser->acSipAccount), pcValue);
        return LOGIN_GO_ON;
    }
    ATRIUM_TRACE_AT(stAnswer.stSite, LOGIN_TRACE_MISS, "Not Find the sip impu, look for account");
    (void)AtriumReadXmlKeys(stAnswer.pstRoot, g_astSipAccountFallBack, stAnswer.pstUser, stAnswer.stSite);
    return LOGIN_GO_ON;
}

const int32_t FUNC_TYPE_ABSENT_LOGIN = -1;

/* FuncType and its "terminalScene"; an answer without a FuncType value gets -1. */
LoginVerdict ReadFuncType(LoginAnswer &stAnswer)
{
    _NODE *pstNode = nullptr;
    char *pcValue = nullptr;
    (void)AtriumGetNodeValueByUri(stAnswer.pstRoot, ATRIUM_PATH("UserInfo.sipinfo.FuncType"), &pstNode, &pcValue,
                                  stAnswer.stSite);
    if (pcValue == nullptr) {
        ATRIUM_TRACE_AT(stAnswer.stSite, LOGIN_TRACE_MISS, "Not Find the sip FuncType");
        stAnswer.pstUser->iFuncType = FUNC_TYPE_ABSENT_LOGIN;
        return LOGIN_GO_ON;
    }
    StoreFuncType(pcValue, &stAnswer.pstUser->iFuncType, stAnswer.stSite);
    StoreTerminalScene(pstNode, stAnswer.pstUser, stAnswer.stSite);
    return LOGIN_GO_ON;
}

/* The main site's name, the attribute "name" of "ecsmainsite" (its value is not needed). */
LoginVerdict ReadMainSiteName(LoginAnswer &stAnswer)
{
    _NODE *pstMainSite =
        AtriumFindElement(stAnswer.pstRoot, ATRIUM_PATH("UserInfo.servicetp.ecsmainsite"), stAnswer.stSite);
    if (pstMainSite == nullptr) {
        ATRIUM_TRACE_AT(stAnswer.stSite, LOGIN_TRACE_MISS, "Not Find the ecs main site");
        return LOGIN_GO_ON;
    }
    const char *pcName = AtriumAttr(pstMainSite, "name");
    if (pcName != nullptr) {
        (void)qev_strcpy_s(stAnswer.acMainSiteName, sizeof(stAnswer.acMainSiteName), pcName);
    }
    return LOGIN_GO_ON;
}

/*
 * Parses the leading run of "site" children of servicetp into pstSites and returns the
 * index of the last one whose SSO host is pcOwnSiteHost (0 when none matches). The first
 * child that is not a site ends the harvest. The login service's harvest does not step
 * over that child but looks at it again once for every child still to come, so its miss
 * is traced that many times more; the login service's traces are kept as they are.
 */
uint32_t HarvestLeadingSites(_NODE *pstServiceTp, Site *pstSites, const char *pcOwnSiteHost,
                             const AtriumCallSite &stSite)
{
    uint32_t uiChildrenLeft = 0;
    uint32_t uiParsed = 0;
    uint32_t uiOwnSite = 0;

    (void)KTL_XML_GetNodeChildNum(pstServiceTp, &uiChildrenLeft);
    for (_NODE *pstChild : AtriumChildren(pstServiceTp)) {
        if (!IsSiteElement(pstChild, stSite)) {
            for (uint32_t uiLook = 1; uiLook < uiChildrenLeft; ++uiLook) {
                (void)IsSiteElement(pstChild, stSite);
            }
            break;
        }
        (void)XmlAtriumParseSite(pstChild, &pstSites[uiParsed], nullptr, 0);
        if (IsMatchingSite(pstChild, pcOwnSiteHost) != 0) {
            uiOwnSite = uiParsed;
        }
        ++uiParsed;
        --uiChildrenLeft;
    }
    return uiOwnSite;
}

/* The last site of non-zero priority named pcMainSiteName, or uiNumOfSite for none. Sites
 * left unparsed are all-zero, so their priority 0 keeps them out. */
uint32_t FindMainSite(const Site *pstSites, uint32_t uiNumOfSite, const char *pcMainSiteName)
{
    uint32_t uiMainSite = uiNumOfSite;
    for (uint32_t i = 0; i < uiNumOfSite; ++i) {
        if (pstSites[i].uiPriority != 0 && pcMainSiteName[0] != '\0' &&
            KOSA_StrCmp(pstSites[i].acSiteName, pcMainSiteName) == 0) {
            uiMainSite = i;
        }
    }
    return uiMainSite;
}

/* The sites under "servicetp": selected site and SIP server list for the caller. */
LoginVerdict ReadSites(LoginAnswer &stAnswer)
{
    _NODE *pstServiceTp = AtriumFindElement(stAnswer.pstRoot, ATRIUM_PATH("UserInfo.servicetp"), stAnswer.stSite);
    if (pstServiceTp == nullptr) {
        return LOGIN_GO_ON;
    }
    const uint32_t uiNumOfSite = GetSiteNumber(pstServiceTp);
    if (uiNumOfSite == 0) {
        return LOGIN_GO_ON;
    }
    Site *pstSites = NewSiteArray(uiNumOfSite, stAnswer.stSite);
    if (pstSites == nullptr) {
        return LOGIN_FAIL;
    }
    const uint32_t uiOwnSite = HarvestLeadingSites(pstServiceTp, pstSites, stAnswer.pcOwnSiteHost, stAnswer.stSite);
    const uint32_t uiMainSite = FindMainSite(pstSites, uiNumOfSite, stAnswer.acMainSiteName);
    HandOverSites(pstSites, uiNumOfSite, uiOwnSite, uiMainSite, stAnswer.pstUser, stAnswer.stSite);
    return LOGIN_GO_ON;
}

/* The TR-069 server's uri is kept base64-encoded; the encoded text is wiped before it is
 * released. Without an encoding the field is cleared. */
void StoreEncodedUri(char (&acField)[256], const char *pcUri)
{
    char *pcEncoded = KTL_BASE64Encode(pcUri, KOSA_StrLen(pcUri));
    if (pcEncoded == nullptr) {
        (void)qev_memset_s(acField, sizeof(acField), 0, sizeof(acField));
        return;
    }
    (void)qev_strcpy_s(acField, sizeof(acField), pcEncoded);
    const uint32_t uiLen = KOSA_StrLen(pcEncoded);
    (void)qev_memset_s(pcEncoded, uiLen, 0, uiLen);
    KTL_BASE64Free(&pcEncoded);
}

/* Further servers under "serverList": each child needs a name and a uri; three names are
 * kept, a later entry of the same name overwriting an earlier one. */
LoginVerdict ReadServers(LoginAnswer &stAnswer)
{
    _NODE *pstList = nullptr;
    if (AtriumLookUp(stAnswer.pstRoot, ATRIUM_PATH("UserInfo.serverList"), &pstList) != 0) {
        return LOGIN_GO_ON;
    }
    UserRecord *pstUser = stAnswer.pstUser;
    for (_NODE *pstServer : AtriumChildren(pstList)) {
        const char *pcName = AtriumAttr(pstServer, "name");
        if (pcName == nullptr) {
            ATRIUM_TRACE_AT(stAnswer.stSite, LOGIN_TRACE_ERROR, "pcName is null");
            return LOGIN_FAIL;
        }
        const char *pcUri = AtriumAttr(pstServer, "uri");
        if (pcUri == nullptr) {
            ATRIUM_TRACE_AT(stAnswer.stSite, LOGIN_TRACE_ERROR, "pcUri is null");
            return LOGIN_FAIL;
        }
        ATRIUM_TRACE_AT(stAnswer.stSite, LOGIN_TRACE_PROGRESS, "Find the Server name:%s uri:%s", pcName, pcUri);
        if (KOSA_StrCmp(pcName, "eab") == 0) {
            (void)qev_strcpy_s(pstUser->acEabUri, sizeof(pstUser->acEabUri), pcUri);
        } else if (KOSA_StrCmp(pcName, "groupserver") == 0) {
            (void)qev_strcpy_s(pstUser->acGroupServerUri, sizeof(pstUser->acGroupServerUri), pcUri);
        } else if (KOSA_StrCmp(pcName, "tmstr069") == 0) {
            StoreEncodedUri(pstUser->acTmsTr069Uri, pcUri);
        }
    }
    return LOGIN_GO_ON;
}

/* Unified-messaging accounts under "umsinfo", at most 24. Each password is wiped inside
 * the document once copied. */
LoginVerdict ReadUmsAccounts(LoginAnswer &stAnswer)
{
    _NODE *pstUms = nullptr;
    if (AtriumLookUp(stAnswer.pstRoot, ATRIUM_PATH("UserInfo.umsinfo"), &pstUms) != 0) {
        return LOGIN_GO_ON;
    }
    uint32_t uiEntry = 0;
    for (_NODE *pstAccount : AtriumChildren(pstUms)) {
        if (uiEntry == UMS_INFO_MAX) {
            break;
        }
        const char *pcDn = AtriumAttr(pstAccount, "dn");
        if (pcDn == nullptr) {
            ATRIUM_TRACE_AT(stAnswer.stSite, LOGIN_TRACE_ERROR, "pcDn is null");
            return LOGIN_FAIL;
        }
        const char *pcUmsAccount = AtriumAttr(pstAccount, "umsaccount");
        if (pcUmsAccount == nullptr) {
            ATRIUM_TRACE_AT(stAnswer.stSite, LOGIN_TRACE_ERROR, "pcUmsAccount is null");
            return LOGIN_FAIL;
        }
        char *pcPwd = AtriumAttr(pstAccount, "pwd");
        if (pcPwd == nullptr) {
            ATRIUM_TRACE_AT(stAnswer.stSite, LOGIN_TRACE_ERROR, "pcPwd is null");
            return LOGIN_FAIL;
        }
        tagLOGIN_S_UMS_INFO &stInfo = stAnswer.pstUser->astUmsInfo[uiEntry];
        (void)qev_strcpy_s(stInfo.acDn, sizeof(stInfo.acDn), pcDn);
        (void)qev_strcpy_s(stInfo.acUmsAccount, sizeof(stInfo.acUmsAccount), pcUmsAccount);
        (void)qev_strcpy_s(stInfo.acPwd, sizeof(stInfo.acPwd), pcPwd);
        const uint32_t uiPwdBytes = KOSA_StrLen(pcPwd) + 1;
        (void)qev_memset_s(pcPwd, uiPwdBytes, 0, uiPwdBytes);
        ATRIUM_TRACE_AT(stAnswer.stSite, LOGIN_TRACE_PROGRESS, "ums_account:%s", stInfo.acUmsAccount);
        ++uiEntry;
    }
    return LOGIN_GO_ON;
}

const uint32_t DATA_CONF_ABSENT = 1;

/* The login answer, step by step; the order is the trace order. */
constexpr LoginStep g_astLoginSteps[] = {
    Key(KEY_ACCESS_TOKEN),
    Key(KEY_EXPIRE_IN),
    Own(ReadExtraParms),
    Key(KEY_REAL_USER_ACCOUNT),
    Key(ValueText("UserInfo.displayname", ATRIUM_FIELD(UserRecord, acDisplayName)).SayWhenPresent("get diplay name")),
    Own(ReadSipIdentity),
    Key(ValueText("UserInfo.sipinfo.impi", ATRIUM_FIELD(UserRecord, acSipImpi)).TracedMiss("Not Find the sip impi")),
    Key(ValueText("UserInfo.sipinfo.short_number", ATRIUM_FIELD(UserRecord, acShortNumber))
            .TracedMiss("Not Find the sip short_number")),
    Key(ValueNumber("UserInfo.sipinfo.pwdtype", ATRIUM_FIELD(UserRecord, bPwdTypeZero), AtriumStore::ZeroFlag)
            .TracedMiss("Not Find the pwdtype")
            .DefaultOnMiss(0)),
    Key(ValueText("UserInfo.sipinfo.passwd", ATRIUM_FIELD(UserRecord, acSipPassword))
            .TracedMiss("Not Find the sip passwd")),
    /* the account's message, reused for the domain on purpose */
    Key(ValueText("UserInfo.sipinfo.domain", ATRIUM_FIELD(UserRecord, acSipDomain))
            .TracedMiss("Not Find the sip account")),
    Own(ReadFuncType),
    Key(ValueText("UserInfo.sipinfo.sname", ATRIUM_FIELD(UserRecord, acSname)).TracedMiss("Not Find the sip sname")),
    Key(ValueText("UserInfo.fileDockServiceType", ATRIUM_FIELD(UserRecord, acFileDockServiceType))
            .TracedMiss("Not Find the fileDockServiceType")),
    Key(ValueText("UserInfo.fileDockAppId", ATRIUM_FIELD(UserRecord, acFileDockAppId))
            .TracedMiss("Not Find the fileDockAppId")),
    Key(ValueText("UserInfo.fileDockServerAddr", ATRIUM_FIELD(UserRecord, acFileDockServerAddr))
            .TracedMiss("Not Find the fileDockServerAddr")),
    Key(ValueText("UserInfo.privacyVersion", ATRIUM_FIELD(UserRecord, acPrivacyVersion))
            .TracedMiss("Not Find the privacyVersion")),
    Key(ValueNumber("UserInfo.userType", ATRIUM_FIELD(UserRecord, bHasUserType), AtriumStore::PresentFlag)
            .TracedMiss("Not Find the user type")
            .DefaultOnMiss(0)),
    Own(ReadMainSiteName),
    Own(ReadSites),
    Key(ValueNumber("UserInfo.DeployMode", ATRIUM_FIELD(UserRecord, uiDeployMode))
            .TracedMiss("Not Find the DeployMode")),
    /* deliberately a dump-level trace */
    Key(ValueNumber("UserInfo.dataConf", ATRIUM_FIELD(UserRecord, uiDataConf))
            .TracedMiss("Not Find the dataConf", LOGIN_TRACE_DUMP)
            .DefaultOnMiss(DATA_CONF_ABSENT)),
    Key(KEY_FIRST_LOGIN),
    Key(KEY_PWD_EXPIRE_TIME),
    Own(ReadServers),
    Own(ReadUmsAccounts),
};

LoginVerdict RunLoginStep(const LoginStep &stStep, LoginAnswer &stAnswer)
{
    if (stStep.pfnOwn != nullptr) {
        return stStep.pfnOwn(stAnswer);
    }
    if (AtriumReadKeys(AtriumXmlSource{stAnswer.pstRoot}, &stStep.stKey, 1, stAnswer.pstUser, stAnswer.stSite) != 0) {
        return LOGIN_FAIL;
    }
    return LOGIN_GO_ON;
}

} // namespace

uint32_t XmlParseAtriumLoginResult(const char *pcXmlBody, const char *pcOwnSiteHost,
                                   tagLOGIN_S_ATRIUM_USER_INFO *pstUserInfo)
{
    AtriumDocument stDocument;

    const uint32_t uiRet = AtriumOpenAnswer(pcXmlBody, pstUserInfo, LOGIN_OPENING, stDocument, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    LoginAnswer stAnswer = {stDocument.Root(), pcOwnSiteHost, pstUserInfo, {}, ATRIUM_HERE};
    for (const LoginStep &stStep : g_astLoginSteps) {
        const LoginVerdict stVerdict = RunLoginStep(stStep, stAnswer);
        if (stVerdict.bStop) {
            if (stVerdict.bKeepUnreleased) {
                stDocument.KeepUnreleased();
            }
            return stVerdict.uiRet;
        }
    }
    return 0;
}

/* ---- server list ------------------------------------------------------------------- */

namespace {

/* The server-list answer carries each value in the attribute "val" of its element (an
 * empty "val" is a value); an element without "val" leaves its field alone. */
constexpr AtriumKey Val(const char *pcPath, uint32_t uiOffset, uint32_t uiCapacity,
                        AtriumStore eStore = AtriumStore::Text)
{
    return AnyAttribute(pcPath, "val", uiOffset, uiCapacity, eStore);
}

constexpr AtriumKey g_astServerListKeys[] = {
    Val("servicetp.sipinfo.impu", ATRIUM_FIELD(UserRecord, acSipAccount)),
    Val("servicetp.sipinfo.impi", ATRIUM_FIELD(UserRecord, acSipImpi)),
    Val("servicetp.sipinfo.pwdtype", ATRIUM_FIELD(UserRecord, bPwdTypeZero), AtriumStore::ZeroFlag).DefaultOnMiss(0),
    Val("servicetp.sipinfo.passwd", ATRIUM_FIELD(UserRecord, acSipPassword)),
    Val("servicetp.sipinfo.domain", ATRIUM_FIELD(UserRecord, acSipDomain)),
};

const int32_t FUNC_TYPE_ABSENT_SERVER_LIST = 5;

/* FuncType from "val"; "terminalScene" is read whenever the element is there. */
void ReadServerListFuncType(_NODE *pstRoot, UserRecord *pstUser, const AtriumCallSite &stSite)
{
    _NODE *pstFuncType = AtriumFindElement(pstRoot, ATRIUM_PATH("servicetp.sipinfo.FuncType"), stSite);
    if (pstFuncType == nullptr) {
        pstUser->iFuncType = FUNC_TYPE_ABSENT_SERVER_LIST;
        ATRIUM_TRACE_AT(stSite, LOGIN_TRACE_MISS, "Not Find the sip FuncType, set default 5");
        return;
    }
    const char *pcVal = AtriumAttr(pstFuncType, "val");
    if (pcVal != nullptr) {
        StoreFuncType(pcVal, &pstUser->iFuncType, stSite);
    }
    StoreTerminalScene(pstFuncType, pstUser, stSite);
}

/* Parses every "site" child of servicetp into pstSites, stepping over other children. */
void HarvestAllSites(_NODE *pstServiceTp, Site *pstSites, const AtriumCallSite &stSite)
{
    Site *pstNext = pstSites;
    for (_NODE *pstChild : AtriumChildren(pstServiceTp)) {
        if (IsSiteElement(pstChild, stSite)) {
            (void)XmlAtriumParseSite(pstChild, pstNext++, nullptr, 0);
        }
    }
}

/* This answer names no own or main site: site 0 is both. */
const uint32_t SERVER_LIST_OWN_AND_MAIN_SITE = 0;

} // namespace

uint32_t XmlParseAtriumGetServerListRst(const char *pcXmlBody, tagLOGIN_S_ATRIUM_USER_INFO *pstUserInfo)
{
    AtriumDocument stDocument;

    const uint32_t uiRet = AtriumOpenAnswer(pcXmlBody, pstUserInfo, LOGIN_OPENING, stDocument, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    _NODE *pstRoot = stDocument.Root();
    (void)AtriumReadXmlKeys(pstRoot, g_astServerListKeys, pstUserInfo, ATRIUM_HERE);
    ReadServerListFuncType(pstRoot, pstUserInfo, ATRIUM_HERE);

    _NODE *pstServiceTp = AtriumFindElement(pstRoot, ATRIUM_PATH("servicetp"), ATRIUM_HERE);
    const uint32_t uiNumOfSite = (pstServiceTp != nullptr) ? GetSiteNumber(pstServiceTp) : 0;
    if (uiNumOfSite != 0) {
        Site *pstSites = NewSiteArray(uiNumOfSite, ATRIUM_HERE);
        if (pstSites == nullptr) {
            return ATRIUM_FAILED;
        }
        HarvestAllSites(pstServiceTp, pstSites, ATRIUM_HERE);
        HandOverSites(pstSites, uiNumOfSite, SERVER_LIST_OWN_AND_MAIN_SITE, SERVER_LIST_OWN_AND_MAIN_SITE,
                      pstUserInfo, ATRIUM_HERE);
    }
    return 0;
}

/* ---- search ------------------------------------------------------------------------ */

uint32_t XmlParseAtriumSearchResult(const char *pcXmlBody, tagLOGIN_S_ATRIUM_SEARCH_RESULT *pstResult)
{
    AtriumDocument stDocument;

    /* No argument check: the login service never passes null here. */
    const uint32_t uiRet = AtriumParseAnswer(pcXmlBody, "atrium: KTL_XML_Parse failed errno=[0x%x]!",
                                             ATRIUM_PARSE_CODE, stDocument.RootSlot(), ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    _NODE *pstServiceTp = AtriumFindElement(stDocument.Root(), ATRIUM_PATH("UserInfo.servicetp"), ATRIUM_HERE);
    /* Entries are appended after what the caller has; a uri of exactly "default" names no
     * portal. */
    const AtriumSearchEntries stEntries = {&pstResult->uiSiteNum, pstResult->auiPriority, pstResult->aacSiteUri,
                                           LOGIN_SEARCH_SITE_MAX};
    AtriumCollectSearchSites(pstServiceTp, stEntries, "default", ATRIUM_HERE);
    return 0;
}

/* ---- token information ------------------------------------------------------------- */

namespace {

using TokenInfo = tagLOGIN_S_ATRIUM_TOKEN_INFO;

constexpr char TOKEN_INFO_TOKEN_PATH[] = "UserInfo.LoginToken.AccessToken";
constexpr char TOKEN_INFO_EXPIRE_PATH[] = "UserInfo.LoginToken.ExpireIn";

/* Optional; a copy that fails leaves the field empty. */
constexpr AtriumKey g_astTokenInfoAccountKeys[] = {
    ValueText("UserInfo.Account", ATRIUM_FIELD(TokenInfo, acAccount)),
    ValueText("UserInfo.PWD", ATRIUM_FIELD(TokenInfo, acPassword)),
};

} // namespace

uint32_t XmlParseAtriumTokenInfo(const char *pcXmlBody, tagLOGIN_S_ATRIUM_TOKEN_INFO *pstTokenInfo)
{
    AtriumDocument stDocument;
    _NODE *pstNode = nullptr;
    char *pcValue = nullptr;

    /* This answer's argument check is silent. */
    const AtriumOpening stOpening = {nullptr, "Parse XMLBody failed : %u !!", ATRIUM_PARSE_CODE};
    uint32_t uiRet = AtriumOpenAnswer(pcXmlBody, pstTokenInfo, stOpening, stDocument, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    _NODE *pstRoot = stDocument.Root();
    uiRet = XML_D_GET_NODEVALUE_BYURI(pstRoot, TOKEN_INFO_TOKEN_PATH, &pstNode, &pcValue);
    if (pcValue == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "XML_D_GET_NODEVALUE_BYURI failed : %s !!", TOKEN_INFO_TOKEN_PATH);
        stDocument.KeepUnreleased(); /* the login service knows this exit without the release */
        return uiRet;
    }
    const int iCopy = qev_strcpy_s(pstTokenInfo->acAccessToken, sizeof(pstTokenInfo->acAccessToken), pcValue);
    if (iCopy != 0) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "qev_strncpy_s failed : %u !!", static_cast<uint32_t>(iCopy));
        return static_cast<uint32_t>(iCopy);
    }
    uiRet = XML_D_GET_NODEVALUE_BYURI(pstRoot, TOKEN_INFO_EXPIRE_PATH, &pstNode, &pcValue);
    if (pcValue == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "Parse XMLBody failed : %s !!", TOKEN_INFO_EXPIRE_PATH);
        stDocument.KeepUnreleased(); /* the login service knows this exit without the release */
        return uiRet;
    }
    (void)KOSA_StrToInt32(pcValue, &pstTokenInfo->iExpireIn);
    (void)AtriumReadXmlKeys(pstRoot, g_astTokenInfoAccountKeys, pstTokenInfo, ATRIUM_HERE);
    return 0;
}

/* ---- right configuration ----------------------------------------------------------- */

namespace {

using RightConfig = tagLOGIN_S_ATRIUM_RIGHT_CONFIG;

/* The small fields; the texts are copied with a counted copy (value length + 1). */
constexpr AtriumKey g_astRightConfigKeys[] = {
    ValueNumber("root.retcode", ATRIUM_FIELD(RightConfig, uiRetCode)),
    CountedText("root.devkey", ATRIUM_FIELD(RightConfig, acDevKey)),
    CountedText("root.devtype", ATRIUM_FIELD(RightConfig, acDevType)),
    CountedText("root.timestamp", ATRIUM_FIELD(RightConfig, acTimestamp)),
};

const uint32_t PROFILE_FILE_MODE = 0766;

} // namespace

uint32_t XmlSaveAtriumXmlBody(const char *pcText, const char *pcFileName)
{
    if (pcText == nullptr || pcFileName == nullptr) {
        return ATRIUM_FAILED;
    }
    ATRIUM_TRACE(LOGIN_TRACE_DUMP, "filename:%s", pcFileName);
    const int32_t iFd = KOSA_Open(pcFileName, KOSA_O_WRONLY | KOSA_O_CREAT | KOSA_O_TRUNC, PROFILE_FILE_MODE);
    if (iFd < 0) {
        return ATRIUM_FAILED;
    }
    const uint32_t uiLen = KOSA_StrLen(pcText);
    const int32_t iWritten = KOSA_Write(iFd, pcText, uiLen);
    (void)KOSA_Close(iFd);
    return (iWritten >= 0 && static_cast<uint32_t>(iWritten) == uiLen) ? 0 : ATRIUM_FAILED;
}

uint32_t XmlParseAtriumRightConfig(const char *pcXmlBody, const char *pcFileName,
                                   tagLOGIN_S_ATRIUM_RIGHT_CONFIG *pstConfigResult)
{
    AtriumDocument stDocument;
    _NODE *pstNode = nullptr;
    char *pcProfile = nullptr;

    const AtriumOpening stOpening = {"atrium: pcXmlBody or pstConfigResult is null",
                                     "atrium: Parse XMLBody failed : %d !!", ATRIUM_PARSE_CODE};
    uint32_t uiRet = AtriumOpenAnswer(pcXmlBody, pstConfigResult, stOpening, stDocument, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    (void)AtriumReadXmlKeys(stDocument.Root(), g_astRightConfigKeys, pstConfigResult, ATRIUM_HERE);
    /* A refusal (or a caller's non-zero code when the answer has none) carries no profile. */
    if (pstConfigResult->uiRetCode != 0) {
        return 0;
    }
    uiRet = XML_D_GET_NODEVALUE_BYURI(stDocument.Root(), "root.profile", &pstNode, &pcProfile);
    if (pcProfile == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "atrium: GetNodeByUrl Profile failed ulRet[0x%x]", uiRet);
        return uiRet;
    }
    uiRet = XmlSaveAtriumXmlBody(pcProfile, pcFileName);
    if (uiRet == 0) {
        stDocument.KeepUnreleased(); /* the login service knows this exit without the release */
        return 0;
    }
    ATRIUM_TRACE(LOGIN_TRACE_ERROR, "atrium: XmlBody save failed, ulRet[0x%x]", uiRet);
    return uiRet;
}

/* ---- key tables, for those who describe them ----------------------------------------- */

namespace {

/* The login answer's plain keys, taken from its steps in step order. */
const std::vector<AtriumKey> &LoginKeys()
{
    static const std::vector<AtriumKey> s_vecKeys = [] {
        std::vector<AtriumKey> vecKeys;
        for (const LoginStep &stStep : g_astLoginSteps) {
            if (stStep.pfnOwn == nullptr) {
                vecKeys.push_back(stStep.stKey);
            }
        }
        return vecKeys;
    }();
    return s_vecKeys;
}

} // namespace

std::vector<AtriumKeyTable> AtriumPortalKeyTables()
{
    const std::vector<AtriumKey> &vecLoginKeys = LoginKeys();
    return {
        AtriumTable("XmlParseAtriumAuthToken", "tagLOGIN_S_ATRIUM_USER_INFO", g_astAuthTokenKeys),
        AtriumKeyTable{"XmlParseAtriumLoginResult", "tagLOGIN_S_ATRIUM_USER_INFO", vecLoginKeys.data(),
                       vecLoginKeys.size()},
        AtriumTable("XmlParseAtriumLoginResult", "tagLOGIN_S_ATRIUM_USER_INFO", g_astSipAccountFallBack),
        AtriumTable("XmlParseAtriumGetServerListRst", "tagLOGIN_S_ATRIUM_USER_INFO", g_astServerListKeys),
        AtriumTable("XmlParseAtriumTokenInfo", "tagLOGIN_S_ATRIUM_TOKEN_INFO", g_astTokenInfoAccountKeys),
        AtriumTable("XmlParseAtriumRightConfig", "tagLOGIN_S_ATRIUM_RIGHT_CONFIG", g_astRightConfigKeys),
    };
}
