#include "Runtimes/slomo_sdk/SlowMotion.h"

#include <cpuid.h>

// __get_cpuid toggles the ID flag first where the target has processors without the instruction.
unsigned GetCPUProp(void) {
  unsigned a, b, c, features;
  return __get_cpuid(1, &a, &b, &c, &features) != 0 && (features & bit_MMX) != 0 ? 1 : 0;
}
