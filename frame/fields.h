// The border: an effect's data fields as one table, a row a field. From the table follow the statements that
// declare the fields, the defaults that init puts on them, and their indices.
#pragma once

#include "frame/zol.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace zol {

/// Where a field's id is found: it is the row's place in the table, which the row states by its enumerator,
/// or what the host stores in an int when the field is declared.
struct Place {
  constexpr Place(int row) : index(row) {}
  constexpr Place(int *stored) : id(stored) {}

  int index = -1;
  int *id = nullptr;
};

/// The limits of a number and its flags. Limits that are both 0 are not sent.
struct Range {
  double least, most;
  const char *flags;
};

inline constexpr Range kShare{0, 1, "ZodfBothLimits"};
inline constexpr Range kOpenShare{0, 1, "ZodfMinLimit"};
inline constexpr Range kSigned{-1, 1, "ZodfBothLimits"};
inline constexpr Range kOpenSigned{-1, 1, "ZodfNone"};

/// One row. Rows are made by the functions of `field` below, which give every kind its usual flags and
/// default; what differs is said by a word behind, as in `field::curve(kPhase, "Phase", kSigned,
/// 1).help("...")`.
struct Field {
  enum class Texts : uint8_t { none, verbatim, translated }; ///< of label, items and help
  enum class Start : uint8_t { unset, keys, integer, color, clip };
  struct Key {
    double time, value;
  };
  static constexpr int kNoColor = -1, kColorInTurn = -2;

  const char *kind;
  Place place;
  const char *name;
  bool plain = false; ///< added by DataFieldAdd, not by ZoDataFieldAdd
  Texts texts = Texts::translated;
  const char *labelText = nullptr;
  Range range{0, 0, nullptr};
  int curveColor = kNoColor;                   ///< 0xRRGGBB
  std::span<const char *const> itemTexts = {}; ///< an item's value is its place among them
  std::span<const int> members = {};           ///< indices
  const char *helpText = nullptr;

  Start start = Start::unset;
  int keyCount = 1; ///< one key of `keys`, or both; a colour is put at the time of the first
  Key keys[2] = {{0.5, 0}, {1, 1}};
  int integer = 0;
  uint32_t color = 0; ///< 0xAARRGGBB

private:
  template <class Value> constexpr Field with(Value Field::*member, Value value) const {
    Field row = *this;
    row.*member = value;
    return row;
  }

public:
  // ---- Words that say what differs ----

  /// The label where it is not the name.
  constexpr Field label(const char *text) const { return with(&Field::labelText, text); }
  constexpr Field help(const char *text) const { return with(&Field::helpText, text); }
  /// Null: none are sent.
  constexpr Field flags(const char *text) const {
    Field row = *this;
    row.range.flags = text;
    return row;
  }
  /// The curve's colour: the next of the four usual ones unless said otherwise.
  constexpr Field colored(int rgb) const { return with(&Field::curveColor, rgb); }
  constexpr Field uncolored() const { return colored(kNoColor); }
  /// Label, items and help are sent as they are, the last two by the field's name.
  constexpr Field verbatim() const { return with(&Field::texts, Texts::verbatim); }
  /// Neither label nor flags are sent.
  constexpr Field bare() const { return with(&Field::texts, Texts::none).flags(nullptr); }

  /// The default's time; 0.5 unless said otherwise.
  constexpr Field at(double time) const {
    Field row = *this;
    row.keys[0].time = time;
    return row;
  }
  /// The default rises from 0 at time 0 to 1 at time 1.
  constexpr Field rising() const { return at(0).with(&Field::keyCount, 2); }
  /// The default is the clip that the effect is applied to.
  constexpr Field clip() const { return with(&Field::start, Start::clip); }
  /// Init leaves the field alone.
  constexpr Field unset() const { return with(&Field::start, Start::unset); }
};

