/*
 * answers.cpp - the benchmark answers, generated from their size parameters.
 *
 * The text is assembled with plain appends; every value is derived from the site, group
 * and entry indexes, so each generated answer is byte-identical from run to run. Addresses
 * follow one scheme: 10.<site>.<group>.<host>:<port> for servers inside a site and
 * 203.0.<site>.<host>:<port> for the traversal gateways, all IPv4 literals.
 */
#include "answers.h"

#include "ktl_base64.h"

#include <string>

namespace bench {

namespace {

const char XML_DECLARATION[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

std::string Num(uint32_t uiValue)
{
    return std::to_string(uiValue);
}

/* "10.s.g.h:port" - an address inside site s, group g. */
std::string GroupAddress(uint32_t uiSite, uint32_t uiGroup, uint32_t uiHost, uint32_t uiPort)
{
    return "10." + Num(uiSite + 1) + "." + Num(uiGroup + 1) + "." + Num(uiHost) + ":" + Num(uiPort);
}

/* "203.0.s.h:port" - a traversal gateway of site s. */
std::string GatewayAddress(uint32_t uiSite, uint32_t uiHost, uint32_t uiPort)
{
    return "203.0." + Num(uiSite + 1) + "." + Num(uiHost) + ":" + Num(uiPort);
}

/* An empty element with one attribute, on its own line at the given indent. */
void Leaf(std::string &strOut, const std::string &strIndent, const char *pcName, const char *pcAttr,
          const std::string &strValue)
{
    strOut += strIndent + "<" + pcName + " " + pcAttr + "=\"" + strValue + "\"/>\n";
}

/* An element holding text. */
void TextElement(std::string &strOut, const std::string &strIndent, const char *pcName, const std::string &strText)
{
    strOut += strIndent + "<" + pcName + ">" + strText + "</" + pcName + ">\n";
}

std::string SiteName(uint32_t uiSite)
{
    static const char *const s_apcNames[] = {"Frankfurt", "Shenzhen", "Austin", "Singapore",
                                             "Madrid",    "Toronto",  "Sydney", "Nairobi"};
    const uint32_t uiCount = sizeof(s_apcNames) / sizeof(s_apcNames[0]);
    std::string strName = s_apcNames[uiSite % uiCount];
    return uiSite < uiCount ? strName : strName + "-" + Num(uiSite / uiCount + 1);
}

std::string SsoHost(uint32_t uiSite)
{
    return "sso-" + Num(uiSite + 1) + ".corp.example";
}

/* Media servers per group vary from 2 to 5 (of the 8 the record holds), STG media
 * gateways from 1 to 3, so the numbered lookups meet both hits and misses. */
uint32_t MediaServers(uint32_t uiGroup)
{
    return 2 + uiGroup % 4;
}

uint32_t MediaGateways(uint32_t uiGroup)
{
    return 1 + uiGroup % 3;
}

void StgGroup(std::string &strOut, uint32_t uiSite, uint32_t uiGroup)
{
    const std::string strIn = "            ";
    strOut += "          <stggroup>\n";
    Leaf(strOut, strIn, "stg", "uri", GatewayAddress(uiSite, 10 + uiGroup, 443));
    strOut += strIn + "<auth account=\"stg-s" + Num(uiSite + 1) + "g" + Num(uiGroup + 1) + "\" pwd=\"Stg#" +
              Num(4000 + uiSite * 100 + uiGroup) + "x\"/>\n";
    Leaf(strOut, strIn, "sipstg", "uri", GatewayAddress(uiSite, 10 + uiGroup, 5061));
    Leaf(strOut, strIn, "eserverstg", "uri", GatewayAddress(uiSite, 11 + uiGroup, 8443));
    Leaf(strOut, strIn, "eserverstg1", "uri", GatewayAddress(uiSite, 12 + uiGroup, 8443));
    Leaf(strOut, strIn, "maastg", "uri", GatewayAddress(uiSite, 13 + uiGroup, 443));
    Leaf(strOut, strIn, "maastg1", "uri", GatewayAddress(uiSite, 14 + uiGroup, 443));
    strOut += strIn + "<msstggroup>\n";
    for (uint32_t i = 1; i <= MediaGateways(uiGroup); ++i) {
        const std::string strName = "msstg" + Num(i);
        Leaf(strOut, strIn + "  ", strName.c_str(), "uri", GatewayAddress(uiSite, 20 + i, 9000));
    }
    strOut += strIn + "</msstggroup>\n";
    strOut += "          </stggroup>\n";
}

/* One access-server group with every key its parser reads. */
void AccessServer(std::string &strOut, uint32_t uiSite, uint32_t uiGroup)
{
    const std::string strIn = "          ";
    const std::string strSite = Num(uiSite + 1);
    strOut += "        <accessserver name=\"s" + strSite + "-group-" + Num(uiGroup + 1) + "\">\n";
    Leaf(strOut, strIn, "sip", "uri", GroupAddress(uiSite, uiGroup, 10, 5060));
    Leaf(strOut, strIn, "svn", "uri", GroupAddress(uiSite, uiGroup, 11, 443));
    Leaf(strOut, strIn, "httpsproxy", "uri", GroupAddress(uiSite, uiGroup, 12, 443));
    Leaf(strOut, strIn, "eserver", "uri", GroupAddress(uiSite, uiGroup, 13, 8443));
    Leaf(strOut, strIn, "eserver1", "uri", GroupAddress(uiSite, uiGroup, 14, 8443));
    Leaf(strOut, strIn, "conf", "uri", GroupAddress(uiSite, uiGroup, 15, 443));
    Leaf(strOut, strIn, "conf_type", "cmstype", "mcu");
    Leaf(strOut, strIn, "maa", "uri", GroupAddress(uiSite, uiGroup, 16, 443));
    Leaf(strOut, strIn, "maa1", "uri", GroupAddress(uiSite, uiGroup, 17, 443));
    Leaf(strOut, strIn, "maaproxy", "uri", GroupAddress(uiSite, uiGroup, 18, 443));
    Leaf(strOut, strIn, "maadrproxy", "uri", GroupAddress(uiSite, uiGroup, 19, 443));
    Leaf(strOut, strIn, "androidpush", "uri", GroupAddress(uiSite, uiGroup, 20, 8090));
    Leaf(strOut, strIn, "msparam", "uri", GroupAddress(uiSite, uiGroup, 21, 80));
    Leaf(strOut, strIn, "msparampath", "uri", "/msparam/v1");
    Leaf(strOut, strIn, "eab", "uri", "https://eab-" + strSite + ".corp.example:8443");
    Leaf(strOut, strIn, "prophoto", "uri", "https://photo-" + strSite + ".corp.example");
    Leaf(strOut, strIn, "tmstr069", "uri", "https://tms-" + strSite + ".corp.example:8443/acs");
    Leaf(strOut, strIn, "eua", "uri", "ldaps://dir-" + strSite + ".corp.example:636");
    StgGroup(strOut, uiSite, uiGroup);
    strOut += strIn + "<msgroup>\n";
    for (uint32_t i = 1; i <= MediaServers(uiGroup); ++i) {
        const std::string strName = "ms" + Num(i);
        Leaf(strOut, strIn + "  ", strName.c_str(), "uri", GroupAddress(uiSite, uiGroup, 30 + i, 9000));
    }
    strOut += strIn + "</msgroup>\n";
    strOut += strIn + "<siptls isactive=\"" + (uiGroup % 2 == 0 ? "true" : "false") + "\"/>\n";
    Leaf(strOut, strIn, "siptlsaddr", "uri", GroupAddress(uiSite, uiGroup, 10, 5061) + ";transport=tls");
    strOut += strIn + "<srtp isactive=\"true\"/>\n";
    Leaf(strOut, strIn, "atrium", "uri", "https://portal-" + strSite + ".corp.example:443");
    strOut += "        </accessserver>\n";
}

/* Site s; priorities run 1, 2, 3, ... except that the first site gets 3, so the
 * top-priority site is neither the first nor the own (last) site once there are three. */
void Site(std::string &strOut, uint32_t uiSite, uint32_t uiGroups)
{
    const uint32_t uiPriority = uiSite == 0 ? 3 : uiSite;
    const std::string strSite = Num(uiSite + 1);
    strOut += "    <site name=\"" + SiteName(uiSite) + "\" priority=\"" + Num(uiPriority) + "\">\n";
    Leaf(strOut, "      ", "sso_hostname", "uri", SsoHost(uiSite));
    Leaf(strOut, "      ", "sbc", "domain", "sbc-" + strSite + ".corp.example");
    strOut += "      <tmstr069auth defaultaccount=\"tr069-" + strSite + "\" defaultpwd=\"Tr069#" + strSite + "\"/>\n";
    strOut += "      <accessservergroup>\n";
    for (uint32_t g = 0; g < uiGroups; ++g) {
        AccessServer(strOut, uiSite, g);
    }
    strOut += "      </accessservergroup>\n";
    strOut += "    </site>\n";
}

void Sites(std::string &strOut, const PortalShape &stShape)
{
    for (uint32_t s = 0; s < stShape.uiSites; ++s) {
        Site(strOut, s, stShape.uiGroupsPerSite);
    }
}

void ExtraParms(std::string &strOut, uint32_t uiCount)
{
    if (uiCount == 0) {
        return;
    }
    strOut += "  <ExtraParms>\n";
    for (uint32_t i = 0; i < uiCount; ++i) {
        const std::string strName = "param" + Num(i + 1);
        TextElement(strOut, "    ", strName.c_str(), "value-" + Num(i * 7919 % 100000));
    }
    strOut += "  </ExtraParms>\n";
}

void UmsAccounts(std::string &strOut, uint32_t uiCount)
{
    if (uiCount == 0) {
        return;
    }
    strOut += "  <umsinfo>\n";
    for (uint32_t i = 0; i < uiCount; ++i) {
        strOut += "    <ums dn=\"+49695550" + Num(100 + i) + "\" umsaccount=\"vm-" + Num(100 + i) +
                  ".corp\" pwd=\"Vm#" + Num(5000 + i * 37) + "q\"/>\n";
    }
    strOut += "  </umsinfo>\n";
}

/* The standard base64 of a text, through the platform's encoder. */
std::string Base64(const std::string &strText)
{
    char *pcEncoded = KTL_BASE64Encode(strText.data(), static_cast<uint32_t>(strText.size()));
    std::string strEncoded = pcEncoded != nullptr ? pcEncoded : "";
    KTL_BASE64Free(&pcEncoded);
    return strEncoded;
}

} // namespace

std::string OwnSiteHost(const PortalShape &stShape)
{
    return SsoHost(stShape.uiSites == 0 ? 0 : stShape.uiSites - 1);
}

std::string PortalLoginAnswer(const PortalShape &stShape)
{
    std::string strOut = XML_DECLARATION;
    strOut += "<UserInfo>\n";
    strOut += "  <LoginToken>\n";
    TextElement(strOut, "    ", "AccessToken", "a3f9c2e8-51b4-4d0e-9c1a-2b8e6f4d9a17");
    TextElement(strOut, "    ", "ExpireIn", "7200");
    strOut += "  </LoginToken>\n";
    ExtraParms(strOut, stShape.uiExtraParms);
    TextElement(strOut, "  ", "RealUserAccount", "alice.chen@corp.example");
    TextElement(strOut, "  ", "displayname", "Alice Chen");
    strOut += "  <sipinfo>\n";
    TextElement(strOut, "    ", "impu", "sip:+4969555014@corp.example");
    TextElement(strOut, "    ", "impi", "+4969555014@corp.example");
    TextElement(strOut, "    ", "short_number", "5014");
    TextElement(strOut, "    ", "pwdtype", "0");
    TextElement(strOut, "    ", "passwd", "Xk29vQpL");
    TextElement(strOut, "    ", "domain", "corp.example");
    strOut += "    <FuncType terminalScene=\"desktop\">2</FuncType>\n";
    TextElement(strOut, "    ", "sname", "Alice Chen");
    strOut += "  </sipinfo>\n";
    TextElement(strOut, "  ", "fileDockServiceType", "objectstore");
    TextElement(strOut, "  ", "fileDockAppId", "filedock-7731");
    TextElement(strOut, "  ", "fileDockServerAddr", "https://files.corp.example:8443");
    TextElement(strOut, "  ", "privacyVersion", "2024.1");
    TextElement(strOut, "  ", "userType", "1");
    strOut += "  <servicetp>\n";
    Sites(strOut, stShape);
    strOut += "    <ecsmainsite name=\"" + SiteName(stShape.uiSites > 1 ? 1 : 0) + "\"/>\n";
    strOut += "  </servicetp>\n";
    TextElement(strOut, "  ", "DeployMode", "1");
    TextElement(strOut, "  ", "dataConf", "0");
    TextElement(strOut, "  ", "FirstLogin", "NO");
    TextElement(strOut, "  ", "PWDExpireTime", "45");
    strOut += "  <serverList>\n";
    strOut += "    <server name=\"eab\" uri=\"https://eab.corp.example:8443/eab\"/>\n";
    strOut += "    <server name=\"groupserver\" uri=\"https://groups.corp.example:8443\"/>\n";
    strOut += "    <server name=\"tmstr069\" uri=\"https://tms.corp.example:8443/acs\"/>\n";
    strOut += "    <server name=\"presence\" uri=\"https://presence.corp.example\"/>\n";
    strOut += "  </serverList>\n";
    UmsAccounts(strOut, stShape.uiUmsAccounts);
    strOut += "</UserInfo>\n";
    return strOut;
}

std::string ServerListAnswer(const PortalShape &stShape)
{
    std::string strOut = XML_DECLARATION;
    strOut += "<servicetp>\n";
    strOut += "  <sipinfo>\n";
    strOut += "    <impu val=\"sip:+4969555014@corp.example\"/>\n";
    strOut += "    <impi val=\"+4969555014@corp.example\"/>\n";
    strOut += "    <pwdtype val=\"0\"/>\n";
    strOut += "    <passwd val=\"Xk29vQpL\"/>\n";
    strOut += "    <domain val=\"corp.example\"/>\n";
    strOut += "    <FuncType val=\"3\" terminalScene=\"mobile\"/>\n";
    strOut += "  </sipinfo>\n";
    Sites(strOut, stShape);
    strOut += "</servicetp>\n";
    return strOut;
}

std::string AuthTokenAnswer()
{
    std::string strOut = XML_DECLARATION;
    strOut += "<UserInfo>\n  <LoginToken>\n";
    TextElement(strOut, "    ", "AccessToken", "7f3c9a2e51b44d0e9c1a2b8e6f4d9a17");
    TextElement(strOut, "    ", "ExpireIn", "3600");
    strOut += "  </LoginToken>\n";
    TextElement(strOut, "  ", "RealUserAccount", "alice.chen@corp.example");
    TextElement(strOut, "  ", "FirstLogin", "YES");
    TextElement(strOut, "  ", "PWDExpireTime", "90");
    strOut += "</UserInfo>\n";
    return strOut;
}

std::string TokenInfoAnswer()
{
    std::string strOut = XML_DECLARATION;
    strOut += "<UserInfo>\n  <LoginToken>\n";
    TextElement(strOut, "    ", "AccessToken", "e71c04b9a8d24f5c93a6b1d0c2e5f748");
    TextElement(strOut, "    ", "ExpireIn", "1800");
    strOut += "  </LoginToken>\n";
    TextElement(strOut, "  ", "Account", "alice.chen@corp.example");
    TextElement(strOut, "  ", "PWD", "Rt5!wq8Z");
    strOut += "</UserInfo>\n";
    return strOut;
}

std::string PortalSearchAnswer(uint32_t uiSites)
{
    std::string strOut = XML_DECLARATION;
    strOut += "<UserInfo>\n  <servicetp>\n";
    for (uint32_t s = 0; s < uiSites; ++s) {
        strOut += "    <site name=\"" + SiteName(s) + "\" priority=\"" + Num(s + 1) + "\">\n";
        Leaf(strOut, "      ", "sso_hostname", "uri", SsoHost(s));
        strOut += "    </site>\n";
    }
    strOut += "  </servicetp>\n</UserInfo>\n";
    return strOut;
}

std::string RightConfigRefusedAnswer()
{
    std::string strOut = XML_DECLARATION;
    strOut += "<root>\n";
    TextElement(strOut, "  ", "retcode", "1");
    TextElement(strOut, "  ", "devkey", "9f2c4e1a7b3d5f608a1c2e3d4f5a6b7c");
    TextElement(strOut, "  ", "devtype", "DESKPHONE-X7");
    TextElement(strOut, "  ", "timestamp", "2024-05-17T08:42:11Z");
    strOut += "</root>\n";
    return strOut;
}

namespace {

void AddressRun(std::string &strOut, const std::string &strIndent, const char *pcName, uint32_t uiCount,
                uint32_t uiBase, uint32_t uiPort)
{
    for (uint32_t i = 0; i < uiCount; ++i) {
        TextElement(strOut, strIndent, pcName, "10.60." + Num(uiBase) + "." + Num(10 + i) + ":" + Num(uiPort));
    }
}

void PortalAddressRun(std::string &strOut, const std::string &strIndent, uint32_t uiCount)
{
    for (uint32_t i = 0; i < uiCount; ++i) {
        TextElement(strOut, strIndent, "address", "https://portal-" + Num(i + 1) + ".corp.example:443");
    }
}

} // namespace

std::string ConferenceLoginAnswer()
{
    std::string strOut = XML_DECLARATION;
    strOut += "<loginResult>\n  <result>\n";
    TextElement(strOut, "    ", "resultCode", "0");
    TextElement(strOut, "    ", "resultDesc", "success");
    strOut += "  </result>\n  <profile>\n";
    TextElement(strOut, "    ", "token", "TDM-3c5a9e2f71b84d06");
    TextElement(strOut, "    ", "supportMediaTypes", "audio,video,data");
    strOut += "  </profile>\n  <conferenceClientInfo>\n";
    TextElement(strOut, "    ", "serviceDomain", "conf.corp.example");
    TextElement(strOut, "    ", "proxyServer", "10.60.1.10:5060");
    TextElement(strOut, "    ", "userName", "alice.chen");
    TextElement(strOut, "    ", "userPassword", "Cf8#kd2Q");
    TextElement(strOut, "    ", "authorizedName", "alice.chen@conf.corp.example");
    strOut += "    <euaInfo>\n";
    TextElement(strOut, "      ", "userName", "cn=alice.chen,ou=people");
    TextElement(strOut, "      ", "password", "Ld4p!x9W");
    TextElement(strOut, "      ", "baseDN", "dc=corp,dc=example");
    AddressRun(strOut, "      ", "address", 18, 2, 636);
    strOut += "    </euaInfo>\n    <stgInfo>\n";
    TextElement(strOut, "      ", "userName", "stg-conf");
    TextElement(strOut, "      ", "password", "StgC#77a");
    AddressRun(strOut, "      ", "stgAddress", 5, 4, 443);
    AddressRun(strOut, "      ", "sbcInnerAddress", 5, 3, 5060);
    strOut += "    </stgInfo>\n    <tmsInfo>\n";
    TextElement(strOut, "      ", "userName", "tms-conf");
    TextElement(strOut, "      ", "password", "Tms!5512");
    AddressRun(strOut, "      ", "address", 5, 5, 8443);
    strOut += "    </tmsInfo>\n    <atriumInfo>\n";
    PortalAddressRun(strOut, "      ", 6);
    strOut += "    </atriumInfo>\n  </conferenceClientInfo>\n</loginResult>\n";
    return strOut;
}

std::string ConferenceRefusalAnswer()
{
    std::string strOut = XML_DECLARATION;
    strOut += "<result>\n";
    TextElement(strOut, "  ", "resultCode", "0x4E22");
    TextElement(strOut, "  ", "resultDesc", "account locked, try another portal");
    strOut += "  <failConferenceClientInfo>\n    <atriumInfo>\n";
    PortalAddressRun(strOut, "      ", 6);
    strOut += "    </atriumInfo>\n  </failConferenceClientInfo>\n</result>\n";
    return strOut;
}

std::string VersionAnswer()
{
    std::string strOut = XML_DECLARATION;
    strOut += "<versionResult>\n  <result>\n";
    TextElement(strOut, "    ", "resultCode", "0");
    TextElement(strOut, "    ", "resultDesc", "OK");
    strOut += "  </result>\n";
    TextElement(strOut, "  ", "versionNumber", "V600R023C10");
    strOut += "</versionResult>\n";
    return strOut;
}

std::string RandomKeyAnswer()
{
    std::string strOut = XML_DECLARATION;
    strOut += "<confinfo>\n";
    TextElement(strOut, "  ", "errorCode", "0");
    TextElement(strOut, "  ", "site_url", "https://conf-1.corp.example/join");
    TextElement(strOut, "  ", "random", "R8kq2ZxP47mTa1vC");
    strOut += "</confinfo>\n";
    return strOut;
}

std::string ConferenceSearchAnswer(uint32_t uiSites)
{
    std::string strOut = XML_DECLARATION;
    strOut += "<servicetp>\n";
    for (uint32_t s = 0; s < uiSites; ++s) {
        strOut += "  <site priority=\"" + Num(s + 1) + "\">\n";
        Leaf(strOut, "    ", "sso_hostname", "uri", SsoHost(s));
        strOut += "  </site>\n";
    }
    strOut += "</servicetp>\n";
    return strOut;
}

std::string GuestServiceSitesAnswer(uint32_t uiSites, uint32_t uiGroupsPerSite)
{
    std::string strOut = XML_DECLARATION;
    strOut += "<servicetp>\n";
    Sites(strOut, PortalShape{uiSites, uiGroupsPerSite, 0, 0});
    strOut += "</servicetp>\n";
    return strOut;
}

std::string GuestSiteKey(uint32_t uiSites)
{
    return SsoHost(uiSites == 0 ? 0 : uiSites - 1);
}

std::string GuestSipAnswer()
{
    std::string strOut = XML_DECLARATION;
    strOut += "<ConfParam>\n  <sipinfo>\n";
    TextElement(strOut, "    ", "impu", "sip:guest-7731@conf.corp.example");
    TextElement(strOut, "    ", "impi", "guest-7731@conf.corp.example");
    TextElement(strOut, "    ", "pwdtype", "0");
    TextElement(strOut, "    ", "passwd", "G7!p0aQx");
    TextElement(strOut, "    ", "domain", "conf.corp.example");
    TextElement(strOut, "    ", "accesscode", "+4969555000");
    TextElement(strOut, "    ", "confid", "48213377");
    TextElement(strOut, "    ", "confpwd", "913562");
    strOut += "  </sipinfo>\n</ConfParam>\n";
    return strOut;
}

std::string GuestConfAnswer()
{
    std::string strOut = XML_DECLARATION;
    strOut += "<ConfParam>\n  <ConfInfo>\n";
    TextElement(strOut, "    ", "accesscode", "+4969555000");
    TextElement(strOut, "    ", "confid", "48213377");
    TextElement(strOut, "    ", "confpwd", "913562");
    TextElement(strOut, "    ", "chairmanpwd", "771204");
    TextElement(strOut, "    ", "accessaddress", "https://conf-1.corp.example/join");
    TextElement(strOut, "    ", "mediatype", "video");
    TextElement(strOut, "    ", "user_role", "0x2");
    strOut += "  </ConfInfo>\n</ConfParam>\n";
    return strOut;
}

std::string GuestShortConfAnswer()
{
    std::string strOut = XML_DECLARATION;
    strOut += "<ConfParam>\n";
    TextElement(strOut, "  ", "access_code", "+4969555000");
    TextElement(strOut, "  ", "conf_id", "48213377");
    TextElement(strOut, "  ", "conf_pass", "913562");
    strOut += "</ConfParam>\n";
    return strOut;
}

std::string GuestAccountAnswer()
{
    std::string strOut = XML_DECLARATION;
    strOut += "<ConfParam>\n  <AccountInfo>\n";
    TextElement(strOut, "    ", "account", "tmp-guest-7731");
    TextElement(strOut, "    ", "password", "Tg3#r91LmZ");
    TextElement(strOut, "    ", "pwdType", "0x10");
    TextElement(strOut, "    ", "accessURL", "https://conf-1.corp.example:443");
    TextElement(strOut, "    ", "secondAccessURL", "https://conf-2.corp.example:443");
    strOut += "  </AccountInfo>\n</ConfParam>\n";
    return strOut;
}

std::string NearbyAccessAnswer(uint32_t uiSites)
{
    const std::string strEncoded = Base64(GuestServiceSitesAnswer(uiSites, 2));
    std::string strOut = XML_DECLARATION;
    strOut += "<ConfParam>\n  <nearbyaccess>\n";
    for (size_t i = 0; i < strEncoded.size(); i += 76) {
        strOut += "    " + strEncoded.substr(i, 76) + "\n";
    }
    strOut += "  </nearbyaccess>\n</ConfParam>\n";
    return strOut;
}

std::string EndpointMessageAnswer()
{
    std::string strOut = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
    strOut += "<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\" "
              "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
              "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">\n";
    strOut += "  <soap:Body>\n";
    strOut += "    <GetEndPointMessageJsonResponse xmlns=\"http://tempuri.org/\">\n";
    strOut += "      <GetEndPointMessageJsonResult>\n";
    strOut += "        <ErrCode>0</ErrCode>\n";
    strOut += "      </GetEndPointMessageJsonResult>\n";
    strOut += "      <result>{\"Uri\":\"sip:room-4021@corp.example\",\"RegPassword\":\"Rm4021pw\","
              "\"RegIpAddress\":\"10.60.1.10\",\"DisplayName\":\"Room 4021\",\"Site\":\"Frankfurt\"}</result>\n";
    strOut += "    </GetEndPointMessageJsonResponse>\n";
    strOut += "  </soap:Body>\n";
    strOut += "</soap:Envelope>\n";
    return strOut;
}

std::string UniCallAnswer()
{
    std::string strOut = "{\n  \"returnCode\": 0,\n  \"data\": {\n";
    strOut += "    \"operate\": 1,\n    \"srvtype\": 1,\n    \"dspnum\": \"+4969555014\",\n";
    strOut += "    \"errorCode\": \"0\",\n    \"showCallerNum\": 1,\n    \"unicallBeans\": [\n";
    for (uint32_t r = 0; r < 20; ++r) {
        strOut += "      {\n        \"ruleid\": \"rule-" + Num(r + 1) + "\",\n";
        strOut += "        \"timeInfo\": {\"allTime\": " + Num(r % 2) +
                  ", \"cycleType\": 1, \"startDate\": \"0101\", "
                  "\"endDate\": \"1231\", \"dayInWeek\": \"12345\", \"startTime\": \"0800\", \"endTime\": \"1800\"},\n";
        strOut += "        \"calleeIndex\": " + Num(r % 10) + ",\n        \"calleeList\": [";
        for (uint32_t c = 0; c < 10; ++c) {
            strOut += std::string(c == 0 ? "" : ", ") + "\"+49151555" + Num(10000 + r * 10 + c) + "\"";
        }
        strOut += "],\n        \"rtype\": " + Num(1 + r % 3) + ",\n        \"operateType\": 0\n      }";
        strOut += r + 1 < 20 ? ",\n" : "\n";
    }
    strOut += "    ]\n  }\n}\n";
    return strOut;
}

std::string LinkedPhoneAnswer()
{
    std::string strOut = "{\n  \"data\": [\n";
    for (uint32_t i = 0; i < 29; ++i) {
        strOut += "    {\"impu\": \"sip:+49695550" + Num(100 + i) +
                  "@corp.example\", \"active\": " + (i % 3 == 0 ? "false" : "true") + ", \"linkedPhone\": \"+49151555" +
                  Num(20000 + i) + "\"}";
        strOut += i + 1 < 29 ? ",\n" : "\n";
    }
    strOut += "  ]\n}\n";
    return strOut;
}

} // namespace bench
