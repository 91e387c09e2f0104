/*
 * cases.h - the answers the benchmarks time: body, the module call that reads it, and what
 * the same bytes cost the underlying parser alone.
 *
 * A case's call runs the exported function on the record it is given (the caller clears
 * it first) and then releases everything the function handed over, as the login service
 * does: freeSiteMem(p, 1) for a selected site or a guest's site copy, KOSA_MemFreeD for the
 * SIP server list, the extra parameters, the decoded block and the request bodies.
 */
#ifndef ATRIUM_BENCH_CASES_H
#define ATRIUM_BENCH_CASES_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "atrium_xml.h"
#include "handed_over.h"

namespace bench {

/* The parser that the raw parse of a case stands for. */
enum class RawParser : uint8_t {
    Xml,      /* pugixml, as the XML document library loads a body */
    Json,     /* JsonCpp's Json::Reader, as the JSON services read a body */
    JsonBuild /* JsonCpp building and rendering the same body (request builders) */
};

struct AnswerCase {
    std::string strName; /* "<family>/<answer>" */
    std::string strBody; /* the answer (for a builder: the body it renders) */
    RawParser eRaw;
    size_t uiRecordSize;       /* bytes of the caller's record */
    bool bCallerClears;        /* answers: the caller clears the record per call;
                                  builders: the record is the request, filled once */
    uint32_t uiExpectedResult; /* what the call must return */
    std::function<uint32_t(const std::string &strBody, void *pvRecord)> fnCall;
    std::function<void(void *pvRecord)> fnPrepare; /* builders: fill the request record */
    std::string strXPathHost;                      /* portal logins: the login host, for the libxml2 + XPath run */
};

/* Every answer kind in its sizes, in the order of the table. */
std::vector<AnswerCase> AllCases();

/* Growth series: the portal login at 1, 2, 4, 8 and 16 sites of 8 groups. */
struct GrowthCase {
    uint32_t uiSites;
    uint32_t uiGroups; /* sites x 8 */
    AnswerCase stCase;
};
std::vector<GrowthCase> GrowthCases();

/* The site machinery alone: getSiteInfo + getAllSipServer on a parsed site array of the
 * given portal login, then the caller's release of what they handed out. */
struct SiteMachineryCase {
    std::string strName;
    uint32_t uiSites;
    uint32_t uiGroupsPerSite;
};
std::vector<SiteMachineryCase> SiteMachineryCases();

} // namespace bench

#endif /* ATRIUM_BENCH_CASES_H */
