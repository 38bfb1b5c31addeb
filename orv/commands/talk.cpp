#include <cstdio>
#include <optional>

#include "orv/commands/commands.h"
#include "orv/recording/recording.h"
#include "orv/scan/search.h"
#include "orv/talk/conversation.h"
#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"

namespace orv {

namespace {

struct TalkOptions {
    std::string device;
    std::string record;
    ConversationOptions conversation{.block = UsualBlock, .lineEnd = {}};
};

void Summarize(const Counters& counters) {
    printf("sent %s in %s, received %s\n", Counted(counters.sent, "byte").c_str(),
           Counted(counters.blocks, "block").c_str(), Counted(counters.received, "byte").c_str());
    if (counters.unconfirmed > 0) {
        throw Problem(ExitStatus::Stopped, "the system did not finish the write of " +
                                               Counted(counters.unconfirmed, "block") +
                                               ", which may have arrived");
    }
    if (counters.refused > 0) {
        throw Problem(ExitStatus::BadUsage, Counted(counters.refused, "line") +
                                                " not sent, for the reasons that were printed");
    }
}

void Talk(const LibraryOptions& libraryOptions, const TalkOptions& options) {
    CheckDevices({options.device});
    RecordingFile file(options.record);
    Library library = OpenLibrary(libraryOptions);
    terminal::CatchInterrupts();
    const BluetoothAddress address = FindDevice(library, options.device);
    WithLink(library, address, [&](Link& link) {
        TalkRecording recording(file, address);
        const Counters counters = Conversation(link, options.conversation, recording).Run();
        recording.End();
        Summarize(counters);
    });
}

}  // namespace

void AddTalkCommand(Command program, LibraryOptions& libraryOptions) {
    const auto options = std::make_shared<TalkOptions>();
    Command command = program.AddCommand(
        "talk", "Sends typed lines and shows what the device sends, until Ctrl-D.");
    command.AddText("DEVICE", options->device, DeviceForms).Required();
    Option hex = command.AddFlag("--hex", options->conversation.hex,
                                 "Reads lines and shows bytes as hexadecimal digits: 48 65 6C");
    const Option end =
        command.AddChoice<std::string>("--end", options->conversation.lineEnd,
                                       {{"none", ""}, {"lf", "\n"}, {"cr", "\r"}, {"crlf", "\r\n"}},
                                       "The line end that is sent after each line; default none");
    hex.Excludes(end);
    command
        .AddNumber("--seconds", options->conversation.seconds, 0, 1e9,
                   "How many seconds to wait for answers after the last line of a pipe; default 1")
        .Named("N");
    AddBlockOption(command, options->conversation.block);
    command
        .AddText("--record", options->record,
                 "Writes what the device sent as a scenario, which --simulated plays")
        .Named("FILE");
    AddLibraryOptions(command, libraryOptions);
    command.AddFooter(
        "orv --simulated talk A0:B1:C2:D3:E4:F5",
        {ExitStatus::Done, ExitStatus::NoBluetooth, ExitStatus::BadUsage, ExitStatus::NoLibrary,
         ExitStatus::NoLink, ExitStatus::Stopped, ExitStatus::FileFailed});
    command.Does([&libraryOptions, options] { Talk(libraryOptions, *options); });
}

}  // namespace orv
