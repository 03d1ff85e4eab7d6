#include "WebApps/webconfig/util/Prm.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>

#include "WebApps/webconfig/util/Files.h"
#include "WebApps/webconfig/util/Happened.h"
#include "WebApps/webconfig/util/Log.h"

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/Prm";

constexpr auto clientId = static_cast<PRM_CLIENT_ID_T>(3);

/// A type code that the store never reports for a number.
constexpr auto unknownType = static_cast<PRM_PAR_T>(3);

constexpr std::size_t largestFile = 4 << 20;  // that the store takes

std::mutex guard;
std::atomic<WriteWatcher *> watcher{nullptr};

int Fetch(std::string const &key, std::string &value) {
    return Prm::lib().getPar(key.c_str(), value);
}

template <typename Number>
int Fetch(std::string const &key, Number &value) {
    return Prm::lib().getPar(key.c_str(), &value);
}

template <typename Value>
Value Read(std::string const &key) {
    std::lock_guard const lock(guard);
    Value value{};
    if (Fetch(key, value) != 0)
        WEBCONFIG_LOG(debug, logTag) << "FAIL prmlib::getPar \"" << key << '"';
    return value;
}

/// Runs \a write, a call of the library's \a operation that gives \a key a value of \a type, and tells of it:
/// of a failure in the log.
template <typename Write>
bool Apply(char const *operation, std::string const &key, std::optional<std::string> const &value,
           PRM_PAR_T type, Write write) {
    WriteWatcher *const informed = watcher;
    if (informed)
        informed->Before(key, value, type);
    std::unique_lock lock(guard);
    bool const done = write(Prm::lib()) == 0;
    lock.unlock();
    if (!done)
        WEBCONFIG_LOG(error, logTag) << "FAIL prmlib::" << operation << " \"" << key << '"';
    if (informed)
        informed->After(key, done);
    Happened("setting", OutcomeOf(done), {{"key", key}, {"operation", operation}});
    return done;
}

template <typename Value>
bool Store(std::string const &key, Value const &value, std::string const &text, PRM_PAR_T type) {
    return Apply("setPar", key, text, type,
                 [&](cPrmLib &library) { return library.setPar(key.c_str(), value); });
}

}  // namespace

cPrmLib &Prm::lib() {
    static cPrmLib library(clientId);
    return library;
}

void Prm::Watch(WriteWatcher *who) {
    watcher = who;
}

void Prm::FlushReadCache() {
    std::lock_guard const lock(guard);
    lib().FlushReadCache();
}

int Prm::GetPar(char const *key, char *buffer) {
    return lib().getPar(key, buffer);
}

std::string Prm::GetString(std::string const &key) {
    return Read<std::string>(key);
}

int Prm::GetInt(std::string const &key) {
    return Read<int>(key);
}

float Prm::GetFloat(std::string const &key) {
    return Read<float>(key);
}

bool Prm::Set(std::string const &key, int value) {
    return Store(key, value, std::to_string(value), PRM_PAR_INTEGER);
}

bool Prm::Set(std::string const &key, float value) {
    return Store(key, value, std::to_string(value), PRM_PAR_FLOAT);
}

bool Prm::Set(std::string const &key, std::string const &value) {
    return Store(key, value, value, PRM_PAR_STRING);
}

bool Prm::Delete(std::string const &key) {
    return Apply("delPar", key, {}, PRM_PAR_STRING,
                 [&](cPrmLib &library) { return library.delPar(key.c_str()); });
}

bool Prm::AddFile(std::string const &key, std::string const &path, unsigned mode) {
    // Who is told of it, is told what a read would give.
    std::string const content =
        watcher ? ReadTrusted(path, std::min<std::size_t>(FileSize(path), largestFile)).value_or("") : "";
    return Apply("addFile", key, content, PRM_PAR_FILE,
                 [&](cPrmLib &library) { return library.addFile(key.c_str(), path.c_str(), mode); });
}

bool Prm::Get(std::string const &key, std::string &value, PRM_PAR_T &type) {
    std::lock_guard const lock(guard);
    return lib().getPar(key.c_str(), value, &type) == 0;
}

bool Prm::Exists(std::string const &key) {
    std::string value;
    PRM_PAR_T type = unknownType;
    return Get(key, value, type);
}

std::vector<std::string> Prm::GetList(std::string const &prefix) {
    std::lock_guard const lock(guard);
    std::vector<std::string> names;
    lib().getList(prefix.c_str(), 0);
    std::array<char, 128> name{};
    while (lib().getNext(name.data(), 0) == 0)
        names.emplace_back(name.data());
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace webconfig::util
