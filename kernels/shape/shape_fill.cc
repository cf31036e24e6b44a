#include "kernels/shape/shape_fill.h"

#include "kernels/shape/shape_rows.h"

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

} // namespace

ShapeFill::ShapeFill(const ShapeSegments &segments, const Area &area)
    : area_(area), rows_(segments, LineKind::rows, area.top, area.height() + 1) {
  if (rows_)
    columns_.emplace(segments, LineKind::columns, area.left, area.width() + 1);
}

int ShapeFill::lineCount() const { return std::max(area_.height() + 1, 0) + std::max(area_.width() + 1, 0); }

void ShapeFill::orderLine(int index) {
  const int rows = std::max(area_.height() + 1, 0);
  const bool isRow = index < rows;
  CrossingLine &line = isRow ? rows_[index] : (*columns_)[index - rows];
  sortCrossings(line);
  if (isRow)
    makeSpans(line, area_.left, area_.width());
  else
    makeSpans(line, area_.top, area_.height());
}

// The bottom edges of a row are the top edges of the next, and columns are asked where a pixel needs them:
// two scanlines of coverage serve.
void ShapeFill::blend(_color_t *pixels, uint8_t *edges, unsigned colour) {
  const int width = area_.width();
  if (area_.isEmpty())
    return;
  const auto blendRow = ZOL_SELECT(blendShapeRow);
  ScanlineCoverage above(edges, width);
  ScanlineCoverage below(edges + width + 1, width);
  above.set(rows_[0]);
  for (int y = 0; y < area_.height(); ++y) {
    below.set(rows_[y + 1]);
    const bool hasAbove = above.end() > above.begin();
    const bool hasBelow = below.end() > below.begin();
    const RowEdges row = {above.bytes(), below.bytes(),
                          !hasBelow   ? above.begin()
                          : !hasAbove ? below.begin()
                                      : std::min(above.begin(), below.begin()),
                          std::max(above.end(), below.end())};
    blendRow(pixels + ptrdiff_t{y} * width, width, y, &row, columns_->data(), colour);
    std::swap(above, below);
  }
}

} // namespace zol
