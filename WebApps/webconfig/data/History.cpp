#include "WebApps/webconfig/data/History.h"

#include <algorithm>
#include <array>
#include <ctime>

#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/util/Utf8.h"

namespace webconfig::data {

namespace {

/// Of a value that is a file, or a long text, so much is shown: what has changed, and around it.
constexpr std::size_t mostMarked = 200;
constexpr std::size_t mostBeside = 60;
constexpr char ellipsis[] = "\xE2\x80\xA6";

bool IsContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

/// The first or the last \a most bytes of a text, or a little less, so that no character is cut in two. What
/// cannot be shown is replaced.
std::string Begin(std::string const &text, std::size_t most) {
    if (text.size() <= most)
        return util::CleanText(text);
    while (most > 0 && IsContinuation(text[most]))
        --most;
    return util::CleanText(std::string_view(text).substr(0, most)) + ellipsis;
}
std::string End(std::string const &text, std::size_t most) {
    if (text.size() <= most)
        return util::CleanText(text);
    std::size_t begin = text.size() - most;
    while (begin < text.size() && IsContinuation(text[begin]))
        ++begin;
    return ellipsis + util::CleanText(std::string_view(text).substr(begin));
}

/// Marks what the two texts do not have in common at their ends. No character is cut in two.
void Mark(std::string const &before, std::string const &after, MarkedText &left, MarkedText &right) {
    std::size_t const shorter = std::min(before.size(), after.size());
    std::size_t head = 0;
    while (head < shorter && before[head] == after[head])
        ++head;
    while (head > 0 && ((head < before.size() && IsContinuation(before[head])) ||
                        (head < after.size() && IsContinuation(after[head]))))
        --head;
    std::size_t tail = 0;
    while (tail < shorter - head && before[before.size() - tail - 1] == after[after.size() - tail - 1])
        ++tail;
    while (tail > 0 && IsContinuation(before[before.size() - tail]))
        --tail;
    auto const cut = [&](std::string const &text) {
        return MarkedText{End(text.substr(0, head), mostBeside),
                          Begin(text.substr(head, text.size() - head - tail), mostMarked),
                          Begin(text.substr(text.size() - tail), mostBeside)};
    };
    left = cut(before);
    right = cut(after);
}

std::string ClockText(std::time_t time) {
    std::tm parts{};
    localtime_r(&time, &parts);
    std::array<char, 16> text{};
    std::strftime(text.data(), text.size(), "%H:%M:%S", &parts);
    return text.data();
}

}  // namespace

ChangedSetting Described(history::Change const &change) {
    ChangedSetting described;
    auto const *const setting = settings::Find(change.key);
    described.label = settings::ShownLabelOf(change.key);
    described.secret = setting && setting->kind == settings::Kind::Secret;
    if (described.secret)
        return described;
    described.existed = change.before && !change.before->text.empty();
    described.exists = change.after && !change.after->text.empty();
    std::string const before = change.before ? settings::Shown(change.key, change.before->text) : "";
    std::string const after = change.after ? settings::Shown(change.key, change.after->text) : "";
    Mark(before, after, described.before, described.after);
    return described;
}

std::vector<ChangedSetting> Described(std::vector<history::Change> const &changes) {
    std::vector<ChangedSetting> described;
    described.reserve(changes.size());
    for (auto const &change : changes)
        described.push_back(Described(change));
    return described;
}

Message ResultOf(history::Applied applied, std::string const &done) {
    switch (applied) {
        case history::Applied::All:
            return Message::OK(done);
        case history::Applied::NotInEffect:
            return Message::Error(
                "Stored, but a command that puts it into effect has failed: see the system log.");
        case history::Applied::NotStored:
            break;
    }
    return Message::SaveError();
}

TrialNotice Told(std::optional<history::Trial> const &trial) {
    if (!trial)
        return {};
    std::int64_t const left = std::max<std::int64_t>(trial->until - history::SecondsSinceBoot(), 0);
    switch (trial->state) {
        case history::TrialState::Returned:
            return {TrialNotice::Kind::Returned, 0, ""};
        case history::TrialState::Saving:
        case history::TrialState::Running:
            if (trial->asked || (trial->until != 0 && left == 0))
                break;
            if (trial->until == 0)
                return {TrialNotice::Kind::Waiting, 0, ""};
            return {TrialNotice::Kind::Running, left, ClockText(std::time(nullptr) + left)};
        case history::TrialState::Returning:
            break;
    }
    return {TrialNotice::Kind::Returning, 0, ""};
}

}  // namespace webconfig::data
