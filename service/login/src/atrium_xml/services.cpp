/*
 * services.cpp - the management web service's SOAP reply and the two JSON services.
 *
 * The endpoint-message reply is a SOAP envelope: XmlGetSoapBodyNode parses it and finds
 * Envelope and Body, XmlParseGetSiteInfoResult checks the response's namespace, reads the
 * error code and picks three strings out of the JSON text embedded in the "result" element
 * with XmlGetStringValueByKeyFromJson, a small substring scanner (not a JSON parser: its
 * rules are the behaviour), and then wipes that text, which holds a password, inside the
 * document before releasing it.
 *
 * The unified-call and linked-phone services speak JSON through JsonCpp. Their answers are
 * read with Json::Reader into a Json::Value and copied member by member into the caller's
 * record through tables of the frame's key rows (one table per JSON object), read by the
 * frame's key loop with a JSON object as their source; the builders fill a
 * Json::Value from a record, render it with toStyledString and hand the text over in a
 * zero-filled block of the module's memory. JsonCpp's exceptions are not caught: every
 * JsonCpp object is a local that unwinds with them, and a body block is allocated only
 * after the text is rendered, so an exception never leaves a module block behind.
 */
#include "atrium_frame.h"

#include <json/json.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

/* ---- SOAP endpoint-message reply --------------------------------------------------- */

namespace {

/* Exact equality with the configured namespace URI. The lengths are compared first so that
 * the comparison over the URI's length and terminator never reads past a shorter
 * attribute text. */
bool IsManagementNamespace(const char *pcNamespace)
{
    static const char s_acNamespace[] = LOGIN_MGMT_SERVICE_NAMESPACE;
    return KOSA_StrLen(pcNamespace) == sizeof(s_acNamespace) - 1 &&
           KOSA_MemCmp(pcNamespace, s_acNamespace, sizeof(s_acNamespace)) == 0;
}

/* The scanner skips the key's closing quote and the colon without looking at them. */
const uint32_t JSON_SCAN_KEY_TAIL = 2;

} // namespace

uint32_t XmlGetSoapBodyNode(const char *pcXmlBody, uint32_t /* uiLen: not used */, _NODE **ppstRoot,
                            _NODE **ppstEnvelope, _NODE **ppstBody)
{
    uint32_t uiRet = AtriumParseAnswer(pcXmlBody, "GetEndPointMessageJson: KTL_XML_Parse failed errno=[0x%x]!",
                                       ATRIUM_PARSE_CODE, ppstRoot, ATRIUM_HERE);
    if (uiRet != 0) {
        return uiRet;
    }
    /* The XML library hands out a node exactly when its code is 0 (and an attribute's text
     * exactly when its code is 0): the codes alone tell a miss, here and below. */
    uiRet = AtriumLookUp(*ppstRoot, ATRIUM_PATH("Envelope"), ppstEnvelope);
    if (uiRet != 0) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "GetEndPointMessageJson: get node [Soap:Envelope] failed errno=[0x%x]!",
                     uiRet);
        return uiRet;
    }
    /* From the root, not from the envelope: the path names the envelope itself first. */
    uiRet = AtriumLookUp(*ppstRoot, ATRIUM_PATH("Envelope.Body"), ppstBody);
    if (uiRet != 0) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "GetEndPointMessageJson: get node [Soap:Body] failed errno=[0x%x]!", uiRet);
        return uiRet;
    }
    return 0;
}

