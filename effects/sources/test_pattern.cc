// Test Pattern Generator: declared, so that menus and projects find it; it has no fields and renders nothing
// yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kTestPattern{
    .name = "Sources/Test Pattern Generator",
    .sign = "Test Pattern Generator 1.0 (Zo2)",
    .version = 1,
};

ZOL_EXPORT int ProcessTestPatternDeclare(t_ZoHostInfo *host) { return zol::declare(host, kTestPattern); }
