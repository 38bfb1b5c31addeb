#include <cstdio>

#include "orv/address.h"
#include "orv/commands/commands.h"
#include "orv/doctor/examination.h"
#include "orv/doctor/report.h"
#include "orv/doctor/run.h"
#include "orv/output_file.h"
#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"

namespace orv {

namespace {

struct DoctorOptions {
    std::string device;
    std::string report;
    bool echo = false;
    bool anonymous = false;
};

std::shared_ptr<doctor::Examination> Begin(LibraryOptions libraryOptions,
                                           const DoctorOptions& options) {
    libraryOptions.simulatedTime = true;
    libraryOptions.log = false;  // EnableLog below switches the log on
    if (libraryOptions.simulated && libraryOptions.scenario.empty()) {
        libraryOptions.scenario = "default";  // simulated time needs a scenario
    }
    Library library = OpenLibrary(libraryOptions);
    std::string whyNoLog;
    try {
        library.EnableLog();
        fprintf(stderr, "log: %s\n", Printable(TextOf(library.LogFile())).c_str());
    } catch (const Problem& problem) {
        fprintf(stderr, "orv: %s\n", Printable(problem.what()).c_str());
        whyNoLog = "the log cannot be written";
    }
    auto run = std::make_shared<doctor::Examination>(std::move(library));
    run->whyNoLog = whyNoLog;
    run->isAnonymous = options.anonymous;
    run->device = FindAddress(options.device);
    run->wantedName = run->device ? "" : options.device;
    run->whyNoEcho = options.echo ? "" : "give --echo if the device sends back what it receives";
    return run;
}

void Doctor(const LibraryOptions& libraryOptions, const DoctorOptions& options) {
    std::optional<OutputFile> file;
    if (!options.report.empty()) {
        file.emplace(options.report);
    }
    const auto run = Begin(libraryOptions, options);
    terminal::CatchInterrupts();
    doctor::Perform(run);
    if (file) {
        file->Write(doctor::JsonReport(*run));
        file->Commit();
    }
    fputs(doctor::TextReport(*run).c_str(), stdout);
    if (run->findings.Count(doctor::Verdict::Refuted) > 0) {
        throw Problem(ExitStatus::Refuted,
                      "an assumption was refuted: read the section that its check names");
    }
    if (!run->whyNoRadio.empty()) {
        throw Problem(ExitStatus::NoBluetooth, WhyNoRadioIsOn(run->library));
    }
}

}  // namespace

void AddDoctorCommand(Command program, LibraryOptions& libraryOptions) {
    const auto options = std::make_shared<DoctorOptions>();
    Command command = program.AddCommand(
        "doctor", "Checks on this machine what the documents assume about Bluetooth.");
    command
        .AddText("--device", options->device,
                 "Address or name of the device to connect to; default: the one with the strongest "
                 "signal")
        .Named("ADDRESS|NAME");
    command.AddFlag("--echo", options->echo,
                    "The device sends back what it receives: also sends blocks of 1 to 512 bytes");
    command
        .AddText("--report", options->report, "Writes the report as JSON, which contains the text")
        .Named("FILE");
    command.AddFlag("--anonymous", options->anonymous,
                    "Omits addresses and names of devices from the report");
    AddLibraryOptions(command, libraryOptions);
    command.AddFooter("orv doctor --device A0:B1:C2:D3:E4:F5 --echo --report doctor.json",
                      {ExitStatus::Done, ExitStatus::NoBluetooth, ExitStatus::BadUsage,
                       ExitStatus::NoLibrary, ExitStatus::FileFailed, ExitStatus::Refuted});
    command.Does([&libraryOptions, options] { Doctor(libraryOptions, *options); });
}

}  // namespace orv
