/*
 * login_service_default.cpp - default definitions of the four login-service functions.
 *
 * Traces: LoginTraceCB drops a level above the threshold before formatting anything, then
 * formats the message (on the stack, or on the heap when it is longer) and hands it to the
 * sink: stderr unless a program installed its own. The threshold starts from the
 * environment variable LOGIN_TRACE_LEVEL, read once on first use.
 *
 * Resolution: AtriumGetSrvIpListByHost checks its arguments and hands them to the resolver,
 * getaddrinfo unless a program installed its own.
 *
 * Address texts: CheckIsDomain and LoginDataGetServerFormString only scan text; the latter
 * clears the entry, reads into it, and clears it again on failure, so a failure leaves a
 * zeroed entry and a success one whose bytes after the host are zero.
 *
 * A replaceable callback and its context are kept together behind a mutex and copied out
 * before the call, so a caller never pairs one callback with another one's context.
 */
#include "login_service_default.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <strings.h>
#include <sys/socket.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

namespace {

/* ---- replaceable callbacks ----------------------------------------------------------- */

template <typename Fn> struct Binding {
    Fn pfn;
    void *pvCtx;
};

template <typename Fn> class CallbackSlot {
public:
    void Set(Fn pfn, void *pvCtx)
    {
        std::lock_guard<std::mutex> oLock(m_oMutex);
        m_stBinding = Binding<Fn>{pfn, pfn == nullptr ? nullptr : pvCtx};
    }

    Binding<Fn> Get()
    {
        std::lock_guard<std::mutex> oLock(m_oMutex);
        return m_stBinding;
    }

private:
    std::mutex m_oMutex;
    Binding<Fn> m_stBinding{nullptr, nullptr};
};

CallbackSlot<LOGIN_TRACE_SINK_FN> g_oTraceSink;
CallbackSlot<LOGIN_RESOLVER_FN> g_oResolver;

/* ---- trace threshold ----------------------------------------------------------------- */

/* "0".."3" set the threshold, "off" and "-1" silence everything; unset or anything else
 * keeps errors only, so a typo never hides errors. */
uint32_t TraceLevelFromEnvironment()
{
    const char *pcValue = std::getenv("LOGIN_TRACE_LEVEL");
    if (pcValue == nullptr) {
        return LOGIN_TRACE_ERROR;
    }
    if (std::strcmp(pcValue, "off") == 0 || std::strcmp(pcValue, "-1") == 0) {
        return LOGIN_TRACE_OFF;
    }
    if (pcValue[0] >= '0' && pcValue[0] <= '3' && pcValue[1] == '\0') {
        return static_cast<uint32_t>(pcValue[0] - '0');
    }
    return LOGIN_TRACE_ERROR;
}

std::atomic<uint32_t> &TraceThreshold()
{
    static std::atomic<uint32_t> s_uiThreshold{TraceLevelFromEnvironment()};
    return s_uiThreshold;
}

bool IsTraced(uint32_t uiLevel)
{
    const uint32_t uiThreshold = TraceThreshold().load(std::memory_order_relaxed);
    return uiThreshold != LOGIN_TRACE_OFF && uiLevel <= uiThreshold;
}

/* ---- trace formatting ---------------------------------------------------------------- */

/* A printf-style text, formatted on the stack when it fits and on the heap otherwise. */
class FormattedText {
public:
    FormattedText(const char *pcFormat, va_list vaArgs)
    {
        va_list vaRetry;
        va_copy(vaRetry, vaArgs);
        const int iLen = std::vsnprintf(m_acStack, sizeof(m_acStack), pcFormat, vaArgs);
        if (iLen < 0) {
            /* An encoding error: the bare format still tells where the trace came from. */
            m_pcText = pcFormat;
            m_uiLen = std::strlen(pcFormat);
        } else if (static_cast<size_t>(iLen) < sizeof(m_acStack)) {
            m_uiLen = static_cast<size_t>(iLen);
        } else {
            FormatOnHeap(static_cast<size_t>(iLen), pcFormat, vaRetry);
        }
        va_end(vaRetry);
    }
    ~FormattedText() { std::free(m_pcHeap); }
    FormattedText(const FormattedText &) = delete;
    FormattedText &operator=(const FormattedText &) = delete;

