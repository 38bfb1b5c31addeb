// Received packets, and the objects through which a watcher's handler reads them.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "runtimes/objects/object.h"
#include "runtimes/objects/stubs/advertisement.h"

namespace orv::objects {

struct PacketContent {
    std::optional<std::u16string> name;
    std::vector<std::vector<BYTE>> sections;
};

struct Packet {
    UINT64 address;
    INT16 signal;  // in dBm
    bool isScanResponse;
    PacketContent content;
};
using SharedPacket = std::shared_ptr<const Packet>;

using ReceivedArgs = Object<Stub<IBluetoothLEAdvertisementReceivedEventArgs>,
                            Stub<IBluetoothLEAdvertisementReceivedEventArgs2>>;

Ref<ReceivedArgs> MakeReceivedArgs(SharedPacket packet);

}  // namespace orv::objects
