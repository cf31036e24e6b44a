// A host that one looks at: a page on the user's own machine, served from here, over the reference host.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zol::studio {

struct Options {
  std::vector<std::string> files; ///< that the page may read from the start
  std::string folder;             ///< all media under it too; empty: none
  std::string output = ".";       ///< where renders are written
  std::optional<int> port;        ///< none: a free one
  std::string host = "Halvenor";
  std::string library;
  std::string page; ///< a folder with the page's files, in place of those compiled in
};

/// Serves until the process is asked to stop. `announce` is told the address as soon as it is served.
/// Throws HostError for what cannot begin.
void run(const Options &options, const std::function<void(const std::string &address)> &announce);

} // namespace zol::studio
