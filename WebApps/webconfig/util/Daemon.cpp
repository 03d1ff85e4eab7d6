#include "WebApps/webconfig/util/Daemon.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace webconfig::util {

namespace {

void Reopen(int descriptor, int flags) {
    int const null = ::open("/dev/null", flags);
    if (null >= 0 && null != descriptor) {
        ::dup2(null, descriptor);
        ::close(null);
    }
}

void SetDisposition(int signal, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    ::sigaction(signal, &action, nullptr);
}

/// Worker threads run with all signals blocked, and neither mask nor ignored signals end with exec().
void RestoreSignals() {
    for (int signal = 1; signal < NSIG; ++signal)
        SetDisposition(signal, SIG_DFL);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// Whatever happens in a child, it must not return into the life of its parent.
int Guarded(std::function<int()> const &child) {
    try {
        return child();
    } catch (...) {
        return EXIT_FAILURE;
    }
}

}  // namespace

int ForkDetached(std::function<int()> const &child) {
    SetDisposition(SIGCHLD, SIG_IGN);
    pid_t const pid = ::fork();
    if (pid == 0) {
        RestoreSignals();
        ::_exit(Guarded(child));
    }
    return pid;
}

void DetachDescriptors() {
    // One call: the hard limit, up to which a loop would have to go, is a billion in some containers.
    ::closefrom(STDERR_FILENO + 1);
    Reopen(STDOUT_FILENO, O_WRONLY);
    Reopen(STDERR_FILENO, O_WRONLY);
    Reopen(STDIN_FILENO, O_RDONLY);
}

}  // namespace webconfig::util
