/*
 * Result codes: every code a parser can return has its own text, the same static text on
 * every call, and a code that is neither the module's nor the XML library's says so.
 */
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "atrium_frame.h"

namespace {

const char *const UNKNOWN = "not a code of this module";

/* Every code the module's functions return, and those the XML library passes them. */
const uint32_t g_auiModuleCodes[] = {
    ATRIUM_OK,           ATRIUM_FAILED,        ATRIUM_NULL_ARGUMENT,          ATRIUM_RANDOM_KEY_NOT_FOUND,
    ATRIUM_NO_MEMORY_FOR_BODY, ATRIUM_NOT_XML, ATRIUM_NOT_RESOLVED,           ATRIUM_SERVER_ERROR,
    ATRIUM_TOO_MANY_LINKED_PHONES, ATRIUM_GUEST_NOT_FOUND, ATRIUM_RANDOM_KEY_UNAUTHORIZED,
    ATRIUM_RANDOM_KEY_FORBIDDEN, ATRIUM_RANDOM_KEY_TOO_LARGE, ATRIUM_RANDOM_KEY_SERVER_11029,
    ATRIUM_RANDOM_KEY_SERVER_11028, ATRIUM_NOT_JSON, QEV_EINVAL, QEV_ERANGE, QEV_EOVERLAP,
};

const uint32_t g_auiLibraryCodes[] = {
    KTL_XML_ERR_NULL_ARG,  KTL_XML_ERR_NOT_FOUND,       KTL_XML_ERR_BAD_PATH, KTL_XML_ERR_NO_MEMORY,
    KTL_XML_ERR_NO_ROOT,   KTL_XML_ERR_NOT_WELL_FORMED, KTL_XML_ERR_INJECTED, KTL_XML_ERR_TEXT_OUTSIDE_ROOT,
};

TEST(ResultText, EveryCodeOfTheModuleHasItsOwnText)
{
    for (const uint32_t uiCode : g_auiModuleCodes) {
        const char *pcText = AtriumResultText(uiCode);
        ASSERT_NE(pcText, nullptr) << uiCode;
        EXPECT_STRNE(pcText, UNKNOWN) << uiCode;
        EXPECT_GT(std::strlen(pcText), 3u) << uiCode;
        EXPECT_EQ(AtriumResultText(uiCode), pcText) << "the same static text on every call";
    }
    EXPECT_STREQ(AtriumResultText(ATRIUM_OK), "success");
    EXPECT_STREQ(AtriumResultText(ATRIUM_RANDOM_KEY_FORBIDDEN), "the server answered 403 for the random key");
}

TEST(ResultText, EveryCodeOfTheXmlLibraryHasItsOwnText)
{
    for (const uint32_t uiCode : g_auiLibraryCodes) {
        EXPECT_STRNE(AtriumResultText(uiCode), UNKNOWN) << std::hex << uiCode;
    }
    EXPECT_STREQ(AtriumResultText(KTL_XML_ERR_NOT_WELL_FORMED), "not well-formed XML: more than one root element");
    EXPECT_STREQ(AtriumResultText(KTL_XML_ERR_TEXT_OUTSIDE_ROOT),
                 "not well-formed XML: text outside the root element");
}

TEST(ResultText, AParseFailureIsToldByTheParsersStatus)
{
    for (const char *pcText : {"<r>", "<r></s>", "<r a=1/>", "<r><!-- x</r>", "<<r/>"}) {
        _NODE *pstRoot = nullptr;
        const uint32_t uiCode = KTL_XML_Parse(pcText, &pstRoot);
        ASSERT_GT(uiCode, KTL_XML_ERR_PARSE_BASE) << pcText;
        const std::string strText = AtriumResultText(uiCode);
        EXPECT_EQ(strText.rfind("not well-formed XML: ", 0), 0u) << strText;
        EXPECT_GT(strText.size(), std::strlen("not well-formed XML: ")) << pcText;
    }
    EXPECT_STREQ(AtriumResultText(KTL_XML_ERR_PARSE_BASE + 14), "not well-formed XML: Start-end tags mismatch");
}

TEST(ResultText, ACodeOfNeitherSaysSo)
{
    for (const uint32_t uiCode : {3u, 6u, 38u, 255u, 0x1000u, 0x1009u, KTL_XML_ERR_PARSE_BASE, 0x1300u, 0xFFFFFFFFu}) {
        EXPECT_STREQ(AtriumResultText(uiCode), UNKNOWN) << std::hex << uiCode;
    }
}

} // namespace
