/*
 * hardening_support.h - what the hardening tests share: the representative answers, doubles
 * of the login service that give the same answer on every thread, and the catalogue of the
 * module's exported text functions.
 *
 * Every entry of the catalogue runs one exported function on a body with a cleared record,
 * flattens the record and everything the call handed over into bytes (pointers left out,
 * the blocks they point to appended), releases what the caller owns, and returns that as an
 * Outcome. Two outcomes are equal exactly when the calls had the same effect, which lets the
 * concurrency test compare every threaded call with a single-threaded one byte for byte and
 * lets the sweep compare a call that met no failure with the reference call.
 */
#ifndef ATRIUM_XML_HARDENING_SUPPORT_H
#define ATRIUM_XML_HARDENING_SUPPORT_H

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "handed_over.h"
#include "module_test.h"

namespace hardening {

/* The SSO host the portal and guest answers are matched against. */
extern const char *const OWN_SITE_HOST;
extern const char *const GUEST_SITE_KEY;

/* tests/hardening/data/<name>, whole. */
std::string ReadAnswer(const std::string &strName);

/* Every byte of a value, padding included (records are cleared with memset first). */
template <typename T>
std::string BytesOf(const T &stValue)
{
    return std::string(reinterpret_cast<const char *>(&stValue), sizeof(T));
}

/* The selected or guest site with its group array, or "-" for none. */
std::string FlattenSite(const tagLOGIN_S_SITE *pstSite);
/* The portal user record with the selected site, SIP server list and extra parameters. */
std::string FlattenUser(const tagLOGIN_S_ATRIUM_USER_INFO &stUser);
std::string FlattenTempUser(const tagXML_S_TANDEM_TEMPUSER_INFO &stTempUser);

/*
 * Resolver double for any number of threads: a host name whose first label is
 * "unresolvable" fails both resolver types; any other name answers with one to three
 * addresses derived from the name alone. It keeps no state, so it never serialises threads.
 */
class DeterministicResolver {
public:
    DeterministicResolver();
    ~DeterministicResolver();
    DeterministicResolver(const DeterministicResolver &) = delete;
    DeterministicResolver &operator=(const DeterministicResolver &) = delete;
};

/*
 * Trace sink for any number of threads: every trace (all levels, formatted) goes to a list
 * of the calling thread. Process-wide while it lives; install it before threads start.
 */
class ThreadTraces {
public:
    ThreadTraces();
    ~ThreadTraces();
    ThreadTraces(const ThreadTraces &) = delete;
    ThreadTraces &operator=(const ThreadTraces &) = delete;
    /* This thread's traces as "L<level> <function>:<line> <text>", then forgets them. */
    static std::vector<std::string> Take();

private:
    uint32_t m_uiSavedLevel;
};

/* The effect of one call: result, whether the JSON library threw, and the flattened record
 * with everything handed over. */
struct Outcome {
    uint32_t uiResult = 0;
    bool bThrew = false;
    std::string strRecord;
    bool operator==(const Outcome &o) const
    {
        return uiResult == o.uiResult && bThrew == o.bThrew && strRecord == o.strRecord;
    }
    bool operator!=(const Outcome &o) const { return !(*this == o); }
};

/* Where a call may write a file (the right configuration's profile): one per thread. */
struct CallContext {
    std::string strScratchFile;
};

using Runner = std::function<Outcome(const std::string &strBody, const CallContext &stCtx)>;

/* One exported function that takes text, with answers that exercise it. */
struct CatalogueEntry {
    std::string strName;
    std::vector<std::string> vecBodies;
    Runner fnRun;
};

/*
 * Every exported function that takes a body (the JSON builders through the record their
 * answer parser fills), each with answers whose paths release every document: the paths that
 * keep a document on purpose are left to the tests that count them. Each call draws its
 * random numbers from the same fixed sequence, so its outcome does not depend on the thread.
 */
const std::vector<CatalogueEntry> &Catalogue();

/* A unique path under the system's temporary directory (the file is not created). */
std::string ScratchPath(const std::string &strTag);

} // namespace hardening

#endif /* ATRIUM_XML_HARDENING_SUPPORT_H */
