#include "WebApps/webconfig/data/Firmware.h"

#include <cppcms/http_file.h>
#include <cppcms/http_response.h>
#include <cppcms/service.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <optional>
#include <random>

#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/apps/Shutdown.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/Settings";

constexpr char hardwarePlatform[] = "brq4";
constexpr char baseVersion[] = "1.05";
constexpr char imageType[] = "application/octet-stream";
// The page's script has suspended it before the upload, of which nothing was known yet.
constexpr char resumeDeployer[] = "supvis --resume deployer";
constexpr char failedUpgrade[] = "failedUpgrade";
constexpr unsigned maxOutput = 4096;
constexpr unsigned imageNumbers = 10000;

/// A new, empty file for an image; nothing, with a log line, where there is none to be had.
std::optional<std::string> NewImage() {
    unsigned const first = std::random_device()();  // a name that nobody knows before
    for (unsigned i = 0; i < imageNumbers; ++i) {
        std::string const path = "/tmp/firmware" + std::to_string((first + i) % imageNumbers);
        if (util::CreatePrivately(path))
            return path;
        if (errno != EEXIST)
            break;
    }
    WEBCONFIG_LOG(error, logTag) << "Firmware image not saved: " << std::strerror(errno);
    return {};
}

}  // namespace

void Settings::Firmware() {
    data::Firmware content;
    _PrepareFirmware(content);
    content.versions = util::ShellCommand("/usr/bin/ubi_get_volume_versions.sh", maxOutput);
    if (content.versions.empty()) {
        content.versions = "n/a";
        content.message = data::Message::Error("Unknown firmware version(s)", true);
    }
    content.tool_status = util::ShellCommand("/usr/bin/fwtool -s", maxOutput);

    if (util::IsFirmwareUpgradeRunning()) {
        render("FirmwareUpgradeProgress", content);
        return;
    }
    if (HttpGet("type") == failedUpgrade) {
        content.message = data::Message::Error("Firmware upgrade failed", true);
        render("Firmware", content);
        return;
    }
    if (HttpPost()) {
        if (_StartFirmwareUpgrade(content))
            return;
        util::RunCommand(resumeDeployer);
    }
    content.platform = hardwarePlatform;
    render("Firmware", content);
}

void Settings::FirmwareUpgradeStatus() {
    if (!util::IsFirmwareUpgradeRunning()) {
        response().set_redirect_header(url("/settings/firmware"));
        return;
    }
    data::Firmware content;
    _PrepareFirmware(content);
    render("FirmwareUpgradeProgress", content);
}

void Settings::_PrepareFirmware(data::Firmware &content) {
    Prepare(content);
    content.title = "Firmware";
    content.base_version = baseVersion;
    content.internal_server = UsingInternalServer();
}

/// Takes the uploaded image, answers with the progress page and stops the service, between two runs of
/// which the upgrade starts. False, with a message on the page, where there is nothing to start.
bool Settings::_StartFirmwareUpgrade(data::Firmware &content) {
    if (!ValidateForm(content.form)) {
        content.message = data::Message::ValidationError();
        return false;
    }
    auto const upload = content.form.file.value();
    if (upload->mime() != imageType) {
        WEBCONFIG_LOG(error, logTag) << "Unrecognized firmware MIME type " << upload->mime();
        content.message = data::Message::SaveError();
        return false;
    }

    // Of two browsers that send images at once, the second one sees the progress of the first.
    static std::mutex guard;
    std::lock_guard const lock(guard);
    if (util::IsFirmwareUpgradeFlagged()) {
        render("FirmwareUpgradeProgress", content);
        return true;
    }
    auto const image = NewImage();
    if (!image || !util::SaveUpload(*upload, *image)) {
        content.message = data::Message::SaveError();
        return false;
    }
    util::RunCommand("/bin/rm -f /tmp/fwtool_status.txt /var/volatile/tmp/fwtool_status.txt");
    if (content.internal_server)
        setenv("FWBOOT", "1", 1);  // for the firmware tool, which inherits it
    util::FirmwareUpgradeFile() = *image;

    render("FirmwareUpgradeProgress", content);
    util::MarkFirmwareUpgrade(true);
    util::MarkForceReload(true);
    Shutdown(service());
    return true;
}

}  // namespace webconfig::apps
