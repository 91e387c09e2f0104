/*
 * ledger.cpp - the counting and recording probes of ledger.h.
 *
 * Heap: malloc, calloc, realloc, free and the aligned allocators are defined here and
 * forward to glibc's __libc_* entry points, so every allocation of the process passes
 * through them (libstdc++'s operator new, pugixml, JsonCpp, the module's ledger). While a
 * counting probe runs on this thread they count calls and track live bytes with
 * malloc_usable_size.
 *
 * Module blocks and bounded routines: the executable is linked with --wrap for
 * KOSA_MemMallocS, KOSA_MemMallocD, KOSA_MemFreeD, qev_memcpy_s and qev_memset_s, so the
 * module's calls land in the __wrap_ functions below, which note what the probes want and
 * call the real routine. The recording probe keeps its own notes in containers; the
 * counting probe never allocates, so it counts only the call's allocations.
 */
#include "ledger.h"

#include <malloc.h>
#include <unistd.h>
#include <pugixml.hpp>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <unordered_set>

extern "C" {
void *__libc_malloc(size_t uiSize);
void *__libc_calloc(size_t uiCount, size_t uiSize);
void *__libc_realloc(void *pvMem, size_t uiSize);
void __libc_free(void *pvMem);
void *__libc_memalign(size_t uiAlign, size_t uiSize);

void *__real_KOSA_MemMallocS(uint32_t uiSize, uint32_t uiZero, uint32_t uiLine, const char *pcFile);
void *__real_KOSA_MemMallocD(uint32_t uiSize, uint32_t uiLine, const char *pcFile);
void __real_KOSA_MemFreeD(void *pvMem, uint32_t uiLine, const char *pcFile);
int __real_qev_memcpy_s(void *pvDest, uint32_t uiDestSize, const void *pvSrc, uint32_t uiCount);
int __real_qev_memset_s(void *pvDest, uint32_t uiDestSize, int iValue, uint32_t uiCount);
}

namespace {

/* Plain thread-locals of the executable: initial-exec TLS, usable from the very first
 * allocation of the process. */
thread_local bool t_bCounting = false;
thread_local bool t_bRecording = false;
thread_local bench::CallCounts t_stCounts;
thread_local int64_t t_lLiveBytes = 0;

struct Recording {
    std::vector<bench::FloorWrite> vecWrites;
    std::unordered_set<const void *> setLiveBlocks; /* module blocks born during the probe */
};
thread_local Recording *t_pstRecording = nullptr;

inline void NoteAllocation(void *pvMem)
{
    if (!t_bCounting || pvMem == nullptr) {
        return;
    }
    ++t_stCounts.ulHeapAllocs;
    t_lLiveBytes += static_cast<int64_t>(malloc_usable_size(pvMem));
    if (t_lLiveBytes > 0 && static_cast<uint64_t>(t_lLiveBytes) > t_stCounts.ulPeakBytes) {
        t_stCounts.ulPeakBytes = static_cast<uint64_t>(t_lLiveBytes);
    }
}

inline void NoteRelease(void *pvMem)
{
    if (t_bCounting && pvMem != nullptr) {
        t_lLiveBytes -= static_cast<int64_t>(malloc_usable_size(pvMem));
    }
}

void *CountingXmlAllocate(size_t uiSize)
{
    ++t_stCounts.ulXmlAllocs;
    return malloc(uiSize);
}

void CountingXmlDeallocate(void *pvMem)
{
    free(pvMem);
}

pugi::allocation_function g_pfnSavedXmlAllocate = nullptr;
pugi::deallocation_function g_pfnSavedXmlDeallocate = nullptr;

void NoteModuleBlock(void *pvMem, uint32_t uiSize, bool bZeroFilled)
{
    if (pvMem == nullptr) {
        return;
    }
    if (t_bCounting) {
        ++t_stCounts.ulModuleBlocks;
        t_stCounts.ulModuleBytes += uiSize;
    }
    if (t_bRecording) {
        t_bRecording = false; /* the notes below allocate; they are not the call's */
        t_pstRecording->setLiveBlocks.insert(pvMem);
        if (bZeroFilled) {
            t_pstRecording->vecWrites.push_back({bench::FloorWrite::Kind::Zero, uiSize});
        }
        t_bRecording = true;
    }
}

} // namespace

/* ---- heap interposition ---------------------------------------------------------------- */

extern "C" void *malloc(size_t uiSize)
{
    void *pvMem = __libc_malloc(uiSize);
    NoteAllocation(pvMem);
    return pvMem;
}

extern "C" void *calloc(size_t uiCount, size_t uiSize)
{
    void *pvMem = __libc_calloc(uiCount, uiSize);
    NoteAllocation(pvMem);
    return pvMem;
}

