/*
 * atrium_xml.h - the response-parsing module of the login service.
 *
 * The login service hands each server answer (a NUL-terminated XML or JSON body, as
 * received) to one function here, together with a record it owns and has cleared. The
 * function parses the body, copies what it finds into the record's fixed-capacity fields,
 * releases the parsed document and returns a result code. The JSON builders go the other
 * way, from a record to a request body. No function keeps state between calls; any number
 * of threads may call the module at once on distinct records.
 *
 * Result codes (uint32_t unless a function says otherwise) are named below (ATRIUM_*): 0
 * success, 1 the common failure, 2 a null argument, and the codes individual functions name;
 * a code above 255 is one of the XML document library's (KTL_XML_ERR_* in ktl_xml.h),
 * passed through unchanged. AtriumResultText turns any of them into a short text.
 *
 * Ownership: records belong to the caller. Buffers a function allocates for the caller are
 * named in its documentation and are released with the memory routines below
 * (KOSA_MemFreeD, or freeSiteMem for a site record and its groups).
 *
 * Traces go to the login service's LoginTraceCB (login_service.h), module "" and levels
 * 0 errors, 1 misses of single keys, 2 progress, 3 dumps of parsed content.
 *
 * Text is copied byte for byte: the XML library keeps invalid UTF-8 as bytes and unknown
 * entity references as literal text, and so does the record.
 *
 * JSON functions: JsonCpp exceptions (Json::LogicError for a member of an unexpected type,
 * Json::RuntimeError for nesting beyond the reader's limit) are not caught; they reach the
 * caller after the function's own locals are released. Record fields written before the
 * exception stay written; no module buffer is left allocated. C callers must not pass such
 * input through these functions without a C++ frame that catches.
 */
#ifndef ATRIUM_XML_H
#define ATRIUM_XML_H

#include <stdint.h>

#include "atrium_xml_config.h"
#include "kosa.h"
#include "ktl_xml.h"
#include "login_records.h"
#include "login_service.h"
#include "qev_random.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- result codes ------------------------------------------------------------------ */

/* Several names share a number where the login service gives two meanings one code. */
#define ATRIUM_OK                     0u  /* success (also a well-formed answer without payload,
                                             where a function says so) */
#define ATRIUM_FAILED                 1u  /* a required key missing, an allocation failed, an
                                             answer rejected */
#define ATRIUM_NULL_ARGUMENT          2u  /* a null argument */
#define ATRIUM_RANDOM_KEY_NOT_FOUND   2u  /* random key: the server answered 404 */
#define ATRIUM_NO_MEMORY_FOR_BODY     4u  /* linked-phone get request: no memory for the body */
#define ATRIUM_NOT_XML                5u  /* the body is not XML (the parsers that report every
                                             parse failure so) */
#define ATRIUM_NOT_RESOLVED           7u  /* a host name could not be resolved */
#define ATRIUM_SERVER_ERROR          11u  /* the server answered an error code that has no code
                                             of its own here */
#define ATRIUM_TOO_MANY_LINKED_PHONES 11u /* a linked-phone answer lists 30 identities or more */
#define ATRIUM_GUEST_NOT_FOUND       34u  /* guest SIP information: the server answered 404 */
#define ATRIUM_RANDOM_KEY_UNAUTHORIZED 35u /* random key: the server answered 401 */
#define ATRIUM_RANDOM_KEY_FORBIDDEN  36u  /* random key: the server answered 403 */
#define ATRIUM_RANDOM_KEY_TOO_LARGE  37u  /* random key: the server answered 413 */
#define ATRIUM_RANDOM_KEY_SERVER_11029 39u /* random key: the server answered 11029 */
#define ATRIUM_RANDOM_KEY_SERVER_11028 40u /* random key: the server answered 11028 */
#define ATRIUM_NOT_JSON              46u  /* the body is not JSON */
/* The token-information parser also passes through the bounded copy's code for a token it
 * cannot copy: QEV_EINVAL (22), QEV_ERANGE (34: too long for its field) or QEV_EOVERLAP (54),
 * see qev_bounded.h. */

