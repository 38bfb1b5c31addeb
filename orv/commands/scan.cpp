// orv scan: the devices that are heard, once or as a live table, for people and for programs.
#include <chrono>
#include <cstdio>
#include <cstring>
#include <optional>

#include "orv/address.h"
#include "orv/commands/commands.h"
#include "orv/recording/recording.h"
#include "orv/scan/device_text.h"
#include "orv/scan/scanner.h"
#include "orv/scan/table.h"
#include "orv/terminal/live.h"
#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"

namespace orv {

namespace {

constexpr int PollMs = 50;
constexpr int DrawMs = 250;
constexpr int ReportMs = 1000;
constexpr double SecondsOnce = 3;
constexpr std::size_t AllColumns = 1000;

struct ScanOptions {
    std::optional<double> seconds;
    bool watch = false;
    bool json = false;
    bool csv = false;
    std::string record;
};

std::string Found(std::size_t count) {
    return count == 0 ? "no device heard" : Counted(count, "device");
}

std::string Joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + '\n';
    }
    return text;
}

// What is shown while the scan runs, and at its end.
class View {
  public:
    virtual ~View() = default;
    virtual void Show(const Devices& devices, double second) = 0;
    virtual void End(const Devices& devices) = 0;
};

// A table on a terminal that is drawn again in its place.
class LiveTable : public View {
  public:
    void Show(const Devices& devices, double second) override {
        if (second * 1000 < nextMs) {
            return;
        }
        nextMs = second * 1000 + DrawMs;
        history.Add(devices);
        Draw(devices, "Ctrl-C ends the scan");
    }
    void End(const Devices& devices) override { Draw(devices, "scan ended"); }

  private:
    void Draw(const Devices& devices, const char* state) {
        const terminal::Size size = terminal::SizeOf();
        std::vector<std::string> lines = TableOf(devices, size.columns, &history);
        std::string sum = Found(devices.size()) + "; " + state;
        // The head, the sum, and the row that the cursor is in.
        const std::size_t room = size.rows > 4 ? size.rows - 3 : 1;
        if (devices.size() > room) {
            lines.resize(room + 1);
            sum = std::to_string(devices.size() - room) + " more below; " + sum;
        }
        lines.push_back(Fitted(sum, size.columns));
        live.Draw(lines);
    }

    terminal::LiveLines live;
    SignalHistory history;
    double nextMs = 0;
};

// The same where nothing can be drawn again: each second a line for each device that has changed.
class Report : public View {
  public:
    void Show(const Devices& devices, double second) override {
        if (second * 1000 < nextMs) {
            return;
        }
        nextMs = second * 1000 + ReportMs;
        const std::vector<std::string> lines = TableOf(devices, AllColumns, nullptr);
        std::string text;
        for (std::size_t i = 0; i < devices.size(); ++i) {
            if (i < known.size() && memcmp(&known[i], &devices[i], sizeof devices[i]) == 0) {
                continue;
            }
            char stamp[32];
            snprintf(stamp, sizeof stamp, "%7.1f s  ", second);
            text += stamp + lines[i + 1] + '\n';
        }
        known = devices;
        terminal::Write(text);
    }
    void End(const Devices& devices) override {
        terminal::Write(Joined(TableOf(devices, AllColumns, nullptr)));
    }

  private:
    Devices known;
    double nextMs = 0;
};

// Only the end counts; on a terminal a line tells how far it is.
class Once : public View {
  public:
    explicit Once(const ScanOptions& scanOptions) : options(scanOptions) {
        if (terminal::IsOutput()) {
            live.emplace();
        }
    }
    void Show(const Devices& devices, double second) override {
        if (live) {
            char text[64];
            snprintf(text, sizeof text, "scanning, %.0f s: ", second);
            live->Draw({text + Found(devices.size())});
        }
    }
    void End(const Devices& devices) override {
        if (live) {
            live->Clear();
            live.reset();
        }
        const std::size_t columns = terminal::IsOutput() ? terminal::SizeOf().columns : AllColumns;
        terminal::Write(options.json  ? JsonOf(devices)
                        : options.csv ? CsvOf(devices)
                                      : Joined(TableOf(devices, columns, nullptr)) +
                                            Found(devices.size()) + '\n');
    }

  private:
    const ScanOptions& options;
    std::optional<terminal::LiveLines> live;
};

std::unique_ptr<View> MakeView(const ScanOptions& options) {
    if (!options.watch) {
        return std::make_unique<Once>(options);
    }
    if (terminal::IsOutput()) {
        return std::make_unique<LiveTable>();
    }
    return std::make_unique<Report>();
}

void Scan(const SessionOptions& session, const ScanOptions& options) {
    using namespace std::chrono;
    std::optional<RecordingFile> file;
    if (!options.record.empty()) {
        file.emplace(options.record);
    }
    Library library = OpenLibrary(session);
    RequireBluetooth(library);
    terminal::CatchInterrupts();
    const auto begin = steady_clock::now();
    const auto second = [&] { return duration<double>(steady_clock::now() - begin).count(); };
    const double last = options.seconds.value_or(options.watch ? 1e9 : SecondsOnce);

    ScanRecording recording;
    Scanner scanner(library);
    const std::unique_ptr<View> view = MakeView(options);
    while (second() < last && terminal::Pause(PollMs)) {
        const Devices devices = scanner.Heard();
        recording.Add(devices);
        view->Show(devices, second());
    }
    const Devices heard = scanner.Heard();
    recording.Add(heard);
    view->End(heard);
    if (file) {
        file->Write(recording.Scenario());
    }
    scanner.Stop();
}

}  // namespace

void AddScanCommand(CLI::App& app, SessionOptions& session) {
    const auto options = std::make_shared<ScanOptions>();
    CLI::App* command = app.add_subcommand("scan", "Lists the devices that are near.");
    command
        ->add_option("--seconds", options->seconds,
                     "How long to scan; otherwise 3, and with --watch until Ctrl-C")
        ->check(CLI::Range(0.001, 1e9))
        ->type_name("N");
    CLI::Option* watch = command->add_flag(
        "--watch", options->watch,
        "A table that is kept up to date; in a pipe, each second a line for each device that has "
        "changed, and the table at the end");
    CLI::Option* json = command->add_flag("--json", options->json, "The list as JSON");
    CLI::Option* csv = command->add_flag("--csv", options->csv, "The list as CSV");
    json->excludes(csv)->excludes(watch);
    csv->excludes(watch);
    command
        ->add_option("--record", options->record,
                     "Writes what was heard as a scenario, to be played by --simulated")
        ->type_name("FILE");
    AddSessionOptions(*command, session);
    command->footer(HelpFooter("orv --simulated scan --watch",
                               {ExitStatus::Done, ExitStatus::NoBluetooth, ExitStatus::BadUsage,
                                ExitStatus::NoLibrary, ExitStatus::FileFailed}));
    command->callback([&session, options] { Scan(session, *options); });
}

}  // namespace orv
