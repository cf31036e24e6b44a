#include "host/model/instance.h"

#include "host/geometry/shape.h"
#include "host/geometry/svg.h"
#include "host/media/process.h"
#include "host/model/error.h"
#include "host/model/text.h"

#include <algorithm>
#include <cstdio>

namespace zol::host {
namespace {

[[noreturn]] void refuse(const std::string &field, std::string_view value, const std::string &wanted) {
  throw HostError("field \"" + field + "\" takes " + wanted + ", not \"" + std::string(value) + '"');
}

/// Calls key(time, text) for every key of "0=a;1=b", or once, at time 0, for a single value.
template <class Key> void forEachKey(const std::string &field, std::string_view value, Key key) {
  if (value.find('=') == value.npos) {
    key(0.0, trimmed(value));
    return;
  }
  for (const std::string_view part : split(value, ';')) {
    const size_t sign = part.find('=');
    const auto time = sign == part.npos ? std::nullopt : numberIn(trimmed(part.substr(0, sign)));
    if (!time)
      refuse(field, part, "keys as time=value;time=value");
    key(*time, trimmed(part.substr(sign + 1)));
  }
}

struct Limits {
  std::optional<double> least, most;
};

/// An opacity is within 0 to 1 by its kind; others are limited where their flags say so.
Limits limitsOf(const Field &field) {
  if (field.kind == "Alpha")
    return {0.0, 1.0};
  return {(field.flags & kMinLimit) != 0 ? field.min : std::nullopt,
          (field.flags & kMaxLimit) != 0 ? field.max : std::nullopt};
}

std::string wantedNumber(const Limits &limits, const char *what) {
  if (limits.least && limits.most)
    return std::string(what) + " from " + numberText(*limits.least) + " to " + numberText(*limits.most);
  if (limits.least)
    return std::string(what) + " of at least " + numberText(*limits.least);
  if (limits.most)
    return std::string(what) + " of at most " + numberText(*limits.most);
  return what;
}

bool within(const Limits &limits, double value) {
  return (!limits.least || value >= *limits.least) && (!limits.most || value <= *limits.most);
}

std::string colorText(_color_t color) {
  char text[10];
  std::snprintf(text, sizeof text, color.a % 255 == 0 ? "#%02x%02x%02x" : "#%02x%02x%02x%02x", color.r,
                color.g, color.b, color.a);
  return text;
}

} // namespace

Instance::Instance(const Effect &effect, const std::string &identity, Clip *defaultClip)
    : effect_(effect), session_(identity) {
  session_.defaultClip = defaultClip;
  const Session::Use use(session_);
  if (effect.init != nullptr)
    effect.init(session_.info());
  for (size_t i = 0; i < effect.fields.size(); ++i)
    if (effect.fields[i].type == FieldType::number)
      setUnset(static_cast<int>(i));
}

/// A field that the effect leaves unset starts opaque where it is an opacity, else as near to 0 as its range
/// has it.
void Instance::setUnset(int field) {
  const Field &declared = effect_.fields[static_cast<size_t>(field)];
  NumberCurve &curve = *session_.parameters.numbers.get(field, 0);
  if (!curve.empty())
    return;
  double value = declared.kind == "Alpha" ? 1 : 0;
  if (declared.min)
    value = std::max(value, *declared.min);
  if (declared.max)
    value = std::min(value, *declared.max);
  curve.set(0, {value});
}

int Instance::fieldNamed(std::string_view name) const {
  const auto &fields = effect_.fields;
  const auto place = [&](auto same) {
    const auto found = std::find_if(fields.begin(), fields.end(), same);
    return found == fields.end() ? -1 : static_cast<int>(found - fields.begin());
  };
  if (const int exact = place([&](const Field &field) { return field.name == name; }); exact >= 0)
    return exact;
  if (const int named = place([&](const Field &field) { return sameWithoutCase(field.name, name); });
      named >= 0)
    return named;
  return place([&](const Field &field) { return sameWithoutCase(field.label, name); });
}

void Instance::set(std::string_view name, std::string_view value) {
  const int field = fieldNamed(name);
  if (field < 0) {
    if (setDatasetItem(name, value))
      return;
    std::vector<std::string> names;
    for (const Field &known : effect_.fields)
      names.push_back(known.name);
    const auto near = nearestNames(name, names, 1);
    throw HostError("\"" + effect_.name + "\" has no field \"" + std::string(name) + '"' +
                    (near.empty() ? "; `zol show` lists them" : "; did you mean \"" + near.front() + "\"?"));
  }
  const Field &declared = effect_.fields[static_cast<size_t>(field)];
  switch (declared.type) {
  case FieldType::number: setNumber(field, 0, value); break;
  case FieldType::color: setColor(field, value); break;
  case FieldType::integer:
  case FieldType::selector:
  case FieldType::toggle: setChoice(field, trimmed(value)); break;
  case FieldType::geometry:
    try {
      const Drawing drawing = readDrawing(std::string(value));
      shapes_.push_back(std::make_unique<GeometryShape>(drawing.geometry));
      for (const std::string &note : drawing.notes)
        notes_.push_back(declared.name + ": " + note);
    } catch (const std::runtime_error &error) {
      throw HostError("field \"" + declared.name + "\": " + error.what());
    }
    *session_.parameters.geometries.get(field, 0) = shapes_.back().get();
    break;
  default: throw HostError("field \"" + declared.name + "\" (" + declared.kind + ") holds no value to set");
  }
}

void Instance::setNumber(int field, int item, std::string_view value) {
  const Field &declared = effect_.fields[static_cast<size_t>(field)];
  const Limits limits = limitsOf(declared);
  NumberCurve curve;
  forEachKey(declared.name, value, [&](double time, std::string_view text) {
    const auto number = numberIn(text);
    if (!number || !within(limits, *number))
      refuse(declared.name, text, wantedNumber(limits, "a number"));
    curve.set(time, {*number});
  });
  *session_.parameters.numbers.get(field, item) = curve;
}

void Instance::setColor(int field, std::string_view value) {
  const std::string &name = effect_.fields[static_cast<size_t>(field)].name;
  ColorCurve curve;
  forEachKey(name, value, [&](double time, std::string_view text) {
    const auto word = colorIn(text);
    if (!word)
      refuse(name, text, "a colour as #rrggbb or #rrggbbaa");
    curve.set(time, {double(*word & 255), double(*word >> 8 & 255), double(*word >> 16 & 255),
                     double(*word >> 24)});
  });
  *session_.parameters.colors.get(field, 0) = curve;
}

void Instance::setChoice(int field, std::string_view value) {
  const Field &declared = effect_.fields[static_cast<size_t>(field)];
  int &place = *session_.parameters.integers.get(field, 0);
  const auto number = integerIn(value);
  if (declared.type == FieldType::toggle) {
    const bool on = value == "1" || sameWithoutCase(value, "on") || sameWithoutCase(value, "true");
    if (!on && value != "0" && !sameWithoutCase(value, "off") && !sameWithoutCase(value, "false"))
      refuse(declared.name, value, "on or off");
    place = on ? 1 : 0;
    return;
  }
  if (declared.type == FieldType::integer) {
    const Limits limits = limitsOf(declared);
    if (!number || !within(limits, *number))
      refuse(declared.name, value, wantedNumber(limits, "a whole number"));
    place = *number;
    return;
  }
  std::string choices;
  for (const Item &item : declared.items) {
    if (sameWithoutCase(item.text, value) || number == item.value) {
      place = item.value;
      return;
    }
    choices += (choices.empty() ? "\"" : ", \"") + item.text + '"';
  }
  refuse(declared.name, value, choices.empty() ? "one of its items" : "one of " + choices);
}

bool Instance::setDatasetItem(std::string_view name, std::string_view value) {
  for (size_t field = 0; field < effect_.fields.size(); ++field) {
    if (effect_.fields[field].type != FieldType::dataset)
      continue;
    openDialog();
    const auto *items = session_.parameters.datasets.items(static_cast<int>(field));
    for (size_t item = 0; items != nullptr && item < items->front().size(); ++item)
      if (sameWithoutCase(items->front()[item].name, name)) {
        setNumber(static_cast<int>(field), static_cast<int>(item), value);
        return true;
      }
  }
  return false;
}

std::vector<int> Instance::inputFields() const {
  std::vector<int> result;
  for (size_t i = 0; i < effect_.fields.size(); ++i)
    if (effect_.fields[i].type == FieldType::input || effect_.fields[i].type == FieldType::inputs)
      result.push_back(static_cast<int>(i));
  return result;
}

void Instance::openDialog() {
  if (dialogOpened_ || effect_.onDialogOpen == nullptr)
    return;
  dialogOpened_ = true;
  const Session::Use use(session_);
  effect_.onDialogOpen(session_.info());
}

void Instance::growList(int field, size_t slots) {
  openDialog();
  const Session::Use use(session_);
  const auto button = std::find_if(effect_.fields.begin(), effect_.fields.end(), [](const Field &candidate) {
    return candidate.type == FieldType::button && candidate.name == "Add";
  });
  auto *clips = session_.parameters.inputs.get(field, 0);
  while (clips->size() < slots) {
    const size_t before = clips->size();
    if (effect_.onDialogItemEdit != nullptr && button != effect_.fields.end())
      effect_.onDialogItemEdit(session_.info(), static_cast<int>(button - effect_.fields.begin()));
    if (clips->size() == before)
      clips->push_back(nullptr);
  }
}

void Instance::assignInputs(const std::vector<Clip *> &clips, size_t first) {
  const std::vector<int> fields = inputFields();
  size_t next = first;
  for (size_t i = 0; i < clips.size(); ++i) {
    if (next >= fields.size())
      throw HostError("\"" + effect_.name + "\" has " + std::to_string(fields.size()) +
                      (fields.size() == 1 ? " input" : " inputs") + ", fewer than were given");
    const int field = fields[next];
    if (effect_.fields[static_cast<size_t>(field)].type == FieldType::inputs) {
      const size_t rest = clips.size() - i;
      growList(field, rest);
      for (size_t item = 0; item < rest; ++item)
        assignInput(field, static_cast<int>(item), clips[i + item]);
      return;
    }
    assignInput(field, 0, clips[i]);
    ++next;
  }
}

void Instance::assignInput(int field, int item, Clip *clip) {
  auto *slots = session_.parameters.inputs.get(field, 0);
  if (slots->size() <= static_cast<size_t>(item))
    slots->resize(static_cast<size_t>(item) + 1);
  (*slots)[static_cast<size_t>(item)] = clip;
}

std::vector<std::string> Instance::datasetItems(int field) const {
  std::vector<std::string> names;
  if (const auto *items = session_.parameters.datasets.find(field, 0))
    for (const DatasetItem &item : *items)
      names.push_back(item.name);
  return names;
}

std::string Instance::valueText(int field) const {
  const Field &declared = effect_.fields[static_cast<size_t>(field)];
  const Parameters &values = session_.parameters;
  std::string text;
  const auto append = [&](double time, const std::string &value, size_t count) {
    text += (text.empty() ? "" : ";") + (count > 1 ? numberText(time) + "=" : "") + value;
  };
  switch (declared.type) {
  case FieldType::number:
    if (const NumberCurve *curve = values.numbers.find(field, 0))
      for (const auto &key : curve->keys())
        append(key.time, numberText(key.value[0]), curve->keys().size());
    break;
  case FieldType::color:
    if (const ColorCurve *curve = values.colors.find(field, 0))
      for (const auto &key : curve->keys())
        append(key.time, colorText(colorAt(*curve, key.time)), curve->keys().size());
    break;
  case FieldType::integer:
  case FieldType::selector:
  case FieldType::toggle: {
    const int *place = values.integers.find(field, 0);
    const int value = place == nullptr ? 0 : *place;
    text = std::to_string(value);
    if (declared.type == FieldType::toggle)
      text = value != 0 ? "on" : "off";
    for (const Item &item : declared.items)
      if (item.value == value)
        text = item.text;
    break;
  }
  default: break;
  }
  return text;
}

} // namespace zol::host
