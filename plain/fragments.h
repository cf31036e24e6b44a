// Fragments of a picture in their plain form, one pixel at a time.
#pragma once

#include "frame/zol.h"
#include "plain/warp.h"

#include <utility>
#include <vector>

namespace zol::plain {

struct Outline {
  struct Corner {
    double x, y;
  };
  std::vector<Corner> corners;

  [[nodiscard]] Corner next(size_t i) const { return corners[(i + 1) % corners.size()]; }
  [[nodiscard]] double doubleArea() const {
    double sum = 0;
    for (size_t i = 0; i < corners.size(); ++i)
      sum += corners[i].x * next(i).y - next(i).x * corners[i].y;
    return sum;
  }
  /// Of a pixel whose centre is less than half a pixel from the bounds: all but what is outside of an edge,
  /// not counting twice what is outside of two.
  [[nodiscard]] int coverage(int x, int y) const {
    struct Edge {
      double across, down, distance;
    };
    std::vector<Edge> touching;
    int covered = 256, least = 256;
    bool left = false, right = false, above = false, below = false;
    for (size_t i = 0; i < corners.size(); ++i) {
      left |= std::floor(corners[i].x) <= x;
      right |= std::floor(corners[i].x) >= x;
      above |= std::floor(corners[i].y) <= y;
      below |= std::floor(corners[i].y) >= y;
      Corner p = corners[i], q = next(i);
      double side = doubleArea() < 0 ? -1 : 1;
      if (std::pair(q.y, q.x) < std::pair(p.y, p.x)) {
        std::swap(p, q);
        side = -side;
      }
      const double length = std::sqrt((p.y - q.y) * (p.y - q.y) + (q.x - p.x) * (q.x - p.x));
      const double across = (p.y - q.y) / length, down = (q.x - p.x) / length;
      const Edge edge = {side * across, side * down,
                         side * across * (x + 0.5) +
                             (side * down * (y + 0.5) + -side * (across * p.x + down * p.y))};
      const int own = static_cast<int>(std::clamp(std::floor(256 * edge.distance + 0.5) + 128, 0.0, 256.0));
      least = std::min(least, own);
      covered -= 256 - own;
      if (std::abs(edge.distance) < 0.7072) {
        for (const Edge &other : touching)
          covered += outside({{{-0.5, -0.5}, {0.5, -0.5}, {0.5, 0.5}, {-0.5, 0.5}}}, other, edge);
        touching.push_back(edge);
      }
    }
    return left && right && above && below && least > 0 ? std::clamp(covered, 0, 256) : 0;
  }

  static int outside(Outline pixel, const auto &a, const auto &b) {
    for (const auto &edge : {a, b}) {
      const auto inside = [&](const Corner &p) {
        return edge.across * p.x + (edge.down * p.y + edge.distance);
      };
      Outline rest;
      for (size_t i = 0; i < pixel.corners.size(); ++i) {
        const Corner p = pixel.corners[i], q = pixel.next(i);
        const double from = inside(p), to = inside(q), share = from / (from - to);
        if (from < 0)
          rest.corners.push_back(p);
        if ((from < 0) != (to < 0))
          rest.corners.push_back({p.x + (q.x - p.x) * share, p.y + (q.y - p.y) * share});
      }
      pixel = rest;
    }
    const double area = pixel.corners.size() > 2 ? pixel.doubleArea() / 2 : 0;
    return area > 0 ? static_cast<int>(256 * area) + 1 : 0;
  }
};

struct Fragments {
  struct Piece {
    Outline home, moved; // clockwise
    Warp warp;
    bool isSeen;
    int opacity; // 4096 = 1.0
  };

  const pic &picture;
  std::vector<Piece> pieces; // that have moved, later ones upon earlier ones
  bool allMoved;

  /// Pixel (x, y) of the picture's own.
  [[nodiscard]] _color_t at(int x, int y) const {
    _color_t layer{};
    if (!allMoved && x >= 0 && x < picture.Width && y >= 0 && y < picture.Height) {
      int gone = 0;
      for (const Piece &piece : pieces)
        gone += piece.home.coverage(x, y);
      layer = picture.Pixels[y * picture.Width + x];
      if (gone > 0) {
        layer.a = static_cast<uint8_t>((layer.a * (256 - std::min(256, gone)) + 128) >> 8);
        layer = layer.a != 0 ? layer : _color_t{};
      }
    }
    for (const Piece &piece : pieces)
      if (const int covered = piece.isSeen ? piece.moved.coverage(x, y) : 0; covered > 0) {
        _color_t pixel = piece.warp.sample(x, y);
        pixel.a = static_cast<uint8_t>((pixel.a * covered * piece.opacity + (1 << 19)) >> 20);
        layer = gathered(layer, pixel);
      }
    return layer;
  }

  static _color_t gathered(_color_t l, _color_t u) {
    const int m = u.a, k = std::min<int>(l.a, 255 - m);
    const auto color = [&](int upper, int lower) {
      return static_cast<uint8_t>((m * upper + k * lower) / (m + k));
    };
    return m == 0 ? l : _color_t{color(u.b, l.b), color(u.g, l.g), color(u.r, l.r), uint8_t(m + k)};
  }
};

} // namespace zol::plain
