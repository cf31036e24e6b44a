// Work shared by threads: its order, its bounds, its failures; and every effect, which must give in threads
// what it gives alone.

#include "host/media/audio_reader.h"
#include "host/media/video_reader.h"
#include "host/media/writer.h"
#include "host/model/error.h"
#include "host/render/threads.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <fcntl.h>
#include <filesystem>
#include <future>
#include <gtest/gtest.h>
#include <set>
#include <stdexcept>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace zol::host {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

// ---- Order ----

using Numbers = OrderedWork<int, int>;

/// Numbers from 0 on.
std::function<std::optional<int>()> upTo(int count, std::atomic<int> &begun) {
  return [=, &begun] { return begun == count ? std::nullopt : std::optional<int>(begun++); };
}

TEST(OrderedWork, HandsOnInOrderWithinItsLead) {
  for (const size_t threads : {1, 2, 3, 8}) {
    constexpr int kJobs = 500;
    const size_t lead = threads + 2;
    std::atomic<int> begun = 0, working = 0, most = 0;
    std::set<std::thread::id> workers;
    std::mutex mutex;
    Numbers work({.threads = threads,
                  .lead = lead,
                  .next = upTo(kJobs, begun),
                  .worker = [&](const Numbers::Unwanted &) -> Numbers::Worker {
                    const std::lock_guard lock(mutex);
                    EXPECT_TRUE(workers.insert(std::this_thread::get_id()).second);
                    return [&](int job, const auto &handOn) {
                      most = std::max<int>(most, ++working);
                      if (job % 7 == 0)
                        std::this_thread::sleep_for(100us);
                      for (int i = 0; i < job % 3; ++i) // none, one, two
                        handOn(10 * job + i);
                      --working;
                    };
                  },
                  .unblock = {}});
    for (int job = 0; job < kJobs; ++job)
      for (int i = 0; i < job % 3; ++i) {
        ASSERT_EQ(work.take(), 10 * job + i);
        EXPECT_LE(begun, job + static_cast<int>(lead));
      }
    EXPECT_EQ(work.take(), std::nullopt);
    EXPECT_EQ(work.take(), std::nullopt);
    EXPECT_LE(workers.size(), threads);
    EXPECT_LE(most, static_cast<int>(threads));
  }
}

TEST(OrderedWork, StartsThreadsAsThereAreJobs) {
  std::atomic<int> begun = 0, made = 0;
  Numbers work({.threads = 1000,
                .lead = 1000,
                .next = upTo(2, begun),
                .worker = [&](const Numbers::Unwanted &) -> Numbers::Worker {
                  ++made;
                  return [](int job, const auto &handOn) { handOn(job); };
                },
                .unblock = {}});
  EXPECT_EQ(begun, 0);
  EXPECT_EQ(work.take(), 0);
  EXPECT_EQ(work.take(), 1);
  EXPECT_EQ(work.take(), std::nullopt);
  EXPECT_LE(made, 2);
}

TEST(OrderedWork, FailsWhereTheFirstInOrderDoes) {
  for (int round = 0; round < 20; ++round) {
    std::atomic<int> begun = 0;
    std::atomic<bool> late = false;
    Numbers work({.threads = 4,
                  .lead = 6,
                  .next = upTo(100, begun),
                  .worker = [&](const Numbers::Unwanted &unwanted) -> Numbers::Worker {
                    return [&](int job, const auto &handOn) {
                      if (job == 11) {
                        late = true;
                        throw std::runtime_error("11");
                      }
                      while (job > 11 && !unwanted()) // what comes behind is told to stop
                        std::this_thread::yield();
                      while (job == 10 && !late) // what comes before is not
                        std::this_thread::yield();
                      handOn(job);
                      if (job == 10) {
                        EXPECT_FALSE(unwanted());
                        throw std::runtime_error("10");
                      }
                    };
                  },
                  .unblock = {}});
    for (int i = 0; i <= 10; ++i)
      ASSERT_EQ(work.take(), i);
    for (int i = 0; i < 2; ++i)
      try {
        work.take();
        ADD_FAILURE();
      } catch (const std::runtime_error &error) {
        EXPECT_STREQ(error.what(), "10");
      }
    EXPECT_LE(begun, 10 + 6);
  }
}

