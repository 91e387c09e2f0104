/*
 * answers.cpp - the table of answer kinds and the run of one parser.
 *
 * Each row ties a kind's name to its exported parser, the record that parser fills, the
 * result codes particular to it and, where the server states a verdict of its own inside
 * the record, the field that holds it. ParseAnswer settles the inputs a parser takes (own
 * host, site key, profile file), runs it under an ObserveScope and keeps what came out.
 */
#include "answers.h"

#include <cstdio>
#include <cstdlib>
#include <random>

#include <sys/stat.h>
#include <unistd.h>

#include "atrium_xml.h"
#include "capture.h"
#include "detect.h"
#include "record_print.h"

namespace atrium_tool {

using namespace atrium_records;

namespace {

template <typename R>
R *As(void *pvRecord)
{
    return static_cast<R *>(pvRecord);
}

using User = tagLOGIN_S_ATRIUM_USER_INFO;
using Guest = tagXML_S_TANDEM_TEMPUSER_INFO;

std::vector<AnswerKind> MakeAnswerKinds()
{
    return {
        {"auth-token",
         "XmlParseAtriumAuthToken",
         "portal authentication-token answer (UserInfo)",
         &g_stAtriumUserInfoDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &) -> int64_t {
             return XmlParseAtriumAuthToken(pcBody, As<User>(pvRec));
         },
         {{1, "the token or its lifetime is missing"}},
         nullptr,
         0},
        {"portal-login",
         "XmlParseAtriumLoginResult",
         "portal login answer (UserInfo with sipinfo, servicetp, serverList, umsinfo)",
         &g_stAtriumUserInfoDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &stIn) -> int64_t {
             return XmlParseAtriumLoginResult(pcBody, stIn.pcHost, As<User>(pvRec));
         },
         {{1, "a required key is missing (token, lifetime, a server's name or uri, an "
              "account's dn, umsaccount or pwd), or the site array could not be allocated"}},
         nullptr,
         0},
        {"server-list",
         "XmlParseAtriumGetServerListRst",
         "portal server-list answer (servicetp)",
         &g_stAtriumUserInfoDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &) -> int64_t {
             return XmlParseAtriumGetServerListRst(pcBody, As<User>(pvRec));
         },
         {{1, "the site array could not be allocated"}},
         nullptr,
         0},
        {"portal-search",
         "XmlParseAtriumSearchResult",
         "portal search answer (UserInfo.servicetp)",
         &g_stAtriumSearchResultDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &) -> int64_t {
             return XmlParseAtriumSearchResult(pcBody, As<tagLOGIN_S_ATRIUM_SEARCH_RESULT>(pvRec));
         },
         {},
         nullptr,
         0},
        {"token-info",
         "XmlParseAtriumTokenInfo",
         "portal token-information answer (UserInfo)",
         &g_stAtriumTokenInfoDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &) -> int64_t {
             return XmlParseAtriumTokenInfo(pcBody, As<tagLOGIN_S_ATRIUM_TOKEN_INFO>(pvRec));
         },
         {{0, "success, but also for an empty token element: check acAccessToken"},
          {22, "the token could not be copied"},
          {34, "the token does not fit acAccessToken"}},
         nullptr,
         0},
        {"right-config",
         "XmlParseAtriumRightConfig",
         "portal right-configuration answer (root)",
         &g_stAtriumRightConfigDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &stIn) -> int64_t {
             return XmlParseAtriumRightConfig(pcBody, stIn.pcProfileFile, As<tagLOGIN_S_ATRIUM_RIGHT_CONFIG>(pvRec));
         },
         {{0, "success; the profile is saved only when uiRetCode is 0"}, {1, "the profile could not be saved"}},
         "uiRetCode",
         kTakesProfileFile},
        {"conf-login",
         "XmlParseTandmLoginResult",
         "conference-server login answer (loginResult, or result for a refusal)",
         &g_stTandemLoginResultDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &) -> int64_t {
             return XmlParseTandmLoginResult(pcBody, As<tagXML_S_TANDEM_LOGIN_RESULT>(pvRec));
         },
         {{0, "success; the server's verdict is stResult.uiResultCode"},
          {1, "the result code or its description is missing"}},
         "stResult.uiResultCode",
         0},
        {"conf-version",
         "XmlParseGetTandemVersionResult",
         "conference-server version answer (versionResult)",
         &g_stTandemVersionResultDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &) -> int64_t {
             return XmlParseGetTandemVersionResult(pcBody, As<tagXML_S_TANDEM_VERSION_RESULT>(pvRec));
         },
         {},
         "uiResultCode",
         0},
        {"random-key",
         "XmlParseTandemRandomResult",
         "guest site URL and random key (confinfo)",
         &g_stTandemRandomResultDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &) -> int64_t {
             return XmlParseTandemRandomResult(pcBody, As<tagXML_S_TANDEM_RANDOM_RESULT>(pvRec));
         },
         {{ATRIUM_FAILED, "the site URL or the random key is missing"}},
         nullptr,
         0},
        {"conf-search",
         "XmlParseTandemSearchResult",
         "conference-server search answer (servicetp)",
         &g_stTandemSearchResultDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &) -> int64_t {
             return XmlParseTandemSearchResult(pcBody, As<tagXML_S_TANDEM_SEARCH_RESULT>(pvRec));
         },
         {},
         nullptr,
         0},
        {"guest-sites",
         "XmlParseTandemTempuserServiceTp",
         "guest's service sites (a root holding site elements)",
         &g_stTempUserInfoDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &stIn) -> int64_t {
             return XmlParseTandemTempuserServiceTp(pcBody, stIn.pcSiteKey, As<Guest>(pvRec));
         },
         {{1, "the site copy could not be allocated"}},
         nullptr,
         kTakesSiteKey},
        {"guest-sip",
         "XmlParseTandemTempuserSipInfo",
         "guest's SIP identity (ConfParam.sipinfo)",
         &g_stTempUserInfoDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &) -> int64_t {
             return XmlParseTandemTempuserSipInfo(pcBody, As<Guest>(pvRec));
         },
         {{11, "the server answered an error code in ConfParam.errorCode"},
          {34, "the server answered error 404 in ConfParam.errorCode"}},
         nullptr,
         0},
        {"guest-conf",
         "XmlParseTempuserConfInfo",
         "guest's conference parameters (ConfParam.ConfInfo)",
         &g_stTempUserInfoDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &) -> int64_t {
             return XmlParseTempuserConfInfo(pcBody, As<Guest>(pvRec));
         },
         {},
         nullptr,
         0},
        {"guest-bigparam",
         "XmlParseBigParamConfInfo",
         "guest's conference parameters, short form (ConfParam.access_code ...)",
         &g_stTempUserInfoDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &) -> int64_t {
             return XmlParseBigParamConfInfo(pcBody, As<Guest>(pvRec));
         },
         {},
         nullptr,
         0},
        {"guest-account",
         "XmlParseTempuserAccountInfo",
         "guest's short-lived account (ConfParam.AccountInfo)",
         &g_stTempUserAccountInfoDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &) -> int64_t {
             return XmlParseTempuserAccountInfo(pcBody, As<tagXML_S_TEMPUSER_ACCOUNT_INFO>(pvRec));
         },
         {},
         nullptr,
         0},
        {"nearby-access",
         "XmlParseGetServiceTPFromRandom",
         "nearby-access block, base64 (ConfParam.nearbyaccess)",
         &g_stServiceTpDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &) -> int64_t {
             return XmlParseGetServiceTPFromRandom(pcBody, &As<tagTOOL_S_SERVICE_TP>(pvRec)->pcServiceTp);
         },
         {{1, "no ConfParam.nearbyaccess element, or nothing could be decoded from it"}},
         nullptr,
         0},
        {"endpoint-message",
         "XmlParseGetSiteInfoResult",
         "management service's endpoint-message SOAP reply (Envelope)",
         &g_stEndpointMsgResultDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &) -> int64_t {
             return XmlParseGetSiteInfoResult(pcBody, As<tagLOGIN_S_ENDPOINT_MSG_RESULT>(pvRec));
         },
         {{0, "success; the server's verdict is uiErrCode"},
          {1, "the response carries a foreign namespace, not " LOGIN_MGMT_SERVICE_NAMESPACE}},
         "uiErrCode",
         0},
        {"unicall",
         "JsonParseUniCallCfgResult",
         "unified-call configuration answer (JSON)",
         &g_stUniCallCfgDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &) -> int64_t {
             return JsonParseUniCallCfgResult(pcBody, As<tagLOGIN_S_UNICALL_CFG>(pvRec));
         },
         {{0, "success; the server's verdict is uiReturnCode"},
          {2, "no '{' in the answer"},
          {46, "not JSON; uiReturnCode is set to 1"}},
         "uiReturnCode",
         0},
        {"linked-phones",
         "JsonParseLinkedPhoneResult",
         "linked-phone answer (JSON)",
         &g_stLinkedPhoneResultDesc,
         [](const char *pcBody, void *pvRec, const ParseInputs &) -> int64_t {
             return JsonParseLinkedPhoneResult(pcBody, As<tagLOGIN_S_LINKED_PHONE_RESULT>(pvRec));
         },
         {{ATRIUM_TOO_MANY_LINKED_PHONES, "30 or more identities: the count is stored, no entry is written"}},
         nullptr,
         0},
    };
}