/*
 * A short English text for any result code of the module (the named codes above, the
 * bounded copy's codes the token information passes through) or of the XML document
 * library (KTL_XML_ERR_*, parse failures included); a code that is neither gets a text
 * that says so. The text is static: never null, never to be freed, the same on every call.
 */
const char *AtriumResultText(uint32_t uiCode);

/* ---- records of single answers ----------------------------------------------------- */

#define LOGIN_SEARCH_SITE_MAX 5u

/* Portal search answer: up to five (priority, portal uri) pairs in document order. */
typedef struct tagLOGIN_S_ATRIUM_SEARCH_RESULT {
    uint32_t uiSiteNum;             /* entries filled; the next entry's index */
    uint32_t auiPriority[5];
    char aacSiteUri[5][256];
} tagLOGIN_S_ATRIUM_SEARCH_RESULT;

/* Portal token-information answer. */
typedef struct tagLOGIN_S_ATRIUM_TOKEN_INFO {
    char acAccessToken[256];
    int32_t iExpireIn;
    char acAccount[128];
    char acPassword[128];
} tagLOGIN_S_ATRIUM_TOKEN_INFO;

/* Portal right-configuration answer (the profile itself goes to a file). */
typedef struct tagLOGIN_S_ATRIUM_RIGHT_CONFIG {
    uint32_t uiRetCode;
    char acDevKey[65];
    char acDevType[33];
    char acTimestamp[65];
} tagLOGIN_S_ATRIUM_RIGHT_CONFIG;

/* Conference-server version answer. */
typedef struct tagXML_S_TANDEM_VERSION_RESULT {
    uint32_t uiResultCode;
    char acResultDesc[128];
    char acVersionNumber[16];
} tagXML_S_TANDEM_VERSION_RESULT;

/* Guest site URL and random key. */
typedef struct tagXML_S_TANDEM_RANDOM_RESULT {
    char acSiteUrl[256];
    char acRandom[32];
} tagXML_S_TANDEM_RANDOM_RESULT;

/* Conference search answer: up to five (priority, SSO host) pairs in document order. */
typedef struct tagXML_S_TANDEM_SEARCH_RESULT {
    uint32_t uiSiteNum;
    uint32_t auiPriority[5];
    char acSsoHostName[5][256];
} tagXML_S_TANDEM_SEARCH_RESULT;

/* Guest's short-lived account. */
typedef struct tagXML_S_TEMPUSER_ACCOUNT_INFO {
    char acAccount[128];
    char acPassword[256];
    uint32_t uiPwdType;
    char acAccessUrl[256];
    char acSecondAccessUrl[256];
} tagXML_S_TEMPUSER_ACCOUNT_INFO;

/* Management service's endpoint message. The three texts are copied without a terminator
 * of their own: clear the record before the call. */
typedef struct tagLOGIN_S_ENDPOINT_MSG_RESULT {
    uint32_t uiErrCode;
    char acUri[128];
    char acRegPassword[128];
    char acRegIpAddress[16];
} tagLOGIN_S_ENDPOINT_MSG_RESULT;

#define LOGIN_UNICALL_BEAN_MAX  20u
#define LOGIN_UNICALL_CALLEE_MAX 10u

/* One unified-call forwarding rule. */
typedef struct tagLOGIN_S_UNICALL_BEAN {
    char acRuleId[64];
    uint32_t uiAllTime;
    uint32_t uiCycleType;
    char acStartDate[8];
    char acEndDate[8];
    char acDayInWeek[8];
    char acStartTime[8];
    char acEndTime[8];
    uint32_t uiCalleeIndex;
    char aacCalleeList[10][256];
    uint32_t uiCalleeNum;           /* the parser stores the rule count here (see below) */
    uint32_t uiRType;
    uint32_t uiOperateType;
} tagLOGIN_S_UNICALL_BEAN;

