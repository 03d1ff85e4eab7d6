#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>

/// Shell commands as popen() and system() run them, from a process with many threads.
///
/// A command starts with no signal blocked and every signal at its default, whatever the state of the
/// calling thread, and inherits no descriptor but the standard ones and those that are inheritable.
/// Its wait status is right even where the process ignores SIGCHLD, which makes the kernel drop it.
namespace shell {

/// A command whose standard output is read by its maker.
class Process {
  public:
    /// Starts `/bin/sh -c` \a command. A failure shows as empty output and the status -1.
    explicit Process(std::string const &command);
    /// Closes the output and waits for the end of the command.
    ~Process();

    Process(Process const &) = delete;
    Process &operator=(Process const &) = delete;

    /// Reads up to \a size bytes of output; 0 at its end or on failure.
    std::size_t Read(char *buffer, std::size_t size);

    /// Closes the output, waits for the end of the command and returns its wait status as system() does
    /// (0 when it succeeded), or -1 when it could not be started or its status is unknown.
    int Wait();

  private:
    friend int Run(std::string const &command);
    enum class Output { Captured, Inherited };

    Process(std::string const &command, Output output);

    pid_t pid_ = -1;
    int output_ = -1;
    int report_ = -1;  // where the shell writes its exit status, when the kernel would drop it
    int status_ = -1;
};

/// Runs \a command to its end as system() does; returns what Process::Wait() returns.
int Run(std::string const &command);

}  // namespace shell
