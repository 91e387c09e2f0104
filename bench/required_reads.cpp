/*
 * required_reads.cpp - the recording probe and the replay of required_reads.h.
 *
 * The executable is linked with --wrap for KTL_XML_GetNodeValue, KTL_XML_GetAttr and
 * KTL_XML_FreeNode, so the module's calls land here. While this thread records, reads are
 * noted and releases are deferred to the end of the recording's life.
 */
#include "required_reads.h"

#include <benchmark/benchmark.h>

#include <utility>

extern "C" {
uint32_t __real_KTL_XML_GetNodeValue(_NODE *pstNode, uint32_t *puiUnused, uint32_t uiZero, char **ppcName,
                                     char **ppcValue);
uint32_t __real_KTL_XML_GetAttr(_NODE *pstNode, uint32_t uiZero, const char *pcName, char **ppcValue);
void __real_KTL_XML_FreeNode(_NODE *pstRoot);
}

namespace {

thread_local bench::RequiredReads *t_pstRecording = nullptr;

} // namespace

extern "C" uint32_t __wrap_KTL_XML_GetNodeValue(_NODE *pstNode, uint32_t *puiUnused, uint32_t uiZero, char **ppcName,
                                                char **ppcValue)
{
    if (t_pstRecording != nullptr) {
        t_pstRecording->vecReads.push_back(bench::RequiredRead{pstNode, std::string()});
    }
    return __real_KTL_XML_GetNodeValue(pstNode, puiUnused, uiZero, ppcName, ppcValue);
}

extern "C" uint32_t __wrap_KTL_XML_GetAttr(_NODE *pstNode, uint32_t uiZero, const char *pcName, char **ppcValue)
{
    if (t_pstRecording != nullptr && pcName != nullptr) {
        t_pstRecording->vecReads.push_back(bench::RequiredRead{pstNode, std::string(pcName)});
    }
    return __real_KTL_XML_GetAttr(pstNode, uiZero, pcName, ppcValue);
}

extern "C" void __wrap_KTL_XML_FreeNode(_NODE *pstRoot)
{
    if (t_pstRecording != nullptr && pstRoot != nullptr) {
        t_pstRecording->vecDocuments.push_back(pstRoot);
        return;
    }
    __real_KTL_XML_FreeNode(pstRoot);
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
    t_pstRecording = new RequiredReads();
}

RequiredReads StopRecordingReads()
{
    RequiredReads stReads = std::move(*t_pstRecording);
    delete t_pstRecording;
    t_pstRecording = nullptr;
    return stReads;
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

} // namespace bench
