#pragma once

#include <thread>

namespace orv {

// Lets a thread that may hang run until the process ends. Join a thread that is about to end: under
// Wine, a process that exits at that moment sometimes crashes. Never use std::thread::detach: with
// MinGW, a thread that is detached before it begins sometimes never runs, and detaching an ending
// thread can damage the heap (seen under Wine).
void LeaveRunning(std::thread thread);

}  // namespace orv
