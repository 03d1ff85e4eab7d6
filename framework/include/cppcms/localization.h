#pragma once

#include <booster/locale.h>

namespace cppcms {

namespace locale = booster::locale;

}  // namespace cppcms
