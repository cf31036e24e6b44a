// Conversions of pictures against the same mathematics in double precision, and against what ffmpeg lays out.
#include "host/media/aligned_bytes.h"
#include "host/media/bgra_rows.h"
#include "host/media/conversion.h"
#include "host/media/process.h"
#include "host/model/error.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace zol::host {
namespace {

using Bytes = std::vector<uint8_t>;

/// A channel in double precision.
struct Channel {
  int width, height;
  std::vector<double> values;

  Channel(int w, int h) : width(w), height(h), values(static_cast<size_t>(w) * static_cast<size_t>(h)) {}
  double &at(int x, int y) { return values[static_cast<size_t>(y * width + x)]; }
  [[nodiscard]] double at(int x, int y) const { return values[static_cast<size_t>(y * width + x)]; }
};

int mirrored(int i, int n) {
  while (i < 0 || i >= n)
    i = i < 0 ? -1 - i : 2 * n - 1 - i;
  return i;
}

double catmullRom(double x) {
  x = std::abs(x);
  if (x < 1)
    return ((1.5 * x - 2.5) * x) * x + 1;
  return x < 2 ? ((-0.5 * x + 2.5) * x - 4) * x + 2 : 0;
}

/// The value at a place between samples, for a kernel `wide` times as wide.
double sampled(const std::function<double(int)> &sample, int n, double place, double wide) {
  double sum = 0, weights = 0;
  for (int i = static_cast<int>(std::floor(place - 2 * wide)); i <= place + 2 * wide; ++i) {
    const double weight = catmullRom((i - place) / wide);
    sum += weight * sample(mirrored(i, n));
    weights += weight;
  }
  return sum / weights;
}

Channel resized(const Channel &from, int width, int height, const std::function<double(int)> &placeX,
                const std::function<double(int)> &placeY) {
  const double wideX = std::max(1.0, double(from.width) / width);
  const double wideY = std::max(1.0, double(from.height) / height);
  Channel across(width, from.height), result(width, height);
  for (int y = 0; y < from.height; ++y)
    for (int x = 0; x < width; ++x)
      across.at(x, y) = sampled([&](int i) { return from.at(i, y); }, from.width, placeX(x), wideX);
  for (int x = 0; x < width; ++x)
    for (int y = 0; y < height; ++y)
      result.at(x, y) = sampled([&](int i) { return across.at(x, i); }, from.height, placeY(y), wideY);
  return result;
}

/// Where the first sample of chroma lies among those of luma.
struct Site {
  double x, y;
};
Site siteOf(const PictureLayout &layout, int field) {
  const double middleX = ((1 << layout.format.chromaShiftX) - 1) / 2.0;
  const double middleY = ((1 << layout.format.chromaShiftY) - 1) / 2.0;
  Site site{};
  switch (layout.coding.site) {
  case ChromaSite::Left: site = {0, middleY}; break;
  case ChromaSite::Center: site = {middleX, middleY}; break;
  case ChromaSite::TopLeft: site = {0, 0}; break;
  case ChromaSite::Top: site = {middleX, 0}; break;
  case ChromaSite::BottomLeft: site = {0, 2 * middleY}; break;
  case ChromaSite::Bottom: site = {middleX, 2 * middleY}; break;
  }
  if (layout.interlaced && layout.format.chromaShiftY > 0)
    site.y += field == 0 ? -0.25 : 0.25;
  return site;
}

struct Weights {
  double red, blue;
};
Weights weightsOf(ColorMatrix matrix) {
  switch (matrix) {
  case ColorMatrix::Bt709: return {0.2126, 0.0722};
  case ColorMatrix::Fcc: return {0.30, 0.11};
  case ColorMatrix::Smpte240m: return {0.212, 0.087};
  case ColorMatrix::Bt2020: return {0.2627, 0.0593};
  default: return {0.299, 0.114};
  }
}

using Triple = std::array<double, 3>;

/// From luma 0 ... 1 and chroma -0.5 ... 0.5.
Triple toRgb(ColorMatrix matrix, const Triple &yuv) {
  const auto [y, u, v] = yuv;
  if (matrix == ColorMatrix::YCgCo)
    return {y - u + v, y + u, y - u - v};
  const auto [kr, kb] = weightsOf(matrix);
  const double r = y + 2 * (1 - kr) * v, b = y + 2 * (1 - kb) * u;
  return {r, (y - kr * r - kb * b) / (1 - kr - kb), b};
}

Triple toYuv(ColorMatrix matrix, const Triple &rgb) {
  const auto [r, g, b] = rgb;
  if (matrix == ColorMatrix::YCgCo)
    return {r / 4 + g / 2 + b / 4, g / 2 - r / 4 - b / 4, r / 2 - b / 2};
  const auto [kr, kb] = weightsOf(matrix);
  const double y = kr * r + (1 - kr - kb) * g + kb * b;
  return {y, (b - y) / (2 * (1 - kb)), (r - y) / (2 * (1 - kr))};
}

/// Code values: zero of the plane and the distance that means 1.
struct Scale {
  double zero, one;
};
Scale scaleOf(const PictureLayout &layout, bool chroma) {
  const double unit = 1 << (layout.format.depth - 8), most = (1 << layout.format.depth) - 1;
  if (layout.coding.fullRange)
    return {chroma ? 128 * unit : 0, most};
  return {(chroma ? 128 : 16) * unit, (chroma ? 224 : 219) * unit};
}

int codeAt(const PictureLayout &layout, const uint8_t *picture, int plane, int x, int y) {
  const auto where = layout.plane(plane);
  const auto bytes = static_cast<size_t>(layout.format.sampleBytes());
  const uint8_t *sample =
      picture + where.offset + static_cast<size_t>(y) * where.pitch + static_cast<size_t>(x) * bytes;
  return bytes == 2 ? sample[0] | sample[1] << 8 : sample[0];
}

void setCode(const PictureLayout &layout, uint8_t *picture, int plane, int x, int y, int code) {
  const auto where = layout.plane(plane);
  const auto bytes = static_cast<size_t>(layout.format.sampleBytes());
  uint8_t *sample =
      picture + where.offset + static_cast<size_t>(y) * where.pitch + static_cast<size_t>(x) * bytes;
  sample[0] = static_cast<uint8_t>(code);
  if (bytes == 2)
    sample[1] = static_cast<uint8_t>(code >> 8);
}

/// Soft shapes with some noise, 0 ... 1.
double pattern(int x, int y, int channel, std::mt19937 &random) {
  const double noise = static_cast<double>(random() % 1024) / 1024 - 0.5;
  return std::clamp(
      0.5 + 0.35 * std::sin(x * 0.21 + channel) * std::cos(y * 0.17 - 2 * channel) + 0.25 * noise, 0.0, 1.0);
}

/// Distances between bytes and exact values.
struct Error {
  double largest = 0, squares = 0;
  size_t count = 0;

