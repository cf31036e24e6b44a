// Blur: softens its input. Blurriness 0 changes nothing; at 1 a pixel spreads over a radius of one 7.2th of
// the frame's width, 100 pixels of 720.

#include "effects/filters/blur.xpm"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "kernels/exports/blur.h"

namespace {

constexpr char kSection[] = "Blur";

ZOL_TEXT_TABLE kTexts[] = {"Blur  on", "Power", "Input", "Blurs input image"};

constexpr char kDescription[] = "This effect blurs given image with specified blurriness degree. <br><br>"
                                "Required inputs: Input image.";

enum Field { kInput, kBlurriness };

int init(t_ZoHostInfo *host) {
  host->Services->ParamSetFloat(host, kBlurriness, 0, 0.5, 0.1);
  zol::setDefaultInput(host, kInput);
  return 1;
}

pic *render(t_ZoHostInfo *host) {
  pic *frame = zol::requiredFrame(host, kInput, "Input not assigned");
  if (frame == nullptr)
    return nullptr;
  const double blurriness = zol::paramDouble(host, kBlurriness);
  return FillBlurImage(host, frame, blurriness * host->Width / 7.2);
}

} // namespace

ZOL_EXPORT int ProcessBlurDeclare(t_ZoHostInfo *host) {
  const zol::Declaration eff(host, "eff", kSection);
  eff.begin("Blur 1.0 (Zo2)", zol::hostIs(host, "Quorbel") ? "Filters/Standard/Blur" : "Filters/Blur", 10);
  eff.descriptionW(kDescription);
  eff.icon(blur_xpm);
  eff.init(init);
  eff.renderVideo(render);
  eff.send(R"(DataFieldAdd( &eff.df, "Input", "Input" );)");
  eff.send(R"(ZoDataFieldAdd( &eff.df, "FloatA", "Blurriness", (word *))" ZOL_ADDRESS
           R"(, 0.0, 1.0, ZodfMinLimit );)",
           eff.word("Blurriness"));
  eff.end();
  return 1;
}
