#include "host/render/scaled_pictures.h"

#include "host/services/resample.h"

namespace zol::host {

pic *ScaledPictures::at(pic *picture, int width, int height) {
  const auto fits = [&](const pic &one) { return one.Width == width && one.Height == height; };
  if (width <= 0 || height <= 0 || fits(*picture))
    return picture;
  for (const Made &made : made_)
    if (made.from == picture && fits(*made.picture->record()))
      return made.picture->record();
  auto scaled = PictureBuffer::makeUnwritten(width, height);
  if (scaled == nullptr)
    return nullptr;
  resample({picture->Pixels, picture->Width, picture->Width, picture->Height}, scaled->record()->Pixels,
           width, width, height);
  made_.push_back({picture, std::move(scaled)});
  return made_.back().picture->record();
}

} // namespace zol::host
