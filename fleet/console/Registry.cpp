#include "fleet/console/Registry.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>

#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/util/Utf8.h"
#include "fleet/Messages.h"

namespace fleet::console {

namespace {

namespace json = cppcms::json;

// What a device may say, so that no rubbish fills the memory.
constexpr std::size_t mostText = 128;  // bytes
constexpr std::size_t mostKey = 128;
constexpr std::size_t mostSettings = 1000;
constexpr std::size_t mostCounted = 200;  // different versions, models or tags that are counted

constexpr std::size_t mostSamples = 60;
constexpr std::int16_t untold = std::numeric_limits<std::int16_t>::min();
constexpr double tenths = 10;
constexpr double hundredths = 100;
constexpr double perMille = 1000;

/// Settings that are each device's own, so that all differ in them.
constexpr char const *ownKeys[] = {webconfig::settings::Key("net/hostname"),
                                   webconfig::settings::Key("net/lan_ipaddr")};

/// One line that can be shown.
std::string Line(std::string const &text) {
    std::string line = webconfig::util::CleanText(std::string_view(text).substr(0, mostText));
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\t' || c == '\r' || c == '\n'; }, ' ');
    return line;
}

std::string LineOf(json::value const &object, char const *member) {
    return Line(object.get(member, ""));
}

std::uint32_t SecondsOf(json::value const &object, char const *member) {
    return object.get<std::uint32_t>(member, 0);
}

/// \a number in units of 1 / \a scale, where it fits.
std::int16_t Scaled(double number, double scale) {
    double const scaled = std::round(number * scale);
    return std::abs(scaled) <= std::numeric_limits<std::int16_t>::max() ? static_cast<std::int16_t>(scaled)
                                                                        : untold;
}

std::int16_t ScaledOf(json::value const &object, char const *member, double scale) {
    json::value const &found = object.find(member);
    return found.type() == json::is_number ? Scaled(found.number(), scale) : untold;
}

/// A setting as the pool has it; what begins so is the setting of that key.
std::string PairStart(std::string const &key) {
    return json::to_json(key) + ':';
}

std::string Pair(std::string const &key, json::value const &value) {
    return PairStart(key) + value.save();
}

json::value ParsedPair(std::string const &pair, std::string &key) {
    json::value object;
    std::string const text = '{' + pair + '}';
    char const *begin = text.data();
    object.load(begin, begin + text.size(), true);
    auto const &[name, value] = *object.object().begin();
    key = name.str();
    return value;
}

bool IsOwn(std::string const &pair) {
    static std::string const starts[] = {PairStart(ownKeys[0]), PairStart(ownKeys[1])};
    return std::any_of(std::begin(starts), std::end(starts),
                       [&pair](std::string const &start) { return pair.starts_with(start); });
}

std::string Lower(std::string text) {
    for (char &c : text) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

/// \a text has \a part, which is in lower case.
bool Has(std::string const &text, std::string const &part) {
    auto const same = [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; };
    return std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end();
}

json::value Counted(std::map<Pool::Index, std::int64_t> const &counts, Pool const &pool) {
    json::object counted;
    for (auto const &[index, count] : counts) {
        if (index != Pool::empty && counted.size() < mostCounted)
            counted[pool.Text(index)] = count;
    }
    return counted;
}

}  // namespace

/// A filter, in terms of the pool.
struct Registry::Wanted {
    explicit Wanted(Filter const &asked) : filter(asked), search(Lower(asked.search)) {}

