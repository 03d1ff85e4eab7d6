#include "WebApps/webconfig/data/History.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <limits>

#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/history/Patch.h"
#include "WebApps/webconfig/history/Recorder.h"
#include "WebApps/webconfig/history/Trial.h"
#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

using util::Translatable;
using util::Translate;

constexpr char logTag[] = "WebApps/webconfig/apps/settings/History";

/// Sets on a page, and how many are read at a time to find those that fit the filter.
constexpr std::size_t pageSize = 50;
constexpr int readSize = 100;

constexpr char const *undo = Translatable("Undo");
constexpr char const *returnToBefore = Translatable("Return to before this");

constexpr std::pair<char const *, char const *> titles[] = {
    {settings::general, Translatable("General")},
    {settings::ethernet, Translatable("Ethernet 1")},
    {settings::dns, Translatable("DNS")},
    {settings::vpn, Translatable("OpenVPN")},
    {settings::site, Translatable("Orvane")},
    {settings::forwarding, Translatable("Port forwarding")},
    {settings::cellular, Translatable("Cellular")},
    {settings::time, Translatable("NTP")},
    {settings::accessPoint, Translatable("Access point")},
    {settings::wlan, Translatable("WLAN")},
    {settings::advanced, Translatable("Advanced")},
    {"/settings/history", Translatable("History")},
    {settings::machines, Translatable("Machines")},
};

std::string TitleOf(std::string const &page) {
    for (auto const &[address, title] : titles) {
        if (page == address)
            return Translate(title);
    }
    return page;
}

std::string TimeText(std::time_t time) {
    std::tm parts{};
    gmtime_r(&time, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S UTC", &parts);
    return text.data();
}

/// Reasons of our own, as they are stored, in English.
constexpr char const *reasons[] = {Translatable("Undo of {1}"), Translatable("Return to before {1}"),
                                   Translatable("Restore of {1}")};

std::string ShownReason(std::string const &reason) {
    for (std::string const known : reasons) {
        std::string const begin = known.substr(0, known.find('{'));
        if (reason.starts_with(begin))
            return Translate(known, reason.substr(begin.size()));
    }
    return Translate(reason);
}

data::HistoryEntry EntryOf(history::ChangeSet const &set) {
    return {std::to_string(set.number),
            TimeText(set.time),
            set.requester.user + (set.requester.user.empty() ? "" : ", ") + set.requester.address,
            TitleOf(set.requester.page),
            set.result,
            ShownReason(set.reason),
            data::Described(set.changes)};
}

/// Whether something that the page shows of \a entry has \a text in it. What is secret is not looked at.
bool Mentions(data::HistoryEntry const &entry, std::string const &text) {
    auto const has = [&text](std::string const &shown) { return shown.find(text) != std::string::npos; };
    auto const hasMarked = [&has](data::MarkedText const &shown) {
        return has(shown.head + shown.marked + shown.tail);
    };
    if (has(entry.who) || has(entry.page) || has(entry.reason) || has(entry.time))
        return true;
    for (auto const &change : entry.changes) {
        if (has(change.label) || hasMarked(change.before) || hasMarked(change.after))
            return true;
    }
    return false;
}

void ReadEntries(history::ChangeLog &log, std::int64_t before, data::History &content) {
    for (;;) {
        auto const sets = log.Newest(before, readSize);
        for (auto const &set : sets) {
            if (!content.page.empty() && set.requester.page != content.page)
                continue;
            data::HistoryEntry entry = EntryOf(set);
            if (!Mentions(entry, content.text))
                continue;
            if (content.entries.size() == pageSize) {
                content.older = content.entries.back().number;
                return;
            }
            content.entries.push_back(std::move(entry));
        }
        if (sets.size() < static_cast<std::size_t>(readSize))
            return;
        before = sets.back().number;
    }
}

/// The changes that \a action on the set \a number takes back; none where the set is gone.
std::vector<history::Change> ChangesOf(history::ChangeLog &log, std::string const &action,
                                       std::int64_t number) {
    auto const set = log.Get(number);
    if (!set)
        return {};
    return action == returnToBefore ? log.Since(number) : set->changes;
}

void TakeBack(history::ChangeLog &log, data::History &content, data::HistoryQuestion question,
              bool confirmed) {
    bool const whole = question.action == returnToBefore;
    util::Bilingual const what(whole ? reasons[1] : reasons[0], question.number);
    auto const changes = ChangesOf(log, question.action, std::strtoll(question.number.c_str(), nullptr, 10));
    if (changes.empty()) {
        content.message =
            data::Message::Error(Translate("There is no change {1} any more.", question.number));
        return;
    }
    history::Plan const plan = history::PlanToTakeBack(changes);
    if (plan.writes.empty()) {
        content.message = data::Message::OK("Nothing to take back: everything is as it was before.");
    } else if (!plan.conflicts.empty() && !confirmed) {
        for (auto const &write : plan.writes) {
            if (std::find(plan.conflicts.begin(), plan.conflicts.end(), write.key) != plan.conflicts.end())
                question.conflicts.push_back(data::Described(write));
        }
        content.question.push_back(std::move(question));
    } else {
        if (auto *const recording = history::Recording::Current())
            recording->SetReason(what.english);
        content.message = data::ResultOf(history::Apply(plan.writes), Translate("{1} is done.", what.shown));
        content.reboot_required = util::IsRebootRequired();
    }
}

/// A button of the notice that every page has of a trial, and what comes of it.
struct TrialButton {
    char const *action;
    bool (*press)();
    char const *done;
};
constexpr TrialButton trialButtons[] = {
    {"Keep them", history::KeepTrial, Translatable("The new settings are kept.")},
    {"Take them back", history::EndTrial, Translatable("The new settings are being taken back.")},
    {"Dismiss", history::DismissTrial, ""},
};

data::Message Press(TrialButton const &button) {
    if (!button.press())
        return data::Message::Error("That is over: look at what the notice says now.");
    return *button.done ? data::Message::OK(button.done) : data::Message();
}

}  // namespace

void Settings::History() {
    data::History content;
    Prepare(content);
    content.title = Translate("History");
    for (auto const &[address, title] : titles)
        content.pages.emplace_back(address, Translate(title));
    content.text = HttpGet("text");
    content.page = HttpGet("page");
    std::string const before = HttpGet("before");
    try {
        history::ChangeLog &log = *history::Kept();
        std::string const action = HttpPost() ? HttpPost("action") : "";
        for (auto const &button : trialButtons) {
            if (action == button.action)
                content.message = Press(button);
        }
        if (action == undo || action == returnToBefore)
            TakeBack(log, content, {action, HttpPost("number"), {}}, HttpPost("confirmed") == "yes");
        if (auto *const recording = history::Recording::Current())
            recording->Finish();  // so that the list has it
        ReadEntries(log,
                    before.empty() ? std::numeric_limits<std::int64_t>::max()
                                   : std::strtoll(before.c_str(), nullptr, 10),
                    content);
    } catch (std::exception const &failure) {
        WEBCONFIG_LOG(error, logTag) << "The history cannot be read: " << failure.what();
        content.message =
            data::Message::Error(Translate("The history cannot be read: {1}", failure.what()), true);
    }
    render("History", content);
}

}  // namespace webconfig::apps
