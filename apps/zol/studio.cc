// zol studio: a page on the user's own machine to try effects on.

#include "apps/studio/studio.h"
#include "apps/zol/commands.h"
#include "host/model/error.h"

#ifdef ZOL_WITH_STUDIO
#include <cstdio>
#include <cstdlib>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#endif

namespace zol::command {
namespace {

#ifdef ZOL_WITH_STUDIO

/// Where there is a desktop.
void openBrowser(const std::string &address) {
  if (std::getenv("DISPLAY") == nullptr && std::getenv("WAYLAND_DISPLAY") == nullptr)
    return;
  std::string program = "xdg-open", argument = address;
  char *const words[] = {program.data(), argument.data(), nullptr};
  pid_t child = 0;
  if (posix_spawnp(&child, program.c_str(), nullptr, nullptr, words, environ) == 0)
    std::thread([child] { waitpid(child, nullptr, 0); }).detach();
}

void serve(const studio::Options &options, bool open) {
  studio::run(options, [&](const std::string &address) {
    std::printf("%s\n", address.c_str());
    std::fflush(stdout);
    if (open)
      openBrowser(address);
  });
}

#else

void serve(const studio::Options &, bool) {
  throw host::HostError(
      "this zol has no studio; ./scripts/studio builds and starts the 64-bit one, which has");
}

#endif

} // namespace

void addStudio(CLI::App &zol) {
  CLI::App *app = zol.add_subcommand("studio", "Try effects in the browser, on pictures, clips and sound");
  const auto options = std::make_shared<studio::Options>();
  const auto closed = std::make_shared<bool>(false);
  app->add_option("files", options->files, "Pictures, clips and sounds to begin with")->type_name("FILE");
  app->add_option("--folder", options->folder, "Offer all pictures, clips and sounds under it too")
      ->type_name("DIR");
  app->add_option("--output", options->output, "Where renders are written, by default the working folder")
      ->type_name("DIR");
  app->add_option("--port", options->port, "The port of this machine, by default a free one")
      ->check(CLI::Range(1, 65535))
      ->type_name("N");
  app->add_flag("--no-open", *closed, "Print the address alone, open no browser");
  app->add_option("--page", options->page, "Serve the page from its sources, for those who change it")
      ->type_name("DIR");
  addHostOptions(*app, options->host, options->library);
  app->footer(
      "The address holds a secret of this start: only who opens it is served, on this machine alone.\n"
      "Files are read that were named here, lie under --folder or are dropped on the page; Ctrl-C ends it.\n"
      "Example:\n  zol studio photo.jpg clip.mp4");
  app->callback([=] { serve(*options, !*closed); });
}

} // namespace zol::command
