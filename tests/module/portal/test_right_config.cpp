/*
 * Right-configuration answer and the profile save: the counted copies of 65/33/65 bytes,
 * the profile written once to a created or truncated file of mode 0766, the refusal that
 * leaves the file alone, and the saved-profile path that keeps the document.
 */
#include <gmock/gmock.h>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "portal_test.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace portal_test;

namespace {

class RightConfigTest : public ModuleTest {
protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        char acTemplate[] = "/tmp/portal-profile-XXXXXX";
        ASSERT_NE(mkdtemp(acTemplate), nullptr);
        m_strDir = acTemplate;
        m_strFile = m_strDir + "/profile.xml";
    }
    void TearDown() override
    {
        if (DIR *pDir = opendir(m_strDir.c_str())) {
            while (dirent *pEntry = readdir(pDir)) {
                std::string strName = pEntry->d_name;
                if (strName != "." && strName != "..") {
                    unlink((m_strDir + "/" + strName).c_str());
                }
            }
            closedir(pDir);
        }
        rmdir(m_strDir.c_str());
        ModuleTest::TearDown();
    }

    static std::string Answer(const std::string &strInner)
    {
        return "<?xml version=\"1.0\"?><root>" + strInner + "</root>";
    }
    static std::string ReadFile(const std::string &strPath)
    {
        std::ifstream file(strPath, std::ios::binary);
        std::ostringstream stream;
        stream << file.rdbuf();
        return stream.str();
    }
    static void WriteFile(const std::string &strPath, const std::string &strText)
    {
        std::ofstream file(strPath, std::ios::binary | std::ios::trunc);
        file << strText;
    }
    bool FileExists() const { return access(m_strFile.c_str(), F_OK) == 0; }
    /* A refused answer (retcode 1, so no profile) carrying one text element. */
    uint32_t ParseRefusalWith(const std::string &strElement, const std::string &strText,
                              tagLOGIN_S_ATRIUM_RIGHT_CONFIG *pstConfig) const
    {
        std::string strBody =
            Answer("<retcode>1</retcode><" + strElement + ">" + strText + "</" + strElement + ">");
        return XmlParseAtriumRightConfig(strBody.c_str(), m_strFile.c_str(), pstConfig);
    }

    std::string m_strDir;
    std::string m_strFile;
};

/* Sets the process umask for one test and restores it. */
class UmaskScope {
public:
    explicit UmaskScope(mode_t uiMask) : m_uiSaved(umask(uiMask)) {}
    ~UmaskScope() { umask(m_uiSaved); }
    UmaskScope(const UmaskScope &) = delete;
    UmaskScope &operator=(const UmaskScope &) = delete;

private:
    mode_t m_uiSaved;
};

const char PROFILE_TEXT[] = "[sip]\nport=5060\nsrtp=on\n";

TEST_F(RightConfigTest, AcceptedAnswerFillsTheRecordSavesTheProfileAndKeepsTheDocument)
{
    ExpectDocumentsKept(1);
    UmaskScope stMask(0);
    tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig{};
    std::string strBody = Answer("<retcode>0</retcode><devkey>AB12-CD34</devkey><devtype>desk-phone</devtype>"
                                 "<timestamp>20240102T030405Z</timestamp><profile>" +
                                 std::string(PROFILE_TEXT) + "</profile>");

    ASSERT_EQ(XmlParseAtriumRightConfig(strBody.c_str(), m_strFile.c_str(), &stConfig), 0u);

    EXPECT_EQ(stConfig.uiRetCode, 0u);
    EXPECT_STREQ(stConfig.acDevKey, "AB12-CD34");
    EXPECT_STREQ(stConfig.acDevType, "desk-phone");
    EXPECT_STREQ(stConfig.acTimestamp, "20240102T030405Z");
    EXPECT_EQ(ReadFile(m_strFile), PROFILE_TEXT) << "the text exactly, no terminator, no added line end";
    struct stat stInfo {};
    ASSERT_EQ(stat(m_strFile.c_str(), &stInfo), 0);
    EXPECT_EQ(stInfo.st_mode & 07777, 0766u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L3 filename:" + m_strFile));
    EXPECT_EQ(LiveDocumentsSinceStart(), 1u);
}

TEST_F(RightConfigTest, ProfileIsSavedAsTheLibraryReturnsIt)
{
    ExpectDocumentsKept(1);
    tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig{};
    std::string strBody = Answer("<retcode>0</retcode><profile><![CDATA[<cfg a=\"1\">x &amp; y</cfg>]]></profile>");

    ASSERT_EQ(XmlParseAtriumRightConfig(strBody.c_str(), m_strFile.c_str(), &stConfig), 0u);

    EXPECT_EQ(ReadFile(m_strFile), "<cfg a=\"1\">x &amp; y</cfg>");
}

TEST_F(RightConfigTest, SavingOverAnExistingLongerFileReplacesItsContentCompletely)
{
    ExpectDocumentsKept(1);
    WriteFile(m_strFile, std::string(4096, 'o'));
    tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig{};

    ASSERT_EQ(XmlParseAtriumRightConfig(Answer("<retcode>0</retcode><profile>short</profile>").c_str(),
                                        m_strFile.c_str(), &stConfig),
              0u);

    EXPECT_EQ(ReadFile(m_strFile), "short");
}

TEST_F(RightConfigTest, RefusalWithAProfileReturnsZeroAndLeavesTheFileAlone)
{
    WriteFile(m_strFile, "previous profile");
    tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig{};
    std::string strBody = Answer("<retcode>5</retcode><devkey>K</devkey><profile>new profile</profile>");

    ASSERT_EQ(XmlParseAtriumRightConfig(strBody.c_str(), m_strFile.c_str(), &stConfig), 0u);

    EXPECT_EQ(stConfig.uiRetCode, 5u);
    EXPECT_STREQ(stConfig.acDevKey, "K");
    EXPECT_EQ(ReadFile(m_strFile), "previous profile");
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("root.devtype"), UrlMiss("root.timestamp")));
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
}

