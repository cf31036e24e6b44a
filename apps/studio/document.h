// What the page shows: a clip, and the effects that it goes through one after another.
#pragma once

#include "apps/studio/files.h"
#include "host/render/plan.h"
#include "host/script/library.h"

#include <cstddef>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zol::studio {

/// Files are ids of the store; empty: none chosen yet.
struct DocumentStage {
  const host::Effect *effect = nullptr;
  int clip = -1;                                  ///< the field that takes the clip
  std::map<int, std::vector<std::string>> inputs; ///< of the other input fields; a list has a file a slot
  std::vector<std::pair<std::string, std::string>> settings;
};

struct Document {
  std::string source; ///< the clip
  std::vector<DocumentStage> stages;
  std::optional<std::pair<int, int>> size;
  std::optional<double> duration; ///< seconds
};

/// Reads {source, stages: [{effect, inputs: {field: file or files}, settings: [[name, value]]}], size,
/// duration}. Throws Refusal for what is none, for effects that there are not, and for settings that would
/// read files.
Document documentIn(const nlohmann::json &json, const host::EffectLibrary &library);

/// A file of the document as a plan is to name it.
using NameFile = std::string (FileStore::*)(const std::string &id) const;

/// What renders it; without an output. Throws NothingShown for slots of a list that are empty.
host::RenderPlan planOf(const Document &document, const FileStore &files, NameFile name,
                        const std::string &identity);

/// The stages of a preset as those of a document, with what the page may not read left out.
nlohmann::json documentOf(const std::vector<host::StagePlan> &stages, const FileStore &files,
                          const host::EffectLibrary &library);

/// The plan as a line for a shell.
std::string commandOf(const host::RenderPlan &plan);

// ---- Members of JSON ----

/// Each throws Refusal for a member of another kind.
std::string textIn(const nlohmann::json &json, const char *name);
std::optional<double> numberIn(const nlohmann::json &json, const char *name);
std::optional<std::pair<int, int>> sizeIn(const nlohmann::json &json, const char *name, int longest);

} // namespace zol::studio
