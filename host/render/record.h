// Effects and fields as JSON, for programs that ask for them.
#pragma once

#include "host/model/effect.h"

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace zol::host {

/// What users can give a field, in a few words.
std::string takenBy(const Field &field);

/// Whether a field is no value that users set by its name.
bool isHidden(const Field &field);

/// Names, sign, version and what it renders.
nlohmann::json effectRecord(const Effect &effect);
/// All that is declared of a field, with its default as users would write it.
nlohmann::json fieldRecord(const Effect &effect, const Field &field, const std::string &value);

} // namespace zol::host
