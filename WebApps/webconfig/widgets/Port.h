#pragma once

#include <cppcms/form.h>

namespace webconfig::widgets {

/// A required field for a port: digits, and no limits. The base alone takes "-1" for a large number.
class Port : public cppcms::widgets::numeric<unsigned> {
  public:
    Port();

    void load(cppcms::http::context &context) override;
};

}  // namespace webconfig::widgets
