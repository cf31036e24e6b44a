// Assertions that stay in release builds: they name the engine's source, not this file's own lines.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace zol::slomo {

[[noreturn]] inline void failAssertion(const char *expression, int line, const char *function) {
  std::fprintf(stderr, "Runtimes/slomo_sdk/SlowMotion:%d: %s: Assertion `%s' failed.\n", line, function,
               expression);
  std::abort();
}

} // namespace zol::slomo

#define ZOL_SLOMO_ASSERT(condition, expression, line)                                                        \
  ((condition) ? static_cast<void>(0) : ::zol::slomo::failAssertion(expression, line, __PRETTY_FUNCTION__))
