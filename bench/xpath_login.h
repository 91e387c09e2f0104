/*
 * xpath_login.h - the portal login read the way a team would typically write it with
 * libxml2: parse into a libxml2 tree, then one XPath query per key, each copied into the
 * same record with the same bounded copies.
 *
 * It fills the same fields from the same elements as XmlParseAtriumLoginResult (token,
 * lifetime, extra parameters, account facts, SIP account, every group field of every site,
 * further servers, messaging accounts) and hands the parsed site array to the module's own
 * getSiteInfo / getAllSipServer / freeSiteMem, which do no XML work. Traces are left out.
 * The benchmark checks once, before timing, that it produces the module's record.
 */
#ifndef ATRIUM_BENCH_XPATH_LOGIN_H
#define ATRIUM_BENCH_XPATH_LOGIN_H

#include <cstdint>
#include <string>

#include "atrium_xml.h"

namespace bench {

/* 0 on success, 1 when a required key is missing or the text is not XML. */
uint32_t XPathParseLogin(const std::string &strBody, const char *pcOwnSiteHost, tagLOGIN_S_ATRIUM_USER_INFO *pstUser);

/* Initialises and releases libxml2's globals (once per process). */
void XPathInit();
void XPathShutdown();

} // namespace bench

#endif /* ATRIUM_BENCH_XPATH_LOGIN_H */
