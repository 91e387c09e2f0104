/*
 * The management service's endpoint-message reply: the SOAP envelope, the namespace check,
 * the error code, the three strings picked out of the embedded JSON text and the wipe of
 * that text inside the document.
 */
#include <gmock/gmock.h>

#include <pugixml.hpp>

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "services_test.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const char *const SERVICES_FILE = "service/login/src/atrium_xml/services.cpp";
const char *const SOAP_NS = "http://schemas.xmlsoap.org/soap/envelope/";

std::string Envelope(const std::string &strBodyInner)
{
    return std::string("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<soap:Envelope xmlns:soap=\"") + SOAP_NS +
           "\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\n  <soap:Body>\n" + strBodyInner +
           "  </soap:Body>\n</soap:Envelope>\n";
}

std::string Reply(const std::string &strResponseInner,
                  const std::string &strNamespace = LOGIN_MGMT_SERVICE_NAMESPACE)
{
    return Envelope("    <GetEndPointMessageJsonResponse xmlns=\"" + strNamespace + "\">\n" + strResponseInner +
                    "    </GetEndPointMessageJsonResponse>\n");
}

std::string ErrCode(const std::string &strCode)
{
    return "      <GetEndPointMessageJsonResult>\n        <ErrCode>" + strCode +
           "</ErrCode>\n      </GetEndPointMessageJsonResult>\n";
}

std::string Result(const std::string &strJson)
{
    return "      <result>" + strJson + "</result>\n";
}

std::string Success(const std::string &strJson)
{
    return Reply(ErrCode("0") + Result(strJson));
}

std::string ThreeMembers(const std::string &strUri, const std::string &strPassword, const std::string &strIp)
{
    return "{\"Uri\":\"" + strUri + "\",\"RegPassword\":\"" + strPassword + "\",\"RegIpAddress\":\"" + strIp +
           "\"}";
}

bool AllZero(const void *pvBytes, size_t uiLen)
{
    const auto *pcBytes = static_cast<const unsigned char *>(pvBytes);
    for (size_t i = 0; i < uiLen; ++i) {
        if (pcBytes[i] != 0) {
            return false;
        }
    }
    return true;
}

tagLOGIN_S_ENDPOINT_MSG_RESULT SentinelRecord()
{
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult;
    std::memset(&stResult, 0x5A, sizeof(stResult));
    return stResult;
}

