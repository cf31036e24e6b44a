#include "kernels/sound/crossfade.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace zol {
namespace {

constexpr size_t kChunk = 512; // samples at a time
constexpr float kSilence[kChunk] = {};

/// The two sounds' samples in the output's layout, one chunk of them.
struct Chunk {
  const float *outgoing, *incoming; // null: not there
  size_t firstFrame;
  int count;
};

/// The exact form, one sample. `frame` is counted from the block's start.
struct ExactFade {
  bool fadeOut, fadeIn;
  Ramp ramp;

  [[nodiscard]] float operator()(const float *outgoing, const float *incoming, size_t frame) const {
    const auto i = static_cast<long double>(frame);
    const auto position = static_cast<long double>(ramp.position);
    const auto step = static_cast<long double>(ramp.step);
    if (incoming == nullptr)
      return static_cast<float>(static_cast<long double>(*outgoing) * (1.0L - position + i * -step));
    const long double place = position + i * step;
    const auto b = static_cast<long double>(*incoming);
    if (outgoing == nullptr)
      return static_cast<float>(b * place);
    const auto a = static_cast<long double>(*outgoing);
    return static_cast<float>((fadeOut ? a * (1.0L - place) : a) + (fadeIn ? b * place : b));
  }
};

/// `count` samples from sample `first` of the output on: the source's own where its layout agrees,
/// else a copy in `buffer`.
const float *inLayout(const AudioSource &source, size_t first, size_t count, unsigned channels,
                      float *buffer) {
  const size_t firstFrame = first / channels;
  if (firstFrame >= source.frames)
    return kSilence;
  if (source.channels == channels && (first + count - 1) / channels < source.frames)
    return source.samples + first;
  size_t frame = firstFrame;
  auto channel = static_cast<unsigned>(first % channels);
  for (size_t i = 0; i < count; ++i) {
    buffer[i] = source.holds(frame, channel) ? source.at(frame, channel) : 0.0F;
    if (++channel == channels) {
      channel = 0;
      ++frame;
    }
  }
  return buffer;
}

/// The fast forms know the error of a place strictly between its ends, where its sign and its
/// complement's are certain, and of frame numbers whose product with a float is exact.
bool wellInside(double place) { return place >= 0x1p-40 && place <= 1.0 - 0x1p-40; }

bool onlyBounds(const ExactFade &fade, const Chunk &chunk, const double *frame, float *low, float *high) {
  const auto runBoth = ZOL_SELECT(crossfadeBounds);
  const auto runOne = ZOL_SELECT(fadeBounds);
  const auto first = static_cast<double>(chunk.firstFrame);
  const auto position = static_cast<double>(fade.ramp.position);
  const auto step = static_cast<double>(fade.ramp.step);
  if (chunk.outgoing != nullptr && chunk.incoming != nullptr)
    return runBoth(low, high, chunk.outgoing, fade.fadeOut, chunk.incoming, fade.fadeIn, frame, chunk.count,
                   first, position, step);
  if (chunk.outgoing != nullptr)
    return runOne(low, high, chunk.outgoing, frame, chunk.count, first, 1.0 - position, -step);
  return runOne(low, high, chunk.incoming, frame, chunk.count, first, position, step);
}

void fadeChunk(const ExactFade &fade, const Chunk &chunk, const double *frame, float *out) {
  const auto place = [&](int sample) {
    return static_cast<double>(fade.ramp.position) +
           (static_cast<double>(chunk.firstFrame) + frame[sample]) * static_cast<double>(fade.ramp.step);
  };
  const bool bounded = chunk.firstFrame < size_t{1} << 28 && fade.ramp.position >= 0.0F &&
                       fade.ramp.position <= 1.0F && wellInside(place(0)) &&
                       wellInside(place(chunk.count - 1));
  float low[kChunk];
  if (bounded && onlyBounds(fade, chunk, frame, low, out))
    return;
  for (int i = 0; i < chunk.count; ++i)
    if (!bounded || std::bit_cast<uint32_t>(low[i]) != std::bit_cast<uint32_t>(out[i]))
      out[i] = fade(chunk.outgoing != nullptr ? chunk.outgoing + i : nullptr,
                    chunk.incoming != nullptr ? chunk.incoming + i : nullptr,
                    chunk.firstFrame + static_cast<size_t>(frame[i]));
}

/// frame[i] is the frame of sample i in a run that starts at channel `channel`. Half a sample keeps the
/// quotients away from integers by more than their error.
void numberFrames(double *frame, unsigned channel, unsigned channels) {
  const double frames = 1.0 / static_cast<double>(channels);
  const double start = static_cast<double>(channel) + 0.5;
  for (int i = 0; i < static_cast<int>(kChunk); ++i)
    frame[i] = static_cast<double>(static_cast<int>((start + static_cast<double>(i)) * frames));
}

} // namespace

void crossfade(float *out, size_t frames, unsigned channels, const AudioSource *outgoing, bool fadeOut,
               const AudioSource *incoming, bool fadeIn, Ramp ramp) {
  const size_t samples = frames * channels;
  if (samples == 0)
    return;
  const ExactFade fade{fadeOut, fadeIn, ramp};
  const bool fading = (outgoing != nullptr && fadeOut) || (incoming != nullptr && fadeIn);
  // Chunks of whole frames all number them alike.
  const size_t chunkSize = channels <= kChunk ? kChunk / channels * channels : kChunk;
  float outgoingBuffer[kChunk], incomingBuffer[kChunk];
  double frame[kChunk];
  if (fading)
    numberFrames(frame, 0, channels);
  for (size_t done = 0; done < samples; done += chunkSize) {
    const size_t count = std::min(chunkSize, samples - done);
    const auto chunkOf = [&](const AudioSource *source, float *buffer) {
      return source != nullptr ? inLayout(*source, done, count, channels, buffer) : nullptr;
    };
    const float *a = chunkOf(outgoing, outgoingBuffer);
    const float *b = chunkOf(incoming, incomingBuffer);
    if (fading) {
      if (channels > kChunk)
        numberFrames(frame, static_cast<unsigned>(done % channels), channels);
      fadeChunk(fade, {a, b, done / channels, static_cast<int>(count)}, frame, out + done);
    } else if (a != nullptr && b != nullptr) {
      std::transform(a, a + count, b, out + done, [](float x, float y) { return x + y; });
    } else {
      std::copy_n(a != nullptr ? a : b, count, out + done);
    }
  }
}

} // namespace zol
