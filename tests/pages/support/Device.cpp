#include "tests/pages/support/Device.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <thread>
#include <utility>

namespace pages::device {

namespace {

constexpr char recordScript[] = "/usr/lib/device/record";
constexpr char commandList[] = "/var/log/device-commands";
constexpr char systemLog[] = "/var/log/messages";
constexpr char store[] = "/var/lib/prm/prm.db";

}  // namespace

bool WaitUntil(int seconds, std::function<bool()> const &condition) {
    using namespace std::chrono_literals;
    for (int tries = seconds * 50; tries > 0; --tries) {
        if (condition())
            return true;
        std::this_thread::sleep_for(20ms);
    }
    return condition();
}

std::string Shell(std::string const &command) {
    std::string output;
    FILE *pipe = popen(command.c_str(), "r");
    for (int c; (c = std::fgetc(pipe)) != EOF;)
        output += static_cast<char>(c);
    pclose(pipe);
    return output;
}

void WriteFile(std::string const &path, std::string const &text) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

std::string ReadFile(std::string const &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool WaitForText(std::string const &path, std::string const &text, int seconds) {
    return WaitUntil(seconds, [&] { return ReadFile(path).find(text) != std::string::npos; });
}

Log::Log() : _begin(ReadFile(systemLog).size()) {}

std::string Log::Text() const {
    std::string const log = ReadFile(systemLog);
    return log.substr(log.size() < _begin ? 0 : _begin);
}

bool Log::Has(std::string const &text, int seconds) const {
    return WaitUntil(seconds, [&] { return Text().find(text) != std::string::npos; });
}

ReplacedFile::ReplacedFile(std::string path) : _path(std::move(path)), _aside(_path + ".aside") {
    if (std::filesystem::exists(_path))
        std::filesystem::rename(_path, _aside);
}

ReplacedFile::ReplacedFile(std::string path, std::string const &text) : ReplacedFile(std::move(path)) {
    WriteFile(_path, text);
}

ReplacedFile::~ReplacedFile() {
    std::filesystem::remove(_path);
    if (std::filesystem::exists(_aside))
        std::filesystem::rename(_aside, _path);
}

RecordingProgram::RecordingProgram(std::string path, std::optional<std::string> const &script)
    : _path(std::move(path)) {
    namespace fs = std::filesystem;
    if (!script && ReadFile(_path).find(recordScript) != std::string::npos)
        return;
    bool const missing = !fs::exists(_path);
    _standIn = missing ? _path : "/tmp/stand-in-" + fs::path(_path).filename().string();
    WriteFile(_standIn, std::string("#!/bin/sh\n. ") + recordScript + '\n' + script.value_or("") + '\n');
    fs::permissions(_standIn, fs::perms::owner_all | fs::perms::others_exec | fs::perms::others_read);
    if (!missing)
        Shell("mount --bind " + _standIn + ' ' + _path);
}

RecordingProgram::~RecordingProgram() {
    if (_standIn.empty())
        return;
    if (_standIn != _path)
        Shell("umount --lazy " + _path);  // it may still be running
    std::filesystem::remove(_standIn);
}

// Of the signals the C library ignores two for itself.
char const tellStart[] =
    "[ $(cut -d' ' -f 6 /proc/$$/stat) = $$ ] && session=own\n"
    "ignored=$((0x$(sed -n 's/SigIgn:.//p' /proc/self/status) & 0x7FFFFFFF))\n"
    "sockets=$(ls -l /proc/$$/fd | grep -c -E 'socket|event')\n"
    "echo \"$session session, $ignored signals, $sockets sockets, boot $FWBOOT\" >/tmp/started.part\n"
    "mv /tmp/started.part /tmp/started";

std::string Start() {
    WaitForText("/tmp/started", "boot");
    std::string const told = ReadFile("/tmp/started");
    std::filesystem::remove("/tmp/started");
    return told;
}

std::vector<std::string> TakeCommands() {
    std::vector<std::string> commands;
    std::ifstream file(commandList);
    for (std::string line; std::getline(file, line);)
        commands.push_back(line);
    WriteFile(commandList, "");
    return commands;
}

Settings Exported(Settings const &settings) {
    Settings exported;
    for (auto const &[name, value] : settings) {
        bool const number = value.ends_with(", i");
        std::string text = "\"";
        for (char const c : number ? value.substr(0, value.size() - 3) : value)
            text += c == '\n'   ? "\\n"
                    : c == '\0' ? "\\x00"
                                : (c == '"' || c == '\\' ? "\\" : "") + std::string(1, c);
        exported[name] = value == none ? none : text + (number ? "\", i" : "\", s");
    }
    return exported;
}

Settings KeptStore::All() {
    Settings all;
    std::istringstream lines(Shell("prm export"));
    for (std::string line; std::getline(lines, line);) {
        std::size_t const end = line.find("\",");
        all[line.substr(1, end - 1)] = line.substr(end + 2);
    }
    return all;
}

Settings KeptStore::Changes(Settings const &before) {
    Settings changes = All();
    for (auto const &[name, value] : before) {
        auto const [now, gone] = changes.emplace(name, none);
        if (now->second == value)
            changes.erase(now);
    }
    return changes;
}

void KeptStore::Set(Settings const &changes) const {
    Settings wanted = Exported(changes);
    wanted.insert(_before.begin(), _before.end());
    Settings const now = All();
    std::string commands;
    for (auto const &[name, value] : now) {
        if (wanted.try_emplace(name, none).first->second == none)
            commands += "prm del '" + name + "';";
    }
    std::string lines;
    for (auto const &[name, value] : wanted) {
        auto const old = now.find(name);
        if (value != none && (old == now.end() || old->second != value))
            lines += '"' + name + "\"," + value + '\n';
    }
    ReplacedFile const file("/tmp/settings", lines);
    Shell(commands + "prm import /tmp/settings; rm -f /var/lib/webconfig/trial");
}

RefusedKey::RefusedKey(std::string const &key) {
    Shell(std::string("sqlite3 ") + store +
          " \"CREATE TRIGGER refused BEFORE INSERT ON parameter WHEN NEW.key='" + key +
          "' BEGIN SELECT RAISE(ABORT, 'refused'); END\"");
}

RefusedKey::~RefusedKey() {
    Shell(std::string("sqlite3 ") + store + " 'DROP TRIGGER refused'");
}

HeldLock::HeldLock(std::string const &path) : _file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    EXPECT_EQ(fcntl(_file, F_SETLK, &lock), 0) << "cannot lock " << path;
}

void HeldLock::Release() {
    if (_file >= 0)
        close(_file);
    _file = -1;
}

Process::Process(std::string const &configuration, std::vector<std::string> const &environment,
                 std::string const &program) {
    char folder[] = "/tmp/webconfig-test-XXXXXX";
    _folder = mkdtemp(folder);
    WriteFile(_folder + "/webconfig.json", configuration);
    std::string const file = _folder + "/webconfig.json";
    std::string const log = _folder + "/log";
    _pid = fork();
    if (_pid == 0) {
        for (auto const &setting : environment)
            putenv(const_cast<char *>(setting.c_str()));
        int const output = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        dup2(output, STDERR_FILENO);
        execl(program.c_str(), program.c_str(), "-c", file.c_str(), nullptr);
        _exit(127);
    }
}

Process::~Process() {
    if (Wait(0) == -1) {
        kill(_pid, SIGKILL);
        Wait();
    }
    std::filesystem::remove_all(_folder);
}

void Process::Signal(int number) {
    kill(_pid, number);
}

int Process::Wait(int seconds) {
    WaitUntil(seconds, [this] {
        int status = 0;
        if (_status == -1 && waitpid(_pid, &status, WNOHANG) == _pid)
            _status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
        return _status != -1;
    });
    return _status;
}

std::string Process::Log() const {
    return ReadFile(_folder + "/log");
}

bool Process::WaitForLog(std::string const &text, int seconds) const {
    return WaitForText(_folder + "/log", text, seconds);
}

Browser Up(std::string const &address) {
    Browser browser(address);
    EXPECT_TRUE(browser.WaitUntilUp()) << address;
    return browser;
}

std::size_t Count(std::string const &text, std::string const &part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

bool Reload(Process const &process, Browser &browser) {
    auto const reloads = [&] { return Count(process.Log(), "webconfig ** forced reload **"); };
    std::size_t const before = reloads();
    browser.Call("reload");
    // Asked too early, the old service would still answer.
    return WaitUntil(10, [&] { return reloads() > before; }) && browser.WaitUntilUp();
}

std::string Configuration(int port, std::string const &keys) {
    return R"({"service":{"api":"http","ip":"127.0.0.1","port":)" + std::to_string(port) +
           R"(,"worker_threads":3},"localization":{"locales":["C.UTF-8"]},)"
           R"("logging":{"level":"debug","stderr":true},"views":{"default_skin":"webconfig"},)"
           R"("webconfig":{)" +
           keys +
           R"("root":{"sync":"config","async":"status","rpc":"rpc"},)"
           R"("media_root":"media","media_directory":"/usr/share/webconfig/www/media"}})";
}

}  // namespace pages::device
