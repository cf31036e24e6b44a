#include "host/model/registry.h"

#include "host/model/names.h"
#include "host/model/text.h"

#include <algorithm>
#include <utility>

namespace zol::host {

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
  std::vector<RatedName> rated;
  for (const Effect &effect : effects_) {
    // Users type the last part of the path more often than all of it.
    const std::string name = folded(effect.name);
    std::optional<size_t> distance;
    for (const std::string &known : {name, name.substr(name.rfind('/') + 1), folded(effect.sign)})
      if (const auto other = resemblance(text, known); other && (!distance || *other < *distance))
        distance = other;
    if (distance)
      rated.emplace_back(*distance, effect.name);
  }
  return nearestOf(std::move(rated), count);
}

} // namespace zol::host
