/*
 * fuzz_ktl_xml - the XML document library on its own: any text either fails with a code
 * above 255 and no document, or gives a document whose every element can be walked, named,
 * valued, counted and looked up by a dotted path, and which is then released. The first byte
 * splits the input into a dotted path (looked up from the root) and the text. Every lookup
 * must find the very element a walk from the first child finds, by the path's text and by
 * the path split.
 */
#include <algorithm>
#include <cstring>
#include <vector>

#include "fuzz_support.h"
#include "ktl_xml_ext.h"
#include "reference_lookup.h"

using namespace atrium_fuzz;

namespace {

/* What a lookup of strPath from pstStart must give: the walk from the first child, or
 * KTL_XML_ERR_BAD_PATH for an empty path or component. */
uint32_t WalkPath(_NODE *pstStart, const std::string &strPath, _NODE **ppstFound)
{
    *ppstFound = nullptr;
    std::vector<std::string> vecComps(1);
    for (char c : strPath) {
        if (c == '.') {
            vecComps.emplace_back();
        } else {
            vecComps.back() += c;
        }
    }
    for (const std::string &strComp : vecComps) {
        if (strComp.empty()) {
            return KTL_XML_ERR_BAD_PATH;
        }
    }
    *ppstFound = WalkFromFirstChild(pstStart, vecComps);
    return *ppstFound != nullptr ? 0 : KTL_XML_ERR_NOT_FOUND;
}

/* Looks strPath up, by its text and split, and checks both results against the walk. A
 * path that cannot be split (refused, or of too many components) is refused split. */
void CheckLookup(_NODE *pstRoot, const std::string &strPath)
{
    _NODE *pstExpected = nullptr;
    const uint32_t uiExpected = WalkPath(pstRoot, strPath, &pstExpected);
    _NODE *pstFound = nullptr;
    FUZZ_CHECK(KTL_XML_GetNodeByUrl(pstRoot, strPath.c_str(), &pstFound) == uiExpected);
    FUZZ_CHECK(pstFound == pstExpected);

    const KTL_XML_PATH stSplit = ktl_xml::CompilePath(strPath.c_str());
    const bool bSplittable = uiExpected != KTL_XML_ERR_BAD_PATH &&
                             std::count(strPath.begin(), strPath.end(), '.') <
                                 static_cast<std::ptrdiff_t>(KTL_XML_PATH_STEPS_MAX) &&
                             strPath.size() <= 0xFFFF;
    FUZZ_CHECK((stSplit.uiSteps != 0) == bSplittable);
    pstFound = nullptr;
    FUZZ_CHECK(KTL_XML_GetNodeByPath(pstRoot, &stSplit, &pstFound) ==
               (bSplittable ? uiExpected : KTL_XML_ERR_BAD_PATH));
    FUZZ_CHECK(pstFound == (bSplittable ? pstExpected : nullptr));
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
    /* The path, each of its shorter prefixes, then the path again: lookups that go on from
     * where earlier ones stopped. */
    const std::string strPath = path.c_str();
    for (size_t uiDot = strPath.find('.'); uiDot != std::string::npos; uiDot = strPath.find('.', uiDot + 1)) {
        CheckLookup(pstRoot, strPath.substr(0, uiDot));
    }
    CheckLookup(pstRoot, strPath);
    CheckLookup(pstRoot, strPath);
    KTL_XML_FreeNode(pstRoot);
    frame.Finish();
    return 0;
}
