// The border: texts that more than one effect shows to the user.
#pragma once

#include "frame/zol.h"

namespace zol {

inline constexpr char kBackgroundLabel[] = "Background";
inline constexpr char kMemoryAllocationError[] = "Memory allocation error";

/// Places in COMMON_STR.
enum CommonText { kTextOk, kTextCancel, kTextBackground, kTextMemory, kTextGeometry, kTextSeeCurve };

} // namespace zol
