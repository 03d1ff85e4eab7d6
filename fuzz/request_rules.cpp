// The host and the origin that a request names: pages of a host that is ours are our own, and what is refused
// makes one short, printable line of the log.
#include <algorithm>
#include <cassert>
#include <string>
#include <vector>

#include "http/environment.h"
#include "http/request_rules.h"

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size) {
    using namespace cppcms::impl;
    static request_rules const rules = [] {
        cppcms::json::value settings;
        settings.set("http.same_origin", true);
        settings.set("http.hosts", std::vector<std::string>{"device.example"});
        return request_rules(settings);
    }();
    std::string_view const bytes(reinterpret_cast<char const *>(data), size);
    auto const end = std::min(size, bytes.find('\n'));
    std::string const host(bytes.substr(0, end));
    std::string const foreign(bytes.substr(end));

    environment own;
    own.add("HTTP_HOST", host);
    own.add("HTTP_ORIGIN", "http://" + host);
    int const status = rules.check(own).status;
    assert(host.empty() ? status == 403 : status == 0 || status == 421);

    environment other;
    other.add("PATH_INFO", host);
    other.add("HTTP_HOST", "device.example");
    other.add("HTTP_ORIGIN", foreign);
    std::string const reason = rules.check(other).reason;
    assert(reason.size() < 1000);
    assert(std::all_of(reason.begin(), reason.end(), [](char c) { return c >= ' ' && c <= '~'; }));
    return 0;
}
