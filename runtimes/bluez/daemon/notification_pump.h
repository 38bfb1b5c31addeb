// Two threads that read notified values from the daemon's sockets and pass them to subscribers.
#pragma once

#include <functional>
#include <list>
#include <map>

#include "runtimes/bluez/daemon/notification_source.h"

namespace orv::bluez {

// One of two threads reads values and also passes them on, so that a value wakes no other thread.
// If a subscriber blocks, the other thread starts to read, because the daemon drops values when a
// socket is full. The blocked thread passes on the other thread's values later. Neither thread is
// the event loop's thread, because a subscriber may wait for a lock whose owner waits for the loop.
class Pump {
  public:
    // One of the threads calls `endedOfPump` when the daemon has closed a source's socket.
    explicit Pump(std::function<void(const SharedSource&)> endedOfPump);
    // Starts the threads. After a failure, the next call starts those that are missing.
    void Start();

    // Starts reading a source that has a socket.
    void Watch(const SharedSource& source);
    // Stops reading the source. Values that were read before are still passed on.
    void Unwatch(const SharedSource& source);
    // Passes on a value of a source that has no socket.
    void Offer(const SharedSource& source, const Bytes& value);

  private:
    [[noreturn]] void Run(int self);
    void AwaitTurn(int self);
    void TakeReady();
    // Passes the read values to the subscribers, or returns at once if the other thread is doing
    // so.
    void HandOver();
    bool Next(std::list<SharedSource>& sources);

    const std::function<void(const SharedSource&)> ended;
    int started = 0;  // number of threads
    const int poller;
    const int wake;
    objects::Mutex mutex;
    std::map<const Source*, SharedSource> watched GUARDED_BY(mutex);
    // The sources that may have values. A list, because a splice needs no memory.
    std::list<SharedSource> filled GUARDED_BY(mutex);
    int reader GUARDED_BY(mutex) = 0;          // the thread that reads, 0 or 1
    bool handsOver GUARDED_BY(mutex) = false;  // one of the threads passes values on
    UINT64 progress GUARDED_BY(mutex) = 0;     // changes after each round of deliveries
    bool looks GUARDED_BY(mutex) = false;      // the waiting thread checks `progress` regularly
    objects::Condition changed;                // wakes the waiting thread to check `progress`
};

}  // namespace orv::bluez
