// Copy: its input's frame, unchanged, as a picture of its own. It carries the picture of an upper track
// down to a lower one across tracks that are not empty, and is the pattern for every filter.

#include "effects/filters/copy.xpm"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"

namespace {

ZOL_TEXT_TABLE kTexts[] = {"Copy  on", "Input", "Copies input image to output"};

constexpr char kDescription[] =
    "This effect simply copies input image to the output. 'Copy' effect is usefull when you need to deliver "
    "an image from upper track to the lower one over the non-empty tracks. <br><br>Required inputs: Input "
    "image.";

enum Field { kInput };

int init(t_ZoHostInfo *host) {
  zol::setDefaultInput(host, kInput);
  return 1;
}

pic *render(t_ZoHostInfo *host) {
  pic *frame = zol::requiredFrame(host, kInput, "Input not assigned");
  return frame != nullptr ? host->Services->PicDuplicate(frame) : nullptr;
}

} // namespace

ZOL_EXPORT int ProcessCopyDeclare(t_ZoHostInfo *host) {
  if (!zol::hostIs(host, "Halvenor"))
    return 0;
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("Copy (Zo2)", "Filters/Copy", 10);
  eff.description(kDescription);
  eff.icon(copy_xpm);
  eff.init(init);
  eff.renderVideo(render);
  eff.send(R"(DataFieldAdd( &eff.df, "Input", "Input" );)");
  eff.end();
  return 1;
}
