#include "host/script/fields.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zol::host {

namespace {

/// What may stand behind a field's kind and name.
enum Accepts : unsigned {
  kLabel = 1u << 0,
  kRange = 1u << 1,
  kFlags = 1u << 2,
  kColor = 1u << 3,
  kNeedsRange = 1u << 4,
};

struct Kind {
  std::string_view name;
  FieldType type;
  unsigned accepts;
};

constexpr unsigned kPlain = kLabel | kFlags;
constexpr unsigned kCurve = kLabel | kRange | kFlags | kColor;
constexpr unsigned kRanged = kCurve | kNeedsRange;

constexpr Kind kKinds[] = {
    {"Input", FieldType::input, kPlain},       {"Inputs", FieldType::inputs, 0},
    {"FloatA", FieldType::number, kCurve},     {"Float", FieldType::number, kRanged},
    {"Double", FieldType::number, kRanged},    {"double", FieldType::number, kRanged},
    {"Long", FieldType::integer, kRanged},     {"long", FieldType::integer, kRanged},
    {"Angle", FieldType::number, kPlain},      {"angle", FieldType::number, kPlain},
    {"Alpha", FieldType::number, kPlain},      {"RGBcolor", FieldType::color, kPlain},
    {"RGBColor", FieldType::color, kPlain},    {"HLScolor", FieldType::color, 0},
    {"Selector", FieldType::selector, kPlain}, {"Popup", FieldType::selector, kPlain},
    {"Bool", FieldType::toggle, kPlain},       {"Button", FieldType::button, kLabel},
    {"Label", FieldType::label, kLabel},       {"HGroup", FieldType::group, kPlain},
    {"VGroup", FieldType::group, kPlain},      {"Geometry", FieldType::geometry, kPlain},
    {"Media", FieldType::media, kPlain},       {"time", FieldType::number, kRanged},
    {"Time", FieldType::number, kRanged},      {"Dataset", FieldType::dataset, 0},
};

constexpr std::pair<std::string_view, unsigned> kFlagNames[] = {
    {"ZodfNone", 0},
    {"ZodfMinLimit", kMinLimit},
    {"ZodfMaxLimit", kMaxLimit},
    {"ZodfBothLimits", kMinLimit | kMaxLimit},
    {"ZodfHideCurve", kHideCurve},
    {"ZodfHide", kHide},
    {"ZodfHideName", kHideName},
    {"ZodfHideContent", kHideContent},
    {"ZodfFlatten", kFlatten},
    {"ZodfMediaVideo", kMediaVideo},
    {"ZodfMediaAudio", kMediaAudio},
};

/// A limit of a range: a number with a point, or a decimal one without.
std::optional<double> nextLimit(Arguments &arguments) {
  if (const auto *real = arguments.nextIf<double>())
    return *real;
  const auto *integer = arguments.nextIfDecimal();
  return integer != nullptr ? std::optional(static_cast<double>(integer->value)) : std::nullopt;
}

/// The arguments behind the kind and the name. Every one but a required range may be missing, and the label
/// stands before the range or behind it, so that their types tell them apart.
class Layout {
public:
  Layout(Arguments &arguments, const Kind &kind, Field &field)
      : arguments_(arguments), kind_(kind), field_(field) {}

  void read() {
    const bool labelled = label();
    if (!range() && (kind_.accepts & kNeedsRange) != 0)
      throw ScriptError("a field of kind " + field_.kind + " needs a range", arguments_.callOffset());
    if (!labelled)
      label();
    if (flags())
      color();
    arguments_.end();
  }

private:
  bool label() {
    const auto *text = arguments_.nextIf<Text>();
    if (text == nullptr)
      return false;
    require(kLabel, "label");
    field_.label = text->text;
    return true;
  }

  bool range() {
    field_.min = nextLimit(arguments_);
    if (!field_.min)
      return false;
    require(kRange, "range");
    const size_t minOffset = arguments_.lastOffset();
    field_.max = nextLimit(arguments_);
    if (!field_.max)
      throw ScriptError("a range needs two numbers", minOffset);
    if (*field_.min > *field_.max)
      throw ScriptError("a range with its limits exchanged", minOffset);
    return true;
  }

  bool flags() {
    if (const auto *flags = arguments_.nextIf<Flags>()) {
      field_.flags = flags->bits;
    } else if (const auto *none = arguments_.nextIf<Integer>()) {
      if (none->value != 0)
        throw ScriptError("flags expected", arguments_.lastOffset());
    } else {
      return false;
    }
    require(kFlags, "flags");
    return true;
  }

