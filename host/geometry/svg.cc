#include "host/geometry/svg.h"

#include "host/geometry/path.h"
#include "host/geometry/scanner.h"
#include "host/geometry/svg_shapes.h"
#include "host/geometry/svg_values.h"
#include "host/geometry/xml.h"
#include "host/model/text.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <fstream>
#include <map>
#include <system_error>

namespace zol::host {
namespace {

constexpr size_t kLargestFile = size_t{64} << 20; // also of what is drawn once all uses are followed
constexpr size_t kMostSegments = size_t{1} << 22;
constexpr int kDeepestUse = 32; // elements that use elements that use others; deeper is taken for a circle

using Tag = XmlReader::Tag;

bool isOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

/// What holds at a place of the tree: how its units become pixels, and what percentages are of.
struct Place {
  Matrix matrix;
  double width = 0, height = 0;
};

/// A property from the element's style or the attribute of its name; empty where it has neither.
std::string property(const XmlReader &element, std::string_view name) {
  const std::string style = element.attribute("style").value_or("");
  for (const std::string_view part : split(style, ';')) {
    const size_t colon = part.find(':');
    if (colon != part.npos && trimmed(part.substr(0, colon)) == name)
      return std::string(trimmed(part.substr(colon + 1)));
  }
  return element.attribute(name).value_or("");
}

/// Whether every number is within the limits of pixels.
bool isNear(const Geometry &geometry) {
  for (const Contour &contour : geometry.contours)
    for (const Segment &segment : contour.segments)
      for (const double *vector : {segment.P0, segment.P1, segment.H0, segment.H1})
        if (!(std::abs(vector[0]) <= kLargest && std::abs(vector[1]) <= kLargest))
          return false;
  return true;
}

class SvgReader {
public:
  explicit SvgReader(std::string_view xml) : xml_(xml) {}

  Drawing run() {
    lookAround();
    draw(0, {}, nullptr);
    for (const auto &[what, count] : leftOut_)
      drawing_.notes.push_back(std::to_string(count) + ' ' + what + (count == 1 ? " is" : "s are") +
                               " not read");
    return std::move(drawing_);
  }

private:
  /// Notes where elements with an id begin. Style sheets count wherever they stand.
  void lookAround() {
    XmlReader element(xml_);
    for (Tag tag = element.next(); tag != Tag::none; tag = element.next()) {
      if (tag == Tag::end)
        continue;
      if (const auto id = element.attribute("id"))
        ids_.emplace(*id, element.place());
      if (element.name() == "style")
        ++leftOut_["style element"];
    }
  }

  /// Draws the first element from there on and what it holds. `user` is at the element that uses it.
  void draw(size_t from, const Place &outer, const XmlReader *user) {
    XmlReader element(xml_, from);
    std::vector<Place> places{outer};
    int hidden = 0; // how deep the reader is in an element that is not drawn
    size_t before = from;
    for (Tag tag = element.next(); tag != Tag::none; tag = element.next()) {
      read_ += element.readTo() - before;
      before = element.readTo();
      if (read_ > kLargestFile)
        element.fail("elements use each other too often");
      if (tag == Tag::start && hidden == 0) {
        Place place = places.back();
        hidden = enter(element, place, places.size() == 1, user) ? 0 : 1;
        if (hidden == 0)
          places.push_back(place);
      } else if (hidden > 0) {
        hidden += tag == Tag::start ? 1 : -1;
      } else {
        places.pop_back();
      }
    }
  }

  /// Draws an element without what it holds. False where that is not drawn; else `place` is its place.
  bool enter(const XmlReader &element, Place &place, bool isFirst, const XmlReader *user) {
    const std::string_view name = element.name();
    const bool isViewport = name == "svg" || (name == "symbol" && isFirst && user != nullptr);
    const bool isLeftOut = isOneOf(name, {"text", "image", "foreignObject"});
    if (!isViewport && !isShape(name) && !isLeftOut && !isOneOf(name, {"g", "a", "switch", "use"}))
      return false;
    if (property(element, "display") == "none")
      return false;
    if (isLeftOut) {
      ++leftOut_[std::string(name) + " element"];
      return false;
    }
    for (const char *cut : {"clip-path", "mask"})
      if (!isOneOf(property(element, cut), {"", "none"}))
        ++leftOut_[std::string(cut) + " property"];
    if (const auto transform = element.attribute("transform"))
      place.matrix = place.matrix * readAt(element, [&] { return readTransform(*transform); });
    if (isViewport)
      return enterViewport(element, place, isFirst, user);
    if (isShape(name))
      add(element, shapeOf(element, place.width, place.height).transformed(place.matrix));
    if (name == "use")
      use(element, place);
    return true;
  }

