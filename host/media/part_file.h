// What a Matroska file of pictures tells of itself to those who join several.
#pragma once

#include "host/media/probe.h"

#include <string>

namespace zol::host {

struct PartFile {
  std::string tag;       ///< the wanted one of the file; empty: it has none
  std::string codec;     ///< of its pictures, as ffprobe names it
  std::string extradata; ///< a sum over what a decoder is told first
  std::string encoder;   ///< what that tells of itself
  int delay = 0;         ///< pictures by which decoding leads
};

/// Reads a file and a tag of it. Throws HostError for what cannot be read and for what is no whole Matroska
/// file with pictures.
PartFile readPartFile(const std::string &file, const std::string &tag, const MediaPrograms &programs);

} // namespace zol::host
