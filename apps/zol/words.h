// Words of a command line: options as ffmpeg's users spell them, and one clear line for what is not known.
#pragma once

#include "host/model/text.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zol::command {

/// An option by its first name as users write it: "-i", "-ss", "--codec"; a positional by its name.
std::string spelled(const CLI::Option &option);
/// All its names, as "-h,--help".
std::string spelledNames(const CLI::Option &option);

/// Whether a word of its own follows the option.
bool takesValue(const CLI::Option &option);

/// The command of that name. Throws CLI::ParseError where there is none.
CLI::App &commandNamed(CLI::App &zol, const std::string &name);

/// Has the command or its chosen subcommand read the words. Throws CLI::ParseError with a clear line for
/// words that are not expected.
void parseWords(CLI::App &app, const std::vector<std::string> &words);

/// Help that shows options as they are spelled.
class HelpFormatter : public CLI::Formatter {
public:
  std::string make_option_name(const CLI::Option *option, bool isPositional) const override;
  std::string make_option_desc(const CLI::Option *option) const override;
};

/// Adds an option whose text `read` gives as an optional value; `takes` says what can be given.
template <class Target, class Read>
CLI::Option *addValue(CLI::App &app, const std::string &name, Target &target, Read read, const char *takes,
                      const std::string &help) {
  return app.add_option_function<std::string>(
      name,
      [=, &target](const std::string &text) {
        auto value = read(text);
        if (!value)
          throw CLI::ValidationError(name + " takes " + takes + ", not \"" + text + '"');
        target = std::move(*value);
      },
      help);
}

/// Reads a whole number within bounds, for addValue.
template <class Number> auto wholeNumber(int least, int most) {
  return [=](const std::string &text) -> std::optional<Number> {
    const auto number = host::integerIn(text);
    return number && *number >= least && *number <= most ? std::optional(static_cast<Number>(*number))
                                                         : std::nullopt;
  };
}

/// "--threads N", for all that makes pictures or sound.
void addThreads(CLI::App &app, std::optional<unsigned> &threads);

} // namespace zol::command
