// The page's files.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace zol::studio {

/// By their names, as they were when the program was compiled.
const std::map<std::string_view, std::string_view> &compiledPage();

/// What a browser is told of a file of this name; null for files that are no part of a page.
const char *contentType(std::string_view name);

} // namespace zol::studio
