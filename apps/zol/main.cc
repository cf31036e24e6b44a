// zol: the command over the reference host.

#include "apps/zol/commands.h"

#include "host/media/interrupt.h"
#include "host/model/text.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr int kSignalled = 128; // and the signal, as shells have it

int complain(const std::string &line, int status) {
  if (zol::host::interrupted()) { // whatever failed, this is why
    std::fputs("zol: interrupted\n", stderr);
    return kSignalled + zol::host::interruption();
  }
  std::fprintf(stderr, "zol: %s\n", zol::host::printable(line).c_str());
  return status;
}

void run(int argc, char **argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (!words.empty() && words.front() == "render") {
    zol::command::runRender({words.begin() + 1, words.end()});
    return;
  }
  CLI::App app("zol: runs video and audio effects on files.", "zol");
  app.require_subcommand(1);
  app.footer("Examples:\n"
             "  zol list\n"
             "  zol show blur\n"
             "  zol render blur -i photo.jpg -o soft.png --set Blurriness=0.05\n"
             "  zol render mix -i a.mp4 -i b.mp4 -o dissolve.mp4\n"
             "  zol slowmo clip.mp4 -o slow.mp4 --factor 4\n\n"
             "`zol COMMAND --help` tells more.");
  zol::command::addList(app);
  zol::command::addShow(app);
  zol::command::addDeclare(app);
  zol::command::addRender(app);
  zol::command::addSlowmo(app);
  zol::command::addIcons(app);
  const auto commands = app.get_subcommands([](const CLI::App *) { return true; });
  if (!words.empty() && !words.front().starts_with('-') &&
      std::none_of(commands.begin(), commands.end(),
                   [&](const CLI::App *command) { return command->get_name() == words.front(); }))
    throw CLI::ExtrasError("zol", {"no command \"" + words.front() + '"'});
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp &) {
    const auto chosen = app.get_subcommands();
    std::fputs((chosen.empty() ? app.help() : chosen.front()->help()).c_str(), stdout);
  }
}

} // namespace

int main(int argc, char **argv) {
  std::signal(SIGPIPE, SIG_IGN); // a reader that goes away is a failed write
  zol::host::heedInterruptions();
  try {
    run(argc, argv);
    if (std::fflush(stdout) != 0)
      return complain("cannot write to standard output", kFailed);
    return 0;
  } catch (const CLI::ParseError &error) {
    return complain(std::string(error.what()) + "; see zol --help", kUsage);
  } catch (const std::bad_alloc &) {
    return complain("out of memory", kFailed);
  } catch (const std::exception &error) {
    return complain(error.what(), kFailed);
  }
}
