/*
 * result_text.cpp - what each result code means, in a few words.
 *
 * One table for the module's own codes and the bounded copy's codes that the token
 * information passes through; the XML document library gives the texts of its own codes
 * (above 255). Codes that are neither get one text that says so.
 */
#include "atrium_frame.h"

namespace {

struct CodeText {
    uint32_t uiCode;
    const char *pcText;
};

const CodeText g_astCodeTexts[] = {
    {ATRIUM_OK, "success"},
    {ATRIUM_FAILED, "failed: a required key is missing, an allocation failed or the answer was rejected"},
    {ATRIUM_NULL_ARGUMENT, "a null argument (from a random key: the server answered 404)"},
    {ATRIUM_NO_MEMORY_FOR_BODY, "no memory for the request body"},
    {ATRIUM_NOT_XML, "not XML"},
    {ATRIUM_NOT_RESOLVED, "a host name could not be resolved"},
    {ATRIUM_SERVER_ERROR, "the server answered an error code (or a linked-phone answer lists 30 identities or more)"},
    {QEV_EINVAL, "a value could not be copied"},
    {ATRIUM_GUEST_NOT_FOUND, "the server answered 404 for the guest (from the token information: the token does "
                             "not fit its field)"},
    {ATRIUM_RANDOM_KEY_UNAUTHORIZED, "the server answered 401 for the random key"},
    {ATRIUM_RANDOM_KEY_FORBIDDEN, "the server answered 403 for the random key"},
    {ATRIUM_RANDOM_KEY_TOO_LARGE, "the server answered 413 for the random key"},
    {ATRIUM_RANDOM_KEY_SERVER_11029, "the server answered 11029 for the random key"},
    {ATRIUM_RANDOM_KEY_SERVER_11028, "the server answered 11028 for the random key"},
    {ATRIUM_NOT_JSON, "not JSON"},
    {QEV_EOVERLAP, "a value overlaps its field"},
};

static_assert(QEV_ERANGE == ATRIUM_GUEST_NOT_FOUND, "one text tells both meanings of 34");

} // namespace

const char *AtriumResultText(uint32_t uiCode)
{
    for (const CodeText &stEntry : g_astCodeTexts) {
        if (stEntry.uiCode == uiCode) {
            return stEntry.pcText;
        }
    }
    const char *pcLibraryText = KTL_XML_CodeText(uiCode);
    return pcLibraryText != nullptr ? pcLibraryText : "not a code of this module";
}
