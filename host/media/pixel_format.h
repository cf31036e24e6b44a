// The formats in which pictures cross the pipes, and how their colours are coded.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zol::host {

enum class ColorFamily { Grey, Yuv, Rgb };

/// A format of raw video. Planes follow each other without padding, in ffmpeg's order: Y U V or G B R or grey
/// alone, then alpha; samples of more than 8 bits are little-endian words. Or packed: blue, green, red and
/// alpha, one byte each, which is what effects work on.
struct PixelFormat {
  ColorFamily family = ColorFamily::Rgb;
  bool packed = false;
  int depth = 8;
  int chromaShiftX = 0; ///< A plane of chroma has 2 to the power of these fewer columns and rows, rounded up.
  int chromaShiftY = 0;
  bool alpha = false;
  bool fullRangeName = false; ///< One of ffmpeg's names that say "full range": yuvj420p and its like.

  [[nodiscard]] int planes() const {
    return packed ? 1 : (family == ColorFamily::Grey ? 1 : 3) + static_cast<int>(alpha);
  }
  [[nodiscard]] bool isChroma(int plane) const {
    return family == ColorFamily::Yuv && (plane == 1 || plane == 2);
  }
  [[nodiscard]] int sampleBytes() const { return packed ? 4 : depth > 8 ? 2 : 1; }
  /// Sizes up to which chroma is whole.
  [[nodiscard]] int roundedWidth(int width) const {
    return (width + (1 << chromaShiftX) - 1) >> chromaShiftX << chromaShiftX;
  }
  [[nodiscard]] int roundedHeight(int height) const {
    return (height + (1 << chromaShiftY) - 1) >> chromaShiftY << chromaShiftY;
  }
  /// As ffmpeg names it.
  [[nodiscard]] std::string name() const;

  bool operator==(const PixelFormat &) const = default;
};

inline constexpr PixelFormat kBgra{.packed = true, .alpha = true};

/// The format to ask of ffmpeg for pictures that it decodes as `decoded`: the same where it is planar, else
/// the one that holds the same samples. 8-bit RGB comes packed, because ffmpeg takes packed alpha into planes
/// with errors. `alpha` asks for alpha where the name does not tell that there is some.
PixelFormat pipeFormat(std::string_view decoded, bool alpha = false);

enum class ColorMatrix { Rgb, Bt601, Bt709, Fcc, Smpte240m, YCgCo, Bt2020 };
enum class ChromaSite { Left, Center, TopLeft, Top, BottomLeft, Bottom };

/// What the samples of a YUV or grey picture mean. RGB is of full range.
struct ColorCoding {
  ColorMatrix matrix = ColorMatrix::Bt709;
  bool fullRange = false;
  ChromaSite site = ChromaSite::Left;

  bool operator==(const ColorCoding &) const = default;
};

/// The coding that ffprobe's color_space, color_range and chroma_location tell. What they leave open: BT.709
/// from 1280 columns or 720 rows on, else BT.601; limited range, but full for grey and yuvj; chroma at the
/// left, but in the centre for yuvj.
ColorCoding colorCoding(const PixelFormat &format, int width, int height, std::string_view space,
                        std::string_view range, std::string_view location);

/// A picture in memory.
struct PictureLayout {
  struct Plane {
    size_t offset; ///< Bytes from the beginning of the picture.
    size_t pitch;  ///< Bytes from row to row.
    int width;     ///< Samples.
    int height;
  };

  PixelFormat format = kBgra;
  int width = 0;
  int height = 0;
  ColorCoding coding{};
  bool interlaced = false; ///< Rows 0, 2, ... are one field, rows 1, 3, ... the other.
  double pixelAspect = 1;  ///< Width of a pixel by its height.

  [[nodiscard]] Plane plane(int index) const;
  [[nodiscard]] size_t bytes() const;
};

} // namespace zol::host