  /// An element whose content has units of its own, mapped to a size: its user's, its own, or all of the
  /// place. The root, which has no place, is as large as its view box unless it says otherwise.
  static bool enterViewport(const XmlReader &element, Place &place, bool isFirst, const XmlReader *user) {
    const auto text = element.attribute("viewBox");
    std::optional<ViewBox> box;
    if (text)
      box = readAt(element, [&] { return readViewBox(*text); });
    const bool isRoot = isFirst && user == nullptr;
    if (isRoot) {
      place.width = box ? box->width : 300; // as browsers have it
      place.height = box ? box->height : 150;
    } else if (element.name() == "svg") {
      place.matrix =
          place.matrix * translation(length(element, "x", place.width), length(element, "y", place.height));
    }
    const auto size = [&](const char *name, double whole) {
      const double own = length(element, name, whole, whole);
      return isFirst && user != nullptr ? length(*user, name, whole, own) : own;
    };
    place.width = size("width", place.width);
    place.height = size("height", place.height);
    if (box) {
      const std::string aspectRatio = element.attribute("preserveAspectRatio").value_or("");
      place.matrix = place.matrix * fit(*box, place.width, place.height, aspectRatio);
    }
    const bool isEmpty = !(place.width > 0 && place.height > 0);
    if (box) {
      place.width = box->width;
      place.height = box->height;
    }
    return !isEmpty && place.width > 0 && place.height > 0;
  }

  void use(const XmlReader &element, const Place &place) {
    auto link = element.attribute("href");
    if (!link)
      link = element.attribute("xlink:href");
    const auto used = link && link->starts_with('#') ? ids_.find(link->substr(1)) : ids_.end();
    if (used == ids_.end()) {
      ++leftOut_["use element"];
      return;
    }
    if (uses_ == kDeepestUse)
      element.fail("elements use each other in a circle");
    Place moved = place;
    moved.matrix =
        place.matrix * translation(length(element, "x", place.width), length(element, "y", place.height));
    ++uses_;
    draw(used->second, moved, &element);
    --uses_;
  }

  void add(const XmlReader &element, Geometry shape) {
    if (!isNear(shape))
      element.fail("a point is too far away");
    for (Contour &contour : shape.contours) {
      segments_ += contour.segments.size();
      drawing_.geometry.contours.push_back(std::move(contour));
    }
    if (segments_ > kMostSegments)
      element.fail("too many curves");
  }

  std::string_view xml_;
  std::map<std::string, size_t> ids_;  // where elements begin
  std::map<std::string, int> leftOut_; // what, how often
  Drawing drawing_;
  size_t read_ = 0, segments_ = 0;
  int uses_ = 0;
};

std::string contentOf(const std::string &file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream)
    throw GeometryError(std::generic_category().message(errno), 0);
  std::string content, block(size_t{64} << 10, '\0');
  while (stream && content.size() <= kLargestFile) {
    stream.read(block.data(), static_cast<std::streamsize>(block.size()));
    content.append(block, 0, static_cast<size_t>(stream.gcount()));
  }
  if (stream.bad() || content.empty())
    throw GeometryError("nothing could be read", 0);
  if (content.size() > kLargestFile)
    throw GeometryError("the file is too large", 0);
  return content;
}

} // namespace

Drawing readSvg(std::string_view xml) { return SvgReader(xml).run(); }

Drawing readSvgFile(const std::string &file) {
  try {
    Drawing drawing = readSvg(contentOf(file));
    if (drawing.geometry.contours.empty()) {
      std::string why = "no shape in it";
      for (const std::string &note : drawing.notes)
        why += "; " + note;
      throw GeometryError(why, 0);
    }
    return drawing;
  } catch (const GeometryError &error) {
    throw GeometryError("cannot read " + file + ": " + error.what(), error.position);
  }
}

Drawing readDrawing(const std::string &text) {
  return text.starts_with('@') ? readSvgFile(text.substr(1)) : Drawing{readPath(text), {}};
}

} // namespace zol::host
