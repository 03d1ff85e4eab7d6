#include "WebApps/webconfig/util/Branding.h"

namespace webconfig::util {

Branding ReadBranding(cppcms::json::value const &value) {
    return {.window_text = value.get("window_text", ""),
            .banner_text = value.get("banner_text", ""),
            .footer_left_text = value.get("footer_left_text", ""),
            .footer_right_text = value.get("footer_right_text", ""),
            .banner_html = value.get("banner_html", ""),
            .footer_html = value.get("footer_html", "")};
}

}  // namespace webconfig::util
