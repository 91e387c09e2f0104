/*
 * services_test.h - helpers shared by the tests of the SOAP reply and the JSON services.
 */
#ifndef ATRIUM_XML_SERVICES_TEST_H
#define ATRIUM_XML_SERVICES_TEST_H

#include <json/json.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "module_test.h"

/* "KTL_XML_GetNodeByUrl <path> failed=0x1002", as the per-key step traces a missing key. */
inline std::string UrlMiss(const std::string &strPath)
{
    char acText[256];
    std::snprintf(acText, sizeof(acText), "KTL_XML_GetNodeByUrl %s failed=0x%x", strPath.c_str(),
                  KTL_XML_ERR_NOT_FOUND);
    return acText;
}

/* printf into a std::string (trace texts with codes). */
inline std::string Format(const char *pcFormat, uint32_t uiCode)
{
    char acText[256];
    std::snprintf(acText, sizeof(acText), pcFormat, uiCode);
    return acText;
}

/* A body a builder handed over: freed with the platform's free routine when the test's
 * scope ends, before the fixture counts the live blocks. */
struct OwnedBody {
    char *pcText = nullptr;
    uint32_t uiLen = 0xA5A5A5A5u;
    OwnedBody() = default;
    OwnedBody(const OwnedBody &) = delete;
    OwnedBody &operator=(const OwnedBody &) = delete;
    ~OwnedBody()
    {
        if (pcText != nullptr) {
            KOSA_MemFreeD(pcText, static_cast<uint32_t>(__LINE__), __FILE__);
        }
    }
};

/* Parses a JSON text the way the module reads answers (Json::Reader); fails the test when it
 * is not JSON. */
inline Json::Value ParseJsonBack(const std::string &strText)
{
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    Json::Reader stReader;
#pragma GCC diagnostic pop
    Json::Value stValue;
    EXPECT_TRUE(stReader.parse(strText, stValue, false)) << strText;
    return stValue;
}

/* A handed-over body is its text's length of bytes followed by a zero byte. */
inline void ExpectTerminatedBody(const OwnedBody &stBody)
{
    ASSERT_NE(stBody.pcText, nullptr);
    EXPECT_EQ(std::strlen(stBody.pcText), stBody.uiLen);
    EXPECT_EQ(stBody.pcText[stBody.uiLen], '\0');
}

#endif /* ATRIUM_XML_SERVICES_TEST_H */
