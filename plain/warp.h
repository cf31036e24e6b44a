// The resampler in its plain form, one pixel at a time.
#pragma once

#include "frame/zol.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace zol::plain {

struct Warp {
  enum Beyond { extend, mirror, tile };
  enum Filter { sharp, smooth, pixels };

  const _color_t *source;
  int width, height;
  bool opaque; // all alphas count as 255
  int beyond, filter;
  double a[3], b[3], g[3]; // output to source, the third row positive at the source's centre
  bool outlined = true;
  int opacity = 4096;

  // ---- Places ----

  [[nodiscard]] bool affine() const { return g[0] == 0 && g[1] == 0 && g[2] == 1; }
  static double times(const double (&row)[3], double x, double y) {
    return row[0] * x + (row[1] * y + row[2]);
  }

  static double held(double v) {
    const double below = v < 40000 ? v : 40000;
    return below > -40000 ? below : -40000;
  }
  [[nodiscard]] int place(const double (&row)[3], int x, int y) const {
    const double edge = times(row, x + 0.5, y + 0.5);
    const double centre = affine() ? edge - 0.5 : edge * (1 / times(g, x + 0.5, y + 0.5)) - 0.5;
    return static_cast<int>(std::floor(256 * held(centre) + 0.5));
  }

  // ---- Probes ----

  struct Side {
    double length, x, y; // and its direction
  };
  static Side side(double x, double y) {
    const double exact = std::sqrt(x * x + y * y), length = exact < 64 ? exact : 64;
    const bool has = exact > 0 && std::isfinite(exact);
    return {std::floor(65536 * length + 0.5) / 65536, has ? x / exact : 0, has ? y / exact : 0};
  }
  [[nodiscard]] Side sideAt(int x, int y, int which) const {
    if (affine())
      return side(a[which], b[which]);
    const double column = x / 16 * 16 - (x < 0 && x % 16 != 0 ? 16 : 0) + 8, row = y + 0.5;
    const double inverse = 1 / std::max(times(g, column, row), 1e-9);
    const double u = times(a, column, row) * inverse, v = times(b, column, row) * inverse;
    return side((a[which] - g[which] * u) * inverse, (b[which] - g[which] * v) * inverse);
  }

  struct Row {
    int count = 1;
    double apart = 0, x = 0, y = 0;
    [[nodiscard]] double distance(int i) const { return (i - (count - 1) / 2.0) * apart; }
    [[nodiscard]] int weight(int i) const { return count == 2 ? 1 : std::min(i, count - 1 - i) + 1; }
  };
  static Row probes(double e, int radius, double x, double y) {
    const double r = radius / 64.0;
    if (e <= r)
      return {};
    if (e <= 1.25 * r)
      return {2, std::sqrt(2 * (e * e - r * r) / 3), x, y};
    const int n = static_cast<int>(std::ceil(e / r));
    return {2 * n - 1, std::sqrt((e * e - r * r) / (n * n - 1)), x, y};
  }
  static int radiusFor(double e) { return static_cast<int>(std::ceil(64 * std::clamp(e, 1.0, 2.0))); }

  struct Probes {
    int radiusX, radiusY;
    Row first, second;
  };
  /// Along both sides with round probes; along the axes with probes of two radii where the sides need more
  /// than one probe and what spreads both across and down is little.
  [[nodiscard]] Probes probesAt(int x, int y) const {
    const Side p = sideAt(x, y, 0), q = sideAt(x, y, 1);
    const int radius = radiusFor(std::min(p.length, q.length));
    const Probes sides{radius, radius, probes(p.length, radius, p.x, p.y),
                       probes(q.length, radius, q.x, q.y)};
    if (sides.first.count == 1 && sides.second.count == 1)
      return sides;
    const double e = std::max(p.length, 1.0), f = std::max(q.length, 1.0);
    const double px = e * p.x, py = e * p.y, qx = f * q.x, qy = f * q.y;
    const double xx = px * px + qx * qx, yy = py * py + qy * qy, xy = px * py + qx * qy;
    if (xy * xy > 0.2 * 0.2 * (xx * yy))
      return sides;
    const double wide = std::floor(65536 * std::sqrt(xx) + 0.5) / 65536,
                 high = std::floor(65536 * std::sqrt(yy) + 0.5) / 65536;
    const int across = radiusFor(wide), down = radiusFor(high);
    return {across, down, probes(wide, across, 1, 0), probes(high, down, 0, 1)};
  }

  // ---- Taps ----

  static void tent(int radius, int phase, int *w) {
    int sum = 0;
    for (int i = -1; i <= 2; ++i)
      sum += w[i] = std::max(0, 4 * radius - std::abs(256 * i - phase));
    for (int i = -1; i <= 2; ++i)
      w[i] = (16384 * w[i] + sum / 2) / sum;
  }
  void weigh(int radius, int phase, int *w) const {
    tent(radius, phase, w);
    if (filter == sharp) {
      const int f = phase, m = std::min(16, radius - 64);
      const int n[] = {-f * f * f + 512 * f * f - 65536 * f, 3 * f * f * f - 1280 * f * f + 33554432,
                       -3 * f * f * f + 1024 * f * f + 65536 * f, f * f * f - 256 * f * f};
      for (int i = -1; i <= 2; ++i)
        w[i] = (w[i] * m + ((n[i + 1] + 1024) >> 11) * (16 - m) + 8) >> 4;
    }
    w[phase < 128 ? 0 : 1] += 16384 - w[-1] - w[0] - w[1] - w[2];
  }

