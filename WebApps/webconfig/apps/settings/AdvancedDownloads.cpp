#include <cppcms/http_response.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <utility>

#include "WebApps/webconfig/apps/SaveTurn.h"
#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/data/Advanced.h"
#include "WebApps/webconfig/history/Trial.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Switch.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/Settings";
constexpr int serviceUnavailable = 503;
constexpr char retrySeconds[] = "10";
constexpr char const *busy =
    util::Translatable("Others download at the moment. Go back and try again in a moment.");

std::atomic<int> downloads{0};

/// Downloads may take long and would hold all workers: only so many run at once.
class DownloadPlace {
  public:
    explicit DownloadPlace(int most) : _isMine(downloads.fetch_add(1) < most) {}
    ~DownloadPlace() { --downloads; }
    DownloadPlace(DownloadPlace const &) = delete;
    DownloadPlace &operator=(DownloadPlace const &) = delete;

    bool IsMine() const { return _isMine; }

  private:
    bool const _isMine;
};

/// Starts the answer: a text that the browser saves as \a name. What would end the header or the name in it
/// is left out.
std::ostream &StartDownload(cppcms::http::response &response, std::string name) {
    std::erase_if(name,
                  [](unsigned char c) { return c < ' ' || c == 0x7F || c == '"' || c == '\\' || c == '/'; });
    SaveTurn::End();
    history::TrialTurn::End();
    response.set_plain_text_header();
    response.set_header("Content-disposition", "attachment; filename=\"" + name + '"');
    return response.out();
}

void Copy(std::ifstream file, std::ostream &out) {
    if (file.peek() != std::ifstream::traits_type::eof())
        out << file.rdbuf();
}

char TypeLetter(PRM_PAR_T type) {
    switch (type) {
        case PRM_PAR_INTEGER:
            return 'i';
        case PRM_PAR_FLOAT:
            return 'f';
        default:
            return 's';
    }
}

}  // namespace

bool Settings::_Download(data::Advanced &content, bool (Settings::*run)(data::Advanced &)) {
    DownloadPlace const place(settings().get("webconfig.downloads", std::numeric_limits<int>::max()));
    if (place.IsMine())
        return (this->*run)(content);
    WEBCONFIG_LOG(warning, logTag) << "Refused to download: too many others do";
    response().set_header("Retry-After", retrySeconds);
    response().make_error_response(serviceUnavailable, util::Translate(busy));
    return true;
}

bool Settings::_BackupConfiguration(data::Advanced & /*content*/) {
    std::ostream &out = StartDownload(response(), "Config_" + util::SystemAssemblySN() + ".txt");
    for (auto const &key : util::Prm::GetList("")) {
        std::string value;
        PRM_PAR_T type{};
        if (!util::Prm::Get(key, value, type)) {
            WEBCONFIG_LOG(error, logTag) << "FAIL prmlib::getPar \"" << key << '"';
            break;
        }
        out << '"' << key << "\",\"" << value << "\", " << TypeLetter(type) << '\n';
    }
    return true;
}

bool Settings::_DownloadSyslog(data::Advanced & /*content*/) {
    std::ostream &out =
        StartDownload(response(), "korbex_syslog_" + util::Prm::GetString("net/hostname") + ".txt");
    char const *const log =
        util::IsOn("syslogd/persistent") ? "/home/root/log/messages" : "/var/log/messages";
    Copy(std::ifstream(log, std::ios::binary), out);
    return true;
}

bool Settings::_DownloadDeployerLog(data::Advanced &content) {
    std::string output;
    util::ShellCommand("/usr/bin/logdeployer", output);
    std::string const path = util::Trim(output);
    if (!util::FileExists(path)) {
        content.message =
            data::Message::Error(path.empty() ? util::Translatable("There is no deployer log") : path);
        WEBCONFIG_LOG(error, logTag) << content.message.GetText();
        return false;
    }
    std::ifstream log(path, std::ios::binary);
    std::remove(path.c_str());  // before others have their turn, who collect it under the same name
    Copy(std::move(log), StartDownload(response(), std::filesystem::path(path).filename()));
    return true;
}

}  // namespace webconfig::apps
