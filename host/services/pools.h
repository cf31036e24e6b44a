// Pictures and audio blocks that the host hands out, counted until they come back.
#pragma once

#include "frame/zol.h"

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace zol::host {

/// A picture with its pixels. Sizes that the record's 16 bits cannot name are refused.
class PictureBuffer {
public:
  /// Null where the size is refused or memory runs out. Contents are transparent black.
  static std::unique_ptr<PictureBuffer> make(int width, int height);
  /// The same with contents that are to be written yet.
  static std::unique_ptr<PictureBuffer> makeUnwritten(int width, int height);

  pic *record() { return &record_; }
  [[nodiscard]] const pic *record() const { return &record_; }
  [[nodiscard]] size_t pixels() const;

private:
  struct Release {
    size_t bytes;
    void operator()(void *memory) const;
  };
  PictureBuffer() = default;
  using Allocate = void *(size_t bytes);
  static std::unique_ptr<PictureBuffer> make(int width, int height, Allocate allocate);

  pic record_{};
  std::unique_ptr<_color_t, Release> memory_;
};

/// The pictures that effects have created and not yet freed or handed back.
class PicturePool {
public:
  pic *create(int width, int height);
  pic *duplicate(const pic *source);
  /// False, and nothing done, for a picture that is not live.
  bool free(pic *picture);
  /// Takes a live picture out of the pool; null when it is not live.
  std::unique_ptr<PictureBuffer> take(pic *picture);

  [[nodiscard]] size_t live() const { return live_.size(); }
  [[nodiscard]] size_t created() const { return created_; }

private:
  pic *keep(std::unique_ptr<PictureBuffer> buffer);

  std::unordered_map<const pic *, std::unique_ptr<PictureBuffer>> live_;
  size_t created_ = 0;
};

/// An audio block with its samples, silent at first.
class AudioBuffer {
public:
  /// Null where memory runs out or the block cannot be named.
  static std::unique_ptr<AudioBuffer> make(double frames, unsigned rate, unsigned channels);

  t_ZoAudio *record() { return &record_; }
  [[nodiscard]] const t_ZoAudio *record() const { return &record_; }

private:
  AudioBuffer() = default;

  t_ZoAudio record_{};
  std::unique_ptr<float[]> samples_;
};

class AudioPool {
public:
  t_ZoAudio *create(double frames, unsigned rate, unsigned channels);
  std::unique_ptr<AudioBuffer> take(t_ZoAudio *block);
  [[nodiscard]] size_t live() const { return live_.size(); }

private:
  std::unordered_map<const t_ZoAudio *, std::unique_ptr<AudioBuffer>> live_;
};

} // namespace zol::host
