/*
 * required_reads.cpp - the recording probe and the replays of required_reads.h.
 *
 * The executable is linked with --wrap for KTL_XML_GetNodeValue, KTL_XML_GetAttr,
 * KTL_XML_FreeNode and qev_strcpy_s, so the module's calls land here. While this thread
 * records, reads and the texts they return are noted, copies of those texts are noted, and
 * releases are deferred to the end of the recording's life.
 */
#include "required_reads.h"

#include <benchmark/benchmark.h>

#include <unordered_set>
#include <utility>

extern "C" {
uint32_t __real_KTL_XML_GetNodeValue(_NODE *pstNode, uint32_t *puiUnused, uint32_t uiZero, char **ppcName,
                                     char **ppcValue);
uint32_t __real_KTL_XML_GetAttr(_NODE *pstNode, uint32_t uiZero, const char *pcName, char **ppcValue);
void __real_KTL_XML_FreeNode(_NODE *pstRoot);
int __real_qev_strcpy_s(char *pcDest, uint32_t uiDestSize, const char *pcSrc);
}

namespace {

struct Recording {
    bench::RequiredReads stReads;
    std::unordered_set<const char *> setReadTexts; /* what the noted reads returned */
};

thread_local Recording *t_pstRecording = nullptr;

void NoteRead(_NODE *pstNode, const char *pcAttr, const char *pcText)
{
    t_pstRecording->stReads.vecReads.push_back(bench::RequiredRead{pstNode, pcAttr == nullptr ? "" : pcAttr});
    if (pcText != nullptr) {
        t_pstRecording->setReadTexts.insert(pcText);
    }
}

} // namespace

extern "C" uint32_t __wrap_KTL_XML_GetNodeValue(_NODE *pstNode, uint32_t *puiUnused, uint32_t uiZero, char **ppcName,
                                                char **ppcValue)
{
    const uint32_t uiRet = __real_KTL_XML_GetNodeValue(pstNode, puiUnused, uiZero, ppcName, ppcValue);
    if (t_pstRecording != nullptr) {
        NoteRead(pstNode, nullptr, (uiRet == 0 && ppcValue != nullptr) ? *ppcValue : nullptr);
    }
    return uiRet;
}

extern "C" uint32_t __wrap_KTL_XML_GetAttr(_NODE *pstNode, uint32_t uiZero, const char *pcName, char **ppcValue)
{
    const uint32_t uiRet = __real_KTL_XML_GetAttr(pstNode, uiZero, pcName, ppcValue);
    if (t_pstRecording != nullptr && pcName != nullptr) {
        NoteRead(pstNode, pcName, (uiRet == 0 && ppcValue != nullptr) ? *ppcValue : nullptr);
    }
    return uiRet;
}

extern "C" void __wrap_KTL_XML_FreeNode(_NODE *pstRoot)
{
    if (t_pstRecording != nullptr && pstRoot != nullptr) {
        t_pstRecording->stReads.vecDocuments.push_back(pstRoot);
        return;
    }
    __real_KTL_XML_FreeNode(pstRoot);
}

extern "C" int __wrap_qev_strcpy_s(char *pcDest, uint32_t uiDestSize, const char *pcSrc)
{
    if (t_pstRecording != nullptr && pcSrc != nullptr && t_pstRecording->setReadTexts.count(pcSrc) != 0) {
        t_pstRecording->stReads.vecCopies.push_back(bench::RequiredCopy{uiDestSize, pcSrc});
    }
    return __real_qev_strcpy_s(pcDest, uiDestSize, pcSrc);
}

namespace bench {

RequiredReads::~RequiredReads()
{
    for (_NODE *pstRoot : vecDocuments) {
        __real_KTL_XML_FreeNode(pstRoot);
    }
}

void StartRecordingReads()
{
    t_pstRecording = new Recording();
}

RequiredReads StopRecordingReads()
{
    RequiredReads stReads = std::move(t_pstRecording->stReads);
    delete t_pstRecording;
    t_pstRecording = nullptr;
    return stReads;
}

size_t CopyArenaSize(const RequiredReads &stReads)
{
    size_t uiArena = 0;
    for (const RequiredCopy &stCopy : stReads.vecCopies) {
        uiArena += stCopy.uiDestSize;
    }
    return uiArena;
}

void ReplayReads(const RequiredReads &stReads)
{
    for (const RequiredRead &stRead : stReads.vecReads) {
        char *pcValue = nullptr;
        if (stRead.strAttr.empty()) {
            (void)__real_KTL_XML_GetNodeValue(stRead.pstNode, nullptr, 0, nullptr, &pcValue);
        } else {
            (void)__real_KTL_XML_GetAttr(stRead.pstNode, 0, stRead.strAttr.c_str(), &pcValue);
        }
        benchmark::DoNotOptimize(pcValue);
    }
}

void ReplayCopies(const RequiredReads &stReads, char *pcArena)
{
    char *pcAt = pcArena;
    for (const RequiredCopy &stCopy : stReads.vecCopies) {
        (void)__real_qev_strcpy_s(pcAt, stCopy.uiDestSize, stCopy.pcSource);
        pcAt += stCopy.uiDestSize;
    }
    benchmark::ClobberMemory();
}

} // namespace bench