/* The profile file of the right configuration: the one given, or a private temporary
 * file removed afterwards. Tells whether the parser wrote it. */
class ProfileTarget {
public:
    explicit ProfileTarget(const std::optional<std::string> &strGiven)
    {
        if (strGiven) {
            m_strPath = *strGiven;
        } else {
            const char *pcTmp = std::getenv("TMPDIR");
            std::string strTemplate = std::string(pcTmp != nullptr ? pcTmp : "/tmp") + "/atrium-xml-profile-XXXXXX";
            const int iFd = mkstemp(strTemplate.data());
            m_bTemporary = iFd >= 0;
            if (iFd >= 0) {
                close(iFd);
            }
            m_strPath = m_bTemporary ? strTemplate : "/dev/null";
        }
        m_bBefore = stat(m_strPath.c_str(), &m_stBefore) == 0;
    }
    ~ProfileTarget()
    {
        if (m_bTemporary) {
            unlink(m_strPath.c_str());
        }
    }
    ProfileTarget(const ProfileTarget &) = delete;
    ProfileTarget &operator=(const ProfileTarget &) = delete;

    const char *Path() const { return m_strPath.c_str(); }

    /* Bytes in the file when the parser wrote it. */
    std::optional<uint64_t> WrittenBytes() const
    {
        struct stat stAfter;
        if (stat(m_strPath.c_str(), &stAfter) != 0 || !S_ISREG(stAfter.st_mode)) {
            return std::nullopt;
        }
        const bool bChanged = !m_bBefore || stAfter.st_size != m_stBefore.st_size ||
                              stAfter.st_mtim.tv_sec != m_stBefore.st_mtim.tv_sec ||
                              stAfter.st_mtim.tv_nsec != m_stBefore.st_mtim.tv_nsec;
        if (!bChanged || (m_bTemporary && stAfter.st_size == 0)) {
            return std::nullopt;
        }
        return static_cast<uint64_t>(stAfter.st_size);
    }

private:
    std::string m_strPath;
    bool m_bTemporary = false;
    bool m_bBefore = false;
    struct stat m_stBefore {};
};

