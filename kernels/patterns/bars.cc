#include "kernels/patterns/bars.h"

#include <algorithm>
#include <span>

namespace zol {
namespace {

/// In percent.
struct Percents {
  int red, green, blue;
};

constexpr Percents gray(int percent) { return {percent, percent, percent}; }
constexpr Percents red(int percent) { return {percent, 0, 0}; }
constexpr Percents green(int percent) { return {0, percent, 0}; }
constexpr Percents blue(int percent) { return {0, 0, percent}; }
constexpr Percents yellow(int percent) { return {percent, percent, 0}; }
constexpr Percents cyan(int percent) { return {0, percent, percent}; }
constexpr Percents magenta(int percent) { return {percent, 0, percent}; }
constexpr Percents kBlack = gray(0), kWhite = gray(100);
/// From black at its left end to white at its right.
constexpr Percents kRamp = gray(INT8_MAX);

/// Ends at this column; the last patch's is the number of columns.
struct Patch {
  int end;
  Percents color;
};
struct Band {
  int end; ///< likewise of rows
  std::span<const Patch> patches;
};

// Of 336 columns the sides are 42 wide and a bar 36.
constexpr Patch kHdBars[] = {
    {42, gray(40)},     {78, gray(75)}, {114, yellow(75)}, {150, cyan(75)}, {186, green(75)},
    {222, magenta(75)}, {258, red(75)}, {294, blue(75)},   {336, gray(40)},
};
constexpr Patch kHdWhite[] = {{42, cyan(100)}, {78, kWhite}, {294, gray(75)}, {336, blue(100)}};
constexpr Patch kHdRamp[] = {{42, yellow(100)}, {78, kBlack}, {258, kRamp}, {294, kWhite}, {336, red(100)}};
constexpr Patch kHdBlack[] = {
    {42, gray(15)}, {96, kBlack},  {168, kWhite},  {198, kBlack}, {210, gray(-2)}, {222, kBlack},
    {234, gray(2)}, {246, kBlack}, {258, gray(4)}, {294, kBlack}, {336, gray(15)},
};
constexpr Band kSmpteHd[] = {{7, kHdBars}, {8, kHdWhite}, {9, kHdRamp}, {12, kHdBlack}};

constexpr Patch kEbuPatches[] = {
    {1, kWhite},      {2, yellow(75)}, {3, cyan(75)}, {4, green(75)},
    {5, magenta(75)}, {6, red(75)},    {7, blue(75)}, {8, kBlack},
};
constexpr Patch kFullPatches[] = {
    {1, kWhite},       {2, yellow(100)}, {3, cyan(100)}, {4, green(100)},
    {5, magenta(100)}, {6, red(100)},    {7, blue(100)}, {8, kBlack},
};
constexpr Patch kRampPatches[] = {{1, kRamp}};
constexpr Patch kStepPatches[] = {
    {1, kBlack},   {2, gray(10)}, {3, gray(20)}, {4, gray(30)},  {5, gray(40)}, {6, gray(50)},
    {7, gray(60)}, {8, gray(70)}, {9, gray(80)}, {10, gray(90)}, {11, kWhite},
};
constexpr Band kEbu[] = {{1, kEbuPatches}}, kFull[] = {{1, kFullPatches}}, kOneRamp[] = {{1, kRampPatches}},
               kSteps[] = {{1, kStepPatches}};

std::span<const Band> bandsOf(Bars bars) {
  switch (bars) {
  case Bars::ebu: return kEbu;
  case Bars::full: return kFull;
  case Bars::ramp: return kOneRamp;
  case Bars::steps: return kSteps;
  case Bars::smpteHd: break;
  }
  return kSmpteHd;
}

int edge(int part, int parts, int size) { return (part * size + parts / 2) / parts; }

void drawRamp(const Levels &levels, _color_t *pixels, int width) {
  const int last = std::max(1, width - 1);
  for (int i = 0; i < width; ++i) {
    const auto v =
        static_cast<uint8_t>(levels.black + (i * (levels.white - levels.black) + (width - 1) / 2) / last);
    pixels[i] = {v, v, v, 255};
  }
}

} // namespace

uint8_t Levels::of(int percent) const {
  const int hundredths = (white - black) * percent + 50;
  const int above = hundredths / 100 - (hundredths % 100 < 0 ? 1 : 0);
  return static_cast<uint8_t>(std::clamp(black + above, 0, 255));
}

int bandOf(Bars bars, int y, int height) {
  const std::span<const Band> bands = bandsOf(bars);
  size_t band = 0;
  while (band + 1 < bands.size() && y >= edge(bands[band].end, bands.back().end, height))
    ++band;
  return static_cast<int>(band);
}

void drawBand(Bars bars, int band, const Levels &levels, _color_t *row, int width) {
  const std::span<const Patch> patches = bandsOf(bars)[static_cast<size_t>(band)].patches;
  int left = 0;
  for (const auto &[end, color] : patches) {
    const int right = edge(end, patches.back().end, width);
    if (color.red == kRamp.red)
      drawRamp(levels, row + left, right - left);
    else
      std::fill(row + left, row + right,
                _color_t{levels.of(color.blue), levels.of(color.green), levels.of(color.red), 255});
    left = right;
  }
}

} // namespace zol
