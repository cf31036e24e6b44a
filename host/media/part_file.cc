#include "host/media/part_file.h"

#include "host/media/process.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>

namespace zol::host {
namespace {

using Json = nlohmann::json;

/// A number of EBML: the zeros before its first bit tell how many bytes there are. Sizes are told without
/// that bit.
std::optional<uint64_t> ebmlNumber(std::istream &stream, bool marked) {
  const int first = stream.get();
  if (first <= 0)
    return std::nullopt;
  int more = 0;
  while ((first & (0x80 >> more)) == 0)
    ++more;
  auto number = static_cast<uint64_t>(marked ? first : first & (0x7F >> more));
  for (int i = 0; i < more; ++i)
    number = number << 8 | static_cast<uint64_t>(stream.get());
  return stream ? std::optional(number) : std::nullopt;
}

constexpr uint64_t kHeader = 0x1A45DFA3, kSegment = 0x18538067;

bool isMatroska(const std::string &file) {
  std::ifstream stream(file, std::ios::binary);
  return !stream || ebmlNumber(stream, true) == kHeader; // what cannot be read is ffprobe's to tell
}

/// Whether the file ends where its header says: others were cut off, or are still being written.
bool isWhole(const std::string &file) {
  std::ifstream stream(file, std::ios::binary);
  ebmlNumber(stream, true);
  stream.seekg(static_cast<std::streamoff>(ebmlNumber(stream, false).value_or(0)), std::ios::cur);
  if (ebmlNumber(stream, true) != kSegment)
    return false;
  const auto size = ebmlNumber(stream, false);
  std::error_code error;
  return size && stream &&
         static_cast<uint64_t>(stream.tellg()) + *size == std::filesystem::file_size(file, error);
}

} // namespace

PartFile readPartFile(const std::string &file, const std::string &tag, const MediaPrograms &programs) {
  const auto refuse = [&](const std::string &why) { throw HostError("cannot read " + file + ": " + why); };
  if (!isMatroska(file))
    refuse("it is no Matroska file");
  Process::Options options;
  options.output = Process::Stream::Pipe;
  Process process({programs.ffprobe, "-v", "error", "-print_format", "json", "-show_data_hash", "sha256",
                   "-select_streams", "v:0", "-show_entries",
                   "format_tags:stream=codec_name,has_b_frames,extradata_hash:stream_tags=ENCODER", "-f",
                   "matroska", fileUrl(file)},
                  options);
  const std::string answer = process.readAll();
  if (process.wait() != 0)
    refuse(reasonOf(process, fileUrl(file)));
  PartFile found;
  const Json json = Json::parse(answer, nullptr, false);
  try {
    const Json &stream = json.at("streams").at(0);
    found.codec = stream.at("codec_name");
    found.extradata = stream.value("extradata_hash", "");
    found.encoder = stream.value("tags", Json::object()).value("ENCODER", "");
    found.delay = stream.value("has_b_frames", 0);
    found.tag = json.value("format", Json::object()).value("tags", Json::object()).value(tag, "");
  } catch (const Json::exception &) {
    refuse("no pictures in it");
  }
  if (!isWhole(file))
    refuse("it is not whole");
  return found;
}

} // namespace zol::host
