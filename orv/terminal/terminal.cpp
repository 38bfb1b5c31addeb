#include "orv/terminal/terminal.h"

#include <chrono>
#include <cstdio>
#include <thread>

namespace orv::terminal {

bool Pause(int milliseconds) {
    using namespace std::chrono;
    const auto end = steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (!IsInterrupted()) {
        const auto left = end - steady_clock::now();
        if (left <= steady_clock::duration::zero()) {
            return true;
        }
        // Sleeps in slices, because an interrupt does not end a sleep.
        std::this_thread::sleep_for(std::min<steady_clock::duration>(left, 20ms));
    }
    return false;
}

void Write(const std::string& text) {
    fwrite(text.data(), 1, text.size(), stdout);
    fflush(stdout);
}

}  // namespace orv::terminal
