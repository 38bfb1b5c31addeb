#include "orv/terminal/step.h"

#include <cstdio>
#include <future>

#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"

namespace orv::terminal {

namespace {

constexpr auto DrawEvery = std::chrono::milliseconds(100);

}  // namespace

StepLine::StepLine(std::string shown, int limit) : step(std::move(shown)), limitSeconds(limit) {
    if (IsOutput()) {
        live.emplace();
    }
}

StepLine::~StepLine() {
    Remove();
}

void StepLine::Remove() {
    if (live) {
        live->Clear();
        live.reset();
    }
}

double StepLine::Seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void StepLine::Show() {
    if (live) {
        char times[64];
        snprintf(times, sizeof times, ": %.1f s, at most %d s", Seconds(), limitSeconds);
        const std::string line = step + times;
        const std::size_t columns = SizeOf().columns;
        live->Draw({ColumnsOf(line) > columns ? Fitted(line, columns) : line});
    }
}

void StepLine::Say(const std::string& message) {
    Remove();
    fprintf(stderr, "orv: %s\n", message.c_str());
}

void Await(const std::string& step, int limitSeconds, const std::function<void()>& call) {
    auto running = std::async(std::launch::async, call);
    StepLine line(step, limitSeconds);
    bool hasAnswered = IsInterrupted();
    bool hasWarned = false;
    while (running.wait_for(DrawEvery) != std::future_status::ready) {
        if (IsInterrupted() && !hasAnswered) {
            hasAnswered = true;
            line.Say(std::string("stopping after ") + Interruption() + ": still " + step +
                     (hasWarned ? "" : ", " + std::to_string(limitSeconds) + " s at most") +
                     ". Ctrl-C again ends orv at once");
        } else if (line.Seconds() > limitSeconds + 1 && !hasWarned) {
            hasWarned = true;
            line.Say(step + " has taken longer than " + std::to_string(limitSeconds) +
                     " s: the system does not return. Ctrl-C" + (IsInterrupted() ? "" : " twice") +
                     " ends orv at once");
        } else {
            line.Show();
        }
    }
    running.get();
}

}  // namespace orv::terminal
