// Reads the standard input or a file without blocking the caller.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "orv/mutex.h"

namespace orv {

// Reads on its own thread, which waits while the queue is full, so that a pipe's writer waits, too.
// The destructor does not end a pending read, because some reads cannot be interrupted.
class Input {
  public:
    // Waits for bytes and returns them. Returns nothing at the end of the input.
    using Reader = std::function<std::optional<std::string>()>;
    explicit Input(Reader read);
    ~Input();
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    // Returns the bytes that arrived since the last call. Sets `ended` if no more will arrive.
    std::string Take(bool& ended);

  private:
    struct Arrived {
        Mutex mutex;
        Condition taken;
        std::string bytes GUARDED_BY(mutex);
        bool ended GUARDED_BY(mutex) = false;
    };
    std::shared_ptr<Arrived> arrived = std::make_shared<Arrived>();
    std::thread reader;
};

}  // namespace orv
