// The border: addresses as statements carry them.
#pragma once

#include <cinttypes>
#include <cstdint>

/// The conversion for an address in a statement: 0x and upper-case hexadecimal digits.
#define ZOL_ADDRESS "0x%" PRIXPTR

namespace zol {

/// An object's or function's address as ZOL_ADDRESS prints it.
template <class T> uintptr_t address(T *object) { return reinterpret_cast<uintptr_t>(object); }

} // namespace zol
