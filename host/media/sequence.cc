#include "host/media/sequence.h"

#include "host/model/text.h"

#include <filesystem>
#include <regex>
#include <set>
#include <system_error>

namespace zol::host {
namespace {

std::string withDoubledPercents(const std::string &text) {
  std::string doubled;
  for (const char c : text)
    doubled.append(c == '%' ? 2 : 1, c);
  return doubled;
}

std::string withSinglePercents(const std::string &text) {
  std::string single;
  for (size_t i = 0; i < text.size(); ++i) {
    single += text[i];
    if (text.compare(i, 2, "%%") == 0)
      ++i;
  }
  return single;
}

} // namespace

std::string PictureSequence::file(int number) const {
  return before + paddedText(static_cast<uint64_t>(number), digits) + after;
}

std::optional<PictureSequence> sequenceNamed(const std::string &name) {
  namespace fs = std::filesystem;
  const fs::path path(name);
  const std::string last = path.filename().string();
  static const std::regex parts("((?:[^%]|%%)*)%(0[1-9])?d((?:[^%]|%%)*)");
  std::smatch found;
  if (!std::regex_match(last, found, parts))
    return std::nullopt;
  const std::string before = withSinglePercents(found[1]), after = withSinglePercents(found[3]);
  const size_t width = found[2].matched ? static_cast<size_t>(found[2].str()[1] - '0') : 1;

  std::set<int> numbers;
  const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    const std::string file = entry->path().filename().string();
    if (file.size() < before.size() + width + after.size() || !file.starts_with(before) ||
        !file.ends_with(after))
      continue;
    const std::string digits = file.substr(before.size(), file.size() - before.size() - after.size());
    const auto number = integerIn(digits);
    if (digits.find_first_not_of("0123456789") == std::string::npos && number &&
        (digits.size() == width || digits[0] != '0'))
      numbers.insert(*number);
  }
  if (numbers.empty())
    return std::nullopt;
  PictureSequence sequence;
  sequence.first = *numbers.begin();
  for (const int number : numbers)
    if (number == sequence.first + sequence.count)
      ++sequence.count;
  sequence.goesOn = static_cast<size_t>(sequence.count) < numbers.size();
  const std::string parent = name.substr(0, name.size() - last.size());
  sequence.pattern = withDoubledPercents(parent) + last;
  sequence.before = parent + before;
  sequence.after = after;
  sequence.digits = width;
  return sequence;
}

} // namespace zol::host
