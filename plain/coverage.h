// Coverage by polygons in its plain form: every edge cut at every border of rows and columns between its
// ends, each place worked out from the whole edge.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace zol::plain {

using PolygonPoint = std::array<double, 2>;

class Coverage {
public:
  Coverage(int width, int height)
      : width_(width), height_(height), bytes(static_cast<size_t>(width) * static_cast<size_t>(height)),
        cells_(static_cast<size_t>(width + 2) * static_cast<size_t>(height)) {}

  void add(const std::vector<PolygonPoint> &polygon) {
    using Corner = std::array<int64_t, 2>;
    std::vector<Corner> corners;
    bool isNumber = true;
    for (const PolygonPoint &point : polygon) {
      Corner corner{};
      for (size_t axis = 0; axis < 2; ++axis) {
        isNumber = isNumber && !std::isnan(point[axis]);
        const double limited = std::clamp(point[axis], -1048576.0, 1048576.0);
        corner[axis] = std::isnan(limited) ? 0 : static_cast<int64_t>(std::floor(256 * limited + 0.5));
      }
      corners.push_back(corner);
    }
    double area = 0;
    for (size_t i = 0; isNumber && i + 1 < corners.size(); ++i) {
      const auto from = [&](size_t n, size_t axis) { return double(corners[n][axis] - corners[0][axis]); };
      area += from(i, 0) * from(i + 1, 1) - from(i + 1, 0) * from(i, 1);
    }
    for (size_t i = 0; isNumber && i < corners.size(); ++i) {
      const Corner &a = corners[i], &b = corners[(i + 1) % corners.size()];
      const int sign = (area > 0 ? -1 : 1) * (a[1] < b[1] ? 1 : -1);
      if (a[1] != b[1])
        a[1] < b[1] ? cut(a[0], a[1], b[0], b[1], sign) : cut(b[0], b[1], a[0], a[1], sign);
    }
    if (++polygons_ == 8192)
      merge(256);
  }

  void merge(int brightness) {
    for (int y = 0; y < height_; ++y) {
      int64_t sum = 0;
      for (int x = 0; x < width_; ++x) {
        sum += cell(x, y);
        const int64_t v = (std::clamp<int64_t>(sum, 0, 131072) * 255 + 65536) >> 17;
        uint8_t &byte = bytes[static_cast<size_t>(y) * static_cast<size_t>(width_) + static_cast<size_t>(x)];
        byte = std::max(byte, static_cast<uint8_t>(v * brightness >> 8));
      }
    }
    std::fill(cells_.begin(), cells_.end(), 0);
    polygons_ = 0;
  }

private:
  int64_t &cell(int x, int y) {
    return cells_[static_cast<size_t>(y) * static_cast<size_t>(width_ + 2) + static_cast<size_t>(x)];
  }
  static int64_t floorDivided(int64_t a, int64_t b) { return a / b - (a % b < 0 ? 1 : 0); }
  /// Where the line from (p0, q0) to (p1, q1) is at p, to the nearest.
  static int64_t at(int64_t p, int64_t p0, int64_t q0, int64_t p1, int64_t q1) {
    return q0 + floorDivided(2 * (p - p0) * (q1 - q0) + (p1 - p0), 2 * (p1 - p0));
  }

  void cut(int64_t x0, int64_t y0, int64_t x1, int64_t y1, int sign) {
    if (x0 <= 0 && x1 <= 0)
      x0 = x1 = 0;
    for (int row = 0; row < height_; ++row) {
      const int64_t top = std::max<int64_t>(y0, row * 256), bottom = std::min<int64_t>(y1, row * 256 + 256);
      if (top >= bottom)
        continue;
      const int64_t from = top == y0 ? x0 : at(top, y0, x0, y1, x1);
      const int64_t to = bottom == y1 ? x1 : at(bottom, y0, x0, y1, x1);
      cutRow(row, std::min(from, to), std::max(from, to), (bottom - top), sign);
    }
  }

  void cutRow(int row, int64_t left, int64_t right, int64_t height, int sign) {
    const auto reached = [&](int64_t x) {
      return x <= left ? 0 : x >= right ? height : at(x, left, 0, right, height);
    };
    if (right <= 0) {
      cell(0, row) += height * sign * 512;
      return;
    }
    if (left < 0)
      cell(0, row) += reached(0) * sign * 512;
    for (int column = 0; column < width_; ++column) {
      const int64_t begin = std::max<int64_t>(left, column * 256);
      const int64_t end = std::min<int64_t>(right, column * 256 + 256);
      const bool upright = left == right && left >= column * 256 && left < column * 256 + 256;
      if (begin >= end && !upright)
        continue;
      const int64_t part = upright ? height : reached(end) - reached(begin);
      const int64_t twiceLeft = begin + end - 512 * column;
      cell(column, row) += part * sign * (512 - twiceLeft);
      cell(column + 1, row) += part * sign * twiceLeft;
    }
  }

  int width_, height_;
  int polygons_ = 0;

public:
  std::vector<uint8_t> bytes; ///< row upon row

private:
  std::vector<int64_t> cells_; ///< 131072 = a pixel
};

} // namespace zol::plain
