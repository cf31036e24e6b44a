// What effects ask of the host by statement while they work.
#pragma once

#include <string_view>

namespace zol::host {

/// Answers "ZoMediaInfo( 0x1000, 0x2000 );", a clip and where to write what is known of it: 1 where something
/// is, else 0. All other statements are answered by 0.
long long answerQuery(std::string_view statement);

} // namespace zol::host
