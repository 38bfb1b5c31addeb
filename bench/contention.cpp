// Measures how long notifications and receive calls wait for the mutex that protects the links.
// Threads repeat them without a pause. In half of the rounds, another thread sends and holds the
// mutex until the device answers after 15 ms (two connection intervals of 7.5 ms).
//
// Prints rows of latencies as JSON, in nanoseconds of real time.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

#include "bench/support/arrangement.h"
#include "link/receive.h"

namespace orv::bench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto Duration = std::chrono::milliseconds(400);
constexpr UINT32 AnswerDelayMs = 15;
constexpr std::size_t Largest = 8;

using Latencies = std::vector<float>;

struct Round {
    std::size_t notifying;
    std::size_t receiving;
    bool sending;
    Latencies notifications;
    Latencies receives;
};

template <typename Body>
Latencies Repeat(const std::atomic<bool>& over, Body body) {
    Latencies latencies;
    latencies.reserve(1 << 20);
    while (!over.load(std::memory_order_relaxed)) {
        const auto start = Clock::now();
        body();
        const std::chrono::duration<float, std::nano> took = Clock::now() - start;
        if (latencies.size() < latencies.capacity()) {
            latencies.push_back(took.count());
        }
    }
    return latencies;
}

// Empties the receive queue regularly, because there may be no thread that reads it.
void Notify(const std::atomic<bool>& over, BluetoothAddress address, Latencies& latencies) {
    const auto sender = SenderOf(address);
    const auto event = Reference<IGattValueChangedEventArgs>::Adopt(new Notification(244));
    int untilFlush = 0;
    latencies = Repeat(over, [&] {
        OnDataReceived(sender, event);
        if (++untilFlush == 4096) {
            OrvDevice_Flush(address);
            untilFlush = 0;
        }
    });
}

void Receive(const std::atomic<bool>& over, BluetoothAddress address, Latencies& latencies) {
    std::vector<std::uint8_t> buffer(4096);
    latencies = Repeat(over, [&] {
        OrvDevice_Receive(address, static_cast<std::int32_t>(buffer.size()), buffer.data());
    });
}

void Send(const std::atomic<bool>& over) {
    answerDelayMs = AnswerDelayMs;
    const std::uint8_t data[244] = {};
    while (!over.load(std::memory_order_relaxed)) {
        OrvDevice_Send(1, sizeof data, data);
        std::this_thread::sleep_for(std::chrono::milliseconds(AnswerDelayMs));
    }
}

void Append(Latencies& all, const Latencies& some) {
    all.insert(all.end(), some.begin(), some.end());
}

void Run(Round& round) {
    std::atomic<bool> over{false};
    std::vector<Latencies> found(round.notifying + round.receiving);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < round.notifying; ++i) {
        threads.emplace_back(Notify, std::cref(over), i + 1, std::ref(found[i]));
    }
    for (std::size_t i = 0; i < round.receiving; ++i) {
        threads.emplace_back(Receive, std::cref(over), i + 1, std::ref(found[round.notifying + i]));
    }
    if (round.sending) {
        threads.emplace_back(Send, std::cref(over));
    }
    std::this_thread::sleep_for(Duration);
    over = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (std::size_t i = 0; i < found.size(); ++i) {
        Append(i < round.notifying ? round.notifications : round.receives, found[i]);
    }
}

void Print(const Round& round, const char* what, Latencies latencies, bool first) {
    std::sort(latencies.begin(), latencies.end());
    const auto at = [&](double part) {
        if (latencies.empty()) {
            return 0.0;
        }
        const double last = static_cast<double>(latencies.size() - 1);
        return static_cast<double>(latencies[static_cast<std::size_t>(part * last)]);
    };
    std::printf(
        "%s{\"call\": \"%s\", \"notifying\": %zu, \"receiving\": %zu, \"sending\": %s, "
        "\"count\": %zu, \"p50\": %.0f, \"p99\": %.0f, \"p99.9\": %.0f, \"worst\": %.0f}",
        first ? "" : ",\n", what, round.notifying, round.receiving,
        round.sending ? "true" : "false", latencies.size(), at(0.5), at(0.99), at(0.999), at(1));
}

}  // namespace

}  // namespace orv::bench

int main() {
    using namespace orv::bench;
    ArrangeLinks(Largest);
    bool first = true;
    std::printf("[");
    for (const bool sending : {false, true}) {
        for (const std::size_t notifying : {1u, 2u, 4u, 8u}) {
            for (const std::size_t receiving : {1u, 2u, 4u, 8u}) {
                Round round{notifying, receiving, sending, {}, {}};
                Run(round);
                Print(round, "notification", std::move(round.notifications), first);
                Print(round, "receive", std::move(round.receives), false);
                first = false;
            }
        }
    }
    std::printf("]\n");
}
