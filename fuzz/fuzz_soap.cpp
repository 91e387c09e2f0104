/*
 * fuzz_soap - the management service's SOAP reply: the envelope lookup, the substring
 * scanner over the embedded JSON (into a destination exactly as large as it claims, so a
 * write past it is caught) and the whole endpoint-message parse. The first byte picks the
 * function.
 */
#include <fuzzer/FuzzedDataProvider.h>

#include <vector>

#include "fuzz_support.h"

using namespace atrium_fuzz;

namespace {

void SoapBodyNode(const Text &body)
{
    _NODE *pstRoot = nullptr;
    _NODE *pstEnvelope = nullptr;
    _NODE *pstSoapBody = nullptr;
    CallFrame frame;
    uint32_t uiRet = XmlGetSoapBodyNode(body.c_str(), 0, &pstRoot, &pstEnvelope, &pstSoapBody);
    FUZZ_CHECK(uiRet == 0 || uiRet > 255);
    FUZZ_CHECK(uiRet != 0 || (pstEnvelope != nullptr && pstSoapBody != nullptr));
    FUZZ_CHECK(OpenDocuments() == (pstRoot != nullptr ? 1u : 0u));
    KTL_XML_FreeNode(pstRoot);
    frame.Finish();
}

void Scanner(const uint8_t *pucData, size_t uiSize)
{
    FuzzedDataProvider provider(pucData, uiSize);
    const Text key(provider.ConsumeRandomLengthString(24));
    const uint32_t uiDstSize = provider.ConsumeIntegralInRange<uint32_t>(1, 300);
    const Text json(provider.ConsumeRemainingBytesAsString());
    std::vector<char> vecDst(uiDstSize, '\0');
    XmlGetStringValueByKeyFromJson(key.c_str(), json.c_str(), vecDst.data(), uiDstSize);
}

void SiteInfoResult(const Text &body)
{
    auto stResult = Cleared<tagLOGIN_S_ENDPOINT_MSG_RESULT>();
    CallFrame frame;
    uint32_t uiRet = XmlParseGetSiteInfoResult(body.c_str(), &stResult);
    FUZZ_CHECK(IsResultOrLibraryCode(uiRet, {0, 1}));
    frame.Finish();
}

} // namespace

ATRIUM_FUZZ_TARGET(FuzzSoap)
{
    if (uiSize == 0) {
        return 0;
    }
    Initialize();
    const Text body = BodyOf(pucData + 1, uiSize - 1);
    switch (pucData[0] % 3) {
    case 0:
        SoapBodyNode(body);
        break;
    case 1:
        Scanner(pucData + 1, uiSize - 1);
        break;
    default:
        SiteInfoResult(body);
        break;
    }
    return 0;
}
