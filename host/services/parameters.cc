// The values of data fields.

#include "host/services/calls.h"

#include <algorithm>

namespace zol::host::service {
namespace {

Parameters &parameters() { return Session::current().parameters; }

} // namespace

long double ParamGetFloat(t_ZoHostInfo *, int field, int item, double time) {
  if (enter(Service::ParamGetFloat, field, item, time))
    return 0;
  const NumberCurve *curve = parameters().numbers.find(field, item);
  return curve == nullptr ? 0 : curve->at(time)[0];
}

void ParamSetFloat(t_ZoHostInfo *, int field, int item, double time, double value) {
  enter(Service::ParamSetFloat, field, item, time, value);
  if (NumberCurve *curve = parameters().numbers.get(field, item))
    curve->set(time, {value});
}

void ParamGetColor(t_ZoHostInfo *, int field, int item, _color_t *out, double time) {
  const bool fails = enter(Service::ParamGetColor, field, item, time);
  const ColorCurve *curve = parameters().colors.find(field, item);
  *out = fails || curve == nullptr ? _color_t{} : colorAt(*curve, time);
}

void ParamSetColor(t_ZoHostInfo *, int field, int item, const _color_t *color, double time) {
  enter(Service::ParamSetColor, field, item, packed(*color), time);
  if (ColorCurve *curve = parameters().colors.get(field, item))
    curve->set(time, colorValue(*color));
}

int ParamGetInt(t_ZoHostInfo *, int field, int item) {
  if (enter(Service::ParamGetInt, field, item))
    return 0;
  const int *value = parameters().integers.find(field, item);
  return value == nullptr ? 0 : *value;
}

void ParamSetInt(t_ZoHostInfo *, int field, int item, int value) {
  enter(Service::ParamSetInt, field, item, value);
  if (int *place = parameters().integers.get(field, item))
    *place = value;
}

void *ParamGetGeometry(t_ZoHostInfo *, int field, int item) {
  if (enter(Service::ParamGetGeometry, field, item))
    return nullptr;
  const Shape *const *shape = parameters().geometries.find(field, item);
  return shape == nullptr ? nullptr : const_cast<Shape *>(*shape);
}

void GeoGetBox(t_ZoHostInfo *, void *geometry, double box[4], double time) {
  const bool fails = enter(Service::GeoGetBox, time);
  std::fill_n(box, 4, 0.0);
  if (!fails && geometry != nullptr)
    static_cast<const Shape *>(geometry)->box(box, time);
}

int GeoGetCurves(t_ZoHostInfo *, void *geometry, double time, int one, void *user, t_ZoSegmentFn callback,
                 int zero) {
  if (enter(Service::GeoGetCurves, time, one, zero) || geometry == nullptr)
    return 0;
  return static_cast<const Shape *>(geometry)->curves(time, one != 0, user, callback);
}

} // namespace zol::host::service
