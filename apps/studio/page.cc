#include "apps/studio/page.h"

#include <utility>

namespace zol::studio {

const char *contentType(std::string_view name) {
  constexpr std::pair<std::string_view, const char *> kTypes[] = {
      {".html", "text/html; charset=utf-8"},
      {".js", "text/javascript; charset=utf-8"},
      {".css", "text/css; charset=utf-8"},
      {".svg", "image/svg+xml"},
  };
  for (const auto &[extension, type] : kTypes)
    if (name.ends_with(extension))
      return type;
  return nullptr;
}

} // namespace zol::studio
