// Shared by the option tests.
#pragma once

#include "OptionsData.h"

// Every option set away from its default (custom optimisation settings on, so nothing is derived).
COptionsData NonDefaultOptions();
// Lines of the options text: 22 flags, 1 real, 4 choices, 6 strings, 4 numbers, 15 formats of 3 fields.
const int kOptionLines = 22 + 1 + 4 + 6 + 4 + 15 * 3;
