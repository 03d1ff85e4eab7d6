#include <booster/log.h>
#include <cppcms/json.h>
#include <cppcms/service.h>
#include <syslog.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <thread>

#include "WebApps/webconfig/history/Configuration.h"
#include "WebApps/webconfig/history/Recorder.h"
#include "WebApps/webconfig/main/SystemLog.h"
#include "WebApps/webconfig/util/Command.h"
#include "WebApps/webconfig/util/Log.h"
#include "guard/Guard.h"

namespace {

using namespace webconfig;

constexpr char usage[] =
    R"(Usage: webconfig-guard -c FILE

Waits for settings on trial that nobody keeps, and takes them back, whatever has become
of the service.

  -c FILE   the configuration of the service
)";
constexpr char logTag[] = "guard/Main";
constexpr std::chrono::seconds interval{1};
constexpr std::chrono::seconds afterFailure{30};

void Watch(history::Configuration const &configuration) {
    if (configuration.trial_seconds <= 0) {
        WEBCONFIG_LOG(notice, logTag) << "The configuration puts nothing on trial";
        for (;;)
            ::pause();
    }
    history::Keep(configuration.file, configuration.keep);
    guard::Guard guard(configuration.trial_file, configuration.trial_seconds);
    for (;; std::this_thread::sleep_for(interval)) {
        try {
            guard.Look();
        } catch (std::exception const &failure) {
            WEBCONFIG_LOG(error, logTag) << failure.what();
            std::this_thread::sleep_for(afterFailure);
        }
    }
}

}  // namespace

int main(int argc, char *argv[]) {
    openlog("webconfig-guard", 0, LOG_DAEMON);
    booster::log::logger::instance().add_sink(std::make_shared<SystemLog>());
    try {
        auto const configuration = cppcms::service::load_settings(argc, argv);
        booster::log::logger::instance().set_default_level(booster::log::notice);
        util::HardenShell(configuration.get("webconfig.hardening.shell", true));
        util::HideSecretsFromCommands(configuration.get("webconfig.hardening.shell", false));
        Watch(history::ReadConfiguration(configuration));
    } catch (std::exception const &failure) {
        std::cerr << "webconfig-guard: " << failure.what() << '\n' << usage;
        WEBCONFIG_LOG(error, logTag) << failure.what();
        return EXIT_FAILURE;
    }
}
