/*
 * record_desc.cpp - the field tables of every record, in declaration order.
 *
 * Each table is a list of one-line rows made by small constexpr builders that check the
 * member's C type against the row's kind at compile time (a text row must name a char
 * array, a counter must be a uint32_t, and so on). The tests then check that the rows of
 * each record cover every byte of it, so a field added to a header and not here is caught.
 */
#include "record_desc.h"

#include <cstring>

namespace atrium_records {

namespace {

template <typename M>
constexpr bool kIsText = std::rank_v<M> == 1 && std::is_same_v<std::remove_extent_t<M>, char>;
template <typename M>
constexpr bool kIsTextArray = std::rank_v<M> == 2 && std::is_same_v<std::remove_all_extents_t<M>, char>;

/* A counter names a sibling uint32_t field. */
struct Counter {
    const char *pcName;
    size_t uiOffset;
};

constexpr Counter kNoCounter{nullptr, 0};

template <typename M>
constexpr FieldDesc Text(const char *pcName, size_t uiOffset)
{
    static_assert(kIsText<M>, "a text row names a char array");
    return {pcName, uiOffset, FieldKind::Text, sizeof(M), 0, Fill::All, nullptr, 0, nullptr, Owner::None};
}

template <typename M>
constexpr FieldDesc Texts(const char *pcName, size_t uiOffset, Fill eFill, Counter stCounter)
{
    static_assert(kIsTextArray<M>, "a text-array row names an array of char arrays");
    return {pcName,
            uiOffset,
            FieldKind::Text,
            sizeof(std::remove_extent_t<M>),
            static_cast<uint32_t>(std::extent_v<M>),
            eFill,
            stCounter.pcName,
            stCounter.uiOffset,
            nullptr,
            Owner::None};
}

template <typename M>
constexpr FieldDesc U32(const char *pcName, size_t uiOffset)
{
    static_assert(std::is_same_v<M, uint32_t>, "a u32 row names a uint32_t");
    return {pcName, uiOffset, FieldKind::U32, sizeof(M), 0, Fill::All, nullptr, 0, nullptr, Owner::None};
}

template <typename M>
constexpr FieldDesc I32(const char *pcName, size_t uiOffset)
{
    static_assert(std::is_same_v<M, int32_t>, "an i32 row names an int32_t");
    return {pcName, uiOffset, FieldKind::I32, sizeof(M), 0, Fill::All, nullptr, 0, nullptr, Owner::None};
}

template <typename M>
constexpr FieldDesc U32s(const char *pcName, size_t uiOffset, Fill eFill, Counter stCounter)
{
    static_assert(std::rank_v<M> == 1 && std::is_same_v<std::remove_extent_t<M>, uint32_t>,
                  "a u32-array row names an array of uint32_t");
    return {pcName, uiOffset,         FieldKind::U32,     sizeof(uint32_t), static_cast<uint32_t>(std::extent_v<M>),
            eFill,  stCounter.pcName, stCounter.uiOffset, nullptr,          Owner::None};
}

template <typename M>
constexpr FieldDesc Nested(const char *pcName, size_t uiOffset, const RecordDesc &stRecord)
{
    static_assert(std::is_class_v<M>, "a record row names a struct");
    return {pcName, uiOffset, FieldKind::Record, sizeof(M), 0, Fill::All, nullptr, 0, &stRecord, Owner::None};
}

template <typename M>
constexpr FieldDesc Records(const char *pcName, size_t uiOffset, const RecordDesc &stRecord, Fill eFill,
                            Counter stCounter)
{
    static_assert(std::rank_v<M> == 1 && std::is_class_v<std::remove_extent_t<M>>,
                  "a record-array row names an array of structs");
    return {pcName,
            uiOffset,
            FieldKind::Record,
            sizeof(std::remove_extent_t<M>),
            static_cast<uint32_t>(std::extent_v<M>),
            eFill,
            stCounter.pcName,
            stCounter.uiOffset,
            &stRecord,
            Owner::None};
}

/* A pointer to one record, or to Counter-many records when a counter is given. */
template <typename M>
constexpr FieldDesc Pointer(const char *pcName, size_t uiOffset, const RecordDesc &stRecord, Counter stCounter,
                            Owner eOwner)
{
    static_assert(std::is_pointer_v<M> && std::is_class_v<std::remove_pointer_t<M>>,
                  "a pointer row names a pointer to a struct");
    return {pcName,
            uiOffset,
            FieldKind::Pointer,
            sizeof(std::remove_pointer_t<M>),
            0,
            stCounter.pcName != nullptr ? Fill::Counted : Fill::All,
            stCounter.pcName,
            stCounter.uiOffset,
            &stRecord,
            eOwner};
}

template <typename M>
constexpr FieldDesc TextPointer(const char *pcName, size_t uiOffset, Owner eOwner)
{
    static_assert(std::is_same_v<M, char *>, "a text-pointer row names a char pointer");
    return {pcName, uiOffset, FieldKind::TextPointer, sizeof(char), 0, Fill::All, nullptr, 0, nullptr, eOwner};
}

template <typename M>
constexpr Counter CounterOf(const char *pcName, size_t uiOffset)
{
    static_assert(std::is_same_v<M, uint32_t>, "a counter is a uint32_t");
    return {pcName, uiOffset};
}

/* The same row, for a field that holds a secret (a password, a token, a key). */
constexpr FieldDesc Secret(FieldDesc stField)
{
    stField.bSecret = true;
    return stField;
}

/* Row macros: R is the record type of the table being written. */
#define ROW_TEXT(f) Text<decltype(R::f)>(#f, offsetof(R, f))
#define ROW_SECRET_TEXT(f) Secret(ROW_TEXT(f))
#define ROW_TEXTS(f, fill, counter) Texts<decltype(R::f)>(#f, offsetof(R, f), fill, counter)
#define ROW_U32(f) U32<decltype(R::f)>(#f, offsetof(R, f))
#define ROW_I32(f) I32<decltype(R::f)>(#f, offsetof(R, f))
#define ROW_U32S(f, fill, counter) U32s<decltype(R::f)>(#f, offsetof(R, f), fill, counter)
#define ROW_RECORD(f, desc) Nested<decltype(R::f)>(#f, offsetof(R, f), desc)
#define ROW_RECORDS(f, desc, fill, counter) Records<decltype(R::f)>(#f, offsetof(R, f), desc, fill, counter)
#define ROW_POINTER(f, desc, counter, owner) Pointer<decltype(R::f)>(#f, offsetof(R, f), desc, counter, owner)
#define ROW_TEXT_POINTER(f, owner) TextPointer<decltype(R::f)>(#f, offsetof(R, f), owner)
#define COUNTED_BY(c) CounterOf<decltype(R::c)>(#c, offsetof(R, c))

template <typename T, size_t N>
constexpr RecordDesc Describe(const char *pcName, const FieldDesc (&astFields)[N])
{
    return {pcName, sizeof(T), astFields, N};
}

} // namespace

/* ---- sites and access servers ------------------------------------------------------ */

namespace stg_group {
using R = tagLOGIN_S_STG_GROUP;
constexpr FieldDesc kFields[] = {
    ROW_TEXT(acStgUri),    ROW_TEXT(acAuthAccount),    ROW_SECRET_TEXT(acAuthPwd),
    ROW_TEXT(acSipStgUri), ROW_TEXT(acEserverStgAddr), ROW_TEXT(acEserverStg1Addr),
    ROW_TEXT(acMaaStgUri), ROW_TEXT(acMaaStg1Uri),     ROW_TEXTS(aacMsStgUri, Fill::All, kNoCounter),
};
} // namespace stg_group
const RecordDesc g_stStgGroupDesc = Describe<stg_group::R>("tagLOGIN_S_STG_GROUP", stg_group::kFields);

namespace access_server {
using R = tagLOGIN_S_ACCESS_SERVER;
constexpr FieldDesc kFields[] = {
    ROW_TEXT(acName),
    ROW_TEXT(acSipUri),
    ROW_TEXT(acSvnUri),
    ROW_TEXT(acHttpsProxyUri),
    ROW_TEXT(acEserverAddr),
    ROW_TEXT(acEserver1Addr),
    ROW_TEXT(acConfUri),
    ROW_TEXT(acConfType),
    ROW_TEXT(acMaaUri),
    ROW_TEXT(acMaa1Uri),
    ROW_TEXT(acAndroidPushUri),
    ROW_TEXT(acMsParamUri),
    ROW_TEXT(acMsParamPathUri),
    ROW_TEXT(acEabUri),
    ROW_TEXT(acProPhotoUri),
    ROW_TEXT(acTmsTr069Uri),
    ROW_TEXT(acEuaUri),
    ROW_TEXTS(aacMsUri, Fill::All, kNoCounter),
    ROW_RECORD(stStgGroup, g_stStgGroupDesc),
    ROW_U32(uiPriority),
    ROW_U32(uiSipTlsActive),
    ROW_U32(uiSrtpActive),
    ROW_U32(uiIsMainSite),
    ROW_TEXT(acSipTlsUri),
    ROW_TEXT(acMaaProxyAddr),
    ROW_TEXT(acMaaDrProxyAddr),
};
} // namespace access_server
const RecordDesc g_stAccessServerDesc = Describe<access_server::R>("tagLOGIN_S_ACCESS_SERVER", access_server::kFields);

namespace site {
using R = tagLOGIN_S_SITE;
constexpr FieldDesc kFields[] = {
    ROW_TEXT(acSiteName),
    ROW_TEXT(acSbcDomain),
    ROW_TEXT(acDefaultAccount),
    ROW_SECRET_TEXT(acDefaultPwd),
    ROW_U32(uiPriority),
    ROW_U32(uiNumOfAccessServer),
    /* the groups belong to the site: freeSiteMem of the site releases them */
    ROW_POINTER(pstAccessServer, g_stAccessServerDesc, COUNTED_BY(uiNumOfAccessServer), Owner::None),
};
} // namespace site
const RecordDesc g_stSiteDesc = Describe<site::R>("tagLOGIN_S_SITE", site::kFields);

namespace server_addr_info {
using R = tagLOGIN_S_SERVER_ADDR_INFO;
constexpr FieldDesc kFields[] = {ROW_TEXT(acHost), ROW_U32(uiPort), ROW_U32(uiTransport)};
} // namespace server_addr_info
const RecordDesc g_stServerAddrInfoDesc =
    Describe<server_addr_info::R>("tagLOGIN_S_SERVER_ADDR_INFO", server_addr_info::kFields);

namespace server_list {
using R = tagLOGIN_S_SERVER_LIST;
constexpr FieldDesc kFields[] = {
    ROW_U32(uiNum),
    ROW_POINTER(pstServer, g_stServerAddrInfoDesc, COUNTED_BY(uiNum), Owner::ModuleBlock),
};
} // namespace server_list
const RecordDesc g_stServerListDesc = Describe<server_list::R>("tagLOGIN_S_SERVER_LIST", server_list::kFields);

/* ---- portal user ------------------------------------------------------------------- */

namespace extra_parm {
using R = tagLOGIN_S_EXTRA_PARM;
constexpr FieldDesc kFields[] = {ROW_TEXT(acName), ROW_TEXT(acValue)};
} // namespace extra_parm
const RecordDesc g_stExtraParmDesc = Describe<extra_parm::R>("tagLOGIN_S_EXTRA_PARM", extra_parm::kFields);

namespace ums_info {
using R = tagLOGIN_S_UMS_INFO;
constexpr FieldDesc kFields[] = {ROW_TEXT(acDn), ROW_TEXT(acUmsAccount), ROW_SECRET_TEXT(acPwd)};
} // namespace ums_info
const RecordDesc g_stUmsInfoDesc = Describe<ums_info::R>("tagLOGIN_S_UMS_INFO", ums_info::kFields);

namespace atrium_user_info {
using R = tagLOGIN_S_ATRIUM_USER_INFO;
constexpr FieldDesc kFields[] = {
    ROW_SECRET_TEXT(acAccessToken),
    ROW_TEXT(acSipAccount),
    ROW_TEXT(acSipImpi),
    ROW_TEXT(acShortNumber),
    ROW_U32(bPwdTypeZero),
    ROW_SECRET_TEXT(acSipPassword),
    ROW_TEXT(acSipDomain),
    ROW_I32(iFuncType),
    ROW_U32(uiExpireIn),
    ROW_U32(bSiteInfoValid),
    ROW_U32(uiDeployMode),
    ROW_POINTER(pstSiteInfo, g_stSiteDesc, kNoCounter, Owner::SiteRecord),
    ROW_U32(bFirstLogin),
    ROW_U32(uiPwdExpireTime),
    ROW_TEXT(acRealUserAccount),
    ROW_TEXT(acEabUri),
    ROW_TEXT(acGroupServerUri),
    ROW_TEXT(acTmsTr069Uri),
    ROW_RECORD(stSipServerList, g_stServerListDesc),
    ROW_TEXT(acSname),
    /* the first entry with an empty acDn ends the list */
    ROW_RECORDS(astUmsInfo, g_stUmsInfoDesc, Fill::UntilEmpty, kNoCounter),
    ROW_TEXT(acDisplayName),
    ROW_U32(bHasUserType),
    ROW_TEXT(acFileDockServiceType),
    ROW_TEXT(acFileDockAppId),
    ROW_TEXT(acFileDockServerAddr),
    ROW_TEXT(acTerminalScene),
    ROW_TEXT(acPrivacyVersion),
    ROW_U32(uiExtraParmNum),
    ROW_POINTER(pstExtraParm, g_stExtraParmDesc, COUNTED_BY(uiExtraParmNum), Owner::ModuleBlock),
    ROW_U32(uiDataConf),
};
} // namespace atrium_user_info
const RecordDesc g_stAtriumUserInfoDesc =
    Describe<atrium_user_info::R>("tagLOGIN_S_ATRIUM_USER_INFO", atrium_user_info::kFields);

/* ---- temporary (guest) user -------------------------------------------------------- */

namespace temp_user_info {
using R = tagXML_S_TANDEM_TEMPUSER_INFO;
constexpr FieldDesc kFields[] = {
    ROW_TEXT(acImpu),        ROW_TEXT(acImpi),
    ROW_U32(bPwdTypeZero),   ROW_SECRET_TEXT(acPasswd),
    ROW_TEXT(acDomain),      ROW_TEXT(acAccessCode),
    ROW_TEXT(acConfId),      ROW_SECRET_TEXT(acConfPwd),
    ROW_TEXT(acAtriumUri),   ROW_POINTER(pstSite, g_stSiteDesc, kNoCounter, Owner::SiteRecord),
    ROW_SECRET_TEXT(acChairmanPwd), ROW_TEXT(acMediaType),
    ROW_U32(uiUserRole),     ROW_TEXT(acAccessAddress),
};
} // namespace temp_user_info
const RecordDesc g_stTempUserInfoDesc =
    Describe<temp_user_info::R>("tagXML_S_TANDEM_TEMPUSER_INFO", temp_user_info::kFields);

/* ---- conference-server login ------------------------------------------------------- */

namespace tandem_result {
using R = tagXML_S_TANDEM_RESULT;
constexpr FieldDesc kFields[] = {ROW_U32(uiResultCode), ROW_TEXT(acResultDesc)};
} // namespace tandem_result
const RecordDesc g_stTandemResultDesc = Describe<tandem_result::R>("tagXML_S_TANDEM_RESULT", tandem_result::kFields);

namespace tandem_profile {
using R = tagXML_S_TANDEM_PROFILE;
constexpr FieldDesc kFields[] = {ROW_SECRET_TEXT(acToken), ROW_TEXT(acSupportMediaTypes)};
} // namespace tandem_profile
const RecordDesc g_stTandemProfileDesc =
    Describe<tandem_profile::R>("tagXML_S_TANDEM_PROFILE", tandem_profile::kFields);

namespace tandem_eua {
using R = tagXML_S_TANDEM_EUA;
constexpr FieldDesc kFields[] = {
    ROW_U32(uiAddressNum), ROW_TEXTS(acAddress, Fill::Counted, COUNTED_BY(uiAddressNum)),
    ROW_TEXT(acUserName),  ROW_SECRET_TEXT(acPassword),
    ROW_TEXT(acBaseDN),
};
} // namespace tandem_eua
const RecordDesc g_stTandemEuaDesc = Describe<tandem_eua::R>("tagXML_S_TANDEM_EUA", tandem_eua::kFields);

namespace tandem_sip {
using R = tagXML_S_TANDEM_SIP;
constexpr FieldDesc kFields[] = {
    ROW_TEXT(acDomain), ROW_TEXT(acProxy), ROW_TEXT(acUserName), ROW_SECRET_TEXT(acPassword), ROW_TEXT(acAuthName),
};
} // namespace tandem_sip
const RecordDesc g_stTandemSipDesc = Describe<tandem_sip::R>("tagXML_S_TANDEM_SIP", tandem_sip::kFields);

namespace tandem_stg {
using R = tagXML_S_TANDEM_STG;
constexpr FieldDesc kFields[] = {
    ROW_U32(uiStgNum),    ROW_TEXTS(acStgAddress, Fill::Counted, COUNTED_BY(uiStgNum)),
    ROW_U32(uiSbcNum),    ROW_TEXTS(acSbcInnerAddress, Fill::Counted, COUNTED_BY(uiSbcNum)),
    ROW_TEXT(acUserName), ROW_SECRET_TEXT(acPassword),
};
} // namespace tandem_stg
const RecordDesc g_stTandemStgDesc = Describe<tandem_stg::R>("tagXML_S_TANDEM_STG", tandem_stg::kFields);

namespace tandem_tms {
using R = tagXML_S_TANDEM_TMS;
constexpr FieldDesc kFields[] = {
    ROW_U32(uiTmsNum),
    ROW_TEXTS(acAddress, Fill::Counted, COUNTED_BY(uiTmsNum)),
    ROW_TEXT(acUserName),
    ROW_SECRET_TEXT(acPassword),
};
} // namespace tandem_tms
const RecordDesc g_stTandemTmsDesc = Describe<tandem_tms::R>("tagXML_S_TANDEM_TMS", tandem_tms::kFields);

namespace tandem_atrium {
using R = tagXML_S_TANDEM_ATRIUM;
constexpr FieldDesc kFields[] = {
    ROW_U32(uiAtriumNum),
    ROW_TEXTS(acAddress, Fill::Counted, COUNTED_BY(uiAtriumNum)),
};
} // namespace tandem_atrium
const RecordDesc g_stTandemAtriumDesc = Describe<tandem_atrium::R>("tagXML_S_TANDEM_ATRIUM", tandem_atrium::kFields);

namespace tandem_login_result {
using R = tagXML_S_TANDEM_LOGIN_RESULT;
constexpr FieldDesc kFields[] = {
    ROW_RECORD(stResult, g_stTandemResultDesc), ROW_RECORD(stProfile, g_stTandemProfileDesc),
    ROW_RECORD(stEua, g_stTandemEuaDesc),       ROW_RECORD(stSip, g_stTandemSipDesc),
    ROW_RECORD(stStg, g_stTandemStgDesc),       ROW_RECORD(stTms, g_stTandemTmsDesc),
    ROW_RECORD(stAtrium, g_stTandemAtriumDesc),
};
} // namespace tandem_login_result
const RecordDesc g_stTandemLoginResultDesc =
    Describe<tandem_login_result::R>("tagXML_S_TANDEM_LOGIN_RESULT", tandem_login_result::kFields);

/* ---- records of single answers ----------------------------------------------------- */

namespace atrium_search_result {
using R = tagLOGIN_S_ATRIUM_SEARCH_RESULT;
constexpr FieldDesc kFields[] = {
    ROW_U32(uiSiteNum),
    ROW_U32S(auiPriority, Fill::Counted, COUNTED_BY(uiSiteNum)),
    ROW_TEXTS(aacSiteUri, Fill::Counted, COUNTED_BY(uiSiteNum)),
};
} // namespace atrium_search_result
const RecordDesc g_stAtriumSearchResultDesc =
    Describe<atrium_search_result::R>("tagLOGIN_S_ATRIUM_SEARCH_RESULT", atrium_search_result::kFields);

namespace atrium_token_info {
using R = tagLOGIN_S_ATRIUM_TOKEN_INFO;
constexpr FieldDesc kFields[] = {
    ROW_SECRET_TEXT(acAccessToken),
    ROW_I32(iExpireIn),
    ROW_TEXT(acAccount),
    ROW_SECRET_TEXT(acPassword),
};
} // namespace atrium_token_info
const RecordDesc g_stAtriumTokenInfoDesc =
    Describe<atrium_token_info::R>("tagLOGIN_S_ATRIUM_TOKEN_INFO", atrium_token_info::kFields);

namespace atrium_right_config {
using R = tagLOGIN_S_ATRIUM_RIGHT_CONFIG;
constexpr FieldDesc kFields[] = {
    ROW_U32(uiRetCode),
    ROW_SECRET_TEXT(acDevKey),
    ROW_TEXT(acDevType),
    ROW_TEXT(acTimestamp),
};
} // namespace atrium_right_config
const RecordDesc g_stAtriumRightConfigDesc =
    Describe<atrium_right_config::R>("tagLOGIN_S_ATRIUM_RIGHT_CONFIG", atrium_right_config::kFields);

namespace tandem_version_result {
using R = tagXML_S_TANDEM_VERSION_RESULT;
constexpr FieldDesc kFields[] = {
    ROW_U32(uiResultCode),
    ROW_TEXT(acResultDesc),
    ROW_TEXT(acVersionNumber),
};
} // namespace tandem_version_result
const RecordDesc g_stTandemVersionResultDesc =
    Describe<tandem_version_result::R>("tagXML_S_TANDEM_VERSION_RESULT", tandem_version_result::kFields);

namespace tandem_random_result {
using R = tagXML_S_TANDEM_RANDOM_RESULT;
constexpr FieldDesc kFields[] = {ROW_TEXT(acSiteUrl), ROW_SECRET_TEXT(acRandom)};
} // namespace tandem_random_result
const RecordDesc g_stTandemRandomResultDesc =
    Describe<tandem_random_result::R>("tagXML_S_TANDEM_RANDOM_RESULT", tandem_random_result::kFields);

namespace tandem_search_result {
using R = tagXML_S_TANDEM_SEARCH_RESULT;
constexpr FieldDesc kFields[] = {
    ROW_U32(uiSiteNum),
    ROW_U32S(auiPriority, Fill::Counted, COUNTED_BY(uiSiteNum)),
    ROW_TEXTS(acSsoHostName, Fill::Counted, COUNTED_BY(uiSiteNum)),
};
} // namespace tandem_search_result
const RecordDesc g_stTandemSearchResultDesc =
    Describe<tandem_search_result::R>("tagXML_S_TANDEM_SEARCH_RESULT", tandem_search_result::kFields);

namespace temp_user_account_info {
using R = tagXML_S_TEMPUSER_ACCOUNT_INFO;
constexpr FieldDesc kFields[] = {
    ROW_TEXT(acAccount), ROW_SECRET_TEXT(acPassword), ROW_U32(uiPwdType), ROW_TEXT(acAccessUrl), ROW_TEXT(acSecondAccessUrl),
};
} // namespace temp_user_account_info
const RecordDesc g_stTempUserAccountInfoDesc =
    Describe<temp_user_account_info::R>("tagXML_S_TEMPUSER_ACCOUNT_INFO", temp_user_account_info::kFields);

namespace endpoint_msg_result {
using R = tagLOGIN_S_ENDPOINT_MSG_RESULT;
constexpr FieldDesc kFields[] = {
    ROW_U32(uiErrCode),
    ROW_TEXT(acUri),
    ROW_SECRET_TEXT(acRegPassword),
    ROW_TEXT(acRegIpAddress),
};
} // namespace endpoint_msg_result
const RecordDesc g_stEndpointMsgResultDesc =
    Describe<endpoint_msg_result::R>("tagLOGIN_S_ENDPOINT_MSG_RESULT", endpoint_msg_result::kFields);

namespace unicall_bean {
using R = tagLOGIN_S_UNICALL_BEAN;
constexpr FieldDesc kFields[] = {
    ROW_TEXT(acRuleId),
    ROW_U32(uiAllTime),
    ROW_U32(uiCycleType),
    ROW_TEXT(acStartDate),
    ROW_TEXT(acEndDate),
    ROW_TEXT(acDayInWeek),
    ROW_TEXT(acStartTime),
    ROW_TEXT(acEndTime),
    ROW_U32(uiCalleeIndex),
    /* uiCalleeNum holds the rule count after a parse, not the callee count: the filled
     * callees are the ones before the first empty entry */
    ROW_TEXTS(aacCalleeList, Fill::UntilEmpty, kNoCounter),
    ROW_U32(uiCalleeNum),
    ROW_U32(uiRType),
    ROW_U32(uiOperateType),
};
} // namespace unicall_bean
const RecordDesc g_stUniCallBeanDesc = Describe<unicall_bean::R>("tagLOGIN_S_UNICALL_BEAN", unicall_bean::kFields);

namespace unicall_cfg {
using R = tagLOGIN_S_UNICALL_CFG;
constexpr FieldDesc kFields[] = {
    ROW_U32(uiReturnCode),
    ROW_U32(uiOperate),
    ROW_U32(uiSrvType),
    ROW_TEXT(acDspNum),
    ROW_TEXT(acErrorCode),
    ROW_RECORDS(astUniCallBean, g_stUniCallBeanDesc, Fill::Counted, COUNTED_BY(uiUniCallBeanNum)),
    ROW_U32(uiUniCallBeanNum),
    ROW_U32(uiShowCallerNum),
};
} // namespace unicall_cfg
const RecordDesc g_stUniCallCfgDesc = Describe<unicall_cfg::R>("tagLOGIN_S_UNICALL_CFG", unicall_cfg::kFields);

namespace linked_phone {
using R = tagLOGIN_S_LINKED_PHONE;
constexpr FieldDesc kFields[] = {ROW_TEXT(acImpu), ROW_U32(uiActive), ROW_TEXT(acLinkedPhone)};
} // namespace linked_phone
const RecordDesc g_stLinkedPhoneDesc = Describe<linked_phone::R>("tagLOGIN_S_LINKED_PHONE", linked_phone::kFields);

namespace linked_phone_result {
using R = tagLOGIN_S_LINKED_PHONE_RESULT;
constexpr FieldDesc kFields[] = {
    ROW_U32(uiLinkedPhoneNum),
    ROW_RECORDS(astLinkedPhone, g_stLinkedPhoneDesc, Fill::Counted, COUNTED_BY(uiLinkedPhoneNum)),
};
} // namespace linked_phone_result
const RecordDesc g_stLinkedPhoneResultDesc =
    Describe<linked_phone_result::R>("tagLOGIN_S_LINKED_PHONE_RESULT", linked_phone_result::kFields);

namespace linked_phone_info {
using R = tagLOGIN_S_LINKED_PHONE_INFO;
constexpr FieldDesc kFields[] = {
    ROW_U32(uiImpuNum),
    ROW_RECORDS(astLinkedPhone, g_stLinkedPhoneDesc, Fill::Counted, COUNTED_BY(uiImpuNum)),
};
} // namespace linked_phone_info
const RecordDesc g_stLinkedPhoneInfoDesc =
    Describe<linked_phone_info::R>("tagLOGIN_S_LINKED_PHONE_INFO", linked_phone_info::kFields);

namespace service_tp {
using R = tagTOOL_S_SERVICE_TP;
constexpr FieldDesc kFields[] = {ROW_TEXT_POINTER(pcServiceTp, Owner::ModuleBlock)};
} // namespace service_tp
const RecordDesc g_stServiceTpDesc = Describe<service_tp::R>("tagTOOL_S_SERVICE_TP", service_tp::kFields);

/* ---- lookups ----------------------------------------------------------------------- */

const FieldDesc *RecordDesc::Find(const char *pcField) const
{
    for (const FieldDesc &stField : *this) {
        if (std::strcmp(stField.pcName, pcField) == 0) {
            return &stField;
        }
    }
    return nullptr;
}

size_t FieldBytes(const FieldDesc &stField)
{
    if (stField.eKind == FieldKind::Pointer || stField.eKind == FieldKind::TextPointer) {
        return sizeof(void *);
    }
    return stField.uiElemSize * (stField.uiCount == 0 ? 1 : stField.uiCount);
}

const std::vector<const RecordDesc *> &AllRecords()
{
    static const std::vector<const RecordDesc *> s_vecAll = {
        &g_stStgGroupDesc,
        &g_stAccessServerDesc,
        &g_stSiteDesc,
        &g_stServerAddrInfoDesc,
        &g_stServerListDesc,
        &g_stExtraParmDesc,
        &g_stUmsInfoDesc,
        &g_stAtriumUserInfoDesc,
        &g_stTempUserInfoDesc,
        &g_stTandemResultDesc,
        &g_stTandemProfileDesc,
        &g_stTandemEuaDesc,
        &g_stTandemSipDesc,
        &g_stTandemStgDesc,
        &g_stTandemTmsDesc,
        &g_stTandemAtriumDesc,
        &g_stTandemLoginResultDesc,
        &g_stAtriumSearchResultDesc,
        &g_stAtriumTokenInfoDesc,
        &g_stAtriumRightConfigDesc,
        &g_stTandemVersionResultDesc,
        &g_stTandemRandomResultDesc,
        &g_stTandemSearchResultDesc,
        &g_stTempUserAccountInfoDesc,
        &g_stEndpointMsgResultDesc,
        &g_stUniCallBeanDesc,
        &g_stUniCallCfgDesc,
        &g_stLinkedPhoneDesc,
        &g_stLinkedPhoneResultDesc,
        &g_stLinkedPhoneInfoDesc,
        &g_stServiceTpDesc,
    };
    return s_vecAll;
}

const RecordDesc *FindRecord(const char *pcTypeName)
{
    for (const RecordDesc *pstDesc : AllRecords()) {
        if (std::strcmp(pstDesc->pcName, pcTypeName) == 0) {
            return pstDesc;
        }
    }
    return nullptr;
}

} // namespace atrium_records
