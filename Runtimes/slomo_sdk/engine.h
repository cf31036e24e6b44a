// What the engine's own sources share beyond its public header.
#pragma once

#include "Runtimes/slomo_sdk/SlowMotion.h"
#include "Runtimes/slomo_sdk/words.h"

/// One field of the frames, or the whole of progressive ones.
struct CSlowMotion::SField {
  unsigned words, rows;
  unsigned stride; // bytes
  size_t offset;   // bytes from a frame's start to the field's
  const unsigned char *a, *b;
  unsigned char *dst;
};
