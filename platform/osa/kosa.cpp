/*
 * kosa.cpp - the OS layer: memory ledger, text routines, numbers, addresses, files.
 *
 * See kosa.h for the contract. Notes on the choices made here:
 *  - Memory: every block is [header][user bytes]. The header is aligned to max_align_t so
 *    the user pointer keeps malloc's alignment. The live-block count is a process-wide
 *    atomic. Debug builds (NDEBUG not defined) also keep file, line and a doubly-linked list
 *    of live blocks under a mutex for KOSA_MemForEachLive; release builds keep only the
 *    size and the atomic count (no lock on the allocation path).
 *  - Failure injection is a thread_local countdown shared by KOSA_MemMallocS and
 *    KOSA_MemMallocD.
 *  - KOSA_Write is exactly one write() call: no retry, not even on EINTR (kosa.h: "No
 *    retry"); a caller that needs the whole buffer written loops itself.
 */
#include "kosa.h"
#include "atrium_test_control.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <unistd.h>

#include <atomic>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#ifndef NDEBUG
#include <cassert>
#include <mutex>
#endif

/* ======================================================================================
 * memory
 * ====================================================================================== */
namespace {

struct alignas(alignof(std::max_align_t)) BlockHeader {
    uint32_t uiSize;
#ifndef NDEBUG
    uint32_t uiMagic;
    uint32_t uiLine;
    const char *pcFile;
    BlockHeader *pstPrev;
    BlockHeader *pstNext;
#endif
};

static_assert(sizeof(BlockHeader) % alignof(std::max_align_t) == 0,
              "the header must keep the user pointer aligned to max_align_t");

std::atomic<uint32_t> g_uiLiveBlocks{0};

/* Allocations this thread may still make before the injected failure;
 * KOSA_MEM_FAIL_NEVER when disarmed. */
thread_local uint32_t t_uiFailCountdown = KOSA_MEM_FAIL_NEVER;

#ifndef NDEBUG
constexpr uint32_t kMagicLive = 0x4B4F5341u; /* "KOSA" */
constexpr uint32_t kMagicDead = 0xDEADB10Cu;

std::mutex &LedgerMutex()
{
    static std::mutex *s_pMutex = new std::mutex(); /* never destroyed: usable during exit */
    return *s_pMutex;
}
BlockHeader *g_pstHead = nullptr; /* guarded by LedgerMutex() */
#endif

/* True when the injected failure fires for this call (and disarms the thread). */
inline bool InjectedFailure()
{
    uint32_t uiLeft = t_uiFailCountdown;
    if (uiLeft == KOSA_MEM_FAIL_NEVER) {
        return false;
    }
    if (uiLeft == 0) {
        t_uiFailCountdown = KOSA_MEM_FAIL_NEVER;
        return true;
    }
    t_uiFailCountdown = uiLeft - 1;
    return false;
}

void *Allocate(uint32_t uiSize, bool bZero, uint32_t uiLine, const char *pcFile)
{
    if (InjectedFailure()) {
        return nullptr;
    }
    if (static_cast<size_t>(uiSize) > SIZE_MAX - sizeof(BlockHeader)) {
        return nullptr; /* only possible where size_t is 32 bits */
    }
    const size_t uiTotal = sizeof(BlockHeader) + static_cast<size_t>(uiSize);
    void *pvRaw = bZero ? std::calloc(1, uiTotal) : std::malloc(uiTotal);
    if (pvRaw == nullptr) {
        return nullptr;
    }
    BlockHeader *pstHdr = new (pvRaw) BlockHeader();
    pstHdr->uiSize = uiSize;
#ifndef NDEBUG
    pstHdr->uiMagic = kMagicLive;
    pstHdr->uiLine = uiLine;
    pstHdr->pcFile = pcFile;
    {
        std::lock_guard<std::mutex> lock(LedgerMutex());
        pstHdr->pstPrev = nullptr;
        pstHdr->pstNext = g_pstHead;
        if (g_pstHead != nullptr) {
            g_pstHead->pstPrev = pstHdr;
        }
        g_pstHead = pstHdr;
    }
#else
    (void)uiLine;
    (void)pcFile;
#endif
    g_uiLiveBlocks.fetch_add(1, std::memory_order_relaxed);
    return pstHdr + 1;
}

} // namespace

extern "C" void *KOSA_MemMallocS(uint32_t uiSize, uint32_t uiZero, uint32_t uiLine,
                                 const char *pcFile)
{
    (void)uiZero;
    return Allocate(uiSize, true, uiLine, pcFile);
}

extern "C" void *KOSA_MemMallocD(uint32_t uiSize, uint32_t uiLine, const char *pcFile)
{
    return Allocate(uiSize, false, uiLine, pcFile);
}