bool SameBytes(const tagLOGIN_S_ENDPOINT_MSG_RESULT &a, const tagLOGIN_S_ENDPOINT_MSG_RESULT &b)
{
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

/*
 * Keeps a copy of every block that pugixml - the parser behind the XML document library -
 * frees while this object lives, taken at the moment it is freed. The document's text
 * (names, values, attributes) lives in such a block, so what the module left in the
 * document's memory can be read after KTL_XML_FreeNode without any hook in the module.
 * Blocks are tracked through pugixml's public allocation functions; the observer must be
 * created and destroyed while no document is alive.
 */
class FreedXmlMemory {
public:
    FreedXmlMemory()
        : m_pfnOldAllocate(pugi::get_memory_allocation_function()),
          m_pfnOldDeallocate(pugi::get_memory_deallocation_function())
    {
        s_pThis = this;
        pugi::set_memory_management_functions(&Allocate, &Deallocate);
    }
    ~FreedXmlMemory()
    {
        pugi::set_memory_management_functions(m_pfnOldAllocate, m_pfnOldDeallocate);
        s_pThis = nullptr;
    }
    FreedXmlMemory(const FreedXmlMemory &) = delete;
    FreedXmlMemory &operator=(const FreedXmlMemory &) = delete;

    /* The freed block that holds strNeedle, or null. */
    const std::string *BlockHolding(const std::string &strNeedle) const
    {
        for (const std::string &strBlock : m_vecFreed) {
            if (strBlock.find(strNeedle) != std::string::npos) {
                return &strBlock;
            }
        }
        return nullptr;
    }
    /* What a freed block held where its copy of strBody had [uiAt, uiAt + uiLen): the copy
     * is placed by strAnchor, a name that occurs in the body before uiAt (the parse ends
     * names with terminators but leaves their characters). Empty when no block holds it. */
    std::string FreedBodyBytes(const std::string &strBody, const std::string &strAnchor, size_t uiAt,
                               size_t uiLen) const
    {
        const std::string *pstrBlock = BlockHolding(strAnchor);
        const size_t uiAnchorInBody = strBody.find(strAnchor);
        if (pstrBlock == nullptr || uiAnchorInBody == std::string::npos || uiAnchorInBody > uiAt) {
            return std::string();
        }
        const size_t uiAnchorInBlock = pstrBlock->find(strAnchor);
        if (uiAnchorInBlock < uiAnchorInBody) {
            return std::string();
        }
        const size_t uiAtInBlock = uiAnchorInBlock - uiAnchorInBody + uiAt;
        if (uiAtInBlock + uiLen > pstrBlock->size()) {
            return std::string();
        }
        return pstrBlock->substr(uiAtInBlock, uiLen);
    }

private:
    static void *Allocate(size_t uiSize)
    {
        /* Zero-filled: the copy taken at release is searched whole, including bytes the
         * parser never wrote. */
        void *pvBlock = std::calloc(1, uiSize);
        if (pvBlock != nullptr) {
            s_pThis->m_mapSizes[pvBlock] = uiSize;
        }
        return pvBlock;
    }
    static void Deallocate(void *pvBlock)
    {
        auto it = s_pThis->m_mapSizes.find(pvBlock);
        if (it != s_pThis->m_mapSizes.end()) {
            s_pThis->m_vecFreed.emplace_back(static_cast<const char *>(pvBlock), it->second);
            s_pThis->m_mapSizes.erase(it);
        }
        std::free(pvBlock);
    }

    static FreedXmlMemory *s_pThis;
    pugi::allocation_function m_pfnOldAllocate;
    pugi::deallocation_function m_pfnOldDeallocate;
    std::map<void *, size_t> m_mapSizes;
    std::vector<std::string> m_vecFreed;
};

FreedXmlMemory *FreedXmlMemory::s_pThis = nullptr;

class SoapBodyTest : public ModuleTest {};

class SiteInfoTest : public ModuleTest {
protected:
    /* A sample reply as servers send it, with its namespace set to the one this build expects. */
    static std::string SampleReply(const std::string &strName)
    {
        std::string strBody = ReadTestFile("services/" + strName);
        const std::string strSampleNs = "http://tempuri.org/";
        const size_t uiAt = strBody.find("xmlns=\"" + strSampleNs + "\"");
        EXPECT_NE(uiAt, std::string::npos) << strName;
        if (uiAt != std::string::npos) {
            strBody.replace(uiAt + 7, strSampleNs.size(), LOGIN_MGMT_SERVICE_NAMESPACE);
        }
        return strBody;
    }
};

/* ---- XmlGetSoapBodyNode ------------------------------------------------------------ */

TEST_F(SoapBodyTest, PrefixedEnvelopeAndBodyAreFoundByBareNames)
{
    const std::string strBody = Envelope("    <Anything/>\n");
    _NODE *pstRoot = nullptr;
    _NODE *pstEnvelope = nullptr;
    _NODE *pstBody = nullptr;

    ASSERT_EQ(XmlGetSoapBodyNode(strBody.c_str(), 0, &pstRoot, &pstEnvelope, &pstBody), 0u);

    ASSERT_NE(pstRoot, nullptr);
    EXPECT_EQ(pstEnvelope, pstRoot) << "the envelope is the root element";
    ASSERT_NE(pstBody, nullptr);
    char *pcName = nullptr;
    char *pcValue = nullptr;
    ASSERT_EQ(KTL_XML_GetNodeValue(pstBody, nullptr, 0, &pcName, &pcValue), 0u);
    EXPECT_STREQ(pcName, "soap:Body");
    EXPECT_EQ(LiveDocumentsSinceStart(), 1u) << "the caller releases the document";
    KTL_XML_FreeNode(pstRoot);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(SoapBodyTest, DefaultNamespaceEnvelopeIsFound)
{
    const std::string strBody = std::string("<Envelope xmlns=\"") + SOAP_NS + "\">\n\t<Body>\n\t</Body>\n</Envelope>";
    _NODE *pstRoot = nullptr;
    _NODE *pstEnvelope = nullptr;
    _NODE *pstBody = nullptr;
    ASSERT_EQ(XmlGetSoapBodyNode(strBody.c_str(), 0, &pstRoot, &pstEnvelope, &pstBody), 0u);
    EXPECT_NE(pstEnvelope, nullptr);
    EXPECT_NE(pstBody, nullptr);
    KTL_XML_FreeNode(pstRoot);
}

TEST_F(SoapBodyTest, LengthArgumentIsNotUsed)
{
    const std::string strBody = Envelope("");
    for (uint32_t uiLen : {0u, 3u, static_cast<uint32_t>(strBody.size()), 0xFFFFFFFFu}) {
        _NODE *pstRoot = nullptr;
        _NODE *pstEnvelope = nullptr;
        _NODE *pstBody = nullptr;
        EXPECT_EQ(XmlGetSoapBodyNode(strBody.c_str(), uiLen, &pstRoot, &pstEnvelope, &pstBody), 0u) << uiLen;
        EXPECT_NE(pstBody, nullptr) << uiLen;
        KTL_XML_FreeNode(pstRoot);
    }
}

TEST_F(SoapBodyTest, TextThatIsNotXmlYieldsTheLibraryCode)
{
    for (const char *pcBody : {"", "HTTP/1.1 500 Internal Server Error", "<soap:Envelope><soap:Body>"}) {
        m_traces.Clear();
        _NODE *pstProbe = nullptr;
        const uint32_t uiLibraryCode = KTL_XML_Parse(pcBody, &pstProbe);
        ASSERT_NE(uiLibraryCode, 0u) << pcBody;
        _NODE *pstRoot = nullptr;
        _NODE *pstEnvelope = nullptr;
        _NODE *pstBody = nullptr;

        EXPECT_EQ(XmlGetSoapBodyNode(pcBody, 0, &pstRoot, &pstEnvelope, &pstBody), uiLibraryCode) << pcBody;

        EXPECT_EQ(pstRoot, nullptr);
        EXPECT_EQ(pstEnvelope, nullptr);
        EXPECT_EQ(pstBody, nullptr);
        EXPECT_THAT(m_traces.Texts(),
                    ElementsAre(Format("L0 GetEndPointMessageJson: KTL_XML_Parse failed errno=[0x%x]!", uiLibraryCode)))
            << pcBody;
    }
}

TEST_F(SoapBodyTest, MissingEnvelopeKeepsTheDocumentForTheCaller)
{
    _NODE *pstRoot = nullptr;
    _NODE *pstEnvelope = nullptr;
    _NODE *pstBody = nullptr;

    EXPECT_EQ(XmlGetSoapBodyNode("<Other><Body/></Other>", 0, &pstRoot, &pstEnvelope, &pstBody),
              KTL_XML_ERR_NOT_FOUND);

    ASSERT_NE(pstRoot, nullptr);
    EXPECT_EQ(pstEnvelope, nullptr);
    EXPECT_EQ(pstBody, nullptr);
    EXPECT_EQ(LiveDocumentsSinceStart(), 1u);
    KTL_XML_FreeNode(pstRoot);
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(Format("L0 GetEndPointMessageJson: get node [Soap:Envelope] failed errno=[0x%x]!",
                                   KTL_XML_ERR_NOT_FOUND)));
}

TEST_F(SoapBodyTest, EnvelopeMustBeTheRootElement)
{
    const std::string strBody = "<Wrapper>" + Envelope("").substr(std::strlen("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n")) +
                                "</Wrapper>";
    _NODE *pstRoot = nullptr;
    _NODE *pstEnvelope = nullptr;
    _NODE *pstBody = nullptr;
    EXPECT_EQ(XmlGetSoapBodyNode(strBody.c_str(), 0, &pstRoot, &pstEnvelope, &pstBody), KTL_XML_ERR_NOT_FOUND);
    KTL_XML_FreeNode(pstRoot);
}

TEST_F(SoapBodyTest, MissingBodyKeepsTheDocumentForTheCaller)
{
    const std::string strBody = std::string("<soap:Envelope xmlns:soap=\"") + SOAP_NS +
                                "\"><soap:Header/></soap:Envelope>";
    _NODE *pstRoot = nullptr;
    _NODE *pstEnvelope = nullptr;
    _NODE *pstBody = nullptr;

    EXPECT_EQ(XmlGetSoapBodyNode(strBody.c_str(), 0, &pstRoot, &pstEnvelope, &pstBody), KTL_XML_ERR_NOT_FOUND);

    ASSERT_NE(pstRoot, nullptr);
    EXPECT_EQ(pstEnvelope, pstRoot);
    EXPECT_EQ(pstBody, nullptr);
    KTL_XML_FreeNode(pstRoot);
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(Format("L0 GetEndPointMessageJson: get node [Soap:Body] failed errno=[0x%x]!",
                                   KTL_XML_ERR_NOT_FOUND)));
}

