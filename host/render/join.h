// Parts of a render become the film.
#pragma once

#include "host/render/render.h"

#include <string>
#include <vector>

namespace zol::host {

struct JoinPlan {
  std::vector<std::string> parts; ///< files, in any order
  std::string output;
  bool overwrite = false;
  MediaPrograms programs;
};

/// Copies the pictures of all parts one after another and adds what else a render of the whole has: sound,
/// tracks, timecode, tags. What is left out, a line each. Throws HostError, before anything is written, where
/// the files are not exactly the parts of one render, or the output cannot take their pictures.
std::vector<std::string> join(const JoinPlan &plan, const Progress &progress);

} // namespace zol::host
