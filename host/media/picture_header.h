// What a picture file says of its picture beside the pixels: JPEG, PNG, WebP and TIFF.
#pragma once

#include <istream>

namespace zol::host {

struct PictureHeader {
  int orientation = 1;      ///< As Exif counts: 1 is upright, from 5 on width and height change places.
  bool otherColors = false; ///< Its colour profile is none of sRGB.
};

/// Of a file of any other kind: as if it said nothing. Broken ones likewise.
PictureHeader readPictureHeader(std::istream &file);

} // namespace zol::host
