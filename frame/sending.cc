// The border: the exported functions that carry statements to the host, and the small exports beside them.

#include "frame/export.h"
#include "frame/zol.h"

#include <cstdarg>
#include <cstdio>
#include <locale.h>

namespace {

constexpr size_t kStatementSize = 65536;

/// Numbers in statements carry a decimal point whatever the locale of the host's thread.
class PointLocale {
public:
  PointLocale()
      : numeric_(newlocale(LC_NUMERIC_MASK, "C", nullptr)),
        previous_(numeric_ != nullptr ? uselocale(numeric_) : nullptr) {}
  ~PointLocale() {
    if (numeric_ != nullptr) {
      uselocale(previous_);
      freelocale(numeric_);
    }
  }
  PointLocale(const PointLocale &) = delete;
  PointLocale &operator=(const PointLocale &) = delete;

private:
  locale_t numeric_;
  locale_t previous_;
};

/// Formats into a buffer of kStatementSize bytes; false when the text does not fit or is malformed.
[[gnu::format(printf, 2, 0)]] bool formatStatement(char *buffer, const char *format, va_list arguments) {
  const PointLocale locale;
  const int length = vsnprintf(buffer, kStatementSize, format, arguments);
  return length >= 0 && static_cast<size_t>(length) < kStatementSize;
}

} // namespace

ZOL_EXPORT long long ZoScriptExecuteHi(t_ZoHostInfo *host, const char *format, ...) {
  char statement[kStatementSize];
  va_list arguments;
  va_start(arguments, format);
  const bool fits = formatStatement(statement, format, arguments);
  va_end(arguments);
  return fits ? host->Services->ScriptExecuteHi(host, host, statement) : 0;
}

ZOL_EXPORT int ZoScriptExecute(t_ZoHostInfo *host, const char *format, ...) {
  char statement[kStatementSize];
  va_list arguments;
  va_start(arguments, format);
  const bool fits = formatStatement(statement, format, arguments);
  va_end(arguments);
  return fits ? host->Services->ScriptExecute(host, statement) : 0;
}

ZOL_EXPORT const char *LangSubstring(int language) {
  switch (language) {
  case 1: return "RU";
  case 2: return "DE";
  default: return "EN";
  }
}

// Hooks that hosts of debug builds replace; here they do nothing.
ZOL_EXPORT void debug(...) {}
ZOL_EXPORT void message(...) {}