TEST_F(SoapBodyTest, TracesNameTheFunction)
{
    _NODE *pstRoot = nullptr;
    _NODE *pstEnvelope = nullptr;
    _NODE *pstBody = nullptr;
    (void)XmlGetSoapBodyNode("<x/>", 0, &pstRoot, &pstEnvelope, &pstBody);
    KTL_XML_FreeNode(pstRoot);
    const std::vector<TraceLine> vecLines = m_traces.Lines();
    ASSERT_EQ(vecLines.size(), 1u);
    EXPECT_EQ(vecLines[0].strFunc, "XmlGetSoapBodyNode");
    EXPECT_EQ(vecLines[0].strFile, SERVICES_FILE);
    EXPECT_GT(vecLines[0].uiLine, 0u);
}

/* ---- XmlParseGetSiteInfoResult: replies as servers send them ----------------------- */

TEST_F(SiteInfoTest, Soap11ReplyFillsTheRecord)
{
    const std::string strBody = SampleReply("endpoint-message-soap11.xml");
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    ASSERT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiErrCode, 0u);
    EXPECT_STREQ(stResult.acUri, "sip:80012345@uc.example.com");
    EXPECT_STREQ(stResult.acRegPassword, "Reg#Pass-2024");
    EXPECT_STREQ(stResult.acRegIpAddress, "10.20.30.40");
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(SiteInfoTest, Soap12ReplyWithIndentedValuesAndBlanksInTheJson)
{
    const std::string strBody = SampleReply("endpoint-message-soap12.xml");
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    ASSERT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiErrCode, 0u);
    EXPECT_STREQ(stResult.acUri, "sip:80012346@uc.example.com");
    EXPECT_STREQ(stResult.acRegPassword, "s3cret");
    EXPECT_STREQ(stResult.acRegIpAddress, "192.168.100.200");
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(SiteInfoTest, CrLfReplyWithPrefixedErrCodeAndEscapedJson)
{
    const std::string strBody = SampleReply("endpoint-message-wcf-crlf.xml");
    ASSERT_NE(strBody.find("\r\n"), std::string::npos);
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    ASSERT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_STREQ(stResult.acUri, "sip:80012347@uc.example.com");
    EXPECT_STREQ(stResult.acRegPassword, "W&cf-Pass");
    EXPECT_STREQ(stResult.acRegIpAddress, "172.16.0.9");
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(SiteInfoTest, DefaultNamespaceEnvelopeWithCdataResult)
{
    const std::string strBody = SampleReply("endpoint-message-default-ns.xml");
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    ASSERT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_STREQ(stResult.acUri, "sip:80012348@uc.example.com");
    EXPECT_STREQ(stResult.acRegPassword, "cdata<pass>");
    EXPECT_STREQ(stResult.acRegIpAddress, "10.0.0.8");
}

TEST_F(SiteInfoTest, ServerErrorCodeIsReturnedInTheRecordAndTheJsonIsNotRead)
{
    const std::string strBody = SampleReply("endpoint-message-server-error.xml");
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    ASSERT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiErrCode, 10002u);
    EXPECT_TRUE(AllZero(stResult.acUri, sizeof(stResult.acUri)));
    EXPECT_TRUE(AllZero(stResult.acRegPassword, sizeof(stResult.acRegPassword)));
    EXPECT_TRUE(AllZero(stResult.acRegIpAddress, sizeof(stResult.acRegIpAddress)));
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(SiteInfoTest, SoapFaultHasNoResponseElement)
{
    const std::string strBody = ReadTestFile("services/endpoint-message-fault.xml");
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult = SentinelRecord();
    const tagLOGIN_S_ENDPOINT_MSG_RESULT stBefore = stResult;

    EXPECT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), KTL_XML_ERR_NOT_FOUND);

    EXPECT_TRUE(SameBytes(stResult, stBefore));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(Format("L0 GetEndPointMessageJson: get node [GetEndPointMessageJsonResponse] failed "
                                   "errno=[0x%x]!",
                                   KTL_XML_ERR_NOT_FOUND)));
}

