/*
 * required_reads.h - the XML library reads an answer cannot do without, replayed alone.
 *
 * Every key a parser reads goes through the per-key step: a dotted-path lookup, then a
 * value read of the element found (KTL_XML_GetNodeValue); the site records read an
 * attribute of it as well (KTL_XML_GetAttr). The recording probe notes every value and
 * attribute read of one module call (through linker wrappers) and keeps the call's
 * documents alive instead of releasing them; ReplayReads then makes the same reads again,
 * on the same nodes, with no lookup at all. The floor plus that replay is a lower bound for
 * any reader of the answer that keeps the per-key step, however fast its lookups are.
 * Outside the probe the wrappers only test a thread-local flag and forward.
 */
#ifndef ATRIUM_BENCH_REQUIRED_READS_H
#define ATRIUM_BENCH_REQUIRED_READS_H

#include "atrium_xml.h"

#include <string>
#include <vector>

namespace bench {

struct RequiredRead {
    _NODE *pstNode;
    std::string strAttr; /* empty: a value read */
};

struct RequiredReads {
    std::vector<RequiredRead> vecReads;
    std::vector<_NODE *> vecDocuments; /* roots the recorded call would have released */

    RequiredReads() = default;
    RequiredReads(const RequiredReads &) = delete;
    RequiredReads &operator=(const RequiredReads &) = delete;
    RequiredReads(RequiredReads &&) = default;
    /* Takes the other's reads and documents; this one's go with the other when it dies. */
    RequiredReads &operator=(RequiredReads &&stOther) noexcept
    {
        vecReads.swap(stOther.vecReads);
        vecDocuments.swap(stOther.vecDocuments);
        return *this;
    }
    ~RequiredReads(); /* releases the kept documents */
};

void StartRecordingReads();
RequiredReads StopRecordingReads();

/* The recorded reads, in their order, through the XML library. */
void ReplayReads(const RequiredReads &stReads);

} // namespace bench

#endif /* ATRIUM_BENCH_REQUIRED_READS_H */
