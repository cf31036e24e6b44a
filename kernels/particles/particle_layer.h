// Many small shapes drawn one over another, and together over a picture.
#pragma once

#include "frame/picture.h"
#include "kernels/particles/particle_rows.h"
#include "kernels/particles/sprite_picture.h"
#include "kernels/shape/coverage.h"
#include "kernels/simd/growing.h"

#include <optional>

namespace zol {

enum class ParticleShape { dots, discs, squares, streaks, pictures };

/// What all particles have in common.
struct ParticleLook {
  ParticleShape shape;
  bool adds;                    ///< they add up, else each covers those before it
  double aspect;                ///< width of a pixel over its height
  const SpritePicture *picture; ///< of pictures; not empty
};

/// One particle. Places and ways in pixels, sizes in pixels across; from it downwards they are `aspect` times
/// as many.
struct Particle {
  double x, y;        ///< its middle
  double size;        ///< diameter, side, or the longer side of a picture
  double right, down; ///< where the right side of squares and pictures points, 1 long; of streaks the way
                      ///< behind the middle, as if pixels were square
  double color[3];    ///< blue, green and red, 0 to 255
  double opacity;     ///< 0 to 1
};

/// Particles are added, oldest first, and then laid over the pixels of a picture once. Rows are made in bands
/// that stay in the cache.
class ParticleLayer {
public:
  ParticleLayer(const ParticleLook &look, int width, int height);

  /// False once memory ran out.
  explicit operator bool() const { return !failed_; }

  /// What cannot be seen is left out. Smaller ones than a pixel are as large as one and so much less opaque.
  void add(const Particle &particle);
  [[nodiscard]] bool isEmpty() const { return sprites_.count() == 0; }

  /// Asks goesOn() after every 64 particles and after every row; false as soon as it answers false, or when
  /// memory runs out.
  template <class GoesOn> bool layOver(_color_t *pixels, GoesOn goesOn) {
    constexpr int kTogether = 64;
    if (!prepare())
      return false;
    int drawn = 0;
    for (int top = 0; top < height_; top += kBandRows) {
      for (const Sprite &sprite : sprites_)
        if (const Area area = areaIn(sprite, top); !area.isEmpty()) {
          draw(sprite, top, area);
          if (++drawn % kTogether == 0 && !goesOn())
            return false;
        }
      if (failed_)
        return false;
      for (int y = top; y < height_ && y < top + kBandRows; ++y) {
        finish(y - top, pixels + ptrdiff_t{y} * width_);
        if (!goesOn())
          return false;
      }
      left_ = right_ = 0;
    }
    return true;
  }

private:
  static constexpr int kBandRows = 32;

  /// As it is drawn; 256ths of a pixel.
  struct Sprite {
    int32_t x, y;
    float size, reach; ///< what lies within `reach` across of the middle holds all of it
    float right, down;
    WidePixel ink;
  };
  [[nodiscard]] double reachOf(const Particle &particle, double size) const;
  [[nodiscard]] Area areaIn(const Sprite &sprite, int top) const;
  bool prepare();
  void draw(const Sprite &sprite, int top, const Area &area);
  void drawDot(const Sprite &sprite, int top, const Area &area);
  void drawPicture(const Sprite &sprite, int top, const Area &area);
  void drawPolygons(const Sprite &sprite, int top, const Area &area);
  void finish(int row, _color_t *pixels);
  [[nodiscard]] WidePixel *layerRow(int row) const { return layer_->data() + row * stride_; }

  ParticleLook look_;
  int width_, height_;
  ptrdiff_t stride_;
  Growing<Sprite> sprites_;
  double widest_ = 0; ///< reach
  int tile_ = 0;      ///< columns of `coverage_`
  std::optional<Scratch<WidePixel>> layer_, values_;
  std::optional<Coverage> coverage_;
  int left_ = 0, right_ = 0; ///< columns of the band that are drawn on
  bool failed_ = false;
};

} // namespace zol
