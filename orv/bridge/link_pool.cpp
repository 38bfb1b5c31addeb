#include "orv/bridge/link_pool.h"

namespace orv::bridge {

LinkPool::LinkPool(Library& loaded, const LinkOptions& linkOptions)
    : library(loaded), options(linkOptions), poller([this](const std::stop_token& end) {
          while (!end.stop_requested()) {
              Poll();
              std::this_thread::sleep_for(PollEvery);
          }
      }) {}

std::shared_ptr<PersistentLink> LinkPool::Add(BluetoothAddress address) {
    auto link = std::make_shared<PersistentLink>(library, address, options);
    const Lock lock(mutex);
    links.push_back(link);
    return link;
}

void LinkPool::Poll() {
    std::vector<std::weak_ptr<PersistentLink>> polled;
    {
        const Lock lock(mutex);
        std::erase_if(links, [](const auto& link) { return link.expired(); });
        polled = links;
    }
    for (const auto& weak : polled) {
        // Polls without the lock, because a poll waits for pending writes.
        if (const auto link = weak.lock()) {
            link->Poll();
        }
    }
}

}  // namespace orv::bridge