void XmlGetStringValueByKeyFromJson(const char *pcKey, const char *pcJson, char *pcDst, uint32_t uiDstSize)
{
    const char *pcKeyAt = KOSA_StrStr(pcJson, pcKey);
    if (pcKeyAt == nullptr) {
        return;
    }
    const char *pcKeyEnd = pcKeyAt + KOSA_StrLen(pcKey);
    /* A key that ends less than two bytes before the terminator has no value after it;
     * stepping over two bytes there would leave the text. */
    if (pcKeyEnd[0] == '\0' || pcKeyEnd[1] == '\0') {
        return;
    }
    const char *pcStart = pcKeyEnd + JSON_SCAN_KEY_TAIL;
    const char *pcComma = KOSA_StrChr(pcStart, ',');
    const char *pcOpen = KOSA_StrChr(pcStart, '"');
    if (pcOpen == nullptr || (pcComma != nullptr && pcOpen >= pcComma)) {
        return;
    }
    const char *pcClose = KOSA_StrChr(pcOpen + 1, '"');
    if (pcClose == nullptr || (pcComma != nullptr && pcClose >= pcComma)) {
        return;
    }
    /* No terminator of its own: the caller's cleared record supplies it. A value of at
     * least the destination's size is not copied, and that is not an error here. */
    (void)qev_memcpy_s(pcDst, uiDstSize, pcOpen + 1, static_cast<uint32_t>(pcClose - pcOpen - 1));
}

uint32_t XmlParseGetSiteInfoResult(const char *pcXmlBody, tagLOGIN_S_ENDPOINT_MSG_RESULT *pstResult)
{
    AtriumDocument stDocument;
    _NODE *pstEnvelope = nullptr;
    _NODE *pstBody = nullptr;
    _NODE *pstResponse = nullptr;
    _NODE *pstResultNode = nullptr;
    _NODE *pstNode = nullptr;
    char *pcValue = nullptr;
    char *pcNamespace = nullptr;

    uint32_t uiRet = XmlGetSoapBodyNode(pcXmlBody, 0, stDocument.RootSlot(), &pstEnvelope, &pstBody);
    if (uiRet != 0) {
        return uiRet;
    }
    uiRet = AtriumLookUp(pstBody, ATRIUM_PATH("Body.GetEndPointMessageJsonResponse"), &pstResponse);
    if (uiRet != 0) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR,
                     "GetEndPointMessageJson: get node [GetEndPointMessageJsonResponse] failed errno=[0x%x]!", uiRet);
        return uiRet;
    }
    uiRet = KTL_XML_GetAttr(pstResponse, 0, "xmlns", &pcNamespace);
    if (uiRet != 0) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "GetEndPointMessageJson: get Attr of Response failed errno=[0x%x]!", uiRet);
        return uiRet;
    }
    if (!IsManagementNamespace(pcNamespace)) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "illeqal Response");
        return 1;
    }
    uiRet = AtriumLookUp(pstResponse, ATRIUM_PATH("GetEndPointMessageJsonResponse.GetEndPointMessageJsonResult"),
                         &pstResultNode);
    if (uiRet != 0) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR,
                     "GetEndPointMessageJson: get node [GetEndPointMessageJsonResult] failed errno=[0x%x]!", uiRet);
        return uiRet;
    }
    uiRet = XML_D_GET_NODEVALUE_BYURI(pstResultNode, "GetEndPointMessageJsonResult.ErrCode", &pstNode, &pcValue);
    if (pcValue == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "GetEndPointMessageJson: get node [ErrCode] failed errno=[0x%x]!", uiRet);
        return uiRet;
    }
    /* atoi on purpose: the service's decimal code, and text that is not a number reads as 0
     * (success), as the login service expects. */
    pstResult->uiErrCode = static_cast<uint32_t>(std::atoi(pcValue)); // NOLINT(cert-err34-c)
    if (pstResult->uiErrCode != 0) {
        return 0; /* the server's verdict is in uiErrCode */
    }
    (void)XML_D_GET_NODEVALUE_BYURI(pstResponse, "GetEndPointMessageJsonResponse.result", &pstNode, &pcValue);
    if (pcValue == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "no result");
        return 0;
    }
    XmlGetStringValueByKeyFromJson("Uri", pcValue, pstResult->acUri, sizeof(pstResult->acUri));
    XmlGetStringValueByKeyFromJson("RegPassword", pcValue, pstResult->acRegPassword,
                                   sizeof(pstResult->acRegPassword));
    XmlGetStringValueByKeyFromJson("RegIpAddress", pcValue, pstResult->acRegIpAddress,
                                   sizeof(pstResult->acRegIpAddress));
    /* The text holds the registration password: it must not outlive the call in the
     * document's memory. */
    const uint32_t uiJsonLen = KOSA_StrLen(pcValue);
    (void)qev_memset_s(pcValue, uiJsonLen, 0, uiJsonLen);
    return 0;
}

