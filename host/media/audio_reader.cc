#include "host/media/audio_reader.h"

#include "host/model/text.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace zol::host {
namespace {

constexpr size_t kBlock = 16384;                     // sample frames taken from the child at once
constexpr size_t kMostKept = (size_t{64} << 20) / 4; // samples
constexpr int kHighestRate = 768000;
constexpr int kMostChannels = 64;

} // namespace

AudioReader::AudioReader(Source source, AudioReaderOptions options)
    : source_(std::move(source)), options_(std::move(options)),
      damage_('"' + source_.name() + '"', options_.strict) {
  const std::string cannot = "cannot read " + source_.name() + ": ";
  if (options_.raw) {
    info_.format = info_.audioCodec = "f32le";
    info_.hasAudio = true;
    info_.sampleRate = options_.rawRate;
    info_.channels = options_.rawChannels;
  } else {
    info_ = source_.look(options_.programs);
    if (!info_.hasAudio)
      throw HostError(cannot + "no sound in it");
  }
  if (options_.sampleRate == 0)
    options_.sampleRate = info_.sampleRate;
  if (options_.channels == 0)
    options_.channels = info_.channels;
  checkFormat(info_.sampleRate, info_.channels);
  checkFormat(options_.sampleRate, options_.channels);
  if (!(options_.start >= 0 && options_.start < 1e9))
    throw HostError(cannot + "it has no beginning at " + numberText(options_.start) + " seconds");
}

AudioReader::~AudioReader() = default;

void AudioReader::checkFormat(int sampleRate, int channels) const {
  const std::string cannot = "cannot read " + source_.name() + ": ";
  if (sampleRate < 1 || sampleRate > kHighestRate)
    throw HostError(cannot + "a sample rate of " + std::to_string(sampleRate) + " is not possible");
  if (channels < 1 || channels > kMostChannels)
    throw HostError(cannot + std::to_string(channels) + " channels are not possible");
}

void AudioReader::convertTo(int sampleRate, int channels) {
  checkFormat(sampleRate, channels);
  options_.sampleRate = sampleRate;
  options_.channels = channels;
}

std::vector<std::string> AudioReader::arguments() const {
  std::vector<std::string> args{options_.programs.ffmpeg, "-v", "error", "-nostdin"};
  const auto add = [&](std::initializer_list<std::string> more) { args.insert(args.end(), more); };
  if (options_.raw)
    add({"-f", "f32le", "-ar", std::to_string(options_.rawRate), "-ac",
         std::to_string(options_.rawChannels)});
  // Silence where the sound begins late, so that pictures and sound share their time 0.
  const std::vector<std::string> input = source_.arguments();
  args.insert(args.end(), input.begin(), input.end());
  add({"-map", "0:a:0", "-af", "aresample=async=1:first_pts=0", "-ar", std::to_string(options_.sampleRate)});
  if (options_.channels != info_.channels)
    add({"-ac", std::to_string(options_.channels)});
  add({"-f", "f32le", "-c:a", "pcm_f32le", "pipe:1"});
  return args;
}

std::string AudioReader::commandLine() const { return shellQuoted(arguments()); }

/// Number of the sample frame of a time, both from the file's beginning.
uint64_t AudioReader::frameAt(double time) const {
  return static_cast<uint64_t>(std::llround(std::max(0.0, time) * options_.sampleRate));
}

/// That at which reading begins.
uint64_t AudioReader::origin() const { return frameAt(options_.start); }

/// That before which it ends at the latest.
uint64_t AudioReader::limit() const {
  if (options_.end)
    return frameAt(*options_.end);
  return info_.soundGuessed || info_.soundDuration <= 0 ? UINT64_MAX
                                                        : frameAt(info_.soundDuration + kMostBehindEnd);
}

double AudioReader::duration() const {
  if (info_.soundGuessed)
    return 0;
  return std::max(0.0,
                  std::min(options_.end.value_or(info_.soundDuration), info_.soundDuration) - options_.start);
}

std::optional<uint64_t> AudioReader::frameCount() const {
  const uint64_t end = std::min(end_.value_or(next_), limit());
  if (!end_ && end < limit())
    return std::nullopt;
  return end - std::min(end, origin());
}

void AudioReader::open() {
  process_.reset();
  window_.clear();
  next_ = 0;
  process_ = source_.start(arguments());
  listener_ = Listener(false);
}

bool AudioReader::readBlock() {
  const auto channels = static_cast<size_t>(options_.channels);
  if (window_.size() >= 2 * kept_ * channels)
    window_.erase(window_.begin(), window_.end() - static_cast<ptrdiff_t>(kept_ * channels));
  const size_t before = window_.size();
  window_.resize(before + kBlock * channels);
  const size_t got = process_->read(window_.data() + before, kBlock * channels * sizeof(float));
  const size_t frames = got / (channels * sizeof(float));
  window_.resize(before + frames * channels);
  next_ += frames;
  if (!options_.end && next_ > limit())
    damage_.goesOn(info_.soundDuration);
  if (frames == kBlock) {
    listen();
    return true;
  }
  if (process_->wait() != 0)
    throw source_.failure(*process_);
  listen();
  constexpr double kTolerance = 0.25; // seconds; containers are not exact
  const double time = static_cast<double>(next_) / options_.sampleRate;
  if (!info_.soundGuessed && time < info_.soundDuration - kTolerance)
    damage_.endedEarly(time, info_.soundDuration);
  process_.reset();
  end_ = next_;
  return frames > 0;
}

/// What the child says concerns sound behind that which still stands in the pipe.
void AudioReader::listen() {
  const size_t ahead = process_->waiting() / sizeof(float) / static_cast<size_t>(options_.channels);
  if (const std::string line = listener_.news(*process_); !line.empty())
    damage_.heard(line, source_.address().url, static_cast<double>(next_ + ahead) / options_.sampleRate);
}

bool AudioReader::reaches(uint64_t frame) {
  std::vector<float> one(static_cast<size_t>(options_.channels));
  return read(frame, 1, one.data()) == 1;
}

size_t AudioReader::read(uint64_t first, size_t count, float *samples) {
  const auto channels = static_cast<size_t>(options_.channels);
  uint64_t place = first + origin();
  size_t done = 0;
  count = static_cast<size_t>(std::min<uint64_t>(count, limit() - std::min(limit(), place)));
  while (done < count && !(end_ && place >= *end_)) {
    const uint64_t oldest = next_ - window_.size() / channels;
    if (place < oldest || (!process_ && next_ == 0)) {
      if (place < oldest) // more of it next time: all before it is read again
        kept_ = std::max(kept_, std::min(4 * kept_, kMostKept / 2 / channels));
      open();
    } else if (place < next_) {
      const size_t n = static_cast<size_t>(std::min<uint64_t>(next_ - place, count - done));
      std::memcpy(samples + done * channels, window_.data() + (place - oldest) * channels,
                  n * channels * sizeof(float));
      done += n;
      place += n;
    } else if (!process_ || !readBlock()) {
      break;
    }
  }
  return done;
}

} // namespace zol::host
