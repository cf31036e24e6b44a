// Solid Color: a picture of one colour and one opacity, over the whole frame or, where a geometry is
// chosen, over that geometry's bounding box.

#include "effects/sources/solid_color.xpm"
#include "frame/box.h"
#include "frame/convert.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"

#include <algorithm>

namespace {

namespace field = zol::field;

enum Field { kGeometry, kColor, kAlpha };

constexpr zol::Field kFields[] = {
    field::plain("Geometry", kGeometry, "Geo"),
    field::color(kColor, "Color", 0x000000FF),
    field::alpha(kAlpha, "Alpha", 1).at(0.25),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Solid Color  on",
    ("&c0000FF&bSolid color.\n&c000000&n\tGenerates solid color image. If geometry is specified, its "
     "bounding "
     "box will be filled. Use curves to set and animate resulting color and opacity (alpha channel)."),
    "Color",
    "Alpha",
    "Geometry for Color Matte",
    "Box:",
    "Fills frame with solid color",
};

constexpr char kDescription[] = "This effect is one of the most frequently used. It generates image of "
                                "specified color and alpha. <br><br>This effects has no inputs.";

pic *render(t_ZoHostInfo *host) {
  zol::PixelBox area{0, 0, host->Width, host->Height};
  if (void *geometry = host->Services->ParamGetGeometry(host, kGeometry, 0)) {
    double box[4];
    host->Services->GeoGetBox(host, geometry, box, host->FrameTime);
    area = zol::pixelsOfBox(box);
  }
  pic *picture = host->Services->PicCreate(area.width, area.height);
  if (picture == nullptr) {
    zol::showMemoryError(host);
    return nullptr;
  }
  picture->X = static_cast<int16_t>(area.left);
  picture->Y = static_cast<int16_t>(area.top);

  _color_t color;
  host->Services->ParamGetColor(host, kColor, 0, &color, host->Time);
  color.a = static_cast<uint8_t>(zol::truncate(zol::paramDouble(host, kAlpha) * 255.0));
  std::fill_n(picture->Pixels, static_cast<size_t>(area.width) * static_cast<size_t>(area.height), color);
  return picture;
}

constexpr zol::Effect kSolidColor{
    .name = "Sources/Solid Color",
    .sign = "SolidColor Zo2 native",
    .version = 10,
    .section = "Solid",
    .description = kDescription,
    .icon = solid_color_xpm,
    .iconMode = "One",
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessMatteDeclare(t_ZoHostInfo *host) { return zol::declare(host, kSolidColor); }
