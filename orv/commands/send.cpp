// orv send: a file to a device, block by block.
#include <algorithm>
#include <cstdio>
#include <fstream>

#include "orv/address.h"
#include "orv/commands/commands.h"
#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"
#include "orv/transfer/link.h"
#include "orv/transfer/progress.h"

namespace orv {

namespace {

struct SendOptions {
    std::string address;
    std::string file;
    std::size_t block = UsualBlock;
};

std::string ReadFile(const std::string& name) {
    // A folder can be opened on some systems, but not read.
    std::error_code ignored;
    std::ifstream file;
    if (!std::filesystem::is_directory(PathOf(name), ignored)) {
        file.open(PathOf(name), std::ios::binary);
    }
    std::string bytes{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad()) {
        throw Problem(ExitStatus::FileFailed,
                      Printable(name) + " cannot be read: is it a file, and may you read it?");
    }
    return bytes;
}

// What is known of each byte when a transfer ends early.
std::string Fate(std::size_t total, std::size_t confirmed, std::size_t uncertain) {
    std::string text = "the first " + Counted(confirmed, "byte") + " were confirmed";
    if (uncertain > 0) {
        text += ", the " + std::to_string(uncertain) + " after them may have arrived";
    }
    return text + ", the last " + std::to_string(total - confirmed - uncertain) +
           " were not sent. To go on, find out what the device has: a block that is sent twice may "
           "arrive twice";
}

void Send(const SessionOptions& session, const SendOptions& options) {
    const BluetoothAddress address = AddressOf(options.address);
    const std::string bytes = ReadFile(options.file);
    Library library = OpenLibrary(session);
    terminal::CatchInterrupts();
    Link link(library, address);

    Progress progress("sending", bytes.size());
    std::size_t confirmed = 0;
    std::size_t answered = 0;
    while (confirmed < bytes.size()) {
        const auto block = std::string_view(bytes).substr(confirmed, options.block);
        const bool interrupted = terminal::IsInterrupted();
        if (interrupted || !link.Send(block)) {
            progress.End(confirmed);
            throw Problem(ExitStatus::Stopped,
                          (interrupted ? "stopped by Ctrl-C: " : "a block was not confirmed: ") +
                              Fate(bytes.size(), confirmed, interrupted ? 0 : block.size()));
        }
        confirmed += block.size();
        answered += link.Flush();  // or it would be kept in memory, for nobody
        progress.Show(confirmed);
    }
    const std::string speed = progress.End(confirmed);
    printf("sent %s to %s %s\n", Counted(confirmed, "byte").c_str(), AddressText(address).c_str(),
           speed.c_str());
    if (answered > 0) {
        printf("the device sent %s meanwhile, which were thrown away\n",
               Counted(answered, "byte").c_str());
    }
}

}  // namespace

void AddBlockOption(CLI::App& command, std::size_t& block) {
    command
        .add_option("--block", block,
                    "The most bytes that are sent at once, 1 to 512; otherwise 244, which a link "
                    "with large packets takes")
        ->check(CLI::Range(1, 512))
        ->type_name("N");
}

void AddSendCommand(CLI::App& app, SessionOptions& session) {
    const auto options = std::make_shared<SendOptions>();
    CLI::App* command = app.add_subcommand("send", "Sends a file to a device.");
    command->add_option("ADDRESS", options->address, AddressForms)->required();
    command->add_option("FILE", options->file, "What to send")->required();
    AddBlockOption(*command, options->block);
    AddSessionOptions(*command, session);
    command->footer(HelpFooter(
        "orv send A0:B1:C2:D3:E4:F5 firmware.bin",
        {ExitStatus::Done, ExitStatus::NoBluetooth, ExitStatus::BadUsage, ExitStatus::NoLibrary,
         ExitStatus::NoLink, ExitStatus::Stopped, ExitStatus::FileFailed}));
    command->callback([&session, options] { Send(session, *options); });
}

}  // namespace orv
