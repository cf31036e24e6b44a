// Blur: softens its input. Blurriness 0 changes nothing; at 1 a pixel spreads over a radius of one 7.2th of
// the frame's width, 100 pixels of 720.

#include "effects/filters/blur.xpm"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "kernels/exports/blur.h"

namespace {

namespace field = zol::field;

enum Field { kInput, kBlurriness };

constexpr zol::Field kFields[] = {
    field::plain("Input", kInput, "Input").clip(),
    field::curve(kBlurriness, "Blurriness", zol::kOpenShare, 0.1).uncolored(),
};

ZOL_TEXT_TABLE kTexts[] = {"Blur  on", "Power", "Input", "Blurs input image"};

constexpr char kDescription[] = "This effect blurs given image with specified blurriness degree. <br><br>"
                                "Required inputs: Input image.";

pic *render(t_ZoHostInfo *host) {
  pic *frame = zol::requiredFrame(host, kInput, "Input not assigned");
  if (frame == nullptr)
    return nullptr;
  const double blurriness = zol::paramDouble(host, kBlurriness);
  return FillBlurImage(host, frame, blurriness * host->Width / 7.2);
}

constexpr zol::Effect kBlur{
    .name = "Filters/Blur",
    .nameInQuorbel = "Filters/Standard/Blur",
    .sign = "Blur 1.0 (Zo2)",
    .version = 10,
    .section = "Blur",
    .description = kDescription,
    .icon = blur_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessBlurDeclare(t_ZoHostInfo *host) { return zol::declare(host, kBlur); }
