#include "fastcgi_head.h"

#include <cstdint>
#include <string>

namespace cppcms::impl {

namespace {

constexpr std::size_t header_size = 8;
constexpr unsigned begin_request = 1;
constexpr unsigned params = 4;
constexpr unsigned get_values = 9;
constexpr unsigned responder = 1;

unsigned byte_at(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

/// Reads a length of one or of four bytes. False where it is cut off.
bool take_length(std::string_view &bytes, std::uint32_t &length) {
    std::size_t const size = !bytes.empty() && byte_at(bytes, 0) >= 0x80 ? 4 : 1;
    if (bytes.size() < size)
        return false;
    length = byte_at(bytes, 0);
    if (size == 4)
        length = ((length & 0x7f) << 24) | (byte_at(bytes, 1) << 16) | (byte_at(bytes, 2) << 8) |
                 byte_at(bytes, 3);
    bytes.remove_prefix(size);
    return true;
}

bool are_pairs(std::string_view bytes) {
    while (!bytes.empty()) {
        std::uint32_t name = 0;
        std::uint32_t value = 0;
        if (!take_length(bytes, name) || !take_length(bytes, value) ||
            bytes.size() < std::size_t{name} + value)
            return false;
        bytes.remove_prefix(std::size_t{name} + value);
    }
    return true;
}

}  // namespace

fastcgi_head_state check_fastcgi_head(std::string_view bytes) {
    std::string variables;
    bool begun = false;
    bool const full = bytes.size() >= max_fastcgi_head;
    while (bytes.size() >= header_size) {
        unsigned const type = byte_at(bytes, 1);
        bool const management = byte_at(bytes, 2) == 0 && byte_at(bytes, 3) == 0;
        std::size_t const length = byte_at(bytes, 4) * 256 + byte_at(bytes, 5);
        std::size_t const whole = header_size + length + byte_at(bytes, 6);
        if (byte_at(bytes, 0) != 1)
            return fastcgi_head_state::malformed;
        if (bytes.size() < whole)
            break;
        auto const content = bytes.substr(header_size, length);
        bytes.remove_prefix(whole);

        if (management) {
            if (type == get_values && !are_pairs(content))
                return fastcgi_head_state::malformed;
        } else if (type == begin_request && !begun) {
            if (length != 8)
                return fastcgi_head_state::malformed;
            if (byte_at(content, 0) != 0 || byte_at(content, 1) != responder)
                return fastcgi_head_state::unknown_role;
            begun = true;
        } else if (type == params && begun) {
            if (length == 0)
                return are_pairs(variables) ? fastcgi_head_state::complete : fastcgi_head_state::malformed;
            variables.append(content);
            if (variables.size() > max_fastcgi_variables)
                return fastcgi_head_state::too_large;
        } else if (begun || type == params) {
            return fastcgi_head_state::malformed;
        }
    }
    return full ? fastcgi_head_state::too_large : fastcgi_head_state::incomplete;
}

}  // namespace cppcms::impl
