// Writes the bundle's descriptions: zol_lv2_turtle FOLDER.

#include "bridges/lv2/uri.h"
#include "host/model/text.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>

namespace {

using namespace zol::bridge;
using zol::host::numberText;

constexpr char kPrefixes[] = "@prefix doap: <http://usefulinc.com/ns/doap#> .\n"
                             "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
                             "@prefix pprop: <http://lv2plug.in/ns/ext/port-props#> .\n"
                             "@prefix rdf: <http://www.w3.org/1999/02/22-rdf-syntax-ns#> .\n"
                             "@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .\n"
                             "@prefix units: <http://lv2plug.in/ns/extensions/units#> .\n";

std::string quoted(const std::string &text) {
  std::string result = "\"";
  for (const char c : text)
    result += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
  return result + '"';
}

std::string decimal(double value) {
  const std::string text = numberText(value);
  return text.find_first_of(".e") == text.npos ? text + ".0" : text;
}

class PortList {
public:
  void add(const char *types, const std::string &symbol, const std::string &name,
           const std::string &more = "") {
    text_ += (text_.empty() ? "" : " , ") + ("[\n    a " + std::string(types)) + " ;\n    lv2:index " +
             std::to_string(count_++) + " ;\n    lv2:symbol " + quoted(symbol) + " ;\n    lv2:name " +
             quoted(name) + more + "\n  ]";
  }
  [[nodiscard]] const std::string &text() const { return text_; }

private:
  std::string text_;
  int count_ = 0;
};

std::string controlText(const Control &control) {
  std::string text = " ;\n    lv2:default " + decimal(control.standard) + " ;\n    lv2:minimum " +
                     decimal(control.least) + " ;\n    lv2:maximum " + decimal(control.most);
  if (control.hertz)
    text += " ;\n    units:unit units:hz ;\n    lv2:portProperty pprop:logarithmic";
  else if (control.kind != Control::Kind::choice)
    text += " ;\n    units:unit units:coef";
  if (control.kind == Control::Kind::choice)
    text += " ;\n    lv2:portProperty lv2:integer , lv2:enumeration";
  for (const zol::host::Item &item : control.items)
    text += " ;\n    lv2:scalePoint [ rdfs:label " + quoted(item.text) + " ; rdf:value " +
            decimal(item.value) + " ]";
  return text;
}

std::string pluginText(const SoundPlugin &plugin) {
  PortList ports;
  const std::pair<const char *, const char *> sides[] = {{"left", "Left"}, {"right", "Right"}};
  for (size_t input = 1; input <= plugin.inputs.size(); ++input)
    for (const auto &[symbol, name] : sides)
      ports.add("lv2:InputPort , lv2:AudioPort", "in" + std::to_string(input) + '_' + symbol,
                "Input " + std::to_string(input) + ' ' + name);
  for (const auto &[symbol, name] : sides)
    ports.add("lv2:OutputPort , lv2:AudioPort", std::string("out_") + symbol, std::string("Output ") + name);
  for (const Control &control : plugin.controls)
    ports.add("lv2:InputPort , lv2:ControlPort", control.symbol, control.name, controlText(control));
  return "\n<" + uriOf(plugin) + ">\n  a lv2:Plugin , " +
         (plugin.inputs.empty() ? "lv2:GeneratorPlugin" : "lv2:MixerPlugin") + " ;\n  doap:name " +
         quoted(plugin.name) + " ;\n  lv2:minorVersion 2 ;\n  lv2:microVersion " +
         std::to_string(2 * plugin.effect->version) +
         " ;\n  lv2:optionalFeature lv2:hardRTCapable ;\n  lv2:port " + ports.text() + " .\n";
}

void write(const std::filesystem::path &path, const std::string &text) {
  std::ofstream file(path);
  file.exceptions(std::ios::badbit | std::ios::failbit);
  file << text;
  file.close();
}

} // namespace

int main(int count, char **words) {
  if (count != 2) {
    std::fputs("zol_lv2_turtle: takes the folder to write into\n", stderr);
    return 2;
  }
  try {
    const std::filesystem::path folder = words[1];
    std::filesystem::create_directories(folder);
    std::string manifest = kPrefixes, described = kPrefixes;
    for (const SoundPlugin &plugin : soundPlugins()) {
      manifest += "\n<" + uriOf(plugin) +
                  ">\n  a lv2:Plugin ;\n  lv2:binary <zol-lv2.so> ;\n  rdfs:seeAlso <zol.ttl> .\n";
      described += pluginText(plugin);
    }
    write(folder / "manifest.ttl", manifest);
    write(folder / "zol.ttl", described);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "zol_lv2_turtle: cannot write into %s: %s\n", words[1], error.what());
    return 1;
  }
}
