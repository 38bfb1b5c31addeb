#include "orv/talk/input.h"

#include <thread>
#include <utility>

#include "orv/terminal/terminal.h"

namespace orv {

Input::Input() {
    std::thread([shared = arrived] {
        while (const auto bytes = terminal::ReadInput()) {
            const std::lock_guard lock(shared->mutex);
            shared->bytes += *bytes;
        }
        const std::lock_guard lock(shared->mutex);
        shared->ended = true;
    }).detach();
}

std::string Input::Take(bool& ended) {
    const std::lock_guard lock(arrived->mutex);
    ended = arrived->ended;
    return std::exchange(arrived->bytes, {});
}

}  // namespace orv
