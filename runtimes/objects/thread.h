#pragma once

#include <functional>
#include <thread>

namespace orv::objects {

// Starts a thread that runs until the process ends. Keeps the library file that contains this code
// loaded for the same time. Signals are handled on the host's threads only: a handler that expects
// to interrupt a call of the host would not do so on this thread. Throws std::system_error.
std::thread StartThread(std::function<void()> run);

}  // namespace orv::objects
