// A manual-reset event for systems that have none.
#pragma once

#include <chrono>

#include "runtimes/objects/mutex.h"

namespace orv::bluez {

class KernelEvent {
  public:
    void Set() {
        const objects::Lock lock(mutex);
        isSet = true;
        changed.NotifyAll();
    }
    void Wait(std::chrono::milliseconds limit) {
        const auto end = std::chrono::steady_clock::now() + limit;
        const objects::Lock lock(mutex);
        while (!isSet && changed.WaitUntil(mutex, end)) {
        }
    }

  private:
    objects::Mutex mutex;
    objects::Condition changed;
    bool isSet GUARDED_BY(mutex) = false;
};

}  // namespace orv::bluez
