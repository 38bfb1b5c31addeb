#include "runtimes/objects/watcher.h"

namespace orv::objects {

namespace {

Class watcherClass("BluetoothLEAdvertisementWatcher");
Member putScanningModeMember(watcherClass.name, "put_ScanningMode");
Member startMember(watcherClass.name, "Start");
Member stopMember(watcherClass.name, "Stop");
Member addReceivedMember(watcherClass.name, "add_Received");

}  // namespace

WatcherObject::WatcherObject() : Object(watcherClass) {}

HRESULT WatcherObject::put_ScanningMode(BluetoothLEScanningMode value) {
    return Call(putScanningModeMember, Argument::Number(static_cast<UINT64>(value)), [&] {
        SetMode(value);
        return S_OK;
    });
}

HRESULT WatcherObject::Start() {
    return Call(startMember, [&] {
        Switch(true);
        return S_OK;
    });
}

HRESULT WatcherObject::Stop() {
    return Call(stopMember, [&] {
        Switch(false);
        return S_OK;
    });
}

HRESULT WatcherObject::add_Received(ReceivedHandler* handler, EventRegistrationToken* token) {
    return Call(addReceivedMember, [&] {
        return objects::AddHandler(handler, token,
                                   [&](auto taken) { return AddHandler(std::move(taken)); });
    });
}

}  // namespace orv::objects
