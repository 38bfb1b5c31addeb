#pragma once

#include <thread>

namespace orv {

// Lets a thread that may hang run until the process ends. If a thread is about to end, join it:
// under Wine, a process that exits while a thread ends sometimes crashes. Never use
// std::thread::detach: with MinGW, a thread that is detached before it begins sometimes never runs,
// and detaching an ending thread can damage the heap (seen under Wine).
void LeaveRunning(std::thread thread);

}  // namespace orv
