#include "runtimes/bluez/daemon/connection.h"

#include <utility>

namespace orv::bluez {

namespace {

// Timeout of the call in Ask. Shorter than the library's timeout of 2000 ms, so that the library's
// next operation can call Ask again.
constexpr milliseconds AskLimit{1800};
constexpr milliseconds PauseWithoutReply{500};

}  // namespace

void Connection::WhenKnown(Task task) {
    if (knowledge == Knowledge::Known) {
        task();
        return;
    }
    waiting.push_back(std::move(task));
    if (knowledge == Knowledge::None) {
        Ask();
    }
}

// Requests the Bluetooth daemon's objects. The call starts the daemon if D-Bus activation is
// configured.
void Connection::Ask() {
    bus.Open();
    bus.Call(
        "/", "org.freedesktop.DBus.ObjectManager", "GetManagedObjects", nullptr,
        [this](const Failure& failure, sd_bus_message* reply) {
            const bool isLoaded = !failure && loop.Attempt([&] { tree.Load(reply); });
            knowledge = isLoaded ? Knowledge::Known : Knowledge::None;
            if (failure.name == SD_BUS_ERROR_NO_REPLY) {
                // No signal reports that the daemon replies again.
                loop.ResumeAfter(PauseWithoutReply);
            }
            for (const Task& task : std::exchange(waiting, {})) {
                loop.Attempt(task);
            }
            Changed();
        },
        AskLimit);
    knowledge = Knowledge::Asked;  // only after Call, which may throw
}

void Connection::Signalled(sd_bus_message* signal) {
    const bool isApplied = loop.Attempt([&] {
        const Path path = sd_bus_message_get_path(signal);
        Told(path, tree.Apply(signal, path));
    });
    if (!isApplied && knowledge == Knowledge::Known) {
        knowledge = Knowledge::None;  // the tree may be outdated
    }
    loop.Attempt([this] { Changed(); });
}

void Connection::Lost(bool daemonEnded) {
    // In the state Asked, a call is pending. Its reply or failure will set the next state.
    if (knowledge == Knowledge::Known) {
        knowledge = Knowledge::None;
    }
    ++run;
    tree.Clear();
    Gone(daemonEnded);
    Changed();
}

// The loop also calls this after a failure, to continue the steps that the failure interrupted.
void Connection::Came() {
    if (knowledge == Knowledge::None && (!waiting.empty() || IsNeeded())) {
        Ask();
    } else {
        Changed();
    }
}

}  // namespace orv::bluez
