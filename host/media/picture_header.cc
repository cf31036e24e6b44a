#include "host/media/picture_header.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zol::host {
namespace {

using namespace std::string_view_literals;

constexpr int kMostParts = 4096; // segments, chunks or tags; more is a hostile file

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
    uint64_t value = 0;
    for (size_t i = 0; i < bytes.size(); ++i)
      value = value << 8 | static_cast<uint8_t>(bytes[bigEndian ? i : bytes.size() - 1 - i]);
    return bytes.size() == size ? value : 0;
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

void readJpeg(const Bytes &bytes, PictureHeader &header) {
  uint64_t place = 2;
  for (int i = 0; i < kMostParts; ++i) {
    const uint64_t marker = bytes.number(place, 2, true);
    constexpr uint64_t kApp1 = 0xFFE1, kApp2 = 0xFFE2, kScan = 0xFFDA;
    if (marker < 0xFFC0 || marker == kScan)
      return;
    if (marker == kApp1 && bytes.has(place + 4, "Exif\0\0"sv))
      readTiff(bytes, place + 10, header);
    if (marker == kApp2 && bytes.has(place + 4, "ICC_PROFILE\0\1"sv))
      header.otherColors = isOther(bytes.at(place + 18, kProfileStart));
    place += 2 + bytes.number(place + 2, 2, true);
  }
}

void readPng(const Bytes &bytes, PictureHeader &header) {
  uint64_t place = 8;
  for (int i = 0; i < kMostParts; ++i) {
    const std::string type = bytes.at(place + 4, 4);
    if (type.size() < 4)
      return;
    if (type == "eXIf")
      readTiff(bytes, place + 8, header);
    if (type == "iCCP") { // deflated behind its name
      const std::string name = bytes.at(place + 8, 80);
      header.otherColors = isOther(name.substr(0, name.find('\0')));
    }
    place += 12 + bytes.number(place, 4, true);
  }
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
