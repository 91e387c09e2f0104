/*
 * qev_bounded.cpp - bounded string and memory routines (see qev_bounded.h).
 *
 * The success paths measure with strnlen bounded by the capacity and copy with one
 * memmove, so a long source is never scanned beyond what can fit. The diagnostic hook is
 * consulted only on failure paths; the full length of an over-long source (for the hook's
 * "needed" size) is computed only there.
 */
#include "qev_bounded.h"
#include "atrium_test_control.h"

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

thread_local QEV_DIAG_HOOK t_pfnHook = nullptr;
thread_local void *t_pvHookCtx = nullptr;

inline uint32_t Clamp32(size_t uiValue)
{
    return uiValue > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(uiValue);
}

/* Reports a failure to this thread's hook (when set) and returns iCode. */
int Fail(const char *pcRoutine, uint32_t uiDestSize, size_t uiNeeded, int iCode)
{
    QEV_DIAG_HOOK pfnHook = t_pfnHook;
    if (pfnHook != nullptr) {
        pfnHook(t_pvHookCtx, pcRoutine, uiDestSize, Clamp32(uiNeeded));
    }
    return iCode;
}

/* A destination that may receive "" after a failure. */
inline bool Usable(const void *pvDest, uint32_t uiDestSize)
{
    return pvDest != nullptr && uiDestSize != 0 && uiDestSize <= QEV_MAX_DEST_SIZE;
}

/* Saturating addition for the hook's "needed" sizes. */
inline size_t AddSat(size_t uiA, size_t uiB)
{
    return uiA > SIZE_MAX - uiB ? SIZE_MAX : uiA + uiB;
}

} // namespace

extern "C" void qev_SetDiagHook(QEV_DIAG_HOOK pfnHook, void *pvCtx)
{
    t_pfnHook = pfnHook;
    t_pvHookCtx = pfnHook != nullptr ? pvCtx : nullptr;
}

/* ---- strcpy ------------------------------------------------------------------------- */

extern "C" int qev_strcpy_s(char *pcDest, uint32_t uiDestSize, const char *pcSrc)
{
    static const char kName[] = "qev_strcpy_s";
    if (!Usable(pcDest, uiDestSize)) {
        return Fail(kName, uiDestSize, 0, QEV_EINVAL);
    }
    if (pcSrc == nullptr) {
        pcDest[0] = '\0';
        return Fail(kName, uiDestSize, 0, QEV_EINVAL);
    }
    const size_t uiLen = strnlen(pcSrc, uiDestSize);
    if (uiLen == uiDestSize) {
        const size_t uiNeeded = AddSat(std::strlen(pcSrc), 1);
        pcDest[0] = '\0';
        return Fail(kName, uiDestSize, uiNeeded, QEV_ERANGE);
    }
    std::memmove(pcDest, pcSrc, uiLen);
    pcDest[uiLen] = '\0';
    return QEV_OK;
}

/* ---- strncpy ------------------------------------------------------------------------ */

extern "C" int qev_strncpy_s(char *pcDest, uint32_t uiDestSize, const char *pcSrc, uint32_t uiCount)
{
    static const char kName[] = "qev_strncpy_s";
    if (!Usable(pcDest, uiDestSize)) {
        return Fail(kName, uiDestSize, 0, QEV_EINVAL);
    }
    if (pcSrc == nullptr) {
        pcDest[0] = '\0';
        return Fail(kName, uiDestSize, 0, QEV_EINVAL);
    }
    /* Characters to copy: uiCount, or fewer when the terminator comes first. Measuring up
     * to uiDestSize is enough to know whether they fit. */
    const size_t uiLimit = uiCount < uiDestSize ? uiCount : uiDestSize;
    const size_t uiLen = strnlen(pcSrc, uiLimit);
    if (uiLen == uiDestSize) {
        const size_t uiNeeded = AddSat(strnlen(pcSrc, uiCount), 1);
        pcDest[0] = '\0';
        return Fail(kName, uiDestSize, uiNeeded, QEV_ERANGE);
    }
    std::memmove(pcDest, pcSrc, uiLen);
    pcDest[uiLen] = '\0';
    return QEV_OK;
}

/* ---- strcat ------------------------------------------------------------------------- */

