#include "WebApps/webconfig/util/Certificates.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "WebApps/webconfig/util/CryptoLibrary.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Strings.h"

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/Certificates";

// Client configurations have some kilobytes; what a path leads to must not fill the memory.
constexpr std::size_t maxConfiguration = 1'048'576;

using Bio = std::unique_ptr<BIO, CryptoFree<&CryptoLibrary::BIO_free>>;
using Certificate = std::unique_ptr<X509, CryptoFree<&CryptoLibrary::X509_free>>;
using Key = std::unique_ptr<EVP_PKEY, CryptoFree<&CryptoLibrary::EVP_PKEY_free>>;

// As many as a hash of 224 bits or an RSA key of 2048 has: browsers accept no less.
constexpr int minSecurityBits = 112;

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

/// For encrypted certificates and keys: the default would ask at the terminal.
int NoPassword(char * /*buffer*/, int /*size*/, int /*writing*/, void * /*unused*/) {
    return -1;
}

Bio Memory(std::string_view text) {
    return Bio(Crypto().BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
}

/// The certificates of a text, up to the first one that cannot be read.
std::vector<Certificate> ReadChain(std::string_view text) {
    Bio const memory = Memory(text);
    std::vector<Certificate> chain;
    while (X509 *const next =
               memory ? Crypto().PEM_read_bio_X509(memory.get(), nullptr, NoPassword, nullptr) : nullptr)
        chain.emplace_back(next);
    Crypto().ERR_clear_error();
    return chain;
}

Certificate ReadPem(std::string_view text) {
    auto chain = ReadChain(text);
    return chain.empty() ? nullptr : std::move(chain.front());
}

Key ReadKey(std::string_view text) {
    Bio const memory = Memory(text);
    Key key(memory ? Crypto().PEM_read_bio_PrivateKey(memory.get(), nullptr, NoPassword, nullptr) : nullptr);
    Crypto().ERR_clear_error();
    return key;
}

/// What a function of the library prints; without the blanks at both ends.
template <typename Print>
std::string Printed(Print print) {
    Bio const memory(Crypto().BIO_new(Crypto().BIO_s_mem()));
    char *text = nullptr;
    if (!memory || print(memory.get()) != 1)
        return {};
    long const size = Crypto().BIO_ctrl(memory.get(), BIO_CTRL_INFO, 0, &text);
    return Trim(std::string(text, static_cast<std::size_t>(size)));
}

std::string Names(X509 const *certificate) {
    int const position = Crypto().X509_get_ext_by_NID(certificate, NID_subject_alt_name, -1);
    if (position < 0)
        return {};
    return Printed([&](BIO *out) {
        return Crypto().X509V3_EXT_print(out, Crypto().X509_get_ext(certificate, position), 0, 0);
    });
}

bool IsStrong(X509 *certificate) {
    int bits = 0;
    return Crypto().EVP_PKEY_get_security_bits(Crypto().X509_get0_pubkey(certificate)) >= minSecurityBits &&
           Crypto().X509_get_signature_info(certificate, nullptr, nullptr, &bits, nullptr) == 1 &&
           bits >= minSecurityBits;
}

/// Whether browsers know keys of this type.
bool IsUsual(EVP_PKEY const *key) {
    return Crypto().EVP_PKEY_is_a(key, "RSA") == 1 || Crypto().EVP_PKEY_is_a(key, "EC") == 1;
}

/// How many certificates a text is to have, readable or not.
std::size_t Certificates(std::string_view pem) {
    constexpr std::string_view begin = "-----BEGIN CERTIFICATE-----";
    std::size_t count = 0;
    for (auto at = pem.find(begin); at != std::string_view::npos; at = pem.find(begin, at + 1))
        ++count;
    return count;
}

/// Problem of a certificate by itself, with {1} for its name; null where it has none.
char const *CertificateProblem(X509 *certificate) {
    if (Crypto().X509_cmp_current_time(Crypto().X509_get0_notBefore(certificate)) >= 0)
        return Translatable("The certificate {1} is not valid yet; is the time of the device right?");
    if (Crypto().X509_cmp_current_time(Crypto().X509_get0_notAfter(certificate)) <= 0)
        return Translatable("The certificate {1} has expired");
    return IsStrong(certificate)
               ? nullptr
               : Translatable("The certificate {1} has a key or a signature that is too weak");
}

std::string OneLine(X509_NAME const *name) {
    std::unique_ptr<char, CryptoFreeMemory> const text(Crypto().X509_NAME_oneline(name, nullptr, 0));
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
    issuer = OneLine(Crypto().X509_get_issuer_name(certificate.get()));
    subject = OneLine(Crypto().X509_get_subject_name(certificate.get()));
    return true;
}

std::optional<ServerCertificate> DescribeServerCertificate(std::string const &pem) {
    auto const certificate = ReadPem(pem);
    if (!certificate)
        return std::nullopt;
    ASN1_TIME const *const end = Crypto().X509_get0_notAfter(certificate.get());
    ServerCertificate described;
    described.subject = OneLine(Crypto().X509_get_subject_name(certificate.get()));
    described.names = Names(certificate.get());
    described.issuer = OneLine(Crypto().X509_get_issuer_name(certificate.get()));
    described.expires = Printed([&](BIO *out) { return Crypto().ASN1_TIME_print(out, end); });
    int seconds = 0;
    Crypto().ASN1_TIME_diff(&described.days_left, &seconds, nullptr, end);
    if (seconds < 0)
        --described.days_left;
    return described;
}

Bilingual ServerCertificateProblem(std::string const &pem) {
    auto const key = ReadKey(pem);
    auto const chain = ReadChain(pem);
    if (!key)
        return pem.find("ENCRYPTED") == std::string::npos ? Bilingual("There is no private key in the file")
                                                          : Bilingual("The private key has a password");
    if (chain.empty())
        return Bilingual("There is no certificate in the file");
    if (!IsUsual(key.get()))
        return Bilingual("The private key is neither RSA nor EC");
    if (Crypto().X509_check_private_key(chain.front().get(), key.get()) != 1)
        return Bilingual("The first certificate does not belong to the private key");
    if (Crypto().X509_check_purpose(chain.front().get(), X509_PURPOSE_SSL_SERVER, 0) != 1)
        return Bilingual("The certificate is not for a server");
    if (chain.size() != Certificates(pem))
        return Bilingual("A certificate in the file cannot be read");
    for (std::size_t i = 0; i < chain.size(); ++i) {
        if (char const *const problem = CertificateProblem(chain[i].get()))
            return {problem, OneLine(Crypto().X509_get_subject_name(chain[i].get()))};
        if (i > 0 && Crypto().X509_check_issued(chain[i].get(), chain[i - 1].get()) != X509_V_OK)
            return Bilingual("The certificates are no chain: each has to be issued by the next one");
    }
    return {};
}

std::string ReadCertificateFile(std::string const &path) {
    std::string text;
    return ReadFile(path, text) ? text : "";
}

}  // namespace webconfig::util
