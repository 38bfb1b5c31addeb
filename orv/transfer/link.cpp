#include "orv/transfer/link.h"

#include "orv/address.h"
#include "orv/session.h"

namespace orv {

namespace {

Problem LinkLost(BluetoothAddress address) {
    return {ExitStatus::NoLink, "the link to " + AddressText(address) + " is gone"};
}

}  // namespace

Link::Link(Library& loaded, BluetoothAddress device) : library(loaded), address(device) {
    RequireBluetooth(library);
    if (library.Connect(address) == ORV_FAILED) {
        throw Problem(ExitStatus::NoLink,
                      AddressText(address) +
                          " takes no link: is it near (orv scan), and not linked to another "
                          "program? With --log, orv log explain tells the step that failed");
    }
}

Link::~Link() {
    library.Disconnect(address);
}

bool Link::Send(std::string_view block) {
    return library.Send(address, block) != ORV_FAILED;
}

std::string Link::Receive(std::size_t most) {
    std::string bytes;
    if (library.Receive(address, most, bytes) == ORV_FAILED) {
        throw LinkLost(address);
    }
    return bytes;
}

std::size_t Link::Flush() {
    const ResultCode count = library.Flush(address);
    if (count == ORV_FAILED) {
        throw LinkLost(address);
    }
    return static_cast<std::size_t>(count);
}

}  // namespace orv
