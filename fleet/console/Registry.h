#pragma once

#include <cppcms/json.h>

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <vector>

#include "fleet/console/Filter.h"
#include "fleet/console/Pool.h"

namespace fleet::console {

/// What devices say of themselves, in memory: a broker tells it again to whoever comes. And their tags, for
/// devices are looked for by them. Any thread may call it.
class Registry {
  public:
    /// Of more than \a most devices the last ones are not known.
    explicit Registry(std::size_t most) : _most(most) {}

    /// Takes \a message, which has come at \a now, seconds of UTC, about \a device: what it says as \a name
    /// (fleet::topics). \a retained: it has been said before. Throws Malformed.
    void Take(std::string const &device, std::string_view name, std::string_view message, bool retained,
              std::int64_t now);
    /// Who is online is not known until the broker tells it again.
    void Lost();
    /// The tags of all devices that have some.
    using Tags = std::map<std::string, std::vector<std::string>>;
    void SetTags(Tags const &tags);
    void SetTags(std::string const &device, std::vector<std::string> const &tags);
    void Forget(std::string const &device);

    bool Knows(std::string const &device) const;
    bool IsOnline(std::string const &device) const;
    bool HasReported(std::string const &device) const;
    /// Whether they are online, for many at once; in their order.
    std::vector<bool> AreOnline(std::vector<std::string> const &devices) const;
    std::string NameOf(std::string const &device) const;
    std::vector<std::string> TagsOf(std::string const &device) const;
    std::array<std::size_t, 2> Count() const;  ///< devices, and those that are online
    std::size_t CountUnreported() const;       ///< devices that have not told what they are
    /// Their ids, in order, behind \a after; at most \a most.
    std::vector<std::string> Unreported(std::string const &after, std::size_t most) const;

    /// What \a device has for the keys of \a patch: null where there is no such setting. Empty where it has
    /// not reported.
    cppcms::json::object Before(std::string const &device, cppcms::json::object const &patch) const;

    // What the methods of these names tell; undefined for a device that is not known.
    cppcms::json::value Devices(Filter const &filter, Window const &window) const;
    cppcms::json::value Device(std::string const &device) const;
    cppcms::json::value Health(std::string const &device) const;

    /// Those of the filter, first the ones that are online, by their ids.
    std::vector<std::string> Select(Filter const &filter) const;

  private:
    /// What of a device's health is kept; the least number for what it has not told.
    struct Sample {
        std::uint32_t time;
        std::int16_t temperature;  // tenths of a degree
        std::int16_t load;         // hundredths
        std::int16_t memory;       // in use, per mille
        std::int16_t signal;       // dBm
    };
    /// 10,000 of them must stay small: see docs/fleet.md.
    struct Entry {
        std::string name;
        std::string serial;
        std::string revision;
        std::string address;
        std::vector<Pool::Index> settings;  // "KEY":VALUE as JSON, by their keys
        std::vector<Pool::Index> tags;
        std::vector<Sample> samples;  // a ring
        Pool::Index model = Pool::empty;
        Pool::Index firmware = Pool::empty;
        Pool::Index trial = Pool::empty;
        Pool::Index uplink = Pool::empty;
        std::uint32_t seen = 0;
        std::uint32_t uptime = 0;
        std::uint8_t oldest = 0;  // of the samples
        bool online = false;
        bool restart = false;
    };
    using Entries = std::map<std::string, Entry, std::less<>>;
    struct Wanted;

    Entry &_EntryOf(std::string const &device);
    Entry const *_Find(std::string_view device) const;
    void _SetTags(std::string const &device, std::vector<std::string> const &tags);
    void _Clear(std::vector<Pool::Index> &texts);
    void _Erase(Entries::iterator entry);
    void _Report(Entry &entry, cppcms::json::value const &reported);
    void _AddHealth(Entry &entry, cppcms::json::value const &health);
    cppcms::json::value _Shown(std::string const &device, Entry const &entry) const;
    cppcms::json::value _Shown(Sample const &sample) const;
    cppcms::json::value _ValueOf(Entry const &entry, std::string const &key) const;
    bool _Differs(Entry const &entry, Wanted const &wanted) const;
    bool _IsMeant(Entries::value_type const &entry, Wanted const &wanted) const;
    Wanted _Prepare(Filter const &filter) const;
    bool _IsBefore(Sort sort, Entries::value_type const &a, Entries::value_type const &b) const;
    std::vector<Entries::value_type const *> _Meant(Filter const &filter) const;

    std::size_t const _most;
    mutable std::shared_mutex _guard;
    Pool _pool;
    Entries _entries;
    Tags _absent;  // the tags of devices that have not said anything yet
    std::size_t _online = 0;
};

}  // namespace fleet::console
