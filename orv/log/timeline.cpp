#include "orv/log/timeline.h"

#include <algorithm>

namespace orv::log {

namespace {

constexpr std::int64_t Day = 86400000;

// Two threads' lines are never that far out of order.
constexpr std::int64_t Disorder = 1000;

}  // namespace

std::int64_t Timeline::Place(std::int32_t stamp) {
    std::int64_t time = stamp + shift;
    if (jumped && stamp + formerShift >= former - Disorder &&
        stamp + formerShift - former < time - latest) {
        shift = formerShift;  // the line before was the only one out of order
        time = stamp + shift;
        latest = former;
    }
    jumped = false;
    if (latest >= 0 && time < latest - Disorder) {
        if (time + Day - latest < Day / 2) {
            shift += Day;
            time += Day;
        } else if (former >= 0 && time >= former - Disorder && latest - former > Disorder) {
            latest = former;  // the line before was too late, not this one too early
            ++jumps;
        } else {
            formerShift = shift;
            former = latest;
            shift += latest - time;
            time = latest;
            jumped = true;
            ++jumps;
        }
    }
    if (!jumped) {
        former = latest;
    }
    latest = std::max(latest, time);
    return time;
}

}  // namespace orv::log
