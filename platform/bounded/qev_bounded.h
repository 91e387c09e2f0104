/*
 * qev_bounded.h - bounded string and memory routines.
 *
 * Every routine takes the destination's full capacity (terminator included) as its second
 * argument and never writes outside it. The copying routines return QEV_OK (0) on success
 * and a non-zero QEV_E* code otherwise. On failure a string routine leaves an empty string
 * in the destination (when the destination is usable at all), so a caller never sees a
 * truncated or partial value. Failures are also reported to the calling thread's
 * diagnostic hook when one is set (off by default; nothing is spent while it is off;
 * qev_SetDiagHook in atrium_test_control.h).
 */
#ifndef QEV_BOUNDED_H
#define QEV_BOUNDED_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define QEV_OK       0
#define QEV_EINVAL   22  /* null destination, zero or huge capacity, null source */
#define QEV_ERANGE   34  /* the source does not fit the destination */
#define QEV_EOVERLAP 54  /* source and destination overlap */

/* Destination capacities above this are treated as corrupt sizes (QEV_EINVAL). */
#define QEV_MAX_DEST_SIZE 0x7FFFFFFFu

/*
 * Copies pcSrc with its terminator. QEV_ERANGE when strlen(pcSrc) + 1 > uiDestSize,
 * QEV_EINVAL for a null pointer or uiDestSize 0; pcDest is "" after any failure where it
 * is usable.
 */
int qev_strcpy_s(char *pcDest, uint32_t uiDestSize, const char *pcSrc);

/*
 * Copies at most uiCount characters of pcSrc (fewer when its terminator comes first) and
 * terminates. QEV_ERANGE when that many characters plus the terminator exceed uiDestSize.
 * The usual call passes uiCount = strlen(pcSrc) + 1.
 */
int qev_strncpy_s(char *pcDest, uint32_t uiDestSize, const char *pcSrc, uint32_t uiCount);

/*
 * Appends pcSrc to the string in pcDest. QEV_ERANGE when the joined text with its
 * terminator exceeds uiDestSize, or pcDest holds no terminator within uiDestSize: the
 * whole destination is then left as "" (what was there before is dropped too).
 */
int qev_strcat_s(char *pcDest, uint32_t uiDestSize, const char *pcSrc);

/*
 * Copies uiCount bytes (no terminator) when uiCount <= uiDestSize. QEV_ERANGE otherwise,
 * with the first uiDestSize bytes of pcDest zeroed; QEV_EOVERLAP (destination untouched)
 * when the two spans overlap; QEV_EINVAL for a null pointer with a non-zero count.
 */
int qev_memcpy_s(void *pvDest, uint32_t uiDestSize, const void *pvSrc, uint32_t uiCount);

/*
 * Sets uiCount bytes to (unsigned char)iValue. When uiCount > uiDestSize only uiDestSize
 * bytes are set and QEV_ERANGE is returned. The stores are never optimised away, so the
 * routine serves to wipe secrets.
 */
int qev_memset_s(void *pvDest, uint32_t uiDestSize, int iValue, uint32_t uiCount);

/*
 * printf into pcDest. Unlike the routines above it returns a count, as sprintf does: the
 * number of characters written (without terminator), or -1 when the text does not fit or
 * the arguments are invalid, with pcDest left as "" where usable.
 */
int qev_sprintf_s(char *pcDest, uint32_t uiDestSize, const char *pcFormat, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 3, 4)))
#endif
    ;

/*
 * sscanf with bounded string outputs. Supports literal characters, white space, %%,
 * %d %i %u %x %o (optional width; plain int/unsigned outputs), %s, %c and %[set]/%[^set].
 * Every %s, %c and %[ output is followed by its capacity as an unsigned int (uint32_t).
 * A string that does not fit its capacity (terminator included) leaves "" in that output
 * and ends the scan. Returns the number of outputs assigned, or -1 when the input ends
 * before the first conversion or the format is invalid or unsupported.
 */
int qev_sscanf_s(const char *pcSrc, const char *pcFormat, ...);

#ifdef __cplusplus
}
#endif

#endif /* QEV_BOUNDED_H */
