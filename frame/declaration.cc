#include "frame/declaration.h"

#include <strings.h>

namespace zol {

bool hostIs(const t_ZoHostInfo *host, const char *name) { return strcasecmp(host->Identity, name) == 0; }

void Declaration::begin(const char *sign, const char *name, int version) const {
  send("ZoEffect %s;", variable_);
  send("%s.Sign = \"%s\";", variable_, sign);
  send("%s.Name = \"%s\";", variable_, name);
  send("%s.Version = %d;", variable_, version);
}

void Declaration::beginCombined(const char *name, const char *sign, unsigned version) const {
  send("ZoEffect %s; %s.Name = \"%s\"; %s.Sign = \"%s\"; %s.Version = 0x%X;", variable_, variable_, name,
       variable_, sign, variable_, version);
}

void Declaration::description(const char *text) const {
  send("%s.Description = (char *)" ZOL_ADDRESS ";", variable_, address(text));
}

void Declaration::descriptionW(const char *text) const {
  send("%s.DescriptionW = (word *)" ZOL_ADDRESS ";", variable_, word(text));
}

void Declaration::icon(const char *const *xpm) const {
  send("%s.Icon = ZoPicFromXPM( " ZOL_ADDRESS " );", variable_, address(xpm));
}

void Declaration::iconMode(const char *mode) const { send("%s.DefaultIconMode = \"%s\";", variable_, mode); }

void Declaration::type(const char *type) const { send("%s.Type = \"%s\";", variable_, type); }

uintptr_t Declaration::word(const char *text) const {
  return address(host_->Services->TranslateW(host_, section_, text));
}

void Declaration::item(int id, const char *text, unsigned value) const {
  send("DataFieldSelItemAddById( &%s.df, %d, (word *)" ZOL_ADDRESS ", 0x%X );", variable_, id, word(text),
       value);
}

void Declaration::help(int id, const char *text) const {
  send("ZoDataFieldHelpbyId( &%s.df, %d, (word *)" ZOL_ADDRESS " );", variable_, id, word(text));
}

void Declaration::end() const { send("EffectAdd( %s );", variable_); }

void Declaration::member(const char *name, uintptr_t value) const {
  send("%s.%s = " ZOL_ADDRESS ";", variable_, name, value);
}

} // namespace zol
