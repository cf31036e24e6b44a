#include "host/services/pools.h"

#include "host/services/picture_memory.h"

#include <cstdint>
#include <cstring>
#include <new>

namespace zol::host {

void PictureBuffer::Release::operator()(void *memory) const { releasePictureMemory(memory, bytes); }

size_t PictureBuffer::pixels() const {
  return static_cast<size_t>(record_.Width) * static_cast<size_t>(record_.Height);
}

std::unique_ptr<PictureBuffer> PictureBuffer::make(int width, int height) {
  return make(width, height, clearPictureMemory);
}

std::unique_ptr<PictureBuffer> PictureBuffer::makeUnwritten(int width, int height) {
  return make(width, height, unwrittenPictureMemory);
}

std::unique_ptr<PictureBuffer> PictureBuffer::make(int width, int height, Allocate allocate) {
  if (width < 0 || height < 0 || width > INT16_MAX || height > INT16_MAX)
    return nullptr;
  std::unique_ptr<PictureBuffer> buffer(new (std::nothrow) PictureBuffer);
  if (buffer == nullptr)
    return nullptr;
  buffer->record_.Width = static_cast<int16_t>(width);
  buffer->record_.Height = static_cast<int16_t>(height);
  const size_t count = buffer->pixels();
  if (count > SIZE_MAX / 2 / sizeof(_color_t))
    return nullptr;
  const size_t bytes = count * sizeof(_color_t);
  buffer->memory_ = {static_cast<_color_t *>(allocate(bytes)), Release{bytes}};
  if (buffer->memory_ == nullptr)
    return nullptr;
  buffer->record_.Pixels = buffer->memory_.get();
  return buffer;
}

pic *PicturePool::create(int width, int height) { return keep(PictureBuffer::make(width, height)); }

pic *PicturePool::keep(std::unique_ptr<PictureBuffer> buffer) {
  if (buffer == nullptr)
    return nullptr;
  pic *record = buffer->record();
  live_.emplace(record, std::move(buffer));
  ++created_;
  return record;
}

pic *PicturePool::duplicate(const pic *source) {
  if (source == nullptr)
    return nullptr;
  pic *copy = keep(PictureBuffer::makeUnwritten(source->Width, source->Height));
  if (copy == nullptr)
    return nullptr;
  copy->X = source->X;
  copy->Y = source->Y;
  std::memcpy(copy->Pixels, source->Pixels,
              static_cast<size_t>(copy->Width) * static_cast<size_t>(copy->Height) * sizeof(_color_t));
  return copy;
}

bool PicturePool::free(pic *picture) { return live_.erase(picture) != 0; }

std::unique_ptr<PictureBuffer> PicturePool::take(pic *picture) {
  auto node = live_.extract(picture);
  return node.empty() ? nullptr : std::move(node.mapped());
}

std::unique_ptr<AudioBuffer> AudioBuffer::make(double frames, unsigned rate, unsigned channels) {
  if (!(frames >= 0) || frames > UINT32_MAX || channels > UINT16_MAX)
    return nullptr;
  const double samples = frames * channels;
  if (samples > double(SIZE_MAX / 2 / sizeof(float)))
    return nullptr;
  std::unique_ptr<AudioBuffer> buffer(new (std::nothrow) AudioBuffer);
  if (buffer == nullptr)
    return nullptr;
  buffer->samples_.reset(new (std::nothrow) float[static_cast<size_t>(samples) + 1]());
  if (buffer->samples_ == nullptr)
    return nullptr;
  buffer->record_.Frames = static_cast<uint32_t>(frames);
  buffer->record_.Rate = rate;
  buffer->record_.Channels = static_cast<uint16_t>(channels);
  buffer->record_.Samples = buffer->samples_.get();
  return buffer;
}

t_ZoAudio *AudioPool::create(double frames, unsigned rate, unsigned channels) {
  auto buffer = AudioBuffer::make(frames, rate, channels);
  if (buffer == nullptr)
    return nullptr;
  t_ZoAudio *record = buffer->record();
  live_.emplace(record, std::move(buffer));
  return record;
}

std::unique_ptr<AudioBuffer> AudioPool::take(t_ZoAudio *block) {
  auto node = live_.extract(block);
  return node.empty() ? nullptr : std::move(node.mapped());
}

} // namespace zol::host
