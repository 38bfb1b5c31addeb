#include "orv/background.h"

#include <list>
#include <utility>

#include "orv/mutex.h"

namespace orv {

void LeaveRunning(std::thread thread) {
    static Mutex mutex;
    // Never destroyed, because the destructor of a running std::thread ends the process.
    static auto& threads = *new std::list<std::thread>;
    const Lock lock(mutex);
    threads.push_back(std::move(thread));
}

}  // namespace orv
