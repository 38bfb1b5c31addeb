#include "orv/session.h"

#include <cstdio>
#include <vector>

#include "orv/terminal/printable.h"

namespace orv {

namespace {

const char* MeaningOf(ExitStatus status) {
    switch (status) {
        case ExitStatus::Done:
            return "done";
        case ExitStatus::NoBluetooth:
            return "no Bluetooth radio is on, or the system refused to scan";
        case ExitStatus::BadUsage:
            return "the command line is wrong";
        case ExitStatus::NoLibrary:
            return "the library is missing or cannot be loaded";
        case ExitStatus::NoLink:
            return "the device took no link, or the link was lost";
        case ExitStatus::Stopped:
            return "a transfer ended before everything had gone over";
        case ExitStatus::FileFailed:
            return "a file or the output cannot be read or written";
    }
    return "";
}

std::filesystem::path Beside(const std::filesystem::path& name) {
    return module::OwnFolder() / name;
}

std::filesystem::path LibraryFile(const SessionOptions& options) {
    if (!options.library.empty()) {
        return PathOf(options.library);
    }
    const std::filesystem::path simulated = Beside("simulated") / module::LibraryName;
    return options.simulated && std::filesystem::exists(simulated) ? simulated
                                                                   : Beside(module::LibraryName);
}

// A path, or else the name of a scenario that lies beside the library.
std::filesystem::path ScenarioFile(const Library& library, const std::string& named) {
    const std::filesystem::path folder = library.File().parent_path() / "scenarios";
    std::filesystem::path path = PathOf(named);
    std::filesystem::path shipped = folder / PathOf(named + ".json");
    std::error_code missing;
    if (std::filesystem::exists(path, missing) && !std::filesystem::is_directory(path, missing)) {
        return path;
    }
    if (named.find_first_of("/\\") == std::string::npos &&
        std::filesystem::exists(shipped, missing)) {
        return shipped;
    }
    std::string names;
    for (const auto& entry : std::filesystem::directory_iterator(folder, missing)) {
        const std::filesystem::path file = entry.path().filename();
        if (file.extension() == ".json" && file.stem().extension().empty()) {
            names += (names.empty() ? "" : ", ") + orv::TextOf(file.stem());
        }
    }
    throw Problem(ExitStatus::FileFailed,
                  "there is no scenario " + Printable(named) +
                      ": give the path of a scenario file" +
                      (names.empty() ? "" : ", or one of " + Printable(names)));
}

}  // namespace

void AddSessionOptions(CLI::App& app, SessionOptions& options) {
    const char* group = "The library";
    app.add_option("--library", options.library, "The library's file; usually it is beside orv")
        ->type_name("PATH")
        ->group(group);
    app.add_option_function<std::string>(
           "--simulated",
           [&options](const std::string& scenario) {
               options.simulated = true;
               options.scenario = scenario;
           },
           "A simulated Bluetooth world instead of the radio; with a scenario, the world that the "
           "file describes (a path, or a name in scenarios/ beside the library)")
        ->expected(0, 1)
        ->type_name("[SCENARIO]")
        ->group(group);
    app.add_flag("--log", options.log,
                 "Empties the library's log, switches it on and says where it is")
        ->group(group);
}

std::string HelpFooter(const std::string& example, const std::vector<ExitStatus>& statuses) {
    std::string text = "\nExample:\n  " + example + "\n\nExit status:\n";
    for (const ExitStatus status : statuses) {
        text += "  " + std::to_string(static_cast<int>(status)) + "  " + MeaningOf(status) + "\n";
    }
    return text;
}

Library OpenLibrary(const SessionOptions& options) {
    Library library(LibraryFile(options));
    if (options.simulated && !library.IsSimulated()) {
        throw Problem(ExitStatus::NoLibrary,
                      Printable(TextOf(library.File())) +
                          " is not the simulated library: put that in simulated/ beside orv, or "
                          "say where it is by --library PATH");
    }
    if (!options.scenario.empty()) {
        library.PlayScenario(ScenarioFile(library, options.scenario));
    }
    if (options.log) {
        library.EnableLog();
        fprintf(stderr, "log: %s\n", Printable(TextOf(library.LogFile())).c_str());
    }
    return library;
}

void RequireBluetooth(Library& library) {
    if (library.BluetoothAvailable() == ORV_FAILED) {
        throw Problem(ExitStatus::NoBluetooth,
                      "no Bluetooth radio is on: switch Bluetooth on, or try --simulated");
    }
}

}  // namespace orv
