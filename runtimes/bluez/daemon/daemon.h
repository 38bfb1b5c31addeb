#pragma once

#include "runtimes/bluez/daemon/discovery.h"
#include "runtimes/bluez/daemon/links.h"
#include "runtimes/bluez/daemon/notifications.h"

namespace orv::bluez {

class Daemon final : public Connection {
  public:
    // Returns the only instance. The first call starts its threads. If that fails, it throws, and
    // the next call tries again.
    static Daemon& Get();

    void Changed() override;

    // Only the loop's thread may use these members.
    Discovery discovery{*this};
    Links links{*this, discovery};
    Notifications notifications{*this};

  private:
    bool IsNeeded() const override { return discovery.IsWanted() || links.AreUsed(); }
    void Told(const Path& path, const News& news) override;
    void Gone(bool daemonEnded) override;
};

}  // namespace orv::bluez
