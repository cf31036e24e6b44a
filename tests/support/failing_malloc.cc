#include "tests/support/failing_malloc.h"

#include <cstddef>

namespace {

int callsUntilFailure = 0; // 0: never, or no more

} // namespace

extern "C" void *__real_malloc(size_t size);

// The linker's --wrap sends the objects' calls of malloc here.
extern "C" void *__wrap_malloc(size_t size) {
  if (callsUntilFailure > 0 && --callsUntilFailure == 0)
    return nullptr;
  return __real_malloc(size);
}

namespace zol::test {

FailingMalloc::FailingMalloc(int nth) { callsUntilFailure = nth; }
FailingMalloc::~FailingMalloc() { callsUntilFailure = 0; }
bool FailingMalloc::failed() const { return callsUntilFailure == 0; }

} // namespace zol::test
