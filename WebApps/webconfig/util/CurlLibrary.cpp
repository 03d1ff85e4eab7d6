#include "WebApps/webconfig/util/CurlLibrary.h"

#include <dlfcn.h>

#include <optional>

#include "WebApps/webconfig/util/Log.h"

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/CurlLibrary";
constexpr char libraryName[] = "libcurl.so.4";

/// Clears \a complete where \a function is not to be had.
template <typename Function>
void Find(void *library, char const *name, Function &function, bool &complete) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    complete = complete && function;
}

std::optional<CurlLibrary> Open() {
    // Never closed: the libraries behind it do not bear it.
    void *const library = dlopen(libraryName, RTLD_NOW | RTLD_LOCAL);
    CurlLibrary curl{};
    bool complete = library != nullptr;
    if (complete) {
        Find(library, "curl_easy_init", curl.easyInit, complete);
        Find(library, "curl_easy_cleanup", curl.easyCleanup, complete);
        Find(library, "curl_easy_setopt", curl.easySetopt, complete);
        Find(library, "curl_easy_perform", curl.easyPerform, complete);
        Find(library, "curl_easy_getinfo", curl.easyGetinfo, complete);
        Find(library, "curl_easy_strerror", curl.easyStrerror, complete);
        Find(library, "curl_slist_append", curl.slistAppend, complete);
        Find(library, "curl_slist_free_all", curl.slistFreeAll, complete);
    }
    if (complete)
        return curl;
    WEBCONFIG_LOG(error, logTag) << "Unable to load " << libraryName << ": " << dlerror();
    return std::nullopt;
}

}  // namespace

CurlLibrary const *CurlLibrary::Load() {
    static std::optional<CurlLibrary> const library = Open();
    return library ? &*library : nullptr;
}

}  // namespace webconfig::util
