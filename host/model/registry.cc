#include "host/model/registry.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace zol::host {

namespace {

std::string folded(std::string_view text) {
  std::string result(text);
  for (char &c : result)
    if (c >= 'A' && c <= 'Z')
      c = static_cast<char>(c - 'A' + 'a');
  return result;
}

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

using Rated = std::pair<size_t, std::string>;

std::vector<std::string> best(std::vector<Rated> rated, size_t count) {
  std::stable_sort(rated.begin(), rated.end(),
                   [](const Rated &a, const Rated &b) { return a.first < b.first; });
  rated.resize(std::min(rated.size(), count));
  std::vector<std::string> names;
  for (Rated &entry : rated)
    names.push_back(std::move(entry.second));
  return names;
}

} // namespace

int Effect::fieldId(std::string_view fieldName) const {
  const auto found =
      std::find_if(fields.begin(), fields.end(), [&](const Field &field) { return field.name == fieldName; });
  return found != fields.end() ? static_cast<int>(found - fields.begin()) : -1;
}

Effect &Registry::add(Effect effect) {
  const auto same = std::find_if(effects_.begin(), effects_.end(),
                                 [&](const Effect &other) { return other.sign == effect.sign; });
  if (same != effects_.end())
    return *same = std::move(effect);
  return effects_.emplace_back(std::move(effect));
}

std::vector<const Effect *> Registry::matches(std::string_view wanted) const {
  std::vector<const Effect *> exact, fromSlash, anyEnd;
  const std::string end = folded(wanted);
  for (const Effect &effect : effects_) {
    if (effect.name == wanted || effect.sign == wanted)
      exact.push_back(&effect);
    const std::string name = folded(effect.name);
    if (end.empty() || !name.ends_with(end))
      continue;
    anyEnd.push_back(&effect);
    if (name.size() == end.size() || name[name.size() - end.size() - 1] == '/')
      fromSlash.push_back(&effect);
  }
  return !exact.empty() ? exact : !fromSlash.empty() ? fromSlash : anyEnd;
}

const Effect *Registry::find(std::string_view wanted) const {
  const std::vector<const Effect *> found = matches(wanted);
  return found.size() == 1 ? found[0] : nullptr;
}

std::vector<std::string> Registry::nearest(std::string_view wanted, size_t count) const {
  const std::string text = folded(wanted);
  std::vector<Rated> rated;
  for (const Effect &effect : effects_) {
    // Users type the last part of the path more often than all of it.
    const std::string name = folded(effect.name);
    const std::string_view last = std::string_view(name).substr(name.rfind('/') + 1);
    const size_t distance = std::min(
        {editDistance(text, name), editDistance(text, last), editDistance(text, folded(effect.sign))});
    if (distance <= tolerance(text))
      rated.emplace_back(distance, effect.name);
  }
  return best(std::move(rated), count);
}

std::vector<std::string> nearestNames(std::string_view wanted, std::span<const std::string> candidates,
                                      size_t count) {
  const std::string text = folded(wanted);
  std::vector<Rated> rated;
  for (const std::string &candidate : candidates)
    if (const size_t distance = editDistance(text, folded(candidate)); distance <= tolerance(text))
      rated.emplace_back(distance, candidate);
  return best(std::move(rated), count);
}

} // namespace zol::host
