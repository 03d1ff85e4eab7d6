#pragma once

#include <cppcms/base_content.h>

#include <string>

#include "WebApps/webconfig/data/Message.h"

namespace webconfig::data {

/// Of a page without the skeleton of the others.
struct RegulatoryWifi : public cppcms::base_content {
    /// A regulatory domain that the page offers.
    struct Domain {
        char const *code;
        char const *name;
    };
    static constexpr Domain domains[] = {
        {"FCC", "FCC (United States)"},
        {"IC", "IC (Industry Canada)"},
        {"EN440", "EN440 (Europe with ETSI EN 300 440)"},
        {"KCC", "KCC (Korea)"},
        {"AU", "AU (Australia, New Zealand)"},
        {"JP", "JP (Jiteki)"},
        {"CN", "CN (China)"},
        {"WW", "WW (World Mode)"},
        {"IN", "IN (India)"},
        {"PR", "PR (Puerto Rico)"},
        {"SA", "SA (Saudi Arabia)"},
        {"ZA", "ZA (South Africa)"},
    };

    Message message;
    std::string nonce;       // see Base
    std::string domain;      // the code of the one set
    bool changed = false;    // by this request
    bool rebooting = false;  // because of this request
    bool supported = false;  // whether the module can change it
    std::string script;      // URL of the page's own
};

}  // namespace webconfig::data
