// Crop: declared, so that menus and projects find it; it has no fields and renders nothing yet.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kCrop{
    .name = "Compositing/Crop",
    .sign = "Crop Zo2 native",
    .version = 3,
    .hosts = zol::Hosts::halvenor,
};

constexpr zol::Effect kStandardCrop{
    .name = "Filters/Standard/Crop",
    .sign = "Crop Qb5 native",
    .version = 1,
    .hosts = zol::Hosts::allButHalvenor,
};

ZOL_EXPORT int ProcessCropDeclare(t_ZoHostInfo *host) { return zol::declare(host, kCrop, kStandardCrop); }
