// Time Warp: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kTimeWarp{
    .name = "Time/Time Warp",
    .sign = "TimeWarp Zo2 native",
    .version = 2,
    .hosts = zol::Hosts::halvenor,
};

ZOL_EXPORT int ProcessTimeWarpDeclare(t_ZoHostInfo *host) { return zol::declare(host, kTimeWarp); }
