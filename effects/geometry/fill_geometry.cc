// Fill Geometry: a geometry filled with one colour, its edges smooth, laid over the input or, where none is
// assigned, standing on a transparent frame. The even-odd rule decides what is inside.

#include "effects/geometry/fill_geometry.xpm"
#include "frame/convert.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "kernels/compositing/lay_color.h"
#include "kernels/exports/shape.h"

#include <algorithm>

namespace {

namespace field = zol::field;

enum Field { kInput, kGeometry, kColor, kAlpha, kOffsetX, kOffsetY };

constexpr zol::Field kFields[] = {
    field::input(kInput, "Input")
        .clip()
        .help("The image under the shape. It may be left out: the shape then stands on a transparent frame."),
    field::geometry(kGeometry, "Geometry").help("The shape to fill."),
    field::color(kColor, "Color", 0xFFFFFFFF).help("The color of the shape."),
    field::alpha(kAlpha, "Alpha", 1)
        .help("How opaque the shape is: 0 shows nothing of it, 1 nothing of what lies below."),
    field::curve(kOffsetX, "OffsetX", zol::kOpenSigned, 0)
        .label("Offset X")
        .help("Moves the shape to the right, in widths of the frame: 0.5 is half a frame, 0 leaves it in "
              "place.")
        .colored(0xFF00FF),
    field::curve(kOffsetY, "OffsetY", zol::kOpenSigned, 0)
        .label("Offset Y")
        .help("Moves the shape down, in heights of the frame: 0.5 is half a frame, 0 leaves it in place.")
        .colored(0x7FFF7F),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Fill Geometry  on",
    "Input",
    "Geometry",
    "Color",
    "Alpha",
    "Offset X",
    "Offset Y",
    "Fills a geometry with a color",
};

constexpr char kDescription[] =
    "This effect fills a geometry with a color and lays it over the input image. The edges are smooth; where "
    "parts of the outline overlap, every second one is left open. <br><br>Without an input the filled "
    "geometry stands on a transparent frame.";

struct Fill {
  void *geometry;
  unsigned colour; // its alpha is the opacity
  double offsetX, offsetY;
};

Fill readFill(t_ZoHostInfo *host, void *geometry) {
  _color_t color = {};
  host->Services->ParamGetColor(host, kColor, 0, &color, host->Time);
  const int opacity = std::clamp(zol::truncate(zol::paramDouble(host, kAlpha) * 255.0), 0, 255);
  return {geometry,
          static_cast<unsigned>(opacity) << 24 | static_cast<unsigned>(color.r) << 16 |
              static_cast<unsigned>(color.g) << 8 | color.b,
          zol::paramDouble(host, kOffsetX) * host->Width, zol::paramDouble(host, kOffsetY) * host->Height};
}

/// Fills the geometry into the picture and says what the kernel says on failure.
bool fill(t_ZoHostInfo *host, pic *picture, const Fill &fill) {
  char error[256];
  if (FillShapeXYOffset(host, error, picture, fill.geometry, host->FrameTime, fill.colour, fill.offsetX,
                        fill.offsetY) == 1)
    return true;
  if (error[0] != '\0')
    zol::showMessage(host, error);
  return false;
}

pic *renderAlone(t_ZoHostInfo *host, const Fill &shape) {
  zol::OwnedPic out(host, host->Services->PicCreate(host->Width, host->Height));
  if (!out) {
    zol::showMemoryError(host);
    return nullptr;
  }
  // Blended over itself the colour stays, and the alpha becomes the coverage: straight alpha.
  const size_t count = static_cast<size_t>(host->Width) * static_cast<size_t>(host->Height);
  const _color_t color = {uint8_t(shape.colour), uint8_t(shape.colour >> 8), uint8_t(shape.colour >> 16), 0};
  std::fill_n(out->Pixels, count, color);
  if (!fill(host, out.get(), shape))
    return nullptr;
  std::replace_if(
      out->Pixels, out->Pixels + count, [](_color_t p) { return p.a == 0; }, _color_t{});
  return out.release();
}

pic *renderOver(t_ZoHostInfo *host, pic *frame, const Fill &shape) {
  zol::OwnedPic out(host, host->Services->PicDuplicate(frame));
  zol::OwnedPic mask(host, out ? host->Services->PicCreate(frame->Width, frame->Height) : nullptr);
  if (!mask) {
    zol::showMemoryError(host);
    return nullptr;
  }
  mask->X = frame->X;
  mask->Y = frame->Y;
  if (!fill(host, mask.get(), shape))
    return nullptr;
  const auto layRow = ZOL_SELECT(layColor);
  const int width = frame->Width;
  const bool finished = zol::forEachRow(host, frame->Height, [&](int y) {
    const ptrdiff_t row = ptrdiff_t{y} * width;
    layRow(out->Pixels + row, mask->Pixels + row, width, shape.colour);
  });
  return finished ? out.release() : nullptr;
}

pic *render(t_ZoHostInfo *host) {
  void *geometry = host->Services->ParamGetGeometry(host, kGeometry, 0);
  if (geometry == nullptr) {
    zol::showMessage(host, "Geometry not assigned");
    return nullptr;
  }
  void *input = zol::input(host, kInput);
  if (input == nullptr)
    return renderAlone(host, readFill(host, geometry));
  pic *frame = zol::frameOf(host, input);
  return frame != nullptr ? renderOver(host, frame, readFill(host, geometry)) : nullptr;
}

constexpr zol::Effect kFillGeometry{
    .name = "Geometry Shading/Fill Geometry",
    .sign = "FillGeometry Zo2 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
    .section = "FillGeometry",
    .description = kDescription,
    .icon = fill_geometry_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
    .style = zol::Script::kBracketedStores,
};

} // namespace

ZOL_EXPORT int ProcessFillAndShadowDeclare(t_ZoHostInfo *host) { return zol::declare(host, kFillGeometry); }
