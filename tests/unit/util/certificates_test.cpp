#include "WebApps/webconfig/util/Certificates.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "tests/unit/util/LogCapture.h"

namespace {

using namespace webconfig::util;

/// For the device from the authority "vpn-1.example" of "Field, Ltd".
std::string const pem = R"(-----BEGIN CERTIFICATE-----
MIIBJTCBzQIBATAKBggqhkjOPQQDAjAtMRMwEQYDVQQKDApGaWVsZCwgTHRkMRYw
FAYDVQQDDA12cG4tMS5leGFtcGxlMB4XDTI2MTEyMTIzMDUwMFoXDTM2MTExODIz
MDUwMFowEjEQMA4GA1UEAwwHZMOpdmljZTBZMBMGByqGSM49AgEGCCqGSM49AwEH
A0IABDr/V47HadbnQ21305d8fjqM2893IGqSa60vTBEFdX52IEPdGBaEUCmuLPJt
8egehCBAW3JTO9S8aLbq0yGLe00wCgYIKoZIzj0EAwIDRwAwRAIgJC1q+RoluImV
Nf7hRAd2zeocLvzwaQzc3VRJWxwrUdsCIG2elGN6dLIEUMZFvh/RffchMCMuOIHs
w+P4Z/hbybSB
-----END CERTIFICATE-----
)";

TEST(Certificates, IssuerAndSubjectOfTheClientCertificate) {
    for (std::string const &text : {"client\n<ca>\nx\n</ca>\n<cert>\n" + pem + "</cert>\n<key>\n</key>\n",
                                    "<cert>Certificate:\n  Version: 3\n" + pem + "</cert>",
                                    "<cert>\n" + pem + "</cert><cert>second</cert>"}) {
        std::string issuer = "old";
        std::string subject = "old";
        EXPECT_TRUE(ReadCertificateDetails(text, issuer, subject)) << text;
        EXPECT_EQ(issuer, "/O=Field, Ltd/CN=vpn-1.example");
        EXPECT_EQ(subject, "/CN=d\\xC3\\xA9vice");
    }
}

TEST(Certificates, WhatIsNoneIsToldInTheLog) {
    constexpr char noFormat[] = "error: GetCertificateDetils: Certificate format error (Certificates)";
    constexpr char noCertificate[] =
        "error: GetCertificateDetils: Unable to parse certificate in memory (Certificates)";
    std::string encrypted = pem;
    encrypted.insert(encrypted.find('\n') + 1,
                     "Proc-Type: 4,ENCRYPTED\nDEK-Info: AES-128-CBC,00112233445566778899AABBCCDDEEFF\n\n");
    std::pair<std::string, char const *> const cases[] = {
        {"", noFormat},
        {"<ca>\n" + pem + "</ca>\n", noFormat},
        {"<cert>\n" + pem, noFormat},
        {"<cert>\n" + pem.substr(0, pem.size() / 2) + "</cert>", noCertificate},
        {"<cert>\n-----BEGIN CERTIFICATE-----\nAAAA\n-----END CERTIFICATE-----\n</cert>", noCertificate},
        {"<cert>\n" + encrypted + "</cert>", noCertificate},  // and nobody is asked for a password
    };
    for (auto const &[text, line] : cases) {
        LogCapture log(booster::log::error);
        std::string issuer = "old";
        std::string subject = "old";
        EXPECT_FALSE(ReadCertificateDetails(text, issuer, subject)) << text;
        EXPECT_EQ(issuer + subject, "") << text;
        EXPECT_EQ(log.Take(), std::vector<std::string>{line}) << text;
    }
}

TEST(Certificates, Files) {
    constexpr char path[] = "/tmp/certificates_test";
    std::ofstream(path) << "<cert>\n" << pem << "</cert>\n";
    std::string issuer;
    std::string subject;
    EXPECT_TRUE(GetCertificateDetails(path, issuer, subject));
    EXPECT_EQ(issuer, "/O=Field, Ltd/CN=vpn-1.example");
    ::unlink(path);
    ::mkfifo(path, 0600);
    LogCapture log(booster::log::error);
    for (char const *const unfit : {"", "/tmp", "/tmp/no/such/file", path}) {
        EXPECT_FALSE(GetCertificateDetails(unfit, issuer, subject)) << unfit;
        EXPECT_EQ(issuer + subject, "") << unfit;
        EXPECT_EQ(log.Take(), std::vector<std::string>{"error: GetCertificateDetils: Unable to load "
                                                       "certificate from disk (Certificates)"});
    }
    ::unlink(path);
}

}  // namespace
