#include "WebApps/webconfig/forms/AdvancedAdministration.h"

#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::forms {

using util::Translatable;
using util::Translate;

AdvancedAdministration::AdvancedAdministration() {
    struct {
        cppcms::widgets::checkbox &widget;
        char const *name;
        char const *message;
    } const switches[] = {
        {remoteSsh, "remoteSshEnabled", Translatable("Enable remote SSH (password)")},
        {remoteWeb, "remoteWebEnabled", Translatable("Enable remote web access (password)")},
        {remotePing, "remoteIcmpEnabled", Translatable("Enable remote ICMP (ping)")},
        {persistentLog, "persistentSysLog", Translatable("Enable persistent system log")},
        {cellularDebug, "gsmDebug", Translatable("Enable Cellular debug log")},
    };
    for (auto const &entry : switches) {
        SetUp(entry.widget, entry.name, noId, entry.message);
        add(entry.widget);
    }

    SetUpSubmit(save, "submit", noId, "Save");
    add(save);

    SetUp(eraseType, "eraseType", noId);
    eraseType.add(Translate("Application"), "erase_sensors");
    eraseType.add(Translate("All (requires reboot)"), "erase_all");
    add(eraseType);

    SetUpSubmit(erase, "submit", noId, "Erase", "Erase persistent configuration");
    erase.help("Requires reboot");
    add(erase);

    SetUp(partition, "eraseWhich", noId);
    partition.add(Translate("Log Partition"), "erase_log");
    partition.add(Translate("Data Partition"), "erase_data");
    add(partition);

    SetUpSubmit(erasePartition, "submit", noId, "ErasePartition");
    add(erasePartition);
}

}  // namespace webconfig::forms
