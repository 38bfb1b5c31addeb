#include "orv/bridge/persistent_link.h"

#include <algorithm>
#include <utility>

#include "orv/scan/search.h"

namespace orv::bridge {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t ReceiveBlock = 4096;
constexpr std::chrono::seconds FirstPause = 1s;
constexpr std::chrono::seconds LongestPause = 60s;
constexpr auto LibraryTimeout = 2000ms;
constexpr int DisconnectAttempts = 3;
constexpr const char* Rejected = "the device rejects the link";

}  // namespace

PersistentLink::PersistentLink(Library& loaded, BluetoothAddress device,
                               const LinkOptions& linkOptions)
    : library(loaded), address(device), options(linkOptions), worker([this] {
          while (const Step step = NextStep()) {
              (this->*step)();
          }
      }) {}

PersistentLink::~PersistentLink() {
    {
        const Lock lock(mutex);
        isEnding = true;
        isWanted = false;
    }
    changed.notify_all();
    worker.join();
}

void PersistentLink::SetWanted(bool wanted) {
    const Lock lock(mutex);
    if (std::exchange(isWanted, wanted) != wanted) {
        changed.notify_all();
    }
}

std::size_t PersistentLink::Room() {
    const Lock lock(mutex);
    return SendLimit - outgoing.size();
}

void PersistentLink::Send(std::string_view bytes) {
    const Lock lock(mutex);
    outgoing += bytes;
    changed.notify_all();
}

void PersistentLink::StopSending(Clock::time_point end) {
    const Lock lock(mutex);
    const std::size_t kept = writing.value_or(0);
    status.unsent += outgoing.size() - kept;
    outgoing.resize(kept);
    while (writing && changed.wait_until(mutex, end) == std::cv_status::no_timeout) {
    }
}

std::string PersistentLink::Take(std::size_t most) {
    const Lock lock(mutex);
    std::string bytes = incoming.substr(0, most);
    incoming.erase(0, most);
    return bytes;
}

void PersistentLink::DropReceived(std::size_t taken) {
    const Lock lock(mutex);
    status.unread += incoming.size() + taken;
    incoming.clear();
}

LinkStatus PersistentLink::Status() {
    const Lock lock(mutex);
    status.waiting = incoming.size();
    return status;
}

PersistentLink::Step PersistentLink::NextStep() {
    const Lock lock(mutex);
    for (;;) {
        const auto now = Clock::now();
        auto until = Clock::time_point::max();
        if (status.state == LinkState::Open) {
            if (isLost || isEnding || (!isWanted && outgoing.empty())) {
                return &PersistentLink::Close;
            }
            if (options.probeSeconds > 0) {
                until = lastTraffic + std::chrono::seconds(options.probeSeconds);
            }
            if (!outgoing.empty() || now >= until) {
                writing = std::min(outgoing.size(), options.block);
                return &PersistentLink::Send;
            }
        } else if (isWanted) {
            until = nextAttempt;
            if (now >= until) {
                status.state = LinkState::Connecting;
                return &PersistentLink::Open;
            }
        } else {
            status.unsent += outgoing.size();
            outgoing.clear();
            if (isEnding) {
                return nullptr;
            }
            status.state = LinkState::Closed;
            status.reason.clear();
            status.failures = 0;
            nextAttempt = {};
            pause = 0s;
        }
        // Waits at most 1 h at a time, because some systems cannot wait until time_point::max().
        changed.wait_until(mutex, std::min(until, now + 1h));
    }
}

void PersistentLink::Open() {
    const auto begin = Clock::now();
    // Closes an older open link first; otherwise, the library would receive from that link.
    bool isOpen = Disconnect() && library.Connect(address) != ORV_FAILED;
    const bool hasTimedOut = Clock::now() - begin >= LibraryTimeout;
    const bool isOff = !isOpen && library.BluetoothAvailable() == ORV_FAILED;
    if (!isOpen && !hasTimedOut && !isOff && options.isSearched && Search()) {
        isOpen = library.Connect(address) != ORV_FAILED;
    }
    const Lock lock(mutex);
    if (!isOpen) {
        Lose(isOff ? "Bluetooth is off" : hasTimedOut ? "the device does not answer" : Rejected);
        return;
    }
    isLost = false;
    status.state = LinkState::Open;
    status.reason.clear();
    lastTraffic = Clock::now();
}

// Writes the next block, or tests the link with an empty write if no bytes are queued, because the
// library does not report a lost device.
void PersistentLink::Send() {
    std::string block;
    {
        const Lock lock(mutex);
        block = outgoing.substr(0, *writing);
    }
    const bool isConfirmed = library.Send(address, block) != ORV_FAILED;
    const Lock lock(mutex);
    writing.reset();
    changed.notify_all();
    outgoing.erase(0, block.size());
    lastTraffic = Clock::now();
    if (isConfirmed) {
        status.sent += block.size();
        pause = 0s;
        status.failures = 0;
    } else {
        status.unconfirmed += block.size();
        status.reason =
            block.empty() ? "the device no longer answers" : "a write was not confirmed";
        isLost = true;
    }
}

void PersistentLink::Close() {
    {
        const Lock order(receiving);
        Receive();
        const Lock lock(mutex);
        if (isLost) {
            ++status.losses;
            Lose(std::exchange(status.reason, {}));
        } else {
            status.state = LinkState::Closing;  // NextStep sets Closed after the disconnect
        }
    }
    Disconnect();
}

void PersistentLink::Lose(const std::string& reason) {
    pause = std::clamp(2 * pause, FirstPause, LongestPause);
    nextAttempt = Clock::now() + pause;
    ++status.failures;
    status.state = LinkState::Waiting;
    status.reason = reason + "; next attempt after " + std::to_string(pause.count()) + " s";
}

// Tests the link: a receive of 0 bytes fails if no link is open.
bool PersistentLink::IsConnected() {
    std::string nothing;
    return library.Receive(address, 0, nothing) != ORV_FAILED;
}

// Scans until the device is found, so that the system knows it.
bool PersistentLink::Search() {
    {
        const Lock lock(mutex);
        status.reason = std::string(Rejected) + ", maybe because it was never heard: scanning";
    }
    const auto isStopped = [this] {
        const Lock lock(mutex);
        return !isWanted;
    };
    return SearchSilently(library, address, isStopped) && !isStopped();
}

// Repeats a failed disconnect, because it leaves the link open.
bool PersistentLink::Disconnect() {
    for (int attempt = 0; IsConnected() && attempt < DisconnectAttempts; ++attempt) {
        library.Disconnect(address);
    }
    return !IsConnected();
}

void PersistentLink::Poll() {
    const Lock order(receiving);
    Receive();
}

void PersistentLink::Receive() {
    std::string bytes;
    do {
        if (Status().state != LinkState::Open) {
            return;
        }
        const ResultCode count = library.Receive(address, ReceiveBlock, bytes);
        const Lock lock(mutex);
        if (count == ORV_FAILED) {
            status.reason = "the system closed the link";
            isLost = true;
            changed.notify_all();
        } else if (count > 0) {
            status.received += bytes.size();
            lastTraffic = Clock::now();
            pause = 0s;
            status.failures = 0;
            const std::size_t kept = std::min(bytes.size(), ReceiveLimit - incoming.size());
            incoming.append(bytes, 0, kept);
            status.unread += bytes.size() - kept;
        }
    } while (bytes.size() == ReceiveBlock);
}

}  // namespace orv::bridge
