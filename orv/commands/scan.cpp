#include <chrono>
#include <optional>

#include "orv/commands/commands.h"
#include "orv/recording/recording.h"
#include "orv/scan/view.h"
#include "orv/terminal/terminal.h"

namespace orv {

namespace {

constexpr int PollMs = 50;
constexpr const char* Columns =
    "\nColumns:\n"
    "  signal, dBm   signal strength: about -40 beside the device, -100 where it is hardly heard\n"
    "  last heard    when the device's record last changed\n"
    "  0500, 1130    one byte each, as hexadecimal digits: service data of the device's scan\n"
    "                response under the keys 0x0500 and 0x1130. The device defines what it means\n"
    "  1118          the same under the key 0x1118: up to 16 bytes, without zeros at the end\n"
    "  -             no scan response has brought the value\n";
constexpr double RadioPollSeconds = 0.5;
constexpr double SecondsOnce = 3;

struct ScanOptions {
    std::optional<double> seconds;
    bool watch = false;
    bool json = false;
    bool csv = false;
    std::string record;
};

ScanFormat FormatOf(const ScanOptions& options) {
    return options.watch  ? ScanFormat::Watch
           : options.json ? ScanFormat::Json
           : options.csv  ? ScanFormat::Csv
                          : ScanFormat::Table;
}

// Checks twice a second whether a radio is on. Restarts the scan when the radio is on again.
class RadioWatch {
  public:
    RadioWatch(Library& loaded, Scanner& watched) : library(loaded), scanner(watched) {}

    std::optional<double> OffSince(double second) {
        if (second >= next) {
            next = second + RadioPollSeconds;
            if (library.BluetoothAvailable() == ORV_FAILED) {
                offSince = offSince.value_or(second);
            } else if (offSince) {
                offSince.reset();
                scanner.Restart();
            }
        }
        return offSince;
    }

  private:
    Library& library;
    Scanner& scanner;
    double next = RadioPollSeconds;  // not 0: the command has just checked the radio
    std::optional<double> offSince;
};

void Scan(const LibraryOptions& libraryOptions, const ScanOptions& options) {
    using namespace std::chrono;
    RecordingFile file(options.record);
    Library library = OpenLibrary(libraryOptions);
    RequireBluetooth(library);
    terminal::CatchInterrupts();
    const auto begin = steady_clock::now();
    const auto second = [&] { return duration<double>(steady_clock::now() - begin).count(); };
    const double last = options.seconds.value_or(options.watch ? 1e9 : SecondsOnce);

    ScanRecording recording(file);
    Scanner scanner(library);
    const std::unique_ptr<ScanView> view = MakeScanView(FormatOf(options));
    RadioWatch radio(library, scanner);
    while (second() < last && terminal::Pause(PollMs)) {
        const ScanState state{scanner.Heard(), second(), radio.OffSince(second())};
        recording.Add(state.devices);
        view->Show(state);
    }
    const ScanState heard{scanner.Heard(), second(), radio.OffSince(second())};
    recording.Add(heard.devices);
    view->End(heard);
    recording.End();
    scanner.Stop();
}

}  // namespace

void AddScanCommand(Command program, LibraryOptions& libraryOptions) {
    const auto options = std::make_shared<ScanOptions>();
    Command command = program.AddCommand("scan", "Lists the devices that are near.");
    command
        .AddNumber("--seconds", options->seconds, 0.001, 1e9,
                   "How many seconds to scan; default 3, with --watch until Ctrl-C")
        .Named("N");
    const Option watch =
        command.AddFlag("--watch", options->watch,
                        "Shows a table that is updated; in a pipe, prints each second a line for "
                        "each device that has changed, and the table at the end");
    Option json = command.AddFlag("--json", options->json, "Prints the list as JSON");
    Option csv = command.AddFlag("--csv", options->csv, "Prints the list as CSV");
    json.Excludes(csv).Excludes(watch);
    csv.Excludes(watch);
    command
        .AddText("--record", options->record,
                 "Writes what was heard as a scenario, which --simulated plays")
        .Named("FILE");
    AddLibraryOptions(command, libraryOptions);
    command.AddFooter("orv --simulated scan --watch",
                      {ExitStatus::Done, ExitStatus::NoBluetooth, ExitStatus::BadUsage,
                       ExitStatus::NoLibrary, ExitStatus::FileFailed},
                      Columns);
    command.Does([&libraryOptions, options] { Scan(libraryOptions, *options); });
}

}  // namespace orv
