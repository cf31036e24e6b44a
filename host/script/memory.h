// What a script's addresses mean: the interpreter reads and writes the library's memory through this alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zol::host {

/// Answers "no" (nothing, false) for every address that was never handed over. Texts are copies.
class Memory {
public:
  virtual ~Memory() = default;

  /// A zero-terminated 8-bit text.
  virtual std::optional<std::string> text(uintptr_t address) = 0;
  /// A 16-bit text that this host handed out.
  virtual std::optional<std::u16string> wideText(uintptr_t address) = 0;
  /// `count` 8-bit texts, given by an array of their addresses.
  virtual std::optional<std::vector<std::string>> textArray(uintptr_t address, size_t count) = 0;
  /// Whether a callback can stand there.
  virtual bool isCode(uintptr_t address) = 0;
  /// Stores an int, aligned or not.
  virtual bool storeInt(uintptr_t address, int value) = 0;
};

/// The memory of this process, as far as one loaded library may hand it over: texts, arrays and code within
/// the library's segments, 16-bit texts among those that were handed out to it, ints within its writable
/// segments or the calling thread's stack in use.
class ProcessMemory : public Memory {
public:
  /// `library` is a handle of dlopen (of a null name: the program itself) and stays open as long as this
  /// lives. An invalid handle hands over nothing.
  explicit ProcessMemory(void *library);

  /// Notes a 16-bit text of `length` units that the library may refer to from now on; it is copied.
  void handedOut(const uint16_t *text, size_t length);

  std::optional<std::string> text(uintptr_t address) override;
  std::optional<std::u16string> wideText(uintptr_t address) override;
  std::optional<std::vector<std::string>> textArray(uintptr_t address, size_t count) override;
  bool isCode(uintptr_t address) override;
  bool storeInt(uintptr_t address, int value) override;

private:
  struct Range {
    uintptr_t begin, end;
    [[nodiscard]] bool holds(uintptr_t address, size_t size) const {
      return address >= begin && address < end && size <= end - address;
    }
  };
  std::vector<Range> readable_, writable_, code_;
  std::map<uintptr_t, std::u16string> wideTexts_;
};

} // namespace zol::host
