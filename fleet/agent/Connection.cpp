#include "fleet/agent/Connection.h"

#include <mqtt_protocol.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <stdexcept>

#include "WebApps/webconfig/util/Log.h"
#include "fleet/Messages.h"

namespace fleet::agent {

namespace {

using namespace std::chrono_literals;

constexpr char logTag[] = "fleet/agent/Connection";

constexpr int keepAlive = 60;  // seconds
constexpr int atLeastOnce = 1;
/// Changes that the broker may send before the first is on the disk.
constexpr int receiveMaximum = 4;
/// The broker keeps changes for a device that is away for so long.
constexpr std::uint32_t sessionSeconds = 30 * 24 * 60 * 60;

constexpr std::chrono::milliseconds firstPause = 1s;
constexpr std::chrono::milliseconds longestPause = 5min;
constexpr std::chrono::milliseconds hurriedPause = 3s;  // the longest while a trial runs
/// Two devices of the same name throw each other out: only a connection that lasts so long ends the pauses.
constexpr auto stable = 60s;
constexpr auto connectLimit = 10s;
constexpr auto reachLimit = 20s;

constexpr char yes[] = "true";
constexpr char no[] = "false";

/// From here on, reasons of MQTT are refusals.
constexpr int firstRefusal = 0x80;

/// The library's connect() blocks as long as the kernel has patience, which is two minutes: a signal ends it.
class ConnectLimit {
  public:
    ConnectLimit() {
        struct sigaction interrupt {};
        interrupt.sa_handler = [](int) {};
        ::sigaction(SIGALRM, &interrupt, nullptr);
        Set(connectLimit);
    }
    ~ConnectLimit() { Set(0s); }
    ConnectLimit(ConnectLimit const &) = delete;
    ConnectLimit &operator=(ConnectLimit const &) = delete;

  private:
    static void Set(std::chrono::seconds time) {
        // Again each second, for one signal may come just before the call.
        itimerval const timer{.it_interval = {.tv_sec = time > 0s ? 1 : 0, .tv_usec = 0},
                              .it_value = {.tv_sec = time.count(), .tv_usec = 0}};
        ::setitimer(ITIMER_REAL, &timer, nullptr);
    }
};

class Properties {
  public:
    Properties() = default;
    ~Properties() { mosquitto_property_free_all(&_list); }
    Properties(Properties const &) = delete;
    Properties &operator=(Properties const &) = delete;

    void Add16(int name, std::uint16_t value) { mosquitto_property_add_int16(&_list, name, value); }
    void Add32(int name, std::uint32_t value) { mosquitto_property_add_int32(&_list, name, value); }
    mosquitto_property const *List() const { return _list; }

