#include "WebApps/webconfig/main/Check.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <string>
#include <system_error>

#include "WebApps/webconfig/history/Configuration.h"
#include "WebApps/webconfig/util/DaemonQuery.h"
#include "WebApps/webconfig/util/Prm.h"

namespace webconfig {

namespace {

/// What the device brings along for the service to run.
struct Program {
    char const *name;           ///< a path, or what is looked for in PATH
    char const *used_by;        ///< what of the pages it serves
    bool needed;                ///< whether something fails without; else a text stays empty
    char const *key = nullptr;  ///< the switch of the configuration that asks for it; null: always
};

constexpr bool needed = true;

// docs/porting.md has the same list, with arguments and exit statuses.
constexpr Program programs[] = {
    {"/etc/nat_setup.sh", "port forwarding, remote access and WLAN", needed},
    {"/etc/init.d/network_funcs.sh", "access point and WLAN", needed},
    {"/etc/init.d/ntpd", "time servers", needed},
    {"/etc/erase/erase-partition", "erasing a partition", needed},
    {"/usr/sbin/lighttpd_set_passwd.sh", "the web password", needed},
    {"/usr/sbin/lighttpd_take_certificate.sh", "the server's certificate", needed,
     "webconfig.security.certificate_upload"},
    {"/usr/bin/supvis", "the site server and the firmware upgrade", needed},
    {"/usr/bin/fwtool", "the firmware upgrade", needed},
    {"/usr/bin/ubi_get_volume_versions.sh", "the firmware page", !needed},
    {"/usr/bin/logdeployer", "the deployer log", !needed},
    {"/usr/sbin/pppstats", "the Ethernet page", !needed},
    {"/usr/bin/chronyc", "the time service's status", !needed},
    {"/sbin/reboot", "the restart", needed},
    {"prm", "erasing the application's settings", needed},
    {"chpasswd", "the root password", needed},
    {"lmu", "the regulatory domain", needed},
    {"wpa_passphrase", "the keys of Wi-Fi networks", needed},
    {"brctl", "the network pages' status", !needed},
    {"ifconfig", "the network pages' status", !needed},
    {"iptables", "the port forwarding page's status", !needed},
    {"iw", "the Wi-Fi pages' status", !needed},
    {"route", "the network pages' status", !needed},
};

bool IsProgram(std::filesystem::path const &path) {
    std::error_code unseen;  // what this user may not look at is no program for it
    return std::filesystem::is_regular_file(path, unseen) && ::access(path.c_str(), X_OK) == 0;
}

bool IsInPath(std::string const &name) {
    char const *const path = std::getenv("PATH");
    std::istringstream folders(path ? path : "/usr/sbin:/usr/bin:/sbin:/bin");
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (IsProgram(std::filesystem::path(folder) / name))
            return true;
    }
    return false;
}

class Report {
  public:
    explicit Report(std::ostream &out) : _out(out) {}

    void Line(bool good, bool isNeeded, std::string const &what, std::string const &problem) {
        char const *const word = good ? "ok" : isNeeded ? "missing" : "without";
        _out << word << std::string(std::strlen("missing ") - std::strlen(word), ' ') << what;
        if (!good)
            _out << ": " << problem;
        _out << '\n';
        _missing += !good && isNeeded;
    }

    int Missing() const { return _missing; }

  private:
    std::ostream &_out;
    int _missing = 0;
};

void CheckPrograms(Report &report, cppcms::json::value const &settings) {
    for (auto const &program : programs) {
        if (program.key && !settings.get(program.key, false))
            continue;
        bool const found = *program.name == '/' ? IsProgram(program.name) : IsInPath(program.name);
        report.Line(found, program.needed, program.name,
                    std::string("no such program, for ") + program.used_by);
    }
}

void CheckConfiguration(Report &report, cppcms::json::value const &settings) {
    for (char const *const member : {"webconfig.root.sync", "webconfig.root.async", "webconfig.root.rpc",
                                     "webconfig.media_root", "service.api"})
        report.Line(!settings.get(member, "").empty(), needed, member, "the configuration lacks this text");
}

/// A folder that the service writes to; one with secrets is for its user only.
void CheckFolder(Report &report, std::string const &use, std::string const &folder, bool isPrivate = false) {
    struct stat info {};
    std::string problem;
    if (::stat(folder.c_str(), &info) != 0 || !S_ISDIR(info.st_mode))
        problem = "no such folder";
    else if (::access(folder.c_str(), W_OK | X_OK) != 0)
        problem = "this user may not write there";
    else if (isPrivate && (info.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        problem = "others may look into it; make its mode 0700";
    report.Line(problem.empty(), needed, folder + " (" + use + ")", problem);
}

void CheckFolders(Report &report, cppcms::json::value const &settings) {
    if (std::string const uploads = settings.get("security.uploads_path", ""); !uploads.empty())
        CheckFolder(report, "uploads", uploads, true);
    CheckFolder(report, "VPN configuration", "/etc/openvpn");
    auto const parentOf = [](std::string const &file) { return std::filesystem::path(file).parent_path(); };
    auto const history = history::ReadConfiguration(settings);
    if (!history.file.empty())
        CheckFolder(report, "history", parentOf(history.file));
    if (!history.file.empty() && history.trial_seconds > 0)
        CheckFolder(report, "trial", parentOf(history.trial_file));
    std::string const socket = settings.get("service.socket", "stdin");
    if (socket != "stdin")
        CheckFolder(report, "socket", parentOf(socket));
}

void CheckStore(Report &report) {
    constexpr int unusable = 3;  // another status is that of a key, which need not exist
    std::string name;
    bool const isUsable = util::Prm::lib().getPar("net/hostname", name) != unusable;
    report.Line(isUsable, needed, "the parameter store", "it cannot be used; the log tells why");
}

void CheckDaemons(Report &report) {
    auto const line = [&report](char const *name, bool answers) {
        report.Line(answers, !needed, name, "does not answer now");
    };
    line("statusd", util::AskStatusd().answer != nullptr);
    line("openvpnd", util::AskOpenvpnd().answer != nullptr);
    line("seriald", util::AskSeriald().answer != nullptr);
}

}  // namespace

int CheckDevice(cppcms::json::value const &settings, std::ostream &out) {
    Report report(out);
    CheckConfiguration(report, settings);
    CheckFolders(report, settings);
    CheckStore(report);
    CheckPrograms(report, settings);
    CheckDaemons(report);
    return report.Missing();
}

}  // namespace webconfig
