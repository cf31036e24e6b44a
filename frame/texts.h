// Texts that more than one effect shows to the user.
#ifndef ZOL_FRAME_TEXTS_H
#define ZOL_FRAME_TEXTS_H

#include "frame/zol.h"

namespace zol {

inline constexpr char kMemoryAllocationError[] = "Memory allocation error";

/// Places in COMMON_STR.
enum CommonText { kTextOk, kTextCancel, kTextBackground, kTextMemory, kTextGeometry, kTextSeeCurve };

} // namespace zol

#endif
