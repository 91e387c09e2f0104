/*
 * login_service.h - what the module needs from the login service around it.
 *
 * The program that links the module defines these four functions (the real login service
 * does). The library login_service_default defines them for the project's own tools and
 * for programs without a login service of their own; see login_service_default.h.
 */
#ifndef LOGIN_SERVICE_H
#define LOGIN_SERVICE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* One resolver answer entry. */
typedef struct tagLOGIN_S_SRV_IP_ENTRY {
    uint32_t uiAddr;            /* IPv4 address in network byte order; 0 marks an empty entry */
} tagLOGIN_S_SRV_IP_ENTRY;

/* One SIP server, as LoginDataGetServerFormString reads it from an address text. */
typedef struct tagLOGIN_S_SERVER_ADDR_INFO {
    char     acHost[256];       /* host name or IP literal, without brackets */
    uint32_t uiPort;            /* 0 when the text names no port */
    uint32_t uiTransport;       /* 0 UDP (default), 1 TCP, 2 TLS */
} tagLOGIN_S_SERVER_ADDR_INFO;

#define LOGIN_TRANSPORT_UDP 0u
#define LOGIN_TRANSPORT_TCP 1u
#define LOGIN_TRANSPORT_TLS 2u

/* Trace levels the module uses. */
#define LOGIN_TRACE_ERROR    0u  /* argument checks, parse failures, missing required keys */
#define LOGIN_TRACE_MISS     1u  /* misses of single keys */
#define LOGIN_TRACE_PROGRESS 2u  /* progress */
#define LOGIN_TRACE_DUMP     3u  /* dumps of parsed content */

/*
 * Trace callback. pcModule is "" for this module; pcFunc, pcFile and uiLine name the
 * calling site; pcFormat and the further arguments are printf style. Must be callable from
 * any thread.
 */
void LoginTraceCB(const char *pcModule, uint32_t uiLevel, const char *pcFunc,
                  const char *pcFile, uint32_t uiLine, const char *pcFormat, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 6, 7)))
#endif
    ;

/* Non-zero when pcText is a domain name to resolve; 0 for "", IP literals (IPv4, IPv6) and
 * text that is not a host name. */
uint32_t CheckIsDomain(const char *pcText);

/*
 * Resolves pcHost to IPv4 addresses. *puiCount is the capacity of pstEntries on entry and
 * the number of entries filled on return. uiType selects a strategy (the module asks for
 * type 2 first, then type 1, handing the second call the count the first one left).
 * Returns 0 on success, non-zero on failure; on failure *puiCount should be left unchanged.
 */
uint32_t AtriumGetSrvIpListByHost(const char *pcHost, uint32_t uiType,
                                  tagLOGIN_S_SRV_IP_ENTRY *pstEntries, uint32_t *puiCount);

/*
 * Reads one SIP server address text ("host", "host:port", "[v6]:port", with an optional
 * "sip:"/"sips:" scheme and an optional ";transport=udp|tcp|tls" parameter) into
 * *pstServer. Returns 0 on success; non-zero with *pstServer zeroed for text it cannot read.
 */
uint32_t LoginDataGetServerFormString(const char *pcAddr, tagLOGIN_S_SERVER_ADDR_INFO *pstServer);

#ifdef __cplusplus
}
#endif

#endif /* LOGIN_SERVICE_H */
