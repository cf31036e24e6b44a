// How alike two pictures look.
#pragma once

#include "frame/zol.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace zol::test {

/// In decibels, of pictures of one size, colours weighed by their alpha; 99 where they are the same.
inline double psnr(const pic &a, const pic &b) {
  double sum = 0;
  const ptrdiff_t count = ptrdiff_t{a.Width} * a.Height;
  for (ptrdiff_t i = 0; i < count; ++i) {
    const _color_t p = a.Pixels[i], q = b.Pixels[i];
    const double off[] = {double(p.a - q.a), (p.b * p.a - q.b * q.a) / 255.0, (p.g * p.a - q.g * q.a) / 255.0,
                          (p.r * p.a - q.r * q.a) / 255.0};
    for (const double d : off)
      sum += d * d;
  }
  const double mean = sum / (4.0 * static_cast<double>(count));
  return mean > 0 ? std::min(99.0, 10 * std::log10(255.0 * 255.0 / mean)) : 99;
}

/// Sweeps render(0), render(1) and so on, a picture's owner each: no step may stand out, all else being even.
template <class Render> void expectEvenSteps(int steps, Render render) {
  std::vector<double> likeness;
  auto before = render(0);
  for (int i = 1; i <= steps; ++i) {
    auto now = render(i);
    ASSERT_TRUE(before != nullptr && now != nullptr);
    likeness.push_back(psnr(*before->record(), *now->record()));
    before = std::move(now);
  }
  std::vector<double> sorted = likeness;
  std::sort(sorted.begin(), sorted.end());
  EXPECT_GT(sorted.front(), sorted[sorted.size() / 2] - 6)
      << "at step " << std::min_element(likeness.begin(), likeness.end()) - likeness.begin();
}

} // namespace zol::test
