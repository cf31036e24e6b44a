// Renders: plans as data, what effects find in the context, clips made of clips.

#include "host/media/audio_reader.h"
#include "host/media/process.h"
#include "host/media/writer.h"
#include "host/model/error.h"
#include "host/render/plan.h"
#include "host/render/preset.h"
#include "host/render/render.h"
#include "host/render/slowmo.h"
#include "host/render/stage.h"
#include "tests/support/test_clip.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace zol::host {
namespace {

namespace fs = std::filesystem;

template <class Work> std::string errorOf(Work work) {
  try {
    work();
  } catch (const HostError &error) {
    return error.what();
  }
  return "no error";
}

// ---- Plans ----

TEST(RenderPlan, GoesToJsonAndBack) {
  EXPECT_EQ(planFromJson(toJson({})), RenderPlan());
  EXPECT_EQ(planFromJson(nlohmann::json::object()), RenderPlan());
  RenderPlan plan;
  plan.stages = {
      {"blur", {{"a.png", 0.5, 2.0}, {"-", {}, {}}}, {{"Blurriness", "0=1;1=0"}, {"Blurriness", "2"}}},
      {"copy", {}, {}}};
  plan.output = "o\"ut\n.mkv";
  plan.library = "lib.so";
  plan.host = "Quorbel";
  plan.size = {64, 48};
  plan.fit = Fit::crop;
  plan.rate = Rational(30000, 1001);
  plan.duration = 0.1;
  plan.frames = {Time::frame(3), Time::frame(5)};
  plan.sampleRate = 44100;
  plan.channels = 3;
  plan.block = 777;
  plan.realTime = plan.overwrite = true;
  plan.alpha = "drop";
  plan.codec = "ffv1";
  plan.quality = "best";
  plan.pixelFormat = "yuv444p";
  plan.encoderWords = {"-preset", "slow"};
  plan.noSound = plan.noPictures = plan.strict = plan.playlists = true;
  plan.threads = 2;
  plan.faults = {{Service::PicCreate, 2}, {Service::IsAborted, 1}};
  plan.programs = {"/a/ffmpeg", "/b/ffprobe"};
  const nlohmann::json json = toJson(plan);
  EXPECT_EQ(planFromJson(nlohmann::json::parse(json.dump())), plan);
  EXPECT_EQ(json["rate"], "30000/1001");
  EXPECT_EQ(json["faults"][0]["service"], "PicCreate");
  EXPECT_EQ(planFromJson(nlohmann::json::parse(R"({"stages":[{"inputs":["a.mov"]}]})")).stages[0].inputs[0],
            (InputPlan{"a.mov", {}, {}}));
  // Every member is told apart: leaving it out is another plan.
  for (const auto &[name, value] : json.items()) {
    nlohmann::json less = json;
    less.erase(name);
    EXPECT_FALSE(planFromJson(less) == plan) << name;
  }
}

TEST(RenderPlan, RefusesWhatIsNone) {
  const std::pair<const char *, const char *> cases[] = {
      {R"([])", "is an object"},
      {R"({"size":[1]})", "\"size\" cannot be [1]"},
      {R"({"size":[1,2.5]})", "\"size\""},
      {R"({"frames":[1,2]})", "\"frames\""},
      {R"({"duration":"2 weeks"})", "\"duration\" cannot be"},
      {R"({"channels":-1})", "\"channels\""},
      {R"({"channels":99999999999})", "\"channels\""},
      {R"({"rate":25})", "\"rate\""},
      {R"({"rate":"1/0"})", "\"rate\""},
      {R"({"output":null})", "\"output\""},
      {R"({"stages":{}})", "\"stages\""},
      {R"({"stages":[{"effect":7}]})", "\"effect\" cannot be 7"},
      {R"({"faults":[{"service":"PicMake"}]})", "\"service\" cannot be \"PicMake\""},
      {R"({"stages":[{"inputs":[{"file":"a","start":"1"}]}]})", "\"start\" cannot be \"1\""},
      {R"({"outptu":"x"})", "no \"outptu\"; did you mean \"output\"?"},
  };
  for (const auto &[text, reason] : cases) {
    const std::string error = errorOf([&, json = text] { planFromJson(nlohmann::json::parse(json)); });
    EXPECT_NE(error.find(reason), std::string::npos) << text << ": " << error;
  }
}

TEST(Preset, KeepsStagesAlone) {
  std::string name = (fs::temp_directory_path() / "zol-preset-XXXXXX").string();
  const fs::path folder = mkdtemp(name.data());
  const std::string file = (folder / "look.json").string();
  const std::vector<StagePlan> stages = {{"blur", {{"a.png", 0.5, {}}}, {{"Blurriness", "0~=1;2s=0"}}},
                                         {"copy", {}, {}}};
  savePreset(file, stages, false);
  EXPECT_EQ(loadPreset(file), stages);
  EXPECT_NE(errorOf([&] { savePreset(file, {}, false); }).find("exists"), std::string::npos);
  EXPECT_NE(errorOf([&] { savePreset((folder / "absent/x").string(), stages, true); }).find("No such file"),
            std::string::npos);
  EXPECT_NE(errorOf([&] { savePreset(file, {{"b\xFF", {}, {}}}, true); }).find("UTF-8"), std::string::npos);
  EXPECT_EQ(loadPreset(file), stages);
  const std::pair<const char *, const char *> broken[] = {
      {"{", "no JSON"}, {"{}", "no stages"}, {R"({"stages":[{"efect":""}]})", "did you mean \"effect\"?"}};
  for (const auto &[text, reason] : broken) {
    std::ofstream(file) << text;
    const std::string error = errorOf([&] { loadPreset(file); });
    EXPECT_NE(error.find(reason), std::string::npos) << error;
    EXPECT_NE(error.find("look.json"), std::string::npos) << error;
  }
  fs::remove_all(folder);
}

TEST(Fit, KeepsShapes) {
  struct Shape {
    int width, height;
    double pixelAspect;
  };
  struct Case {
    Shape from, to;
    std::pair<double, double> letterboxed, cropped; // what is filled, what is taken
  };
  const Case cases[] = {
      {{1920, 1080, 1}, {1280, 720, 1}, {1280, 720}, {1920, 1080}},
      {{853, 480, 1}, {1920, 1080, 1}, {1920, 1080}, {853, 480}}, // within a pixel of it
      {{720, 576, 64 / 45.0}, {1024, 576, 1}, {1024, 576}, {720, 576}},
      {{720, 576, 16 / 15.0}, {720, 576, 64 / 45.0}, {540, 576}, {720, 432}},
      {{1000, 500, 1}, {500, 500, 1}, {500, 250}, {500, 500}},
      {{500, 1000, 1}, {1000, 500, 1}, {250, 500}, {500, 250}},
      {{10000, 1, 1}, {10, 10, 1}, {10, 1}, {1, 1}},
  };
  for (const auto &[from, to, letterboxed, cropped] : cases) {
    const auto layout = [](const Shape &shape) {
      return PictureLayout{.width = shape.width, .height = shape.height, .pixelAspect = shape.pixelAspect};
    };
    const Placement whole = place(layout(from), layout(to), Fit::letterbox),
                    part = place(layout(from), layout(to), Fit::crop),
                    drawn = place(layout(from), layout(to), Fit::stretch);
    EXPECT_EQ(std::pair(whole.target.width, whole.target.height), letterboxed) << from.width;
    EXPECT_EQ(whole.source.width, from.width);
    EXPECT_NEAR(part.source.width, cropped.first, 1e-6) << from.width;
    EXPECT_NEAR(part.source.height, cropped.second, 1e-6) << from.width;
    EXPECT_EQ(part.target.width, to.width);
    EXPECT_EQ(drawn.target.width, to.width);
    EXPECT_EQ(drawn.source.height, from.height);
  }
}

// ---- What effects find ----

std::vector<t_ZoHostInfo> seen; // by the callbacks of the effect, which have no state of their own

Effect watchingEffect() {
  Effect effect;
  effect.name = "Watching";
  effect.init = [](t_ZoHostInfo *info) {
    seen.push_back(*info);
    return 1;
  };
  effect.renderVideo = [](t_ZoHostInfo *info) -> pic * {
    seen.push_back(*info);
    info->Width = 1; // what an effect does to its context does not last
    info->VideoClipStart = 9;
    return info->Services->PicCreate(4, 2);
  };
  return effect;
}

TEST(Stage, TellsTheTimelineBeforeInitAndAtEveryRender) {
  Timeline timeline;
  timeline.width = 4;
  timeline.height = 2;
  timeline.rate = {30000, 1001};
  timeline.pixelAspect = 1.5;
  timeline.duration = timeline.timeOfFrame(60000);
  const Effect effect = watchingEffect();
  seen.clear();
  Stage stage(effect, "Halvenor", timeline, false, nullptr);
  for (const uint64_t frame : {30000, 1, 0})
    EXPECT_NE(stage.video(timeline.timeOfFrame(frame)), nullptr);
  ASSERT_EQ(seen.size(), 4U);
  for (const t_ZoHostInfo &info : seen) {
    EXPECT_EQ(info.Width, 4);
    EXPECT_EQ(info.Height, 2);
    EXPECT_EQ(info.FrameRate, 30000.0 / 1001);
    EXPECT_EQ(info.PixelAspect, 1.5);
    EXPECT_EQ(info.VideoClipStart, 0);
    EXPECT_EQ(info.ClipEnd, 2002);
  }
  EXPECT_EQ(seen[1].FrameTime, 1001);
  EXPECT_EQ(seen[1].Time, 0.5);
  EXPECT_EQ(seen[2].FrameTime, 1001 / 30000.0);
}

TEST(Session, AsksItsStopAtEveryPoll) {
  Session session("Halvenor");
  t_ZoHostInfo *info = session.info();
  EXPECT_EQ(info->Services->IsAborted(info), 0);
  int polls = 0;
  session.stop = [&] { return ++polls == 2; };
  EXPECT_EQ(info->Services->IsAborted(info), 0);
  EXPECT_EQ(info->Services->IsAborted(info), 1);
  EXPECT_EQ(polls, 2);
  EXPECT_EQ(session.faults.calls(Service::IsAborted), 3);
}

// ---- Slow motion ----

/// Frame n is 20 n everywhere, up to the fifth.
class Ramp : public Clip {
public:
  pic *frame(double time, int width, int height) override {
    const size_t index = indexAt(time, 10);
    if (index == 4)
      throw HostError("frame 4 is broken");
    if (index > 4)
      return nullptr;
    held.push_back(PictureBuffer::make(width, height));
    std::fill_n(&held.back()->record()->Pixels->b, 4 * held.back()->pixels(),
                static_cast<uint8_t>(20 * index));
    return held.back()->record();
  }
  t_ZoAudio *audio(double, double) override { return nullptr; }
  void release() override { held.clear(); }

