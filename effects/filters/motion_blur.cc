// Motion Blur: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kMotionBlur{
    .name = "Filters/Motion Blur",
    .sign = "MotionBlur Zo2 native",
    .version = 2,
    .hosts = zol::Hosts::halvenor,
};

ZOL_EXPORT int ProcessMotionBlurDeclare(t_ZoHostInfo *host) { return zol::declare(host, kMotionBlur); }
