/*
 * cli.cpp - atrium-xml's command line: parse, detect, check and build, on CLI11.
 *
 * main() declares the commands and their options, lets CLI11 read the command line and
 * hands over to the command. Every refusal is one line on stderr starting "atrium-xml: ",
 * with exit status 2 for bad usage or unreadable input and 1 for an answer the module
 * failed (or a request it refused).
 */
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>
#include <unistd.h>

#include "answers.h"
#include "build.h"
#include "capture.h"
#include "check.h"
#include "detect.h"
#include "input.h"
#include "observe.h"
#include "print.h"
#include "record_print.h"

namespace atrium_tool {

namespace {

const char *const kMainFooter =
    "Examples:\n"
    "  atrium-xml parse portal-login --host sso.corp.example --format text login.xml\n"
    "  atrium-xml parse auto captured.xml > decoded.json\n"
    "  atrium-xml detect captured.xml\n"
    "  atrium-xml check captures/ one-more-answer.xml\n"
    "  atrium-xml build unicall --index 0 rule.json\n"
    "\n"
    "Exit status: 0 success; 1 the module failed an answer (result code not 0) or refused a\n"
    "request; 2 bad usage or an input that cannot be read.";

/* The options shared by the commands that read answers. */
struct CommonOptions {
    uint64_t uiMaxBytes = kDefaultMaxInput;
    int iTraceLevel = kNoTrace;
    bool bShowSecrets = false;
    std::string strFormat;
    ParseOptions stParse;

