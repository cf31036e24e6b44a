// Copy: its input's frame, unchanged, as a picture of its own. It carries the picture of an upper track
// down to a lower one across tracks that are not empty, and is the pattern for every filter.

#include "effects/filters/copy.xpm"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"

namespace {

namespace field = zol::field;

enum Field { kInput };

constexpr zol::Field kFields[] = {
    field::plain("Input", kInput, "Input").clip(),
};

ZOL_TEXT_TABLE kTexts[] = {"Copy  on", "Input", "Copies input image to output"};

constexpr char kDescription[] =
    "This effect simply copies input image to the output. 'Copy' effect is usefull when you need to deliver "
    "an image from upper track to the lower one over the non-empty tracks. <br><br>Required inputs: Input "
    "image.";

pic *render(t_ZoHostInfo *host) {
  pic *frame = zol::requiredFrame(host, kInput, "Input not assigned");
  return frame != nullptr ? host->Services->PicDuplicate(frame) : nullptr;
}

constexpr zol::Effect kCopy{
    .name = "Filters/Copy",
    .sign = "Copy (Zo2)",
    .version = 10,
    .hosts = zol::Hosts::halvenor,
    .description8 = kDescription,
    .icon = copy_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessCopyDeclare(t_ZoHostInfo *host) { return zol::declare(host, kCopy); }
