#include "orv/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <type_traits>
#include <utility>

#include "orv/help_text.h"
#include "orv/terminal/printable.h"
#include "orv/usage_error.h"

namespace orv {

namespace {

constexpr double NoLimit =
    1e9;  // a maximum that the help does not state, because no user reaches it

template <typename Number>
std::string NumberText(Number number) {
    char text[32];
    return {text, std::to_chars(text, std::end(text), number).ptr};
}

std::string NumberText(double number) {
    char text[32];
    snprintf(text, sizeof text, "%.15g", number);
    return text;
}

// Converts the whole text to a number. Returns nothing for other text, NaN or numbers out of range.
template <typename Number>
std::optional<Number> NumberIn(const std::string& text, Number least, Number most) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, number);
    const bool fits = error == std::errc() && last == end && number >= least && number <= most;
    return fits ? std::optional(number) : std::nullopt;
}

std::string WhyEmpty(const std::string& text) {
    return text.empty() ? "the value is empty" : "";
}

template <typename Number, typename Value>
Option AddRanged(CLI::App* app, const char* name, Value& value, Number least, Number most,
                 const char* help) {
    const std::string range = NumberText(least) + " to " + NumberText(most);
    CLI::Option* option = app->add_option_function<std::string>(
        name,
        [&value, least, most](const std::string& text) { value = *NumberIn(text, least, most); },
        help + (static_cast<double>(most) < NoLimit ? " (" + range + ")" : ""));
    option->check(WhyEmpty)->check([least, most, range](const std::string& text) {
        return NumberIn(text, least, most)
                   ? std::string()
                   : std::string("give a ") + (std::is_integral_v<Number> ? "whole " : "") +
                         "number from " + range + ", not " + text;
    });
    return Option(option->type_name("N"));
}

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
            return "the device could not be connected, or the link was lost";
        case ExitStatus::Stopped:
            return "the transfer is incomplete";
        case ExitStatus::FileFailed:
            return "a file or the output cannot be read or written";
        case ExitStatus::Refuted:
            return "an assumption was refuted";
    }
    return "";
}

std::string GroupFooter(const std::string& example, const std::string& name) {
    return "\nExample:\n  " + example + "\n\nHelp on a command, with its exit statuses:\n  " +
           name + " COMMAND --help";
}

}  // namespace

Option Option::Required() {
    option->required();
    return *this;
}

Option Option::Excludes(Option other) {
    option->excludes(other.option);
    return *this;
}

Option Option::Needs(Option other) {
    option->needs(other.option);
    return *this;
}

Option Option::ExistingFile() {
    option->check([](const std::string& text) {
        std::error_code missing;
        const std::filesystem::path path(std::u8string(text.begin(), text.end()));
        return std::filesystem::is_directory(path, missing) ? text + " is a folder, not a file"
               : std::filesystem::exists(path, missing)     ? std::string()
                                                            : "there is no file " + text;
    });
    return *this;
}

Option Option::Named(const char* value) {
    option->type_name(value);
    return *this;
}

Option Option::Under(const char* heading) {
    option->group(heading);
    return *this;
}

Option Command::AddFlag(const char* name, bool& value, const char* help) {
    return Option(app->add_flag(name, value, help));
}

Option Command::AddText(const char* name, std::string& value, const char* help) {
    return Option(app->add_option(name, value, help)->type_name("TEXT")->check(WhyEmpty));
}

Option Command::AddTexts(const char* name, std::vector<std::string>& values, const char* help) {
    CLI::Option* option = app->add_option(name, values, help)->check(WhyEmpty);
    if (!option->get_positional()) {
        option->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    }
    return Option(option);
}

Option Command::AddOptionalText(const char* name,
                                const std::function<void(const std::string&)>& take,
                                const char* help) {
    return Option(app->add_option_function<std::string>(name, take, help)->expected(0, 1));
}

Option Command::AddNumber(const char* name, double& value, double least, double most,
                          const char* help) {
    return AddRanged(app, name, value, least, most, help);
}

Option Command::AddNumber(const char* name, std::optional<double>& value, double least, double most,
                          const char* help) {
    return AddRanged(app, name, value, least, most, help);
}

Option Command::AddNumber(const char* name, unsigned& value, unsigned least, unsigned most,
                          const char* help) {
    return AddRanged(app, name, value, least, most, help);
}

Option Command::AddNumber(const char* name, std::size_t& value, int least, int most,
                          const char* help) {
    return AddRanged(app, name, value, static_cast<std::size_t>(least),
                     static_cast<std::size_t>(most), help);
}

Option Command::AddNumber(const char* name, std::optional<std::uint64_t>& value,
                          std::uint64_t least, std::uint64_t most, const char* help) {
    return AddRanged(app, name, value, least, most, help);
}

Option Command::AddWord(const char* name, const std::vector<std::string>& words,
                        const std::function<void(const std::string&)>& take, const char* help) {
    CLI::Option* option = app->add_option_function<std::string>(name, take, help);
    option->check([words](const std::string& text) {
        return std::find(words.begin(), words.end(), text) != words.end()
                   ? std::string()
                   : "give " + CLI::detail::join(words, " or ") + ", not " + text;
    });
    return Option(option->type_name(CLI::detail::join(words, "|")));
}

void Command::AddFooter(const std::string& example, const std::vector<ExitStatus>& statuses,
                        const std::string& notes) {
    std::string text = notes + "\nExample:\n  " + example + "\n\nExit status:\n";
    for (const ExitStatus status : statuses) {
        text += "  " + std::to_string(static_cast<int>(status)) + "  " + MeaningOf(status) + "\n";
    }
    app->footer(text);
}

void Command::IgnoreRest() {
    app->prefix_command();
}

void Command::Does(std::function<void()> action) {
    app->callback(std::move(action));
}

Command Command::AddCommand(const char* name, const char* description) {
    return Command(app->add_subcommand(name, description)->group("Commands"));
}

Command Command::AddGroup(const char* name, const char* description, const std::string& example) {
    CLI::App* group = app->add_subcommand(name, description)->group("Commands");
    group->require_subcommand(1);
    group->footer(GroupFooter(example, app->get_name() + ' ' + name));
    return Command(group);
}

CommandLine::CommandLine(const char* program, const char* description, const std::string& example)
    : app(std::make_unique<CLI::App>(description, program)) {
    app->allow_windows_style_options(false);  // /logs/host.log is a path, not an option
    app->require_subcommand(1);
    app->footer(GroupFooter(example, program));
    app->formatter(std::make_shared<HelpText>());
}

CommandLine::~CommandLine() = default;

ExitStatus CommandLine::Run(std::vector<std::string> arguments) {
    std::reverse(arguments.begin(), arguments.end());  // the parser expects the reverse order
    try {
        app->parse(arguments);
    } catch (const CLI::ParseError& error) {
        // For --help after an unknown command, the parser prints the help of the parent command.
        if (error.get_exit_code() == 0 && !HasUnknownCommand(app.get())) {
            app->exit(error);
            return ExitStatus::Done;
        }
        throw Problem(ExitStatus::BadUsage, WhyWrong(app.get(), error));
    }
    return ExitStatus::Done;
}

}  // namespace orv
