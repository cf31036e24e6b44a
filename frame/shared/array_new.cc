// Array new without exceptions, over the general allocator alone. The standard library's own form calls the
// throwing one, and with it the whole of exception handling would come into the shared object.

#include <cstddef>
#include <cstdlib>
#include <new>

void *operator new[](size_t size, const std::nothrow_t &) noexcept {
  return std::malloc(size == 0 ? 1 : size);
}
void operator delete[](void *memory) noexcept { std::free(memory); }
void operator delete[](void *memory, size_t) noexcept { std::free(memory); }

// Clang's tables of abstract classes refer to this; the standard library's form ends in exception handling
// too.
extern "C" void __cxa_pure_virtual() { std::abort(); }