/* Unified-call configuration. */
typedef struct tagLOGIN_S_UNICALL_CFG {
    uint32_t uiReturnCode;
    uint32_t uiOperate;
    uint32_t uiSrvType;             /* 0 or 1 for the builder */
    char acDspNum[256];
    char acErrorCode[12];
    tagLOGIN_S_UNICALL_BEAN astUniCallBean[20];
    uint32_t uiUniCallBeanNum;
    uint32_t uiShowCallerNum;
} tagLOGIN_S_UNICALL_CFG;

#define LOGIN_LINKED_PHONE_MAX 29u

/* One public identity with its linked phone. */
typedef struct tagLOGIN_S_LINKED_PHONE {
    char acImpu[128];
    uint32_t uiActive;              /* 0 or 1 */
    char acLinkedPhone[32];
} tagLOGIN_S_LINKED_PHONE;

/* Linked-phone answer. */
typedef struct tagLOGIN_S_LINKED_PHONE_RESULT {
    uint32_t uiLinkedPhoneNum;
    tagLOGIN_S_LINKED_PHONE astLinkedPhone[29];
} tagLOGIN_S_LINKED_PHONE_RESULT;

/* Linked-phone get request: only acImpu of the first uiImpuNum entries is used. */
typedef struct tagLOGIN_S_LINKED_PHONE_INFO {
    uint32_t uiImpuNum;
    tagLOGIN_S_LINKED_PHONE astLinkedPhone[29];
} tagLOGIN_S_LINKED_PHONE_INFO;

/* ======================================================================================
 * Site machinery
 * ====================================================================================== */

/*
 * Resolves the host of "host:port" text into "ip:port;ip:port;..." ("ip;ip;..." for port
 * 0 or no port) through the login service's resolver, trying type 2 then type 1.
 * Text without ':' and text whose host is not a domain name (CheckIsDomain 0) is copied
 * unchanged. Entries of address 0 are skipped. Results: 0 (pcOut filled), 7 when both
 * resolver calls fail (pcOut untouched).
 * An address list that outgrows uiOutLen loses what was joined before the overflowing
 * append (the bounded append leaves an empty string), so pcOut then holds the addresses
 * that came after it.
 */
uint32_t XmlAtriumGetIpFromDomain(char *pcOut, uint32_t uiOutLen, const char *pcUri);

/* Reads an "stggroup" element into *pstStg. Results: 0, 2 for a null argument. */
uint32_t XmlAtriumParseStgInfo(_NODE *pstNode, tagLOGIN_S_STG_GROUP *pstStg);

/*
 * Reads one "accessserver" element into *pstServer. When pcAtriumAddr is not null, the
 * group's portal address ("atrium" uri) is copied there (capacity uiAtriumAddrLen).
 * Results: 0, 2 for a null node or record.
 */
uint32_t XmlAtriumParseAccessServer(_NODE *pstNode, tagLOGIN_S_ACCESS_SERVER *pstServer,
                                    char *pcAtriumAddr, uint32_t uiAtriumAddrLen);

/* Number of children of pstNode that are "site" elements (0 for none). */
uint32_t GetSiteNumber(_NODE *pstNode);

/*
 * Reads one "site" element into *pstSite, which must start all-zero. Allocates the site's
 * group array (pstAccessServer, owned by the site; see freeSiteMem). pcAtriumAddr, when not
 * null and still empty, receives the portal address of the first group that carries one; a
 * non-empty buffer is never overwritten.
 * Results: 0; 1 when the group array cannot be allocated (uiNumOfAccessServer stays set,
 * pstAccessServer null, the TR-069 credentials not read); 2 for a null node or record.
 */
uint32_t XmlAtriumParseSite(_NODE *pstNode, tagLOGIN_S_SITE *pstSite,
                            char *pcAtriumAddr, uint32_t uiAtriumAddrLen);

/* 1 when the site's "sso_hostname" uri equals pcHost exactly (case-sensitive), else 0. */
uint32_t IsMatchingSite(_NODE *pstNode, const char *pcHost);

