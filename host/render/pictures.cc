#include "host/render/pictures.h"

namespace zol::host {

bool PictureLoop::goesOn() const {
  // No effect need look at the input whose end this is.
  return done_ < span_.count || (span_.openEnd && leading_->reaches(span_.first + done_));
}

bool PictureLoop::step(MediaWriter &writer) {
  if (!goesOn())
    return false;
  const size_t frame = span_.first + done_;
  const std::shared_ptr<PictureBuffer> picture = chain_.picture(chain_.timeline().timeOfFrame(frame));
  if (leading_ != nullptr && frame >= leading_->length().value_or(UINT64_MAX))
    return false;
  opacity_.settle(picture->record()->Pixels, picture->pixels());
  writer.writeFrame({picture, picture->record()->Pixels});
  chain_.release();
  ++done_;
  return true;
}

} // namespace zol::host
