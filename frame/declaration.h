// What an effect's declare function says to the host, statement by statement.
#pragma once

#include "frame/export.h"
#include "frame/zol.h"

#include <cinttypes>
#include <cstdint>

/// The conversion for an address in a statement: 0x and upper-case hexadecimal digits.
#define ZOL_ADDRESS "0x%" PRIXPTR

namespace zol {

/// Whether the host says it is `name`, without regard to case.
bool hostIs(const t_ZoHostInfo *host, const char *name);

/// An object's or function's address as ZOL_ADDRESS prints it.
template <class T> uintptr_t address(T *object) { return reinterpret_cast<uintptr_t>(object); }

/// One effect record under declaration. Each call sends one statement at once, in the order of the
/// calls; nothing is registered before end(). Answers of the host are not looked at.
class Declaration {
public:
  /// `variable` is the script's name for the record, "eff" or "obj"; `section` is the effect's short
  /// name, under which the host translates its texts (null where none is translated).
  Declaration(t_ZoHostInfo *host, const char *variable, const char *section)
      : host_(host), variable_(variable), section_(section) {}

  /// The record, its sign, its menu path and its version, a statement each.
  void begin(const char *sign, const char *name, int version) const;
  /// The same in a single text.
  void beginCombined(const char *name, const char *sign, unsigned version) const;

  void description(const char *text) const;  ///< 8-bit, as it is
  void descriptionW(const char *text) const; ///< translated by the host
  void icon(const char *const *xpm) const;
  void iconMode(const char *mode) const;
  void type(const char *type) const;

  void init(t_ZoInitFn callback) const { member("InitFunction", address(callback)); }
  void renderVideo(t_ZoRenderVideoFn callback) const { member("RenderVideoFunction", address(callback)); }
  void renderVideoRT(t_ZoRenderVideoRTFn callback) const {
    member("RenderVideoFunctionRT", address(callback));
  }
  void renderAudio(t_ZoRenderAudioFn callback) const { member("RenderAudioFunction", address(callback)); }
  void onDialogOpen(t_ZoDialogOpenFn callback) const { member("OnDialogOpen", address(callback)); }
  void onDialogItemEdit(t_ZoDialogItemEditFn callback) const {
    member("OnDialogItemEdit", address(callback));
  }

  /// Sends any other statement, data fields above all.
  template <class... Arguments> void send(const char *format, Arguments... arguments) const {
    ZoScriptExecuteHi(host_, format, arguments...);
  }
  /// The address of the host's 16-bit form of a text, for a label.
  [[nodiscard]] uintptr_t word(const char *text) const;

  /// One translated item of the selector with this id.
  void item(int id, const char *text, unsigned value) const;
  /// A translated help text for the field with this id.
  void help(int id, const char *text) const;

  /// Registers the record.
  void end() const;

private:
  void member(const char *name, uintptr_t value) const;

  t_ZoHostInfo *host_;
  const char *variable_;
  const char *section_;
};

} // namespace zol
