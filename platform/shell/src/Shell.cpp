#include <shell/Shell.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <utility>

namespace shell {

namespace {

/// The descriptor on which a reporting shell writes the exit status of its command.
constexpr int reportDescriptor = 3;

/// Runs the command in a subshell, so that an `exit` in it cannot prevent the report.
constexpr char reportingScript[] = R"((eval "$1") 3>&-; echo $? >&3)";

void Close(int &descriptor) {
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
}

std::size_t ReadAgain(int descriptor, char *buffer, std::size_t size) {
    ssize_t count = 0;
    do {
        count = ::read(descriptor, buffer, size);
    } while (count < 0 && errno == EINTR);
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

struct Pipe {
    Pipe() = default;
    ~Pipe() {
        Close(read);
        Close(write);
    }
    Pipe(Pipe const &) = delete;
    Pipe &operator=(Pipe const &) = delete;

    bool Open() {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            return false;
        read = ends[0];
        write = ends[1];
        return true;
    }

    int read = -1;
    int write = -1;
};

/// What posix_spawn() is to set up in a child.
struct SpawnSetup {
    SpawnSetup() {
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawnattr_init(&attributes);
        sigset_t none;
        sigset_t every;
        ::sigemptyset(&none);
        ::sigfillset(&every);
        ::posix_spawnattr_setsigmask(&attributes, &none);
        ::posix_spawnattr_setsigdefault(&attributes, &every);
        ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSetup() {
        ::posix_spawn_file_actions_destroy(&actions);
        ::posix_spawnattr_destroy(&attributes);
    }
    SpawnSetup(SpawnSetup const &) = delete;
    SpawnSetup &operator=(SpawnSetup const &) = delete;

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
};

bool IsStatusDropped() {
    struct sigaction current {};
    ::sigaction(SIGCHLD, nullptr, &current);
    return current.sa_handler == SIG_IGN || (current.sa_flags & SA_NOCLDWAIT) != 0;
}

/// The exit status that a reporting shell wrote, in the form of waitpid().
int ReportedStatus(int descriptor) {
    std::array<char, 16> text{};
    std::size_t length = 0;
    while (std::size_t const count = ReadAgain(descriptor, &text[length], text.size() - 1 - length))
        length += count;
    int code = 0;
    auto const error = std::from_chars(text.data(), text.data() + length, code).ec;
    return error == std::errc() ? W_EXITCODE(code, 0) : -1;
}

int StatusOf(pid_t pid) {
    int status = -1;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR)
            return -1;
    }
    return status;
}

}  // namespace

Process::Process(std::string const &command) : Process(command, Output::Captured) {}

Process::Process(std::string const &command, Output output) {
    Pipe data;
    Pipe report;
    SpawnSetup setup;
    std::array<char const *, 6> arguments{"sh", "-c", command.c_str(), nullptr};

    if (output == Output::Captured) {
        if (!data.Open())
            return;
        ::posix_spawn_file_actions_adddup2(&setup.actions, data.write, STDOUT_FILENO);
    }
    if (IsStatusDropped()) {
        if (!report.Open())
            return;
        ::posix_spawn_file_actions_adddup2(&setup.actions, report.write, reportDescriptor);
        arguments = {"sh", "-c", reportingScript, "sh", command.c_str(), nullptr};
    }
    if (::posix_spawn(&pid_, "/bin/sh", &setup.actions, &setup.attributes,
                      const_cast<char *const *>(arguments.data()), ::environ) != 0) {
        pid_ = -1;
        return;
    }
    output_ = std::exchange(data.read, -1);
    report_ = std::exchange(report.read, -1);
}

Process::~Process() {
    Wait();
}

std::size_t Process::Read(char *buffer, std::size_t size) {
    return output_ >= 0 ? ReadAgain(output_, buffer, size) : 0;
}

int Process::Wait() {
    Close(output_);
    if (pid_ > 0) {
        int const reported = report_ >= 0 ? ReportedStatus(report_) : -1;
        Close(report_);
        int const waited = StatusOf(std::exchange(pid_, -1));
        status_ = waited >= 0 ? waited : reported;
    }
    return status_;
}

int Run(std::string const &command) {
    return Process(command, Process::Output::Inherited).Wait();
}

}  // namespace shell
