// Storage for process-wide objects that must not be destroyed when the process ends.
#pragma once

#include <new>

namespace orv {

// Creates its object when the library is loaded and never destroys it. At the end of the process,
// releasing runtime objects or taking locks can deadlock or crash, so the objects are left to the
// operating system. At an ordinary unload there is nothing to release: sessions and links exist
// only after a handler was created, and from then on the library stays loaded.
template <typename T>
class ProcessWide {
  public:
    ProcessWide() : object(*new (storage) T) {}
    T& object;

  private:
    alignas(T) unsigned char storage[sizeof(T)];
};

}  // namespace orv
