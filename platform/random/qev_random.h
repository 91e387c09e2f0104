/*
 * qev_random.h - cryptographically strong random bytes (libsodium's generator). A
 * per-thread test hook that makes draws deterministic is declared in atrium_test_control.h.
 */
#ifndef QEV_RANDOM_H
#define QEV_RANDOM_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Fills uiLen bytes at pvBuf. Returns 0, or 1 when pvBuf is null with a non-zero length.
 * Safe from any thread. Requests of up to 64 bytes are served from a per-thread pool of the
 * generator's bytes (each byte handed out once; a forked child discards the pool it
 * inherited), so a run of small draws costs one system call, not one each. */
uint32_t QEV_CPYPT_RealRandom(void *pvBuf, uint32_t uiLen);

#ifdef __cplusplus
}
#endif

#endif /* QEV_RANDOM_H */