/*
 * Releases an array of uiNum sites allocated with KOSA_MemMallocS and each site's group
 * array; memory is zeroed before it is freed (of each group array, its first group).
 * freeSiteMem(p, 1) releases a selected-site record handed out by getSiteInfo or a guest's
 * site copy. A null pstSites is ignored.
 */
void freeSiteMem(tagLOGIN_S_SITE *pstSites, uint32_t uiNum);

/* A 32-bit random number from QEV_CPYPT_RealRandom. */
uint32_t getRealRandom(void);

/*
 * Draws uiK distinct positions out of 0..uiN-1 into puiPos, in draw order (partial
 * Fisher-Yates). Results: 0, 1 when puiPos is null, uiK > uiN, uiN is 0 or the scratch
 * array cannot be allocated.
 */
uint32_t getSeveralRandom(uint32_t *puiPos, uint32_t uiK, uint32_t uiN);

/* Index of the site with the smallest priority (the earliest on ties); uiNumOfSite >= 1. */
uint32_t getTopPriorityPos(tagLOGIN_S_SITE *pstSites, uint32_t uiNumOfSite);

/* Copies min(uiNumOfGroup, 3) randomly drawn groups of pstSrc into pstDst (room for 3),
 * marking each with uiIsMainSite. Returns the number copied: 0 when pstSrc is null or the
 * draw fails. */
uint32_t copyAccessGroup(tagLOGIN_S_ACCESS_SERVER *pstDst, tagLOGIN_S_ACCESS_SERVER *pstSrc,
                         uint32_t uiNumOfGroup, uint32_t uiIsMainSite);

/*
 * Gives pstOut a new group array (owned by pstOut) with up to 3 groups of pstSites[0].
 * The groups are marked main when uiMainSite is 0 (the flag is the negation of the
 * argument). When no group is copied the array is released (pstAccessServer null,
 * uiNumOfAccessServer 0). Results: 0, 1 when the array cannot be allocated
 * (pstOut->pstAccessServer is then null and uiNumOfAccessServer untouched).
 */
uint32_t getSingleSiteAccessGroup(tagLOGIN_S_SITE *pstSites, tagLOGIN_S_SITE *pstOut,
                                  uint32_t uiMainSite);

/* Gives pstOut a new group array with up to 3 groups per site: own site first, then the
 * top-priority site, then the others in index order. A site with a null group array
 * contributes nothing; with no group copied, pstAccessServer is null and the count 0.
 * Results: 0, 1 on allocation failure (pstAccessServer null, count untouched). */
uint32_t getMultAccessGroup(tagLOGIN_S_SITE *pstSites, uint32_t uiNumOfSite, uint32_t uiOwnSite,
                            uint32_t uiMainSite, uint32_t uiTopPrioritySite,
                            tagLOGIN_S_SITE *pstOut);

/*
 * Builds the selected site: a copy of pstSites[uiOwnSite] whose group array is replaced by
 * the selected groups. *ppstSite receives a new record owned by the caller (release with
 * freeSiteMem(*ppstSite, 1)). Results: 0 (also when the group array could not be
 * allocated: the record then has a null pstAccessServer and the own site's
 * uiNumOfAccessServer), 1 when uiNumOfSite is 0 or the
 * record cannot be allocated (*ppstSite untouched).
 */
uint32_t getSiteInfo(tagLOGIN_S_SITE *pstSites, uint32_t uiNumOfSite, uint32_t uiOwnSite,
                     uint32_t uiMainSite, tagLOGIN_S_SITE **ppstSite);

/*
 * Lists the SIP server (and TLS SIP server, when present) of every group of every site in
 * pstList. pstList->pstServer is a new array owned by the caller (KOSA_MemFreeD); uiNum is
 * set before the allocation. With no groups uiNum is 0 and pstServer a valid empty block the
 * caller still frees; a site with a null group array counts as none.
 * Results: 0, 1 when the array cannot be allocated.
 */
