/*
 * fuzz_support.cpp - the frame around every fuzzed call (see fuzz_support.h): quiet
 * login-service doubles, deterministic random numbers, the document ledger behind --wrap,
 * and the record invariants every target checks.
 */
#include "fuzz_support.h"

#include <arpa/inet.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "login_service_default.h"

extern "C" uint32_t __real_KTL_XML_Parse(const char *pcText, _NODE **ppstRoot);
extern "C" void __real_KTL_XML_FreeNode(_NODE *pstRoot);

namespace {

/* Roots parsed since the last CallFrame::Finish() and not yet released. */
std::vector<_NODE *> g_vecOpenRoots;

std::string g_strScratchFile;

uint32_t g_uiRandomState = 1;

uint32_t NextRandom(void *)
{
    g_uiRandomState ^= g_uiRandomState << 13;
    g_uiRandomState ^= g_uiRandomState >> 17;
    g_uiRandomState ^= g_uiRandomState << 5;
    return g_uiRandomState;
}

uint32_t HashOf(const uint8_t *pucData, size_t uiSize)
{
    uint32_t uiHash = 2166136261u;
    for (size_t i = 0; i < uiSize; ++i) {
        uiHash = (uiHash ^ pucData[i]) * 16777619u;
    }
    return uiHash;
}

/* Every trace is formatted (so that a bad argument shows) and then dropped. */
void DropTrace(void *, uint32_t, const char *, const char *, uint32_t, const char *pcMessage)
{
    volatile char cFirst = pcMessage != nullptr ? pcMessage[0] : '\0';
    (void)cFirst;
}

/* No network: "unresolvable.*" fails, any other name gives up to twelve addresses derived
 * from the name, so both the failure trace and a full answer (and its overflow of the
 * 256-byte field) are reachable. */
uint32_t ResolveFromName(void *, const char *pcHost, uint32_t, tagLOGIN_S_SRV_IP_ENTRY *pstEntries, uint32_t *puiCount)
{
    if (std::strncmp(pcHost, "unresolvable.", 13) == 0) {
        return 99;
    }
    uint32_t uiHash = HashOf(reinterpret_cast<const uint8_t *>(pcHost), std::strlen(pcHost));
    uint32_t uiWanted = uiHash % 13;
    uint32_t uiFilled = 0;
    for (; uiFilled < uiWanted && uiFilled < *puiCount; ++uiFilled) {
        /* Every fifth entry is empty (address 0), which the module skips. */
        pstEntries[uiFilled].uiAddr =
            (uiFilled % 5 == 4) ? 0 : htonl(0xC0A80000u | (uiHash & 0xFF00u) | (uiFilled + 1));
    }
    *puiCount = uiFilled;
    return 0;
}

template <typename Item>
void CheckEach(const Item *pstItems, uint32_t uiCount, void (*pfnCheck)(const Item &))
{
    for (uint32_t i = 0; pstItems != nullptr && i < uiCount; ++i) {
        pfnCheck(pstItems[i]);
    }
}

void CheckFlag(uint32_t uiFlag)
{
    FUZZ_CHECK(uiFlag <= 1);
}

void CheckStg(const tagLOGIN_S_STG_GROUP &stStg)
{
    using atrium_fuzz::CheckTerminated;
    CheckTerminated(stStg.acStgUri);
    CheckTerminated(stStg.acAuthAccount);
    CheckTerminated(stStg.acAuthPwd);
    CheckTerminated(stStg.acSipStgUri);
    CheckTerminated(stStg.acEserverStgAddr);
    CheckTerminated(stStg.acEserverStg1Addr);
    CheckTerminated(stStg.acMaaStgUri);
    CheckTerminated(stStg.acMaaStg1Uri);
    for (const auto &acUri : stStg.aacMsStgUri) {
        CheckTerminated(acUri);
    }
}

void CheckGroup(const tagLOGIN_S_ACCESS_SERVER &stGroup)
{
    using atrium_fuzz::CheckTerminated;
    for (const auto *pacField :
         {&stGroup.acName,           &stGroup.acSipUri,       &stGroup.acSvnUri,         &stGroup.acHttpsProxyUri,
          &stGroup.acEserverAddr,    &stGroup.acEserver1Addr, &stGroup.acConfUri,        &stGroup.acConfType,
          &stGroup.acMaaUri,         &stGroup.acMaa1Uri,      &stGroup.acAndroidPushUri, &stGroup.acMsParamUri,
          &stGroup.acMsParamPathUri, &stGroup.acEabUri,       &stGroup.acProPhotoUri,    &stGroup.acTmsTr069Uri,
          &stGroup.acEuaUri,         &stGroup.acSipTlsUri,    &stGroup.acMaaProxyAddr,   &stGroup.acMaaDrProxyAddr}) {
        CheckTerminated(*pacField);
    }
    for (const auto &acUri : stGroup.aacMsUri) {
        CheckTerminated(acUri);
    }
    CheckStg(stGroup.stStgGroup);
    CheckFlag(stGroup.uiSipTlsActive);
    CheckFlag(stGroup.uiSrtpActive);
    CheckFlag(stGroup.uiIsMainSite);
}

void CheckServer(const tagLOGIN_S_SERVER_ADDR_INFO &stServer)
{
    atrium_fuzz::CheckTerminated(stServer.acHost);
    FUZZ_CHECK(stServer.uiTransport <= LOGIN_TRANSPORT_TLS);
}

void CheckExtraParm(const tagLOGIN_S_EXTRA_PARM &stParm)
{
    atrium_fuzz::CheckTerminated(stParm.acName);
    atrium_fuzz::CheckTerminated(stParm.acValue);
}

void CheckUms(const tagLOGIN_S_UMS_INFO &stUms)
{
    atrium_fuzz::CheckTerminated(stUms.acDn);
    atrium_fuzz::CheckTerminated(stUms.acUmsAccount);
    atrium_fuzz::CheckTerminated(stUms.acPwd);
}

void RemoveScratch()
{
    std::remove(g_strScratchFile.c_str());
    std::remove(g_strScratchFile.substr(0, g_strScratchFile.rfind('/')).c_str());
}

} // namespace

