#pragma once

#include <cppcms/json.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

/// What devices and a console tell each other over an MQTT broker: docs/fleet.md. All messages are JSON.
namespace fleet {

/// Below a device's own topic.
namespace topics {
inline constexpr char online[] = "online";      ///< retained: true, or false, which is the last will
inline constexpr char reported[] = "reported";  ///< retained: settings, and what the device is
inline constexpr char health[] = "health";      ///< retained: how the device does
inline constexpr char change[] = "change";      ///< to the device: a Change
inline constexpr char result[] = "result";      ///< what has become of a change
}  // namespace topics

/// What "online" says.
namespace words {
inline constexpr char yes[] = "true";
inline constexpr char no[] = "false";
}  // namespace words

/// What a change has come to, "state" of a result. Of the first two more results follow.
namespace states {
inline constexpr char trial[] = "trial";        ///< stored, and goes back if it is not kept
inline constexpr char done[] = "done";          ///< stored, and for good
inline constexpr char kept[] = "kept";          ///< the same, after a trial
inline constexpr char returned[] = "returned";  ///< was on trial, and everything is as before
inline constexpr char refused[] = "refused";    ///< nothing was stored: "code" and "message" say why
inline constexpr char failed[] = "failed";      ///< the device could not: some of it may be stored
}  // namespace states

/// What the history of a device says of who has made a fleet's change.
inline constexpr std::string_view userPrefix = "fleet: ";

/// Bytes of a message; the broker is told, and delivers none that is longer.
inline constexpr std::size_t maxMessage = 64 << 10;

/// Whether \a id can be a device's or a change's: 1 to 64 letters, digits, and "-", "_", ".". So it can be a
/// level of a topic, and a name in a certificate.
bool IsId(std::string_view id);

/// "fleet/ID/NAME".
std::string Topic(std::string const &device, char const *name);

/// What "fleet/ID/NAME" is about; both parts are empty where \a topic is none of a device.
struct Subject {
    std::string_view device;
    std::string_view name;
};
Subject ReadTopic(std::string_view topic);

/// Settings that a device is to have.
struct Change {
    std::string id;              ///< whoever sends it twice sends one change
    std::string who;             ///< for the history and the audit
    cppcms::json::object patch;  ///< keys and values, as settings_set takes them
    std::string based_on;        ///< revision of the settings that it was made from; empty for any
    std::int64_t expires = 0;    ///< seconds of UTC; 0 for never
    bool restart = false;        ///< the device is to be restarted, where it needs that behind the change
};

/// A message that is none of ours.
class Malformed : public std::runtime_error {
  public:
    /// \a id is the message's, where it has one that could be told back.
    Malformed(std::string const &reason, std::string id) : std::runtime_error(reason), _id(std::move(id)) {}
    std::string const &Id() const { return _id; }

  private:
    std::string _id;
};

/// The JSON object that \a message is. Throws Malformed.
cppcms::json::value ReadObject(std::string_view message);

/// Throws Malformed.
Change ReadChange(std::string_view message);

/// The message that is read as \a change.
std::string Written(Change const &change);

}  // namespace fleet
