// A log read while it is being written.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "orv/log/analysis.h"

namespace orv::log {

class Follower {
  public:
    // `listener` hears of everything that is added. The log starts anew when it is emptied.
    Follower(std::string path, Threads threads, Listener& listener);

    enum class Found { Nothing, Lines, Emptied, NoFile };

    // Reads what has come since the last time. After Emptied, call it again for the new lines.
    Found Poll();
    // Ends the calls still open.
    void End();

  private:
    bool WasEmptied() const;
    void Restart();

    std::string path;
    Threads threads;
    Listener& listener;
    std::unique_ptr<Analysis> analysis;
    std::uint64_t position = 0;  // of the first byte not read yet
    std::string tail;            // the last bytes before it, to know a new file of the same length
    std::string unfinished;      // read, and without a line end
};

}  // namespace orv::log