TEST(OrderedWork, CarriesWhatItsHelpersThrow) {
  std::atomic<int> begun = 0;
  const auto plan = [&](int jobs, bool unfit) {
    begun = 0;
    return Numbers::Plan{.threads = 3,
                         .lead = 5,
                         .next = [&, jobs]() -> std::optional<int> {
                           if (begun == jobs)
                             throw std::runtime_error("no more can be had");
                           return begun++;
                         },
                         .worker = [=](const Numbers::Unwanted &) -> Numbers::Worker {
                           if (unfit)
                             throw std::runtime_error("unfit");
                           return [](int job, const auto &handOn) { handOn(job); };
                         },
                         .unblock = {}};
  };
  Numbers ends(plan(2, false));
  EXPECT_EQ(ends.take(), 0);
  EXPECT_EQ(ends.take(), 1);
  EXPECT_THROW(ends.take(), std::runtime_error);
  Numbers unfit(plan(50, true));
  EXPECT_THROW(unfit.take(), std::runtime_error);
}

TEST(OrderedWork, IsGivenUpWhereverItWaits) {
  std::atomic<int> begun = 0, told = 0;
  std::promise<void> source;
  std::shared_future<void> blocked(source.get_future());
  {
    Numbers work({.threads = 4,
                  .lead = 4,
                  .next = upTo(1000, begun),
                  .worker = [&](const Numbers::Unwanted &unwanted) -> Numbers::Worker {
                    return [&](int job, const auto &handOn) {
                      if (job == 2)
                        blocked.wait(); // until unblocked
                      while (job == 3 && !unwanted())
                        std::this_thread::yield();
                      told += unwanted();
                      handOn(job);
                    };
                  },
                  .unblock = [&] { source.set_value(); }});
    EXPECT_EQ(work.take(), 0);
    while (begun < 4)
      std::this_thread::yield();
  }
  EXPECT_GE(told, 2);
  EXPECT_LE(begun, 5);
}

// ---- Over files ----

class Threads : public testing::Test {
protected:
  static constexpr int kWidth = 40, kHeight = 24, kFrames = 7;

  Threads() {
    std::string name = (fs::temp_directory_path() / "zol-threads-XXXXXX").string();
    folder_ = mkdtemp(name.data());
  }
  ~Threads() override { fs::remove_all(folder_); }

  [[nodiscard]] std::string clip(const std::string &name, int frames, unsigned seed) const {
    WriterOptions options;
    options.width = kWidth;
    options.height = kHeight;
    options.rate = 25;
    MediaWriter writer((folder_ / name).string(), options);
    for (int t = 0; t < frames; ++t) {
      std::vector<uint8_t> pixels;
      for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
          for (int c = 0; c < 4; ++c)
            pixels.push_back(static_cast<uint8_t>((x + 2 * t) * 5 * (c + 1) + y * static_cast<int>(seed) +
                                                  (c == 3 ? 99 : 0)));
      writer.writeFrame(pixels.data());
    }
    writer.finish();
    return (folder_ / name).string();
  }

  [[nodiscard]] std::string sound(const std::string &name) const {
    WriterOptions options;
    options.sampleRate = 48000;
    options.channels = 2;
    MediaWriter writer((folder_ / name).string(), options);
    std::vector<float> samples;
    for (int i = 0; i < 2 * 48000 * kFrames / 25; ++i)
      samples.push_back(static_cast<float>(i * 37 % 1000) / 1000 - 0.5F);
    writer.writeSamples(samples.data(), samples.size() / 2);
    writer.finish();
    return (folder_ / name).string();
  }

  fs::path folder_;
};