  private:
    mosquitto_property *_list = nullptr;
};

void Check(int code, char const *what) {
    if (code != MOSQ_ERR_SUCCESS)
        throw std::runtime_error(std::string(what) + ": " + mosquitto_strerror(code));
}

Connection &Self(void *self) {
    return *static_cast<Connection *>(self);
}

}  // namespace

Connection::Connection(Settings settings) : _settings(std::move(settings)), _pause(firstPause) {
    // The texts of failures, which nobody is shown, would be a twentieth of all that this process writes to.
    OPENSSL_init_ssl(OPENSSL_INIT_NO_LOAD_SSL_STRINGS | OPENSSL_INIT_NO_LOAD_CRYPTO_STRINGS, nullptr);
    mosquitto_lib_init();
    _New();  // what cannot be used is said now
}

Connection::~Connection() {
    _connection.reset();
    mosquitto_lib_cleanup();
}

Connection::Handle Connection::_New() {
    Handle handle(mosquitto_new(_settings.id.c_str(), false, this));
    if (!handle)
        throw std::bad_alloc();
    auto *const connection = handle.get();
    Check(mosquitto_int_option(connection, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5), "MQTT 5");
    // Then acknowledgements are written after the callback of their message, not before.
    Check(mosquitto_threaded_set(connection, true), "Acknowledgements");
    if (!_settings.user.empty())
        Check(mosquitto_username_pw_set(connection, _settings.user.c_str(), _settings.password.c_str()),
              "user");
    if (_settings.tls)
        _SetUpTls(connection);
    Check(mosquitto_will_set_v5(connection, Topic(_settings.id, topics::online).c_str(), std::strlen(no), no,
                                atLeastOnce, true, nullptr),
          "Last will");
    mosquitto_connect_v5_callback_set(
        connection, [](mosquitto *, void *self, int reason, int flags, mosquitto_property const *) {
            Self(self)._OnConnect(reason, flags);
        });
    mosquitto_message_v5_callback_set(connection,
                                      [](mosquitto *, void *self, mosquitto_message const *message,
                                         mosquitto_property const *) { Self(self)._OnMessage(*message); });
    mosquitto_publish_v5_callback_set(
        connection, [](mosquitto *, void *self, int message, int reason, mosquitto_property const *) {
            Self(self)._OnPublish(message, reason);
        });
    return handle;
}

void Connection::_SetUpTls(mosquitto *connection) const {
    auto const path = [](std::string const &text) { return text.empty() ? nullptr : text.c_str(); };
    if (_settings.ca.empty())
        Check(mosquitto_int_option(connection, MOSQ_OPT_TLS_USE_OS_CERTS, 1), "The system's certificates");
    if (!_settings.ca.empty() || !_settings.certificate.empty())
        Check(mosquitto_tls_set(connection, path(_settings.ca), nullptr, path(_settings.certificate),
                                path(_settings.key), nullptr),
              "Certificates");
}

void Connection::_Connect() {
    try {
        _connection = _New();
    } catch (std::exception const &failure) {  // a certificate has gone
        _Lose(failure.what());
        return;
    }
    Properties properties;
    properties.Add32(MQTT_PROP_SESSION_EXPIRY_INTERVAL, sessionSeconds);
    properties.Add32(MQTT_PROP_MAXIMUM_PACKET_SIZE, maxMessage);
    properties.Add16(MQTT_PROP_RECEIVE_MAXIMUM, receiveMaximum);
    _online = 0;
    _deadline = Clock::now() + reachLimit;
    int result = 0;
    {
        ConnectLimit const limit;
        result = mosquitto_connect_bind_v5(_connection.get(), _settings.host.c_str(), _settings.port,
                                           keepAlive, nullptr, properties.List());
    }
    if (result != MOSQ_ERR_SUCCESS)
        _Lose(result == MOSQ_ERR_ERRNO ? std::strerror(errno) : mosquitto_strerror(result));
}

void Connection::Serve(std::chrono::milliseconds time) {
    if (!_connection && Clock::now() >= _next)
        _Connect();
    if (!_connection) {
        timespec const rest{.tv_sec = time.count() / 1000,
                            .tv_nsec = static_cast<long>(time.count() % 1000 * 1000000)};
        ::nanosleep(&rest, nullptr);  // a signal ends it
        return;
    }
    int const result = mosquitto_loop(_connection.get(), static_cast<int>(time.count()), 1);
    if (result != MOSQ_ERR_SUCCESS)
        _Lose(result == MOSQ_ERR_ERRNO ? std::strerror(errno) : mosquitto_strerror(result));
    else if (!_reached && Clock::now() >= _deadline)
        _Lose("It does not answer");
}

void Connection::_OnConnect(int reason, int flags) {
    if (reason != 0) {
        _why = std::string("the broker refuses it: ") + mosquitto_reason_string(reason);
        return;  // it ends the connection
    }
    _known = (flags & 1) != 0;
    mosquitto_subscribe_v5(_connection.get(), nullptr, Topic(_settings.id, topics::change).c_str(),
                           atLeastOnce, 0, nullptr);
    _online = Publish(topics::online, yes, true);
}

void Connection::_OnMessage(mosquitto_message const &message) {
    try {
        _listener.take(
            {static_cast<char const *>(message.payload), static_cast<std::size_t>(message.payloadlen)});
    } catch (std::exception const &failure) {
        // Without its acknowledgement, which is not written yet, the broker sends it again.
        WEBCONFIG_LOG(error, logTag) << "A change cannot be written down: " << failure.what();
        ::shutdown(mosquitto_socket(_connection.get()), SHUT_RDWR);
    }
}

void Connection::_OnPublish(int message, int reason) {
    if (reason >= firstRefusal) {
        _why = std::string("the broker does not take what this device says of itself: ") +
               mosquitto_reason_string(reason);
        return;
    }
    if (message != _online) {
        _listener.acknowledged(message);
        return;
    }
    _reached = true;
    _since = Clock::now();
    _said.clear();
    WEBCONFIG_LOG(notice, logTag) << "The broker is reached, as " << _settings.id;
    _listener.reached(_known);
}

int Connection::Publish(char const *topic, std::string const &message, bool retained) {
    if (!_connection)
        return 0;
    int number = 0;
    int const result = mosquitto_publish_v5(_connection.get(), &number, Topic(_settings.id, topic).c_str(),
                                            static_cast<int>(message.size()), message.data(), atLeastOnce,
                                            retained, nullptr);
    if (result == MOSQ_ERR_SUCCESS)
        return number;
    _Say(std::string(topic) + " cannot be sent: " + mosquitto_strerror(result));
    return 0;
}

void Connection::_Lose(std::string const &why) {
    _Say("No connection with " + _settings.host + ": " + (_why.empty() ? why : _why));
    _why.clear();
    _connection.reset();
    if (_reached) {
        _listener.lost();
        if (Clock::now() > _since + stable)
            _pause = firstPause;
    }
    _reached = false;
    auto const pause = _hurries ? std::min(_pause, hurriedPause) : _pause;
    // Thousands that have lost the same broker must not come back at once.
    std::uniform_int_distribution<std::int64_t> part(pause.count() / 2, pause.count());
    _next = Clock::now() + std::chrono::milliseconds(part(_random));
    _pause = std::min(_pause * 2, longestPause);
}

void Connection::Reopen(std::chrono::seconds delay) {
    if (_connection) {
        mosquitto_disconnect_v5(_connection.get(), MQTT_RC_DISCONNECT_WITH_WILL_MSG, nullptr);
        mosquitto_loop_write(_connection.get(), 1);
        _connection.reset();
    }
    _reached = false;
    _listener.lost();
    _pause = firstPause;
    _next = Clock::now() + delay;
}

void Connection::Close() {
    if (_reached) {
        Publish(topics::online, no, true);
        mosquitto_disconnect_v5(_connection.get(), MQTT_RC_NORMAL_DISCONNECTION, nullptr);
        mosquitto_loop_write(_connection.get(), 1);
    }
    _connection.reset();
}

void Connection::_Say(std::string const &text) {
    if (_said != text)
        WEBCONFIG_LOG(warning, logTag) << text;
    _said = text;
}

}  // namespace fleet::agent
