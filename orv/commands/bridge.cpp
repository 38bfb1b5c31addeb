#include "orv/commands/bridge.h"

#include <algorithm>

#include "orv/bridge/port.h"
#include "orv/scan/search.h"
#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"

namespace orv {

const std::vector<ExitStatus> BridgeStatuses{
    ExitStatus::Done,   ExitStatus::NoBluetooth, ExitStatus::BadUsage,  ExitStatus::NoLibrary,
    ExitStatus::NoLink, ExitStatus::Stopped,     ExitStatus::FileFailed};

namespace {

using namespace bridge;

struct BridgeOptions {
    std::vector<std::string> devices;
    std::vector<std::string> places;
    LinkOptions link{.block = UsualBlock, .isSearched = true};
    bool isEager = false;
};

using Open = std::unique_ptr<Entrance> (*)(const std::string& place);

// Opens the sockets or serial ports first, so that a wrong port or path is reported at once.
void Bridge(const LibraryOptions& libraryOptions, const BridgeOptions& options, const char* option,
            Open open) {
    CheckDevices(options.devices);
    const std::size_t count = options.devices.size();
    if (!options.places.empty() && options.places.size() != count) {
        throw Problem(ExitStatus::BadUsage, Counted(count, "device") + " and " +
                                                Counted(options.places.size(), "place") +
                                                ": give " + option + " once for each device");
    }
    std::vector<std::unique_ptr<Entrance>> entrances;
    for (std::size_t i = 0; i < count; ++i) {
        entrances.push_back(open(options.places.empty() ? "" : options.places[i]));
    }
    Library library = OpenLibrary(libraryOptions);
    RequireBluetooth(library);
    terminal::CatchInterrupts();
    const std::vector<BluetoothAddress> addresses = FindDevices(library, options.devices);
    LinkPool links(library, options.link);
    std::vector<Port> ports;
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        ports.emplace_back(std::move(entrances[i]), links.Add(addresses[i]), options.isEager);
    }
    Serve(ports);
}

void AddCommonOptions(Command command, LibraryOptions& libraryOptions, BridgeOptions& options) {
    command.AddTexts("DEVICE", options.devices, DeviceForms).Required();
    command.AddFlag("--eager", options.isEager,
                    "Opens the links at once and keeps them open; by default a link is open while "
                    "a program uses it, and 5 s longer");
    AddLinkOptions(command, options.link);
    AddLibraryOptions(command, libraryOptions);
}

void AddTcpCommand(Command bridge, LibraryOptions& libraryOptions) {
    const auto options = std::make_shared<BridgeOptions>();
    Command command =
        bridge.AddCommand("tcp", "Serves each device's bytes on a socket, until Ctrl-C.");
    AddCommonOptions(command, libraryOptions, *options);
    command
        .AddTexts("--listen", options->places,
                  "HOST:PORT, or PORT alone on 127.0.0.1; once for each device")
        .Required()
        .Named("HOST:PORT");
    command.AddFooter("orv --simulated bridge tcp A0:B1:C2:D3:E4:F5 --listen 127.0.0.1:7000",
                      BridgeStatuses);
    command.Does(
        [&libraryOptions, options] { Bridge(libraryOptions, *options, "--listen", Listen); });
}

void AddPtyCommand(Command bridge, LibraryOptions& libraryOptions) {
    const auto options = std::make_shared<BridgeOptions>();
    Command command = bridge.AddCommand(
        "pty", "Serves each device's bytes on a pseudo-terminal (Linux), until Ctrl-C.");
    AddCommonOptions(command, libraryOptions, *options);
    command
        .AddTexts("--link", options->places,
                  "The path of a symbolic link to the pseudo-terminal; once for each device")
        .Named("PATH");
    command.AddFooter("orv --simulated bridge pty A0:B1:C2:D3:E4:F5 --link /tmp/orv-0042",
                      BridgeStatuses);
    command.Does(
        [&libraryOptions, options] { Bridge(libraryOptions, *options, "--link", OpenPty); });
}

}  // namespace

void AddLinkOptions(Command command, LinkOptions& options) {
    command
        .AddNumber("--probe", options.probeSeconds, 0, 86400,
                   "Tests an open link by an empty write after this many seconds without traffic; "
                   "default 15, 0 for never")
        .Named("SECONDS");
    AddBlockOption(command, options.block);
}

void AddBridgeCommand(Command program, LibraryOptions& libraryOptions) {
    Command bridge = program.AddGroup(
        "bridge", "Connects devices with programs that use a socket or a serial port.",
        "orv --simulated bridge tcp A0:B1:C2:D3:E4:F5 --listen 7000");
    AddTcpCommand(bridge, libraryOptions);
    AddPtyCommand(bridge, libraryOptions);
    AddBridgeMqttCommand(bridge, libraryOptions);
}

}  // namespace orv
