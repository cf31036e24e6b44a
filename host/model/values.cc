#include "host/model/values.h"

#include "host/model/error.h"
#include "host/model/text.h"

#include <algorithm>
#include <cstdio>

namespace zol::host {
namespace {

[[noreturn]] void refuse(const Field &field, std::string_view text, const std::string &wanted) {
  throw HostError("field \"" + field.name + "\" takes " + wanted + ", not \"" + std::string(text) + '"');
}

/// Calls key(time, text) for every key of "0=a;1=b", or once, at time 0, for a single value.
template <class Key> void forEachKey(const Field &field, std::string_view text, Key key) {
  if (text.find('=') == text.npos) {
    key(0.0, trimmed(text));
    return;
  }
  for (const std::string_view part : split(text, ';')) {
    const size_t sign = part.find('=');
    const auto time = sign == part.npos ? std::nullopt : numberIn(trimmed(part.substr(0, sign)));
    if (!time)
      refuse(field, part, "keys as time=value;time=value");
    key(*time, trimmed(part.substr(sign + 1)));
  }
}

struct Limits {
  std::optional<double> least, most;

  [[nodiscard]] bool hold(double value) const {
    return (!least || value >= *least) && (!most || value <= *most);
  }
  [[nodiscard]] std::string wanted(const std::string &what) const {
    if (least && most)
      return what + " from " + numberText(*least) + " to " + numberText(*most);
    if (least)
      return what + " of at least " + numberText(*least);
    if (most)
      return what + " of at most " + numberText(*most);
    return what;
  }
};

/// An opacity is within 0 to 1 by its kind; others are limited where their flags say so.
Limits limitsOf(const Field &field) {
  if (field.kind == "Alpha")
    return {0.0, 1.0};
  return {(field.flags & kMinLimit) != 0 ? field.min : std::nullopt,
          (field.flags & kMaxLimit) != 0 ? field.max : std::nullopt};
}

int toggleIn(const Field &field, std::string_view text) {
  for (const char *on : {"1", "on", "true"})
    if (sameWithoutCase(text, on))
      return 1;
  for (const char *off : {"0", "off", "false"})
    if (sameWithoutCase(text, off))
      return 0;
  refuse(field, text, "on or off");
}

int integerOf(const Field &field, std::string_view text) {
  const Limits limits = limitsOf(field);
  const auto number = integerIn(text);
  if (!number || !limits.hold(*number))
    refuse(field, text, limits.wanted("a whole number"));
  return *number;
}

int itemIn(const Field &field, std::string_view text) {
  const auto number = integerIn(text);
  std::string choices;
  for (const Item &item : field.items) {
    if (sameWithoutCase(item.text, text) || number == item.value)
      return item.value;
    choices += (choices.empty() ? "\"" : ", \"") + item.text + '"';
  }
  refuse(field, text, choices.empty() ? "one of its items" : "one of " + choices);
}

std::string colorText(_color_t color) {
  char text[10];
  std::snprintf(text, sizeof text, color.a % 255 == 0 ? "#%02x%02x%02x" : "#%02x%02x%02x%02x", color.r,
                color.g, color.b, color.a);
  return text;
}

template <class Curve, class TextAt> std::string keysText(const Curve &curve, TextAt textAt) {
  std::string text;
  for (const auto &key : curve.keys())
    text +=
        (text.empty() ? "" : ";") + (curve.keys().size() > 1 ? numberText(key.time) + "=" : "") + textAt(key);
  return text;
}

} // namespace

NumberCurve numbersIn(const Field &field, std::string_view text) {
  const Limits limits = limitsOf(field);
  NumberCurve curve;
  forEachKey(field, text, [&](double time, std::string_view value) {
    const auto number = numberIn(value);
    if (!number || !limits.hold(*number))
      refuse(field, value, limits.wanted("a number"));
    curve.set(time, {*number});
  });
  return curve;
}

ColorCurve colorsIn(const Field &field, std::string_view text) {
  ColorCurve curve;
  forEachKey(field, text, [&](double time, std::string_view value) {
    const auto word = colorIn(value);
    if (!word)
      refuse(field, value, "a colour as #rrggbb or #rrggbbaa");
    curve.set(time, {double(*word & 255), double(*word >> 8 & 255), double(*word >> 16 & 255),
                     double(*word >> 24)});
  });
  return curve;
}

int choiceIn(const Field &field, std::string_view text) {
  text = trimmed(text);
  return field.type == FieldType::toggle    ? toggleIn(field, text)
         : field.type == FieldType::integer ? integerOf(field, text)
                                            : itemIn(field, text);
}

std::string textOf(const NumberCurve &curve) {
  return keysText(curve, [](const auto &key) { return numberText(key.value[0]); });
}

std::string textOf(const ColorCurve &curve) {
  return keysText(curve, [&](const auto &key) { return colorText(colorAt(curve, key.time)); });
}

std::string textOf(const Field &field, int choice) {
  for (const Item &item : field.items)
    if (item.value == choice)
      return item.text;
  if (field.type == FieldType::toggle)
    return choice != 0 ? "on" : "off";
  return std::to_string(choice);
}

double startOf(const Field &field) {
  double value = field.kind == "Alpha" ? 1 : 0;
  if (field.min)
    value = std::max(value, *field.min);
  if (field.max)
    value = std::min(value, *field.max);
  return value;
}

} // namespace zol::host