/* Deterministic random draws on this thread while it lives (--seed). */
class SeededDraws {
public:
    explicit SeededDraws(const std::optional<uint64_t> &uiSeed) : m_bActive(uiSeed.has_value())
    {
        if (m_bActive) {
            m_stEngine.seed(static_cast<std::mt19937::result_type>(*uiSeed));
            QEV_CPYPT_SetRandomHook(Next, this);
        }
    }
    ~SeededDraws()
    {
        if (m_bActive) {
            QEV_CPYPT_SetRandomHook(nullptr, nullptr);
        }
    }
    SeededDraws(const SeededDraws &) = delete;
    SeededDraws &operator=(const SeededDraws &) = delete;

private:
    static uint32_t Next(void *pvCtx) { return static_cast<uint32_t>(static_cast<SeededDraws *>(pvCtx)->m_stEngine()); }
    bool m_bActive;
    std::mt19937 m_stEngine;
};

} // namespace

std::string LibraryCodeMeaning(int64_t iCode)
{
    char acCode[32];
    std::snprintf(acCode, sizeof(acCode), "XML library code 0x%llx: ", static_cast<unsigned long long>(iCode));
    return acCode + std::string(AtriumResultText(static_cast<uint32_t>(iCode)));
}

const std::vector<AnswerKind> &AnswerKinds()
{
    static const std::vector<AnswerKind> s_vecKinds = MakeAnswerKinds();
    return s_vecKinds;
}

