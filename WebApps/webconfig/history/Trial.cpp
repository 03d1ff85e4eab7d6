#include "WebApps/webconfig/history/Trial.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <system_error>
#include <thread>

#include "WebApps/webconfig/util/Files.h"
#include "WebApps/webconfig/util/FolderStates.h"
#include "WebApps/webconfig/util/Log.h"

namespace webconfig::history {

namespace {

constexpr char logTag[] = "WebApps/webconfig/history/Trial";
constexpr std::chrono::milliseconds retryInterval{20};

/// What the states are called in the file.
constexpr char const *stateNames[] = {"saving", "running", "returning", "returned"};

thread_local TrialTurn *current = nullptr;

struct Settings {
    TrialFile file;
    int seconds;
};

std::unique_ptr<Settings> &TheSettings() {
    static std::unique_ptr<Settings> settings;
    return settings;
}

std::optional<TrialState> StateNamed(std::string const &name) {
    for (std::size_t i = 0; i < std::size(stateNames); ++i) {
        if (name == stateNames[i])
            return static_cast<TrialState>(i);
    }
    return {};
}

/// Runs \a action on the file; false, logged, where the file cannot be written.
template <typename Action>
bool OnFile(Action action) {
    try {
        return TheSettings() && action(TheSettings()->file);
    } catch (std::exception const &failure) {
        WEBCONFIG_LOG(error, logTag) << "The trial of new settings: " << failure.what();
        return false;
    }
}

}  // namespace

std::optional<Trial> TrialFile::Read() const {
    if (util::AreAbsent({_path.c_str()}))
        return {};
    std::ifstream file(_path);
    std::map<std::string, std::string> words;
    for (std::string name, value; file >> name >> value;)
        words[name] = value;
    auto const state = StateNamed(words["state"]);
    Trial trial;
    auto const number = [&words](char const *name) { return std::strtoll(words[name].c_str(), nullptr, 10); };
    trial.set = number("set");
    if (!state || trial.set <= 0)
        return {};
    trial.state = *state;
    trial.boot = words["boot"];
    trial.until = number("until");
    trial.boots = static_cast<int>(number("boots"));
    trial.restart = number("restart") != 0;
    trial.asked = number("asked") != 0;
    return trial;
}

void TrialFile::Write(Trial const &trial) const {
    std::ostringstream text;
    text << "state " << stateNames[static_cast<int>(trial.state)] << "\nset " << trial.set << "\nboot "
         << trial.boot << "\nuntil " << trial.until << "\nboots " << trial.boots << "\nrestart "
         << trial.restart << "\nasked " << trial.asked << '\n';
    if (!util::ReplaceFile(_path, text.str()))
        throw std::system_error(errno, std::generic_category(), _path);
}

void TrialFile::Remove() const {
    if (!util::RemoveFile(_path) && errno != ENOENT)
        throw std::system_error(errno, std::generic_category(), _path);
}

TrialTurn::TrialTurn(TrialFile const &file, std::chrono::milliseconds limit)
    : _file(::open((file.Path() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)) {
    if (_file < 0)
        WEBCONFIG_LOG(error, logTag) << file.Path() << ".lock: " << std::strerror(errno);
    auto const deadline = std::chrono::steady_clock::now() + limit;
    current = this;
    for (;;) {
        _isMine = _file < 0 || ::flock(_file, LOCK_EX | LOCK_NB) == 0;
        if (_isMine || std::chrono::steady_clock::now() >= deadline)
            return;
        std::this_thread::sleep_for(retryInterval);
    }
}

TrialTurn::~TrialTurn() {
    _Close();
    current = nullptr;
}

void TrialTurn::End() {
    if (current)
        current->_Close();
}

void TrialTurn::_Close() {
    if (_file >= 0)
        ::close(_file);
    _file = -1;
}

std::string CurrentBoot() {
    std::string boot;
    std::ifstream("/proc/sys/kernel/random/boot_id") >> boot;
    return boot;
}

std::int64_t SecondsSinceBoot() {
    std::timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return now.tv_sec;
}

void Try(std::string const &file, int seconds) {
    TheSettings() = seconds > 0 ? std::make_unique<Settings>(Settings{TrialFile(file), seconds}) : nullptr;
    std::error_code ignored;  // to write into it tells the reason
    if (TheSettings())
        std::filesystem::create_directories(std::filesystem::path(file).parent_path(), ignored);
}

TrialFile const *TheTrialFile() {
    return TheSettings() ? &TheSettings()->file : nullptr;
}

int TrialSeconds() {
    return TheSettings() ? TheSettings()->seconds : 0;
}

std::optional<Trial> CurrentTrial() {
    return TheSettings() ? TheSettings()->file.Read() : std::nullopt;
}

void BeginTrial(std::int64_t set) {
    OnFile([set](TrialFile const &file) {
        Trial trial = file.Read().value_or(Trial{});
        if (trial.set == 0 || trial.state == TrialState::Returned)
            trial = {.set = set, .boot = CurrentBoot()};
        trial.state = TrialState::Saving;
        file.Write(trial);
        return true;
    });
}

void GoOnWithTrial(std::int64_t set, bool atOnce, bool restart) {
    OnFile([=](TrialFile const &file) {
        auto trial = file.Read();
        if (!trial || trial->state != TrialState::Saving)
            return false;
        if (trial->set == set && !atOnce && !restart) {
            file.Remove();  // this set would have begun it
            return true;
        }
        trial->state = TrialState::Running;
        trial->restart = trial->restart || restart;
        if (atOnce || (restart && trial->until != 0))
            trial->until = SecondsSinceBoot() + TrialSeconds();
        file.Write(*trial);
        return true;
    });
}

bool KeepTrial() {
    return OnFile([](TrialFile const &file) {
        auto const trial = file.Read();
        // What only waits for a restart has not been tried yet.
        if (!trial || trial->state != TrialState::Running || trial->until == 0)
            return false;
        file.Remove();
        WEBCONFIG_LOG(notice, logTag) << "The new settings since change " << trial->set << " are kept";
        return true;
    });
}

bool EndTrial() {
    return OnFile([](TrialFile const &file) {
        auto trial = file.Read();
        if (!trial || trial->state != TrialState::Running)
            return false;
        trial->asked = true;
        file.Write(*trial);
        return true;
    });
}

bool DismissTrial() {
    return OnFile([](TrialFile const &file) {
        auto const trial = file.Read();
        if (!trial || trial->state != TrialState::Returned)
            return false;
        file.Remove();
        return true;
    });
}

}  // namespace webconfig::history
