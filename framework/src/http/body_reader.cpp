#include "body_reader.h"

#include <cppcms/http_file.h>
#include <fronts/connection.h>

#include <algorithm>
#include <iostream>
#include <vector>

#include "form_decoder.h"
#include "multipart_parser.h"

namespace cppcms::impl {

namespace {

constexpr int bad_request = 400;
constexpr int too_large = 413;
constexpr std::size_t piece_size = 32768;

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

refusal read_multipart(connection &from, http::content_type const &type, unsigned long long length,
                       body_limits const &limits, body_content &content) {
    part_collector parts(limits, content);
    multipart_parser parser(type.parameter_by_key("boundary"), parts);
    std::vector<char> piece(std::min<unsigned long long>(length, piece_size));
    auto state = multipart_parser::result::more;
    while (length > 0) {
        std::size_t const got = from.read(piece.data(), std::min<unsigned long long>(length, piece.size()));
        if (got == 0)
            return {bad_request, "the body ended early"};
        length -= got;
        state = parser.feed({piece.data(), got});
        if (state == multipart_parser::result::malformed)
            return {bad_request, std::string("malformed multipart body: ") + parser.problem()};
        if (state == multipart_parser::result::refused)
            return {too_large, parts.problem()};
    }
    if (state != multipart_parser::result::complete)
        return {bad_request, "malformed multipart body: the last boundary is missing"};
    return {};
}

refusal read_plain(connection &from, http::content_type const &type, unsigned long long length,
                   body_content &content) {
    while (length > 0) {
        std::size_t const before = content.raw.size();
        content.raw.resize(before + std::min<unsigned long long>(length, piece_size));
        std::size_t const got = from.read(content.raw.data() + before, content.raw.size() - before);
        content.raw.resize(before + got);
        if (got == 0)
            return {bad_request, "the body ended early"};
        length -= got;
    }
    if (type.is_form_urlencoded() && decode_form(content.raw, content.fields) == form_result::too_many)
        return {too_large, "too many fields in the body"};
    return {};
}

}  // namespace

refusal read_body(connection &from, http::content_type const &type, unsigned long long length,
                  body_limits const &limits, body_content &content) {
    bool const multipart = type.is_multipart_form_data();
    if (length > (multipart ? limits.multipart : limits.plain))
        return {too_large, "a body of " + std::to_string(length) + " bytes is too large"};
    return multipart ? read_multipart(from, type, length, limits, content)
                     : read_plain(from, type, length, content);
}

}  // namespace cppcms::impl