/// Something to see of each effect: shapes drawn, numbers on their way from their defaults.
StagePlan lively(const Effect &effect, size_t inputs) {
  StagePlan stage{effect.name, std::vector<InputPlan>(inputs), {}};
  for (const Field &field : effect.fields)
    if (field.type == FieldType::geometry)
      stage.settings.emplace_back(field.name, "M4 3 H30 V20 H9 Z");
    else if (field.type == FieldType::number && field.max && *field.max <= 2 && field.min.value_or(0) >= 0)
      stage.settings.emplace_back(field.name, "0=0.3;1=0.6");
  return stage;
}

TEST_F(Threads, GiveWhatOneGivesOfEveryEffect) {
  const EffectLibrary library(ZOL_BUILD_DIR "/libzol.zoeffects.so.1", "Halvenor");
  Timeline timeline;
  timeline.width = kWidth;
  timeline.height = kHeight;
  timeline.duration = timeOf(kFrames, timeline.rate);
  std::array<std::vector<Input>, 2> all; // of pictures, of sound
  for (const std::string &file : {clip("a.nut", kFrames, 7), clip("b.nut", kFrames, 3)})
    all[0].emplace_back(InputPlan{file, {}, {}}, false, RenderPlan());
  for (const std::string &file : {sound("x.wav"), sound("y.wav")})
    all[1].emplace_back(InputPlan{file, {}, {}}, true, RenderPlan());
  for (std::vector<Input> &inputs : all)
    for (Input &input : inputs) {
      input.bringTo(timeline, false);
      input.keepMore(leadOf(8));
    }
  int rendering = 0, failing = 0;
  const auto compare = [&](const Effect &effect, bool sound, bool realTime) {
    RenderPlan plan;
    plan.output = sound ? "o.wav" : "o.nut";
    plan.realTime = realTime;
    const std::vector<Input> &inputs = all[sound];
    const size_t fields = Instance(effect, plan.host, timeline).inputFields().size();
    plan.stages = {lively(effect, std::min(fields, inputs.size()))};
    const ChainSetup setup(plan, library);
    const ChainThreads one{1, [&] { return std::make_unique<Chain>(setup, plan, timeline, inputs); }, {}};
    const auto make = [&](Chain &chain, int frame) {
      std::string result;
      try {
        const double time = timeline.timeOfFrame(static_cast<uint64_t>(frame));
        if (sound) {
          const auto samples = chain.sound(time, timeline.timeOfFrame(static_cast<uint64_t>(frame) + 1));
          const t_ZoAudio &block = *samples->record();
          result.assign(reinterpret_cast<const char *>(block.Samples),
                        sizeof(float) * block.Frames * block.Channels);
        } else {
          const auto picture = chain.picture(time);
          result.assign(reinterpret_cast<const char *>(picture->record()->Pixels),
                        sizeof(_color_t) * picture->pixels());
        }
      } catch (const HostError &error) {
        result = error.what();
      }
      chain.release();
      return result;
    };
    std::vector<std::string> alone;
    const auto chain = one.chain();
    for (int frame = 0; frame < kFrames; ++frame)
      alone.push_back(make(*chain, frame));
    const bool made = alone.front().size() > 1000;
    ++(made ? rendering : failing);
    EXPECT_EQ(made, std::all_of(alone.begin(), alone.end(),
                                [](const std::string &result) { return result.size() > 1000; }))
        << effect.name;
    for (const size_t count : {2, 3, 8}) {
      ChainThreads threads = one;
      threads.count = count;
      int begun = 0;
      const auto work = share<int, std::string>(
          threads, [&] { return begun == kFrames ? std::nullopt : std::optional(begun++); },
          [&](Chain &others, int frame, const auto &handOn) { handOn(make(others, frame)); });
      for (const std::string &result : alone)
        EXPECT_TRUE(work->take() == result) << effect.name << ", threads: " << count;
    }
  };
  for (const auto &effect : library.registry().effects()) {
    if (effect.renderVideo != nullptr)
      compare(effect, false, false);
    if (effect.renderVideoRT != nullptr)
      compare(effect, false, true);
    if (effect.renderAudio != nullptr && effect.renderVideo == nullptr)
      compare(effect, true, false);
  }
  EXPECT_GE(rendering, 40);
  EXPECT_LE(failing, rendering / 10);
}

