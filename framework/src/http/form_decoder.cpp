#include "form_decoder.h"

#include <cppcms/util.h>

namespace cppcms::impl {

namespace {

std::string decoded(std::string_view text) {
    return util::urldecode(text.data(), text.data() + text.size());
}

}  // namespace

form_result decode_form(std::string_view text, form_fields &fields) {
    while (!text.empty()) {
        auto const pair = text.substr(0, text.find('&'));
        text.remove_prefix(std::min(text.size(), pair.size() + 1));
        auto const equals = pair.find('=');
        if (equals == std::string_view::npos || equals == 0)
            return form_result::malformed;
        if (fields.size() >= max_form_fields)
            return form_result::too_many;
        fields.emplace(decoded(pair.substr(0, equals)), decoded(pair.substr(equals + 1)));
    }
    return form_result::complete;
}

}  // namespace cppcms::impl
