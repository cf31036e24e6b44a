// One effect under trial: an instance with inputs and values, rendered again and again, every render held to
// what any render must keep.
#pragma once

#include "host/render/instance.h"
#include "host/script/library.h"

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace zol::test {

/// A callback of an effect as a host of one identity knows it.
struct Subject {
  std::string identity, sign;
  enum class Way { video, realTime, sound } way;

  [[nodiscard]] std::string text() const; ///< the sign and the way
  friend void PrintTo(const Subject &subject, std::ostream *out);
};

/// Every callback that renders: each effect under the first identity that declares it.
std::vector<Subject> subjects();

/// What this program's effects declare to a host of this identity. A host writes the ids of fields into the
/// effects: it holds until another identity is asked for.
const host::EffectLibrary &library(const std::string &identity);

/// The size and the place of a picture.
struct Place {
  int width, height, x = 0, y = 0;
};

/// What an input of an effect delivers: a few pictures in turn, and sound, both told by the time alone. It
/// knows whether anybody wrote to what it handed out.
class TrialClip : public host::Clip {
public:
  using Picture = std::unique_ptr<host::PictureBuffer>;
  /// A sample by its number and channel.
  using Wave = std::function<float(int64_t frame, unsigned channel)>;

  TrialClip(std::vector<Picture> pictures, Wave wave, unsigned rate, uint16_t channels);
  /// Random pictures and noise.
  TrialClip(const Place &place, unsigned seed, uint16_t channels);

  pic *frame(double time, int, int) override;
  t_ZoAudio *audio(double from, double to) override;
  /// It says that it ends where most renders are within it.
  bool describe(t_ZoMediaInfo &info) const override;

  [[nodiscard]] bool has(const pic *picture) const;
  [[nodiscard]] bool isIntact() const;
  /// From now on neither pictures nor sound are to be had.
  void dryUp() { dry_ = true; }

private:
  std::vector<Picture> pictures_;
  std::vector<std::string> originals_;
  Wave wave_;
  unsigned rate_;
  uint16_t channels_;
  bool dry_ = false;
  std::vector<std::unique_ptr<host::AudioBuffer>> blocks_;
  std::vector<std::string> originalBlocks_;
};

/// What a render gave.
struct Answer {
  bool given = false;
  std::string bytes; ///< size, place and pixels, or the samples
  std::string words; ///< messages, each in quotes
  bool operator==(const Answer &) const = default;
};

/// The bytes that an answer would have if it were a copy.
std::string bytesOf(const pic &picture);
std::string bytesOf(const t_ZoAudio &block);

class Trial {
public:
  struct Setup {
    int width = 37, height = 11;
    std::vector<Place> places = {{37, 11}, {29, 15, 5, -3}, {37, 11}}; ///< of the inputs' pictures
    unsigned values = 0; ///< 0: the effect's defaults, else random ones of this seed
    std::function<std::unique_ptr<TrialClip>(size_t input)> clip = {}; ///< instead of random ones
    unsigned rate = 48000;
    int blockFrames = 130;
  };

  /// The effect must be declared to the subject's identity. The times of renders are within 0 to 1.
  Trial(const Subject &subject, const Setup &setup);

  /// One render, checked as far as every render must hold: a picture or sound of the host's own, sane and
  /// whole, or nothing; nothing left behind; inputs untouched; no misuse of the border; soon done.
  Answer render(double time = 0.36);

  host::Session &session() { return instance_->session(); }
  host::Instance &instance() { return *instance_; }
  [[nodiscard]] const host::Effect &effect() const { return effect_; }

  /// One for every assigned slot, in the order of the fields.
  struct Input {
    int field, item;
    TrialClip *clip;
  };
  [[nodiscard]] const std::vector<Input> &inputs() const { return inputs_; }
  void unassign(const Input &input) { instance_->assignInput(input.field, input.item, nullptr); }

  /// Sets a number for all times: a field's, or that of a data set's item.
  void setNumber(int field, int item, double value);
  void setInteger(int field, int value) { *session().parameters.integers.get(field, 0) = value; }
  void setGeometry(int field, std::unique_ptr<host::Shape> shape);

private:
  void assignInputs();
  void setValues(unsigned seed);
  Answer video();
  Answer realTime();
  Answer sound();

  Subject subject_;
  Setup setup_;
  const host::Effect &effect_;
  std::vector<std::unique_ptr<TrialClip>> clips_;
  std::vector<Input> inputs_;
  std::vector<std::unique_ptr<host::Shape>> shapes_;
  std::unique_ptr<host::Instance> instance_;
};

/// What a new picture holds before an effect writes to it, for as long as the object lives.
class NewPicturesHold {
public:
  explicit NewPicturesHold(uint8_t byte);
  ~NewPicturesHold();
  NewPicturesHold(const NewPicturesHold &) = delete;
  NewPicturesHold &operator=(const NewPicturesHold &) = delete;
};

} // namespace zol::test
