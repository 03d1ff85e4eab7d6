#include "fleet/BrokerLink.h"

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

namespace fleet {

namespace {

using namespace std::chrono_literals;

constexpr int keepAlive = 60;  // seconds
constexpr int atLeastOnce = 1;

constexpr std::chrono::milliseconds firstPause = 1s;
constexpr std::chrono::milliseconds longestPause = 5min;
constexpr std::chrono::milliseconds hurriedPause = 3s;  // the longest while somebody waits
/// Two of the same name throw each other out: only a connection that lasts so long ends the pauses.
constexpr auto stable = 60s;
constexpr auto connectLimit = 10s;
constexpr auto reachLimit = 20s;

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

std::string ReasonOf(int result) {
    return result == MOSQ_ERR_ERRNO ? std::strerror(errno) : mosquitto_strerror(result);
}

}  // namespace

BrokerLink::BrokerLink(BrokerSettings settings, Terms terms, char const *logTag)
    : _settings(std::move(settings)), _terms(std::move(terms)), _logTag(logTag), _pause(firstPause) {
    // The texts of failures, which nobody is shown, would be a twentieth of all that an agent writes to.
    OPENSSL_init_ssl(OPENSSL_INIT_NO_LOAD_SSL_STRINGS | OPENSSL_INIT_NO_LOAD_CRYPTO_STRINGS, nullptr);
    mosquitto_lib_init();
    _New();  // what cannot be used is said now
}

BrokerLink::~BrokerLink() {
    _connection.reset();
    mosquitto_lib_cleanup();
}

BrokerLink::Handle BrokerLink::_New() {
    Handle handle(mosquitto_new(_terms.client.c_str(), _terms.clean, this));
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
    if (!_terms.lastWill.empty())
        Check(mosquitto_will_set_v5(connection, _terms.lastWill.c_str(), std::strlen(words::no), words::no,
                                    atLeastOnce, true, nullptr),
              "Last will");
    mosquitto_connect_v5_callback_set(
        connection, [](mosquitto *, void *self, int reason, int flags, mosquitto_property const *) {
            auto &link = *static_cast<BrokerLink *>(self);
            if (reason == 0)
                link._Taken((flags & 1) != 0);
            else
                link._SetReason("the broker refuses it", reason);  // it ends the connection
        });
    mosquitto_message_v5_callback_set(
        connection,
        [](mosquitto *, void *self, mosquitto_message const *message, mosquitto_property const *) {
            static_cast<BrokerLink *>(self)->_OnMessage(*message);
        });
    mosquitto_publish_v5_callback_set(
        connection, [](mosquitto *, void *self, int message, int reason, mosquitto_property const *) {
            static_cast<BrokerLink *>(self)->_OnPublish(message, reason);
        });
    mosquitto_subscribe_v5_callback_set(connection, [](mosquitto *, void *self, int, int count,
                                                       int const *granted, mosquitto_property const *) {
        auto &link = *static_cast<BrokerLink *>(self);
        auto const *const refused =
            std::find_if(granted, granted + count, [](int reason) { return reason >= firstRefusal; });
        if (refused == granted + count)
            link._OnSubscribe();
        else
            link._SetReason("the broker refuses to tell", *refused);
    });
    return handle;
}

void BrokerLink::_SetUpTls(mosquitto *connection) const {
    auto const path = [](std::string const &text) { return text.empty() ? nullptr : text.c_str(); };
    if (_settings.ca.empty())
        Check(mosquitto_int_option(connection, MOSQ_OPT_TLS_USE_OS_CERTS, 1), "The system's certificates");
    if (!_settings.ca.empty() || !_settings.certificate.empty())
        Check(mosquitto_tls_set(connection, path(_settings.ca), nullptr, path(_settings.certificate),
                                path(_settings.key), nullptr),
              "Certificates");
}

void BrokerLink::_Connect() {
    try {
        _connection = _New();
    } catch (std::exception const &failure) {  // a certificate has gone
        _Lose(failure.what());
        return;
    }
    Properties properties;
    if (_terms.sessionSeconds != 0)
        properties.Add32(MQTT_PROP_SESSION_EXPIRY_INTERVAL, _terms.sessionSeconds);
    properties.Add32(MQTT_PROP_MAXIMUM_PACKET_SIZE, maxMessage);
    properties.Add16(MQTT_PROP_RECEIVE_MAXIMUM, _terms.receiveMaximum);
    _deadline = Clock::now() + reachLimit;
    int result = 0;
    {
        ConnectLimit const limit;
        result = mosquitto_connect_bind_v5(_connection.get(), _settings.host.c_str(), _settings.port,
                                           keepAlive, nullptr, properties.List());
    }
    if (result != MOSQ_ERR_SUCCESS)
        _Lose(ReasonOf(result));
}

void BrokerLink::Serve(std::chrono::milliseconds time) {
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
        _Lose(ReasonOf(result));
    else if (!_reached && Clock::now() >= _deadline)
        _Lose("It does not answer");
}

void BrokerLink::_SetReached() {
    _reached = true;
    _since = Clock::now();
    _said.clear();
    WEBCONFIG_LOG(notice, _logTag) << "The broker is reached, as " << _terms.client;
}

void BrokerLink::_SetReason(std::string const &why, int reason) {
    _why = why + ": " + mosquitto_reason_string(reason);
}

void BrokerLink::_Subscribe(std::string const &topic) {
    if (_connection)
        mosquitto_subscribe_v5(_connection.get(), nullptr, topic.c_str(), atLeastOnce, 0, nullptr);
}

void BrokerLink::_Unsubscribe(std::string const &topic) {
    if (_connection)
        mosquitto_unsubscribe_v5(_connection.get(), nullptr, topic.c_str(), nullptr);
}

int BrokerLink::_Publish(std::string const &topic, std::string const &message, bool retained) {
    if (!_connection)
        return 0;
    int number = 0;
    int const result =
        mosquitto_publish_v5(_connection.get(), &number, topic.c_str(), static_cast<int>(message.size()),
                             message.data(), atLeastOnce, retained, nullptr);
    if (result == MOSQ_ERR_SUCCESS)
        return number;
    _Say(topic + " cannot be sent: " + mosquitto_strerror(result));
    return 0;
}

void BrokerLink::_Break() {
    if (_connection)
        ::shutdown(mosquitto_socket(_connection.get()), SHUT_RDWR);
}

void BrokerLink::_Lose(std::string const &why) {
    _Say("No connection with " + _settings.host + ": " + (_why.empty() ? why : _why));
    _why.clear();
    _connection.reset();
    if (_reached) {
        _reached = false;
        _OnLost();
        if (Clock::now() > _since + stable)
            _pause = firstPause;
    }
    auto const pause = _hurries ? std::min(_pause, hurriedPause) : _pause;
    // Thousands that have lost the same broker must not come back at once.
    std::uniform_int_distribution<std::int64_t> part(pause.count() / 2, pause.count());
    _next = Clock::now() + std::chrono::milliseconds(part(_random));
    _pause = std::min(_pause * 2, longestPause);
}

void BrokerLink::_End(int reason, std::chrono::milliseconds pause) {
    if (_connection) {
        mosquitto_disconnect_v5(_connection.get(), reason, nullptr);
        mosquitto_loop_write(_connection.get(), 1);
        _connection.reset();
    }
    _reached = false;
    _pause = firstPause;
    _next = Clock::now() + pause;
}

void BrokerLink::_Say(std::string const &text) {
    if (_said != text)
        WEBCONFIG_LOG(warning, _logTag) << text;
    _said = text;
}

}  // namespace fleet
