// The border: the calls of the host that renders make. Each helper makes the calls that it names, each
// exactly once and in the order given.
#pragma once

#include "frame/address.h"
#include "frame/texts.h"
#include "frame/zol.h"

#include <cmath>
#include <strings.h>

namespace zol {

/// Whether the host says it is `name`, without regard to case.
inline bool hostIs(const t_ZoHostInfo *host, const char *name) {
  return strcasecmp(host->Identity, name) == 0;
}

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

/// What the host knows of an input as a whole; false, and all of it 0, where it does not tell.
inline bool mediaGetInfo(t_ZoHostInfo *host, void *input, t_ZoMediaInfo &info) {
  info = {};
  if (input != nullptr && ZoScriptExecuteHi(host, "ZoMediaInfo( " ZOL_ADDRESS ", " ZOL_ADDRESS " );",
                                            address(input), address(&info)) == 1)
    return true;
  info = {};
  return false;
}

/// Its length in seconds; 0 where it is not known.
inline double mediaDuration(t_ZoHostInfo *host, void *input) {
  t_ZoMediaInfo info;
  return mediaGetInfo(host, input, info) && std::isfinite(info.Duration) && info.Duration > 0 ? info.Duration
                                                                                              : 0;
}

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

/// A new picture like the frame, pixel by pixel; null after a message when it cannot be had.
inline pic *copyOf(t_ZoHostInfo *host, const pic *frame) {
  pic *copy = host->Services->PicDuplicate(const_cast<pic *>(frame)); // which only reads it
  if (copy == nullptr)
    showMemoryError(host);
  return copy;
}

/// Assigns the clip that the effect is applied to, as init callbacks do.
inline void setDefaultInput(t_ZoHostInfo *host, int field) {
  host->Services->InputSet(host, field, 0, host->Services->ClipGetDefault(host));
}

} // namespace zol
