// A fleet of devices in one process: each has its own connection of MQTT 5 with a last will, and says and
// does on it what webconfig-agent would (docs/fleet.md), as a device whose service answers at once.
//
//   fleet_agents PORT DEVICES SAMPLE
//
// The broker is on 127.0.0.1. SAMPLE has what one real device told as "reported" and as "health". Each line
// of standard input is a command of a word and a number, each answer one line of JSON:
//
//   connect 0       answered when all are connected and the broker has acknowledged all that they say of
//   themselves cut 0           ends all connections without a word health SECONDS  each says how it does as
//   often, from now on; 0: never flood SECONDS   as many such messages as the broker takes, for that time
//   failing PERCENT, silent PERCENT   of the devices, from now on: a change fails there, or is never answered
//   count 0

#include <cppcms/json.h>
#include <fcntl.h>
#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <deque>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "WebApps/webconfig/settings/Catalogue.h"
#include "fleet/Messages.h"

/// In the place of the system's. The library makes a pair of sockets for each connection, by which threads
/// wake its own loop: there are none here, and the pairs would be two thirds of all descriptors. It does
/// without where it gets none.
extern "C" int socketpair(int /*domain*/, int /*type*/, int /*protocol*/, int * /*pair*/) {
    errno = EMFILE;
    return -1;
}

namespace {

namespace json = cppcms::json;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr char host[] = "127.0.0.1";
// As the agent has them.
constexpr int keepAlive = 60;  // seconds
constexpr int atLeastOnce = 1;
constexpr std::uint16_t receiveMaximum = 4;
constexpr std::uint32_t sessionSeconds = 30 * 24 * 60 * 60;
constexpr std::size_t remembered = 300;  // changes
constexpr int trialSeconds = 120;        // as the device is configured; told only

constexpr rlim_t otherDescriptors = 32;
/// The broker has to take connections before its queue of them is full.
constexpr unsigned mostConnecting = 64;
constexpr Seconds reconnectPause{1};
/// Until a device that a change has cut off is back, with its old settings.
constexpr Seconds darkness{3};
constexpr unsigned floodWindow = 2000;  // messages that the broker has not acknowledged
constexpr double looksASecond = 0.2;    // at each connection, whether its keep-alive is due
constexpr int longestRest = 20;         // milliseconds

struct Known {
    std::string id;
    std::string result;
};

struct Device {
    class Fleet *fleet = nullptr;
    std::size_t number = 0;
    std::string id;
    struct Destroy {
        void operator()(mosquitto *connection) const { mosquitto_destroy(connection); }
    };
    std::unique_ptr<mosquitto, Destroy> connection;
    bool writes = false;  // waits until it can
    bool connecting = false;
    bool reached = false;  // the broker has acknowledged that it is online
    bool reopens = false;  // a change is on trial
    int online = 0;        // the message that says so
    unsigned unacknowledged = 0;
    json::object changed;  // settings that are not those of the sample
    json::object before;   // the same, for the trial
    std::deque<Known> known;
    json::value trial;  // its result, once it is over
};

class Fleet {
  public:
    Fleet(int port, unsigned devices, json::value sample);
    ~Fleet() { ::close(_epoll); }
    Fleet(Fleet const &) = delete;
    Fleet &operator=(Fleet const &) = delete;

    /// Until standard input ends.
    void Serve();

  private:
    Device _Make(std::size_t number);
    void _Connect(Device &device);
    void _ConnectDue();
    void _Lose(Device &device, Seconds pause);
    void _Look(Device &device, std::uint32_t events);
    void _Write(Device &device);
    void _Reopen(Device &device);
    int _Publish(Device &device, char const *topic, std::string const &message, bool retained);
    int _Publish(Device &device, std::string const &id, char const *topic, std::string const &message,
                 bool retained);
    std::string _Reported(Device const &device) const;
    std::string _Health() const;
    void _Report(Device &device) { _Publish(device, fleet::topics::reported, _Reported(device), true); }
    void _TellHealth(Device &device) { _Publish(device, fleet::topics::health, _Health(), true); }
    void _TellHealthDue();
    void _TellAbsent();
    void _KeepAlive();

