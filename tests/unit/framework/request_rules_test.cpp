#include "http/request_rules.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>

#include "http/environment.h"

namespace {

struct Row {
    int status;  // 0: served
    char const *host;
    char const *origin = "";
    char const *referer = "";
    char const *site = "";
    char const *tls = "";
    char const *method = "POST";
    char const *path = "/config/";
};

class RequestRules : public testing::Test {
  protected:
    cppcms::impl::refusal Check(Row const &row) const {
        cppcms::impl::environment request;
        request.add("HTTP_HOST", row.host);
        request.add("HTTP_ORIGIN", row.origin);
        request.add("HTTP_REFERER", row.referer);
        request.add("HTTP_SEC_FETCH_SITE", row.site);
        request.add("HTTPS", row.tls);
        request.add("REQUEST_METHOD", row.method);
        request.add("PATH_INFO", row.path);
        return cppcms::impl::request_rules(settings_).check(request);
    }
    void Expect(std::vector<Row> const &rows) const {
        for (Row const &row : rows)
            EXPECT_EQ(Check(row).status, row.status)
                << row.method << ' ' << row.path << ' ' << row.host << ", " << row.origin << ", "
                << row.referer << ", " << row.site << ", " << row.tls;
    }

    cppcms::json::value settings_ = cppcms::json::object();
};

TEST_F(RequestRules, WhatChangesSomethingIsRefusedToPagesOfOtherSites) {
    Expect({{0, "evil", "null", "", "cross-site"}});
    settings_.set("http.same_origin", true);
    settings_.set("http.same_origin_paths", std::vector<std::string>{"/status"});
    char const *const evil = "http://evil";
    // A script; our own pages; TLS that ends before the web server, and at it.
    Expect({{0, "dev"},
            {0, "dev", "http://dev", "http://evil/", "same-origin"},
            {0, "dev:81", "http://DEV:81"},
            {0, "Dev:80", "http://dev"},
            {0, "dev", "https://dev:443"},
            {0, "dev", "HTTPS://dev", "", "", "on"},
            {0, "[fe80::1]", "http://[FE80:0::1]:80"},
            {0, "dev", "", "http://dev?a", "none"}});
    Expect({{403, "dev", evil, "http://dev/"},
            {403, "dev", "null"},
            {403, "", "http://dev"},
            {403, "dev", "http://dev:81"},
            {403, "dev:443", "http://dev"},
            {403, "dev", "http://dev", "", "", "on"},
            {403, "dev", "http://dev.evil"},
            {403, "dev", "http://dev@evil"},
            {403, "dev", "http://dev, http://evil"},
            {403, "dev, evil", evil},
            {403, "[fe80::1", "http://[fe80::1"},
            {403, "[fe80::1]", "http://[fe80::2]"},
            {403, "dev", "", "http://evil/http://dev/"},
            {403, "dev", "", "about:blank"},
            {403, "dev", "", "", "cross-site"},
            {403, "dev", "http://dev", "", "same-site"}});
    // A link to the device is none of that; a call of its status space is, whatever its method.
    Expect({{403, "dev", evil, "", "", "", "OPTIONS"},
            {403, "dev", evil, "", "", "", "get"},
            {0, "dev", evil, "", "cross-site", "", "GET"},
            {0, "dev", "", evil, "", "", "HEAD"},
            {403, "dev", "", evil, "", "", "GET", "/status/rpc"},
            {403, "dev", evil, "", "", "", "HEAD", "/status"}});
}

TEST_F(RequestRules, TheDeviceIsAskedByItsAddressItsNameOrAConfiguredOne) {
    std::array<char, 256> name{};
    ASSERT_EQ(gethostname(name.data(), name.size()), 0);
    settings_.set("http.hosts", std::vector<std::string>{"Pump.Example"});
    for (char const *host : {"", "192.168.0.1", "192.168.0.1:8080", "[::1]", "[fe80::1]:80", "LocalHost:8080",
                             static_cast<char const *>(name.data()), "pump.EXAMPLE.:80"})
        Expect({{0, host}});
    for (char const *host : {"evil.example", "x.pump.example", "192.168.0.1.evil.example", "192.168.0",
                             "0x7f000001", "127.0.0.1, evil.example", "127.0.0.1@evil.example", "::1",
                             "[::1]evil", "[::1", "[evil]", ":80", "localhost:http"})
        Expect({{421, host, "", "", "", "", "GET"}});
}

TEST_F(RequestRules, TheLogLineCannotBeForgedOrGrow) {
    settings_.set("http.same_origin", true);
    std::string const origin(5000, 'x');
    EXPECT_EQ(Check({403, "dev", origin.c_str(), "", "", "", "POST", "/a\n\"b\xC3"}).reason,
              R"("POST" "/a??b?" from "": sent by another site, ")" + std::string(200, 'x') + "...\"");
}

}  // namespace