extern "C" void KOSA_MemFreeD(void *pvMem, uint32_t uiLine, const char *pcFile)
{
    (void)uiLine;
    (void)pcFile;
    if (pvMem == nullptr) {
        return;
    }
    BlockHeader *pstHdr = static_cast<BlockHeader *>(pvMem) - 1;
#ifndef NDEBUG
    /* A foreign pointer or a second free of the same block. */
    assert(pstHdr->uiMagic == kMagicLive && "KOSA_MemFreeD: not a live KOSA block");
    {
        std::lock_guard<std::mutex> lock(LedgerMutex());
        if (pstHdr->pstPrev != nullptr) {
            pstHdr->pstPrev->pstNext = pstHdr->pstNext;
        } else {
            g_pstHead = pstHdr->pstNext;
        }
        if (pstHdr->pstNext != nullptr) {
            pstHdr->pstNext->pstPrev = pstHdr->pstPrev;
        }
    }
    pstHdr->uiMagic = kMagicDead;
#endif
    g_uiLiveBlocks.fetch_sub(1, std::memory_order_relaxed);
    pstHdr->~BlockHeader();
    std::free(pstHdr);
}

extern "C" void KOSA_MemFreeSetNullD(void **ppvMem, uint32_t uiLine, const char *pcFile)
{
    if (ppvMem == nullptr) {
        return;
    }
    if (*ppvMem != nullptr) {
        KOSA_MemFreeD(*ppvMem, uiLine, pcFile);
    }
    *ppvMem = nullptr;
}

extern "C" uint32_t KOSA_MemLiveBlocks(void)
{
    return g_uiLiveBlocks.load(std::memory_order_relaxed);
}

extern "C" void KOSA_MemFailAfter(uint32_t uiSucceed)
{
    t_uiFailCountdown = uiSucceed;
}

extern "C" uint32_t KOSA_MemForEachLive(KOSA_MEM_VISIT_FN pfnVisit, void *pvCtx)
{
#ifndef NDEBUG
    uint32_t uiVisited = 0;
    std::lock_guard<std::mutex> lock(LedgerMutex());
    for (const BlockHeader *pstHdr = g_pstHead; pstHdr != nullptr; pstHdr = pstHdr->pstNext) {
        if (pfnVisit != nullptr) {
            pfnVisit(pvCtx, pstHdr + 1, pstHdr->uiSize, pstHdr->pcFile, pstHdr->uiLine);
        }
        ++uiVisited;
    }
    return uiVisited;
#else
    /* Release builds keep no list of blocks (no lock on the allocation path), so there is
     * nothing to visit; only the count of KOSA_MemLiveBlocks is available. */
    (void)pfnVisit;
    (void)pvCtx;
    return 0;
#endif
}

/* ======================================================================================
 * text
 * ====================================================================================== */

extern "C" uint32_t KOSA_StrLen(const char *pcText)
{
    if (pcText == nullptr) {
        return 0;
    }
    const size_t uiLen = std::strlen(pcText);
    return uiLen > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(uiLen);
}

extern "C" int32_t KOSA_StrCmp(const char *pcLeft, const char *pcRight)
{
    if (pcLeft == nullptr || pcRight == nullptr) {
        if (pcLeft == pcRight) {
            return 0;
        }
        return pcLeft == nullptr ? -1 : 1;
    }
    const int iCmp = std::strcmp(pcLeft, pcRight);
    return iCmp < 0 ? -1 : (iCmp > 0 ? 1 : 0);
}

extern "C" char *KOSA_StrChr(const char *pcText, int32_t iChar)
{
    if (pcText == nullptr) {
        return nullptr;
    }
    return const_cast<char *>(std::strchr(pcText, static_cast<int>(iChar)));
}

extern "C" char *KOSA_StrStr(const char *pcText, const char *pcNeedle)
{
    if (pcText == nullptr || pcNeedle == nullptr) {
        return nullptr;
    }
    return const_cast<char *>(std::strstr(pcText, pcNeedle));
}

extern "C" int32_t KOSA_MemCmp(const void *pvLeft, const void *pvRight, uint32_t uiLen)
{
    if (uiLen == 0) {
        return 0;
    }
    const int iCmp = std::memcmp(pvLeft, pvRight, uiLen);
    return iCmp < 0 ? -1 : (iCmp > 0 ? 1 : 0);
}

/* ======================================================================================
 * numbers
 * ====================================================================================== */

extern "C" uint32_t KOSA_Strtoul(const char *pcText, char **ppcEnd, int32_t iBase)
{
    if (pcText == nullptr) {
        if (ppcEnd != nullptr) {
            *ppcEnd = nullptr;
        }
        return 0;
    }
    /* Find the sign the way strtoul does (after leading white space), so that a negative
     * number can be negated modulo 2^32 from its magnitude. */
    const char *pcScan = pcText;
    while (std::isspace(static_cast<unsigned char>(*pcScan))) {
        ++pcScan;
    }
    const bool bNegative = (*pcScan == '-');

    /* strtoull leaves the end pointer alone for an invalid base. */
    char *pcEnd = const_cast<char *>(pcText);
    const int iSavedErrno = errno;
    errno = 0;
    const unsigned long long ullValue = std::strtoull(pcText, &pcEnd, iBase);
    const bool bRange = (errno == ERANGE);
    errno = iSavedErrno;

    if (ppcEnd != nullptr) {
        *ppcEnd = pcEnd;
    }
    if (pcEnd == pcText) {
        return 0; /* no number (or an invalid base) */
    }
    if (bRange) {
        return UINT32_MAX;
    }
    /* strtoull gives -magnitude modulo 2^64 for a minus sign. */
    const unsigned long long ullMagnitude = bNegative ? (0ULL - ullValue) : ullValue;
    if (ullMagnitude > UINT32_MAX) {
        return UINT32_MAX;
    }
    const uint32_t uiMagnitude = static_cast<uint32_t>(ullMagnitude);
    return bNegative ? static_cast<uint32_t>(0u - uiMagnitude) : uiMagnitude;
}

