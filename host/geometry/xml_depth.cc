// The XML parser recurses into elements, so their depth is measured before it runs. What looks like a tag
// within a comment, a character section or a quoted value must not count: it would hide others.

#include "host/geometry/xml_depth.h"

#include <algorithm>

namespace zol::host {
namespace {

constexpr std::string_view kSpace = " \t\r\n";

size_t past(std::string_view xml, std::string_view end, size_t from) {
  const size_t at = xml.find(end, from);
  return at == xml.npos ? xml.size() : at + end.size();
}

/// A document type's end; within brackets other declarations stand.
size_t pastType(std::string_view xml, size_t at) {
  for (int brackets = 0; at < xml.size(); ++at) {
    if (xml[at] == '>' && brackets == 0)
      return at + 1;
    brackets += xml[at] == '[' ? 1 : xml[at] == ']' && brackets > 0 ? -1 : 0;
  }
  return at;
}

/// The place of the > or / that ends an element's start, or the size of the text.
size_t endOfAttributes(std::string_view xml, size_t at) {
  at = xml.find_first_of(" \t\r\n/>", at); // after the element's name
  while ((at = xml.find_first_not_of(kSpace, at)) < xml.size() && xml[at] != '>' && xml[at] != '/') {
    const size_t quote = xml.find_first_of("'\"", xml.find('=', at));
    if (quote == xml.npos)
      return xml.size();
    at = past(xml, xml.substr(quote, 1), quote + 1);
  }
  return std::min(at, xml.size());
}

} // namespace

bool nestsDeeperThan(int limit, std::string_view xml) {
  int depth = 0;
  for (size_t at = 0; (at = xml.find('<', at)) < xml.size();) {
    const std::string_view rest = xml.substr(at);
    if (rest.starts_with("</")) {
      --depth;
      ++at;
    } else if (rest.starts_with("<?")) {
      at = past(xml, "?>", at + 2);
    } else if (rest.starts_with("<!--")) {
      at = past(xml, "-->", at + 4);
    } else if (rest.starts_with("<![CDATA[")) {
      at = past(xml, "]]>", at + 9);
    } else if (rest.starts_with("<!DOCTYPE") && rest.substr(0, 10).find_first_of(kSpace) == 9) {
      at = pastType(xml, at + 9);
    } else if (rest.starts_with("<!")) {
      at = past(xml, ">", at + 2);
    } else {
      at = endOfAttributes(xml, at + 1);
      if (at < xml.size() && xml[at] == '>' && ++depth > limit)
        return true;
    }
  }
  return false;
}

} // namespace zol::host
