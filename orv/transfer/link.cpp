#include "orv/transfer/link.h"

#include <chrono>

#include "orv/address.h"
#include "orv/library_options.h"
#include "orv/scan/search.h"
#include "orv/terminal/step.h"
#include "orv/terminal/terminal.h"

namespace orv {

namespace {

constexpr auto LibraryTimeout = std::chrono::milliseconds(2000);
// Maximum durations of the library's functions.
constexpr int ConnectSeconds = 12;
constexpr int DisconnectSeconds = 2;

Problem LinkLost(BluetoothAddress address) {
    return {ExitStatus::NoLink, "the link to " + AddressText(address) +
                                    " was lost. Check that the device is switched on and in range "
                                    "(orv scan), then connect again"};
}

Problem NotConnected(BluetoothAddress address, const std::string& why) {
    return {ExitStatus::NoLink,
            "cannot connect to " + AddressText(address) + ": " + why +
                ". Check that it is switched on, in range (orv scan) and not connected to another "
                "program or machine. With --log, orv log explain names the step that failed; more "
                "causes: docs/troubleshooting.md"};
}

}  // namespace

Link::Link(Library& loaded, BluetoothAddress device) : library(loaded), address(device) {
    RequireBluetooth(library);
    const auto begin = std::chrono::steady_clock::now();
    if (Connect()) {
        return;
    }
    if (std::chrono::steady_clock::now() - begin >= LibraryTimeout) {
        throw NotConnected(address, "the device or the system did not answer within 2 s");
    }
    fprintf(stderr,
            "orv: %s was rejected at once, as the system rejects a device that it has never heard. "
            "Scanning for it, %d s at most\n",
            AddressText(address).c_str(), SearchSeconds);
    const auto heard = SearchDevice(library, address);
    // Connects even if `heard` is empty: a device that was just disconnected may not advertise yet.
    if (!Connect()) {
        throw NotConnected(address, heard ? "it was heard at " + std::to_string(heard->rssi) +
                                                " dBm, but the device or the system rejected it"
                                          : "it was rejected, and not heard in " +
                                                std::to_string(SearchSeconds) + " s");
    }
}

Link::~Link() {
    Disconnect();
}

bool Link::Connect() {
    ResultCode result = ORV_FAILED;
    if (!terminal::IsInterrupted()) {
        terminal::Await("connecting to " + AddressText(address), ConnectSeconds,
                        [&] { result = library.Connect(address); });
    }
    if (terminal::IsInterrupted()) {
        if (result != ORV_FAILED) {
            Disconnect();
        }
        throw Problem(ExitStatus::Stopped, std::string("stopped by ") + terminal::Interruption() +
                                               " while connecting to " + AddressText(address) +
                                               ": nothing was sent");
    }
    return result != ORV_FAILED;
}

void Link::Disconnect() {
    terminal::Await("disconnecting from " + AddressText(address), DisconnectSeconds,
                    [&] { library.Disconnect(address); });
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