/* ---- JSON services: shared steps --------------------------------------------------- */

namespace {

/* The members of one JSON object, the source of a key table's values. A member of another
 * type than its row makes JsonCpp throw; rows read before it stay written. */
struct JsonObjectSource {
    const Json::Value &stObject;

    AtriumFound Find(const AtriumKey &stKey, AtriumValue &stValue, const AtriumCallSite &) const
    {
        const Json::Value &stMember = stObject[stKey.pcName];
        if (stMember.isNull()) {
            return AtriumFound::Missing;
        }
        if (stKey.eStore == AtriumStore::Text) {
            stValue.pcText = stMember.asCString();
        } else {
            stValue.uiWord = (stKey.eStore == AtriumStore::JsonNumber) ? stMember.asUInt() : (stMember.asBool() ? 1u : 0u);
        }
        return AtriumFound::Present;
    }
    void Store(const AtriumKey &stKey, char *pcField, const AtriumValue &stValue) const
    {
        AtriumStoreValue(stKey, pcField, stValue);
    }
};

/* Copies the members of stObject that are present and not null into the record, in table
 * order (nothing is traced: these answers have no miss messages). */
template <size_t N>
void ReadJsonMembers(const Json::Value &stObject, const AtriumKey (&astMembers)[N], void *pvRecord)
{
    (void)AtriumReadKeys(JsonObjectSource{stObject}, astMembers, pvRecord, ATRIUM_HERE);
}

/* Writes every row of the table into stObject: text fields as strings, the others as
 * unsigned numbers. */
template <size_t N>
void WriteJsonMembers(Json::Value &stObject, const AtriumKey (&astMembers)[N], const void *pvRecord)
{
    for (const AtriumKey &stMember : astMembers) {
        const char *pcField = static_cast<const char *>(pvRecord) + stMember.uiOffset;
        if (stMember.eStore == AtriumStore::Text) {
            stObject[stMember.pcName] = Json::Value(pcField);
            continue;
        }
        uint32_t uiWord = 0;
        std::memcpy(&uiWord, pcField, sizeof(uiWord));
        stObject[stMember.pcName] = Json::Value(static_cast<Json::UInt>(uiWord));
    }
}

/* Reads a whole JSON text (comments collected). JsonCpp builds that mark Json::Reader
 * deprecated would warn here; the services' answers are read with it on purpose. */
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
bool ParseJsonText(const char *pcText, Json::Value &stRoot)
{
    Json::Reader stReader;
    return stReader.parse(pcText, pcText + KOSA_StrLen(pcText), stRoot, true);
}
#pragma GCC diagnostic pop

/*
 * Renders stRoot and hands it to the caller: a zero-filled block of length + 1 bytes (the
 * zero fill is the terminator), of which the text's length bytes are copied, and the
 * length without terminator. The block is allocated only once the text exists, so a
 * JsonCpp exception can never leave it behind. Returns 0, or uiNoMemoryCode with
 * "malloc failed!" traced on behalf of the builder.
 */
uint32_t HandOverJsonBody(const Json::Value &stRoot, char **ppcBody, uint32_t *puiLen, uint32_t uiNoMemoryCode,
                          const AtriumCallSite &stSite)
{
    const std::string strBody = stRoot.toStyledString();
    const uint32_t uiLen = static_cast<uint32_t>(strBody.size());
    *ppcBody = static_cast<char *>(ATRIUM_MALLOC_S(uiLen + 1));
    if (*ppcBody == nullptr) {
        ATRIUM_TRACE_AT(stSite, LOGIN_TRACE_ERROR, "malloc failed!");
        return uiNoMemoryCode;
    }
    (void)qev_memcpy_s(*ppcBody, uiLen, strBody.data(), uiLen);
    *puiLen = uiLen;
    return 0;
}

} // namespace

/* ---- unified-call configuration ---------------------------------------------------- */

