// zol list, zol declare: what the library declares.

#include "apps/zol/commands.h"

#include "host/render/record.h"
#include "host/script/library.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>

namespace zol::command {
namespace {

std::string renders(const host::Effect &effect) {
  std::string text;
  const auto append = [&](bool has, const char *word) {
    if (has)
      text += (text.empty() ? "" : ", ") + std::string(word);
  };
  append(effect.renderVideo != nullptr, "pictures");
  append(effect.renderVideoRT != nullptr, "pictures in real time");
  append(effect.renderAudio != nullptr, "sound");
  return text.empty() ? "declared only" : text;
}

void list(const HostOptions &options, bool json) {
  const host::EffectLibrary library(options.libraryFile(), options.host);
  if (json) {
    auto effects = nlohmann::json::array();
    for (const host::Effect &effect : library.registry().effects()) {
      effects.push_back(host::effectRecord(effect));
      effects.back()["fields"] = effect.fields.size();
    }
    std::printf("%s\n", effects.dump(2).c_str());
    return;
  }
  size_t width = 0;
  for (const host::Effect &effect : library.registry().effects())
    width = std::max(width, effect.name.size());
  for (const host::Effect &effect : library.registry().effects())
    std::printf("%-*s  %s\n", static_cast<int>(width), effect.name.c_str(), renders(effect).c_str());
}

void declare(const HostOptions &options, const std::string &wanted) {
  const host::EffectLibrary library(options.libraryFile(), options.host);
  for (const host::Effect &effect : library.registry().effects())
    if (wanted.empty() || &library.effect(wanted) == &effect)
      for (const std::string &statement : effect.statements)
        std::printf("%s\n", statement.c_str());
  for (const auto &error : library.errors())
    std::fprintf(stderr, "zol: in \"%s\", column %zu: %s\n", error.statement.c_str(), error.column,
                 error.reason.c_str());
}

} // namespace

void addList(CLI::App &zol) {
  CLI::App *app = zol.add_subcommand("list", "All effects, in the order of their declaration");
  const auto options = std::make_shared<HostOptions>();
  const auto json = std::make_shared<bool>(false);
  options->addTo(*app);
  app->add_flag("--json", *json, "As JSON");
  app->callback([=] { list(*options, *json); });
}

void addDeclare(CLI::App &zol) {
  CLI::App *app = zol.add_subcommand("declare", "The declaration statements as the library sent them");
  const auto options = std::make_shared<HostOptions>();
  const auto effect = std::make_shared<std::string>();
  app->add_option("effect", *effect, "One effect, by its name or a unique ending of it");
  options->addTo(*app);
  app->callback([=] { declare(*options, *effect); });
}

} // namespace zol::command
