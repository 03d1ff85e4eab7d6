#pragma once

#include <cppcms/application.h>

namespace fleet::console {

/// The pages of the console, below "fleet.root". They are shells: scripts fill them by calls of the Rpc.
class Pages : public cppcms::application {
  public:
    explicit Pages(cppcms::service &service) : cppcms::application(service) {}
};

}  // namespace fleet::console
