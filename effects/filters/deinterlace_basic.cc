// Deinterlace Basic: keeps one of the two fields and has the host stretch it to the full height.

#include "effects/filters/deinterlace_basic.xpm"
#include "effects/filters/deinterlacing.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "kernels/exports/deinterlace.h"

namespace {

constexpr char kSection[] = "Deinterlace2";
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

int init(t_ZoHostInfo *host) {
  zol::setDefaultInput(host, inputField);
  host->Services->ParamSetInt(host, methodField, 0, 0);
  return 1;
}

auto kernelOf(t_ZoHostInfo *host) {
  return [host](_color_t *dst, _color_t *src, int width, int height) {
    const int method = zol::paramInt(host, methodField);
    mydeinterlace(host, dst, src, width, height, method);
  };
}

pic *render(t_ZoHostInfo *host) { return zol::deinterlacedFrame(host, inputField, kernelOf(host)); }

int renderRT(t_ZoHostInfo *host) { return zol::deinterlacedBuffer(host, kernelOf(host)); }

} // namespace

ZOL_EXPORT int ProcessDeinterlace2Declare(t_ZoHostInfo *host) {
  const char *name =
      zol::hostIs(host, "Quorbel") ? "Filters/Standard/Deinterlace Basic" : "Filters/Deinterlace Basic";
  const zol::Declaration obj(host, "obj", kSection);
  obj.beginCombined(name, "Deinterlace Basic 1.0 (Zo2)", 1);
  obj.descriptionW(kDescription);
  obj.icon(deinterlace_basic_xpm);
  obj.init(init);
  obj.renderVideo(render);
  obj.renderVideoRT(renderRT);
  obj.send("*((int *)" ZOL_ADDRESS R"() = ZoDataFieldAdd( &obj.df, "Input", "%s", "%s", %s );)",
           zol::address(&inputField), "InputA", kInputLabel, "ZodfNone");
  obj.send("*((int *)" ZOL_ADDRESS R"() = ZoDataFieldAdd( &obj.df, "Selector", "%s", (word *))" ZOL_ADDRESS
           R"(, %s );)",
           zol::address(&methodField), "Method", obj.word(kMethodLabel), "ZodfNone");
  obj.item(methodField, kUpperItem, 0);
  obj.item(methodField, kLowerItem, 1);
  obj.end();
  return 1;
}
