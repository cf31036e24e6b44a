// Deinterlace Basic: keeps one of the two fields and has the host stretch it to the full height.

#include "effects/filters/deinterlace_basic.xpm"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/render.h"
#include "kernels/deinterlace.h"

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

pic *render(t_ZoHostInfo *host) {
  const pic *frame = zol::requiredFrame(host, inputField, "No input");
  if (frame == nullptr)
    return nullptr;
  pic *out = host->Services->PicCreate(frame->Width, frame->Height);
  if (out == nullptr) {
    zol::showMessage(host, "No memory");
    return nullptr;
  }
  const int method = zol::paramInt(host, methodField);
  mydeinterlace(host, out->Pixels, frame->Pixels, frame->Width, frame->Height, method);
  return out;
}

int renderRT(t_ZoHostInfo *host) {
  if (host->BitsPerPixel != 32) {
    zol::showMessage(host, "Unsupported pixel size");
    return 0;
  }
  const int method = zol::paramInt(host, methodField);
  mydeinterlace(host, static_cast<_color_t *>(host->OutputBuffer),
                static_cast<_color_t *>(host->InputBuffers[0]), host->Width, host->Height, method);
  return 1;
}

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
