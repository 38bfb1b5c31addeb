#pragma once

#include <new>

namespace orv {

// Creates its object when the library is loaded and never destroys it, because releasing runtime
// objects or taking locks at process end can deadlock or crash. If the library is unloaded, the
// object is empty, because every session or link has a handler that keeps the library loaded.
template <typename T>
class ProcessWide {
  public:
    ProcessWide() : object(*new (storage) T) {}
    T& object;

  private:
    alignas(T) unsigned char storage[sizeof(T)];
};

}  // namespace orv
