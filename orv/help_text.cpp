#include "orv/help_text.h"

#include <algorithm>
#include <set>
#include <vector>

namespace orv {

namespace {

constexpr std::size_t Columns = 100;
constexpr std::size_t TermColumns = 30;

std::string Entry(const std::string& term, std::string text) {
    std::string entry = "  " + term;
    entry += entry.size() + 2 > TermColumns ? "\n" + std::string(TermColumns, ' ')
                                            : std::string(TermColumns - entry.size(), ' ');
    constexpr std::size_t Width = Columns - TermColumns;
    while (text.size() > Width) {
        const std::size_t end = std::min(text.rfind(' ', Width), text.size());
        if (end == text.size()) {
            break;
        }
        entry += text.substr(0, end) + '\n' + std::string(TermColumns, ' ');
        text.erase(0, end + 1);
    }
    return entry + text + '\n';
}

std::string Named(const char* relation, const std::set<CLI::Option*>& options) {
    std::vector<std::string> names;
    names.reserve(options.size());
    for (const CLI::Option* option : options) {
        names.push_back(option->get_name());
    }
    std::sort(names.begin(), names.end());
    return names.empty() ? "" : relation + CLI::detail::join(names, ", ") + ")";
}

}  // namespace

HelpText::HelpText() {
    label("Positionals", "Arguments");
    label("SUBCOMMAND", "COMMAND");
}

std::string HelpText::make_option_opts(const CLI::Option* option) const {
    if (!option->get_option_text().empty()) {
        return " " + option->get_option_text();
    }
    const bool isArgument = option->get_positional();
    const bool repeats = option->get_expected_max() == CLI::detail::expected_max_vector_size;
    return (option->get_type_name().empty() || isArgument ? "" : " " + option->get_type_name()) +
           (repeats ? " ..." : "") + (option->get_required() && !isArgument ? " (required)" : "");
}

std::string HelpText::make_option_desc(const CLI::Option* option) const {
    return option->get_description() + Named(" (not with ", option->get_excludes()) +
           Named(" (needs ", option->get_needs());
}

std::string HelpText::make_option(const CLI::Option* option, bool isPositional) const {
    return Entry(make_option_name(option, isPositional) + make_option_opts(option),
                 make_option_desc(option));
}

std::string HelpText::make_subcommand(const CLI::App* command) const {
    return Entry(command->get_name(), command->get_description());
}

}  // namespace orv