namespace {

using UniCallCfg = tagLOGIN_S_UNICALL_CFG;
using UniCallBean = tagLOGIN_S_UNICALL_BEAN;

/* Members of the answer's "data" object (the builder writes only some of them). */
constexpr AtriumKey g_astUniCallDataMembers[] = {
    JsonMember("operate", ATRIUM_FIELD(UniCallCfg, uiOperate), AtriumStore::JsonNumber),
    JsonMember("srvtype", ATRIUM_FIELD(UniCallCfg, uiSrvType), AtriumStore::JsonNumber),
    JsonMember("dspnum", ATRIUM_FIELD(UniCallCfg, acDspNum)),
    JsonMember("errorCode", ATRIUM_FIELD(UniCallCfg, acErrorCode)),
    JsonMember("showCallerNum", ATRIUM_FIELD(UniCallCfg, uiShowCallerNum), AtriumStore::JsonNumber),
};

/* Plain members of one rule, both directions. */
constexpr AtriumKey g_astUniCallBeanMembers[] = {
    JsonMember("ruleid", ATRIUM_FIELD(UniCallBean, acRuleId)),
    JsonMember("calleeIndex", ATRIUM_FIELD(UniCallBean, uiCalleeIndex), AtriumStore::JsonNumber),
    JsonMember("rtype", ATRIUM_FIELD(UniCallBean, uiRType), AtriumStore::JsonNumber),
    JsonMember("operateType", ATRIUM_FIELD(UniCallBean, uiOperateType), AtriumStore::JsonNumber),
};

/* Members of a rule's "timeInfo" object, both directions. */
constexpr AtriumKey g_astUniCallTimeMembers[] = {
    JsonMember("allTime", ATRIUM_FIELD(UniCallBean, uiAllTime), AtriumStore::JsonNumber),
    JsonMember("cycleType", ATRIUM_FIELD(UniCallBean, uiCycleType), AtriumStore::JsonNumber),
    JsonMember("startDate", ATRIUM_FIELD(UniCallBean, acStartDate)),
    JsonMember("endDate", ATRIUM_FIELD(UniCallBean, acEndDate)),
    JsonMember("dayInWeek", ATRIUM_FIELD(UniCallBean, acDayInWeek)),
    JsonMember("startTime", ATRIUM_FIELD(UniCallBean, acStartTime)),
    JsonMember("endTime", ATRIUM_FIELD(UniCallBean, acEndTime)),
};

/* Unreadable text also marks the record: return code 1 beside the parser's 46. */
const uint32_t UNICALL_RETURN_CODE_NOT_JSON = 1;

/* One rule of the answer. A rule with a callee list gets the answer's rule count in
 * uiCalleeNum, not its own callee count: the login service reads it so. */
void ReadUniCallBean(const Json::Value &stBean, uint32_t uiRuleCount, UniCallBean *pstBean)
{
    ReadJsonMembers(stBean, g_astUniCallBeanMembers, pstBean);
    const Json::Value &stTimeInfo = stBean["timeInfo"];
    if (!stTimeInfo.isNull()) {
        ReadJsonMembers(stTimeInfo, g_astUniCallTimeMembers, pstBean);
    }
    const Json::Value &stCallees = stBean["calleeList"];
    if (stCallees.isNull()) {
        return;
    }
    const uint32_t uiCallees = std::min<uint32_t>(stCallees.size(), LOGIN_UNICALL_CALLEE_MAX);
    for (uint32_t j = 0; j < uiCallees; ++j) {
        (void)qev_strcpy_s(pstBean->aacCalleeList[j], sizeof(pstBean->aacCalleeList[j]), stCallees[j].asCString());
    }
    pstBean->uiCalleeNum = uiRuleCount;
}

/* One rule of the set body. uiCalleeNum is taken as stored: the caller keeps it within
 * the list's ten entries. */
Json::Value BuildUniCallBean(const UniCallBean &stBean)
{
    Json::Value stRule(Json::objectValue);
    WriteJsonMembers(stRule, g_astUniCallBeanMembers, &stBean);
    Json::Value stTimeInfo(Json::objectValue);
    WriteJsonMembers(stTimeInfo, g_astUniCallTimeMembers, &stBean);
    stRule["timeInfo"] = stTimeInfo;
    Json::Value stCallees(Json::arrayValue);
    for (uint32_t j = 0; j < stBean.uiCalleeNum; ++j) {
        stCallees.append(Json::Value(stBean.aacCalleeList[j]));
    }
    stRule["calleeList"] = stCallees;
    return stRule;
}

} // namespace

