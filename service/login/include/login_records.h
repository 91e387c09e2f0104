/*
 * login_records.h - records shared between the response-parsing module and the rest of
 * the login service: the sites of a deployment with their access-server groups, the SIP
 * server list, the portal user record, the temporary-user record and the conference-login
 * record.
 *
 * All text fields are NUL-terminated byte arrays of the capacity shown (terminator
 * included), filled only through the bounded routines; a value that does not fit is left
 * out (the field is then empty). Numbers are unsigned 32-bit unless the name says 'i'.
 * The caller clears a record before a parse; parsers write only what they find.
 */
#ifndef LOGIN_RECORDS_H
#define LOGIN_RECORDS_H

#include <stdint.h>

#include "login_service.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- sites and access servers ------------------------------------------------------ */

#define LOGIN_MEDIA_SERVER_NUM 8u   /* media servers and media STGs read per group */

/* STG (traversal gateway) addresses and credentials of one access-server group. */
typedef struct tagLOGIN_S_STG_GROUP {
    char acStgUri[256];
    char acAuthAccount[128];
    char acAuthPwd[128];
    char acSipStgUri[256];
    char acEserverStgAddr[256];     /* resolved to "ip[:port];..." when a host name */
    char acEserverStg1Addr[256];    /* resolved likewise */
    char acMaaStgUri[256];
    char acMaaStg1Uri[256];
    char aacMsStgUri[8][256];       /* msstg1 .. msstg8 */
} tagLOGIN_S_STG_GROUP;

/* One access-server group of a site: the address of every service reachable through it. */
typedef struct tagLOGIN_S_ACCESS_SERVER {
    char acName[256];
    char acSipUri[256];
    char acSvnUri[256];
    char acHttpsProxyUri[256];
    char acEserverAddr[256];        /* resolved */
    char acEserver1Addr[256];       /* resolved */
    char acConfUri[256];
    char acConfType[256];
    char acMaaUri[256];
    char acMaa1Uri[256];
    char acAndroidPushUri[256];
    char acMsParamUri[256];
    char acMsParamPathUri[256];
    char acEabUri[256];
    char acProPhotoUri[256];
    char acTmsTr069Uri[256];
    char acEuaUri[256];
    char aacMsUri[8][256];          /* ms1 .. ms8 */
    tagLOGIN_S_STG_GROUP stStgGroup;
    uint32_t uiPriority;            /* the owning site's priority */
    uint32_t uiSipTlsActive;
    uint32_t uiSrtpActive;
    uint32_t uiIsMainSite;          /* set when the group is selected */
    char acSipTlsUri[256];          /* "uri" of the element that follows siptls */
    char acMaaProxyAddr[256];       /* resolved */
    char acMaaDrProxyAddr[256];     /* resolved */
} tagLOGIN_S_ACCESS_SERVER;

/* One site of a deployment. pstAccessServer is a heap array of uiNumOfAccessServer groups
 * owned by the site (see freeSiteMem). Consumers treat a null pstAccessServer as no groups,
 * whatever uiNumOfAccessServer says. */
typedef struct tagLOGIN_S_SITE {
    char acSiteName[256];
    char acSbcDomain[256];
    char acDefaultAccount[128];
    char acDefaultPwd[256];
    uint32_t uiPriority;            /* smaller is higher priority */
    uint32_t uiNumOfAccessServer;
    tagLOGIN_S_ACCESS_SERVER *pstAccessServer;
} tagLOGIN_S_SITE;

/* Every SIP server of every group of every site; pstServer is a heap array of uiNum
 * entries owned by the record holding the list (free it with KOSA_MemFreeD). */
typedef struct tagLOGIN_S_SERVER_LIST {
    uint32_t uiNum;
    tagLOGIN_S_SERVER_ADDR_INFO *pstServer;
} tagLOGIN_S_SERVER_LIST;

/* ---- portal user ------------------------------------------------------------------- */

#define LOGIN_UMS_INFO_NUM    24u
#define LOGIN_EXTRA_PARM_MAX  256u

typedef struct tagLOGIN_S_EXTRA_PARM {
    char acName[256];               /* the child element's name */
    char acValue[256];              /* its text */
} tagLOGIN_S_EXTRA_PARM;

/* A unified-messaging account. The first entry with an empty acDn ends the list. */
typedef struct tagLOGIN_S_UMS_INFO {
    char acDn[256];
    char acUmsAccount[128];
    char acPwd[256];
} tagLOGIN_S_UMS_INFO;

/* The portal user record, filled by the login, authentication-token and server-list
 * answers. Heap members (pstSiteInfo, stSipServerList.pstServer, pstExtraParm) belong to
 * the caller once a parser has set them. */
