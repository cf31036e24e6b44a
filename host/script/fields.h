// The kinds and flags of data fields, and what the statements do with fields.
#pragma once

#include "host/model/effect.h"
#include "host/script/value.h"

#include <optional>
#include <string_view>

namespace zol::host {

/// The bits that a flag's name stands for.
std::optional<unsigned> flagBits(std::string_view name);

// Each takes the arguments of one call of the script and answers its value; throws ScriptError.
FieldId addField(Arguments &arguments);
Done addItemByName(Arguments &arguments);
Done addItemById(Arguments &arguments);
Done addMemberByName(Arguments &arguments);
Done addMemberById(Arguments &arguments);
Done setHelpByName(Arguments &arguments);
Done setHelpById(Arguments &arguments);

} // namespace zol::host
