#include "host/media/zscale.h"

#include "host/media/process.h"

#include <map>
#include <mutex>

namespace zol::host {
namespace {

const char *matrixName(ColorMatrix matrix) {
  switch (matrix) {
  case ColorMatrix::Rgb: return "gbr";
  case ColorMatrix::Bt601: return "170m";
  case ColorMatrix::Bt709: return "709";
  case ColorMatrix::Fcc: return "fcc";
  case ColorMatrix::Smpte240m: return "7"; // its name differs from version to version
  case ColorMatrix::YCgCo: return "ycgco";
  case ColorMatrix::Bt2020: return "2020_ncl";
  }
  return "input";
}

const char *siteName(ChromaSite site) {
  switch (site) {
  case ChromaSite::Left: return "left";
  case ChromaSite::Center: return "center";
  case ChromaSite::TopLeft: return "topleft";
  case ChromaSite::Top: return "top";
  case ChromaSite::BottomLeft: return "bottomleft";
  case ChromaSite::Bottom: return "bottom";
  }
  return "input";
}

/// How one end is coded, as the options end: "matrixin", "matrix".
std::string coding(const PictureLayout &layout, const std::string &end) {
  if (layout.format == kBgra)
    return ":matrix" + end + "=gbr:range" + end + "=full";
  return ":matrix" + end + "=" + matrixName(layout.coding.matrix) + ":range" + end + "=" +
         (layout.coding.fullRange ? "full" : "limited") + ":chromal" + end + "=" +
         siteName(layout.coding.site);
}

} // namespace

bool hasZscale(const MediaPrograms &programs) {
  static std::mutex mutex;
  static std::map<std::string, bool> known;
  const std::lock_guard lock(mutex);
  const auto [found, isNew] = known.emplace(programs.ffmpeg, false);
  if (isNew) {
    Process::Options options;
    options.output = Process::Stream::Pipe;
    Process process({programs.ffmpeg, "-v", "quiet", "-h", "filter=zscale"}, options);
    std::string answer(1 << 16, '\0');
    answer.resize(process.read(answer.data(), answer.size()));
    found->second = answer.find("chromal") != std::string::npos;
  }
  return found->second;
}

std::string zscaleFilters(const PictureLayout &from, const PictureLayout &to) {
  const PixelFormat &yuv = from.format == kBgra ? to.format : from.format;
  const std::string planes = yuv.alpha ? "gbrap" : "gbrp";
  std::string filters = from.format == kBgra ? "format=" + planes + "," : "";
  filters += "zscale=" + std::to_string(to.width) + ":" + std::to_string(to.height) +
             ":filter=bicubic:param_a=0:param_b=0.5" + coding(from, "in") + coding(to, "");
  return filters + ",format=" + (to.format == kBgra ? planes + ",format=bgra" : to.format.name());
}

} // namespace zol::host
