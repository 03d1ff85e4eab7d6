#pragma once

#include <cppcms/base_content.h>

#include <string>

namespace fleet::console {

/// What the shell of every page needs.
struct Page : public cppcms::base_content {
    std::string title;
    std::string subject;     ///< the device's id or the rollout's number; empty where the page is of neither
    std::string root;        ///< of all pages: "/fleet"
    std::string media_root;  ///< URL prefix of "/css", "/js" and "/images"
    std::string revision;    ///< build stamp behind "?rev=" of media URLs
    std::string user;        ///< who has logged in; empty where nobody asks
};

}  // namespace fleet::console