TEST_F(RightConfigTest, RetCodeIsConvertedInBaseZero)
{
    tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig{};
    ASSERT_EQ(XmlParseAtriumRightConfig(Answer("<retcode>0x1F</retcode><profile>p</profile>").c_str(),
                                        m_strFile.c_str(), &stConfig),
              0u);
    EXPECT_EQ(stConfig.uiRetCode, 31u);
    EXPECT_FALSE(FileExists());
}

TEST_F(RightConfigTest, MissingRetCodeKeepsTheCallersNonZeroCodeAndSkipsTheProfile)
{
    tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig{};
    stConfig.uiRetCode = 9;
    ASSERT_EQ(XmlParseAtriumRightConfig(Answer("<profile>p</profile>").c_str(), m_strFile.c_str(), &stConfig), 0u);
    EXPECT_EQ(stConfig.uiRetCode, 9u);
    EXPECT_FALSE(FileExists());
}

TEST_F(RightConfigTest, MissingRetCodeWithTheCallersZeroSavesTheProfile)
{
    ExpectDocumentsKept(1);
    tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig{};
    ASSERT_EQ(XmlParseAtriumRightConfig(Answer("<profile>p</profile>").c_str(), m_strFile.c_str(), &stConfig), 0u);
    EXPECT_EQ(ReadFile(m_strFile), "p");
}

TEST_F(RightConfigTest, AcceptedAnswerWithoutProfileReturnsTheLookupCode)
{
    tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig{};
    std::string strBody = Answer("<retcode>0</retcode><devkey>k</devkey><devtype>t</devtype><timestamp>1</timestamp>");

    EXPECT_EQ(XmlParseAtriumRightConfig(strBody.c_str(), m_strFile.c_str(), &stConfig), KTL_XML_ERR_NOT_FOUND);

    EXPECT_STREQ(stConfig.acDevKey, "k") << "fields read before the failure stay";
    EXPECT_FALSE(FileExists());
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre(UrlMiss("root.profile"),
                            Format("L0 atrium: GetNodeByUrl Profile failed ulRet[0x%x]", KTL_XML_ERR_NOT_FOUND)));
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
}

TEST_F(RightConfigTest, EmptyProfileCountsAsMissingAndReturnsZero)
{
    for (const char *pcProfile : {"<profile></profile>", "<profile/>", "<profile>  \n </profile>"}) {
        m_traces.Clear();
        tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig{};
        std::string strBody = Answer(std::string("<retcode>0</retcode><devkey>k</devkey><devtype>t</devtype>"
                                                 "<timestamp>1</timestamp>") +
                                     pcProfile);

        EXPECT_EQ(XmlParseAtriumRightConfig(strBody.c_str(), m_strFile.c_str(), &stConfig), 0u) << pcProfile;

        EXPECT_FALSE(FileExists()) << pcProfile;
        EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 atrium: GetNodeByUrl Profile failed ulRet[0x0]")) << pcProfile;
    }
}

