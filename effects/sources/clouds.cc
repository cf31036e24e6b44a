// Clouds Generator: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kClouds{
    .name = "Sources/Clouds Generator",
    .sign = "Clouds generator (Zo2)",
    .version = 10,
};

ZOL_EXPORT int ProcessCloudsDeclare(t_ZoHostInfo *host) { return zol::declare(host, kClouds); }
