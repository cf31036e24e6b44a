#include "bridges/catalogue/catalogue.h"

#include "host/model/text.h"

#include <algorithm>

namespace zol::bridge {

const host::EffectLibrary &catalogue() {
  static const auto &library = *new host::EffectLibrary(ZoDeclare, "Halvenor");
  return library;
}

std::string lastWord(const std::string &path) { return path.substr(path.rfind('/') + 1); }

std::string identifier(const std::string &path) {
  std::string text = host::folded(path.substr(0, path.find('/')) + '_' + lastWord(path));
  std::replace(text.begin(), text.end(), ' ', '_');
  return text;
}

} // namespace zol::bridge