  void add(double got, double exact, double most) {
    const double difference = std::abs(got - std::clamp(exact, 0.0, most));
    largest = std::max(largest, difference);
    squares += difference * difference;
    ++count;
  }
  [[nodiscard]] double psnr(double most) const {
    return 10 * std::log10(most * most * static_cast<double>(count) / squares);
  }
};

/// One field of a plane as numbers. Where the field of luma has more rows, the last one is repeated.
Channel fieldOf(const PictureLayout &layout, const uint8_t *picture, int plane, int field, int fields) {
  const auto where = layout.plane(plane);
  const bool chroma = layout.format.isChroma(plane);
  const Scale scale = scaleOf(layout, chroma);
  const int rows = (where.height - field + fields - 1) / fields;
  const int step = chroma ? 1 << layout.format.chromaShiftY : 1;
  const int rowsOfLuma = (layout.height - field + fields - 1) / fields;
  Channel channel(where.width, (rowsOfLuma + step - 1) / step);
  for (int y = 0; y < channel.height; ++y)
    for (int x = 0; x < channel.width; ++x)
      channel.at(x, y) =
          (codeAt(layout, picture, plane, x, std::min(y, rows - 1) * fields + field) - scale.zero) /
          scale.one;
  return channel;
}

/// How far a BGRA picture is from the YUV picture that it was made of.
Error errorOfBgra(const PictureLayout &layout, const Bytes &yuv, const Bytes &bgra) {
  Error error;
  const int fields = layout.interlaced && layout.format.chromaShiftY > 0 ? 2 : 1;
  for (int field = 0; field < fields; ++field) {
    const Channel luma = fieldOf(layout, yuv.data(), 0, field, fields);
    const Site site = siteOf(layout, field);
    const auto chroma = [&](int plane) {
      return resized(
          fieldOf(layout, yuv.data(), plane, field, fields), luma.width, luma.height,
          [&](int x) { return (x - site.x) / (1 << layout.format.chromaShiftX); },
          [&](int y) { return (y - site.y) / (1 << layout.format.chromaShiftY); });
    };
    const Channel u = chroma(1), v = chroma(2);
    for (int y = 0; y < luma.height; ++y)
      for (int x = 0; x < luma.width; ++x) {
        const Triple rgb = toRgb(layout.coding.matrix, {luma.at(x, y), u.at(x, y), v.at(x, y)});
        const uint8_t *pixel = &bgra[static_cast<size_t>(4 * ((y * fields + field) * layout.width + x))];
        for (size_t c = 0; c < 3; ++c)
          error.add(pixel[2 - c], 255 * rgb[c], 255);
      }
  }
  return error;
}

/// How far a YUV picture is from the BGRA picture that it was made of.
Error errorOfYuv(const PictureLayout &layout, const Bytes &bgra, const Bytes &yuv) {
  Error error;
  const double most = (1 << layout.format.depth) - 1;
  const int fields = layout.interlaced && layout.format.chromaShiftY > 0 ? 2 : 1;
  for (int field = 0; field < fields; ++field) {
    const int rows = (layout.height - field + fields - 1) / fields;
    const int stepX = 1 << layout.format.chromaShiftX, stepY = 1 << layout.format.chromaShiftY;
    // Odd sizes go on with the last column and row.
    const int columns = (layout.width + stepX - 1) / stepX * stepX,
              lines = (rows + stepY - 1) / stepY * stepY;
    std::vector<Channel> exact(3, Channel(columns, lines));
    for (int y = 0; y < lines; ++y)
      for (int x = 0; x < columns; ++x) {
        const int row = std::min(y, rows - 1) * fields + field;
        const uint8_t *pixel =
            &bgra[static_cast<size_t>(4 * (row * layout.width + std::min(x, layout.width - 1)))];
        const Triple value =
            toYuv(layout.coding.matrix, {pixel[2] / 255.0, pixel[1] / 255.0, pixel[0] / 255.0});
        for (size_t c = 0; c < 3; ++c)
          exact[c].at(x, y) = value[c];
      }
    const Site site = siteOf(layout, field);
    for (int plane = 0; plane < 3; ++plane) {
      const bool chroma = plane > 0;
      Channel &source = exact[static_cast<size_t>(plane)];
      if (chroma)
        source = resized(
            source, columns / stepX, lines / stepY, [&](int x) { return x * stepX + site.x; },
            [&](int y) { return y * stepY + site.y; });
      const Scale scale = scaleOf(layout, chroma);
      const auto where = layout.plane(plane);
      for (int y = 0; y * fields + field < where.height; ++y)
        for (int x = 0; x < where.width; ++x)
          error.add(codeAt(layout, yuv.data(), plane, x, y * fields + field),
                    scale.zero + scale.one * source.at(x, y), most);
    }
  }
  return error;
}

Bytes patternBgra(int width, int height) {
  std::mt19937 random(7);
  Bytes bytes(static_cast<size_t>(4 * width * height));
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      for (int c = 0; c < 4; ++c)
        bytes[static_cast<size_t>(4 * (y * width + x) + c)] =
            static_cast<uint8_t>(std::lround(255 * pattern(x, y, c, random)));
  return bytes;
}

/// Colours all of which RGB has.
Bytes patternPlanes(const PictureLayout &layout) {
  std::mt19937 random(11);
  Bytes bytes(layout.bytes());
  for (int plane = 0; plane < layout.format.planes(); ++plane) {
    const auto where = layout.plane(plane);
    const bool chroma = layout.format.isChroma(plane);
    const Scale scale = scaleOf(layout, chroma);
    for (int y = 0; y < where.height; ++y)
      for (int x = 0; x < where.width; ++x) {
        const double value = pattern(x, y, plane, random);
        setCode(
            layout, bytes.data(), plane, x, y,
            static_cast<int>(std::lround(scale.zero + scale.one * (chroma ? (value - 0.5) * 0.6 : value))));
      }
  }
  return bytes;
}

PictureLayout layoutOf(const std::string &name, int width, int height, ColorCoding coding = {},
                       bool interlaced = false) {
  return {pipeFormat(name), width, height, coding, interlaced, 1};
}
PictureLayout bgraLayout(int width, int height) { return {kBgra, width, height, {}, false, 1}; }

Bytes converted(const PictureLayout &from, const Bytes &picture, const PictureLayout &to,
                Fit fit = Fit::stretch, uint32_t bars = 0xFF000000) {
  EXPECT_EQ(picture.size(), from.bytes());
  Bytes result(to.bytes(), 0xA5);
  Converter(from, to, fit, bars).convert(picture.data(), result.data());
  return result;
}

class Conversion : public testing::Test {
protected:
  void SetUp() override {
    if (!Converter::available())
      GTEST_SKIP() << "built without zimg";
  }
};

using M = ColorMatrix;
using S = ChromaSite;

const PictureLayout kYuvLayouts[] = {
    layoutOf("yuv420p", 192, 108, {M::Bt709, false, S::Left}),
    layoutOf("yuv420p", 192, 108, {M::Bt601, false, S::Center}),
    layoutOf("yuv420p", 192, 108, {M::Bt2020, false, S::TopLeft}),
    layoutOf("yuv420p", 64, 48, {M::Bt601, false, S::Top}),
    layoutOf("yuv420p", 64, 48, {M::Bt601, false, S::BottomLeft}),
    layoutOf("yuv420p", 64, 48, {M::Bt601, false, S::Bottom}),
    layoutOf("yuvj420p", 192, 108, {M::Bt601, true, S::Center}),
    layoutOf("yuv420p", 101, 67, {M::Bt709, false, S::Left}),
    layoutOf("yuv420p", 1, 1, {M::Bt709, false, S::Left}),
    layoutOf("yuv420p", 192, 108, {M::Bt601, false, S::Left}, true),
    layoutOf("yuv420p", 128, 120, {M::Bt709, false, S::Left}, true),
    layoutOf("yuv420p", 99, 86, {M::Bt709, false, S::Left}, true),
    layoutOf("yuv420p10le", 192, 108, {M::Bt2020, false, S::TopLeft}),
    layoutOf("yuv420p10le", 130, 90, {M::Bt2020, true, S::Left}, true),
    layoutOf("yuv422p", 192, 108, {M::Smpte240m, false, S::Left}),
    layoutOf("yuv422p10le", 99, 50, {M::Bt709, false, S::Left}, true),
    layoutOf("yuv411p", 102, 50, {M::Bt601, false, S::Left}),
    layoutOf("yuv410p", 102, 50, {M::Bt601, false, S::Center}),
    layoutOf("yuv440p", 96, 51, {M::Bt601, true, S::Center}),
    layoutOf("yuv444p", 192, 108, {M::Fcc, false, S::Left}),
    layoutOf("yuv444p", 192, 108, {M::YCgCo, true, S::Left}),
    layoutOf("yuv444p12le", 96, 50, {M::Bt709, false, S::Left}),
    layoutOf("yuv444p16le", 96, 50, {M::Bt709, true, S::Left}),
};

std::string titleOf(const PictureLayout &layout) {
  return layout.format.name() + " " + std::to_string(layout.width) + "x" + std::to_string(layout.height) +
         " matrix " + std::to_string(static_cast<int>(layout.coding.matrix)) + " site " +
         std::to_string(static_cast<int>(layout.coding.site)) + (layout.coding.fullRange ? " full" : "") +
         (layout.interlaced ? " interlaced" : "");
}

TEST_F(Conversion, YuvToBgraRoundsTheExactValue) {
  for (const PictureLayout &layout : kYuvLayouts) {
    const Bytes yuv = patternPlanes(layout);
    const Bytes bgra = converted(layout, yuv, bgraLayout(layout.width, layout.height));
    const Error error = errorOfBgra(layout, yuv, bgra);
    EXPECT_LT(error.largest, 0.52) << titleOf(layout);
    EXPECT_GT(error.psnr(255), 58.8) << titleOf(layout);
    for (size_t i = 3; i < bgra.size(); i += 4)
      ASSERT_EQ(bgra[i], 255);
  }
}

TEST_F(Conversion, BgraToYuvRoundsTheExactValue) {
  for (const PictureLayout &layout : kYuvLayouts) {
    const Bytes bgra = patternBgra(layout.width, layout.height);
    PictureLayout source = bgraLayout(layout.width, layout.height);
    source.interlaced = layout.interlaced;
    const Bytes yuv = converted(source, bgra, layout);
    const Error error = errorOfYuv(layout, bgra, yuv);
    EXPECT_LT(error.largest, layout.format.depth == 16 ? 0.6 : 0.52) << titleOf(layout);
  }
}

TEST_F(Conversion, GreyStaysGreyAndReachesBothEnds) {
  for (const char *name : {"yuv420p", "yuvj420p", "yuv422p10le", "yuv444p16le", "gray", "gray10le"})
    for (const bool full : {false, true}) {
      const int depth = pipeFormat(name).depth;
      const int codes = depth == 16 ? 1 << 14 : 1 << depth, step = (1 << depth) / codes;
      const PictureLayout layout = layoutOf(name, codes, 2, {M::Bt709, full, S::Left});
      Bytes ramp(layout.bytes());
      for (int plane = 0; plane < layout.format.planes(); ++plane)
        for (int y = 0; y < layout.plane(plane).height; ++y)
          for (int x = 0; x < layout.plane(plane).width; ++x)
            setCode(layout, ramp.data(), plane, x, y, plane == 0 ? x * step : 1 << (depth - 1));
      const Scale scale = scaleOf(layout, false);
      const Bytes bgra = converted(layout, ramp, bgraLayout(codes, 2));
      for (int x = 0; x < codes; ++x) {
        const uint8_t *pixel = &bgra[static_cast<size_t>(4 * x)];
        ASSERT_EQ(pixel[0], pixel[1]) << name << ' ' << x;
        ASSERT_EQ(pixel[1], pixel[2]) << name << ' ' << x;
        ASSERT_NEAR(pixel[0], std::clamp(255 * (x * step - scale.zero) / scale.one, 0.0, 255.0), 0.5001)
            << name << ' ' << x;
      }

      Bytes greys(256 * 4);
      for (size_t i = 0; i < greys.size(); ++i)
        greys[i] = static_cast<uint8_t>(i % 4 == 3 ? 255 : i / 4);
      const PictureLayout target = layoutOf(name, 256, 1, {M::Bt709, full, S::Left});
      const Bytes coded = converted(bgraLayout(256, 1), greys, target);
      const Scale scaleBack = scaleOf(target, false);
      for (int x = 0; x < 256; ++x)
        ASSERT_NEAR(codeAt(target, coded.data(), 0, x, 0), scaleBack.zero + scaleBack.one * x / 255, 0.51)
            << name;
    }
}

TEST_F(Conversion, RgbAndAlphaKeepTheirSamples) {
  const int width = 77, height = 31;
  const PictureLayout bgra = bgraLayout(width, height);
  const Bytes picture = patternBgra(width, height);
  Bytes opaque = picture;
  for (size_t i = 3; i < opaque.size(); i += 4)
    opaque[i] = 255;
  for (const char *name : {"gbrap", "gbrap10le", "gbrap12le", "gbrap16le", "gbrp", "gbrp9le", "gbrp16le"}) {
    const PictureLayout planar = layoutOf(name, width, height);
    const Bytes planes = converted(bgra, picture, planar);
    const double most = (1 << planar.format.depth) - 1;
    constexpr int kByteOf[] = {1, 0, 2, 3}; // green, blue, red, alpha
    for (int plane = 0; plane < planar.format.planes(); ++plane)
      for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
          ASSERT_EQ(
              codeAt(planar, planes.data(), plane, x, y),
              std::lround(picture[static_cast<size_t>(4 * (y * width + x) + kByteOf[plane])] * most / 255))
              << name << " plane " << plane;
    EXPECT_EQ(converted(planar, planes, bgra), planar.format.alpha ? picture : opaque) << name;
  }
  for (const char *name : {"yuva420p", "yuva422p10le", "yuva444p12le", "yuva444p16le"})
    for (const bool interlaced : {false, true}) {
      PictureLayout source = bgra;
      source.interlaced = interlaced;
      const PictureLayout planar = layoutOf(name, width, height, {}, interlaced);
      const Bytes back = converted(planar, converted(source, picture, planar), source);
      for (size_t i = 3; i < back.size(); i += 4)
        ASSERT_EQ(back[i], picture[i]) << name;
    }
}

TEST_F(Conversion, PicturesInPlaceAndCopiedRowsAreTheSame) {
  const PictureLayout bgra = bgraLayout(256, 64);
  for (const bool interlaced : {false, true})
    for (const char *name : {"yuv420p", "yuva420p", "yuv422p10le", "gbrp", "gray"}) {
      const PictureLayout planar = layoutOf(name, 256, 64, {}, interlaced);
      const Bytes planes = patternPlanes(planar);
      const AlignedBytes aligned = alignedBytes(planar.bytes() + 1), pixels = alignedBytes(bgra.bytes());
      std::array<Bytes, 2> reads, writes;
      for (const size_t shift : {0, 1}) {
        std::memcpy(aligned.get() + shift, planes.data(), planes.size());
        Converter(planar, bgra).convert(aligned.get() + shift, pixels.get());
        reads[shift].assign(pixels.get(), pixels.get() + bgra.bytes());
        Converter(bgra, planar).convert(pixels.get(), aligned.get() + shift);
        writes[shift].assign(aligned.get() + shift, aligned.get() + shift + planar.bytes());
      }
      EXPECT_EQ(reads[0], reads[1]) << name;
      EXPECT_EQ(writes[0], writes[1]) << name;
    }
}

/// The pixel as a word: alpha in the highest byte.
uint32_t pixelAt(const PictureLayout &layout, const Bytes &picture, int x, int y) {
  uint32_t pixel = 0;
  std::memcpy(&pixel, &picture[static_cast<size_t>(4 * (y * layout.width + x))], 4);
  return pixel;
}

TEST_F(Conversion, PlacesPicturesOfOtherShapes) {
  PictureLayout wide = layoutOf("gbrp", 64, 20);
  const PictureLayout square = bgraLayout(50, 50);
  Bytes white(wide.bytes(), 255);
  const auto count = [&](const PictureLayout &from, const Bytes &picture, Fit fit) {
    const Bytes result = converted(from, picture, square, fit, 0x11223344);
    int rows = 0;
    for (int y = 0; y < 50; ++y) {
      const bool bar = pixelAt(square, result, 0, y) == 0x11223344;
      for (int x = 0; x < 50; ++x)
        EXPECT_EQ(pixelAt(square, result, x, y), bar ? 0x11223344 : 0xFFFFFFFF);
      rows += bar ? 0 : 1;
    }
    return rows;
  };
  EXPECT_EQ(count(wide, white, Fit::letterbox), 16);
  EXPECT_EQ(count(wide, white, Fit::stretch), 50);
  EXPECT_EQ(count(wide, white, Fit::crop), 50);
  wide.pixelAspect = 0.5;
  EXPECT_EQ(count(wide, white, Fit::letterbox), 31);

  // A crop shows the middle: thirds of red, green and blue leave green.
  const PictureLayout bands = bgraLayout(150, 50);
  Bytes thirds(bands.bytes());
  for (int i = 0; i < 150 * 50; ++i) {
    const uint32_t colour = 0xFF000000 | 0xFFu << 8 * (i % 150 / 50);
    std::memcpy(&thirds[static_cast<size_t>(4 * i)], &colour, 4);
  }
  const Bytes middle = converted(bands, thirds, square, Fit::crop);
  for (int x = 2; x < 48; ++x)
    EXPECT_EQ(pixelAt(square, middle, x, 25), 0xFF00FF00);
}

TEST_F(Conversion, ScalesEvenly) {
  // A slope stays the same slope, wherever its samples lie (a widened kernel bends it a little); alpha too.
  for (const auto &[name, interlaced] :
       {std::pair("yuv444p", false), std::pair("yuva420p", false), std::pair("yuv420p", true),
        std::pair("bgra", false), std::pair("yuv422p10le", true)})
    for (const auto &[width, height] : {std::pair(150, 90), std::pair(61, 37), std::pair(240, 45)}) {
      const PictureLayout small = layoutOf(name, 120, 60, {M::Bt709, true, S::Left}, interlaced);
      Bytes slope(small.bytes());
      const int half = 1 << (small.format.depth - 1);
      for (int plane = 0; plane < small.format.planes(); ++plane)
        for (int y = 0; y < small.plane(plane).height; ++y)
          for (int x = 0; x < small.plane(plane).width; ++x) {
            const auto value = static_cast<int>(std::lround((20 + x + y) * (2 * half - 1) / 255.0));
            if (small.format.packed)
              std::memset(&slope[static_cast<size_t>(4 * (y * 120 + x))], value, 4);
            else
              setCode(small, slope.data(), plane, x, y, small.format.isChroma(plane) ? half : value);
          }
      PictureLayout large = bgraLayout(width, height);
      large.interlaced = interlaced;
      const Bytes result = converted(small, slope, large);
      for (int y = height / 10 + 2; y < height - height / 10 - 2; ++y)
        for (int x = width / 10 + 2; x < width - width / 10 - 2; ++x) {
          const double exact = 20 + (x + 0.5) * 120 / width - 0.5 + (y + 0.5) * 60 / height - 0.5;
          const uint8_t *pixel = &result[static_cast<size_t>(4 * (y * width + x))];
          ASSERT_NEAR(pixel[1], exact, 0.8)
              << name << ' ' << width << 'x' << height << " at " << x << ',' << y;
          ASSERT_NEAR(pixel[3], small.format.alpha ? exact : 255, 0.8) << name;
        }
    }
}

TEST_F(Conversion, FieldsStayApart) {
  const PictureLayout film = layoutOf("yuv420p", 64, 48, {M::Bt601, true, S::Left}, true);
  Bytes fields(film.bytes());
  for (int plane = 0; plane < 3; ++plane)
    for (int y = 0; y < film.plane(plane).height; ++y)
      for (int x = 0; x < film.plane(plane).width; ++x)
        setCode(film, fields.data(), plane, x, y, plane == 0 ? 128 : y % 2 == 0 ? 90 : 170);
  for (const auto &[width, height] : {std::pair(64, 48), std::pair(80, 61), std::pair(40, 22)}) {
    const PictureLayout target = bgraLayout(width, height);
    const Bytes result = converted(film, fields, target);
    for (int y = 2; y < height; ++y)
      for (int x = 0; x < width; ++x)
        ASSERT_EQ(pixelAt(target, result, x, y), pixelAt(target, result, 0, y % 2));
    EXPECT_NE(pixelAt(target, result, 0, 0), pixelAt(target, result, 0, 1));
  }
}

TEST_F(Conversion, ExtendsToTheEvenSizesThatEncodersTake) {
  const PictureLayout odd = bgraLayout(33, 17), even = layoutOf("yuv420p", 34, 18);
  const Bytes picture = patternBgra(33, 17);
  const Bytes extended = converted(odd, picture, even, Fit::extend);
  const PictureLayout larger = bgraLayout(34, 18);
  Bytes repeated(larger.bytes());
  for (int y = 0; y < 18; ++y)
    for (int x = 0; x < 34; ++x) {
      const uint32_t pixel = pixelAt(odd, picture, std::min(x, 32), std::min(y, 16));
      std::memcpy(&repeated[static_cast<size_t>(4 * (y * 34 + x))], &pixel, 4);
    }
  EXPECT_EQ(extended, converted(larger, repeated, even));
}

TEST_F(Conversion, TakesEverySmallSize) {
  for (const char *name : {"yuv420p", "yuva420p", "yuv410p", "gray10le", "gbrp", "bgra"})
    for (const Fit fit : {Fit::stretch, Fit::letterbox, Fit::crop, Fit::extend})
      for (int size = 0; size < 256; ++size) {
        const int width = 1 + size % 4, height = 1 + size / 4 % 4;
        PictureLayout from =
            layoutOf(name, 1 + size / 16 % 4, 1 + size / 64, {M::Bt709, true, S::Left}, true);
        PictureLayout to = bgraLayout(width, height);
        const Bytes white = converted(bgraLayout(from.width, from.height),
                                      Bytes(bgraLayout(from.width, from.height).bytes(), 255), from);
        EXPECT_EQ(converted(from, white, to, fit, 0xFFFFFFFF), Bytes(to.bytes(), 255))
            << name << ' ' << from.width << 'x' << from.height << " to " << width << 'x' << height << " fit "
            << static_cast<int>(fit);
      }
}

TEST_F(Conversion, RefusesWhatItCannotDo) {
  EXPECT_THROW(Converter(layoutOf("yuv420p", 16, 16), layoutOf("yuv444p", 16, 16)), HostError);
  EXPECT_THROW(Converter(layoutOf("yuv420p", 16, 16, {M::Rgb, false, S::Left}), bgraLayout(16, 16)),
               HostError);
}

TEST(Placement, KeepsTheShapeAndTheFields) {
  PictureLayout from = bgraLayout(720, 576);
  PictureLayout to = bgraLayout(1920, 1080);
  Rect target = place(from, to, Fit::letterbox).target;
  EXPECT_EQ(target.width, 1350);
  EXPECT_EQ(target.x, 285);
  EXPECT_EQ(target.height, 1080);
  from.pixelAspect = 64.0 / 45;
  target = place(from, to, Fit::letterbox).target;
  EXPECT_EQ(target.width, 1920);
  EXPECT_EQ(target.height, 1080);
  from = bgraLayout(1920, 800);
  from.interlaced = true;
  to = bgraLayout(1920, 1078);
  EXPECT_EQ(place(from, to, Fit::letterbox).target.y, 138); // 139 would swap the fields
  const Rect source = place(bgraLayout(400, 300), bgraLayout(100, 100), Fit::crop).source;
  EXPECT_EQ(source.x, 50);
  EXPECT_EQ(source.width, 300);
  EXPECT_EQ(source.height, 300);
  EXPECT_EQ(place(bgraLayout(10000, 1), bgraLayout(100, 100), Fit::letterbox).target.height, 1);
}

TEST(BgraRows, JoinAndSplitEveryLength) {
  std::mt19937 random(3);
  for (size_t n = 0; n < 70; ++n) {
    std::vector<Bytes> channels(4, Bytes(n)), back(4, Bytes(n));
    for (Bytes &channel : channels)
      for (uint8_t &value : channel)
        value = static_cast<uint8_t>(random());
    Bytes joined(4 * n), opaque(4 * n);
    joinBgra(channels[0].data(), channels[1].data(), channels[2].data(), channels[3].data(), n,
             joined.data());
    joinBgra(channels[0].data(), channels[1].data(), channels[2].data(), nullptr, n, opaque.data());
    for (size_t i = 0; i < 4 * n; ++i) {
      ASSERT_EQ(joined[i], channels[i % 4][i / 4]);
      ASSERT_EQ(opaque[i], i % 4 == 3 ? 255 : joined[i]);
    }
    splitBgra(joined.data(), n, back[0].data(), back[1].data(), back[2].data());
    splitAlpha(joined.data(), n, back[3].data());
    EXPECT_EQ(back, channels);
  }
}

TEST(PipeFormat, HoldsTheSamplesOfWhatFfmpegDecodes) {
  const std::pair<const char *, const char *> kAsked[] = {{"yuv420p", "yuv420p"},
                                                          {"yuvj422p", "yuvj422p"},
                                                          {"yuv410p", "yuv410p"},
                                                          {"yuv422p10be", "yuv422p10le"},
                                                          {"yuva444p12le", "yuva444p12le"},
                                                          {"gray", "gray"},
                                                          {"gray12be", "gray12le"},
                                                          {"gbrap10le", "gbrap10le"},
                                                          {"gbrp", "gbrp"},
                                                          {"nv12", "yuv420p"},
                                                          {"p010le", "yuv420p10le"},
                                                          {"uyvy422", "yuv422p"},
                                                          {"ya8", "bgra"},
                                                          {"ya16le", "gbrap16le"},
                                                          {"rgb24", "bgra"},
                                                          {"pal8", "bgra"},
                                                          {"rgba64be", "gbrap16le"},
                                                          {"rgb48le", "gbrp16le"},
                                                          {"grayf32le", "gray16le"},
                                                          {"gbrpf32le", "gbrp16le"},
                                                          {"monob", "gray"},
                                                          {"rgb565le", "bgra"},
                                                          {"no such format", "bgra"},
                                                          {"yuv420p17le", "bgra"}};
  for (const auto &[decoded, asked] : kAsked)
    EXPECT_EQ(pipeFormat(decoded).name(), asked);
  EXPECT_EQ(pipeFormat("yuv420p", true).name(), "yuva420p");
  EXPECT_EQ(pipeFormat("gbrp", true).name(), "gbrap");
  EXPECT_EQ(pipeFormat("bgra", true).name(), "bgra");
}

TEST(PipeFormat, LaysPlanesOutAsFfmpegDoes) {
  for (const char *name : {"yuv420p", "yuvj444p", "yuv411p", "yuv410p", "yuv440p10le", "yuva422p10le", "gray",
                           "gray10le", "gbrp", "gbrap16le", "bgra"})
    for (const auto &[width, height] : {std::pair(101, 67), std::pair(3, 1)}) {
      const PictureLayout layout = layoutOf(name, width, height);
      ASSERT_EQ(layout.format.name(), name);
      Process::Options options;
      options.output = Process::Stream::Pipe;
      Process ffmpeg({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "color=red", "-vf",
                      "scale=" + std::to_string(width) + ":" + std::to_string(height) + ",format=" + name,
                      "-frames:v", "1", "-f", "rawvideo", "pipe:1"},
                     options);
      Bytes bytes(layout.bytes() + 1);
      EXPECT_EQ(ffmpeg.read(bytes.data(), bytes.size()), layout.bytes()) << name << ' ' << width;
      EXPECT_EQ(ffmpeg.wait(), 0) << ffmpeg.lastLine();
      for (int plane = 0; plane < layout.format.planes() && !layout.format.packed; ++plane)
        for (int y = 0; y < layout.plane(plane).height; ++y)
          for (int x = 0; x < layout.plane(plane).width; ++x)
            ASSERT_NEAR(codeAt(layout, bytes.data(), plane, x, y), codeAt(layout, bytes.data(), plane, 0, 0),
                        1)
                << name << " plane " << plane;
    }
}

TEST(ColorCoding, TakesTagsAndSupposesTheRest) {
  const auto coding = [](const char *name, int width, int height, const char *space = "",
                         const char *range = "", const char *location = "") {
    return colorCoding(pipeFormat(name), width, height, space, range, location);
  };
  EXPECT_EQ(coding("yuv420p", 720, 576), (ColorCoding{M::Bt601, false, S::Left}));
  EXPECT_EQ(coding("yuv420p", 1280, 576), (ColorCoding{M::Bt709, false, S::Left}));
  EXPECT_EQ(coding("yuv420p", 640, 720, "unknown", "unknown", "unspecified"),
            (ColorCoding{M::Bt709, false, S::Left}));
  EXPECT_EQ(coding("yuvj420p", 1920, 1080), (ColorCoding{M::Bt601, true, S::Center}));
  EXPECT_EQ(coding("yuv420p10le", 3840, 2160, "bt2020nc", "tv", "topleft"),
            (ColorCoding{M::Bt2020, false, S::TopLeft}));
  EXPECT_EQ(coding("yuv444p", 1920, 1080, "smpte170m", "pc", "center"),
            (ColorCoding{M::Bt601, true, S::Center}));
  EXPECT_TRUE(coding("gray", 64, 64).fullRange);
  EXPECT_FALSE(coding("gray", 64, 64, "", "tv").fullRange);
}

} // namespace
} // namespace zol::host
