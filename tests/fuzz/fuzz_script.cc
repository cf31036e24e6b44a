// Fuzzes the script interpreter and the reader of icons. An input is texts separated by zero bytes: the
// first is the script, the others are the library's memory, one at every 16th address.

#include "host/script/interpreter.h"

#include <cstdlib>

namespace {

using zol::host::Effect;
using zol::host::Field;

class FuzzedMemory : public zol::host::Memory {
public:
  explicit FuzzedMemory(std::vector<std::string> texts) : texts_(std::move(texts)) {}

  std::optional<std::string> text(uintptr_t address) override {
    return holds(address) ? std::optional(texts_[address / 16]) : std::nullopt;
  }
  std::optional<std::u16string> wideText(uintptr_t address) override {
    if (!holds(address))
      return std::nullopt;
    std::u16string wide;
    const std::string &bytes = texts_[address / 16];
    for (size_t i = 0; i + 1 < bytes.size(); i += 2)
      wide += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) << 8 |
                                    static_cast<unsigned char>(bytes[i + 1]));
    return wide;
  }
  std::optional<std::vector<std::string>> textArray(uintptr_t address, size_t count) override {
    if (!holds(address) || count > texts_.size() - address / 16)
      return std::nullopt;
    const auto first = texts_.begin() + static_cast<std::ptrdiff_t>(address / 16);
    return std::vector<std::string>(first, first + static_cast<std::ptrdiff_t>(count));
  }
  bool isCode(uintptr_t address) override { return holds(address); }
  bool storeInt(uintptr_t address, int) override { return holds(address); }

private:
  [[nodiscard]] bool holds(uintptr_t address) const {
    return address % 16 == 0 && address / 16 < texts_.size();
  }
  std::vector<std::string> texts_;
};

void require(bool holds) {
  if (!holds)
    std::abort();
}

/// What the rest of the host relies upon.
void check(const Effect &effect) {
  require(!effect.sign.empty() && !effect.name.empty() && !effect.statements.empty());
  const int count = static_cast<int>(effect.fields.size());
  for (const Field &field : effect.fields) {
    require(field.min.has_value() == field.max.has_value() && !(field.min > field.max));
    for (const int member : field.members)
      require(member >= 0 && member < count);
  }
  if (effect.icon)
    require(effect.icon->pixels.size() ==
            static_cast<size_t>(effect.icon->width) * static_cast<size_t>(effect.icon->height));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::vector<std::string> texts(1);
  for (size_t i = 0; i < size; ++i)
    if (data[i] == 0)
      texts.emplace_back();
    else
      texts.back() += static_cast<char>(data[i]);
  const std::string script = std::move(texts[0]);
  texts.erase(texts.begin());

  FuzzedMemory memory(std::move(texts));
  zol::host::Registry registry;
  zol::host::Interpreter interpreter(registry, memory);
  const long long result = interpreter.execute(script);
  interpreter.execute("EffectAdd( eff );");
  for (const Effect &effect : registry.effects())
    check(effect);
  for (const auto &error : interpreter.errors())
    require(error.column >= 1 && error.column <= error.statement.size() + 1 && !error.reason.empty());
  require(result == 0 || interpreter.errors().size() <= 1);
  return 0;
}