/* ---- failures, each with its code and trace ---------------------------------------- */

TEST_F(SiteInfoTest, TextThatIsNotXmlYieldsTheLibraryCodeAndTouchesNothing)
{
    const char *pcBody = "<soap:Envelope>";
    _NODE *pstProbe = nullptr;
    const uint32_t uiLibraryCode = KTL_XML_Parse(pcBody, &pstProbe);
    ASSERT_GT(uiLibraryCode, 255u);
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult = SentinelRecord();
    const tagLOGIN_S_ENDPOINT_MSG_RESULT stBefore = stResult;

    EXPECT_EQ(XmlParseGetSiteInfoResult(pcBody, &stResult), uiLibraryCode);

    EXPECT_TRUE(SameBytes(stResult, stBefore));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(Format("L0 GetEndPointMessageJson: KTL_XML_Parse failed errno=[0x%x]!", uiLibraryCode)));
}

TEST_F(SiteInfoTest, NullBodyIsHandedToTheLibrary)
{
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult = SentinelRecord();
    const tagLOGIN_S_ENDPOINT_MSG_RESULT stBefore = stResult;

    EXPECT_EQ(XmlParseGetSiteInfoResult(nullptr, &stResult), KTL_XML_ERR_NULL_ARG);

    EXPECT_TRUE(SameBytes(stResult, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre(Format("L0 GetEndPointMessageJson: KTL_XML_Parse failed errno=[0x%x]!",
                                                     KTL_XML_ERR_NULL_ARG)));
}

TEST_F(SiteInfoTest, MissingEnvelopeReleasesTheDocumentAndReturnsTheLookupCode)
{
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult = SentinelRecord();
    const tagLOGIN_S_ENDPOINT_MSG_RESULT stBefore = stResult;

    EXPECT_EQ(XmlParseGetSiteInfoResult("<Fault><Body/></Fault>", &stResult), KTL_XML_ERR_NOT_FOUND);

    EXPECT_TRUE(SameBytes(stResult, stBefore));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(Format("L0 GetEndPointMessageJson: get node [Soap:Envelope] failed errno=[0x%x]!",
                                   KTL_XML_ERR_NOT_FOUND)));
}

