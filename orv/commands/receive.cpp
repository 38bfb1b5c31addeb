// orv receive: what a device sends, into a file.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <optional>

#include "orv/address.h"
#include "orv/commands/commands.h"
#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"
#include "orv/transfer/link.h"
#include "orv/transfer/progress.h"

namespace orv {

namespace {

constexpr int PollMs = 20;
constexpr std::uint64_t MostAtOnce = 65536;

struct ReceiveOptions {
    std::string address;
    std::string output;
    std::optional<double> seconds;
    std::optional<std::uint64_t> bytes;
};

// Writes each piece to the disk before the next is taken.
class OutputFile {
  public:
    explicit OutputFile(const std::string& fileName)
        : name(Printable(fileName)), file(PathOf(fileName), std::ios::binary) {
        Check(0);
    }
    void Append(const std::string& piece, std::uint64_t before) {
        file.write(piece.data(), static_cast<std::streamsize>(piece.size())).flush();
        Check(before);
    }

  private:
    void Check(std::uint64_t before) const {
        if (!file) {
            throw Problem(ExitStatus::FileFailed,
                          name + " cannot be written" +
                              (before > 0 ? " behind its first " + std::to_string(before) + " bytes"
                                          : std::string()) +
                              ": is there room, and may you write there?");
        }
    }
    std::string name;
    std::ofstream file;
};

void Receive(const SessionOptions& session, const ReceiveOptions& options) {
    using namespace std::chrono;
    const BluetoothAddress address = AddressOf(options.address);
    Library library = OpenLibrary(session);
    terminal::CatchInterrupts();
    Link link(library, address);
    OutputFile file(options.output);

    Progress progress("receiving", options.bytes.value_or(0));
    const auto begin = steady_clock::now();
    const auto isOver = [&] {
        return options.seconds && steady_clock::now() - begin >= duration<double>(*options.seconds);
    };
    std::uint64_t received = 0;
    const std::uint64_t wanted = options.bytes.value_or(UINT64_MAX);
    while (received < wanted) {
        const bool last = isOver() || terminal::IsInterrupted();  // what is there is still taken
        const std::string piece = link.Receive(std::min(wanted - received, MostAtOnce));
        if (!piece.empty()) {
            file.Append(piece, received);
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
    const std::string speed = progress.End(received);
    printf("received %s from %s %s\n", Counted(received, "byte").c_str(),
           AddressText(address).c_str(), speed.c_str());
    if (options.bytes && received < wanted) {
        throw Problem(ExitStatus::Stopped,
                      std::to_string(wanted - received) + " of " + std::to_string(wanted) +
                          " bytes are missing; those that came are in the file");
    }
}

}  // namespace

void AddReceiveCommand(CLI::App& app, SessionOptions& session) {
    const auto options = std::make_shared<ReceiveOptions>();
    CLI::App* command =
        app.add_subcommand("receive", "Writes what a device sends to a file, until Ctrl-C.");
    command->add_option("ADDRESS", options->address, AddressForms)->required();
    command->add_option("--output", options->output, "The file, which is written anew")
        ->required()
        ->type_name("FILE");
    command->add_option("--seconds", options->seconds, "Ends after that long")
        ->check(CLI::Range(0.001, 1e9))
        ->type_name("N");
    command
        ->add_option("--bytes", options->bytes,
                     "Ends when so many have arrived; fewer at the end are a failure")
        ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{1} << 62))
        ->type_name("N");
    AddSessionOptions(*command, session);
    command->footer(HelpFooter(
        "orv receive A0:B1:C2:D3:E4:F5 --output answer.bin --bytes 4096 --seconds 30",
        {ExitStatus::Done, ExitStatus::NoBluetooth, ExitStatus::BadUsage, ExitStatus::NoLibrary,
         ExitStatus::NoLink, ExitStatus::Stopped, ExitStatus::FileFailed}));
    command->callback([&session, options] { Receive(session, *options); });
}

}  // namespace orv