uint32_t getAllSipServer(tagLOGIN_S_SITE *pstSites, uint32_t uiNumOfSite,
                         tagLOGIN_S_SERVER_LIST *pstList);

/* ======================================================================================
 * Portal answers
 * ====================================================================================== */

/*
 * Portal login answer (root "UserInfo") into *pstUserInfo. pcOwnSiteHost is the host the
 * client logged in to (compared with each site's SSO host; not checked for null).
 * Hands the caller: pstSiteInfo (when bSiteInfoValid is 1; freeSiteMem(p, 1)),
 * stSipServerList.pstServer (KOSA_MemFreeD) and pstExtraParm (when uiExtraParmNum > 0;
 * KOSA_MemFreeD) - also after a failure that came later in the answer.
 * Results: 0, 1 (token or lifetime missing, a server or account entry incomplete, the
 * site array not allocated), 2, a library code (parse failure, or an unreadable
 * extra-parameter element: that path keeps the document and an unfilled array).
 */
uint32_t XmlParseAtriumLoginResult(const char *pcXmlBody, const char *pcOwnSiteHost,
                                   tagLOGIN_S_ATRIUM_USER_INFO *pstUserInfo);

/* Portal search answer. No null check: pcXmlBody must not be null. Entries are appended at
 * uiSiteNum while it is below 5 (a caller count of 5 or more appends nothing).
 * Results: 0, a library parse code. */
uint32_t XmlParseAtriumSearchResult(const char *pcXmlBody, tagLOGIN_S_ATRIUM_SEARCH_RESULT *pstResult);

/*
 * Authentication-token answer (root "UserInfo"): token, lifetime, real user account, first
 * login flag, password expiry; sets uiDeployMode to 3 on success.
 * Results: 0, 1 (token or lifetime missing), 2 (null argument), a library parse code.
 */
uint32_t XmlParseAtriumAuthToken(const char *pcXmlBody, tagLOGIN_S_ATRIUM_USER_INFO *pstUserInfo);

/* Server-list answer (root "servicetp"): SIP account, selected site (own = main = site 0)
 * and SIP server list, owned as after XmlParseAtriumLoginResult.
 * Results: 0, 1 (site array not allocated), 2, a library parse code. */
uint32_t XmlParseAtriumGetServerListRst(const char *pcXmlBody, tagLOGIN_S_ATRIUM_USER_INFO *pstUserInfo);

/* Token-information answer. Results: 0, 2 (silently), the parse code, the token copy's
 * code, or the last library code when token or lifetime is missing (0 for an empty
 * element; that path keeps the document). Check acAccessToken for emptiness. */
uint32_t XmlParseAtriumTokenInfo(const char *pcXmlBody, tagLOGIN_S_ATRIUM_TOKEN_INFO *pstTokenInfo);

/* Right-configuration answer (root "root"); on retcode 0 its profile is saved to
 * pcFileName (created or truncated, mode 0766). Results: 0, 1 (profile not saved), 2, the
 * parse code, or the last library code when the profile is missing. */
uint32_t XmlParseAtriumRightConfig(const char *pcXmlBody, const char *pcFileName,
                                   tagLOGIN_S_ATRIUM_RIGHT_CONFIG *pstConfigResult);

/* Writes pcText (without terminator) to pcFileName in one write (create or truncate, mode
 * 0766). Results: 0 when every byte was written, else 1. */
uint32_t XmlSaveAtriumXmlBody(const char *pcText, const char *pcFileName);

/* ======================================================================================
 * Conference server and temporary users
 * ====================================================================================== */

/* Conference login answer (root "loginResult", or "result" for a refusal). The server's
 * verdict is stResult.uiResultCode. Results: 0, 1 (result code or description missing),
 * 2, a library code (parse failure, no result element). */
uint32_t XmlParseTandmLoginResult(const char *pcXmlBody, tagXML_S_TANDEM_LOGIN_RESULT *pstResult);

