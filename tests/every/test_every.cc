// Every effect that renders, from its declaration alone: whatever fails around it, whatever it is given, a
// render answers nothing or something sane, and the same for the same.

#include "tests/every/golden.h"
#include "tests/every/stated.h"
#include "tests/every/trial.h"
#include "tests/support/failing_malloc.h"
#include "tests/support/levels.h"
#include "tests/support/outline.h"
#include "tests/support/test_clip.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cmath>
#include <limits>
#include <regex>

namespace zol::test {
namespace {

using host::FieldType;
using host::Service;
using Way = Subject::Way;

constexpr unsigned kValues = 9; // sets of values: the defaults and random ones

class Every : public testing::TestWithParam<Subject> {
protected:
  void SetUp() override { library(GetParam().identity); }

  [[nodiscard]] const host::Effect &effect() const {
    return library(GetParam().identity).effect(GetParam().sign);
  }

  /// Renders at every level, into new pictures of two kinds, what `change` makes of a trial: always the same.
  static void rendersAlike(
      const Trial::Setup &setup, const std::function<void(Trial &)> &change = [](Trial &) {}) {
    std::optional<Answer> first;
    atEveryLevel([&] {
      for (const uint8_t rubbish : {uint8_t{0x00}, uint8_t{0xB7}}) {
        if (rubbish != 0 && showsNewPictures())
          continue;
        const NewPicturesHold hold(rubbish);
        Trial trial(GetParam(), setup);
        change(trial);
        const Answer answer = trial.render();
        if (!first)
          first = answer;
        EXPECT_EQ(answer.given, first->given);
        EXPECT_EQ(answer.words, first->words);
        EXPECT_TRUE(answer.bytes == first->bytes) << "new pictures of " << int(rubbish);
      }
    });
  }

private:
  static bool showsNewPictures() {
    return std::any_of(std::begin(kShowNewPictures), std::end(kShowNewPictures),
                       [](const ShowsNewPictures &known) { return known.sign == GetParam().sign; });
  }
};

// ---- Failures ----

/// What came of failing each thing, without repetitions: lines of the golden file. Good answers are not said.
class Failures {
public:
  void add(const std::string &what, const Answer &answer) {
    if (answer.given && answer.words.empty())
      return;
    const std::string line = what + ": " + (answer.given ? "rendered" : "nothing") +
                             (answer.words.empty() ? "" : ", ") + answer.words + '\n';
    if (lines_.find(line) == lines_.npos)
      lines_ += line;
  }
  [[nodiscard]] const std::string &lines() const { return lines_; }

private:
  std::string lines_;
};

/// The first calls and the last, and some between where they are many.
std::vector<int> callsToFail(int count) {
  std::vector<int> calls;
  for (int nth = 1; nth <= count; nth += nth < 64 ? 1 : std::max(1, count / 16))
    calls.push_back(nth);
  if (count > 0 && calls.back() != count)
    calls.push_back(count);
  return calls;
}

TEST_P(Every, AnswersEveryFailure) {
  Failures failures;
  for (unsigned values = 0; values < kValues; ++values) {
    SCOPED_TRACE(values);
    Trial trial(GetParam(), {.values = values});
    host::Faults &faults = trial.session().faults;
    faults.clear();
    const Answer good = trial.render();
    const host::Faults counted = faults;
    EXPECT_TRUE((good.given && good.words.empty()) || values != 0) << good.words;

    for (int slot = 0; slot < 84; ++slot) {
      const auto service = static_cast<Service>(slot);
      const std::string name(host::serviceName(service));
      if (name.empty())
        continue;
      for (const int nth : callsToFail(counted.calls(service))) {
        SCOPED_TRACE(name + " " + std::to_string(nth));
        faults.clear();
        faults.failAt(service, nth);
        const Answer answer = trial.render();
        failures.add(name, answer);
        EXPECT_FALSE(answer.given && service == Service::IsAborted);
      }
    }
    faults.clear();

    for (int nth = 1;; ++nth) {
      SCOPED_TRACE("malloc " + std::to_string(nth));
      Answer answer;
      {
        const FailingMalloc fails(nth);
        answer = trial.render();
        if (!fails.failed())
          break;
      }
      failures.add("malloc", answer);
    }
    EXPECT_TRUE(trial.render() == good) << "a failure is remembered";

    if (GetParam().way == Way::realTime)
      continue; // hosts have every buffer at hand
    for (size_t i = 0; i < trial.inputs().size(); ++i) {
      const std::string name = effect().fields[size_t(trial.inputs()[i].field)].name;
      Trial without(GetParam(), {.values = values});
      without.unassign(without.inputs()[i]);
      failures.add("without " + name, without.render());
      Trial dry(GetParam(), {.values = values});
      dry.inputs()[i].clip->dryUp();
      failures.add("nothing from " + name, dry.render());
    }
    Trial bare(GetParam(), {.values = values});
    for (const Trial::Input &input : bare.inputs())
      bare.unassign(input);
    failures.add("without any input", bare.render());
    for (size_t field = 0; field < effect().fields.size(); ++field)
      if (effect().fields[field].type == FieldType::geometry) {
        Trial without(GetParam(), {.values = values});
        without.setGeometry(int(field), nullptr);
        failures.add("without " + effect().fields[field].name, without.render());
      }
  }
  expectSection("messages.txt", GetParam().text(), failures.lines());
}

// ---- Calls and bytes as ever ----

/// The calls of renders in order, and a hash of what they gave.
TEST_P(Every, CallsTheHostAsEver) {
  std::string lines;
  for (const unsigned values : {0U, 1U, 2U}) {
    Trial trial(GetParam(), {.values = values, .blockFrames = 3});
    host::Session &session = trial.session();
    session.trace.clear();
    session.tracing = true;
    const Answer answer = trial.render();
    for (std::string &call : session.trace)
      call = std::regex_replace(call, std::regex("0x[0-9A-F]+"), "0x");
    for (size_t i = 0, same = 1; i < session.trace.size(); i += same) {
      for (same = 1; i + same < session.trace.size() && session.trace[i + same] == session.trace[i];)
        ++same;
      lines += session.trace[i] + (same > 1 ? " x " + std::to_string(same) : "") + '\n';
    }
    lines += (answer.given ? hashOf(answer.bytes) : "nothing") + '\n';
  }
  expectSection("calls.txt", GetParam().text(), lines);
}

/// Opens and edits the dialog of a fresh instance, with a service failing or none.
TEST_P(Every, OpensItsDialogWhateverFails) {
  const auto open = [&](host::Session &session) {
    TrialClip clip({8, 8}, 1, 2);
    session.defaultClip = &clip;
    EXPECT_TRUE(effect().init == nullptr || effect().init(session.info()) == 1);
    if (effect().onDialogOpen != nullptr)
      effect().onDialogOpen(session.info());
    session.selectedInputs = {0, 3, -1};
    for (int item = -1; effect().onDialogItemEdit != nullptr && item <= int(effect().fields.size()); ++item)
      effect().onDialogItemEdit(session.info(), item);
    EXPECT_EQ(session.complaints, std::vector<std::string>());
    EXPECT_EQ(session.pictures.live(), 0U);
  };
  host::Session counting(GetParam().identity);
  open(counting);
  for (int slot = 0; slot < 84; ++slot)
    for (const int nth : callsToFail(counting.faults.calls(static_cast<Service>(slot)))) {
      host::Session session(GetParam().identity);
      session.faults.failAt(static_cast<Service>(slot), nth);
      open(session);
    }
}

// ---- Pictures of all sizes, and numbers beyond every sense ----

constexpr Place kPlaces[] = {
    {0, 0},           {1, 1},         {0, 5},          {6, 0},         {1, 9, 3, 2},
    {9, 1, -4, 5},    {7, 5, -3, -2}, {7, 5, 33, 9},   {7, 5, 90, 70}, {7, 5, -90, 3},
    {53, 23, -8, -6}, {64, 33},       {37, 11, 0, 11}, {2, 2, 12, 4},  {3, 40, 8, -20},
};

TEST_P(Every, TakesPicturesOfEverySize) {
  for (const unsigned values : {0U, 1U, 3U})
    for (const Place &place : kPlaces) {
      SCOPED_TRACE(testing::Message() << "values " << values << ", " << place.width << " by " << place.height
                                      << " at " << place.x << ", " << place.y);
      rendersAlike({.places = {place}, .values = values});
      rendersAlike({.places = {place, {37, 11}}, .values = values});
      rendersAlike({.places = {{37, 11}, place}, .values = values});
      rendersAlike({.width = place.width, .height = place.height, .values = values});
      rendersAlike({.width = place.width, .height = place.height, .places = {place}, .values = values});
    }
  rendersAlike({.width = -3, .height = 4});
  for (const int frames : {0, 1, 3, 64, 1000})
    rendersAlike({.values = 2, .blockFrames = frames});
}

constexpr double kHostileNumbers[] = {
    NAN,          INFINITY, -INFINITY, 1e300, -1e300, 5e-324,   -5e-324, 1e-310, 2147483648.0, -2147483649.0,
    4294967296.0, 1e9,      -1e9,      -1,    -0.0,   1 + 1e-9, 1e38,    3.5e38, 32767.5,
};
constexpr int kHostileIntegers[] = {INT_MIN, INT_MIN + 1, -46341, -1, 2, 255, 46341, 65536, INT_MAX};

TEST_P(Every, TakesNumbersBeyondEverySense) {
  for (const unsigned values : {0U, 2U}) {
    const auto renders = [&](auto change) { rendersAlike({.values = values}, change); };
    for (size_t f = 0; f < effect().fields.size(); ++f) {
      const host::Field &declared = effect().fields[f];
      const int field = static_cast<int>(f);
      for (const double number : kHostileNumbers) {
        SCOPED_TRACE(declared.name + " " + std::to_string(number));
        if (declared.type == FieldType::number)
          renders([&](Trial &trial) { trial.setNumber(field, 0, number); });
        if (declared.type == FieldType::dataset)
          renders([&](Trial &trial) { trial.setNumber(field, 1, number); });
      }
      for (const int number : kHostileIntegers) {
        SCOPED_TRACE(declared.name + " " + std::to_string(number));
        if (declared.type == FieldType::integer || declared.type == FieldType::selector ||
            declared.type == FieldType::toggle)
          renders([&](Trial &trial) { trial.setInteger(field, number); });
      }
      if (declared.type == FieldType::geometry)
        for (const double number : kHostileNumbers) {
          SCOPED_TRACE(declared.name + " " + std::to_string(number));
          for (size_t point = 0; point < 4; ++point)
            renders([&](Trial &trial) {
              Outline outline = ellipse(14, 6, 9, 4);
              OutlineSegment &s = outline.segments[1];
              (point == 0 ? s.P0 : point == 1 ? s.P1 : point == 2 ? s.H0 : s.H1)[point & 1] = number;
              trial.setGeometry(field, std::make_unique<OutlineShape>(outline));
            });
        }
      if (declared.type == FieldType::geometry)
        for (const int segments : {0, 1, 1000})
          renders([&](Trial &trial) {
            trial.setGeometry(field,
                              std::make_unique<OutlineShape>(scribble(segments, 37, 9, false, false, 3)));
          });
    }
    for (const double number : kHostileNumbers) {
      SCOPED_TRACE("the context's " + std::to_string(number));
      for (double t_ZoHostInfo::*member :
           {&t_ZoHostInfo::FrameRate, &t_ZoHostInfo::PixelAspect, &t_ZoHostInfo::VideoClipStart,
            &t_ZoHostInfo::ClipStart, &t_ZoHostInfo::ClipEnd})
        renders([&](Trial &trial) { trial.session().info()->*member = number; });
    }
  }
}

// ---- Nothing is remembered ----

TEST_P(Every, GivesTheSameInAnyOrder) {
  const std::vector<double> times = {0, 0.2, 0.36, 0.8, 1, -0.4};
  for (unsigned values = 0; values < kValues; ++values) {
    SCOPED_TRACE(values);
    std::vector<Answer> alone;
    for (const double time : times)
      alone.push_back(Trial(GetParam(), {.values = values}).render(time));
    Trial trial(GetParam(), {.values = values}),
        other(GetParam(), {.width = 21, .height = 30, .values = values + 1});
    const auto expectAlone = [&](size_t i) {
      EXPECT_TRUE(trial.render(times[i]) == alone[i]) << "at " << times[i];
      other.render(times[i]);
    };
    for (size_t i = 0; i < times.size(); ++i)
      expectAlone(i);
    for (size_t i = times.size(); i-- > 0;)
      expectAlone(i);
    expectAlone(2);
    expectAlone(2);
    rendersAlike({.values = values});
  }
}

INSTANTIATE_TEST_SUITE_P(, Every, testing::ValuesIn(subjects()), [](const auto &subject) {
  std::string name = subject.param.text();
  std::erase_if(name, [](unsigned char c) { return std::isalnum(c) == 0; });
  return name;
});

// ---- What effects state of themselves ----

TEST(Neutral, SettingsCopyTheInput) {
  for (const Neutral &neutral : kNeutral) {
    SCOPED_TRACE(testing::Message() << neutral.sign << ' ' << neutral.settings);
    bool found = false;
    for (const Subject &subject : subjects()) {
      if (subject.sign != neutral.sign || subject.way == Way::realTime)
        continue;
      found = true;
      Trial trial(subject, {});
      for (size_t i = 0; i < trial.inputs().size(); ++i)
        if (i != neutral.input && neutral.alone)
          trial.unassign(trial.inputs()[i]);
      std::string_view settings = neutral.settings;
      while (!settings.empty()) {
        const std::string_view one = settings.substr(0, settings.find(';'));
        settings.remove_prefix(std::min(settings.size(), one.size() + 1));
        trial.instance().set(one.substr(0, one.find('=')), one.substr(one.find('=') + 1));
      }
      const Answer answer = trial.render();
      ASSERT_TRUE(answer.given) << answer.words;
      TrialClip &clip = *trial.inputs().at(neutral.input).clip;
      const t_ZoHostInfo &info = *trial.session().info();
      EXPECT_TRUE(answer.bytes == (subject.way == Way::video
                                       ? bytesOf(*clip.frame(info.FrameTime, 0, 0))
                                       : bytesOf(*clip.audio(info.BlockStart, info.BlockEnd))));
    }
    EXPECT_TRUE(found);
  }
}

} // namespace
} // namespace zol::test
