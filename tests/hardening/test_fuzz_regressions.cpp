/*
 * The fuzz targets' harnesses, compiled into an ordinary test program: every reproducer kept
 * under tests/hardening/regressions/<target>/ and every answer of the repository, through
 * every function of every target, must pass the harnesses' checks (no block left, no
 * document left that the function may not keep, records terminated within their fields,
 * results among those the function can return). A broken check aborts the program with its message.
 */
#include <gtest/gtest.h>

#include <dirent.h>

#include <cerrno>
#include <cstring>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "hardening_support.h"

int FuzzPortal(const uint8_t *pucData, size_t uiSize);
int FuzzConference(const uint8_t *pucData, size_t uiSize);
int FuzzSoap(const uint8_t *pucData, size_t uiSize);
int FuzzJson(const uint8_t *pucData, size_t uiSize);
int FuzzSites(const uint8_t *pucData, size_t uiSize);
int FuzzKtlXml(const uint8_t *pucData, size_t uiSize);

namespace {

struct Target {
    const char *pcName;
    int (*pfnRun)(const uint8_t *, size_t);
    uint32_t uiSelectors; /* how many functions its first byte picks from */
};

const Target TARGETS[] = {
    {"fuzz_portal", FuzzPortal, 7}, {"fuzz_conference", FuzzConference, 11},
    {"fuzz_soap", FuzzSoap, 3},     {"fuzz_json", FuzzJson, 6},
    {"fuzz_sites", FuzzSites, 4},   {"fuzz_ktl_xml", FuzzKtlXml, 1},
};

/* The files of a folder, its README excepted. A folder that is not there has none; one that
 * cannot be opened or read fails the test instead of looking empty (a 32-bit build without
 * large-file offsets gets EOVERFLOW from readdir on the first entry). */
std::vector<std::string> FilesIn(const std::string &strDir)
{
    std::vector<std::string> vecFiles;
    DIR *pDir = opendir(strDir.c_str());
    if (pDir == nullptr) {
        if (errno != ENOENT) {
            ADD_FAILURE() << "cannot open " << strDir << ": " << std::strerror(errno);
        }
        return vecFiles;
    }
    for (;;) {
        errno = 0;
        const dirent *pEntry = readdir(pDir);
        if (pEntry == nullptr) {
            if (errno != 0) {
                ADD_FAILURE() << "cannot read " << strDir << ": " << std::strerror(errno);
            }
            break;
        }
        std::string strName = pEntry->d_name;
        if (strName != "." && strName != ".." && strName != "README.md") {
            vecFiles.push_back(strDir + "/" + strName);
        }
    }
    closedir(pDir);
    return vecFiles;
}

std::string Contents(const std::string &strPath)
{
    std::ifstream file(strPath, std::ios::binary);
    std::ostringstream stream;
    stream << file.rdbuf();
    return stream.str();
}

void Feed(const Target &stTarget, const std::string &strInput)
{
    stTarget.pfnRun(reinterpret_cast<const uint8_t *>(strInput.data()), strInput.size());
}

TEST(FuzzRegressionTest, EveryKeptReproducerPassesItsTarget)
{
    size_t uiReplayed = 0;
    for (const Target &stTarget : TARGETS) {
        for (const std::string &strFile : FilesIn(std::string(HARDENING_REGRESSION_DIR) + "/" + stTarget.pcName)) {
            SCOPED_TRACE(strFile);
            Feed(stTarget, Contents(strFile));
            ++uiReplayed;
        }
    }
    EXPECT_GT(uiReplayed, 0u) << "no reproducer found under " << HARDENING_REGRESSION_DIR;
}

TEST(FuzzRegressionTest, EveryAnswerPassesEveryFunctionOfEveryTarget)
{
    std::vector<std::string> vecAnswers = FilesIn(HARDENING_DATA_DIR);
    ASSERT_GE(vecAnswers.size(), 20u);
    for (const std::string &strFile : vecAnswers) {
        const std::string strAnswer = Contents(strFile);
        for (const Target &stTarget : TARGETS) {
            for (uint32_t uiSelector = 0; uiSelector < stTarget.uiSelectors; ++uiSelector) {
                SCOPED_TRACE(std::string(stTarget.pcName) + " function " + std::to_string(uiSelector) + " on " +
                             strFile);
                /* Two leading bytes: the selector and the site target's parameter byte. */
                Feed(stTarget, std::string(1, static_cast<char>(uiSelector)) + std::string(1, '\x07') + strAnswer);
                Feed(stTarget, std::string(1, static_cast<char>(uiSelector)) + strAnswer);
            }
        }
    }
}

} // namespace