  static int modulo(int i, int n) { return (i % n + n) % n; }
  [[nodiscard]] int index(int i, int size) const {
    if (beyond == extend)
      return std::clamp(i, 0, size - 1);
    if (beyond == tile)
      return modulo(i, size);
    const int twice = modulo(i, 2 * size);
    return twice < size ? twice : 2 * size - 1 - twice;
  }
  [[nodiscard]] _color_t pixelAt(int x, int y) const {
    _color_t p = source[index(y, height) * width + index(x, width)];
    if (opaque)
      p.a = 255;
    return p;
  }

  // ---- Sums ----

  struct Values {
    int c[4] = {}; // b, g, r, a
  };
  [[nodiscard]] Values valuesAt(int x, int y) const {
    const _color_t p = pixelAt(x, y);
    if (opaque)
      return {{p.b, p.g, p.r, p.a}};
    return {{(p.b * p.a + 2) >> 2, (p.g * p.a + 2) >> 2, (p.r * p.a + 2) >> 2, (255 * p.a + 2) >> 2}};
  }
  [[nodiscard]] Values probe(int u, int v, int radiusX, int radiusY) const {
    int across[4], down[4];
    weigh(radiusX, u & 255, across + 1);
    weigh(radiusY, v & 255, down + 1);
    Values h{{8192, 8192, 8192, 8192}};
    for (int i = 0; i < 4; ++i) {
      const int half = opaque ? 128 : 8192;
      Values c{{half, half, half, half}};
      for (int j = 0; j < 4; ++j)
        add(c, valuesAt((u >> 8) + i - 1, (v >> 8) + j - 1), down[j]);
      for (int &value : c.c)
        value >>= opaque ? 8 : 14;
      add(h, c, across[i]);
    }
    for (int &value : h.c)
      value >>= 14;
    return h;
  }

  static void add(Values &sums, const Values &more, int weight) {
    for (int k = 0; k < 4; ++k)
      sums.c[k] += weight * more.c[k];
  }
  static Values mean(Values sums, int n) {
    for (int &c : sums.c)
      c = (c + n / 2) / n;
    return sums;
  }
  [[nodiscard]] Values meanOfProbes(int u, int v, const Probes &probes) const {
    const Row &ps = probes.first, &qs = probes.second;
    Values all;
    int total = 0;
    for (int j = 0; j < qs.count; ++j) {
      Values row;
      int n = 0;
      for (int i = 0; i < ps.count; ++i) {
        const double t = ps.distance(i), s = qs.distance(j);
        const int du = static_cast<int>(std::floor(256 * (t * ps.x + s * qs.x) + 0.5));
        const int dv = static_cast<int>(std::floor(256 * (t * ps.y + s * qs.y) + 0.5));
        add(row, probe(u + du, v + dv, probes.radiusX, probes.radiusY), ps.weight(i));
        n += ps.weight(i);
      }
      add(all, mean(row, n), qs.weight(j));
      total += qs.weight(j);
    }
    return mean(all, total);
  }

  [[nodiscard]] bool isPixelItself(int x, int y) const {
    const Side p = sideAt(x, y, 0), q = sideAt(x, y, 1);
    return p.length <= 1 && q.length <= 1 && ((place(a, x, y) | place(b, x, y)) & 255) == 0;
  }

  [[nodiscard]] _color_t sample(int x, int y) const {
    const int u = place(a, x, y), v = place(b, x, y);
    return filter == pixels || isPixelItself(x, y) ? pixelAt((u + 128) >> 8, (v + 128) >> 8)
                                                   : finished(meanOfProbes(u, v, probesAt(x, y)));
  }
  [[nodiscard]] _color_t finished(const Values &s) const {
    const auto byte = [](int v) { return static_cast<uint8_t>(std::clamp(v, 0, 255)); };
    if (opaque)
      return {byte((s.c[0] + 32) >> 6), byte((s.c[1] + 32) >> 6), byte((s.c[2] + 32) >> 6), 255};
    const int sa = s.c[3];
    if (sa <= 0)
      return {};
    const auto color = [&](int v) { return byte((255 * v + sa / 2) / sa); };
    return {color(s.c[0]), color(s.c[1]), color(s.c[2]), byte((4 * sa + 127) / 255)};
  }

  // ---- Outline ----

  /// Of the edge where the row's product is 0.
  static int covered(const double (&row)[3], int x, int y) {
    const double norm = std::sqrt(row[0] * row[0] + row[1] * row[1]);
    if (norm == 0)
      return row[2] < 0 ? 0 : 256;
    const double distance = row[0] / norm * (x + 0.5) + (row[1] / norm * (y + 0.5) + row[2] / norm);
    return static_cast<int>(std::clamp(std::floor(256 * distance + 0.5) + 128, 0.0, 256.0));
  }
  [[nodiscard]] int coveredBetween(const double (&row)[3], int size, int x, int y) const {
    const double other[3] = {size * g[0] - row[0], size * g[1] - row[1], size * g[2] - row[2]};
    return std::max(0, covered(row, x, y) + covered(other, x, y) - 256);
  }
  [[nodiscard]] _color_t at(int x, int y) const {
    const int cover =
        outlined ? (coveredBetween(a, width, x, y) * coveredBetween(b, height, x, y) + 128) >> 8 : 256;
    if (cover == 0)
      return {};
    _color_t p = sample(x, y);
    p.a = static_cast<uint8_t>((p.a * cover * opacity + (1 << 19)) >> 20);
    return p.a != 0 ? p : _color_t{};
  }
};

} // namespace zol::plain
