#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr char installed[] = "/etc/lighttpd/server.pem";
constexpr char takeProgram[] = "/usr/sbin/lighttpd_take_certificate.sh";
constexpr char shownRows[] = "//div[@id='advanced_certificate']/table//td";

class CertificateTest : public PageTest {
  protected:
    CertificateTest()
        : PageTest(
              {"/config/settings/advanced", "", {}, {}, "Success: The web server has the new certificate."}) {
    }

    Answer Send(std::string const &pem) {
        return browser.PostFile(page.path, {"certificateFile", "device.pem", "application/x-pem-file", pem},
                                {{"submit", "Install Certificate"}});
    }
};

/// A key and a certificate of its own as one PEM text.
std::string Make(std::string const &options) {
    return device::Shell("cd /tmp && openssl req -x509 -nodes -keyout test.key -out test.crt " + options +
                         " 2>/dev/null; cat test.key test.crt; rm -f test.key test.crt");
}

std::string const elliptic = "-newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -subj /CN=field ";

}  // namespace

TEST_F(CertificateTest, WhatCannotServeIsRefusedWithItsReason) {
    device::RecordingProgram const take(takeProgram, "exit 0");
    std::string const good = Make(elliptic + "-days 60");
    std::string const other = Make(elliptic + "-days 60");
    auto const part = [](std::string const &pem, bool key) {
        auto const end = pem.find("-----BEGIN CERT");
        return key ? pem.substr(0, end) : pem.substr(end);
    };
    std::string damaged = part(other, false);
    damaged.insert(damaged.size() / 2, "!");
    std::pair<std::string, std::string> const cases[] = {
        {"no PEM", "There is no private key in the file"},
        {part(good, false), "There is no private key in the file"},
        {part(good, true), "There is no certificate in the file"},
        {device::Shell("openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:prime256v1 -aes-128-cbc "
                       "-pass pass:secret") +
             part(good, false),
         "The private key has a password"},
        {part(good, true) + part(other, false), "The first certificate does not belong to the private key"},
        {good + part(other, false), "The certificates are no chain: each has to be issued by the next one"},
        {good + damaged, "A certificate in the file cannot be read"},
        {Make("-newkey rsa:1024 -subj /CN=weak -days 60"),
         "The certificate /CN=weak has a key or a signature that is too weak"},
        {Make("-newkey rsa:2048 -sha1 -subj /CN=weak -days 60"),
         "The certificate /CN=weak has a key or a signature that is too weak"},
        {Make("-newkey ed25519 -subj /CN=new -days 60"), "The private key is neither RSA nor EC"},
        {device::Shell("cd /tmp && openssl req -new " + elliptic +
                       "-nodes -keyout test.key 2>/dev/null | openssl x509 -req -signkey test.key -days -1 "
                       "2>/dev/null; cat "
                       "test.key; rm test.key"),
         "The certificate /CN=field has expired"},
        {Make(elliptic + "-days 60 -addext extendedKeyUsage=clientAuth"),
         "The certificate is not for a server"},
    };
    std::string const before = device::ReadFile(installed);
    for (auto const &[pem, reason] : cases) {
        std::string const failure = "The certificate was not installed: " + reason;
        ExpectAnswer(reason, [&] { return Send(pem); },
                     {.failure = "Error: " + failure, .commands = {}, .logged = failure});
    }
    ExpectAnswer("empty", [&] { return Send(""); },
                 {.failure = invalid, .errors = {"A file of 64 KB at most is required"}, .commands = {}});
    EXPECT_EQ(device::ReadFile(installed), before);
}

TEST_F(CertificateTest, AGoodOneIsStoredShownAndPutBackWhereTheServerDoesNotTakeIt) {
    device::ReplacedFile const kept(installed, "");
    std::string const good =
        Make(elliptic + "-days 20 -addext 'subjectAltName=DNS:field.example,IP:192.168.0.1'");
    {
        device::RecordingProgram const take(takeProgram, "exit 0");
        Html const html =
            ExpectAnswer("good", [&] { return Send(good); }, {.commands = {takeProgram}, .tab = "5"});
        Strings const shown = html.All(shownRows);
        ASSERT_EQ(shown.size(), 4U);
        EXPECT_EQ((Strings{shown.begin(), shown.begin() + 3}),
                  (Strings{"/CN=field", "DNS:field.example, IP Address:192.168.0.1", "/CN=field"}));
        EXPECT_NE(shown[3].find("It expires in "), std::string::npos) << shown[3];
        EXPECT_EQ(device::ReadFile(installed), good);
        EXPECT_EQ(device::Shell(std::string("stat -c %a ") + installed), "600\n");
    }
    device::RecordingProgram const take(takeProgram, "exit 1");
    std::string const failure = "Error: The certificate was not installed: The web server does not take it";
    ExpectAnswer("refused by the server", [&] { return Send(Make(elliptic + "-days 60")); },
                 {.failure = failure, .commands = {takeProgram}});
    EXPECT_EQ(device::ReadFile(installed), good);
}

TEST_F(CertificateTest, NothingOfItIsThereUnlessTheConfigurationAsks) {
    device::Process process(device::Configuration(9116));
    Browser plain = device::Up("http://127.0.0.1:9116");
    Answer const answer = plain.Post(page.path, Fields{{"submit", "Install Certificate"}});
    EXPECT_EQ(device::Count(answer.body, "ertificate"), 0U);
    EXPECT_TRUE(process.WaitForLog("Unknown submit received"));
}

}  // namespace pages
