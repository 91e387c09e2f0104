/*
 * Allocation-failure sweep: every exported function, on a representative answer, meets an
 * allocation failure at each of its allocations in turn, and must then give exactly the
 * result, error traces and record that its documentation gives for that allocation, crash
 * nowhere, and leave no block behind once the caller has freed what it owns.
 *
 * How the sweep knows it is done: KOSA_MemFailAfter(n) lets n more allocations of this thread
 * succeed and fails the next one. After the call, n + 1 probe allocations are made: if the
 * call made at most n allocations the countdown is still armed and one probe fails (the
 * failure was never met); if the call made more, the failure was met and disarmed the
 * thread, and every probe succeeds. The sweep goes n = 0, 1, 2, ... and stops at the first
 * n whose failure was not met; that call must equal the reference call exactly, and n must
 * equal the number of allocations the scenario lists. So an allocation added, removed or
 * reordered in the module shows up as a failing scenario, never as a silently skipped one.
 */
#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "hardening_support.h"

namespace {

using hardening::ReadAnswer;

const uint32_t SWEEP_LIMIT = 1000; /* no scenario comes near it; a runaway stops here */

/* What the (n+1)th allocation of a scenario is, and what its failure must give. */
template <typename Record>
struct FailurePoint {
    std::string strAllocation;
    uint32_t uiResult;
    std::vector<std::string> vecErrorTraces; /* every level-0 trace, in order */
    std::function<void(const Record &stGot, const Record &stReference)> fnCheck;
};

template <typename Record>
struct Scenario {
    std::function<uint32_t(Record &)> fnCall;
    std::function<std::string(const Record &)> fnFlatten;
    std::function<void(Record &)> fnRelease;
    std::vector<FailurePoint<Record>> vecPoints;
};

/* After an armed call: true when the armed failure was never met (see the top of the file). */
bool InjectionStillPending(uint32_t uiArmed)
{
    std::vector<void *> vecProbes;
    bool bPending = false;
    for (uint32_t i = 0; i <= uiArmed; ++i) {
        void *pvProbe = KOSA_MemMallocD(1, __LINE__, __FILE__);
        if (pvProbe == nullptr) {
            bPending = true;
            break;
        }
        vecProbes.push_back(pvProbe);
    }
    for (void *pvProbe : vecProbes) {
        KOSA_MemFreeD(pvProbe, __LINE__, __FILE__);
    }
    KOSA_MemFailAfter(KOSA_MEM_FAIL_NEVER);
    return bPending;
}

template <typename Record>
Record Cleared()
{
    Record stRecord;
    std::memset(&stRecord, 0, sizeof(stRecord));
    return stRecord;
}

class SweepTest : public ModuleTest {
protected:
    template <typename Record>
    void Sweep(const Scenario<Record> &stScenario)
    {
        m_traces.Clear();
        Record stReference = Cleared<Record>();
        const uint32_t uiReferenceResult = stScenario.fnCall(stReference);
        const std::string strReference = stScenario.fnFlatten(stReference);
        EXPECT_THAT(m_traces.TextsAt(LOGIN_TRACE_ERROR), ::testing::IsEmpty()) << "the reference answer must be clean";
        const uint32_t uiBaseBlocks = KOSA_MemLiveBlocks();
        const uint32_t uiBaseDocuments = KTL_XML_LiveDocuments();

        uint32_t n = 0;
        for (; n < SWEEP_LIMIT; ++n) {
            SCOPED_TRACE("allocation " + std::to_string(n) +
                         (n < stScenario.vecPoints.size() ? " (" + stScenario.vecPoints[n].strAllocation + ")" : ""));
            m_traces.Clear();
            Record stRecord = Cleared<Record>();
            KOSA_MemFailAfter(n);
            const uint32_t uiResult = stScenario.fnCall(stRecord);
            const bool bMet = !InjectionStillPending(n);
            if (!bMet) {
                EXPECT_EQ(uiResult, uiReferenceResult);
                EXPECT_TRUE(stScenario.fnFlatten(stRecord) == strReference)
                    << "a call that met no failure differs from the reference";
                stScenario.fnRelease(stRecord);
                break;
            }
            if (n >= stScenario.vecPoints.size()) {
                ADD_FAILURE() << "the call made more allocations than the scenario lists";
                stScenario.fnRelease(stRecord);
                continue;
            }
            const FailurePoint<Record> &stPoint = stScenario.vecPoints[n];
            EXPECT_EQ(uiResult, stPoint.uiResult);
            EXPECT_EQ(m_traces.TextsAt(LOGIN_TRACE_ERROR), stPoint.vecErrorTraces);
            if (stPoint.fnCheck) {
                stPoint.fnCheck(stRecord, stReference);
            }
            stScenario.fnRelease(stRecord);
            EXPECT_EQ(KOSA_MemLiveBlocks(), uiBaseBlocks) << DescribeLiveBlocks();
            EXPECT_EQ(KTL_XML_LiveDocuments(), uiBaseDocuments);
        }
        EXPECT_EQ(n, stScenario.vecPoints.size()) << "allocations met before the call ran clean";
        stScenario.fnRelease(stReference);
    }

