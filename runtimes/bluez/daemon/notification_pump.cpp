#include "runtimes/bluez/daemon/notification_pump.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <thread>
#include <utility>

#include "runtimes/bluez/bus/loop.h"
#include "runtimes/objects/thread.h"

namespace orv::bluez {

namespace {

// The pause after a read. Values that arrive meanwhile are read together, which saves system calls
// and thread switches. Shorter than the shortest connection interval (7.5 ms).
constexpr milliseconds PauseAfterRead{2};

// A delivery that takes longer counts as blocked. A socket holds about 270 values, more than arrive
// in this time.
constexpr milliseconds LongestDelivery{20};

}  // namespace

Pump::Pump(std::function<void(const SharedSource&)> endedOfPump)
    : ended(std::move(endedOfPump)),
      poller(Checked(epoll_create1(EPOLL_CLOEXEC))),
      wake(Checked(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))) {
    epoll_event event{EPOLLIN | EPOLLET, {}};
    epoll_ctl(poller, EPOLL_CTL_ADD, wake, &event);
}

void Pump::Start() {
    for (; started < 2; ++started) {
        objects::StartThread([this, self = started] { Run(self); }).detach();
    }
}

// Uses level-triggered events, so that a read that fails is repeated.
void Pump::Watch(const SharedSource& source) {
    const Lock lock(mutex);
    watched.emplace(source.get(), source);
    epoll_event event{EPOLLIN, {}};
    event.data.ptr = source.get();
    epoll_ctl(poller, EPOLL_CTL_ADD, source->Descriptor(), &event);
}

void Pump::Unwatch(const SharedSource& source) {
    const Lock lock(mutex);
    if (watched.erase(source.get()) != 0) {
        epoll_ctl(poller, EPOLL_CTL_DEL, source->Descriptor(), nullptr);
    }
}

void Pump::Offer(const SharedSource& source, const Bytes& value) {
    std::list<SharedSource> offered(1, source);
    source->Push(value);
    {
        const Lock lock(mutex);
        filled.splice(filled.end(), offered);
    }
    const std::uint64_t one = 1;
    static_cast<void>(!write(wake, &one, sizeof one));  // each write triggers an event
}

void Pump::Run(int self) {
    for (;;) {
        Contained([this, self] {
            AwaitTurn(self);
            TakeReady();
            HandOver();
        });
        std::this_thread::sleep_for(PauseAfterRead);
    }
}

void Pump::AwaitTurn(int self) {
    const Lock lock(mutex);
    while (reader != self) {
        const UINT64 seen = progress;
        if (!handsOver) {
            looks = false;
            changed.Wait(mutex);
        } else if (!changed.WaitFor(mutex, LongestDelivery) && handsOver && progress == seen) {
            reader = self;
        }
    }
}

void Pump::TakeReady() {
    std::array<epoll_event, 16> events;
    const int count = epoll_wait(poller, events.data(), static_cast<int>(events.size()), -1);
    for (std::size_t i = 0; i < static_cast<std::size_t>(std::max(count, 0)); ++i) {
        SharedSource source;
        {
            const Lock lock(mutex);
            const auto found = watched.find(static_cast<const Source*>(events[i].data.ptr));
            if (found == watched.end()) {
                continue;  // the event of `wake`, or of a source that is no longer watched
            }
            source = found->second;
        }
        std::list<SharedSource> taken(1, source);  // a failure after Take would lose values
        const bool isOpen = source->Take();
        {
            const Lock lock(mutex);
            filled.splice(filled.end(), taken);
        }
        if (!isOpen) {
            ended(source);
        }
    }
}

void Pump::HandOver() {
    {
        const Lock lock(mutex);
        if (handsOver) {
            return;
        }
        handsOver = true;
        if (!std::exchange(looks, true)) {
            changed.NotifyOne();
        }
    }
    std::list<SharedSource> sources;
    while (Next(sources)) {
        for (const SharedSource& source : sources) {
            while (!Contained([&] { source->Deliver(); })) {
                // A value that could not be passed on must not keep back the next one.
            }
        }
    }
}

// Moves `filled` to `sources`. If `filled` was empty, clears `handsOver` and returns false.
bool Pump::Next(std::list<SharedSource>& sources) {
    sources.clear();
    const Lock lock(mutex);
    sources.swap(filled);
    handsOver = !sources.empty();
    ++progress;
    return handsOver;
}

}  // namespace orv::bluez
