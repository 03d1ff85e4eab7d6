#include "WebApps/webconfig/util/DaemonQuery.h"

#include <poll.h>

#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/VexaHandler.h"

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/DaemonQuery";

constexpr int answerMilliseconds = 1000;

// Two names on purpose: the daemons may tell the callers apart.
constexpr char modemClient[] = "webconfig";
constexpr char linkClient[] = "webman";

/// poll(), because select() has no room for the descriptors of a busy process.
bool BecomesReadable(int descriptor) {
    pollfd wait{.fd = descriptor, .events = POLLIN, .revents = 0};
    return ::poll(&wait, 1, answerMilliseconds) > 0 && (wait.revents & POLLIN);
}

/// Sends a \a Request, named \a requestName in the log, to \a daemon and waits for the answer.
template <typename Answer, typename Request>
DaemonReply<Answer> Ask(char const *clientName, char const *daemon, char const *requestName,
                        Failures failures = Failures::Logged) {
    VexaHandler handler;
    cVexa vexaClient(clientName, &handler);
    Request request;
    bool const logged = failures == Failures::Logged;
    if (vexaClient.Send(daemon, &request) < 0 && logged)
        WEBCONFIG_LOG(error, logTag) << "vexaClient.Send(\"" << daemon << "\", " << requestName << ") failed";
    int const descriptor = vexaClient.GetFd();
    if (descriptor < 0) {
        if (logged)
            WEBCONFIG_LOG(error, logTag) << "vexaClient.GetFd() failed";
        return {};
    }
    // Also after a failed request: a poll costs the same whatever state the daemon is in.
    if (BecomesReadable(descriptor))
        vexaClient.Process();
    return {true, handler.Take<Answer>()};
}

}  // namespace

DaemonReply<cVexaMsgGPRSStats> AskSeriald(Failures failures) {
    return Ask<cVexaMsgGPRSStats, cVexaMsgRequestGPRSStats>(modemClient, "seriald",
                                                            "cVexaMsgRequestGPRSStats", failures);
}

DaemonReply<cVexaMsgServerStats> AskStatusd() {
    return Ask<cVexaMsgServerStats, cVexaMsgRequestServerStats>(linkClient, "statusd",
                                                                "cVexaMsgRequestServerStats");
}

DaemonReply<cVexaMsgOpenVPNStats> AskOpenvpnd(Failures failures) {
    return Ask<cVexaMsgOpenVPNStats, cVexaMsgRequestOpenVPNStats>(linkClient, "openvpnd",
                                                                  "cVexaMsgRequestOpenVPNStats", failures);
}

}  // namespace webconfig::util
