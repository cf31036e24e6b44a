#include "host/render/pictures.h"

namespace zol::host {

bool PictureLoop::step(MediaWriter &writer) {
  const size_t frame = span_.first + done_;
  // No effect need look at the input whose end this is.
  if (done_ >= span_.count && !(span_.openEnd && leading_->reaches(frame)))
    return false;
  const auto picture = chain_.picture(chain_.timeline().timeOfFrame(frame));
  if (leading_ != nullptr && frame >= leading_->length().value_or(UINT64_MAX))
    return false;
  writer.writeFrame(picture->record()->Pixels);
  chain_.release();
  ++done_;
  return true;
}

} // namespace zol::host
