#pragma once

#include <vexa/vexa.h>

#include <memory>

/// Asking a daemon for its state: one request, at most one second of waiting, an answer or nothing. Failures
/// to ask are logged as errors where that is wanted; silence is not. Any thread may ask at any time.
namespace webconfig::util {

template <typename Message>
struct DaemonReply {
    bool canReceive = false;                ///< whether there was a descriptor to wait on
    std::unique_ptr<Message const> answer;  ///< null where none came in time
};

/// What becomes of failures to ask. Who asks all the time, with nobody there to see it, logs none.
enum class Failures { Logged, Silent };

/// The cellular modem's figures.
DaemonReply<cVexaMsgGPRSStats> AskSeriald(Failures failures = Failures::Logged);
/// The link to the site server.
DaemonReply<cVexaMsgServerStats> AskStatusd();
/// The OpenVPN client.
DaemonReply<cVexaMsgOpenVPNStats> AskOpenvpnd(Failures failures = Failures::Logged);

}  // namespace webconfig::util
