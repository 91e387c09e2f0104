/*
 * fuzz_conference - the conference server's answers and the guest user's: login, version,
 * random key (and its error-code map), search, service sites, SIP identity, conference
 * parameters in both forms, account and the nearby-access block. The first byte picks the
 * function, the rest is the answer.
 */
#include "fuzz_support.h"

using namespace atrium_fuzz;

namespace {

template <size_t N>
void CheckAddressList(uint32_t uiCount, const char (&aacList)[N][256])
{
    FUZZ_CHECK(uiCount <= N);
    for (uint32_t i = 0; i < uiCount; ++i) {
        CheckTerminated(aacList[i]);
    }
}

void Login(const Text &body)
{
    auto stResult = Cleared<tagXML_S_TANDEM_LOGIN_RESULT>();
    CallFrame frame;
    uint32_t uiRet = XmlParseTandmLoginResult(body.c_str(), &stResult);
    FUZZ_CHECK(IsResultOrLibraryCode(uiRet, {0, 1}));
    CheckTerminated(stResult.stResult.acResultDesc);
    CheckTerminated(stResult.stProfile.acToken);
    CheckTerminated(stResult.stProfile.acSupportMediaTypes);
    CheckAddressList(stResult.stEua.uiAddressNum, stResult.stEua.acAddress);
    CheckTerminated(stResult.stEua.acBaseDN);
    CheckTerminated(stResult.stSip.acAuthName);
    CheckAddressList(stResult.stStg.uiStgNum, stResult.stStg.acStgAddress);
    CheckAddressList(stResult.stStg.uiSbcNum, stResult.stStg.acSbcInnerAddress);
    CheckAddressList(stResult.stTms.uiTmsNum, stResult.stTms.acAddress);
    CheckAddressList(stResult.stAtrium.uiAtriumNum, stResult.stAtrium.acAddress);
    frame.Finish();
}

void Version(const Text &body)
{
    auto stVersion = Cleared<tagXML_S_TANDEM_VERSION_RESULT>();
    CallFrame frame;
    uint32_t uiRet = XmlParseGetTandemVersionResult(body.c_str(), &stVersion);
    FUZZ_CHECK(IsResultOrLibraryCode(uiRet, {0, 5}));
    CheckTerminated(stVersion.acResultDesc);
    CheckTerminated(stVersion.acVersionNumber);
    frame.Finish();
}

void Random(const Text &body)
{
    auto stRandom = Cleared<tagXML_S_TANDEM_RANDOM_RESULT>();
    CallFrame frame;
    uint32_t uiRet = XmlParseTandemRandomResult(body.c_str(), &stRandom);
    FUZZ_CHECK(IsResultOrLibraryCode(uiRet, {0, 1, 2, 11, 35, 36, 37, 39, 40}));
    CheckTerminated(stRandom.acSiteUrl);
    CheckTerminated(stRandom.acRandom);
    /* A server error code returns with the document kept. */
    frame.Finish(1);
}

void RandomErrorcode(const uint8_t *pucData, size_t uiSize)
{
    uint32_t uiCode = 0;
    std::memcpy(&uiCode, pucData, uiSize < sizeof(uiCode) ? uiSize : sizeof(uiCode));
    uint32_t uiRet = XmlParseTandemRandomErrorcode(uiCode);
    FUZZ_CHECK(uiRet == 2 || uiRet == 11 || (uiRet >= 35 && uiRet <= 40 && uiRet != 38));
}

void Search(const Text &body)
{
    auto stSearch = Cleared<tagXML_S_TANDEM_SEARCH_RESULT>();
    CallFrame frame;
    uint32_t uiRet = XmlParseTandemSearchResult(body.c_str(), &stSearch);
    FUZZ_CHECK(IsResultOrLibraryCode(uiRet, {0}));
    FUZZ_CHECK(stSearch.uiSiteNum <= 5);
    for (uint32_t i = 0; i < stSearch.uiSiteNum; ++i) {
        FUZZ_CHECK(stSearch.auiPriority[i] != 0);
        CheckTerminated(stSearch.acSsoHostName[i]);
    }
    frame.Finish();
}

void ServiceSites(const Text &body, uint8_t ucSelector)
{
    auto stTemp = Cleared<tagXML_S_TANDEM_TEMPUSER_INFO>();
    CallFrame frame;
    uint32_t uiRet =
        XmlParseTandemTempuserServiceTp(body.c_str(), (ucSelector & 0x80) ? "" : "sso.b.example", &stTemp);
    FUZZ_CHECK(IsResultOrLibraryCode(uiRet, {0, 1}));
    FUZZ_CHECK((uiRet == 0) == (stTemp.pstSite != nullptr));
    CheckTempUser(stTemp);
    ReleaseTempUserHandedOver(stTemp);
    frame.Finish();
}

template <typename Record>
Record ParseTempUser(uint32_t (*pfnParse)(const char *, Record *), const Text &body,
                     std::initializer_list<uint32_t> listResults, uint32_t uiMayKeep)
{
    auto stRecord = Cleared<Record>();
    CallFrame frame;
    uint32_t uiRet = pfnParse(body.c_str(), &stRecord);
    FUZZ_CHECK(IsResultOrLibraryCode(uiRet, listResults));
    frame.Finish(uiMayKeep);
    return stRecord;
}

void Account(const Text &body)
{
    auto stAccount = ParseTempUser(XmlParseTempuserAccountInfo, body, {0, 5}, 0);
    CheckTerminated(stAccount.acAccount);
    CheckTerminated(stAccount.acPassword);
    CheckTerminated(stAccount.acAccessUrl);
    CheckTerminated(stAccount.acSecondAccessUrl);
}

void NearbyAccess(const Text &body)
{
    char *pcServiceTp = nullptr;
    CallFrame frame;
    uint32_t uiRet = XmlParseGetServiceTPFromRandom(body.c_str(), &pcServiceTp);
    FUZZ_CHECK(IsResultOrLibraryCode(uiRet, {0, 1}));
    FUZZ_CHECK((uiRet == 0) == (pcServiceTp != nullptr));
    KOSA_MemFreeD(pcServiceTp, __LINE__, __FILE__);
    frame.Finish();
}

} // namespace

ATRIUM_FUZZ_TARGET(FuzzConference)
{
    const std::optional<SelectedBody> pInput = SelectBody(pucData, uiSize);
    if (!pInput) {
        return 0;
    }
    const uint8_t ucSelector = pInput->ucSelector;
    const Text &body = pInput->body;
    switch (ucSelector % 11) {
    case 0:
        Login(body);
        break;
    case 1:
        Version(body);
        break;
    case 2:
        Random(body);
        break;
    case 3:
        RandomErrorcode(pucData + 1, uiSize - 1);
        break;
    case 4:
        Search(body);
        break;
    case 5:
        ServiceSites(body, ucSelector);
        break;
    case 6:
        CheckTempUser(ParseTempUser(XmlParseTandemTempuserSipInfo, body, {0, 11, 34}, 1));
        break;
    case 7:
        CheckTempUser(ParseTempUser(XmlParseTempuserConfInfo, body, {0, 5}, 0));
        break;
    case 8:
        CheckTempUser(ParseTempUser(XmlParseBigParamConfInfo, body, {0, 5}, 0));
        break;
    case 9:
        Account(body);
        break;
    default:
        NearbyAccess(body);
        break;
    }
    return 0;
}
