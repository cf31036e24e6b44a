#include "apps/zol/commands.h"

#include "host/model/text.h"
#include "host/script/library.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <regex>
#include <set>
#include <unistd.h>
#include <utility>

namespace zol::command {

void addHostOptions(CLI::App &app, std::string &identity, std::string &library) {
  app.add_option("--host", identity, "Identity that the host shows to the library (Halvenor, Quorbel, ...)")
      ->type_name("NAME")
      ->capture_default_str();
  app.add_option("--library", library, "Effects library to load instead of the one beside this program")
      ->type_name("FILE");
}

std::string HostOptions::libraryFile() const { return host::EffectLibrary::fileFor(library); }

std::string plainText(const std::string &marked) {
  static const std::regex lineBreak("<br>");
  static const std::regex tag("</?[a-z]+>");
  static const std::regex code("&(c[0-9A-Fa-f]{6}|b|n)");
  std::string text = std::regex_replace(marked, lineBreak, "\n");
  text = std::regex_replace(text, tag, "");
  return std::regex_replace(text, code, "");
}

// ---- What is told on stderr ----

namespace {

bool tellsJson = false; // errors are told by main, which knows no command's options

void tellObject(const nlohmann::json &object) {
  std::fprintf(stderr, "%s\n", object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
}

} // namespace

void TellingOptions::addTo(CLI::App &app) {
  app.add_flag("--quiet", quiet, "Neither progress nor notes on stderr");
  app.add_option_function<std::string>(
         "--progress",
         [this](const std::string &text) {
           if (text != "line" && text != "json")
             throw CLI::ValidationError("--progress takes line or json, not \"" + text + '"');
           tellsJson = json = text == "json";
         },
         "How progress, notes and errors are told on stderr: as text, or as a JSON object a line with "
         "done, all, seconds, fps; or note; or error")
      ->type_name("line|json");
}

void tellNotes(const TellingOptions &telling, const std::vector<std::string> &lines) {
  static std::set<std::string> told;
  for (const std::string &line : lines)
    if (telling.quiet || !told.insert(line).second)
      continue;
    else if (telling.json)
      tellObject({{"note", line}});
    else
      std::fprintf(stderr, "zol: note: %s\n", host::printable(line).c_str());
}

void tellError(const std::string &line) {
  if (tellsJson)
    tellObject({{"error", line}});
  else
    std::fprintf(stderr, "zol: %s\n", host::printable(line).c_str());
}

struct ProgressLine::State {
  using Clock = std::chrono::steady_clock;

  const char *unit;
  bool json;
  Clock::time_point started = Clock::now();
  Clock::time_point shown{};
  bool visible = false;
  uint64_t before = 0, done = 0, all = 0;
  std::string more{};

  [[nodiscard]] double seconds() const {
    return std::chrono::duration<double>(Clock::now() - started).count();
  }
  [[nodiscard]] double rate() const {
    return seconds() > 0 ? static_cast<double>(done - before) / seconds() : 0;
  }
  [[nodiscard]] nlohmann::json object() const {
    nlohmann::json object = {{"done", done}, {"all", all}, {"seconds", seconds()}, {"fps", rate()}};
    if (!more.empty())
      object["more"] = more;
    return object;
  }
};

ProgressLine::ProgressLine(const char *unit, const TellingOptions &telling) {
  if (!telling.quiet && (telling.json || isatty(STDERR_FILENO) == 1))
    state_.reset(new State{unit, telling.json});
}

ProgressLine::~ProgressLine() { clear(); }

void ProgressLine::clear() {
  if (state_ != nullptr && !state_->json && std::exchange(state_->visible, false))
    std::fputs("\r\033[K", stderr);
}

void ProgressLine::begin(uint64_t done) {
  if (state_ != nullptr)
    state_->before = done;
}

void ProgressLine::show(uint64_t done, uint64_t all, const std::string &more) {
  using namespace std::chrono_literals;
  if (state_ == nullptr)
    return;
  state_->more = more;
  state_->done = done;
  const bool openEnd = std::exchange(state_->all, all) != all;
  const auto now = State::Clock::now();
  if (state_->visible && now - state_->shown < 100ms && (done < all || openEnd))
    return;
  state_->shown = now;
  state_->visible = true;
  if (state_->json) {
    tellObject(state_->object());
    return;
  }
  const double rate = state_->rate();
  const double left = rate > 0 ? static_cast<double>(all - done) / rate : 0;
  constexpr int kCells = 24;
  const int filled = all == 0 ? kCells : static_cast<int>(kCells * done / all);
  const std::string middle = more.empty() ? host::numberText(std::round(rate)) + " a second" : more;
  std::fprintf(stderr, "\r[%.*s%*s] %llu/%llu %s, %s, %s left \033[K", filled, "########################",
               kCells - filled, "", static_cast<unsigned long long>(done),
               static_cast<unsigned long long>(all), state_->unit, middle.c_str(),
               rate > 0 ? (host::numberText(std::round(left)) + " s").c_str() : "?");
}

void ProgressLine::finish() {
  if (state_ == nullptr || !state_->json)
    return;
  nlohmann::json object = state_->object();
  object["finished"] = true;
  tellObject(object);
}

} // namespace zol::command
