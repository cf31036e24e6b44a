#include "host/script/library.h"

#include "host/model/error.h"
#include "host/services/session.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <link.h>
#include <system_error>

namespace zol::host {
namespace {

/// Names in quotes, joined for a sentence.
template <class Names> std::string quotedList(const Names &names) {
  std::string text;
  for (const std::string &name : names)
    text += (text.empty() ? "\"" : ", \"") + name + '"';
  return text;
}

constexpr char kDefaultName[] = "libzol.zoeffects.so.1";

/// The path to load. What the loader would map beyond a file's end would bring down the program: so the file
/// has to be whole as far as its header tells.
std::string checkedPath(const std::string &file) {
  if (file == kDefaultName || file.empty())
    return file;
  const auto refuse = [&](const std::string &why) {
    throw HostError("cannot load the library " + file + ": " + why);
  };
  std::ifstream stream(file, std::ios::binary);
  if (!stream)
    refuse(std::generic_category().message(errno));
  std::error_code error;
  const uint64_t size = std::filesystem::file_size(file, error);
  if (error)
    refuse(error.message());
  ElfW(Ehdr) header{};
  stream.read(reinterpret_cast<char *>(&header), sizeof header);
  if (!stream || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_type != ET_DYN)
    refuse("it is no shared library");
  if (header.e_ident[EI_CLASS] != (sizeof(void *) == 8 ? ELFCLASS64 : ELFCLASS32))
    refuse("it is for another kind of machine, with addresses of " +
           std::string(sizeof(void *) == 8 ? "32" : "64") + " bits");
  const auto isWithin = [&](uint64_t offset, uint64_t bytes) {
    return offset <= size && bytes <= size - offset;
  };
  bool whole = isWithin(header.e_phoff, uint64_t{header.e_phnum} * sizeof(ElfW(Phdr))) &&
               isWithin(header.e_shoff, uint64_t{header.e_shnum} * header.e_shentsize);
  stream.seekg(static_cast<std::streamoff>(header.e_phoff));
  for (unsigned i = 0; whole && i < header.e_phnum; ++i) {
    ElfW(Phdr) segment{};
    stream.read(reinterpret_cast<char *>(&segment), sizeof segment);
    whole = stream && isWithin(segment.p_offset, segment.p_filesz);
  }
  if (!whole)
    refuse("it is cut off after " + std::to_string(size) + " bytes");
  return std::filesystem::absolute(file).string();
}

/// A handle of the loaded file, or the program, that an address lies in.
void *fileThatHolds(void *address) {
  Dl_info known{};
  void *map = nullptr;
  if (dladdr1(address, &known, &map, RTLD_DL_LINKMAP) == 0)
    return nullptr;
  const char *name = static_cast<const link_map *>(map)->l_name;
  return dlopen(*name == '\0' ? nullptr : name, RTLD_NOW | RTLD_NOLOAD);
}

} // namespace

void EffectLibrary::Close::operator()(void *handle) const { dlclose(handle); }

EffectLibrary::EffectLibrary(const std::string &file, const std::string &identity)
    : identity_(identity), handle_(dlopen(checkedPath(file).c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr)
    throw HostError(std::string("cannot load the library: ") + dlerror());
  const auto declare = reinterpret_cast<int (*)(t_ZoHostInfo *)>(dlsym(handle_.get(), "ZoDeclare"));
  if (declare == nullptr)
    throw HostError(file + " is not an effects library: it has no ZoDeclare");
  declareBy(declare);
}

EffectLibrary::EffectLibrary(int (*declare)(t_ZoHostInfo *), const std::string &identity)
    : identity_(identity), handle_(fileThatHolds(reinterpret_cast<void *>(declare))) {
  declareBy(declare);
}

void EffectLibrary::declareBy(int (*declare)(t_ZoHostInfo *)) {
  memory_ = std::make_unique<ProcessMemory>(handle_.get());
  interpreter_ = std::make_unique<Interpreter>(registry_, *memory_);
  Session session(identity_);
  session.onStatement = [this](const char *text) { return interpreter_->execute(text); };
  session.onTranslated = [this](const std::u16string &text) {
    memory_->handedOut(reinterpret_cast<const uint16_t *>(text.c_str()), text.size());
  };
  declare(session.info());
}

std::string EffectLibrary::defaultFile() {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  const auto beside = program.parent_path() / kDefaultName;
  return !error && std::filesystem::exists(beside, error) ? beside.string() : kDefaultName;
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