extern "C" int qev_strcat_s(char *pcDest, uint32_t uiDestSize, const char *pcSrc)
{
    static const char kName[] = "qev_strcat_s";
    if (!Usable(pcDest, uiDestSize)) {
        return Fail(kName, uiDestSize, 0, QEV_EINVAL);
    }
    if (pcSrc == nullptr) {
        pcDest[0] = '\0';
        return Fail(kName, uiDestSize, 0, QEV_EINVAL);
    }
    const size_t uiDestLen = strnlen(pcDest, uiDestSize);
    if (uiDestLen == uiDestSize) {
        /* No terminator within the capacity: the destination is not a string. */
        pcDest[0] = '\0';
        return Fail(kName, uiDestSize, 0, QEV_ERANGE);
    }
    const size_t uiRoom = uiDestSize - uiDestLen; /* >= 1: room for text plus terminator */
    const size_t uiSrcLen = strnlen(pcSrc, uiRoom);
    if (uiSrcLen == uiRoom) {
        const size_t uiNeeded = AddSat(AddSat(uiDestLen, std::strlen(pcSrc)), 1);
        pcDest[0] = '\0';
        return Fail(kName, uiDestSize, uiNeeded, QEV_ERANGE);
    }
    std::memmove(pcDest + uiDestLen, pcSrc, uiSrcLen);
    pcDest[uiDestLen + uiSrcLen] = '\0';
    return QEV_OK;
}

/* ---- memcpy ------------------------------------------------------------------------- */

extern "C" int qev_memcpy_s(void *pvDest, uint32_t uiDestSize, const void *pvSrc, uint32_t uiCount)
{
    static const char kName[] = "qev_memcpy_s";
    if (uiDestSize > QEV_MAX_DEST_SIZE) {
        return Fail(kName, uiDestSize, uiCount, QEV_EINVAL);
    }
    if (uiCount == 0) {
        return QEV_OK; /* nothing to copy, whatever the pointers */
    }
    if (pvDest == nullptr) {
        return Fail(kName, uiDestSize, uiCount, QEV_EINVAL);
    }
    if (pvSrc == nullptr) {
        /* As for a range failure, the caller never sees stale content. */
        std::memset(pvDest, 0, uiDestSize);
        return Fail(kName, uiDestSize, uiCount, QEV_EINVAL);
    }
    /* The span this call would write: uiCount bytes, or the uiDestSize bytes it zeroes. */
    const uintptr_t uiDst = reinterpret_cast<uintptr_t>(pvDest);
    const uintptr_t uiSrc = reinterpret_cast<uintptr_t>(pvSrc);
    const size_t uiWrite = uiCount <= uiDestSize ? uiCount : uiDestSize;
    if (uiWrite != 0 && uiDst < uiSrc + uiCount && uiSrc < uiDst + uiWrite) {
        return Fail(kName, uiDestSize, uiCount, QEV_EOVERLAP);
    }
    if (uiCount > uiDestSize) {
        if (uiDestSize != 0) {
            std::memset(pvDest, 0, uiDestSize);
        }
        return Fail(kName, uiDestSize, uiCount, QEV_ERANGE);
    }
    std::memcpy(pvDest, pvSrc, uiCount);
    return QEV_OK;
}

/* ---- memset ------------------------------------------------------------------------- */

extern "C" int qev_memset_s(void *pvDest, uint32_t uiDestSize, int iValue, uint32_t uiCount)
{
    static const char kName[] = "qev_memset_s";
    if (pvDest == nullptr) {
        return uiCount == 0 ? QEV_OK : Fail(kName, uiDestSize, uiCount, QEV_EINVAL);
    }
    if (uiDestSize > QEV_MAX_DEST_SIZE) {
        return Fail(kName, uiDestSize, uiCount, QEV_EINVAL);
    }
    const uint32_t uiSet = uiCount <= uiDestSize ? uiCount : uiDestSize;
    std::memset(pvDest, static_cast<unsigned char>(iValue), uiSet);
    /* Compiler barrier: the stores above count as observed, so they cannot be removed even
     * when the buffer is dead afterwards (wiping secrets). */
    __asm__ __volatile__("" : : "r"(pvDest) : "memory");
    if (uiCount > uiDestSize) {
        return Fail(kName, uiDestSize, uiCount, QEV_ERANGE);
    }
    return QEV_OK;
}

/* ---- sprintf ------------------------------------------------------------------------ */

