#include "WebApps/webconfig/data/AdvancedRestore.h"

#include <booster/regex.h>
#include <cppcms/http_file.h>
#include <cppcms/http_request.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "WebApps/webconfig/apps/KeptUpload.h"
#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/data/Advanced.h"
#include "WebApps/webconfig/data/History.h"
#include "WebApps/webconfig/data/Reboot.h"
#include "WebApps/webconfig/history/Recorder.h"
#include "WebApps/webconfig/history/Restore.h"
#include "WebApps/webconfig/security/DefaultPassword.h"
#include "WebApps/webconfig/security/Policy.h"
#include "WebApps/webconfig/settings/Backup.h"
#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Strings.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Utf8.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/Settings";

constexpr std::size_t mostOfName = 100;    // bytes of a file's name
constexpr std::size_t mostOfReason = 300;  // bytes: it may quote a key

// The buttons of what an upload is answered with. That which says what the file is, where it can be read in
// two ways, stays in the form.
constexpr char readAsPage[] = "Read as Backup";
constexpr char readAsExport[] = "Read as Export";
constexpr char applyBackup[] = "Apply Backup";

char const *NameOf(settings::BackupFormat format) {
    return format == settings::BackupFormat::Export ? readAsExport : readAsPage;
}

/// What \a field holds; nothing where it was not sent.
std::string TextOf(cppcms::widgets::text &field) {
    return field.set() ? field.value() : "";
}

/// The name alone, as it can be shown. Some browsers send the whole path.
std::string FileName(std::string const &path) {
    std::string const name = path.substr(path.find_last_of("/\\") + 1);
    return util::CleanText(util::StripChars(name, "\t\r\n").substr(0, mostOfName));
}

/// The serial number in a backup's name; empty where it has none. Browsers add a number, "Config_42 (1).txt",
/// where they have such a file already.
std::string DeviceIn(std::string const &name) {
    static booster::regex const pattern(R"(Config_(.+?)( ?\([0-9]+\))?\.txt)");
    booster::smatch parts;
    return booster::regex_match(name, parts, pattern) ? parts[1].str() : "";
}

/// A rule of the forms that holds here as well: a line end would begin a line of its own in the file of some
/// program.
void RefuseControls(std::vector<history::Change> const &changes) {
    for (auto const &[key, before, after] : changes) {
        if (after && settings::Find(key)->kind != settings::Kind::File && util::HasControls(after->text))
            throw std::runtime_error('"' + settings::LabelOf(key) +
                                     "\" must not have line ends or control characters");
    }
}

/// What the kept upload would change; nothing where it can be read in two ways and \a form does not say which
/// one is right. Throws std::runtime_error with the reason why it cannot be taken.
std::optional<history::RestorePlan> PlanOf(KeptUpload const &kept, forms::AdvancedRestore &form) {
    auto const text = kept.Read(TextOf(form.token));
    if (!text)
        throw std::runtime_error(util::Translatable("The device does not have it any more. Upload it again"));
    auto const readings = settings::ReadBackup(*text);
    for (auto const &reading : readings) {
        if (readings.size() > 1 && TextOf(form.format) != NameOf(reading.format))
            continue;
        auto plan = history::PlanToRestore(reading.parameters);
        if (security::ThePolicy().refuse_control_characters)
            RefuseControls(plan.known);
        return plan;
    }
    return {};
}

void AddTo(std::vector<data::AdvancedRestore::Group> &groups, char const *title,
           std::vector<history::Change> const &changes, bool (*belongs)(history::Change const &)) {
    data::AdvancedRestore::Group group{util::Translate(title), {}};
    for (auto const &change : changes) {
        if (belongs(change))
            group.changes.push_back(data::Described(change));
    }
    if (!group.changes.empty())
        groups.push_back(std::move(group));
}

