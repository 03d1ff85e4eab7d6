#include "WebApps/webconfig/util/Files.h"

#include <cppcms/http_file.h>
#include <dirent.h>
#include <fcntl.h>
#include <regex.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>
#include <system_error>

#include "WebApps/webconfig/util/Command.h"
#include "WebApps/webconfig/util/Commands.h"
#include "WebApps/webconfig/util/Digest.h"
#include "WebApps/webconfig/util/Happened.h"
#include "WebApps/webconfig/util/Log.h"

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/Files";

constexpr auto ownerOnly = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;

constexpr char nowhere[] = "/dev/null";  // nothing can be below it

/// A compiled POSIX extended expression.
class Pattern {
  public:
    explicit Pattern(std::string const &text)
        : isValid_(::regcomp(&expression_, text.c_str(), REG_EXTENDED | REG_NOSUB) == 0) {}
    ~Pattern() {
        if (isValid_)
            ::regfree(&expression_);
    }
    Pattern(Pattern const &) = delete;
    Pattern &operator=(Pattern const &) = delete;

    bool IsValid() const { return isValid_; }
    bool Matches(char const *text) const { return ::regexec(&expression_, text, 0, nullptr, 0) == 0; }

  private:
    regex_t expression_{};
    bool isValid_;
};

struct CloseDirectory {
    void operator()(DIR *directory) const { ::closedir(directory); }
};

bool MoveUpload(cppcms::http::file &upload, std::string const &path) {
    try {
        upload.save_to(path);
        std::filesystem::permissions(path, ownerOnly);  // it may have replaced what was made there
        return true;
    } catch (std::exception const &problem) {
        WEBCONFIG_LOG(error, logTag) << "Failed to save " << path << ": " << problem.what();
    }
    ::unlink(path.c_str());  // the part that there was room for
    return false;
}

/// The type is the one that the directory tells; file systems that tell none have no files and folders
/// for this purpose.
bool IsWanted(dirent const &entry, FindFilesType type) {
    std::string_view const name = entry.d_name;
    switch (type) {
        case FindFilesType::Files:
            return entry.d_type == DT_REG;
        case FindFilesType::Directories:
            return entry.d_type == DT_DIR && name != "." && name != "..";
        default:
            return true;
    }
}

/// Returns when what \a path leads to, a file or a folder, would outlast a power cut.
bool Sync(std::string const &path) {
    int const file = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return false;
    bool const synced = ::fsync(file) == 0;
    int const reason = errno;
    ::close(file);
    errno = reason;
    return synced;
}

/// A second name would be a way to pass off one trusted file as another.
bool IsTrusted(struct stat const &info) {
    return S_ISREG(info.st_mode) && info.st_nlink == 1 && IsTrustedUser(info.st_uid);
}

}  // namespace

bool FileExists(std::string const &path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0;
}

std::uintmax_t FileSize(std::string const &path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 ? static_cast<std::uintmax_t>(info.st_size) : 0;
}

bool MoveFile(std::string const &source, std::string const &destination) {
    std::string const folder = std::filesystem::absolute(destination).parent_path();
    // The content first: the name must never lead to less.
    if (!Sync(source))
        return false;
    if (std::rename(source.c_str(), destination.c_str()) == 0)
        return Sync(folder);
    if (errno != EXDEV)
        return false;
    return RunCommand(Command("mv").DoubleQuoted(source).DoubleQuoted(destination)) == 0 &&
           Sync(destination) && Sync(folder);
}

bool IsTrustedUser(uid_t user) {
    return user == 0 || user == ::geteuid();
}

bool IsTrustedFile(std::string const &path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0 && IsTrusted(info);
}

int OpenTrusted(std::string const &path, int flags) {
    int const file = ::open(path.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    struct stat info {};
    if (file >= 0 && ::fstat(file, &info) == 0 && IsTrusted(info))
        return file;
    if (file >= 0)
        ::close(file);
    if (file >= 0 || errno == ELOOP)
        errno = EPERM;
    return -1;
}

std::optional<std::string> ReadTrusted(std::string const &path, std::size_t maximum) {
    int const file = OpenTrusted(path, O_RDONLY);
    if (file < 0)
        return std::nullopt;
    std::string text(maximum, '\0');
    std::size_t size = 0;
    for (ssize_t count = 1; count > 0; size += static_cast<std::size_t>(std::max<ssize_t>(count, 0)))
        count = ::read(file, text.data() + size, text.size() - size);
    ::close(file);
    text.resize(size);
    return text;
}

bool ClaimFile(std::string const &path) {
    if (IsTrustedFile(path) || CreatePrivately(path))
        return true;
    WEBCONFIG_LOG(warning, logTag) << "Something else was in the place of " << path;
    PrivateFolder const aside;
    return std::rename(path.c_str(), (aside / "other").c_str()) == 0 && CreatePrivately(path);
}

bool CreatePrivately(std::string const &path) {
    int const file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                            static_cast<mode_t>(ownerOnly));
    return file >= 0 && ::close(file) == 0;
}

bool WritePrivately(std::string const &path, std::string const &content) {
    if (!CreatePrivately(path))
        return false;
    std::ofstream file(path, std::ios::binary);
    file << content;
    file.close();
    if (file)
        return true;
    int const reason = errno;
    ::unlink(path.c_str());
    errno = reason;
    return false;
}

bool ReplaceFile(std::string const &path, std::string const &content) {
    std::string const fresh = path + ".new";
    ::unlink(fresh.c_str());  // of a time when the power went
    return WritePrivately(fresh, content) && MoveFile(fresh, path);
}

bool RemoveFile(std::string const &path) {
    return std::remove(path.c_str()) == 0 && Sync(std::filesystem::absolute(path).parent_path());
}

bool SaveUpload(cppcms::http::file &upload, std::string const &path, std::string *sha256) {
    std::string const size = std::to_string(upload.size());
    std::string digest;
    bool const saved = MoveUpload(upload, path);
    if (saved && (sha256 || IsRecorded()))
        digest = Sha256OfFile(path);
    Happened("upload", OutcomeOf(saved), {{"sha256", digest}, {"size", size}, {"name", upload.filename()}});
    if (sha256)
        *sha256 = digest;
    return saved;
}

PrivateFolder::PrivateFolder() : path_("/tmp/webconfig.XXXXXX") {
    if (!::mkdtemp(path_.data()))
        path_ = nowhere;
}

PrivateFolder::~PrivateFolder() {
    std::error_code ignored;
    if (path_ != nowhere)
        std::filesystem::remove_all(path_, ignored);
}

bool ForEachEntry(std::string const &directory, std::function<void(dirent const &)> const &visit) {
    std::unique_ptr<DIR, CloseDirectory> const entries(::opendir(directory.c_str()));
    if (!entries)
        return false;
    while (dirent const *const entry = ::readdir(entries.get()))
        visit(*entry);
    return true;
}

std::vector<std::string> FindFiles(std::string const &directory, FindFilesType type,
                                   std::string const &pattern) {
    Pattern const expression(pattern);
    if (!expression.IsValid()) {
        WEBCONFIG_LOG(error, logTag) << "FindFiles: Bad regex pattern: " << pattern;
        return {};
    }
    std::vector<std::string> names;
    ForEachEntry(directory, [&](dirent const &entry) {
        if (expression.Matches(entry.d_name) && IsWanted(entry, type))
            names.emplace_back(entry.d_name);
    });
    return names;
}

}  // namespace webconfig::util