typedef struct tagLOGIN_S_ATRIUM_USER_INFO {
    char acAccessToken[256];
    char acSipAccount[128];         /* "impu", or "account" as fall-back */
    char acSipImpi[128];
    char acShortNumber[128];
    uint32_t bPwdTypeZero;          /* 1 when "pwdtype" is 0 */
    char acSipPassword[128];
    char acSipDomain[256];
    int32_t iFuncType;              /* -1 when absent from a login answer */
    uint32_t uiExpireIn;
    uint32_t bSiteInfoValid;        /* 1 when pstSiteInfo was built */
    uint32_t uiDeployMode;
    tagLOGIN_S_SITE *pstSiteInfo;   /* selected site; free with freeSiteMem(p, 1) */
    uint32_t bFirstLogin;
    uint32_t uiPwdExpireTime;
    char acRealUserAccount[128];
    char acEabUri[256];
    char acGroupServerUri[256];
    char acTmsTr069Uri[256];        /* base64 text of the server's uri */
    tagLOGIN_S_SERVER_LIST stSipServerList;
    char acSname[256];
    tagLOGIN_S_UMS_INFO astUmsInfo[24];
    char acDisplayName[289];
    uint32_t bHasUserType;
    char acFileDockServiceType[128];
    char acFileDockAppId[128];
    char acFileDockServerAddr[256];
    char acTerminalScene[16];
    char acPrivacyVersion[128];
    uint32_t uiExtraParmNum;
    tagLOGIN_S_EXTRA_PARM *pstExtraParm; /* free with KOSA_MemFreeD */
    uint32_t uiDataConf;            /* 1 when absent */
} tagLOGIN_S_ATRIUM_USER_INFO;

/* ---- temporary (guest) user -------------------------------------------------------- */

typedef struct tagXML_S_TANDEM_TEMPUSER_INFO {
    char acImpu[128];
    char acImpi[128];
    uint32_t bPwdTypeZero;
    char acPasswd[128];
    char acDomain[256];
    char acAccessCode[128];
    char acConfId[16];
    char acConfPwd[256];
    char acAtriumUri[256];
    tagLOGIN_S_SITE *pstSite;       /* guest's site copy; free with freeSiteMem(p, 1) */
    char acChairmanPwd[256];
    char acMediaType[256];
    uint32_t uiUserRole;
    char acAccessAddress[256];
} tagXML_S_TANDEM_TEMPUSER_INFO;

/* ---- conference-server login ------------------------------------------------------- */

typedef struct tagXML_S_TANDEM_RESULT {
    uint32_t uiResultCode;
    char acResultDesc[256];
} tagXML_S_TANDEM_RESULT;

typedef struct tagXML_S_TANDEM_PROFILE {
    char acToken[256];
    char acSupportMediaTypes[256];
} tagXML_S_TANDEM_PROFILE;

/* Directory server account. */
typedef struct tagXML_S_TANDEM_EUA {
    uint32_t uiAddressNum;
    char acAddress[18][256];
    char acUserName[256];
    char acPassword[256];
    char acBaseDN[128];
} tagXML_S_TANDEM_EUA;

typedef struct tagXML_S_TANDEM_SIP {
    char acDomain[256];
    char acProxy[256];
    char acUserName[256];
    char acPassword[256];
    char acAuthName[256];
} tagXML_S_TANDEM_SIP;

typedef struct tagXML_S_TANDEM_STG {
    uint32_t uiStgNum;
    char acStgAddress[5][256];
    uint32_t uiSbcNum;
    char acSbcInnerAddress[5][256];
    char acUserName[256];
    char acPassword[256];
} tagXML_S_TANDEM_STG;

typedef struct tagXML_S_TANDEM_TMS {
    uint32_t uiTmsNum;
    char acAddress[5][256];
    char acUserName[256];
    char acPassword[256];
} tagXML_S_TANDEM_TMS;

/* Portal addresses. */
typedef struct tagXML_S_TANDEM_ATRIUM {
    uint32_t uiAtriumNum;
    char acAddress[6][256];
} tagXML_S_TANDEM_ATRIUM;

/* The conference login answer; the EUA record stands before the SIP record. */
typedef struct tagXML_S_TANDEM_LOGIN_RESULT {
    tagXML_S_TANDEM_RESULT stResult;
    tagXML_S_TANDEM_PROFILE stProfile;
    tagXML_S_TANDEM_EUA stEua;
    tagXML_S_TANDEM_SIP stSip;
    tagXML_S_TANDEM_STG stStg;
    tagXML_S_TANDEM_TMS stTms;
    tagXML_S_TANDEM_ATRIUM stAtrium;
} tagXML_S_TANDEM_LOGIN_RESULT;

#ifdef __cplusplus
}
#endif

#endif /* LOGIN_RECORDS_H */