TEST_F(RightConfigTest, DeviceKeyOf64CharactersIsCopiedAndOneOf65IsNot)
{
    tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig{};
    ASSERT_EQ(ParseRefusalWith("devkey", std::string(64, 'k'), &stConfig), 0u);
    EXPECT_EQ(std::string(stConfig.acDevKey), std::string(64, 'k'));

    ASSERT_EQ(ParseRefusalWith("devkey", std::string(65, 'k'), &stConfig), 0u);
    EXPECT_STREQ(stConfig.acDevKey, "");
}

TEST_F(RightConfigTest, DeviceTypeOf32CharactersIsCopiedAndOneOf33IsNot)
{
    tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig{};
    ASSERT_EQ(ParseRefusalWith("devtype", std::string(32, 't'), &stConfig), 0u);
    EXPECT_EQ(std::string(stConfig.acDevType), std::string(32, 't'));

    ASSERT_EQ(ParseRefusalWith("devtype", std::string(33, 't'), &stConfig), 0u);
    EXPECT_STREQ(stConfig.acDevType, "");
}

TEST_F(RightConfigTest, TimestampOf64CharactersIsCopiedAndOneOf65IsNot)
{
    tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig{};
    ASSERT_EQ(ParseRefusalWith("timestamp", std::string(64, '9'), &stConfig), 0u);
    EXPECT_EQ(std::string(stConfig.acTimestamp), std::string(64, '9'));

    ASSERT_EQ(ParseRefusalWith("timestamp", std::string(65, '9'), &stConfig), 0u);
    EXPECT_STREQ(stConfig.acTimestamp, "");
}

TEST_F(RightConfigTest, MissingTextsLeaveTheirFieldsAsGivenWithLookupTracesInOrder)
{
    tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig = SentinelRecord<tagLOGIN_S_ATRIUM_RIGHT_CONFIG>();
    const tagLOGIN_S_ATRIUM_RIGHT_CONFIG stBefore = stConfig;

    ASSERT_EQ(XmlParseAtriumRightConfig(Answer("").c_str(), m_strFile.c_str(), &stConfig), 0u);

    EXPECT_TRUE(SameBytes(stConfig, stBefore));
    EXPECT_THAT(m_traces.Texts(), ElementsAre(UrlMiss("root.retcode"), UrlMiss("root.devkey"),
                                              UrlMiss("root.devtype"), UrlMiss("root.timestamp")));
}

TEST_F(RightConfigTest, NullFileNameFailsTheSaveWithOneAndReleasesTheDocument)
{
    tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig{};
    EXPECT_EQ(XmlParseAtriumRightConfig(Answer("<retcode>0</retcode><devkey>k</devkey><devtype>t</devtype>"
                                               "<timestamp>1</timestamp><profile>p</profile>")
                                            .c_str(),
                                        nullptr, &stConfig),
              1u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 atrium: XmlBody save failed, ulRet[0x1]"));
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
}

TEST_F(RightConfigTest, FileThatCannotBeOpenedFailsWithOneAndReleasesTheDocument)
{
    tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig{};
    const std::string strMissingDir = m_strDir + "/no-such-dir/profile.xml";
    EXPECT_EQ(XmlParseAtriumRightConfig(Answer("<retcode>0</retcode><devkey>k</devkey><devtype>t</devtype>"
                                               "<timestamp>1</timestamp><profile>p</profile>")
                                            .c_str(),
                                        strMissingDir.c_str(), &stConfig),
              1u);
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("L3 filename:" + strMissingDir, "L0 atrium: XmlBody save failed, ulRet[0x1]"));
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
}