extern "C" int qev_sprintf_s(char *pcDest, uint32_t uiDestSize, const char *pcFormat, ...)
{
    static const char kName[] = "qev_sprintf_s";
    if (!Usable(pcDest, uiDestSize)) {
        return Fail(kName, uiDestSize, 0, -1);
    }
    if (pcFormat == nullptr) {
        pcDest[0] = '\0';
        return Fail(kName, uiDestSize, 0, -1);
    }
    va_list ap;
    va_start(ap, pcFormat);
    const int iLen = std::vsnprintf(pcDest, uiDestSize, pcFormat, ap);
    va_end(ap);
    if (iLen < 0 || static_cast<uint32_t>(iLen) >= uiDestSize) {
        pcDest[0] = '\0';
        return Fail(kName, uiDestSize, iLen < 0 ? 0 : static_cast<size_t>(iLen) + 1, -1);
    }
    return iLen;
}

/* ---- sscanf ------------------------------------------------------------------------- */

namespace {

/* White space as the "C" locale's isspace sees it. */
const char kSpaces[] = " \t\n\v\f\r";

inline bool IsSpace(unsigned char c)
{
    return c != '\0' && std::strchr(kSpaces, c) != nullptr;
}

/* The characters of a %[ set, one bit each. A bitmap rather than a list of the characters:
 * building a list took a pass over all 256 byte values for every %[ conversion, and the
 * format is parsed twice per call (validation, then the scan), which made a one-set format
 * such as "%[^:]" cost more than the text it scans. */
class CharSet {
public:
    void Clear() { m_aulBits[0] = m_aulBits[1] = m_aulBits[2] = m_aulBits[3] = 0; }
    void Add(unsigned char c) { m_aulBits[c >> 6] |= 1ull << (c & 63); }
    bool Holds(unsigned char c) const { return (m_aulBits[c >> 6] & (1ull << (c & 63))) != 0; }

