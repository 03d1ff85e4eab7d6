#pragma once

#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

#include "seriald_client/AbstractAddress.h"

/// A daemon of the virtual device, serving a report file while the object lives.
class DaemonProcess {
  public:
    /// Starts \a program and waits until \a address, abstract, is there.
    DaemonProcess(std::string program, std::string report, std::string_view address) {
        char *const arguments[] = {program.data(), report.data(), nullptr};
        if (::posix_spawn(&pid_, program.c_str(), nullptr, nullptr, arguments, environ) != 0)
            throw std::runtime_error("cannot start " + program);
        for (int attempt = 0; !Serves(address); ++attempt) {
            if (attempt == 500) {
                End();
                throw std::runtime_error(program + " does not serve");
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    ~DaemonProcess() { End(); }
    DaemonProcess(DaemonProcess const &) = delete;
    DaemonProcess &operator=(DaemonProcess const &) = delete;

    void Stop() const { ::kill(pid_, SIGSTOP); }

  private:
    static bool Serves(std::string_view name) {
        AbstractAddress address(name);
        int const probe = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        bool const found = ::connect(probe, address.get(), address.length) == 0;
        ::close(probe);
        return found;
    }

    void End() const {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }

    pid_t pid_ = -1;
};