extern "C" void *realloc(void *pvOld, size_t uiSize)
{
    NoteRelease(pvOld);
    void *pvMem = __libc_realloc(pvOld, uiSize);
    if (pvMem == nullptr && pvOld != nullptr && uiSize != 0) {
        /* the old block stays live */
        if (t_bCounting) {
            t_lLiveBytes += static_cast<int64_t>(malloc_usable_size(pvOld));
        }
        return nullptr;
    }
    NoteAllocation(pvMem);
    return pvMem;
}

extern "C" void free(void *pvMem)
{
    NoteRelease(pvMem);
    __libc_free(pvMem);
}

extern "C" void *memalign(size_t uiAlign, size_t uiSize)
{
    void *pvMem = __libc_memalign(uiAlign, uiSize);
    NoteAllocation(pvMem);
    return pvMem;
}

extern "C" void *aligned_alloc(size_t uiAlign, size_t uiSize)
{
    return memalign(uiAlign, uiSize);
}

extern "C" int posix_memalign(void **ppvMem, size_t uiAlign, size_t uiSize)
{
    if (uiAlign < sizeof(void *) || (uiAlign & (uiAlign - 1)) != 0) {
        return EINVAL;
    }
    void *pvMem = memalign(uiAlign, uiSize);
    if (pvMem == nullptr) {
        return ENOMEM;
    }
    *ppvMem = pvMem;
    return 0;
}

extern "C" void *valloc(size_t uiSize)
{
    return memalign(static_cast<size_t>(sysconf(_SC_PAGESIZE)), uiSize);
}

/* ---- the module's memory routines and bounded copies ------------------------------------ */

extern "C" void *__wrap_KOSA_MemMallocS(uint32_t uiSize, uint32_t uiZero, uint32_t uiLine, const char *pcFile)
{
    void *pvMem = __real_KOSA_MemMallocS(uiSize, uiZero, uiLine, pcFile);
    if (t_bCounting || t_bRecording) {
        NoteModuleBlock(pvMem, uiSize, true);
    }
    return pvMem;
}

extern "C" void *__wrap_KOSA_MemMallocD(uint32_t uiSize, uint32_t uiLine, const char *pcFile)
{
    void *pvMem = __real_KOSA_MemMallocD(uiSize, uiLine, pcFile);
    if (t_bCounting || t_bRecording) {
        NoteModuleBlock(pvMem, uiSize, false);
    }
    return pvMem;
}

extern "C" void __wrap_KOSA_MemFreeD(void *pvMem, uint32_t uiLine, const char *pcFile)
{
    if (t_bRecording && pvMem != nullptr) {
        t_bRecording = false;
        t_pstRecording->setLiveBlocks.erase(pvMem);
        t_bRecording = true;
    }
    __real_KOSA_MemFreeD(pvMem, uiLine, pcFile);
}

extern "C" int __wrap_qev_memcpy_s(void *pvDest, uint32_t uiDestSize, const void *pvSrc, uint32_t uiCount)
{
    if (t_bRecording && uiCount <= uiDestSize) {
        t_bRecording = false;
        t_pstRecording->vecWrites.push_back({bench::FloorWrite::Kind::Copy, uiCount});
        t_bRecording = true;
    }
    return __real_qev_memcpy_s(pvDest, uiDestSize, pvSrc, uiCount);
}

extern "C" int __wrap_qev_memset_s(void *pvDest, uint32_t uiDestSize, int iValue, uint32_t uiCount)
{
    if (t_bRecording && t_pstRecording->setLiveBlocks.count(pvDest) != 0) {
        t_bRecording = false;
        t_pstRecording->vecWrites.push_back(
            {bench::FloorWrite::Kind::Zero, uiCount <= uiDestSize ? uiCount : uiDestSize});
        t_bRecording = true;
    }
    return __real_qev_memset_s(pvDest, uiDestSize, iValue, uiCount);
}

namespace bench {

void StartCounting()
{
    t_stCounts = CallCounts{};
    t_lLiveBytes = 0;
    g_pfnSavedXmlAllocate = pugi::get_memory_allocation_function();
    g_pfnSavedXmlDeallocate = pugi::get_memory_deallocation_function();
    pugi::set_memory_management_functions(CountingXmlAllocate, CountingXmlDeallocate);
    t_bCounting = true;
}

CallCounts StopCounting()
{
    t_bCounting = false;
    pugi::set_memory_management_functions(g_pfnSavedXmlAllocate, g_pfnSavedXmlDeallocate);
    return t_stCounts;
}

void StartRecording()
{
    t_pstRecording = new Recording();
    t_bRecording = true;
}

std::vector<FloorWrite> StopRecording()
{
    t_bRecording = false;
    std::vector<FloorWrite> vecWrites = std::move(t_pstRecording->vecWrites);
    delete t_pstRecording;
    t_pstRecording = nullptr;
    return vecWrites;
}

} // namespace bench
