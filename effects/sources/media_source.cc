// Media Source: declared, so that menus and projects find it; it has no fields and renders nothing yet.
// Quorbel knows it as two sources, one of pictures and one of sound.

#include "frame/declaration.h"
#include "frame/effects.h"

constexpr zol::Effect kMediaSource{
    .name = "Sources/Media Source",
    .sign = "Media Source Zo2 native",
    .version = 10,
    .hosts = zol::Hosts::allButQuorbel,
    .iconMode = "One+Saw",
};

constexpr zol::Effect kVideoSource{
    .name = "Sources/Video Source",
    .sign = "Qb5 VideoSource [rul]",
    .version = 1,
    .hosts = zol::Hosts::quorbel,
    .iconMode = "One+Saw",
};

constexpr zol::Effect kAudioSource{
    .name = "Sources/Audio Source",
    .sign = "Qb5 AudioSource [rul]",
    .version = 1,
    .hosts = zol::Hosts::quorbel,
    .iconMode = "One+Saw",
};

ZOL_EXPORT int ProcessMediaSourceDeclare(t_ZoHostInfo *host) {
  return zol::declare(host, kMediaSource, kVideoSource, kAudioSource);
}
