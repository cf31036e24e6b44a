#include "apps/zol/commands.h"

#include "host/model/text.h"
#include "host/script/library.h"

#include <chrono>
#include <cstdio>
#include <regex>
#include <unistd.h>
#include <utility>

namespace zol::command {

void HostOptions::addTo(CLI::App &app) {
  app.add_option("--host", host, "Identity that the host shows to the library (Halvenor, Quorbel, ...)")
      ->type_name("NAME")
      ->capture_default_str();
  app.add_option("--library", library, "Effects library to load instead of the one beside this program")
      ->type_name("FILE");
}

std::string HostOptions::libraryFile() const {
  return library.empty() ? host::EffectLibrary::defaultFile() : library;
}

std::string plainText(const std::string &marked) {
  static const std::regex lineBreak("<br>");
  static const std::regex tag("</?[a-z]+>");
  static const std::regex code("&(c[0-9A-Fa-f]{6}|b|n)");
  std::string text = std::regex_replace(marked, lineBreak, "\n");
  text = std::regex_replace(text, tag, "");
  return std::regex_replace(text, code, "");
}

void printNotes(const std::vector<std::string> &notes, bool quiet) {
  for (const std::string &note : notes)
    if (!quiet)
      std::fprintf(stderr, "zol: note: %s\n", host::printable(note).c_str());
}

struct ProgressLine::State {
  using Clock = std::chrono::steady_clock;

  const char *unit;
  Clock::time_point started = Clock::now();
  Clock::time_point shown{};
  bool visible = false;
};

ProgressLine::ProgressLine(const char *unit, bool quiet) {
  if (!quiet && isatty(STDERR_FILENO) == 1)
    state_.reset(new State{unit});
}

ProgressLine::~ProgressLine() { clear(); }

void ProgressLine::clear() {
  if (state_ != nullptr && std::exchange(state_->visible, false))
    std::fputs("\r\033[K", stderr);
}

void ProgressLine::show(uint64_t done, uint64_t all) {
  using namespace std::chrono_literals;
  if (state_ == nullptr)
    return;
  const auto now = State::Clock::now();
  if (state_->visible && now - state_->shown < 100ms && done < all)
    return;
  state_->shown = now;
  state_->visible = true;
  const double seconds = std::chrono::duration<double>(now - state_->started).count();
  const double rate = seconds > 0 ? static_cast<double>(done) / seconds : 0;
  const double left = rate > 0 ? static_cast<double>(all - done) / rate : 0;
  constexpr int kCells = 24;
  const int filled = all == 0 ? kCells : static_cast<int>(kCells * done / all);
  std::fprintf(stderr, "\r[%.*s%*s] %llu/%llu %s, %.0f a second, %.0f s left \033[K", filled,
               "########################", kCells - filled, "", static_cast<unsigned long long>(done),
               static_cast<unsigned long long>(all), state_->unit, rate, left);
}

} // namespace zol::command
