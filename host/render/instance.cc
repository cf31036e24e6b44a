#include "host/render/instance.h"

#include "host/geometry/keyed_shape.h"
#include "host/geometry/svg.h"
#include "host/media/interrupt.h"
#include "host/model/error.h"
#include "host/model/names.h"
#include "host/model/text.h"
#include "host/model/values.h"
#include "host/script/queries.h"

#include <algorithm>

namespace zol::host {

Instance::Instance(const Effect &effect, const std::string &identity, const Timeline &timeline,
                   Clip *defaultClip)
    : effect_(effect), session_(identity),
      script_(effect, session_.parameters), span_{timeline.duration, timeline.rate},
      drawingScale_{.a = timeline.drawingScaleX, .d = timeline.drawingScaleY} {
  session_.defaultClip = defaultClip;
  session_.stop = interrupted;
  session_.onStatement = [this](const char *text) {
    const long long answer = answerQuery(text);
    return answer != 0 ? answer : script_.execute(text);
  };
  timeline.describe(*session_.info());
  const Session::Use use(session_);
  if (effect.init != nullptr)
    effect.init(session_.info());
  for (size_t i = 0; i < effect.fields.size(); ++i)
    if (effect.fields[i].type == FieldType::number)
      if (NumberCurve &curve = *session_.parameters.numbers.get(static_cast<int>(i), 0); curve.empty())
        curve.set(0, {startOf(effect.fields[i])});
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
  return place([&](const Field &field) {
    return sameWithoutCase(field.label, name) || sameWithoutCase(withoutMnemonic(field.label), name);
  });
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
  Parameters &values = session_.parameters;
  switch (declared.type) {
  case FieldType::number:
    *values.numbers.get(field, 0) = numbersIn(declared, value, span_);
    noteStrayKey(declared, value);
    break;
  case FieldType::color:
    *values.colors.get(field, 0) = colorsIn(declared, value, span_);
    noteStrayKey(declared, value);
    break;
  case FieldType::integer:
  case FieldType::selector:
  case FieldType::toggle: *values.integers.get(field, 0) = choiceIn(declared, value); break;
  case FieldType::geometry:
    *values.geometries.get(field, 0) = shapes_.emplace_back(readShape(declared, value)).get();
    break;
  default: throw HostError("field \"" + declared.name + "\" (" + declared.kind + ") holds no value to set");
  }
}

void Instance::noteStrayKey(const Field &field, std::string_view value) {
  if (auto note = strayKey(field, value, span_))
    notes_.push_back(std::move(*note));
}

/// Path data has no '=' in it, but a file may have any name.
std::unique_ptr<Shape> Instance::readShape(const Field &field, std::string_view value) try {
  std::vector<GeometryKey> drawings;
  const bool file = value.starts_with('@');
  for (const KeyText &key :
       file ? std::vector<KeyText>{{0.0, 0, Course::line, value}} : keysIn(field, value, span_)) {
    Drawing drawing = readDrawing(std::string(key.value));
    for (const std::string &note : drawing.notes)
      notes_.push_back(field.name + ": " + note);
    drawings.push_back({key.share * span_.duration, drawing.geometry.transformed(drawingScale_), key.course});
  }
  if (!file)
    noteStrayKey(field, value);
  return shapeOf(drawings);
} catch (const GeometryError &error) {
  throw HostError("field \"" + field.name + "\": " + error.what());
}

bool Instance::setDatasetItem(std::string_view name, std::string_view value) {
  for (size_t field = 0; field < effect_.fields.size(); ++field) {
    if (effect_.fields[field].type != FieldType::dataset)
      continue;
    openDialog();
    const auto *items = session_.parameters.datasets.items(static_cast<int>(field));
    for (size_t item = 0; items != nullptr && item < items->front().size(); ++item)
      if (sameWithoutCase(items->front()[item].name, name)) {
        *session_.parameters.numbers.get(static_cast<int>(field), static_cast<int>(item)) =
            numbersIn(effect_.fields[field], value, span_);
        noteStrayKey(effect_.fields[field], value);
        return true;
      }
  }
  return false;
}

std::vector<int> Instance::inputFields() const {
  std::vector<int> result;
  for (size_t i = 0; i < effect_.fields.size(); ++i)
    if (const FieldType type = effect_.fields[i].type;
        type == FieldType::input || type == FieldType::inputs || type == FieldType::media)
      result.push_back(static_cast<int>(i));
  return result;
}

std::vector<int> Instance::chainedInputFields() const {
  std::vector<int> fields = inputFields();
  auto chained = std::find_if(fields.begin(), fields.end(), [&](int field) {
    const auto *slots = session_.parameters.inputs.find(field, 0);
    return slots != nullptr && !slots->empty() && slots->front() != nullptr;
  });
  if (chained == fields.end())
    chained = std::find_if(fields.begin(), fields.end(), [&](int field) {
      return effect_.fields[static_cast<size_t>(field)].name != "Background";
    });
  if (chained != fields.end())
    std::rotate(fields.begin(), chained, chained + 1);
  return fields;
}

int Instance::missingInput() const {
  const std::vector<int> fields = inputFields();
  const auto missing = std::find_if(fields.begin(), fields.end(), [&](int field) {
    const auto *slots = session_.parameters.inputs.find(field, 0);
    return slots == nullptr || slots->empty() || slots->front() == nullptr;
  });
  return missing == fields.end() ? -1 : *missing;
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

void Instance::assignInputs(const std::vector<Clip *> &clips, const std::vector<int> &fields) {
  for (size_t i = 0; i < clips.size(); ++i) {
    if (i >= fields.size())
      throw HostError("\"" + effect_.name + "\" has " + std::to_string(fields.size()) +
                      (fields.size() == 1 ? " input" : " inputs") + ", but " + std::to_string(clips.size()) +
                      (clips.size() == 1 ? " was" : " were") + " given");
    const int field = fields[i];
    if (effect_.fields[static_cast<size_t>(field)].type == FieldType::inputs) {
      const size_t rest = clips.size() - i;
      growList(field, rest);
      for (size_t item = 0; item < rest; ++item)
        assignInput(field, static_cast<int>(item), clips[i + item]);
      return;
    }
    assignInput(field, 0, clips[i]);
  }
}

/// Whether the effect assigned it by itself.
bool Instance::takeMedia(int field, Clip *clip) {
  const Session::Use use(session_);
  t_ZoHostInfo *info = session_.info();
  if (effect_.probe != nullptr && effect_.probe(info, clip) == 0)
    throw HostError("\"" + effect_.name + "\" can use nothing of the file of its \"" +
                    effect_.fields[static_cast<size_t>(field)].name + '"');
  return effect_.initByMedia != nullptr && effect_.initByMedia(info, clip) != 0;
}

void Instance::assignInput(int field, int item, Clip *clip) {
  if (clip != nullptr && effect_.fields[static_cast<size_t>(field)].type == FieldType::media &&
      takeMedia(field, clip))
    return;
  auto *slots = session_.parameters.inputs.get(field, 0);
  if (slots->size() <= static_cast<size_t>(item))
    slots->resize(static_cast<size_t>(item) + 1);
  (*slots)[static_cast<size_t>(item)] = clip;
}

std::optional<double> Instance::mediaDuration() {
  if (effect_.trim == nullptr)
    return std::nullopt;
  constexpr double kEndless = 1e7;
  const Session::Use use(session_);
  double edges[2] = {session_.info()->VideoClipStart, kEndless};
  effect_.trim(session_.info(), edges);
  const double duration = edges[1] - edges[0];
  return duration > 0 && edges[1] < kEndless ? std::optional(duration) : std::nullopt;
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
  switch (declared.type) {
  case FieldType::number: {
    const NumberCurve *curve = values.numbers.find(field, 0);
    return curve == nullptr ? "" : textOf(*curve);
  }
  case FieldType::color: {
    const ColorCurve *curve = values.colors.find(field, 0);
    return curve == nullptr ? "" : textOf(*curve);
  }
  case FieldType::integer:
  case FieldType::selector:
  case FieldType::toggle: {
    const int *choice = values.integers.find(field, 0);
    return textOf(declared, choice == nullptr ? 0 : *choice);
  }
  default: return "";
  }
}

} // namespace zol::host
