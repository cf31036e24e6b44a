#include "bridges/frei0r/parameter.h"

#include "bridges/catalogue/catalogue.h"
#include "host/geometry/keyed_shape.h"
#include "host/geometry/path.h"
#include "host/model/text.h"

#include <algorithm>
#include <cmath>

namespace zol::bridge {
namespace {

using host::Field;
using host::FieldType;
using Part = Parameter::Part;

constexpr double kTurn = 360;

/// Where a field has no limit of its own.
constexpr int kMostInteger = 65535;

double within(double number) { return std::clamp(number, 0.0, 1.0); }

double band(const Field &field, int value) {
  const auto item = std::find_if(field.items.begin(), field.items.end(),
                                 [&](const host::Item &known) { return known.value == value; });
  const auto index = item == field.items.end() ? 0 : item - field.items.begin();
  return (static_cast<double>(index) + 0.5) / std::max(1.0, static_cast<double>(field.items.size()));
}

std::string sentence(const std::string &help, const std::string &more) {
  return help.empty() || more.empty() ? help + more : help + (help.ends_with('.') ? " " : ". ") + more;
}

/// Where 0 and 1 stand for themselves, nothing.
std::string rangeText(const Parameter &parameter) {
  return parameter.least == 0 && parameter.most == 1 ? ""
                                                     : "0 is " + host::numberText(parameter.least) +
                                                           ", 1 is " + host::numberText(parameter.most) + ".";
}

/// A number is offered over its declared range, or 0 to 1 where it has none; its default is within.
Parameter numberParameter(int id, const Field &field, double value) {
  Parameter result{id, Part::number, field.name, {}};
  result.declared = value;
  if (host::sameWithoutCase(field.kind, "Angle")) {
    result.part = Part::turn;
    result.most = kTurn;
    result.standard.number = value / kTurn - std::floor(value / kTurn);
  } else {
    result.least = std::min(field.min.value_or(0), value);
    result.most = std::max(field.max.value_or(std::max(1.0, result.least + 1)), value);
    result.standard.number = within((value - result.least) / (result.most - result.least));
  }
  result.explanation = sentence(field.help, rangeText(result));
  return result;
}

Parameter choiceParameter(int id, const Field &field, int value) {
  Parameter result{id, Part::integer, field.name, field.help};
  result.declared = value;
  if (field.type == FieldType::toggle) {
    result.part = Part::toggle;
    result.standard.number = value != 0 ? 1 : 0;
  } else if (field.type == FieldType::selector) {
    result.part = Part::item;
    result.standard.number = band(field, value);
    std::string items;
    for (const host::Item &item : field.items)
      items += (items.empty() ? "" : ", ") + item.text;
    result.explanation = sentence(field.help, "From 0 to 1 in equal bands: " + items + ".");
  } else {
    result.least = std::min(field.min.value_or(0), result.declared);
    result.most = std::max(field.max.value_or(kMostInteger), result.declared);
    result.standard.number = (value - result.least) / (result.most - result.least);
    result.explanation = sentence(field.help, rangeText(result));
  }
  return result;
}

void addColor(std::vector<Parameter> &to, int id, const Field &field, _color_t value) {
  Parameter color{id, Part::color, field.name, field.help};
  color.standard.color = {value.r / 255.0F, value.g / 255.0F, value.b / 255.0F};
  to.push_back(std::move(color));
  Parameter alpha{id, Part::alpha, field.name + " alpha", "How opaque " + field.name + " is."};
  alpha.standard.number = value.a / 255.0;
  alpha.declared = alpha.standard.number;
  to.push_back(std::move(alpha));
}

/// What fills or draws a shape shows one at once; to others it is a limit, and there is none.
void addOutline(std::vector<Parameter> &to, int id, const Field &field, const std::string &effect) {
  const struct {
    Part part;
    const char *name;
    double standard;
  } sides[] = {
      {Part::left, "left", 0}, {Part::top, "top", 0}, {Part::right, "right", 1}, {Part::bottom, "bottom", 1}};
  for (const auto &side : sides) {
    Parameter result{id, side.part, field.name + ' ' + side.name,
                     "Where " + field.name + "'s place ends, as a share of the frame."};
    result.standard.number = result.declared = side.standard;
    to.push_back(std::move(result));
  }
  Parameter outline{id, Part::outline, field.name,
                    sentence(field.help, "none, rectangle, ellipse, or path data in shares of its place.")};
  outline.standard.text = effect.starts_with("Geometry Shading/") ? "ellipse" : "none";
  to.push_back(std::move(outline));
}

std::unique_ptr<host::Shape> outlineOf(std::span<const Value> values, int width, int height) {
  const std::string &text = values[4].text;
  const std::string_view path = text == "rectangle" ? "M0 0H1V1H0Z"
                                : text == "ellipse" ? "M0 .5A.5 .5 0 0 1 1 .5A.5 .5 0 0 1 0 .5Z"
                                                    : std::string_view(text);
  const auto place = [&](size_t part) {
    return std::isfinite(values[part].number) ? values[part].number : 0;
  };
  const double left = place(0), top = place(1), right = place(2), bottom = place(3);
  try {
    const host::Geometry unit = host::readPath(path);
    if (unit.contours.empty())
      return nullptr;
    return host::shapeOf({{0, unit.transformed({(right - left) * width, 0, 0, (bottom - top) * height,
                                                left * width, top * height})}});
  } catch (const host::GeometryError &) {
    return nullptr;
  }
}

} // namespace

int Parameter::type() const {
  switch (part) {
  case Part::toggle: return F0R_PARAM_BOOL;
  case Part::color: return F0R_PARAM_COLOR;
  case Part::outline: return F0R_PARAM_STRING;
  default: return F0R_PARAM_DOUBLE;
  }
}

double Parameter::meaning(double number) const {
  if (std::isnan(number) || number == standard.number)
    return declared;
  number = within(number);
  return number == 1 ? most : least + number * (most - least);
}

std::vector<Parameter> parametersOf(host::Instance &fresh) {
  std::vector<Parameter> result;
  const host::Effect &effect = fresh.effect();
  host::Parameters &values = fresh.session().parameters;
  for (size_t i = 0; i < effect.fields.size(); ++i) {
    const Field &field = effect.fields[i];
    const int id = static_cast<int>(i);
    if ((field.flags & host::kHide) != 0)
      continue;
    switch (field.type) {
    case FieldType::number: {
      const host::NumberCurve &curve = *values.numbers.get(id, 0);
      result.push_back(numberParameter(id, field, curve.at(0.5)[0]));
      // What an effect lets rise by itself is its progress: hosts have their own clock for that.
      if (curve.keys().size() > 1)
        result.back().name = "Progress";
      break;
    }
    case FieldType::integer:
    case FieldType::selector:
    case FieldType::toggle: result.push_back(choiceParameter(id, field, *values.integers.get(id, 0))); break;
    case FieldType::color: addColor(result, id, field, colorAt(*values.colors.get(id, 0), 0.5)); break;
    case FieldType::geometry: addOutline(result, id, field, effect.name); break;
    default: break;
    }
  }
  return result;
}

Parts partsWith(std::span<const Parameter> parameters, size_t index) {
  size_t first = index, end = index + 1;
  while (first > 0 && parameters[first - 1].field == parameters[index].field)
    --first;
  while (end < parameters.size() && parameters[end].field == parameters[index].field)
    ++end;
  return {first, end - first};
}

std::unique_ptr<host::Shape> put(host::Instance &instance, std::span<const Parameter> parts,
                                 std::span<const Value> values, int width, int height) {
  const Parameter &first = parts.front();
  const int field = first.field;
  const double number = first.meaning(values.front().number);
  host::Parameters &to = instance.session().parameters;
  switch (first.part) {
  case Part::number:
  case Part::turn: {
    host::NumberCurve &curve = *to.numbers.get(field, 0);
    curve.clear();
    curve.set(0, {number});
    return nullptr;
  }
  case Part::integer: *to.integers.get(field, 0) = static_cast<int>(std::lround(number)); return nullptr;
  case Part::toggle: *to.integers.get(field, 0) = number >= 0.5 ? 1 : 0; return nullptr;
  case Part::item: {
    const auto &items = instance.effect().fields[static_cast<size_t>(field)].items;
    const double place =
        std::isnan(values.front().number) ? first.standard.number : within(values.front().number);
    if (!items.empty())
      *to.integers.get(field, 0) =
          items[std::min(items.size() - 1, static_cast<size_t>(place * static_cast<double>(items.size())))]
              .value;
    return nullptr;
  }
  case Part::color: {
    const auto byte = [](double share) {
      return std::isnan(share) ? 0 : std::floor(within(share) * 255 + 0.5);
    };
    const f0r_param_color_t &color = values[0].color;
    host::ColorCurve &curve = *to.colors.get(field, 0);
    curve.clear();
    curve.set(0, {byte(color.b), byte(color.g), byte(color.r), byte(parts[1].meaning(values[1].number))});
    return nullptr;
  }
  default: {
    auto shape = outlineOf(values, width, height);
    *to.geometries.get(field, 0) = shape.get();
    return shape;
  }
  }
}

} // namespace zol::bridge