    Filter const &filter;
    std::string search;
    std::optional<Pool::Index> firmware, model, tag;
    Entry const *reference = nullptr;
    std::vector<std::optional<Pool::Index>> settings;  // of which one is to be missing
    bool nobody = false;                               // can be meant
};

void Registry::Take(std::string const &device, std::string_view name, std::string_view message, bool retained,
                    std::int64_t now) {
    if (!IsId(device))
        throw Malformed("No device has this id", "");
    if (name == topics::online) {
        if (message.empty()) {
            Forget(device);
            return;
        }
        bool const online = message == words::yes;
        if (!online && message != words::no)
            throw Malformed("Neither true nor false", "");
        std::unique_lock const lock(_guard);
        Entry &entry = _EntryOf(device);
        _online += static_cast<std::size_t>(online) - static_cast<std::size_t>(entry.online);
        entry.online = online;
        if (!retained)
            entry.seen = static_cast<std::uint32_t>(now);
        return;
    }
    if (message.empty())
        return;  // somebody has it forgotten
    json::value const said = ReadObject(message);
    std::unique_lock const lock(_guard);
    Entry &entry = _EntryOf(device);
    if (name == topics::reported)
        _Report(entry, said);
    else if (name == topics::health)
        _AddHealth(entry, said);
    entry.seen =
        retained ? std::max(entry.seen, std::min(SecondsOf(said, "time"), static_cast<std::uint32_t>(now)))
                 : static_cast<std::uint32_t>(now);
}

Registry::Entry &Registry::_EntryOf(std::string const &device) {
    if (auto const found = _entries.find(device); found != _entries.end())
        return found->second;
    if (_entries.size() >= _most)
        throw Malformed("More than " + std::to_string(_most) + " devices", "");
    Entry &entry = _entries[device];
    if (auto const tags = _absent.extract(device))
        _SetTags(device, tags.mapped());
    return entry;
}

Registry::Entry const *Registry::_Find(std::string_view device) const {
    auto const found = _entries.find(device);
    return found == _entries.end() ? nullptr : &found->second;
}

void Registry::_Clear(std::vector<Pool::Index> &texts) {
    for (Pool::Index const text : texts)
        _pool.Drop(text);
    texts.clear();
}

void Registry::_Erase(Entries::iterator entry) {
    Entry &gone = entry->second;
    _Clear(gone.settings);
    _Clear(gone.tags);
    for (Pool::Index const text : {gone.model, gone.firmware, gone.trial, gone.uplink})
        _pool.Drop(text);
    _online -= static_cast<std::size_t>(gone.online);
    _entries.erase(entry);
}

void Registry::_Report(Entry &entry, json::value const &reported) {
    json::value const &settings = reported.find("settings");
    if (settings.type() != json::is_object || settings.object().size() > mostSettings)
        throw Malformed("Reports no settings, or too many", "");
    entry.name = LineOf(reported, "name");
    entry.serial = LineOf(reported, "serial");
    entry.revision = LineOf(reported, "revision");
    entry.restart = reported.get("restart", false);
    entry.uptime = SecondsOf(reported, "uptime");
    _pool.Change(entry.model, LineOf(reported, "model"));
    _pool.Change(entry.firmware, LineOf(reported, "firmware"));
    _pool.Change(entry.trial, LineOf(reported, "trial"));
    // First those that are there now, so that what both have stays in the pool.
    std::vector<Pool::Index> taken;
    taken.reserve(settings.object().size());
    for (auto const &[key, value] : settings.object()) {
        if (key.str().size() <= mostKey)
            taken.push_back(_pool.Take(Pair(key.str(), value)));
    }
    std::sort(taken.begin(), taken.end());
    _Clear(entry.settings);
    entry.settings = std::move(taken);
}

void Registry::_AddHealth(Entry &entry, json::value const &health) {
    Sample sample{.time = SecondsOf(health, "time"),
                  .temperature = ScaledOf(health, "temperature", tenths),
                  .load = ScaledOf(health, "load", hundredths),
                  .memory = untold,
                  .signal = ScaledOf(health, "signal", 1)};
    double const total = health.get("memory_total", 0.0);
    if (total > 0)
        sample.memory = Scaled(health.get("memory_used", 0.0) / total, perMille);
    entry.uptime = SecondsOf(health, "uptime");
    entry.address = LineOf(health, "address");
    _pool.Change(entry.uplink, LineOf(health, "uplink"));
    auto &samples = entry.samples;
    // Told again, with a new connection?
    if (!samples.empty() && samples[(entry.oldest + samples.size() - 1) % samples.size()].time == sample.time)
        return;
    if (samples.size() < mostSamples) {
        samples.push_back(sample);
        return;
    }
    samples[entry.oldest] = sample;
    entry.oldest = static_cast<std::uint8_t>((entry.oldest + 1) % mostSamples);
}

void Registry::Lost() {
    std::unique_lock const lock(_guard);
    for (auto &[device, entry] : _entries)
        entry.online = false;
    _online = 0;
}

void Registry::SetTags(Tags const &tags) {
    std::unique_lock const lock(_guard);
    for (auto &[device, entry] : _entries)
        _Clear(entry.tags);
    _absent.clear();
    for (auto const &[device, own] : tags)
        _SetTags(device, own);
}

void Registry::_SetTags(std::string const &device, std::vector<std::string> const &tags) {
    auto const found = _entries.find(device);
    if (found == _entries.end()) {
        _absent[device] = tags;
        return;
    }
    _Clear(found->second.tags);
    for (auto const &tag : tags)
        found->second.tags.push_back(_pool.Take(tag));
}

void Registry::SetTags(std::string const &device, std::vector<std::string> const &tags) {
    std::unique_lock const lock(_guard);
    _SetTags(device, tags);
}

void Registry::Forget(std::string const &device) {
    std::unique_lock const lock(_guard);
    if (auto const found = _entries.find(device); found != _entries.end())
        _Erase(found);
}

bool Registry::Knows(std::string const &device) const {
    std::shared_lock const lock(_guard);
    return _Find(device) != nullptr;
}

bool Registry::IsOnline(std::string const &device) const {
    return AreOnline({device}).front();
}

bool Registry::HasReported(std::string const &device) const {
    std::shared_lock const lock(_guard);
    Entry const *const entry = _Find(device);
    return entry && !entry->settings.empty();
}

std::vector<bool> Registry::AreOnline(std::vector<std::string> const &devices) const {
    std::shared_lock const lock(_guard);
    std::vector<bool> online;
    online.reserve(devices.size());
    for (auto const &device : devices) {
        Entry const *const entry = _Find(device);
        online.push_back(entry && entry->online);
    }
    return online;
}

std::string Registry::NameOf(std::string const &device) const {
    std::shared_lock const lock(_guard);
    Entry const *const entry = _Find(device);
    return entry ? entry->name : "";
}

std::vector<std::string> Registry::TagsOf(std::string const &device) const {
    std::shared_lock const lock(_guard);
    std::vector<std::string> tags;
    if (Entry const *const entry = _Find(device)) {
        for (Pool::Index const tag : entry->tags)
            tags.push_back(_pool.Text(tag));
    }
    return tags;
}

std::array<std::size_t, 2> Registry::Count() const {
    std::shared_lock const lock(_guard);
    return {_entries.size(), _online};
}

std::size_t Registry::CountUnreported() const {
    std::shared_lock const lock(_guard);
    return static_cast<std::size_t>(std::count_if(
        _entries.begin(), _entries.end(), [](auto const &entry) { return entry.second.settings.empty(); }));
}

std::vector<std::string> Registry::Unreported(std::string const &after, std::size_t most) const {
    std::vector<std::string> devices;
    std::shared_lock const lock(_guard);
    for (auto entry = _entries.upper_bound(after); entry != _entries.end() && devices.size() < most;
         ++entry) {
        if (entry->second.settings.empty())
            devices.push_back(entry->first);
    }
    return devices;
}

json::value Registry::_ValueOf(Entry const &entry, std::string const &key) const {
    std::string const start = PairStart(key);
    for (Pool::Index const pair : entry.settings) {
        if (_pool.Text(pair).starts_with(start)) {
            std::string name;
            return ParsedPair(_pool.Text(pair), name);
        }
    }
    return json::null();
}

json::object Registry::Before(std::string const &device, json::object const &patch) const {
    std::shared_lock const lock(_guard);
    json::object before;
    Entry const *const entry = _Find(device);
    if (!entry || entry->settings.empty())
        return before;
    for (auto const &[key, value] : patch)
        before[key] = _ValueOf(*entry, key.str());
    return before;
}

json::value Registry::_Shown(Sample const &sample) const {
    json::value shown = json::object();
    auto const show = [&shown](char const *member, std::int16_t value, double scale) {
        if (value != untold)
            shown[member] = value / scale;
    };
    if (sample.time != 0)
        shown["time"] = sample.time;
    show("temperature", sample.temperature, tenths);
    show("load", sample.load, hundredths);
    show("memory", sample.memory, perMille / 100);  // per cent
    show("signal", sample.signal, 1);
    return shown;
}

json::value Registry::_Shown(std::string const &device, Entry const &entry) const {
    json::value shown;
    shown["id"] = device;
    shown["name"] = entry.name;
    shown["model"] = _pool.Text(entry.model);
    shown["firmware"] = _pool.Text(entry.firmware);
    shown["serial"] = entry.serial;
    shown["online"] = entry.online;
    shown["seen"] = entry.seen;
    shown["restart"] = entry.restart;
    shown["trial"] = _pool.Text(entry.trial);
    json::array tags;
    for (Pool::Index const tag : entry.tags)
        tags.emplace_back(_pool.Text(tag));
    shown["tags"] = tags;
    json::value health = json::object();
    if (!entry.samples.empty()) {
        auto const &samples = entry.samples;
        health = _Shown(samples[(entry.oldest + samples.size() - 1) % samples.size()]);
        health["address"] = entry.address;
        health["uplink"] = _pool.Text(entry.uplink);
    }
    shown["health"] = health;
    return shown;
}

Registry::Wanted Registry::_Prepare(Filter const &filter) const {
    Wanted wanted(filter);
    auto const find = [&](std::optional<std::string> const &text, std::optional<Pool::Index> &index) {
        if (text)
            index = _pool.Find(*text);
        wanted.nobody = wanted.nobody || (text && !index);
    };
    find(filter.firmware, wanted.firmware);
    find(filter.model, wanted.model);
    find(filter.tag, wanted.tag);
    if (!filter.differs_from.empty()) {
        wanted.reference = _Find(filter.differs_from);
        wanted.nobody = wanted.nobody || !wanted.reference;
    }
    for (auto const &[key, value] : filter.differs)
        wanted.settings.push_back(_pool.Find(Pair(key.str(), value)));
    return wanted;
}

bool Registry::_Differs(Entry const &entry, Wanted const &wanted) const {
    if (entry.settings.empty())
        return false;  // nobody knows
    bool differs = wanted.settings.empty();
    for (auto const &setting : wanted.settings)
        differs = differs || !setting ||
                  !std::binary_search(entry.settings.begin(), entry.settings.end(), *setting);
    if (!differs || !wanted.reference)
        return differs;
    std::vector<Pool::Index> difference;
    std::set_symmetric_difference(entry.settings.begin(), entry.settings.end(),
                                  wanted.reference->settings.begin(), wanted.reference->settings.end(),
                                  std::back_inserter(difference));
    return std::any_of(difference.begin(), difference.end(),
                       [this](Pool::Index pair) { return !IsOwn(_pool.Text(pair)); });
}

bool Registry::_IsMeant(Entries::value_type const &found, Wanted const &wanted) const {
    auto const &[device, entry] = found;
    Filter const &filter = wanted.filter;
    if ((filter.online && *filter.online != entry.online) ||
        (wanted.firmware && *wanted.firmware != entry.firmware) ||
        (wanted.model && *wanted.model != entry.model) || (filter.ids && !filter.ids->contains(device)))
        return false;
    auto const &tags = entry.tags;
    if (wanted.tag && std::find(tags.begin(), tags.end(), *wanted.tag) == tags.end())
        return false;
    auto const &part = wanted.search;
    if (!part.empty() && !Has(device, part) && !Has(entry.name, part) && !Has(entry.serial, part) &&
        !Has(entry.address, part) &&
        std::none_of(tags.begin(), tags.end(), [&](Pool::Index tag) { return Has(_pool.Text(tag), part); }))
        return false;
    bool const asked = wanted.reference || !wanted.settings.empty();
    return !asked || _Differs(entry, wanted);
}

std::vector<Registry::Entries::value_type const *> Registry::_Meant(Filter const &filter) const {
    Wanted const wanted = _Prepare(filter);
    std::vector<Entries::value_type const *> meant;
    if (wanted.nobody)
        return meant;
    for (auto const &entry : _entries) {
        if (_IsMeant(entry, wanted))
            meant.push_back(&entry);
    }
    return meant;
}

bool Registry::_IsBefore(Sort sort, Entries::value_type const &a, Entries::value_type const &b) const {
    switch (sort) {
        case Sort::Name:
            return a.second.name < b.second.name;
        case Sort::Model:
            return _pool.Text(a.second.model) < _pool.Text(b.second.model);
        case Sort::Firmware:
            return _pool.Text(a.second.firmware) < _pool.Text(b.second.firmware);
        case Sort::Online:
            return a.second.online > b.second.online;
        case Sort::Seen:
            return a.second.seen < b.second.seen;
        case Sort::Id:
            break;
    }
    return a.first < b.first;
}

json::value Registry::Devices(Filter const &filter, Window const &window) const {
    std::shared_lock const lock(_guard);
    auto meant = _Meant(filter);
    // By their ids they are already, which are the order of those that are equal.
    if (window.sort != Sort::Id)
        std::stable_sort(meant.begin(), meant.end(),
                         [&](auto const *a, auto const *b) { return _IsBefore(window.sort, *a, *b); });
    if (window.descending)
        std::reverse(meant.begin(), meant.end());
    json::array devices;
    for (std::size_t i = window.offset; i < meant.size() && devices.size() < window.limit; ++i)
        devices.push_back(_Shown(meant[i]->first, meant[i]->second));
    std::map<Pool::Index, std::int64_t> firmwares;
    std::map<Pool::Index, std::int64_t> models;
    std::map<Pool::Index, std::int64_t> tags;
    for (auto const &[device, entry] : _entries) {
        ++firmwares[entry.firmware];
        ++models[entry.model];
        for (Pool::Index const tag : entry.tags)
            ++tags[tag];
    }
    json::value shown;
    shown["total"] = _entries.size();
    shown["matching"] = meant.size();
    shown["online"] = _online;
    shown["devices"] = std::move(devices);
    shown["firmwares"] = Counted(firmwares, _pool);
    shown["models"] = Counted(models, _pool);
    shown["tags"] = Counted(tags, _pool);
    return shown;
}

json::value Registry::Device(std::string const &device) const {
    std::shared_lock const lock(_guard);
    Entry const *const entry = _Find(device);
    if (!entry)
        return {};
    json::value shown = _Shown(device, *entry);
    shown["uptime"] = entry->uptime;
    shown["revision"] = entry->revision;
    json::value settings = json::object();
    for (Pool::Index const pair : entry->settings) {
        std::string key;
        json::value value = ParsedPair(_pool.Text(pair), key);
        settings.object()[key] = std::move(value);
    }
    shown["settings"] = std::move(settings);
    return shown;
}

json::value Registry::Health(std::string const &device) const {
    std::shared_lock const lock(_guard);
    Entry const *const entry = _Find(device);
    if (!entry)
        return {};
    json::value shown;
    shown["samples"] = json::array();
    auto const &samples = entry->samples;
    for (std::size_t i = 0; i < samples.size(); ++i)
        shown["samples"].array().push_back(_Shown(samples[(entry->oldest + i) % samples.size()]));
    return shown;
}

std::vector<std::string> Registry::Select(Filter const &filter) const {
    std::shared_lock const lock(_guard);
    auto meant = _Meant(filter);
    std::stable_partition(meant.begin(), meant.end(), [](auto const *entry) { return entry->second.online; });
    std::vector<std::string> devices;
    devices.reserve(meant.size());
    for (auto const *const entry : meant)
        devices.push_back(entry->first);
    return devices;
}

}  // namespace fleet::console
