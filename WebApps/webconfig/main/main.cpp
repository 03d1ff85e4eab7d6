#include <booster/backtrace.h>
#include <booster/intrusive_ptr.h>
#include <booster/log.h>
#include <cppcms/application.h>
#include <cppcms/applications_pool.h>
#include <cppcms/json.h>
#include <cppcms/mount_point.h>
#include <cppcms/service.h>
#include <malloc.h>
#include <syslog.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "WebApps/webconfig/apps/DevelopmentSite.h"
#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/apps/KeptUpload.h"
#include "WebApps/webconfig/apps/Plugins.h"
#include "WebApps/webconfig/apps/Shutdown.h"
#include "WebApps/webconfig/apps/WebConfig.h"
#include "WebApps/webconfig/data/Menu.h"
#include "WebApps/webconfig/history/Configuration.h"
#include "WebApps/webconfig/history/Recorder.h"
#include "WebApps/webconfig/history/Trial.h"
#include "WebApps/webconfig/main/Check.h"
#include "WebApps/webconfig/main/CommandLine.h"
#include "WebApps/webconfig/main/StopSignals.h"
#include "WebApps/webconfig/main/SystemLog.h"
#include "WebApps/webconfig/metrics/Sampler.h"
#include "WebApps/webconfig/security/Audit.h"
#include "WebApps/webconfig/security/FrameworkSettings.h"
#include "WebApps/webconfig/security/Policy.h"
#include "WebApps/webconfig/settings/Languages.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Util.h"

