/*
 * required_reads.h - the XML library reads an answer cannot do without, and the copies of
 * what they read into the record, replayed alone.
 *
 * Every key a parser reads goes through the per-key step: a dotted-path lookup, then a
 * value read of the element found (KTL_XML_GetNodeValue); the site records read an
 * attribute of it as well (KTL_XML_GetAttr). The recording probe notes every value and
 * attribute read of one module call (through linker wrappers) and keeps the call's
 * documents alive instead of releasing them; ReplayReads then makes the same reads again,
 * on the same nodes, with no lookup at all. The floor plus that replay is a lower bound for
 * any reader of the answer that keeps the per-key step, however fast its lookups are.
 *
 * The probe also notes every bounded copy (qev_strcpy_s) whose source is a text one of
 * those reads returned: a value or attribute written into its field, which any reader of
 * the answer must write too. ReplayCopies makes them again from the same texts, each into
 * its own place of an arena the size of the fields, which the caller makes just before and
 * drops after.
 * Outside the probe the wrappers only test a thread-local flag and forward.
 */
#ifndef ATRIUM_BENCH_REQUIRED_READS_H
#define ATRIUM_BENCH_REQUIRED_READS_H

#include "atrium_xml.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace bench {

struct RequiredRead {
    _NODE *pstNode;
    std::string strAttr; /* empty: a value read */
};

struct RequiredCopy {
    uint32_t uiDestSize;  /* the field's capacity, as the call gave it */
    const char *pcSource; /* a text a recorded read returned, in a kept document */
};

struct RequiredReads {
    std::vector<RequiredRead> vecReads;
    std::vector<RequiredCopy> vecCopies;
    std::vector<_NODE *> vecDocuments; /* roots the recorded call would have released */

    RequiredReads() = default;
    RequiredReads(const RequiredReads &) = delete;
    RequiredReads &operator=(const RequiredReads &) = delete;
    RequiredReads(RequiredReads &&) = default;
    /* Takes the other's reads and documents; this one's go with the other when it dies. */
    RequiredReads &operator=(RequiredReads &&stOther) noexcept
    {
        vecReads.swap(stOther.vecReads);
        vecCopies.swap(stOther.vecCopies);
        vecDocuments.swap(stOther.vecDocuments);
        return *this;
    }
    ~RequiredReads(); /* releases the kept documents */
};

void StartRecordingReads();
RequiredReads StopRecordingReads();

/* The recorded reads, in their order, through the XML library. */
void ReplayReads(const RequiredReads &stReads);

/* Bytes of the arena ReplayCopies writes: the sum of the fields' capacities. */
size_t CopyArenaSize(const RequiredReads &stReads);

/* The recorded copies, in their order, through the bounded routine, into pcArena (of
 * CopyArenaSize bytes). */
void ReplayCopies(const RequiredReads &stReads, char *pcArena);

} // namespace bench

#endif /* ATRIUM_BENCH_REQUIRED_READS_H */
