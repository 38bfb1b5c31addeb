#include "orv/usage_error.h"

#include <algorithm>
#include <vector>

#include "orv/did_you_mean.h"

namespace orv {

namespace {

std::string FullName(const CLI::App* command) {
    const CLI::App* parent = command->get_parent();
    return (parent ? FullName(parent) + ' ' : "") + command->get_name();
}

std::vector<std::string> CommandsOf(const CLI::App* command) {
    std::vector<std::string> names;
    for (const CLI::App* child : command->get_subcommands({})) {
        if (!child->get_group().empty()) {
            names.push_back(child->get_name());
        }
    }
    return names;
}

std::vector<std::string> OptionsOf(const CLI::App* command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : command->get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back(name);
        }
    }
    return names;
}

std::string WordBefore(const std::string& text, const std::string& mark) {
    return text.substr(0, text.find(mark));
}

std::string WordBehind(const std::string& text, const std::string& mark) {
    return text.substr(text.find(mark) + mark.size());
}

// Explains an option with a missing, unexpected or repeated value.
std::string WhyMismatched(CLI::App* command, const std::string& text) {
    const std::string name = WordBefore(WordBefore(text, ":"), " was given");
    for (CLI::App* at = command; at; at = at->get_parent()) {
        if (const CLI::Option* option = at->get_option_no_throw(name)) {
            return name + (option->get_items_expected_max() == 0 ? " takes no value."
                           : option->count() > 1
                               ? " is given more than once."
                               : " needs a value: " + option->get_type_name() + '.');
        }
    }
    return text + '.';
}

std::string Reason(CLI::App* command, const CLI::ParseError& error) {
    const std::string text = error.what();
    if (dynamic_cast<const CLI::ExcludesError*>(&error)) {
        return WordBefore(text, " excludes ") + " and " + WordBehind(text, " excludes ") +
               " cannot be given together.";
    }
    if (dynamic_cast<const CLI::RequiresError*>(&error)) {
        return WordBefore(text, " requires ") + " needs " + WordBehind(text, " requires ") + '.';
    }
    if (dynamic_cast<const CLI::RequiredError*>(&error)) {
        return command->get_subcommands({}).empty()
                   ? WordBefore(text, " is required") + " is missing."
                   : "a command is missing: " + CLI::detail::join(CommandsOf(command), ", ") + '.';
    }
    if (dynamic_cast<const CLI::ValidationError*>(&error)) {
        return text + '.';
    }
    return WhyMismatched(command, text);
}

CLI::App* NamedCommand(CLI::App* program) {
    CLI::App* command = program;
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().front();
    }
    return command;
}

// Explains an unexpected command, option or argument. Returns an empty text if there is none.
std::string WhyUnexpected(const CLI::App* command) {
    const std::vector<std::string> rest = command->remaining();
    if (rest.empty()) {
        return {};
    }
    // `rest` also contains the words after the first unknown one.
    const std::string& word = rest.front();
    const std::vector<std::string> commands = CommandsOf(command);
    if (word.substr(0, 1) == "-" && word.size() > 1) {
        const std::string name = word.substr(std::min(word.find_first_not_of('-'), word.size()));
        return "there is no option " + word +
               DidYouMean(WordBefore(name, "="), OptionsOf(command), "--");
    }
    return commands.empty() ? "unexpected argument " + word + '.'
                            : "there is no command " + word + DidYouMean(word, commands);
}

}  // namespace

bool HasUnknownCommand(CLI::App* program) {
    const CLI::App* command = NamedCommand(program);
    const std::vector<std::string> rest = command->remaining();
    return !rest.empty() && rest.front().substr(0, 1) != "-" && !CommandsOf(command).empty();
}

std::string WhyWrong(CLI::App* program, const CLI::ParseError& error) {
    CLI::App* command = NamedCommand(program);
    const bool mayBeUnexpected = dynamic_cast<const CLI::Success*>(&error) ||
                                 dynamic_cast<const CLI::ExtrasError*>(&error) ||
                                 dynamic_cast<const CLI::RequiredError*>(&error);
    std::string why = mayBeUnexpected ? WhyUnexpected(command) : "";
    // The unexpected option may precede the command.
    if (mayBeUnexpected && why.empty() && !program->remaining().empty()) {
        command = program;
        why = WhyUnexpected(program);
    }
    return (why.empty() ? Reason(command, error) : why) + " For help: " + FullName(command) +
           " --help";
}

}  // namespace orv
