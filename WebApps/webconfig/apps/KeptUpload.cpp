#include "WebApps/webconfig/apps/KeptUpload.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>

#include "WebApps/webconfig/security/Headers.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

namespace fs = std::filesystem;

constexpr char logTag[] = "WebApps/webconfig/apps/KeptUpload";

constexpr std::string_view nameBegin = "webconfig_kept_";
constexpr char memoryFolder[] = "/tmp";

/// Long enough to read what an upload would change.
constexpr std::chrono::minutes longest{30};

bool IsOld(fs::path const &path) {
    std::error_code problem;
    auto const age = fs::file_time_type::clock::now() - fs::last_write_time(path, problem);
    return problem || age > longest;
}

/// What may stand behind the beginning of the name: no way out of the folder.
bool IsToken(std::string const &token) {
    return !token.empty() && token.find_first_not_of("0123456789abcdef") == std::string::npos;
}

std::string FolderIn(cppcms::json::value const &settings) {
    std::string const folder = settings.get("security.uploads_path", "");
    return folder.empty() ? memoryFolder : folder;
}

}  // namespace

KeptUpload::KeptUpload(cppcms::json::value const &settings) : _folder(FolderIn(settings)) {}

std::string KeptUpload::Keep(cppcms::http::file &upload) const {
    Drop();
    std::string token = security::MakeNonce();
    std::string const path = _folder + '/' + std::string(nameBegin) + token;
    if (util::CreatePrivately(path))
        util::SaveUpload(upload, path);
    else
        WEBCONFIG_LOG(error, logTag) << path << ": " << std::strerror(errno);
    return token;
}

std::optional<std::string> KeptUpload::Read(std::string const &token) const {
    DropOld();
    std::string const path = _folder + '/' + std::string(nameBegin) + token;
    return IsToken(token) ? util::ReadTrusted(path, util::FileSize(path)) : std::nullopt;
}

void KeptUpload::Drop() const {
    _Remove([](fs::path const & /*any*/) { return true; });
}

void KeptUpload::DropOld() const {
    _Remove(IsOld);
}

template <typename Wanted>
void KeptUpload::_Remove(Wanted wanted) const {
    std::error_code ignored;
    for (auto entry = fs::directory_iterator(_folder, ignored); entry != fs::directory_iterator();
         entry.increment(ignored)) {
        if (entry->path().filename().string().starts_with(nameBegin) && wanted(entry->path()))
            fs::remove(entry->path(), ignored);
    }
}

}  // namespace webconfig::apps
