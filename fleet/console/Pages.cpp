#include "fleet/console/Pages.h"
