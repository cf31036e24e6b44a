// AlphaEx: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kAlphaEx{
    .name = "Filters/AlphaEx",
    .sign = "AlphaEx Zo2 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
};

ZOL_EXPORT int ProcessAlphaExDeclare(t_ZoHostInfo *host) { return zol::declare(host, kAlphaEx); }