TEST_F(RightConfigTest, ShortWriteFailsWithOneAndReleasesTheDocument)
{
    if (access("/dev/full", W_OK) != 0) {
        GTEST_SKIP() << "/dev/full is not available";
    }
    tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig{};
    EXPECT_EQ(XmlParseAtriumRightConfig(Answer("<retcode>0</retcode><devkey>k</devkey><devtype>t</devtype>"
                                               "<timestamp>1</timestamp><profile>p</profile>")
                                            .c_str(),
                                        "/dev/full", &stConfig),
              1u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L3 filename:/dev/full", "L0 atrium: XmlBody save failed, ulRet[0x1]"));
    EXPECT_EQ(LiveDocumentsSinceStart(), 0u);
}

TEST_F(RightConfigTest, NullBodyOrRecordYieldsTwo)
{
    tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig = SentinelRecord<tagLOGIN_S_ATRIUM_RIGHT_CONFIG>();
    const tagLOGIN_S_ATRIUM_RIGHT_CONFIG stBefore = stConfig;

    EXPECT_EQ(XmlParseAtriumRightConfig(nullptr, m_strFile.c_str(), &stConfig), 2u);
    EXPECT_EQ(XmlParseAtriumRightConfig(Answer("<retcode>0</retcode><profile>p</profile>").c_str(), m_strFile.c_str(),
                                        nullptr),
              2u);

    EXPECT_TRUE(SameBytes(stConfig, stBefore));
    EXPECT_FALSE(FileExists());
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L0 atrium: pcXmlBody or pstConfigResult is null",
                                              "L0 atrium: pcXmlBody or pstConfigResult is null"));
}

TEST_F(RightConfigTest, TextThatIsNotXmlYieldsTheLibraryCodeUnchanged)
{
    for (const char *pcBody : {"", "<root><retcode>0</retcode>", "denied"}) {
        m_traces.Clear();
        const uint32_t uiLibraryCode = LibraryParseCode(pcBody);
        ASSERT_GT(uiLibraryCode, 255u) << pcBody;
        tagLOGIN_S_ATRIUM_RIGHT_CONFIG stConfig = SentinelRecord<tagLOGIN_S_ATRIUM_RIGHT_CONFIG>();
        const tagLOGIN_S_ATRIUM_RIGHT_CONFIG stBefore = stConfig;

        EXPECT_EQ(XmlParseAtriumRightConfig(pcBody, m_strFile.c_str(), &stConfig), uiLibraryCode) << pcBody;

        EXPECT_TRUE(SameBytes(stConfig, stBefore)) << pcBody;
        EXPECT_THAT(m_traces.Texts(),
                    ElementsAre(Format("L0 atrium: Parse XMLBody failed : %d !!", static_cast<int>(uiLibraryCode))))
            << pcBody;
    }
}

/* ---- the save on its own ---- */

TEST_F(RightConfigTest, SaveWritesTheTextWithoutTerminatorAndMode0766)
{
    UmaskScope stMask(0);
    ASSERT_EQ(XmlSaveAtriumXmlBody("line one\nline two", m_strFile.c_str()), 0u);
    EXPECT_EQ(ReadFile(m_strFile), "line one\nline two");
    struct stat stInfo {};
    ASSERT_EQ(stat(m_strFile.c_str(), &stInfo), 0);
    EXPECT_EQ(stInfo.st_mode & 07777, 0766u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L3 filename:" + m_strFile));
}

TEST_F(RightConfigTest, SaveModeIsFilteredByTheUmask)
{
    UmaskScope stMask(022);
    ASSERT_EQ(XmlSaveAtriumXmlBody("x", m_strFile.c_str()), 0u);
    struct stat stInfo {};
    ASSERT_EQ(stat(m_strFile.c_str(), &stInfo), 0);
    EXPECT_EQ(stInfo.st_mode & 07777, 0744u);
}

TEST_F(RightConfigTest, SaveTruncatesAnExistingLongerFile)
{
    WriteFile(m_strFile, "a much longer previous content that must disappear");
    ASSERT_EQ(XmlSaveAtriumXmlBody("new", m_strFile.c_str()), 0u);
    EXPECT_EQ(ReadFile(m_strFile), "new");
}

TEST_F(RightConfigTest, SaveOfAnEmptyTextLeavesAnEmptyFile)
{
    WriteFile(m_strFile, "old");
    ASSERT_EQ(XmlSaveAtriumXmlBody("", m_strFile.c_str()), 0u);
    EXPECT_EQ(ReadFile(m_strFile), "");
}

TEST_F(RightConfigTest, SaveWithANullArgumentReturnsOneWithoutATrace)
{
    EXPECT_EQ(XmlSaveAtriumXmlBody(nullptr, m_strFile.c_str()), 1u);
    EXPECT_EQ(XmlSaveAtriumXmlBody("x", nullptr), 1u);
    EXPECT_FALSE(FileExists());
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(RightConfigTest, SaveIntoAMissingDirectoryReturnsOne)
{
    const std::string strPath = m_strDir + "/absent/profile.xml";
    EXPECT_EQ(XmlSaveAtriumXmlBody("x", strPath.c_str()), 1u);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("L3 filename:" + strPath));
}

} // namespace
