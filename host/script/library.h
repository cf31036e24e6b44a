// A loaded effects library and all that it declared.
#pragma once

#include "host/model/registry.h"
#include "host/script/interpreter.h"
#include "host/script/memory.h"

#include <memory>
#include <string>
#include <vector>

namespace zol::host {

class EffectLibrary {
public:
  /// Loads the file, a path, and has it declare itself to a host of the given identity. Throws HostError when
  /// it is no whole library for this machine, cannot be loaded or has no entry; statements in error are kept
  /// in errors(). The bare name of the default file is left to the loader to find; no name at all is this
  /// program itself.
  EffectLibrary(const std::string &file, const std::string &identity);

  /// The same with effects that are linked already, whose entry is given.
  EffectLibrary(int (*declare)(t_ZoHostInfo *), const std::string &identity);

  /// The library that stands beside this program.
  static std::string defaultFile();
  /// The file that was named, or else that one.
  static std::string fileFor(const std::string &named) { return named.empty() ? defaultFile() : named; }

  [[nodiscard]] const Registry &registry() const { return registry_; }
  [[nodiscard]] const std::vector<Interpreter::Error> &errors() const { return interpreter_->errors(); }
  [[nodiscard]] const std::string &identity() const { return identity_; }

  /// The one effect that the user means. Throws HostError with the candidates where there are several, or the
  /// nearest names where there is none.
  [[nodiscard]] const Effect &effect(const std::string &wanted) const;

private:
  struct Close {
    void operator()(void *handle) const;
  };

  void declareBy(int (*declare)(t_ZoHostInfo *));

  std::string identity_;
  std::unique_ptr<void, Close> handle_;
  std::unique_ptr<ProcessMemory> memory_;
  Registry registry_;
  std::unique_ptr<Interpreter> interpreter_;
};

} // namespace zol::host
