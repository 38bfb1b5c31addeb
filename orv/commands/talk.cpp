// orv talk: a terminal to a device.
#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <map>
#include <optional>

#include "orv/address.h"
#include "orv/commands/commands.h"
#include "orv/recording/recording.h"
#include "orv/talk/input.h"
#include "orv/talk/line_editor.h"
#include "orv/talk/screen.h"
#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"
#include "orv/transfer/link.h"

namespace orv {

namespace {

constexpr int PollMs = 20;
constexpr std::size_t MostAtOnce = 65536;

struct TalkOptions {
    std::string address;
    std::string lineEnd;
    std::size_t block = UsualBlock;
    double seconds = 1;
    bool hex = false;
    std::string record;
};

// Pairs of digits, with spaces wherever one likes. Nothing: it is something else.
std::optional<std::string> BytesOfHex(std::string_view text) {
    std::string digits;
    std::copy_if(text.begin(), text.end(), std::back_inserter(digits),
                 [](char letter) { return letter != ' ' && letter != '\t'; });
    const bool good = std::all_of(digits.begin(), digits.end(), [](char letter) {
        return std::isxdigit(static_cast<unsigned char>(letter));
    });
    if (!good || digits.size() % 2 != 0) {
        return std::nullopt;
    }
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

class Conversation {
  public:
    Conversation(Library& library, BluetoothAddress address, const TalkOptions& talkOptions,
                 TalkRecording& talkRecording)
        : options(talkOptions),
          recording(talkRecording),
          interactive(terminal::IsInput() && terminal::IsOutput()),
          link(library, address),
          screen(talkOptions.hex, interactive) {
        if (interactive) {
            raw.emplace();
        }
    }

    // Until the input ends or Ctrl-C; where nobody types, a little longer, for the last answers.
    Counters Run() {
        using namespace std::chrono;
        std::optional<steady_clock::time_point> inputEnd;
        const auto isOver = [&] {
            return inputEnd && (interactive || steady_clock::now() - *inputEnd >=
                                                   duration<double>(options.seconds));
        };
        while (!isOver() && !terminal::IsInterrupted()) {
            Receive();
            if (!inputEnd && TakeInput()) {
                inputEnd = steady_clock::now();
            }
            screen.ShowTyped(counters, editor.Text());
            terminal::Pause(PollMs);
        }
        Receive();
        return counters;
    }

  private:
    // True: the input has ended, and all of it was sent.
    bool TakeInput() {
        bool ended = false;
        const std::string bytes = input.Take(ended);
        for (const std::string& line : interactive ? editor.Take(bytes) : TakeLines(bytes, ended)) {
            Send(line);
        }
        return ended || editor.HasEnded();
    }

    // The lines of a pipe, which are sent as they are, control characters included.
    std::vector<std::string> TakeLines(const std::string& bytes, bool ended) {
        std::vector<std::string> lines;
        unfinished += bytes;
        for (std::size_t end; (end = unfinished.find('\n')) != std::string::npos;) {
            lines.push_back(unfinished.substr(0, end));
            unfinished.erase(0, end + 1);
        }
        if (ended && !unfinished.empty()) {
            lines.push_back(std::exchange(unfinished, {}));
        }
        return lines;
    }

    void Send(const std::string& line) {
        const auto bytes = options.hex ? BytesOfHex(line) : line + options.lineEnd;
        if (!bytes) {
            screen.ShowNote("not sent: that is not hexadecimal, such as 48 65 6C");
            ++counters.refused;
            return;
        }
        for (std::string_view rest = *bytes; !rest.empty() && !terminal::IsInterrupted();) {
            const std::string_view block = rest.substr(0, options.block);
            screen.ShowSent(block);
            if (link.Send(block)) {
                counters.sent += block.size();
                ++counters.blocks;
            } else {
                ++counters.unconfirmed;
                screen.ShowNote("not confirmed: it may have arrived, or not");
            }
            rest.remove_prefix(block.size());
            Receive();
        }
    }

    void Receive() {
        const std::string bytes = link.Receive(MostAtOnce);
        counters.received += bytes.size();
        recording.Add(bytes);
        screen.ShowReceived(bytes);
    }

    const TalkOptions& options;
    TalkRecording& recording;
    const bool interactive;
    Link link;
    Screen screen;
    std::optional<terminal::RawInput> raw;
    Input input;
    LineEditor editor;
    std::string unfinished;  // of a pipe: a line whose end has not come yet
    Counters counters;
};

void Talk(const SessionOptions& session, const TalkOptions& options) {
    const BluetoothAddress address = AddressOf(options.address);
    std::optional<RecordingFile> file;
    if (!options.record.empty()) {
        file.emplace(options.record);
    }
    Library library = OpenLibrary(session);
    terminal::CatchInterrupts();
    TalkRecording recording(address);
    Counters counters;
    {
        Conversation conversation(library, address, options, recording);
        counters = conversation.Run();
        if (file) {
            file->Write(
                recording.Scenario());  // before the link is closed, which may not come back
        }
    }
    printf("sent %s in %s, received %s\n", Counted(counters.sent, "byte").c_str(),
           Counted(counters.blocks, "block").c_str(), Counted(counters.received, "byte").c_str());
    if (counters.unconfirmed > 0) {
        throw Problem(ExitStatus::Stopped, Counted(counters.unconfirmed, "block") +
                                               " not confirmed; what was in them may have arrived");
    }
    if (counters.refused > 0) {
        throw Problem(ExitStatus::BadUsage, Counted(counters.refused, "line") +
                                                " not sent: not hexadecimal, such as 48 65 6C");
    }
}

}  // namespace

void AddTalkCommand(CLI::App& app, SessionOptions& session) {
    const auto options = std::make_shared<TalkOptions>();
    CLI::App* command = app.add_subcommand(
        "talk", "Sends each line that is typed, and shows what the device sends, until Ctrl-D.");
    command->add_option("ADDRESS", options->address, AddressForms)->required();
    command->add_flag("--hex", options->hex,
                      "Lines are typed, and bytes are shown, as hexadecimal digits: 48 65 6C");
    const std::map<std::string, std::string> ends{
        {"none", ""}, {"lf", "\n"}, {"cr", "\r"}, {"crlf", "\r\n"}};
    command
        ->add_option("--end", options->lineEnd,
                     "What is sent for Enter: none (unless told otherwise), lf, cr or crlf; not "
                     "with --hex")
        ->transform(CLI::Transformer(ends))
        ->check(CLI::IsMember({"", "\n", "\r", "\r\n"}))
        ->option_text("none|lf|cr|crlf");
    command
        ->add_option("--seconds", options->seconds,
                     "How long answers are still awaited when the lines come from a pipe and have "
                     "ended; otherwise 1")
        ->check(CLI::Range(0.0, 1e9))
        ->type_name("N");
    AddBlockOption(*command, options->block);
    command
        ->add_option("--record", options->record,
                     "Writes what the device sent as a scenario, to be played by --simulated")
        ->type_name("FILE");
    AddSessionOptions(*command, session);
    command->footer(HelpFooter(
        "orv --simulated talk A0:B1:C2:D3:E4:F5",
        {ExitStatus::Done, ExitStatus::NoBluetooth, ExitStatus::BadUsage, ExitStatus::NoLibrary,
         ExitStatus::NoLink, ExitStatus::Stopped, ExitStatus::FileFailed}));
    command->callback([&session, options] { Talk(session, *options); });
}

}  // namespace orv
