#pragma once

#include <cppcms/json.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "body_reader.h"

namespace cppcms::impl {

class environment;

/// What the head of a request alone decides, whatever path it asks for: whether a page of another site sends
/// it, and whether it asks by a name that is ours. Nothing, where the settings name no rule.
class request_rules {
  public:
    /// Takes "http.same_origin", "http.same_origin_paths" and "http.hosts".
    explicit request_rules(json::value const &settings);

    refusal check(environment const &request) const;

  private:
    bool is_guarded(environment const &request) const;
    bool is_ours(std::string_view host) const;

    bool same_origin_;
    std::vector<std::string> same_origin_paths_;     // below which GET and HEAD are guarded, too
    std::optional<std::vector<std::string>> hosts_;  // in lower case
};

}  // namespace cppcms::impl
