#include "WebApps/webconfig/main/CommandLine.h"

#include <algorithm>
#include <iostream>
#include <string_view>

namespace webconfig {

namespace {

constexpr std::string_view endOfSwitches = "-U";

constexpr char usage[] =
    R"(Usage: webconfig [-c FILE] [--NAME=VALUE]... [--check] | --help | --version

Serves the web configuration of the device.

  -c FILE         the configuration, JSON; without it the file that the variable
                  CPPCMS_CONFIG names
  --a-b=VALUE     sets "a.b" of the configuration to another value
  --check         looks whether the device has all that the service needs, a line for
                  each, and ends: with status 1 where something is missing
)";

}  // namespace

Program const deviceProgram{"webconfig " WEBCONFIG_VERSION, usage};

void ShowUsage(Program const &program) {
    std::cerr << program.usage;
}

bool AnswersForItself(int argc, char *argv[], Program const &program) {
    for (int i = 1; i < argc; ++i) {
        std::string_view const argument = argv[i];
        if (argument == endOfSwitches)
            break;
        if (argument == "-c") {
            ++i;
        } else if (argument == "--help") {
            ShowUsage(program);
            return true;
        } else if (argument == "--version") {
            std::cerr << program.version << '\n';
            return true;
        }
    }
    return false;
}

bool TakeCheck(int &argc, char *argv[]) {
    char **const end = std::find(argv, argv + argc, endOfSwitches);
    char **const found = std::find(argv, end, std::string_view("--check"));
    if (found == end)
        return false;
    std::copy(found + 1, argv + argc + 1, found);  // with the null behind the last one
    --argc;
    return true;
}

}  // namespace webconfig
