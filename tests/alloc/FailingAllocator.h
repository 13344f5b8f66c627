// A countdown that makes one chosen allocation fail: malloc, calloc, realloc and aligned_alloc
// return null, operator new throws std::bad_alloc (the nothrow forms return null).
#pragma once

#include <cstddef>

// Starts counting allocations; the failAt-th one from now fails (0: none fails).
void ArmAllocationFailure(long failAt);
// Stops counting and returns the number of allocations seen since arming.
long DisarmAllocationFailure();
