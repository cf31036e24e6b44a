// The frei0r plug-ins as their hosts load them: from files, by the interface's functions alone.

#include "bridges/catalogue/catalogue.h"
#include "bridges/frei0r/clock.h"
#include "bridges/frei0r/instance.h"
#include "bridges/frei0r/plugin.h"
#include "host/render/stage.h"
#include "tests/support/dice.h"
#include "tests/support/golden.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <dlfcn.h>
#include <fstream>
#include <limits>
#include <sstream>
#include <thread>

namespace zol::bridge {
namespace {

using Frame = std::vector<uint32_t>;

/// A plug-in file and its functions.
class File {
public:
  explicit File(const std::string &id)
      : handle_(dlopen((std::string(ZOL_BUILD_DIR "/plugins/frei0r-1/") + id + ".so").c_str(), RTLD_NOW)) {
    EXPECT_NE(handle_, nullptr) << dlerror();
    EXPECT_EQ(get<decltype(f0r_init)>("f0r_init")(), 1);
  }
  ~File() { dlclose(handle_); }
  File(const File &) = delete;
  File &operator=(const File &) = delete;

  template <class Function> Function *get(const char *name) const {
    return reinterpret_cast<Function *>(dlsym(handle_, name));
  }
  [[nodiscard]] f0r_plugin_info_t info() const {
    f0r_plugin_info_t info;
    get<decltype(f0r_get_plugin_info)>("f0r_get_plugin_info")(&info);
    return info;
  }

private:
  void *handle_;
};

class Use {
public:
  Use(const File &file, unsigned width, unsigned height)
      : file_(file), size_(size_t{width} * height),
        instance_(file.get<decltype(f0r_construct)>("f0r_construct")(width, height)) {}
  ~Use() { file_.get<decltype(f0r_destruct)>("f0r_destruct")(instance_); }
  Use(const Use &) = delete;
  Use &operator=(const Use &) = delete;

