// What a picture file says of its picture beside the pixels: JPEG, PNG, WebP and TIFF.
#pragma once

#include <istream>
#include <optional>
#include <string>

namespace zol::host {

/// How ffmpeg decodes it.
struct DecodedPicture {
  int width, height;
  std::string format, codec, pixels; ///< as ffprobe names them
};

struct PictureHeader {
  int orientation = 1;      ///< As Exif counts: 1 is upright, from 5 on width and height change places.
  bool otherColors = false; ///< Its colour profile is none of sRGB.
  /// Told of usual JPEG and PNG files with square pixels; of all others only decoding tells.
  std::optional<DecodedPicture> decoded;
};

/// Of a file of any other kind: as if it said nothing. Broken ones likewise.
PictureHeader readPictureHeader(std::istream &file);

} // namespace zol::host
