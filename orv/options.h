// The command line. Hides the parser CLI11, whose headers take long to compile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "orv/problem.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace orv {

class Option {
  public:
    explicit Option(CLI::Option* parsed) : option(parsed) {}

    Option Required();
    Option Excludes(Option other);
    Option Needs(Option other);
    Option ExistingFile();
    // Sets the name of the value in the help, such as FILE.
    Option Named(const char* value);
    Option Under(const char* heading);

  private:
    CLI::Option* option;
};

// A command with its options and positional arguments. A name that begins with -- adds an option.
// The parser writes to `value`, which must outlive the CommandLine.
class Command {
  public:
    explicit Command(CLI::App* parsed) : app(parsed) {}

    Option AddFlag(const char* name, bool& value, const char* help);
    // Rejects an empty text, because it usually comes from an unset variable of a script.
    Option AddText(const char* name, std::string& value, const char* help);
    // An option may be repeated. A positional argument takes all remaining arguments.
    Option AddTexts(const char* name, std::vector<std::string>& values, const char* help);
    // Calls `take` with the value, or with an empty text if there is none.
    Option AddOptionalText(const char* name, const std::function<void(const std::string&)>& take,
                           const char* help);
    Option AddNumber(const char* name, double& value, double least, double most, const char* help);
    Option AddNumber(const char* name, std::optional<double>& value, double least, double most,
                     const char* help);
    Option AddNumber(const char* name, unsigned& value, unsigned least, unsigned most,
                     const char* help);
    Option AddNumber(const char* name, std::size_t& value, int least, int most, const char* help);
    Option AddNumber(const char* name, std::optional<std::uint64_t>& value, std::uint64_t least,
                     std::uint64_t most, const char* help);
    template <typename Value>
    Option AddChoice(const char* name, Value& value,
                     std::vector<std::pair<std::string, Value>> choices, const char* help) {
        std::vector<std::string> words;
        for (const auto& choice : choices) {
            words.push_back(choice.first);
        }
        return AddWord(
            name, words,
            [&value, choices = std::move(choices)](const std::string& given) {
                for (const auto& [word, meaning] : choices) {
                    value = word == given ? meaning : value;
                }
            },
            help);
    }

    // Sets the text below the options in the help: `notes`, an example and exit statuses.
    void AddFooter(const std::string& example, const std::vector<ExitStatus>& statuses,
                   const std::string& notes = {});

    // Ignores all arguments after the command.
    void IgnoreRest();

    // Sets the action, which runs after all arguments were parsed. It may throw a Problem.
    void Does(std::function<void()> action);

    Command AddCommand(const char* name, const char* description);
    // Adds a command that must be followed by a subcommand.
    Command AddGroup(const char* name, const char* description, const std::string& example);

  private:
    Option AddWord(const char* name, const std::vector<std::string>& words,
                   const std::function<void(const std::string&)>& take, const char* help);

    CLI::App* app;
};

class CommandLine {
  public:
    CommandLine(const char* program, const char* description, const std::string& example);
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    Command Program() { return Command(app.get()); }

    // Runs the command that the arguments name. Throws a Problem for wrong arguments or a failure.
    ExitStatus Run(std::vector<std::string> arguments);

  private:
    std::unique_ptr<CLI::App> app;
};

}  // namespace orv
