#include <algorithm>

#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr char installed[] = "/etc/lighttpd/server.pem";
constexpr char takeProgram[] = "/usr/sbin/lighttpd_take_certificate.sh";

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

/// What a script writes into the files "key" and "crt" of a folder, as one PEM text.
std::string Make(std::string const &script) {
    return device::Shell("mkdir /tmp/make && cd /tmp/make && { " + script +
                         "; } 2>/dev/null; cat key crt; rm -r /tmp/make");
}

std::string SelfSigned(std::string const &options) {
    return Make("openssl req -x509 -nodes -keyout key -out crt -subj /CN=field -days 60 " + options);
}

std::string const elliptic = " -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 ";

}  // namespace

TEST_F(CertificateTest, WhatCannotServeIsRefusedWithItsReason) {
    device::RecordingProgram const take(takeProgram, "exit 0");
    std::string const good = SelfSigned(elliptic);
    auto const split = good.find("-----BEGIN CERT");
    std::string const key = good.substr(0, split);
    std::string const own = good.substr(split);
    std::string const other = Make("touch key; openssl req -x509 -nodes -subj /CN=other -out crt" + elliptic);
    std::string const weak = "The certificate /CN=field has a key or a signature that is too weak";
    std::pair<std::string, std::string> const cases[] = {
        {"no PEM", "There is no private key in the file"},
        {own, "There is no private key in the file"},
        {key, "There is no certificate in the file"},
        {device::Shell("openssl genpkey -algorithm ed25519 -aes128 -pass pass:secret") + own,
         "The private key has a password"},
        {key + other, "The first certificate does not belong to the private key"},
        {good + other, "The certificates are no chain: each has to be issued by the next one"},
        {good + other.substr(0, other.size() / 2), "A certificate in the file cannot be read"},
        {SelfSigned("-newkey rsa:1024"), weak},
        {SelfSigned("-newkey rsa:2048 -sha1"), weak},
        {SelfSigned("-newkey ed25519"), "The private key is neither RSA nor EC"},
        {SelfSigned("-addext extendedKeyUsage=clientAuth" + elliptic), "The certificate is not for a server"},
        {Make("openssl req -new -nodes -subj /CN=field -keyout key -out csr" + elliptic +
              "; openssl x509 -req -in csr -signkey key -days -1 -out crt"),
         "The certificate /CN=field has expired"},
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
    device::ReplacedFile const audit("/var/log/audit", "");
    std::string const good =
        Make("openssl req -x509 -nodes -keyout ca.key -out ca -subj /CN=ca" + elliptic +
             "; openssl req -x509 -nodes -CA ca -CAkey ca.key -days 20 -keyout key -out crt"
             " -subj /CN=field -addext subjectAltName=DNS:f.example,IP:192.168.0.1" +
             elliptic + "; cat ca >>crt");
    {
        device::RecordingProgram const take(takeProgram, "exit 0");
        Strings const tabs = Show().All("//ul[@class='tabnav']//a");
        Html const html = ExpectAnswer(
            "good", [&] { return Send(good); },
            {.commands = {takeProgram},
             .tab = std::to_string(std::find(tabs.begin(), tabs.end(), "Certificate") - tabs.begin())});
        Strings shown = html.All("//div[@id='advanced_certificate']/table//td");
        EXPECT_NE(shown.back().find("It expires in "), std::string::npos) << shown.back();
        shown.pop_back();
        EXPECT_EQ(shown, (Strings{"/CN=field", "DNS:f.example, IP Address:192.168.0.1", "/CN=ca"}));
        EXPECT_EQ(device::ReadFile(installed), good);
        EXPECT_EQ(device::Shell(std::string("stat -c %a ") + installed), "600\n");
        EXPECT_TRUE(device::WaitForText("/var/log/audit", "event=upload result=ok "));
    }
    device::RecordingProgram const take(takeProgram, "exit 1");
    ExpectAnswer("refused by the server", [&] { return Send(SelfSigned(elliptic)); },
                 {.failure = "Error: The certificate was not installed: The web server does not take it",
                  .commands = {takeProgram}});
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