    const char *Text() const { return m_pcText; }
    size_t Length() const { return m_uiLen; }

private:
    void FormatOnHeap(size_t uiLen, const char *pcFormat, va_list vaArgs)
    {
        m_pcHeap = static_cast<char *>(std::malloc(uiLen + 1));
        if (m_pcHeap == nullptr) {
            /* Out of memory: the truncated text is better than none. */
            m_uiLen = sizeof(m_acStack) - 1;
            return;
        }
        std::vsnprintf(m_pcHeap, uiLen + 1, pcFormat, vaArgs);
        m_pcText = m_pcHeap;
        m_uiLen = uiLen;
    }

    char m_acStack[1024];
    char *m_pcHeap = nullptr;
    const char *m_pcText = m_acStack;
    size_t m_uiLen = 0;
};

#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
void WriteToStderr(const char *pcFormat, ...)
{
    va_list vaArgs;
    va_start(vaArgs, pcFormat);
    FormattedText oLine(pcFormat, vaArgs);
    va_end(vaArgs);
    /* One fwrite per line, so lines of concurrent threads do not interleave. */
    std::fwrite(oLine.Text(), 1, oLine.Length(), stderr);
}

void StderrSink(void *, uint32_t uiLevel, const char *pcFunc, const char *, uint32_t,
                const char *pcMessage)
{
    WriteToStderr("L%u %s: %s\n", uiLevel, pcFunc, pcMessage);
}

/* ---- resolver ------------------------------------------------------------------------ */

bool AddressFlagsOfType(uint32_t uiType, int *piFlags)
{
    switch (uiType) {
    case 2:
        *piFlags = AI_ADDRCONFIG;
        return true;
    case 1:
        *piFlags = 0;
        return true;
    default:
        return false;
    }
}

bool IsAlreadyListed(const tagLOGIN_S_SRV_IP_ENTRY *pstEntries, uint32_t uiCount,
                     uint32_t uiAddr)
{
    for (uint32_t i = 0; i < uiCount; ++i) {
        if (pstEntries[i].uiAddr == uiAddr) {
            return true;
        }
    }
    return false;
}

/* Copies the distinct IPv4 addresses of the answer, up to the capacity; returns how many.
 * 0.0.0.0 is left out: a zero address marks an empty entry. */
uint32_t CollectIpv4Addresses(const addrinfo *pstAnswer, tagLOGIN_S_SRV_IP_ENTRY *pstEntries,
                              uint32_t uiCapacity)
{
    uint32_t uiCount = 0;
    for (const addrinfo *pst = pstAnswer; pst != nullptr && uiCount < uiCapacity;
         pst = pst->ai_next) {
        if (pst->ai_family != AF_INET || pst->ai_addrlen < sizeof(sockaddr_in)) {
            continue;
        }
        sockaddr_in stAddr;
        std::memcpy(&stAddr, pst->ai_addr, sizeof(stAddr));
        const uint32_t uiAddr = stAddr.sin_addr.s_addr;
        if (uiAddr != 0 && !IsAlreadyListed(pstEntries, uiCount, uiAddr)) {
            pstEntries[uiCount++].uiAddr = uiAddr;
        }
    }
    return uiCount;
}

uint32_t ResolveWithGetaddrinfo(const char *pcHost, uint32_t uiType,
                                tagLOGIN_S_SRV_IP_ENTRY *pstEntries, uint32_t *puiCount)
{
    addrinfo stHints;
    std::memset(&stHints, 0, sizeof(stHints));
    if (!AddressFlagsOfType(uiType, &stHints.ai_flags)) {
        return LOGIN_RESOLVE_ERR_TYPE;
    }
    stHints.ai_family = AF_INET;
    stHints.ai_socktype = SOCK_STREAM;

    addrinfo *pstAnswer = nullptr;
    const int iRet = getaddrinfo(pcHost, nullptr, &stHints, &pstAnswer);
    if (iRet != 0) {
        return LOGIN_RESOLVE_ERR_BASE + static_cast<uint32_t>(iRet < 0 ? -iRet : iRet);
    }
    const uint32_t uiCount = CollectIpv4Addresses(pstAnswer, pstEntries, *puiCount);
    freeaddrinfo(pstAnswer);
    if (uiCount == 0) {
        return LOGIN_RESOLVE_ERR_NONE;
    }
    *puiCount = uiCount;
    return 0;
}

/* ---- host names ---------------------------------------------------------------------- */

bool IsAsciiDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsHostNameChar(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || IsAsciiDigit(c) || c == '-' ||
           c == '_';
}

/* Labels of letters, digits, '-' and '_', 1 to 63 characters each, at most 253 in all,
 * with an optional final dot. */
bool HasHostNameSyntax(const char *pcText, size_t uiLen)
{
    if (uiLen > 0 && pcText[uiLen - 1] == '.') {
        --uiLen;
    }
    if (uiLen == 0 || uiLen > 253) {
        return false;
    }
    size_t uiLabelLen = 0;
    for (size_t i = 0; i < uiLen; ++i) {
        if (pcText[i] == '.') {
            if (uiLabelLen == 0) {
                return false;
            }
            uiLabelLen = 0;
        } else if (!IsHostNameChar(pcText[i]) || ++uiLabelLen > 63) {
            return false;
        }
    }
    return uiLabelLen != 0;
}

/* No top-level domain is all digits: such text is a (possibly malformed) IPv4 address. */
bool LastLabelIsNumeric(const char *pcText, size_t uiLen)
{
    if (uiLen > 0 && pcText[uiLen - 1] == '.') {
        --uiLen;
    }
    size_t uiStart = uiLen;
    while (uiStart > 0 && pcText[uiStart - 1] != '.') {
        --uiStart;
    }
    for (size_t i = uiStart; i < uiLen; ++i) {
        if (!IsAsciiDigit(pcText[i])) {
            return false;
        }
    }
    return uiStart < uiLen;
}

/* Any IPv4 form the system resolver reads as a number ("10.1", "0x7f.1" included). */
bool IsIpv4Literal(const char *pcText)
{
    in_addr stAddr;
    return inet_aton(pcText, &stAddr) != 0;
}

/* ---- server address texts ------------------------------------------------------------ */

const uint32_t SERVER_FORM_FAILED = 1;

bool IsIpv6Literal(const char *pcText, size_t uiLen)
{
    char acText[INET6_ADDRSTRLEN];
    if (uiLen >= sizeof(acText)) {
        return false;
    }
    std::memcpy(acText, pcText, uiLen);
    acText[uiLen] = '\0';
    in6_addr stAddr;
    return inet_pton(AF_INET6, acText, &stAddr) == 1;
}

bool EqualsNoCase(const char *pcText, size_t uiLen, const char *pcWord)
{
    return std::strlen(pcWord) == uiLen && strncasecmp(pcText, pcWord, uiLen) == 0;
}

size_t CountOf(const char *pcText, size_t uiLen, char c)
{
    size_t uiCount = 0;
    for (size_t i = 0; i < uiLen; ++i) {
        uiCount += pcText[i] == c ? 1 : 0;
    }
    return uiCount;
}

/* Decimal 1..65535, nothing else. */
bool ParsePort(const char *pcText, size_t uiLen, uint32_t *puiPort)
{
    if (uiLen == 0 || uiLen > 5) {
        return false;
    }
    uint32_t uiPort = 0;
    for (size_t i = 0; i < uiLen; ++i) {
        if (!IsAsciiDigit(pcText[i])) {
            return false;
        }
        uiPort = uiPort * 10 + static_cast<uint32_t>(pcText[i] - '0');
    }
    if (uiPort == 0 || uiPort > 65535) {
        return false;
    }
    *puiPort = uiPort;
    return true;
}

/* "" (no port) or ":port". */
bool ParseOptionalPort(const char *pcText, size_t uiLen, uint32_t *puiPort)
{
    if (uiLen == 0) {
        return true;
    }
    return pcText[0] == ':' && ParsePort(pcText + 1, uiLen - 1, puiPort);
}

void StoreHost(const char *pcHost, size_t uiLen, tagLOGIN_S_SERVER_ADDR_INFO *pstServer)
{
    std::memcpy(pstServer->acHost, pcHost, uiLen);
    pstServer->acHost[uiLen] = '\0';
}

/* "[v6]" or "[v6]:port"; the host is stored without brackets. */
bool ParseBracketedHostPort(const char *pcText, size_t uiLen,
                            tagLOGIN_S_SERVER_ADDR_INFO *pstServer)
{
    const char *pcClose = static_cast<const char *>(std::memchr(pcText, ']', uiLen));
    if (pcClose == nullptr) {
        return false;
    }
    const size_t uiHostLen = static_cast<size_t>(pcClose - pcText) - 1;
    if (!IsIpv6Literal(pcText + 1, uiHostLen)) {
        return false;
    }
    StoreHost(pcText + 1, uiHostLen, pstServer);
    const size_t uiRestLen = uiLen - uiHostLen - 2;
    return ParseOptionalPort(pcClose + 1, uiRestLen, &pstServer->uiPort);
}

/* "name", "ipv4", either with ":port", or a bare IPv6 literal (more than one ':'). */
bool ParsePlainHostPort(const char *pcText, size_t uiLen, tagLOGIN_S_SERVER_ADDR_INFO *pstServer)
{
    if (CountOf(pcText, uiLen, ':') > 1) {
        if (!IsIpv6Literal(pcText, uiLen)) {
            return false;
        }
        StoreHost(pcText, uiLen, pstServer);
        return true;
    }
    const char *pcColon = static_cast<const char *>(std::memchr(pcText, ':', uiLen));
    const size_t uiHostLen = pcColon == nullptr ? uiLen : static_cast<size_t>(pcColon - pcText);
    if (!HasHostNameSyntax(pcText, uiHostLen)) {
        return false;
    }
    StoreHost(pcText, uiHostLen, pstServer);
    return ParseOptionalPort(pcText + uiHostLen, uiLen - uiHostLen, &pstServer->uiPort);
}

bool ParseHostPort(const char *pcText, size_t uiLen, tagLOGIN_S_SERVER_ADDR_INFO *pstServer)
{
    if (uiLen > 0 && pcText[0] == '[') {
        return ParseBracketedHostPort(pcText, uiLen, pstServer);
    }
    return ParsePlainHostPort(pcText, uiLen, pstServer);
}

bool TransportOfName(const char *pcValue, size_t uiLen, uint32_t *puiTransport)
{
    if (EqualsNoCase(pcValue, uiLen, "udp")) {
        *puiTransport = LOGIN_TRANSPORT_UDP;
    } else if (EqualsNoCase(pcValue, uiLen, "tcp")) {
        *puiTransport = LOGIN_TRANSPORT_TCP;
    } else if (EqualsNoCase(pcValue, uiLen, "tls")) {
        *puiTransport = LOGIN_TRANSPORT_TLS;
    } else {
        return false;
    }
    return true;
}

/* One "name[=value]" parameter: a transport parameter must name a known transport, any
 * other parameter is ignored. */
bool ReadParameter(const char *pcParam, size_t uiLen, uint32_t *puiTransport)
{
    const char *pcEquals = static_cast<const char *>(std::memchr(pcParam, '=', uiLen));
    const size_t uiNameLen = pcEquals == nullptr ? uiLen : static_cast<size_t>(pcEquals - pcParam);
    if (!EqualsNoCase(pcParam, uiNameLen, "transport")) {
        return true;
    }
    const size_t uiValueLen = pcEquals == nullptr ? 0 : uiLen - uiNameLen - 1;
    return TransportOfName(pcParam + uiNameLen + 1, uiValueLen, puiTransport);
}

/* pcParams is "" or ";param;param...". */
bool ReadParameters(const char *pcParams, uint32_t *puiTransport)
{
    while (*pcParams == ';') {
        const char *pcParam = pcParams + 1;
        const size_t uiLen = std::strcspn(pcParam, ";");
        if (!ReadParameter(pcParam, uiLen, puiTransport)) {
            return false;
        }
        pcParams = pcParam + uiLen;
    }
    return true;
}

/* Skips "sip:" or "sips:" (any case) and sets the transport that the scheme implies. */
const char *SkipScheme(const char *pcText, uint32_t *puiTransport)
{
    *puiTransport = LOGIN_TRANSPORT_UDP;
    if ((pcText[0] | 0x20) != 's') { /* most texts have no scheme: spare the two compares */
        return pcText;
    }
    if (strncasecmp(pcText, "sips:", 5) == 0) {
        *puiTransport = LOGIN_TRANSPORT_TLS;
        return pcText + 5;
    }
    if (strncasecmp(pcText, "sip:", 4) == 0) {
        return pcText + 4;
    }
    return pcText;
}

/* A SIP URI holds at most one '@', which ends the user part. */
const char *SkipUserPart(const char *pcText)
{
    const char *pcAt = std::strchr(pcText, '@');
    return pcAt == nullptr ? pcText : pcAt + 1;
}

bool ParseServerAddress(const char *pcAddr, tagLOGIN_S_SERVER_ADDR_INFO *pstServer)
{
    const char *pcHostPort = SkipUserPart(SkipScheme(pcAddr, &pstServer->uiTransport));
    const size_t uiHostPortLen = std::strcspn(pcHostPort, ";");
    return ParseHostPort(pcHostPort, uiHostPortLen, pstServer) &&
           ReadParameters(pcHostPort + uiHostPortLen, &pstServer->uiTransport);
}

} // namespace

