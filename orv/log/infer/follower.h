// Reads a log while it is written.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "orv/log/infer/analysis.h"

namespace orv::log {

class Follower {
  public:
    // Passes the calls and notes of the log `path` to `listener`. Starts again if the log is
    // emptied.
    Follower(std::string path, Threads threads, Listener& listener);

    enum class Found { Nothing, Lines, Emptied, NoFile };

    // Reads the bytes appended since the last call. If it returns Emptied, call it again.
    Found Poll();
    void End();

    // Returns why the log has no line so far, or null if it has one.
    const char* WaitsFor(Found latest) const;

  private:
    bool WasEmptied() const;
    void Restart();

    std::string path;
    Threads threads;
    Listener& listener;
    std::unique_ptr<Analysis> analysis;
    std::uint64_t position = 0;
    std::string tail;        // the last bytes before `position`; if they change, the file is new
    std::string unfinished;  // the bytes of a line whose end is not written yet
};

}  // namespace orv::log
