/*
 * hardening_support.cpp - answers, thread-neutral login-service doubles and the catalogue of
 * exported text functions shared by the hardening tests (see hardening_support.h).
 */
#include "hardening_support.h"

#include <arpa/inet.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include <json/json.h>

namespace hardening {

const char *const OWN_SITE_HOST = "sso.a.example";
const char *const GUEST_SITE_KEY = "sso.b.example";

namespace {

/* The random values every call starts from, whatever its thread. */
const std::vector<uint32_t> FIXED_RANDOM = {7, 3, 11, 0, 5, 2, 13, 1};

std::string ReadWholeFile(const std::string &strPath)
{
    std::ifstream file(strPath, std::ios::binary);
    std::ostringstream stream;
    stream << file.rdbuf();
    return stream.str();
}

template <typename T>
std::string BytesOfArray(const T *pstItems, uint32_t uiCount)
{
    if (pstItems == nullptr) {
        return "-";
    }
    return std::to_string(uiCount) + ":" + std::string(reinterpret_cast<const char *>(pstItems), sizeof(T) * uiCount);
}

std::string ResultText(uint32_t uiResult)
{
    return std::to_string(uiResult) + "|";
}

/* ---- resolver ------------------------------------------------------------------------ */

uint32_t HashOf(const char *pcText)
{
    uint32_t uiHash = 2166136261u;
    for (const char *pc = pcText; *pc != '\0'; ++pc) {
        uiHash = (uiHash ^ static_cast<unsigned char>(*pc)) * 16777619u;
    }
    return uiHash;
}

uint32_t ResolveFromName(void *, const char *pcHost, uint32_t, tagLOGIN_S_SRV_IP_ENTRY *pstEntries, uint32_t *puiCount)
{
    if (pcHost == nullptr || pstEntries == nullptr || puiCount == nullptr ||
        std::strncmp(pcHost, "unresolvable.", 13) == 0) {
        return 99;
    }
    uint32_t uiHash = HashOf(pcHost);
    uint32_t uiWanted = 1 + uiHash % 3;
    uint32_t uiFilled = 0;
    for (; uiFilled < uiWanted && uiFilled < *puiCount; ++uiFilled) {
        uint32_t uiHostOrder = (10u << 24) | ((uiHash & 0xFFFFu) << 8) | (uiFilled + 1);
        pstEntries[uiFilled].uiAddr = htonl(uiHostOrder);
    }
    *puiCount = uiFilled;
    return 0;
}

/* ---- traces ---------------------------------------------------------------------------- */

thread_local std::vector<std::string> t_vecTraces;

void KeepTraceOfThisThread(void *, uint32_t uiLevel, const char *pcFunc, const char *, uint32_t uiLine,
                           const char *pcMessage)
{
    t_vecTraces.push_back("L" + std::to_string(uiLevel) + " " + (pcFunc ? pcFunc : "?") + ":" + std::to_string(uiLine) +
                          " " + (pcMessage ? pcMessage : ""));
}

/* ---- runners --------------------------------------------------------------------------- */

template <typename Record>
Record Cleared()
{
    Record stRecord;
    std::memset(&stRecord, 0, sizeof(stRecord));
    return stRecord;
}

/* A runner for a parser that fills one flat record: (body, record) -> code. */
template <typename Record>
Runner FlatRecordRunner(uint32_t (*pfnParse)(const char *, Record *))
{
    return [pfnParse](const std::string &strBody, const CallContext &) {
        RandomFeed feed(FIXED_RANDOM);
        Record stRecord = Cleared<Record>();
        Outcome stOut;
        stOut.uiResult = pfnParse(strBody.c_str(), &stRecord);
        stOut.strRecord = BytesOf(stRecord);
        return stOut;
    };
}

/* The JSON parsers may throw; the exception is part of the outcome. */
template <typename Record, typename Code>
Runner JsonRecordRunner(Code (*pfnParse)(const char *, Record *))
{
    return [pfnParse](const std::string &strBody, const CallContext &) {
        Record stRecord = Cleared<Record>();
        Outcome stOut;
        try {
            stOut.uiResult = static_cast<uint32_t>(pfnParse(strBody.c_str(), &stRecord));
        } catch (const Json::Exception &) {
            stOut.bThrew = true;
        }
        stOut.strRecord = BytesOf(stRecord);
        return stOut;
    };
}

/* A portal parser on a cleared user record: its result, the record, then the release of what
 * it handed over. */
template <typename ParseUser>
Outcome RunOnUser(ParseUser parse)
{
    auto stUser = Cleared<tagLOGIN_S_ATRIUM_USER_INFO>();
    Outcome stOut;
    stOut.uiResult = parse(&stUser);
    stOut.strRecord = FlattenUser(stUser);
    ReleaseUserHandedOver(stUser);
    return stOut;
}

Outcome RunLogin(const std::string &strBody, const CallContext &)
{
    RandomFeed feed(FIXED_RANDOM);
    return RunOnUser([&strBody](tagLOGIN_S_ATRIUM_USER_INFO *pstUser) {
        return XmlParseAtriumLoginResult(strBody.c_str(), OWN_SITE_HOST, pstUser);
    });
}

Outcome RunServerList(const std::string &strBody, const CallContext &)
{
    RandomFeed feed(FIXED_RANDOM);
    return RunOnUser([&strBody](tagLOGIN_S_ATRIUM_USER_INFO *pstUser) {
        return XmlParseAtriumGetServerListRst(strBody.c_str(), pstUser);
    });
}

Outcome RunAuthToken(const std::string &strBody, const CallContext &)
{
    return RunOnUser([&strBody](tagLOGIN_S_ATRIUM_USER_INFO *pstUser) {
        return XmlParseAtriumAuthToken(strBody.c_str(), pstUser);
    });
}

/* The profile file, when one was written, belongs to the outcome. */
std::string TakeFile(const std::string &strPath)
{
    std::string strContent = access(strPath.c_str(), F_OK) == 0 ? "file:" + ReadWholeFile(strPath) : "nofile";
    std::remove(strPath.c_str());
    return strContent;
}

Outcome RunRightConfig(const std::string &strBody, const CallContext &stCtx)
{
    auto stConfig = Cleared<tagLOGIN_S_ATRIUM_RIGHT_CONFIG>();
    Outcome stOut;
    stOut.uiResult = XmlParseAtriumRightConfig(strBody.c_str(), stCtx.strScratchFile.c_str(), &stConfig);
    stOut.strRecord = BytesOf(stConfig) + TakeFile(stCtx.strScratchFile);
    return stOut;
}

Outcome RunSaveBody(const std::string &strBody, const CallContext &stCtx)
{
    Outcome stOut;
    stOut.uiResult = XmlSaveAtriumXmlBody(strBody.c_str(), stCtx.strScratchFile.c_str());
    stOut.strRecord = TakeFile(stCtx.strScratchFile);
    return stOut;
}

Outcome RunTempuserServiceTp(const std::string &strBody, const CallContext &)
{
    RandomFeed feed(FIXED_RANDOM);
    auto stTemp = Cleared<tagXML_S_TANDEM_TEMPUSER_INFO>();
    Outcome stOut;
    stOut.uiResult = XmlParseTandemTempuserServiceTp(strBody.c_str(), GUEST_SITE_KEY, &stTemp);
    stOut.strRecord = FlattenTempUser(stTemp);
    ReleaseTempUserHandedOver(stTemp);
    return stOut;
}

Outcome RunServiceTpFromRandom(const std::string &strBody, const CallContext &)
{
    char *pcServiceTp = nullptr;
    Outcome stOut;
    stOut.uiResult = XmlParseGetServiceTPFromRandom(strBody.c_str(), &pcServiceTp);
    stOut.strRecord = pcServiceTp == nullptr ? "-" : std::string("+") + pcServiceTp;
    KOSA_MemFreeD(pcServiceTp, __LINE__, __FILE__);
    return stOut;
}

std::string ElementName(_NODE *pstNode)
{
    char *pcName = nullptr;
    char *pcValue = nullptr;
    if (pstNode == nullptr || KTL_XML_GetNodeValue(pstNode, nullptr, 0, &pcName, &pcValue) != 0 || pcName == nullptr) {
        return "-";
    }
    return pcName;
}

Outcome RunSoapBodyNode(const std::string &strBody, const CallContext &)
{
    _NODE *pstRoot = nullptr;
    _NODE *pstEnvelope = nullptr;
    _NODE *pstSoapBody = nullptr;
    Outcome stOut;
    stOut.uiResult = XmlGetSoapBodyNode(strBody.c_str(), 0, &pstRoot, &pstEnvelope, &pstSoapBody);
    stOut.strRecord = ElementName(pstRoot) + "|" + ElementName(pstEnvelope) + "|" + ElementName(pstSoapBody);
    KTL_XML_FreeNode(pstRoot);
    return stOut;
}

Outcome RunJsonScanner(const std::string &strBody, const CallContext &)
{
    auto stResult = Cleared<tagLOGIN_S_ENDPOINT_MSG_RESULT>();
    XmlGetStringValueByKeyFromJson("Uri", strBody.c_str(), stResult.acUri, sizeof(stResult.acUri));
    XmlGetStringValueByKeyFromJson("RegPassword", strBody.c_str(), stResult.acRegPassword,
                                   sizeof(stResult.acRegPassword));
    XmlGetStringValueByKeyFromJson("RegIpAddress", strBody.c_str(), stResult.acRegIpAddress,
                                   sizeof(stResult.acRegIpAddress));
    Outcome stOut;
    stOut.strRecord = BytesOf(stResult);
    return stOut;
}

/* A handed-over JSON body: the result, the length and the block with its terminator. */
std::string TakeJsonBody(uint32_t uiResult, char *&pcBody, uint32_t uiLen)
{
    std::string strText = ResultText(uiResult);
    if (pcBody != nullptr) {
        strText += std::to_string(uiLen) + ":" + std::string(pcBody, uiLen + 1);
        KOSA_MemFreeD(pcBody, __LINE__, __FILE__);
        pcBody = nullptr;
    }
    return strText + ";";
}

/* Builds the set body of every rule the answer holds, and of the index one past them. The
 * answer parser stores the rule count in each rule's callee count; a caller that hands such a
 * record back to the builder caps it at the list's ten entries first, as done here. */
Outcome RunUniCallBuild(const std::string &strBody, const CallContext &)
{
    auto stCfg = Cleared<tagLOGIN_S_UNICALL_CFG>();
    Outcome stOut;
    try {
        stOut.uiResult = static_cast<uint32_t>(JsonParseUniCallCfgResult(strBody.c_str(), &stCfg));
        for (uint32_t i = 0; stOut.uiResult == 0 && i <= stCfg.uiUniCallBeanNum && i <= LOGIN_UNICALL_BEAN_MAX; ++i) {
            if (i < LOGIN_UNICALL_BEAN_MAX && stCfg.astUniCallBean[i].uiCalleeNum > LOGIN_UNICALL_CALLEE_MAX) {
                stCfg.astUniCallBean[i].uiCalleeNum = LOGIN_UNICALL_CALLEE_MAX;
            }
            char *pcBody = nullptr;
            uint32_t uiLen = 0;
            uint32_t uiRet = JsonBuildSetUniCallCfgBody(&stCfg, i, &pcBody, &uiLen);
            stOut.strRecord += TakeJsonBody(uiRet, pcBody, uiLen);
        }
    } catch (const Json::Exception &) {
        stOut.bThrew = true;
    }
    return stOut;
}

Outcome RunLinkedPhoneSetBuild(const std::string &strBody, const CallContext &)
{
    auto stAnswer = Cleared<tagLOGIN_S_LINKED_PHONE_RESULT>();
    Outcome stOut;
    try {
        stOut.uiResult = JsonParseLinkedPhoneResult(strBody.c_str(), &stAnswer);
        for (uint32_t i = 0; stOut.uiResult == 0 && i < stAnswer.uiLinkedPhoneNum; ++i) {
            char *pcBody = nullptr;
            uint32_t uiLen = 0;
            uint32_t uiRet = JsonBuildSetLinkedPhoneInfoBody(&stAnswer.astLinkedPhone[i], &pcBody, &uiLen);
            stOut.strRecord += TakeJsonBody(uiRet, pcBody, uiLen);
        }
    } catch (const Json::Exception &) {
        stOut.bThrew = true;
    }
    return stOut;
}

Outcome RunLinkedPhoneGetBuild(const std::string &strBody, const CallContext &)
{
    auto stAnswer = Cleared<tagLOGIN_S_LINKED_PHONE_RESULT>();
    Outcome stOut;
    try {
        stOut.uiResult = JsonParseLinkedPhoneResult(strBody.c_str(), &stAnswer);
        if (stOut.uiResult == 0) {
            auto stInfo = Cleared<tagLOGIN_S_LINKED_PHONE_INFO>();
            stInfo.uiImpuNum = stAnswer.uiLinkedPhoneNum;
            std::memcpy(stInfo.astLinkedPhone, stAnswer.astLinkedPhone, sizeof(stInfo.astLinkedPhone));
            char *pcBody = nullptr;
            uint32_t uiLen = 0;
            uint32_t uiRet = JsonBuildGetLinkedPhoneInfoBody(&stInfo, &pcBody, &uiLen);
            stOut.strRecord = TakeJsonBody(uiRet, pcBody, uiLen);
        }
    } catch (const Json::Exception &) {
        stOut.bThrew = true;
    }
    return stOut;
}

std::vector<std::string> Answers(std::initializer_list<const char *> names)
{
    std::vector<std::string> vecBodies;
    for (const char *pcName : names) {
        vecBodies.push_back(ReadAnswer(pcName));
    }
    return vecBodies;
}

std::vector<CatalogueEntry> BuildCatalogue()
{
    const char *pcScannerText = "{\"Uri\":\"sip:9@uc.example\",\"RegPassword\":\"p,w\",\"RegIpAddress\":\"10.0.0.9\"}";
    return {
        {"XmlParseAtriumLoginResult",
         Answers({"portal-login.xml", "portal-login-one-site.xml", "portal-login-minimal.xml"}), RunLogin},
        {"XmlParseAtriumSearchResult", Answers({"portal-search.xml"}), FlatRecordRunner(XmlParseAtriumSearchResult)},
        {"XmlParseAtriumAuthToken", Answers({"portal-auth-token.xml", "portal-login.xml"}), RunAuthToken},
        {"XmlParseAtriumGetServerListRst", Answers({"portal-server-list.xml"}), RunServerList},
        {"XmlParseAtriumTokenInfo", Answers({"portal-token-info.xml"}), FlatRecordRunner(XmlParseAtriumTokenInfo)},
        {"XmlParseAtriumRightConfig",
         Answers({"portal-right-config-refused.xml", "portal-right-config-no-profile.xml"}), RunRightConfig},
        {"XmlSaveAtriumXmlBody", Answers({"portal-right-config.xml"}), RunSaveBody},
        {"XmlParseTandmLoginResult", Answers({"conference-login.xml", "conference-login-refusal.xml"}),
         FlatRecordRunner(XmlParseTandmLoginResult)},
        {"XmlParseGetTandemVersionResult", Answers({"conference-version.xml"}),
         FlatRecordRunner(XmlParseGetTandemVersionResult)},
        {"XmlParseTandemRandomResult", Answers({"conference-random.xml"}),
         FlatRecordRunner(XmlParseTandemRandomResult)},
        {"XmlParseTandemSearchResult", Answers({"conference-search.xml"}),
         FlatRecordRunner(XmlParseTandemSearchResult)},
        {"XmlParseTandemTempuserServiceTp", Answers({"tempuser-service-tp.xml"}), RunTempuserServiceTp},
        {"XmlParseTandemTempuserSipInfo", Answers({"tempuser-sipinfo.xml"}),
         FlatRecordRunner(XmlParseTandemTempuserSipInfo)},
        {"XmlParseTempuserConfInfo", Answers({"tempuser-confinfo.xml"}), FlatRecordRunner(XmlParseTempuserConfInfo)},
        {"XmlParseBigParamConfInfo", Answers({"tempuser-bigparam.xml", "tempuser-confinfo.xml"}),
         FlatRecordRunner(XmlParseBigParamConfInfo)},
        {"XmlParseTempuserAccountInfo", Answers({"tempuser-account.xml"}),
         FlatRecordRunner(XmlParseTempuserAccountInfo)},
        {"XmlParseGetServiceTPFromRandom", Answers({"nearby-access.xml"}), RunServiceTpFromRandom},
        {"XmlGetSoapBodyNode", Answers({"soap-endpoint.xml"}), RunSoapBodyNode},
        {"XmlGetStringValueByKeyFromJson", {pcScannerText}, RunJsonScanner},
        {"XmlParseGetSiteInfoResult", Answers({"soap-endpoint.xml"}), FlatRecordRunner(XmlParseGetSiteInfoResult)},
        {"JsonParseUniCallCfgResult", Answers({"unicall.json"}), JsonRecordRunner(JsonParseUniCallCfgResult)},
        {"JsonBuildSetUniCallCfgBody", Answers({"unicall.json"}), RunUniCallBuild},
        {"JsonParseLinkedPhoneResult", Answers({"linked-phone.json"}), JsonRecordRunner(JsonParseLinkedPhoneResult)},
        {"JsonBuildSetLinkedPhoneInfoBody", Answers({"linked-phone.json"}), RunLinkedPhoneSetBuild},
        {"JsonBuildGetLinkedPhoneInfoBody", Answers({"linked-phone.json"}), RunLinkedPhoneGetBuild},
    };
}

} // namespace

std::string ReadAnswer(const std::string &strName)
{
    std::string strPath = std::string(HARDENING_DATA_DIR) + "/" + strName;
    if (access(strPath.c_str(), R_OK) != 0) {
        ADD_FAILURE() << "missing answer " << strPath;
        return "";
    }
    return ReadWholeFile(strPath);
}

std::string FlattenSite(const tagLOGIN_S_SITE *pstSite)
{
    if (pstSite == nullptr) {
        return "-";
    }
    tagLOGIN_S_SITE stCopy;
    std::memcpy(&stCopy, pstSite, sizeof(stCopy));
    stCopy.pstAccessServer = nullptr;
    return BytesOf(stCopy) + "|groups:" + BytesOfArray(pstSite->pstAccessServer, pstSite->uiNumOfAccessServer);
}

std::string FlattenUser(const tagLOGIN_S_ATRIUM_USER_INFO &stUser)
{
    tagLOGIN_S_ATRIUM_USER_INFO stCopy;
    std::memcpy(&stCopy, &stUser, sizeof(stCopy));
    stCopy.pstSiteInfo = nullptr;
    stCopy.stSipServerList.pstServer = nullptr;
    stCopy.pstExtraParm = nullptr;
    return BytesOf(stCopy) + "|site:" + FlattenSite(stUser.pstSiteInfo) +
           "|sip:" + BytesOfArray(stUser.stSipServerList.pstServer, stUser.stSipServerList.uiNum) +
           "|extra:" + BytesOfArray(stUser.pstExtraParm, stUser.uiExtraParmNum);
}

std::string FlattenTempUser(const tagXML_S_TANDEM_TEMPUSER_INFO &stTempUser)
{
    tagXML_S_TANDEM_TEMPUSER_INFO stCopy;
    std::memcpy(&stCopy, &stTempUser, sizeof(stCopy));
    stCopy.pstSite = nullptr;
    return BytesOf(stCopy) + "|site:" + FlattenSite(stTempUser.pstSite);
}

DeterministicResolver::DeterministicResolver()
{
    LoginServiceSetResolver(&ResolveFromName, nullptr);
}

DeterministicResolver::~DeterministicResolver()
{
    LoginServiceSetResolver(nullptr, nullptr);
}

ThreadTraces::ThreadTraces() : m_uiSavedLevel(LoginServiceGetTraceLevel())
{
    LoginServiceSetTraceSink(&KeepTraceOfThisThread, nullptr);
    LoginServiceSetTraceLevel(LOGIN_TRACE_DUMP);
}

ThreadTraces::~ThreadTraces()
{
    LoginServiceSetTraceSink(nullptr, nullptr);
    LoginServiceSetTraceLevel(m_uiSavedLevel);
}

std::vector<std::string> ThreadTraces::Take()
{
    std::vector<std::string> vecTaken;
    vecTaken.swap(t_vecTraces);
    return vecTaken;
}

const std::vector<CatalogueEntry> &Catalogue()
{
    static const std::vector<CatalogueEntry> s_vecCatalogue = BuildCatalogue();
    return s_vecCatalogue;
}

std::string ScratchPath(const std::string &strTag)
{
    static std::atomic<uint32_t> s_uiNext{0};
    const char *pcTmp = std::getenv("TMPDIR");
    return std::string(pcTmp != nullptr && *pcTmp != '\0' ? pcTmp : "/tmp") + "/atrium-hardening-" +
           std::to_string(getpid()) + "-" + strTag + "-" + std::to_string(s_uiNext.fetch_add(1));
}

} // namespace hardening
