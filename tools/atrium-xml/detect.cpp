/*
 * detect.cpp - answer kind from content.
 *
 * XML is read with pugixml, leniently, so that a capture cut short can still be named
 * (the module then reports its parse failure), and elements are compared by local name
 * as the module's dotted paths match them (a "soap:" prefix does not count). The root
 * element decides most kinds; for the roots several answers share (UserInfo, servicetp,
 * ConfParam) the children present decide, first match wins. JSON is told by its
 * top-level members.
 */
#include "detect.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <set>

#include <json/json.h>

#include <pugixml.hpp>

namespace atrium_tool {

namespace {

struct NameRule {
    const char *pcElement;
    const char *pcKind;
};

/* Roots that name their answer alone. */
const NameRule kRootRules[] = {
    {"root", "right-config"},          {"loginResult", "conf-login"}, {"result", "conf-login"},
    {"versionResult", "conf-version"}, {"confinfo", "random-key"},    {"Envelope", "endpoint-message"},
};

/* ConfParam answers, by the block they carry (first match wins). */
const NameRule kConfParamRules[] = {
    {"nearbyaccess", "nearby-access"}, {"AccountInfo", "guest-account"}, {"errorCode", "guest-sip"},
    {"sipinfo", "guest-sip"},          {"ConfInfo", "guest-conf"},       {"access_code", "guest-bigparam"},
    {"conf_id", "guest-bigparam"},     {"conf_pass", "guest-bigparam"},
};

/* Children of UserInfo that only a full portal login carries. */
const char *const kLoginOnlyChildren[] = {
    "sipinfo",  "serverList", "umsinfo",        "ExtraParms",          "displayname",   "DeployMode",
    "dataConf", "userType",   "privacyVersion", "fileDockServiceType", "fileDockAppId", "fileDockServerAddr",
};

/* Element name without its namespace prefix, as the module's dotted paths match it. */
std::string LocalName(const pugi::xml_node &stNode)
{
    const char *pcName = stNode.name();
    const char *pcColon = std::strchr(pcName, ':');
    return pcColon != nullptr ? pcColon + 1 : pcName;
}

std::set<std::string> ChildNames(const pugi::xml_node &stParent)
{
    std::set<std::string> setNames;
    for (const pugi::xml_node &stChild : stParent.children()) {
        if (stChild.type() == pugi::node_element) {
            setNames.insert(LocalName(stChild));
        }
    }
    return setNames;
}

/* The first element child of that local name (what a dotted-path step takes). */
pugi::xml_node Child(const pugi::xml_node &stParent, const char *pcName)
{
    for (const pugi::xml_node &stChild : stParent.children()) {
        if (stChild.type() == pugi::node_element && LocalName(stChild) == pcName) {
            return stChild;
        }
    }
    return pugi::xml_node();
}

/* Some "site" child of stParent holds an element of that name. */
bool AnySiteHas(const pugi::xml_node &stParent, const char *pcName)
{
    for (const pugi::xml_node &stChild : stParent.children()) {
        if (stChild.type() == pugi::node_element && LocalName(stChild) == "site" && Child(stChild, pcName)) {
            return true;
        }
    }
    return false;
}

/* Parses leniently: a capture cut short keeps what came before the cut, enough to tell
 * its kind; the module itself then reports the parse failure. No external entity is
 * ever loaded and no DTD entity expanded (pugixml never does). */
pugi::xml_node RootElement(const std::string &strBody, pugi::xml_document &stDoc)
{
    stDoc.load_buffer(strBody.data(), strBody.size(), pugi::parse_default);
    return stDoc.document_element();
}

const char *UserInfoKind(const std::set<std::string> &setChildren)
{
    if (setChildren.count("Account") != 0 || setChildren.count("PWD") != 0) {
        return "token-info";
    }
    const bool bLoginOnly = std::any_of(std::begin(kLoginOnlyChildren), std::end(kLoginOnlyChildren),
                                        [&](const char *pcChild) { return setChildren.count(pcChild) != 0; });
    if (bLoginOnly || (setChildren.count("servicetp") != 0 && setChildren.count("LoginToken") != 0)) {
        return "portal-login";
    }
    return setChildren.count("servicetp") != 0 ? "portal-search" : "auth-token";
}

const char *ServiceTpKind(const pugi::xml_node &stRoot, const std::set<std::string> &setChildren)
{
    if (setChildren.count("sipinfo") != 0) {
        return "server-list";
    }
    return AnySiteHas(stRoot, "accessservergroup") ? "guest-sites" : "conf-search";
}

const char *XmlKind(const pugi::xml_node &stRoot, std::string &strWhy)
{
    const std::string strRoot = LocalName(stRoot);
    for (const NameRule &stRule : kRootRules) {
        if (strRoot == stRule.pcElement) {
            return stRule.pcKind;
        }
    }
    const std::set<std::string> setChildren = ChildNames(stRoot);
    if (strRoot == "UserInfo") {
        return UserInfoKind(setChildren);
    }
    if (strRoot == "servicetp") {
        return ServiceTpKind(stRoot, setChildren);
    }
    if (strRoot == "ConfParam") {
        for (const NameRule &stRule : kConfParamRules) {
            if (setChildren.count(stRule.pcElement) != 0) {
                return stRule.pcKind;
            }
        }
        strWhy = "a ConfParam answer without any block the module reads";
        return nullptr;
    }
    if (setChildren.count("site") != 0) {
        return "guest-sites";
    }
    strWhy = "unknown root element <" + strRoot + ">";
    return nullptr;
}

const char *JsonKind(const std::string &strBody, size_t uiBrace, std::string &strWhy)
{
    Json::CharReaderBuilder stBuilder;
    std::unique_ptr<Json::CharReader> pReader(stBuilder.newCharReader());
    Json::Value jsRoot;
    std::string strErrors;
    if (!pReader->parse(strBody.data() + uiBrace, strBody.data() + strBody.size(), &jsRoot, &strErrors) ||
        !jsRoot.isObject()) {
        strWhy = "neither XML nor a JSON object";
        return nullptr;
    }
    const Json::Value &jsData = static_cast<const Json::Value &>(jsRoot)["data"];
    if (jsData.isArray()) {
        return "linked-phones";
    }
    if (jsRoot.isMember("returnCode") || jsData.isObject()) {
        return "unicall";
    }
    if (jsRoot.isMember("impuList") || jsRoot.isMember("impu")) {
        strWhy = "a linked-phone request, not an answer (see the build command)";
    } else if (jsRoot.isMember("unicallBeans")) {
        strWhy = "a unified-call request, not an answer (see the build command)";
    } else {
        strWhy = "a JSON object with neither \"returnCode\" nor \"data\"";
    }
    return nullptr;
}

} // namespace

const AnswerKind *DetectKind(const std::string &strBody, std::string &strWhy)
{
    const size_t uiFirst = strBody.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
    if (uiFirst != std::string::npos && strBody[uiFirst] == '<') {
        pugi::xml_document stDoc;
        const pugi::xml_node stRoot = RootElement(strBody, stDoc);
        if (!stRoot) {
            strWhy = "XML without a root element";
            return nullptr;
        }
        const char *pcKind = XmlKind(stRoot, strWhy);
        return pcKind != nullptr ? FindAnswerKind(pcKind) : nullptr;
    }
    const size_t uiBrace = strBody.find('{');
    if (uiBrace == std::string::npos) {
        strWhy = "neither XML nor JSON";
        return nullptr;
    }
    const char *pcKind = JsonKind(strBody, uiBrace, strWhy);
    return pcKind != nullptr ? FindAnswerKind(pcKind) : nullptr;
}

std::string FirstSiteKey(const std::string &strBody)
{
    pugi::xml_document stDoc;
    const pugi::xml_node stRoot = RootElement(strBody, stDoc);
    for (const pugi::xml_node &stChild : stRoot.children()) {
        if (stChild.type() != pugi::node_element || LocalName(stChild) != "site") {
            continue;
        }
        const char *pcUri = Child(stChild, "sso_hostname").attribute("uri").value();
        if (*pcUri != '\0') {
            return pcUri;
        }
    }
    return "";
}

} // namespace atrium_tool