/* ---- exported functions -------------------------------------------------------------- */

extern "C" void LoginServiceSetTraceSink(LOGIN_TRACE_SINK_FN pfnSink, void *pvCtx)
{
    g_oTraceSink.Set(pfnSink, pvCtx);
}

extern "C" void LoginServiceSetTraceLevel(uint32_t uiMaxLevel)
{
    TraceThreshold().store(uiMaxLevel, std::memory_order_relaxed);
}

extern "C" uint32_t LoginServiceGetTraceLevel(void)
{
    return TraceThreshold().load(std::memory_order_relaxed);
}

extern "C" void LoginServiceSetResolver(LOGIN_RESOLVER_FN pfnResolve, void *pvCtx)
{
    g_oResolver.Set(pfnResolve, pvCtx);
}

extern "C" void LoginTraceCB(const char *pcModule, uint32_t uiLevel, const char *pcFunc,
                             const char *pcFile, uint32_t uiLine, const char *pcFormat, ...)
{
    (void)pcModule;
    if (!IsTraced(uiLevel) || pcFormat == nullptr) {
        return;
    }
    va_list vaArgs;
    va_start(vaArgs, pcFormat);
    FormattedText oMessage(pcFormat, vaArgs);
    va_end(vaArgs);

    const Binding<LOGIN_TRACE_SINK_FN> stSink = g_oTraceSink.Get();
    const LOGIN_TRACE_SINK_FN pfnSink = stSink.pfn != nullptr ? stSink.pfn : StderrSink;
    pfnSink(stSink.pvCtx, uiLevel, pcFunc != nullptr ? pcFunc : "",
            pcFile != nullptr ? pcFile : "", uiLine, oMessage.Text());
}

