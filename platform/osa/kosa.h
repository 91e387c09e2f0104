/*
 * kosa.h - the OS layer: memory with a ledger, text routines, numbers, addresses, files.
 *
 * Memory: every block from KOSA_MemMallocS/KOSA_MemMallocD carries a small header that
 * the ledger uses to count live blocks (always) and, in debug builds (NDEBUG not defined
 * when the library is compiled), to remember the file and line of the allocation so that
 * KOSA_MemForEachLive can name a leak. Only the module's own allocations go through
 * these routines; the XML document library and base64 allocate elsewhere.
 *
 * Its test hooks (live count, failure injection, the walk over live blocks) are declared
 * in atrium_test_control.h.
 *
 * All routines are safe to call from any thread.
 */
#ifndef KOSA_H
#define KOSA_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- memory ------------------------------------------------------------------------ */

/* Allocates uiSize bytes, zero-filled. uiZero is ignored. Null on failure. A size of 0
 * yields a valid, unique block (free it like any other). */
void *KOSA_MemMallocS(uint32_t uiSize, uint32_t uiZero, uint32_t uiLine, const char *pcFile);

/* Allocates uiSize bytes with unspecified content. Null on failure. */
void *KOSA_MemMallocD(uint32_t uiSize, uint32_t uiLine, const char *pcFile);

/* Frees a block from KOSA_MemMallocS/D. A null pointer is ignored. */
void KOSA_MemFreeD(void *pvMem, uint32_t uiLine, const char *pcFile);

/* Frees *ppvMem (when ppvMem and *ppvMem are not null) and sets *ppvMem to null. */
void KOSA_MemFreeSetNullD(void **ppvMem, uint32_t uiLine, const char *pcFile);

/* ---- text -------------------------------------------------------------------------- */

/* Length of pcText; 0 for a null pointer. */
uint32_t KOSA_StrLen(const char *pcText);
/* strcmp; a null pointer orders before any text, two nulls are equal. */
int32_t KOSA_StrCmp(const char *pcLeft, const char *pcRight);
/* strchr; null for a null text. */
char *KOSA_StrChr(const char *pcText, int32_t iChar);
/* strstr; null when either argument is null. */
char *KOSA_StrStr(const char *pcText, const char *pcNeedle);
/* memcmp over uiLen bytes; 0 for uiLen 0. Both pointers must be valid for uiLen bytes. */
int32_t KOSA_MemCmp(const void *pvLeft, const void *pvRight, uint32_t uiLen);

/* ---- numbers ----------------------------------------------------------------------- */

/*
 * strtoul with 32-bit results. iBase 0 accepts decimal, "0x"/"0X" hexadecimal and
 * leading-0 octal. Leading white space and a sign are accepted as strtoul does (a minus
 * negates modulo 2^32). Text that is not a number gives 0 and no error; a magnitude above
 * 0xFFFFFFFF gives 0xFFFFFFFF. A null text gives 0. *ppcEnd, when ppcEnd is not null,
 * receives the end of the number (pcText itself when there was none).
 */
uint32_t KOSA_Strtoul(const char *pcText, char **ppcEnd, int32_t iBase);

/*
 * Converts decimal text with an optional sign ("-5", "+12", "42") to a signed 32-bit
 * number. Returns 0 and writes *piOut on success. Returns a non-zero code and leaves *piOut
 * untouched for a null or empty text, any other character (white space included), or a
 * value outside the signed 32-bit range.
 */
#define KOSA_STRTOINT_EMPTY    1u
#define KOSA_STRTOINT_SYNTAX   2u
#define KOSA_STRTOINT_OVERFLOW 3u
uint32_t KOSA_StrToInt32(const char *pcText, int32_t *piOut);

/* ---- addresses --------------------------------------------------------------------- */

/* Dotted text of an IPv4 address given in network byte order. The text lives in a buffer
 * of the calling thread, valid until that thread's next call (reentrant across threads). */
const char *KOSA_InetNtoa(uint32_t uiAddr);

/* ---- files ------------------------------------------------------------------------- */

/* The platform's own flag numbering, mapped to the host's flags inside KOSA_Open. */
#define KOSA_O_RDONLY 0x0
#define KOSA_O_WRONLY 0x1
#define KOSA_O_RDWR   0x2
#define KOSA_O_APPEND 0x8
#define KOSA_O_CREAT  0x200
#define KOSA_O_TRUNC  0x400

/* Opens pcPath with KOSA_O_* flags and, when creating, permission bits uiMode (the
 * process umask applies). Returns a descriptor >= 0, or -1 (also for unknown flag bits
 * or a null path). The descriptor is closed on exec. */
int32_t KOSA_Open(const char *pcPath, uint32_t uiFlags, uint32_t uiMode);
/* One write call of uiLen bytes; returns the number written or -1. No retry. */
int32_t KOSA_Write(int32_t iFd, const void *pvData, uint32_t uiLen);
/* Closes the descriptor; 0 or -1. */
int32_t KOSA_Close(int32_t iFd);

#ifdef __cplusplus
}
#endif

#endif /* KOSA_H */
