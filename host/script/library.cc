#include "host/script/library.h"

#include "host/model/error.h"
#include "host/services/session.h"

#include <dlfcn.h>
#include <filesystem>

namespace zol::host {
namespace {

/// Names in quotes, joined for a sentence.
template <class Names> std::string quotedList(const Names &names) {
  std::string text;
  for (const std::string &name : names)
    text += (text.empty() ? "\"" : ", \"") + name + '"';
  return text;
}

} // namespace

void EffectLibrary::Close::operator()(void *handle) const { dlclose(handle); }

EffectLibrary::EffectLibrary(const std::string &file, const std::string &identity)
    : identity_(identity), handle_(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr)
    throw HostError(std::string("cannot load the library: ") + dlerror());
  const auto declare = reinterpret_cast<int (*)(t_ZoHostInfo *)>(dlsym(handle_.get(), "ZoDeclare"));
  if (declare == nullptr)
    throw HostError(file + " is not an effects library: it has no ZoDeclare");
  memory_ = std::make_unique<ProcessMemory>(handle_.get());
  interpreter_ = std::make_unique<Interpreter>(registry_, *memory_);
  Session session(identity);
  session.onStatement = [this](const char *text) { return interpreter_->execute(text); };
  session.onTranslated = [this](const std::u16string &text) {
    memory_->handedOut(reinterpret_cast<const uint16_t *>(text.c_str()), text.size());
  };
  declare(session.info());
}

std::string EffectLibrary::defaultFile() {
  constexpr char kName[] = "libzol.zoeffects.so.1";
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  const auto beside = program.parent_path() / kName;
  return !error && std::filesystem::exists(beside, error) ? beside.string() : kName;
}

const Effect &EffectLibrary::effect(const std::string &wanted) const {
  const std::vector<const Effect *> matches = registry_.matches(wanted);
  if (matches.size() == 1)
    return *matches.front();
  std::vector<std::string> names;
  for (const Effect *match : matches)
    names.push_back(match->name);
  if (!names.empty())
    throw HostError("\"" + wanted + "\" may be any of " + quotedList(names));
  names = registry_.nearest(wanted);
  throw HostError("no effect \"" + wanted + "\" under " + identity_ +
                  (names.empty() ? "; `zol list` shows all" : "; did you mean " + quotedList(names) + "?"));
}

} // namespace zol::host
