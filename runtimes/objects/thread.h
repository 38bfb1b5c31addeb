#pragma once

#include <functional>
#include <thread>

namespace orv::objects {

// Starts a thread that runs until the process ends. Keeps the library file that contains this code
// loaded for the same time. The thread blocks signals, because a signal that is to interrupt a call
// of the host must arrive on a thread of the host. Throws std::system_error.
std::thread StartThread(std::function<void()> run);

}  // namespace orv::objects
