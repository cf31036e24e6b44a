#include "host/model/text_file.h"

#include "host/model/error.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <unistd.h>

namespace zol::host {
namespace {

std::string reason() { return std::generic_category().message(errno); }

} // namespace

std::string readTextFile(const std::string &file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream)
    throw HostError("cannot read " + file + ": " + reason());
  return {std::istreambuf_iterator<char>(stream), {}};
}

void writeTextFile(const std::string &file, const std::string &text) {
  const std::filesystem::path target(file); // folders are searched by how names begin
  const auto unfinished =
      target.parent_path() / ('.' + std::to_string(getpid()) + target.filename().string());
  std::ofstream stream(unfinished, std::ios::binary);
  stream << text << std::flush;
  std::error_code error;
  if (stream)
    std::filesystem::rename(unfinished, file, error);
  if (stream && !error)
    return;
  const HostError failed("cannot write " + file + ": " + (error ? error.message() : reason()));
  std::filesystem::remove(unfinished, error);
  throw failed;
}

} // namespace zol::host
