// What becomes of the alpha of finished pictures.
#pragma once

#include "frame/zol.h"

#include <cstddef>
#include <cstdint>

namespace zol::host {

bool isOpaque(const _color_t *pixels, size_t count);
void makeOpaque(_color_t *pixels, size_t count);

/// Looks at every picture on its way into the output; several threads may at once.
class Opacity {
public:
  /// `watched`: pictures with transparent pixels are told of; `forced`: and these made opaque.
  Opacity(bool watched, bool forced) : watched_(watched), forced_(forced) {}

  /// Whether the picture has, or had, transparent pixels.
  bool settle(_color_t *pixels, size_t count) const;
  /// Counts one that is written.
  void tell(bool transparent) { transparent_ += transparent; }

  [[nodiscard]] bool forced() const { return forced_; }
  /// How many pictures had transparent pixels.
  [[nodiscard]] uint64_t transparent() const { return transparent_; }

private:
  bool watched_, forced_;
  uint64_t transparent_ = 0;
};

} // namespace zol::host
