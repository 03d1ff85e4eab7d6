#include "WebApps/webconfig/util/Commands.h"

#include <shell/Shell.h>
#include <vnt_util/system.h>

#include <array>
#include <string_view>

#include "WebApps/webconfig/util/Log.h"

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/Commands";

/// Nobody waits longer for what is only shown.
constexpr std::chrono::seconds showLimit{10};

constexpr std::string_view cutMark = "...";

/// Accompanies a command, and logs it where it gives no status.
class Watch {
  public:
    explicit Watch(std::string const &command) : command_(command) {}

    /// Returns \a status.
    int Ended(int status) const {
        if (status < 0)
            WEBCONFIG_LOG(error, logTag)
                << "No result of the command " << Name() << " after " << Seconds() << " s";
        return status;
    }

  private:
    using Clock = std::chrono::steady_clock;

    std::string Name() const {
        std::string const program = command_.substr(0, command_.find_first_of(" \t\n"));
        std::size_t const rest = command_.size() - program.size();
        return rest == 0 ? program : program + " (and " + std::to_string(rest) + " characters)";
    }
    long long Seconds() const {
        return std::chrono::round<std::chrono::seconds>(Clock::now() - start_).count();
    }

    std::string const &command_;
    Clock::time_point const start_ = Clock::now();
};

}  // namespace

std::string ShellCommand(std::string const &command, unsigned maximum, std::string const &input) {
    std::string output;
    output.reserve(maximum);
    Watch const watch(command);
    shell::Process process(command, showLimit, input);
    std::array<char, 512> chunk{};
    while (std::size_t const count = process.Read(chunk.data(), chunk.size())) {
        if (output.size() + count > maximum) {
            output.append(chunk.data(), maximum - output.size());
            if (output.size() > cutMark.size())
                output.replace(output.size() - cutMark.size(), cutMark.size(), cutMark);
            break;
        }
        output.append(chunk.data(), count);
    }
    watch.Ended(process.Wait());
    return output;
}

int ShellCommand(std::string const &command, std::string &output) {
    return Watch(command).Ended(vnt_util::system::exec(command, output));
}

int RunCommand(Command const &command, std::chrono::seconds limit, std::string const &input) {
    return Watch(command).Ended(shell::Run(command, limit, input));
}

int RunCommand(ConstantText command, std::chrono::seconds limit) {
    return RunCommand(Command(command), limit);
}

void EndCommandsWithin(std::chrono::seconds time) {
    shell::EndAllWithin(time);
}

bool AreCommandsEnding() {
    return shell::AreAllEnding();
}

void AllowCommands() {
    shell::EndNone();
}

}  // namespace webconfig::util
