#pragma once

#include <string>

#include "WebApps/webconfig/apps/Base.h"
#include "WebApps/webconfig/data/About.h"

namespace webconfig::data {
struct Advanced;
struct Firmware;
struct Reboot;
}  // namespace webconfig::data

namespace webconfig::history {
struct RestorePlan;
}  // namespace webconfig::history

namespace webconfig::forms {
class AdvancedPassword;
}  // namespace webconfig::forms

namespace webconfig::apps {

/// Pages of the device's own settings. The root application also routes the site's start page to General().
class Settings : public Base {
  public:
    explicit Settings(cppcms::service &service);

    void General();
    /// The Firmware page: also the application's start page, and what any unknown path below it shows.
    void Firmware();
    /// The progress of a running upgrade; without one, the way to the Firmware page.
    void FirmwareUpgradeStatus();
    void Reboot();
    /// Told apart by the button that was pressed: administration, erasing, passwords, downloads.
    void Advanced();
    /// What was changed when, by whom; and takes it back.
    void History();
    void About();
    /// \a package and \a file come from the URL; the route lets only names through that stay inside the
    /// licence directory.
    void About(std::string package, std::string file);

    /// Fills the catalogue with the notices below \a directory; false when there are none.
    static bool GetOSSFiles(std::string const &directory, data::OSSCatalogue &catalogue);

  private:
    void _PrepareFirmware(data::Firmware &content);
    bool _StartFirmwareUpgrade(data::Firmware &content);
    bool _AcceptImage(data::Firmware &content, std::string const &image, std::string const &sha256);

    // The actions of the Advanced page. They return true where they have answered themselves.
    bool _SaveAdministration(data::Advanced &content);
    bool _EraseConfiguration(data::Advanced &content);
    bool _ErasePartition(data::Advanced &content);
    bool _SaveWebPassword(data::Advanced &content);
    bool _SaveRootPassword(data::Advanced &content);
    /// Runs one of the downloads, or refuses because too many others run.
    bool _Download(data::Advanced &content, bool (Settings::*run)(data::Advanced &));
    bool _BackupConfiguration(data::Advanced &content);
    bool _DownloadSyslog(data::Advanced &content);
    bool _DownloadDeployerLog(data::Advanced &content);
    bool _UploadBackup(data::Advanced &content);
    bool _AnswerBackup(data::Advanced &content);
    bool _DiscardBackup(data::Advanced &content);
    bool _InstallCertificate(data::Advanced &content);
    void _DescribeCertificate(data::Advanced &content);
    /// Fills the audit's tab, where the policy asks for one, with what the query asks for.
    void _ShowAudit(data::Advanced &content);
    /// Shows what the kept upload would change, or lets it.
    bool _TakeBackup(data::Advanced &content, bool apply);
    bool _ApplyBackup(data::Advanced &content, history::RestorePlan plan);
    /// Answers with the page that waits for the device, which reboots then.
    void _RebootAndWait(data::Reboot &content);
    data::Message _WebPassword(forms::AdvancedPassword &form);
    data::Message _RootPassword(forms::AdvancedPassword &form);

    std::string const _licenceDirectory = "/usr/share/common-licenses";
};

}  // namespace webconfig::apps
