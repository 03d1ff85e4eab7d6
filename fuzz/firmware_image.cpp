// An uploaded firmware image: nothing beyond its end is read, and what its tree tells is bounded.
#include <sys/mman.h>

#include <algorithm>
#include <cassert>
#include <cstring>

#include "WebApps/webconfig/util/FirmwareImage.h"

namespace {

/// Room that ends where nothing may be read. libfdt is the system's, so no sanitizer watches its accesses.
char *EndOfRoom(std::size_t size) {
    static char *const room = [size] {
        auto *const pages = static_cast<char *>(
            mmap(nullptr, 2 * size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(pages + size, size, PROT_NONE);
        return pages;
    }();
    return room + size;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size) {
    constexpr std::size_t room = 65536;
    constexpr std::size_t alignment = 8;
    size = std::min(size, room);
    char *const image = EndOfRoom(room) - (size + alignment - 1) / alignment * alignment;
    std::memcpy(image, data, size);
    auto const tree = webconfig::util::ReadImageTree({image, size});
    if (!tree)
        return 0;
    assert(size >= 40 && std::memcmp(data, "\xD0\x0D\xFE\xED", 4) == 0);
    assert(tree->version.size() <= 100 && tree->platforms.size() <= 100);
    for (auto const &platform : tree->platforms)
        assert(platform.size() <= 100 && platform.find('\0') == std::string::npos);
    return 0;
}
