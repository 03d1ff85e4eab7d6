#pragma once

#include <booster/shared_ptr.h>
#include <cppcms/http_context.h>
#include <http/request_rules.h>

#include "event_loop.h"
#include "mount_table.h"

namespace cppcms::impl {

/// Serves the request of \a context, if \a rules let it pass: by one of the applications in \a mounts, on
/// this thread or, for an asynchronous one, on \a loop; or with an error page.
void serve_request(booster::shared_ptr<http::context> const &context, request_rules const &rules,
                   mount_table const &mounts, event_loop &loop, bool display_errors);

}  // namespace cppcms::impl
