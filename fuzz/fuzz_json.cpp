/*
 * fuzz_json - the unified-call and linked-phone services: both answer parsers on the text,
 * and the three body builders on records decoded from the input (text fields terminated
 * within their capacities and counts within the arrays, as a caller hands them), plus the
 * round trip of a parsed answer into a body. JsonCpp's exceptions pass through the parsers on
 * purpose (a member of an unexpected type) and are caught here; any other exception is a finding. Every built
 * body must be the JSON text of the record it came from.
 */
#include <fuzzer/FuzzedDataProvider.h>

#include <json/json.h>

#include "fuzz_support.h"

using namespace atrium_fuzz;

namespace {

template <size_t N>
void FillText(FuzzedDataProvider &provider, char (&acField)[N])
{
    std::string strText = provider.ConsumeRandomLengthString(N - 1);
    std::memset(acField, 0, N);
    std::memcpy(acField, strText.c_str(), std::strlen(strText.c_str()));
}

/* The writer escapes what is not valid UTF-8, so a text compares with its read-back only
 * when it is printable ASCII (which every seed text is). */
bool SameText(const Json::Value &value, const char *pcText)
{
    for (const char *pc = pcText; *pc != '\0'; ++pc) {
        if (*pc < 0x20 || *pc > 0x7e) {
            return value.isString();
        }
    }
    return value.asString() == pcText;
}

/* A handed-over body: a zero-terminated block of *puiLen bytes that reads back as JSON. */
Json::Value TakeBody(char *pcBody, uint32_t uiLen)
{
    FUZZ_CHECK(pcBody != nullptr);
    FUZZ_CHECK(std::strlen(pcBody) == uiLen);
    Json::Value root;
    Json::Reader reader;
    FUZZ_CHECK(reader.parse(pcBody, pcBody + uiLen, root, false));
    KOSA_MemFreeD(pcBody, __LINE__, __FILE__);
    return root;
}

void ParseUniCall(const Text &body)
{
    auto stCfg = Cleared<tagLOGIN_S_UNICALL_CFG>();
    CallFrame frame;
    try {
        int32_t iRet = JsonParseUniCallCfgResult(body.c_str(), &stCfg);
        FUZZ_CHECK(iRet == 0 || iRet == 2 || iRet == 46);
        FUZZ_CHECK(iRet != 46 || stCfg.uiReturnCode == 1);
    } catch (const Json::Exception &) {
    }
    FUZZ_CHECK(stCfg.uiUniCallBeanNum <= LOGIN_UNICALL_BEAN_MAX);
    CheckTerminated(stCfg.acDspNum);
    CheckTerminated(stCfg.acErrorCode);
    for (const tagLOGIN_S_UNICALL_BEAN &stBean : stCfg.astUniCallBean) {
        CheckTerminated(stBean.acRuleId);
        CheckTerminated(stBean.acEndTime);
        for (const auto &acCallee : stBean.aacCalleeList) {
            CheckTerminated(acCallee);
        }
    }
    frame.Finish();
}

void ParseLinkedPhone(const Text &body)
{
    auto stResult = Cleared<tagLOGIN_S_LINKED_PHONE_RESULT>();
    CallFrame frame;
    try {
        uint32_t uiRet = JsonParseLinkedPhoneResult(body.c_str(), &stResult);
        FUZZ_CHECK(uiRet == 0 || uiRet == 2 || uiRet == 11 || uiRet == 46);
        FUZZ_CHECK(uiRet != 0 || stResult.uiLinkedPhoneNum <= LOGIN_LINKED_PHONE_MAX);
    } catch (const Json::Exception &) {
    }
    for (const tagLOGIN_S_LINKED_PHONE &stPhone : stResult.astLinkedPhone) {
        CheckTerminated(stPhone.acImpu);
        CheckTerminated(stPhone.acLinkedPhone);
        FUZZ_CHECK(stPhone.uiActive <= 1);
    }
    frame.Finish();
}

void BuildUniCall(FuzzedDataProvider &provider)
{
    auto stCfg = Cleared<tagLOGIN_S_UNICALL_CFG>();
    stCfg.uiOperate = provider.ConsumeIntegral<uint32_t>();
    stCfg.uiSrvType = provider.ConsumeIntegralInRange<uint32_t>(0, 2);
    FillText(provider, stCfg.acDspNum);
    stCfg.uiUniCallBeanNum = provider.ConsumeIntegralInRange<uint32_t>(0, LOGIN_UNICALL_BEAN_MAX);
    const uint32_t uiIndex = provider.ConsumeIntegralInRange<uint32_t>(0, LOGIN_UNICALL_BEAN_MAX - 1);
    tagLOGIN_S_UNICALL_BEAN &stBean = stCfg.astUniCallBean[uiIndex];
    FillText(provider, stBean.acRuleId);
    stBean.uiAllTime = provider.ConsumeIntegral<uint32_t>();
    stBean.uiCycleType = provider.ConsumeIntegral<uint32_t>();
    FillText(provider, stBean.acStartDate);
    FillText(provider, stBean.acEndDate);
    FillText(provider, stBean.acDayInWeek);
    FillText(provider, stBean.acStartTime);
    FillText(provider, stBean.acEndTime);
    stBean.uiCalleeIndex = provider.ConsumeIntegral<uint32_t>();
    stBean.uiCalleeNum = provider.ConsumeIntegralInRange<uint32_t>(0, LOGIN_UNICALL_CALLEE_MAX);
    for (uint32_t i = 0; i < stBean.uiCalleeNum; ++i) {
        FillText(provider, stBean.aacCalleeList[i]);
    }
    stBean.uiRType = provider.ConsumeIntegral<uint32_t>();
    stBean.uiOperateType = provider.ConsumeIntegral<uint32_t>();

    char *pcBody = nullptr;
    uint32_t uiLen = 0;
    CallFrame frame;
    uint32_t uiRet = JsonBuildSetUniCallCfgBody(&stCfg, uiIndex, &pcBody, &uiLen);
    FUZZ_CHECK(uiRet == 0 || uiRet == 1);
    FUZZ_CHECK((uiRet == 0) == (stCfg.uiSrvType <= 1 && uiIndex < stCfg.uiUniCallBeanNum));
    if (uiRet == 0) {
        Json::Value root = TakeBody(pcBody, uiLen);
        FUZZ_CHECK(SameText(root["dspnum"], stCfg.acDspNum));
        FUZZ_CHECK(root["operate"].asUInt() == stCfg.uiOperate);
        FUZZ_CHECK(root["unicallBeans"].size() == 1);
        const Json::Value &rule = root["unicallBeans"][0];
        FUZZ_CHECK(SameText(rule["ruleid"], stBean.acRuleId));
        FUZZ_CHECK(SameText(rule["timeInfo"]["endTime"], stBean.acEndTime));
        FUZZ_CHECK(rule["calleeList"].size() == stBean.uiCalleeNum);
        for (uint32_t i = 0; i < stBean.uiCalleeNum; ++i) {
            FUZZ_CHECK(SameText(rule["calleeList"][i], stBean.aacCalleeList[i]));
        }
    }
    frame.Finish();
}

void BuildLinkedPhoneSet(FuzzedDataProvider &provider)
{
    auto stPhone = Cleared<tagLOGIN_S_LINKED_PHONE>();
    FillText(provider, stPhone.acImpu);
    stPhone.uiActive = provider.ConsumeIntegralInRange<uint32_t>(0, 2);
    FillText(provider, stPhone.acLinkedPhone);
    char *pcBody = nullptr;
    uint32_t uiLen = 0;
    CallFrame frame;
    uint32_t uiRet = JsonBuildSetLinkedPhoneInfoBody(&stPhone, &pcBody, &uiLen);
    FUZZ_CHECK((uiRet == 0) == (stPhone.uiActive == 0 || stPhone.acLinkedPhone[0] != '\0'));
    if (uiRet == 0) {
        Json::Value root = TakeBody(pcBody, uiLen);
        FUZZ_CHECK(SameText(root["impu"], stPhone.acImpu));
        FUZZ_CHECK(root["active"].asInt() == (stPhone.uiActive != 0 ? 1 : 0));
        FUZZ_CHECK(root.isMember("linkedPhone") == (stPhone.uiActive != 0));
    }
    frame.Finish();
}

void BuildLinkedPhoneGet(FuzzedDataProvider &provider)
{
    auto stInfo = Cleared<tagLOGIN_S_LINKED_PHONE_INFO>();
    stInfo.uiImpuNum = provider.ConsumeIntegralInRange<uint32_t>(0, LOGIN_LINKED_PHONE_MAX);
    for (uint32_t i = 0; i < stInfo.uiImpuNum; ++i) {
        FillText(provider, stInfo.astLinkedPhone[i].acImpu);
    }
    char *pcBody = nullptr;
    uint32_t uiLen = 0;
    CallFrame frame;
    uint32_t uiRet = JsonBuildGetLinkedPhoneInfoBody(&stInfo, &pcBody, &uiLen);
    FUZZ_CHECK(uiRet == (stInfo.uiImpuNum == 0 ? 2u : 0u));
    if (uiRet == 0) {
        Json::Value root = TakeBody(pcBody, uiLen);
        FUZZ_CHECK(root["impuList"].size() == stInfo.uiImpuNum);
        for (uint32_t i = 0; i < stInfo.uiImpuNum; ++i) {
            FUZZ_CHECK(SameText(root["impuList"][i], stInfo.astLinkedPhone[i].acImpu));
        }
    }
    frame.Finish();
}

/* A parsed answer handed back to the builder, rule by rule. The parser stores the rule count
 * in each rule's callee count; a caller caps it at the list's ten entries before building. */
void RoundTripUniCall(const Text &body)
{
    auto stCfg = Cleared<tagLOGIN_S_UNICALL_CFG>();
    try {
        if (JsonParseUniCallCfgResult(body.c_str(), &stCfg) != 0) {
            return;
        }
    } catch (const Json::Exception &) {
        return;
    }
    CallFrame frame;
    for (uint32_t i = 0; i < stCfg.uiUniCallBeanNum; ++i) {
        if (stCfg.astUniCallBean[i].uiCalleeNum > LOGIN_UNICALL_CALLEE_MAX) {
            stCfg.astUniCallBean[i].uiCalleeNum = LOGIN_UNICALL_CALLEE_MAX;
        }
        char *pcBody = nullptr;
        uint32_t uiLen = 0;
        if (JsonBuildSetUniCallCfgBody(&stCfg, i, &pcBody, &uiLen) == 0) {
            Json::Value root = TakeBody(pcBody, uiLen);
            FUZZ_CHECK(SameText(root["unicallBeans"][0]["ruleid"], stCfg.astUniCallBean[i].acRuleId));
        }
    }
    frame.Finish();
}

} // namespace

ATRIUM_FUZZ_TARGET(FuzzJson)
{
    if (uiSize == 0) {
        return 0;
    }
    Initialize();
    FuzzedDataProvider provider(pucData + 1, uiSize - 1);
    switch (pucData[0] % 6) {
    case 0:
        ParseUniCall(BodyOf(pucData + 1, uiSize - 1));
        break;
    case 1:
        ParseLinkedPhone(BodyOf(pucData + 1, uiSize - 1));
        break;
    case 2:
        BuildUniCall(provider);
        break;
    case 3:
        BuildLinkedPhoneSet(provider);
        break;
    case 4:
        BuildLinkedPhoneGet(provider);
        break;
    default:
        RoundTripUniCall(BodyOf(pucData + 1, uiSize - 1));
        break;
    }
    return 0;
}
