// What every render callback needs: parameters, inputs, pictures and their ownership, sound, the loop over
// rows. The helpers make the host calls that they name, each exactly once and in the order given.
#pragma once

#include "frame/texts.h"
#include "frame/zol.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace zol {

inline void showMessage(t_ZoHostInfo *host, const char *text) { host->Services->Message(host, text); }

/// Says that memory ran out, in the words common to all effects.
inline void showMemoryError(t_ZoHostInfo *host) { showMessage(host, COMMON_STR[kTextMemory]); }

/// Whether the host wants the running render to stop.
inline bool aborted(t_ZoHostInfo *host) { return host->Services->IsAborted(host) != 0; }

/// Runs row(y) for every row and polls the host after each; false as soon as it wants to stop.
template <class Row> bool forEachRow(t_ZoHostInfo *host, int rows, Row row) {
  for (int y = 0; y < rows; ++y) {
    row(y);
    if (aborted(host))
      return false;
  }
  return true;
}

/// A float field's value at a time of the caller's.
inline double paramDouble(t_ZoHostInfo *host, int field, double time) {
  return static_cast<double>(host->Services->ParamGetFloat(host, field, 0, time));
}

/// The same at the context's parameter time.
inline double paramDouble(t_ZoHostInfo *host, int field) { return paramDouble(host, field, host->Time); }

/// A float field's value at a time of the caller's, rounded once to float.
inline float paramFloat(t_ZoHostInfo *host, int field, double time) {
  return static_cast<float>(host->Services->ParamGetFloat(host, field, 0, time));
}

inline int paramInt(t_ZoHostInfo *host, int field) { return host->Services->ParamGetInt(host, field, 0); }

inline void *input(t_ZoHostInfo *host, int field) { return host->Services->InputGetPic(host, field, 0); }

/// The input's frame at the context's frame time; null when it cannot be had. It stays the host's.
inline pic *frameOf(t_ZoHostInfo *host, void *input) {
  return host->Services->PicGetSized(host, input, host->FrameTime);
}

/// The input's sound of the block being rendered; null when it cannot be had. It stays the host's.
inline t_ZoAudio *soundOf(t_ZoHostInfo *host, void *input) {
  return host->Services->InputGetAudio(host, input, host->BlockStart, host->BlockEnd);
}

/// A new block for the sound being rendered, to be filled and returned; null when memory runs out.
inline t_ZoAudio *createSound(t_ZoHostInfo *host) {
  return host->Services->AudioCreate(host->BlockStart, host->BlockEnd, host->AudioFormat[0],
                                     host->AudioFormat[1]);
}

/// The frame of an input that the effect cannot do without. Null after `message` where none is assigned, and
/// silently where its frame cannot be had.
inline pic *requiredFrame(t_ZoHostInfo *host, int field, const char *message) {
  void *assigned = input(host, field);
  if (assigned == nullptr) {
    showMessage(host, message);
    return nullptr;
  }
  return frameOf(host, assigned);
}

/// Assigns the clip that the effect is applied to, as init callbacks do.
inline void setDefaultInput(t_ZoHostInfo *host, int field) {
  host->Services->InputSet(host, field, 0, host->Services->ClipGetDefault(host));
}

/// A picture that the library created: freed through the host on every early return, until release()
/// hands it out.
class OwnedPic {
public:
  OwnedPic(t_ZoHostInfo *host, pic *picture) : host_(host), picture_(picture) {}
  ~OwnedPic() { reset(); }
  OwnedPic(const OwnedPic &) = delete;
  OwnedPic &operator=(const OwnedPic &) = delete;

  explicit operator bool() const { return picture_ != nullptr; }
  pic *operator->() const { return picture_; }
  [[nodiscard]] pic *get() const { return picture_; }
  [[nodiscard]] pic *release() {
    pic *picture = picture_;
    picture_ = nullptr;
    return picture;
  }
  void reset() {
    if (picture_ != nullptr)
      host_->Services->PicFree(picture_);
    picture_ = nullptr;
  }

private:
  t_ZoHostInfo *host_;
  pic *picture_;
};

/// `count` uninitialised elements from the general allocator, freed with the object. Tests as false
/// when they could not be had (a count of 0 is always had).
template <class T> class Scratch {
public:
  explicit Scratch(size_t count)
      : data_(count > std::numeric_limits<size_t>::max() / sizeof(T)
                  ? nullptr
                  : static_cast<T *>(std::malloc(count == 0 ? 1 : count * sizeof(T)))) {}
  // NOLINTNEXTLINE(clang-analyzer-unix.Malloc): takes the union within std::optional for a second owner
  ~Scratch() { std::free(data_); }
  Scratch(const Scratch &) = delete;
  Scratch &operator=(const Scratch &) = delete;

  explicit operator bool() const { return data_ != nullptr; }
  [[nodiscard]] T *data() const { return data_; }
  T &operator[](size_t index) const { return data_[index]; }

private:
  T *data_;
};

} // namespace zol
