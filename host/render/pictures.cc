#include "host/render/pictures.h"

namespace zol::host {

bool PictureLoop::has(size_t place) const {
  // No effect need look at the input whose end this is.
  return place < span_.count || (span_.openEnd && leading_->reaches(span_.first + place));
}

PictureLoop::Made PictureLoop::make(Chain &chain, size_t place) const {
  std::shared_ptr<PictureBuffer> picture = chain.picture(chain.timeline().timeOfFrame(span_.first + place));
  const bool transparent = opacity_.settle(picture->record()->Pixels, picture->pixels());
  chain.release();
  return {std::move(picture), transparent, chain.metEnd(leading_)};
}

std::optional<PictureLoop::Made> PictureLoop::next() {
  if (threads_.count == 1 || done_ == 0)
    return make(chain_, done_);
  if (others_ == nullptr)
    others_ = share<size_t, Made>(
        threads_, [this] { return has(shared_) ? std::optional(shared_++) : std::nullopt; },
        [this](Chain &chain, size_t place, const auto &handOn) { handOn(make(chain, place)); });
  return others_->take();
}

bool PictureLoop::step(MediaWriter &writer) {
  if (!goesOn())
    return false;
  const std::optional<Made> made = next();
  if (!made)
    return false;
  // Other threads may know of the end before a picture has met it.
  metEnd_ = metEnd_ || made->metEnd;
  if (metEnd_ && span_.first + done_ >= leading_->length().value_or(UINT64_MAX))
    return false;
  opacity_.tell(made->transparent);
  writer.writeFrame({made->picture, made->picture->record()->Pixels});
  ++done_;
  return true;
}

} // namespace zol::host
