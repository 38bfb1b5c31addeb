// The OrvWorld_ functions that report the library's calls, or cause calls to fail or hang.
#include <algorithm>
#include <cstring>

#include "runtimes/simulated/exports/control.h"

using namespace orv;
using namespace orv::simulated;

namespace {

// Copies as much of the text as fits, with a terminating zero. Returns the full length.
INT32 CopyText(const std::string& text, char* target, INT32 size) {
    if (target != nullptr && size > 0) {
        const std::size_t copied = std::min(text.size(), static_cast<std::size_t>(size) - 1);
        std::memcpy(target, text.data(), copied);
        target[copied] = '\0';
    }
    return static_cast<INT32>(text.size());
}

INT32 Held(std::atomic<INT32> objects::Ledger::*count) {
    return Control(
        [&](World& world) -> INT32 { return (world.calls.CurrentLedger()->*count).load(); });
}

}  // namespace

int32_t OrvWorld_CallCount(const char* member) {
    return Control([&](World& world) { return Clipped(world.calls.CallCount(member)); });
}

int32_t OrvWorld_AwaitCalls(const char* member, int32_t count) {
    return Control([&](World& world) {
        const UINT64 wanted = count < 0 ? 0 : static_cast<UINT64>(count);
        return world.calls.AwaitCalls(member, wanted) ? 0 : NoSuchThing;
    });
}

int32_t OrvWorld_CallAt(int32_t index, char* text, int32_t size) {
    return Control([&](World& world) {
        std::string call;
        if (index < 0 || !world.calls.CallAt(static_cast<UINT64>(index), call)) {
            return NoSuchThing;
        }
        return CopyText(call, text, size);
    });
}

int32_t OrvWorld_UnexpectedCallCount(void) {
    return Control([](World& world) { return Clipped(world.calls.UnexpectedCallCount()); });
}

int32_t OrvWorld_UnexpectedCallAt(int32_t index, char* text, int32_t size) {
    return Control([&](World& world) {
        std::string call;
        if (index < 0 || !world.calls.UnexpectedCallAt(static_cast<std::size_t>(index), call)) {
            return NoSuchThing;
        }
        return CopyText(call, text, size);
    });
}

int32_t OrvWorld_WriteCount(uint64_t address) {
    return ControlDevice(address, [](World&, const Device& device) REQUIRES(worldMutex) {
        return Clipped(device->writes.size());
    });
}

int32_t OrvWorld_WriteAt(uint64_t address, int32_t index, uint8_t* data, int32_t size) {
    return ControlDevice(address, [&](World&, const Device& device) REQUIRES(worldMutex) {
        if (index < 0 || static_cast<std::size_t>(index) >= device->writes.size()) {
            return NoSuchThing;
        }
        const std::vector<BYTE>& write = device->writes[static_cast<std::size_t>(index)];
        if (data != nullptr && size > 0) {
            std::copy_n(write.begin(), std::min(write.size(), static_cast<std::size_t>(size)),
                        data);
        }
        return Clipped(write.size());
    });
}

int32_t OrvWorld_OpenObjects(uint64_t address) {
    return ControlDevice(address, [](World&, const Device& device) REQUIRES(worldMutex) -> INT32 {
        return device->openObjects.load();
    });
}

int32_t OrvWorld_HeldObjects(void) {
    return Held(&objects::Ledger::objects);
}

int32_t OrvWorld_HeldReferences(void) {
    return Held(&objects::Ledger::references);
}

int32_t OrvWorld_HeldHandlers(void) {
    return Held(&objects::Ledger::handlers);
}

int32_t OrvWorld_ImproperHandlers(void) {
    return Control([](World& world) { return Clipped(world.calls.ImproperHandlers()); });
}

int32_t OrvWorld_FailCall(int32_t n, int32_t code) {
    return Control([&](World& world) {
        return n < 0 ? NoSuchThing : Clipped(world.calls.FailCall(static_cast<UINT64>(n), code));
    });
}

int32_t OrvWorld_FailMember(const char* member, int32_t code) {
    return Control([&](World& world) {
        if (member == nullptr) {
            return NoSuchThing;
        }
        world.calls.FailMember(member, code);
        return 0;
    });
}

namespace {

INT32 SetHanging(const char* member, bool hang) {
    return Control([&](World& world) {
        if (member == nullptr) {
            return NoSuchThing;
        }
        world.calls.Hang(member, hang);
        return 0;
    });
}

}  // namespace

int32_t OrvWorld_Hang(const char* member) {
    return SetHanging(member, true);
}

int32_t OrvWorld_Release(const char* member) {
    return SetHanging(member, false);
}
