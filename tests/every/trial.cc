#include "tests/every/trial.h"

#include "frame/zol.h"
#include "tests/support/dice.h"
#include "tests/support/outline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <ctime>
#include <ostream>
#include <set>
#include <utility>

namespace zol::test {
namespace {

using host::Field;
using host::FieldType;
using Way = Subject::Way;

constexpr double kPictureRate = 25;
constexpr double kSecondsARender = 5; // a thousand times what any takes

template <class T> void append(std::string &bytes, const T *first, size_t count) {
  if (count > 0)
    bytes.append(reinterpret_cast<const char *>(first), count * sizeof(T));
}

// ---- Pictures come with rubbish in them ----

uint8_t rubbish = 0;

pic *createFilled(int width, int height) {
  pic *picture = host::services().PicCreate(width, height);
  if (picture != nullptr)
    std::memset(picture->Pixels, rubbish,
                sizeof(_color_t) * size_t(picture->Width) * size_t(picture->Height));
  return picture;
}

const t_ZoServices *servicesWithRubbish() {
  static const t_ZoServices table = [] {
    t_ZoServices copy = host::services();
    copy.PicCreate = createFilled;
    return copy;
  }();
  return &table;
}

// ---- Values ----

/// Within the range, its ends and small values as likely as any other.
double numberWithin(double least, double most, Dice &dice) {
  switch (dice.below(8)) {
  case 0: return least;
  case 1: return most;
  case 2: return least + (most - least) * dice.share();
  case 3:
  case 4: return least + (most - least) * std::exp2(-1 - dice.below(20));
  default: return std::clamp(dice.share(), least, most);
  }
}

Outline outline(unsigned kind, double width, double height) {
  const double x = width / 2, y = height / 2;
  switch (kind % 4) {
  case 0: return ellipse(x, y, width / 3, height / 3, 0.3);
  case 1: return polygon({{-5, 2}, {width + 7.5, y}, {2, height - 1.25}, {x, -4}, {x + 3, height + 9}});
  case 2: return scribble(9, std::max(width, height), 6, true, false, kind);
  default: return ring(x, y, width / 2, height / 2, 7, kind);
  }
}

std::vector<TrialClip::Picture> randomPictures(const Place &place, unsigned seed) {
  std::vector<TrialClip::Picture> pictures;
  for (unsigned i = 0; i < 3; ++i)
    pictures.push_back(randomPicture(place.width, place.height, seed * 3 + i, place.x, place.y));
  return pictures;
}

TrialClip::Wave noise(unsigned seed) {
  return [seed](int64_t frame, unsigned channel) {
    uint32_t word = (static_cast<uint32_t>(frame) * 2654435761U + channel * 40503U) ^ (seed * 2246822519U);
    word = (word ^ word >> 15) * 2246822519U;
    return static_cast<float>(static_cast<int32_t>(word ^ word >> 13)) * 0x1p-31F;
  };
}

} // namespace

NewPicturesHold::NewPicturesHold(uint8_t byte) { rubbish = byte; }
NewPicturesHold::~NewPicturesHold() { rubbish = 0; }

std::string Subject::text() const {
  return sign + (way == Way::video ? ", video" : way == Way::realTime ? ", real time" : ", sound");
}

void PrintTo(const Subject &subject, std::ostream *out) {
  *out << subject.text() << " under " << subject.identity;
}

const host::EffectLibrary &library(const std::string &identity) {
  static std::unique_ptr<host::EffectLibrary> declared;
  if (declared == nullptr || declared->identity() != identity)
    declared = std::make_unique<host::EffectLibrary>("", identity); // of this program
  return *declared;
}

std::vector<Subject> subjects() {
  std::vector<Subject> found;
  std::set<std::string> signs;
  for (const char *identity : {"Quorbel", "another host", "Halvenor"}) {
    std::vector<Subject> here;
    for (const host::Effect &effect : library(identity).registry().effects()) {
      if (effect.renderVideo != nullptr)
        here.push_back({identity, effect.sign, Way::video});
      if (effect.renderVideoRT != nullptr)
        here.push_back({identity, effect.sign, Way::realTime});
      if (effect.renderAudio != nullptr)
        here.push_back({identity, effect.sign, Way::sound});
    }
    std::erase_if(found, [&](const Subject &known) {
      return std::any_of(here.begin(), here.end(), [&](const Subject &s) { return s.sign == known.sign; });
    });
    found.insert(found.end(), here.begin(), here.end());
  }
  return found;
}

// ---- Inputs ----

std::string bytesOf(const pic &picture) {
  std::string bytes;
  append(bytes, &picture.X, 4); // the four numbers of the record
  append(bytes, picture.Pixels, size_t(picture.Width) * size_t(picture.Height));
  return bytes;
}

std::string bytesOf(const t_ZoAudio &block) {
  std::string bytes;
  const uint32_t shape[3] = {block.Frames, block.Rate, block.Channels};
  append(bytes, shape, 3);
  for (size_t i = 0; i < size_t{block.Frames} * block.Channels; ++i) {
    const float sample = std::isnan(block.Samples[i]) ? NAN : block.Samples[i]; // any NaN is as good
    append(bytes, &sample, 1);
  }
  return bytes;
}

TrialClip::TrialClip(std::vector<Picture> pictures, Wave wave, unsigned rate, uint16_t channels)
    : pictures_(std::move(pictures)), wave_(std::move(wave)), rate_(rate), channels_(channels) {
  for (const Picture &picture : pictures_)
    originals_.push_back(bytesOf(*picture->record()));
}

TrialClip::TrialClip(const Place &place, unsigned seed, uint16_t channels)
    : TrialClip(randomPictures(place, seed), noise(seed), 48000, channels) {}

pic *TrialClip::frame(double time, int, int) {
  if (dry_ || pictures_.empty())
    return nullptr;
  const double number = std::floor(time * kPictureRate + 0.5), count = static_cast<double>(pictures_.size());
  const double place = std::isfinite(number) ? std::fmod(std::fmod(number, count) + count, count) : 0;
  return pictures_[static_cast<size_t>(place)]->record();
}

t_ZoAudio *TrialClip::audio(double from, double to) {
  if (dry_)
    return nullptr;
  auto block = host::AudioBuffer::make(std::floor((to - from) * rate_ + 0.5), rate_, channels_);
  if (block == nullptr)
    return nullptr;
  const auto first = static_cast<int64_t>(std::floor(from * rate_ + 0.5));
  t_ZoAudio &record = *block->record();
  for (uint32_t i = 0; i < record.Frames; ++i)
    for (unsigned c = 0; c < channels_; ++c)
      record.Samples[size_t{i} * channels_ + c] = wave_(first + i, c);
  blocks_.push_back(std::move(block));
  originalBlocks_.push_back(bytesOf(record));
  return &record;
}

bool TrialClip::describe(t_ZoMediaInfo &info) const {
  info = {kPictureRate, 0.7, 0, 0, 1, 1, 0, 0};
  if (!pictures_.empty()) {
    const pic &first = *pictures_.front()->record();
    info.Width = first.Width;
    info.Height = first.Height;
    info.Interlaced = first.Height % 2 == 0;
  }
  return true;
}

bool TrialClip::has(const pic *picture) const {
  return std::any_of(pictures_.begin(), pictures_.end(),
                     [=](const Picture &own) { return own->record() == picture; });
}

bool TrialClip::isIntact() const {
  const auto is = [](const auto &own, const std::string &original) {
    return bytesOf(*own->record()) == original;
  };
  return std::equal(pictures_.begin(), pictures_.end(), originals_.begin(), is) &&
         std::equal(blocks_.begin(), blocks_.end(), originalBlocks_.begin(), is);
}

// ---- The trial ----

Trial::Trial(const Subject &subject, const Setup &setup)
    : subject_(subject), setup_(setup), effect_(library(subject.identity).effect(subject.sign)) {
  const auto addClip = [&] {
    const size_t i = clips_.size();
    clips_.push_back(setup.clip ? setup.clip(i)
                                : std::make_unique<TrialClip>(setup.places[i % setup.places.size()],
                                                              unsigned(i) + 1, i == 2 ? 1 : 2));
  };
  addClip();
  host::Timeline timeline;
  timeline.width = setup.width;
  timeline.height = setup.height;
  timeline.pixelAspect = 16.0 / 15;
  timeline.sampleRate = setup.rate;
  instance_ = std::make_unique<host::Instance>(effect_, subject.identity, timeline, clips_[0].get());
  instance_->openDialog();
  std::vector<host::Clip *> assigned;
  for (size_t f = 0; f < effect_.fields.size(); ++f) {
    const FieldType type = effect_.fields[f].type;
    const int field = static_cast<int>(f);
    if (type == FieldType::input || type == FieldType::inputs || type == FieldType::media)
      for (int item = 0; item < (type == FieldType::inputs ? 3 : 1); ++item) {
        if (clips_.size() == inputs_.size())
          addClip();
        inputs_.push_back({field, item, clips_[inputs_.size()].get()});
        if (type == FieldType::media)
          instance_->assignInput(field, item, inputs_.back().clip);
        else
          assigned.push_back(inputs_.back().clip);
      }
    if (type == FieldType::geometry)
      setGeometry(field, std::make_unique<OutlineShape>(outline(setup.values, setup.width, setup.height)));
  }
  instance_->assignInputs(assigned, instance_->inputFields());
  if (setup.values != 0)
    setValues(setup.values);

  t_ZoHostInfo &info = *session().info();
  info.Services = servicesWithRubbish();
  info.VideoClipStart = 0.04;
}

void Trial::setNumber(int field, int item, double value) {
  host::NumberCurve &curve = *session().parameters.numbers.get(field, item);
  curve.clear();
  curve.set(0, {value});
}

void Trial::setGeometry(int field, std::unique_ptr<host::Shape> shape) {
  *session().parameters.geometries.get(field, 0) = shape.get();
  if (shape != nullptr)
    shapes_.push_back(std::move(shape));
}

void Trial::setValues(unsigned seed) {
  Dice dice(seed);
  for (size_t f = 0; f < effect_.fields.size(); ++f) {
    const Field &declared = effect_.fields[f];
    const int field = static_cast<int>(f);
    const double least = declared.min.value_or(0), most = declared.max.value_or(1);
    switch (declared.type) {
    case FieldType::number: setNumber(field, 0, numberWithin(least, most, dice)); break;
    case FieldType::integer: setInteger(field, static_cast<int>(numberWithin(least, most, dice))); break;
    case FieldType::toggle: setInteger(field, dice.below(2)); break;
    case FieldType::selector:
      if (!declared.items.empty())
        setInteger(field, declared.items[size_t(dice.below(int(declared.items.size())))].value);
      break;
    case FieldType::color: {
      host::ColorCurve &curve = *session().parameters.colors.get(field, 0);
      curve.clear();
      curve.set(0, {255 * dice.share(), 255 * dice.share(), 255 * dice.share(), 255 * dice.share()});
      break;
    }
    case FieldType::dataset:
      for (size_t item = 0; item < instance_->datasetItems(field).size(); ++item)
        setNumber(field, int(item), dice.share());
      break;
    default: break;
    }
  }
}

Answer Trial::render(double time) {
  const host::Session::Use use(session());
  t_ZoHostInfo &info = *session().info();
  info.FrameTime = info.Time = info.BlockStart = time;
  info.BlockEnd = time + (setup_.rate == 0 ? 0.0 : double(setup_.blockFrames) / setup_.rate);
  session().messages.clear();
  const clock_t begin = clock();
  Answer answer = subject_.way == Way::video ? video() : subject_.way == Way::realTime ? realTime() : sound();
  EXPECT_LT(double(clock() - begin) / CLOCKS_PER_SEC, kSecondsARender);
  EXPECT_EQ(session().pictures.live(), 0U);
  EXPECT_EQ(session().audio.live(), 0U);
  EXPECT_EQ(session().complaints, std::vector<std::string>());
  for (const auto &clip : clips_)
    EXPECT_TRUE(clip->isIntact()) << "an input was written to";
  for (const auto &message : session().messages)
    answer.words += (answer.words.empty() ? "" : " ") + (message ? '"' + *message + '"' : "null");
  return answer;
}

Answer Trial::video() {
  pic *picture = effect_.renderVideo(session().info());
  if (picture == nullptr)
    return {};
  for (const auto &clip : clips_)
    EXPECT_FALSE(clip->has(picture)) << "an input's own frame";
  const auto taken = session().pictures.take(picture);
  EXPECT_NE(taken, nullptr) << "not a picture of the host";
  if (taken == nullptr)
    return {};
  EXPECT_GE(picture->Width, 0);
  EXPECT_GE(picture->Height, 0);
  return {true, bytesOf(*picture), {}};
}

/// The buffers hold the frame alone, between guards.
Answer Trial::realTime() {
  constexpr size_t kGuard = 64;
  constexpr _color_t kMark = {0xA5, 0x5A, 0xA5, 0x5A};
  t_ZoHostInfo &info = *session().info();
  const auto clampedSize = [](int size) { return static_cast<size_t>(std::clamp(size, 0, 4096)); };
  const size_t pixels = clampedSize(info.Width) * clampedSize(info.Height);
  std::vector<_color_t> output(pixels + 2 * kGuard, kMark);
  std::fill_n(output.begin() + kGuard, pixels, _color_t{rubbish, rubbish, rubbish, rubbish});
  info.OutputBuffer = output.data() + kGuard;
  std::vector<TrialClip::Picture> inputs;
  for (unsigned i = 0; i < 2; ++i) {
    pic *frame = i < clips_.size() ? clips_[i]->frame(info.FrameTime, 0, 0) : nullptr;
    const bool fits = frame != nullptr && frame->Width == info.Width && frame->Height == info.Height;
    inputs.push_back(randomPicture(int(clampedSize(info.Width)), int(clampedSize(info.Height)), i));
    if (fits)
      std::copy_n(frame->Pixels, pixels, inputs[i]->record()->Pixels);
    info.InputBuffers[i] = inputs[i]->record()->Pixels;
  }
  const std::string before[2] = {bytesOf(*inputs[0]->record()), bytesOf(*inputs[1]->record())};
  const int done = effect_.renderVideoRT(&info);
  for (size_t i = 0; i < 2; ++i)
    EXPECT_EQ(bytesOf(*inputs[i]->record()) == before[i], true) << "an input buffer was written to";
  const auto marked = [&](auto from) {
    return std::all_of(from, from + kGuard,
                       [&](const _color_t &p) { return std::memcmp(&p, &kMark, sizeof p) == 0; });
  };
  EXPECT_TRUE(marked(output.begin()) && marked(output.end() - kGuard)) << "written beyond the buffer";
  EXPECT_TRUE(done == 0 || done == 1) << done;
  Answer answer{done == 1, {}, {}};
  if (answer.given)
    append(answer.bytes, output.data() + kGuard, pixels);
  return answer;
}

Answer Trial::sound() {
  t_ZoAudio *block = effect_.renderAudio(session().info());
  if (block == nullptr)
    return {};
  const auto taken = session().audio.take(block);
  EXPECT_NE(taken, nullptr) << "not a block of the host";
  return taken == nullptr ? Answer{} : Answer{true, bytesOf(*block), {}};
}

} // namespace zol::test
