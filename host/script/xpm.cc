#include "host/script/xpm.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <strings.h>
#include <unordered_map>
#include <utility>

namespace zol::host {

namespace {

constexpr int kMaxSide = 1024;
constexpr int kMaxColors = 65536;
constexpr int kMaxCharsPerPixel = 8;

/// The next word of a text, which is taken from it; empty at the end.
std::string_view takeWord(std::string_view &text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  const std::string_view word = text.substr(0, text.find_first_of(kBlanks));
  text.remove_prefix(word.size());
  return word;
}

int takeNumber(std::string_view &header, int max, const char *what) {
  const std::string_view word = takeWord(header);
  int value = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  if (error != std::errc{} || end != word.data() + word.size() || value < 1 || value > max)
    throw XpmError(std::string("icon with a bad ") + what);
  return value;
}

/// "#RGB", "#RRGGBB" or "#RRRRGGGGBBBB": the upper eight bits of each channel count.
std::optional<uint32_t> hexColor(std::string_view digits) {
  const size_t width = digits.size() / 3;
  if ((width != 1 && width != 2 && width != 4) || digits.size() != width * 3)
    return std::nullopt;
  uint32_t color = 0xFF;
  for (size_t channel = 0; channel < 3; ++channel) {
    const char *begin = digits.data() + channel * width;
    uint32_t value = 0;
    const auto [end, error] = std::from_chars(begin, begin + width, value, 16);
    if (error != std::errc{} || end != begin + width)
      return std::nullopt;
    color = color << 8 | (width == 1 ? value * 0x11 : width == 2 ? value : value >> 8);
  }
  return color;
}

std::optional<uint32_t> namedColor(const std::string &name) {
  static constexpr std::pair<const char *, uint32_t> kNames[] = {
      {"none", 0},           {"black", 0xFF000000},   {"white", 0xFFFFFFFF},
      {"red", 0xFFFF0000},   {"green", 0xFF00FF00},   {"blue", 0xFF0000FF},
      {"cyan", 0xFF00FFFF},  {"magenta", 0xFFFF00FF}, {"yellow", 0xFFFFFF00},
      {"gray", 0xFFBEBEBE},  {"grey", 0xFFBEBEBE},    {"orange", 0xFFFFA500},
      {"brown", 0xFFA52A2A},
  };
  const auto *found = std::find_if(std::begin(kNames), std::end(kNames), [&](const auto &entry) {
    return strcasecmp(entry.first, name.c_str()) == 0;
  });
  return found != std::end(kNames) ? std::optional(found->second) : std::nullopt;
}

/// The colour that a row of the table gives for colour screens: "c", then its name in one word or more, up
/// to the next key.
uint32_t tableColor(std::string_view definition) {
  constexpr std::string_view kKeys[] = {"c", "g", "g4", "m", "s"};
  std::string name;
  bool wanted = false;
  for (std::string_view word = takeWord(definition); !word.empty(); word = takeWord(definition)) {
    if (std::find(std::begin(kKeys), std::end(kKeys), word) != std::end(kKeys))
      wanted = word == "c";
    else if (wanted)
      name.append(name.empty() ? "" : " ").append(word);
  }
  const auto color = name.starts_with('#') ? hexColor(std::string_view(name).substr(1)) : namedColor(name);
  if (!color)
    throw XpmError("icon with an unknown colour");
  return *color;
}

} // namespace

XpmHeader parseXpmHeader(std::string_view header) {
  XpmHeader result;
  result.width = takeNumber(header, kMaxSide, "width");
  result.height = takeNumber(header, kMaxSide, "height");
  result.colors = takeNumber(header, kMaxColors, "number of colours");
  result.charsPerPixel = takeNumber(header, kMaxCharsPerPixel, "number of characters per pixel");
  return result;
}

Icon parseXpm(std::span<const std::string> rows) {
  if (rows.empty())
    throw XpmError("icon without a header");
  const XpmHeader header = parseXpmHeader(rows[0]);
  if (rows.size() < header.rows())
    throw XpmError("icon with too few rows");
  const auto chars = static_cast<size_t>(header.charsPerPixel);

  std::unordered_map<std::string_view, uint32_t> colors;
  for (const std::string &row : rows.subspan(1, static_cast<size_t>(header.colors))) {
    if (row.size() < chars)
      throw XpmError("icon with a malformed colour");
    const std::string_view entry = row;
    colors[entry.substr(0, chars)] = tableColor(entry.substr(chars));
  }

  Icon icon{header.width, header.height, {}, header.colors, header.charsPerPixel};
  icon.pixels.reserve(static_cast<size_t>(header.width) * static_cast<size_t>(header.height));
  for (const std::string &row :
       rows.subspan(1 + static_cast<size_t>(header.colors), static_cast<size_t>(header.height))) {
    if (row.size() != static_cast<size_t>(header.width) * chars)
      throw XpmError("icon with a row of the wrong length");
    for (size_t at = 0; at < row.size(); at += chars) {
      const auto color = colors.find(std::string_view(row).substr(at, chars));
      if (color == colors.end())
        throw XpmError("icon with a pixel that is not in its colour table");
      icon.pixels.push_back(color->second);
    }
  }
  return icon;
}

} // namespace zol::host
