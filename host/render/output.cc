#include "host/render/output.h"

#include "host/model/error.h"

#include <algorithm>
#include <utility>

namespace zol::host {
namespace {

std::string quoted(const std::string &file) { return file == "-" ? "standard input" : '"' + file + '"'; }

bool isRaw(const RenderPlan &plan) { return plan.output == "-" && optionOf(plan.encoderWords, "-f").empty(); }

/// Settles one output, from the parts of a render that are known.
class Settling {
public:
  Settling(const RenderPlan &plan, const ChainSetup &setup, const Chain &chain,
           const std::vector<Input> &inputs, const Settled &settled)
      : plan_(plan), setup_(setup), chain_(chain), inputs_(inputs), settled_(settled),
        timeline_(settled.timeline), span_(settled.span) {}

  OutputSetup settle() {
    WriterOptions &writing = out_.writing;
    writing.overwrite = plan_.overwrite;
    writing.programs = plan_.programs;
    writing.encoding = encodingOf(plan_);
    if (!isRaw(plan_))
      format_ = &formatOf(plan_.output, writing.encoding);
    if (setup_.sound) {
      writing.sampleRate = static_cast<int>(timeline_.sampleRate);
      writing.channels = static_cast<int>(timeline_.channels);
      keepPictures();
    } else {
      writing.width = timeline_.width;
      writing.height = timeline_.height;
      writing.rate = timeline_.rate;
      writing.pixelAspect = nearestRational(timeline_.pixelAspect);
      writing.firstNumber = span_.first;
      settleAlpha();
      const bool moving = format_ != nullptr && format_->kind == FileKind::moving;
      if (moving)
        keepFields();
      if (plan_.part) // what goes along comes with all parts
        return std::move(out_);
      keepSound();
      if (moving)
        keepTimecode();
    }
    if (format_ != nullptr)
      keepTracks();
    return std::move(out_);
  }

private:
  void note(std::string line) { out_.notes.push_back(std::move(line)); }
  [[nodiscard]] const std::string &file(size_t input) const { return inputs_[input].file(); }
  [[nodiscard]] const MediaInfo *infoOf(size_t input) const { return inputs_[input].info(); }
  [[nodiscard]] double startOf(size_t input) const { return setup_.inputs[input].start.value_or(0); }

  /// Seconds that are rendered; 0 where only their end will tell.
  [[nodiscard]] double spanDuration() const {
    const MediaInfo *const leading = settled_.leading == nullptr ? nullptr : settled_.leading->info();
    const bool told = leading != nullptr && !leading->guessed && leading->duration > 0;
    return span_.openEnd && !told ? 0 : timeline_.timeOfFrame(span_.count);
  }

  /// The first input that fits, of those that ffmpeg told of.
  template <class Fits> std::optional<size_t> firstThat(Fits fits) const {
    for (size_t i = 0; i < inputs_.size(); ++i)
      if (infoOf(i) != nullptr && fits(inputs_[i], *infoOf(i)))
        return i;
    return std::nullopt;
  }

  /// Has the writer take tracks of a file, from where the render begins.
  void accompany(size_t input) {
    companion_ = input;
    Companion &from = out_.writing.companion;
    from.file = file(input);
    from.start = startOf(input) + timeline_.timeOfFrame(span_.first);
    from.duration = spanDuration();
    from.tags = true;
    if (!setup_.retimed[input])
      from.subtitles = infoOf(input)->extras.subtitles;
    from.attachments = infoOf(input)->extras.attachments > 0;
  }

  void settleAlpha() {
    const bool opaqueInputs =
        !inputs_.empty() && std::all_of(inputs_.begin(), inputs_.end(), [](const Input &input) {
          return input.info() != nullptr && !input.info()->alpha;
        });
    out_.forceOpaque = plan_.alpha == "drop" || (plan_.alpha == "auto" && opaqueInputs);
    const bool kept =
        format_ == nullptr || pictureEncoding(*format_, plan_.output, out_.writing.encoding, true).alpha;
    out_.watchAlpha = out_.forceOpaque || !kept;
    out_.writing.alpha = kept && !out_.forceOpaque;
  }

  // ---- Sound of pictures ----

  void keepSound() {
    std::vector<bool> heard;
    for (size_t i = 0; i < inputs_.size(); ++i)
      heard.push_back(infoOf(i) != nullptr && infoOf(i)->hasAudio);
    if (setup_.sounding > 0)
      return makeSound(heard);
    std::vector<Voice> voices = voicesOf(setup_, chain_, heard);
    if (plan_.noSound || format_ == nullptr)
      return;
    for (size_t i = 0; i < inputs_.size(); ++i)
      if (heard[i] && setup_.retimed[i])
        note("the sound of " + quoted(file(i)) + " is left out: its pictures are shown at other times");
    if (voices.empty())
      return;
    if (format_->sounds.empty()) {
      note('"' + plan_.output + "\" holds no sound: that of " + quoted(file(voices.front().input)) +
           " is left out");
      return;
    }
    for (size_t i = 0; i < inputs_.size(); ++i)
      if (heard[i] && !setup_.retimed[i] &&
          std::none_of(voices.begin(), voices.end(),
                       [&](const Voice &voice) { return file(voice.input) == file(i); }))
        note("the sound of " + quoted(file(i)) + " is left out");
    int channels = 0;
    for (const Voice &voice : voices)
      channels = std::max(channels, infoOf(voice.input)->channels);
    noteChannels(channels);
    if (voices.size() == 1 && voices.front().factors.empty())
      keepSoundOf(voices.front().input);
    else
      mixSound(std::move(voices), static_cast<unsigned>(channels));
  }

