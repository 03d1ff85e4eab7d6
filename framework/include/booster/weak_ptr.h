#pragma once

#include <booster/shared_ptr.h>
