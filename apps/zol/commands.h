// The subcommands of `zol`, each in a file of its own.
#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zol::command {

void addHostOptions(CLI::App &app, std::string &identity, std::string &library);

/// Options that every subcommand over the library has.
struct HostOptions {
  std::string host = "Halvenor";
  std::string library; // empty: the one beside the program

  void addTo(CLI::App &app) { addHostOptions(app, host, library); }
  [[nodiscard]] std::string libraryFile() const;
};

/// All commands with their options.
std::unique_ptr<CLI::App> makeCommands();

void addList(CLI::App &zol);
void addShow(CLI::App &zol);
void addDeclare(CLI::App &zol);
void addSlowmo(CLI::App &zol);
void addJoin(CLI::App &zol);
void addIcons(CLI::App &zol);
void addStudio(CLI::App &zol);
void addHelp(CLI::App &zol);
void addCompletion(CLI::App &zol);
/// For help and completion: `render` reads its own words, since effects are chained by "!".
void addRender(CLI::App &zol);
/// Likewise.
void addFarm(CLI::App &zol);

/// Runs `zol render` with the words after "render"; throws as the parsers of the others do.
void runRender(const std::vector<std::string> &words);
/// The same with `zol farm`.
void runFarm(const std::vector<std::string> &words);

/// Prints what may stand in the place of the last word, a line each; nothing for names of files.
void complete(const std::vector<std::string> &words);

// ---- What is told on stderr ----

/// How work tells of itself.
struct TellingOptions {
  bool quiet = false;
  bool json = false; ///< an object a line instead of texts

  void addTo(CLI::App &app);
};

/// "zol: note: ..." for each line, once however often it is told.
void tellNotes(const TellingOptions &telling, const std::vector<std::string> &lines);
/// "zol: ...", as an object where a command was asked for these.
void tellError(const std::string &line);

/// Done, rate, time left: one line that is rewritten, on a terminal alone, or an object at every step and one
/// at the end.
class ProgressLine {
public:
  ProgressLine(const char *unit, const TellingOptions &telling);
  ~ProgressLine();
  ProgressLine(const ProgressLine &) = delete;
  ProgressLine &operator=(const ProgressLine &) = delete;
  /// So much was done before.
  void begin(uint64_t done);
  /// `more` stands in the place of the rate.
  void show(uint64_t done, uint64_t all, const std::string &more = {});
  /// Makes room for other lines.
  void clear();
  /// All went well.
  void finish();

private:
  struct State;
  std::unique_ptr<State> state_;
};

/// A description without the host's markup, tags and colour codes alike.
std::string plainText(const std::string &marked);

} // namespace zol::command
