// Fuzzes the measure of nesting that keeps the XML parser's stack within bounds: what the parser makes of a
// text is never deeper than was measured.
#include "host/geometry/xml_depth.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <rapidxml/rapidxml.hpp>
#include <string>

namespace {

int depthBelow(const rapidxml::xml_node<> *node) {
  int depth = 0;
  for (const auto *child = node->first_node(); child != nullptr; child = child->next_sibling())
    if (child->type() == rapidxml::node_element)
      depth = std::max(depth, 1 + depthBelow(child));
  return depth;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::string xml(reinterpret_cast<const char *>(data), size);
  const std::string original = xml; // the parser writes into its text
  if (zol::host::nestsDeeperThan(100, original))
    return 0;
  rapidxml::xml_document<> document;
  try {
    document.parse<0>(xml.data());
  } catch (const rapidxml::parse_error &) {
    return 0;
  }
  const int opened = depthBelow(&document) - 1; // the innermost may be empty, and is not counted then
  if (opened > 0 && !zol::host::nestsDeeperThan(opened - 1, original))
    std::abort();
  return 0;
}
