// Test Pattern Generator: bars, ramps, cells, a grid and a zone plate to check sizes, levels and sharpness
// by. Opaque; the frames of safe areas may lie over any of them.

#include "effects/sources/test_pattern.xpm"
#include "frame/canvas.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/real_time.h"
#include "frame/values.h"
#include "kernels/patterns/bars.h"
#include "kernels/patterns/cells.h"
#include "kernels/patterns/ring.h"
#include "kernels/patterns/zone_rows.h"
#include "kernels/simd/scratch.h"

#include <algorithm>
#include <cmath>

namespace {

namespace field = zol::field;

enum Field { kPattern, kLevels, kSize, kLineWidth, kPhase, kColor, kBackground, kSafeAreas };
enum Pattern { kSmpteHd, kEbu, kFullBars, kRamp, kSteps, kCheckerboard, kGrid, kZonePlate };
enum SafeAreas { kNone, kWide, kNarrow };

constexpr const char *kPatterns[] = { // the first ones in the order of Bars
    "SMPTE HD bars", "EBU bars", "100 % bars", "Ramp", "Steps", "Checkerboard", "Grid", "Zone plate"};
constexpr const char *kLevelNames[] = {"Full range (0-255)", "Studio range (16-235)"};
constexpr const char *kSafeNames[] = {"Off", "16:9 (93 %, 90 %)", "4:3 (90 %, 80 %)"};

constexpr double kMostPhase = 100;

constexpr zol::Field kFields[] = {
    field::selector(kPattern, "Pattern", kPatterns).help("What is shown."),
    field::selector(kLevels, "Levels", kLevelNames)
        .help("The values of black and white in bars, ramp and steps."),
    field::curve(kSize, "Size", zol::kShare, 0.05)
        .help("Checkerboard and grid: how wide a cell is, in widths of the frame. Cells are square on the "
              "display and at least a pixel wide."),
    field::curve(kLineWidth, "LineWidth", zol::kShare, 0.001)
        .label("Line width")
        .help("How wide the lines of the grid and of safe areas are, in widths of the frame: at least a "
              "pixel."),
    field::curve(kPhase, "Phase", {-kMostPhase, kMostPhase, "ZodfNone"}, 0)
        .help("Zone plate: how many rings it has moved outwards. 0 has a white middle."),
    field::color(kColor, "Color", 0xFFFFFFFF).help("The color of cells, lines and the frames of safe areas."),
    field::color(kBackground, "Background", 0xFF000000).help("The color between cells and lines."),
    field::selector(kSafeAreas, "SafeAreas", kSafeNames)
        .label("Safe areas")
        .help(
            "Frames around what every display shows of the picture, and of titles, in shares of its sides."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Test Pattern  on",
    "Pattern",
    "Levels",
    "Size",
    "Line width",
    "Phase",
    "Color",
    "Background",
    "Safe areas",
    "Generates test patterns",
};

constexpr char kDescription[] =
    "This effect generates test patterns: bars as the standards have them, ramps, steps, a checkerboard, a "
    "grid with a circle and a zone plate. <br><br>This effect has no inputs.";

struct Look {
  Pattern pattern;
  zol::Levels levels;
  double aspect, phase;
  _color_t color, background;
  zol::Cells columns, rows;
  int safeAreas;
};

Look readLook(t_ZoHostInfo *host) {
  const auto choice = [host](Field field, int last) {
    return std::clamp(zol::paramInt(host, field), 0, last);
  };
  const auto pixels = [host](Field field) { return zol::paramShare(host, field) * host->Width; };
  const auto opaque = [host](Field field) {
    _color_t color = zol::paramColor(host, field);
    color.a = 255;
    return color;
  };
  Look look;
  look.pattern = static_cast<Pattern>(choice(kPattern, kZonePlate));
  look.levels = choice(kLevels, 1) == 0 ? zol::kFullRange : zol::kStudioRange;
  look.aspect = std::clamp(zol::pixelAspect(host), 0.001, 1000.0);
  const double cell = pixels(kSize), line = pixels(kLineWidth);
  const auto side = [=](int size, double scale) {
    return zol::Cells{size, std::max(cell * scale, 1.0),
                      std::max(static_cast<int>(std::rint(line * scale)), 1)};
  };
  look.columns = side(host->Width, 1);
  look.rows = side(host->Height, look.aspect);
  look.phase = zol::paramWithin(host, kPhase, -kMostPhase, kMostPhase);
  look.color = opaque(kColor);
  look.background = opaque(kBackground);
  look.safeAreas = choice(kSafeAreas, kNarrow);
  return look;
}

// ---- Rows of few kinds ----

int kindOf(const Look &look, int y) {
  switch (look.pattern) {
  case kCheckerboard: return look.rows.isOdd(y) ? 1 : 0;
  case kGrid: return look.rows.isOnLine(y) ? 1 : 0;
  default: return zol::bandOf(static_cast<zol::Bars>(look.pattern), y, look.rows.size);
  }
}

void drawKind(const Look &look, int kind, _color_t *row) {
  const auto choose = [&](auto isColored) {
    for (int x = 0; x < look.columns.size; ++x)
      row[x] = isColored(x) ? look.color : look.background;
  };
  switch (look.pattern) {
  case kCheckerboard: return choose([&](int x) { return look.columns.isOdd(x) == (kind == 1); });
  case kGrid: return choose([&](int x) { return kind == 1 || look.columns.isOnLine(x); });
  default:
    return zol::drawBand(static_cast<zol::Bars>(look.pattern), kind, look.levels, row, look.columns.size);
  }
}

// ---- The zone plate ----

/// Neighbors in a row are half a turn apart at its ends and alike in its middle.
zol::ZonePhases phasesOf(const Look &look, int y) {
  const int width = look.columns.size;
  const auto growth = static_cast<uint32_t>(std::rint(0x1p31 / width));
  const auto left = static_cast<int64_t>(1 - width); // twice the way from the middle
  const double down = (y + 0.5 - look.rows.size / 2.0) / look.aspect;
  const double turns = down * down / (2.0 * width) - look.phase;
  const auto first = static_cast<uint64_t>((turns - std::floor(turns)) * 0x1p32);
  return {static_cast<uint32_t>(first + (growth * static_cast<uint64_t>(left * left) >> 2)),
          growth * static_cast<uint32_t>(left + 1), 2 * growth};
}

// ---- What lies over it ----

/// The circle of the grid, as high as the frame.
zol::Ring circleOf(const Look &look) {
  const double height = look.rows.size / 2.0, width = height / look.aspect;
  const zol::Ellipse outer{look.columns.size / 2.0, height, width, height};
  const zol::Ellipse inner{outer.x, outer.y, width - look.columns.lineWidth, height - look.rows.lineWidth};
  return {outer, inner, look.columns.size};
}

struct Span {
  int begin, end;

  [[nodiscard]] bool has(int at) const { return at >= begin && at < end; }
  [[nodiscard]] Span without(int border) const { return {begin + border, end - border}; }
};

/// The middle of a side.
Span middleOf(int size, int percent) {
  const int begin = ((100 - percent) * size + 100) / 200;
  return {begin, size - begin};
}

void drawFrame(const Look &look, int percent, int y, _color_t *row) {
  const Span rows = middleOf(look.rows.size, percent), columns = middleOf(look.columns.size, percent);
  if (!rows.has(y))
    return;
  const Span hole = columns.without(look.columns.lineWidth);
  const bool isWhole = hole.begin >= hole.end || !rows.without(look.rows.lineWidth).has(y);
  std::fill(row + columns.begin, row + (isWhole ? columns.end : hole.begin), look.color);
  if (!isWhole)
    std::fill(row + hole.end, row + columns.end, look.color);
}

void drawFrames(const Look &look, int y, _color_t *row) {
  constexpr int kPercent[][2] = {{93, 90}, {90, 80}};
  if (look.safeAreas != kNone)
    for (const int percent : kPercent[look.safeAreas - kWide])
      drawFrame(look, percent, y, row);
}

// ---- Rendering ----

/// False when the host wants to stop or, after a message, when memory runs out.
bool paint(t_ZoHostInfo *host, const pic &out) {
  const Look look = readLook(host);
  const int width = out.Width;
  const zol::Scratch<_color_t> kinds(size_t{zol::kMostBands} * static_cast<size_t>(width));
  zol::Ring circle = circleOf(look);
  if (!kinds || !circle) {
    zol::showMemoryError(host);
    return false;
  }
  const auto rowOfKind = [&](int kind) { return kinds.data() + ptrdiff_t{kind} * width; };
  int known = 0;
  return zol::forEachRow(host, out.Height, [&](int y) {
    _color_t *const row = out.Pixels + ptrdiff_t{y} * width;
    if (look.pattern == kZonePlate)
      ZOL_SELECT(zoneRow)(phasesOf(look, y), row, width);
    else {
      const int kind = kindOf(look, y);
      for (; known <= kind; ++known)
        drawKind(look, known, rowOfKind(known));
      std::copy_n(rowOfKind(kind), width, row);
    }
    if (look.pattern == kGrid)
      circle.drawRow(y, look.color, row);
    drawFrames(look, y, row);
  });
}

pic *render(t_ZoHostInfo *host) {
  zol::OwnedPic out(host, zol::createAt(host, zol::Area::ofSize(host->Width, host->Height)));
  return out && paint(host, *out) ? out.release() : nullptr;
}

int renderRealTime(t_ZoHostInfo *host) {
  return zol::requirePictureBuffers(host) && paint(host, zol::pictureOf(host, host->OutputBuffer)) ? 1 : 0;
}

constexpr zol::Effect kTestPattern{
    .name = "Sources/Test Pattern Generator",
    .sign = "Test Pattern Generator 1.0 (Zo2)",
    .version = 1,
    .section = "TestPattern",
    .description = kDescription,
    .icon = test_pattern_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .renderVideoRT = renderRealTime,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessTestPatternDeclare(t_ZoHostInfo *host) { return zol::declare(host, kTestPattern); }
