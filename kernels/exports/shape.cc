#include "kernels/exports/shape.h"

#include "frame/convert.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "kernels/shape/shape_crossings.h"
#include "kernels/shape/shape_rows.h"
#include "kernels/shape/shape_segments.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace zol {
namespace {

/// The coverages that one scanline gives to the pixels along it.
class ScanlineCoverage {
public:
  /// `bytes` are width + 1.
  ScanlineCoverage(uint8_t *bytes, int width) : bytes_(bytes), width_(width) {
    std::memset(bytes, 0, static_cast<size_t>(width) + 1);
  }

  [[nodiscard]] const uint8_t *bytes() const { return bytes_; }
  /// Every pixel outside [begin, end) has coverage 0.
  [[nodiscard]] int begin() const { return begin_; }
  [[nodiscard]] int end() const { return end_; }

  /// Replaces the coverages by those of the line's spans. A span's end is written after its start, and
  /// later spans after earlier ones: in a shared pixel the last one stands.
  void set(const CrossingLine &line) {
    std::fill(bytes_ + begin_, bytes_ + end_, uint8_t{0});
    begin_ = end_ = 0;
    if (line.spanCount == 0)
      return;
    for (uint32_t i = 0; i < line.spanCount; ++i)
      add(line.spans[i]);
    begin_ = std::min(line.spans[0].first, width_);
    end_ = std::min(line.spans[line.spanCount - 1].last + 1, width_);
  }

private:
  void add(const Span &span) {
    bytes_[span.first] = span.firstCoverage;
    if (span.endsInside)
      bytes_[span.last] = span.lastCoverage;
    if (span.inner < span.last)
      std::memset(bytes_ + span.inner, 255, static_cast<size_t>(span.last - span.inner));
  }

  uint8_t *bytes_;
  int width_;
  int begin_ = 0, end_ = 0;
};

/// Polls the host before each line and orders its spans; false when the host wants to stop.
bool orderLines(t_ZoHostInfo *host, CrossingLines &lines, int first, int length, int count) {
  for (int i = 0; i < count; ++i) {
    if (aborted(host))
      return false;
    sortCrossings(lines[i]);
    makeSpans(lines[i], first, length);
  }
  return true;
}

void blendShape(pic *picture, CrossingLines &rows, CrossingLines &columns, uint8_t *edges, unsigned colour) {
  const int width = picture->Width;
  const auto blendRow = ZOL_SELECT(blendShapeRow);
  ScanlineCoverage above(edges, width);
  ScanlineCoverage below(edges + width + 1, width);
  above.set(rows[0]);
  for (int y = 0; y < picture->Height; ++y) {
    below.set(rows[y + 1]);
    const bool hasAbove = above.end() > above.begin();
    const bool hasBelow = below.end() > below.begin();
    const RowEdges row = {above.bytes(), below.bytes(),
                          !hasBelow   ? above.begin()
                          : !hasAbove ? below.begin()
                                      : std::min(above.begin(), below.begin()),
                          std::max(above.end(), below.end())};
    blendRow(picture->Pixels + static_cast<size_t>(y) * static_cast<size_t>(width), width, y, &row,
             columns.data(), colour);
    std::swap(above, below);
  }
}

/// Blends the shape into the picture; 0 when memory runs out or the host wants to stop.
int rasterizeShape(const ShapeFillContext &segments, pic *picture, unsigned colour, t_ZoHostInfo *host) {
  const int width = picture->Width;
  const int height = picture->Height;
  CrossingLines rows(segments, LineKind::rows, picture->Y, height + 1);
  if (!rows)
    return 0;
  CrossingLines columns(segments, LineKind::columns, picture->X, width + 1);
  if (!columns)
    return 0;
  // The bottom edges of a row are the top edges of the next, and columns are asked where a pixel needs
  // them: two scanlines of this buffer serve.
  const OwnedPic buffer(host, host->Services->PicCreate(width + 1, height + 1));
  if (!buffer) {
    showMessage(host, "FillText: Memory allocation failure");
    return 0;
  }
  if (!orderLines(host, rows, picture->X, width, height + 1) ||
      !orderLines(host, columns, picture->Y, height, width + 1))
    return 0;
  if (width > 0 && height > 0)
    blendShape(picture, rows, columns, reinterpret_cast<uint8_t *>(buffer->Pixels), colour);
  return 1;
}

} // namespace
} // namespace zol

ZOL_EXPORT int FillShape(t_ZoHostInfo *host, char *errorText, pic *picture, void *geometry, double time,
                         unsigned colour) {
  return FillShapeXYOffset(host, errorText, picture, geometry, time, colour, 0.0, 0.0);
}

ZOL_EXPORT int FillShapeXYOffset(t_ZoHostInfo *host, char *errorText, pic *picture, void *geometry,
                                 double time, unsigned colour, double xOffset, double yOffset) {
  if (picture == nullptr || geometry == nullptr || errorText == nullptr) {
    if (errorText != nullptr)
      std::strcpy(errorText, "Illegal parameter(s)");
    return 0;
  }
  errorText[0] = '\0';
  zol::ShapeFillContext segments(xOffset, yOffset);
  if (!segments.fetch(host, geometry, time)) {
    std::strcpy(errorText, "GeoGetCurves returns error");
    return 0;
  }
  return zol::rasterizeShape(segments, picture, colour, host);
}

ZOL_EXPORT int PointIsInTheShape(t_ZoHostInfo *host, void *geometry, double x, double y, double time) {
  if (geometry == nullptr) {
    zol::showMessage(host, "Illegal parameter");
    return 0;
  }
  zol::ShapeFillContext segments(0.0, 0.0);
  if (!segments.fetch(host, geometry, time))
    return 0;
  zol::CrossingLines lines(segments, zol::LineKind::rows, zol::truncate(y), 1);
  if (!lines)
    return 0;
  zol::CrossingLine &line = lines[0];
  zol::sortCrossings(line);
  for (uint32_t i = 0; i < line.count; ++i) {
    const int inside = static_cast<int>(i + 1) & 1;
    if (i + 1 == line.count || (line.crossings[i] <= x && x <= line.crossings[i + 1]))
      return inside;
    if (line.crossings[i] >= x)
      return 0;
  }
  return 0;
}
