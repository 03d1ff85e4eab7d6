#include "WebApps/webconfig/util/Certificates.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>
#include <system_error>

#include "WebApps/webconfig/util/Log.h"

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/Certificates";

// Client configurations have some kilobytes; what a path leads to must not fill the memory.
constexpr std::size_t maxConfiguration = 1'048'576;

using Bio = std::unique_ptr<BIO, decltype(&BIO_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

/// "GetCertificateDetils" is what those who read the log look for.
bool Fail(char const *problem) {
    WEBCONFIG_LOG(error, logTag) << "GetCertificateDetils: " << problem;
    return false;
}

bool ReadFile(std::string const &path, std::string &text) {
    std::error_code problem;
    if (!std::filesystem::is_regular_file(path, problem))  // reading a pipe could last for ever
        return false;
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return false;
    text.resize(maxConfiguration);
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return true;
}

/// For encrypted certificates: the default would ask at the terminal.
int NoPassword(char * /*buffer*/, int /*size*/, int /*writing*/, void * /*unused*/) {
    return -1;
}

Certificate ReadPem(std::string_view text) {
    Bio const memory(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())), &BIO_free);
    Certificate certificate(memory ? PEM_read_bio_X509(memory.get(), nullptr, NoPassword, nullptr) : nullptr,
                            &X509_free);
    ERR_clear_error();
    return certificate;
}

std::string OneLine(X509_NAME const *name) {
    std::unique_ptr<char, decltype([](char *text) { OPENSSL_free(text); })> const text(
        X509_NAME_oneline(name, nullptr, 0));
    return text ? text.get() : "";
}

}  // namespace

bool GetCertificateDetails(std::string const &path, std::string &issuer, std::string &subject) {
    issuer.clear();
    subject.clear();
    std::string configuration;
    if (!ReadFile(path, configuration))
        return Fail("Unable to load certificate from disk");
    return ReadCertificateDetails(configuration, issuer, subject);
}

bool ReadCertificateDetails(std::string const &configuration, std::string &issuer, std::string &subject) {
    issuer.clear();
    subject.clear();
    auto const begin = configuration.find("<cert>");
    auto const end = configuration.find("</cert>");
    if (begin == std::string::npos || end == std::string::npos || end < begin)
        return Fail("Certificate format error");
    auto const certificate = ReadPem(std::string_view(configuration).substr(begin, end - begin));
    if (!certificate)
        return Fail("Unable to parse certificate in memory");
    issuer = OneLine(X509_get_issuer_name(certificate.get()));
    subject = OneLine(X509_get_subject_name(certificate.get()));
    return true;
}

}  // namespace webconfig::util
