/*
 * login_service_default.h - knobs of the default login service (library
 * login_service_default), which defines the four functions of login_service.h:
 *
 *  - LoginTraceCB formats the message and hands it to the trace sink. The default sink
 *    writes "L<level> <function>: <message>" lines to stderr for levels up to a threshold
 *    read once from the environment variable LOGIN_TRACE_LEVEL ("0".."3"; "off" or "-1"
 *    silences everything; unset means 0, errors only). Nothing is formatted for a level
 *    above the threshold.
 *  - AtriumGetSrvIpListByHost resolves IPv4 addresses through the system resolver
 *    (getaddrinfo). Type 2 asks for addresses of configured families only (AI_ADDRCONFIG),
 *    the usual choice on a client with a network; type 1 asks without that filter, which
 *    also answers on hosts whose only IPv4 address is loopback. Duplicates are dropped.
 *    Other types fail. A failure returns the getaddrinfo code as a positive number
 *    (LOGIN_RESOLVE_ERR_BASE + code) or LOGIN_RESOLVE_ERR_ARG for bad arguments.
 *  - CheckIsDomain says non-zero for a syntactically valid host name (labels of letters,
 *    digits, '-' and '_', 1 to 63 characters each, 253 at most in all, an optional final
 *    dot) that is not an IP literal; text the system reads as an IPv4 number ("10.1",
 *    "0x7f.0.0.1") or whose last label is all digits is not a domain either.
 *  - A failed resolution leaves *puiCount unchanged.
 *  - LoginDataGetServerFormString accepts [sip:|sips:][user@]host[:port][;param...] where
 *    host is a name, an IPv4 literal or a bracketed IPv6 literal (a bare IPv6 literal
 *    without port is accepted too). "sips:" means TLS unless a transport parameter says
 *    otherwise; the transport parameter is matched without regard to case.
 *
 * The sink, threshold and resolver can be replaced by a program (tests use this). They are
 * process-wide; set them before other threads trace.
 */
#ifndef LOGIN_SERVICE_DEFAULT_H
#define LOGIN_SERVICE_DEFAULT_H

#include "login_service.h"

#ifdef __cplusplus
extern "C" {
#endif

#define LOGIN_TRACE_OFF 0xFFFFFFFFu

/* Receives one formatted trace line (pcMessage is NUL-terminated, without line end). */
typedef void (*LOGIN_TRACE_SINK_FN)(void *pvCtx, uint32_t uiLevel, const char *pcFunc,
                                    const char *pcFile, uint32_t uiLine, const char *pcMessage);

/* Replaces the sink; null restores the stderr sink. */
void LoginServiceSetTraceSink(LOGIN_TRACE_SINK_FN pfnSink, void *pvCtx);
/* Traces of a level above uiMaxLevel are dropped unformatted; LOGIN_TRACE_OFF drops all. */
void LoginServiceSetTraceLevel(uint32_t uiMaxLevel);
uint32_t LoginServiceGetTraceLevel(void);

/* Replaces the resolver behind AtriumGetSrvIpListByHost; null restores getaddrinfo. */
typedef uint32_t (*LOGIN_RESOLVER_FN)(void *pvCtx, const char *pcHost, uint32_t uiType,
                                      tagLOGIN_S_SRV_IP_ENTRY *pstEntries, uint32_t *puiCount);
void LoginServiceSetResolver(LOGIN_RESOLVER_FN pfnResolve, void *pvCtx);

#define LOGIN_RESOLVE_ERR_ARG  1u
#define LOGIN_RESOLVE_ERR_TYPE 2u
#define LOGIN_RESOLVE_ERR_NONE 3u     /* the name resolved to no IPv4 address */
#define LOGIN_RESOLVE_ERR_BASE 1000u  /* + (-getaddrinfo code) */

#ifdef __cplusplus
}
#endif

#endif /* LOGIN_SERVICE_DEFAULT_H */
