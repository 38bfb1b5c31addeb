// Replaces malloc, calloc and realloc of the whole process, so that tests can make them fail in the
// library and in the libraries that it uses.
#pragma once

namespace orv::radio {

// Marks the calling thread as a thread of the test. All other threads belong to the library.
void MarkTestThread();

enum class Threads { OfLibrary, OfTest };

// Makes the n-th allocation from now on these threads fail (1 is the next one), or none if n is 0.
void FailAllocation(int n, Threads threads = Threads::OfLibrary);
bool HasAllocationFailed(Threads threads = Threads::OfLibrary);

}  // namespace orv::radio
