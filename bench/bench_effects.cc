// Whole renders of one effect on 1920 x 1080 frames, at every level:
//   bench_effects FRAMES EFFECT [FIELD=VALUE]... [--benchmark_...]
// FRAMES holds raw BGRA frames, which every input delivers in turn at 25 a second. Pictures are used again,
// as hosts do: nothing waits for new memory.

#include "host/render/instance.h"
#include "host/script/library.h"
#include "kernels/simd/levels.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

namespace host = zol::host;
using Picture = std::unique_ptr<host::PictureBuffer>;

constexpr int kWidth = 1920, kHeight = 1080;
constexpr double kRate = 25;

class FrameClip : public host::Clip {
public:
  explicit FrameClip(const char *file) {
    std::ifstream raw(file, std::ios::binary);
    for (;;) {
      Picture frame = host::PictureBuffer::make(kWidth, kHeight);
      if (!raw.read(reinterpret_cast<char *>(frame->record()->Pixels), sizeof(_color_t) * kWidth * kHeight))
        break;
      frames_.push_back(std::move(frame));
    }
    if (frames_.empty())
      throw std::runtime_error(std::string(file) + ": no frames");
  }
  pic *frame(double time, int, int) override {
    const auto count = static_cast<long>(frames_.size());
    const long number = std::lround(time * kRate) % count;
    return frames_[static_cast<size_t>(number < 0 ? number + count : number)]->record();
  }
  t_ZoAudio *audio(double, double) override { return nullptr; }

private:
  std::vector<Picture> frames_;
};

// ---- Pictures that are used again ----

std::vector<Picture> inUse, spare;

pic *createPicture(int width, int height) {
  const auto fits = [=](const Picture &p) {
    return p->record()->Width == width && p->record()->Height == height;
  };
  const auto found = std::find_if(spare.begin(), spare.end(), fits);
  if (found == spare.end()) {
    inUse.push_back(host::PictureBuffer::make(width, height));
  } else {
    inUse.push_back(std::move(*found));
    spare.erase(found);
  }
  return inUse.back()->record();
}

void freePicture(pic *picture) {
  const auto found =
      std::find_if(inUse.begin(), inUse.end(), [=](const Picture &p) { return p->record() == picture; });
  spare.push_back(std::move(*found));
  inUse.erase(found);
}

pic *duplicatePicture(pic *picture) {
  pic *copy = createPicture(picture->Width, picture->Height);
  copy->X = picture->X;
  copy->Y = picture->Y;
  std::memcpy(copy->Pixels, picture->Pixels,
              sizeof(_color_t) * static_cast<size_t>(picture->Width) * static_cast<size_t>(picture->Height));
  return copy;
}

const t_ZoServices *services() {
  static t_ZoServices table = host::services();
  table.PicCreate = createPicture;
  table.PicDuplicate = duplicatePicture;
  table.PicFree = freePicture;
  return &table;
}

void render(benchmark::State &state, host::Instance &instance, zol::SimdLevel level) {
  zol::capSimdLevel(level);
  const host::Session::Use use(instance.session());
  t_ZoHostInfo &info = *instance.session().info();
  int frame = 0;
  for (auto _ : state) {
    info.FrameTime = info.Time = ++frame / kRate;
    pic *picture = instance.effect().renderVideo(&info);
    if (picture == nullptr) {
      state.SkipWithError("nothing rendered");
      break;
    }
    freePicture(picture);
  }
  zol::capSimdLevel(zol::kWidestLevel);
}

void run(int argc, char **argv) {
  FrameClip clip(argv[1]);
  const host::EffectLibrary library("", "Halvenor"); // of this program
  const host::Effect &effect = library.effect(argv[2]);
  if (effect.renderVideo == nullptr)
    throw std::runtime_error(effect.name + " renders nothing");
  host::Timeline timeline;
  timeline.width = kWidth;
  timeline.height = kHeight;
  host::Instance instance(effect, "Halvenor", timeline, &clip);
  instance.openDialog();
  const std::vector<int> fields = instance.inputFields();
  instance.assignInputs(std::vector<host::Clip *>(fields.size(), &clip), fields);
  for (int i = 3; i < argc; ++i) {
    const std::string word = argv[i];
    instance.set(word.substr(0, word.find('=')), word.substr(word.find('=') + 1));
  }
  instance.session().info()->Services = services();
  for (int i = 0; i < zol::kSimdLevels; ++i) {
    const auto level = static_cast<zol::SimdLevel>(i);
    zol::capSimdLevel(level);
    if (zol::simdLevel() == level)
      benchmark::RegisterBenchmark(zol::levelName(level), [&, level](benchmark::State &state) {
        render(state, instance, level);
      })->Unit(benchmark::kMillisecond);
  }
  benchmark::RunSpecifiedBenchmarks();
}

} // namespace

int main(int argc, char **argv) {
  benchmark::Initialize(&argc, argv);
  if (argc < 3) {
    std::fprintf(stderr, "usage: bench_effects FRAMES EFFECT [FIELD=VALUE]... [--benchmark_...]\n");
    return 2;
  }
  try {
    run(argc, argv);
  } catch (const std::exception &e) {
    std::fprintf(stderr, "bench_effects: %s\n", e.what());
    return 1;
  }
}
