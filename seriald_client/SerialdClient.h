#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "seriald_client/AbstractAddress.h"
#include "seriald_client/SerialdMsg.h"

/// One conversation with the serial daemon. A client belongs to one thread at a time; any number of clients
/// may live side by side.
///
/// Nothing here waits but Connect(), between its attempts, and WaitRead(). What sends connects first where
/// that has not been done, and returns false where it cannot connect, there is no daemon, or too many
/// datagrams wait there, as at a daemon that has stopped reading.
class cSerialdClient {
  public:
    explicit cSerialdClient(std::uint32_t clientId) : clientId_(clientId) {}
    ~cSerialdClient();

    cSerialdClient(cSerialdClient const &) = delete;
    cSerialdClient &operator=(cSerialdClient const &) = delete;

    /// The client id of the owner of a port's device; 0 where there is no such port.
    static std::uint32_t GetSerialdClientID(std::string_view tty);

    /// Opens the socket. Tries three times, 100 ms apart, and tells each failure on standard error. Returns
    /// whether the socket is open.
    bool Connect();

    /// Sets baud rate and parameters of the port and remembers them.
    bool PortSettings(std::uint32_t baud, std::uint32_t a, std::uint32_t b, std::uint32_t c);
    /// Steps to the next baud rate from 1200 to 115200, then again from 1200; a rate outside the ring goes on
    /// with 1200. Advances even where sending fails.
    bool NextMode();
    /// Sends data to the port. More than SerialdMsg::maxData bytes end the process.
    bool Write(char const *data, std::size_t size);
    bool RequestStats();
    bool RequestPortMap();
    bool GpsRequestToSend();
    bool GpsSendComplete();

    /// Reads one datagram without waiting and cuts it where \a buffer is too small. Returns the number of
    /// bytes; negative where nothing is there or reading fails.
    int Read(char *buffer, std::size_t size);
    /// Waits at most half a second for a datagram, then reads as Read() does; 0 where none came.
    int WaitRead(char *buffer, std::size_t size);

    /// Whether the daemon was there when last heard of: a read has brought something, and none of the reads
    /// and sends after it has failed.
    bool IsConnected() const { return connected_; }

  private:
    bool Open();
    bool Send(void const *datagram, std::size_t size);
    bool SendControl(std::uint32_t clientId, SerialdMsg::Command command);

    std::uint32_t clientId_;
    int socket_ = -1;
    AbstractAddress server_;
    SerialdMsg::Settings lastSettings_;
    bool connected_ = false;
};
