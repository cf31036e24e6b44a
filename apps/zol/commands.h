// The subcommands of `zol`, each in a file of its own.
#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zol::command {

/// Options that every subcommand over the library has.
struct HostOptions {
  std::string host = "Halvenor";
  std::string library; // empty: the one beside the program

  void addTo(CLI::App &app);
  [[nodiscard]] std::string libraryFile() const;
};

void addList(CLI::App &zol);
void addShow(CLI::App &zol);
void addDeclare(CLI::App &zol);
void addSlowmo(CLI::App &zol);
void addIcons(CLI::App &zol);
/// For the help alone: `render` reads its own words, since effects are chained by "!".
void addRender(CLI::App &zol);

/// Runs `zol render` with the words after "render"; throws as the parsers of the others do.
void runRender(const std::vector<std::string> &words);

/// One line on stderr that is rewritten while work goes on: done, rate, time left. Silent where stderr is no
/// terminal, or when asked to be.
class ProgressLine {
public:
  ProgressLine(const char *unit, bool quiet);
  ~ProgressLine();
  ProgressLine(const ProgressLine &) = delete;
  ProgressLine &operator=(const ProgressLine &) = delete;
  void show(uint64_t done, uint64_t all);
  /// Makes room for other lines.
  void clear();

private:
  struct State;
  std::unique_ptr<State> state_;
};

/// What is left out or guessed, a line each on stderr, unless to be quiet.
void printNotes(const std::vector<std::string> &notes, bool quiet);

/// A description without the host's markup, tags and colour codes alike.
std::string plainText(const std::string &marked);

} // namespace zol::command