    /* Length of the initial run of pcText whose characters are in the set (bIn) or not in
     * it (!bIn), as strspn / strcspn with the set's characters would give; the terminator
     * is never in a set. */
    size_t Span(const char *pcText, bool bIn) const
    {
        size_t uiLen = 0;
        for (unsigned char c; (c = static_cast<unsigned char>(pcText[uiLen])) != '\0' && Holds(c) == bIn;) {
            ++uiLen;
        }
        return uiLen;
    }

private:
    uint64_t m_aulBits[4] = {0, 0, 0, 0};
};

/* One parsed conversion directive. */
struct Directive {
    char cConv = 0;            /* d i u x o s c [ % */
    uint32_t uiWidth = 0;      /* 0: none given */
    bool bNegate = false;      /* for '[': "^" - the listed characters end the field */
    CharSet stSet;             /* for '[': the listed characters (ranges expanded) */
};

/*
 * Parses the directive that starts after '%' at pcFmt. Returns the format position
 * after it, or null when the directive is invalid or unsupported.
 */
const char *ParseDirective(const char *pcFmt, Directive &stDirective)
{
    stDirective.uiWidth = 0;
    while (*pcFmt >= '0' && *pcFmt <= '9') {
        const uint32_t uiDigit = static_cast<uint32_t>(*pcFmt - '0');
        if (stDirective.uiWidth > (UINT32_MAX - uiDigit) / 10) {
            return nullptr;
        }
        stDirective.uiWidth = stDirective.uiWidth * 10 + uiDigit;
        ++pcFmt;
    }
    const char c = *pcFmt;
    switch (c) {
    case 'd': case 'i': case 'u': case 'x': case 'o': case 's': case 'c':
        stDirective.cConv = c;
        return pcFmt + 1;
    case '%':
        if (stDirective.uiWidth != 0) {
            return nullptr;
        }
        stDirective.cConv = '%';
        return pcFmt + 1;
    case '[': {
        stDirective.cConv = '[';
        ++pcFmt;
        stDirective.bNegate = false;
        if (*pcFmt == '^') {
            stDirective.bNegate = true;
            ++pcFmt;
        }
        stDirective.stSet.Clear();
        if (*pcFmt == ']') { /* a leading ']' is a member */
            stDirective.stSet.Add(static_cast<unsigned char>(']'));
            ++pcFmt;
        }
        while (*pcFmt != ']') {
            if (*pcFmt == '\0') {
                return nullptr; /* unterminated set */
            }
            const unsigned char cLow = static_cast<unsigned char>(*pcFmt);
            if (pcFmt[1] == '-' && pcFmt[2] != ']' && pcFmt[2] != '\0' &&
                static_cast<unsigned char>(pcFmt[2]) >= cLow) {
                const unsigned char cHigh = static_cast<unsigned char>(pcFmt[2]);
                for (unsigned int u = cLow; u <= cHigh; ++u) {
                    stDirective.stSet.Add(static_cast<unsigned char>(u));
                }
                pcFmt += 3;
            } else {
                stDirective.stSet.Add(cLow);
                ++pcFmt;
            }
        }
        return pcFmt + 1;
    }
    default:
        return nullptr; /* length modifiers, '*', %n, floating point, ... */
    }
}

/* The whole format is checked before any input is read, so an unsupported format gives -1
 * whatever the input. */
bool FormatValid(const char *pcFmt)
{
    Directive stDirective;
    while (*pcFmt != '\0') {
        if (*pcFmt != '%') {
            ++pcFmt;
            continue;
        }
        pcFmt = ParseDirective(pcFmt + 1, stDirective);
        if (pcFmt == nullptr) {
            return false;
        }
    }
    return true;
}

/*
 * Converts the integer text at pcIn (at most uiMax characters, white space already
 * skipped). Returns the number of characters consumed (0 for no number).
 */
size_t ScanInteger(const char *pcIn, size_t uiMax, char cConv, long long &llSigned,
                   unsigned long long &ullUnsigned, bool &bNegative, bool &bRange)
{
    /* Bound the text to the width: in place when the text ends within it, else a copy. */
    char acSmall[64];
    std::string strBig;
    const char *pcText = pcIn;
    const size_t uiAvail = strnlen(pcIn, uiMax);
    if (uiAvail == uiMax && pcIn[uiMax] != '\0') {
        if (uiMax < sizeof(acSmall)) {
            std::memcpy(acSmall, pcIn, uiMax);
            acSmall[uiMax] = '\0';
            pcText = acSmall;
        } else {
            strBig.assign(pcIn, uiMax);
            pcText = strBig.c_str();
        }
    }
    bNegative = (*pcText == '-');
    char *pcEnd = const_cast<char *>(pcText);
    const int iSavedErrno = errno;
    errno = 0;
    if (cConv == 'd') {
        llSigned = std::strtoll(pcText, &pcEnd, 10);
    } else {
        const int iBase = cConv == 'i' ? 0 : cConv == 'x' ? 16 : cConv == 'o' ? 8 : 10;
        if (cConv == 'i') {
            /* %i takes a signed value in any base. */
            llSigned = std::strtoll(pcText, &pcEnd, iBase);
        } else {
            ullUnsigned = std::strtoull(pcText, &pcEnd, iBase);
        }
    }
    bRange = (errno == ERANGE);
    errno = iSavedErrno;
    return static_cast<size_t>(pcEnd - pcText);
}

inline int SaturateInt(long long llValue)
{
    return llValue < INT_MIN ? INT_MIN : llValue > INT_MAX ? INT_MAX : static_cast<int>(llValue);
}

/* strtoul semantics with 32-bit results: saturate on magnitude, a minus negates. */
inline unsigned int WrapUnsigned(unsigned long long ullValue, bool bNegative, bool bRange)
{
    if (bRange) {
        return UINT_MAX;
    }
    const unsigned long long ullMagnitude = bNegative ? 0ULL - ullValue : ullValue;
    if (ullMagnitude > UINT_MAX) {
        return UINT_MAX;
    }
    const unsigned int uMagnitude = static_cast<unsigned int>(ullMagnitude);
    return bNegative ? 0u - uMagnitude : uMagnitude;
}

int ScanV(const char *pcSrc, const char *pcFormat, va_list ap)
{
    static const char kName[] = "qev_sscanf_s";
    if (pcSrc == nullptr || pcFormat == nullptr || !FormatValid(pcFormat)) {
        return Fail(kName, 0, 0, -1);
    }
    const char *pcIn = pcSrc;
    const char *pcFmt = pcFormat;
    int iAssigned = 0;
    bool bConverted = false; /* a conversion (or %%) has completed */
    Directive stDirective;

    /* What to return when the input ends: -1 before the first conversion, else what was
     * assigned. */
    const auto InputEnd = [&bConverted, &iAssigned] { return bConverted ? iAssigned : -1; };

    while (*pcFmt != '\0') {
        const unsigned char cF = static_cast<unsigned char>(*pcFmt);
        if (IsSpace(cF)) {
            pcFmt += std::strspn(pcFmt, kSpaces);
            pcIn += std::strspn(pcIn, kSpaces);
            continue;
        }
        if (cF != '%') {
            if (*pcIn == '\0') {
                return InputEnd();
            }
            if (*pcIn != *pcFmt) {
                return iAssigned; /* matching failure */
            }
            ++pcIn;
            ++pcFmt;
            continue;
        }
        pcFmt = ParseDirective(pcFmt + 1, stDirective); /* cannot fail: checked by FormatValid */
        const char cConv = stDirective.cConv;
        if (cConv != 'c' && cConv != '[') {
            pcIn += std::strspn(pcIn, kSpaces);
        }
        if (*pcIn == '\0') {
            return InputEnd();
        }
        if (cConv == '%') {
            if (*pcIn != '%') {
                return iAssigned;
            }
            ++pcIn;
            bConverted = true;
            continue;
        }

        if (cConv == 'd' || cConv == 'i' || cConv == 'u' || cConv == 'x' || cConv == 'o') {
            const size_t uiMax = stDirective.uiWidth != 0 ? stDirective.uiWidth : SIZE_MAX;
            long long llSigned = 0;
            unsigned long long ullUnsigned = 0;
            bool bNegative = false;
            bool bRange = false;
            const size_t uiUsed =
                ScanInteger(pcIn, uiMax, cConv, llSigned, ullUnsigned, bNegative, bRange);
            if (uiUsed == 0) {
                return iAssigned; /* matching failure */
            }
            pcIn += uiUsed;
            bConverted = true;
            if (cConv == 'd' || cConv == 'i') {
                int *piOut = va_arg(ap, int *);
                if (piOut == nullptr) {
                    return Fail(kName, 0, 0, -1);
                }
                *piOut = SaturateInt(llSigned);
            } else {
                unsigned int *puOut = va_arg(ap, unsigned int *);
                if (puOut == nullptr) {
                    return Fail(kName, 0, 0, -1);
                }
                *puOut = WrapUnsigned(ullUnsigned, bNegative, bRange);
            }
            ++iAssigned;
            continue;
        }

        /* String outputs: %s, %c, %[ - each followed by its capacity. */
        char *pcOut = va_arg(ap, char *);
        const uint32_t uiCap = va_arg(ap, unsigned int);
        if (pcOut == nullptr || uiCap == 0 || uiCap > QEV_MAX_DEST_SIZE) {
            return Fail(kName, uiCap, 0, -1);
        }
        size_t uiLen = 0;
        if (cConv == 'c') {
            /* Exactly width characters (default 1), no terminator added. */
            const size_t uiWant = stDirective.uiWidth != 0 ? stDirective.uiWidth : 1;
            if (strnlen(pcIn, uiWant) < uiWant) {
                return InputEnd();
            }
            if (uiWant > uiCap) {
                pcOut[0] = '\0';
                return Fail(kName, uiCap, uiWant, iAssigned);
            }
            std::memcpy(pcOut, pcIn, uiWant);
            pcIn += uiWant;
            bConverted = true;
            ++iAssigned;
            continue;
        }
        const size_t uiMax = stDirective.uiWidth != 0 ? stDirective.uiWidth : SIZE_MAX;
        if (cConv == 's') {
            uiLen = std::strcspn(pcIn, kSpaces);
            if (uiLen > uiMax) {
                uiLen = uiMax;
            }
        } else {
            uiLen = stDirective.stSet.Span(pcIn, !stDirective.bNegate);
            if (uiLen > uiMax) {
                uiLen = uiMax;
            }
            if (uiLen == 0) {
                return iAssigned; /* matching failure */
            }
        }
        if (uiLen >= uiCap) {
            pcOut[0] = '\0';
            return Fail(kName, uiCap, uiLen + 1, iAssigned);
        }
        std::memcpy(pcOut, pcIn, uiLen);
        pcOut[uiLen] = '\0';
        pcIn += uiLen;
        bConverted = true;
        ++iAssigned;
    }
    return iAssigned;
}

} // namespace

extern "C" int qev_sscanf_s(const char *pcSrc, const char *pcFormat, ...)
{
    va_list ap;
    va_start(ap, pcFormat);
    const int iResult = ScanV(pcSrc, pcFormat, ap);
    va_end(ap);
    return iResult;
}
