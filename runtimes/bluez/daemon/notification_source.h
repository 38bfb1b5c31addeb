// A characteristic whose notifications go to all its subscribers.
#pragma once

#include <sys/socket.h>

#include <array>
#include <deque>
#include <memory>

#include "runtimes/bluez/daemon/tree.h"
#include "runtimes/objects/mutex.h"

namespace orv::bluez {

// Receives the values of a source. The source keeps the subscriber alive.
class Subscriber {
  public:
    virtual void Receive(const Bytes& value) = 0;
    // Returns false after the subscriber was closed.
    virtual bool IsOpen() const = 0;

  protected:
    ~Subscriber() = default;
};
using SharedSubscriber = std::shared_ptr<Subscriber>;

// Several threads may use a source at once. Subscribers receive its values in order.
class Source {
  public:
    Source(Path pathOfSource, UINT64 addressOfSource);
    ~Source();

    const Path path;
    const UINT64 address;

    // Takes ownership of a socket to which the daemon writes each value as one record.
    void Attach(int socket);
    void Detach();
    int Descriptor();  // the socket, or -1 if there is none

    // Reads all records from the socket without blocking. Returns false if the daemon has closed
    // it.
    bool Take();
    void Push(Bytes value);
    // Passes the values to the subscribers. Only one thread at a time may call this.
    void Deliver();

    void Subscribe(SharedSubscriber subscriber);
    // Unsubscribes closed subscribers, and `subscriber` if it is not null. Returns true if no
    // subscriber is left.
    bool Unsubscribe(const Subscriber* subscriber = nullptr);
    bool HasTakenAny();

  private:
    static constexpr std::size_t LongestValue = 512;  // maximum size of an attribute in bytes
    static constexpr int RecordsAtOnce = 16;

    objects::Mutex mutex;
    // Buffers for one recvmmsg call.
    std::array<std::array<BYTE, LongestValue>, RecordsAtOnce> buffers GUARDED_BY(mutex);
    std::array<iovec, RecordsAtOnce> parts GUARDED_BY(mutex);
    std::array<mmsghdr, RecordsAtOnce> records GUARDED_BY(mutex);
    int descriptor GUARDED_BY(mutex) = -1;
    bool takenAny GUARDED_BY(mutex) = false;
    std::deque<Bytes> values GUARDED_BY(mutex);
    // Each change replaces the list, because a delivery may still use the former list.
    std::shared_ptr<const std::vector<SharedSubscriber>> subscribers GUARDED_BY(mutex);
};
using SharedSource = std::shared_ptr<Source>;

}  // namespace orv::bluez
