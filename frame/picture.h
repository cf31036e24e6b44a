// The border: pictures the library holds, and where pictures lie in the frame.
#pragma once

#include "frame/zol.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace zol {

/// Columns left to right and rows top to bottom of the frame, the ends not included. Nothing lies in an area
/// whose ends do not come after its beginnings.
struct Area {
  int left = 0, top = 0, right = 0, bottom = 0;

  static Area ofSize(int width, int height) { return {0, 0, width, height}; }
  static Area of(const pic &picture) {
    return {picture.X, picture.Y, picture.X + picture.Width, picture.Y + picture.Height};
  }

  [[nodiscard]] int width() const { return right - left; }
  [[nodiscard]] int height() const { return bottom - top; }
  [[nodiscard]] bool isEmpty() const { return right <= left || bottom <= top; }
  [[nodiscard]] bool hasColumn(int x) const { return x >= left && x < right; }
  [[nodiscard]] bool hasRow(int y) const { return y >= top && y < bottom; }

  /// The place of the frame's pixel (x, y) in a row-by-row buffer of this area.
  [[nodiscard]] ptrdiff_t index(int x, int y) const { return ptrdiff_t{y - top} * width() + (x - left); }

  bool operator==(const Area &) const = default;
};

/// The smallest area that holds both.
inline Area unionOf(const Area &a, const Area &b) {
  return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
          std::max(a.bottom, b.bottom)};
}

/// What both have, as the coordinates give it: where they do not meet, ends may come before beginnings.
inline Area intersectionOf(const Area &a, const Area &b) {
  return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
          std::min(a.bottom, b.bottom)};
}

/// Where the frame's pixel (x, y) stands in the picture's pixels.
inline _color_t *pixelAt(const pic &picture, int x, int y) {
  return picture.Pixels + Area::of(picture).index(x, y);
}

inline void placeAt(pic &picture, const Area &area) {
  picture.X = static_cast<int16_t>(area.left);
  picture.Y = static_cast<int16_t>(area.top);
}

/// A picture that the library created: freed through the host on every early return, until release()
/// hands it out.
class OwnedPic {
public:
  OwnedPic(t_ZoHostInfo *host, pic *picture) : host_(host), picture_(picture) {}
  ~OwnedPic() { reset(); }
  OwnedPic(const OwnedPic &) = delete;
  OwnedPic &operator=(const OwnedPic &) = delete;

  explicit operator bool() const { return picture_ != nullptr; }
  pic &operator*() const { return *picture_; }
  pic *operator->() const { return picture_; }
  [[nodiscard]] pic *get() const { return picture_; }
  [[nodiscard]] pic *release() { return std::exchange(picture_, nullptr); }
  void reset() {
    if (picture_ != nullptr)
      host_->Services->PicFree(std::exchange(picture_, nullptr));
  }

private:
  t_ZoHostInfo *host_;
  pic *picture_;
};

} // namespace zol
