#pragma once

#include <cppcms/base_content.h>

#include <string>

#include "WebApps/webconfig/data/Message.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::data {

/// Of a page without the skeleton of the others.
struct RegulatoryWifi : public cppcms::base_content {
    /// A regulatory domain that the page offers.
    struct Domain {
        char const *code;
        char const *name;
    };
    static constexpr Domain domains[] = {
        {"FCC", util::Translatable("FCC (United States)")},
        {"IC", util::Translatable("IC (Industry Canada)")},
        {"EN440", util::Translatable("EN440 (Europe with ETSI EN 300 440)")},
        {"KCC", util::Translatable("KCC (Korea)")},
        {"AU", util::Translatable("AU (Australia, New Zealand)")},
        {"JP", util::Translatable("JP (Jiteki)")},
        {"CN", util::Translatable("CN (China)")},
        {"WW", util::Translatable("WW (World Mode)")},
        {"IN", util::Translatable("IN (India)")},
        {"PR", util::Translatable("PR (Puerto Rico)")},
        {"SA", util::Translatable("SA (Saudi Arabia)")},
        {"ZA", util::Translatable("ZA (South Africa)")},
    };

    Message message;
    std::string nonce;       // see Base
    std::string domain;      // the code of the one set
    bool changed = false;    // by this request
    bool rebooting = false;  // because of this request
    bool supported = false;  // whether the module can change it
    std::string language;    // see Base
    std::string script;      // URL of the page's own
    std::string catalogue;   // and of the texts of scripts in the language; empty for English
};

}  // namespace webconfig::data
