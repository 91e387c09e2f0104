/*
 * xpath_login.cpp - the libxml2 + XPath reading of the portal login (see xpath_login.h).
 *
 * Every key is one xmlXPathEvalExpression from a context node (the root, a site, a group,
 * its STG group), as such code is usually written: element values through "path" and the
 * element's first non-blank text child, attributes through "path/@name". Values are copied
 * into the record with the module's bounded routines and converted with the same platform
 * routines, so the record comes out as the module's does.
 */
#include "xpath_login.h"

#include "ktl_base64.h"
#include "qev_bounded.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xpath.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <vector>

namespace bench {

namespace {

using UserRecord = tagLOGIN_S_ATRIUM_USER_INFO;
using Group = tagLOGIN_S_ACCESS_SERVER;
using StgGroup = tagLOGIN_S_STG_GROUP;
using Site = tagLOGIN_S_SITE;

#define XPATH_MALLOC_S(uiSize) KOSA_MemMallocS((uiSize), 0, static_cast<uint32_t>(__LINE__), __FILE__)
#define XPATH_FREE(pvMem) KOSA_MemFreeD((pvMem), static_cast<uint32_t>(__LINE__), __FILE__)

/* One parsed answer and its XPath context. */
class XPathDocument {
public:
    explicit XPathDocument(const std::string &strBody)
        : m_pxDoc(xmlReadMemory(strBody.data(), static_cast<int>(strBody.size()), nullptr, nullptr, XML_PARSE_NONET)),
          m_pxCtx(m_pxDoc != nullptr ? xmlXPathNewContext(m_pxDoc) : nullptr)
    {}
    ~XPathDocument()
    {
        if (m_pxCtx != nullptr) {
            xmlXPathFreeContext(m_pxCtx);
        }
        if (m_pxDoc != nullptr) {
            xmlFreeDoc(m_pxDoc);
        }
    }
    XPathDocument(const XPathDocument &) = delete;
    XPathDocument &operator=(const XPathDocument &) = delete;

    bool Valid() const { return m_pxCtx != nullptr; }
    xmlNodePtr Root() const { return xmlDocGetRootElement(m_pxDoc); }

    /* The nodes a query selects from pxContext, in document order. */
    std::vector<xmlNodePtr> All(xmlNodePtr pxContext, const char *pcQuery)
    {
        std::vector<xmlNodePtr> vecNodes;
        xmlXPathObjectPtr pxResult = Evaluate(pxContext, pcQuery);
        if (pxResult != nullptr && pxResult->nodesetval != nullptr) {
            vecNodes.assign(pxResult->nodesetval->nodeTab,
                            pxResult->nodesetval->nodeTab + pxResult->nodesetval->nodeNr);
        }
        xmlXPathFreeObject(pxResult);
        return vecNodes;
    }

    /* The first node a query selects, or null. */
    xmlNodePtr First(xmlNodePtr pxContext, const char *pcQuery)
    {
        xmlXPathObjectPtr pxResult = Evaluate(pxContext, pcQuery);
        xmlNodePtr pxNode = nullptr;
        if (pxResult != nullptr && pxResult->nodesetval != nullptr && pxResult->nodesetval->nodeNr > 0) {
            pxNode = pxResult->nodesetval->nodeTab[0];
        }
        xmlXPathFreeObject(pxResult);
        return pxNode;
    }

    /* An element's value: its first text child that is not blank; an attribute's text. */
    char *Value(xmlNodePtr pxContext, const char *pcQuery) { return ValueOf(First(pxContext, pcQuery)); }

    static char *ValueOf(xmlNodePtr pxNode)
    {
        if (pxNode == nullptr) {
            return nullptr;
        }
        if (pxNode->type == XML_ATTRIBUTE_NODE) {
            return pxNode->children != nullptr ? reinterpret_cast<char *>(pxNode->children->content)
                                               : const_cast<char *>("");
        }
        for (xmlNodePtr pxChild = pxNode->children; pxChild != nullptr; pxChild = pxChild->next) {
            if ((pxChild->type == XML_TEXT_NODE || pxChild->type == XML_CDATA_SECTION_NODE) &&
                !xmlIsBlankNode(pxChild)) {
                return reinterpret_cast<char *>(pxChild->content);
            }
        }
        return nullptr;
    }

private:
    xmlXPathObjectPtr Evaluate(xmlNodePtr pxContext, const char *pcQuery)
    {
        m_pxCtx->node = pxContext;
        return xmlXPathEvalExpression(reinterpret_cast<const xmlChar *>(pcQuery), m_pxCtx);
    }

