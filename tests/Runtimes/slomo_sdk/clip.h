// An engine, the library's or the plain one, over frames in memory.
#pragma once

#include "Runtimes/slomo_sdk/SlowMotion.h"
#include "plain/slow_motion.h"
#include "tests/support/scenes.h"

#include <map>

namespace zol::test {

template <class Engine> class Clip : public Engine {
public:
  void *FrameProvider(void *, unsigned frame) override {
    asked.push_back(frame);
    const auto found = frames.find(frame);
    return found == frames.end() ? nullptr : found->second.data();
  }
  std::map<unsigned, Frame> frames;
  std::vector<unsigned> asked;
};

using Fast = Clip<CSlowMotion>;
using Plain = Clip<plain::SlowMotion>;

} // namespace zol::test
