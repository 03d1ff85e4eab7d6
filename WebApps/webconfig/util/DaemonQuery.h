#pragma once

#include <vexa/vexa.h>

#include <memory>

/// Asking a daemon for its state: one request, at most one second of waiting, an answer or nothing. Failures
/// to ask are logged as errors; silence is not. Any thread may ask at any time.
namespace webconfig::util {

template <typename Message>
struct DaemonReply {
    bool canReceive = false;                ///< whether there was a descriptor to wait on
    std::unique_ptr<Message const> answer;  ///< null where none came in time
};

/// The cellular modem's figures.
DaemonReply<cVexaMsgGPRSStats> AskSeriald();
/// The link to the site server.
DaemonReply<cVexaMsgServerStats> AskStatusd();
/// The OpenVPN client.
DaemonReply<cVexaMsgOpenVPNStats> AskOpenvpnd();

}  // namespace webconfig::util