TEST_F(SiteInfoTest, MissingBodyReleasesTheDocumentAndReturnsTheLookupCode)
{
    const std::string strBody = std::string("<soap:Envelope xmlns:soap=\"") + SOAP_NS + "\"/>";
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    EXPECT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), KTL_XML_ERR_NOT_FOUND);

    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(Format("L0 GetEndPointMessageJson: get node [Soap:Body] failed errno=[0x%x]!",
                                   KTL_XML_ERR_NOT_FOUND)));
}

TEST_F(SiteInfoTest, MissingResponseElementYieldsTheLookupCode)
{
    const std::string strBody = Envelope("    <OtherResponse xmlns=\"http://tempuri.org/\"/>\n");
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    EXPECT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), KTL_XML_ERR_NOT_FOUND);

    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(Format("L0 GetEndPointMessageJson: get node [GetEndPointMessageJsonResponse] failed "
                                   "errno=[0x%x]!",
                                   KTL_XML_ERR_NOT_FOUND)));
}

TEST_F(SiteInfoTest, ResponseWithoutXmlnsYieldsTheAttributeCode)
{
    const std::string strBody =
        Envelope("    <GetEndPointMessageJsonResponse>\n" + ErrCode("0") + Result(ThreeMembers("u", "p", "1.2.3.4")) +
                 "    </GetEndPointMessageJsonResponse>\n");
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult = SentinelRecord();
    const tagLOGIN_S_ENDPOINT_MSG_RESULT stBefore = stResult;

    EXPECT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), KTL_XML_ERR_NOT_FOUND);

    EXPECT_TRUE(SameBytes(stResult, stBefore));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(Format("L0 GetEndPointMessageJson: get Attr of Response failed errno=[0x%x]!",
                                   KTL_XML_ERR_NOT_FOUND)));
}

TEST_F(SiteInfoTest, NamespaceDeclaredThroughAPrefixIsNotTheXmlnsAttribute)
{
    const std::string strBody = Envelope(std::string("    <m:GetEndPointMessageJsonResponse xmlns:m=\"") +
                                         LOGIN_MGMT_SERVICE_NAMESPACE + "\">\n" + ErrCode("0") +
                                         "    </m:GetEndPointMessageJsonResponse>\n");
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    EXPECT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), KTL_XML_ERR_NOT_FOUND);

    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(Format("L0 GetEndPointMessageJson: get Attr of Response failed errno=[0x%x]!",
                                   KTL_XML_ERR_NOT_FOUND)));
}

TEST_F(SiteInfoTest, DefaultNamespaceIsTempuri)
{
    /* The build's default; a deployment overrides it with the CMake cache variable. */
    EXPECT_STREQ(LOGIN_MGMT_SERVICE_NAMESPACE, "http://tempuri.org/");
}

