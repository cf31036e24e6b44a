// One effect in a host of its own, to be given values and inputs and rendered.
#pragma once

#include "tests/support/declared.h"
#include "tests/support/test_clip.h"

#include <vector>

namespace zol::test {

class Filter {
public:
  /// With its defaults, in a frame of this size.
  Filter(int (*declare)(t_ZoHostInfo *), int width, int height) : callbacks_(declare) {
    t_ZoHostInfo *info = session.info();
    info->Width = width;
    info->Height = height;
    info->PixelAspect = 1;
    callbacks_.init(info);
  }

  void set(int field, double value) {
    auto &curve = *session.parameters.numbers.get(field, 0);
    curve.clear();
    curve.set(0.5, {value});
  }
  void choose(int field, int value) { *session.parameters.integers.get(field, 0) = value; }
  void setColor(int field, _color_t value) {
    auto &curve = *session.parameters.colors.get(field, 0);
    curve.clear();
    curve.set(0.5, host::colorValue(value));
  }
  void assign(int field, host::Clip *clip) { *session.parameters.inputs.get(field, 0) = {clip}; }

  pic *run() { return callbacks_.renderVideo(session.info()); }
  /// Null where the effect gives no picture.
  std::unique_ptr<host::PictureBuffer> render() { return session.pictures.take(run()); }

  host::Session session{"Halvenor"};

private:
  Callbacks callbacks_;
};

} // namespace zol::test
