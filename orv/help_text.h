// Formats the text of --help.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace orv {

// Formats help as the parser does, but with lines of at most 100 columns and with words for options
// that exclude or need others.
class HelpText : public CLI::Formatter {
  public:
    HelpText();

  protected:
    std::string make_option_opts(const CLI::Option* option) const override;
    std::string make_option_desc(const CLI::Option* option) const override;
    std::string make_option(const CLI::Option* option, bool isPositional) const override;
    std::string make_subcommand(const CLI::App* command) const override;
};

}  // namespace orv
