/*
 * login_address_test.cpp - CheckIsDomain and LoginDataGetServerFormString.
 *
 * CheckIsDomain is run over every class of text it must tell apart: host names (answer
 * non-zero), and null, empty, IPv4 and IPv6 literals and text that is no host name
 * (answer 0). LoginDataGetServerFormString is run over every accepted form, comparing the
 * whole entry, and over unreadable texts, checking that the entry comes back all zero even
 * when it held garbage before.
 */
#include "login_service_default.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <ostream>
#include <string>

namespace {

/* ---- CheckIsDomain ------------------------------------------------------------------- */

std::string Repeated(char c, size_t uiCount)
{
    return std::string(uiCount, c);
}

/* A name of uiLen characters made of 63-character labels. */
std::string NameOfLength(size_t uiLen)
{
    std::string strName;
    while (strName.size() < uiLen) {
        if (!strName.empty()) {
            strName += '.';
        }
        strName += Repeated('a', std::min<size_t>(63, uiLen - strName.size()));
    }
    return strName;
}

TEST(LoginCheckIsDomain, HostNamesAreDomains)
{
    for (const std::string &strName :
         {std::string("localhost"), std::string("example.com"), std::string("example.com."),
          std::string("sip-1.my_site.example"), std::string("1host.example"),
          std::string("host1.a1"), Repeated('a', 63) + ".com", NameOfLength(253)}) {
        EXPECT_NE(CheckIsDomain(strName.c_str()), 0u) << strName;
    }
}

TEST(LoginCheckIsDomain, NullAndEmptyAreNotDomains)
{
    EXPECT_EQ(CheckIsDomain(nullptr), 0u);
    EXPECT_EQ(CheckIsDomain(""), 0u);
}

TEST(LoginCheckIsDomain, Ipv4LiteralsAreNotDomains)
{
    for (const char *pcText : {"1.2.3.4", "127.0.0.1", "10.1", "0x7f.0.0.1", "1.0x1", "999.1.1.1",
                               "192.168.1.1."}) {
        EXPECT_EQ(CheckIsDomain(pcText), 0u) << pcText;
    }
}

TEST(LoginCheckIsDomain, Ipv6LiteralsAreNotDomains)
{
    for (const char *pcText : {"::1", "[::1]", "2001:db8::1", "[2001:db8::1]", "fe80::1%eth0"}) {
        EXPECT_EQ(CheckIsDomain(pcText), 0u) << pcText;
    }
}

TEST(LoginCheckIsDomain, TextThatIsNoHostNameIsNotADomain)
{
    for (const std::string &strText :
         {std::string("host:5060"), std::string("exa mple.com"), std::string("ho$t"),
          std::string("a..b"), std::string("."), std::string(".example"),
          std::string("sip:host"), Repeated('a', 64) + ".com", NameOfLength(254)}) {
        EXPECT_EQ(CheckIsDomain(strText.c_str()), 0u) << strText;
    }
}

/* ---- LoginDataGetServerFormString ---------------------------------------------------- */

struct ServerForm {
    const char *pcText;
    const char *pcHost;
    uint32_t uiPort;
    uint32_t uiTransport;
};

std::ostream &operator<<(std::ostream &oOut, const ServerForm &stForm)
{
    return oOut << '"' << stForm.pcText << '"';
}

class LoginServerForm : public testing::TestWithParam<ServerForm> {};

TEST_P(LoginServerForm, ReadsHostPortAndTransport)
{
    tagLOGIN_S_SERVER_ADDR_INFO stEntry;
    std::memset(&stEntry, 0xAB, sizeof(stEntry));
    ASSERT_EQ(LoginDataGetServerFormString(GetParam().pcText, &stEntry), 0u);
    EXPECT_STREQ(stEntry.acHost, GetParam().pcHost);
    EXPECT_EQ(stEntry.uiPort, GetParam().uiPort);
    EXPECT_EQ(stEntry.uiTransport, GetParam().uiTransport);
    const size_t uiHostLen = std::strlen(GetParam().pcHost);
    EXPECT_EQ(std::count(stEntry.acHost + uiHostLen, stEntry.acHost + sizeof(stEntry.acHost), '\0'),
              static_cast<std::ptrdiff_t>(sizeof(stEntry.acHost) - uiHostLen))
        << "the bytes after the host are zero";
}

INSTANTIATE_TEST_SUITE_P(
    Forms, LoginServerForm,
    testing::Values(
        ServerForm{"sip.example.com", "sip.example.com", 0, LOGIN_TRANSPORT_UDP},
        ServerForm{"sip.example.com:5060", "sip.example.com", 5060, LOGIN_TRANSPORT_UDP},
        ServerForm{"10.1.2.3:5061", "10.1.2.3", 5061, LOGIN_TRANSPORT_UDP},
        ServerForm{"host:1", "host", 1, LOGIN_TRANSPORT_UDP},
        ServerForm{"host:65535", "host", 65535, LOGIN_TRANSPORT_UDP},
        ServerForm{"[2001:db8::1]:5060", "2001:db8::1", 5060, LOGIN_TRANSPORT_UDP},
        ServerForm{"[::1]", "::1", 0, LOGIN_TRANSPORT_UDP},
        ServerForm{"2001:db8::1", "2001:db8::1", 0, LOGIN_TRANSPORT_UDP},
        ServerForm{"sip:host:5060", "host", 5060, LOGIN_TRANSPORT_UDP},
        ServerForm{"SIP:host", "host", 0, LOGIN_TRANSPORT_UDP},
        ServerForm{"sips:host:5061", "host", 5061, LOGIN_TRANSPORT_TLS},
        ServerForm{"sips:[::1]:5061", "::1", 5061, LOGIN_TRANSPORT_TLS},
        ServerForm{"host;transport=tcp", "host", 0, LOGIN_TRANSPORT_TCP},
        ServerForm{"host:5060;transport=TLS", "host", 5060, LOGIN_TRANSPORT_TLS},
        ServerForm{"sip:host;Transport=Udp", "host", 0, LOGIN_TRANSPORT_UDP},
        ServerForm{"sips:host;transport=tcp", "host", 0, LOGIN_TRANSPORT_TCP},
        ServerForm{"sip:host:5060;lr;maddr=10.0.0.1;transport=tcp;x=y", "host", 5060,
                   LOGIN_TRANSPORT_TCP},
        ServerForm{"host;", "host", 0, LOGIN_TRANSPORT_UDP},
        ServerForm{"sip:alice@host:5060", "host", 5060, LOGIN_TRANSPORT_UDP},
        ServerForm{"sips:bob:secret@[2001:db8::2]:5061;transport=tls", "2001:db8::2", 5061,
                   LOGIN_TRANSPORT_TLS},
        ServerForm{"alice@10.0.0.9", "10.0.0.9", 0, LOGIN_TRANSPORT_UDP}));

TEST(LoginServerFormLimits, LongestHostNameIsRead)
{
    const std::string strHost = NameOfLength(253);
    const std::string strText = strHost + ":5060";
    tagLOGIN_S_SERVER_ADDR_INFO stEntry;
    ASSERT_EQ(LoginDataGetServerFormString(strText.c_str(), &stEntry), 0u);
    EXPECT_EQ(std::string(stEntry.acHost), strHost);
    EXPECT_EQ(stEntry.uiPort, 5060u);
}

bool IsAllZero(const tagLOGIN_S_SERVER_ADDR_INFO &stEntry)
{
    const tagLOGIN_S_SERVER_ADDR_INFO stZero = {};
    return std::memcmp(&stEntry, &stZero, sizeof(stEntry)) == 0;
}

class LoginServerFormRejected : public testing::TestWithParam<std::string> {};

TEST_P(LoginServerFormRejected, FailsWithZeroedEntry)
{
    tagLOGIN_S_SERVER_ADDR_INFO stEntry;
    std::memset(&stEntry, 0xAB, sizeof(stEntry));
    EXPECT_NE(LoginDataGetServerFormString(GetParam().c_str(), &stEntry), 0u);
    EXPECT_TRUE(IsAllZero(stEntry));
}

INSTANTIATE_TEST_SUITE_P(
    BadTexts, LoginServerFormRejected,
    testing::Values(std::string(""), std::string(":5060"), std::string("host:0"),
                    std::string("host:70000"), std::string("host:65536"),
                    std::string("host:abc"), std::string("host:"), std::string("host:50x"),
                    std::string("host:5060:1"), std::string("[::1"), std::string("[::1]x"),
                    std::string("[::1]:"), std::string("[]:5060"), std::string("[1.2.3.4]"),
                    std::string("host;transport=sctp"), std::string("host;transport"),
                    std::string("host;transport="), std::string("sip:"), std::string("alice@"),
                    std::string("ho st"), std::string("a..b")));

TEST(LoginServerFormLimits, HostLongerThan255Fails)
{
    for (const std::string &strText : {Repeated('h', 300), NameOfLength(300) + ":5060",
                                       "sip:" + NameOfLength(256)}) {
        tagLOGIN_S_SERVER_ADDR_INFO stEntry;
        std::memset(&stEntry, 0xAB, sizeof(stEntry));
        EXPECT_NE(LoginDataGetServerFormString(strText.c_str(), &stEntry), 0u) << strText.size();
        EXPECT_TRUE(IsAllZero(stEntry));
    }
}

TEST(LoginServerFormLimits, NullTextFailsWithZeroedEntry)
{
    tagLOGIN_S_SERVER_ADDR_INFO stEntry;
    std::memset(&stEntry, 0xAB, sizeof(stEntry));
    EXPECT_NE(LoginDataGetServerFormString(nullptr, &stEntry), 0u);
    EXPECT_TRUE(IsAllZero(stEntry));
}

TEST(LoginServerFormLimits, NullEntryFails)
{
    EXPECT_NE(LoginDataGetServerFormString("host:5060", nullptr), 0u);
}

} // namespace
