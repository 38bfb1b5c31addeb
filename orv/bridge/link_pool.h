// All links of this process, and a thread that polls them for received bytes.
#pragma once

#include <memory>
#include <thread>
#include <vector>

#include "orv/bridge/persistent_link.h"

namespace orv::bridge {

// Time between two polls of a link. The shortest connection interval is 7.5 ms; an idle poll takes
// less than a microsecond.
constexpr std::chrono::milliseconds PollEvery{10};

class LinkPool {
  public:
    LinkPool(Library& library, const LinkOptions& options);

    // Creates a closed link. The pool polls it until its last owner releases it.
    std::shared_ptr<PersistentLink> Add(BluetoothAddress address);

  private:
    void Poll();

    Library& library;
    const LinkOptions options;
    Mutex mutex;
    std::vector<std::weak_ptr<PersistentLink>> links GUARDED_BY(mutex);
    std::jthread poller;  // last member, because it uses all others
};

}  // namespace orv::bridge
