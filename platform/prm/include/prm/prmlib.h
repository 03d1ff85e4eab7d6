#pragma once

#include <memory>
#include <string>

/// Type code of a parameter. Whoever reads a type treats every code but the first two as text.
enum PRM_PAR_T : int {
    PRM_PAR_INTEGER = 0,  ///< 32-bit signed
    PRM_PAR_FLOAT = 1,    ///< 32-bit IEEE
    PRM_PAR_STRING = 2,
    PRM_PAR_FILE = 4,  ///< content and permission bits of a file
};

/// Who a client of the store is; it appears in the system log.
enum PRM_CLIENT_ID_T : int {};

/// A client of the parameter store of the device.
///
/// Keys are paths such as "net/hostname"; leading slashes do not matter ("/net/hostname" names the same
/// key). A key has 1 to 1023 bytes, none of them a control character.
///
/// Every operation returns 0 on success. Otherwise it changes neither the store nor its output arguments
/// and returns
/// - 1 where the key does not exist (or the enumeration is at its end),
/// - 2 where an argument is not acceptable: a malformed key, a value that is not the number asked for, a
///   file that is no readable regular file of at most 4 MiB,
/// - 3 where the store cannot be used. The reason is one line in the system log, repeated at most once a
///   minute while it lasts. The next call tries again, so a repaired store is picked up.
///
/// A write is on the disk when the call returns, and any number of clients, threads and processes may
/// use the store at once. A client waits at most five seconds for others. No operation throws. A client
/// must not be used on both sides of a fork().
///
/// The store is the file that the environment variable PRM_STORE names, or /var/lib/prm/prm.db.
class cPrmLib {
  public:
    explicit cPrmLib(PRM_CLIENT_ID_T client);
    ~cPrmLib();

    cPrmLib(cPrmLib const &) = delete;
    cPrmLib &operator=(cPrmLib const &) = delete;

    /// The value as text: a number in its shortest form, a file parameter's content.
    int getPar(char const *key, std::string &value);
    /// The value as a number. Text that is a number counts; the fraction of a float is cut off.
    int getPar(char const *key, int *value);
    int getPar(char const *key, float *value);
    /// The value as NUL-terminated text. \a buffer must have room for the whole value: use it only for
    /// keys whose values are known to be short.
    int getPar(char const *key, char *buffer);
    /// The value as text, and its type code.
    int getPar(char const *key, std::string &value, PRM_PAR_T *type);

    /// Creates or overwrites the key; its type becomes that of the value.
    int setPar(char const *key, int value);
    int setPar(char const *key, float value);
    int setPar(char const *key, std::string const &value);
    int setPar(char const *key, char const *value);

    /// Removes this one key; keys below it stay.
    int delPar(char const *key);

    /// Stores the content of the file \a path under the key; \a mode has the permission bits that the
    /// file gets when it is written back.
    int addFile(char const *key, char const *path, unsigned mode);

    /// Starts an enumeration, in byte order, of the keys that begin with \a prefix. \a option is ignored.
    int getList(char const *prefix, int option);
    /// Writes the next name, without a leading slash, into \a name, which has room for 128 bytes; longer
    /// names are left out. Of keys that come or go meanwhile some may be told and some not; no key comes
    /// twice. \a option is ignored.
    int getNext(char *name, int option);

    /// After this, reads see what other clients have written before it. In this implementation they
    /// always do, because the cache of the store is checked against the file at each read; the call
    /// gives back the memory of that cache.
    void FlushReadCache();

  private:
    struct State;
    std::unique_ptr<State> state_;
};