const AnswerKind *FindAnswerKind(const std::string &strName)
{
    for (const AnswerKind &stKind : AnswerKinds()) {
        if (strName == stKind.pcName) {
            return &stKind;
        }
    }
    return nullptr;
}

std::string AnswerKindNames()
{
    std::string strNames;
    for (const AnswerKind &stKind : AnswerKinds()) {
        strNames += (strNames.empty() ? "" : ", ") + std::string(stKind.pcName);
    }
    return strNames;
}

std::string ResultMeaning(const AnswerKind &stKind, int64_t iCode)
{
    for (const CodeMeaning &stMeaning : stKind.vecMeanings) {
        if (stMeaning.iCode == iCode) {
            return stMeaning.pcMeaning;
        }
    }
    if (iCode > 255) {
        return LibraryCodeMeaning(iCode);
    }
    return AtriumResultText(static_cast<uint32_t>(iCode));
}

RecordBuffer::RecordBuffer(const RecordDesc &stDesc) : m_stDesc(stDesc), m_pvRecord(std::calloc(1, stDesc.uiSize))
{
    if (m_pvRecord == nullptr) {
        throw std::bad_alloc();
    }
}

RecordBuffer::~RecordBuffer()
{
    ReleaseRecord(m_stDesc, m_pvRecord);
    std::free(m_pvRecord);
}

std::string ParsedAnswer::Meaning() const
{
    if (!iCode) {
        return "the module let an exception through: " + strException;
    }
    return ResultMeaning(*pstKind, *iCode);
}

std::unique_ptr<ParsedAnswer> ParseAnswer(const AnswerKind &stKind, const std::string &strBody,
                                          const ParseOptions &stOptions)
{
    auto pParsed = std::make_unique<ParsedAnswer>();
    pParsed->pstKind = &stKind;
    pParsed->pRecord = std::make_unique<RecordBuffer>(*stKind.pstRecord);

    const bool bTakesSiteKey = (stKind.uiTakes & kTakesSiteKey) != 0;
    const std::string strSiteKey = stOptions.strSiteKey.value_or(bTakesSiteKey ? FirstSiteKey(strBody) : std::string());
    std::optional<ProfileTarget> stProfile;
    if ((stKind.uiTakes & kTakesProfileFile) != 0) {
        stProfile.emplace(stOptions.strProfileFile);
    }
    const ParseInputs stInputs{stOptions.strHost.c_str(), strSiteKey.c_str(), stProfile ? stProfile->Path() : nullptr};

    SeededDraws stDraws(stOptions.uiSeed);
    ObserveScope stScope(pParsed->stSeen);
    try {
        pParsed->iCode = stKind.pfnParse(strBody.c_str(), pParsed->pRecord->Get(), stInputs);
    } catch (const std::exception &e) {
        pParsed->strException = e.what();
    }
    if (stProfile) {
        pParsed->uiProfileBytes = stProfile->WrittenBytes();
    }
    if (pParsed->iCode && *pParsed->iCode > 255) {
        pParsed->strErrorAt = LocateXmlError(strBody);
    }
    uint32_t uiVerdict = 0;
    if (stKind.pcVerdict != nullptr &&
        ReadU32(*stKind.pstRecord, pParsed->pRecord->Get(), stKind.pcVerdict, uiVerdict) && uiVerdict != 0) {
        pParsed->uiVerdict = uiVerdict;
    }
    return pParsed;
}

} // namespace atrium_tool
