// Replaces the allocation functions in the library's import table, so that tests can let them fail.
// Compiler support code in the library uses the same table.
#pragma once

namespace orv {

// Returns the number of replaced functions.
int ReplaceAllocations();

// Let the n-th allocation from now on fail. FailAllocationsFrom also fails all later ones.
void FailAllocation(int n);
void FailAllocationsFrom(int n);

// Lets allocations succeed again. Returns the number of allocations that failed.
int EndFailures();

}  // namespace orv
