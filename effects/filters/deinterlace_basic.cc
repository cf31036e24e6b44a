// Deinterlace Basic: keeps one of the two fields and has the host stretch it to the full height.

#include "effects/filters/deinterlace_basic.xpm"
#include "effects/filters/deinterlacing.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "kernels/exports/deinterlace.h"

namespace {

namespace field = zol::field;

constexpr char kDescription[] = "This effect deinterlaces input image.";
constexpr char kInputLabel[] = "Input A";
constexpr char kMethodLabel[] = "Method";
constexpr char kUpperItem[] = "Use upper field, dicard lower one";
constexpr char kLowerItem[] = "Use lower field, dicard upper one";

ZOL_TEXT_TABLE kTexts[] = {
    "Deinterlace Basic  on", kInputLabel, kMethodLabel, kUpperItem, kLowerItem, kDescription,
};

// Ids of the fields.
int inputField = 0;
int methodField = 1;

constexpr const char *kMethods[] = {kUpperItem, kLowerItem};

constexpr zol::Field kFields[] = {
    field::input(&inputField, "InputA").label(kInputLabel).verbatim().clip(),
    field::selector(&methodField, kMethodLabel, kMethods),
};

auto kernelOf(t_ZoHostInfo *host) {
  return [host](_color_t *dst, _color_t *src, int width, int height) {
    const int method = zol::paramInt(host, methodField);
    mydeinterlace(host, dst, src, width, height, method);
  };
}

pic *render(t_ZoHostInfo *host) { return zol::deinterlacedFrame(host, inputField, kernelOf(host)); }

int renderRT(t_ZoHostInfo *host) { return zol::deinterlacedBuffer(host, kernelOf(host)); }

constexpr zol::Effect kDeinterlaceBasic{
    .name = "Filters/Deinterlace Basic",
    .nameInQuorbel = "Filters/Standard/Deinterlace Basic",
    .sign = "Deinterlace Basic 1.0 (Zo2)",
    .version = 1,
    .section = "Deinterlace2",
    .description = kDescription,
    .icon = deinterlace_basic_xpm,
    .init = zol::defaults<kFields, zol::DefaultsOrder::asDeclared>,
    .renderVideo = render,
    .renderVideoRT = renderRT,
    .fields = kFields,
    .style = zol::Script::kObj | zol::Script::kCombinedHead,
};

} // namespace

ZOL_EXPORT int ProcessDeinterlace2Declare(t_ZoHostInfo *host) {
  return zol::declare(host, kDeinterlaceBasic);
}
