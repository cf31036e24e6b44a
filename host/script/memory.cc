#include "host/script/memory.h"

#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <pthread.h>

namespace zol::host {

namespace {

bool writeInt(uintptr_t address, int value) {
  std::memcpy(reinterpret_cast<void *>(address), &value, sizeof value);
  return true;
}

/// Where the calling thread's stack begins; 0 where that cannot be told.
uintptr_t stackTop() {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0)
    return 0;
  void *lowest = nullptr;
  size_t length = 0;
  const bool known = pthread_attr_getstack(&attributes, &lowest, &length) == 0;
  pthread_attr_destroy(&attributes);
  return known ? reinterpret_cast<uintptr_t>(lowest) + length : 0;
}

/// Whether [address, address + size) is in that part of the calling thread's stack that is in use.
bool isOnStack(uintptr_t address, size_t size) {
  thread_local const uintptr_t top = stackTop(); // the C library reads a file of the system's for it
  const auto bottom = reinterpret_cast<uintptr_t>(__builtin_frame_address(0));
  return address >= bottom && address < top && size <= top - address;
}

} // namespace

ProcessMemory::ProcessMemory(void *library) {
  link_map *map = nullptr;
  if (library == nullptr || dlinfo(library, RTLD_DI_LINKMAP, &map) != 0)
    return;

  struct Search {
    ProcessMemory &memory;
    const link_map &map;
  } search{*this, *map};
  dl_iterate_phdr(
      [](dl_phdr_info *info, size_t, void *data) {
        const auto &[memory, wanted] = *static_cast<Search *>(data);
        if (info->dlpi_addr != wanted.l_addr || std::strcmp(info->dlpi_name, wanted.l_name) != 0)
          return 0;
        // What the linker made read-only once it had relocated it.
        Range relocated{0, 0};
        for (int i = 0; i < info->dlpi_phnum; ++i)
          if (const auto &segment = info->dlpi_phdr[i]; segment.p_type == PT_GNU_RELRO)
            relocated = {info->dlpi_addr + segment.p_vaddr,
                         info->dlpi_addr + segment.p_vaddr + segment.p_memsz};
        for (int i = 0; i < info->dlpi_phnum; ++i) {
          const auto &segment = info->dlpi_phdr[i];
          if (segment.p_type != PT_LOAD || (segment.p_flags & PF_R) == 0)
            continue;
          const uintptr_t begin = info->dlpi_addr + segment.p_vaddr;
          Range range{begin, begin + segment.p_memsz};
          memory.readable_.push_back(range);
          if ((segment.p_flags & PF_X) != 0)
            memory.code_.push_back(range);
          if ((segment.p_flags & PF_W) == 0)
            continue;
          if (range.holds(relocated.begin, 0) && relocated.end > relocated.begin)
            range.begin = relocated.end;
          memory.writable_.push_back(range);
        }
        return 1;
      },
      &search);
}

void ProcessMemory::handedOut(const uint16_t *text, size_t length) {
  wideTexts_[reinterpret_cast<uintptr_t>(text)] = std::u16string(text, text + length);
}

std::optional<std::string> ProcessMemory::text(uintptr_t address) {
  for (const Range &range : readable_) {
    if (!range.holds(address, 1))
      continue;
    const auto *begin = reinterpret_cast<const char *>(address);
    const size_t limit = range.end - address;
    if (const size_t length = strnlen(begin, limit); length < limit)
      return std::string(begin, length);
  }
  return std::nullopt;
}

std::optional<std::u16string> ProcessMemory::wideText(uintptr_t address) {
  const auto found = wideTexts_.find(address);
  return found != wideTexts_.end() ? std::optional(found->second) : std::nullopt;
}

std::optional<std::vector<std::string>> ProcessMemory::textArray(uintptr_t address, size_t count) {
  for (const Range &range : readable_) {
    if (!range.holds(address, 1) || count > (range.end - address) / sizeof(uintptr_t))
      continue;
    std::vector<std::string> texts;
    for (size_t i = 0; i < count; ++i) {
      uintptr_t element = 0;
      std::memcpy(&element, reinterpret_cast<const void *>(address + i * sizeof element), sizeof element);
      std::optional<std::string> copy = text(element);
      if (!copy)
        return std::nullopt;
      texts.push_back(std::move(*copy));
    }
    return texts;
  }
  return std::nullopt;
}

bool ProcessMemory::isCode(uintptr_t address) {
  for (const Range &range : code_)
    if (range.holds(address, 1))
      return true;
  return false;
}

bool ProcessMemory::storeInt(uintptr_t address, int value) {
  for (const Range &range : writable_)
    if (range.holds(address, sizeof value))
      return writeInt(address, value);
  return isOnStack(address, sizeof value) && writeInt(address, value);
}

} // namespace zol::host
