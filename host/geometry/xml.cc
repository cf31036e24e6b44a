#include "host/geometry/xml.h"

#include "host/geometry/geometry.h"
#include "host/model/unicode.h"

#include <algorithm>
#include <charconv>

namespace zol::host {
namespace {

constexpr size_t kDeepest = 2000; // nested elements

constexpr std::string_view kSpace = " \t\r\n";

/// What stands between & and ; as a character; 0 where it is none.
char32_t referred(std::string_view reference) {
  constexpr std::pair<std::string_view, char32_t> kNamed[] = {
      {"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"apos", '\''}, {"quot", '"'}};
  for (const auto &[name, character] : kNamed)
    if (reference == name)
      return character;
  if (!reference.starts_with('#'))
    return 0;
  const bool hex = reference.starts_with("#x");
  reference.remove_prefix(hex ? 2 : 1);
  uint32_t code = 0;
  const char *end = reference.data() + reference.size();
  const auto [last, error] = std::from_chars(reference.data(), end, code, hex ? 16 : 10);
  return error == std::errc() && last == end && code <= 0x10ffff ? char32_t{code} : 0;
}

void append(std::string &text, char32_t character) {
  std::u16string units(1, static_cast<char16_t>(character));
  if (character > 0xffff)
    units = {static_cast<char16_t>(0xd7c0 + (character >> 10)),
             static_cast<char16_t>(0xdc00 + (character & 0x3ff))};
  text += toUtf8(units);
}

} // namespace

void XmlReader::fail(const std::string &why) const {
  const auto line = std::count(text_.begin(), text_.begin() + static_cast<std::ptrdiff_t>(tag_), '\n') + 1;
  throw GeometryError("line " + std::to_string(line) + ": " + why, tag_);
}

XmlReader::Tag XmlReader::next() {
  if (isEmpty_) {
    isEmpty_ = false;
    open_.pop_back();
    return Tag::end;
  }
  if (begun_ && open_.empty())
    return Tag::none;
  for (;;) {
    const size_t tag = text_.find('<', place_);
    if (tag == text_.npos)
      fail(open_.empty() ? "no element" : '<' + std::string(open_.back()) + "> has no end");
    tag_ = place_ = tag;
    if (skip("<!--"))
      skipPast("-->");
    else if (skip("<![CDATA["))
      skipPast("]]>");
    else if (skip("<?"))
      skipPast("?>");
    else if (skip("<!"))
      skipDeclaration();
    else
      return skip("</") ? endTag() : startTag();
  }
}

XmlReader::Tag XmlReader::startTag() {
  ++place_;
  name_ = skipName();
  attributes_.clear();
  begun_ = true;
  for (;;) {
    const bool spaced = place_ < text_.size() && kSpace.find(text_[place_]) != kSpace.npos;
    skipSpace();
    isEmpty_ = skip("/>");
    if (isEmpty_ || skip(">"))
      break;
    if (!spaced)
      fail("a tag has no end");
    const std::string_view name = skipName();
    skipSpace();
    const bool isGiven = skip("=");
    skipSpace();
    const std::string_view quote = text_.substr(place_, 1);
    if (!isGiven || !(skip("\"") || skip("'")))
      fail("the attribute " + std::string(name) + " has no value");
    const size_t begin = place_;
    skipPast(quote);
    attributes_.emplace_back(name, text_.substr(begin, place_ - 1 - begin));
  }
  if (open_.size() == kDeepest)
    fail("elements are nested too deep");
  open_.push_back(name_);
  return Tag::start;
}

XmlReader::Tag XmlReader::endTag() {
  const std::string_view name = skipName();
  skipSpace();
  if (open_.empty() || open_.back() != name || !skip(">"))
    fail("</" + std::string(name) + "> is no end here");
  open_.pop_back();
  return Tag::end;
}

/// To the end of a document type. Within brackets other declarations stand.
void XmlReader::skipDeclaration() {
  for (int brackets = 0; place_ < text_.size();) {
    if (skip("<!--")) {
      skipPast("-->");
      continue;
    }
    const std::string_view c = text_.substr(place_++, 1);
    if (c == "\"" || c == "'")
      skipPast(c);
    else if (c == "[")
      ++brackets;
    else if (c == "]")
      --brackets;
    else if (c == ">" && brackets <= 0)
      return;
  }
  fail("a declaration has no end");
}

void XmlReader::skipPast(std::string_view end) {
  const size_t found = text_.find(end, place_);
  if (found == text_.npos)
    fail("no " + std::string(end) + " follows");
  place_ = found + end.size();
}

void XmlReader::skipSpace() { place_ = std::min(text_.find_first_not_of(kSpace, place_), text_.size()); }

bool XmlReader::skip(std::string_view expected) {
  if (!text_.substr(place_).starts_with(expected))
    return false;
  place_ += expected.size();
  return true;
}

std::string_view XmlReader::skipName() {
  const size_t begin = place_;
  place_ = std::min(text_.find_first_of(" \t\r\n/>=<\"'&", begin), text_.size());
  if (place_ == begin)
    fail("a name expected");
  return text_.substr(begin, place_ - begin);
}

std::string_view XmlReader::name() const { return name_.substr(name_.find(':') + 1); }

std::optional<std::string> XmlReader::attribute(std::string_view name) const {
  const auto found = std::find_if(attributes_.begin(), attributes_.end(),
                                  [name](const auto &attribute) { return attribute.first == name; });
  if (found == attributes_.end())
    return std::nullopt;
  std::string value;
  for (std::string_view rest = found->second; !rest.empty();) {
    const size_t reference = rest.find('&');
    value += rest.substr(0, reference);
    if (reference == rest.npos)
      break;
    const size_t end = rest.find(';', reference);
    const std::string_view text = rest.substr(reference + 1, end - reference - 1); // to the end without ;
    const char32_t character = end == rest.npos ? 0 : referred(text);
    if (character == 0)
      fail("&" + std::string(text.substr(0, 20)) + "; is not read");
    append(value, character);
    rest.remove_prefix(end + 1);
  }
  return value;
}

} // namespace zol::host
