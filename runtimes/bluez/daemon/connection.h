// The connection to the Bluetooth daemon, a copy of the daemon's objects, and the event loop whose
// thread uses both.
#pragma once

#include "runtimes/bluez/bus/bus.h"
#include "runtimes/bluez/daemon/tree.h"

namespace orv::bluez {

class Connection : protected Bus::Listener {
  public:
    // Only the loop's thread may use these members, except that any thread may post to `loop`.

    // Runs the task when the daemon's objects are loaded. If the daemon is not available, runs the
    // task with an empty tree; the next call then requests the objects again.
    void WhenKnown(Task task);
    // Returns false if the tree may be empty or outdated.
    bool IsKnown() const { return knowledge == Knowledge::Known; }
    // Returns a number that changes each time the daemon ends.
    int Run() const { return run; }
    // Continues pending requests. Called after each change of the daemon's objects.
    virtual void Changed() = 0;

    Loop loop{[this] { Came(); }};
    Bus bus{loop, *this};
    Tree tree;

  protected:
    ~Connection() = default;

    // Returns true if the tree must be loaded even while no task waits for it.
    virtual bool IsNeeded() const = 0;
    // Handles the events that a D-Bus signal of the object at `path` reports.
    virtual void Told(const Path& path, const News& news) = 0;
    // Called after the daemon has ended or the connection was lost, and the tree was emptied.
    virtual void Gone(bool daemonEnded) = 0;

  private:
    enum class Knowledge { None, Asked, Known };

    void Signalled(sd_bus_message* signal) override;
    void Lost(bool daemonEnded) override;
    void Came() override;

    void Ask();

    Knowledge knowledge = Knowledge::None;
    std::vector<Task> waiting;
    int run = 0;
};

}  // namespace orv::bluez
