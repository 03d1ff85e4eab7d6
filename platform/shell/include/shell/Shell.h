#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <string>

/// Shell commands much as popen() and system() run them, from a process with many threads that must not hang.
///
/// A command starts in a process group of its own, with /dev/null or a given text as its standard input, no
/// signal blocked and every signal at its default, whatever the state of the calling thread, and inherits no
/// descriptor but the standard ones and those that are inheritable. It ends with its shell: a daemon that it
/// leaves behind, which may hold its output, is neither waited for nor ended.
///
/// A command that is not done within its limit is ended with its whole process group: with SIGTERM and, where
/// that is not enough, with SIGKILL a second later. What has left the group stays.
namespace shell {

/// How long a command may take where its caller does not say.
constexpr std::chrono::seconds usualLimit{60};

/// The longest text that a command can be given, in bytes.
constexpr std::size_t maxInput = 4096;

/// A command whose standard output is read by its maker.
class Process {
  public:
    /// Starts `/bin/sh -c` \a command, which may take up to \a limit and reads \a input. A failure, also
    /// where that is too long, shows as empty output and the status -1.
    explicit Process(std::string const &command, std::chrono::milliseconds limit = usualLimit,
                     std::string const &input = {});
    /// Closes the output and waits for the end of the command.
    ~Process();

    Process(Process const &) = delete;
    Process &operator=(Process const &) = delete;

    /// Waits for output and reads up to \a size bytes of it; 0 at its end or on failure.
    std::size_t Read(char *buffer, std::size_t size);

    /// Closes the output, waits for the end of the command and returns its wait status as system() does:
    /// 0 when it succeeded, an exit status of 128 + N when signal N ended it. -1 when it could not be
    /// started, was ended at its limit, or its status is unknown. The status is right even where the process
    /// ignores SIGCHLD, be it only since the command runs, which makes the kernel drop the statuses of
    /// children.
    int Wait();

  private:
    friend int Run(std::string const &command, std::chrono::milliseconds limit, std::string const &input);
    using Clock = std::chrono::steady_clock;
    enum class Output { Captured, Inherited };

    Process(std::string const &command, std::chrono::milliseconds limit, std::string const &input,
            Output output);

    Clock::time_point Deadline() const;
    void Await();
    void TakeReport();
    void End();

    Clock::time_point const limit_;
    pid_t pid_ = -1;  // of the shell and of the process group; -1 when the command has ended
    int output_ = -1;
    int report_ = -1;  // where the shell writes the exit status of the command
    int status_ = -1;
};

/// Runs \a command to its end as system() does; returns what Process::Wait() returns.
int Run(std::string const &command, std::chrono::milliseconds limit = usualLimit,
        std::string const &input = {});

/// From now on every command, running or new, has to be done within \a time from now, whatever its own limit;
/// none is started that could not. A second call never gives more time.
void EndAllWithin(std::chrono::milliseconds time);

/// Whether it is so far: what runs is being ended, and nothing more is started.
bool AreAllEnding();

/// Takes EndAllWithin() back.
void EndNone();

}  // namespace shell