namespace {

using namespace webconfig;

constexpr char logTag[] = "WebApps/webconfig/main";
constexpr auto upgradeStart = std::chrono::seconds(4);

/// Threads that each have a heap of their own would each keep what their largest request has needed.
constexpr int heaps = 1;

template <typename Application>
std::unique_ptr<cppcms::applications_pool::factory> PoolOf() {
    return std::make_unique<cppcms::details::simple_factory0<Application>>();
}

void StartFlaggedFirmwareUpgrade(StopSignals &stop) {
    if (!util::IsFirmwareUpgradeFlagged())
        return;
    util::MarkFirmwareUpgrade(false);  // first: a crash below must not repeat the upgrade
    util::FirmwareUpgradePid() =
        util::ForkFirmwareUpgrade(util::FirmwareUpgradeFile(), util::GetEnv("MOUNT_DIR"));
    stop.WaitFor(upgradeStart);
}

/// Every service adds the sinks of its configuration to the one logger: without this each reload would
/// double the lines.
void ResetLog() {
    booster::log::logger::instance().remove_all_sinks();
    booster::log::logger::instance().add_sink(std::make_shared<SystemLog>());
}

void MountPages(cppcms::service &service) {
    // Here, once, a slip in them is told: later each page would fail.
    data::ConfigureMenus(service.settings().find("webconfig.menus"));
    settings::OfferLanguages(service.settings().find("webconfig.languages"));
    auto const root = service.settings().get<std::string>("webconfig.root.sync");
    service.applications_pool().mount(PoolOf<apps::WebConfig>(), cppcms::mount_point('/' + root + "(.*)", 1));
    if (service.settings().get("service.api", "") == "http")
        service.applications_pool().mount(PoolOf<apps::DevelopmentSite>(),
                                          cppcms::mount_point(apps::DevelopmentSite::Paths(service), 0));
}

booster::intrusive_ptr<cppcms::application> MountStatus(cppcms::service &service) {
    auto const root = service.settings().get<std::string>("webconfig.root.async");
    booster::intrusive_ptr<cppcms::application> status(new cppcms::application(service));
    service.applications_pool().mount(status, cppcms::mount_point('/' + root + "(.*)", 1));

    auto const rpc = service.settings().get<std::string>("webconfig.root.rpc");
    auto endpoint = std::make_unique<apps::JsonRpc>(service);
    status->attach(endpoint.release(), '/' + rpc + "(.*)", 0);
    if (auto *const plugins = apps::Plugins(service.settings()))
        plugins->AttachAsynchronousAppsHook(*status, service);
    return status;
}

/// The service of the configuration that the command line names; \a again where this process has had one
/// before. It has set up the log.
std::unique_ptr<cppcms::service> MakeService(int argc, char *argv[], bool again) {
    ResetLog();
    auto settings = cppcms::service::load_settings(argc, argv);
    bool const namesSyslog = settings.get("logging.syslog.enable", false);
    if (namesSyslog)
        settings.set("logging.syslog.enable", false);
    if (again && !settings.get("logging.file.name", "").empty()) {
        settings.set("logging.file.append", true);
        settings.set("logging.file.max_files", 0);
    }
    auto const policy = security::ReadPolicy(settings);
    // A status call changes something ("reload"), whatever its method.
    security::SetUpFramework(settings, policy, '/' + settings.get("webconfig.root.async", ""));
    auto service =
        std::make_unique<cppcms::service>(settings);  // from here on lines of the log go where they should
    security::SetPolicy(policy);
    if (namesSyslog)
        WEBCONFIG_LOG(warning, logTag)
            << "logging.syslog is ignored: all lines go to the system log as they are";
    return service;
}

/// Even where there is no service an upgrade is started: it may bring a configuration that is better.
std::unique_ptr<cppcms::service> MakeServiceOrUpgrade(int argc, char *argv[], bool again, StopSignals &stop) {
    try {
        return MakeService(argc, argv, again);
    } catch (...) {
        StartFlaggedFirmwareUpgrade(stop);
        throw;
    }
}

/// One life of the service, from its configuration to its shutdown. Returns its plug-ins, which may be
/// unloaded only when everything of the service is gone; null where it had none.
util::PluginManager *RunService(int argc, char *argv[], bool again, StopSignals &stop) {
    auto const service = MakeServiceOrUpgrade(argc, argv, again, stop);
    if (!again && util::IsForceReloadFlagged()) {
        util::MarkForceReload(false);
        WEBCONFIG_LOG(info, logTag) << "A reload that an earlier process has left is dropped";
    }
    StartFlaggedFirmwareUpgrade(stop);
    if (stop.Signal() != 0)
        return nullptr;
    WEBCONFIG_LOG(debug, logTag) << "webconfig start";
    util::HardenShell(service->settings().get("webconfig.hardening.shell", true));
    util::HideSecretsFromCommands(service->settings().get("webconfig.hardening.shell", false));
    security::SetAudit(security::ThePolicy().audit);
    history::Configuration const changes = history::ReadConfiguration(service->settings());
    history::Keep(changes.file, changes.keep);
    history::Try(changes.trial_file, changes.trial_seconds);
    if (service->settings().get("webconfig.restore", false) && !history::IsKept())
        WEBCONFIG_LOG(warning, logTag) << "webconfig.restore does nothing without webconfig.history.file";
    apps::KeptUpload(service->settings()).Drop();
    std::optional<metrics::Sampler> sampler;
    if (service->settings().get("webconfig.metrics", false))
        sampler.emplace();
    MountPages(*service);
    auto const status = MountStatus(*service);
    stop.Run(*service);
    return apps::Plugins(service->settings());
}

/// A stop wins over whatever else was asked for. The next process must not find the flags of this one.
void DropRequests(int signal) {
    WEBCONFIG_LOG(info, logTag) << "webconfig ** stopped by signal " << signal << " (" << strsignal(signal)
                                << ") **";
    if (util::IsForceReloadFlagged()) {
        util::MarkForceReload(false);
        WEBCONFIG_LOG(info, logTag) << "The reload that was asked for is dropped";
    }
    if (util::IsFirmwareUpgradeFlagged()) {
        util::MarkFirmwareUpgrade(false);
        std::remove(util::FirmwareUpgradeFile().c_str());  // /tmp is memory, and nobody else knows the name
        WEBCONFIG_LOG(warning, logTag) << "The firmware upgrade that was asked for is dropped";
    }
}

bool IsReloadWanted(StopSignals &stop) {
    if (int const signal = stop.Signal()) {
        DropRequests(signal);
        return false;
    }
    if (!util::IsForceReloadFlagged())
        return false;
    util::MarkForceReload(false);
    WEBCONFIG_LOG(info, logTag) << "webconfig ** forced reload **";
    return true;
}

void Run(int argc, char *argv[]) {
    StopSignals stop(apps::Shutdown);
    bool again = false;
    do {
        if (auto *const plugins = RunService(argc, argv, again, stop))
            plugins->Unload();
        util::AllowCommands();
        again = true;
    } while (IsReloadWanted(stop));
    WEBCONFIG_LOG(debug, logTag) << "webconfig exit\n";
}

void LogFatal(std::exception const &failure) {
    WEBCONFIG_LOG(error, logTag) << "Exception: " << failure.what();
    auto const *trace = dynamic_cast<booster::backtrace const *>(&failure);
    std::vector<void *> frames;
    for (unsigned i = 0; trace && i < trace->stack_size(); ++i)
        frames.push_back(trace->return_address(i));
    util::LogLine message(booster::log::error, logTag, __LINE__);
    if (!frames.empty())
        booster::stack_trace::write_symbols(frames.data(), static_cast<int>(frames.size()), message.out());
    message.out() << '\n';
}

}  // namespace

int main(int argc, char *argv[]) {
    if (AnswersForItself(argc, argv, deviceProgram))
        return 0;
    bool const check = TakeCheck(argc, argv);
    openlog("web", 0, LOG_DAEMON);
#ifdef M_ARENA_MAX  // of the GNU C library
    mallopt(M_ARENA_MAX, heaps);
#endif
    try {
        if (check)
            return CheckDevice(cppcms::service::load_settings(argc, argv), std::cout) == 0 ? 0 : 1;
        Run(argc, argv);
    } catch (std::exception const &failure) {
        std::cerr << "webconfig: " << failure.what() << '\n';
        if (argc < 2)
            ShowUsage(deviceProgram);
        LogFatal(failure);
        return 1;
    }
    return 0;
}