void Describe(history::RestorePlan const &plan, data::AdvancedRestore &restore) {
    restore.device = DeviceIn(restore.name);
    restore.this_device = util::SystemAssemblySN();
    AddTo(restore.known, util::Translatable("Changed"), plan.known,
          [](history::Change const &change) { return change.before && change.after; });
    AddTo(restore.known, util::Translatable("Added"), plan.known,
          [](history::Change const &change) { return !change.before; });
    AddTo(restore.known, util::Translatable("Gone: not in the backup, and deleted"), plan.known,
          [](history::Change const &change) { return !change.after; });
    restore.unknown = data::Described(plan.unknown);
}

}  // namespace

bool Settings::_UploadBackup(data::Advanced &content) {
    forms::AdvancedConfiguration &upload = content.configuration;
    if (!ValidateForm(upload)) {
        content.message = data::Message::ValidationError();
        return false;
    }
    auto const file = upload.file.value();
    forms::AdvancedRestore &form = content.restore.emplace().form;
    form.token.value(KeptUpload(settings()).Keep(*file));
    form.name.value(FileName(file->filename()));
    form.reboot.value(upload.reboot.value());
    return _TakeBackup(content, false);
}

bool Settings::_AnswerBackup(data::Advanced &content) {
    std::string const button = HttpPost("submit");
    forms::AdvancedRestore &form = content.restore.emplace().form;
    if (!ValidateForm(form)) {
        content.message = data::Message::ValidationError();
        content.restore.reset();
        return false;
    }
    if (button == readAsPage || button == readAsExport)
        form.format.value(button);
    return _TakeBackup(content, button == applyBackup);
}

bool Settings::_TakeBackup(data::Advanced &content, bool apply) {
    KeptUpload const kept(settings());
    data::AdvancedRestore &restore = *content.restore;
    restore.name = FileName(TextOf(restore.form.name));
    try {
        auto plan = PlanOf(kept, restore.form);
        restore.is_ambiguous = !plan;
        bool const isEmpty = plan && plan->known.empty() && plan->unknown.empty();
        if (plan && apply && !isEmpty) {
            kept.Drop();
            return _ApplyBackup(content, std::move(*plan));
        }
        if (plan)
            Describe(*plan, restore);
        content.message = data::Message::Custom("Nothing has been changed yet: see below.", "", true);
        if (!isEmpty)
            return false;
        content.message = data::Message::OK("Nothing to restore: everything is as it is in the backup.");
    } catch (std::runtime_error const &problem) {
        std::string const reason = util::CleanText(std::string_view(problem.what()).substr(0, mostOfReason));
        WEBCONFIG_LOG(error, logTag) << "The backup was not taken: " << reason;
        content.message = data::Message::Error(
            util::Translate("Error: The backup was not taken: {1}", util::Translate(reason)), true);
    }
    kept.Drop();
    content.restore.reset();
    return false;
}

bool Settings::_ApplyBackup(data::Advanced &content, history::RestorePlan plan) {
    bool const all = !HttpPost("unknownAll").empty();
    std::set<std::string> ticked;
    for (auto [tick, end] = request().post().equal_range("unknown"); tick != end; ++tick)
        ticked.insert(tick->second);
    // The settings last: what may be many and slow is stored when the first of them begins a trial.
    auto changes = std::move(plan.unknown);
    std::erase_if(changes,
                  [&](history::Change const &change) { return !all && !ticked.contains(change.key); });
    std::move(plan.known.begin(), plan.known.end(), std::back_inserter(changes));
    if (auto *const recording = history::Recording::Current())
        recording->SetReason("Restore of " + content.restore->name);
    auto const applied = history::Apply(changes);
    bool const reboots = applied == history::Applied::All && content.restore->form.reboot.value();
    content.restore.reset();
    if (reboots) {
        data::Reboot reboot;
        Prepare(reboot);
        reboot.title = util::Translate("Reboot");
        _RebootAndWait(reboot);
        return true;
    }
    content.message = data::ResultOf(applied, util::Translatable("The backup is restored."));
    content.reboot_required = util::IsRebootRequired();
    content.default_password = security::IsDefaultPasswordAlerted();
    return false;
}

bool Settings::_DiscardBackup(data::Advanced & /*content*/) {
    KeptUpload(settings()).Drop();
    return false;
}

}  // namespace webconfig::apps
