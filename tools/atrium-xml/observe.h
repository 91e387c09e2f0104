/*
 * observe.h - what the module says while it parses one answer: its traces, the required
 * keys it found missing (its level-0 "Not Find ..." / "... is null" messages) and the
 * values it dropped because they did not fit their field (failed bounded copies, which the
 * module ignores by design and the bounded routines report to a per-thread hook).
 *
 * The trace sink is process-wide while the bounded-routine hook is per thread, so each
 * thread that parses opens an ObserveScope around one answer: the sink routes every trace
 * to the scope of the thread that made it, and the hook is installed on that thread.
 */
#ifndef ATRIUM_TOOL_OBSERVE_H
#define ATRIUM_TOOL_OBSERVE_H

#include <cstdint>
#include <string>
#include <vector>

namespace atrium_tool {

struct DroppedValue {
    std::string strRoutine;
    uint32_t uiCapacity;
    uint32_t uiNeeded; /* 0 when the routine could not tell */
};

struct TraceRecord {
    uint32_t uiLevel;
    std::string strFunc;
    std::string strText;
};

struct Observations {
    std::vector<DroppedValue> vecDropped;
    std::vector<std::string> vecMissing;
    std::vector<TraceRecord> vecTraces; /* at or below the --trace level */
    std::vector<std::string> vecErrors; /* every level-0 text */
};

constexpr int kNoTrace = -1;

/* Replaces the login service's trace sink, process-wide, before any thread parses.
 * iTraceLevel (0..3, or kNoTrace) is the deepest level kept in vecTraces; level 0 is
 * always observed. */
void InstallTraceSink(int iTraceLevel);

/* While it lives, traces and dropped values of this thread go to *pstInto. */
class ObserveScope {
public:
    explicit ObserveScope(Observations &stInto);
    ~ObserveScope();
    ObserveScope(const ObserveScope &) = delete;
    ObserveScope &operator=(const ObserveScope &) = delete;

private:
    Observations *m_pstSaved;
};

/* "L<level> <function>: <text>", as the default login service prints it. */
std::string FormatTrace(const TraceRecord &stTrace);
/* "qev_strcpy_s needed 301 bytes, field holds 256" */
std::string FormatDropped(const DroppedValue &stDropped);

} // namespace atrium_tool

#endif /* ATRIUM_TOOL_OBSERVE_H */
