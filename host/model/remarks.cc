#include "host/model/remarks.h"

#include "host/model/text.h"

#include <utility>

namespace zol::host {
namespace {

struct Remark {
  std::string_view sign, field, text;
};

constexpr Remark kRemarks[] = {
    {"Blur 1.0 (Zo2)", "",
     "Colours are averaged as they are stored, straight, whatever their alpha: around transparent areas the "
     "colour that they hide shines through. Lay such a picture on an opaque background first, or give its "
     "transparent pixels the colour of what they surround."},
    {"Blur 1.0 (Zo2)", "Blurriness",
     "A radius: 1 is a 7.2th of the frame's width, so that 0.1 is 27 pixels at 1920."},
    {"Bluescreen Zo2 native", "Shrink", "1 is a tenth of the frame's width: 0.1 is 19 pixels at 1920."},
    {"Bluescreen Zo2 native", "Noiseclean", "1 is a tenth of the frame's width: 0.1 is 19 pixels at 1920."},
    {"AudioSineGen (Zo2)", "",
     "The wave swings from 0 to the volume, about half of it, not from -1 to 1; \"-- -af highpass=f=5\" "
     "behind "
     "the other words of a render takes the offset away."},
    {"AudioSineGen (Zo2)", "Frequency",
     "It is read every 100 samples, where the wave jumps if it has changed: for a sweep without clicks use "
     "another generator, and this one for steady tones."},
    {"Deinterlace Basic 1.0 (Zo2)", "Method",
     "\"Upper\" keeps rows 1, 3, 5 ... counted from 0, which elsewhere are called the bottom field, "
     "\"lower\" "
     "rows 0, 2, 4 ...: for the top field choose \"lower\"."},
};

} // namespace

std::string unitOf(const Field &field) {
  if (field.kind == "Angle")
    return "degrees";
  if (sameWithoutCase(field.kind, "time"))
    return "seconds";
  if (const size_t open = field.label.rfind('('); open != field.label.npos && field.label.ends_with(')'))
    return field.label.substr(open + 1, field.label.size() - open - 2);
  for (const auto &[words, unit] :
       {std::pair("in widths of the frame", "widths of the frame: 0.1 is 192 pixels at 1920x1080"),
        std::pair("in heights of the frame", "heights of the frame: 0.1 is 108 pixels at 1920x1080")})
    if (field.help.find(words) != field.help.npos)
      return unit;
  return "";
}

std::vector<std::string_view> remarksOn(const Effect &effect, std::string_view field) {
  std::vector<std::string_view> lines;
  for (const Remark &remark : kRemarks)
    if (remark.sign == effect.sign && remark.field == field)
      lines.push_back(remark.text);
  return lines;
}

} // namespace zol::host
