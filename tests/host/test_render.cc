// Renders: plans as data, what effects find in the context, clips made of clips.

#include "host/media/audio_reader.h"
#include "host/media/process.h"
#include "host/media/writer.h"
#include "host/model/error.h"
#include "host/render/plan.h"
#include "host/render/preset.h"
#include "host/render/render.h"
#include "host/render/scaled_pictures.h"
#include "host/render/slowmo.h"
#include "host/render/stage.h"
#include "host/script/queries.h"
#include "tests/support/test_clip.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdio>
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

/// One frame of 2 by 1, of which it tells.
class ToldClip : public Clip {
public:
  pic *frame(double, int width, int height) override { return scaled_.at(picture_->record(), width, height); }
  t_ZoAudio *audio(double, double) override { return nullptr; }
  bool describe(t_ZoMediaInfo &info) const override {
    info = {12.5, 8, 2, 1, 1, 0, 0, 0};
    return true;
  }

private:
  std::unique_ptr<PictureBuffer> picture_ = test::randomPicture(2, 1, 7);
  ScaledPictures scaled_;
};

TEST(Instance, HandsMediaToTheEffectsOwnCallbacks) {
  static void *assigned;
  static int found;
  static double speed;
  Effect effect;
  effect.name = "Player";
  effect.fields.resize(1);
  effect.fields[0].type = FieldType::media;
  effect.fields[0].name = "Media";
  effect.probe = [](t_ZoHostInfo *, void *) { return found; };
  effect.initByMedia = [](t_ZoHostInfo *info, void *media) {
    info->Services->InputSet(info, 0, 0, assigned = media);
    return 1;
  };
  effect.trim = [](t_ZoHostInfo *info, double edges[2]) {
    EXPECT_EQ(info->Services->InputGetPic(info, 0, 0), assigned);
    edges[1] = std::min(edges[1], 8 / speed);
    return 1;
  };
  Instance instance(effect, "Halvenor", Timeline());
  ToldClip clip;
  found = 0;
  EXPECT_NE(errorOf([&] { instance.assignInput(0, 0, &clip); }).find("can use nothing"), std::string::npos);
  found = 1;
  EXPECT_EQ(instance.missingInput(), 0);
  instance.assignInputs({&clip}, instance.inputFields());
  EXPECT_EQ(assigned, &clip);
  EXPECT_EQ(instance.missingInput(), -1);
  for (const auto &[value, seconds] : {std::pair(0.5, std::optional(16.0)), {1e-9, std::nullopt}}) {
    speed = value;
    EXPECT_EQ(instance.mediaDuration(), seconds);
  }
}

TEST(Query, TellsOfAClipAsAWhole) {
  ToldClip clip;
  test::PictureClip untold(nullptr);
  t_ZoMediaInfo info = {};
  const auto asked = [&](const char *format, const void *handle, const void *place) {
    char text[100];
    std::snprintf(text, sizeof text, format, reinterpret_cast<uintptr_t>(handle),
                  reinterpret_cast<uintptr_t>(place));
    return answerQuery(text);
  };
  EXPECT_EQ(asked("ZoMediaInfo( 0x%" PRIXPTR ", 0x%" PRIXPTR " );", &clip, &info), 1);
  EXPECT_EQ(info.Rate, 12.5);
  EXPECT_EQ(info.Width, 2);
  EXPECT_EQ(asked("ZoMediaInfo( 0x%" PRIXPTR ", 0x%" PRIXPTR " );", &untold, &info), 0);
  for (const char *other :
       {"ZoMediaInfo( 0x%" PRIXPTR " );", "ZoMediaInfos( 0x%" PRIXPTR ", 0x%" PRIXPTR " );",
        "ZoMediaInfo( \"a\", 0x%" PRIXPTR " );", "ZoMediaInfo( 0, 0 );", "", "ZoMediaInfo("})
    EXPECT_EQ(asked(other, &clip, &info), 0) << other;
}

