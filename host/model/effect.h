// What an effect declared, as plain data: all that the rest of the host knows of it.
#pragma once

#include "frame/zol.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zol::host {

/// What a field is to the host; several kinds of the script may mean the same.
enum class FieldType {
  input,    ///< one input
  inputs,   ///< a variable list of inputs
  number,   ///< a curve or a value: FloatA, Float, Double, Angle, Alpha, time
  integer,  ///< Long
  color,    ///< RGBcolor, HLScolor
  selector, ///< one of the field's items: Selector, Popup
  toggle,   ///< Bool
  button,
  label,
  group, ///< its members are shown side by side (HGroup) or one below the other (VGroup)
  geometry,
  media,
  dataset,
};

/// Bits of Field::flags.
enum Flag : unsigned {
  kMinLimit = 1u << 0,
  kMaxLimit = 1u << 1,
  kHideCurve = 1u << 2,
  kHide = 1u << 3,
  kHideName = 1u << 4,
  kHideContent = 1u << 5, ///< a group that is shown closed
  kFlatten = 1u << 6,
  kMediaVideo = 1u << 7,
  kMediaAudio = 1u << 8,
};

/// One choice of a selector.
struct Item {
  std::string text;
  int value = 0;
};

/// One data field; its place among its effect's fields is its id. Texts are UTF-8 where the library's are.
struct Field {
  FieldType type = FieldType::input;
  std::string kind; ///< as the script spells it
  std::string name;
  std::string label; ///< empty where none was given
  std::string help;
  std::optional<double> min, max;
  unsigned flags = 0;
  std::optional<uint32_t> curveColor; ///< 0xRRGGBB
  std::vector<Item> items;
  std::vector<int> members; ///< of a group: ids of fields; no field is in two groups
};

struct Icon {
  int width = 0, height = 0;
  std::vector<uint32_t> pixels; ///< width x height, row by row, 0xAARRGGBB; "None" is 0
  int colors = 0;               ///< of the XPM's colour table
  int charsPerPixel = 0;
};

struct Effect {
  std::string name; ///< the menu path
  std::string sign; ///< unique among all effects
  std::string description;
  std::string type;     ///< "Filter" or empty
  std::string iconMode; ///< DefaultIconMode
  int version = 0;
  std::optional<Icon> icon;

  t_ZoInitFn init = nullptr;
  t_ZoRenderVideoFn renderVideo = nullptr;
  t_ZoRenderVideoRTFn renderVideoRT = nullptr;
  t_ZoRenderAudioFn renderAudio = nullptr;
  t_ZoDialogOpenFn onDialogOpen = nullptr;
  t_ZoDialogItemEditFn onDialogItemEdit = nullptr;
  t_ZoProbeFn probe = nullptr;
  t_ZoInitByMediaFn initByMedia = nullptr;
  t_ZoDeleteUserDataFn deleteUserData = nullptr;
  t_ZoTrimFn trim = nullptr;

  std::vector<Field> fields;
  std::vector<std::string> statements; ///< the texts that declared it, as they were sent

  /// The id of the first field of exactly this name, or -1.
  [[nodiscard]] int fieldId(std::string_view fieldName) const;
};

} // namespace zol::host
