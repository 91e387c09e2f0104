/*
 * auth_token_demo.c - decodes portal authentication-token answers from files and prints
 * the fields the parser fills. Shows the embedding of the module from plain C: a cleared
 * record, one call, a result code, and the default login service for traces
 * (LOGIN_TRACE_LEVEL=0..3 on the environment shows them on stderr).
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "atrium_xml.h"

#define DEMO_MAX_BODY (16u * 1024u * 1024u)

/* Reads a whole file into a NUL-terminated heap buffer; null on failure. */
static char *ReadWholeFile(const char *pcPath)
{
    FILE *pFile = fopen(pcPath, "rb");
    char *pcBody = NULL;
    long lSize;
    if (pFile == NULL) {
        return NULL;
    }
    if (fseek(pFile, 0, SEEK_END) == 0 && (lSize = ftell(pFile)) >= 0 &&
        (unsigned long)lSize <= DEMO_MAX_BODY && fseek(pFile, 0, SEEK_SET) == 0) {
        pcBody = malloc((size_t)lSize + 1);
        if (pcBody != NULL && fread(pcBody, 1, (size_t)lSize, pFile) == (size_t)lSize) {
            pcBody[lSize] = '\0';
        } else {
            free(pcBody);
            pcBody = NULL;
        }
    }
    fclose(pFile);
    return pcBody;
}

static int DecodeOne(const char *pcPath)
{
    tagLOGIN_S_ATRIUM_USER_INFO stUser;
    uint32_t uiRet;
    char *pcBody = ReadWholeFile(pcPath);
    if (pcBody == NULL) {
        fprintf(stderr, "auth_token_demo: cannot read %s\n", pcPath);
        return 1;
    }
    memset(&stUser, 0, sizeof(stUser));
    uiRet = XmlParseAtriumAuthToken(pcBody, &stUser);
    free(pcBody);

    printf("%s\n", pcPath);
    printf("  result             %u (%s)\n", uiRet, AtriumResultText(uiRet));
    /* the token is a secret: its length tells whether it came through */
    printf("  acAccessToken      %u characters\n", (unsigned)strlen(stUser.acAccessToken));
    printf("  uiExpireIn         %u\n", stUser.uiExpireIn);
    printf("  acRealUserAccount  \"%s\"\n", stUser.acRealUserAccount);
    printf("  bFirstLogin        %u\n", stUser.bFirstLogin);
    printf("  uiPwdExpireTime    %u\n", stUser.uiPwdExpireTime);
    printf("  uiDeployMode       %u\n", stUser.uiDeployMode);
    return 0;
}

int main(int argc, char **argv)
{
    int iFailures = 0;
    int i;
    if (argc < 2) {
        fprintf(stderr, "usage: auth_token_demo ANSWER.xml...\n");
        return 2;
    }
    for (i = 1; i < argc; ++i) {
        iFailures += DecodeOne(argv[i]);
    }
    return iFailures == 0 ? 0 : 1;
}
