#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>

#include "orv/address.h"
#include "orv/commands/commands.h"
#include "orv/output_file.h"
#include "orv/scan/search.h"
#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"
#include "orv/transfer/link.h"
#include "orv/transfer/progress.h"

namespace orv {

namespace {

constexpr int PollMs = 20;
constexpr std::uint64_t MostAtOnce = 65536;

struct ReceiveOptions {
    std::string device;
    std::string output;
    std::optional<double> seconds;
    std::optional<std::uint64_t> bytes;
};

// Flushes each piece to the file before receiving the next.
std::uint64_t ReceiveInto(OutputFile& file, Link& link, const ReceiveOptions& options,
                          Progress& progress) {
    using namespace std::chrono;
    const auto begin = steady_clock::now();
    const auto isOver = [&] {
        return options.seconds && steady_clock::now() - begin >= duration<double>(*options.seconds);
    };
    std::uint64_t received = 0;
    const std::uint64_t wanted = options.bytes.value_or(UINT64_MAX);
    while (received < wanted) {
        const bool last = isOver() || terminal::IsInterrupted();  // receives once more, then ends
        const std::string piece = link.Receive(std::min(wanted - received, MostAtOnce));
        if (!piece.empty()) {
            file.Write(piece);
            file.Flush();
            received += piece.size();
        }
        progress.Show(received);
        if (last) {
            break;
        }
        if (piece.empty()) {
            terminal::Pause(PollMs);
        }
    }
    return received;
}

void ReceiveFrom(Link& link, OutputFile& file, const ReceiveOptions& options) {
    Progress progress("receiving", options.bytes.value_or(0));
    std::uint64_t received = 0;
    try {
        received = ReceiveInto(file, link, options, progress);
    } catch (const Problem&) {
        file.Commit();  // keeps the bytes that arrived before the link was lost
        throw;
    }
    file.Commit();
    const std::string speed = progress.End(received);
    printf("received %s from %s %s\n", Counted(received, "byte").c_str(),
           AddressText(link.Address()).c_str(), speed.c_str());
    const std::uint64_t wanted = options.bytes.value_or(received);
    if (received < wanted) {
        throw Problem(ExitStatus::Stopped,
                      std::to_string(wanted - received) + " of " + std::to_string(wanted) +
                          " bytes are missing; the file contains the bytes that arrived");
    }
}

void Receive(const LibraryOptions& libraryOptions, const ReceiveOptions& options) {
    CheckDevices({options.device});
    OutputFile file(options.output);
    Library library = OpenLibrary(libraryOptions);
    terminal::CatchInterrupts();
    WithLink(library, FindDevice(library, options.device),
             [&](Link& link) { ReceiveFrom(link, file, options); });
}

}  // namespace

void AddReceiveCommand(Command program, LibraryOptions& libraryOptions) {
    const auto options = std::make_shared<ReceiveOptions>();
    Command command =
        program.AddCommand("receive", "Writes what a device sends to a file, until Ctrl-C.");
    command.AddText("DEVICE", options->device, DeviceForms).Required();
    command
        .AddText("-o,--output", options->output, "The file to write; it replaces an existing file")
        .Required()
        .Named("FILE");
    command.AddNumber("--seconds", options->seconds, 0.001, 1e9, "Ends after this many seconds")
        .Named("N");
    command
        .AddNumber("--bytes", options->bytes, 1, std::uint64_t{1} << 62,
                   "Ends when this many bytes have arrived; fewer are an error")
        .Named("N");
    AddLibraryOptions(command, libraryOptions);
    command.AddFooter(
        "orv receive A0:B1:C2:D3:E4:F5 --output answer.bin --bytes 4096 --seconds 30",
        {ExitStatus::Done, ExitStatus::NoBluetooth, ExitStatus::BadUsage, ExitStatus::NoLibrary,
         ExitStatus::NoLink, ExitStatus::Stopped, ExitStatus::FileFailed});
    command.Does([&libraryOptions, options] { Receive(libraryOptions, *options); });
}

}  // namespace orv
