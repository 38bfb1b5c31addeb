// Keeps a wanted link to a device open, with limited queues for both directions.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "orv/library/library.h"
#include "orv/mutex.h"

namespace orv::bridge {

enum class LinkState { Closed, Connecting, Open, Closing, Waiting };

struct LinkStatus {
    LinkState state = LinkState::Closed;
    std::string reason;      // why a wanted link is not open, or empty
    std::uint64_t sent = 0;  // bytes of confirmed writes
    std::uint64_t received = 0;
    std::uint64_t unconfirmed = 0;  // bytes of failed writes, which may have arrived
    std::uint64_t unsent = 0;       // bytes that were dropped before they were sent
    std::uint64_t unread = 0;       // received bytes that were dropped
    std::uint64_t waiting = 0;      // received bytes in the queue
    std::uint64_t losses = 0;       // open links that were lost
    std::uint64_t failures = 0;     // failed connects and lost links in a row

    std::uint64_t Lost() const { return unconfirmed + unsent + unread; }
};

struct LinkOptions {
    std::size_t block = 0;       // maximum size of a write in bytes
    unsigned probeSeconds = 15;  // an empty write tests the link after this silence; 0: never
    // Whether to scan after a rejected connect, so that the system finds the device.
    bool isSearched = false;
};

// A worker thread connects, sends and disconnects, because these calls can block for seconds. Only
// StopSending, Poll and the destructor block. Failed writes are not repeated.
class PersistentLink {
  public:
    static constexpr std::size_t SendLimit = 65536;
    static constexpr std::size_t ReceiveLimit = 1 << 20;

    PersistentLink(Library& library, BluetoothAddress address, const LinkOptions& options);
    // Disconnects. Blocks for at most 12 s, because the worker may be in a library call.
    ~PersistentLink();
    PersistentLink(const PersistentLink&) = delete;
    PersistentLink& operator=(const PersistentLink&) = delete;

    BluetoothAddress Address() const { return address; }

    // True requests an open link. False closes the link after all queued bytes are sent.
    void SetWanted(bool isWanted);

    // Returns how many bytes Send accepts now.
    std::size_t Room();
    void Send(std::string_view bytes);
    // Drops the queued bytes and counts them as unsent. Waits at most until `end` for a pending
    // write, so that its result is counted, too.
    void StopSending(std::chrono::steady_clock::time_point end);

    std::string Take(std::size_t most);
    // Drops the received bytes in the queue. Counts them as unread, plus `taken` bytes that Take
    // returned but no client received.
    void DropReceived(std::size_t taken);

    LinkStatus Status();

    // Moves received bytes from the library into the queue. Waits up to 2 s for each pending write
    // of another link.
    void Poll();

  private:
    using Clock = std::chrono::steady_clock;
    using Step = void (PersistentLink::*)();

    // Waits until Open, Send or Close must run, and returns it, or null to end the worker.
    Step NextStep();
    void Open();
    void Send();
    void Close();
    void Lose(const std::string& reason) REQUIRES(mutex);
    bool Search();
    void Receive() REQUIRES(receiving);
    bool IsConnected();
    bool Disconnect();

    Library& library;
    const BluetoothAddress address;
    const LinkOptions options;

    // Lock this before `mutex` to call Receive or leave the state Open. It keeps received bytes in
    // order, and prevents Receive from reporting a closed link as lost.
    Mutex receiving;
    Mutex mutex;
    Condition changed;
    LinkStatus status GUARDED_BY(mutex);
    bool isWanted GUARDED_BY(mutex) = false;
    bool isLost GUARDED_BY(mutex) = false;
    bool isEnding GUARDED_BY(mutex) = false;
    std::string outgoing GUARDED_BY(mutex);
    // Size of the pending write, whose bytes are the first ones of `outgoing`.
    std::optional<std::size_t> writing GUARDED_BY(mutex);
    std::string incoming GUARDED_BY(mutex);
    std::chrono::seconds pause GUARDED_BY(mutex){0};
    Clock::time_point nextAttempt GUARDED_BY(mutex);
    Clock::time_point lastTraffic GUARDED_BY(mutex);

    std::thread worker;  // last member, because it uses all others
};

}  // namespace orv::bridge
