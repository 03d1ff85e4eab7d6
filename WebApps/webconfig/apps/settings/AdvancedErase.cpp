#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/data/Advanced.h"
#include "WebApps/webconfig/util/Happened.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/Settings";

// Before the dumps on flash go, the database server gets another folder for the next one.
constexpr char moveDumps[] = R"(echo -e "CONFIG SET dir \"/var/volatile/tmp\"" | nc localhost 6379)";
constexpr char leaveDatabase[] = R"(echo -e "quit" | nc localhost 6379)";
constexpr char eraseDumps[] = "rm -f /home/root/config/*rdb && sync";

constexpr char eraseApplication[] =
    "[ ! -f ${APPLICATION_DIR}/etc/rcS.d/deployer ] || ${APPLICATION_DIR}/etc/rcS.d/deployer stop ; "
    "sleep 2 ;"
    "prm del /deployment ;prm del /components ;prm del /component_types ;prm del /connections ;"
    "prm del /peers ;prm del /can ;"
    "[ ! -f ${APPLICATION_DIR}/etc/rcS.d/deployer ] || ${APPLICATION_DIR}/etc/rcS.d/deployer start";

/// Flash memory is slow, and may be large.
constexpr std::chrono::minutes eraseLimit{10};

struct Partition {
    char const *option;
    util::ConstantText command;
    char const *erased;
    char const *failed;
};
constexpr Partition partitions[] = {
    {"erase_log", "/etc/erase/erase-partition log",
     util::Translatable("Success: The log partition was erased. Reboot now."),
     util::Translatable("Error: Failure erasing log partition.")},
    {"erase_data", "/etc/erase/erase-partition data",
     util::Translatable("Success: The data partition was erased. Reboot now."),
     util::Translatable("Error: Failure erasing data partition.")},
};

/// Runs the command that erases \a what, and tells of it. True on success.
bool Erase(char const *what, util::ConstantText command) {
    bool const erased = util::RunCommand(command, eraseLimit) == 0;
    util::Happened("erase", util::OutcomeOf(erased), {{"what", what}});
    return erased;
}

}  // namespace

bool Settings::_EraseConfiguration(data::Advanced &content) {
    bool const valid = ValidateForm(content.administration);
    std::string const type = content.administration.eraseType.selected_id();
    if (valid && type == "erase_all") {
        util::RunCommand(moveDumps);
        util::RunCommand(leaveDatabase);
        if (!Erase(type.c_str(), eraseDumps))
            WEBCONFIG_LOG(error, logTag) << "Erasing config flash partition failed";
        RequireReboot(content);
        content.message = data::Message::SaveOK();
    } else if (valid && type == "erase_sensors") {
        content.message = Erase(type.c_str(), eraseApplication)
                              ? data::Message::SaveOK()
                              : data::Message::Error("Error: Failure erasing persistent storage");
    } else {
        content.message = data::Message::ValidationError();
    }
    return false;
}

bool Settings::_ErasePartition(data::Advanced &content) {
    content.message = data::Message::ValidationError();
    if (!ValidateForm(content.administration))
        return false;
    for (auto const &partition : partitions) {
        if (content.administration.partition.selected_id() != partition.option)
            continue;
        bool const erased = Erase(partition.option, partition.command);
        if (erased)
            RequireReboot(content);
        content.message =
            erased ? data::Message::OK(partition.erased) : data::Message::Error(partition.failed);
    }
    return false;
}

}  // namespace webconfig::apps
