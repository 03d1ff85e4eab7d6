#include "http/request_rules.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <sstream>

#include "http/environment.h"

namespace {

class RequestRules : public testing::Test {
  protected:
    /// What is said to a post, or another request, with these headers: "Host=a Origin=b".
    cppcms::impl::refusal Check(std::string const &headers) const {
        static std::map<std::string, std::string> const names = {{"Host", "HTTP_HOST"},
                                                                 {"Origin", "HTTP_ORIGIN"},
                                                                 {"Referer", "HTTP_REFERER"},
                                                                 {"Site", "HTTP_SEC_FETCH_SITE"},
                                                                 {"Tls", "HTTPS"},
                                                                 {"Method", "REQUEST_METHOD"},
                                                                 {"Path", "PATH_INFO"}};
        cppcms::impl::environment request;
        std::istringstream words(headers);
        for (std::string word; words >> word;)
            request.add(names.at(word.substr(0, word.find('='))), word.substr(word.find('=') + 1));
        request.add("REQUEST_METHOD", "POST");
        return cppcms::impl::request_rules(settings_).check(request);
    }
    void Expect(int status, std::vector<std::string> const &requests) const {
        for (auto const &headers : requests)
            EXPECT_EQ(Check(headers).status, status) << headers;
    }

    cppcms::json::value settings_ = cppcms::json::object();
};

TEST_F(RequestRules, WhatChangesSomethingIsRefusedToPagesOfOtherSites) {
    Expect(0, {"Host=evil Origin=null Site=cross-site"});
    settings_.set("http.same_origin", true);
    settings_.set("http.same_origin_paths", std::vector<std::string>{"/status"});
    // A script; our own pages, also where TLS ends before the web server; a link on another site.
    Expect(0, {"Host=dev", "Host=dev Origin=http://dev Referer=http://evil/ Site=same-origin",
               "Host=dev:81 Origin=http://DEV:81", "Host=Dev:80 Origin=http://dev",
               "Host=dev Origin=https://dev:443", "Host=dev Origin=HTTPS://dev Tls=on",
               "Host=[fe80::1] Origin=http://[FE80:0::1]:80", "Host=dev Referer=http://dev?a Site=none",
               "Host=dev Origin=http://evil Site=cross-site Method=GET",
               "Host=dev Referer=http://evil Method=HEAD"});
    Expect(403, {"Host=dev Origin=http://evil Referer=http://dev/",
                 "Host=dev Origin=null",
                 "Origin=http://dev",
                 "Host=dev Origin=http://dev:81",
                 "Host=dev:443 Origin=http://dev",
                 "Host=dev Origin=http://dev Tls=on",
                 "Host=dev Origin=http://dev.evil",
                 "Host=dev Origin=http://dev@evil",
                 "Host=dev Origin=http://dev,http://evil",
                 "Host=dev,evil Origin=http://evil",
                 "Host=[fe80::1 Origin=http://[fe80::1",
                 "Host=[fe80::1] Origin=http://[fe80::2]",
                 "Host=dev Referer=http://evil/http://dev/",
                 "Host=dev Referer=about:blank",
                 "Host=dev Site=cross-site",
                 "Host=dev Origin=http://dev Site=same-site",
                 "Host=dev Origin=http://evil Method=OPTIONS",
                 "Host=dev Origin=http://evil Method=get",
                 "Host=dev Referer=http://evil Method=GET Path=/status/rpc",
                 "Host=dev Origin=http://evil Method=HEAD Path=/status"});
}

TEST_F(RequestRules, TheDeviceIsAskedByItsAddressItsNameOrAConfiguredOne) {
    std::array<char, 256> name{};
    ASSERT_EQ(gethostname(name.data(), name.size()), 0);
    settings_.set("http.hosts", std::vector<std::string>{"Pump.Example"});
    Expect(0, {"", "Host=192.168.0.1", "Host=192.168.0.1:8080", "Host=[::1]", "Host=[fe80::1]:80",
               "Host=LocalHost:8080", std::string("Host=") + name.data(), "Host=pump.EXAMPLE.:80"});
    Expect(421, {"Host=evil.example Method=GET", "Host=x.pump.example", "Host=192.168.0.1.evil.example",
                 "Host=192.168.0", "Host=0x7f000001", "Host=127.0.0.1,evil.example",
                 "Host=127.0.0.1@evil.example", "Host=::1", "Host=[::1]evil", "Host=[::1", "Host=[evil]",
                 "Host=:80", "Host=.", "Host=localhost:http"});
}

TEST_F(RequestRules, TheLogLineCannotBeForgedOrGrow) {
    settings_.set("http.same_origin", true);
    EXPECT_EQ(Check("Host=dev Path=/a\x1B\"b\xC3 Origin=" + std::string(5000, 'x')).reason,
              R"("POST" "/a??b?" from "": sent by another site, ")" + std::string(200, 'x') + "...\"");
}

}  // namespace
