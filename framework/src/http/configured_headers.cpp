#include "configured_headers.h"

namespace cppcms::impl {

header_map configured_headers(json::value const &settings) {
    header_map headers;
    json::value const &configured = settings.find("http.headers");
    if (!configured.is_undefined())
        for (auto const &[name, value] : configured.object())
            headers.emplace(name.str(), value.str());
    return headers;
}

}  // namespace cppcms::impl
