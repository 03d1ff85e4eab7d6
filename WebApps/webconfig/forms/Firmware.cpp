#include "WebApps/webconfig/forms/Firmware.h"

#include <cppcms/http_file.h>

#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::forms {

namespace {

constexpr long long minSize = 1;
constexpr long long maxSize = 300LL << 20;  // bytes
constexpr char imageNames[] = ".*\\.(bin|itb)";
constexpr char imageMagic[] = "\xD0\x0D\xFE\xED";  // of a flattened device tree
constexpr char const *notAnImage =
    util::Translatable("This is not a firmware image; its name ends in .bin or .itb");

}  // namespace

Firmware::Firmware() {
    SetUp(file, "fwupload", "cfg_frw_file", "Load Firmware");
    util::validation::Length(file, minSize, maxSize);
    file.filename(booster::regex(imageNames));
    file.add_valid_magic(imageMagic);
    // The type that the browser declares is no rule here: the handler tells and logs it.
    add(file);

    SetUpSubmit(load, noName, "cfg_frw_save", "Load Firmware");
    add(load);
}

bool Firmware::validate() {
    bool const valid = Base::validate();
    if (!file.valid() && file.set() && file.value()->size() >= minSize && file.value()->size() <= maxSize)
        file.error_message(notAnImage);
    return valid;
}

}  // namespace webconfig::forms
