// Pictures at the sizes that effects ask for.
#pragma once

#include "frame/zol.h"
#include "host/services/pools.h"

#include <deque>
#include <memory>

namespace zol::host {

/// Copies of pictures at other sizes, each made once.
class ScaledPictures {
public:
  /// The picture itself where it has the size, or where none is asked for; null where memory runs out. The
  /// picture keeps its address until clear().
  pic *at(pic *picture, int width, int height);
  void clear() { made_.clear(); }

private:
  struct Made {
    const pic *from;
    std::unique_ptr<PictureBuffer> picture;
  };
  std::deque<Made> made_;
};

} // namespace zol::host
