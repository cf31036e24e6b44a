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

constexpr char kSection[] = "Deinterlace";
constexpr char kDescription[] = "This effect deinterlaces input image.";
constexpr char kInputLabel[] = "Input A";
constexpr char kThresholdLabel[] = "Threshold [0..50]";
constexpr char kEdgeLabel[] = "Edge detection [0..180]";
constexpr char kBlendingLabel[] = "Blending";

ZOL_TEXT_TABLE kTexts[] = {
    "Deinterlace  on", kInputLabel, kThresholdLabel, kEdgeLabel, kBlendingLabel, kDescription,
};

int init(t_ZoHostInfo *host) {
  zol::setDefaultInput(host, paramINPUT);
  host->Services->ParamSetInt(host, paramTHRESHOLD, 0, 10);
  host->Services->ParamSetInt(host, paramEDGEDETECT, 0, 20);
  host->Services->ParamSetInt(host, paramBLEND, 0, 0);
  return 1;
}

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

} // namespace

ZOL_EXPORT int ProcessDeinterlaceDeclare(t_ZoHostInfo *host) {
  const char *name = zol::hostIs(host, "Quorbel") ? "Filters/Standard/Deinterlace" : "Filters/Deinterlace";
  const zol::Declaration obj(host, "obj", kSection);
  const auto number = [&](int *id, const char *fieldName, const char *label, double least, double greatest) {
    obj.send("*((int *)" ZOL_ADDRESS R"() = ZoDataFieldAdd( &obj.df, "Long", "%s", (word *))" ZOL_ADDRESS
             R"(, %f,%f, %s );)",
             zol::address(id), fieldName, obj.word(label), least, greatest, "ZodfHideCurve");
  };
  obj.beginCombined(name, "Deinterlace 1.0 (Zo2)", 1);
  obj.descriptionW(kDescription);
  obj.icon(deinterlace_xpm);
  obj.init(init);
  obj.renderVideo(render);
  obj.renderVideoRT(renderRT);
  obj.send("*((int *)" ZOL_ADDRESS R"() = ZoDataFieldAdd( &obj.df, "Input", "%s", "%s", %s );)",
           zol::address(&paramINPUT), "InputA", kInputLabel, "ZodfNone");
  number(&paramTHRESHOLD, "Threshold", kThresholdLabel, 0, 100);
  number(&paramEDGEDETECT, "Edgedetect", kEdgeLabel, 0, 180);
  obj.send("*((int *)" ZOL_ADDRESS R"() = ZoDataFieldAdd( &obj.df, "Bool", "%s", (word *))" ZOL_ADDRESS
           R"(, %s );)",
           zol::address(&paramBLEND), "Blending", obj.word(kBlendingLabel), "ZodfNone");
  obj.end();
  return 1;
}
