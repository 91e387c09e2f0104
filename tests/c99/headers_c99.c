/* Compiled as strict C99: the public headers must declare everything a C caller needs. */
#include "atrium_xml.h"
#include "login_service.h"
#include "login_service_default.h"

/* Take the address of every exported function so that a missing declaration fails here. */
typedef void (*AnyFn)(void);
static const AnyFn g_apfnExported[] = {
    (AnyFn)XmlAtriumGetIpFromDomain, (AnyFn)XmlAtriumParseStgInfo,
    (AnyFn)XmlAtriumParseAccessServer, (AnyFn)GetSiteNumber, (AnyFn)XmlAtriumParseSite,
    (AnyFn)IsMatchingSite, (AnyFn)freeSiteMem, (AnyFn)getRealRandom, (AnyFn)getSeveralRandom,
    (AnyFn)getTopPriorityPos, (AnyFn)copyAccessGroup, (AnyFn)getSingleSiteAccessGroup,
    (AnyFn)getMultAccessGroup, (AnyFn)getSiteInfo, (AnyFn)getAllSipServer,
    (AnyFn)XmlParseAtriumLoginResult, (AnyFn)XmlParseAtriumSearchResult,
    (AnyFn)XmlParseAtriumAuthToken, (AnyFn)XmlParseAtriumGetServerListRst,
    (AnyFn)XmlParseAtriumTokenInfo, (AnyFn)XmlParseAtriumRightConfig, (AnyFn)XmlSaveAtriumXmlBody,
    (AnyFn)XmlParseTandmLoginResult, (AnyFn)XmlParseGetTandemVersionResult,
    (AnyFn)XmlParseTandemRandomResult, (AnyFn)XmlParseTandemRandomErrorcode,
    (AnyFn)XmlParseTandemSearchResult, (AnyFn)XmlParseTandemTempuserServiceTp,
    (AnyFn)XmlParseTandemTempuserSipInfo, (AnyFn)XmlParseTempuserConfInfo,
    (AnyFn)XmlParseBigParamConfInfo, (AnyFn)XmlParseTempuserAccountInfo,
    (AnyFn)XmlParseGetServiceTPFromRandom, (AnyFn)XmlGetSoapBodyNode,
    (AnyFn)XmlGetStringValueByKeyFromJson, (AnyFn)XmlParseGetSiteInfoResult,
    (AnyFn)JsonParseUniCallCfgResult, (AnyFn)JsonBuildSetUniCallCfgBody,
    (AnyFn)JsonParseLinkedPhoneResult, (AnyFn)JsonBuildSetLinkedPhoneInfoBody,
    (AnyFn)JsonBuildGetLinkedPhoneInfoBody,
    (AnyFn)KOSA_MemMallocS, (AnyFn)KOSA_MemMallocD, (AnyFn)KOSA_MemFreeD,
    (AnyFn)KOSA_MemFreeSetNullD, (AnyFn)KOSA_MemLiveBlocks, (AnyFn)KOSA_MemFailAfter,
    (AnyFn)KTL_XML_LiveDocuments, (AnyFn)QEV_CPYPT_SetRandomHook,
    (AnyFn)KTL_XML_Parse, (AnyFn)KTL_XML_GetNodeByUrl, (AnyFn)KTL_XML_GetNodeValue,
    (AnyFn)KTL_XML_GetAttr, (AnyFn)KTL_XML_GetNodeFirstChild, (AnyFn)KTL_XML_GetNodeNextSibling,
    (AnyFn)KTL_XML_GetNodeChildNum, (AnyFn)KTL_XML_FreeNode,
    (AnyFn)LoginTraceCB, (AnyFn)CheckIsDomain, (AnyFn)AtriumGetSrvIpListByHost,
    (AnyFn)LoginDataGetServerFormString,
};

/* Every record of the contract, by its typedef name. */
typedef struct {
    tagLOGIN_S_STG_GROUP a; tagLOGIN_S_ACCESS_SERVER b; tagLOGIN_S_SITE c;
    tagLOGIN_S_SERVER_LIST d; tagLOGIN_S_ATRIUM_USER_INFO e; tagLOGIN_S_EXTRA_PARM f;
    tagLOGIN_S_UMS_INFO g; tagLOGIN_S_ATRIUM_SEARCH_RESULT h; tagLOGIN_S_ATRIUM_TOKEN_INFO i;
    tagLOGIN_S_ATRIUM_RIGHT_CONFIG j; tagXML_S_TANDEM_LOGIN_RESULT k;
    tagXML_S_TANDEM_VERSION_RESULT l; tagXML_S_TANDEM_RANDOM_RESULT m;
    tagXML_S_TANDEM_SEARCH_RESULT n; tagXML_S_TANDEM_TEMPUSER_INFO o;
    tagXML_S_TEMPUSER_ACCOUNT_INFO p; tagLOGIN_S_ENDPOINT_MSG_RESULT q;
    tagLOGIN_S_UNICALL_CFG r; tagLOGIN_S_UNICALL_BEAN s; tagLOGIN_S_LINKED_PHONE t;
    tagLOGIN_S_LINKED_PHONE_RESULT u; tagLOGIN_S_LINKED_PHONE_INFO v;
    tagLOGIN_S_SRV_IP_ENTRY w; tagLOGIN_S_SERVER_ADDR_INFO x;
} AllRecords;

const char *atrium_xml_c99_namespace(void);
const char *atrium_xml_c99_namespace(void)
{
    static const char acNamespace[] = LOGIN_MGMT_SERVICE_NAMESPACE;
    (void)g_apfnExported;
    (void)sizeof(AllRecords);
    return (KOSA_O_WRONLY | KOSA_O_CREAT | KOSA_O_TRUNC) == 0x601 ? acNamespace : "";
}