extern "C" uint32_t KOSA_StrToInt32(const char *pcText, int32_t *piOut)
{
    if (pcText == nullptr || *pcText == '\0') {
        return KOSA_STRTOINT_EMPTY;
    }
    const char *pcDigits = pcText;
    if (*pcDigits == '+' || *pcDigits == '-') {
        ++pcDigits;
    }
    if (*pcDigits == '\0') {
        return KOSA_STRTOINT_SYNTAX; /* a sign alone */
    }
    for (const char *pc = pcDigits; *pc != '\0'; ++pc) {
        if (*pc < '0' || *pc > '9') {
            return KOSA_STRTOINT_SYNTAX;
        }
    }
    /* The text is [+-]digits now, so strtoll consumes all of it. */
    const int iSavedErrno = errno;
    errno = 0;
    const long long llValue = std::strtoll(pcText, nullptr, 10);
    const bool bRange = (errno == ERANGE);
    errno = iSavedErrno;
    if (bRange || llValue < INT32_MIN || llValue > INT32_MAX) {
        return KOSA_STRTOINT_OVERFLOW;
    }
    if (piOut != nullptr) {
        *piOut = static_cast<int32_t>(llValue);
    }
    return 0;
}

/* ======================================================================================
 * addresses
 * ====================================================================================== */

extern "C" const char *KOSA_InetNtoa(uint32_t uiAddr)
{
    thread_local char t_acText[INET_ADDRSTRLEN];
    struct in_addr stAddr;
    stAddr.s_addr = uiAddr; /* already in network byte order */
    if (inet_ntop(AF_INET, &stAddr, t_acText, sizeof(t_acText)) == nullptr) {
        t_acText[0] = '\0'; /* cannot happen for AF_INET with this buffer size */
    }
    return t_acText;
}

/* ======================================================================================
 * files
 * ====================================================================================== */

extern "C" int32_t KOSA_Open(const char *pcPath, uint32_t uiFlags, uint32_t uiMode)
{
    constexpr uint32_t kKnown =
        KOSA_O_WRONLY | KOSA_O_RDWR | KOSA_O_APPEND | KOSA_O_CREAT | KOSA_O_TRUNC;
    if (pcPath == nullptr || (uiFlags & ~kKnown) != 0) {
        return -1;
    }
    if ((uiFlags & KOSA_O_WRONLY) != 0 && (uiFlags & KOSA_O_RDWR) != 0) {
        return -1; /* no access mode is both */
    }
    int iFlags = O_CLOEXEC;
    if ((uiFlags & KOSA_O_RDWR) != 0) {
        iFlags |= O_RDWR;
    } else if ((uiFlags & KOSA_O_WRONLY) != 0) {
        iFlags |= O_WRONLY;
    } else {
        iFlags |= O_RDONLY;
    }
    if ((uiFlags & KOSA_O_APPEND) != 0) {
        iFlags |= O_APPEND;
    }
    if ((uiFlags & KOSA_O_CREAT) != 0) {
        iFlags |= O_CREAT;
    }
    if ((uiFlags & KOSA_O_TRUNC) != 0) {
        iFlags |= O_TRUNC;
    }
    const int iFd = ::open(pcPath, iFlags, static_cast<mode_t>(uiMode & 07777u));
    return iFd < 0 ? -1 : static_cast<int32_t>(iFd);
}

extern "C" int32_t KOSA_Write(int32_t iFd, const void *pvData, uint32_t uiLen)
{
    if (pvData == nullptr && uiLen != 0) {
        return -1;
    }
    /* One write() call, no retry (also not on EINTR). The length is capped so that the
     * count always fits the int32_t result; a shorter count is an ordinary partial write. */
    const size_t uiChunk = uiLen > static_cast<uint32_t>(INT32_MAX)
                               ? static_cast<size_t>(INT32_MAX)
                               : static_cast<size_t>(uiLen);
    const ssize_t iWritten = ::write(iFd, pvData, uiChunk);
    return iWritten < 0 ? -1 : static_cast<int32_t>(iWritten);
}

extern "C" int32_t KOSA_Close(int32_t iFd)
{
    return ::close(iFd) == 0 ? 0 : -1;
}
