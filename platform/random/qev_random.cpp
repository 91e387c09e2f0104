/*
 * qev_random.cpp - random bytes from libsodium's generator, with a per-thread test hook.
 */
#include "qev_random.h"

#include <sodium.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

thread_local uint32_t (*t_pfnNext)(void *) = nullptr;
thread_local void *t_pvNextCtx = nullptr;

/* sodium_init() exactly once, thread-safely (magic static). randombytes_buf works even if
 * it failed (it then aborts rather than return weak bytes), so the result is not needed. */
void SodiumInitOnce()
{
    static const int s_iInit = sodium_init();
    (void)s_iInit;
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
    SodiumInitOnce();
    randombytes_buf(pvBuf, uiLen);
    return 0;
}

extern "C" void QEV_CPYPT_SetRandomHook(uint32_t (*pfnNext)(void *pvCtx), void *pvCtx)
{
    t_pfnNext = pfnNext;
    t_pvNextCtx = pfnNext != nullptr ? pvCtx : nullptr;
}
