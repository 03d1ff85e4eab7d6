#include "WebApps/webconfig/util/Partition.h"

#include <array>
#include <cstdint>
#include <cstdio>

#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::util {

namespace {

constexpr auto extended = 0xEF53;  // file system type of ext2, ext3 and ext4
constexpr auto bytesPerKilobyte = 1024U;
constexpr double kilobytesPerGigabyte = 1048576;

}  // namespace

std::optional<std::string> PartitionText(std::string const &name, std::string const &path) {
    struct statfs figures {};
    return ::statfs(path.c_str(), &figures) == 0 ? PartitionText(name, figures) : std::nullopt;
}

std::optional<std::string> PartitionText(std::string const &name, struct statfs const &figures) {
    if (figures.f_type != extended || figures.f_blocks == 0)
        return {};
    // A product of 32 bits, ample for the flash of a device: above 4 TB free it starts over.
    auto const free = static_cast<std::uint32_t>(figures.f_bfree) *
                      static_cast<std::uint32_t>(figures.f_bsize / bytesPerKilobyte);
    auto const used = static_cast<int>((figures.f_blocks - figures.f_bfree) * 100 / figures.f_blocks);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.1f", free / kilobytesPerGigabyte);
    return Translate("{1} ({2}GB free, {3}% used)", name, text.data(), used);
}

}  // namespace webconfig::util
