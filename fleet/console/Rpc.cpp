#include "fleet/console/Rpc.h"

#include <cppcms/http_request.h>

#include <algorithm>
#include <numeric>

#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/settings/Description.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Utf8.h"
#include "fleet/console/Methods.h"
#include "fleet/console/Patch.h"

namespace fleet::console {

namespace {

namespace json = cppcms::json;
namespace settings = webconfig::settings;

constexpr char logTag[] = "fleet/console/Rpc";

constexpr std::int64_t usualLimit = 50;
constexpr std::int64_t mostLimit = 200;

// Of what people write, in bytes.
constexpr std::size_t mostTitle = 200;
constexpr std::size_t mostWhy = 4000;
constexpr std::size_t mostNote = 4000;
constexpr std::size_t mostTag = 32;
constexpr std::size_t mostTags = 20;
constexpr std::size_t mostWho = 64;

// Of rollouts.
constexpr std::int64_t mostMembers = 1000000;
constexpr std::int64_t leastPatience = 10;  // seconds
constexpr std::int64_t mostPatience = 7 * 24 * 60 * 60;
constexpr std::int64_t mostSettle = 24 * 60 * 60;

struct PageTitle {
    char const *page;
    char const *title;
};
/// Of the pages that have settings, in their order.
constexpr PageTitle pageTitles[] = {
    {settings::general, "General"},
    {settings::ethernet, "Ethernet"},
    {settings::dns, "DNS"},
    {settings::cellular, "Cellular"},
    {settings::accessPoint, "Access Point"},
    {settings::wlan, "WLAN Client"},
    {settings::vpn, "OpenVPN"},
    {settings::site, "Orvane Server"},
    {settings::forwarding, "Port Forwarding"},
    {settings::time, "Time"},
    {settings::advanced, "Advanced"},
    {settings::regulatory, "Regulatory Domain"},
};

template <typename T>
T Optional(json::value const &asked, char const *member, T value) {
    json::value const &found = asked.find(member);
    return found.is_undefined() || found.is_null() ? value : found.get_value<T>();
}

[[noreturn]] void Wrong(std::string const &what) {
    throw Refused("wrong", what);
}

std::int64_t Within(json::value const &asked, char const *member, std::int64_t usual, std::int64_t least,
                    std::int64_t most) {
    auto const number = Optional(asked, member, usual);
    if (number < least || number > most)
        Wrong(std::string(member) + ": not " + std::to_string(least) + " to " + std::to_string(most));
    return number;
}

/// \a text of people, on one line or more.
std::string TextOf(json::value const &asked, char const *member, std::size_t most, bool lines) {
    std::string const text = Optional(asked, member, std::string());
    if (text.size() > most || webconfig::util::CleanText(text) != text ||
        (!lines && text.find_first_of("\t\r\n") != std::string::npos))
        Wrong(std::string(member) + ": too long, or no " + (lines ? "text" : "line of text"));
    return text;
}

struct Part {
    std::int64_t offset;
    std::int64_t limit;
};
Part PartOf(json::value const &asked) {
    return {std::max<std::int64_t>(0, Optional<std::int64_t>(asked, "offset", 0)),
            std::clamp<std::int64_t>(Optional(asked, "limit", usualLimit), 0, mostLimit)};
}

json::value ParsedOr(std::string const &text, json::value empty) {
    char const *begin = text.data();
    empty.load(begin, begin + text.size(), true);
    return empty;
}

json::value ErrorOf(Refused const &refused) {
    json::value error;
    error["code"] = refused.Code();
    error["message"] = refused.what();
    if (!refused.Reasons().is_undefined())
        error["refused"] = refused.Reasons();
    return error;
}

json::value const &Known(json::value const &found) {
    if (found.is_undefined())
        throw Refused("unknown", "There is no such device");
    return found;
}

std::string DeviceOf(json::value const &asked) {
    return asked.get<std::string>("id");
}

std::int64_t RolloutOf(json::value const &asked) {
    return asked.get<std::int64_t>("rollout");
}

}  // namespace

Rpc::Rpc(cppcms::service &service, Console const *console)
    : cppcms::rpc::json_rpc_server(service), _console(*console) {
    for (auto const &method : Methods()) {
        auto const serve = [this, &method](json::array const &given) {
            if (given.size() != 1 || given[0].type() != json::is_object)
                throw cppcms::rpc::call_error("Invalid parametres number");  // as the framework says it
            try {
                return_result((this->*method.serve)(given[0]));
            } catch (Refused const &refused) {
                return_error(ErrorOf(refused));
            } catch (sqlite::Error const &failure) {
                WEBCONFIG_LOG(error, logTag) << method.name << ": " << failure.what();
                return_error(ErrorOf({"failed", std::string("The store cannot be used: ") + failure.what()}));
            }
        };
        bind(method.name, serve, method_role);
    }
}

std::string Rpc::_Who() {
    using webconfig::util::CleanText;
    std::string who = CleanText(request().remote_user()).substr(0, mostWho);
    while (CleanText(who) != who)
        who.pop_back();  // a part of a character
    return who.empty() ? "unknown" : who;
}

json::value Rpc::Status(Asked const & /*asked*/) {
    auto const now = _console.connection.Now();
    auto const [devices, online] = _console.registry.Count();
    std::int64_t running = 0;
    for (auto const &rollout : Store::Reading(_console.store)->Unfinished())
        running += rollout.state == RolloutState::Running ? 1 : 0;
    json::value status;
    status["broker"] = now.broker;
    status["since"] = now.since;
    status["devices"] = devices;
    status["online"] = online;
    status["messages"] = now.messages;
    status["rollouts"] = running;
    return status;
}

json::value Rpc::Devices(Asked const &asked) {
    return _console.registry.Devices(ReadFilter(asked), ReadWindow(asked));
}

json::value Rpc::Device(Asked const &asked) {
    std::string const id = DeviceOf(asked);
    json::value device = Known(_console.registry.Device(id));
    device["note"] = Store::Reading(_console.store)->Note(id);
    return device;
}

json::value Rpc::Health(Asked const &asked) {
    return Known(_console.registry.Health(DeviceOf(asked)));
}

json::value Rpc::Catalogue(Asked const & /*asked*/) {
    json::array pages;
    for (auto const &[path, title] : pageTitles) {
        json::value page;
        page["path"] = path;
        page["title"] = title;
        page["settings"] = json::array();
        for (auto const &setting : settings::catalogue) {
            if (setting.page == std::string_view(path))
                page["settings"].array().push_back(settings::Described(setting));
        }
        pages.push_back(std::move(page));
    }
    json::value catalogue;
    catalogue["pages"] = std::move(pages);
    return catalogue;
}

json::value Rpc::_Shown(ChangeRow const &change, std::string const &patch) {
    json::value shown;
    shown["change"] = _console.store.IdOf(change.number);
    shown["device"] = change.device;
    shown["who"] = change.who;
    shown["time"] = change.time;
    shown["patch"] = ShownPatch(change.patch.empty() ? patch : change.patch);
    shown["state"] = NameOf(change.state);
    shown["code"] = change.code;
    shown["message"] = change.message;
    shown["refused"] = ParsedOr(change.refused, json::object());
    shown["restart"] = change.restart;
    shown["rollout"] = json::null();
    if (change.rollout != 0)
        shown["rollout"] = change.rollout;
    return shown;
}

json::value Rpc::Changes(Asked const &asked) {
    std::string const device = Optional(asked, "id", std::string());
    std::string const id = Optional(asked, "change", std::string());
    std::int64_t const rollout = Optional<std::int64_t>(asked, "rollout", 0);
    auto const [offset, limit] = PartOf(asked);
    Store::Reading const reading(_console.store);
    std::vector<ChangeRow> rows;
    std::int64_t total = 0;
    if (id.empty()) {
        total = reading->CountChanges(device, rollout);
        rows = reading->Changes(device, rollout, offset, limit);
    } else if (auto row = reading->Change(_console.store.NumberIn(id))) {
        total = 1;
        rows.push_back(std::move(*row));
    }
    json::value changes;
    changes["total"] = total;
    changes["changes"] = json::array();
    for (auto const &row : rows) {
        auto const from = row.patch.empty() ? reading->Rollout(row.rollout) : std::nullopt;
        changes["changes"].array().push_back(_Shown(row, from ? from->patch : ""));
    }
    return changes;
}

json::value Rpc::Change(Asked const &asked) {
    std::string const device = DeviceOf(asked);
    std::int64_t const number = _console.conductor.Change(
        _Who(), device, ReadPatch(asked.get<json::object>("patch")),
        TextOf(asked, "based_on", mostTitle, false), Optional(asked, "restart", false));
    WEBCONFIG_LOG(notice, logTag) << "Change " << _console.store.IdOf(number) << " of " << device << ", by "
                                  << _Who();
    json::value answer;
    answer["change"] = _console.store.IdOf(number);
    return answer;
}

json::value Rpc::Tag(Asked const &asked) {
    auto const ids = asked.get<std::vector<std::string>>("ids");
    auto const add = Optional(asked, "add", std::vector<std::string>());
    auto const remove = Optional(asked, "remove", std::vector<std::string>());
    for (auto const &tag : add) {
        if (tag.empty() || tag.size() > mostTag || webconfig::util::CleanText(tag) != tag ||
            tag.find_first_of("\t\r\n") != std::string::npos)
            Wrong("A tag is 1 to " + std::to_string(mostTag) + " bytes of text");
    }
    Registry::Tags changed;
    for (auto const &id : ids) {
        if (!_console.registry.Knows(id))
            continue;
        auto tags = _console.registry.TagsOf(id);
        std::erase_if(tags, [&](std::string const &tag) {
            return std::find(remove.begin(), remove.end(), tag) != remove.end();
        });
        for (auto const &tag : add) {
            if (std::find(tags.begin(), tags.end(), tag) == tags.end())
                tags.push_back(tag);
        }
        if (tags.size() > mostTags)
            Wrong(id + ": more than " + std::to_string(mostTags) + " tags");
        std::sort(tags.begin(), tags.end());
        changed[id] = std::move(tags);
    }
    Store::Writing writing(_console.store);
    for (auto const &[id, tags] : changed)
        writing->SetTags(id, tags);
    writing.Commit();
    for (auto const &[id, tags] : changed)
        _console.registry.SetTags(id, tags);
    json::value answer;
    answer["devices"] = changed.size();
    return answer;
}

json::value Rpc::Note(Asked const &asked) {
    std::string const id = DeviceOf(asked);
    if (!_console.registry.Knows(id))
        throw Refused("unknown", "There is no such device");
    Store::Writing writing(_console.store);
    writing->SetNote(id, TextOf(asked, "note", mostNote, true));
    writing.Commit();
    return true;
}

json::value Rpc::Forget(Asked const &asked) {
    _console.conductor.Forget(DeviceOf(asked));
    return true;
}

json::value Rpc::_Shown(RolloutRow const &row, bool whole) {
    Store::Reading const reading(_console.store);
    Counts const counts = reading->CountMembers(row.number);
    json::value shown;
    shown["rollout"] = row.number;
    shown["title"] = row.title;
    shown["who"] = row.who;
    shown["time"] = row.time;
    shown["state"] = NameOf(row.state);
    shown["reason"] = row.reason;
    shown["asked"] = reading->CountAsked(row.number);
    std::int64_t members = 0;
    shown["counts"] = json::object();
    for (std::size_t i = 0; i < counts.size(); ++i) {
        members += counts[i];
        if (counts[i] != 0)
            shown["counts"][NameOf(static_cast<State>(i))] = counts[i];
    }
    shown["members"] = members;
    if (!whole)
        return shown;
    shown["why"] = row.why;
    shown["patch"] = ShownPatch(row.patch);
    shown["restart"] = row.restart;
    shown["canaries"] = row.canaries;
    shown["wave"] = row.wave;
    shown["limit"] = row.limit;
    shown["patience"] = row.patience;
    shown["settle"] = row.settle;
    shown["wave_now"] = row.wave_now;
    shown["waves"] = row.waves;
    shown["selection"] = ParsedOr(row.selection, json::object());
    shown["takes_back"] = json::null();
    if (row.takes_back != 0)
        shown["takes_back"] = row.takes_back;
    shown["log"] = json::array();
    for (auto const &line : reading->Log(row.number)) {
        json::value one;
        one["time"] = line.time;
        one["who"] = line.who;
        one["text"] = line.text;
        shown["log"].array().push_back(one);
    }
    return shown;
}

json::value Rpc::Rollouts(Asked const &asked) {
    auto const [offset, limit] = PartOf(asked);
    json::value rollouts;
    std::vector<RolloutRow> rows;
    {
        Store::Reading const reading(_console.store);
        rollouts["total"] = reading->CountRollouts();
        rows = reading->Rollouts(offset, limit);
    }
    rollouts["rollouts"] = json::array();
    for (auto const &row : rows)
        rollouts["rollouts"].array().push_back(_Shown(row, false));
    return rollouts;
}

json::value Rpc::Rollout(Asked const &asked) {
    auto const row = Store::Reading(_console.store)->Rollout(RolloutOf(asked));
    if (!row)
        throw Refused("unknown", "There is no such rollout");
    return _Shown(*row, true);
}

json::value Rpc::Members(Asked const &asked) {
    std::int64_t const rollout = RolloutOf(asked);
    std::string const name = Optional(asked, "state", std::string());
    auto const state = StateOf(name);
    if (!name.empty() && !state)
        Wrong("state: there is none of this name");
    auto const [offset, limit] = PartOf(asked);
    Store::Reading const reading(_console.store);
    Counts const counts = reading->CountMembers(rollout);
    std::int64_t total = 0;
    for (std::size_t i = 0; i < counts.size(); ++i)
        total += !state || *state == static_cast<State>(i) ? counts[i] : 0;
    json::value members;
    members["total"] = total;
    members["members"] = json::array();
    for (auto const &row : reading->Members(rollout, state, offset, limit)) {
        json::value member;
        member["id"] = row.device;
        member["name"] = _console.registry.NameOf(row.device);
        member["wave"] = row.wave;
        member["state"] = NameOf(row.state);
        member["code"] = row.code;
        member["message"] = row.message;
        member["refused"] = ParsedOr(row.refused, json::object());
        member["time"] = row.time;
        member["change"] = _console.store.IdOf(row.number);
        members["members"].array().push_back(member);
    }
    return members;
}

json::value Rpc::RollOut(Asked const &asked) {
    RolloutRow rollout;
    rollout.title = TextOf(asked, "title", mostTitle, false);
    rollout.why = TextOf(asked, "why", mostWhy, true);
    rollout.who = _Who();
    rollout.patch = json::value(ReadPatch(asked.get<json::object>("patch"))).save();
    rollout.restart = Optional(asked, "restart", false);
    rollout.canaries = Within(asked, "canaries", rollout.canaries, 0, mostMembers);
    rollout.wave = Within(asked, "wave", rollout.wave, 1, mostMembers);
    rollout.limit = Within(asked, "limit", rollout.limit, 0, 100);
    rollout.patience = Within(asked, "patience", rollout.patience, leastPatience, mostPatience);
    rollout.settle = Within(asked, "settle", rollout.settle, 0, mostSettle);
    json::value const select = asked.get<json::object>("select");
    rollout.selection = select.save();
    if (rollout.title.empty())
        Wrong("title: there is none");
    auto const number = _console.conductor.RollOut(rollout, ReadFilter(select));
    Counts const counts = Store::Reading(_console.store)->CountMembers(number);
    json::value answer;
    answer["rollout"] = number;
    answer["members"] = std::accumulate(counts.begin(), counts.end(), std::int64_t{0});
    return answer;
}

json::value Rpc::Pause(Asked const &asked) {
    _console.conductor.Pause(RolloutOf(asked), _Who());
    return Rollout(asked);
}

json::value Rpc::GoOn(Asked const &asked) {
    _console.conductor.GoOn(RolloutOf(asked), _Who());
    return Rollout(asked);
}

json::value Rpc::TakeBack(Asked const &asked) {
    json::value back;
    back["rollout"] = _console.conductor.TakeBack(RolloutOf(asked), _Who());
    return Rollout(back);
}

json::value Rpc::End(Asked const &asked) {
    _console.conductor.End(RolloutOf(asked), _Who());
    return Rollout(asked);
}

json::value Rpc::Discover(Asked const & /*asked*/) {
    return MethodsDocument();
}

}  // namespace fleet::console
