#include "runtimes/bluez/daemon/daemon.h"

namespace orv::bluez {

Daemon& Daemon::Get() {
    // The object is never destroyed, because its threads run until the process ends.
    static Daemon* const daemon = new Daemon;
    return *daemon;
}

Daemon::Daemon() {
    notifications.Start();
    loop.Start();
}

void Daemon::Changed() {
    discovery.Step();
    links.Step();
    notifications.Step();
}

void Daemon::Told(const Path& path, const News& news) {
    if (news.heard != nullptr) {
        discovery.Heard(*news.heard, news.heardData);
    }
    if (news.value) {
        notifications.Value(path, *news.value);
    }
}

void Daemon::Came() {
    if (discovery.IsWanted()) {
        WhenKnown([] {});  // requests the objects; Changed then starts the scan
    }
}

void Daemon::Gone() {
    discovery.Forget();
    links.Forget();
    notifications.Forget();
}

}  // namespace orv::bluez
