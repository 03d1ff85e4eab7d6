#include "fleet/console/Connection.h"

#include <mqtt_protocol.h>
#include <pthread.h>
#include <sys/random.h>

#include <array>
#include <csignal>
#include <ctime>

#include "WebApps/webconfig/util/Digest.h"
#include "WebApps/webconfig/util/Log.h"
#include "fleet/Messages.h"

namespace fleet::console {

namespace {

using namespace std::chrono_literals;

constexpr char logTag[] = "fleet/console/Connection";

constexpr auto interval = 50ms;
/// What devices have said comes by kinds, the next one when that of the one before is there: a broker may
/// drop what it has to hold back for one client, and should have little to hold back.
constexpr char const *subjects[] = {topics::result, topics::reported, topics::online, topics::health};
constexpr auto quiet = 200ms;
constexpr std::size_t mostReports = 100;  // that are asked for at once
constexpr std::uint16_t receiveMaximum = 65535;
constexpr auto complaintInterval = 60s;
constexpr char connected[] = "connected";

/// Two consoles of one name would end each other's connections.
std::string MakeClientId() {
    std::array<char, 6> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("No randomness");
    return "fleet-console-" + webconfig::util::Hex({bytes.data(), bytes.size()});
}

}  // namespace

Connection::Connection(Settings const &settings, Registry &registry)
    : BrokerLink(settings.broker,
                 {.client = MakeClientId(), .receiveMaximum = receiveMaximum, .lastWill = ""}, logTag),
      _group(settings.group),
      _registry(registry),
      _lead(settings.file + ".lead") {}

Connection::~Connection() {
    Stop();
}

void Connection::Start(Conductor &conductor) {
    _conductor = &conductor;
    _ends = false;
    std::signal(SIGALRM, [](int) {});  // Stop() sends it, perhaps before the first attempt
    _thread = std::thread([this] { _Run(); });
}

void Connection::Stop() {
    if (!_thread.joinable())
        return;
    _ends = true;
    ::pthread_kill(_thread.native_handle(), SIGALRM);  // it may just wait for a connection
    _thread.join();
}

void Connection::_Run() {
    sigset_t signals{};
    sigemptyset(&signals);
    sigaddset(&signals, SIGALRM);
    ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    while (!_ends) {
        Serve(interval);
        if (_isGranted && std::chrono::steady_clock::now() > _lastMessage + quiet)
            _GoOn();
        _Work();
        _Tell();
    }
    _End(MQTT_RC_NORMAL_DISCONNECTION, 0s);
}

void Connection::_Work() {
    auto const now = std::chrono::steady_clock::now();
    if (now < _lastWork + interval)
        return;
    _lastWork = now;
    try {
        _conductor->Work(_lead.Has());
        if (!_trouble.empty())
            WEBCONFIG_LOG(notice, logTag) << "All goes on again";
        _trouble.clear();
    } catch (std::exception const &failure) {
        if (_trouble != failure.what())
            WEBCONFIG_LOG(error, logTag) << "To be tried again: " << failure.what();
        _trouble = failure.what();
    }
}

void Connection::_Tell() {
    std::string const broker = _IsReached()         ? connected
                               : _Problem().empty() ? "not connected yet"
                                                    : _Problem();
    std::lock_guard const lock(_guard);
    if (_status.broker == broker && _status.since != 0)
        return;
    _status.broker = broker;
    _status.since = std::time(nullptr);
}

Connection::Status Connection::Now() const {
    std::lock_guard const lock(_guard);
    Status now = _status;
    now.messages = _messages;
    return now;
}

void Connection::_Taken(bool /*known*/) {
    _registry.Lost();
    _subscribed = 0;
    _askedUpTo.clear();
    _SubscribeNext();
}

void Connection::_GoOn() {
    _isGranted = false;
    if (_subscribed < static_cast<int>(std::size(subjects)))
        _SubscribeNext();
    else
        _AskForReports();
}

/// Of the devices whose report is missing, some at a time: a subscription to its topic alone brings what is
/// retained there. Devices would not say it again until something of them changes.
void Connection::_AskForReports() {
    auto const devices = _registry.Unreported(_askedUpTo, mostReports);
    if (devices.empty())
        return;
    if (_askedUpTo.empty())
        WEBCONFIG_LOG(warning, logTag)
            << _registry.CountUnreported()
            << " devices have not told what they are. Where they have done so before, the broker "
            << "throws away what it has to hold back for the console; it is asked for each of them";
    for (auto const &device : devices) {
        _Subscribe(Topic(device, topics::reported));
        _Unsubscribe(Topic(device, topics::reported));
    }
    _askedUpTo = devices.back();
}

void Connection::_SubscribeNext() {
    std::string const subject = subjects[_subscribed++];
    // The results are shared by the consoles of a group. What is retained does not come by such
    // subscriptions.
    bool const isShared = subject == topics::result && !_group.empty();
    _Subscribe((isShared ? "$share/" + _group + '/' : "") + "fleet/+/" + subject);
}

void Connection::_OnSubscribe() {
    _isGranted = true;
    _lastMessage = std::chrono::steady_clock::now();
    if (_subscribed != 1)
        return;
    _SetReached();
    _conductor->Reached();
}

void Connection::_OnMessage(mosquitto_message const &message) {
    ++_messages;
    if (message.retain)
        _lastMessage = std::chrono::steady_clock::now();
    Subject const subject = ReadTopic(message.topic);
    if (subject.device.empty())
        return;
    std::string const device(subject.device);
    std::string_view const said(static_cast<char const *>(message.payload),
                                static_cast<std::size_t>(message.payloadlen));
    try {
        if (subject.name == topics::result)
            _conductor->TakeResult(device, said);
        else
            _registry.Take(device, subject.name, said, message.retain, std::time(nullptr));
    } catch (std::exception const &failure) {
        _Complain(device + ", " + std::string(subject.name) + ": " + failure.what());
    }
}

void Connection::_OnPublish(int message, int reason) {
    if (reason >= firstRefusal)
        _Complain(std::string("The broker does not take a message: ") + mosquitto_reason_string(reason));
    _conductor->Acknowledged(message);
}

void Connection::_OnLost() {
    _isGranted = false;
    _conductor->Lost();
}

int Connection::Publish(std::string const &topic, std::string const &message, bool retained) {
    return _Publish(topic, message, retained);
}

void Connection::_Complain(std::string const &about) {
    auto const now = std::chrono::steady_clock::now();
    if (now < _nextComplaint)
        return;
    _nextComplaint = now + complaintInterval;
    WEBCONFIG_LOG(warning, logTag) << about;
}

}  // namespace fleet::console
