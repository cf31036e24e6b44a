// Counts what this program asks memory for.
#pragma once

#include <cstddef>

namespace zol::test {

/// Calls of malloc and of operator new since the start, by the objects linked into this program.
size_t allocations();

} // namespace zol::test