int32_t JsonParseUniCallCfgResult(const char *pcJsonBody, tagLOGIN_S_UNICALL_CFG *pstCfg)
{
    if (pcJsonBody == nullptr || pstCfg == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "pcJsonBody pointer empty!");
        return 2;
    }
    /* Servers may put text before the object; it is skipped. */
    const char *pcObject = KOSA_StrStr(pcJsonBody, "{");
    if (pcObject == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "pszJsonBody empty!");
        return 2;
    }
    Json::Value stParsed;
    if (!ParseJsonText(pcObject, stParsed)) {
        pstCfg->uiReturnCode = UNICALL_RETURN_CODE_NOT_JSON;
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "json parse failed");
        return static_cast<int32_t>(ATRIUM_NOT_JSON);
    }
    const Json::Value &stRoot = stParsed;
    pstCfg->uiReturnCode = stRoot["returnCode"].asUInt();
    if (pstCfg->uiReturnCode != 0) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "return_code: %u", pstCfg->uiReturnCode);
        return 0;
    }
    const Json::Value &stData = stRoot["data"];
    ReadJsonMembers(stData, g_astUniCallDataMembers, pstCfg);
    const Json::Value &stBeans = stData["unicallBeans"];
    if (stBeans.isNull()) {
        return 0;
    }
    const uint32_t uiRuleCount = std::min<uint32_t>(stBeans.size(), LOGIN_UNICALL_BEAN_MAX);
    pstCfg->uiUniCallBeanNum = uiRuleCount;
    for (uint32_t i = 0; i < uiRuleCount; ++i) {
        ReadUniCallBean(stBeans[i], uiRuleCount, &pstCfg->astUniCallBean[i]);
    }
    return 0;
}

uint32_t JsonBuildSetUniCallCfgBody(tagLOGIN_S_UNICALL_CFG *pstCfg, uint32_t uiIndex, char **ppcBody,
                                    uint32_t *puiLen)
{
    if (ppcBody == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "param is null!");
        return 1;
    }
    Json::Value stRoot(Json::objectValue);
    stRoot["operate"] = Json::Value(static_cast<Json::UInt>(pstCfg->uiOperate));
    if (pstCfg->uiSrvType != 0 && pstCfg->uiSrvType != 1) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "srv_type type is error");
        return 1;
    }
    stRoot["srvtype"] = Json::Value(static_cast<Json::UInt>(pstCfg->uiSrvType));
    stRoot["dspnum"] = Json::Value(pstCfg->acDspNum);
    if (uiIndex >= pstCfg->uiUniCallBeanNum) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "out buffer array!");
        return 1;
    }
    stRoot["unicallBeans"].append(BuildUniCallBean(pstCfg->astUniCallBean[uiIndex]));
    return HandOverJsonBody(stRoot, ppcBody, puiLen, 1, ATRIUM_HERE);
}

/* ---- linked phones ------------------------------------------------------------------ */

namespace {

using LinkedPhone = tagLOGIN_S_LINKED_PHONE;

/* Members of one identity in the answer ("active" is a boolean there). */
constexpr AtriumKey g_astLinkedPhoneMembers[] = {
    JsonMember("impu", ATRIUM_FIELD(LinkedPhone, acImpu)),
    JsonMember("active", ATRIUM_FIELD(LinkedPhone, uiActive), AtriumStore::JsonBoolean),
    JsonMember("linkedPhone", ATRIUM_FIELD(LinkedPhone, acLinkedPhone)),
};

/* The service refuses to list 30 identities or more: 29 is the most an answer may hold. */
const uint32_t LINKED_PHONE_REFUSED_COUNT = LOGIN_LINKED_PHONE_MAX + 1;

} // namespace

