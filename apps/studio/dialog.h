// An effect's dialog as its own callbacks make it.
#pragma once

#include "apps/studio/document.h"
#include "host/render/timeline.h"

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <vector>

namespace zol::studio {

/// What the user did in the dialog.
struct DialogEvent {
  std::optional<int> edited; ///< the field: a button that was pressed, or a value that was changed
  std::vector<int> selected; ///< slots of the list of inputs
  double share = 0;          ///< where the span stands that is looked at, from 0 to 1
};

/// The values of a stage behind its callbacks, as users write them: {fields: [{value, slots, items: [{name,
/// color, value}]}], messages}. The slots of a list are files of the document. Throws Refusal for values that
/// the effect does not take.
nlohmann::json dialogOf(const DocumentStage &stage, const DialogEvent &event, const host::Timeline &timeline,
                        const std::string &identity);

} // namespace zol::studio
