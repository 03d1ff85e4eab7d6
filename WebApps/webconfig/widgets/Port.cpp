#include "WebApps/webconfig/widgets/Port.h"

#include <cppcms/http_context.h>
#include <cppcms/http_request.h>

namespace webconfig::widgets {

Port::Port() {
    non_empty();
    error_message("Invalid port");
}

void Port::load(cppcms::http::context &context) {
    numeric::load(context);
    auto const &fields = context.request().post_or_get();
    auto const sent = fields.find(name());
    if (sent != fields.end() && sent->second.find_first_of("+-") != std::string::npos) {
        set(false);  // the text is shown as it was sent
        valid(false);
    }
}

}  // namespace webconfig::widgets
