#include "orv/background.h"

#include <list>
#include <utility>

#include "orv/mutex.h"

namespace orv {

void LeaveRunning(std::thread thread) {
    static Mutex mutex;
    // The list is never destroyed, because destroying a thread object whose thread runs ends the
    // process.
    static auto& threads = *new std::list<std::thread>;
    const Lock lock(mutex);
    threads.push_back(std::move(thread));
}

}  // namespace orv
