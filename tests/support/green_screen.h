// A subject of known alpha and colours before a green screen as cameras see it: lit unevenly, with a shadow
// and noise, its colour kept at half the size.
#pragma once

#include "host/services/pools.h"
#include "tests/support/dice.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace zol::test {

class GreenScreen {
public:
  static constexpr int kWidth = 480, kHeight = 270;
  static constexpr _color_t kScreen = {64, 177, 0, 255};

  GreenScreen() {
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x)
        paint(x, y);
    halveColors();
  }

  [[nodiscard]] pic *subject() const { return subject_->record(); } ///< alone
  [[nodiscard]] pic *scene() const { return scene_->record(); }     ///< before the screen

private:
  using Picture = std::unique_ptr<host::PictureBuffer>;

  static double ramp(double v) { return std::clamp(v, 0.0, 1.0); }

  /// A head with strands of hair and a body, a ball in motion and a veil, in points of a wide frame of 16
  /// by 9.
  static _color_t shape(double x, double y, double &alpha) {
    const double dx = x - 6.5, dy = y - 3.6, distance = std::hypot(dx, dy);
    const double angle = std::atan2(dy, dx), pixel = 30;
    const double body = std::min(1.5 + 2.2 * ramp((y - 5) / 2) - std::fabs(dx), y - 5);
    double best = 0;
    _color_t color = {};
    const auto lay = [&](double coverage, _color_t c) {
      if (coverage > best) {
        best = coverage;
        color = c;
      }
    };
    const auto shade = [](double v) { return static_cast<uint8_t>(std::clamp(v, 0.0, 255.0)); };
    lay(ramp(pixel * body + 0.5),
        {shade(90 + 60 * std::sin(3 * x)), shade(50 + 20 * std::sin(5 * y)), 150, 255});
    lay(ramp(pixel * (1.6 - distance) + 0.5),
        {shade(130 - 25 * dx), shade(160 - 20 * dx), shade(215 - 20 * dx), 255});
    if (dy < 0.3 && distance > 1.5) { // strands thin out outwards
      const double strand = std::sin(90 * angle + 9 * std::sin(2 * distance)), out = (distance - 1.5) / 1.1;
      lay(ramp(1.2 - 1.3 * out) * ramp(3 * (strand - 0.2 - 0.6 * out)), {30, 45, 80, 255});
    }
    lay(ramp(1.5 * (0.9 - std::hypot(x - 12.3, y - 2.7)) + 0.5), {50, 120, 230, 255});
    lay(0.55 * ramp(pixel * (1.1 - std::max(std::fabs(x - 12.6), std::fabs(y - 6.6))) + 0.5),
        {215, 205, 200, 255});
    alpha = best;
    return color;
  }

  void paint(int x, int y) {
    constexpr int kSide = 4; // samples of a pixel
    double sums[4] = {};
    for (int i = 0; i < kSide * kSide; ++i) {
      double alpha = 0;
      const _color_t c =
          shape((x + (i % kSide + 0.5) / kSide) / 30, (y + (i / kSide + 0.5) / kSide) / 30, alpha);
      const double parts[] = {c.b * alpha, c.g * alpha, c.r * alpha, alpha};
      for (int k = 0; k < 4; ++k)
        sums[k] += parts[k];
    }
    const double alpha = sums[3] / (kSide * kSide);
    const double light = 1 - 0.15 * ramp(1.6 * std::hypot(x / 480.0 - 0.3, y / 270.0 - 0.35));
    const double shadow = 1 - 0.2 * ramp(1.2 - std::hypot(x / 480.0 - 0.58, y / 270.0 - 0.8) / 0.16);
    const double screen[] = {64, 177, 0};
    uint8_t own[3], seen[3];
    for (int k = 0; k < 3; ++k) {
      const double color = sums[3] > 0 ? sums[k] / sums[3] : 0;
      const double noise = 5 * (dice_.share() + dice_.share() + dice_.share() - 1.5);
      own[k] = static_cast<uint8_t>(color + 0.5);
      seen[k] = static_cast<uint8_t>(
          std::clamp(color * alpha + screen[k] * light * shadow * (1 - alpha) + noise + 0.5, 0.0, 255.0));
    }
    const ptrdiff_t at = ptrdiff_t{y} * kWidth + x;
    subject()->Pixels[at] = {own[0], own[1], own[2], static_cast<uint8_t>(255 * alpha + 0.5)};
    scene()->Pixels[at] = {seen[0], seen[1], seen[2], 255};
  }

  /// Luma stays; colour differences are the mean of four pixels and come back between their centres.
  void halveColors() {
    const auto lumaOf = [](const _color_t &p) { return 0.2126 * p.r + 0.7152 * p.g + 0.0722 * p.b; };
    constexpr int kColumns = kWidth / 2, kRows = kHeight / 2;
    std::vector<double> halves(size_t{2} * kColumns * kRows);
    for (int i = 0; i < 4 * kColumns * kRows; ++i) {
      const int x = i % kWidth, y = i / kWidth;
      const _color_t p = scene()->Pixels[i];
      const size_t half = size_t(y / 2) * kColumns + size_t(x / 2);
      halves[2 * half] += (p.b - lumaOf(p)) / 4;
      halves[2 * half + 1] += (p.r - lumaOf(p)) / 4;
    }
    const auto between = [&](int x, int y, size_t which) {
      const auto at = [&](int u, int v) {
        u = std::clamp(u, 0, kColumns - 1);
        v = std::clamp(v, 0, kRows - 1);
        return halves[2 * (size_t(v) * kColumns + size_t(u)) + which];
      };
      const int u = x / 2, v = y / 2, du = x % 2 != 0 ? 1 : -1, dv = y % 2 != 0 ? 1 : -1;
      return (9 * at(u, v) + 3 * at(u + du, v) + 3 * at(u, v + dv) + at(u + du, v + dv)) / 16;
    };
    for (int i = 0; i < kWidth * kHeight; ++i) {
      _color_t &p = scene()->Pixels[i];
      const double luma = lumaOf(p), b = luma + between(i % kWidth, i / kWidth, 0),
                   r = luma + between(i % kWidth, i / kWidth, 1),
                   g = (luma - 0.2126 * r - 0.0722 * b) / 0.7152;
      const auto byte = [](double v) { return static_cast<uint8_t>(std::clamp(v + 0.5, 0.0, 255.0)); };
      p = {byte(b), byte(g), byte(r), 255};
    }
  }

  Dice dice_{1};
  Picture subject_ = host::PictureBuffer::make(kWidth, kHeight),
          scene_ = host::PictureBuffer::make(kWidth, kHeight);
};

} // namespace zol::test
