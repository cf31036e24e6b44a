#include "host/media/pixel_format.h"

#include <charconv>
#include <optional>
#include <utility>

namespace zol::host {
namespace {

struct Sampling {
  std::string_view digits;
  int shiftX, shiftY;
};
constexpr Sampling kSamplings[] = {{"420", 1, 1}, {"422", 1, 0}, {"444", 0, 0},
                                   {"440", 0, 1}, {"411", 2, 0}, {"410", 2, 2}};

bool take(std::string_view &text, std::string_view start) {
  if (!text.starts_with(start))
    return false;
  text.remove_prefix(start.size());
  return true;
}

/// What follows the family in a name: nothing, or the depth and the order of bytes.
std::optional<int> takeDepth(std::string_view text) {
  if (text.empty())
    return 8;
  int depth = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), depth);
  text.remove_prefix(static_cast<size_t>(end - text.data()));
  if (error != std::errc() || depth < 9 || depth > 16 || !(text.empty() || text == "le" || text == "be"))
    return std::nullopt;
  return depth;
}

/// A planar format by its own name, whatever the order of bytes.
std::optional<PixelFormat> planarFormat(std::string_view name) {
  PixelFormat format;
  if (take(name, "gray")) {
    format.family = ColorFamily::Grey;
  } else if (take(name, "gbr")) {
    format.alpha = take(name, "a");
    if (!take(name, "p"))
      return std::nullopt;
  } else if (take(name, "yuv")) {
    format.family = ColorFamily::Yuv;
    format.alpha = take(name, "a");
    format.fullRangeName = take(name, "j");
    bool known = false;
    for (const Sampling &sampling : kSamplings)
      if (!known && take(name, sampling.digits)) {
        format.chromaShiftX = sampling.shiftX;
        format.chromaShiftY = sampling.shiftY;
        known = true;
      }
    if (!known || !take(name, "p"))
      return std::nullopt;
  } else {
    return std::nullopt;
  }
  const auto depth = takeDepth(name);
  if (!depth)
    return std::nullopt;
  format.depth = *depth;
  return format;
}

/// What is not planar, by the beginnings of the names: the first that fits.
constexpr std::pair<std::string_view, std::string_view> kHeldBy[] = {
    {"nv12", "yuv420p"},    {"nv21", "yuv420p"},      {"nv16", "yuv422p"},      {"nv20", "yuv422p10"},
    {"nv24", "yuv444p"},    {"nv42", "yuv444p"},      {"p010", "yuv420p10"},    {"p012", "yuv420p12"},
    {"p016", "yuv420p16"},  {"p210", "yuv422p10"},    {"p212", "yuv422p12"},    {"p216", "yuv422p16"},
    {"p410", "yuv444p10"},  {"p412", "yuv444p12"},    {"p416", "yuv444p16"},    {"yuyv422", "yuv422p"},
    {"yvyu422", "yuv422p"}, {"uyvy422", "yuv422p"},   {"uyyvyy411", "yuv411p"}, {"y210", "yuv422p10"},
    {"y212", "yuv422p12"},  {"xv30", "yuv444p10"},    {"xv36", "yuv444p12"},    {"vuyx", "yuv444p"},
    {"vuya", "yuva444p"},   {"ayuv64", "yuva444p16"}, {"ayuv", "yuva444p"},     {"ya16", "gbrap16"},
    {"mono", "gray"},       {"grayf", "gray16"},      {"gbrpf", "gbrp16"},      {"gbrapf", "gbrap16"},
    {"rgb48", "gbrp16"},    {"bgr48", "gbrp16"},      {"rgba64", "gbrap16"},    {"bgra64", "gbrap16"},
    {"x2rgb10", "gbrp10"},  {"x2bgr10", "gbrp10"},    {"xyz12", "gbrp16"},      {"rgbaf", "gbrap16"},
    {"rgbf", "gbrp16"},
};

