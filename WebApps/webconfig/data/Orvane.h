#pragma once

#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/forms/Orvane.h"

namespace webconfig::data {

struct Orvane : public BaseTabbed {
    forms::OrvaneConfig common;
    forms::Orvane mesh{"mesh"};
    forms::Orvane cellular{"cellular"};
    forms::Orvane openvpn{"openvpn"};
};

}  // namespace webconfig::data
