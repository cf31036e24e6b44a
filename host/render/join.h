// Parts of a render become the film.
#pragma once

#include "host/render/render.h"

#include <string>
#include <vector>

namespace zol::host {

struct JoinPlan {
  std::vector<std::string> parts; ///< files, in any order; or the one name of all numbered pictures
  std::string output;             ///< empty with those: they stay as they are
  bool overwrite = false;
  MediaPrograms programs;
};

/// Copies the pictures of all parts one after another and adds what else a render of the whole has: sound,
/// tracks, timecode, tags; of numbered pictures it looks whether all are there. What is left out, a line
/// each. Throws HostError, before anything is written, where the files are not exactly the parts of one
/// render, or the output cannot take their pictures.
std::vector<std::string> join(const JoinPlan &plan, const Progress &progress);

} // namespace zol::host
