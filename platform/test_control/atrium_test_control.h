/*
 * atrium_test_control.h - every test hook of the platform libraries in one place: failure
 * injection, live counts and observation. Tests, the fuzz targets, the benchmarks and the
 * inspector include it; production headers do not.
 *
 * The integration contract also declares four of these through atrium_xml.h
 * (KOSA_MemLiveBlocks, KOSA_MemFailAfter, KTL_XML_LiveDocuments, QEV_CPYPT_SetRandomHook):
 * there they are repeated with the same prototypes, and only those four.
 *
 * Every hook is safe to call from any thread; those that arm or observe act on the calling
 * thread only, the counts are process-wide.
 */
#ifndef ATRIUM_TEST_CONTROL_H
#define ATRIUM_TEST_CONTROL_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- memory (kosa) ----------------------------------------------------------------- */

/* Blocks from KOSA_MemMallocS/D not yet freed, process-wide. */
uint32_t KOSA_MemLiveBlocks(void);

#define KOSA_MEM_FAIL_NEVER 0xFFFFFFFFu

/* This thread: uiSucceed more allocations succeed, the next returns null, then the thread
 * is back to normal. KOSA_MEM_FAIL_NEVER disarms. */
void KOSA_MemFailAfter(uint32_t uiSucceed);

/* Debug builds: visits every live block with its size and the file and line that
 * allocated it, and returns the number visited. Release builds keep no list of blocks (the
 * allocation path takes no lock there): nothing is visited and the result is 0.
 * The callback must not allocate or free through this ledger. */
typedef void (*KOSA_MEM_VISIT_FN)(void *pvCtx, const void *pvBlock, uint32_t uiSize,
                                  const char *pcFile, uint32_t uiLine);
uint32_t KOSA_MemForEachLive(KOSA_MEM_VISIT_FN pfnVisit, void *pvCtx);

/* ---- XML document library (ktl_xml) ------------------------------------------------ */

/* Documents parsed and not yet released, process-wide. */
uint32_t KTL_XML_LiveDocuments(void);

/* This thread: uiSucceed more calls of KTL_XML_GetNodeValue behave normally, the next one
 * fails with KTL_XML_ERR_INJECTED (out-pointers null), then the thread is back to normal.
 * KTL_XML_FAIL_NEVER disarms. Lets a test reach the paths of a value read that fails,
 * which a well-formed document never gives otherwise. */
#define KTL_XML_FAIL_NEVER 0xFFFFFFFFu
void KTL_XML_FailValueReadsAfter(uint32_t uiSucceed);

/* ---- random bytes (qev_random) ----------------------------------------------------- */

/* This thread: while pfnNext is set, QEV_CPYPT_RealRandom fills its buffer with
 * successive values of pfnNext(pvCtx), 4 bytes each in native byte order (a final partial
 * chunk takes the first bytes of one more value). Null restores the real source. */
void QEV_CPYPT_SetRandomHook(uint32_t (*pfnNext)(void *pvCtx), void *pvCtx);

/* ---- bounded routines (qev_bounded) ------------------------------------------------ */

/* Called on the calling thread for every failed bounded routine, with the routine's name,
 * the capacity given and the size that was needed (0 when unknown). One pointer per
 * thread; null (the default) turns it off. */
typedef void (*QEV_DIAG_HOOK)(void *pvCtx, const char *pcRoutine, uint32_t uiDestSize,
                              uint32_t uiNeeded);
void qev_SetDiagHook(QEV_DIAG_HOOK pfnHook, void *pvCtx);

#ifdef __cplusplus
}
#endif

#endif /* ATRIUM_TEST_CONTROL_H */
