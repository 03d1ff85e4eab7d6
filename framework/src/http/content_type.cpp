#include <cppcms/http_content_type.h>

#include "header_text.h"

namespace cppcms::http {

content_type::content_type(std::string_view text) {
    impl::header_reader reader(text);
    reader.skip_blanks();
    auto const type = reader.token();
    if (type.empty() || !reader.take('/'))
        return;
    auto const subtype = reader.token();
    if (subtype.empty())
        return;
    media_type_ = impl::to_lower(type) + '/' + impl::to_lower(subtype);
    for (std::string name, value; reader.parameter(name, value);)
        parameters_.emplace(name, value);
}

std::string content_type::parameter_by_key(std::string const &key) const {
    auto const found = parameters_.find(key);
    return found == parameters_.end() ? std::string() : found->second;
}

}  // namespace cppcms::http
