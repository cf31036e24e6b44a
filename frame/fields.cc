#include "frame/fields.h"

#include "frame/address.h"
#include "frame/host.h"

#include <cmath>
#include <cstdio>

namespace zol {
namespace {

constexpr int kCurveColors[] = {0xFFFF00, 0xFF00FF, 0x7FFF7F, 0x7F3F7F};

/// The digits behind the point that a limit needs, at least one.
int decimals(double limit) {
  int digits = 1;
  for (double scaled = limit * 10; digits < 6 && std::fabs(scaled - std::nearbyint(scaled)) > 1e-6;
       scaled *= 10)
    ++digits;
  return digits;
}

/// Adds the field. Its id is stored where the row says, or in `id` where later statements need it.
void declareField(const Script &script, const Field &field, int color, int *id) {
  const bool byId =
      field.texts != Field::Texts::verbatim && (field.helpText != nullptr || !field.itemTexts.empty());
  char store[48] = "", label[160] = "", head[512], tail[96];
  if (field.place.id != nullptr || byId) {
    const bool brackets = script.has(Script::kObj | Script::kBracketedStores);
    std::snprintf(store, sizeof store,
                  brackets ? "*((int *)" ZOL_ADDRESS ") = " : "*(int *)" ZOL_ADDRESS " = ",
                  address(field.place.id != nullptr ? field.place.id : id));
  }
  if (field.texts == Field::Texts::verbatim)
    std::snprintf(label, sizeof label, ", \"%s\"", field.labelText);
  else if (field.texts == Field::Texts::translated)
    std::snprintf(label, sizeof label, ", (word *)" ZOL_ADDRESS, script.word(field.labelText));
  std::snprintf(head, sizeof head, "%s%sDataFieldAdd( &%s.df, \"%s\", \"%s\"%s", store,
                field.plain ? "" : "Zo", script.variable(), field.kind, field.name, label);

  const char *flags = field.range.flags;
  if (color >= 0)
    std::snprintf(tail, sizeof tail, ", %s, 0x%X );", flags, static_cast<unsigned>(color));
  else
    std::snprintf(tail, sizeof tail, "%s%s );", flags != nullptr ? ", " : "", flags != nullptr ? flags : "");

  const auto &[least, most, ignored] = field.range;
  if (least == 0 && most == 0)
    ZoScriptExecuteHi(script.host, "%s%s", head, tail);
  else if (script.has(Script::kObj))
    ZoScriptExecuteHi(script.host, "%s, %f,%f%s", head, least, most, tail);
  else
    ZoScriptExecuteHi(script.host, "%s, %.*f, %.*f%s", head, decimals(least), least, decimals(most), most,
                      tail);
}

void declareHelp(const Script &script, const Field &field, int id) {
  if (field.helpText == nullptr)
    return;
  if (field.texts == Field::Texts::verbatim)
    ZoScriptExecuteHi(script.host, "ZoDataFieldHelp( &%s.df, \"%s\", \"%s\" );", script.variable(),
                      field.name, field.helpText);
  else
    ZoScriptExecuteHi(script.host, "ZoDataFieldHelpbyId( &%s.df, %d, (word *)" ZOL_ADDRESS " );",
                      script.variable(), id, script.word(field.helpText));
}

void declareItems(const Script &script, const Field &field, int id) {
  unsigned value = 0;
  for (const char *item : field.itemTexts) {
    if (field.texts == Field::Texts::verbatim)
      ZoScriptExecuteHi(script.host, "DataFieldSelItemAdd( &%s.df, \"%s\", \"%s\", 0x%X );",
                        script.variable(), field.name, item, value);
    else
      ZoScriptExecuteHi(script.host, "DataFieldSelItemAddById( &%s.df, %d, (word *)" ZOL_ADDRESS ", 0x%X );",
                        script.variable(), id, script.word(item), value);
    ++value;
  }
}

int idOf(const Field &field) { return field.place.id != nullptr ? *field.place.id : field.place.index; }

} // namespace

void declareFields(const Script &script, const FieldTable &fields) {
  size_t curves = 0;
  for (const Field &field : fields) {
    const int color = field.curveColor == Field::kColorInTurn
                          ? kCurveColors[curves++ % std::size(kCurveColors)]
                          : field.curveColor;
    int stored = field.place.index;
    declareField(script, field, color, &stored);
    const int id = field.place.id != nullptr ? *field.place.id : stored;
    declareHelp(script, field, id);
    if (!script.has(Script::kItemsLast))
      declareItems(script, field, id);
    for (const int member : field.members)
      ZoScriptExecuteHi(script.host, "DataFieldGroupItemAdd( &%s.df, \"%s\", 0x%X );", script.variable(),
                        field.name, static_cast<unsigned>(member));
  }
  if (script.has(Script::kItemsLast))
    for (const Field &field : fields)
      declareItems(script, field, idOf(field));
}

void putDefault(t_ZoHostInfo *host, const Field &field) {
  const int id = idOf(field);
  switch (field.start) {
  case Field::Start::unset: break;
  case Field::Start::clip: setDefaultInput(host, id); break;
  case Field::Start::integer: host->Services->ParamSetInt(host, id, 0, field.integer); break;
  case Field::Start::keys:
    for (int k = 0; k < field.keyCount; ++k)
      host->Services->ParamSetFloat(host, id, 0, field.keys[k].time, field.keys[k].value);
    break;
  case Field::Start::color: {
    const uint32_t color = field.color;
    const _color_t pixel = {uint8_t(color), uint8_t(color >> 8), uint8_t(color >> 16), uint8_t(color >> 24)};
    host->Services->ParamSetColor(host, id, 0, &pixel, field.keys[0].time);
    break;
  }
  }
}

void putDefaults(t_ZoHostInfo *host, const FieldTable &fields, DefaultsOrder order) {
  const bool late = order == DefaultsOrder::clipsLast;
  for (const Field &field : fields)
    if (!late || field.start != Field::Start::clip)
      putDefault(host, field);
  for (const Field &field : fields)
    if (late && field.start == Field::Start::clip)
      putDefault(host, field);
}

} // namespace zol
