#include "runtimes/bluez/daemon/daemon.h"

namespace orv::bluez {

Daemon& Daemon::Get() {
    // The object is never destroyed, because its threads run until the process ends.
    static Daemon* const daemon = new Daemon;
    static const bool isStarted = (daemon->notifications.Start(), daemon->loop.Start(), true);
    static_cast<void>(isStarted);
    return *daemon;
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

void Daemon::Gone(bool daemonEnded) {
    discovery.Forget();
    if (daemonEnded) {
        links.Forget();
    }
    notifications.Forget();
}

}  // namespace orv::bluez
