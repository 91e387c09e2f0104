/*
 * fuzz_portal - the portal server's answers: login, search, authentication token, server
 * list, token information, right configuration and the profile save. The first byte picks
 * the function, the rest is the answer.
 */
#include "fuzz_support.h"

using namespace atrium_fuzz;

namespace {

/* The own host the login answer's sites are matched against: one the seeds carry, and an
 * empty one. */
const char *OwnHost(uint8_t ucSelector)
{
    return (ucSelector & 0x80) != 0 ? "" : "sso.a.example";
}

void Login(const Text &body, uint8_t ucSelector)
{
    auto stUser = Cleared<tagLOGIN_S_ATRIUM_USER_INFO>();
    CallFrame frame;
    uint32_t uiRet = XmlParseAtriumLoginResult(body.c_str(), OwnHost(ucSelector), &stUser);
    FUZZ_CHECK(IsResultOrLibraryCode(uiRet, {0, 1}));
    CheckUser(stUser);
    ReleaseUserHandedOver(stUser);
    /* An extra parameter whose value cannot be read returns with the document kept. */
    frame.Finish(uiRet > 255 ? 1 : 0);
}

void Search(const Text &body)
{
    auto stResult = Cleared<tagLOGIN_S_ATRIUM_SEARCH_RESULT>();
    CallFrame frame;
    uint32_t uiRet = XmlParseAtriumSearchResult(body.c_str(), &stResult);
    FUZZ_CHECK(IsResultOrLibraryCode(uiRet, {0}));
    FUZZ_CHECK(stResult.uiSiteNum <= LOGIN_SEARCH_SITE_MAX);
    for (uint32_t i = 0; i < stResult.uiSiteNum; ++i) {
        FUZZ_CHECK(stResult.auiPriority[i] != 0);
        FUZZ_CHECK(stResult.aacSiteUri[i][0] != '\0');
        CheckTerminated(stResult.aacSiteUri[i]);
    }
    frame.Finish();
}

void AuthToken(const Text &body)
{
    auto stUser = Cleared<tagLOGIN_S_ATRIUM_USER_INFO>();
    CallFrame frame;
    uint32_t uiRet = XmlParseAtriumAuthToken(body.c_str(), &stUser);
    FUZZ_CHECK(IsResultOrLibraryCode(uiRet, {0, 1}));
    FUZZ_CHECK((uiRet == 0) == (stUser.uiDeployMode == 3));
    CheckUser(stUser);
    frame.Finish();
}

void ServerList(const Text &body)
{
    auto stUser = Cleared<tagLOGIN_S_ATRIUM_USER_INFO>();
    CallFrame frame;
    uint32_t uiRet = XmlParseAtriumGetServerListRst(body.c_str(), &stUser);
    FUZZ_CHECK(IsResultOrLibraryCode(uiRet, {0, 1}));
    CheckUser(stUser);
    ReleaseUserHandedOver(stUser);
    frame.Finish();
}

void TokenInfo(const Text &body)
{
    auto stInfo = Cleared<tagLOGIN_S_ATRIUM_TOKEN_INFO>();
    CallFrame frame;
    (void)XmlParseAtriumTokenInfo(body.c_str(), &stInfo);
    CheckTerminated(stInfo.acAccessToken);
    CheckTerminated(stInfo.acAccount);
    CheckTerminated(stInfo.acPassword);
    /* A missing token or lifetime returns with the document kept. */
    frame.Finish(1);
}

void RightConfig(const Text &body)
{
    auto stConfig = Cleared<tagLOGIN_S_ATRIUM_RIGHT_CONFIG>();
    CallFrame frame;
    uint32_t uiRet = XmlParseAtriumRightConfig(body.c_str(), ScratchFile(), &stConfig);
    CheckTerminated(stConfig.acDevKey);
    CheckTerminated(stConfig.acDevType);
    CheckTerminated(stConfig.acTimestamp);
    /* A saved profile returns with the document kept. */
    frame.Finish(uiRet == 0 ? 1 : 0);
}

void SaveBody(const Text &body)
{
    CallFrame frame;
    FUZZ_CHECK(XmlSaveAtriumXmlBody(body.c_str(), ScratchFile()) == 0);
    frame.Finish();
}

} // namespace

ATRIUM_FUZZ_TARGET(FuzzPortal)
{
    const std::optional<SelectedBody> pInput = SelectBody(pucData, uiSize);
    if (!pInput) {
        return 0;
    }
    const uint8_t ucSelector = pInput->ucSelector;
    const Text &body = pInput->body;
    switch (ucSelector % 7) {
    case 0:
        Login(body, ucSelector);
        break;
    case 1:
        Search(body);
        break;
    case 2:
        AuthToken(body);
        break;
    case 3:
        ServerList(body);
        break;
    case 4:
        TokenInfo(body);
        break;
    case 5:
        RightConfig(body);
        break;
    default:
        SaveBody(body);
        break;
    }
    return 0;
}
