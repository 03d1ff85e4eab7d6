#pragma once

#include <curl/curl.h>

namespace webconfig::util {

/// What the provisioning uses of libcurl. The library is loaded when it is first asked for: with the thirty
/// libraries that it needs it takes more memory than everything else in the process, and most devices never
/// talk to a provisioning server.
struct CurlLibrary {
    decltype(&curl_easy_init) easyInit;
    decltype(&curl_easy_cleanup) easyCleanup;
    decltype(&curl_easy_setopt) easySetopt;
    decltype(&curl_easy_perform) easyPerform;
    decltype(&curl_easy_getinfo) easyGetinfo;
    decltype(&curl_easy_strerror) easyStrerror;
    decltype(&curl_slist_append) slistAppend;
    decltype(&curl_slist_free_all) slistFreeAll;

    /// Null, with an error in the log, where the device has no libcurl. Any thread may ask.
    static CurlLibrary const *Load();
};

}  // namespace webconfig::util