extern "C" uint32_t __wrap_KTL_XML_Parse(const char *pcText, _NODE **ppstRoot)
{
    uint32_t uiRet = __real_KTL_XML_Parse(pcText, ppstRoot);
    if (uiRet == 0 && ppstRoot != nullptr && *ppstRoot != nullptr) {
        g_vecOpenRoots.push_back(*ppstRoot);
    }
    return uiRet;
}

extern "C" void __wrap_KTL_XML_FreeNode(_NODE *pstRoot)
{
    auto it = std::find(g_vecOpenRoots.begin(), g_vecOpenRoots.end(), pstRoot);
    if (it != g_vecOpenRoots.end()) {
        g_vecOpenRoots.erase(it);
    }
    __real_KTL_XML_FreeNode(pstRoot);
}

namespace atrium_fuzz {

void Fail(const char *pcWhat, const char *pcFile, int iLine)
{
    std::fprintf(stderr, "fuzz invariant broken at %s:%d: %s\n", pcFile, iLine, pcWhat);
    std::abort();
}

void Initialize()
{
    /* Installed for every input: a program that replays inputs between other tests may have
     * put its own doubles in between. */
    LoginServiceSetTraceSink(&DropTrace, nullptr);
    LoginServiceSetTraceLevel(LOGIN_TRACE_DUMP);
    LoginServiceSetResolver(&ResolveFromName, nullptr);
    if (!g_strScratchFile.empty()) {
        return;
    }
    const char *pcTmp = std::getenv("TMPDIR");
    std::string strTemplate = std::string(pcTmp != nullptr && *pcTmp != '\0' ? pcTmp : "/tmp") + "/atrium-fuzz-XXXXXX";
    std::vector<char> vecDir(strTemplate.begin(), strTemplate.end());
    vecDir.push_back('\0');
    FUZZ_CHECK(mkdtemp(vecDir.data()) != nullptr);
    g_strScratchFile = std::string(vecDir.data()) + "/profile";
    std::atexit(RemoveScratch);
}

const char *ScratchFile()
{
    return g_strScratchFile.c_str();
}

Text::Text(const std::string &strText) : m_pcText(new char[strText.size() + 1]), m_uiSize(strText.size())
{
    std::memcpy(m_pcText.get(), strText.c_str(), strText.size() + 1);
}

Text BodyOf(const uint8_t *pucData, size_t uiSize)
{
    std::string strBody(reinterpret_cast<const char *>(pucData), uiSize);
    return Text(strBody.substr(0, strBody.find('\0')));
}

std::optional<SelectedBody> SelectBody(const uint8_t *pucData, size_t uiSize)
{
    if (uiSize == 0) {
        return std::nullopt;
    }
    Initialize();
    SeedRandom(pucData, uiSize);
    return SelectedBody{pucData[0], BodyOf(pucData + 1, uiSize - 1)};
}

uint32_t OpenDocuments()
{
    return static_cast<uint32_t>(g_vecOpenRoots.size());
}

void SeedRandom(const uint8_t *pucData, size_t uiSize)
{
    g_uiRandomState = HashOf(pucData, uiSize) | 1u;
    QEV_CPYPT_SetRandomHook(&NextRandom, nullptr);
}

CallFrame::CallFrame() : m_uiBlocks(KOSA_MemLiveBlocks())
{
    FUZZ_CHECK(g_vecOpenRoots.empty());
}

void CallFrame::Finish(uint32_t uiMayKeep)
{
    FUZZ_CHECK(KOSA_MemLiveBlocks() == m_uiBlocks);
    FUZZ_CHECK(g_vecOpenRoots.size() <= uiMayKeep);
    while (!g_vecOpenRoots.empty()) {
        KTL_XML_FreeNode(g_vecOpenRoots.back());
    }
}

bool IsResultOrLibraryCode(uint32_t uiCode, std::initializer_list<uint32_t> listResults)
{
    return uiCode > 255 || std::find(listResults.begin(), listResults.end(), uiCode) != listResults.end();
}

void CheckSite(const tagLOGIN_S_SITE &stSite)
{
    CheckTerminated(stSite.acSiteName);
    CheckTerminated(stSite.acSbcDomain);
    CheckTerminated(stSite.acDefaultAccount);
    CheckTerminated(stSite.acDefaultPwd);
    CheckEach(stSite.pstAccessServer, stSite.uiNumOfAccessServer, CheckGroup);
}

void CheckUser(const tagLOGIN_S_ATRIUM_USER_INFO &stUser)
{
    for (const auto *pacField :
         {&stUser.acSipImpi, &stUser.acShortNumber, &stUser.acSipPassword, &stUser.acRealUserAccount,
          &stUser.acFileDockServiceType, &stUser.acFileDockAppId, &stUser.acPrivacyVersion, &stUser.acSipAccount}) {
        CheckTerminated(*pacField);
    }
    for (const auto *pacField : {&stUser.acAccessToken, &stUser.acSipDomain, &stUser.acEabUri, &stUser.acGroupServerUri,
                                 &stUser.acTmsTr069Uri, &stUser.acSname, &stUser.acFileDockServerAddr}) {
        CheckTerminated(*pacField);
    }
    CheckTerminated(stUser.acDisplayName);
    CheckTerminated(stUser.acTerminalScene);
    CheckEach(stUser.astUmsInfo, LOGIN_UMS_INFO_NUM, CheckUms);
    CheckFlag(stUser.bPwdTypeZero);
    CheckFlag(stUser.bSiteInfoValid);
    CheckFlag(stUser.bFirstLogin);
    CheckFlag(stUser.bHasUserType);
    FUZZ_CHECK(stUser.bSiteInfoValid == 0 || stUser.pstSiteInfo != nullptr);
    if (stUser.pstSiteInfo != nullptr) {
        CheckSite(*stUser.pstSiteInfo);
    }
    CheckEach(stUser.stSipServerList.pstServer, stUser.stSipServerList.uiNum, CheckServer);
    FUZZ_CHECK(stUser.uiExtraParmNum <= LOGIN_EXTRA_PARM_MAX);
    FUZZ_CHECK((stUser.uiExtraParmNum == 0) == (stUser.pstExtraParm == nullptr));
    CheckEach(stUser.pstExtraParm, stUser.uiExtraParmNum, CheckExtraParm);
}

void CheckTempUser(const tagXML_S_TANDEM_TEMPUSER_INFO &stTempUser)
{
    CheckTerminated(stTempUser.acImpu);
    CheckTerminated(stTempUser.acImpi);
    CheckTerminated(stTempUser.acPasswd);
    CheckTerminated(stTempUser.acDomain);
    CheckTerminated(stTempUser.acAccessCode);
    CheckTerminated(stTempUser.acConfId);
    CheckTerminated(stTempUser.acConfPwd);
    CheckTerminated(stTempUser.acAtriumUri);
    CheckTerminated(stTempUser.acChairmanPwd);
    CheckTerminated(stTempUser.acMediaType);
    CheckTerminated(stTempUser.acAccessAddress);
    CheckFlag(stTempUser.bPwdTypeZero);
    if (stTempUser.pstSite != nullptr) {
        CheckSite(*stTempUser.pstSite);
        FUZZ_CHECK(stTempUser.pstSite->pstAccessServer == nullptr || stTempUser.pstSite->uiNumOfAccessServer <= 3);
    }
}

} // namespace atrium_fuzz

#ifndef ATRIUM_FUZZ_REPLAY
/* libFuzzer's set-up hook, shared by every target (each links this file once). */
extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    atrium_fuzz::Initialize();
    return 0;
}
#endif
