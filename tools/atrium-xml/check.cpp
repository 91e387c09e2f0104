/*
 * check.cpp - the check command.
 *
 * The answers are collected first (folders walked recursively for *.xml and *.json, in
 * name order), then parsed by one worker thread per core taking the next answer from a
 * shared counter. Each worker observes its own answer (ObserveScope: traces, dropped
 * values, missing keys) and keeps only the outcome, releasing the record at once. The
 * report is printed in collection order once all are done, so it does not depend on
 * scheduling; a progress bar is drawn on stderr meanwhile when it is a terminal.
 */
#include "check.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <memory>
#include <thread>

#include <unistd.h>

#include "capture.h"
#include "detect.h"

namespace atrium_tool {

namespace fs = std::filesystem;

namespace {

struct CheckedAnswer {
    std::string strPath;
    std::string strError; /* unreadable, or of no kind the tool knows */
    std::unique_ptr<ParsedAnswer> pParsed;

    bool Failed() const { return !pParsed || pParsed->Failed(); }
};

bool IsAnswerFile(const fs::path &stPath)
{
    const std::string strExt = stPath.extension().string();
    return strExt == ".xml" || strExt == ".json";
}

/* The answers named by the paths; false with strError when a path names nothing. */
bool CollectAnswers(const std::vector<std::string> &vecPaths, std::vector<CheckedAnswer> &vecOut, std::string &strError)
{
    for (const std::string &strPath : vecPaths) {
        std::error_code stErr;
        if (!fs::is_directory(strPath, stErr)) {
            if (!fs::exists(strPath, stErr)) {
                strError = strPath + ": no such file or folder";
                return false;
            }
            vecOut.push_back({strPath, "", nullptr});
            continue;
        }
        std::vector<std::string> vecFound;
        for (const fs::directory_entry &stEntry : fs::recursive_directory_iterator(strPath, stErr)) {
            if (stEntry.is_regular_file() && IsAnswerFile(stEntry.path())) {
                vecFound.push_back(stEntry.path().string());
            }
        }
        if (stErr) {
            strError = strPath + ": cannot list: " + stErr.message();
            return false;
        }
        std::sort(vecFound.begin(), vecFound.end());
        for (std::string &strFound : vecFound) {
            vecOut.push_back({std::move(strFound), "", nullptr});
        }
    }
    return true;
}

void CheckOne(CheckedAnswer &stAnswer, const CheckOptions &stOptions)
{
    Capture stCapture;
    if (!ReadCapture(stAnswer.strPath, stOptions.uiMaxBytes, stCapture, stAnswer.strError)) {
        stAnswer.strError = "unreadable: " + stAnswer.strError;
        return;
    }
    std::string strWhy;
    const AnswerKind *pstKind = DetectKind(stCapture.strBody, strWhy);
    if (pstKind == nullptr) {
        stAnswer.strError = "cannot tell the kind: " + strWhy;
        return;
    }
    stAnswer.pParsed = ParseAnswer(*pstKind, stCapture.strBody, stOptions.stParse);
    stAnswer.pParsed->vecCaptureNotes = stCapture.vecNotes;
    stAnswer.pParsed->pRecord.reset(); /* only the outcome is reported */
}

void DrawProgress(size_t uiDone, size_t uiTotal)
{
    const size_t uiWidth = 40;
    const size_t uiFull = uiTotal == 0 ? uiWidth : uiDone * uiWidth / uiTotal;
    std::cerr << "\r[" << std::string(uiFull, '#') << std::string(uiWidth - uiFull, '.') << "] " << uiDone << '/'
              << uiTotal << std::flush;
}

void ParseAll(std::vector<CheckedAnswer> &vecAnswers, const CheckOptions &stOptions)
{
    std::atomic<size_t> uiNext{0};
    std::atomic<size_t> uiDone{0};
    const unsigned uiCores = std::max(1u, std::thread::hardware_concurrency());
    const size_t uiWorkers = std::min<size_t>(stOptions.uiJobs != 0 ? stOptions.uiJobs : uiCores, vecAnswers.size());
    std::vector<std::thread> vecWorkers;
    for (size_t i = 0; i < uiWorkers; ++i) {
        vecWorkers.emplace_back([&] {
            for (size_t uiMine = uiNext++; uiMine < vecAnswers.size(); uiMine = uiNext++) {
                CheckOne(vecAnswers[uiMine], stOptions);
                ++uiDone;
            }
        });
    }
    if (isatty(STDERR_FILENO)) {
        while (uiDone < vecAnswers.size()) {
            DrawProgress(uiDone, vecAnswers.size());
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        std::cerr << "\r\033[K" << std::flush;
    }
    for (std::thread &stWorker : vecWorkers) {
        stWorker.join();
    }
}

/* "1 answer", "3 answers" */
std::string Count(size_t uiCount, const char *pcNoun)
{
    return std::to_string(uiCount) + " " + pcNoun + (uiCount == 1 ? "" : "s");
}

std::string Padded(const std::string &strText, size_t uiWidth)
{
    return strText + std::string(uiWidth > strText.size() ? uiWidth - strText.size() : 0, ' ');
}

/* "0 (success); server uiErrCode 5; dropped: ...; missing: ..." */
std::string OutcomeText(const CheckedAnswer &stAnswer)
{
    if (!stAnswer.pParsed) {
        return stAnswer.strError;
    }
    const ParsedAnswer &stParsed = *stAnswer.pParsed;
    std::string strText =
        stParsed.iCode ? std::to_string(*stParsed.iCode) + " (" + stParsed.Meaning() + ")" : stParsed.Meaning();
    if (!stParsed.strErrorAt.empty()) {
        strText += "; " + stParsed.strErrorAt;
    }
    if (stParsed.uiVerdict) {
        strText += "; server verdict " + std::string(stParsed.pstKind->pcVerdict) + " = " +
                   std::to_string(*stParsed.uiVerdict);
    }
    for (const std::string &strNote : stParsed.vecCaptureNotes) {
        strText += "; " + strNote;
    }
    for (size_t i = 0; i < stParsed.stSeen.vecDropped.size(); ++i) {
        strText += (i == 0 ? "; dropped: " : ", ") + FormatDropped(stParsed.stSeen.vecDropped[i]);
    }
    for (size_t i = 0; i < stParsed.stSeen.vecMissing.size(); ++i) {
        strText += (i == 0 ? "; missing: \"" : ", \"") + stParsed.stSeen.vecMissing[i] + "\"";
    }
    return strText;
}

struct Summary {
    size_t uiAnswers = 0;
    size_t uiFailed = 0;
    size_t uiWithDropped = 0;
    size_t uiDropped = 0;
    size_t uiWithMissing = 0;
};

Summary Summarise(const std::vector<CheckedAnswer> &vecAnswers)
{
    Summary stSum;
    stSum.uiAnswers = vecAnswers.size();
    for (const CheckedAnswer &stAnswer : vecAnswers) {
        stSum.uiFailed += stAnswer.Failed() ? 1 : 0;
        if (stAnswer.pParsed) {
            const Observations &stSeen = stAnswer.pParsed->stSeen;
            stSum.uiWithDropped += stSeen.vecDropped.empty() ? 0 : 1;
            stSum.uiDropped += stSeen.vecDropped.size();
            stSum.uiWithMissing += stSeen.vecMissing.empty() ? 0 : 1;
        }
    }
    return stSum;
}

void PrintTextReport(const std::vector<CheckedAnswer> &vecAnswers, const Summary &stSum)
{
    size_t uiPathWidth = 0;
    size_t uiKindWidth = 1;
    for (const CheckedAnswer &stAnswer : vecAnswers) {
        uiPathWidth = std::max(uiPathWidth, stAnswer.strPath.size());
        if (stAnswer.pParsed) {
            uiKindWidth = std::max(uiKindWidth, std::string(stAnswer.pParsed->pstKind->pcName).size());
        }
    }
    for (const CheckedAnswer &stAnswer : vecAnswers) {
        const std::string strKind = stAnswer.pParsed ? stAnswer.pParsed->pstKind->pcName : "-";
        std::cout << (stAnswer.Failed() ? "FAIL  " : "ok    ") << Padded(stAnswer.strPath, uiPathWidth) << "  "
                  << Padded(strKind, uiKindWidth) << "  " << OutcomeText(stAnswer) << '\n';
    }
    std::cout << Count(stSum.uiAnswers, "answer") << ": " << stSum.uiAnswers - stSum.uiFailed << " ok, "
              << stSum.uiFailed << " failed; " << Count(stSum.uiDropped, "value") << " dropped in "
              << Count(stSum.uiWithDropped, "answer") << "; required keys missing in "
              << Count(stSum.uiWithMissing, "answer") << '\n';
}

void PrintJsonReport(const std::vector<CheckedAnswer> &vecAnswers, const Summary &stSum)
{
    Json::Value jsReport(Json::objectValue);
    Json::Value &jsAnswers = jsReport["answers"] = Json::Value(Json::arrayValue);
    for (const CheckedAnswer &stAnswer : vecAnswers) {
        if (stAnswer.pParsed) {
            jsAnswers.append(AnswerSummaryJson(stAnswer.strPath, *stAnswer.pParsed));
            continue;
        }
        Json::Value jsOne(Json::objectValue);
        jsOne["answer"] = stAnswer.strPath;
        jsOne["error"] = stAnswer.strError;
        jsAnswers.append(jsOne);
    }
    Json::Value &jsSum = jsReport["summary"];
    jsSum["answers"] = static_cast<Json::UInt64>(stSum.uiAnswers);
    jsSum["failed"] = static_cast<Json::UInt64>(stSum.uiFailed);
    jsSum["droppedValues"] = static_cast<Json::UInt64>(stSum.uiDropped);
    jsSum["answersWithDroppedValues"] = static_cast<Json::UInt64>(stSum.uiWithDropped);
    jsSum["answersWithMissingKeys"] = static_cast<Json::UInt64>(stSum.uiWithMissing);
    std::cout << JsonText(jsReport);
}

} // namespace

int RunCheck(const CheckOptions &stOptions)
{
    std::vector<CheckedAnswer> vecAnswers;
    std::string strError;
    if (!CollectAnswers(stOptions.vecPaths, vecAnswers, strError)) {
        std::cerr << "atrium-xml: " << strError << '\n';
        return 2;
    }
    if (vecAnswers.empty()) {
        std::cerr << "atrium-xml: no *.xml or *.json answers found\n";
        return 2;
    }
    ParseAll(vecAnswers, stOptions);
    for (const CheckedAnswer &stAnswer : vecAnswers) {
        if (stAnswer.pParsed) {
            PrintTraces(std::cerr, stAnswer.pParsed->stSeen, stAnswer.strPath + ": ");
        }
    }
    const Summary stSum = Summarise(vecAnswers);
    if (stOptions.eFormat == Format::Json) {
        PrintJsonReport(vecAnswers, stSum);
    } else {
        PrintTextReport(vecAnswers, stSum);
    }
    return stSum.uiFailed == 0 ? 0 : 1;
}

} // namespace atrium_tool
