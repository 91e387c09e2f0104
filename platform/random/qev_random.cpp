/*
 * qev_random.cpp - random bytes from libsodium's generator, with a per-thread test hook.
 *
 * libsodium asks the kernel for every request (one getrandom system call each, some 0.6
 * microseconds), and a login draws one 4-byte number per chosen access group. So small
 * requests are served from a per-thread pool of libsodium's bytes, refilled with one request
 * when it runs dry: the bytes are the same generator's, only fetched in bulk. A byte is
 * handed out once and wiped from the pool as it is handed out; a forked child drops its copy
 * of the pool (the parent would hand out the same bytes), and an exiting thread wipes its
 * own.
 */
#include "qev_random.h"
#include "atrium_test_control.h"

#include <pthread.h>
#include <sodium.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

thread_local uint32_t (*t_pfnNext)(void *) = nullptr;
thread_local void *t_pvNextCtx = nullptr;

/* Requests up to POOL_SERVES_UP_TO bytes are served from a pool of POOL_BYTES; larger ones
 * go to libsodium directly. */
const uint32_t POOL_BYTES = 256;
const uint32_t POOL_SERVES_UP_TO = 64;
static_assert(POOL_SERVES_UP_TO <= POOL_BYTES, "a request the pool serves fits a full pool");

class RandomPool {
public:
    RandomPool() = default;
    RandomPool(const RandomPool &) = delete;
    RandomPool &operator=(const RandomPool &) = delete;
    ~RandomPool() { Discard(); }

    void Take(unsigned char *pucOut, uint32_t uiLen)
    {
        if (uiLen > m_uiLeft) {
            Discard();
            randombytes_buf(m_aucBytes, sizeof(m_aucBytes));
            m_uiLeft = sizeof(m_aucBytes);
        }
        unsigned char *pucNext = m_aucBytes + (sizeof(m_aucBytes) - m_uiLeft);
        std::memcpy(pucOut, pucNext, uiLen);
        sodium_memzero(pucNext, uiLen);
        m_uiLeft -= uiLen;
    }

    void Discard()
    {
        sodium_memzero(m_aucBytes, sizeof(m_aucBytes));
        m_uiLeft = 0;
    }

private:
    unsigned char m_aucBytes[POOL_BYTES];
    uint32_t m_uiLeft = 0; /* the unserved bytes are the last m_uiLeft of m_aucBytes */
};

thread_local RandomPool t_oPool;

/* In a forked child only the forking thread lives on; its pool is a copy of the parent's. */
void DiscardPoolInChild()
{
    t_oPool.Discard();
}

/* sodium_init() and the fork handler exactly once, thread-safely (magic static).
 * randombytes_buf works even if sodium_init failed (it then aborts rather than return weak
 * bytes), so its result is not needed. If the handler cannot be registered, the pool is
 * not used: a child must never repeat its parent's bytes. */
bool PoolUsable()
{
    static const bool s_bUsable = [] {
        const int iInit = sodium_init();
        (void)iInit;
        return pthread_atfork(nullptr, nullptr, DiscardPoolInChild) == 0;
    }();
    return s_bUsable;
}

} // namespace

extern "C" uint32_t QEV_CPYPT_RealRandom(void *pvBuf, uint32_t uiLen)
{
    if (uiLen == 0) {
        return 0;
    }
    if (pvBuf == nullptr) {
        return 1;
    }
    uint32_t (*pfnNext)(void *) = t_pfnNext;
    if (pfnNext != nullptr) {
        unsigned char *pucOut = static_cast<unsigned char *>(pvBuf);
        void *pvCtx = t_pvNextCtx;
        uint32_t uiLeft = uiLen;
        while (uiLeft != 0) {
            const uint32_t uiValue = pfnNext(pvCtx);
            const uint32_t uiChunk = uiLeft < 4u ? uiLeft : 4u;
            std::memcpy(pucOut, &uiValue, uiChunk); /* native byte order */
            pucOut += uiChunk;
            uiLeft -= uiChunk;
        }
        return 0;
    }
    if (PoolUsable() && uiLen <= POOL_SERVES_UP_TO) {
        t_oPool.Take(static_cast<unsigned char *>(pvBuf), uiLen);
    } else {
        randombytes_buf(pvBuf, uiLen);
    }
    return 0;
}

extern "C" void QEV_CPYPT_SetRandomHook(uint32_t (*pfnNext)(void *pvCtx), void *pvCtx)
{
    t_pfnNext = pfnNext;
    t_pvNextCtx = pfnNext != nullptr ? pvCtx : nullptr;
}
