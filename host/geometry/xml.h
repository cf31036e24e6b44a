#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zol::host {

/// Reads one element of an XML text with all that it holds, tag by tag: no recursion, no copy of the text.
/// Characters between tags, comments, instructions and the document type are passed over; entities of the
/// document type are not expanded. Throws GeometryError ("line 3: ...") for what is not well-formed.
class XmlReader {
public:
  /// The element that begins at or behind `place`. The text must outlive the reader.
  explicit XmlReader(std::string_view text, size_t place = 0) : text_(text), place_(place) {}

  enum class Tag { start, end, none };
  /// Goes to the next tag; none behind the element's end. An empty element has both tags.
  Tag next();
  /// How far the text has been read.
  [[nodiscard]] size_t readTo() const { return place_; }

  // ---- Of the latest start tag ----

  /// The name without a prefix.
  [[nodiscard]] std::string_view name() const;
  /// Where the tag begins.
  [[nodiscard]] size_t place() const { return tag_; }
  /// The attribute's value, references replaced; nothing where there is none of exactly that name.
  [[nodiscard]] std::optional<std::string> attribute(std::string_view name) const;

  [[noreturn]] void fail(const std::string &why) const;

private:
  Tag startTag();
  Tag endTag();
  void skipPast(std::string_view end);
  void skipDeclaration();
  void skipSpace();
  bool skip(std::string_view expected);
  std::string_view skipName();

  std::string_view text_;
  size_t place_, tag_ = 0;
  std::vector<std::string_view> open_; // names of the elements around, the innermost last
  std::string_view name_;
  std::vector<std::pair<std::string_view, std::string_view>> attributes_;
  bool begun_ = false, isEmpty_ = false;
};

} // namespace zol::host
