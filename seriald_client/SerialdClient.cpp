#include "seriald_client/SerialdClient.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cassert>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <thread>

#include "seriald_client/SerialPRM.h"

namespace {

using namespace std::chrono_literals;

constexpr int connectAttempts = 3;
constexpr auto pauseAfterFailure = 100ms;
constexpr int replyMilliseconds = 500;

constexpr std::uint32_t baudRing[] = {1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200};

std::uint32_t NextBaud(std::uint32_t baud) {
    auto const *const found = std::find(std::begin(baudRing), std::end(baudRing) - 1, baud);
    return found == std::end(baudRing) - 1 ? baudRing[0] : found[1];
}

std::string UniqueName() {
    auto const number = static_cast<int>(std::random_device{}() >> 1);
    return std::string(SerialdMsg::clientAddressPrefix) + std::to_string(::getpid()) + '/' +
           std::to_string(number);
}

}  // namespace

cSerialdClient::~cSerialdClient() {
    if (socket_ >= 0)
        ::close(socket_);
}

std::uint32_t cSerialdClient::GetSerialdClientID(std::string_view tty) {
    std::uint32_t const client_id = cSerialPRM::GetSerialdClientID(tty);
    assert(client_id != SerialdMsg::SerialdStatusClientID);
    return client_id;
}

bool cSerialdClient::Connect() {
    for (int attempt = 0; socket_ < 0; ++attempt) {
        if (attempt == connectAttempts)
            return false;
        if (!Open())
            std::this_thread::sleep_for(pauseAfterFailure);
    }
    server_ = AbstractAddress(SerialdMsg::serverAddress);
    return true;
}

bool cSerialdClient::Open() {
    socket_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (socket_ < 0) {
        std::perror("cSerialdClient: socket");
        return false;
    }
    AbstractAddress own(UniqueName());
    if (::bind(socket_, own.get(), own.length) == 0)
        return true;
    std::perror("cSerialdClient: bind");
    ::close(socket_);
    socket_ = -1;
    return false;
}

bool cSerialdClient::PortSettings(std::uint32_t baud, std::uint32_t a, std::uint32_t b, std::uint32_t c) {
    SerialdMsg::PortSettings const datagram{.clientId = clientId_, .settings = {baud, a, b, c}};
    if (!Send(&datagram, sizeof datagram))
        return false;
    lastSettings_ = datagram.settings;
    return true;
}

bool cSerialdClient::NextMode() {
    lastSettings_.baud = NextBaud(lastSettings_.baud);
    return PortSettings(lastSettings_.baud, lastSettings_.a, lastSettings_.b, lastSettings_.c);
}

bool cSerialdClient::Write(char const *data, std::size_t size) {
    if (size > SerialdMsg::maxData) {
        std::cerr << "cSerialdClient: " << size << " bytes do not fit into a datagram\n";
        std::abort();
    }
    using namespace std::chrono;
    auto const now = system_clock::now().time_since_epoch();
    SerialdMsg::DataHeader const header{
        .clientId = clientId_,
        .seconds = static_cast<std::uint32_t>(duration_cast<seconds>(now).count()),
        .microseconds = static_cast<std::uint32_t>(duration_cast<microseconds>(now % 1s).count()),
        .size = static_cast<std::uint32_t>(size),
    };
    char datagram[sizeof header + SerialdMsg::maxData];
    std::memcpy(datagram, &header, sizeof header);
    std::copy_n(data, size, datagram + sizeof header);
    return Send(datagram, sizeof header + size);
}

bool cSerialdClient::RequestStats() {
    return SendControl(SerialdMsg::SerialdStatusClientID, SerialdMsg::Command::RequestStats);
}

bool cSerialdClient::RequestPortMap() {
    return SendControl(SerialdMsg::SerialdStatusClientID, SerialdMsg::Command::RequestPortMap);
}

bool cSerialdClient::GpsRequestToSend() {
    return SendControl(clientId_, SerialdMsg::Command::GpsRequestToSend);
}

bool cSerialdClient::GpsSendComplete() {
    return SendControl(clientId_, SerialdMsg::Command::GpsSendComplete);
}

int cSerialdClient::Read(char *buffer, std::size_t size) {
    auto const count = static_cast<int>(::recv(socket_, buffer, size, MSG_DONTWAIT));
    if (count != 0)
        connected_ = count > 0;
    return count;
}

int cSerialdClient::WaitRead(char *buffer, std::size_t size) {
    pollfd wait{.fd = socket_, .events = POLLIN, .revents = 0};
    int const ready = ::poll(&wait, 1, replyMilliseconds);
    if (ready <= 0)
        return ready;
    return wait.revents & POLLIN ? Read(buffer, size) : 0;
}

bool cSerialdClient::Send(void const *datagram, std::size_t size) {
    if (!Connect())
        return false;
    bool const sent =
        ::sendto(socket_, datagram, size, 0, server_.get(), server_.length) == static_cast<ssize_t>(size);
    if (!sent)
        connected_ = false;
    return sent;
}

bool cSerialdClient::SendControl(std::uint32_t clientId, SerialdMsg::Command command) {
    SerialdMsg::Control const datagram{.clientId = clientId, .command = command};
    return Send(&datagram, sizeof datagram);
}
