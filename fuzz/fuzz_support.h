/*
 * fuzz_support.h - what every fuzz target of the module shares.
 *
 * A target takes one input, lets its first byte pick a function of its family and hands the
 * rest to that function as a NUL-terminated body (or decodes a record from it). Around each
 * call a CallFrame notes the module's live blocks and documents; after the harness has
 * freed what the caller owns, Finish() aborts when a block is left or when a document is
 * left by a function that must release all of its documents.
 *
 * Documents kept on purpose: a few answers return without releasing their document, at the
 * exits the login service knows. The targets are linked with --wrap=KTL_XML_Parse,--wrap=KTL_XML_FreeNode, so
 * every document the module parses during one input is known by its root; Finish() counts
 * the ones still open, checks the count against what the function may keep, and releases
 * them. That keeps a long run's memory flat (libFuzzer would otherwise accumulate every kept
 * document until its RSS limit) and needs no leak suppression in the targets.
 *
 * The same harness sources are compiled into the regression tests (ATRIUM_FUZZ_REPLAY), where
 * each entry point is an ordinary function named after its target.
 */
#ifndef ATRIUM_FUZZ_SUPPORT_H
#define ATRIUM_FUZZ_SUPPORT_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>

#include "atrium_xml.h"
#include "handed_over.h"

#ifdef ATRIUM_FUZZ_REPLAY
#define ATRIUM_FUZZ_TARGET(name) int name(const uint8_t *pucData, size_t uiSize)
#else
#define ATRIUM_FUZZ_TARGET(name) extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pucData, size_t uiSize)
#endif

namespace atrium_fuzz {

/* Aborts with the harness's message when an invariant does not hold. */
[[noreturn]] void Fail(const char *pcWhat, const char *pcFile, int iLine);
#define FUZZ_CHECK(cond)                                                                                               \
    do {                                                                                                               \
        if (!(cond)) {                                                                                                 \
            ::atrium_fuzz::Fail(#cond, __FILE__, __LINE__);                                                            \
        }                                                                                                              \
    } while (0)

/* Before each input: a trace sink that formats every level and drops the text, and a
 * resolver that answers from the host name alone (no network); once per process, a scratch
 * directory. */
void Initialize();

/* A file name under the scratch directory, the same for every input. */
const char *ScratchFile();

/* A NUL-terminated text in a heap block of exactly its size, so that AddressSanitizer sees
 * a read one byte past its terminator. */
class Text {
public:
    explicit Text(const std::string &strText);
    const char *c_str() const { return m_pcText.get(); }
    size_t size() const { return m_uiSize; }

private:
    std::unique_ptr<char[]> m_pcText;
    size_t m_uiSize;
};

/* The body: the bytes after the selector, cut at the first NUL like any C string. */
Text BodyOf(const uint8_t *pucData, size_t uiSize);

/* An input as the answer targets read it: its first byte chooses the function to call, the
 * rest is the body. */
struct SelectedBody {
    uint8_t ucSelector;
    Text body;
};

/* Initializes the process, seeds the random draws from the input and splits it; nothing for
 * an empty input (nothing to call). */
std::optional<SelectedBody> SelectBody(const uint8_t *pucData, size_t uiSize);

/* Documents parsed through KTL_XML_Parse since the last Finish() and still open. */
uint32_t OpenDocuments();

/* Deterministic random numbers for the current input (seeded from its bytes). */
void SeedRandom(const uint8_t *pucData, size_t uiSize);

class CallFrame {
public:
    CallFrame();
    /* The caller has freed what it owns: every module block must be back; at most
     * uiMayKeep documents may still be open (they are released here). */
    void Finish(uint32_t uiMayKeep = 0);

private:
    uint32_t m_uiBlocks;
};

/* True when uiCode is one of the listed results or a library code (above 255). */
bool IsResultOrLibraryCode(uint32_t uiCode, std::initializer_list<uint32_t> listResults);

/* A bounded text field: the copy that filled it left its last byte as the caller cleared it. */
template <size_t N>
void CheckTerminated(const char (&acField)[N])
{
    FUZZ_CHECK(acField[N - 1] == '\0');
}

void CheckSite(const tagLOGIN_S_SITE &stSite);
void CheckUser(const tagLOGIN_S_ATRIUM_USER_INFO &stUser);
void CheckTempUser(const tagXML_S_TANDEM_TEMPUSER_INFO &stTempUser);

template <typename Record>
Record Cleared()
{
    Record stRecord;
    std::memset(&stRecord, 0, sizeof(stRecord));
    return stRecord;
}

} // namespace atrium_fuzz

#endif /* ATRIUM_FUZZ_SUPPORT_H */