  std::vector<std::unique_ptr<PictureBuffer>> held;
};

TEST(SlowMotionClip, ShowsAnyTimeOfAnotherClip) {
  Ramp ramp;
  SlowMotionClip slow(ramp, {6, 4, 10}, SlowMotionMethod::mix);
  // Two at once, in any order: each its own until both are released.
  const pic *later = slow.frame(0.25, 6, 4), *earlier = slow.frame(0.1, 6, 4),
            *between = slow.frame(0.125, 6, 4);
  EXPECT_EQ(later->Pixels[23].g, 50);
  EXPECT_EQ(earlier->Pixels[0].a, 20);
  EXPECT_EQ(between->Pixels[7].r, 25);
  EXPECT_FALSE(ramp.held.empty());
  slow.release();
  EXPECT_TRUE(ramp.held.empty());
  EXPECT_EQ(errorOf([&] { slow.frame(0.35, 6, 4); }), "frame 4 is broken");
  EXPECT_EQ(slow.frame(0.25, 6, 4)->Pixels[0].b, 50) << "an error is forgotten once it was told";
  EXPECT_EQ(errorOf([&] {
              SlowMotionClip huge(ramp, {40000, 40000, 10}, SlowMotionMethod::mix);
            }),
            "slow motion: out of memory");
}

// ---- Whole renders ----

class Rendering : public testing::Test {
protected:
  Rendering() {
    std::string name = (fs::temp_directory_path() / "zol-render-XXXXXX").string();
    folder_ = mkdtemp(name.data());
    plan_.library = ZOL_BUILD_DIR "/libzol.zoeffects.so.1";
    plan_.overwrite = true;
  }
  ~Rendering() override { fs::remove_all(folder_); }

