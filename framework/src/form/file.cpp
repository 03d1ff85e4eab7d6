#include <cppcms/form.h>

#include <booster/regex_match.h>
#include <cppcms/http_file.h>

#include "../encoding.h"

#include <algorithm>
#include <istream>

namespace cppcms::widgets {

file::file() : base_html_input("file") {}

void file::limits(int min, int max) {
    min_size_ = min;
    max_size_ = max;
}

booster::shared_ptr<http::file> file::value() {
    if (!set())
        throw cppcms_error("File was not loaded");
    return file_;
}

void file::load(http::context &context) {
    pre_load(context);
    set(false);
    valid(true);
    file_.reset();
    auto const sent = context.request().files();
    auto const found =
        std::find_if(sent.begin(), sent.end(), [&](auto const &file) { return file->name() == name(); });
    if (found == sent.end())
        return;
    file_ = *found;
    set(true);
    std::size_t length = 0;
    valid(impl::is_valid_text(context.locale(), file_->filename(), length));
}

bool file::validate() {
    if (!valid())
        return false;
    if (set())
        valid(has_valid_size() && has_valid_type() && has_valid_magic());
    else
        valid(!non_empty_);
    return valid();
}

bool file::has_valid_size() const {
    return (min_size_ < 0 || file_->size() >= min_size_) && (max_size_ < 0 || file_->size() <= max_size_);
}

bool file::has_valid_type() const {
    if (auto const *type = std::get_if<std::string>(&mime_); type && file_->mime() != *type)
        return false;
    if (auto const *types = std::get_if<booster::regex>(&mime_);
        types && !booster::regex_match(file_->mime(), *types))
        return false;
    return filename_.empty() || booster::regex_match(file_->filename(), filename_);
}

bool file::has_valid_magic() const {
    if (magic_.empty())
        return true;
    std::size_t longest = 0;
    for (auto const &magic : magic_)
        longest = std::max(longest, magic.size());
    std::string start(longest, '\0');
    auto &data = file_->data();
    data.clear();
    data.seekg(0);
    data.read(start.data(), static_cast<std::streamsize>(longest));
    start.resize(static_cast<std::size_t>(data.gcount()));
    data.clear();
    data.seekg(0);
    return std::any_of(magic_.begin(), magic_.end(),
                       [&](std::string const &magic) { return start.starts_with(magic); });
}

void file::render_value(form_context &) {}

}  // namespace cppcms::widgets
