#include "fastcgi_connection.h"

#include <booster/log.h>
#include <http/environment.h>

#include <algorithm>
#include <charconv>

namespace cppcms::impl {

namespace {

using record = fastcgi_record_header::kind;

constexpr std::size_t receive_size = 8192;
constexpr std::size_t body_receive_size = 32768;
constexpr std::size_t max_record_content = 65535;
// How a request ended.
constexpr char request_complete = 0;
constexpr char unknown_role = 3;

char const *problem_of(fastcgi_head::state state) {
    switch (state) {
        case fastcgi_head::state::too_large:
            return "too many variables";
        case fastcgi_head::state::unknown_role:
            return "a role other than responder";
        default:
            return "malformed records";
    }
}

std::string end_of_request(unsigned id, char protocol_status) {
    return fastcgi_record(record::end_request, id, 8) + std::string(4, '\0') + protocol_status +
           std::string(3, '\0');
}

}  // namespace

connection::input fastcgi_connection::read_head(environment &variables) {
    for (;;) {
        std::string_view bytes = received();
        auto const state = head_.take(bytes);
        input_.consume(input_.size() - bytes.size());
        if (std::string const replies = head_.take_replies(); !replies.empty() && !send({replies}))
            return input::closed;
        if (state == fastcgi_head::state::complete)
            break;
        if (state != fastcgi_head::state::incomplete) {
            drop(state);
            return input::closed;
        }
        if (input const got = receive(input_, receive_size); got != input::complete)
            return got;
    }
    head_.copy_variables(variables);
    std::string_view const length = variables.get("CONTENT_LENGTH");
    std::from_chars(length.data(), length.data() + length.size(), body_left_);
    return input::complete;
}

void fastcgi_connection::drop(fastcgi_head::state why) {
    BOOSTER_WARNING("cppcms") << "FastCGI connection dropped: " << problem_of(why);
    if (why == fastcgi_head::state::unknown_role)
        send({end_of_request(head_.id(), unknown_role)});
}

std::string_view fastcgi_connection::received() const {
    return {static_cast<char const *>(input_.data().data()), input_.size()};
}

connection::piece fastcgi_connection::read_body() {
    for (;;) {
        std::size_t const skipped = std::min(skip_, input_.size());
        input_.consume(skipped);
        skip_ -= skipped;
        if (skip_ == 0 && body_ended_)
            return {body_left_ == 0 ? input::complete : input::closed, {}};
        if (skip_ == 0 && content_left_ > 0 && input_.size() > 0) {
            if (auto const content = take_content(); !content.empty())
                return {input::incomplete, content};
        } else if (skip_ == 0 && content_left_ == 0 && input_.size() >= fastcgi_record_header::size) {
            if (!begin_record())
                return {input::closed, {}};
        } else {
            input const got = receive(input_, body_left_ > receive_size ? body_receive_size : receive_size);
            if (got != input::complete)
                return {got, {}};
        }
    }
}

/// What has come of the record at hand. Nothing, where the request has announced less.
std::string_view fastcgi_connection::take_content() {
    auto const content = received().substr(0, content_left_);
    auto const wanted = content.substr(0, std::min<unsigned long long>(content.size(), body_left_));
    content_left_ -= content.size();
    body_left_ -= wanted.size();
    skip_ = content.size() + (content_left_ == 0 ? padding_ : 0);
    return wanted;
}

/// False where the request is given up.
bool fastcgi_connection::begin_record() {
    auto const header = fastcgi_record_header::read(received());
    skip_ = fastcgi_record_header::size;
    if (header.type == record::standard_input && header.id == head_.id() && header.length > 0) {
        content_left_ = header.length;
        padding_ = header.padding;
    } else {
        body_ended_ = header.type == record::standard_input && header.id == head_.id();
        skip_ += header.length + header.padding;
    }
    return header.type != record::abort_request;
}

bool fastcgi_connection::write(std::string_view first, std::string_view second, chunk kind) {
    bool ended = false;
    while (!failed_ && !ended && (first.size() + second.size() > 0 || kind == chunk::last)) {
        auto const now = first.substr(0, max_record_content);
        auto const then = second.substr(0, max_record_content - now.size());
        first.remove_prefix(now.size());
        second.remove_prefix(then.size());
        ended = kind == chunk::last && first.size() + second.size() == 0;
        std::string begin;
        if (std::size_t const size = now.size() + then.size(); size > 0)
            begin = fastcgi_record(record::standard_output, head_.id(), size);
        std::string end;
        if (ended)
            end = fastcgi_record(record::standard_output, head_.id(), 0) +
                  end_of_request(head_.id(), request_complete);
        failed_ = !send({begin, now, then, end});
    }
    return !failed_;
}

bool fastcgi_connection::finish() {
    bool const keep = head_.keeps_connection() && !is_last_request() && !failed_ && body_ended_;
    head_ = {};
    body_left_ = 0;
    body_ended_ = false;
    return keep;
}

}  // namespace cppcms::impl