TEST_F(SiteInfoTest, ForeignNamespaceIsRejectedWithOne)
{
    const std::string strNs = LOGIN_MGMT_SERVICE_NAMESPACE;
    std::string strUpper = strNs;
    for (char &c : strUpper) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    std::string strOneCapital = strNs;
    strOneCapital[strOneCapital.size() / 2] =
        static_cast<char>(std::toupper(static_cast<unsigned char>(strOneCapital[strOneCapital.size() / 2])));
    const std::string astForeign[] = {
        strNs.substr(0, strNs.size() - 1), /* trailing character (the slash) missing */
        strNs + "/",                       /* one character more */
        strNs + "x",
        strUpper,                          /* case differs */
        strOneCapital,
        "",
        strNs.substr(0, 1),
        "http://example.com/other/",
    };
    for (const std::string &strForeign : astForeign) {
        ASSERT_NE(strForeign, strNs);
        m_traces.Clear();
        const std::string strBody = Reply(ErrCode("0") + Result(ThreeMembers("u", "p", "1.2.3.4")), strForeign);
        tagLOGIN_S_ENDPOINT_MSG_RESULT stResult = SentinelRecord();
        const tagLOGIN_S_ENDPOINT_MSG_RESULT stBefore = stResult;

        EXPECT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 1u) << strForeign;

        EXPECT_TRUE(SameBytes(stResult, stBefore)) << strForeign;
        EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 illeqal Response")) << strForeign;
        EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
    }
}

TEST_F(SiteInfoTest, TempuriWithoutTrailingSlashOrInCapitalsIsRejected)
{
    for (const char *pcForeign : {"http://tempuri.org", "HTTP://TEMPURI.ORG/", "http://Tempuri.org/"}) {
        m_traces.Clear();
        const std::string strBody = Reply(ErrCode("0"), pcForeign);
        tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};
        EXPECT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 1u) << pcForeign;
        EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 illeqal Response")) << pcForeign;
    }
}

TEST_F(SiteInfoTest, MissingResultElementYieldsTheLookupCode)
{
    const std::string strBody = Reply(Result(ThreeMembers("u", "p", "1.2.3.4")));
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult = SentinelRecord();
    const tagLOGIN_S_ENDPOINT_MSG_RESULT stBefore = stResult;

    EXPECT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), KTL_XML_ERR_NOT_FOUND);

    EXPECT_TRUE(SameBytes(stResult, stBefore));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(Format("L0 GetEndPointMessageJson: get node [GetEndPointMessageJsonResult] failed "
                                   "errno=[0x%x]!",
                                   KTL_XML_ERR_NOT_FOUND)));
}

TEST_F(SiteInfoTest, MissingErrCodeYieldsTheLookupCode)
{
    const std::string strBody = Reply("      <GetEndPointMessageJsonResult><ErrMsg>x</ErrMsg></GetEndPointMessageJsonResult>\n" +
                                      Result(ThreeMembers("u", "p", "1.2.3.4")));
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult = SentinelRecord();
    const tagLOGIN_S_ENDPOINT_MSG_RESULT stBefore = stResult;

    EXPECT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), KTL_XML_ERR_NOT_FOUND);

    EXPECT_TRUE(SameBytes(stResult, stBefore));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(UrlMiss("GetEndPointMessageJsonResult.ErrCode"),
                            Format("L0 GetEndPointMessageJson: get node [ErrCode] failed errno=[0x%x]!",
                                   KTL_XML_ERR_NOT_FOUND)));
}

TEST_F(SiteInfoTest, EmptyErrCodeFailsWithTheLastCodeZero)
{
    for (const char *pcErrCode : {"<ErrCode></ErrCode>", "<ErrCode/>", "<ErrCode>\n   </ErrCode>"}) {
        m_traces.Clear();
        const std::string strBody =
            Reply(std::string("      <GetEndPointMessageJsonResult>") + pcErrCode + "</GetEndPointMessageJsonResult>\n" +
                  Result(ThreeMembers("u", "p", "1.2.3.4")));
        tagLOGIN_S_ENDPOINT_MSG_RESULT stResult = SentinelRecord();
        const tagLOGIN_S_ENDPOINT_MSG_RESULT stBefore = stResult;

        EXPECT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u) << pcErrCode;

        EXPECT_TRUE(SameBytes(stResult, stBefore)) << pcErrCode;
        EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 GetEndPointMessageJson: get node [ErrCode] failed errno=[0x0]!"))
            << pcErrCode;
    }
}

TEST_F(SiteInfoTest, NonZeroErrCodeReturnsZeroWithTheCodeAndReadsNoJson)
{
    const std::string strBody = Reply(ErrCode("7") + Result(ThreeMembers("u", "p", "1.2.3.4")));
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    EXPECT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiErrCode, 7u);
    EXPECT_STREQ(stResult.acUri, "");
    EXPECT_STREQ(stResult.acRegPassword, "");
    EXPECT_STREQ(stResult.acRegIpAddress, "");
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(SiteInfoTest, ErrCodeIsConvertedWithAtoi)
{
    const struct {
        const char *pcText;
        uint32_t uiExpected;
    } astCases[] = {{"42", 42}, {"  9", 9}, {"12abc", 12}, {"0x1F", 0}, {"010", 10}, {"-1", 0xFFFFFFFFu}};
    for (const auto &stCase : astCases) {
        const std::string strBody = Reply(ErrCode(stCase.pcText));
        tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};
        EXPECT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u) << stCase.pcText;
        EXPECT_EQ(stResult.uiErrCode, stCase.uiExpected) << stCase.pcText;
    }
}

