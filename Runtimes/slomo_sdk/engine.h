// What the engine's own sources share beyond its public header.
#pragma once

#include "Runtimes/slomo_sdk/SlowMotion.h"
#include "kernels/motion/field.h"

/// One field of the frames, or the whole of progressive ones, and where it is made.
struct CSlowMotion::SField : zol::slomo::FieldPair {
  unsigned char *dst;
};
