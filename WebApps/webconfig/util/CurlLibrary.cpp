#include "WebApps/webconfig/util/CurlLibrary.h"

namespace webconfig::util {

CurlLibrary const *CurlLibrary::Load() {
    static CurlLibrary const curl;
    return curl.library.IsComplete() ? &curl : nullptr;
}

}  // namespace webconfig::util
