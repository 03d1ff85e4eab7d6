#include <algorithm>
#include <iterator>

#include "WebApps/webconfig/apps/KeptUpload.h"
#include "WebApps/webconfig/apps/ParameterWriter.h"
#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/data/Advanced.h"
#include "WebApps/webconfig/history/Recorder.h"
#include "WebApps/webconfig/security/Policy.h"
#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/settings/Effects.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Partition.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Switch.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/Settings";

constexpr char const *sshKey = settings::Key("system/remote/ssh_enabled");
constexpr char const *webKey = settings::Key("system/remote/web_enabled");
constexpr char const *pingKey = settings::Key("system/remote/icmp_enabled");
constexpr char const *persistentLogKey = settings::Key("syslogd/persistent");
constexpr char const *cellularDebugKey = settings::Key("debug/seriald");
constexpr int cellularDebugLevel = 5;

/// What is known of a partition; where it is nothing, the page has \a problem as its message.
std::string DescribePartition(data::Advanced &content, char const *name, char const *folder,
                              char const *problem) {
    auto const text = util::PartitionText(util::Translate(name), folder);
    if (!text)
        content.message = data::Message::Error(problem, true);
    return text.value_or(util::Translate("unknown"));
}

bool IsCellularDebugOn() {
    return util::Prm::GetInt(cellularDebugKey) > 0;
}

void LoadFromStore(data::Advanced &content) {
    forms::AdvancedAdministration &form = content.administration;
    form.remoteSsh.value(util::IsOn(sshKey));
    form.remoteWeb.value(util::IsOn(webKey));
    form.remotePing.value(util::IsOn(pingKey));
    form.persistentLog.value(util::IsOn(persistentLogKey));
    form.cellularDebug.value(IsCellularDebugOn());
    content.configuration.reboot.value(true);
}

}  // namespace

void Settings::Advanced() {
    enum class Kind { Plain, Restore, Download };
    struct Action {
        char const *submit;
        /// Returns true where it has answered itself, with a download, say.
        bool (Settings::*run)(data::Advanced &);
        unsigned tab;
        Kind kind = Kind::Plain;
    };
    static constexpr Action actions[] = {
        {"Save", &Settings::_SaveAdministration, 0},
        {"Erase", &Settings::_EraseConfiguration, 0},
        {"ErasePartition", &Settings::_ErasePartition, 0},
        {"Save Web Password", &Settings::_SaveWebPassword, 1},
        {"Save Root Password", &Settings::_SaveRootPassword, 1},
        {"Backup Configuration", &Settings::_BackupConfiguration, 2, Kind::Download},
        {"Restore Configuration", &Settings::_UploadBackup, 2, Kind::Restore},
        {"Read as Backup", &Settings::_AnswerBackup, 2, Kind::Restore},
        {"Read as Export", &Settings::_AnswerBackup, 2, Kind::Restore},
        {"Apply Backup", &Settings::_AnswerBackup, 2, Kind::Restore},
        {"Discard Backup", &Settings::_DiscardBackup, 2, Kind::Restore},
        {"Download", &Settings::_DownloadSyslog, 3, Kind::Download},
        {"Download log", &Settings::_DownloadDeployerLog, 4, Kind::Download},
        {"Install Certificate", &Settings::_InstallCertificate, 5},
    };

    data::Advanced content;
    Prepare(content);
    content.title = util::Translate("Advanced Configuration Options");
    content.log_partition = DescribePartition(content, util::Translatable("Log Partition"), "/home/root/log",
                                              util::Translatable("Unknown log partition information"));
    content.data_partition =
        DescribePartition(content, util::Translatable("Data Partition"), "/home/root/data",
                          util::Translatable("Unknown data partition information"));
    if (security::ThePolicy().certificate_upload)
        content.certificate.emplace();
    content.can_restore = settings().get("webconfig.restore", false) && history::IsKept();
    if (content.can_restore) {
        content.configuration.EnableRestore();
        KeptUpload(settings()).DropOld();
    }

    if (HttpPost()) {
        auto const *const action = std::find_if(
            std::begin(actions), std::end(actions),
            [submit = HttpPost("submit"), &content](Action const &known) {
                return submit == known.submit && (content.can_restore || known.kind != Kind::Restore);
            });
        if (action == std::end(actions)) {
            WEBCONFIG_LOG(error, logTag) << "Unknown submit received";
        } else {
            content.selected_tab = action->tab;
            if (action->kind == Kind::Download ? _Download(content, action->run)
                                               : (this->*action->run)(content))
                return;
        }
    }
    LoadFromStore(content);
    _DescribeCertificate(content);
    _ShowAudit(content);
    render("Advanced", content);
}

bool Settings::_SaveAdministration(data::Advanced &content) {
    forms::AdvancedAdministration &form = content.administration;
    if (!ValidateForm(form)) {
        content.message = data::Message::ValidationError();
        return false;
    }
    ParameterWriter writer;
    writer.SetSwitchIfChanged(sshKey, form.remoteSsh.value())
        .SetSwitchIfChanged(webKey, form.remoteWeb.value())
        .SetSwitchIfChanged(pingKey, form.remotePing.value())
        .SetSwitchIfChanged(persistentLogKey, form.persistentLog.value());
    if (writer.Wrote(persistentLogKey))
        RequireReboot(content);
    if (form.cellularDebug.value() != IsCellularDebugOn())
        writer.Set(cellularDebugKey, form.cellularDebug.value() ? cellularDebugLevel : 0);

    bool const remoteChanged = writer.Wrote(sshKey) || writer.Wrote(webKey) || writer.Wrote(pingKey);
    if (remoteChanged && writer.Ok())
        util::RunCommand(settings::applyRemoteAccess);
    content.message = writer.Result();
    return false;
}

}  // namespace webconfig::apps
