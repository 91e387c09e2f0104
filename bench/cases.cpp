/*
 * cases.cpp - the benchmark cases: every answer kind, its sizes, and the module call that
 * reads it followed by the caller's release of what the call handed over.
 */
#include "cases.h"

#include "answers.h"
#include "atrium_xml.h"

#include <cstring>

namespace bench {

namespace {

using UserRecord = tagLOGIN_S_ATRIUM_USER_INFO;

#define BENCH_FREE(pvMem) KOSA_MemFreeD((pvMem), static_cast<uint32_t>(__LINE__), __FILE__)

template <typename Record>
AnswerCase Answer(std::string strName, std::string strBody, RawParser eRaw,
                  std::function<uint32_t(const std::string &, Record *)> fnCall)
{
    AnswerCase stCase;
    stCase.strName = std::move(strName);
    stCase.strBody = std::move(strBody);
    stCase.eRaw = eRaw;
    stCase.uiRecordSize = sizeof(Record);
    stCase.bCallerClears = true;
    stCase.uiExpectedResult = 0;
    stCase.fnCall = [fnCall](const std::string &strText, void *pvRecord) {
        return fnCall(strText, static_cast<Record *>(pvRecord));
    };
    return stCase;
}

AnswerCase PortalLogin(const std::string &strName, const PortalShape &stShape)
{
    const std::string strHost = OwnSiteHost(stShape);
    return Answer<UserRecord>(strName, PortalLoginAnswer(stShape), RawParser::Xml,
                              [strHost](const std::string &strBody, UserRecord *pstUser) {
                                  const uint32_t uiRet =
                                      XmlParseAtriumLoginResult(strBody.c_str(), strHost.c_str(), pstUser);
                                  ReleaseUserHandedOver(*pstUser);
                                  return uiRet;
                              });
}

template <typename Record>
AnswerCase PlainXml(const std::string &strName, std::string strBody, uint32_t (*pfnParse)(const char *, Record *))
{
    return Answer<Record>(
        strName, std::move(strBody), RawParser::Xml,
        [pfnParse](const std::string &strText, Record *pstRecord) { return pfnParse(strText.c_str(), pstRecord); });
}

/* ---- builders: the request record is filled once; the call renders and frees a body ---- */

template <typename Record>
AnswerCase Builder(std::string strName, std::string strRendered, std::function<void(Record *)> fnFill,
                   std::function<uint32_t(Record *, char **, uint32_t *)> fnBuild)
{
    AnswerCase stCase;
    stCase.strName = std::move(strName);
    stCase.strBody = std::move(strRendered);
    stCase.eRaw = RawParser::JsonBuild;
    stCase.uiRecordSize = sizeof(Record);
    stCase.bCallerClears = false;
    stCase.uiExpectedResult = 0;
    stCase.fnPrepare = [fnFill](void *pvRecord) { fnFill(static_cast<Record *>(pvRecord)); };
    stCase.fnCall = [fnBuild](const std::string &, void *pvRecord) {
        char *pcBody = nullptr;
        uint32_t uiLen = 0;
        const uint32_t uiRet = fnBuild(static_cast<Record *>(pvRecord), &pcBody, &uiLen);
        BENCH_FREE(pcBody);
        return uiRet;
    };
    return stCase;
}

void FillUniCallRule(tagLOGIN_S_UNICALL_CFG *pstCfg)
{
    std::memset(pstCfg, 0, sizeof(*pstCfg));
    pstCfg->uiOperate = 1;
    pstCfg->uiSrvType = 1;
    std::strcpy(pstCfg->acDspNum, "+4969555014");
    pstCfg->uiUniCallBeanNum = 1;
    tagLOGIN_S_UNICALL_BEAN &stBean = pstCfg->astUniCallBean[0];
    std::strcpy(stBean.acRuleId, "rule-office-hours");
    stBean.uiCycleType = 1;
    std::strcpy(stBean.acStartDate, "0101");
    std::strcpy(stBean.acEndDate, "1231");
    std::strcpy(stBean.acDayInWeek, "12345");
    std::strcpy(stBean.acStartTime, "0800");
    std::strcpy(stBean.acEndTime, "1800");
    stBean.uiRType = 1;
    stBean.uiCalleeNum = LOGIN_UNICALL_CALLEE_MAX;
    for (uint32_t i = 0; i < LOGIN_UNICALL_CALLEE_MAX; ++i) {
        std::strcpy(stBean.aacCalleeList[i], ("+49151555" + std::to_string(10000 + i)).c_str());
    }
}

void FillLinkedPhone(tagLOGIN_S_LINKED_PHONE *pstPhone)
{
    std::memset(pstPhone, 0, sizeof(*pstPhone));
    std::strcpy(pstPhone->acImpu, "sip:+4969555014@corp.example");
    pstPhone->uiActive = 1;
    std::strcpy(pstPhone->acLinkedPhone, "+4915155501401");
}

void FillLinkedPhoneQuery(tagLOGIN_S_LINKED_PHONE_INFO *pstInfo)
{
    std::memset(pstInfo, 0, sizeof(*pstInfo));
    pstInfo->uiImpuNum = LOGIN_LINKED_PHONE_MAX;
    for (uint32_t i = 0; i < LOGIN_LINKED_PHONE_MAX; ++i) {
        std::strcpy(pstInfo->astLinkedPhone[i].acImpu,
                    ("sip:+49695550" + std::to_string(100 + i) + "@corp.example").c_str());
    }
}

/* The body a builder renders, produced once by the builder itself (setup only). */
template <typename Record>
std::string RenderedBody(std::function<void(Record *)> fnFill,
                         std::function<uint32_t(Record *, char **, uint32_t *)> fnBuild)
{
    Record stRecord;
    fnFill(&stRecord);
    char *pcBody = nullptr;
    uint32_t uiLen = 0;
    std::string strBody;
    if (fnBuild(&stRecord, &pcBody, &uiLen) == 0 && pcBody != nullptr) {
        strBody.assign(pcBody, uiLen);
    }
    BENCH_FREE(pcBody);
    return strBody;
}

template <typename Record>
AnswerCase RenderingBuilder(const std::string &strName, std::function<void(Record *)> fnFill,
                            std::function<uint32_t(Record *, char **, uint32_t *)> fnBuild)
{
    return Builder<Record>(strName, RenderedBody<Record>(fnFill, fnBuild), fnFill, fnBuild);
}

const char RIGHT_CONFIG_PROFILE_FILE[] = "/tmp/atrium-bench-profile.xml";

} // namespace

std::vector<AnswerCase> AllCases()
{
    std::vector<AnswerCase> vecCases;

    /* portal */
    const struct {
        const char *pcName;
        PortalShape stShape;
    } astLogins[] = {
        {"portal_login/small", {1, 2, 0, 0}},
        {"portal_login/medium", {3, 4, 20, 24}},
        {"portal_login/large", {8, 8, 200, 24}},
    };
    for (const auto &stLogin : astLogins) {
        vecCases.push_back(PortalLogin(stLogin.pcName, stLogin.stShape));
        vecCases.back().strXPathHost = OwnSiteHost(stLogin.stShape);
    }
    vecCases.push_back(Answer<UserRecord>("portal/server_list", ServerListAnswer(PortalShape{3, 4, 0, 0}),
                                          RawParser::Xml, [](const std::string &strBody, UserRecord *pstUser) {
                                              const uint32_t uiRet =
                                                  XmlParseAtriumGetServerListRst(strBody.c_str(), pstUser);
                                              ReleaseUserHandedOver(*pstUser);
                                              return uiRet;
                                          }));
    vecCases.push_back(PlainXml<UserRecord>("portal/auth_token", AuthTokenAnswer(), XmlParseAtriumAuthToken));
    vecCases.push_back(
        PlainXml<tagLOGIN_S_ATRIUM_TOKEN_INFO>("portal/token_info", TokenInfoAnswer(), XmlParseAtriumTokenInfo));
    vecCases.push_back(
        PlainXml<tagLOGIN_S_ATRIUM_SEARCH_RESULT>("portal/search", PortalSearchAnswer(8), XmlParseAtriumSearchResult));
    vecCases.push_back(Answer<tagLOGIN_S_ATRIUM_RIGHT_CONFIG>(
        "portal/right_config_refused", RightConfigRefusedAnswer(), RawParser::Xml,
        [](const std::string &strBody, tagLOGIN_S_ATRIUM_RIGHT_CONFIG *pstConfig) {
            return XmlParseAtriumRightConfig(strBody.c_str(), RIGHT_CONFIG_PROFILE_FILE, pstConfig);
        }));

    /* conference server and guests */
    vecCases.push_back(PlainXml<tagXML_S_TANDEM_LOGIN_RESULT>("conference/login_full_lists", ConferenceLoginAnswer(),
                                                              XmlParseTandmLoginResult));
    vecCases.push_back(PlainXml<tagXML_S_TANDEM_LOGIN_RESULT>("conference/login_refused", ConferenceRefusalAnswer(),
                                                              XmlParseTandmLoginResult));
    vecCases.push_back(PlainXml<tagXML_S_TANDEM_VERSION_RESULT>("conference/version", VersionAnswer(),
                                                                XmlParseGetTandemVersionResult));
    vecCases.push_back(PlainXml<tagXML_S_TANDEM_RANDOM_RESULT>("conference/random_key", RandomKeyAnswer(),
                                                               XmlParseTandemRandomResult));
    vecCases.push_back(PlainXml<tagXML_S_TANDEM_SEARCH_RESULT>("conference/search", ConferenceSearchAnswer(8),
                                                               XmlParseTandemSearchResult));
    const uint32_t uiGuestSites = 4;
    const std::string strGuestKey = GuestSiteKey(uiGuestSites);
    vecCases.push_back(Answer<tagXML_S_TANDEM_TEMPUSER_INFO>(
        "guest/service_sites", GuestServiceSitesAnswer(uiGuestSites, 4), RawParser::Xml,
        [strGuestKey](const std::string &strBody, tagXML_S_TANDEM_TEMPUSER_INFO *pstGuest) {
            const uint32_t uiRet = XmlParseTandemTempuserServiceTp(strBody.c_str(), strGuestKey.c_str(), pstGuest);
            freeSiteMem(pstGuest->pstSite, 1);
            return uiRet;
        }));
    vecCases.push_back(
        PlainXml<tagXML_S_TANDEM_TEMPUSER_INFO>("guest/sip", GuestSipAnswer(), XmlParseTandemTempuserSipInfo));
    vecCases.push_back(
        PlainXml<tagXML_S_TANDEM_TEMPUSER_INFO>("guest/conf", GuestConfAnswer(), XmlParseTempuserConfInfo));
    vecCases.push_back(PlainXml<tagXML_S_TANDEM_TEMPUSER_INFO>("guest/big_param_short", GuestShortConfAnswer(),
                                                               XmlParseBigParamConfInfo));
    vecCases.push_back(PlainXml<tagXML_S_TANDEM_TEMPUSER_INFO>("guest/big_param_detailed", GuestConfAnswer(),
                                                               XmlParseBigParamConfInfo));
    vecCases.push_back(
        PlainXml<tagXML_S_TEMPUSER_ACCOUNT_INFO>("guest/account", GuestAccountAnswer(), XmlParseTempuserAccountInfo));
    vecCases.push_back(Answer<char *>("guest/nearby_access", NearbyAccessAnswer(4), RawParser::Xml,
                                      [](const std::string &strBody, char **ppcServiceTp) {
                                          const uint32_t uiRet =
                                              XmlParseGetServiceTPFromRandom(strBody.c_str(), ppcServiceTp);
                                          BENCH_FREE(*ppcServiceTp);
                                          return uiRet;
                                      }));

    /* management service and JSON services */
    vecCases.push_back(PlainXml<tagLOGIN_S_ENDPOINT_MSG_RESULT>("services/soap_endpoint", EndpointMessageAnswer(),
                                                                XmlParseGetSiteInfoResult));
    vecCases.push_back(Answer<tagLOGIN_S_UNICALL_CFG>("services/unicall_cap", UniCallAnswer(), RawParser::Json,
                                                      [](const std::string &strBody, tagLOGIN_S_UNICALL_CFG *pstCfg) {
                                                          return static_cast<uint32_t>(
                                                              JsonParseUniCallCfgResult(strBody.c_str(), pstCfg));
                                                      }));
    vecCases.push_back(Answer<tagLOGIN_S_LINKED_PHONE_RESULT>(
        "services/linked_phone_cap", LinkedPhoneAnswer(), RawParser::Json,
        [](const std::string &strBody, tagLOGIN_S_LINKED_PHONE_RESULT *pstResult) {
            return JsonParseLinkedPhoneResult(strBody.c_str(), pstResult);
        }));
    vecCases.push_back(
        RenderingBuilder<tagLOGIN_S_UNICALL_CFG>("services/build_unicall_set", FillUniCallRule,
                                                 [](tagLOGIN_S_UNICALL_CFG *pstCfg, char **ppcBody, uint32_t *puiLen) {
                                                     return JsonBuildSetUniCallCfgBody(pstCfg, 0, ppcBody, puiLen);
                                                 }));
    vecCases.push_back(RenderingBuilder<tagLOGIN_S_LINKED_PHONE>("services/build_linked_phone_set", FillLinkedPhone,
                                                                 JsonBuildSetLinkedPhoneInfoBody));
    vecCases.push_back(RenderingBuilder<tagLOGIN_S_LINKED_PHONE_INFO>(
        "services/build_linked_phone_get_cap", FillLinkedPhoneQuery, JsonBuildGetLinkedPhoneInfoBody));
    return vecCases;
}

std::vector<GrowthCase> GrowthCases()
{
    std::vector<GrowthCase> vecCases;
    for (uint32_t uiSites : {1u, 2u, 4u, 8u, 16u}) {
        const PortalShape stShape{uiSites, 8, 0, 0};
        vecCases.push_back(
            GrowthCase{uiSites, uiSites * 8, PortalLogin("growth/sites_" + std::to_string(uiSites), stShape)});
    }
    return vecCases;
}

std::vector<SiteMachineryCase> SiteMachineryCases()
{
    return {
        {"site_machinery/small", 1, 2},
        {"site_machinery/medium", 3, 4},
        {"site_machinery/large", 8, 8},
    };
}

} // namespace bench
