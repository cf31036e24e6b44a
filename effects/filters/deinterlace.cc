// Deinterlace: repairs combed pixels and leaves the others as they are. The odd lines' combed pixels become
// the mean of their neighbours or, with "Blending", all combed pixels a vertical blend. The higher the
// threshold, the less is taken for combing, and the higher the edge detection, the fewer real edges.

#include "effects/filters/deinterlace.xpm"
#include "effects/filters/deinterlacing.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "kernels/exports/deinterlace.h"

// Ids of the fields.
extern "C" {
[[gnu::visibility("default")]] int paramINPUT = 0;
[[gnu::visibility("default")]] int paramTHRESHOLD = 1;
[[gnu::visibility("default")]] int paramEDGEDETECT = 2;
[[gnu::visibility("default")]] int paramBLEND = 3;
}

namespace {

namespace field = zol::field;

constexpr char kDescription[] = "This effect deinterlaces input image.";
constexpr char kInputLabel[] = "Input A";
constexpr char kThresholdLabel[] = "Threshold [0..50]";
constexpr char kEdgeLabel[] = "Edge detection [0..180]";
constexpr char kBlendingLabel[] = "Blending";

ZOL_TEXT_TABLE kTexts[] = {
    "Deinterlace  on", kInputLabel, kThresholdLabel, kEdgeLabel, kBlendingLabel, kDescription,
};

constexpr zol::Field kFields[] = {
    field::input(&paramINPUT, "InputA").label(kInputLabel).verbatim().clip(),
    field::integer(&paramTHRESHOLD, "Threshold", 0, 100, 10).label(kThresholdLabel),
    field::integer(&paramEDGEDETECT, "Edgedetect", 0, 180, 20).label(kEdgeLabel),
    field::toggle(&paramBLEND, "Blending", false).label(kBlendingLabel),
};

auto kernelOf(t_ZoHostInfo *host) {
  return [host](_color_t *dst, _color_t *src, int width, int height) {
    const int threshold = zol::paramInt(host, paramTHRESHOLD);
    const int edge = zol::paramInt(host, paramEDGEDETECT);
    const bool blend = zol::paramInt(host, paramBLEND) != 0;
    void *to = dst, *from = src;
    deinterlace(static_cast<unsigned *>(to), static_cast<unsigned *>(from), width, height, threshold, edge,
                blend);
  };
}

pic *render(t_ZoHostInfo *host) { return zol::deinterlacedFrame(host, paramINPUT, kernelOf(host)); }

int renderRT(t_ZoHostInfo *host) { return zol::deinterlacedBuffer(host, kernelOf(host)); }

constexpr zol::Effect kDeinterlace{
    .name = "Filters/Deinterlace",
    .nameInQuorbel = "Filters/Standard/Deinterlace",
    .sign = "Deinterlace 1.0 (Zo2)",
    .version = 1,
    .section = "Deinterlace",
    .description = kDescription,
    .icon = deinterlace_xpm,
    .init = zol::defaults<kFields, zol::DefaultsOrder::asDeclared>,
    .renderVideo = render,
    .renderVideoRT = renderRT,
    .fields = kFields,
    .style = zol::Script::kObj | zol::Script::kCombinedHead,
};

} // namespace

ZOL_EXPORT int ProcessDeinterlaceDeclare(t_ZoHostInfo *host) { return zol::declare(host, kDeinterlace); }
