// zol completion: what a shell needs to complete words of the command, and what it is then told.

#include "apps/zol/commands.h"
#include "apps/zol/words.h"

#include "host/model/text.h"
#include "host/script/library.h"

#include <algorithm>
#include <cstdio>
#include <map>

namespace zol::command {
namespace {

// Where nothing is offered, a file's name is meant.

constexpr char kBash[] = R"(_zol() {
  local line
  COMPREPLY=()
  while IFS= read -r line; do
    [[ $line == *= ]] && compopt -o nospace
    printf -v line %q "$line"
    COMPREPLY+=("$line")
  done < <("${COMP_WORDS[0]}" complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}
complete -o default -F _zol zol
)";

constexpr char kZsh[] = R"(#compdef zol
_zol() {
  local -a found
  found=("${(@f)$("${words[1]}" complete "${(@)words[2,CURRENT]}" 2>/dev/null)}")
  if [[ -n "${found[*]}" ]]; then
    compadd -- "${found[@]}"
  else
    _files
  fi
}
compdef _zol zol
)";

constexpr char kFish[] = R"(function __zol_complete
  set -l words (commandline -opc) (commandline -ct)
  set -l found ($words[1] complete $words[2..-1] 2>/dev/null)
  if test -n "$found"
    printf '%s\n' $found
  else
    __fish_complete_path (commandline -ct)
  end
end
complete -c zol -f -a '(__zol_complete)'
)";

const std::map<std::string, const char *> kScripts = {{"bash", kBash}, {"zsh", kZsh}, {"fish", kFish}};

using Words = std::vector<std::string>;

/// The shortest endings that name one effect.
Words effectNames(const host::EffectLibrary &library) {
  Words names;
  for (const host::Effect &effect : library.registry().effects()) {
    const std::string name = host::folded(effect.name);
    std::string ending;
    for (size_t slash = name.size(); slash != name.npos && slash > 0;) {
      slash = name.rfind('/', slash - 1);
      ending = slash == name.npos ? name : name.substr(slash + 1);
      if (library.registry().find(ending) == &effect)
        break;
    }
    names.push_back(ending);
  }
  return names;
}

Words fieldNames(const host::EffectLibrary &library, const std::string &effect) {
  Words names;
  if (const host::Effect *found = library.registry().find(effect))
    for (const host::Field &field : found->fields)
      if ((field.flags & host::kHide) == 0 && field.type != host::FieldType::button &&
          field.type != host::FieldType::label && field.type != host::FieldType::group)
        names.push_back(field.name + '=');
  return names;
}

Words namesOf(const std::vector<const CLI::Option *> &options) {
  Words names;
  for (const CLI::Option *option : options)
    if (option->nonpositional()) {
      const std::string all = spelledNames(*option);
      for (const std::string_view name : host::split(all, ','))
        names.emplace_back(name);
    }
  return names;
}

Words choicesIn(const std::string &type) {
  const auto parts = host::split(type, '|');
  return parts.size() < 2 ? Words() : Words(parts.begin(), parts.end());
}

/// The option of a word as it is spelled; null for values and others.
const CLI::Option *optionOf(const CLI::App &command, const std::string &word) {
  for (const CLI::Option *option : command.get_options())
    if (option->nonpositional() && (spelled(*option) == word || option->check_name(word)))
      return option;
  return nullptr;
}

/// What may follow the words of a command, of which the last has only begun.
Words candidates(const CLI::App &command, const Words &words) {
  const auto positionals = command.get_options([](const CLI::Option *o) { return o->get_positional(); });
  const CLI::Option *awaiting = nullptr; // the option whose value comes next
  std::string last;                      // the last word that is neither
  size_t given = 0;                      // how many are
  for (auto word = words.begin(); word + 1 != words.end(); ++word) {
    if (awaiting != nullptr) {
      awaiting = nullptr;
    } else if (*word == "!") {
      given = positionals.size() - 1;
    } else if (const CLI::Option *option = optionOf(command, *word)) {
      awaiting = takesValue(*option) ? option : nullptr;
    } else {
      ++given;
      last = *word;
    }
  }
  const auto library = [] { return host::EffectLibrary(host::EffectLibrary::defaultFile(), "Halvenor"); };
  if (awaiting != nullptr && spelled(*awaiting) == "--set")
    return fieldNames(library(), last);
  if (awaiting != nullptr)
    return choicesIn(awaiting->get_type_name());
  if (words.back().starts_with('-'))
    return namesOf(command.get_options());
  const bool named = given > 0 && words.front() != "render" && command.get_name() == "farm"; // a plan
  if (given >= positionals.size() || named)
    return {};
  const CLI::Option &next = *positionals[given];
  return next.get_name() == "effect" ? effectNames(library()) : choicesIn(next.get_type_name());
}

} // namespace

void complete(const Words &words) {
  const auto zol = makeCommands();
  Words found;
  if (words.size() < 2) {
    for (const CLI::App *command : zol->get_subcommands([](const CLI::App *) { return true; }))
      found.push_back(command->get_name());
  } else {
    found = candidates(commandNamed(*zol, words.front()), {words.begin() + 1, words.end()});
  }
  const std::string begun = words.empty() ? "" : host::folded(words.back());
  for (const std::string &candidate : found)
    if (host::folded(candidate).starts_with(begun))
      std::printf("%s\n", candidate.c_str());
}

void addCompletion(CLI::App &zol) {
  CLI::App *app = zol.add_subcommand("completion", "The completion of words for a shell");
  const auto shell = std::make_shared<std::string>();
  addValue(
      *app, "shell", *shell,
      [](const std::string &text) { return kScripts.contains(text) ? std::optional(text) : std::nullopt; },
      "bash, zsh or fish", "The shell, which is to read this at its start: eval \"$(zol completion bash)\"")
      ->type_name("bash|zsh|fish")
      ->required();
  app->callback([shell] { std::fputs(kScripts.at(*shell), stdout); });
}

} // namespace zol::command