extern "C" uint32_t AtriumGetSrvIpListByHost(const char *pcHost, uint32_t uiType,
                                             tagLOGIN_S_SRV_IP_ENTRY *pstEntries,
                                             uint32_t *puiCount)
{
    if (pcHost == nullptr || pcHost[0] == '\0' || pstEntries == nullptr || puiCount == nullptr ||
        *puiCount == 0) {
        return LOGIN_RESOLVE_ERR_ARG;
    }
    const Binding<LOGIN_RESOLVER_FN> stResolver = g_oResolver.Get();
    if (stResolver.pfn != nullptr) {
        return stResolver.pfn(stResolver.pvCtx, pcHost, uiType, pstEntries, puiCount);
    }
    return ResolveWithGetaddrinfo(pcHost, uiType, pstEntries, puiCount);
}

extern "C" uint32_t CheckIsDomain(const char *pcText)
{
    if (pcText == nullptr) {
        return 0;
    }
    /* ':' and brackets fail the syntax, so IPv6 literals never count as names. */
    const size_t uiLen = std::strlen(pcText);
    if (!HasHostNameSyntax(pcText, uiLen) || LastLabelIsNumeric(pcText, uiLen) ||
        IsIpv4Literal(pcText)) {
        return 0;
    }
    return 1;
}

extern "C" uint32_t LoginDataGetServerFormString(const char *pcAddr,
                                                 tagLOGIN_S_SERVER_ADDR_INFO *pstServer)
{
    if (pstServer == nullptr) {
        return SERVER_FORM_FAILED;
    }
    std::memset(pstServer, 0, sizeof(*pstServer));
    if (pcAddr == nullptr) {
        return SERVER_FORM_FAILED;
    }
    /* Read in place: a failure may have written part of the entry, so it is cleared again. */
    if (!ParseServerAddress(pcAddr, pstServer)) {
        std::memset(pstServer, 0, sizeof(*pstServer));
        return SERVER_FORM_FAILED;
    }
    return 0;
}
