#include "Counters.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace traffic_plugin {

namespace {

namespace fs = std::filesystem;

constexpr char interfaces[] = "/sys/class/net";

std::uint64_t Number(fs::path const &path) {
    std::uint64_t number = 0;
    std::ifstream(path) >> number;
    return number;
}

Counters::Direction ReadDirection(fs::path const &folder, std::string const &prefix) {
    return {Number(folder / (prefix + "bytes")), Number(folder / (prefix + "packets")),
            Number(folder / (prefix + "errors")) + Number(folder / (prefix + "dropped"))};
}

}  // namespace

std::vector<Counters> ReadCounters() {
    std::vector<Counters> all;
    std::error_code ignored;
    for (auto const &entry : fs::directory_iterator(interfaces, ignored)) {
        fs::path const statistics = entry.path() / "statistics";
        if (fs::is_directory(statistics, ignored))
            all.push_back({entry.path().filename(), ReadDirection(statistics, "rx_"),
                           ReadDirection(statistics, "tx_")});
    }
    std::sort(all.begin(), all.end(), [](auto const &a, auto const &b) { return a.name < b.name; });
    return all;
}

}  // namespace traffic_plugin
