// Memory of pictures that are done with, kept for those that come next.
#pragma once

#include <cstddef>

namespace zol::host {

/// How much is kept, of all threads together: nothing at first, so that tools which watch memory see every
/// picture come and go. A program that renders frame after frame says more.
void keepPictureMemory(size_t bytes);

/// Null where memory runs out. Contents are whatever was there.
void *unwrittenPictureMemory(size_t bytes);
/// The same, all 0.
void *clearPictureMemory(size_t bytes);
/// `bytes` as it was asked for; null is none.
void releasePictureMemory(void *memory, size_t bytes);

} // namespace zol::host
