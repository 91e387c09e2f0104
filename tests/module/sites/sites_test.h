/*
 * sites_test.h - helpers shared by the site-machinery tests: parsed snippets, expected
 * trace texts, and site arrays built in memory the way the parsers leave them (allocated
 * through the memory ledger, so freeSiteMem can release them).
 */
#ifndef ATRIUM_XML_SITES_TEST_H
#define ATRIUM_XML_SITES_TEST_H

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "module_test.h"

/* One parsed XML text, released when it goes out of scope. */
class ParsedXml {
public:
    explicit ParsedXml(const std::string &strText)
    {
        m_uiCode = KTL_XML_Parse(strText.c_str(), &m_pstRoot);
        EXPECT_EQ(m_uiCode, 0u) << "test XML does not parse: " << strText;
    }
    ~ParsedXml() { KTL_XML_FreeNode(m_pstRoot); }
    ParsedXml(const ParsedXml &) = delete;
    ParsedXml &operator=(const ParsedXml &) = delete;

    _NODE *Root() const { return m_pstRoot; }
    /* The first element at pcPath from the root (the root's own name first). */
    _NODE *At(const char *pcPath) const
    {
        _NODE *pstNode = nullptr;
        EXPECT_EQ(KTL_XML_GetNodeByUrl(m_pstRoot, pcPath, &pstNode), 0u) << pcPath;
        return pstNode;
    }

private:
    _NODE *m_pstRoot = nullptr;
    uint32_t m_uiCode = 0;
};

/* True when every byte of a field still holds the sentinel (the field was never written). */
inline bool FieldIsSentinel(const char *pcField, size_t uiSize, unsigned char ucByte = 0x5A)
{
    for (size_t i = 0; i < uiSize; ++i) {
        if (static_cast<unsigned char>(pcField[i]) != ucByte) {
            return false;
        }
    }
    return true;
}
#define EXPECT_FIELD_UNTOUCHED(field) EXPECT_TRUE(FieldIsSentinel((field), sizeof(field))) << #field

/* A zero-filled site array as the answers' parsers allocate it; release with freeSiteMem. */
inline tagLOGIN_S_SITE *NewSites(uint32_t uiCount)
{
    return static_cast<tagLOGIN_S_SITE *>(
        KOSA_MemMallocS(uiCount * static_cast<uint32_t>(sizeof(tagLOGIN_S_SITE)), 0, __LINE__, __FILE__));
}

/* A site built in memory: its name, priority and number of groups ("<name>-g<j>"). */
struct SitePlan {
    std::string strName;
    uint32_t uiPriority;
    uint32_t uiGroups;
};

/* An array of sites as the parsers leave it: allocated through the ledger, zero-filled,
 * each group named and given a SIP uri; release with freeSiteMem(p, n). */
inline tagLOGIN_S_SITE *MakeSites(const std::vector<SitePlan> &vecPlans)
{
    tagLOGIN_S_SITE *pstSites = NewSites(static_cast<uint32_t>(vecPlans.size()));
    for (size_t i = 0; i < vecPlans.size(); ++i) {
        tagLOGIN_S_SITE &stSite = pstSites[i];
        std::snprintf(stSite.acSiteName, sizeof(stSite.acSiteName), "%s", vecPlans[i].strName.c_str());
        std::snprintf(stSite.acSbcDomain, sizeof(stSite.acSbcDomain), "sbc.%s.example.com",
                      vecPlans[i].strName.c_str());
        std::snprintf(stSite.acDefaultAccount, sizeof(stSite.acDefaultAccount), "acs-%s",
                      vecPlans[i].strName.c_str());
        std::snprintf(stSite.acDefaultPwd, sizeof(stSite.acDefaultPwd), "pwd-%s", vecPlans[i].strName.c_str());
        stSite.uiPriority = vecPlans[i].uiPriority;
        stSite.uiNumOfAccessServer = vecPlans[i].uiGroups;
        if (vecPlans[i].uiGroups == 0) {
            continue;
        }
        stSite.pstAccessServer = static_cast<tagLOGIN_S_ACCESS_SERVER *>(KOSA_MemMallocS(
            static_cast<uint32_t>(vecPlans[i].uiGroups * sizeof(tagLOGIN_S_ACCESS_SERVER)), 0, __LINE__, __FILE__));
        for (uint32_t j = 0; j < vecPlans[i].uiGroups; ++j) {
            tagLOGIN_S_ACCESS_SERVER &stGroup = stSite.pstAccessServer[j];
            std::snprintf(stGroup.acName, sizeof(stGroup.acName), "%s-g%u", vecPlans[i].strName.c_str(), j);
            std::snprintf(stGroup.acSipUri, sizeof(stGroup.acSipUri), "sip.%s%u.example.com:5060",
                          vecPlans[i].strName.c_str(), j);
            std::snprintf(stGroup.acEuaUri, sizeof(stGroup.acEuaUri), "ldap://eua.%s%u.example.com",
                          vecPlans[i].strName.c_str(), j);
            stGroup.uiPriority = vecPlans[i].uiPriority;
            stGroup.uiIsMainSite = 7; /* neither 0 nor 1: a copy must set it */
        }
    }
    return pstSites;
}

/* Names of a site's groups, in array order. */
inline std::vector<std::string> GroupNames(const tagLOGIN_S_SITE &stSite)
{
    std::vector<std::string> vecNames;
    for (uint32_t i = 0; stSite.pstAccessServer != nullptr && i < stSite.uiNumOfAccessServer; ++i) {
        vecNames.push_back(stSite.pstAccessServer[i].acName);
    }
    return vecNames;
}

/* Main-site flags of a site's groups, in array order. */
inline std::vector<uint32_t> MainFlags(const tagLOGIN_S_SITE &stSite)
{
    std::vector<uint32_t> vecFlags;
    for (uint32_t i = 0; stSite.pstAccessServer != nullptr && i < stSite.uiNumOfAccessServer; ++i) {
        vecFlags.push_back(stSite.pstAccessServer[i].uiIsMainSite);
    }
    return vecFlags;
}

#endif /* ATRIUM_XML_SITES_TEST_H */
