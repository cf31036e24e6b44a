// Switcher: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kSwitcher{
    .name = "Compositing/Switcher",
    .sign = "Multiswitcher Zo2 native",
    .version = 3,
    .hosts = zol::Hosts::halvenor,
};

ZOL_EXPORT int ProcessMultiswitcherDeclare(t_ZoHostInfo *host) { return zol::declare(host, kSwitcher); }