/* Version answer. Results: 0, 2, 5 (not XML), a library code for a missing key. */
uint32_t XmlParseGetTandemVersionResult(const char *pcXmlBody,
                                        tagXML_S_TANDEM_VERSION_RESULT *pstVersionResult);

/* Guest site URL and random key. Results: 0, 1 (a key missing), 2, the parse code, or the
 * mapped server error (XmlParseTandemRandomErrorcode; that path keeps the document). */
uint32_t XmlParseTandemRandomResult(const char *pcXmlBody, tagXML_S_TANDEM_RANDOM_RESULT *pstRandomResult);

/* Maps a server error code: 401->35, 403->36, 404->2, 413->37, 11028->40, 11029->39,
 * any other -> 11. Pure. */
uint32_t XmlParseTandemRandomErrorcode(uint32_t uiErrorCode);

/* Conference search answer (root "servicetp"). Entries are appended at uiSiteNum while it
 * is below 5. Results: 0, 2 (null body or record), the parse code. */
uint32_t XmlParseTandemSearchResult(const char *pcXmlBody, tagXML_S_TANDEM_SEARCH_RESULT *pstSearchResult);

/* Guest's site: the first site whose SSO host equals pcSiteKey, copied into a new
 * pstTempUser->pstSite (owned by the caller; freeSiteMem(p, 1)) with up to 3 of its groups;
 * its portal address goes to acAtriumUri while that is empty. Results: 0, 1 (copy not
 * allocated), 2, the parse code. */
uint32_t XmlParseTandemTempuserServiceTp(const char *pcXmlBody, const char *pcSiteKey,
                                         tagXML_S_TANDEM_TEMPUSER_INFO *pstTempUser);

/* Guest's SIP identity ("ConfParam.sipinfo"). Results: 0, 2, the parse code, 34 / 11 when
 * the answer carries an error code (404 / any other; that path keeps the document). */
uint32_t XmlParseTandemTempuserSipInfo(const char *pcXmlBody, tagXML_S_TANDEM_TEMPUSER_INFO *pstTempUser);

/* Guest's conference parameters ("ConfParam.ConfInfo"). Results: 0, 2, 5 (not XML). */
uint32_t XmlParseTempuserConfInfo(const char *pcXmlBody, tagXML_S_TANDEM_TEMPUSER_INFO *pstTempUser);

/* Guest's conference parameters in the short form, or the detailed form handed on to
 * XmlParseTempuserConfInfo. Results: 0, 2, 5 (not XML). */
uint32_t XmlParseBigParamConfInfo(const char *pcXmlBody, tagXML_S_TANDEM_TEMPUSER_INFO *pstTempUser);

/* Guest's account ("ConfParam.AccountInfo"). Results: 0, 2, 5 (not XML). */
uint32_t XmlParseTempuserAccountInfo(const char *pcXmlBody, tagXML_S_TEMPUSER_ACCOUNT_INFO *pstAccount);

/* Nearby-access block ("ConfParam.nearbyaccess", base64): *ppcServiceTp receives a new
 * buffer (KOSA_MemFreeD) of the decoded bytes plus a terminating zero. Results: 0, 1 (null
 * out-pointer, no element, nothing decoded, no memory), the parse code. */
uint32_t XmlParseGetServiceTPFromRandom(const char *pcXmlBody, char **ppcServiceTp);

/* ======================================================================================
 * Management web service and JSON services
 * ====================================================================================== */

/*
 * Parses a SOAP reply and finds its Envelope and Body (prefixed names match). uiLen is
 * not used. *ppstRoot holds the document whenever parsing succeeded, also when a later
 * lookup failed: the caller releases it with KTL_XML_FreeNode. Results: 0, a library code.
 */
uint32_t XmlGetSoapBodyNode(const char *pcXmlBody, uint32_t uiLen, _NODE **ppstRoot,
                            _NODE **ppstEnvelope, _NODE **ppstBody);

