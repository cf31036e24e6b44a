// The border: the declare function of every effect: each answers 1 when the effect was declared and 0 when
// the host is not one for which it exists.
#pragma once

#include "frame/export.h"
#include "frame/zol.h"

#define ZOL_EFFECT(name, file) ZOL_EXPORT int Process##name##Declare(t_ZoHostInfo *host);
#include "frame/effects.inc"
#undef ZOL_EFFECT

/// Kept for hosts that look it up; declares nothing and answers 0.
ZOL_EXPORT int ProcessStarGen2Declare();
