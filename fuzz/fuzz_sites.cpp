/*
 * fuzz_sites - the site machinery on its own: address resolution, the STG-group,
 * access-server and site parsers on any element of a fuzzed document, the whole site road of
 * the login answers (count, parse, select, list, release) with own and main site chosen by
 * the input, and the random draw. Input: a selector byte, a parameter byte, then the text.
 */
#include <set>
#include <vector>

#include "fuzz_support.h"

using namespace atrium_fuzz;

namespace {

using Site = tagLOGIN_S_SITE;

/* The element at position uiIndex of a depth-first walk (modulo the elements seen; the walk
 * stops after 4096 of them, so that a huge document costs the same as a small one). */
_NODE *NthElement(_NODE *pstRoot, uint32_t uiIndex)
{
    std::vector<_NODE *> vecSeen;
    std::vector<_NODE *> vecStack{pstRoot};
    while (!vecStack.empty() && vecSeen.size() < 4096) {
        _NODE *pstNode = vecStack.back();
        vecStack.pop_back();
        vecSeen.push_back(pstNode);
        for (_NODE *pstChild = KTL_XML_GetNodeFirstChild(pstNode); pstChild != nullptr;
             pstChild = KTL_XML_GetNodeNextSibling(pstChild)) {
            vecStack.push_back(pstChild);
        }
    }
    return vecSeen[uiIndex % vecSeen.size()];
}

void Resolve(const Text &uri, uint8_t ucParam)
{
    const uint32_t uiOutLen = 1 + ucParam;
    std::vector<char> vecOut(uiOutLen, '\0');
    uint32_t uiRet = XmlAtriumGetIpFromDomain(vecOut.data(), uiOutLen, uri.c_str());
    FUZZ_CHECK(uiRet == 0 || uiRet == 7);
    FUZZ_CHECK(vecOut[uiOutLen - 1] == '\0');
}

void ParseOneElement(_NODE *pstRoot, uint8_t ucSelector, uint8_t ucParam)
{
    _NODE *pstNode = NthElement(pstRoot, ucParam & 0x3F);
    switch (ucSelector % 3) {
    case 0: {
        auto stStg = Cleared<tagLOGIN_S_STG_GROUP>();
        FUZZ_CHECK(XmlAtriumParseStgInfo(pstNode, &stStg) == 0);
        CheckTerminated(stStg.acAuthAccount);
        CheckTerminated(stStg.acEserverStgAddr);
        CheckTerminated(stStg.aacMsStgUri[7]);
        break;
    }
    case 1: {
        auto stGroup = Cleared<tagLOGIN_S_ACCESS_SERVER>();
        /* The portal address goes to a buffer of exactly the capacity the input gives (or
         * none), so that a write past it is caught. */
        const uint32_t uiAddrLen = (ucParam & 0xC0) >> 3;
        std::vector<char> vecAddr(uiAddrLen == 0 ? 1 : uiAddrLen, '\0');
        FUZZ_CHECK(
            XmlAtriumParseAccessServer(pstNode, &stGroup, uiAddrLen != 0 ? vecAddr.data() : nullptr, uiAddrLen) == 0);
        FUZZ_CHECK(vecAddr.back() == '\0');
        CheckTerminated(stGroup.acSipTlsUri);
        CheckTerminated(stGroup.acMaaDrProxyAddr);
        break;
    }
    default: {
        auto stSite = Cleared<Site>();
        FUZZ_CHECK(XmlAtriumParseSite(pstNode, &stSite, nullptr, 0) == 0);
        CheckSite(stSite);
        KOSA_MemFreeD(stSite.pstAccessServer, __LINE__, __FILE__);
        FUZZ_CHECK(IsMatchingSite(pstNode, "sso.a.example") <= 1);
        (void)GetSiteNumber(pstNode);
        break;
    }
    }
}

/* The login answers' site road, on the children of the root. */
void SiteRoad(_NODE *pstRoot, uint8_t ucParam)
{
    const uint32_t uiNumOfSite = GetSiteNumber(pstRoot);
    if (uiNumOfSite == 0) {
        return;
    }
    Site *pstSites = static_cast<Site *>(KOSA_MemMallocS(uiNumOfSite * sizeof(Site), 0, __LINE__, __FILE__));
    uint32_t uiParsed = 0;
    for (_NODE *pstChild = KTL_XML_GetNodeFirstChild(pstRoot); pstChild != nullptr && uiParsed < uiNumOfSite;
         pstChild = KTL_XML_GetNodeNextSibling(pstChild)) {
        _NODE *pstSiteNode = nullptr;
        if (KTL_XML_GetNodeByUrl(pstChild, "site", &pstSiteNode) == 0) {
            (void)XmlAtriumParseSite(pstChild, &pstSites[uiParsed++], nullptr, 0);
        }
    }
    FUZZ_CHECK(uiParsed == uiNumOfSite);
    uint32_t uiGroups = 0;
    for (uint32_t i = 0; i < uiNumOfSite; ++i) {
        CheckSite(pstSites[i]);
        uiGroups += pstSites[i].pstAccessServer != nullptr ? pstSites[i].uiNumOfAccessServer : 0;
    }

    const uint32_t uiOwn = (ucParam & 0x0F) % uiNumOfSite;
    const uint32_t uiMain = (ucParam >> 4) % (uiNumOfSite + 1); /* one past the end: no main site */
    Site *pstSelected = nullptr;
    FUZZ_CHECK(getSiteInfo(pstSites, uiNumOfSite, uiOwn, uiMain, &pstSelected) == 0);
    FUZZ_CHECK(pstSelected != nullptr);
    CheckSite(*pstSelected);
    FUZZ_CHECK(pstSelected->pstAccessServer == nullptr || pstSelected->uiNumOfAccessServer <= 3 * uiNumOfSite);
    FUZZ_CHECK(pstSelected->pstAccessServer == nullptr || pstSelected->uiNumOfAccessServer <= uiGroups);
    freeSiteMem(pstSelected, 1);

    tagLOGIN_S_SERVER_LIST stList{};
    FUZZ_CHECK(getAllSipServer(pstSites, uiNumOfSite, &stList) == 0);
    FUZZ_CHECK(stList.uiNum >= uiGroups && stList.uiNum <= 2 * uiGroups);
    KOSA_MemFreeD(stList.pstServer, __LINE__, __FILE__);

    const uint32_t uiTop = getTopPriorityPos(pstSites, uiNumOfSite);
    FUZZ_CHECK(uiTop < uiNumOfSite);
    for (uint32_t i = 0; i < uiNumOfSite; ++i) {
        FUZZ_CHECK(pstSites[i].uiPriority >= pstSites[uiTop].uiPriority);
    }
    auto stOut = Cleared<Site>();
    FUZZ_CHECK(getMultAccessGroup(pstSites, uiNumOfSite, uiOwn, uiMain, uiTop, &stOut) == 0);
    KOSA_MemFreeD(stOut.pstAccessServer, __LINE__, __FILE__);
    stOut = Cleared<Site>();
    FUZZ_CHECK(getSingleSiteAccessGroup(pstSites, &stOut, ucParam & 1) == 0);
    FUZZ_CHECK(stOut.pstAccessServer == nullptr || stOut.uiNumOfAccessServer <= 3);
    KOSA_MemFreeD(stOut.pstAccessServer, __LINE__, __FILE__);
    freeSiteMem(pstSites, uiNumOfSite);
}

void Draw(uint8_t ucParam, const Text &text)
{
    const uint32_t uiN = static_cast<uint32_t>(text.size() % 300);
    const uint32_t uiK = ucParam % 40;
    std::vector<uint32_t> vecPos(uiK + 1, 0xFFFFFFFFu);
    uint32_t uiRet = getSeveralRandom(vecPos.data(), uiK, uiN);
    FUZZ_CHECK(uiRet == ((uiK > uiN || uiN == 0) ? 1u : 0u));
    if (uiRet == 0) {
        std::set<uint32_t> setSeen(vecPos.begin(), vecPos.begin() + uiK);
        FUZZ_CHECK(setSeen.size() == uiK);
        FUZZ_CHECK(uiK == 0 || *setSeen.rbegin() < uiN);
    }
    FUZZ_CHECK(vecPos[uiK] == 0xFFFFFFFFu);
}

} // namespace

ATRIUM_FUZZ_TARGET(FuzzSites)
{
    if (uiSize < 2) {
        return 0;
    }
    Initialize();
    SeedRandom(pucData, uiSize);
    const uint8_t ucSelector = pucData[0];
    const uint8_t ucParam = pucData[1];
    const Text text = BodyOf(pucData + 2, uiSize - 2);
    CallFrame frame;
    if (ucSelector % 4 == 0) {
        Resolve(text, ucParam);
    } else if (ucSelector % 4 == 3) {
        Draw(ucParam, text);
    } else {
        _NODE *pstRoot = nullptr;
        if (KTL_XML_Parse(text.c_str(), &pstRoot) == 0) {
            if (ucSelector % 4 == 1) {
                ParseOneElement(pstRoot, ucSelector / 4, ucParam);
            } else {
                SiteRoad(pstRoot, ucParam);
            }
            KTL_XML_FreeNode(pstRoot);
        }
    }
    frame.Finish();
    return 0;
}
