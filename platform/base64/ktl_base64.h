/*
 * ktl_base64.h - base64 (RFC 4648, standard alphabet, padded) over libsodium.
 *
 * Buffers handed out here come from the C heap, not from the KOSA memory ledger; release
 * them only with KTL_BASE64Free.
 */
#ifndef KTL_BASE64_H
#define KTL_BASE64_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Encodes uiLen bytes at pvData. Returns a new NUL-terminated text, or null when the
 * allocation fails or pvData is null with a non-zero length. An empty input gives "".
 */
char *KTL_BASE64Encode(const void *pvData, uint32_t uiLen);

/*
 * Decodes uiLen characters of pcText, strictly: the standard alphabet with '=' padding;
 * spaces, tabs and line breaks are ignored (servers wrap long blocks); anything else makes
 * the text invalid. Returns the number of bytes decoded (> 0) with *ppcOut set to a new
 * buffer holding them plus a terminating zero byte, or a value not above 0 with *ppcOut
 * null: 0 for empty input, -1 for invalid text, a null argument or no memory.
 */
int32_t KTL_BASE64Decode(const char *pcText, uint32_t uiLen, char **ppcOut);

/* Releases *ppcData (when not null) and sets it to null. */
void KTL_BASE64Free(char **ppcData);

#ifdef __cplusplus
}
#endif

#endif /* KTL_BASE64_H */
