/*
 * build.cpp - the build command.
 *
 * The JSON description is read into a zeroed request record through the record's
 * description (the same field names parse prints; a parse output is accepted as it is,
 * its "record" member is used). Counts that a builder trusts without a bound of its own
 * are checked first, so that no description can make the module read past the record.
 * The builder then runs once and the body it hands over is printed byte for byte and
 * released.
 */
#include "build.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <memory>

#include <json/json.h>

#include "answers.h"
#include "input.h"
#include "print.h"
#include "record_print.h"

namespace atrium_tool {

using namespace atrium_records;

namespace {

struct RequestKind {
    const char *pcName;
    const char *pcFunction;
    const RecordDesc *pstRecord;
    uint32_t (*pfnBuild)(void *pvRecord, uint32_t uiIndex, char **ppcBody, uint32_t *puiLen);
    /* Settles and checks what the builder takes on trust; false with a reason. */
    bool (*pfnPrepare)(const Json::Value &jsRecord, void *pvRecord, uint32_t uiIndex, std::string &strError);
    std::vector<CodeMeaning> vecMeanings;
};

bool NothingToPrepare(const Json::Value &, void *, uint32_t, std::string &)
{
    return true;
}

/* The builder sends uiCalleeNum callees of the rule, unbounded: a rule given without it
 * sends the callees listed, and no count may pass the list's 10 entries. */
bool PrepareUniCall(const Json::Value &jsRecord, void *pvRecord, uint32_t uiIndex, std::string &strError)
{
    auto *pstCfg = static_cast<tagLOGIN_S_UNICALL_CFG *>(pvRecord);
    const FieldDesc &stCallees = *g_stUniCallBeanDesc.Find("aacCalleeList");
    for (uint32_t i = 0; i < pstCfg->uiUniCallBeanNum; ++i) {
        tagLOGIN_S_UNICALL_BEAN &stBean = pstCfg->astUniCallBean[i];
        if (!jsRecord["astUniCallBean"][i].isMember("uiCalleeNum")) {
            stBean.uiCalleeNum = FilledEntries(stCallees, &stBean);
        }
        if (i == uiIndex && stBean.uiCalleeNum > LOGIN_UNICALL_CALLEE_MAX) {
            strError = "astUniCallBean[" + std::to_string(i) + "].uiCalleeNum: " + std::to_string(stBean.uiCalleeNum) +
                       " exceeds the " + std::to_string(LOGIN_UNICALL_CALLEE_MAX) + " entries of aacCalleeList";
            return false;
        }
    }
    return true;
}

const std::vector<RequestKind> &RequestKinds()
{
    static const std::vector<RequestKind> s_vecKinds = {
        {"unicall",
         "JsonBuildSetUniCallCfgBody",
         &g_stUniCallCfgDesc,
         [](void *pvRecord, uint32_t uiIndex, char **ppcBody, uint32_t *puiLen) {
             return JsonBuildSetUniCallCfgBody(static_cast<tagLOGIN_S_UNICALL_CFG *>(pvRecord), uiIndex, ppcBody,
                                               puiLen);
         },
         PrepareUniCall,
         {{1, "the module refused the request"}}},
        {"linked-phone-set",
         "JsonBuildSetLinkedPhoneInfoBody",
         &g_stLinkedPhoneDesc,
         [](void *pvRecord, uint32_t, char **ppcBody, uint32_t *puiLen) {
             return JsonBuildSetLinkedPhoneInfoBody(static_cast<tagLOGIN_S_LINKED_PHONE *>(pvRecord), ppcBody, puiLen);
         },
         NothingToPrepare,
         {{1, "the module refused the request"}}},
        {"linked-phone-get",
         "JsonBuildGetLinkedPhoneInfoBody",
         &g_stLinkedPhoneInfoDesc,
         [](void *pvRecord, uint32_t, char **ppcBody, uint32_t *puiLen) {
             return JsonBuildGetLinkedPhoneInfoBody(static_cast<tagLOGIN_S_LINKED_PHONE_INFO *>(pvRecord), ppcBody,
                                                    puiLen);
         },
         NothingToPrepare,
         {{2, "no identity to ask for (uiImpuNum is 0)"}, {4, "the body could not be allocated"}}},
    };
    return s_vecKinds;
}

const RequestKind *FindRequestKind(const std::string &strName)
{
    for (const RequestKind &stKind : RequestKinds()) {
        if (strName == stKind.pcName) {
            return &stKind;
        }
    }
    return nullptr;
}

/* JsonCpp's multi-line report as one line. */
std::string OneLine(const std::string &strText)
{
    std::string strLine;
    bool bSpace = false;
    for (char c : strText) {
        if (c == '\n' || c == ' ' || c == '*') {
            bSpace = !strLine.empty();
            continue;
        }
        if (bSpace) {
            strLine += ' ';
            bSpace = false;
        }
        strLine += c;
    }
    return strLine;
}

bool ReadJson(const std::string &strText, Json::Value &jsRoot, std::string &strError)
{
    Json::CharReaderBuilder stBuilder;
    stBuilder["failIfExtra"] = true;
    std::unique_ptr<Json::CharReader> pReader(stBuilder.newCharReader());
    std::string strErrors;
    if (!pReader->parse(strText.data(), strText.data() + strText.size(), &jsRoot, &strErrors)) {
        strError = "not JSON: " + OneLine(strErrors);
        return false;
    }
    return true;
}

std::string RefusalText(const RequestKind &stKind, uint32_t uiCode, const Observations &stSeen)
{
    std::string strText = "result " + std::to_string(uiCode);
    const auto itMeaning = std::find_if(stKind.vecMeanings.begin(), stKind.vecMeanings.end(),
                                        [&](const CodeMeaning &stM) { return stM.iCode == uiCode; });
    strText +=
        " (" + std::string(itMeaning != stKind.vecMeanings.end() ? itMeaning->pcMeaning : "not a code of this builder");
    for (const std::string &strError : stSeen.vecErrors) {
        strText += ": " + strError;
    }
    return strText + ")";
}

int Fail(const std::string &strWhat, int iStatus)
{
    std::cerr << "atrium-xml: " << strWhat << '\n';
    return iStatus;
}

} // namespace

std::string RequestKindNames()
{
    std::string strNames;
    for (const RequestKind &stKind : RequestKinds()) {
        strNames += (strNames.empty() ? "" : ", ") + std::string(stKind.pcName);
    }
    return strNames;
}

bool IsRequestKind(const std::string &strName)
{
    return FindRequestKind(strName) != nullptr;
}

int RunBuild(const BuildOptions &stOptions)
{
    const RequestKind *pstKind = FindRequestKind(stOptions.strRequest);
    const std::string strName = InputName(stOptions.strPath);
    std::string strText;
    std::string strError;
    Json::Value jsRoot;
    if (!ReadInput(stOptions.strPath, stOptions.uiMaxBytes, strText, strError) ||
        !ReadJson(strText, jsRoot, strError)) {
        return Fail(strName + ": " + strError, 2);
    }
    const Json::Value &jsTop = jsRoot;
    const Json::Value &jsRecord = jsTop.isObject() && jsTop["record"].isObject() ? jsTop["record"] : jsTop;
    RecordBuffer stRecord(*pstKind->pstRecord);
    if (!RecordFromJson(*pstKind->pstRecord, jsRecord, stRecord.Get(), strError) ||
        !pstKind->pfnPrepare(jsRecord, stRecord.Get(), stOptions.uiIndex, strError)) {
        return Fail(strName + ": " + strError, 2);
    }

    Observations stSeen;
    char *pcBody = nullptr;
    uint32_t uiLen = 0;
    uint32_t uiCode;
    {
        ObserveScope stScope(stSeen);
        try {
            uiCode = pstKind->pfnBuild(stRecord.Get(), stOptions.uiIndex, &pcBody, &uiLen);
        } catch (const std::exception &e) {
            return Fail(std::string("build ") + pstKind->pcName + ": the module let an exception through: " + e.what(),
                        1);
        }
    }
    PrintTraces(std::cerr, stSeen, "");
    if (uiCode != 0 || pcBody == nullptr) {
        return Fail(std::string("build ") + pstKind->pcName + " (" + pstKind->pcFunction +
                        "): " + RefusalText(*pstKind, uiCode, stSeen),
                    1);
    }
    std::fwrite(pcBody, 1, uiLen, stdout);
    std::fflush(stdout);
    KOSA_MemFreeD(pcBody, __LINE__, __FILE__);
    return 0;
}

} // namespace atrium_tool
