// What arrives at the standard input, without waiting for it.
#pragma once

#include <memory>
#include <mutex>
#include <string>

namespace orv {

// Reading cannot be interrupted everywhere, so a thread of its own does it, which the end of the
// program ends.
class Input {
  public:
    Input();

    // What has arrived since the last call; `ended` is set when nothing more will come.
    std::string Take(bool& ended);

  private:
    struct Arrived {
        std::mutex mutex;
        std::string bytes;
        bool ended = false;
    };
    std::shared_ptr<Arrived> arrived = std::make_shared<Arrived>();
};

}  // namespace orv
