// Parts of a render: stretches of its pictures in files of their own, which are joined later.
#pragma once

#include "host/media/part_file.h"
#include "host/render/chain.h"
#include "host/render/plan.h"
#include "host/script/library.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zol::host {

/// What a part tells of itself: as a tag of its file, and of numbered pictures in a file beside.
struct PartRecord {
  std::string hash; ///< over all that decides the pictures
  int number = 1, count = 1;
  uint64_t first = 0, frames = 0, all = 0; ///< its first frame and how many there are, of all of the render's
  std::string codec; ///< of the pictures, as EncodingChoice has it; empty: by the options
  RenderPlan plan;   ///< of the whole film, with absolute paths
};

/// Before its frames are known. `plan` has a part. Throws HostError for plans of which parts cannot be
/// rendered.
PartRecord recordOf(const RenderPlan &plan, const EffectLibrary &library);

/// The plan by which the part is rendered: its own file, pictures alone.
RenderPlan planOfPart(const RenderPlan &plan, const PartRecord &record);

/// Where the part goes.
const std::string &fileOfPart(const RenderPlan &plan);

/// Gives the record its frames of those of a span: frames floor(all * (number - 1) / count) on. Throws
/// HostError where there are fewer frames than parts.
void cutPart(PartRecord &record, uint64_t first, uint64_t all);

/// The name of the tag.
extern const char kPartTag[];
std::string textOf(const PartRecord &record);
/// Nothing for texts of other origin.
std::optional<PartRecord> recordIn(const std::string &text);

/// Whether the part that the plan asks for is there, complete, from the same plan.
bool isDone(const RenderPlan &plan, const EffectLibrary &library);

// ---- Records beside numbered pictures ----

/// Writes one beside its pictures; those of other renders into the same files go.
void keepRecord(const std::string &pictures, const PartRecord &record);
/// The records of parts whose pictures are all there as they were written.
std::vector<PartRecord> recordsBeside(const std::string &pictures);
/// Removes all of them.
void dropRecords(const std::string &pictures);

/// The plan with paths that hold in any folder.
RenderPlan withAbsolutePaths(RenderPlan plan, const EffectLibrary &library);

} // namespace zol::host
