#include "orv/transfer/input.h"

#include <utility>

#include "orv/background.h"

namespace orv {

namespace {

constexpr std::size_t QueueLimit = 65536;

}  // namespace

Input::Input(Reader read) {
    reader = std::thread([shared = arrived, next = std::move(read)] {
        while (const auto bytes = next()) {
            const Lock lock(shared->mutex);
            shared->bytes += *bytes;
            while (shared->bytes.size() >= QueueLimit) {
                shared->taken.wait(shared->mutex);
            }
        }
        const Lock lock(shared->mutex);
        shared->ended = true;
    });
}

Input::~Input() {
    bool ended = false;
    Take(ended);
    if (ended) {
        reader.join();
    } else {
        LeaveRunning(std::move(reader));
    }
}

std::string Input::Take(bool& ended) {
    const Lock lock(arrived->mutex);
    ended = arrived->ended;
    arrived->taken.notify_all();
    return std::exchange(arrived->bytes, {});
}

}  // namespace orv
