// The effects as the page is told of them.
#pragma once

#include "host/script/library.h"

#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace zol::studio {

/// The input field that takes the clip that an effect is applied to; -1 where there is none.
int clipField(const host::Effect &effect, const std::string &identity);

class Catalogue {
public:
  explicit Catalogue(const host::EffectLibrary &library);

  /// An array of all effects in the order of their declaration, as JSON.
  [[nodiscard]] const std::string &effects() const { return effects_; }

  /// An icon as PNG; null where there is none of that number.
  [[nodiscard]] const std::string *icon(size_t effect) const;

private:
  std::string effects_;
  std::map<size_t, std::string> icons_;
};

} // namespace zol::studio
