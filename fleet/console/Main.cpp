#include <booster/log.h>
#include <cppcms/applications_pool.h>
#include <cppcms/mount_point.h>
#include <cppcms/service.h>
#include <malloc.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>

#include "WebApps/webconfig/main/CommandLine.h"
#include "WebApps/webconfig/main/StopSignals.h"
#include "WebApps/webconfig/main/SystemLog.h"
#include "WebApps/webconfig/security/FrameworkSettings.h"
#include "WebApps/webconfig/security/Policy.h"
#include "WebApps/webconfig/settings/Languages.h"
#include "WebApps/webconfig/util/Log.h"
#include "fleet/console/Conductor.h"
#include "fleet/console/Connection.h"
#include "fleet/console/Pages.h"
#include "fleet/console/Registry.h"
#include "fleet/console/Rpc.h"
#include "fleet/console/Settings.h"
#include "fleet/console/Store.h"

namespace {

using namespace fleet::console;
namespace json = cppcms::json;

constexpr char logTag[] = "fleet/console/Main";

/// Threads that each have a heap of their own would each keep what their largest request has needed.
constexpr int heaps = 1;

constexpr char usage[] =
    R"(Usage: webconfig-fleet [-c FILE] [--NAME=VALUE]... [--check] | --help | --version

Serves the console of a fleet of devices, beside an MQTT broker.

  -c FILE         the configuration, JSON; without it the file that the variable
                  CPPCMS_CONFIG names
  --a-b=VALUE     sets "a.b" of the configuration to another value
  --check         looks at the configuration, and at the files and folders that it
                  names, a line for each, and ends: with status 1 where something is
                  wrong
)";
constexpr webconfig::Program program{"webconfig-fleet " WEBCONFIG_VERSION, usage};

/// What "--check" tells, a line each.
class Report {
  public:
    void Line(std::string const &what, std::string const &problem) {
        std::cout << (problem.empty() ? "ok      " : "wrong   ") << what << (problem.empty() ? "" : ": ")
                  << problem << '\n';
        _isGood = _isGood && problem.empty();
    }
    bool IsGood() const { return _isGood; }

  private:
    bool _isGood = true;
};

std::string ProblemOfFolder(std::string const &folder, bool isPrivate) {
    struct stat info {};
    if (::stat(folder.c_str(), &info) != 0 || !S_ISDIR(info.st_mode))
        return "no such folder";
    if (::access(folder.c_str(), W_OK | X_OK) != 0)
        return "this user may not write there";
    if (isPrivate && (info.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        return "others may look into it; make its mode 0700";
    return {};
}

bool Check(json::value const &configuration) {
    Report report;
    auto const parentOf = [](std::string const &file) { return std::filesystem::path(file).parent_path(); };
    try {
        Settings const settings = ReadSettings(configuration);
        report.Line("fleet, and the files that it names", "");
        std::string const folder = parentOf(settings.file);
        report.Line(folder + " (store)", ProblemOfFolder(folder, true));
    } catch (std::runtime_error const &failure) {
        report.Line("fleet", failure.what());
    }
    std::string const api = configuration.get("service.api", "");
    report.Line("service.api", api.empty() ? "the configuration lacks this text" : "");
    std::string const socket = configuration.get("service.socket", "stdin");
    if (socket != "stdin")
        report.Line(socket, ProblemOfFolder(parentOf(socket), false));
    return report.IsGood();
}

void Serve(json::value configuration, webconfig::StopSignals &stop) {
    Settings const settings = ReadSettings(configuration);
    std::string const pages = '/' + settings.root;
    std::string const rpc = pages + "/rpc";
    webconfig::security::SetUpFramework(
        configuration, {.same_origin = true, .headers = true, .hosts = {}, .unknown = {}}, rpc);
    webconfig::settings::OfferLanguages(configuration.find("webconfig.languages"));
    cppcms::service service(configuration);

    Store store(settings.file);
    Registry registry(static_cast<std::size_t>(settings.most));
    Connection connection(settings, registry);
    Conductor conductor(store, registry, connection, settings.keep);
    Console const console{store, registry, conductor, connection};
    service.applications_pool().mount(cppcms::applications_factory<Rpc>(&console),
                                      cppcms::mount_point(rpc + "()", 1));
    service.applications_pool().mount(cppcms::applications_factory<Pages>(),
                                      cppcms::mount_point(pages + "(.*)", 1));
    connection.Start(conductor);
    stop.Run(service);
    connection.Stop();
}

}  // namespace

int main(int argc, char *argv[]) {
    if (webconfig::AnswersForItself(argc, argv, program))
        return EXIT_SUCCESS;
    bool const check = webconfig::TakeCheck(argc, argv);
    openlog("webconfig-fleet", 0, LOG_DAEMON);
    ::mallopt(M_ARENA_MAX, heaps);
    ::umask(S_IRWXG | S_IRWXO);
    try {
        auto const configuration = cppcms::service::load_settings(argc, argv);
        if (check)
            return Check(configuration) ? EXIT_SUCCESS : EXIT_FAILURE;
        booster::log::logger::instance().add_sink(std::make_shared<webconfig::SystemLog>());
        // Of the connection's thread only.
        sigset_t alarm{};
        sigemptyset(&alarm);
        sigaddset(&alarm, SIGALRM);
        ::pthread_sigmask(SIG_BLOCK, &alarm, nullptr);
        webconfig::StopSignals stop([](cppcms::service &service) { service.shutdown(); });
        Serve(configuration, stop);
        return EXIT_SUCCESS;
    } catch (std::exception const &failure) {
        std::cerr << "webconfig-fleet: " << failure.what() << '\n';
        if (argc < 2)
            webconfig::ShowUsage(program);
        WEBCONFIG_LOG(error, logTag) << failure.what();
        return EXIT_FAILURE;
    }
}
