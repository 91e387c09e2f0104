/*
 * ktl_base64.cpp - base64 (RFC 4648, standard alphabet, padded) over libsodium.
 *
 * Buffers come from malloc/free, never from the KOSA ledger (see ktl_base64.h).
 */
#include "ktl_base64.h"

#include <sodium.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kVariant = sodium_base64_VARIANT_ORIGINAL;

/* Characters that servers put into wrapped blocks; ignored when decoding. */
const char kIgnored[] = " \t\r\n";

/* sodium_init() exactly once, thread-safely (magic static). True when usable. */
bool SodiumReady()
{
    static const bool s_bReady = (sodium_init() >= 0);
    return s_bReady;
}

} // namespace

extern "C" char *KTL_BASE64Encode(const void *pvData, uint32_t uiLen)
{
    if (pvData == nullptr && uiLen != 0) {
        return nullptr;
    }
    if (!SodiumReady()) {
        return nullptr;
    }
    /* Includes the terminator; cannot overflow size_t for a 32-bit length on 64-bit hosts. */
    const size_t uiOutLen = sodium_base64_ENCODED_LEN(static_cast<size_t>(uiLen), kVariant);
    char *pcOut = static_cast<char *>(std::malloc(uiOutLen));
    if (pcOut == nullptr) {
        return nullptr;
    }
    if (uiLen == 0) {
        pcOut[0] = '\0';
        return pcOut;
    }
    sodium_bin2base64(pcOut, uiOutLen, static_cast<const unsigned char *>(pvData), uiLen,
                      kVariant);
    return pcOut;
}

extern "C" int32_t KTL_BASE64Decode(const char *pcText, uint32_t uiLen, char **ppcOut)
{
    if (ppcOut == nullptr) {
        return -1;
    }
    *ppcOut = nullptr;
    if (pcText == nullptr) {
        return -1;
    }
    if (uiLen == 0) {
        return 0;
    }
    /* libsodium tests ignorable characters with strchr(), which also "finds" a NUL byte;
     * a NUL inside the text is not white space, so refuse it here. */
    if (std::memchr(pcText, '\0', uiLen) != nullptr) {
        return -1;
    }
    if (!SodiumReady()) {
        return -1;
    }
    /* Every 4 characters give at most 3 bytes; one more byte for the terminating zero. */
    const size_t uiMax = static_cast<size_t>(uiLen) / 4u * 3u + 3u;
    unsigned char *pucOut = static_cast<unsigned char *>(std::malloc(uiMax + 1u));
    if (pucOut == nullptr) {
        return -1;
    }
    size_t uiDecoded = 0;
    const char *pcEnd = nullptr;
    const int iRet = sodium_base642bin(pucOut, uiMax, pcText, uiLen, kIgnored, &uiDecoded,
                                       &pcEnd, kVariant);
    /* With an end pointer libsodium stops quietly at the first character it cannot use;
     * the whole input must have been consumed. */
    if (iRet != 0 || pcEnd != pcText + uiLen || uiDecoded > static_cast<size_t>(INT32_MAX)) {
        std::free(pucOut);
        return -1;
    }
    if (uiDecoded == 0) {
        std::free(pucOut); /* only white space */
        return 0;
    }
    pucOut[uiDecoded] = 0;
    *ppcOut = reinterpret_cast<char *>(pucOut);
    return static_cast<int32_t>(uiDecoded);
}

extern "C" void KTL_BASE64Free(char **ppcData)
{
    if (ppcData == nullptr) {
        return;
    }
    std::free(*ppcData);
    *ppcData = nullptr;
}
