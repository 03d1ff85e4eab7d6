#pragma once

#include <booster/perl_regex.h>
#include <booster/regex_match.h>