namespace field {

// ---- Curves: the default is a key at 0.5 ----

constexpr Field curve(const char *kind, Place place, const char *name, Range range, double value) {
  Field row{.kind = kind, .place = place, .name = name, .labelText = name, .range = range};
  row.start = Field::Start::keys;
  row.keys[0].value = value;
  return row;
}
constexpr Field curve(Place place, const char *name, Range range, double value) {
  return curve("FloatA", place, name, range, value).colored(Field::kColorInTurn);
}
constexpr Field alpha(Place place, const char *name, double value) {
  return curve("Alpha", place, name, {0, 0, "ZodfHideCurve"}, value);
}
/// In degrees.
constexpr Field angle(Place place, const char *name, double value) {
  return curve("Angle", place, name, {0, 0, "ZodfNone"}, value);
}
/// In seconds.
constexpr Field time(Place place, const char *name, double least, double most, double value) {
  return curve("time", place, name, {least, most, "ZodfNone"}, value);
}
/// 0xAARRGGBB.
constexpr Field color(Place place, const char *name, uint32_t value) {
  Field row = curve("RGBColor", place, name, {0, 0, "ZodfHideCurve"}, 0);
  row.start = Field::Start::color;
  row.color = value;
  return row;
}

// ---- Values that do not change over time ----

/// A number with a fraction.
constexpr Field number(Place place, const char *name, Range range, double value) {
  return curve("Double", place, name, range, value);
}
constexpr Field integer(const char *kind, Place place, const char *name, Range range, int value) {
  Field row{.kind = kind, .place = place, .name = name, .labelText = name, .range = range};
  row.start = Field::Start::integer;
  row.integer = value;
  return row;
}
constexpr Field integer(Place place, const char *name, double least, double most, int value) {
  return integer("Long", place, name, {least, most, "ZodfHideCurve"}, value);
}
constexpr Field toggle(Place place, const char *name, bool value) {
  return integer("Bool", place, name, {0, 0, "ZodfNone"}, value ? 1 : 0);
}
constexpr Field choice(const char *kind, Place place, const char *name, std::span<const char *const> items,
                       int value) {
  Field row = integer(kind, place, name, {0, 0, "ZodfNone"}, value);
  row.itemTexts = items;
  return row;
}
constexpr Field selector(Place place, const char *name, std::span<const char *const> items, int value = 0) {
  return choice("Selector", place, name, items, value);
}
constexpr Field popup(Place place, const char *name, std::span<const char *const> items, int value = 0) {
  return choice("Popup", place, name, items, value);
}

// ---- What is chosen, pressed or only seen ----

/// Kind and name alone, by DataFieldAdd: "Inputs", "Dataset", "HLScolor", and others that are not labelled.
constexpr Field plain(const char *kind, Place place, const char *name) {
  return {.kind = kind, .place = place, .name = name, .plain = true, .texts = Field::Texts::none};
}
/// A colour chosen by hue, lightness and saturation; 0xAARRGGBB.
constexpr Field hlsColor(Place place, const char *name, uint32_t value) {
  Field row = plain("HLScolor", place, name);
  row.start = Field::Start::color;
  row.color = value;
  return row;
}
/// "Input", "Geometry" or "Media".
constexpr Field source(const char *kind, Place place, const char *name) {
  return {.kind = kind, .place = place, .name = name, .labelText = name, .range = {0, 0, "ZodfNone"}};
}
constexpr Field input(Place place, const char *name) { return source("Input", place, name); }
constexpr Field geometry(Place place, const char *name) { return source("Geometry", place, name); }
constexpr Field media(Place place, const char *name, const char *flags) {
  return source("Media", place, name).flags(flags);
}
constexpr Field button(Place place, const char *name) { return source("Button", place, name).flags(nullptr); }
/// A text beside other fields.
constexpr Field label(Place place, const char *name, const char *text) {
  return source("Label", place, name).label(text).flags(nullptr);
}
/// Shows its members, given by their indices, side by side and without a title.
constexpr Field row(Place place, const char *name, std::span<const int> members) {
  Field row = plain("HGroup", place, name).flags("ZodfHideName");
  row.members = members;
  return row;
}
/// The same under a title, side by side ("HGroup") or one below the other ("VGroup").
constexpr Field group(const char *kind, Place place, const char *name, std::span<const int> members) {
  Field row = source(kind, place, name);
  row.members = members;
  return row;
}

} // namespace field

/// All rows of an effect. Does not compile where a row stands elsewhere than its enumerator says.
class FieldTable {
public:
  constexpr FieldTable() = default;
  template <size_t N> consteval FieldTable(const Field (&rows)[N]) : rows_(rows) {
    for (size_t i = 0; i < N; ++i)
      if (rows[i].place.id == nullptr && rows[i].place.index != static_cast<int>(i))
        rowIsOutOfPlace();
  }
  [[nodiscard]] constexpr auto begin() const { return rows_.begin(); }
  [[nodiscard]] constexpr auto end() const { return rows_.end(); }

  /// For a variant that lacks the last field.
  [[nodiscard]] consteval FieldTable withoutLast() const {
    FieldTable rest = *this;
    rest.rows_ = rows_.first(rows_.size() - 1);
    return rest;
  }

private:
  static void rowIsOutOfPlace(); // never defined

  std::span<const Field> rows_;
};

/// What statements of one effect have in common.
struct Script {
  /// The record's variable is "obj" and ranges are written "%f,%f" rather than "0.0, 1.0".
  static constexpr unsigned kObj = 1;
  /// Sign, name and version are sent in the text that declares the record.
  static constexpr unsigned kCombinedHead = 2;
  /// Ids are stored by "*((int *)0x1234)" rather than "*(int *)0x1234", as those of "obj" are.
  static constexpr unsigned kBracketedStores = 4;
  /// Items are sent behind all fields.
  static constexpr unsigned kItemsLast = 8;
  /// The description is sent behind the icon.
  static constexpr unsigned kDescriptionLate = 16;
  /// The type is sent behind the callbacks.
  static constexpr unsigned kTypeLate = 32;

  t_ZoHostInfo *host;
  const char *section; ///< under which the host translates the effect's texts
  unsigned style;

  [[nodiscard]] bool has(unsigned bit) const { return (style & bit) != 0; }
  [[nodiscard]] const char *variable() const { return has(kObj) ? "obj" : "eff"; }
  /// The address of the host's 16-bit form of a text.
  [[nodiscard]] uintptr_t word(const char *text) const {
    return reinterpret_cast<uintptr_t>(host->Services->TranslateW(host, section, text));
  }
};

/// Sends the statements of all fields.
void declareFields(const Script &script, const FieldTable &fields);

enum class DefaultsOrder { clipsLast, asDeclared };

/// Puts one row's default on its field.
void putDefault(t_ZoHostInfo *host, const Field &field);
/// Puts every row's.
void putDefaults(t_ZoHostInfo *host, const FieldTable &fields,
                 DefaultsOrder order = DefaultsOrder::clipsLast);

/// The init callback of an effect that puts its defaults and does nothing else.
template <const auto &fields, DefaultsOrder order = DefaultsOrder::clipsLast>
int defaults(t_ZoHostInfo *host) {
  putDefaults(host, fields, order);
  return 1;
}

} // namespace zol
