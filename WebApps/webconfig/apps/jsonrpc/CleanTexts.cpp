#include "WebApps/webconfig/apps/jsonrpc/CleanTexts.h"

#include "WebApps/webconfig/util/Utf8.h"

namespace webconfig::apps {

void CleanTexts(cppcms::json::value &value) {
    switch (value.type()) {
        case cppcms::json::is_string:
            value.str(util::CleanText(value.str()));
            break;
        case cppcms::json::is_array:
            for (auto &element : value.array())
                CleanTexts(element);
            break;
        case cppcms::json::is_object:
            for (auto &member : value.object())
                CleanTexts(member.second);
            break;
        default:
            break;
    }
}

}  // namespace webconfig::apps
