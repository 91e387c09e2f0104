/*
 * answers.h - deterministic generator of the server answers the benchmarks feed the module.
 *
 * Every answer is built from a few size parameters only (no clock, no random source), so
 * two runs time the very same bytes. Server addresses are IPv4 literals with ports, so the
 * address resolution copies them and never reaches the resolver during timing. Each kind
 * of answer carries every key its parser reads, with realistic values and a realistic share
 * of optional elements left out (media-server lists shorter than eight, for example).
 */
#ifndef ATRIUM_BENCH_ANSWERS_H
#define ATRIUM_BENCH_ANSWERS_H

#include <cstdint>
#include <string>

namespace bench {

/* Shape of a portal deployment answer (login answer or server-list answer). */
struct PortalShape {
    uint32_t uiSites;         /* "site" children of servicetp */
    uint32_t uiGroupsPerSite; /* "accessserver" children of each accessservergroup */
    uint32_t uiExtraParms;    /* children of ExtraParms (0: element left out) */
    uint32_t uiUmsAccounts;   /* children of umsinfo (0: element left out) */
};

/* The host the client logged in to: the SSO host of the last site, so that the own site
 * is not site 0 (the selection then walks own, top-priority and remaining sites). */
std::string OwnSiteHost(const PortalShape &stShape);

std::string PortalLoginAnswer(const PortalShape &stShape);
std::string ServerListAnswer(const PortalShape &stShape);
std::string AuthTokenAnswer();
std::string TokenInfoAnswer();
std::string PortalSearchAnswer(uint32_t uiSites);
std::string RightConfigRefusedAnswer();

/* Conference login with every list at its record's capacity (18 directory addresses, 5 STG,
 * 5 SBC, 5 TMS and 6 portal addresses). */
std::string ConferenceLoginAnswer();
/* Refusal with the portal addresses to try (6). */
std::string ConferenceRefusalAnswer();
std::string VersionAnswer();
std::string RandomKeyAnswer();
std::string ConferenceSearchAnswer(uint32_t uiSites);

/* Guest answers. The service-site answer lists uiSites sites; the guest's key names the
 * last of them (GuestSiteKey). */
std::string GuestServiceSitesAnswer(uint32_t uiSites, uint32_t uiGroupsPerSite);
std::string GuestSiteKey(uint32_t uiSites);
std::string GuestSipAnswer();
std::string GuestConfAnswer();
std::string GuestShortConfAnswer();
std::string GuestAccountAnswer();
/* Nearby-access block: a base64 site list of uiSites sites (wrapped at 76 columns). */
std::string NearbyAccessAnswer(uint32_t uiSites);

/* The management service's SOAP reply carrying the endpoint's registration data. */
std::string EndpointMessageAnswer();

/* JSON services at their caps: 20 rules of 10 callees; 29 linked identities. */
std::string UniCallAnswer();
std::string LinkedPhoneAnswer();

} // namespace bench

#endif /* ATRIUM_BENCH_ANSWERS_H */
