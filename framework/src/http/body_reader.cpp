#include "body_reader.h"

#include <cppcms/http_file.h>

#include <algorithm>
#include <iostream>

#include "form_decoder.h"
#include "multipart_parser.h"

namespace cppcms::impl {

namespace {

constexpr int bad_request = 400;
constexpr int request_timeout = 408;
constexpr int too_large = 413;

/// What is taken of one body before others have their turn.
constexpr std::size_t bytes_at_once = 1 << 20;

/// What all files of one request together may keep in memory, in multiples of what one may.
constexpr std::size_t files_in_memory = 8;

/// Sorts the parts of a form into fields and files.
class part_collector : public multipart_parser::consumer {
  public:
    part_collector(body_limits const &limits, body_content &content)
        : limits_(limits), content_(content), memory_left_(limits.file_in_memory * files_in_memory) {}

    bool begin_part(part_header const &header) override {
        if (++parts_ > max_form_fields)
            return refuse("too many parts");
        name_ = header.name;
        value_.clear();
        file_ = header.has_content_type ? new_file(header) : nullptr;
        return true;
    }

    bool part_data(std::string_view data) override {
        if (file_) {
            file_->write_data().write(data.data(), static_cast<std::streamsize>(data.size()));
            return file_->write_data() ? true : refuse("no room for an uploaded file");
        }
        fields_size_ += data.size();
        if (fields_size_ > limits_.plain)
            return refuse("fields are too large");
        value_.append(data);
        return true;
    }

    bool end_part() override {
        if (!file_) {
            content_.fields.emplace(name_, value_);
            return true;
        }
        auto const size = static_cast<unsigned long long>(file_->size());
        if (size <= limits_.file_in_memory)
            memory_left_ -= std::min<std::size_t>(memory_left_, static_cast<std::size_t>(size));
        file_->data().seekg(0);
        content_.files.push_back(std::move(file_));
        return true;
    }

    char const *problem() const { return problem_; }

  private:
    booster::shared_ptr<http::file> new_file(part_header const &header) const {
        auto result = std::make_shared<http::file>();
        result->name(header.name);
        result->filename(header.filename);
        result->mime(header.content_type);
        result->set_temporary_directory(limits_.uploads_path);
        result->set_memory_limit(std::min(limits_.file_in_memory, memory_left_));
        return result;
    }

    bool refuse(char const *problem) {
        problem_ = problem;
        return false;
    }

    body_limits const &limits_;
    body_content &content_;
    std::size_t memory_left_;
    std::size_t parts_ = 0;
    unsigned long long fields_size_ = 0;
    std::string name_;
    std::string value_;
    booster::shared_ptr<http::file> file_;
    char const *problem_ = "";
};

}  // namespace

/// What becomes of the bytes. Of those that nobody has announced: nothing.
class body_reader::consumer : public booster::noncopyable {
  public:
    virtual ~consumer() = default;
    virtual refusal take(std::string_view /*bytes*/) { return {}; }
    /// There are no more.
    virtual refusal finish() { return {}; }
};

class body_reader::form_consumer : public consumer {
  public:
    form_consumer(std::string const &boundary, body_limits const &limits, body_content &content)
        : parts_(limits, content), parser_(boundary, parts_) {}

    refusal take(std::string_view bytes) override {
        state_ = parser_.feed(bytes);
        if (state_ == multipart_parser::result::malformed)
            return {bad_request, std::string("malformed multipart body: ") + parser_.problem()};
        if (state_ == multipart_parser::result::refused)
            return {too_large, parts_.problem()};
        return {};
    }

    refusal finish() override {
        if (state_ != multipart_parser::result::complete)
            return {bad_request, "malformed multipart body: the last boundary is missing"};
        return {};
    }

  private:
    part_collector parts_;
    multipart_parser parser_;
    multipart_parser::result state_ = multipart_parser::result::more;
};

class body_reader::plain_consumer : public consumer {
  public:
    plain_consumer(bool is_form, body_content &content) : is_form_(is_form), content_(content) {}

    refusal take(std::string_view bytes) override {
        content_.raw.append(bytes);
        return {};
    }

    refusal finish() override {
        if (is_form_ && decode_form(content_.raw, content_.fields) == form_result::too_many)
            return {too_large, "too many fields in the body"};
        return {};
    }

  private:
    bool is_form_;
    body_content &content_;
};

body_reader::body_reader(http::content_type const &type, unsigned long long length, body_limits const &limits,
                         body_content &content)
    : silence_(limits.silence) {
    bool const multipart = type.is_multipart_form_data();
    if (length > (multipart ? limits.multipart : limits.plain))
        problem_ = {too_large, "a body of " + std::to_string(length) + " bytes is too large"};
    else if (limits.time)
        end_ = last_piece_ + *limits.time + std::chrono::seconds(length / limits.rate);
    if (length == 0)
        consumer_ = std::make_unique<consumer>();
    else if (multipart)
        consumer_ = std::make_unique<form_consumer>(type.parameter_by_key("boundary"), limits, content);
    else
        consumer_ = std::make_unique<plain_consumer>(type.is_form_urlencoded(), content);
}

body_reader::~body_reader() = default;

bool body_reader::take(connection &from, refusal &problem) {
    problem = problem_;
    has_more_ = false;
    std::size_t taken = 0;
    while (!problem) {
        auto const [state, bytes] = from.read_body();
        if (state == connection::input::complete) {
            problem = consumer_->finish();
            return true;
        }
        if (state == connection::input::closed) {
            problem = {bad_request, "the body ended early"};
        } else if (!bytes.empty()) {
            taken += bytes.size();
            problem = consumer_->take(bytes);
            has_more_ = taken >= bytes_at_once;
        }
        if (bytes.empty() || has_more_)
            break;
    }
    if (taken > 0)
        last_piece_ = clock::now();
    if (!problem)
        problem = problem_of_time();
    return static_cast<bool>(problem);
}

body_reader::clock::time_point body_reader::deadline() const {
    return silence_ > clock::duration::zero() ? std::min(last_piece_ + silence_, end_) : end_;
}

refusal body_reader::problem_of_time() const {
    auto const now = clock::now();
    if (now >= end_)
        return {request_timeout, "the body took too long"};
    if (now >= deadline())
        return {bad_request, "the body ended early"};
    return {};
}

}  // namespace cppcms::impl