    hardening::DeterministicResolver m_detResolver;
};

/* ---- checks shared by the portal scenarios --------------------------------------------- */

using User = tagLOGIN_S_ATRIUM_USER_INFO;

std::vector<std::string> GroupNames(const tagLOGIN_S_SITE *pstSite)
{
    std::vector<std::string> vecNames;
    if (pstSite != nullptr && pstSite->pstAccessServer != nullptr) {
        for (uint32_t i = 0; i < pstSite->uiNumOfAccessServer; ++i) {
            vecNames.push_back(pstSite->pstAccessServer[i].acName);
        }
    }
    return vecNames;
}

std::vector<std::string> SipHosts(const User &stUser)
{
    std::vector<std::string> vecHosts;
    for (uint32_t i = 0; stUser.stSipServerList.pstServer != nullptr && i < stUser.stSipServerList.uiNum; ++i) {
        vecHosts.push_back(stUser.stSipServerList.pstServer[i].acHost);
    }
    return vecHosts;
}

/* The selected site holds exactly these groups (in any order), each marked main or not. */
void ExpectSelectedGroups(const User &stUser, std::vector<std::string> vecNames, uint32_t uiIsMain)
{
    ASSERT_NE(stUser.pstSiteInfo, nullptr);
    EXPECT_EQ(stUser.bSiteInfoValid, 1u);
    std::vector<std::string> vecGot = GroupNames(stUser.pstSiteInfo);
    EXPECT_THAT(vecGot, ::testing::UnorderedElementsAreArray(vecNames));
    for (uint32_t i = 0; stUser.pstSiteInfo->pstAccessServer != nullptr && i < stUser.pstSiteInfo->uiNumOfAccessServer;
         ++i) {
        EXPECT_EQ(stUser.pstSiteInfo->pstAccessServer[i].uiIsMainSite, uiIsMain) << vecGot[i];
    }
}

void ExpectNoSelectedSite(const User &stUser)
{
    EXPECT_EQ(stUser.pstSiteInfo, nullptr);
    EXPECT_EQ(stUser.bSiteInfoValid, 0u);
}

/* getSiteInfo succeeded but its group array could not be allocated. */
void ExpectSelectedSiteWithoutGroupArray(const User &stUser, uint32_t uiOwnCount)
{
    ASSERT_NE(stUser.pstSiteInfo, nullptr);
    EXPECT_EQ(stUser.bSiteInfoValid, 1u);
    EXPECT_EQ(stUser.pstSiteInfo->pstAccessServer, nullptr);
    EXPECT_EQ(stUser.pstSiteInfo->uiNumOfAccessServer, uiOwnCount);
}

void ExpectSameSipList(const User &stGot, const User &stRef)
{
    EXPECT_EQ(SipHosts(stGot), SipHosts(stRef));
}

Scenario<User> UserScenario(std::function<uint32_t(User &)> fnCall)
{
    Scenario<User> stScenario;
    stScenario.fnCall = std::move(fnCall);
    stScenario.fnFlatten = [](const User &stUser) { return hardening::FlattenUser(stUser); };
    stScenario.fnRelease = [](User &stUser) { ReleaseUserHandedOver(stUser); };
    return stScenario;
}

/* ---- portal login --------------------------------------------------------------------- */

TEST_F(SweepTest, PortalLoginWithTwoSites)
{
    const std::string strBody = ReadAnswer("portal-login.xml");
    Scenario<User> stScenario = UserScenario([&](User &stUser) {
        RandomFeed feed({7, 3, 11, 5});
        return XmlParseAtriumLoginResult(strBody.c_str(), hardening::OWN_SITE_HOST, &stUser);
    });
    /* Own site: site-a (index 0, SSO host matches); main site: site-b (index 1, the
     * "ecsmainsite"), which is also the top-priority site. */
    stScenario.vecPoints = {
        {"extra-parameter array",
         0,
         {},
         [](const User &stGot, const User &stRef) {
             EXPECT_EQ(stGot.pstExtraParm, nullptr);
             EXPECT_EQ(stGot.uiExtraParmNum, 0u);
             User stRefWithoutExtra;
             std::memcpy(&stRefWithoutExtra, &stRef, sizeof(stRef));
             stRefWithoutExtra.pstExtraParm = nullptr;
             stRefWithoutExtra.uiExtraParmNum = 0;
             EXPECT_TRUE(hardening::FlattenUser(stGot) == hardening::FlattenUser(stRefWithoutExtra))
                 << "only the extra parameters may be missing";
         }},
        {"site array",
         1,
         {"mem malloc failed"},
         [](const User &stGot, const User &) {
             ExpectNoSelectedSite(stGot);
             EXPECT_EQ(stGot.stSipServerList.pstServer, nullptr);
             EXPECT_EQ(stGot.uiExtraParmNum, 2u) << "what was handed over before stays handed over";
             EXPECT_STREQ(stGot.acSipAccount, "+15550200@uc.example");
             EXPECT_EQ(stGot.uiDeployMode, 0u) << "nothing after the sites is read";
         }},
        {"site-a group array",
         0,
         {"mem malloc failed"},
         [](const User &stGot, const User &) {
             ExpectSelectedGroups(stGot, {"b-g1"}, 1);
             EXPECT_STREQ(stGot.pstSiteInfo->acSiteName, "site-a");
             EXPECT_THAT(SipHosts(stGot), ::testing::ElementsAre("10.2.0.1"));
         }},
        {"site-b group array",
         0,
         {"mem malloc failed"},
         [](const User &stGot, const User &) {
             ExpectSelectedGroups(stGot, {"a-g1", "a-g2"}, 0);
             EXPECT_THAT(SipHosts(stGot), ::testing::ElementsAre("10.1.0.1", "10.1.0.2", "10.1.0.2"));
         }},
        {"selected-site record",
         0,
         {"getSiteInfo failed 1"},
         [](const User &stGot, const User &stRef) {
             ExpectNoSelectedSite(stGot);
             ExpectSameSipList(stGot, stRef);
         }},
        {"selected group array",
         0,
         {"mem malloc failed"},
         [](const User &stGot, const User &stRef) {
             ExpectSelectedSiteWithoutGroupArray(stGot, 2);
             ExpectSameSipList(stGot, stRef);
         }},
        {"draw of site-a's groups",
         0,
         {},
         [](const User &stGot, const User &) { ExpectSelectedGroups(stGot, {"b-g1"}, 1); }},
        {"draw of site-b's groups",
         0,
         {},
         [](const User &stGot, const User &) {
             ExpectSelectedGroups(stGot, {"a-g1", "a-g2"}, 0);
         }},
        {"SIP server list",
         0,
         {"mem malloc failed", "getAllSipServer failed 1"},
         [](const User &stGot, const User &stRef) {
             EXPECT_EQ(stGot.stSipServerList.pstServer, nullptr);
             EXPECT_EQ(stGot.stSipServerList.uiNum, 4u) << "the count is stored before the allocation";
             EXPECT_EQ(hardening::FlattenSite(stGot.pstSiteInfo), hardening::FlattenSite(stRef.pstSiteInfo));
         }},
    };
    Sweep(stScenario);
}

TEST_F(SweepTest, PortalLoginWithOneSite)
{
    const std::string strBody = ReadAnswer("portal-login-one-site.xml");
    Scenario<User> stScenario = UserScenario([&](User &stUser) {
        RandomFeed feed({2, 9, 4});
        return XmlParseAtriumLoginResult(strBody.c_str(), hardening::OWN_SITE_HOST, &stUser);
    });
    /* One site of four groups, no main site: the selection takes three of them, unmarked. */
    stScenario.vecPoints = {
        {"site array",
         1,
         {"mem malloc failed"},
         [](const User &stGot, const User &) {
             ExpectNoSelectedSite(stGot);
             EXPECT_STREQ(stGot.acAccessToken, "one-site-token");
         }},
        {"group array",
         0,
         {"mem malloc failed"},
         [](const User &stGot, const User &) {
             ASSERT_NE(stGot.pstSiteInfo, nullptr);
             EXPECT_EQ(stGot.pstSiteInfo->pstAccessServer, nullptr);
             EXPECT_EQ(stGot.pstSiteInfo->uiNumOfAccessServer, 0u);
             EXPECT_EQ(stGot.stSipServerList.uiNum, 0u);
         }},
        {"selected-site record",
         0,
         {"getSiteInfo failed 1"},
         [](const User &stGot, const User &stRef) {
             ExpectNoSelectedSite(stGot);
             ExpectSameSipList(stGot, stRef);
         }},
        {"selected group array",
         0,
         {"mem malloc failed"},
         [](const User &stGot, const User &) { ExpectSelectedSiteWithoutGroupArray(stGot, 4); }},
        {"draw of the groups",
         0,
         {},
         [](const User &stGot, const User &) {
             ASSERT_NE(stGot.pstSiteInfo, nullptr);
             EXPECT_EQ(stGot.pstSiteInfo->pstAccessServer, nullptr);
             EXPECT_EQ(stGot.pstSiteInfo->uiNumOfAccessServer, 0u);
         }},
        {"SIP server list",
         0,
         {"mem malloc failed", "getAllSipServer failed 1"},
         [](const User &stGot, const User &) {
             EXPECT_EQ(stGot.stSipServerList.pstServer, nullptr);
             EXPECT_EQ(stGot.stSipServerList.uiNum, 5u);
         }},
    };
    Sweep(stScenario);
}

TEST_F(SweepTest, PortalServerList)
{
    const std::string strBody = ReadAnswer("portal-server-list.xml");
    Scenario<User> stScenario = UserScenario([&](User &stUser) {
        RandomFeed feed({1, 8, 6});
        return XmlParseAtriumGetServerListRst(strBody.c_str(), &stUser);
    });
    /* Site 0 ("first", two groups) is own and main site; "second" is the top-priority site. */
    stScenario.vecPoints = {
        {"site array",
         1,
         {"mem malloc failed"},
         [](const User &stGot, const User &) {
             ExpectNoSelectedSite(stGot);
             EXPECT_STREQ(stGot.acSipAccount, "+15550300@uc.example");
         }},
        {"first's group array",
         0,
         {"mem malloc failed"},
         [](const User &stGot, const User &) {
             ExpectSelectedGroups(stGot, {"s-g1"}, 0);
             EXPECT_THAT(SipHosts(stGot), ::testing::ElementsAre("10.5.0.1"));
         }},
        {"second's group array",
         0,
         {"mem malloc failed"},
         [](const User &stGot, const User &) {
             ExpectSelectedGroups(stGot, {"f-g1", "f-g2"}, 1);
             EXPECT_THAT(SipHosts(stGot), ::testing::ElementsAre("10.4.0.1", "10.4.0.2"));
         }},
        {"selected-site record",
         0,
         {"getSiteInfo failed 1"},
         [](const User &stGot, const User &stRef) {
             ExpectNoSelectedSite(stGot);
             ExpectSameSipList(stGot, stRef);
         }},
        {"selected group array",
         0,
         {"mem malloc failed"},
         [](const User &stGot, const User &) { ExpectSelectedSiteWithoutGroupArray(stGot, 2); }},
        {"draw of first's groups",
         0,
         {},
         [](const User &stGot, const User &) { ExpectSelectedGroups(stGot, {"s-g1"}, 0); }},
        {"draw of second's groups",
         0,
         {},
         [](const User &stGot, const User &) {
             ExpectSelectedGroups(stGot, {"f-g1", "f-g2"}, 1);
         }},
        {"SIP server list",
         0,
         {"mem malloc failed", "getAllSipServer failed 1"},
         [](const User &stGot, const User &) {
             EXPECT_EQ(stGot.stSipServerList.pstServer, nullptr);
             EXPECT_EQ(stGot.stSipServerList.uiNum, 3u);
         }},
    };
    Sweep(stScenario);
}

/* ---- guest site and nearby-access block ------------------------------------------------ */

using TempUser = tagXML_S_TANDEM_TEMPUSER_INFO;

TEST_F(SweepTest, GuestServiceSites)
{
    const std::string strBody = ReadAnswer("tempuser-service-tp.xml");
    Scenario<TempUser> stScenario;
    stScenario.fnCall = [&](TempUser &stTemp) {
        RandomFeed feed({4, 1});
        return XmlParseTandemTempuserServiceTp(strBody.c_str(), hardening::GUEST_SITE_KEY, &stTemp);
    };
    stScenario.fnFlatten = [](const TempUser &stTemp) { return hardening::FlattenTempUser(stTemp); };
    stScenario.fnRelease = [](TempUser &stTemp) { ReleaseTempUserHandedOver(stTemp); };
    stScenario.vecPoints = {
        {"guest-b's group array",
         0,
         {"mem malloc failed"},
         [](const TempUser &stGot, const TempUser &) {
             ASSERT_NE(stGot.pstSite, nullptr);
             EXPECT_STREQ(stGot.pstSite->acSiteName, "guest-b");
             EXPECT_EQ(stGot.pstSite->pstAccessServer, nullptr);
             EXPECT_EQ(stGot.pstSite->uiNumOfAccessServer, 0u);
             EXPECT_STREQ(stGot.acAtriumUri, "") << "no group was read";
         }},
        {"site copy",
         1,
         {},
         [](const TempUser &stGot, const TempUser &) {
             EXPECT_EQ(stGot.pstSite, nullptr);
             EXPECT_STREQ(stGot.acAtriumUri, "https://portal.guest-b.example");
         }},
        {"copy's group array",
         0,
         {"mem malloc failed"},
         [](const TempUser &stGot, const TempUser &) {
             ASSERT_NE(stGot.pstSite, nullptr);
             EXPECT_EQ(stGot.pstSite->pstAccessServer, nullptr);
             EXPECT_EQ(stGot.pstSite->uiNumOfAccessServer, 2u) << "the count stays as copied";
         }},
        {"draw of the groups",
         0,
         {},
         [](const TempUser &stGot, const TempUser &) {
             ASSERT_NE(stGot.pstSite, nullptr);
             EXPECT_EQ(stGot.pstSite->pstAccessServer, nullptr);
             EXPECT_EQ(stGot.pstSite->uiNumOfAccessServer, 0u);
         }},
    };
    Sweep(stScenario);
}

/* A handed-over text buffer and the out-pointer it came through. */
struct HandOver {
    char *pcText;
    uint32_t uiLen;
};

std::string FlattenHandOver(const HandOver &stOut)
{
    return stOut.pcText == nullptr ? "-" : std::to_string(stOut.uiLen) + ":" + stOut.pcText;
}

void ReleaseHandOver(HandOver &stOut)
{
    KOSA_MemFreeSetNullD(reinterpret_cast<void **>(&stOut.pcText), __LINE__, __FILE__);
}

Scenario<HandOver> HandOverScenario(std::function<uint32_t(HandOver &)> fnCall, const std::string &strWhat,
                                    uint32_t uiResult, const std::string &strTrace)
{
    Scenario<HandOver> stScenario;
    stScenario.fnCall = std::move(fnCall);
    stScenario.fnFlatten = FlattenHandOver;
    stScenario.fnRelease = ReleaseHandOver;
    stScenario.vecPoints = {{strWhat, uiResult, {strTrace}, [](const HandOver &stGot, const HandOver &) {
                                 EXPECT_EQ(stGot.pcText, nullptr);
                                 EXPECT_EQ(stGot.uiLen, 0u);
                             }}};
    return stScenario;
}

TEST_F(SweepTest, NearbyAccessBlock)
{
    const std::string strBody = ReadAnswer("nearby-access.xml");
    Sweep(HandOverScenario(
        [&](HandOver &stOut) { return XmlParseGetServiceTPFromRandom(strBody.c_str(), &stOut.pcText); },
        "decoded block", 1, "atrium: KOSA_MemMallocSetNull fail"));
}

/* ---- JSON builders ----------------------------------------------------------------------- */

TEST_F(SweepTest, UniCallSetBody)
{
    tagLOGIN_S_UNICALL_CFG stCfg = Cleared<tagLOGIN_S_UNICALL_CFG>();
    ASSERT_EQ(JsonParseUniCallCfgResult(ReadAnswer("unicall.json").c_str(), &stCfg), 0);
    stCfg.astUniCallBean[0].uiCalleeNum = 2;
    Sweep(HandOverScenario(
        [&](HandOver &stOut) { return JsonBuildSetUniCallCfgBody(&stCfg, 0, &stOut.pcText, &stOut.uiLen); }, "body", 1,
        "malloc failed!"));
}

TEST_F(SweepTest, LinkedPhoneSetBody)
{
    tagLOGIN_S_LINKED_PHONE stPhone = Cleared<tagLOGIN_S_LINKED_PHONE>();
    std::strcpy(stPhone.acImpu, "sip:+15550500@uc.example");
    std::strcpy(stPhone.acLinkedPhone, "15550599");
    stPhone.uiActive = 1;
    Sweep(HandOverScenario(
        [&](HandOver &stOut) { return JsonBuildSetLinkedPhoneInfoBody(&stPhone, &stOut.pcText, &stOut.uiLen); }, "body",
        1, "malloc failed!"));
}

TEST_F(SweepTest, LinkedPhoneGetBody)
{
    tagLOGIN_S_LINKED_PHONE_INFO stInfo = Cleared<tagLOGIN_S_LINKED_PHONE_INFO>();
    stInfo.uiImpuNum = 2;
    std::strcpy(stInfo.astLinkedPhone[0].acImpu, "sip:+15550500@uc.example");
    std::strcpy(stInfo.astLinkedPhone[1].acImpu, "tel:+15550501");
    Sweep(HandOverScenario(
        [&](HandOver &stOut) { return JsonBuildGetLinkedPhoneInfoBody(&stInfo, &stOut.pcText, &stOut.uiLen); }, "body",
        4, "malloc failed!"));
}

/* ---- site machinery, called directly ------------------------------------------------------ */

/* The sites of the two-site login answer, parsed once (outside any armed call). */
class SiteMachinerySweepTest : public SweepTest {
protected:
    void SetUp() override
    {
        SweepTest::SetUp();
        m_strBody = ReadAnswer("portal-login.xml");
        ASSERT_EQ(KTL_XML_Parse(m_strBody.c_str(), &m_pstRoot), 0u);
        ASSERT_EQ(KTL_XML_GetNodeByUrl(m_pstRoot, "UserInfo.servicetp", &m_pstServiceTp), 0u);
        m_uiNumOfSite = GetSiteNumber(m_pstServiceTp);
        ASSERT_EQ(m_uiNumOfSite, 2u);
        m_pstSites = static_cast<tagLOGIN_S_SITE *>(
            KOSA_MemMallocS(m_uiNumOfSite * sizeof(tagLOGIN_S_SITE), 0, __LINE__, __FILE__));
        uint32_t i = 0;
        for (_NODE *pstChild = KTL_XML_GetNodeFirstChild(m_pstServiceTp); pstChild != nullptr && i < m_uiNumOfSite;
             pstChild = KTL_XML_GetNodeNextSibling(pstChild)) {
            _NODE *pstSite = nullptr;
            if (KTL_XML_GetNodeByUrl(pstChild, "site", &pstSite) == 0) {
                ASSERT_EQ(XmlAtriumParseSite(pstChild, &m_pstSites[i++], nullptr, 0), 0u);
            }
        }
        m_traces.Clear();
    }
    void TearDown() override
    {
        freeSiteMem(m_pstSites, m_uiNumOfSite);
        KTL_XML_FreeNode(m_pstRoot);
        SweepTest::TearDown();
    }
    _NODE *SiteNode(uint32_t uiIndex)
    {
        _NODE *pstChild = KTL_XML_GetNodeFirstChild(m_pstServiceTp);
        for (uint32_t i = 0; i < uiIndex; ++i) {
            pstChild = KTL_XML_GetNodeNextSibling(pstChild);
        }
        return pstChild;
    }

