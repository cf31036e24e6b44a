// Solid Color: a picture of one colour and one opacity, over the whole frame or, where a geometry is
// chosen, over that geometry's bounding box.

#include "effects/sources/solid_color.xpm"
#include "frame/convert.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"

#include <algorithm>

namespace {

constexpr char kSection[] = "Solid";

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

enum Field { kGeometry, kColor, kAlpha };

int init(t_ZoHostInfo *host) {
  const _color_t blue = {255, 0, 0, 0};
  host->Services->ParamSetColor(host, kColor, 0, &blue, 0.5);
  host->Services->ParamSetFloat(host, kAlpha, 0, 0.25, 1.0);
  return 1;
}

struct Rectangle {
  int left, top, width, height;
};

/// The pixels that a box touches, at least one. An edge that lies exactly on a pixel border adds none.
Rectangle pixelsOfBox(const double box[4]) {
  constexpr double kBorder = 0.001;
  const int left = zol::truncate(box[0]);
  const int top = zol::truncate(box[1]);
  const int right = zol::truncate(box[2] - kBorder);
  const int bottom = zol::truncate(box[3] - kBorder);
  const auto extent = [](int first, int last) {
    return static_cast<int>(std::clamp<int64_t>(int64_t{last} - first + 1, 1, INT32_MAX));
  };
  return {left, top, extent(left, right), extent(top, bottom)};
}

pic *render(t_ZoHostInfo *host) {
  Rectangle area{0, 0, host->Width, host->Height};
  if (void *geometry = host->Services->ParamGetGeometry(host, kGeometry, 0)) {
    double box[4];
    host->Services->GeoGetBox(host, geometry, box, host->FrameTime);
    area = pixelsOfBox(box);
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

} // namespace

ZOL_EXPORT int ProcessMatteDeclare(t_ZoHostInfo *host) {
  const zol::Declaration eff(host, "eff", kSection);
  eff.begin("SolidColor Zo2 native", "Sources/Solid Color", 10);
  eff.descriptionW(kDescription);
  eff.icon(solid_color_xpm);
  eff.iconMode("One");
  eff.init(init);
  eff.renderVideo(render);
  eff.send(R"(DataFieldAdd( &eff.df, "Geometry", "Geo" );)");
  eff.send(R"(ZoDataFieldAdd( &eff.df, "RGBColor", "Color", (word *))" ZOL_ADDRESS R"(, ZodfHideCurve );)",
           eff.word("Color"));
  eff.send(R"(ZoDataFieldAdd( &eff.df, "Alpha", "Alpha", (word *))" ZOL_ADDRESS R"(, ZodfHideCurve );)",
           eff.word("Alpha"));
  eff.end();
  return 1;
}
