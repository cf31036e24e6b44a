#include "kernels/exports/bluescreen.h"

#include "frame/picture.h"
#include "kernels/exports/alpha_shrink.h"
#include "kernels/exports/blur.h"
#include "kernels/keying/screen_key.h"

namespace {

int layScreen(zol::KeyChannel channel, t_ZoHostInfo *host, pic *out, pic *key, float delta1, float delta2,
              float opacity, float shrink, float blur, float aspect) {
  const bool softens = blur > 0;
  zol::OwnedPic softened(host, softens ? FillBlurImage(host, key, blur) : nullptr);
  if (softens && !softened)
    return 0;
  const _color_t *source = softens ? softened->Pixels : key->Pixels;

  const zol::ScreenKey screen(channel, delta1, delta2, opacity);
  const float verticalShrink = shrink * aspect;
  if (!(shrink > 0 || verticalShrink > 0)) {
    screen.lay(*out, *key, source);
    return 1;
  }
  screen.writeMatte(*out, *key, source);
  softened.reset();
  if (AlphaShrink(host, out, shrink, verticalShrink) != 1)
    return 0;
  screen.layByMatte(*out, *key);
  return 1;
}

} // namespace

ZOL_EXPORT int Bluescreen(t_ZoHostInfo *host, pic *out, pic *key, float delta1, float delta2, float opacity,
                          float shrink, float blur, float aspect) {
  return layScreen(zol::KeyChannel::blue, host, out, key, delta1, delta2, opacity, shrink, blur, aspect);
}

ZOL_EXPORT int Greenscreen(t_ZoHostInfo *host, pic *out, pic *key, float delta1, float delta2, float opacity,
                           float shrink, float blur, float aspect) {
  return layScreen(zol::KeyChannel::green, host, out, key, delta1, delta2, opacity, shrink, blur, aspect);
}
