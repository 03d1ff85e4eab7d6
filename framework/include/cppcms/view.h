#pragma once

// All that generated views use.

#include <booster/iterator/range.h>
#include <cppcms/application.h>
#include <cppcms/base_view.h>
#include <cppcms/filters.h>
#include <cppcms/form.h>
#include <cppcms/url_mapper.h>
#include <cppcms/views_pool.h>
