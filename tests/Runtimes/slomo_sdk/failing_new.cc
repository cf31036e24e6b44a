#include "tests/Runtimes/slomo_sdk/failing_new.h"

#include <climits>
#include <cstddef>
#include <new>

namespace {

int callsLeft = INT_MAX;

} // namespace

void *operator new[](size_t size, const std::nothrow_t &) noexcept {
  if (callsLeft != INT_MAX && --callsLeft <= 0)
    return nullptr;
  try {
    return operator new[](size);
  } catch (const std::bad_alloc &) {
    return nullptr;
  }
}

namespace zol::test {

FailingNew::FailingNew(int nth) { callsLeft = nth; }
FailingNew::~FailingNew() { callsLeft = INT_MAX; }

} // namespace zol::test
