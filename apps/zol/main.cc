// zol: the command over the reference host.

#include "apps/zol/commands.h"
#include "apps/zol/words.h"

#include "host/farm/error.h"
#include "host/media/interrupt.h"
#include "host/model/text.h"
#include "host/services/picture_memory.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <malloc.h>
#include <new>

namespace {

constexpr int kLargestKept = 32 << 20; // bytes of a picture
constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr int kSignalled = 128; // and the signal, as shells have it

int complain(const std::string &line, int status) {
  if (zol::host::interrupted()) { // whatever failed, this is why
    zol::command::tellError("interrupted");
    return kSignalled + zol::host::interruption();
  }
  zol::command::tellError(line);
  return status;
}

void run(const std::vector<std::string> &words) {
  using namespace zol::command;
  if (!words.empty() && words.front() == "render") {
    runRender({words.begin() + 1, words.end()});
    return;
  }
  if (!words.empty() && words.front() == "farm") {
    runFarm({words.begin() + 1, words.end()});
    return;
  }
  if (!words.empty() && words.front() == "complete") {
    complete({words.begin() + 1, words.end()});
    return;
  }
  const auto commands = makeCommands();
  try {
    parseWords(*commands, words);
  } catch (const CLI::CallForHelp &) {
    std::fputs(commands->help().c_str(), stdout);
  } catch (const CLI::CallForVersion &version) {
    std::printf("%s\n", version.what());
  }
}

} // namespace

int main(int argc, char **argv) {
  // Pictures come and go: their memory is kept, not fetched from the system anew for each.
  mallopt(M_MMAP_THRESHOLD, kLargestKept);
  mallopt(M_TRIM_THRESHOLD, 4 * kLargestKept);
  zol::host::keepPictureMemory(size_t{2} * kLargestKept);
  std::signal(SIGPIPE, SIG_IGN); // a reader that goes away is a failed write
  zol::host::heedInterruptions();
  try {
    run({argv + 1, argv + argc});
    if (std::fflush(stdout) != 0)
      return complain("cannot write to standard output", kFailed);
    return 0;
  } catch (const CLI::ParseError &error) {
    const std::string line = error.what();
    return complain(line + (line.ends_with('?') ? "" : "; see zol --help"), kUsage);
  } catch (const std::bad_alloc &) {
    return complain("out of memory", kFailed);
  } catch (const zol::host::FarmError &error) {
    return complain(error.what(), static_cast<int>(error.end));
  } catch (const std::exception &error) {
    return complain(error.what(), kFailed);
  }
}
