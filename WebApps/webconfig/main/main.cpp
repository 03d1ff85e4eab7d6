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
#include <unistd.h>

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "WebApps/webconfig/apps/DevelopmentSite.h"
#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/apps/Plugins.h"
#include "WebApps/webconfig/apps/WebConfig.h"
#include "WebApps/webconfig/main/SystemLog.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Util.h"

namespace {

using namespace webconfig;

constexpr char logTag[] = "WebApps/webconfig/main";
constexpr unsigned upgradeStartSeconds = 4;

/// Threads that each have a heap of their own would each keep what their largest request has needed.
constexpr int heaps = 1;

template <typename Application>
std::unique_ptr<cppcms::applications_pool::factory> PoolOf() {
    return std::make_unique<cppcms::details::simple_factory0<Application>>();
}

void StartFlaggedFirmwareUpgrade() {
    if (!util::IsFirmwareUpgradeFlagged())
        return;
    util::MarkFirmwareUpgrade(false);  // first: a crash below must not repeat the upgrade
    util::FirmwareUpgradePid() =
        util::ForkFirmwareUpgrade(util::FirmwareUpgradeFile(), util::GetEnv("MOUNT_DIR"));
    sleep(upgradeStartSeconds);
}

/// Every service adds the sinks of its configuration to the one logger: without this each reload would
/// double the lines.
void ResetLog() {
    booster::log::logger::instance().remove_all_sinks();
    booster::log::logger::instance().add_sink(std::make_shared<SystemLog>());
}

void MountPages(cppcms::service &service) {
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

/// One life of the service, from its configuration to its shutdown. Returns its plug-ins, which may be
/// unloaded only when everything of the service is gone; null where it had none.
util::PluginManager *RunService(int argc, char *argv[]) {
    cppcms::service service(argc, argv);
    util::HardenShell(service.settings().get("webconfig.hardening.shell", false));
    MountPages(service);
    auto const status = MountStatus(service);
    service.run();
    return apps::Plugins(service.settings());
}

void Run(int argc, char *argv[]) {
    for (;;) {
        ResetLog();
        StartFlaggedFirmwareUpgrade();
        WEBCONFIG_LOG(debug, logTag) << "webconfig start";
        if (auto *const plugins = RunService(argc, argv))
            plugins->Unload();
        if (!util::IsForceReloadFlagged())
            break;
        util::MarkForceReload(false);
        WEBCONFIG_LOG(info, logTag) << "webconfig ** forced reload **";
    }
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
    openlog("web", 0, LOG_DAEMON);
#ifdef M_ARENA_MAX  // of the GNU C library
    mallopt(M_ARENA_MAX, heaps);
#endif
    try {
        Run(argc, argv);
    } catch (std::exception const &failure) {
        LogFatal(failure);
        return 1;
    }
    return 0;
}