  /// Where the effects make it themselves.
  void makeSound(const std::vector<bool> &heard) {
    const auto first = std::find(heard.begin(), heard.end(), true);
    if (plan_.noSound || format_ == nullptr || first == heard.end())
      return;
    const auto input = static_cast<size_t>(first - heard.begin());
    const bool stream = inputs_[input].isStream();
    if (format_->sounds.empty() || stream) {
      note("the sound of " + quoted(file(input)) + " is left out: " +
           (stream ? "a pipe is read once, for its pictures" : '"' + plan_.output + "\" holds none"));
      return;
    }
    const MediaInfo &info = *infoOf(input);
    noteChannels(info.channels);
    setSoundFormat(plan_.sampleRate.value_or(static_cast<unsigned>(info.sampleRate)),
                   plan_.channels.value_or(static_cast<unsigned>(info.channels)));
    out_.ownSound = true;
  }

  void setSoundFormat(unsigned sampleRate, unsigned channels) {
    out_.soundTimeline = timeline_;
    out_.soundTimeline.sampleRate = sampleRate;
    out_.soundTimeline.channels = channels;
    out_.writing.sampleRate = static_cast<int>(sampleRate);
    out_.writing.channels = static_cast<int>(channels);
  }

  void keepSoundOf(size_t input) {
    if (!inputs_[input].isStream()) {
      accompany(input);
      out_.writing.companion.sound = true;
      return;
    }
    if (MediaWriter::writesInPlace(plan_.output)) {
      note("the sound of " + quoted(file(input)) + " is left out: nothing can be added to \"" + plan_.output +
           '"');
      return;
    }
    Companion &from = out_.writing.companion;
    from.file = plan_.output + ".sound";
    from.sound = true;
    from.start = timeline_.timeOfFrame(span_.first);
    from.duration = spanDuration();
    from.rawRate = infoOf(input)->sampleRate;
    from.rawChannels = infoOf(input)->channels;
    out_.soundStream = input;
  }

  void mixSound(std::vector<Voice> voices, unsigned channels) {
    std::erase_if(voices, [&](const Voice &voice) {
      if (inputs_[voice.input].isStream())
        note("the sound of " + quoted(file(voice.input)) + " is left out: it cannot be mixed from a pipe");
      return inputs_[voice.input].isStream();
    });
    if (voices.empty())
      return;
    accompany(voices.front().input);
    setSoundFormat(static_cast<unsigned>(infoOf(voices.front().input)->sampleRate), channels);
    for (const Voice &voice : voices) {
      out_.voiceSources.push_back({file(voice.input), startOf(voice.input)});
      if (infoOf(voice.input)->extras.sounds > 1)
        note("of the tracks of sound in " + quoted(file(voice.input)) + " the first is used");
    }
    out_.voices = std::move(voices);
  }

  void noteChannels(int channels) {
    constexpr std::string_view kTwo = "mono|stereo";
    if (channels > 2 && soundEncoding(*format_, plan_.output, out_.writing.encoding).layouts == kTwo)
      note("the " + std::to_string(channels) + " channels of the sound are mixed down to two");
  }

  // ---- What else there is ----

  void keepPictures() {
    const auto pictures = firstThat([](const Input &, const MediaInfo &info) { return info.hasVideo; });
    if (!pictures || setup_.retimed[*pictures] || plan_.noPictures || format_ == nullptr ||
        format_->kind != FileKind::moving || infoOf(*pictures)->still)
      return;
    if (inputs_[*pictures].isStream()) {
      note("the pictures of " + quoted(file(*pictures)) + " are left out");
      return;
    }
    accompany(*pictures);
    Companion &from = out_.writing.companion;
    from.pictures = true;
    // Copied pictures begin at a key frame.
    from.copied = from.start <= 0 && plan_.codec.empty() && plan_.pixelFormat.empty() &&
                  optionOf(plan_.encoderWords, "-c:v -codec:v -vcodec -c -codec").empty() &&
                  canCopyPictures(from.file, plan_.output, out_.writing.encoding, plan_.programs);
    if (!from.copied)
      note("the pictures of " + quoted(from.file) + " are encoded anew");
  }

