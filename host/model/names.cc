#include "host/model/names.h"

#include "host/model/text.h"

#include <algorithm>
#include <numeric>

namespace zol::host {
namespace {

/// How many characters must be inserted, removed or replaced to make `b` of `a`.
size_t editDistance(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 0; i < a.size(); ++i) {
    size_t diagonal = std::exchange(row[0], i + 1);
    for (size_t j = 0; j < b.size(); ++j) {
      const size_t replaced = diagonal + (a[i] != b[j]);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

/// A distance beyond this is no resemblance.
size_t tolerance(std::string_view wanted) { return std::max<size_t>(2, wanted.size() / 3); }

} // namespace

std::optional<size_t> resemblance(std::string_view wanted, std::string_view candidate) {
  const size_t distance = editDistance(wanted, candidate);
  return distance <= tolerance(wanted) ? std::optional(distance) : std::nullopt;
}

std::vector<std::string> nearestOf(std::vector<RatedName> rated, size_t count) {
  std::stable_sort(rated.begin(), rated.end(),
                   [](const RatedName &a, const RatedName &b) { return a.first < b.first; });
  rated.resize(std::min(rated.size(), count));
  std::vector<std::string> names;
  for (RatedName &entry : rated)
    names.push_back(std::move(entry.second));
  return names;
}

std::vector<std::string> nearestNames(std::string_view wanted, std::span<const std::string> candidates,
                                      size_t count) {
  const std::string text = folded(wanted);
  std::vector<RatedName> rated;
  for (const std::string &candidate : candidates)
    if (const auto distance = resemblance(text, folded(candidate)))
      rated.emplace_back(*distance, candidate);
  return nearestOf(std::move(rated), count);
}

} // namespace zol::host