  [[nodiscard]] std::string path(const std::string &name) const { return (folder_ / name).string(); }

  /// A clip of even frames, each of its number's grey.
  std::string clip(const std::string &name, Rational rate, int frames) const {
    WriterOptions options;
    options.width = 8;
    options.height = 6;
    options.rate = rate;
    MediaWriter writer(path(name), options);
    for (int i = 0; i < frames; ++i)
      writer.writeFrame(std::vector<uint8_t>(8 * 6 * 4, static_cast<uint8_t>(i)).data());
    writer.finish();
    return path(name);
  }

  fs::path folder_;
  RenderPlan plan_;
};

TEST_F(Rendering, LooksIntoEachFileOnceAndKeepsItsRate) {
  std::ofstream(path("probe")) << "#!/bin/sh\necho >> " << path("probed") << "\nexec ffprobe \"$@\"\n";
  fs::permissions(path("probe"), fs::perms::owner_all);
  plan_.programs.ffprobe = path("probe");
  plan_.stages = {{"mix",
                   {{clip("a.nut", {30000, 1001}, 9), {}, {}}, {clip("b.nut", 10, 2), {}, {}}},
                   {{"Transition", "0"}}}};
  plan_.output = path("out.nut");
  plan_.duration = timeOf(9, {30000, 1001});
  RenderJob job(planFromJson(toJson(plan_)));
  uint64_t last = 0;
  job.run([&](uint64_t done, uint64_t all) {
    EXPECT_EQ(done, ++last);
    EXPECT_EQ(all, 9U);
  });
  EXPECT_EQ(fs::file_size(path("probed")), 2U);
  VideoReader out(path("out.nut"), {});
  EXPECT_EQ(out.rate(), Rational(30000, 1001));
  for (size_t i = 0; i < 9; ++i)
    EXPECT_EQ(out.at(i)->pixels[0], i);
  EXPECT_EQ(job.commands().size(), 3U);
}

TEST_F(Rendering, TakesPartsOfItsInputs) {
  const std::string all = clip("all.nut", 10, 30); // each frame of its number's grey
  const auto greys = [&](const InputPlan &input, std::optional<Rational> rate = {}) {
    plan_.stages = {{"copy", {input}, {}}};
    plan_.output = path("part.nut");
    plan_.rate = rate;
    RenderJob(plan_).run([](uint64_t, uint64_t) {});
    VideoReader part(path("part.nut"), {});
    std::vector<int> values;
    for (size_t i = 0; part.reaches(i); ++i)
      values.push_back(part.at(i)->pixels[0]);
    return values;
  };
  EXPECT_EQ(greys({all, {}, {}}).size(), 30U);
  EXPECT_EQ(greys({all, 0.5, 0.9}), (std::vector<int>{5, 6, 7, 8}));
  EXPECT_EQ(greys({all, 2.7, {}}), (std::vector<int>{27, 28, 29}));
  EXPECT_EQ(greys({all, 2.8, 99}), (std::vector<int>{28, 29}));
  EXPECT_EQ(greys({all, 0.52, 0.8}), (std::vector<int>{5, 6, 7})) << "between two pictures";
  EXPECT_EQ(greys({all, 1, 1.3}, 20), (std::vector<int>{10, 10, 11, 11, 12, 12}));
  EXPECT_EQ(greys({all, 1, 1.5}, 5), (std::vector<int>{10, 12, 14}));
  EXPECT_NE(errorOf([&] { greys({all, 3, 4}); }).find("ends before 3 s"), std::string::npos);
  EXPECT_NE(errorOf([&] { greys({all, 2, 2}); }).find("before it begins"), std::string::npos);
  // A still lasts as long as it is told.
  clip("still.png", 10, 1);
  EXPECT_EQ(greys({path("still.png"), 0, 0.5}, 10).size(), 5U);
}

TEST_F(Rendering, TakesPartsOfSound) {
  WriterOptions options;
  options.sampleRate = 8000;
  options.channels = 1;
  std::vector<float> ramp(8000);
  for (size_t i = 0; i < ramp.size(); ++i)
    ramp[i] = static_cast<float>(i);
  MediaWriter writer(path("ramp.wav"), options);
  writer.writeSamples(ramp.data(), ramp.size());
  writer.finish();
  plan_.stages = {{"simple audio switcher", {{path("ramp.wav"), 0.25, 0.75}}, {}}};
  plan_.output = path("part.wav");
  RenderJob(plan_).run([](uint64_t, uint64_t) {});
  AudioReader part(path("part.wav"), {});
  std::vector<float> samples(8000);
  ASSERT_EQ(part.read(0, 8000, samples.data()), 4000U);
  samples.resize(4000);
  EXPECT_EQ(samples, std::vector<float>(ramp.begin() + 2000, ramp.begin() + 6000));
}

TEST_F(Rendering, KeepsThePixelAspectOfAShapeThatStays) {
  Process ffmpeg({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "color=s=72x58:d=0.1", "-vf", "setsar=64/45",
                  path("wide.mkv")});
  ASSERT_EQ(ffmpeg.wait(), 0);
  const struct {
    std::optional<std::pair<int, int>> size;
    double aspect;
  } cases[] = {{{}, 64 / 45.0}, {{{36, 29}}, 64 / 45.0}, {{{102, 58}}, 1}};
  for (const auto &[size, aspect] : cases) {
    plan_.size = size;
    std::vector<Input> inputs;
    inputs.emplace_back(InputPlan{path("wide.mkv"), {}, {}}, false, plan_);
    EXPECT_EQ(settlePictures(plan_, inputs).timeline.pixelAspect, aspect);
  }
}

} // namespace
} // namespace zol::host
