// Pictures between the formats of the pipes and those of effects, by zimg.
#pragma once

#include "host/media/fit.h"
#include "host/media/pixel_format.h"

#include <cstdint>
#include <memory>

namespace zol::host {

/// Converts pictures of one layout to another. Colours, alpha and planes of chroma are scaled each for
/// itself; fields too, where pictures are interlaced. Values are rounded, not dithered; transfer and
/// primaries stay. Not for use by several threads at once.
class Converter {
public:
  /// Whether this program has it. Where not, nothing below works.
  static bool available();

  /// One of the formats must be kBgra, and kBgra what is letterboxed. Bars get the bytes of `bars`. Throws
  /// HostError, without the name of a file, for what cannot be converted.
  Converter(const PictureLayout &from, const PictureLayout &to, Fit fit = Fit::stretch,
            uint32_t bars = 0xFF000000);
  ~Converter();
  Converter(Converter &&) noexcept;
  Converter &operator=(Converter &&) noexcept;

  /// `from` and `to` are whole pictures, from.bytes() and to.bytes() long. Memory of alignedBytes() whose
  /// rows are multiples of 64 bytes is used as it is, anything else is copied row by row.
  void convert(const uint8_t *from, uint8_t *to);

private:
  struct Work;
  std::unique_ptr<Work> work_;
};

} // namespace zol::host