ColorMatrix matrixOf(std::string_view space, bool highDefinition) {
  if (space == "bt709")
    return ColorMatrix::Bt709;
  if (space == "bt470bg" || space == "smpte170m")
    return ColorMatrix::Bt601;
  if (space == "fcc")
    return ColorMatrix::Fcc;
  if (space == "smpte240m")
    return ColorMatrix::Smpte240m;
  if (space == "ycgco")
    return ColorMatrix::YCgCo;
  if (space.starts_with("bt2020") || space == "ictcp")
    return ColorMatrix::Bt2020;
  return highDefinition ? ColorMatrix::Bt709 : ColorMatrix::Bt601;
}

ChromaSite siteOf(std::string_view location, bool centred) {
  constexpr std::pair<std::string_view, ChromaSite> kSites[] = {
      {"left", ChromaSite::Left}, {"center", ChromaSite::Center},         {"topleft", ChromaSite::TopLeft},
      {"top", ChromaSite::Top},   {"bottomleft", ChromaSite::BottomLeft}, {"bottom", ChromaSite::Bottom}};
  for (const auto &[name, site] : kSites)
    if (location == name)
      return site;
  return centred ? ChromaSite::Center : ChromaSite::Left;
}

size_t ceilShift(int value, int shift) { return static_cast<size_t>((value + (1 << shift) - 1) >> shift); }

} // namespace

std::string PixelFormat::name() const {
  if (packed)
    return "bgra";
  std::string text;
  switch (family) {
  case ColorFamily::Grey: text = "gray"; break;
  case ColorFamily::Rgb: text = alpha ? "gbrap" : "gbrp"; break;
  case ColorFamily::Yuv:
    text = alpha ? "yuva" : fullRangeName ? "yuvj" : "yuv";
    for (const Sampling &sampling : kSamplings)
      if (sampling.shiftX == chromaShiftX && sampling.shiftY == chromaShiftY)
        text.append(sampling.digits).append("p");
    break;
  }
  return depth == 8 ? text : text + std::to_string(depth) + "le";
}

PixelFormat pipeFormat(std::string_view decoded, bool alpha) {
  std::optional<PixelFormat> format = planarFormat(decoded);
  for (const auto &[start, held] : kHeldBy)
    if (!format && decoded.starts_with(start))
      format = planarFormat(held);
  if (!format)
    return kBgra;
  if (alpha && !format->alpha) {
    if (format->family == ColorFamily::Grey)
      return format->depth == 8 ? kBgra : PixelFormat{.depth = 16, .alpha = true};
    format->alpha = true;
    format->fullRangeName = false;
  }
  return *format;
}

ColorCoding colorCoding(const PixelFormat &format, int width, int height, std::string_view space,
                        std::string_view range, std::string_view location) {
  ColorCoding coding;
  coding.matrix = format.family == ColorFamily::Rgb
                      ? ColorMatrix::Rgb
                      : matrixOf(space, !format.fullRangeName && (width >= 1280 || height >= 720));
  const bool fullByNature = format.family != ColorFamily::Yuv || format.fullRangeName;
  coding.fullRange = format.fullRangeName || range == "pc" || (range != "tv" && fullByNature);
  coding.site = siteOf(location, format.fullRangeName);
  return coding;
}

PictureLayout::Plane PictureLayout::plane(int index) const {
  const auto size = [&](int of) {
    const bool chroma = format.isChroma(of);
    return std::pair(ceilShift(width, chroma ? format.chromaShiftX : 0),
                     ceilShift(height, chroma ? format.chromaShiftY : 0));
  };
  const auto sample = static_cast<size_t>(format.sampleBytes());
  size_t offset = 0;
  for (int i = 0; i < index; ++i)
    offset += size(i).first * size(i).second * sample;
  const auto [columns, rows] = size(index);
  return {offset, columns * sample, static_cast<int>(columns), static_cast<int>(rows)};
}

size_t PictureLayout::bytes() const {
  const Plane last = plane(format.planes() - 1);
  return last.offset + last.pitch * static_cast<size_t>(last.height);
}

} // namespace zol::host
