#pragma once

#include <cppcms/base_content.h>

#include <string>
#include <vector>

#include "WebApps/webconfig/data/ChangedSetting.h"
#include "WebApps/webconfig/data/Menu.h"
#include "WebApps/webconfig/data/Message.h"
#include "WebApps/webconfig/data/TrialNotice.h"
#include "WebApps/webconfig/util/Branding.h"

namespace webconfig::data {

/// What the page skeleton needs; every page's record derives from it.
struct Base : public cppcms::base_content {
    using Branding = util::Branding;

    Branding branding;              // from the settings below "webconfig.branding", or a plug-in
    std::string language;           // as HTML names it, where it is not English
    std::string media_root;         // URL prefix of "/css", "/js" and "/images"
    std::string plugin_media_root;  // plug-in media URL of the application
    Message message;
    bool reboot_required = false;
    bool default_password =
        false;                // the web password is still the one of the delivery, and pages are to say so
    std::string nonce;        // what inline scripts and style sheets carry; empty: they need nothing
    std::vector<Menu> menus;  // top level, in display order
    bool bundle = false;      // the built-in style sheets and scripts are one file each
    std::string revision;     // build stamp behind "?rev=" of built-in media URLs
    std::vector<std::string> style_sheets;  // extra URLs, linked after the built-in ones
    std::vector<std::string> scripts;       // likewise
    std::string title;
    std::string device_name;                    // for banner and window; empty: it is not shown
    std::vector<ChangedSetting> saved_changes;  // what this request has changed, where a history is kept
    std::string change_set;                     // their number in it
    bool history_failed = false;                // they could not be recorded
    TrialNotice trial;                          // of settings that nobody has kept yet
    bool disable_inputs = false;                // the browser disables every input of the configuration pane
};

}  // namespace webconfig::data
