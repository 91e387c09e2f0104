/*
 * ledger.h - what one call allocates and writes, seen from outside the module.
 *
 * Two probes, each run on one call outside the timed loops:
 *  - counting: heap allocations of every kind during the call (the benchmark executable
 *    interposes malloc and its siblings), the module's own blocks (KOSA_MemMallocS/D, seen
 *    through linker wrappers), the XML library's own allocations (pugixml's allocation
 *    hook) and the peak of live heap bytes above the level at the call's start;
 *  - recording: the writes that make up the floor of the call - every zero-filled module
 *    allocation, every copy through qev_memcpy_s (whole group and site records, decoded
 *    block, bodies) and every wipe of a module block before its release (qev_memset_s on
 *    a block's start) - as a list of sizes that the floor benchmark replays with
 *    memset/memcpy.
 * Outside a probe the wrappers only test a thread-local flag and forward.
 */
#ifndef ATRIUM_BENCH_LEDGER_H
#define ATRIUM_BENCH_LEDGER_H

#include <cstdint>
#include <vector>

namespace bench {

struct CallCounts {
    uint64_t ulModuleBlocks = 0; /* KOSA_MemMallocS/D calls */
    uint64_t ulModuleBytes = 0;  /* bytes they asked for */
    uint64_t ulXmlAllocs = 0;    /* pugixml's own allocations */
    uint64_t ulHeapAllocs = 0;   /* every heap allocation (the two above included) */
    uint64_t ulPeakBytes = 0;    /* live heap bytes above the start, at the peak */
};

/* One write of the floor. */
struct FloorWrite {
    enum class Kind : uint8_t { Zero, Copy };
    Kind eKind;
    uint32_t uiSize;
};

void StartCounting();
CallCounts StopCounting();

void StartRecording();
std::vector<FloorWrite> StopRecording();

} // namespace bench

#endif /* ATRIUM_BENCH_LEDGER_H */