TEST(Clip, ComesAtTheSizeAskedFor) {
  ToldClip clip;
  const pic *own = clip.frame(0, 2, 1), *wide = clip.frame(0, 4, 3);
  EXPECT_EQ(clip.frame(0, 0, 0), own);
  EXPECT_EQ(clip.frame(0, 4, 3), wide) << "made once";
  ASSERT_EQ(wide->Width, 4);
  ASSERT_EQ(wide->Height, 3);
  for (int y = 0; y < 3; ++y) {
    EXPECT_EQ(wide->Pixels[4 * y].g, own->Pixels[0].g);
    EXPECT_EQ(wide->Pixels[4 * y + 3].r, own->Pixels[1].r);
    EXPECT_GT(wide->Pixels[4 * y + 1].b, std::min(own->Pixels[0].b, own->Pixels[1].b)) << "between both";
    EXPECT_LT(wide->Pixels[4 * y + 1].b, std::max(own->Pixels[0].b, own->Pixels[1].b));
  }
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

// ---- Media, and effects that move time ----

TEST_F(Rendering, PlaysMediaAtAnySpeed) {
  const std::string thirty = clip("thirty.nut", 10, 30);
  using Values = std::vector<int>;
  using Settings = std::vector<std::pair<std::string, std::string>>;
  const auto shown = [&](StagePlan stage, std::optional<Rational> rate = {},
                         std::optional<Time> duration = {}) {
    plan_.stages = {std::move(stage)};
    plan_.output = path("played.nut");
    plan_.rate = rate;
    plan_.duration = duration;
    RenderJob(plan_).run([](uint64_t, uint64_t) {});
    VideoReader played(path("played.nut"), {});
    Values values;
    for (size_t i = 0; played.reaches(i); ++i)
      values.push_back(played.at(i)->pixels[0]);
    return values;
  };
  const auto media = [&](Settings settings) {
    settings.emplace_back("media", thirty);
    return StagePlan{"media source", {}, settings};
  };
  const auto numbers = [](size_t count, double first, double step) {
    Values values;
    for (size_t i = 0; i < count; ++i)
      values.push_back(static_cast<int>(std::floor(first + static_cast<double>(i) * step + 1e-6)));
    return values;
  };
  EXPECT_EQ(shown(media({})), numbers(30, 0, 1));
  EXPECT_EQ(shown({"media source", {{thirty, 1, 2}}, {}}), numbers(10, 10, 1)) << "a part of it";
  EXPECT_EQ(shown(media({{"Speed", "0.5"}})), numbers(60, 0, 0.5));
  EXPECT_EQ(shown(media({{"Speed", "2"}, {"InputStartOffset", "1"}})), numbers(10, 10, 2));
  EXPECT_EQ(shown(media({{"Speed", "-1"}, {"InputStartOffset", "2.9"}})), numbers(29, 29, -1));
  EXPECT_EQ(shown(media({{"Speed", "0"}, {"InputStartOffset", "1"}})), Values(30, 10));
  EXPECT_EQ(shown(media({{"Speed", "-1"}})), Values(30, 0)) << "held, for as long as the media last";
  // Every picture of the file is there whatever the output's rate.
  EXPECT_EQ(shown(media({{"Speed", "0.5"}}), 5), numbers(30, 0, 1));
  EXPECT_EQ(shown({"time warp", {{thirty, {}, {}}}, {{"Speed", "0.5"}}}, 5), numbers(15, 0, 1));
  EXPECT_EQ(shown({"time warp", {{thirty, {}, {}}}, {}}, 20), numbers(60, 0, 0.5));

  Values beyond = numbers(30, 0, 1);
  beyond.resize(35, 29);
  EXPECT_EQ(shown(media({}), {}, 3.5), beyond);
  EXPECT_EQ(shown(media({{"Beyond", "Loop"}}), {}, 3.5)[32], 2);
  EXPECT_EQ(shown(media({{"Beyond", "Transparent"}}), {}, 3.5)[32], 0);

  // From full speed to none: half of the clip, by the integral of the speed.
  Values ramp;
  for (int i = 0; i < 30; ++i)
    ramp.push_back(static_cast<int>(std::floor(i - i * i / 60.0 + 1e-4)));
  EXPECT_EQ(shown({"time warp", {{thirty, {}, {}}}, {{"Speed", "0=1;1=0"}}}), ramp);
  EXPECT_EQ(shown({"time warp", {{thirty, {}, {}}}, {{"Mode", "Position"}, {"Position", "0=2;1=2.5"}}})[15],
            22);
}

TEST_F(Rendering, PlaysTheSoundOfMediaWithThem) {
  WriterOptions options;
  options.width = 8;
  options.height = 6;
  options.rate = 10;
  options.sampleRate = 8000;
  options.channels = 2;
  options.encoding.quality = Quality::lossless;
  std::vector<float> wave(2 * 8000);
  for (size_t i = 0; i < wave.size(); ++i)
    wave[i] = static_cast<float>(std::sin(static_cast<double>(i / 2) * (i % 2 == 0 ? 0.2 : 0.05)));
  MediaWriter writer(path("av.mkv"), options);
  for (int i = 0; i < 10; ++i) {
    writer.writeSamples(wave.data() + ptrdiff_t{i} * 1600, 800);
    writer.writeFrame(std::vector<uint8_t>(8 * 6 * 4, static_cast<uint8_t>(i)).data());
  }
  writer.finish();
  const auto played = [&](const std::string &output, const std::string &speed, const std::string &offset) {
    plan_.stages = {
        {"media source", {}, {{"Media", path("av.mkv")}, {"Speed", speed}, {"InputStartOffset", offset}}}};
    plan_.output = path(output);
    plan_.quality = "lossless";
    RenderJob(plan_).run([](uint64_t, uint64_t) {});
    AudioReader reader(path(output), {});
    EXPECT_EQ(reader.sampleRate(), 8000);
    std::vector<float> samples(2 * 40000);
    samples.resize(2 * reader.read(0, 40000, samples.data()));
    return samples;
  };
  EXPECT_EQ(played("same.wav", "1", "0"), wave);
  EXPECT_EQ(played("same.mkv", "1", "0"), wave);
  EXPECT_EQ(VideoReader(path("same.mkv"), {}).at(9)->pixels[0], 9);
  const std::vector<float> back = played("back.mkv", "-1", "1"), slow = played("slow.mkv", "0.5", "0");
  ASSERT_EQ(back.size(), wave.size());
  ASSERT_EQ(slow.size(), 2 * wave.size());
  EXPECT_EQ(VideoReader(path("slow.mkv"), {}).at(9)->pixels[0], 4);
  for (size_t i = 200; i < 7800; ++i)
    for (size_t c = 0; c < 2; ++c) {
      ASSERT_NEAR(back[2 * i + c], wave[2 * (8000 - i) + c], 1e-4) << i;
      ASSERT_NEAR(slow[4 * i + c], wave[2 * i + c], 1e-4) << i;
      ASSERT_NEAR(slow[4 * i + 2 + c], std::sin((static_cast<double>(i) + 0.5) * (c == 0 ? 0.2 : 0.05)), 1e-4)
          << i;
    }
  plan_.noSound = true;
  RenderJob(plan_).run([](uint64_t, uint64_t) {});
  EXPECT_FALSE(probe(plan_.output).hasAudio);
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