uint32_t JsonParseLinkedPhoneResult(const char *pcBody, tagLOGIN_S_LINKED_PHONE_RESULT *pstResult)
{
    if (pcBody == nullptr || pstResult == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "pcBody pointer empty!");
        return 2;
    }
    Json::Value stParsed;
    if (!ParseJsonText(pcBody, stParsed)) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "json parse failed");
        return ATRIUM_NOT_JSON;
    }
    const Json::Value &stRoot = stParsed;
    const Json::Value &stPhones = stRoot["data"];
    pstResult->uiLinkedPhoneNum = stPhones.size();
    if (pstResult->uiLinkedPhoneNum >= LINKED_PHONE_REFUSED_COUNT) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "linkedPhoneBeans_count error!");
        return ATRIUM_TOO_MANY_LINKED_PHONES;
    }
    for (uint32_t i = 0; i < pstResult->uiLinkedPhoneNum; ++i) {
        ReadJsonMembers(stPhones[i], g_astLinkedPhoneMembers, &pstResult->astLinkedPhone[i]);
    }
    return 0;
}

uint32_t JsonBuildSetLinkedPhoneInfoBody(tagLOGIN_S_LINKED_PHONE *pstLinkedPhone, char **ppcBody, uint32_t *puiLen)
{
    if (ppcBody == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "ppBody is NULL!");
        return 1;
    }
    Json::Value stRoot(Json::objectValue);
    stRoot["impu"] = Json::Value(pstLinkedPhone->acImpu);
    /* The request carries "active" as a signed number, although the answer has a boolean. */
    if (pstLinkedPhone->uiActive != 0) {
        if (pstLinkedPhone->acLinkedPhone[0] == '\0') {
            ATRIUM_TRACE(LOGIN_TRACE_ERROR, "param linkedPhone is error");
            return 1;
        }
        stRoot["active"] = Json::Value(static_cast<Json::Int>(1));
        stRoot["linkedPhone"] = Json::Value(pstLinkedPhone->acLinkedPhone);
    } else {
        stRoot["active"] = Json::Value(static_cast<Json::Int>(0));
    }
    return HandOverJsonBody(stRoot, ppcBody, puiLen, 1, ATRIUM_HERE);
}

uint32_t JsonBuildGetLinkedPhoneInfoBody(tagLOGIN_S_LINKED_PHONE_INFO *pstInfo, char **ppcBody, uint32_t *puiLen)
{
    if (ppcBody == nullptr) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "ppBody is NULL!");
        return 1;
    }
    if (pstInfo == nullptr || pstInfo->uiImpuNum == 0) {
        ATRIUM_TRACE(LOGIN_TRACE_ERROR, "pstLinkedPhoneInfo is null or impuNum is 0 !");
        return 2;
    }
    /* uiImpuNum is taken as given: the caller keeps it within its array. */
    Json::Value stImpus(Json::arrayValue);
    for (uint32_t i = 0; i < pstInfo->uiImpuNum; ++i) {
        stImpus.append(Json::Value(pstInfo->astLinkedPhone[i].acImpu));
    }
    Json::Value stRoot(Json::objectValue);
    stRoot["impuList"] = stImpus;
    return HandOverJsonBody(stRoot, ppcBody, puiLen, ATRIUM_NO_MEMORY_FOR_BODY, ATRIUM_HERE);
}

/* ---- key tables, for those who describe them ----------------------------------------- */

std::vector<AtriumKeyTable> AtriumServiceKeyTables()
{
    return {
        AtriumTable("JsonParseUniCallCfgResult", "tagLOGIN_S_UNICALL_CFG", g_astUniCallDataMembers),
        AtriumTable("JsonParseUniCallCfgResult", "tagLOGIN_S_UNICALL_BEAN", g_astUniCallBeanMembers),
        AtriumTable("JsonParseUniCallCfgResult", "tagLOGIN_S_UNICALL_BEAN", g_astUniCallTimeMembers),
        AtriumTable("JsonParseLinkedPhoneResult", "tagLOGIN_S_LINKED_PHONE", g_astLinkedPhoneMembers),
    };
}