TEST_F(SiteInfoTest, ErrCodeOfAbcConvertsToZeroAndIsSuccess)
{
    const std::string strBody = Reply(ErrCode("abc") + Result(ThreeMembers("sip:a@b", "pw", "10.1.1.1")));
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    EXPECT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiErrCode, 0u);
    EXPECT_STREQ(stResult.acUri, "sip:a@b");
    EXPECT_STREQ(stResult.acRegPassword, "pw");
    EXPECT_STREQ(stResult.acRegIpAddress, "10.1.1.1");
}

TEST_F(SiteInfoTest, MissingResultTextReturnsZeroWithNoResultTrace)
{
    const std::string strBody = Reply(ErrCode("0"));
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    EXPECT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiErrCode, 0u);
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(UrlMiss("GetEndPointMessageJsonResponse.result"), "L0 no result"));
}

TEST_F(SiteInfoTest, EmptyResultElementCountsAsMissing)
{
    const std::string strBody = Reply(ErrCode("0") + "      <result/>\n");
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    EXPECT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 no result"));
}

TEST_F(SiteInfoTest, TracesNameTheParserWithOneLinePerKey)
{
    const std::string strBody = Reply("      <GetEndPointMessageJsonResult/>\n");
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};
    (void)XmlParseGetSiteInfoResult(strBody.c_str(), &stResult);
    const std::vector<TraceLine> vecLines = m_traces.Lines();
    ASSERT_EQ(vecLines.size(), 2u);
    for (const TraceLine &stLine : vecLines) {
        EXPECT_EQ(stLine.strFunc, "XmlParseGetSiteInfoResult");
        EXPECT_EQ(stLine.strFile, SERVICES_FILE);
    }
    EXPECT_EQ(vecLines[0].uiLevel, 1u);
    EXPECT_EQ(vecLines[1].uiLevel, 0u);
    EXPECT_NE(vecLines[0].uiLine, vecLines[1].uiLine);
}

/* ---- the embedded JSON through the whole reply ------------------------------------- */

TEST_F(SiteInfoTest, PasswordHoldingACommaStaysEmptyWhileTheOthersAreFilled)
{
    const std::string strBody = Success(ThreeMembers("sip:c@d", "pa,ss", "10.2.2.2"));
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    ASSERT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_STREQ(stResult.acUri, "sip:c@d");
    EXPECT_TRUE(AllZero(stResult.acRegPassword, sizeof(stResult.acRegPassword)));
    EXPECT_STREQ(stResult.acRegIpAddress, "10.2.2.2");
}

TEST_F(SiteInfoTest, BlankBeforeTheValuesQuoteDoesNoHarm)
{
    const std::string strBody =
        Success("{\"Uri\": \"sip:e@f\",\"RegPassword\":   \"pw\",\"RegIpAddress\":\t\"10.3.3.3\"}");
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    ASSERT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_STREQ(stResult.acUri, "sip:e@f");
    EXPECT_STREQ(stResult.acRegPassword, "pw");
    EXPECT_STREQ(stResult.acRegIpAddress, "10.3.3.3");
}

TEST_F(SiteInfoTest, FifteenCharacterAddressFitsWithTheClearedTerminator)
{
    const std::string strBody = Success(ThreeMembers("u", "p", "192.168.100.200"));
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    ASSERT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_STREQ(stResult.acRegIpAddress, "192.168.100.200");
}

TEST_F(SiteInfoTest, SixteenCharacterAddressFillsTheFieldWithoutTerminator)
{
    const std::string strIp = "192.168.100.2001";
    ASSERT_EQ(strIp.size(), 16u);
    const std::string strBody = Success(ThreeMembers("u", "p", strIp));
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    ASSERT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(0, std::memcmp(stResult.acRegIpAddress, strIp.data(), 16));
    EXPECT_STREQ(stResult.acRegPassword, "p") << "the field before it is intact";
}

TEST_F(SiteInfoTest, SeventeenCharacterAddressIsNotCopied)
{
    const std::string strBody = Success(ThreeMembers("u", "p", "192.168.100.20012"));
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    ASSERT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_TRUE(AllZero(stResult.acRegIpAddress, sizeof(stResult.acRegIpAddress)));
    EXPECT_STREQ(stResult.acUri, "u");
}

