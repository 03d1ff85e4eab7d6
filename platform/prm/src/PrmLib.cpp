#include <prm/prmlib.h>
#include <syslog.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "Store.h"

using prm::Status;
using prm::Store;
using prm::Type;
using prm::Value;

namespace {

/// Room in the caller's buffer of getNext(), the final NUL included.
constexpr std::size_t nameRoom = 128;

std::string_view Text(char const *text) {
    return text ? text : "";
}

int Code(Status status) {
    return static_cast<int>(status);
}

/// The integer in \a text; the fraction of a float is cut off.
bool ParseInteger(Value const &value, int &number) {
    if (prm::ParseNumber(value.text, number))
        return true;
    float real = 0;
    // The largest int has no exact float; the next one up does.
    constexpr float limit = -static_cast<float>(std::numeric_limits<int>::min());
    if (!prm::ParseNumber(value.text, real) || !(std::fabs(real) < limit))
        return false;
    number = static_cast<int>(real);
    return true;
}

}  // namespace

struct cPrmLib::State {
    explicit State(PRM_CLIENT_ID_T client)
        : store(Store::DefaultPath(), [client](std::string const &reason) {
              ::syslog(LOG_ERR, "prm client %d: %s", static_cast<int>(client), reason.c_str());
          }) {}

    Store store;
    /// Reads the next names where none is left.
    Status Refill() {
        if (next < names.size())
            return Status::Ok;
        if (!names.empty())
            from = Store::After(names.back());
        next = 0;
        return store.Find(prefix, from, names);
    }

    std::mutex cursor;
    std::string prefix;
    std::string from;                ///< where the enumeration goes on after the names at hand
    std::vector<std::string> names;  ///< at hand
    std::size_t next = 0;            ///< the first of them that has not been told
};

cPrmLib::cPrmLib(PRM_CLIENT_ID_T client) : state_(std::make_unique<State>(client)) {}

cPrmLib::~cPrmLib() = default;

int cPrmLib::getPar(char const *key, std::string &value) {
    Value found;
    Status const status = state_->store.Read(Text(key), found);
    if (status == Status::Ok)
        value = std::move(found.text);
    return Code(status);
}

int cPrmLib::getPar(char const *key, std::string &value, PRM_PAR_T *type) {
    Value found;
    Status const status = state_->store.Read(Text(key), found);
    if (status != Status::Ok)
        return Code(status);
    value = std::move(found.text);
    *type = static_cast<PRM_PAR_T>(found.type);
    return Code(Status::Ok);
}

int cPrmLib::getPar(char const *key, int *value) {
    Value found;
    Status const status = state_->store.Read(Text(key), found);
    if (status != Status::Ok)
        return Code(status);
    return Code(ParseInteger(found, *value) ? Status::Ok : Status::Invalid);
}

int cPrmLib::getPar(char const *key, float *value) {
    Value found;
    Status const status = state_->store.Read(Text(key), found);
    if (status != Status::Ok)
        return Code(status);
    return Code(prm::ParseNumber(found.text, *value) ? Status::Ok : Status::Invalid);
}

int cPrmLib::getPar(char const *key, char *buffer) {
    std::string value;
    int const code = getPar(key, value);
    if (code == 0)
        std::memcpy(buffer, value.c_str(), std::strlen(value.c_str()) + 1);
    return code;
}

int cPrmLib::setPar(char const *key, int value) {
    return Code(state_->store.Write(Text(key), {prm::FormatNumber(value), Type::Integer}));
}

int cPrmLib::setPar(char const *key, float value) {
    return Code(state_->store.Write(Text(key), {prm::FormatNumber(value), Type::Float}));
}

int cPrmLib::setPar(char const *key, std::string const &value) {
    return Code(state_->store.Write(Text(key), {value, Type::String}));
}

int cPrmLib::setPar(char const *key, char const *value) {
    return setPar(key, std::string(Text(value)));
}

int cPrmLib::delPar(char const *key) {
    return Code(state_->store.Remove(Text(key)));
}

int cPrmLib::addFile(char const *key, char const *path, unsigned mode) {
    Value value{{}, Type::File, mode & 07777};
    Status const status = prm::ReadFile(path ? path : "", value.text);
    return Code(status == Status::Ok ? state_->store.Write(Text(key), value) : status);
}

int cPrmLib::getList(char const *prefix, int /*option*/) {
    std::lock_guard const lock(state_->cursor);
    state_->prefix = Text(prefix);
    state_->from.clear();
    state_->names.clear();
    Status const status = state_->Refill();
    return Code(status == Status::NotFound ? Status::Ok : status);
}

int cPrmLib::getNext(char *name, int /*option*/) {
    std::lock_guard const lock(state_->cursor);
    for (;;) {
        if (Status const status = state_->Refill(); status != Status::Ok)
            return Code(status);
        std::string const &key = state_->names[state_->next++];
        if (key.size() < nameRoom) {
            std::memcpy(name, key.c_str(), key.size() + 1);
            return Code(Status::Ok);
        }
    }
}

void cPrmLib::FlushReadCache() {
    state_->store.ReleaseMemory();
}