  /// Of the file whose sound or pictures go along, else of the first that moves.
  void keepTracks() {
    if (!companion_)
      if (const auto source = firstThat([&](const Input &input, const MediaInfo &info) {
            return !input.isStream() && !info.still && format_->kind != FileKind::still &&
                   (info.extras.tags || !info.extras.subtitles.empty());
          }))
        accompany(*source);
    if (!companion_)
      return;
    const MediaExtras &extras = infoOf(*companion_)->extras;
    std::string lost;
    const auto add = [&](const std::string &what) { lost += (lost.empty() ? "" : ", ") + what; };
    if (out_.writing.companion.sound && extras.sounds > 1 && !format_->manyTracks)
      add("further tracks of sound");
    for (const std::string &codec : extras.subtitles)
      if (subtitleEncoding(*format_, codec).empty())
        add("subtitles (" + codec + ")");
    if (extras.attachments > 0 && !holdsAttachments(*format_))
      add("attachments");
    if (extras.data > 0)
      add("data");
    if (!lost.empty())
      note("left out of " + quoted(file(*companion_)) + ": " + lost);
  }

  void keepFields() {
    const auto source =
        firstThat([](const Input &, const MediaInfo &info) { return info.hasVideo && !info.still; });
    const bool parted = std::any_of(setup_.stages.begin(), setup_.stages.end(), [](const StageSetup &stage) {
      return stage.effect->name.find("Deinterlace") != std::string::npos;
    });
    if (!source || !infoOf(*source)->interlaced || parted || timeline_.height != infoOf(*source)->height ||
        timeline_.rate != infoOf(*source)->frameRate)
      return;
    if (pictureEncoding(*format_, plan_.output, out_.writing.encoding, out_.writing.alpha).fields)
      out_.writing.fields = infoOf(*source)->topFieldFirst ? FieldOrder::topFirst : FieldOrder::bottomFirst;
    else
      note("the fields of " + quoted(file(*source)) + " are written as whole frames; deinterlace mends them");
  }

  void keepTimecode() {
    const auto source =
        firstThat([](const Input &, const MediaInfo &info) { return !info.extras.timecode.empty(); });
    if (!source)
      return;
    const bool held = format_->muxer == "mov" || format_->muxer == "mp4" || format_->muxer == "mxf" ||
                      format_->muxer == "matroska";
    if (held && !setup_.retimed[*source] && span_.first == 0 && startOf(*source) <= 0 &&
        timeline_.rate == infoOf(*source)->frameRate)
      out_.writing.timecode = infoOf(*source)->extras.timecode;
    else
      note("the timecode of " + quoted(file(*source)) + " is left out");
  }

  const RenderPlan &plan_;
  const ChainSetup &setup_;
  const Chain &chain_;
  const std::vector<Input> &inputs_;
  const Settled &settled_;
  const Timeline &timeline_;
  const Span &span_;
  const Format *format_ = nullptr; // none of raw bytes
  std::optional<size_t> companion_;
  OutputSetup out_;
};

} // namespace

EncodingChoice encodingOf(const RenderPlan &plan) {
  const auto quality = plan.quality.empty() ? std::optional(Quality::good) : qualityNamed(plan.quality);
  if (!quality)
    throw HostError("no quality \"" + plan.quality + "\"; there are draft, good, best and lossless");
  return {plan.codec, *quality, plan.pixelFormat, plan.encoderWords};
}

void checkOutput(const RenderPlan &plan, const ChainSetup &setup) {
  const std::string &name = setup.stages.front().effect->name;
  if (plan.output.empty())
    throw HostError("no output was named; give one with -o");
  if (plan.alpha != "auto" && plan.alpha != "keep" && plan.alpha != "drop")
    throw HostError("alpha is auto, keep or drop, not \"" + plan.alpha + '"');
  if (setup.sound ? plan.noSound : plan.noPictures)
    throw HostError('"' + name + "\" makes " + (setup.sound ? "sound" : "pictures") +
                    " alone, which is to be left out");
  if (isRaw(plan))
    return;
  const Format &format = formatOf(plan.output, encodingOf(plan));
  if ((setup.sound ? format.sounds : format.pictures).empty())
    throw HostError('"' + name + "\" makes " + (setup.sound ? "sound" : "pictures") + ", which \"" +
                    plan.output + "\" cannot hold");
}

OutputSetup settleOutput(const RenderPlan &plan, const ChainSetup &setup, const Chain &chain,
                         const std::vector<Input> &inputs, const Settled &settled) {
  return Settling(plan, setup, chain, inputs, settled).settle();
}

std::string opacityNote(const RenderPlan &plan, const OutputSetup &output, const Opacity &opacity) {
  if (opacity.transparent() == 0 || plan.alpha == "drop")
    return {};
  const std::string pictures =
      opacity.transparent() == 1 ? "a picture" : std::to_string(opacity.transparent()) + " pictures";
  const bool kept = isRaw(plan) || pictureEncoding(formatOf(plan.output, output.writing.encoding),
                                                   plan.output, output.writing.encoding, true)
                                       .alpha;
  if (!opacity.forced())
    return '"' + plan.output + "\" has no alpha: transparent pixels of " + pictures + " are opaque in it";
  return kept ? "transparent pixels of " + pictures +
                    " were made opaque, as the inputs are; --alpha keep leaves them"
              : std::string();
}

} // namespace zol::host
