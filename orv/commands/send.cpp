#include <cstdio>
#include <optional>

#include "orv/address.h"
#include "orv/commands/commands.h"
#include "orv/scan/search.h"
#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"
#include "orv/transfer/link.h"
#include "orv/transfer/progress.h"
#include "orv/transfer/source.h"

namespace orv {

namespace {

struct SendOptions {
    std::string device;
    std::string file;
    std::size_t block = UsualBlock;
};

std::string Fate(std::optional<std::uint64_t> total, std::uint64_t written,
                 std::uint64_t uncertain) {
    std::string text = Counted(written, "byte") + " written";
    if (uncertain > 0) {
        text += ", the next " + std::to_string(uncertain) + " may have arrived";
    }
    if (!total || *total < written + uncertain) {  // total unknown: a pipe or a growing file
        text += ", the rest not sent";
    } else if (*total > written + uncertain) {
        text += ", the last " + std::to_string(*total - written - uncertain) + " not sent";
    }
    return text +
           ". Before you continue, ask the device what it has received: a block that is sent twice "
           "may arrive twice";
}

struct Sent {
    std::uint64_t written = 0;   // bytes that the system confirmed
    std::uint64_t answered = 0;  // bytes that the device sent during the transfer
};

Sent SendAll(Link& link, Source& source, std::size_t most, Progress& progress) {
    Sent sent;
    for (std::string_view block; !(block = source.Next(most)).empty();) {
        if (!link.Send(block)) {
            progress.End(sent.written);
            throw Problem(ExitStatus::Stopped, "the system did not finish the write of a block: " +
                                                   Fate(source.Size(), sent.written, block.size()));
        }
        sent.written += block.size();
        sent.answered += link.Flush();  // keeps the library's receive queue short
        progress.Show(sent.written);
    }
    if (terminal::IsInterrupted()) {
        progress.End(sent.written);
        throw Problem(ExitStatus::Stopped, std::string("stopped by ") + terminal::Interruption() +
                                               ": " + Fate(source.Size(), sent.written, 0));
    }
    return sent;
}

void Send(const LibraryOptions& libraryOptions, const SendOptions& options) {
    CheckDevices({options.device});
    Source source(options.file);
    Library library = OpenLibrary(libraryOptions);
    terminal::CatchInterrupts();
    const BluetoothAddress address = FindDevice(library, options.device);
    WithLink(library, address, [&](Link& link) {
        Progress progress("sending", source.Size().value_or(0));
        const Sent sent = SendAll(link, source, options.block, progress);
        const std::string speed = progress.End(sent.written);
        printf("sent %s to %s %s, unconfirmed by the device\n",
               Counted(sent.written, "byte").c_str(), AddressText(address).c_str(), speed.c_str());
        if (sent.answered > 0) {
            printf("the device sent %s meanwhile, which were discarded\n",
                   Counted(sent.answered, "byte").c_str());
        }
        printf(
            "The system also finishes writes that do not arrive. Only the device can confirm them: "
            "\"orv talk\" shows its echo, \"orv receive\" reads its answer.\n");
    });
}

}  // namespace

void AddBlockOption(Command command, std::size_t& block) {
    command
        .AddNumber("--block", block, 1, 512,
                   "The largest block that is sent at once, in bytes; default 20, which every link "
                   "accepts. A larger block that the link does not accept is lost without an error")
        .Named("N");
}

void AddSendCommand(Command program, LibraryOptions& libraryOptions) {
    const auto options = std::make_shared<SendOptions>();
    Command command = program.AddCommand("send", "Sends a file to a device.");
    command.AddText("DEVICE", options->device, DeviceForms).Required();
    command
        .AddText("FILE", options->file, "What to send: a file, a pipe, or - for the standard input")
        .Required();
    AddBlockOption(command, options->block);
    AddLibraryOptions(command, libraryOptions);
    command.AddFooter(
        "orv send A0:B1:C2:D3:E4:F5 firmware.bin",
        {ExitStatus::Done, ExitStatus::NoBluetooth, ExitStatus::BadUsage, ExitStatus::NoLibrary,
         ExitStatus::NoLink, ExitStatus::Stopped, ExitStatus::FileFailed});
    command.Does([&libraryOptions, options] { Send(libraryOptions, *options); });
}

}  // namespace orv
