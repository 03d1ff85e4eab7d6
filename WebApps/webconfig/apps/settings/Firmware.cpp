#include "WebApps/webconfig/data/Firmware.h"

#include <cppcms/http_file.h>
#include <cppcms/http_response.h>
#include <cppcms/service.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <optional>
#include <random>
#include <system_error>

#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/apps/Shutdown.h"
#include "WebApps/webconfig/security/Audit.h"
#include "WebApps/webconfig/security/Policy.h"
#include "WebApps/webconfig/util/FirmwareVerdict.h"
#include "WebApps/webconfig/util/Happened.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/Settings";

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

/// Whether an image is looked into at all.
bool Judges() {
    return security::ThePolicy().firmware_verdict || security::ThePolicy().signed_firmware;
}

std::vector<data::Firmware::Finding> Findings(std::string const &name, std::uintmax_t size,
                                              std::string const &sha256,
                                              util::FirmwareVerdict const &verdict) {
    return {
        {util::Translatable("File"), util::CleanText(name)},
        {util::Translatable("Size"), util::Translate("{1} bytes", size)},
        {"SHA-256", sha256},
        {util::Translatable("Version"), verdict.version.shown, verdict.isOlder},
        {util::Translatable("Platform"), verdict.platform.shown},
        {util::Translatable("Signature"), verdict.signature.shown},
    };
}

void Tell(std::string const &name, std::string const &sha256, util::FirmwareVerdict const &verdict) {
    bool const accepted = verdict.refusal.empty();
    util::LogLine(accepted && !verdict.isOlder ? booster::log::info : booster::log::warning, logTag, __LINE__)
            .out()
        << "Firmware image " << security::AuditWord(name)
        << (accepted ? " accepted." : " refused. " + verdict.refusal.english)
        << " Version: " << verdict.version.english << "; platform: " << verdict.platform.english
        << "; signature: " << verdict.signature.english << "; SHA-256: " << sha256;
    util::Happened("firmware", accepted ? util::Outcome::Ok : util::Outcome::Refused,
                   {{"reason", verdict.reason},
                    {"sha256", sha256},
                    {"version", verdict.version.english},
                    {"platform", verdict.platform.english},
                    {"signature", verdict.signature.english},
                    {"name", name}});
}

}  // namespace

void Settings::Firmware() {
    data::Firmware content;
    _PrepareFirmware(content);
    content.versions = util::ShellCommand("/usr/bin/ubi_get_volume_versions.sh", maxOutput);
    if (content.versions.empty()) {
        content.versions = util::Translate("n/a");
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
    content.platform = util::hardwarePlatform;
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
    content.title = util::Translate("Firmware");
    content.base_version = baseVersion;
    content.internal_server = UsingInternalServer();
}

/// Looks into the saved image, where that is asked for, and tells on the page, in the log and in the audit
/// what it is. True where it may be installed: what is left of it then is what the firmware tool knows,
/// without a signature's block. Else the page has the reason as its message.
bool Settings::_AcceptImage(data::Firmware &content, std::string const &image, std::string const &sha256) {
    security::Policy const &policy = security::ThePolicy();
    auto const upload = content.form.file.value();
    if (!Judges()) {
        util::Happened("firmware", util::Outcome::Ok, {{"name", upload->filename()}});
        return true;
    }
    util::FirmwareVerdict const verdict =
        util::JudgeFirmware(image, {.soundTree = policy.firmware_verdict,
                                    .signature = policy.signed_firmware,
                                    .platform = util::hardwarePlatform,
                                    .running = util::RunningVersion(content.versions)});
    if (policy.firmware_verdict)
        content.verdict = Findings(upload->filename(), util::FileSize(image), sha256, verdict);
    Tell(upload->filename(), sha256, verdict);
    std::error_code problem;
    if (verdict.refusal.empty())
        std::filesystem::resize_file(image, verdict.imageSize, problem);
    if (!verdict.refusal.empty())
        content.message = data::Message::Error(verdict.refusal.shown, true);
    else if (problem)
        content.message = data::Message::SaveError();
    return verdict.refusal.empty() && !problem;
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
    std::string sha256;
    if (!image || !util::SaveUpload(*upload, *image, Judges() ? &sha256 : nullptr)) {
        content.message = data::Message::SaveError();
        return false;
    }
    if (!_AcceptImage(content, *image, sha256)) {
        std::remove(image->c_str());
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