  void color() {
    const auto *color = arguments_.nextIf<Integer>();
    if (color == nullptr)
      return;
    require(kColor, "colour");
    if (color->value < 0 || color->value > 0xFFFFFF)
      throw ScriptError("a colour beyond 24 bits", arguments_.lastOffset());
    field_.curveColor = static_cast<uint32_t>(color->value);
  }

  void require(Accepts what, const char *name) {
    if ((kind_.accepts & what) == 0)
      throw ScriptError("a field of kind " + field_.kind + " takes no " + name, arguments_.lastOffset());
  }

  Arguments &arguments_;
  const Kind &kind_;
  Field &field_;
};

Field &fieldOf(Effect &effect, int id, FieldType type, const char *what, const Arguments &arguments) {
  Field &field = effect.fields[static_cast<size_t>(id)];
  if (field.type != type)
    throw ScriptError("field \"" + field.name + "\" is no " + what, arguments.lastOffset());
  return field;
}

using FieldArgument = int (Arguments::*)(const Effect &);

Done addItem(Arguments &arguments, FieldArgument argument) {
  Effect &effect = arguments.fieldList();
  const int id = (arguments.*argument)(effect);
  Field &selector = fieldOf(effect, id, FieldType::selector, "selector", arguments);
  Item item;
  item.text = arguments.text("the text of an item");
  item.value = arguments.next("the value of an item").getInt("the value of an item");
  arguments.end();
  selector.items.push_back(std::move(item));
  return {};
}

/// The group that holds a field, or -1.
int groupOf(const Effect &effect, int id) {
  for (size_t i = 0; i < effect.fields.size(); ++i) {
    const std::vector<int> &members = effect.fields[i].members;
    if (std::find(members.begin(), members.end(), id) != members.end())
      return static_cast<int>(i);
  }
  return -1;
}

Done addMember(Arguments &arguments, FieldArgument argument) {
  Effect &effect = arguments.fieldList();
  const int groupId = (arguments.*argument)(effect);
  Field &group = fieldOf(effect, groupId, FieldType::group, "group", arguments);
  const int member = arguments.fieldById(effect);
  const size_t memberOffset = arguments.lastOffset();
  arguments.end();
  if (groupOf(effect, member) >= 0)
    throw ScriptError("the field is in a group already", memberOffset);
  for (int outer = groupId; outer >= 0; outer = groupOf(effect, outer))
    if (outer == member)
      throw ScriptError("a group within itself", memberOffset);
  group.members.push_back(member);
  return {};
}

Done setHelp(Arguments &arguments, FieldArgument argument) {
  Effect &effect = arguments.fieldList();
  const int id = (arguments.*argument)(effect);
  std::string help = arguments.text("a help text");
  arguments.end();
  effect.fields[static_cast<size_t>(id)].help = std::move(help);
  return {};
}

} // namespace

std::optional<unsigned> flagBits(std::string_view name) {
  for (const auto &[flag, bits] : kFlagNames)
    if (flag == name)
      return bits;
  return std::nullopt;
}

FieldId addField(Arguments &arguments) {
  Effect &effect = arguments.fieldList();
  Field field;
  field.kind = arguments.text("the kind of a field");
  const auto *kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                  [&](const Kind &known) { return known.name == field.kind; });
  if (kind == std::end(kKinds))
    throw ScriptError("unknown kind \"" + field.kind + "\"", arguments.lastOffset());
  field.type = kind->type;
  field.name = arguments.text("the name of a field");
  Layout(arguments, *kind, field).read();
  effect.fields.push_back(std::move(field));
  return {static_cast<int>(effect.fields.size()) - 1};
}

Done addItemByName(Arguments &arguments) { return addItem(arguments, &Arguments::fieldByName); }
Done addItemById(Arguments &arguments) { return addItem(arguments, &Arguments::fieldById); }
Done addMemberByName(Arguments &arguments) { return addMember(arguments, &Arguments::fieldByName); }
Done addMemberById(Arguments &arguments) { return addMember(arguments, &Arguments::fieldById); }
Done setHelpByName(Arguments &arguments) { return setHelp(arguments, &Arguments::fieldByName); }
Done setHelpById(Arguments &arguments) { return setHelp(arguments, &Arguments::fieldById); }

} // namespace zol::host