/* Substring scanner (not a JSON parser): copies the quoted text after the first occurrence
 * of pcKey into pcDst without a terminator, when it ends before the next comma, or any quoted
 * text when no comma follows. Escapes are not decoded; a value of uiDstSize bytes or more is
 * not copied. Clear pcDst before the call. */
void XmlGetStringValueByKeyFromJson(const char *pcKey, const char *pcJson,
                                    char *pcDst, uint32_t uiDstSize);

/* Endpoint-message SOAP reply. The response must carry xmlns equal to
 * LOGIN_MGMT_SERVICE_NAMESPACE. Neither argument is checked for null. On success the JSON
 * result text (which holds the registration password) is wiped inside the document before
 * it is released.
 * Results: 0 (read uiErrCode for the server's verdict), 1 (foreign namespace), a library
 * code. */
uint32_t XmlParseGetSiteInfoResult(const char *pcXmlBody, tagLOGIN_S_ENDPOINT_MSG_RESULT *pstResult);

/* Unified-call answer (JSON). Results: 0, 2 (null argument, no "{"), 46 (not JSON;
 * uiReturnCode set to 1). May throw JsonCpp exceptions (see above). */
int32_t JsonParseUniCallCfgResult(const char *pcJsonBody, tagLOGIN_S_UNICALL_CFG *pstCfg);

/* Builds the set body of rule uiIndex. On 0, *ppcBody is a new zero-terminated block
 * (KOSA_MemFreeD) and *puiLen its length without terminator. pstCfg and puiLen are not
 * checked; the rule's uiCalleeNum is used as stored and must not exceed 10. Results: 0, 1. */
uint32_t JsonBuildSetUniCallCfgBody(tagLOGIN_S_UNICALL_CFG *pstCfg, uint32_t uiIndex,
                                    char **ppcBody, uint32_t *puiLen);

/* Linked-phone answer (JSON). Results: 0, 2, 11 (30 or more identities; the count is
 * stored), 46 (not JSON). May throw JsonCpp exceptions. */
uint32_t JsonParseLinkedPhoneResult(const char *pcBody, tagLOGIN_S_LINKED_PHONE_RESULT *pstResult);

/* Builds the body that sets one identity's link; hand-over as JsonBuildSetUniCallCfgBody.
 * Results: 0, 1. */
uint32_t JsonBuildSetLinkedPhoneInfoBody(tagLOGIN_S_LINKED_PHONE *pstLinkedPhone,
                                         char **ppcBody, uint32_t *puiLen);

/* Builds the body that asks for the links of uiImpuNum identities (used as given: it must
 * not exceed 29). Results: 0, 1 (null out-pointer), 2 (null request or no identity),
 * 4 (allocation failed). */
uint32_t JsonBuildGetLinkedPhoneInfoBody(tagLOGIN_S_LINKED_PHONE_INFO *pstInfo,
                                         char **ppcBody, uint32_t *puiLen);

/* ---- test hooks ---------------------------------------------------------------------- */

/* The four hooks the integration contract declares here (atrium_test_control.h has every
 * hook, these included, with their full documentation). Safe from any thread. */

/* Blocks from KOSA_MemMallocS/D not yet freed, process-wide. */
uint32_t KOSA_MemLiveBlocks(void);

/* This thread: uiSucceed more allocations succeed, the next returns null, then the thread
 * is back to normal. KOSA_MEM_FAIL_NEVER disarms. */
#define KOSA_MEM_FAIL_NEVER 0xFFFFFFFFu
void KOSA_MemFailAfter(uint32_t uiSucceed);

/* Documents parsed and not yet released, process-wide. */
uint32_t KTL_XML_LiveDocuments(void);

/* This thread: while pfnNext is set, QEV_CPYPT_RealRandom fills its buffer with successive
 * values of pfnNext, 4 bytes each in native byte order; null restores the real source. */
void QEV_CPYPT_SetRandomHook(uint32_t (*pfnNext)(void *pvCtx), void *pvCtx);

#ifdef __cplusplus
}
#endif

#endif /* ATRIUM_XML_H */
