/* A program outside the project: parses one answer through the installed module. */
#include <stdio.h>
#include <string.h>

#include "atrium_xml.h"
#include "login_service.h"

int main(void)
{
    static const char acBody[] =
        "<UserInfo><LoginToken><AccessToken>installed</AccessToken><ExpireIn>0x10</ExpireIn>"
        "</LoginToken></UserInfo>";
    tagLOGIN_S_ATRIUM_USER_INFO stUser;
    uint32_t uiRet;
    memset(&stUser, 0, sizeof(stUser));
    uiRet = XmlParseAtriumAuthToken(acBody, &stUser);
    printf("result=%u token=%s expire=%u\n", uiRet, stUser.acAccessToken, stUser.uiExpireIn);
    return (uiRet == 0 && strcmp(stUser.acAccessToken, "installed") == 0 && stUser.uiExpireIn == 16) ? 0 : 1;
}
