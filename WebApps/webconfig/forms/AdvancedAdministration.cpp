#include "WebApps/webconfig/forms/AdvancedAdministration.h"

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
        entry.widget.name(entry.name);
        entry.widget.message(entry.message);
        add(entry.widget);
    }

    save.name("submit");
    save.value("Save");
    add(save);

    eraseType.name("eraseType");
    eraseType.add("Application", "erase_sensors");
    eraseType.add("All (requires reboot)", "erase_all");
    add(eraseType);

    erase.name("submit");
    erase.value("Erase");
    erase.message("Erase persistent configuration");
    erase.help("Requires reboot");
    add(erase);

    partition.name("eraseWhich");
    partition.add("Log Partition", "erase_log");
    partition.add("Data Partition", "erase_data");
    add(partition);

    erasePartition.name("submit");
    erasePartition.value("ErasePartition");
    add(erasePartition);
}

}  // namespace webconfig::forms
