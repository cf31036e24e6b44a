// zol show: one effect, its fields, ranges, defaults, items and help.

#include "apps/zol/commands.h"

#include "host/media/process.h"
#include "host/model/remarks.h"
#include "host/model/text.h"
#include "host/render/instance.h"
#include "host/render/record.h"
#include "host/script/library.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <map>
#include <regex>

namespace zol::command {
namespace {

using host::Field;

// ---- Markdown ----

/// In one line, for a cell of a table.
std::string cell(const std::string &marked) {
  const std::string line = std::regex_replace(plainText(marked), std::regex("\\s*\n\\s*"), " ");
  return std::regex_replace(line, std::regex("\\|"), "\\|");
}

std::string listOf(const std::vector<std::string> &words, const char *separator = ", ") {
  std::string text;
  for (const std::string &word : words)
    text += (text.empty() ? "" : separator) + word;
  return text;
}

/// Under which name which host has the effect. Declares all effects anew: no instance outlives it.
std::string hostsText(const std::string &library, const std::string &sign) {
  std::map<std::string, std::vector<std::string>> hosts;
  for (const char *identity : {"Halvenor", "Quorbel", "any other host"}) {
    const host::EffectLibrary declared(library, identity);
    for (const host::Effect &effect : declared.registry().effects())
      if (effect.sign == sign)
        hosts["`" + effect.name + "`"].emplace_back(identity);
  }
  std::vector<std::string> names;
  for (const auto &[name, identities] : hosts)
    names.push_back(name + " under " + (identities.size() == 3 ? "every host" : listOf(identities, " and ")));
  return listOf(names);
}

std::string callbacksText(const host::Effect &effect) {
  std::vector<std::string> names;
  const auto add = [&](bool has, const char *name) {
    if (has)
      names.emplace_back(name);
  };
  add(effect.renderVideo != nullptr, "pictures");
  add(effect.renderVideoRT != nullptr, "pictures in real time");
  add(effect.renderAudio != nullptr, "sound");
  add(effect.onDialogOpen != nullptr || effect.onDialogItemEdit != nullptr, "dialog");
  return listOf(names);
}

void showMarkdown(const HostOptions &options, const std::string &wanted) {
  const host::EffectLibrary library(options.libraryFile(), options.host);
  const host::Effect &effect = library.effect(wanted);
  host::Instance instance(effect, options.host, host::Timeline());
  instance.openDialog();
  std::printf("# %s\n\n", effect.name.substr(effect.name.rfind('/') + 1).c_str());
  const std::string description = std::regex_replace(plainText(effect.description), std::regex(" +\n"), "\n");
  if (!description.empty())
    std::printf("%s\n\n", std::string(host::trimmed(description)).c_str());
  std::printf("| field | kind | takes | default | |\n|---|---|---|---|---|\n");
  for (size_t i = 0; i < effect.fields.size(); ++i) {
    const Field &field = effect.fields[i];
    if (host::isHidden(field))
      continue;
    std::vector<std::string> items;
    for (const host::Item &item : field.items)
      items.push_back(cell(item.text));
    for (const std::string &item : instance.datasetItems(static_cast<int>(i)))
      items.push_back("set as " + cell(item));
    std::string help = cell(field.help);
    if (const std::string label = host::withoutMnemonic(field.label); !label.empty() && label != field.name)
      help = "shown as \"" + cell(label) + "\"" + (help.empty() ? "" : ". ") + help;
    std::printf("| %s | %s | %s%s%s | %s | %s |\n", cell(field.name).c_str(), field.kind.c_str(),
                host::takenBy(field).c_str(), items.empty() ? "" : " ", listOf(items).c_str(),
                cell(instance.valueText(static_cast<int>(i))).c_str(), help.c_str());
  }
  std::printf("\nSign `%s`, version %d, declared as %s. Callbacks: %s.\n", effect.sign.c_str(),
              effect.version, hostsText(options.libraryFile(), effect.sign).c_str(),
              callbacksText(effect).c_str());
}

void show(const HostOptions &options, const std::string &wanted, bool json) {
  const host::EffectLibrary library(options.libraryFile(), options.host);
  const host::Effect &effect = library.effect(wanted);
  host::Instance instance(effect, options.host, host::Timeline());
  instance.openDialog();
  if (json) {
    nlohmann::json out = {{"name", effect.name},
                          {"sign", effect.sign},
                          {"version", effect.version},
                          {"description", plainText(effect.description)},
                          {"video", effect.renderVideo != nullptr},
                          {"realTime", effect.renderVideoRT != nullptr},
                          {"audio", effect.renderAudio != nullptr},
                          {"remarks", host::remarksOn(effect)},
                          {"fields", nlohmann::json::array()}};
    for (size_t i = 0; i < effect.fields.size(); ++i) {
      out["fields"].push_back(
          host::fieldRecord(effect, effect.fields[i], instance.valueText(static_cast<int>(i))));
      for (const std::string &item : instance.datasetItems(static_cast<int>(i)))
        out["fields"].back()["set"].push_back(item);
    }
    std::printf("%s\n", out.dump(2).c_str());
    return;
  }
  std::printf("%s (%s, version %d)\n", effect.name.c_str(), effect.sign.c_str(), effect.version);
  if (!effect.description.empty())
    std::printf("%s\n", plainText(effect.description).c_str());
  for (const std::string_view remark : host::remarksOn(effect))
    std::printf("\nNote: %.*s\n", static_cast<int>(remark.size()), remark.data());
  for (size_t i = 0; i < effect.fields.size(); ++i) {
    const Field &field = effect.fields[i];
    if (host::isHidden(field))
      continue;
    const std::string value = instance.valueText(static_cast<int>(i));
    std::printf("\n  %s: %s", field.name.c_str(), host::takenBy(field).c_str());
    for (size_t k = 0; k < field.items.size(); ++k)
      std::printf("%s \"%s\"", k == 0 ? "" : ",", field.items[k].text.c_str());
    if (!value.empty())
      std::printf(" (default %s)", value.c_str());
    for (const std::string &item : instance.datasetItems(static_cast<int>(i)))
      std::printf("\n    set as \"%s\"", item.c_str());
    if (const std::string label = host::withoutMnemonic(field.label); !label.empty() && label != field.name)
      std::printf("\n    shown as \"%s\"", label.c_str());
    if (!field.help.empty())
      std::printf("\n    %s", plainText(field.help).c_str());
    for (const std::string_view remark : host::remarksOn(effect, field.name))
      std::printf("\n    %.*s", static_cast<int>(remark.size()), remark.data());
  }
  std::printf("\n");
}

} // namespace

void addShow(CLI::App &zol) {
  CLI::App *app = zol.add_subcommand("show", "One effect: fields, ranges, defaults, items, help");
  const auto options = std::make_shared<HostOptions>();
  const auto effect = std::make_shared<std::string>();
  const auto json = std::make_shared<bool>(false);
  const auto markdown = std::make_shared<bool>(false);
  app->add_option("effect", *effect, "The effect, by its name or a unique ending of it")->required();
  options->addTo(*app);
  app->add_flag("--json", *json, "As JSON");
  app->add_flag("--markdown", *markdown, "As its page of the documentation")->excludes("--json");
  app->callback([=] { *markdown ? showMarkdown(*options, *effect) : show(*options, *effect, *json); });
}

} // namespace zol::command