TEST_F(Threads, KeepFewFramesOfAnInput) {
  constexpr size_t kLong = 80, kOwn = 4;
  const std::string file = clip("long.nut", kLong, 5);
  for (const size_t threads : {1, 2, 8}) {
    VideoReader reader(file, {});
    const size_t lead = leadOf(threads);
    reader.keepMore(lead - 1);
    reader.prepare(0);
    std::array<std::weak_ptr<const Frame>, kLong> frames;
    std::atomic<size_t> most = 0;
    std::vector<std::thread> workers;
    std::mutex mutex;
    std::condition_variable changed;
    std::set<size_t> working;
    size_t next = 0;
    const auto work = [&] {
      std::unique_lock lock(mutex);
      while (next < kLong) {
        const size_t frame = next++;
        working.insert(frame);
        changed.wait(lock, [&] { return frame < *working.begin() + lead; });
        lock.unlock();
        auto shown = reader.at(frame);
        auto before = reader.at(frame - std::min<size_t>(frame, 3));
        EXPECT_EQ(shown->pixels[0], static_cast<uint8_t>(2 * frame * 5));
        lock.lock();
        frames[frame] = shown;
        shown.reset();
        before.reset();
        working.erase(frame);
        changed.notify_all();
        most = std::max<size_t>(
            most, static_cast<size_t>(std::count_if(frames.begin(), frames.end(),
                                                    [](const auto &one) { return !one.expired(); })));
      }
    };
    for (size_t i = 0; i < threads; ++i)
      workers.emplace_back(work);
    for (std::thread &worker : workers)
      worker.join();
    EXPECT_LE(most, 2 * (kOwn + lead - 1)) << threads; // the window, and what was asked for last
    EXPECT_GE(most, kOwn);
  }
}

TEST_F(Threads, EndTheWaitForAPipe) {
  std::array<int, 2> writers{}; // who say one word, and no more
  const auto pipe = [&](const std::string &name) {
    const std::string fifo = (folder_ / name).string();
    EXPECT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    writers[name.size() % 2] = open(fifo.c_str(), O_RDWR | O_CLOEXEC);
    EXPECT_EQ(write(writers[name.size() % 2], "word", 4), 4);
    return fifo;
  };
  VideoReader reader(pipe("a"), {.raw = true, .rawWidth = 8, .rawHeight = 8, .programs = {}});
  AudioReader samples(pipe("ab"), {.raw = true, .rawRate = 8000, .programs = {}});
  std::vector<std::future<void>> waiting;
  for (int i = 0; i < 3; ++i) {
    waiting.push_back(std::async(std::launch::async, [&] { EXPECT_THROW(reader.at(2), HostError); }));
    waiting.push_back(std::async(std::launch::async, [&] {
      std::array<float, 2> one;
      EXPECT_THROW(samples.read(0, 1, one.data()), HostError);
    }));
  }
  std::this_thread::sleep_for(50ms);
  reader.giveUp();
  samples.giveUp();
  for (auto &one : waiting)
    EXPECT_EQ(one.wait_for(20s), std::future_status::ready);
  EXPECT_THROW(reader.at(0), HostError);
  for (const int writer : writers)
    close(writer);
}

TEST(ThreadsFor, AreAsManyAsMemoryHolds) {
  constexpr size_t kLarge = size_t{4} * 3840 * 2160;
  EXPECT_EQ(threadsFor(3, 4, 1000), 3U);
  EXPECT_EQ(threadsFor(1, 1000000, kLarge), 1U);
  EXPECT_EQ(threadsFor(8, 1000000, kLarge), 1U) << "33 TB";
  EXPECT_GE(threadsFor(std::nullopt, 0, 0), 1U);
}

} // namespace
} // namespace zol::host