  void set(int parameter, void *value) {
    file_.get<decltype(f0r_set_param_value)>("f0r_set_param_value")(instance_, value, parameter);
  }
  void get(int parameter, void *value) {
    file_.get<decltype(f0r_get_param_value)>("f0r_get_param_value")(instance_, value, parameter);
  }
  Frame update(const Frame &first, const Frame &second, double time = 0) {
    Frame out(size_, 0xDEADBEEF);
    file_.get<decltype(f0r_update2)>("f0r_update2")(instance_, time, first.data(), second.data(), nullptr,
                                                    out.data());
    return out;
  }

private:
  const File &file_;
  size_t size_;
  f0r_instance_t instance_;
};

Frame randomFrame(size_t pixels, unsigned seed) {
  test::Dice dice(seed);
  Frame frame(pixels);
  for (uint32_t &pixel : frame)
    pixel = static_cast<uint32_t>(dice.below(256)) << 24 | static_cast<uint32_t>(dice.below(1 << 24));
  return frame;
}

/// What the reference host renders of the same effect at its defaults, from the same frames; a rising curve
/// stands at its middle, and outlines are the frame's.
Frame expected(const Plugin &plugin, int width, int height, const Frame &first, const Frame &second) {
  host::Timeline timeline;
  timeline.width = width;
  timeline.height = height;
  timeline.duration = 3600;
  host::Stage stage(*plugin.effect, catalogue().identity(), timeline, false, nullptr);
  const Frame *frames[] = {&first, &second};
  std::vector<std::unique_ptr<FrameClip>> clips;
  for (size_t i = 0; i < plugin.inputs.size(); ++i) {
    clips.push_back(std::make_unique<FrameClip>());
    clips.back()->show(width, height,
                       const_cast<_color_t *>(reinterpret_cast<const _color_t *>(frames[i]->data())));
    stage.instance().assignInput(plugin.inputs[i], 0, clips.back().get());
  }
  for (const Parameter &parameter : plugin.parameters) {
    if (parameter.name == "Progress")
      stage.instance().set(plugin.effect->fields[static_cast<size_t>(parameter.field)].name, "0.5");
    if (parameter.part == Parameter::Part::outline)
      stage.instance().set(parameter.name,
                           "M0 0H" + std::to_string(width) + "V" + std::to_string(height) + "H0Z");
  }
  const auto picture = stage.video(0);
  const auto *pixels = reinterpret_cast<const uint32_t *>(picture->record()->Pixels);
  return {pixels, pixels + size_t(width) * size_t(height)};
}

// ---- What is offered ----

std::string described() {
  std::ostringstream text;
  const char *types[] = {"bool", "number", "color", "position", "text"};
  const char *kinds[] = {"filter", "source", "mixer"};
  for (const Plugin &plugin : plugins()) {
    text << plugin.id << ' ' << kinds[plugin.type()] << '\n';
    for (const Parameter &parameter : plugin.parameters) {
      text << "  " << parameter.name << ": " << types[parameter.type()] << ' ';
      if (parameter.type() == F0R_PARAM_COLOR)
        text << parameter.standard.color.r << ' ' << parameter.standard.color.g << ' '
             << parameter.standard.color.b;
      else if (parameter.type() == F0R_PARAM_STRING)
        text << parameter.standard.text;
      else
        text << parameter.standard.number;
      text << '\n';
    }
  }
  return text.str();
}

TEST(Frei0r, NamesAndParametersAreThoseOfTheFile) {
  const std::string file = ZOL_SOURCE_DIR "/tests/bridges/frei0r.txt";
  if (test::writesGolden())
    std::ofstream(file) << described();
  std::ifstream stream(file);
  std::ostringstream kept;
  kept << stream.rdbuf();
  EXPECT_EQ(described(), kept.str());
}

TEST(Frei0r, OffersOrNamesEveryEffectWithPictures) {
  std::ifstream stream(ZOL_SOURCE_DIR "/docs/bridges.md");
  std::ostringstream page;
  page << stream.rdbuf();
  for (const host::Effect &effect : catalogue().registry().effects()) {
    if (effect.renderVideo == nullptr && effect.renderVideoRT == nullptr)
      continue;
    const bool offered = std::any_of(plugins().begin(), plugins().end(),
                                     [&](const Plugin &plugin) { return plugin.effect == &effect; });
    EXPECT_TRUE(offered || page.str().find("| " + lastWord(effect.name) + " |") != std::string::npos)
        << effect.name;
  }
  for (const Plugin &plugin : plugins()) {
    ASSERT_NE(plugin.effect, nullptr) << plugin.id;
    EXPECT_EQ(plugin.id, "zol_" + identifier(plugin.effect->name) + (plugin.stacked ? "_stacked" : ""));
    EXPECT_LE(plugin.inputs.size(), 2U) << plugin.id;
    EXPECT_TRUE(!plugin.stacked || plugin.inputs.size() == 2) << plugin.id;
  }
}

TEST(Frei0r, NumbersAreExactAtBothEndsAndAtTheDefault) {
  for (const Plugin &plugin : plugins())
    for (const Parameter &parameter : plugin.parameters) {
      if (parameter.type() != F0R_PARAM_DOUBLE || parameter.part == Parameter::Part::item)
        continue;
      SCOPED_TRACE(plugin.id + ": " + parameter.name);
      EXPECT_GE(parameter.standard.number, 0);
      EXPECT_LE(parameter.standard.number, 1);
      EXPECT_EQ(parameter.meaning(parameter.standard.number), parameter.declared);
      EXPECT_EQ(parameter.meaning(std::numeric_limits<double>::quiet_NaN()), parameter.declared);
      for (const auto &[told, meant] : {std::pair{0.0, parameter.least}, {1.0, parameter.most}})
        if (told != parameter.standard.number) {
          EXPECT_EQ(parameter.meaning(told), meant);
          EXPECT_EQ(parameter.meaning(told * 7 - 3), meant);
        }
    }
}

// ---- What is rendered ----

TEST(Frei0r, DefaultsRenderWhatTheReferenceHostRenders) {
  for (const Plugin &plugin : plugins()) {
    const File file(plugin.id);
    for (const auto &[width, height] : {std::pair{1, 1}, {33, 18}, {321, 60}}) {
      SCOPED_TRACE(plugin.id + " at " + std::to_string(width) + " x " + std::to_string(height));
      const Frame first = randomFrame(size_t(width) * size_t(height), 1);
      const Frame second = randomFrame(first.size(), 2);
      Frame given = first;
      if (plugin.stacked)
        given.insert(given.end(), second.begin(), second.end());
      Use use(file, static_cast<unsigned>(width),
              static_cast<unsigned>(plugin.stacked ? 2 * height : height));
      for (size_t i = 0; i < plugin.parameters.size(); ++i)
        if (plugin.parameters[i].part == Parameter::Part::outline) {
          std::string text = "rectangle";
          char *value = text.data();
          use.set(static_cast<int>(i), &value);
        }
      Frame answer = use.update(given, second);
      if (plugin.stacked) {
        EXPECT_TRUE(std::all_of(answer.begin() + static_cast<ptrdiff_t>(first.size()), answer.end(),
                                [](uint32_t pixel) { return pixel == 0; }));
        answer.resize(first.size());
      }
      EXPECT_TRUE(answer == expected(plugin, width, height, first, second));
    }
  }
}

TEST(Frei0r, TakesAnyValue) {
  const double numbers[] = {
      0, 1, -3, 5, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), 0.4142};
  for (const Plugin &plugin : plugins()) {
    SCOPED_TRACE(plugin.id);
    const File file(plugin.id);
    const Frame frame = randomFrame(40 * 24, 3);
    for (double number : numbers) {
      Use use(file, 40, 24);
      for (int i = 0; i < file.info().num_params; ++i) {
        const auto &parameter = plugin.parameters[static_cast<size_t>(i)];
        if (parameter.type() == F0R_PARAM_COLOR) {
          f0r_param_color_t color{static_cast<float>(number), 0.5F, static_cast<float>(-number)};
          use.set(i, &color);
        } else if (parameter.type() == F0R_PARAM_STRING) {
          for (const char *text : {"", "M", "M 0 0 L 1 0 L nan", "rectangle"}) {
            char *value = const_cast<char *>(text);
            use.set(i, &value);
            char *kept = nullptr;
            use.get(i, &kept);
            EXPECT_STREQ(kept, text);
          }
        } else {
          use.set(i, &number);
        }
      }
      use.set(-1, &number);
      use.set(10000, &number);
      const Frame once = use.update(frame, frame, 1);
      EXPECT_EQ(std::count(once.begin(), once.end(), 0xDEADBEEF), 0);
    }
  }
}

TEST(Frei0r, WhatCannotBeRenderedIsTransparent) {
  const File file("zol_filters_blur");
  for (const auto &[width, height] : {std::pair{32768U, 1U}, {1U, 40000U}}) {
    Use use(file, width, height);
    const Frame frame(size_t{width} * height, 0xFFFFFFFF);
    EXPECT_EQ(use.update(frame, frame), Frame(frame.size(), 0));
  }
  Use empty(file, 0, 0);
  EXPECT_TRUE(empty.update({}, {}).empty());
}

/// Instances are made on one thread, used on others at the same time, and ended on a third.
TEST(Frei0r, InstancesChangeThreads) {
  const File file("zol_filters_blur");
  const Frame frame = randomFrame(200 * 100, 4);
  std::vector<std::unique_ptr<Use>> uses;
  std::vector<Frame> answers(4);
  for (size_t i = 0; i < answers.size(); ++i)
    uses.push_back(std::make_unique<Use>(file, 200, 100));
  std::vector<std::thread> threads;
  for (size_t i = 0; i < answers.size(); ++i)
    threads.emplace_back([&, i] {
      for (int round = 0; round < 5; ++round)
        answers[i] = uses[i]->update(frame, frame, round);
    });
  for (std::thread &thread : threads)
    thread.join();
  std::thread([&] { uses.clear(); }).join();
  for (const Frame &answer : answers)
    EXPECT_TRUE(answer == answers.front());
}

// ---- What time it is ----

TEST(Frei0r, TimesAreBelievedWhileTheyAreOnes) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  const struct {
    Caller caller;
    std::vector<double> told, meant;
  } cases[] = {
      {Caller::usual, {0, 0.5, 0.75}, {0, 0.5, 0.75}},
      {Caller::usual, {0, 40, 80}, {0, 0.04, 0.08}}, // milliseconds from a host that should tell seconds
      {Caller::ffmpeg, {0, 33, 66}, {0, 0.033, 0.066}},
      {Caller::ffmpeg, {5000, none, 5080}, {5, 0.04, 0.08}},
      {Caller::ffmpeg, {-9.2e18, -9.2e18}, {0, 0.04}},
      {Caller::ffmpeg, {0, 40, 40}, {0, 0.04, 0.08}},
      {Caller::mlt, {10, 3, 100}, {10, 3, 100}},
  };
  for (const auto &one : cases) {
    Clock clock(one.caller);
    for (size_t i = 0; i < one.told.size(); ++i)
      EXPECT_EQ(clock.next(one.told[i]), one.meant[i]) << i;
  }
}

} // namespace
} // namespace zol::bridge
