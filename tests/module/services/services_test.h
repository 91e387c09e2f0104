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
