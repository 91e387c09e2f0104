/*
 * fuzz_ktl_xml - the XML document library on its own: any text either fails with a code
 * above 255 and no document, or gives a document whose every element can be walked, named,
 * valued, counted and looked up by a dotted path, and which is then released. The first byte
 * splits the input into a dotted path (looked up from the root) and the text.
 */
#include <cstring>
#include <vector>

#include "fuzz_support.h"

using namespace atrium_fuzz;

namespace {

/* The last component of a dotted path names the element found (bare or after a prefix). */
bool NameEndsPath(const char *pcName, const std::string &strPath)
{
    const std::string strLast = strPath.substr(strPath.rfind('.') + 1);
    const char *pcColon = std::strchr(pcName, ':');
    return strLast == pcName || (pcColon != nullptr && pcColon != pcName && strLast == pcColon + 1);
}

/* Walks every element (without recursion: documents nest deeper than any stack), checking
 * that the child count agrees with the sibling walk. Returns the number of elements. */
size_t WalkAll(_NODE *pstRoot)
{
    size_t uiElements = 0;
    std::vector<_NODE *> vecStack{pstRoot};
    while (!vecStack.empty()) {
        _NODE *pstNode = vecStack.back();
        vecStack.pop_back();
        ++uiElements;
        char *pcName = nullptr;
        char *pcValue = nullptr;
        FUZZ_CHECK(KTL_XML_GetNodeValue(pstNode, nullptr, 0, &pcName, &pcValue) == 0);
        FUZZ_CHECK(pcName != nullptr && pcName[0] != '\0');
        FUZZ_CHECK(pcValue == nullptr || pcValue[std::strspn(pcValue, " \t\r\n")] != '\0');
        char *pcAttr = nullptr;
        uint32_t uiAttr = KTL_XML_GetAttr(pstNode, 0, "uri", &pcAttr);
        FUZZ_CHECK((uiAttr == 0) == (pcAttr != nullptr));
        uint32_t uiCount = 0;
        FUZZ_CHECK(KTL_XML_GetNodeChildNum(pstNode, &uiCount) == 0);
        uint32_t uiWalked = 0;
        for (_NODE *pstChild = KTL_XML_GetNodeFirstChild(pstNode); pstChild != nullptr;
             pstChild = KTL_XML_GetNodeNextSibling(pstChild)) {
            vecStack.push_back(pstChild);
            ++uiWalked;
        }
        FUZZ_CHECK(uiWalked == uiCount);
    }
    return uiElements;
}

} // namespace

ATRIUM_FUZZ_TARGET(FuzzKtlXml)
{
    if (uiSize == 0) {
        return 0;
    }
    Initialize();
    const size_t uiPathLen = pucData[0] % 48 < uiSize - 1 ? pucData[0] % 48 : uiSize - 1;
    const Text path(std::string(reinterpret_cast<const char *>(pucData + 1), uiPathLen));
    const Text text = BodyOf(pucData + 1 + uiPathLen, uiSize - 1 - uiPathLen);

    CallFrame frame;
    _NODE *pstRoot = nullptr;
    uint32_t uiRet = KTL_XML_Parse(text.c_str(), &pstRoot);
    if (uiRet != 0) {
        FUZZ_CHECK(uiRet > 255);
        FUZZ_CHECK(pstRoot == nullptr);
        FUZZ_CHECK(OpenDocuments() == 0);
        frame.Finish();
        return 0;
    }
    FUZZ_CHECK(pstRoot != nullptr);
    FUZZ_CHECK(WalkAll(pstRoot) >= 1);
    _NODE *pstFound = nullptr;
    uiRet = KTL_XML_GetNodeByUrl(pstRoot, path.c_str(), &pstFound);
    FUZZ_CHECK((uiRet == 0) == (pstFound != nullptr));
    FUZZ_CHECK(uiRet == 0 || uiRet > 255);
    if (pstFound != nullptr) {
        char *pcName = nullptr;
        char *pcValue = nullptr;
        FUZZ_CHECK(KTL_XML_GetNodeValue(pstFound, nullptr, 0, &pcName, &pcValue) == 0);
        FUZZ_CHECK(NameEndsPath(pcName, path.c_str()));
    }
    KTL_XML_FreeNode(pstRoot);
    frame.Finish();
    return 0;
}
