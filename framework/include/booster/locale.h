#pragma once

#include <booster/locale/format.h>
#include <booster/locale/formatting.h>
#include <booster/locale/generator.h>
#include <booster/locale/info.h>
#include <booster/locale/message.h>
