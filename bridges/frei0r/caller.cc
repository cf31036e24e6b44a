#include "bridges/frei0r/caller.h"

#include <dlfcn.h>
#include <string_view>

namespace zol::bridge {

Caller callerAt(const void *returnAddress) {
  Dl_info known{};
  if (dladdr(returnAddress, &known) == 0 || known.dli_fname == nullptr)
    return Caller::usual;
  std::string_view file = known.dli_fname;
  file.remove_prefix(file.rfind('/') + 1);
  // The program itself where it is linked in whole.
  for (const char *name : {"libavfilter", "ffmpeg", "ffplay"})
    if (file.starts_with(name))
      return Caller::ffmpeg;
  return file.starts_with("libmltfrei0r") ? Caller::mlt : Caller::usual;
}

size_t rowStep(Caller caller, size_t width) {
  constexpr size_t kPadded = 16; // pixels
  return caller == Caller::ffmpeg ? (width + kPadded - 1) / kPadded * kPadded : width;
}

} // namespace zol::bridge
