#include "WebApps/webconfig/util/Commands.h"

#include <shell/Shell.h>
#include <vnt_util/system.h>

#include <array>
#include <string_view>

namespace webconfig::util {

namespace {

constexpr std::string_view cutMark = "...";

}  // namespace

std::string ShellCommand(std::string const &command, unsigned maximum) {
    std::string output;
    output.reserve(maximum);
    shell::Process process(command);
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
    return output;
}

int ShellCommand(std::string const &command, std::string &output) {
    return vnt_util::system::exec(command, output);
}

int RunCommand(std::string const &command) {
    return shell::Run(command);
}

}  // namespace webconfig::util
