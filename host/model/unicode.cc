#include "host/model/unicode.h"

#include <iterator>
#include <utf8.h>

namespace zol::host {
namespace {

constexpr char16_t kReplacement = 0xFFFD;

bool leads(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
bool trails(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

} // namespace

std::string toUtf8(std::u16string_view text) {
  std::u16string whole(text);
  for (size_t i = 0; i < whole.size(); ++i) {
    if (leads(whole[i]) && i + 1 < whole.size() && trails(whole[i + 1]))
      ++i;
    else if (leads(whole[i]) || trails(whole[i]))
      whole[i] = kReplacement;
  }
  std::string result;
  utf8::utf16to8(whole.begin(), whole.end(), std::back_inserter(result));
  return result;
}

std::u16string toUtf16(std::string_view text) {
  std::string whole;
  utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(whole), kReplacement);
  std::u16string result;
  utf8::utf8to16(whole.begin(), whole.end(), std::back_inserter(result));
  return result;
}

} // namespace zol::host
