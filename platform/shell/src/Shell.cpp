#include <shell/Shell.h>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <iterator>
#include <thread>
#include <utility>

namespace shell {

namespace {

using Clock = std::chrono::steady_clock;

/// From the polite end of a command to the hard one.
constexpr std::chrono::seconds grace{1};
/// How soon what waits for a command notices that all are to end, and that a group has ended.
constexpr std::chrono::milliseconds glance{100};
constexpr std::chrono::milliseconds groupGlance{10};

/// When all commands have to be done.
std::atomic<Clock::time_point> endOfAll{Clock::time_point::max()};

/// When commands that still run then are ended, so that all are done in time.
Clock::time_point BeginOfTheEnd() {
    return endOfAll.load() - grace;
}

/// The descriptor on which the shell writes the exit status of the command.
constexpr int reportDescriptor = 3;

/// Runs the command in a subshell, so that an `exit` in it cannot prevent the report, and without parameters.
constexpr char reportingScript[] = R"((eval "shift
$1") 3>&-; echo $? >&3)";

void Close(int &descriptor) {
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
}

/// What read() returns, which is no longer interrupted.
ssize_t ReadAgain(int descriptor, char *buffer, std::size_t size) {
    ssize_t count = 0;
    do {
        count = ::read(descriptor, buffer, size);
    } while (count < 0 && errno == EINTR);
    return count;
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

/// Leaves \a text, which the pipe has room for, to whoever reads there.
bool Fill(Pipe &pipe, std::string const &text) {
    bool const filled = text.size() <= maxInput &&
                        ::write(pipe.write, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    Close(pipe.write);
    return filled;
}

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
        ::posix_spawnattr_setpgroup(&attributes, 0);
        ::posix_spawnattr_setflags(&attributes,
                                   POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
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

/// The exit status that the shell has written, in the form of waitpid(); -1 where it could not.
int ReportedStatus(int descriptor) {
    std::array<char, 16> text{};
    ssize_t const length = ReadAgain(descriptor, text.data(), text.size());
    int code = 0;
    auto const error = std::from_chars(text.data(), text.data() + std::max<ssize_t>(length, 0), code).ec;
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

Process::Process(std::string const &command, std::chrono::milliseconds limit, std::string const &input)
    : Process(command, limit, input, Output::Captured) {}

Process::Process(std::string const &command, std::chrono::milliseconds limit, std::string const &input,
                 Output output)
    : limit_(Clock::now() + limit) {
    if (Clock::now() >= Deadline())
        return;
    Pipe text;
    Pipe data;
    Pipe report;
    SpawnSetup setup;
    if (!report.Open())
        return;
    if (input.empty()) {
        // Our own may be a listening socket, which a daemon that a command leaves behind would hold.
        ::posix_spawn_file_actions_addopen(&setup.actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    } else {
        if (!text.Open() || !Fill(text, input))
            return;
        ::posix_spawn_file_actions_adddup2(&setup.actions, text.read, STDIN_FILENO);
    }
    if (output == Output::Captured) {
        if (!data.Open() || ::fcntl(data.read, F_SETFL, O_NONBLOCK) != 0)
            return;
        ::posix_spawn_file_actions_adddup2(&setup.actions, data.write, STDOUT_FILENO);
    }
    // The last one: one of the others may have had this number.
    ::posix_spawn_file_actions_adddup2(&setup.actions, report.write, reportDescriptor);
    std::array<char const *, 6> const arguments{"sh", "-c", reportingScript, "sh", command.c_str(), nullptr};
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
    while (output_ >= 0) {
        ssize_t const count = ReadAgain(output_, buffer, size);
        if (count >= 0)
            return static_cast<std::size_t>(count);
        if (errno != EAGAIN || pid_ < 0)
            return 0;
        Await();
    }
    return 0;
}

int Process::Wait() {
    Close(output_);
    while (pid_ > 0)
        Await();
    return status_;
}

Process::Clock::time_point Process::Deadline() const {
    return std::min(limit_, BeginOfTheEnd());
}

/// Waits for output or the end of the command, which comes at the deadline at the latest. It may return
/// without either.
void Process::Await() {
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(Deadline() - Clock::now());
    if (left.count() <= 0) {
        End();
        return;
    }
    pollfd events[] = {{report_, POLLIN, 0}, {output_, POLLIN, 0}};  // one below 0 is passed over
    ::poll(events, std::size(events), static_cast<int>(std::min(left, glance).count()));
    if (events[0].revents != 0)
        TakeReport();
}

/// The shell has reported, and ends, or has ended without.
void Process::TakeReport() {
    int const reported = ReportedStatus(report_);
    int const waited = StatusOf(std::exchange(pid_, -1));
    Close(report_);
    status_ = reported >= 0 ? reported : waited;
}

void Process::End() {
    pid_t const group = std::exchange(pid_, -1);
    ::kill(-group, SIGTERM);
    bool collected = false;
    for (auto const patience = Clock::now() + grace;;) {
        // Until it is collected the shell, dead or not, is one of its group.
        collected = collected || ::waitpid(group, nullptr, WNOHANG) != 0;
        if (::kill(-group, 0) != 0)
            break;
        if (Clock::now() >= patience) {
            ::kill(-group, SIGKILL);
            break;
        }
        std::this_thread::sleep_for(groupGlance);
    }
    if (!collected)
        StatusOf(group);
    Close(report_);
}

int Run(std::string const &command, std::chrono::milliseconds limit, std::string const &input) {
    return Process(command, limit, input, Process::Output::Inherited).Wait();
}

void EndAllWithin(std::chrono::milliseconds time) {
    auto const end = Clock::now() + time;
    auto known = endOfAll.load();
    while (end < known && !endOfAll.compare_exchange_weak(known, end)) {
    }
}

bool AreAllEnding() {
    return Clock::now() >= BeginOfTheEnd();
}

void EndNone() {
    endOfAll = Clock::time_point::max();
}

}  // namespace shell
