// Shared by the option tests.
#pragma once

#include "OptionsData.h"

// Every option set away from its default (custom optimisation settings on, so nothing is derived).
COptionsData NonDefaultOptions();