    xmlDocPtr m_pxDoc;
    xmlXPathContextPtr m_pxCtx;
};

/* ---- per-key steps ------------------------------------------------------------------- */

void CopyValue(char *pcField, uint32_t uiCapacity, const char *pcValue)
{
    if (pcValue != nullptr) {
        (void)qev_strcpy_s(pcField, uiCapacity, pcValue);
    }
}

/* Attribute text when present and not empty (the site parsers' rule). */
const char *NonEmpty(const char *pcValue)
{
    return (pcValue != nullptr && pcValue[0] != '\0') ? pcValue : nullptr;
}

struct AttrRow {
    const char *pcQuery;
    uint32_t uiOffset;
    uint32_t uiCapacity;
    bool bResolve;
};

#define XPATH_FIELD(Record, field)                                                                                     \
    static_cast<uint32_t>(offsetof(Record, field)), static_cast<uint32_t>(sizeof(Record::field))

const AttrRow g_astGroupRows[] = {
    {"sip/@uri", XPATH_FIELD(Group, acSipUri), false},
    {"svn/@uri", XPATH_FIELD(Group, acSvnUri), false},
    {"httpsproxy/@uri", XPATH_FIELD(Group, acHttpsProxyUri), false},
    {"eserver/@uri", XPATH_FIELD(Group, acEserverAddr), true},
    {"eserver1/@uri", XPATH_FIELD(Group, acEserver1Addr), true},
    {"conf/@uri", XPATH_FIELD(Group, acConfUri), false},
    {"conf_type/@cmstype", XPATH_FIELD(Group, acConfType), false},
    {"maa/@uri", XPATH_FIELD(Group, acMaaUri), false},
    {"maa1/@uri", XPATH_FIELD(Group, acMaa1Uri), false},
    {"maaproxy/@uri", XPATH_FIELD(Group, acMaaProxyAddr), true},
    {"maadrproxy/@uri", XPATH_FIELD(Group, acMaaDrProxyAddr), true},
    {"androidpush/@uri", XPATH_FIELD(Group, acAndroidPushUri), false},
    {"msparam/@uri", XPATH_FIELD(Group, acMsParamUri), false},
    {"msparampath/@uri", XPATH_FIELD(Group, acMsParamPathUri), false},
    {"eab/@uri", XPATH_FIELD(Group, acEabUri), false},
    {"prophoto/@uri", XPATH_FIELD(Group, acProPhotoUri), false},
    {"tmstr069/@uri", XPATH_FIELD(Group, acTmsTr069Uri), false},
    {"eua/@uri", XPATH_FIELD(Group, acEuaUri), false},
};

const AttrRow g_astStgRows[] = {
    {"stg/@uri", XPATH_FIELD(StgGroup, acStgUri), false},
    {"auth/@account", XPATH_FIELD(StgGroup, acAuthAccount), false},
    {"auth/@pwd", XPATH_FIELD(StgGroup, acAuthPwd), false},
    {"sipstg/@uri", XPATH_FIELD(StgGroup, acSipStgUri), false},
    {"eserverstg/@uri", XPATH_FIELD(StgGroup, acEserverStgAddr), true},
    {"eserverstg1/@uri", XPATH_FIELD(StgGroup, acEserverStg1Addr), true},
    {"maastg/@uri", XPATH_FIELD(StgGroup, acMaaStgUri), false},
    {"maastg1/@uri", XPATH_FIELD(StgGroup, acMaaStg1Uri), false},
};

template <size_t N>
void ReadAttrRows(XPathDocument &oDoc, xmlNodePtr pxContext, const AttrRow (&astRows)[N], void *pvRecord)
{
    char *pcRecord = static_cast<char *>(pvRecord);
    for (const AttrRow &stRow : astRows) {
        const char *pcValue = NonEmpty(oDoc.Value(pxContext, stRow.pcQuery));
        if (pcValue == nullptr) {
            continue;
        }
        if (stRow.bResolve) {
            (void)XmlAtriumGetIpFromDomain(pcRecord + stRow.uiOffset, stRow.uiCapacity, pcValue);
        } else {
            (void)qev_strcpy_s(pcRecord + stRow.uiOffset, stRow.uiCapacity, pcValue);
        }
    }
}

/* Numbered elements "<pcFormat with 1..8>/@uri" into 8 fields. */
void ReadNumbered(XPathDocument &oDoc, xmlNodePtr pxContext, const char *pcFormat, char (*aacUri)[256])
{
    for (uint32_t i = 1; i <= LOGIN_MEDIA_SERVER_NUM; ++i) {
        char acQuery[100];
        std::snprintf(acQuery, sizeof(acQuery), pcFormat, i);
        CopyValue(aacUri[i - 1], 256, NonEmpty(oDoc.Value(pxContext, acQuery)));
    }
}

bool IsTrue(const char *pcValue)
{
    return pcValue != nullptr && std::strcmp(pcValue, "true") == 0;
}

void ReadGroup(XPathDocument &oDoc, xmlNodePtr pxGroup, Group *pstGroup)
{
    CopyValue(pstGroup->acName, sizeof(pstGroup->acName), NonEmpty(oDoc.Value(pxGroup, "@name")));
    ReadAttrRows(oDoc, pxGroup, g_astGroupRows, pstGroup);
    xmlNodePtr pxStg = oDoc.First(pxGroup, "stggroup");
    if (pxStg != nullptr) {
        ReadAttrRows(oDoc, pxStg, g_astStgRows, &pstGroup->stStgGroup);
        ReadNumbered(oDoc, pxStg, "msstggroup/msstg%u/@uri", pstGroup->stStgGroup.aacMsStgUri);
    }
    ReadNumbered(oDoc, pxGroup, "msgroup/ms%u/@uri", pstGroup->aacMsUri);
    if (oDoc.First(pxGroup, "siptls") != nullptr) {
        if (IsTrue(oDoc.Value(pxGroup, "siptls/@isactive"))) {
            pstGroup->uiSipTlsActive = 1;
        }
        CopyValue(pstGroup->acSipTlsUri, sizeof(pstGroup->acSipTlsUri),
                  NonEmpty(oDoc.Value(pxGroup, "siptls/following-sibling::*[1]/@uri")));
    }
    if (IsTrue(oDoc.Value(pxGroup, "srtp/@isactive"))) {
        pstGroup->uiSrtpActive = 1;
    }
}

void ReadSite(XPathDocument &oDoc, xmlNodePtr pxSite, Site *pstSite)
{
    CopyValue(pstSite->acSiteName, sizeof(pstSite->acSiteName), NonEmpty(oDoc.Value(pxSite, "@name")));
    const char *pcPriority = NonEmpty(oDoc.Value(pxSite, "@priority"));
    if (pcPriority != nullptr) {
        pstSite->uiPriority = KOSA_Strtoul(pcPriority, nullptr, 0);
    }
    CopyValue(pstSite->acSbcDomain, sizeof(pstSite->acSbcDomain), NonEmpty(oDoc.Value(pxSite, "sbc/@domain")));
    const std::vector<xmlNodePtr> vecGroups = oDoc.All(pxSite, "accessservergroup/*");
    pstSite->uiNumOfAccessServer = static_cast<uint32_t>(vecGroups.size());
    if (!vecGroups.empty()) {
        pstSite->pstAccessServer =
            static_cast<Group *>(XPATH_MALLOC_S(static_cast<uint32_t>(vecGroups.size() * sizeof(Group))));
        if (pstSite->pstAccessServer == nullptr) {
            return;
        }
        for (size_t i = 0; i < vecGroups.size(); ++i) {
            ReadGroup(oDoc, vecGroups[i], &pstSite->pstAccessServer[i]);
            pstSite->pstAccessServer[i].uiPriority = pstSite->uiPriority;
        }
    }
    CopyValue(pstSite->acDefaultAccount, sizeof(pstSite->acDefaultAccount),
              NonEmpty(oDoc.Value(pxSite, "tmstr069auth/@defaultaccount")));
    CopyValue(pstSite->acDefaultPwd, sizeof(pstSite->acDefaultPwd),
              NonEmpty(oDoc.Value(pxSite, "tmstr069auth/@defaultpwd")));
}

void ReadSites(XPathDocument &oDoc, xmlNodePtr pxRoot, const char *pcOwnSiteHost, UserRecord *pstUser)
{
    const std::vector<xmlNodePtr> vecSites = oDoc.All(pxRoot, "servicetp/site");
    if (vecSites.empty()) {
        return;
    }
    char acMainSiteName[256] = {0};
    CopyValue(acMainSiteName, sizeof(acMainSiteName), oDoc.Value(pxRoot, "servicetp/ecsmainsite/@name"));
    const uint32_t uiNumOfSite = static_cast<uint32_t>(vecSites.size());
    Site *pstSites = static_cast<Site *>(XPATH_MALLOC_S(static_cast<uint32_t>(uiNumOfSite * sizeof(Site))));
    if (pstSites == nullptr) {
        return;
    }
    uint32_t uiOwnSite = 0;
    uint32_t uiMainSite = uiNumOfSite;
    for (uint32_t i = 0; i < uiNumOfSite; ++i) {
        ReadSite(oDoc, vecSites[i], &pstSites[i]);
        const char *pcSso = NonEmpty(oDoc.Value(vecSites[i], "sso_hostname/@uri"));
        if (pcSso != nullptr && std::strcmp(pcSso, pcOwnSiteHost) == 0) {
            uiOwnSite = i;
        }
        if (pstSites[i].uiPriority != 0 && acMainSiteName[0] != '\0' &&
            std::strcmp(pstSites[i].acSiteName, acMainSiteName) == 0) {
            uiMainSite = i;
        }
    }
    if (getSiteInfo(pstSites, uiNumOfSite, uiOwnSite, uiMainSite, &pstUser->pstSiteInfo) == 0) {
        pstUser->bSiteInfoValid = 1;
    }
    (void)getAllSipServer(pstSites, uiNumOfSite, &pstUser->stSipServerList);
    freeSiteMem(pstSites, uiNumOfSite);
}

void ReadExtraParms(XPathDocument &oDoc, xmlNodePtr pxRoot, UserRecord *pstUser)
{
    const std::vector<xmlNodePtr> vecParms = oDoc.All(pxRoot, "ExtraParms/*");
    const size_t uiCount = vecParms.size() < LOGIN_EXTRA_PARM_MAX ? vecParms.size() : LOGIN_EXTRA_PARM_MAX;
    if (uiCount == 0) {
        return;
    }
    auto *pstParms = static_cast<tagLOGIN_S_EXTRA_PARM *>(
        XPATH_MALLOC_S(static_cast<uint32_t>(uiCount * sizeof(tagLOGIN_S_EXTRA_PARM))));
    if (pstParms == nullptr) {
        return;
    }
    for (size_t i = 0; i < uiCount; ++i) {
        const char *pcText = XPathDocument::ValueOf(vecParms[i]);
        if (qev_strcpy_s(pstParms[i].acName, sizeof(pstParms[i].acName),
                         reinterpret_cast<const char *>(vecParms[i]->name)) != 0 ||
            qev_strcpy_s(pstParms[i].acValue, sizeof(pstParms[i].acValue), pcText) != 0) {
            XPATH_FREE(pstParms);
            return;
        }
    }
    pstUser->uiExtraParmNum = static_cast<uint32_t>(uiCount);
    pstUser->pstExtraParm = pstParms;
}

void ReadSipInfo(XPathDocument &oDoc, xmlNodePtr pxRoot, UserRecord *pstUser)
{
    const char *pcImpu = oDoc.Value(pxRoot, "sipinfo/impu");
    CopyValue(pstUser->acSipAccount, sizeof(pstUser->acSipAccount),
              pcImpu != nullptr ? pcImpu : oDoc.Value(pxRoot, "sipinfo/account"));
    CopyValue(pstUser->acSipImpi, sizeof(pstUser->acSipImpi), oDoc.Value(pxRoot, "sipinfo/impi"));
    CopyValue(pstUser->acShortNumber, sizeof(pstUser->acShortNumber), oDoc.Value(pxRoot, "sipinfo/short_number"));
    const char *pcPwdType = oDoc.Value(pxRoot, "sipinfo/pwdtype");
    pstUser->bPwdTypeZero = (pcPwdType != nullptr && KOSA_Strtoul(pcPwdType, nullptr, 0) == 0) ? 1 : 0;
    CopyValue(pstUser->acSipPassword, sizeof(pstUser->acSipPassword), oDoc.Value(pxRoot, "sipinfo/passwd"));
    CopyValue(pstUser->acSipDomain, sizeof(pstUser->acSipDomain), oDoc.Value(pxRoot, "sipinfo/domain"));
    const char *pcFuncType = oDoc.Value(pxRoot, "sipinfo/FuncType");
    if (pcFuncType == nullptr) {
        pstUser->iFuncType = -1;
    } else {
        (void)KOSA_StrToInt32(pcFuncType, &pstUser->iFuncType);
        CopyValue(pstUser->acTerminalScene, sizeof(pstUser->acTerminalScene),
                  oDoc.Value(pxRoot, "sipinfo/FuncType/@terminalScene"));
    }
    CopyValue(pstUser->acSname, sizeof(pstUser->acSname), oDoc.Value(pxRoot, "sipinfo/sname"));
}

void StoreEncoded(char (&acField)[256], const char *pcUri)
{
    char *pcEncoded = KTL_BASE64Encode(pcUri, KOSA_StrLen(pcUri));
    if (pcEncoded == nullptr) {
        return;
    }
    (void)qev_strcpy_s(acField, sizeof(acField), pcEncoded);
    const uint32_t uiLen = KOSA_StrLen(pcEncoded);
    (void)qev_memset_s(pcEncoded, uiLen, 0, uiLen);
    KTL_BASE64Free(&pcEncoded);
}

bool ReadServers(XPathDocument &oDoc, xmlNodePtr pxRoot, UserRecord *pstUser)
{
    for (xmlNodePtr pxServer : oDoc.All(pxRoot, "serverList/*")) {
        const char *pcName = oDoc.Value(pxServer, "@name");
        const char *pcUri = oDoc.Value(pxServer, "@uri");
        if (pcName == nullptr || pcUri == nullptr) {
            return false;
        }
        if (std::strcmp(pcName, "eab") == 0) {
            (void)qev_strcpy_s(pstUser->acEabUri, sizeof(pstUser->acEabUri), pcUri);
        } else if (std::strcmp(pcName, "groupserver") == 0) {
            (void)qev_strcpy_s(pstUser->acGroupServerUri, sizeof(pstUser->acGroupServerUri), pcUri);
        } else if (std::strcmp(pcName, "tmstr069") == 0) {
            StoreEncoded(pstUser->acTmsTr069Uri, pcUri);
        }
    }
    return true;
}

bool ReadUmsAccounts(XPathDocument &oDoc, xmlNodePtr pxRoot, UserRecord *pstUser)
{
    uint32_t uiEntry = 0;
    for (xmlNodePtr pxAccount : oDoc.All(pxRoot, "umsinfo/*")) {
        if (uiEntry == LOGIN_UMS_INFO_NUM) {
            break;
        }
        const char *pcDn = oDoc.Value(pxAccount, "@dn");
        const char *pcAccount = oDoc.Value(pxAccount, "@umsaccount");
        char *pcPwd = oDoc.Value(pxAccount, "@pwd");
        if (pcDn == nullptr || pcAccount == nullptr || pcPwd == nullptr) {
            return false;
        }
        tagLOGIN_S_UMS_INFO &stInfo = pstUser->astUmsInfo[uiEntry++];
        (void)qev_strcpy_s(stInfo.acDn, sizeof(stInfo.acDn), pcDn);
        (void)qev_strcpy_s(stInfo.acUmsAccount, sizeof(stInfo.acUmsAccount), pcAccount);
        (void)qev_strcpy_s(stInfo.acPwd, sizeof(stInfo.acPwd), pcPwd);
        const uint32_t uiPwdBytes = KOSA_StrLen(pcPwd) + 1;
        (void)qev_memset_s(pcPwd, uiPwdBytes, 0, uiPwdBytes);
    }
    return true;
}

} // namespace

void XPathInit()
{
    xmlInitParser();
}

void XPathShutdown()
{
    xmlCleanupParser();
}

uint32_t XPathParseLogin(const std::string &strBody, const char *pcOwnSiteHost, UserRecord *pstUser)
{
    XPathDocument oDoc(strBody);
    if (!oDoc.Valid()) {
        return 1;
    }
    xmlNodePtr pxRoot = oDoc.Root();
    const char *pcToken = oDoc.Value(pxRoot, "LoginToken/AccessToken");
    if (pcToken == nullptr) {
        return 1;
    }
    (void)qev_strcpy_s(pstUser->acAccessToken, sizeof(pstUser->acAccessToken), pcToken);
    const char *pcExpire = oDoc.Value(pxRoot, "LoginToken/ExpireIn");
    if (pcExpire == nullptr) {
        return 1;
    }
    pstUser->uiExpireIn = KOSA_Strtoul(pcExpire, nullptr, 0);
    ReadExtraParms(oDoc, pxRoot, pstUser);
    CopyValue(pstUser->acRealUserAccount, sizeof(pstUser->acRealUserAccount), oDoc.Value(pxRoot, "RealUserAccount"));
    CopyValue(pstUser->acDisplayName, sizeof(pstUser->acDisplayName), oDoc.Value(pxRoot, "displayname"));
    ReadSipInfo(oDoc, pxRoot, pstUser);
    CopyValue(pstUser->acFileDockServiceType, sizeof(pstUser->acFileDockServiceType),
              oDoc.Value(pxRoot, "fileDockServiceType"));
    CopyValue(pstUser->acFileDockAppId, sizeof(pstUser->acFileDockAppId), oDoc.Value(pxRoot, "fileDockAppId"));
    CopyValue(pstUser->acFileDockServerAddr, sizeof(pstUser->acFileDockServerAddr),
              oDoc.Value(pxRoot, "fileDockServerAddr"));
    CopyValue(pstUser->acPrivacyVersion, sizeof(pstUser->acPrivacyVersion), oDoc.Value(pxRoot, "privacyVersion"));
    pstUser->bHasUserType = oDoc.Value(pxRoot, "userType") != nullptr ? 1 : 0;
    ReadSites(oDoc, pxRoot, pcOwnSiteHost, pstUser);
    const char *pcDeployMode = oDoc.Value(pxRoot, "DeployMode");
    if (pcDeployMode != nullptr) {
        pstUser->uiDeployMode = KOSA_Strtoul(pcDeployMode, nullptr, 0);
    }
    const char *pcDataConf = oDoc.Value(pxRoot, "dataConf");
    pstUser->uiDataConf = pcDataConf != nullptr ? KOSA_Strtoul(pcDataConf, nullptr, 0) : 1;
    const char *pcFirstLogin = oDoc.Value(pxRoot, "FirstLogin");
    if (pcFirstLogin != nullptr && std::strcmp(pcFirstLogin, "YES") == 0) {
        pstUser->bFirstLogin = 1;
    }
    const char *pcPwdExpire = oDoc.Value(pxRoot, "PWDExpireTime");
    if (pcPwdExpire != nullptr) {
        pstUser->uiPwdExpireTime = KOSA_Strtoul(pcPwdExpire, nullptr, 0);
    }
    if (!ReadServers(oDoc, pxRoot, pstUser) || !ReadUmsAccounts(oDoc, pxRoot, pstUser)) {
        return 1;
    }
    return 0;
}

} // namespace bench
