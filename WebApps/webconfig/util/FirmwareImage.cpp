#include "WebApps/webconfig/util/FirmwareImage.h"

#include <libfdt.h>

#include <algorithm>

namespace webconfig::util {

namespace {

// Far beyond any real image. The library looks each name up anew, so both bound the time.
constexpr int maxTags = 4000;
constexpr int maxNodeName = 256;      // bytes
constexpr unsigned maxNames = 65536;  // bytes

constexpr unsigned oldestVersion = 17;  // says how large the structure is

constexpr std::size_t maxText = 100;  // bytes of a version or of a platform's name

bool HasSoundHeader(std::string_view image) {
    void const *const tree = image.data();
    return image.size() >= FDT_V17_SIZE && fdt_check_header(tree) == 0 &&
           fdt_version(tree) >= oldestVersion && fdt_totalsize(tree) <= image.size() &&
           fdt_size_dt_strings(tree) <= maxNames;
}

/// Whether the name of the node at \a offset has an end. The library would look for it in the whole image.
bool HasShortName(void const *tree, int offset) {
    for (int i = 0; i < maxNodeName; ++i) {
        auto const *const c = static_cast<char const *>(fdt_offset_ptr(tree, offset + FDT_TAGSIZE + i, 1));
        if (!c || *c == '\0')
            return c != nullptr;
    }
    return false;
}

bool IsNode(void const *tree, int offset) {
    void const *const tag = fdt_offset_ptr(tree, offset, FDT_TAGSIZE);
    return tag && fdt32_ld(static_cast<fdt32_t const *>(tag)) == FDT_BEGIN_NODE;
}

/// Whether the structure is one root with whole nodes, and ends where it says.
bool HasSoundStructure(void const *tree) {
    int depth = 0;
    int offset = 0;
    for (int tags = 0; tags < maxTags; ++tags) {
        if (IsNode(tree, offset) && !HasShortName(tree, offset))
            return false;
        int next = 0;
        switch (fdt_next_tag(tree, offset, &next)) {
            case FDT_BEGIN_NODE:
                ++depth;
                break;
            case FDT_END_NODE:
                if (--depth < 0)
                    return false;
                break;
            case FDT_PROP:
            case FDT_NOP:
                break;
            default:  // where something is wrong, the library says "end", with an error for the next offset
                return depth == 0 && offset > 0 && next >= 0;
        }
        offset = next;
    }
    return false;
}

/// The texts of a property of the root, each ended by a zero byte.
std::vector<std::string> RootTexts(void const *tree, char const *property) {
    int length = 0;
    auto const *const bytes = static_cast<char const *>(fdt_getprop(tree, 0, property, &length));
    std::vector<std::string> texts;
    for (std::string_view rest(bytes, bytes ? static_cast<std::size_t>(length) : 0); !rest.empty();) {
        auto const end = rest.find('\0');
        texts.emplace_back(rest.substr(0, std::min(end, maxText)));
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        if (texts.size() == maxText)
            break;
    }
    return texts;
}

}  // namespace

std::optional<ImageTree> ReadImageTree(std::string_view image) {
    if (!HasSoundHeader(image) || !HasSoundStructure(image.data()))
        return {};
    auto const versions = RootTexts(image.data(), "description");
    return ImageTree{.version = versions.empty() ? "" : versions[0],
                     .platforms = RootTexts(image.data(), "compatible")};
}

}  // namespace webconfig::util
