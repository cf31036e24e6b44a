#include "host/render/pictures.h"

namespace zol::host {

bool PictureLoop::step(MediaWriter &writer) {
  if (!span_.openEnd && done_ >= span_.count)
    return false;
  const double time = chain_.timeline().timeOfFrame(span_.first + done_);
  const std::shared_ptr<PictureBuffer> picture = chain_.picture(time);
  if (span_.openEnd)
    if (const auto length = leading_->length();
        length && indexAt(time, leading_->pictures()->rate()) >= *length)
      return false;
  opacity_.settle(picture->record()->Pixels, picture->pixels());
  writer.writeFrame({picture, picture->record()->Pixels});
  chain_.release();
  ++done_;
  return true;
}

} // namespace zol::host
