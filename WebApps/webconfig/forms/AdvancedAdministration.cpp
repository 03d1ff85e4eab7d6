#include "WebApps/webconfig/forms/AdvancedAdministration.h"

#include "WebApps/webconfig/forms/SetUp.h"

namespace webconfig::forms {

AdvancedAdministration::AdvancedAdministration() {
    struct {
        cppcms::widgets::checkbox &widget;
        char const *name;
        char const *message;
    } const switches[] = {
        {remoteSsh, "remoteSshEnabled", "Enable remote SSH (password)"},
        {remoteWeb, "remoteWebEnabled", "Enable remote web access (password)"},
        {remotePing, "remoteIcmpEnabled", "Enable remote ICMP (ping)"},
        {persistentLog, "persistentSysLog", "Enable persistent system log"},
        {cellularDebug, "gsmDebug", "Enable Cellular debug log"},
    };
    for (auto const &entry : switches) {
        SetUp(entry.widget, entry.name, noId, entry.message);
        add(entry.widget);
    }

    SetUpSubmit(save, "submit", noId, "Save");
    add(save);

    SetUp(eraseType, "eraseType", noId);
    eraseType.add("Application", "erase_sensors");
    eraseType.add("All (requires reboot)", "erase_all");
    add(eraseType);

    SetUpSubmit(erase, "submit", noId, "Erase", "Erase persistent configuration");
    erase.help("Requires reboot");
    add(erase);

    SetUp(partition, "eraseWhich", noId);
    partition.add("Log Partition", "erase_log");
    partition.add("Data Partition", "erase_data");
    add(partition);

    SetUpSubmit(erasePartition, "submit", noId, "ErasePartition");
    add(erasePartition);
}

}  // namespace webconfig::forms
