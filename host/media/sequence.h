// Pictures in files of their own that a number in the name counts: shot%04d.png.
#pragma once

#include <optional>
#include <string>

namespace zol::host {

struct PictureSequence {
  std::string pattern; ///< For ffmpeg: with one %0Nd, every other percent sign doubled.
  int first = 0;       ///< The lowest number that there is a file of.
  int count = 0;       ///< Files from there on without a gap.
  bool goesOn = false; ///< Whether there are files behind the gap.

  [[nodiscard]] std::string file(int number) const;

  std::string before, after; ///< of a file's number
  size_t digits = 1;         ///< that it has at least
};

/// The files of a name with one %d or %0Nd in its last part. Nothing where the name has none, or no file
/// fits.
std::optional<PictureSequence> sequenceNamed(const std::string &name);

} // namespace zol::host
