#include "WebApps/webconfig/util/Prm.h"

#include <algorithm>
#include <array>
#include <mutex>

#include "WebApps/webconfig/util/Happened.h"
#include "WebApps/webconfig/util/Log.h"

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/Prm";

constexpr auto clientId = static_cast<PRM_CLIENT_ID_T>(3);

/// A type code that the store never reports for a number.
constexpr auto unknownType = static_cast<PRM_PAR_T>(3);

std::mutex guard;

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

/// Runs \a write, a call of the library's \a operation, and tells of it: of a failure in the log.
template <typename Write>
bool Apply(char const *operation, std::string const &key, Write write) {
    bool done = false;
    {
        std::lock_guard const lock(guard);
        done = write(Prm::lib()) == 0;
    }
    if (!done)
        WEBCONFIG_LOG(error, logTag) << "FAIL prmlib::" << operation << " \"" << key << '"';
    Happened("setting", OutcomeOf(done), {{"key", key}, {"operation", operation}});
    return done;
}

template <typename Value>
bool Store(std::string const &key, Value const &value) {
    return Apply("setPar", key, [&](cPrmLib &library) { return library.setPar(key.c_str(), value); });
}

}  // namespace

cPrmLib &Prm::lib() {
    static cPrmLib library(clientId);
    return library;
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
    return Store(key, value);
}

bool Prm::Set(std::string const &key, float value) {
    return Store(key, value);
}

bool Prm::Set(std::string const &key, std::string const &value) {
    return Store(key, value);
}

bool Prm::Delete(std::string const &key) {
    return Apply("delPar", key, [&](cPrmLib &library) { return library.delPar(key.c_str()); });
}

bool Prm::AddFile(std::string const &key, std::string const &path, unsigned mode) {
    return Apply("addFile", key,
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
