#pragma once

#include "ctl/Options.h"
#include "ctl/Status.h"

namespace ctl {

/// Runs the command that \a options name; throws Problem.
Status Run(Options const &options);

}  // namespace ctl
