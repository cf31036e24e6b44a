// Fuzzes SVG texts: whatever they are, an error with a place in it or finite contours that join.
#include "host/geometry/svg.h"
#include "tests/fuzz/contours.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string_view text(reinterpret_cast<const char *>(data), size);
  try {
    zol::host::fuzz::check(zol::host::readSvg(text).geometry);
  } catch (const zol::host::GeometryError &error) {
    zol::host::fuzz::require(error.position <= size);
  }
  return 0;
}
