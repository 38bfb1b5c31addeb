#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace orv {

// Formats help as CLI11 does, but with at most 100 columns, and names the options that an option
// excludes or needs.
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
