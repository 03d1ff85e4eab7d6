#include "multipart_parser.h"

#include <cppcms/http_content_type.h>

#include <algorithm>
#include <utility>

#include "header_text.h"

namespace cppcms::impl {

namespace {

bool is_valid_boundary(std::string_view boundary) {
    return !boundary.empty() && boundary.size() <= multipart_parser::max_boundary_size &&
           std::all_of(boundary.begin(), boundary.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

/// Number of bytes at the start that are the same.
std::size_t common_size(std::string_view a, std::string_view b) {
    auto const limit = static_cast<std::ptrdiff_t>(std::min(a.size(), b.size()));
    return static_cast<std::size_t>(std::mismatch(a.begin(), a.begin() + limit, b.begin()).first - a.begin());
}

bool parse_disposition(std::string_view text, part_header &header) {
    header_reader reader(text);
    reader.skip_blanks();
    if (!equal_ignoring_case(reader.token(), "form-data"))
        return false;
    bool named = false;
    for (std::string name, value; reader.skip_blanks(), !reader.at_end();) {
        if (!reader.parameter(name, value))
            return false;
        if (name == "name") {
            header.name = value;
            named = true;
        } else if (name == "filename") {
            header.filename = value;
        }
    }
    return named;
}

}  // namespace

bool parse_part_header(std::string_view lines, part_header &header) {
    bool disposed = false;
    while (!lines.empty()) {
        auto const line = lines.substr(0, lines.find("\r\n"));
        lines.remove_prefix(std::min(lines.size(), line.size() + 2));
        auto const colon = line.find(':');
        if (colon == std::string_view::npos || colon == 0)
            return false;
        auto const name = line.substr(0, colon);
        auto const value = trim(line.substr(colon + 1));
        if (equal_ignoring_case(name, "Content-Disposition")) {
            if (disposed || !parse_disposition(value, header))
                return false;
            disposed = true;
        } else if (equal_ignoring_case(name, "Content-Type")) {
            header.content_type = http::content_type(value).media_type();
            header.has_content_type = true;
        }
    }
    return disposed;
}

multipart_parser::multipart_parser(std::string_view boundary, consumer &parts) : parts_(parts) {
    if (is_valid_boundary(boundary))
        delimiter_.append("\r\n--").append(boundary);
}

multipart_parser::result multipart_parser::feed(std::string_view data) {
    if (delimiter_.empty())
        return fail("no usable boundary");
    auto so_far = state_ == state::end ? result::complete : result::more;
    while (!data.empty()) {
        so_far = step(data);
        if (so_far == result::malformed || so_far == result::refused)
            return so_far;
    }
    return so_far;
}

multipart_parser::result multipart_parser::step(std::string_view &data) {
    switch (state_) {
        case state::first_boundary:
            return take_delimiter(data);
        case state::boundary_line:
            return take_boundary_line(data);
        case state::headers:
            return take_headers(data);
        case state::data:
            return take_data(data);
        case state::end:
            break;
    }
    return fail("data after the last boundary");
}

multipart_parser::result multipart_parser::take_delimiter(std::string_view &data) {
    auto const expected = std::string_view(delimiter_).substr(matched_);
    auto const size = std::min(expected.size(), data.size());
    if (data.substr(0, size) != expected.substr(0, size))
        return fail("no boundary at the start");
    data.remove_prefix(size);
    matched_ += size;
    if (matched_ == delimiter_.size())
        state_ = state::boundary_line;
    return result::more;
}

multipart_parser::result multipart_parser::take_data(std::string_view &data) {
    if (matched_ == 0) {
        auto const content = data.substr(0, delimiter_start(data));
        data.remove_prefix(content.size());
        if (!content.empty() && !parts_.part_data(content))
            return result::refused;
    }
    std::size_t const same = common_size(data, std::string_view(delimiter_).substr(matched_));
    data.remove_prefix(same);
    matched_ += same;
    if (matched_ == delimiter_.size()) {
        state_ = state::boundary_line;
        return parts_.end_part() ? result::more : result::refused;
    }
    if (!data.empty()) {
        // What an earlier piece ended with is content after all.
        auto const mistaken = std::string_view(delimiter_).substr(0, std::exchange(matched_, 0));
        if (!mistaken.empty() && !parts_.part_data(mistaken))
            return result::refused;
    }
    return result::more;
}

/// Where in \a data the delimiter stands or, at the end, may begin; npos where it does not.
std::size_t multipart_parser::delimiter_start(std::string_view data) const {
    if (auto const whole = data.find(delimiter_); whole != std::string_view::npos)
        return whole;
    // Only a CR begins it, and there is no other one in it.
    std::size_t const at = data.rfind('\r');
    bool const may_begin = at != std::string_view::npos && delimiter_.starts_with(data.substr(at));
    return may_begin ? at : std::string_view::npos;
}

multipart_parser::result multipart_parser::take_headers(std::string_view &data) {
    // One line at a time, so that the end is seen wherever the pieces are cut.
    auto const line = data.substr(0, std::min(data.find('\n'), data.size() - 1) + 1);
    data.remove_prefix(line.size());
    if (headers_.size() + line.size() > max_header_size)
        return fail("part headers too long");
    headers_ += line;
    if (!headers_.ends_with("\r\n\r\n") && headers_ != "\r\n")
        return result::more;

    part_header header;
    if (!parse_part_header(std::string_view(headers_).substr(0, headers_.size() - 2), header))
        return fail("malformed part headers");
    headers_.clear();
    matched_ = 0;
    state_ = state::data;
    return parts_.begin_part(header) ? result::more : result::refused;
}

multipart_parser::result multipart_parser::take_boundary_line(std::string_view &data) {
    constexpr std::string_view next_part = "\r\n";
    constexpr std::string_view last = "--\r\n";
    line_ += data.front();
    data.remove_prefix(1);
    if (!next_part.starts_with(line_) && !last.starts_with(line_))
        return fail("malformed boundary line");
    if (line_ == last) {
        state_ = state::end;
        return result::complete;
    }
    if (line_ == next_part) {
        state_ = state::headers;
        line_.clear();
    }
    return result::more;
}

multipart_parser::result multipart_parser::fail(char const *problem) {
    problem_ = problem;
    return result::malformed;
}

}  // namespace cppcms::impl
