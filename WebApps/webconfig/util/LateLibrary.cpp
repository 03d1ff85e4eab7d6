#include "WebApps/webconfig/util/LateLibrary.h"

#include <dlfcn.h>

#include "WebApps/webconfig/util/Log.h"

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/LateLibrary";

}  // namespace

LateLibrary::LateLibrary(char const *name) : library_(dlopen(name, RTLD_NOW | RTLD_LOCAL)) {
    Check(library_, name);
}

void *LateLibrary::Address(char const *name) {
    void *const found = complete_ ? dlsym(library_, name) : nullptr;
    Check(found, name);
    return found;
}

void LateLibrary::Check(void const *found, char const *name) {
    if (complete_ && !found)
        WEBCONFIG_LOG(error, logTag) << "Unable to load " << name << ": " << dlerror();
    complete_ = complete_ && found;
}

}  // namespace webconfig::util
