/*
 * The inspector tells what a result code means with the module's own text: for every answer
 * kind and every code, its meaning is the kind's own words (which add what the generic text
 * cannot know, such as where the server's verdict is) or holds the module's text.
 */
#include <gtest/gtest.h>

#include <string>

#include "answers.h"
#include "atrium_xml.h"

using namespace atrium_tool;

namespace {

const uint32_t g_auiCodes[] = {
    ATRIUM_OK,           ATRIUM_FAILED,          ATRIUM_NULL_ARGUMENT,         ATRIUM_NO_MEMORY_FOR_BODY,
    ATRIUM_NOT_XML,      ATRIUM_NOT_RESOLVED,    ATRIUM_SERVER_ERROR,          ATRIUM_GUEST_NOT_FOUND,
    ATRIUM_RANDOM_KEY_UNAUTHORIZED,              ATRIUM_RANDOM_KEY_FORBIDDEN,  ATRIUM_RANDOM_KEY_TOO_LARGE,
    ATRIUM_RANDOM_KEY_SERVER_11029,              ATRIUM_RANDOM_KEY_SERVER_11028, ATRIUM_NOT_JSON,
    KTL_XML_ERR_NULL_ARG, KTL_XML_ERR_NOT_FOUND, KTL_XML_ERR_BAD_PATH,         KTL_XML_ERR_NO_MEMORY,
    KTL_XML_ERR_NO_ROOT, KTL_XML_ERR_NOT_WELL_FORMED, KTL_XML_ERR_TEXT_OUTSIDE_ROOT,
    KTL_XML_ERR_PARSE_BASE + 14,
};

bool HasOwnMeaning(const AnswerKind &stKind, uint32_t uiCode)
{
    for (const CodeMeaning &stMeaning : stKind.vecMeanings) {
        if (stMeaning.iCode == uiCode) {
            return true;
        }
    }
    return false;
}

TEST(ResultMeanings, TheInspectorTellsEveryCodeWithTheModulesText)
{
    for (const AnswerKind &stKind : AnswerKinds()) {
        for (const uint32_t uiCode : g_auiCodes) {
            const std::string strMeaning = ResultMeaning(stKind, uiCode);
            if (HasOwnMeaning(stKind, uiCode)) {
                continue;
            }
            EXPECT_NE(strMeaning.find(AtriumResultText(uiCode)), std::string::npos)
                << stKind.pcName << " " << uiCode << ": " << strMeaning;
        }
    }
}

TEST(ResultMeanings, EveryLibraryCodeIsKnownToTheInspector)
{
    for (const uint32_t uiCode : {KTL_XML_ERR_NOT_WELL_FORMED, KTL_XML_ERR_TEXT_OUTSIDE_ROOT, KTL_XML_ERR_INJECTED}) {
        const std::string strMeaning = LibraryCodeMeaning(uiCode);
        EXPECT_EQ(strMeaning.find("not a code"), std::string::npos) << strMeaning;
        EXPECT_EQ(strMeaning.rfind("XML library code 0x", 0), 0u) << strMeaning;
    }
    EXPECT_EQ(LibraryCodeMeaning(KTL_XML_ERR_NOT_WELL_FORMED),
              "XML library code 0x1006: not well-formed XML: more than one root element");
}

} // namespace
