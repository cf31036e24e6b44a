#include "apps/zol/words.h"

#include "host/model/names.h"

#include <algorithm>

namespace zol::command {
namespace {

/// Long names that are written with one dash, as ffmpeg's are.
constexpr std::string_view kOneDash[] = {"--ss", "--to", "--an", "--vn"};

bool hasOneDash(std::string_view name) {
  return std::find(std::begin(kOneDash), std::end(kOneDash), name) != std::end(kOneDash);
}

std::string respelled(std::string name) { return hasOneDash(name) ? name.substr(1) : name; }

/// The words as the parser takes them; values stay as they are.
std::vector<std::string> longNamed(const CLI::App &app, std::vector<std::string> words) {
  for (size_t i = 0; i < words.size(); ++i) {
    const CLI::Option *option = app.get_option_no_throw(words[i]);
    if (const std::string name = '-' + words[i]; option == nullptr && hasOneDash(name))
      if ((option = app.get_option_no_throw(name)) != nullptr)
        words[i] = name;
    if (option != nullptr && takesValue(*option))
      ++i;
  }
  return words;
}

[[noreturn]] void refuse(const CLI::App &app, const std::string &word) {
  std::string line = '"' + respelled(word) + "\" is not expected here";
  if (word.size() > 1 && word.starts_with('-')) {
    std::vector<std::string> names;
    for (const CLI::Option *option : app.get_options())
      if (option->nonpositional())
        names.push_back(spelled(*option));
    const auto near = host::nearestNames(word, names, 1);
    line = "there is no option " + respelled(word) +
           (near.empty() ? "" : "; did you mean " + near.front() + '?');
  }
  throw CLI::ParseError(line, CLI::ExitCodes::ExtrasError);
}

} // namespace

std::string spelled(const CLI::Option &option) { return respelled(option.get_name()); }

std::string spelledNames(const CLI::Option &option) {
  std::string names;
  for (const std::string &name : option.get_snames())
    names += (names.empty() ? "-" : ",-") + name;
  for (const std::string &name : option.get_lnames())
    names += (names.empty() ? "" : ",") + respelled("--" + name);
  return names;
}

bool takesValue(const CLI::Option &option) { return option.get_items_expected_min() > 0; }

CLI::App &commandNamed(CLI::App &zol, const std::string &name) {
  std::vector<std::string> names;
  for (CLI::App *command : zol.get_subcommands([](const CLI::App *) { return true; })) {
    if (command->get_name() == name)
      return *command;
    names.push_back(command->get_name());
  }
  const auto near = host::nearestNames(name, names, 1);
  throw CLI::ParseError("there is no command \"" + name + '"' +
                            (near.empty() ? "" : "; did you mean \"" + near.front() + "\"?"),
                        CLI::ExitCodes::ExtrasError);
}

void parseWords(CLI::App &app, const std::vector<std::string> &words) {
  const bool named =
      app.get_require_subcommand_min() > 0 && !words.empty() && !words.front().starts_with('-');
  CLI::App &command = named ? commandNamed(app, words.front()) : app;
  std::vector<std::string> reversed = longNamed(command, words);
  std::reverse(reversed.begin(), reversed.end());
  try {
    app.parse(reversed);
  } catch (const CLI::ExtrasError &) {
    refuse(command, app.remaining(true).front());
  }
}

/// Broken into lines at blanks.
std::string HelpFormatter::make_option_desc(const CLI::Option *option) const {
  constexpr size_t kWidth = 70;
  std::string text = option->get_description();
  for (size_t begin = 0; text.size() - begin > kWidth;) {
    const size_t blank = text.rfind(' ', begin + kWidth);
    if (blank == text.npos || blank <= begin)
      break;
    text[blank] = '\n';
    begin = blank + 1;
  }
  return text;
}

std::string HelpFormatter::make_option_name(const CLI::Option *option, bool isPositional) const {
  return isPositional ? option->get_name(true, false) : spelledNames(*option);
}

void addThreads(CLI::App &app, std::optional<unsigned> &threads) {
  addValue(app, "--threads", threads, wholeNumber<unsigned>(1, 1024), "1 to 1024",
           "Threads that share the work, by default one for each core; they change no byte")
      ->type_name("N");
}

} // namespace zol::command
