#include "host/model/effect.h"

#include <algorithm>

namespace zol::host {

int Effect::fieldId(std::string_view fieldName) const {
  const auto found =
      std::find_if(fields.begin(), fields.end(), [&](const Field &field) { return field.name == fieldName; });
  return found != fields.end() ? static_cast<int>(found - fields.begin()) : -1;
}

} // namespace zol::host
