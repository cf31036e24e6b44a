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
  [[nodiscard]] Area moved(int dx, int dy) const { return {left + dx, top + dy, right + dx, bottom + dy}; }
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

/// The part of `whole` that `cover` lies on. Where they do not meet it is empty and still within `whole`, so
/// that its sides always divide the rows and columns of `whole` into before, covered and behind.
inline Area coveredPart(const Area &whole, const Area &cover) {
  const int right = std::max(whole.left, whole.right), bottom = std::max(whole.top, whole.bottom);
  Area part;
  part.left = std::clamp(cover.left, whole.left, right);
  part.top = std::clamp(cover.top, whole.top, bottom);
  part.right = std::clamp(cover.right, part.left, right);
  part.bottom = std::clamp(cover.bottom, part.top, bottom);
  return part.isEmpty() ? Area{part.left, part.top, part.left, part.top} : part;
}

/// Where the frame's pixel (x, y) stands in the picture's pixels.
inline _color_t *pixelAt(const pic &picture, int x, int y) {
  return picture.Pixels + Area::of(picture).index(x, y);
}

inline void placeAt(pic &picture, const Area &area) {
  picture.X = static_cast<int16_t>(area.left);
  picture.Y = static_cast<int16_t>(area.top);
}

/// Calls row(to, from, width) with the pixels of every row that both pictures have, from the top on.
template <class Row> void forEachSharedRow(const pic &to, const pic &from, Row row) {
  const Area shared = coveredPart(Area::of(to), Area::of(from));
  for (int y = shared.top; y < shared.bottom; ++y)
    row(pixelAt(to, shared.left, y), pixelAt(from, shared.left, y), shared.width());
}

/// Copies what two pictures of the frame share; the rest of `to` stays.
inline void copyShared(const pic &to, const pic &from) {
  forEachSharedRow(to, from,
                   [](_color_t *out, const _color_t *in, int width) { std::copy_n(in, width, out); });
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
  void reset(pic *picture = nullptr) {
    if (pic *before = std::exchange(picture_, picture))
      host_->Services->PicFree(before);
  }

private:
  t_ZoHostInfo *host_;
  pic *picture_;
};

} // namespace zol
