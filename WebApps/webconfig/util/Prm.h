#pragma once

#include <prm/prmlib.h>

#include <optional>
#include <string>
#include <vector>

namespace webconfig::util {

/// Is told of every write that passes the gateway, on the thread that writes.
class WriteWatcher {
  public:
    virtual ~WriteWatcher() = default;
    /// Before the store is changed; nothing is the value of a key that is to be deleted.
    virtual void Before(std::string const &key, std::optional<std::string> const &value, PRM_PAR_T type) = 0;
    /// When the store has changed, or has refused to.
    virtual void After(std::string const &key, bool done) = 0;
};

/// The gateway to the parameter store: one client of the store for the whole process, used by one thread
/// at a time. Failed reads give the default and a debug line in the log, failed writes give false and an
/// error line; nothing throws on a failure of the store.
class Prm {
  public:
    /// The shared client, made by the first call.
    static cPrmLib &lib();

    /// Who is told of writes from now on; nobody where null, as at first.
    static void Watch(WriteWatcher *watcher);

    /// Makes the next reads see what other processes have written before.
    static void FlushReadCache();

    /// Passes straight to the library, without the lock: returns its status (0 on success) and writes the
    /// value as text into \a buffer, whose size is the caller's business.
    static int GetPar(char const *key, char *buffer);

    /// The value of \a key; empty or 0 where there is none. Use Exists() or Get() to tell the difference.
    static std::string GetString(std::string const &key);
    static int GetInt(std::string const &key);
    static float GetFloat(std::string const &key);

    /// Stores a value of that type; true on success.
    static bool Set(std::string const &key, int value);
    static bool Set(std::string const &key, float value);
    static bool Set(std::string const &key, std::string const &value);

    static bool Delete(std::string const &key);

    /// Stores the file at \a path under \a key with the permission bits \a mode.
    static bool AddFile(std::string const &key, std::string const &path, unsigned mode);

    /// Reads value and type (0 integer, 1 float, else text); false, without a log line, where \a key
    /// cannot be read.
    static bool Get(std::string const &key, std::string &value, PRM_PAR_T &type);
    static bool Exists(std::string const &key);

    /// The names, up to 127 characters long, that begin with \a prefix, sorted by their bytes.
    static std::vector<std::string> GetList(std::string const &prefix);
};

}  // namespace webconfig::util
