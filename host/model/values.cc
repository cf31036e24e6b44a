#include "host/model/values.h"

#include "host/model/colors.h"
#include "host/model/error.h"
#include "host/model/text.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <utility>

namespace zol::host {
namespace {

[[noreturn]] void refuse(const Field &field, std::string_view text, const std::string &wanted) {
  throw HostError("field \"" + field.name + "\" takes " + wanted + ", not \"" + std::string(text) + '"');
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

/// What stands between a key's time and its value.
constexpr std::pair<Course, const char *> kSigns[] = {
    {Course::hold, "|="}, {Course::smooth, "~="}, {Course::line, "="}};

const char *signOf(Course course) {
  return std::find_if(std::begin(kSigns), std::end(kSigns),
                      [&](const auto &sign) { return sign.first == course; })
      ->second;
}

template <class Curve, class TextAt> std::string keysText(const Curve &curve, TextAt textAt) {
  std::string text;
  for (const auto &key : curve.keys())
    text += (text.empty() ? "" : ";") +
            (curve.keys().size() > 1 ? numberText(key.time) + signOf(key.course) : "") + textAt(key);
  return text;
}

} // namespace

std::vector<KeyText> keysIn(const Field &field, std::string_view text, const KeySpan &span) {
  if (text.find('=') == text.npos)
    return {{0.0, 0, Course::line, trimmed(text)}};
  std::vector<KeyText> keys;
  for (const std::string_view part : split(text, ';')) {
    const size_t equals = part.find('=');
    std::string_view before = part.substr(0, equals == part.npos ? 0 : equals);
    Course course = Course::line;
    for (const auto &[other, sign] : kSigns)
      if (course == Course::line && other != Course::line && before.ends_with(sign[0])) {
        course = other;
        before.remove_suffix(1);
      }
    const auto time = timeIn(trimmed(before), TimeUnit::shares);
    if (!time)
      refuse(field, part, "keys as time=value;time=value");
    keys.push_back({*time, span.share(*time), course, trimmed(part.substr(equals + 1))});
  }
  return keys;
}

NumberCurve numbersIn(const Field &field, std::string_view text, const KeySpan &span) {
  const Limits limits = limitsOf(field);
  const bool isTime = sameWithoutCase(field.kind, "time");
  NumberCurve curve;
  for (const KeyText &key : keysIn(field, text, span)) {
    auto number = numberIn(key.value);
    if (const auto time = timeIn(key.value); isTime && time)
      number = time->seconds(span.rate);
    if (!number || !limits.hold(*number))
      refuse(field, key.value, limits.wanted(isTime ? "a time" : "a number"));
    curve.set(key.share, {*number}, key.course);
  }
  return curve;
}

ColorCurve colorsIn(const Field &field, std::string_view text, const KeySpan &span) {
  ColorCurve curve;
  for (const KeyText &key : keysIn(field, text, span)) {
    const auto word = colorIn(key.value);
    if (!word)
      refuse(field, key.value, "a colour as #rrggbb or #rrggbbaa, or its name");
    curve.set(key.share,
              {double(*word & 255), double(*word >> 8 & 255), double(*word >> 16 & 255), double(*word >> 24)},
              key.course);
  }
  return curve;
}

int choiceIn(const Field &field, std::string_view text) {
  text = trimmed(text);
  return field.type == FieldType::toggle    ? toggleIn(field, text)
         : field.type == FieldType::integer ? integerOf(field, text)
                                            : itemIn(field, text);
}

std::optional<std::string> strayKey(const Field &field, std::string_view text, const KeySpan &span) {
  constexpr double kTolerance = 1e-6; // of times that were converted
  for (const KeyText &key : keysIn(field, text, span))
    if (key.share < -kTolerance || key.share > 1 + kTolerance) {
      const std::string at = key.time.text();
      return "field \"" + field.name + "\": the key at " + at + " lies outside of the effect's span, " +
             (key.time.unit == TimeUnit::shares ? "0 to 1; a time in seconds is written " + at + "s"
                                                : "which is " + numberText(span.duration) + " s long");
    }
  return std::nullopt;
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