    Format OutputFormat(Format eDefault) const
    {
        if (strFormat.empty()) {
            return eDefault;
        }
        return strFormat == "json" ? Format::Json : Format::Text;
    }
};

void AddInputOptions(CLI::App &stCommand, CommonOptions &stCommon)
{
    stCommand
        .add_option("--max-size", stCommon.uiMaxBytes,
                    "largest input read, in bytes or with a unit (512K, 64M); default 16M")
        ->transform(CLI::AsSizeValue(false));
    stCommand
        .add_option("--trace", stCommon.iTraceLevel,
                    "print the module's traces up to LEVEL to stderr (0 errors, 1 misses "
                    "of single keys, 2 progress, 3 dumps)")
        ->check(CLI::Range(0, 3));
}

/* check parses many answers at once, so it offers no single profile file to save to. */
enum class ProfileOption { Offered, NotOffered };

void AddParseOptions(CLI::App &stCommand, CommonOptions &stCommon, ProfileOption eProfile)
{
    AddInputOptions(stCommand, stCommon);
    stCommand.add_option("--host", stCommon.stParse.strHost,
                         "portal-login: the SSO host the client logged in to (picks its own site)");
    ParseOptions &stParse = stCommon.stParse;
    stCommand.add_option_function<std::string>(
        "--site-key", [&stParse](const std::string &strKey) { stParse.strSiteKey = strKey; },
        "guest-sites: the SSO host of the guest's site (default: the first site's)");
    stCommand.add_option_function<uint64_t>(
        "--seed", [&stParse](const uint64_t &uiSeed) { stParse.uiSeed = uiSeed; },
        "draw the random choice of access groups from this seed, to repeat a selection");
    if (eProfile == ProfileOption::Offered) {
        stCommand.add_option_function<std::string>(
            "--profile-file", [&stParse](const std::string &strFile) { stParse.strProfileFile = strFile; },
            "right-config: where the profile is saved (default: a temporary file, removed)");
    }
}

std::string KindTable()
{
    std::string strTable = "Answer kinds:\n";
    for (const AnswerKind &stKind : AnswerKinds()) {
        const std::string strName = stKind.pcName;
        strTable += "  " + strName + std::string(18 - strName.size(), ' ') + stKind.pcAnswer + "\n";
    }
    return strTable;
}

/* The answer at strPath, out of what wraps it; when it cannot be read, says why on stderr. */
bool ReadAnswerOrSay(const std::string &strPath, const std::string &strName, const CommonOptions &stCommon,
                     Capture &stCapture)
{
    std::string strError;
    if (!ReadCapture(strPath, stCommon.uiMaxBytes, stCapture, strError)) {
        std::cerr << "atrium-xml: " << strName << ": " << strError << '\n';
        return false;
    }
    return true;
}

int RunParse(const std::string &strKind, const std::string &strPath, const CommonOptions &stCommon)
{
    const AnswerKind *pstKind = strKind == "auto" ? nullptr : FindAnswerKind(strKind);
    if (strKind != "auto" && pstKind == nullptr) {
        std::cerr << "atrium-xml: unknown answer kind '" << strKind << "' (one of: auto, " << AnswerKindNames()
                  << ")\n";
        return 2;
    }
    const std::string strName = InputName(strPath);
    Capture stCapture;
    if (!ReadAnswerOrSay(strPath, strName, stCommon, stCapture)) {
        return 2;
    }
    const std::string &strBody = stCapture.strBody;
    std::string strError;
    if (pstKind == nullptr && (pstKind = DetectKind(strBody, strError)) == nullptr) {
        std::cerr << "atrium-xml: " << strName << ": cannot tell the kind: " << strError
                  << " (name the kind instead of auto)\n";
        return 2;
    }
    InstallTraceSink(stCommon.iTraceLevel);
    atrium_records::ShowSecrets(stCommon.bShowSecrets);
    const std::unique_ptr<ParsedAnswer> pParsed = ParseAnswer(*pstKind, strBody, stCommon.stParse);
    pParsed->vecCaptureNotes = stCapture.vecNotes;
    PrintTraces(std::cerr, pParsed->stSeen, "");
    const Format eDefault = isatty(STDOUT_FILENO) ? Format::Text : Format::Json;
    PrintParsedAnswer(std::cout, strName, *pParsed, stCommon.OutputFormat(eDefault));
    return pParsed->Failed() ? 1 : 0;
}

int RunDetect(const std::string &strPath, const CommonOptions &stCommon)
{
    const std::string strName = InputName(strPath);
    Capture stCapture;
    if (!ReadAnswerOrSay(strPath, strName, stCommon, stCapture)) {
        return 2;
    }
    const std::string &strBody = stCapture.strBody;
    std::string strError;
    const AnswerKind *pstKind = DetectKind(strBody, strError);
    if (pstKind == nullptr) {
        std::cerr << "atrium-xml: " << strName << ": cannot tell the kind: " << strError << '\n';
        return 1;
    }
    if (stCommon.OutputFormat(Format::Text) == Format::Json) {
        Json::Value jsOut(Json::objectValue);
        jsOut["answer"] = strName;
        jsOut["kind"] = pstKind->pcName;
        jsOut["function"] = pstKind->pcFunction;
        std::cout << JsonText(jsOut);
    } else {
        std::cout << pstKind->pcName << '\n';
    }
    return 0;
}

int Main(int argc, char **argv)
{
    CLI::App stApp("atrium-xml: see what the login service's response-parsing module makes of a "
                   "server answer, and which request bodies it builds.",
                   "atrium-xml");
    stApp.require_subcommand(1);
    stApp.footer(kMainFooter);

    CommonOptions stCommon;
    std::string strKind;
    std::string strPath;
    std::vector<std::string> vecPaths;
    unsigned uiJobs = 0;
    uint32_t uiIndex = 0;

    CLI::App *pstParse =
        stApp.add_subcommand("parse", "Run the module's parser for KIND on one answer and print its result code and "
                                      "the whole record it filled (JSON when stdout is not a terminal).");
    pstParse->add_option("KIND", strKind, "answer kind (see below), or auto to detect it")->required();
    pstParse->add_option("FILE", strPath, "the answer, - for standard input")->required();
    pstParse->add_option("--format", stCommon.strFormat, "json or text")->check(CLI::IsMember({"json", "text"}));
    pstParse->add_flag("--show-secrets", stCommon.bShowSecrets,
                       "print passwords, tokens and keys as they are (by default: *** and their length)");
    AddParseOptions(*pstParse, stCommon, ProfileOption::Offered);
    pstParse->footer(KindTable() + "\nExample:\n  atrium-xml parse portal-login --host sso.corp.example "
                                   "--format text examples/answers/portal-login-two-sites.xml");

    CLI::App *pstDetect =
        stApp.add_subcommand("detect", "Name the kind of an answer from its root element and content.");
    pstDetect->add_option("FILE", strPath, "the answer, - for standard input")->required();
    pstDetect->add_option("--format", stCommon.strFormat, "text (default) or json")
        ->check(CLI::IsMember({"json", "text"}));
    AddInputOptions(*pstDetect, stCommon);
    pstDetect->footer("Example:\n  atrium-xml detect examples/answers/conf-login-refused.xml");

    CLI::App *pstCheck =
        stApp.add_subcommand("check", "Parse many captured answers (kind detected) on all cores: one line per answer "
                                      "with its result code and kind, values dropped because they did not fit their "
                                      "field, required keys missing, and a summary.");
    pstCheck->add_option("PATH", vecPaths, "answer files, and folders searched for *.xml and *.json")->required();
    pstCheck->add_option("--format", stCommon.strFormat, "text (default) or json")
        ->check(CLI::IsMember({"json", "text"}));
    pstCheck->add_option("--jobs", uiJobs, "worker threads (default: one per core)")->check(CLI::Range(1u, 1024u));
    AddParseOptions(*pstCheck, stCommon, ProfileOption::NotOffered);
    pstCheck->footer("Example:\n  atrium-xml check examples/answers");

    CLI::App *pstBuild =
        stApp.add_subcommand("build", "Fill a request record from its JSON description (field names as parse prints "
                                      "them) and print the body the module builds.");
    pstBuild->add_option("REQUEST", strKind, RequestKindNames())->required();
    pstBuild->add_option("FILE", strPath, "the JSON description, - for standard input")->required();
    pstBuild->add_option("--index", uiIndex, "unicall: the rule to send (default 0)");
    AddInputOptions(*pstBuild, stCommon);
    pstBuild->footer("Example:\n  echo '{\"acImpu\": \"sip:alice@corp.example\", \"uiActive\": 1, "
                     "\"acLinkedPhone\": \"+15550100\"}' | atrium-xml build linked-phone-set -");

    try {
        stApp.parse(argc, argv);
    } catch (const CLI::ParseError &e) {
        if (e.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
            return stApp.exit(e);
        }
        std::cerr << "atrium-xml: " << e.what() << " (see atrium-xml --help)\n";
        return 2;
    }
    if (pstParse->parsed()) {
        return RunParse(strKind, strPath, stCommon);
    }
    if (pstDetect->parsed()) {
        return RunDetect(strPath, stCommon);
    }
    if (pstCheck->parsed()) {
        InstallTraceSink(stCommon.iTraceLevel);
        return RunCheck({vecPaths, stCommon.stParse, stCommon.uiMaxBytes, uiJobs, stCommon.OutputFormat(Format::Text)});
    }
    if (!IsRequestKind(strKind)) {
        std::cerr << "atrium-xml: unknown request '" << strKind << "' (one of: " << RequestKindNames() << ")\n";
        return 2;
    }
    InstallTraceSink(stCommon.iTraceLevel);
    return RunBuild({strKind, strPath, uiIndex, stCommon.uiMaxBytes});
}

} // namespace

} // namespace atrium_tool

int main(int argc, char **argv)
{
    return atrium_tool::Main(argc, argv);
}