TEST_F(SiteInfoTest, KeyTextInsideAnEarlierMemberNameIsTakenFromThere)
{
    const std::string strBody =
        Success("{\"ProxyUri\":\"sip:proxy@x\",\"Uri\":\"sip:me@x\",\"RegPassword\":\"p\",\"RegIpAddress\":\"1.1.1.1\"}");
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    ASSERT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_STREQ(stResult.acUri, "sip:proxy@x");
}

TEST_F(SiteInfoTest, MembersMayComeInAnyOrder)
{
    const std::string strBody =
        Success("{\"RegIpAddress\":\"10.4.4.4\",\"RegPassword\":\"pw\",\"Uri\":\"sip:last@x\"}");
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    ASSERT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_STREQ(stResult.acUri, "sip:last@x");
    EXPECT_STREQ(stResult.acRegPassword, "pw");
    EXPECT_STREQ(stResult.acRegIpAddress, "10.4.4.4");
}

TEST_F(SiteInfoTest, ResultTextThatIsNotJsonLeavesTheStringsEmpty)
{
    const std::string strBody = Success("no members here");
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};

    ASSERT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_TRUE(AllZero(&stResult, sizeof(stResult)));
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

/* ---- the wipe of the result text --------------------------------------------------- */

TEST_F(SiteInfoTest, ObserverSeesTheResultTextOfADocumentReleasedWithoutWipe)
{
    /* Control for the wipe test below: the same observation finds the text when nobody
     * wiped it, so its absence there is the module's doing. */
    const std::string strJson = ThreeMembers("sip:w@x", "Wipe-Me-7731", "10.9.8.7");
    const std::string strBody = Success(strJson);
    FreedXmlMemory stFreed;
    _NODE *pstRoot = nullptr;
    ASSERT_EQ(KTL_XML_Parse(strBody.c_str(), &pstRoot), 0u);
    KTL_XML_FreeNode(pstRoot);

    const size_t uiAt = strBody.find(strJson);
    EXPECT_EQ(stFreed.FreedBodyBytes(strBody, "GetEndPointMessageJsonResponse", uiAt, strJson.size()), strJson);
}

TEST_F(SiteInfoTest, ResultTextIsAllZeroInTheDocumentAfterSuccess)
{
    const std::string strJson = ThreeMembers("sip:w@x", "Wipe-Me-7731", "10.9.8.7");
    const std::string strBody = Success(strJson);
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};
    FreedXmlMemory stFreed;

    ASSERT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_STREQ(stResult.acRegPassword, "Wipe-Me-7731");
    const size_t uiAt = strBody.find(strJson);
    const char *pcAnchor = "GetEndPointMessageJsonResponse";
    EXPECT_EQ(stFreed.FreedBodyBytes(strBody, pcAnchor, uiAt, strJson.size()), std::string(strJson.size(), '\0'))
        << "the document's text was released through pugixml, its value wiped";
    EXPECT_EQ(stFreed.FreedBodyBytes(strBody, pcAnchor, uiAt - std::strlen("result>"), 6), "result")
        << "only the value was wiped";
    EXPECT_EQ(stFreed.BlockHolding("Wipe-Me-7731"), nullptr);
}

TEST_F(SiteInfoTest, ResultTextOfAReplyWithServerErrorIsNotRead)
{
    /* The text is read - and wiped - only when the error code is 0. */
    const std::string strJson = ThreeMembers("sip:w@x", "Kept-On-Error", "10.9.8.7");
    const std::string strBody = Reply(ErrCode("3") + Result(strJson));
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult{};
    FreedXmlMemory stFreed;

    ASSERT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), 0u);

    EXPECT_EQ(stResult.uiErrCode, 3u);
    EXPECT_NE(stFreed.BlockHolding(strJson), nullptr);
}

TEST_F(SiteInfoTest, TextOutsideTheRootIsRefusedWithTheLibraryCode)
{
    const std::string strBody = Success(ThreeMembers("sip:a@b", "pw", "10.0.0.1")) + "<!-- end -->\r\n0\r\n\r\n";
    tagLOGIN_S_ENDPOINT_MSG_RESULT stResult = SentinelRecord();
    const tagLOGIN_S_ENDPOINT_MSG_RESULT stBefore = stResult;

    EXPECT_EQ(XmlParseGetSiteInfoResult(strBody.c_str(), &stResult), KTL_XML_ERR_TEXT_OUTSIDE_ROOT);

    EXPECT_TRUE(SameBytes(stResult, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 GetEndPointMessageJson: KTL_XML_Parse failed errno=[0x1008]!"));
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
}

} // namespace
