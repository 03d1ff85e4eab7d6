#include "fleet/console/Patch.h"

#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/settings/Rules.h"
#include "WebApps/webconfig/util/Switch.h"
#include "fleet/console/Refused.h"

namespace fleet::console {

namespace {

namespace json = cppcms::json;
namespace settings = webconfig::settings;

constexpr std::size_t mostPatch = 32 << 10;  // bytes; the whole change is at most fleet::maxMessage

bool IsSecret(std::string const &key) {
    auto const *const setting = settings::Find(key);
    return setting && setting->kind == settings::Kind::Secret;
}

/// What is wrong with a member of a patch, as far as that can be known without the device.
std::string WrongMember(std::string const &key, json::value const &value) {
    bool const isStaying = value.type("set") == json::is_boolean && value.object().size() == 1;
    std::string text;
    switch (value.type()) {
        case json::is_string:
            text = value.str();
            break;
        case json::is_boolean:
            text = webconfig::util::SwitchText(value.boolean());
            break;
        case json::is_number:
            try {
                text = std::to_string(value.get_value<std::int64_t>());
                break;
            } catch (json::bad_value_cast const &) {
                return "No whole number";
            }
        case json::is_null:
            return {};
        default:
            return isStaying ? "" : "Neither a text nor a whole number, true, false or null";
    }
    // A device may have settings that this console does not know.
    return !settings::Find(key) || settings::IsForDeviceOnly(key) ? "" : settings::WrongValue(key, text);
}

}  // namespace

json::object ReadPatch(json::object patch) {
    if (patch.empty() || json::value(patch).save().size() > mostPatch)
        throw Refused("wrong", "patch: empty, or too long");
    json::value reasons = json::object();
    for (auto const &[key, value] : patch) {
        if (std::string wrong = WrongMember(key.str(), value); !wrong.empty())
            reasons.object()[key] = wrong;
    }
    if (!reasons.object().empty())
        throw Refused("refused", "Nothing was sent", reasons);
    return patch;
}

json::value ShownPatch(std::string const &patch) {
    json::value shown = json::object();
    char const *begin = patch.data();
    shown.load(begin, begin + patch.size(), true);
    for (auto &[key, value] : shown.object()) {
        if (IsSecret(key.str()) && value.type() != json::is_object) {
            bool const isSet = !value.is_null() && value != json::value("");
            value = json::object();
            value["set"] = isSet;
        }
    }
    return shown;
}

}  // namespace fleet::console
