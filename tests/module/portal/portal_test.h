/*
 * portal_test.h - small helpers shared by the portal answers' tests.
 */
#ifndef ATRIUM_XML_PORTAL_TEST_H
#define ATRIUM_XML_PORTAL_TEST_H

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "handed_over.h"
#include "module_test.h"

namespace portal_test {

/* The traces written under one function's name, as "L<level> <text>", in order. */
inline std::vector<std::string> TextsOf(const TraceCapture &traces, const std::string &strFunc)
{
    std::vector<std::string> vecTexts;
    for (const TraceLine &stLine : traces.Lines()) {
        if (stLine.strFunc == strFunc) {
            vecTexts.push_back("L" + std::to_string(stLine.uiLevel) + " " + stLine.strText);
        }
    }
    return vecTexts;
}

/* A selected group: its name and its uiIsMainSite flag. */
using GroupPick = std::pair<std::string, uint32_t>;

/* The selected site's groups in order, or none when no site or group array was built. */
inline std::vector<GroupPick> SelectedGroups(const tagLOGIN_S_ATRIUM_USER_INFO &stUser)
{
    std::vector<GroupPick> vecPicks;
    const tagLOGIN_S_SITE *pstSite = stUser.pstSiteInfo;
    if (pstSite == nullptr || pstSite->pstAccessServer == nullptr) {
        return vecPicks;
    }
    for (uint32_t i = 0; i < pstSite->uiNumOfAccessServer; ++i) {
        vecPicks.emplace_back(pstSite->pstAccessServer[i].acName, pstSite->pstAccessServer[i].uiIsMainSite);
    }
    return vecPicks;
}

/* A test of an answer rooted at UserInfo with a LoginToken (the authentication token and
 * the token information). */
class TokenAnswerTest : public ModuleTest {
protected:
    static std::string Answer(const std::string &strInner)
    {
        return "<?xml version=\"1.0\"?><UserInfo>" + strInner + "</UserInfo>";
    }
    static std::string Token(const std::string &strToken, const std::string &strExpire)
    {
        return "<LoginToken><AccessToken>" + strToken + "</AccessToken><ExpireIn>" + strExpire +
               "</ExpireIn></LoginToken>";
    }
};

/* A test of a parser that fills a portal user record: the record starts cleared, and what
 * the parser handed over is released after each test, as the login service does. */
class PortalUserTest : public ModuleTest {
protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        m_stUser = tagLOGIN_S_ATRIUM_USER_INFO{};
    }
    void TearDown() override
    {
        ReleaseUserHandedOver(m_stUser);
        ModuleTest::TearDown();
    }

    tagLOGIN_S_ATRIUM_USER_INFO m_stUser{};
};

} // namespace portal_test

#endif /* ATRIUM_XML_PORTAL_TEST_H */
