#pragma once

#include <curl/curl.h>

#include "WebApps/webconfig/util/LateLibrary.h"

namespace webconfig::util {

/// What the provisioning uses of libcurl. The library is loaded when it is first asked for: with the thirty
/// libraries that it needs it takes more memory than everything else in the process, and most devices never
/// talk to a provisioning server.
struct CurlLibrary {
    LateLibrary library{"libcurl.so.4"};

    WEBCONFIG_LATE_FUNCTION(curl_easy_init);
    WEBCONFIG_LATE_FUNCTION(curl_easy_cleanup);
    WEBCONFIG_LATE_FUNCTION(curl_easy_setopt);
    WEBCONFIG_LATE_FUNCTION(curl_easy_perform);
    WEBCONFIG_LATE_FUNCTION(curl_easy_getinfo);
    WEBCONFIG_LATE_FUNCTION(curl_easy_strerror);
    WEBCONFIG_LATE_FUNCTION(curl_slist_append);
    WEBCONFIG_LATE_FUNCTION(curl_slist_free_all);

    /// Null, with an error in the log, where the device has no libcurl. Any thread may ask.
    static CurlLibrary const *Load();
};

}  // namespace webconfig::util