    void _OnConnect(Device &device, int reason);
    void _OnPublish(Device &device, int message);
    void _OnMessage(Device &device, mosquitto_message const &message);
    void _Apply(Device &device, fleet::Change const &change);
    void _EndTrial(Device &device);
    void _Result(Device &device, json::value result, char const *state);
    bool _IsOneOf(Device const &device, double percent) const;

    void _ReadCommands();
    void _Command(std::string const &word, double number);
    json::value _Counts() const;

    int const _port;
    json::value const _sample;
    std::size_t const _ours;
    int const _epoll = ::epoll_create1(EPOLL_CLOEXEC);
    std::vector<Device> _devices;
    std::multimap<Clock::time_point, Device *> _later;  // connections
    unsigned _connecting = 0, _reached = 0, _unacknowledged = 0;
    bool _ends = false;
    std::string _refusal;
    std::string _typed;

    Seconds _health{0};
    Clock::time_point _healthBegin, _begin = Clock::now();
    std::size_t _healthTold = 0, _looked = 0, _floodTold = 0;
    std::size_t _absent = 0, _absentTold = 0;
    Clock::time_point _floodEnd;
    double _failing = 0, _silent = 0;
    std::function<bool()> _answer;  // to the command that waits for one; whether it was given

    std::size_t _acknowledged = 0, _bytes = 0, _changes = 0, _repeated = 0, _lost = 0, _rubbish = 0;
    std::map<std::string, std::size_t> _published, _results;  // by topic, by state
};

void Check(int code, char const *what) {
    if (code == MOSQ_ERR_ERRNO)
        throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
    if (code != MOSQ_ERR_SUCCESS)
        throw std::runtime_error(std::string(what) + ": " + mosquitto_strerror(code));
}

std::string Revision(json::value const &settings) {
    char text[17];
    std::snprintf(text, sizeof text, "%016zx", std::hash<std::string>()(settings.save()));
    return text;
}

void Answer(json::value const &answer) {
    std::cout << answer.save() << std::endl;
}

/// All that they can be, for what it needs.
void RaiseDescriptors(rlim_t needed) {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    if (limit.rlim_max < needed)
        throw std::runtime_error("This needs " + std::to_string(needed) + " descriptors, and " +
                                 std::to_string(limit.rlim_max) +
                                 " are the most that are allowed here: see \"ulimit -Hn\"");
    limit.rlim_cur = limit.rlim_max;
    Check(::setrlimit(RLIMIT_NOFILE, &limit) == 0 ? MOSQ_ERR_SUCCESS : MOSQ_ERR_ERRNO, "Descriptors");
}

Fleet::Fleet(int port, unsigned devices, json::value sample)
    : _port(port), _sample(std::move(sample)), _ours(devices) {
    _devices.reserve(devices);  // each connection knows the address of its own
    for (unsigned number = 0; number < devices; ++number)
        _devices.push_back(_Make(number));
    epoll_event event{};
    event.events = EPOLLIN;  // of standard input: null
    Check(::epoll_ctl(_epoll, EPOLL_CTL_ADD, STDIN_FILENO, &event) == 0 ? MOSQ_ERR_SUCCESS : MOSQ_ERR_ERRNO,
          "Standard input");
    ::fcntl(STDIN_FILENO, F_SETFL, ::fcntl(STDIN_FILENO, F_GETFL) | O_NONBLOCK);
}

Device Fleet::_Make(std::size_t number) {
    char id[sizeof "VD-0000-0000" + 20];
    std::snprintf(id, sizeof id, "VD-%04zu-%04zu", number / 10000, number % 10000);
    Device device;
    device.fleet = this;
    device.number = number;
    device.id = id;
    // What no two devices have in common.
    device.changed["net/hostname"] = std::string("mast-") + (id + 3);
    device.changed["net/wifi/ap/essid"] = std::string("service-") + (id + 3);
    device.changed["net/lan_ipaddr"] = "10." + std::to_string(number / 65536 % 256) + '.' +
                                       std::to_string(number / 256 % 256) + '.' +
                                       std::to_string(number % 256);
    return device;
}

void Fleet::Serve() {
    std::vector<epoll_event> events(512);
    while (!_ends) {
        int const number = ::epoll_wait(_epoll, events.data(), static_cast<int>(events.size()), longestRest);
        for (int n = 0; n < number; ++n) {
            auto *const device = static_cast<Device *>(events[n].data.ptr);
            if (device == nullptr)
                _ReadCommands();
            else if (device->connection)
                _Look(*device, events[n].events);
        }
        if (!_refusal.empty())
            throw std::runtime_error("The broker refuses a connection: " + _refusal);
        _ConnectDue();
        _TellHealthDue();
        _TellAbsent();
        _KeepAlive();
        if (_answer && _answer())
            _answer = nullptr;
    }
}

void Fleet::_Connect(Device &device) {
    device.connection.reset(mosquitto_new(device.id.c_str(), false, &device));
    if (!device.connection)
        throw std::bad_alloc();
    auto *const connection = device.connection.get();
    Check(mosquitto_int_option(connection, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5), "MQTT 5");
    Check(mosquitto_will_set_v5(connection, fleet::Topic(device.id, fleet::topics::online).c_str(), 5,
                                "false", atLeastOnce, true, nullptr),
          "Last will");
    mosquitto_connect_v5_callback_set(
        connection, [](mosquitto *, void *self, int reason, int, mosquitto_property const *) {
            auto &device = *static_cast<Device *>(self);
            device.fleet->_OnConnect(device, reason);
        });
    mosquitto_message_v5_callback_set(
        connection,
        [](mosquitto *, void *self, mosquitto_message const *message, mosquitto_property const *) {
            auto &device = *static_cast<Device *>(self);
            device.fleet->_OnMessage(device, *message);
        });
    mosquitto_publish_v5_callback_set(
        connection, [](mosquitto *, void *self, int message, int, mosquitto_property const *) {
            auto &device = *static_cast<Device *>(self);
            device.fleet->_OnPublish(device, message);
        });
    mosquitto_property *properties = nullptr;
    mosquitto_property_add_int32(&properties, MQTT_PROP_SESSION_EXPIRY_INTERVAL, sessionSeconds);
    mosquitto_property_add_int32(&properties, MQTT_PROP_MAXIMUM_PACKET_SIZE, fleet::maxMessage);
    mosquitto_property_add_int16(&properties, MQTT_PROP_RECEIVE_MAXIMUM, receiveMaximum);
    int const result = mosquitto_connect_bind_v5(connection, host, _port, keepAlive, nullptr, properties);
    mosquitto_property_free_all(&properties);
    if (result != MOSQ_ERR_SUCCESS) {
        _Lose(device, reconnectPause);
        return;
    }
    ++_connecting;
    device.connecting = true;
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.ptr = &device;
    Check(::epoll_ctl(_epoll, EPOLL_CTL_ADD, mosquitto_socket(connection), &event) == 0 ? MOSQ_ERR_SUCCESS
                                                                                        : MOSQ_ERR_ERRNO,
          "A connection");
    device.writes = false;
    _Write(device);
}

void Fleet::_ConnectDue() {
    auto const now = Clock::now();
    while (_connecting < mostConnecting && !_later.empty() && _later.begin()->first <= now) {
        Device &device = *_later.begin()->second;
        _later.erase(_later.begin());
        _Connect(device);
    }
}

void Fleet::_Lose(Device &device, Seconds pause) {
    _connecting -= device.connecting;
    ++_lost;
    device.connection.reset();
    _reached -= device.reached;
    _unacknowledged -= device.unacknowledged;
    device.unacknowledged = 0;
    device.connecting = device.reached = false;
    _later.emplace(Clock::now() + std::chrono::duration_cast<Clock::duration>(pause), &device);
}

void Fleet::_Look(Device &device, std::uint32_t events) {
    auto *const connection = device.connection.get();
    int result = MOSQ_ERR_SUCCESS;
    if ((events & EPOLLOUT) != 0)
        result = mosquitto_loop_write(connection, 1);
    if (result == MOSQ_ERR_SUCCESS && (events & ~EPOLLOUT) != 0)
        result = mosquitto_loop_read(connection, 1);
    if (result != MOSQ_ERR_SUCCESS)
        _Lose(device, reconnectPause);
    else if (device.reopens)
        _Reopen(device);
    else
        _Write(device);
}

/// What callbacks have published waits for this.
void Fleet::_Write(Device &device) {
    auto *const connection = device.connection.get();
    if (mosquitto_want_write(connection))
        mosquitto_loop_write(connection, 1);
    bool const writes = mosquitto_want_write(connection);
    if (writes == device.writes)
        return;
    device.writes = writes;
    epoll_event event{};
    event.events = writes ? EPOLLIN | EPOLLOUT : EPOLLIN;
    event.data.ptr = &device;
    ::epoll_ctl(_epoll, EPOLL_CTL_MOD, mosquitto_socket(connection), &event);
}

/// As the agent does when a change is on trial; a device that it cuts off comes back later.
void Fleet::_Reopen(Device &device) {
    device.reopens = false;
    mosquitto_disconnect_v5(device.connection.get(), MQTT_RC_DISCONNECT_WITH_WILL_MSG, nullptr);
    mosquitto_loop_write(device.connection.get(), 1);
    _Lose(device, _IsOneOf(device, _failing) ? darkness : Seconds(0));
    --_lost;
}

int Fleet::_Publish(Device &device, char const *topic, std::string const &message, bool retained) {
    return _Publish(device, device.id, topic, message, retained);
}

int Fleet::_Publish(Device &device, std::string const &id, char const *topic, std::string const &message,
                    bool retained) {
    int number = 0;
    int const result = mosquitto_publish_v5(device.connection.get(), &number, fleet::Topic(id, topic).c_str(),
                                            static_cast<int>(message.size()), message.data(), atLeastOnce,
                                            retained, nullptr);
    if (result != MOSQ_ERR_SUCCESS)
        return 0;
    ++device.unacknowledged;
    ++_unacknowledged;
    ++_published[topic];
    _bytes += message.size();
    return number;
}

std::string Fleet::_Reported(Device const &device) const {
    static char const *const firmwares[] = {"1.0.0", "1.1.0", "1.2.0"};
    json::value reported = _sample["reported"];
    for (auto const &[key, value] : device.changed) {
        if (value.is_null())
            reported["settings"].object().erase(key);
        else
            reported["settings"].object()[key] = value;
    }
    reported["name"] = reported["settings"].object()["net/hostname"];
    reported["serial"] = device.id;
    reported["firmware"] = firmwares[device.number % std::size(firmwares)];
    reported["revision"] = Revision(reported["settings"]);
    reported["uptime"] = 1000000 + device.number;
    return reported.save();
}

std::string Fleet::_Health() const {
    static std::minstd_rand random;
    auto const more = [](unsigned most) { return static_cast<int>(random() % most); };
    json::value health = _sample["health"];
    health["load"] = more(200) / 100.0;
    health["memory_used"] = 41943040 + 4096 * more(1000);
    health["signal"] = -60 - more(40);
    health["temperature"] = 30 + more(20);
    health["time"] = static_cast<std::int64_t>(std::time(nullptr));
    return health.save();
}

/// Spread over the interval, as those are that have connected at different times.
void Fleet::_TellHealthDue() {
    auto const next = [this](std::size_t &told) {
        Device &device = _devices[told++ % _ours];
        if (device.reached) {
            _TellHealth(device);
            _Write(device);
        }
    };
    auto const now = Clock::now();
    if (_health > Seconds(0)) {
        double const due = Seconds(now - _healthBegin) / _health * static_cast<double>(_ours);
        while (static_cast<double>(_healthTold) < due)
            next(_healthTold);
    }
    while (now < _floodEnd && _unacknowledged < floodWindow && _reached == _ours)
        next(_floodTold);
}

/// Each by one of those that are connected.
void Fleet::_TellAbsent() {
    for (; _absentTold < _absent && _unacknowledged < floodWindow && _reached == _ours; ++_absentTold) {
        Device const absent = _Make(_ours + _absentTold);
        Device &speaker = _devices[_absentTold % _ours];
        _Publish(speaker, absent.id, fleet::topics::online, "false", true);
        _Publish(speaker, absent.id, fleet::topics::reported, _Reported(absent), true);
        _Publish(speaker, absent.id, fleet::topics::health, _Health(), true);
        _Write(speaker);
    }
}

void Fleet::_KeepAlive() {
    double const due = Seconds(Clock::now() - _begin).count() * looksASecond * static_cast<double>(_ours);
    for (; static_cast<double>(_looked) < due; ++_looked) {
        Device &device = _devices[_looked % _ours];
        if (!device.connection)
            continue;
        if (mosquitto_loop_misc(device.connection.get()) != MOSQ_ERR_SUCCESS)
            _Lose(device, reconnectPause);
        else
            _Write(device);
    }
}

void Fleet::_OnConnect(Device &device, int reason) {
    if (reason != 0) {  // the broker ends the connection, and the library is no place to throw through
        _refusal = mosquitto_reason_string(reason);
        return;
    }
    --_connecting;
    device.connecting = false;
    mosquitto_subscribe_v5(device.connection.get(), nullptr,
                           fleet::Topic(device.id, fleet::topics::change).c_str(), atLeastOnce, 0, nullptr);
    device.online = _Publish(device, fleet::topics::online, "true", true);
}

void Fleet::_OnPublish(Device &device, int message) {
    ++_acknowledged;
    --device.unacknowledged;
    --_unacknowledged;
    if (message != device.online)
        return;
    device.online = 0;
    device.reached = true;
    ++_reached;
    if (!device.trial.is_undefined())
        _EndTrial(device);
    _Report(device);
    _TellHealth(device);
}

void Fleet::_OnMessage(Device &device, mosquitto_message const &message) {
    if (_IsOneOf(device, _silent))
        return;
    try {
        fleet::Change const change = fleet::ReadChange(
            {static_cast<char const *>(message.payload), static_cast<std::size_t>(message.payloadlen)});
        ++_changes;
        auto const known = std::find_if(device.known.begin(), device.known.end(),
                                        [&change](Known const &one) { return one.id == change.id; });
        if (known == device.known.end()) {
            _Apply(device, change);
        } else {
            ++_repeated;
            _Publish(device, fleet::topics::result, known->result, false);
        }
    } catch (fleet::Malformed const &) {
        ++_rubbish;
    }
}

void Fleet::_Apply(Device &device, fleet::Change const &change) {
    json::value result;
    result["id"] = change.id;
    if (change.expires != 0 && change.expires < std::time(nullptr)) {
        result["code"] = "expired";
        result["message"] = "It has come too late";
        _Result(device, std::move(result), fleet::states::refused);
        return;
    }
    bool const fails = _IsOneOf(device, _failing);
    device.before = device.changed;
    result["changed"] = json::array();
    bool isOnTrial = false;
    for (auto const &[key, value] : change.patch) {
        auto const *const setting = webconfig::settings::Find(key.str());
        isOnTrial = isOnTrial || (setting != nullptr && setting->reach);
        device.changed[key] = value;
        result["changed"].array().emplace_back(key.str());
    }
    result["restart"] = false;
    result["in_effect"] = true;
    result["set"] = static_cast<int>(_changes);
    if (isOnTrial) {
        device.trial = result;
        device.reopens = true;
        result["seconds"] = trialSeconds;
        _Result(device, std::move(result), fleet::states::trial);
    } else if (fails) {
        device.changed = device.before;
        result["code"] = "failed";
        result["message"] = "The parameter store cannot be written";
        _Result(device, std::move(result), fleet::states::failed);
    } else {
        _Result(device, std::move(result), fleet::states::done);
        _Report(device);
    }
}

/// On a new connection, where all that is reported follows.
void Fleet::_EndTrial(Device &device) {
    bool const fails = _IsOneOf(device, _failing);
    if (fails)
        device.changed = device.before;
    _Result(device, std::move(device.trial), fails ? fleet::states::returned : fleet::states::kept);
    device.trial = json::value();
}

void Fleet::_Result(Device &device, json::value result, char const *state) {
    std::string const id = result["id"].str();
    result["state"] = state;
    result["revision"] = Revision(json::value(device.changed));
    std::string const text = result.save();
    _Publish(device, fleet::topics::result, text, false);
    ++_results[state];
    auto const known = std::find_if(device.known.begin(), device.known.end(),
                                    [&id](Known const &one) { return one.id == id; });
    if (known != device.known.end())
        known->result = text;
    else
        device.known.push_back({id, text});
    if (device.known.size() > remembered)
        device.known.pop_front();
}

/// The same ones each time, not neighbours, and not the first.
bool Fleet::_IsOneOf(Device const &device, double percent) const {
    return (device.number * 37 + 99) % 100 < percent;
}

void Fleet::_ReadCommands() {
    char buffer[256];
    auto const size = ::read(STDIN_FILENO, buffer, sizeof buffer);
    if (size <= 0) {
        _ends = true;
        return;
    }
    _typed.append(buffer, static_cast<std::size_t>(size));
    for (std::size_t end = 0; (end = _typed.find('\n')) != std::string::npos; _typed.erase(0, end + 1)) {
        auto const space = std::min(_typed.find(' '), end);
        _Command(_typed.substr(0, space), std::atof(_typed.c_str() + space));
    }
}

void Fleet::_Command(std::string const &word, double number) {
    auto const begin = Clock::now();
    auto const told = _acknowledged;
    auto const inTime = [this, begin, told] {
        json::value answer = _Counts();
        answer["seconds"] = Seconds(Clock::now() - begin).count();
        answer["messages"] = static_cast<double>(_acknowledged - told);
        Answer(answer);
        return true;
    };
    if (word == "connect") {
        for (auto &device : _devices) {
            if (!device.connection)
                _later.emplace(begin, &device);
        }
        _answer = [this, inTime] { return _reached == _ours && _unacknowledged == 0 && inTime(); };
        return;
    }
    if (word == "absent") {
        _absent += static_cast<std::size_t>(number);
        _answer = [this, inTime] { return _absentTold == _absent && _unacknowledged == 0 && inTime(); };
        return;
    }
    if (word == "flood") {
        _floodEnd = begin + std::chrono::duration_cast<Clock::duration>(Seconds(number));
        _answer = [this, inTime] { return Clock::now() >= _floodEnd && _unacknowledged == 0 && inTime(); };
        return;
    }
    if (word == "cut") {
        for (auto &device : _devices) {
            if (device.connection)
                _Lose(device, reconnectPause);
        }
        _later.clear();
        _connecting = 0;
    } else if (word == "health") {
        _health = Seconds(number);
        _healthBegin = begin;
        _healthTold = 0;
    } else if (word == "failing") {
        _failing = number;
    } else if (word == "silent") {
        _silent = number;
    } else if (word != "count") {
        throw std::runtime_error("No such command: " + word);
    }
    Answer(_Counts());
}

json::value Fleet::_Counts() const {
    json::value counts;
    for (auto const &[name, number] : {std::pair{"reached", std::size_t{_reached}},
                                       {"bytes", _bytes},
                                       {"acknowledged", _acknowledged},
                                       {"changes", _changes},
                                       {"repeated", _repeated},
                                       {"rubbish", _rubbish},
                                       {"lost", _lost}})
        counts[name] = static_cast<double>(number);
    for (auto const &[name, numbers] : {std::pair{"published", &_published}, {"results", &_results}}) {
        counts[name] = json::object();
        for (auto const &[of, number] : *numbers)
            counts[name].object()[of] = static_cast<double>(number);
    }
    return counts;
}

json::value ReadSample(char const *path) {
    std::ifstream file(path);
    json::value sample;
    if (!sample.load(file, true))
        throw std::runtime_error(std::string(path) + " is no JSON");
    return sample;
}

}  // namespace

int main(int argc, char *argv[]) {
    if (argc != 4) {
        std::cerr << "usage: fleet_agents PORT DEVICES SAMPLE\n";
        return 2;
    }
    try {
        auto const devices = static_cast<unsigned>(std::stoul(argv[2]));
        RaiseDescriptors(devices + otherDescriptors);
        mosquitto_lib_init();
        Fleet(std::stoi(argv[1]), devices, ReadSample(argv[3])).Serve();
    } catch (std::exception const &failure) {
        std::cerr << "fleet_agents: " << failure.what() << '\n';
        return 1;
    }
    return 0;
}