    std::string m_strBody;
    _NODE *m_pstRoot = nullptr;
    _NODE *m_pstServiceTp = nullptr;
    tagLOGIN_S_SITE *m_pstSites = nullptr;
    uint32_t m_uiNumOfSite = 0;
};

using Site = tagLOGIN_S_SITE;

Scenario<Site> SiteScenario(std::function<uint32_t(Site &)> fnCall)
{
    Scenario<Site> stScenario;
    stScenario.fnCall = std::move(fnCall);
    stScenario.fnFlatten = [](const Site &stSite) { return hardening::FlattenSite(&stSite); };
    stScenario.fnRelease = [](Site &stSite) {
        KOSA_MemFreeSetNullD(reinterpret_cast<void **>(&stSite.pstAccessServer), __LINE__, __FILE__);
    };
    return stScenario;
}

TEST_F(SiteMachinerySweepTest, ParseSite)
{
    Scenario<Site> stScenario =
        SiteScenario([&](Site &stSite) { return XmlAtriumParseSite(SiteNode(0), &stSite, nullptr, 0); });
    stScenario.vecPoints = {{"group array", 1, {"mem malloc failed"}, [](const Site &stGot, const Site &) {
                                 EXPECT_EQ(stGot.pstAccessServer, nullptr);
                                 EXPECT_EQ(stGot.uiNumOfAccessServer, 2u);
                                 EXPECT_STREQ(stGot.acDefaultAccount, "") << "the tmstr069 step is skipped";
                                 EXPECT_STREQ(stGot.acSbcDomain, "sbc.a.example");
                             }}};
    Sweep(stScenario);
}

TEST_F(SiteMachinerySweepTest, SingleSiteAccessGroup)
{
    Scenario<Site> stScenario = SiteScenario([&](Site &stOut) {
        RandomFeed feed({5, 6});
        stOut.uiNumOfAccessServer = 99;
        return getSingleSiteAccessGroup(m_pstSites, &stOut, 0);
    });
    stScenario.vecPoints = {
        {"group array",
         1,
         {"mem malloc failed"},
         [](const Site &stGot, const Site &) {
             EXPECT_EQ(stGot.pstAccessServer, nullptr);
             EXPECT_EQ(stGot.uiNumOfAccessServer, 99u) << "count untouched";
         }},
        {"draw",
         0,
         {},
         [](const Site &stGot, const Site &) {
             EXPECT_EQ(stGot.pstAccessServer, nullptr);
             EXPECT_EQ(stGot.uiNumOfAccessServer, 0u);
         }},
    };
    Sweep(stScenario);
}

TEST_F(SiteMachinerySweepTest, MultAccessGroup)
{
    Scenario<Site> stScenario = SiteScenario([&](Site &stOut) {
        RandomFeed feed({5, 6});
        stOut.uiNumOfAccessServer = 99;
        return getMultAccessGroup(m_pstSites, m_uiNumOfSite, 0, 1, 1, &stOut);
    });
    stScenario.vecPoints = {
        {"group array",
         1,
         {"mem malloc failed"},
         [](const Site &stGot, const Site &) {
             EXPECT_EQ(stGot.pstAccessServer, nullptr);
             EXPECT_EQ(stGot.uiNumOfAccessServer, 99u);
         }},
        {"draw of the own site's groups",
         0,
         {},
         [](const Site &stGot, const Site &) { EXPECT_THAT(GroupNames(&stGot), ::testing::ElementsAre("b-g1")); }},
        {"draw of the top site's groups",
         0,
         {},
         [](const Site &stGot, const Site &) {
             EXPECT_THAT(GroupNames(&stGot), ::testing::UnorderedElementsAre("a-g1", "a-g2"));
         }},
    };
    Sweep(stScenario);
}

TEST_F(SiteMachinerySweepTest, SiteInfo)
{
    Scenario<User> stScenario = UserScenario([&](User &stUser) {
        RandomFeed feed({5, 6});
        return getSiteInfo(m_pstSites, m_uiNumOfSite, 0, 1, &stUser.pstSiteInfo);
    });
    stScenario.vecPoints = {
        {"selected-site record", 1, {}, [](const User &stGot, const User &) { EXPECT_EQ(stGot.pstSiteInfo, nullptr); }},
        {"group array",
         0,
         {"mem malloc failed"},
         [](const User &stGot, const User &) {
             ASSERT_NE(stGot.pstSiteInfo, nullptr);
             EXPECT_EQ(stGot.pstSiteInfo->pstAccessServer, nullptr);
             EXPECT_EQ(stGot.pstSiteInfo->uiNumOfAccessServer, 2u);
         }},
        {"draw of the own site's groups",
         0,
         {},
         [](const User &stGot, const User &) {
             EXPECT_THAT(GroupNames(stGot.pstSiteInfo), ::testing::ElementsAre("b-g1"));
         }},
        {"draw of the top site's groups",
         0,
         {},
         [](const User &stGot, const User &) {
             EXPECT_THAT(GroupNames(stGot.pstSiteInfo), ::testing::UnorderedElementsAre("a-g1", "a-g2"));
         }},
    };
    Sweep(stScenario);
}

TEST_F(SiteMachinerySweepTest, AllSipServer)
{
    Scenario<User> stScenario =
        UserScenario([&](User &stUser) { return getAllSipServer(m_pstSites, m_uiNumOfSite, &stUser.stSipServerList); });
    stScenario.vecPoints = {{"server array", 1, {"mem malloc failed"}, [](const User &stGot, const User &) {
                                 EXPECT_EQ(stGot.stSipServerList.pstServer, nullptr);
                                 EXPECT_EQ(stGot.stSipServerList.uiNum, 4u);
                             }}};
    Sweep(stScenario);
}

/* The random draws: a failed scratch allocation refuses the draw. */
struct Draw {
    uint32_t auiPos[3];
    uint32_t uiCopied;
    tagLOGIN_S_ACCESS_SERVER astGroups[3];
};

TEST_F(SiteMachinerySweepTest, SeveralRandom)
{
    Scenario<Draw> stScenario;
    stScenario.fnCall = [](Draw &stDraw) {
        RandomFeed feed({5, 6, 7});
        return getSeveralRandom(stDraw.auiPos, 3, 5);
    };
    stScenario.fnFlatten = [](const Draw &stDraw) { return hardening::BytesOf(stDraw); };
    stScenario.fnRelease = [](Draw &) {};
    stScenario.vecPoints = {{"scratch array", 1, {}, [](const Draw &stGot, const Draw &) {
                                 EXPECT_THAT(stGot.auiPos, ::testing::Each(0u)) << "nothing drawn";
                             }}};
    Sweep(stScenario);
}

TEST_F(SiteMachinerySweepTest, CopyAccessGroup)
{
    Scenario<Draw> stScenario;
    stScenario.fnCall = [&](Draw &stDraw) {
        RandomFeed feed({5, 6, 7});
        stDraw.uiCopied =
            copyAccessGroup(stDraw.astGroups, m_pstSites[0].pstAccessServer, m_pstSites[0].uiNumOfAccessServer, 1);
        return stDraw.uiCopied;
    };
    stScenario.fnFlatten = [](const Draw &stDraw) { return hardening::BytesOf(stDraw); };
    stScenario.fnRelease = [](Draw &) {};
    stScenario.vecPoints = {{"draw", 0, {}, [](const Draw &stGot, const Draw &) {
                                 EXPECT_STREQ(stGot.astGroups[0].acName, "") << "nothing copied";
                             }}};
    Sweep(stScenario);
}

TEST_F(SiteMachinerySweepTest, SiteFunctionsWithoutAllocationsNeverMeetTheInjectedFailure)
{
    _NODE *pstGroup = nullptr;
    _NODE *pstStg = nullptr;
    ASSERT_EQ(KTL_XML_GetNodeByUrl(SiteNode(0), "site.accessservergroup.accessserver", &pstGroup), 0u);
    ASSERT_EQ(KTL_XML_GetNodeByUrl(pstGroup, "accessserver.stggroup", &pstStg), 0u);
    const std::vector<std::pair<std::string, std::function<void()>>> vecCalls = {
        {"XmlAtriumGetIpFromDomain",
         [] {
             char acOut[256] = {0};
             EXPECT_EQ(XmlAtriumGetIpFromDomain(acOut, sizeof(acOut), "eserver.a.example:8443"), 0u);
         }},
        {"XmlAtriumParseStgInfo",
         [&] {
             auto stStg = Cleared<tagLOGIN_S_STG_GROUP>();
             EXPECT_EQ(XmlAtriumParseStgInfo(pstStg, &stStg), 0u);
         }},
        {"XmlAtriumParseAccessServer",
         [&] {
             auto stGroup = Cleared<tagLOGIN_S_ACCESS_SERVER>();
             char acAtrium[256] = {0};
             EXPECT_EQ(XmlAtriumParseAccessServer(pstGroup, &stGroup, acAtrium, sizeof(acAtrium)), 0u);
         }},
        {"GetSiteNumber", [&] { EXPECT_EQ(GetSiteNumber(m_pstServiceTp), 2u); }},
        {"IsMatchingSite", [&] { EXPECT_EQ(IsMatchingSite(SiteNode(0), hardening::OWN_SITE_HOST), 1u); }},
        {"getTopPriorityPos", [&] { EXPECT_EQ(getTopPriorityPos(m_pstSites, m_uiNumOfSite), 1u); }},
        {"getRealRandom",
         [] {
             RandomFeed feed({42});
             EXPECT_EQ(getRealRandom(), 42u);
         }},
        {"XmlParseTandemRandomErrorcode", [] { EXPECT_EQ(XmlParseTandemRandomErrorcode(401), 35u); }},
    };
    for (const auto &call : vecCalls) {
        KOSA_MemFailAfter(0);
        call.second();
        EXPECT_TRUE(InjectionStillPending(0)) << call.first << " allocated through the ledger";
    }
}

/* ---- functions that allocate nothing of the module's own ------------------------------------ */

TEST_F(SweepTest, ParsersWithoutAllocationsNeverMeetTheInjectedFailure)
{
    const std::vector<std::string> vecAllocating = {
        "XmlParseAtriumLoginResult",      "XmlParseAtriumGetServerListRst", "XmlParseTandemTempuserServiceTp",
        "XmlParseGetServiceTPFromRandom", "JsonBuildSetUniCallCfgBody",     "JsonBuildSetLinkedPhoneInfoBody",
        "JsonBuildGetLinkedPhoneInfoBody"};
    hardening::CallContext stCtx{hardening::ScratchPath("sweep")};
    size_t uiChecked = 0;
    for (const hardening::CatalogueEntry &stEntry : hardening::Catalogue()) {
        if (std::find(vecAllocating.begin(), vecAllocating.end(), stEntry.strName) != vecAllocating.end()) {
            continue;
        }
        for (const std::string &strBody : stEntry.vecBodies) {
            hardening::Outcome stReference = stEntry.fnRun(strBody, stCtx);
            KOSA_MemFailAfter(0);
            hardening::Outcome stArmed = stEntry.fnRun(strBody, stCtx);
            EXPECT_TRUE(InjectionStillPending(0)) << stEntry.strName << " allocated through the ledger";
            EXPECT_TRUE(stArmed == stReference) << stEntry.strName;
            ++uiChecked;
        }
    }
    EXPECT_GE(uiChecked, 20u);
}

} // namespace
