#include "http/request_rules.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <utility>

#include "http/environment.h"

namespace {

using cppcms::impl::environment;

struct Row {
    int status;  // 0: served
    std::vector<std::pair<char const *, std::string>> variables;
    char const *method = "POST";
    char const *path = "/config/";
};

class RequestRules : public testing::Test {
  protected:
    void Expect(std::vector<Row> const &rows) const {
        cppcms::impl::request_rules const rules(settings_);
        for (Row const &row : rows) {
            environment request;
            request.add("REQUEST_METHOD", row.method);
            request.add("PATH_INFO", row.path);
            for (auto const &[name, value] : row.variables)
                request.add(name, value);
            EXPECT_EQ(rules.check(request).status, row.status)
                << row.method << ' ' << row.path << ' ' << testing::PrintToString(row.variables);
        }
    }

    cppcms::json::value settings_ = cppcms::json::object();
};

constexpr char host[] = "HTTP_HOST", origin[] = "HTTP_ORIGIN", referer[] = "HTTP_REFERER";
constexpr char site[] = "HTTP_SEC_FETCH_SITE";

TEST_F(RequestRules, WithoutSettingsEveryRequestIsServed) {
    Expect({{0, {{host, "evil.example"}, {origin, "null"}, {site, "cross-site"}}}});
}

TEST_F(RequestRules, WhatChangesSomethingIsRefusedToPagesOfOtherSites) {
    settings_.set("http.same_origin", true);
    settings_.set("http.same_origin_paths", std::vector<std::string>{"/status"});
    Expect({
        {0, {{host, "dev"}}},  // a script
        {0, {{host, "dev"}, {origin, "http://dev"}, {referer, "http://evil/"}, {site, "same-origin"}}},
        {0, {{host, "dev:8080"}, {origin, "http://DEV:8080"}}},
        {0, {{host, "Dev:80"}, {origin, "http://dev"}}},
        {0, {{host, "dev"}, {origin, "https://dev:443"}}},  // TLS ends before the web server
        {0, {{host, "dev"}, {origin, "HTTPS://dev"}, {"HTTPS", "on"}}},
        {0, {{host, "[fe80::1]"}, {origin, "http://[FE80:0::1]:80"}}},
        {0, {{host, "dev"}, {referer, "http://dev?a"}, {site, "none"}}},
        {403, {{host, "dev"}, {origin, "http://evil"}, {referer, "http://dev/"}}},
        {403, {{host, "dev"}, {origin, "null"}}},
        {403, {{origin, "http://dev"}}},
        {403, {{host, "dev"}, {origin, "http://dev:81"}}},
        {403, {{host, "dev:443"}, {origin, "http://dev"}}},
        {403, {{host, "dev"}, {origin, "http://dev"}, {"HTTPS", "on"}}},  // made by whoever is on the way
        {403, {{host, "dev"}, {origin, "http://dev.evil"}}},
        {403, {{host, "dev"}, {origin, "http://dev@evil"}}},
        {403, {{host, "dev"}, {origin, "http://dev, http://evil"}}},
        {403, {{host, "dev, evil"}, {origin, "http://evil"}}},
        {403, {{host, "[fe80::1"}, {origin, "http://[fe80::1"}}},
        {403, {{host, "[fe80::1]"}, {origin, "http://[fe80::2]"}}},
        {403, {{host, "dev"}, {referer, "http://evil/http://dev/"}}},
        {403, {{host, "dev"}, {referer, "about:blank"}}},
        {403, {{host, "dev"}, {site, "cross-site"}}},
        {403, {{host, "dev"}, {origin, "http://dev"}, {site, "same-site"}}},
        {403, {{host, "dev"}, {origin, "http://evil"}}, "OPTIONS"},
        {403, {{host, "dev"}, {origin, "http://evil"}}, "get"},
        {0, {{host, "dev"}, {origin, "http://evil"}, {site, "cross-site"}}, "GET"},  // a link to the device
        {0, {{host, "dev"}, {referer, "http://evil"}}, "HEAD"},
        {403, {{host, "dev"}, {referer, "http://evil"}}, "GET", "/status/rpc"},
        {403, {{host, "dev"}, {origin, "http://evil"}}, "HEAD", "/status"},
    });
}

TEST_F(RequestRules, TheDeviceIsAskedByItsAddressItsNameOrAConfiguredOne) {
    std::array<char, 256> name{};
    ASSERT_EQ(gethostname(name.data(), name.size()), 0);
    settings_.set("http.hosts", std::vector<std::string>{"Pump.Example"});
    Expect({
        {0, {}},  // HTTP 1.0
        {0, {{host, "192.168.0.1"}}},
        {0, {{host, "192.168.0.1:8080"}}},
        {0, {{host, "[::1]"}}},
        {0, {{host, "[fe80::1%25eth0]:80"}}},
        {0, {{host, "LocalHost:8080"}}},
        {0, {{host, name.data()}}},
        {0, {{host, "pump.EXAMPLE.:80"}}},
        {421, {{host, "evil.example"}}, "GET"},
        {421, {{host, "x.pump.example"}}},
        {421, {{host, "192.168.0.1.evil.example"}}},
        {421, {{host, "192.168.0"}}},
        {421, {{host, "0x7f000001"}}},
        {421, {{host, "127.0.0.1, evil.example"}}},
        {421, {{host, "127.0.0.1@evil.example"}}},
        {421, {{host, "::1"}}},
        {421, {{host, "[::1]evil"}}},
        {421, {{host, "[::1"}}},
        {421, {{host, "[evil]"}}},
        {421, {{host, ":80"}}},
        {421, {{host, "localhost:http"}}},
    });
}

TEST_F(RequestRules, TheLogLineCannotBeForgedOrGrow) {
    settings_.set("http.same_origin", true);
    environment request;
    request.add("REQUEST_METHOD", "POST");
    request.add("PATH_INFO", "/a\n\"b\xC3");
    request.add("REMOTE_ADDR", "10.0.0.7");
    request.add("HTTP_ORIGIN", std::string(5000, 'x'));
    EXPECT_EQ(
        cppcms::impl::request_rules(settings_).check(request).reason,
        R"("POST" "/a??b?" from "10.0.0.7": sent by another site, ")" + std::string(200, 'x') + "...\"");
}

}  // namespace
