// Pixels moved by the values of a map in their plain form, one pixel at a time.
#pragma once

#include "frame/zol.h"
#include "plain/moved.h"
#include "plain/soften.h"
#include "plain/warp.h"

#include <vector>

namespace zol::plain {

struct Mapper {
  enum Method { shift, slope, position };

  const pic &picture, &map;
  int method, channelX, channelY; // red, green, blue, alpha, luma
  double amountX, amountY, level, smoothness;
  double width, height, aspect; // of the frame
  int outside;                  // as Warp's, then transparent
  int filter;

  [[nodiscard]] int neutral() const { return std::min(65025, 255 * static_cast<int>(256 * level)); }

  [[nodiscard]] std::vector<uint16_t> plane(int channel) const {
    std::vector<uint16_t> values;
    for (int y = 0; y < picture.Height; ++y)
      for (int x = 0; x < picture.Width; ++x) {
        const _color_t p = pixelOf(map, picture.X + x, picture.Y + y);
        const int luma = (54 * p.r + 183 * p.g + 19 * p.b) >> 8, channels[] = {p.r, p.g, p.b, p.a, luma};
        values.push_back(static_cast<uint16_t>(p.a == 0 ? neutral() : 255 * channels[channel]));
      }
    soften(values.data(), picture.Width, picture.Height, smoothness * width / 10,
           smoothness * width / 10 * aspect);
    return values;
  }

  /// In 1/256 pixel, of every pixel.
  static int place(double v) {
    return static_cast<int>(std::floor(std::clamp(v, -40000.0 * 256, 40000.0 * 256) + 0.5));
  }
  [[nodiscard]] std::vector<int> places(bool down) const {
    const int w = picture.Width, h = picture.Height;
    const auto f = plane(method == slope || !down ? channelX : channelY);
    const auto at = [&](int x, int y) -> int {
      return f[size_t(std::clamp(y, 0, h - 1) * w + std::clamp(x, 0, w - 1))];
    };
    const double amount = down ? amountY : amountX, frame = down ? height : width;
    const double lens = down ? width * aspect : width;
    std::vector<int> all;
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        const int i = down ? y : x;
        if (method == shift)
          all.push_back(place(256.0 * i + (at(x, y) - neutral()) * (-256 * amount * frame * 2 / 65025)));
        else if (method == slope)
          all.push_back(place(256.0 * i + (down ? at(x, y + 1) - at(x, y - 1) : at(x + 1, y) - at(x - 1, y)) *
                                              (-256 * amount * lens * lens / 200 / 65025)));
        else
          all.push_back(place(256 * (1 - amount) * i +
                              (at(x, y) * (256 * amount * (down ? h : w) / 65025) - 128 * amount)));
      }
    return all;
  }

  [[nodiscard]] std::vector<_color_t> render() const {
    const int w = picture.Width, h = picture.Height;
    bool opaque = true;
    for (int i = 0; i < w * h; ++i)
      opaque = opaque && picture.Pixels[i].a == 255;
    const Warp warp{picture.Pixels, w, h, opaque, outside % 3, filter, {}, {}, {}};
    const auto u = places(false), v = places(true);
    std::vector<_color_t> out;
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        const int i = y * w + x, left = x > 0 && x + 1 == w ? i - 1 : i,
                  top = y > 0 && y + 1 == h ? i - w : i;
        const auto step = [](const std::vector<int> &places, int from, int to) {
          return std::clamp(places[size_t(to)] - places[size_t(from)], -2048, 2048);
        };
        const int px = w > 1 ? step(u, left, left + 1) : 256, py = w > 1 ? step(v, left, left + 1) : 0;
        const int qx = h > 1 ? step(u, top, top + w) : 0, qy = h > 1 ? step(v, top, top + w) : 256;
        out.push_back(
            faded(pixel(warp, u[size_t(i)], v[size_t(i)], px, py, qx, qy), u[size_t(i)], v[size_t(i)]));
      }
    return out;
  }

private:
  static _color_t pixel(const Warp &warp, int u, int v, int px, int py, int qx, int qy) {
    if (warp.filter == Warp::pixels)
      return visible(warp.pixelAt((u + 128) >> 8, (v + 128) >> 8));
    const auto xx = static_cast<float>(std::max(65536, px * px + qx * qx)),
               yy = static_cast<float>(std::max(65536, py * py + qy * qy)),
               xy = static_cast<float>(px * py + qx * qy);
    if (std::max(xx, yy) > 4 * 65536 || (std::max(xx, yy) > 65536 && xy * xy * 25 > xx * yy))
      return visible(warp.finished(means(warp, u, v, float(px), float(py), float(qx), float(qy))));
    const int across = static_cast<int>(std::ceil(std::sqrt(xx) / 4)),
              down = static_cast<int>(std::ceil(std::sqrt(yy) / 4));
    if (across == 64 && down == 64 && ((u | v) & 255) == 0)
      return visible(warp.pixelAt(u >> 8, v >> 8));
    return visible(warp.finished(warp.meanOfProbes(u, v, {across, down, {}, {}})));
  }
  /// In 1/256 pixel.
  struct Line {
    Line(float x, float y, float length, float r) {
      if (length > r) {
        const float n = std::ceil(length / r), rest = length * length - r * r;
        count = length <= 1.25F * r ? 2 : 2 * int(n) - 1;
        const float share =
            std::sqrt(count == 2 ? rest * 2 / 3 : rest / (n * n - 1)) / std::sqrt(x * x + y * y);
        stepX = x * share;
        stepY = y * share;
      }
    }
    [[nodiscard]] float place(int i) const { return float(i) - float(count - 1) * 0.5F; }
    [[nodiscard]] int weight(int i) const { return count == 2 ? 1 : std::min(i, count - 1 - i) + 1; }
    int count = 1;
    float stepX = 0, stepY = 0;
  };
  static Warp::Values means(const Warp &warp, int u, int v, float px, float py, float qx, float qy) {
    const float p = std::min(2048.0F, std::sqrt(px * px + py * py)),
                q = std::min(2048.0F, std::sqrt(qx * qx + qy * qy));
    const int radius = static_cast<int>(std::ceil(std::clamp(std::min(p, q), 256.0F, 512.0F) / 4));
    const Line first(px, py, p, float(4 * radius)), second(qx, qy, q, float(4 * radius));
    Warp::Values all;
    int total = 0;
    for (int j = 0; j < second.count; ++j) {
      Warp::Values row;
      int n = 0;
      for (int i = 0; i < first.count; ++i) {
        const float t = first.place(i), s = second.place(j);
        const auto nearest = [](float place) { return static_cast<int>(std::floor(place + 0.5F)); };
        Warp::add(row,
                  warp.probe(u + nearest(t * first.stepX + s * second.stepX),
                             v + nearest(t * first.stepY + s * second.stepY), radius, radius),
                  first.weight(i));
        n += first.weight(i);
      }
      Warp::add(all, Warp::mean(row, n), second.weight(j));
      total += second.weight(j);
    }
    return Warp::mean(all, total);
  }
  static _color_t visible(_color_t p) { return p.a != 0 ? p : _color_t{}; }

  [[nodiscard]] _color_t faded(_color_t p, int u, int v) const {
    if (outside != 3)
      return p;
    const auto share = [](int place, int size) {
      return std::clamp(std::min(place, 256 * (size - 1) - place) + 256, 0, 256);
    };
    const int all = (share(u, picture.Width) * share(v, picture.Height) + 128) >> 8;
    p.a = static_cast<uint8_t>((p.a * all + 128) >> 8);
    return visible(p);
  }
};

} // namespace zol::plain
