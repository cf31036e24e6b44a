// The building blocks of object motion: fills over words of one key, and what is done with their masks.

#include "Runtimes/slomo_sdk/engine.h"
#include "kernels/motion/blend.h"

#include <algorithm>

using namespace zol;
using slomo::keyOf;
using slomo::rowOf;

namespace {

slomo::Place *placesOf(unsigned char *stack) { return reinterpret_cast<slomo::Place *>(stack); }

void fillRows(void *frame, unsigned words, unsigned rows, size_t stride, uint32_t word) {
  for (size_t y = 0; y < rows; ++y) {
    slomo::Word *row = rowOf(frame, stride, y);
    for (size_t x = 0; x < words; ++x)
      row[x] = word;
  }
}

} // namespace

unsigned CSlowMotion::GetObjectData(const void *pic, void *marks, unsigned words, unsigned rows,
                                    unsigned stride, unsigned x, unsigned y, SObjectData *data) {
  const uint32_t key = keyOf(rowOf(pic, stride, y)[x]), taken = key | slomo::kTaken;
  rowOf(marks, stride, y)[x] = taken;
  *data = {x, x, y, y, x, 1};
  const auto take = [&](unsigned nx, unsigned ny) {
    slomo::Word &mark = rowOf(marks, stride, ny)[nx];
    if (mark != slomo::kChanged || keyOf(rowOf(pic, stride, ny)[nx]) != key)
      return false;
    mark = taken;
    ++data->count;
    data->minX = std::min(data->minX, nx);
    data->maxX = std::max(data->maxX, nx);
    data->maxY = std::max(data->maxY, ny);
    if (ny <= data->minY) {
      data->minY = ny;
      data->topX = std::min(data->topX, nx); // of all rows that were topmost once, not of the last alone
    }
    return true;
  };
  slomo::floodFill(placesOf(m_pFillStack), StackPlaces(), words, rows, x, y, take);
  return data->count;
}

unsigned CSlowMotion::FindObject(const void *pic, unsigned words, unsigned rows, unsigned stride,
                                 unsigned key, const SObjectData *ref, unsigned x, unsigned y, int *vec,
                                 void *marks) {
  fillRows(marks, words, rows, stride, slomo::kChanged);
  const auto visit = [&](int64_t px, int64_t py) {
    if (px < 0 || px >= words || py < 0 || py >= rows)
      return false;
    const auto cx = static_cast<unsigned>(px), cy = static_cast<unsigned>(py);
    if (keyOf(rowOf(pic, stride, cy)[cx]) != key || rowOf(marks, stride, cy)[cx] != slomo::kChanged)
      return false;
    SObjectData candidate;
    GetObjectData(pic, marks, words, rows, stride, cx, cy, &candidate);
    if (!slomo::isSameObject(candidate, *ref))
      return false;
    vec[0] = static_cast<int>(candidate.topX - x);
    vec[1] = static_cast<int>(candidate.minY - y);
    return true;
  };
  return slomo::walkRings(x, y, 0, std::min(words, rows), visit) ? 1 : 0;
}

unsigned CSlowMotion::GetObject(void *mask, const void *pic, unsigned words, unsigned rows, unsigned stride,
                                unsigned x, unsigned y) {
  fillRows(mask, words, rows, stride, 0);
  const uint32_t key = keyOf(rowOf(pic, stride, y)[x]), taken = key | slomo::kTaken;
  rowOf(mask, stride, y)[x] = taken;
  const auto take = [&](unsigned nx, unsigned ny) {
    slomo::Word &mark = rowOf(mask, stride, ny)[nx];
    if (mark != 0 || keyOf(rowOf(pic, stride, ny)[nx]) != key)
      return false;
    mark = taken;
    return true;
  };
  slomo::floodFill(placesOf(m_pFillStack), StackPlaces(), words, rows, x, y, take);
  return 0;
}

void CSlowMotion::InterpolateObject(void *dst, const void *a, const void *b, void *mask, unsigned words,
                                    unsigned rows, unsigned stride, unsigned w, unsigned x, unsigned y) {
  const auto mix = [&](unsigned px, unsigned py) {
    rowOf(dst, stride, py)[px] = slomo::blendWord(rowOf(a, stride, py)[px], rowOf(b, stride, py)[px], w);
  };
  const auto take = [&](unsigned nx, unsigned ny) {
    slomo::Word &mark = rowOf(mask, stride, ny)[nx];
    if (keyOf(mark) == 0) // an object of key 0 is never spread beyond its start
      return false;
    mark = 0;
    mix(nx, ny);
    return true;
  };
  mix(x, y);
  slomo::floodFill(placesOf(m_pFillStack), StackPlaces(), words, rows, x, y, take);
}

unsigned CSlowMotion::MoveObject(void *dst, const void *src, const void *mask, unsigned words, unsigned rows,
                                 unsigned stride, int *vecSrc, int *vecDst, unsigned startRow) {
  for (unsigned y = startRow; y < rows; ++y)
    for (unsigned x = 0; x < words; ++x) {
      const unsigned fromX = x + vecSrc[0], fromY = y + vecSrc[1], toX = x + vecDst[0], toY = y + vecDst[1];
      if (rowOf(mask, stride, y)[x] != 0 && fromX < words && fromY < rows && toX < words && toY < rows)
        rowOf(dst, stride, toY)[toX] = rowOf(src, stride, fromY)[fromX];
    }
  return 0;
}
