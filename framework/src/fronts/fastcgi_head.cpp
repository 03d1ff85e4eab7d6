#include "fastcgi_head.h"

#include <http/environment.h>

#include <cstdint>
#include <utility>

namespace cppcms::impl {

namespace {

constexpr unsigned version_1 = 1;
constexpr unsigned responder = 1;
constexpr unsigned keep_connection = 1;  // a flag
constexpr std::string_view question_multiplexed = "FCGI_MPXS_CONNS";

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

/// Calls \a use with each name and value in \a bytes. False where one is cut off.
template <typename Use>
bool for_each_pair(std::string_view bytes, Use use) {
    while (!bytes.empty()) {
        std::uint32_t name = 0;
        std::uint32_t value = 0;
        if (!take_length(bytes, name) || !take_length(bytes, value) ||
            bytes.size() < std::size_t{name} + value)
            return false;
        use(bytes.substr(0, name), bytes.substr(name, value));
        bytes.remove_prefix(std::size_t{name} + value);
    }
    return true;
}

}  // namespace

fastcgi_record_header fastcgi_record_header::read(std::string_view bytes) {
    return {byte_at(bytes, 0), byte_at(bytes, 1), byte_at(bytes, 2) << 8 | byte_at(bytes, 3),
            byte_at(bytes, 4) << 8 | byte_at(bytes, 5), byte_at(bytes, 6)};
}

std::string fastcgi_record(unsigned type, unsigned id, std::size_t length) {
    return {static_cast<char>(version_1),
            static_cast<char>(type),
            static_cast<char>(id >> 8),
            static_cast<char>(id & 255),
            static_cast<char>(length >> 8),
            static_cast<char>(length & 255),
            0 /* no padding */,
            0};
}

fastcgi_head::state fastcgi_head::take(std::string_view &bytes) {
    while (bytes.size() >= fastcgi_record_header::size) {
        auto const header = fastcgi_record_header::read(bytes);
        if (header.version != version_1)
            return state::malformed;
        std::size_t const whole = fastcgi_record_header::size + header.length + header.padding;
        if (taken_ + whole > max_fastcgi_head)
            return state::too_large;
        if (bytes.size() < whole)
            break;
        state const result = take_record(header, bytes.substr(fastcgi_record_header::size, header.length));
        bytes.remove_prefix(whole);
        taken_ += whole;
        if (result != state::incomplete)
            return result;
    }
    return state::incomplete;
}

fastcgi_head::state fastcgi_head::take_record(fastcgi_record_header const &header, std::string_view content) {
    using kind = fastcgi_record_header::kind;
    if (header.id == 0)
        return take_question(header.type, content);
    if (header.type == kind::begin_request && !begun_) {
        if (content.size() != 8)
            return state::malformed;
        begun_ = true;
        id_ = header.id;
        keeps_connection_ = (byte_at(content, 2) & keep_connection) != 0;
        return byte_at(content, 0) == 0 && byte_at(content, 1) == responder ? state::incomplete
                                                                            : state::unknown_role;
    }
    if (header.type != kind::params)
        return begun_ ? state::malformed : state::incomplete;
    if (!begun_)
        return state::malformed;
    if (content.empty())
        return for_each_pair(variables_, [](auto, auto) {}) ? state::complete : state::malformed;
    variables_.append(content);
    return variables_.size() > max_fastcgi_variables ? state::too_large : state::incomplete;
}

fastcgi_head::state fastcgi_head::take_question(unsigned type, std::string_view content) {
    using kind = fastcgi_record_header::kind;
    if (type != kind::get_values) {
        replies_ += fastcgi_record(kind::unknown_type, 0, 8) + static_cast<char>(type) + std::string(7, '\0');
        return state::incomplete;
    }
    std::string answer;
    bool const well_formed = for_each_pair(content, [&](std::string_view name, std::string_view) {
        if (name == question_multiplexed && answer.empty())
            answer.append({static_cast<char>(name.size()), 1}).append(name).append("0");
    });
    if (!well_formed)
        return state::malformed;
    replies_ += fastcgi_record(kind::get_values_result, 0, answer.size()) + answer;
    return state::incomplete;
}

void fastcgi_head::copy_variables(environment &to) const {
    for_each_pair(variables_, [&](std::string_view name, std::string_view value) { to.add(name, value); });
}

std::string fastcgi_head::take_replies() {
    return std::exchange(replies_, {});
}

}  // namespace cppcms::impl
