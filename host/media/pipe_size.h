// How much a pipe holds.
#pragma once

namespace zol::host {

/// Lets a pipe hold 1 MiB, or as near to it as the system allows; either end will do.
void enlargePipe(int descriptor);

} // namespace zol::host
