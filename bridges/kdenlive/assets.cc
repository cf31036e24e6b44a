#include "bridges/kdenlive/assets.h"

#include "host/model/text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace zol::bridge {
namespace {

std::string escaped(const std::string &text) {
  std::string result;
  for (const char c : text)
    switch (c) {
    case '&': result += "&amp;"; break;
    case '<': result += "&lt;"; break;
    case '>': result += "&gt;"; break;
    case '"': result += "&quot;"; break;
    default: result += c;
    }
  return result;
}

std::string attribute(const char *name, const std::string &value) {
  return std::string(" ") + name + "=\"" + escaped(value) + '"';
}

std::string element(const char *name, const std::string &text, const char *indent) {
  return text.empty() ? "" : std::string(indent) + '<' + name + '>' + escaped(text) + "</" + name + ">\n";
}

std::string colorText(const f0r_param_color_t &color) {
  char text[11];
  const auto byte = [](float share) { return static_cast<unsigned>(std::lround(share * 255)); };
  std::snprintf(text, sizeof text, "0x%02x%02x%02xff", byte(color.r), byte(color.g), byte(color.b));
  return text;
}

std::string animated(const Parameter &parameter, bool progress) {
  const bool ownUnit = parameter.least == 0;
  const double most = ownUnit ? parameter.most : 1;
  // The editor shows value x factor.
  return attribute("type", "animated") +
         attribute("default", progress ? "0=0;-1=1" : host::numberText(parameter.standard.number)) +
         attribute("min", "0") + attribute("max", host::numberText(most)) +
         attribute("factor", host::numberText(most)) + attribute("decimals", most >= 100 ? "1" : "3");
}

/// A list's values are the middles of the items' bands.
std::string list(const host::Field &field) {
  std::string values;
  for (size_t i = 0; i < field.items.size(); ++i)
    values += (i == 0 ? "" : ";") +
              host::numberText((static_cast<double>(i) + 0.5) / static_cast<double>(field.items.size()));
  return attribute("paramlist", values);
}

/// The editor parts names at commas.
std::string listNames(const host::Field &field) {
  std::string names;
  for (const host::Item &item : field.items) {
    std::string name = item.text;
    std::erase(name, ',');
    names += (names.empty() ? "" : ",") + name;
  }
  return names;
}

std::string parameterText(const Plugin &plugin, const Parameter &parameter) {
  using Part = Parameter::Part;
  const host::Field &field = plugin.effect->fields[static_cast<size_t>(parameter.field)];
  std::string name = parameter.name;
  if (parameter.name == field.name && !field.label.empty())
    name = host::withoutMnemonic(field.label);
  std::string attributes, inside;
  switch (parameter.part) {
  case Part::toggle:
    attributes = attribute("type", "bool") + attribute("default", parameter.declared != 0 ? "1" : "0");
    break;
  case Part::item:
    attributes = attribute("type", "list") +
                 attribute("default", host::numberText(parameter.standard.number)) + list(field);
    inside = element("paramlistdisplay", listNames(field), "        ");
    break;
  case Part::color:
    attributes = attribute("type", "color") + attribute("default", colorText(parameter.standard.color));
    break;
  case Part::outline:
    attributes = attribute("type", "list") + attribute("default", parameter.standard.text) +
                 attribute("paramlist", "none;rectangle;ellipse");
    inside = element("paramlistdisplay", "None,Rectangle,Ellipse", "        ");
    break;
  default: attributes = animated(parameter, parameter.name == "Progress" && plugin.inputs.size() == 2);
  }
  return "    <parameter" + attributes + attribute("name", parameter.name) + ">\n" + inside +
         element("name", name, "        ") + element("comment", parameter.explanation, "        ") +
         "    </parameter>\n";
}

} // namespace

std::string assetFolder(const Plugin &plugin) {
  switch (plugin.type()) {
  case F0R_PLUGIN_TYPE_SOURCE: return "generators";
  case F0R_PLUGIN_TYPE_MIXER2: return "transitions";
  default: return "effects";
  }
}

std::string assetText(const Plugin &plugin) {
  std::string kind = assetFolder(plugin);
  kind.pop_back();
  const std::string service = "frei0r." + plugin.id;
  std::string text = "<?xml version=\"1.0\"?>\n<!DOCTYPE kpartgui>\n<" + kind + attribute("tag", service) +
                     attribute("id", service) + (kind == "effect" ? attribute("type", "video") : "") + ">\n";
  text += element("name", plugin.name, "    ") + element("description", plugin.explanation, "    ") +
          element("author", "zol", "    ");
  for (const Parameter &parameter : plugin.parameters)
    text += parameterText(plugin, parameter);
  return text + "</" + kind + ">\n";
}

} // namespace zol::bridge
