#include "tests/bridges/counted_memory.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<size_t> count;

} // namespace

extern "C" void *__real_malloc(size_t size);

// The linker's --wrap sends the objects' calls of malloc here.
extern "C" void *__wrap_malloc(size_t size) {
  ++count;
  return __real_malloc(size);
}

void *operator new(size_t size) {
  ++count;
  if (void *memory = __real_malloc(size == 0 ? 1 : size))
    return memory;
  throw std::bad_alloc();
}
void operator delete(void *memory) noexcept { std::free(memory); }
void operator delete(void *memory, size_t) noexcept { std::free(memory); }

size_t zol::test::allocations() { return count; }
