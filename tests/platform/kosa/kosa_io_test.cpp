// KOSA addresses (KOSA_InetNtoa) and files (KOSA_Open/Write/Close).
#include "kosa.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

namespace {

// ---- KOSA_InetNtoa -------------------------------------------------------------------

TEST(KosaInetNtoa, FormatsNetworkOrderAddress)
{
    EXPECT_STREQ(KOSA_InetNtoa(htonl(0xC0A80001u)), "192.168.0.1");
    EXPECT_STREQ(KOSA_InetNtoa(inet_addr("10.20.30.40")), "10.20.30.40");
    EXPECT_STREQ(KOSA_InetNtoa(0), "0.0.0.0");
    EXPECT_STREQ(KOSA_InetNtoa(0xFFFFFFFFu), "255.255.255.255");
}

TEST(KosaInetNtoa, BufferIsPerThread)
{
    const char *pcMine = KOSA_InetNtoa(htonl(0x01020304u));
    std::string strOther;
    const char *pcOtherBuf = nullptr;
    std::thread other([&] {
        pcOtherBuf = KOSA_InetNtoa(htonl(0x0A0B0C0Du));
        strOther = pcOtherBuf;
    });
    other.join();
    EXPECT_NE(pcMine, pcOtherBuf);
    EXPECT_STREQ(pcMine, "1.2.3.4") << "another thread clobbered this thread's text";
    EXPECT_EQ(strOther, "10.11.12.13");
}

// ---- KOSA_Open / KOSA_Write / KOSA_Close ---------------------------------------------

class KosaFile : public ::testing::Test {
protected:
    void SetUp() override
    {
        char acTemplate[] = "/tmp/kosa_test_XXXXXX";
        ASSERT_NE(mkdtemp(acTemplate), nullptr);
        m_strDir = acTemplate;
    }
    void TearDown() override
    {
        for (const char *pcName : {"a", "b", "c", "d"}) {
            std::remove(Path(pcName).c_str());
        }
        EXPECT_EQ(rmdir(m_strDir.c_str()), 0) << "temporary directory not empty";
    }
    std::string Path(const std::string &strName) const { return m_strDir + "/" + strName; }
    static std::string Read(const std::string &strPath)
    {
        std::ifstream in(strPath, std::ios::binary);
        std::ostringstream out;
        out << in.rdbuf();
        return out.str();
    }
    std::string m_strDir;
};

constexpr uint32_t kCreateTruncWrite = KOSA_O_CREAT | KOSA_O_TRUNC | KOSA_O_WRONLY;

TEST_F(KosaFile, CreateTruncWriteUsesTheGivenMode)
{
    ASSERT_EQ(kCreateTruncWrite, 0x601u);
    const mode_t uiOldMask = umask(0);
    const int32_t iFd = KOSA_Open(Path("a").c_str(), 0x601, 0766);
    umask(uiOldMask);
    ASSERT_GE(iFd, 0);
    EXPECT_EQ(KOSA_Write(iFd, "hello", 5), 5);
    EXPECT_EQ(KOSA_Close(iFd), 0);

    struct stat st {};
    ASSERT_EQ(stat(Path("a").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0766u);
    EXPECT_EQ(Read(Path("a")), "hello");
}

TEST_F(KosaFile, UmaskApplies)
{
    const mode_t uiOldMask = umask(022);
    const int32_t iFd = KOSA_Open(Path("b").c_str(), kCreateTruncWrite, 0766);
    umask(uiOldMask);
    ASSERT_GE(iFd, 0);
    EXPECT_EQ(KOSA_Close(iFd), 0);
    struct stat st {};
    ASSERT_EQ(stat(Path("b").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0744u);
}

TEST_F(KosaFile, TruncatesAnExistingLongerFile)
{
    {
        std::ofstream out(Path("c"), std::ios::binary);
        out << "a much longer previous content";
    }
    const int32_t iFd = KOSA_Open(Path("c").c_str(), kCreateTruncWrite, 0600);
    ASSERT_GE(iFd, 0);
    EXPECT_EQ(KOSA_Write(iFd, "new", 3), 3);
    EXPECT_EQ(KOSA_Close(iFd), 0);
    EXPECT_EQ(Read(Path("c")), "new");
}

TEST_F(KosaFile, DescriptorIsClosedOnExec)
{
    const int32_t iFd = KOSA_Open(Path("d").c_str(), kCreateTruncWrite, 0600);
    ASSERT_GE(iFd, 0);
    const int iFdFlags = fcntl(iFd, F_GETFD);
    EXPECT_NE(iFdFlags & FD_CLOEXEC, 0);
    EXPECT_EQ(KOSA_Close(iFd), 0);
}

TEST_F(KosaFile, ReadOnlyAndAppendFlagsMap)
{
    int32_t iFd = KOSA_Open(Path("d").c_str(), kCreateTruncWrite, 0600);
    ASSERT_GE(iFd, 0);
    EXPECT_EQ(KOSA_Write(iFd, "ab", 2), 2);
    EXPECT_EQ(KOSA_Close(iFd), 0);

    iFd = KOSA_Open(Path("d").c_str(), KOSA_O_WRONLY | KOSA_O_APPEND, 0);
    ASSERT_GE(iFd, 0);
    EXPECT_EQ(KOSA_Write(iFd, "cd", 2), 2);
    EXPECT_EQ(KOSA_Close(iFd), 0);
    EXPECT_EQ(Read(Path("d")), "abcd");

    iFd = KOSA_Open(Path("d").c_str(), KOSA_O_RDONLY, 0);
    ASSERT_GE(iFd, 0);
    EXPECT_EQ(KOSA_Write(iFd, "x", 1), -1); // not open for writing
    char acBuf[8] = {};
    EXPECT_EQ(read(iFd, acBuf, sizeof(acBuf)), 4);
    EXPECT_EQ(KOSA_Close(iFd), 0);
}

TEST_F(KosaFile, UnknownFlagBitsAreRejected)
{
    EXPECT_EQ(KOSA_Open(Path("a").c_str(), kCreateTruncWrite | 0x4, 0600), -1);
    EXPECT_EQ(KOSA_Open(Path("a").c_str(), kCreateTruncWrite | 0x1000, 0600), -1);
    EXPECT_EQ(KOSA_Open(Path("a").c_str(), 0x80000000u, 0600), -1);
    EXPECT_EQ(access(Path("a").c_str(), F_OK), -1) << "a rejected open created the file";
}

TEST_F(KosaFile, WriteOnlyTogetherWithReadWriteIsRejected)
{
    // Not an unknown bit, but no access mode is both; refused rather than guessed.
    EXPECT_EQ(KOSA_Open(Path("a").c_str(), KOSA_O_CREAT | KOSA_O_WRONLY | KOSA_O_RDWR, 0600), -1);
    EXPECT_EQ(access(Path("a").c_str(), F_OK), -1);
}

TEST_F(KosaFile, FailuresReturnMinusOne)
{
    EXPECT_EQ(KOSA_Open(nullptr, kCreateTruncWrite, 0600), -1);
    EXPECT_EQ(KOSA_Open(Path("missing/x").c_str(), kCreateTruncWrite, 0600), -1);
    EXPECT_EQ(KOSA_Open(Path("a").c_str(), KOSA_O_RDONLY, 0), -1); // does not exist
    EXPECT_EQ(KOSA_Write(-1, "x", 1), -1);
    EXPECT_EQ(KOSA_Close(-1), -1);
}

} // namespace
