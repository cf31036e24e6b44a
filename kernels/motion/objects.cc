#include "kernels/motion/objects.h"

#include <algorithm>

namespace zol::slomo {
namespace {

void fillRows(const Plane &plane, void *frame, uint32_t word) {
  for (size_t y = 0; y < plane.rows; ++y) {
    Word *const row = rowOf(frame, plane.stride, y);
    for (size_t x = 0; x < plane.words; ++x)
      row[x] = word;
  }
}

template <class Take>
void fill(const Plane &plane, const FillStack &stack, unsigned x, unsigned y, Take take) {
  floodFill(stack.places, stack.capacity, plane.words, plane.rows, x, y, take);
}

} // namespace

bool isSameObject(const ObjectBox &candidate, const ObjectBox &sought) {
  const unsigned tolerance = sought.count / 16;
  const int width = static_cast<int>(candidate.maxX - candidate.minX + 1);
  const int height = static_cast<int>(candidate.maxY - candidate.minY);
  const int wider = width - static_cast<int>(sought.maxX - sought.minX + 1);
  const int higher = height - static_cast<int>(sought.maxY - sought.minY);
  return candidate.count >= sought.count - tolerance && candidate.count <= sought.count + tolerance &&
         wider <= width >> 3 && -wider <= width >> 3 && higher <= height >> 3 && -higher <= height >> 3;
}

ObjectBox takeObject(const Plane &plane, const void *picture, void *marks, unsigned x, unsigned y,
                     const FillStack &stack) {
  const uint32_t key = keyOf(rowOf(picture, plane.stride, y)[x]), taken = key | kTaken;
  rowOf(marks, plane.stride, y)[x] = taken;
  ObjectBox box{x, x, y, y, x, 1};
  fill(plane, stack, x, y, [&](unsigned nx, unsigned ny) {
    Word &mark = rowOf(marks, plane.stride, ny)[nx];
    if (mark != kChanged || keyOf(rowOf(picture, plane.stride, ny)[nx]) != key)
      return false;
    mark = taken;
    ++box.count;
    box.minX = std::min(box.minX, nx);
    box.maxX = std::max(box.maxX, nx);
    box.maxY = std::max(box.maxY, ny);
    if (ny <= box.minY) {
      box.minY = ny;
      box.topX = std::min(box.topX, nx); // of all rows that were topmost once, not of the last alone
    }
    return true;
  });
  return box;
}

bool walkToObject(const Plane &plane, const void *picture, uint32_t key, const ObjectBox &sought, unsigned x,
                  unsigned y, int *vec, void *marks, const FillStack &stack) {
  fillRows(plane, marks, kChanged);
  return walkRings(x, y, 0, std::min(plane.words, plane.rows), [&](int64_t px, int64_t py) {
    if (px < 0 || px >= plane.words || py < 0 || py >= plane.rows)
      return false;
    const auto cx = static_cast<unsigned>(px), cy = static_cast<unsigned>(py);
    if (keyOf(rowOf(picture, plane.stride, cy)[cx]) != key || rowOf(marks, plane.stride, cy)[cx] != kChanged)
      return false;
    const ObjectBox candidate = takeObject(plane, picture, marks, cx, cy, stack);
    if (!isSameObject(candidate, sought))
      return false;
    vec[0] = static_cast<int>(candidate.topX - x);
    vec[1] = static_cast<int>(candidate.minY - y);
    return true;
  });
}

void maskObject(const Plane &plane, const void *picture, void *mask, unsigned x, unsigned y,
                const FillStack &stack) {
  fillRows(plane, mask, 0);
  const uint32_t key = keyOf(rowOf(picture, plane.stride, y)[x]), taken = key | kTaken;
  rowOf(mask, plane.stride, y)[x] = taken;
  fill(plane, stack, x, y, [&](unsigned nx, unsigned ny) {
    Word &mark = rowOf(mask, plane.stride, ny)[nx];
    if (mark != 0 || keyOf(rowOf(picture, plane.stride, ny)[nx]) != key)
      return false;
    mark = taken;
    return true;
  });
}

void mixMasked(const Plane &plane, const void *a, const void *b, void *dst, void *mask, unsigned w,
               unsigned x, unsigned y, const FillStack &stack) {
  const auto mix = [&](unsigned px, unsigned py) {
    rowOf(dst, plane.stride, py)[px] =
        blendWord(rowOf(a, plane.stride, py)[px], rowOf(b, plane.stride, py)[px], w);
  };
  mix(x, y);
  fill(plane, stack, x, y, [&](unsigned nx, unsigned ny) {
    Word &mark = rowOf(mask, plane.stride, ny)[nx];
    if (keyOf(mark) == 0) // an object of key 0 is never spread beyond its start
      return false;
    mark = 0;
    mix(nx, ny);
    return true;
  });
}

void copyMasked(const Plane &plane, const void *src, void *dst, const void *mask, const int *vecSrc,
                const int *vecDst, unsigned startRow) {
  for (unsigned y = startRow; y < plane.rows; ++y)
    for (unsigned x = 0; x < plane.words; ++x) {
      const unsigned fromX = x + vecSrc[0], fromY = y + vecSrc[1], toX = x + vecDst[0], toY = y + vecDst[1];
      if (rowOf(mask, plane.stride, y)[x] != 0 && fromX < plane.words && fromY < plane.rows &&
          toX < plane.words && toY < plane.rows)
        rowOf(dst, plane.stride, toY)[toX] = rowOf(src, plane.stride, fromY)[fromX];
    }
}

} // namespace zol::slomo
