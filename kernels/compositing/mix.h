// Two pictures mixed over the frame, band by band and row by row, for any ratio.
#pragma once

#include "frame/picture.h"
#include "kernels/compositing/mix_rows.h"

namespace zol {

/// Mixes two pictures over all that either covers. What truncation leaves of a channel goes on to the next
/// pixel of the row.
class UnionMix {
public:
  /// `out` has the pixels of `area`, the union of both pictures', row by row; what it holds stands in for A
  /// where that does not reach.
  UnionMix(const pic &a, const pic &b, float ratio, const Area &area, _color_t *out);

  /// Mixes the rows from row y of the frame on that can be mixed alike, and answers their number, which is
  /// 1 to kMixRows.
  [[nodiscard]] int band(int y) const;

private:
  template <class Mix> void forEachStretch(int y, Mix mix) const;

  const pic &a_, &b_;
  Area areaA_, areaB_, area_;
  int weightB_; ///< 4096 = 1.0
  _color_t *out_;
};

/// Mixes pixels that are truncated one by one; what does not fit a channel wraps.
class RowBlend {
public:
  explicit RowBlend(float ratio);

  void operator()(const _color_t *a, const _color_t *b, _color_t *out, int width) const {
    run_(a, b, out, width, weightB_);
  }

private:
  int weightB_;
  void (*run_)(const _color_t *a, const _color_t *b, _color_t *out, int width, int weightB);
};

} // namespace zol
