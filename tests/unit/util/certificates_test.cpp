#include "WebApps/webconfig/util/Certificates.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <memory>

#include "tests/unit/util/LogCapture.h"

namespace {

using namespace webconfig::util;

void AddName(X509_NAME *name, char const *field, char const *value) {
    X509_NAME_add_entry_by_txt(name, field, MBSTRING_UTF8, reinterpret_cast<unsigned char const *>(value), -1,
                               -1, 0);
}

/// A certificate for the device from the authority "vpn-1.example" of "Field, Ltd".
std::string Pem() {
    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> const key(EVP_EC_gen("P-256"), &EVP_PKEY_free);
    std::unique_ptr<X509, decltype(&X509_free)> const certificate(X509_new(), &X509_free);
    AddName(X509_get_issuer_name(certificate.get()), "O", "Field, Ltd");
    AddName(X509_get_issuer_name(certificate.get()), "CN", "vpn-1.example");
    AddName(X509_get_subject_name(certificate.get()), "CN", "dévice");
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), 0);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 3600);
    X509_set_pubkey(certificate.get(), key.get());
    X509_sign(certificate.get(), key.get(), EVP_sha256());
    std::unique_ptr<BIO, decltype(&BIO_free)> const memory(BIO_new(BIO_s_mem()), &BIO_free);
    PEM_write_bio_X509(memory.get(), certificate.get());
    char *text = nullptr;
    long const size = BIO_get_mem_data(memory.get(), &text);
    return {text, static_cast<std::size_t>(size)};
}

TEST(Certificates, IssuerAndSubjectOfTheClientCertificate) {
    std::string const pem = Pem();
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
    std::string const pem = Pem();
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
        {"</cert>\n" + pem + "<cert>", noFormat},
        {"<cert></cert>", noCertificate},
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
    std::ofstream(path) << "<cert>\n" << Pem() << "</cert>\n";
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
