#include "host/media/picture_header.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zol::host {
namespace {

using namespace std::string_view_literals;

constexpr int kMostParts = 4096; // segments, chunks or tags; more is a hostile file

uint64_t numberIn(std::string_view bytes, bool bigEndian) {
  uint64_t value = 0;
  for (size_t i = 0; i < bytes.size(); ++i)
    value = value << 8 | static_cast<uint8_t>(bytes[bigEndian ? i : bytes.size() - 1 - i]);
  return value;
}

/// Bytes of a file by their place; fewer behind its end.
class Bytes {
public:
  explicit Bytes(std::istream &file) : file_(file) {}

  [[nodiscard]] std::string at(uint64_t place, size_t size) const {
    std::string bytes(size, '\0');
    file_.clear();
    file_.seekg(static_cast<std::streamoff>(place));
    file_.read(bytes.data(), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<size_t>(file_.gcount()));
    return bytes;
  }
  [[nodiscard]] bool has(uint64_t place, std::string_view text) const {
    return at(place, text.size()) == text;
  }
  /// 0 behind the end.
  [[nodiscard]] uint64_t number(uint64_t place, size_t size, bool bigEndian) const {
    const std::string bytes = at(place, size);
    return bytes.size() == size ? numberIn(bytes, bigEndian) : 0;
  }

private:
  std::istream &file_;
};

/// Profiles name themselves in ASCII or in UTF-16.
bool isOther(const std::string &profile) {
  return profile.find("sRGB") == std::string::npos && profile.find("s\0R\0G\0B"sv) == std::string::npos;
}
constexpr size_t kProfileStart = 4096; // bytes in which the name stands

/// TIFF files and Exif data are built alike; `start` is where either begins.
void readTiff(const Bytes &bytes, uint64_t start, PictureHeader &header) {
  const bool bigEndian = bytes.has(start, "MM");
  if (!bigEndian && !bytes.has(start, "II"))
    return;
  const uint64_t directory = start + bytes.number(start + 4, 4, bigEndian);
  const uint64_t tags = bytes.number(directory, 2, bigEndian);
  for (uint64_t i = 0; i < tags && i < kMostParts; ++i) {
    const uint64_t entry = directory + 2 + 12 * i, tag = bytes.number(entry, 2, bigEndian);
    constexpr uint64_t kOrientation = 274, kProfile = 34675;
    if (tag == kOrientation)
      if (const uint64_t value = bytes.number(entry + 8, 2, bigEndian); value >= 1 && value <= 8)
        header.orientation = static_cast<int>(value);
    if (tag == kProfile)
      header.otherColors = isOther(bytes.at(start + bytes.number(entry + 8, 4, bigEndian), kProfileStart));
  }
}

/// The format of the samples, by a JPEG frame's header; empty for what is unusual.
std::string jpegPixels(const std::string &frame) {
  const auto byte = [&](size_t i) { return i < frame.size() ? static_cast<uint8_t>(frame[i]) : 0; };
  if (byte(0) != 8)
    return {};
  if (byte(5) == 1)
    return byte(7) == 0x11 ? "gray" : "";
  if (byte(5) != 3 || byte(6) > 1 || byte(9) != byte(6) + 1 || byte(10) != byte(13))
    return {};
  switch (byte(7) << 8 | byte(10)) { // sampling of luma and of chroma
  case 0x1111:
  case 0x1212: return "yuvj444p";
  case 0x1211: return "yuvj440p";
  case 0x2111:
  case 0x2212: return "yuvj422p";
  case 0x2211: return "yuvj420p";
  default: return {};
  }
}

void readJpeg(const Bytes &bytes, PictureHeader &header) {
  uint64_t place = 2;
  bool usual = true;
  std::string frame;
  for (int i = 0; i < kMostParts; ++i) {
    const uint64_t marker = bytes.number(place, 2, true);
    constexpr uint64_t kFirstFrame = 0xFFC0, kLastUsualFrame = 0xFFC2, kTables = 0xFFC4, kLastFrame = 0xFFCF,
                       kScan = 0xFFDA, kApp0 = 0xFFE0, kApp1 = 0xFFE1, kApp2 = 0xFFE2, kApp14 = 0xFFEE,
                       kComment = 0xFFFE;
    if (marker < kFirstFrame || marker == kScan)
      break;
    if (marker == kApp0 && bytes.has(place + 4, "JFIF"))
      usual = usual && bytes.number(place + 12, 2, true) == bytes.number(place + 14, 2, true);
    if (marker == kApp1 && bytes.has(place + 4, "Exif\0\0"sv))
      readTiff(bytes, place + 10, header);
    if (marker == kApp2 && bytes.has(place + 4, "ICC_PROFILE\0\1"sv))
      header.otherColors = isOther(bytes.at(place + 18, kProfileStart));
    if (marker == kApp14 || marker == kComment) // may say that colours are coded otherwise
      usual = usual && !bytes.has(place + 4, "Adobe") && !bytes.has(place + 4, "CS=");
    if (marker >= kFirstFrame && marker <= kLastUsualFrame)
      frame = bytes.at(place + 4, 15);
    else if (marker > kTables && marker <= kLastFrame)
      usual = false;
    place += 2 + bytes.number(place + 2, 2, true);
  }
  if (const std::string pixels = jpegPixels(frame); usual && !pixels.empty())
    header.decoded = {static_cast<int>(numberIn(frame.substr(3, 2), true)),
                      static_cast<int>(numberIn(frame.substr(1, 2), true)), "jpeg_pipe", "mjpeg", pixels};
}

/// The format of the samples, by a PNG file's header; empty for what is unusual.
std::string pngPixels(uint64_t depth, uint64_t color) {
  const bool deep = depth == 16;
  if (depth != 8 && !deep)
    return {};
  switch (color) {
  case 0: return deep ? "gray16be" : "gray";
  case 2: return deep ? "rgb48be" : "rgb24";
  case 4: return deep ? "ya16be" : "ya8";
  case 6: return deep ? "rgba64be" : "rgba";
  default: return {};
  }
}

void readPng(const Bytes &bytes, PictureHeader &header) {
  uint64_t place = 8;
  bool usual = bytes.has(12, "IHDR");
  for (int i = 0; i < kMostParts; ++i) {
    const std::string type = bytes.at(place + 4, 4);
    if (type.size() < 4)
      break;
    if (type == "eXIf")
      readTiff(bytes, place + 8, header);
    if (type == "iCCP") { // deflated behind its name
      const std::string name = bytes.at(place + 8, 80);
      header.otherColors = isOther(name.substr(0, name.find('\0')));
    }
    if (type == "pHYs")
      usual = usual && bytes.number(place + 8, 4, true) == bytes.number(place + 12, 4, true);
    if (type == "tRNS" || type == "acTL" || type == "cICP" || type == "cHRM") // alpha, films, colours
      usual = false;
    place += 12 + bytes.number(place, 4, true);
  }
  const uint64_t width = bytes.number(16, 4, true), height = bytes.number(20, 4, true);
  const std::string pixels = pngPixels(bytes.number(24, 1, true), bytes.number(25, 1, true));
  if (usual && !pixels.empty() && width <= INT16_MAX && height <= INT16_MAX)
    header.decoded = {static_cast<int>(width), static_cast<int>(height), "png_pipe", "png", pixels};
}

void readWebp(const Bytes &bytes, PictureHeader &header) {
  uint64_t place = 12;
  for (int i = 0; i < kMostParts; ++i) {
    const std::string type = bytes.at(place, 4);
    if (type.size() < 4)
      return;
    if (type == "EXIF")
      readTiff(bytes, place + (bytes.has(place + 8, "Exif\0\0"sv) ? 14 : 8), header);
    if (type == "ICCP")
      header.otherColors = isOther(bytes.at(place + 8, kProfileStart));
    const uint64_t size = bytes.number(place + 4, 4, false);
    place += 8 + size + size % 2;
  }
}

} // namespace

PictureHeader readPictureHeader(std::istream &file) {
  PictureHeader header;
  const Bytes bytes(file);
  if (bytes.has(0, "\xFF\xD8"))
    readJpeg(bytes, header);
  else if (bytes.has(0, "\x89PNG"))
    readPng(bytes, header);
  else if (bytes.has(0, "RIFF") && bytes.has(8, "WEBP"))
    readWebp(bytes, header);
  else if (bytes.has(0, "II*\0"sv) || bytes.has(0, "MM\0*"sv))
    readTiff(bytes, 0, header);
  return header;
}

} // namespace zol::host
