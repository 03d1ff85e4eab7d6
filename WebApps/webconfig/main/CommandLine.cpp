#include "WebApps/webconfig/main/CommandLine.h"

#include <iostream>
#include <string_view>

namespace webconfig {

namespace {

constexpr char usage[] =
    R"(Usage: webconfig [-c FILE] [--NAME=VALUE]... | --help | --version

Serves the web configuration of the device.

  -c FILE         the configuration, JSON; without it the file that the variable
                  CPPCMS_CONFIG names
  --a-b=VALUE     sets "a.b" of the configuration to another value
)";

}  // namespace

void ShowUsage() {
    std::cerr << usage;
}

bool AnswersForItself(int argc, char *argv[]) {
    for (int i = 1; i < argc; ++i) {
        std::string_view const argument = argv[i];
        if (argument == "-U")  // ends the switches
            break;
        if (argument == "-c") {
            ++i;
        } else if (argument == "--help") {
            ShowUsage();
            return true;
        } else if (argument == "--version") {
            std::cerr << "webconfig " WEBCONFIG_VERSION "\n";
            return true;
        }
    }
    return false;
}

}  // namespace webconfig
