// Threads that run until the process ends.
#pragma once

#include <thread>

namespace orv {

// Lets a thread that may hang in a call run until the process ends. Join a thread that is about to
// end: under Wine, a process that exits at that time sometimes crashes. Never use
// std::thread::detach: with MinGW's thread library, a thread that is detached before it begins
// sometimes never runs, and detaching an ending thread can damage the heap (seen under Wine on a
// busy machine).
void LeaveRunning(std::thread thread);

}  // namespace orv
