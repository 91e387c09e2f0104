/*
 * observe.cpp - the trace sink and the bounded-routine hook behind ObserveScope.
 *
 * Both callbacks run on the parsing thread and write only to that thread's current
 * Observations (a thread_local pointer), so no lock is needed however many answers are
 * parsed at once. A trace made outside any scope goes to stderr when its level is kept.
 */
#include "observe.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "login_service_default.h"
#include "atrium_test_control.h"
#include "qev_bounded.h"

namespace atrium_tool {

namespace {

thread_local Observations *t_pstCurrent = nullptr;
int g_iTraceLevel = kNoTrace;

/* Shapes of the module's level-0 messages for a required key or attribute that is not in
 * the answer ("Not Find the ExpireIn", "pcUri is null", "resultDesc empty", ...). The
 * null-argument messages ("... pointer empty!", "... param is null") never come up: the
 * tool passes no null argument. */
struct MessageShape {
    const char *pcPrefix;
    const char *pcSuffix;
};

const MessageShape kMissingKeyShapes[] = {
    {"Not Find", ""},
    {"", " is null"},
    {"", " empty"},
    {"XML_D_GET_NODEVALUE_BYURI failed", ""},
    {"atrium: can not find", ""},
    {"atrium: GetNodeByUrl Profile failed", ""},
};

bool StartsWith(const std::string &strText, const char *pcPrefix)
{
    return strText.compare(0, std::strlen(pcPrefix), pcPrefix) == 0;
}

bool EndsWith(const std::string &strText, const char *pcSuffix)
{
    const size_t uiLen = std::strlen(pcSuffix);
    return strText.size() >= uiLen && strText.compare(strText.size() - uiLen, uiLen, pcSuffix) == 0;
}

bool IsMissingKey(const std::string &strText)
{
    return std::any_of(std::begin(kMissingKeyShapes), std::end(kMissingKeyShapes), [&](const MessageShape &stShape) {
        return StartsWith(strText, stShape.pcPrefix) && EndsWith(strText, stShape.pcSuffix) &&
               std::strstr(strText.c_str(), "param is null") == nullptr;
    });
}

/* The module ends a few messages with a line break of its own. */
std::string WithoutLineEnd(const char *pcMessage)
{
    std::string strText(pcMessage);
    while (!strText.empty() && (strText.back() == '\n' || strText.back() == '\r')) {
        strText.pop_back();
    }
    return strText;
}

void Sink(void *, uint32_t uiLevel, const char *pcFunc, const char *, uint32_t, const char *pcMessage)
{
    TraceRecord stTrace{uiLevel, pcFunc != nullptr ? pcFunc : "", WithoutLineEnd(pcMessage)};
    const bool bKept = static_cast<int>(uiLevel) <= g_iTraceLevel;
    Observations *pstInto = t_pstCurrent;
    if (pstInto == nullptr) {
        if (bKept) {
            std::fprintf(stderr, "%s\n", FormatTrace(stTrace).c_str());
        }
        return;
    }
    if (uiLevel == LOGIN_TRACE_ERROR) {
        pstInto->vecErrors.push_back(stTrace.strText);
        if (IsMissingKey(stTrace.strText)) {
            pstInto->vecMissing.push_back(stTrace.strText);
        }
    }
    if (bKept) {
        pstInto->vecTraces.push_back(std::move(stTrace));
    }
}

void DiagHook(void *pvCtx, const char *pcRoutine, uint32_t uiDestSize, uint32_t uiNeeded)
{
    static_cast<Observations *>(pvCtx)->vecDropped.push_back(
        {pcRoutine != nullptr ? pcRoutine : "?", uiDestSize, uiNeeded});
}

} // namespace

void InstallTraceSink(int iTraceLevel)
{
    g_iTraceLevel = iTraceLevel;
    LoginServiceSetTraceSink(Sink, nullptr);
    LoginServiceSetTraceLevel(static_cast<uint32_t>(std::max(iTraceLevel, 0)));
}

ObserveScope::ObserveScope(Observations &stInto) : m_pstSaved(t_pstCurrent)
{
    t_pstCurrent = &stInto;
    qev_SetDiagHook(DiagHook, &stInto);
}

ObserveScope::~ObserveScope()
{
    t_pstCurrent = m_pstSaved;
    qev_SetDiagHook(m_pstSaved != nullptr ? DiagHook : nullptr, m_pstSaved);
}

std::string FormatTrace(const TraceRecord &stTrace)
{
    return "L" + std::to_string(stTrace.uiLevel) + " " + stTrace.strFunc + ": " + stTrace.strText;
}

std::string FormatDropped(const DroppedValue &stDropped)
{
    if (stDropped.uiNeeded == 0) {
        return stDropped.strRoutine + " failed, field holds " + std::to_string(stDropped.uiCapacity);
    }
    return stDropped.strRoutine + " needed " + std::to_string(stDropped.uiNeeded) + " bytes, field holds " +
           std::to_string(stDropped.uiCapacity);
}

} // namespace atrium_tool
