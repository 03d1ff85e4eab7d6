#include <booster/log.h>
#include <cppcms/service.h>
#include <malloc.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <memory>

#include "WebApps/webconfig/main/CommandLine.h"
#include "WebApps/webconfig/main/SystemLog.h"
#include "WebApps/webconfig/util/Log.h"
#include "ctl/Status.h"
#include "fleet/agent/Agent.h"
#include "fleet/agent/Connection.h"
#include "fleet/agent/Settings.h"

namespace {

using namespace fleet::agent;
using namespace std::chrono_literals;
namespace json = cppcms::json;

constexpr char logTag[] = "fleet/agent/Main";
constexpr auto interval = 1s;
constexpr long ok = 200;

constexpr char usage[] =
    R"(Usage: webconfig-agent [-c FILE] [--NAME=VALUE]... | --help | --version

Makes the device one of a fleet, over the MQTT broker that the configuration names;
without one it ends at once.

  -c FILE         the service's configuration, JSON; without it the file that the
                  variable CPPCMS_CONFIG names
  --a-b=VALUE     sets "a.b" of the configuration to another value
)";
constexpr webconfig::Program program{"webconfig-agent " WEBCONFIG_VERSION, usage};

volatile std::sig_atomic_t stopped = 0;

class LocalService : public Service {
  public:
    explicit LocalService(ctl::LocalService service) : _service(std::move(service)) {}

    json::value Call(std::string const &method, json::array const &parameters,
                     std::string const &user) override {
        json::value call;
        call["id"] = 1;
        call["method"] = method;
        call["params"] = parameters;
        ctl::Answer answer;
        try {
            answer = ctl::PostLocally(_service, user, call.save());
        } catch (ctl::Problem const &problem) {
            throw Away(problem.what());
        }
        json::value reply;
        char const *begin = answer.body.data();
        if (answer.status != ok || !reply.load(begin, begin + answer.body.size(), true) ||
            reply.type() != json::is_object)
            throw Away(method + ": HTTP status " + std::to_string(answer.status));
        if (!reply["error"].is_null())
            throw Denied(method, std::move(reply["error"]));
        return std::move(reply["result"]);
    }

  private:
    ctl::LocalService const _service;
};

/// The service may begin later than this.
std::string AskForId(Service &service) {
    for (bool said = false; stopped == 0; ::sleep(1)) {
        try {
            std::array<char, 256> host{};
            ::gethostname(host.data(), host.size() - 1);
            return IdOf(service.Call("device_describe", {}).get("serial", ""), host.data());
        } catch (Away const &away) {
            if (!said)
                WEBCONFIG_LOG(warning, logTag) << "The service cannot be asked: " << away.what();
            said = true;
        }
    }
    return "stopped";
}

void Run(Settings settings) {
    LocalService service(settings.service);
    if (settings.id.empty())
        settings.id = AskForId(service);
    Journal journal(settings.file);
    Connection connection(settings);
    Agent agent(settings.health, service, connection, journal);
    connection.Listen({.take = [&](std::string_view message) { agent.Take(message); },
                       .reached = [&](bool known) { agent.Reached(known); },
                       .lost = [&] { agent.Lost(); },
                       .acknowledged = [&](int message) { agent.Acknowledged(message); }});
    while (stopped == 0) {
        connection.Serve(interval);
        agent.Work(std::chrono::steady_clock::now());
        ::malloc_trim(0);  // a handshake and long messages leave much behind
    }
    connection.Close();
}

}  // namespace

int main(int argc, char *argv[]) {
    if (webconfig::AnswersForItself(argc, argv, program))
        return EXIT_SUCCESS;
    openlog("webconfig-agent", 0, LOG_DAEMON);
    booster::log::logger::instance().add_sink(std::make_shared<webconfig::SystemLog>());
    booster::log::logger::instance().set_default_level(booster::log::notice);
    ::umask(S_IRWXG | S_IRWXO);
    for (int const signal : {SIGTERM, SIGINT})
        std::signal(signal, [](int) { stopped = 1; });
    std::signal(SIGPIPE, SIG_IGN);
    try {
        auto const configuration = cppcms::service::load_settings(argc, argv);
        if (!IsAskedFor(configuration)) {
            std::cerr << "webconfig-agent: the configuration names no webconfig.fleet.broker\n";
            return EXIT_SUCCESS;
        }
        Run(ReadSettings(configuration));
    } catch (std::exception const &failure) {
        std::cerr << "webconfig-agent: " << failure.what() << '\n';
        if (argc < 2)
            webconfig::ShowUsage(program);
        WEBCONFIG_LOG(error, logTag) << failure.what();
        return EXIT_FAILURE;
    }
}
