// What the library sees of the host: the services table and the context, over one effect's parameters.
#pragma once

#include "frame/zol.h"
#include "host/model/parameters.h"
#include "host/services/faults.h"
#include "host/services/pools.h"

#include <deque>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zol::host {

/// One effect instance as its callbacks see it. A thread works with one session at a time, the youngest
/// that is alive or the one that a Use names; services without a context argument depend on it. A session
/// ends on the thread that made it, in whatever order.
class Session {
public:
  explicit Session(std::string identity);
  ~Session();
  Session(const Session &) = delete;
  Session &operator=(const Session &) = delete;

  /// From now on it is a thread's current one only where a Use says so, and may end on any thread.
  void detach();

  /// Makes a session the thread's current one for as long as the object lives.
  class Use {
  public:
    explicit Use(Session &session);
    ~Use();
    Use(const Use &) = delete;
    Use &operator=(const Use &) = delete;

  private:
    Session *session_;
  };

  /// The context to pass to an entry or callback. Its members may be set freely, Services aside.
  t_ZoHostInfo *info() { return &info_; }

  PicturePool pictures;
  AudioPool audio;
  Parameters parameters;
  Faults faults;

  /// Asked at every poll of IsAborted: whether the render is to stop. None: never.
  std::function<bool()> stop;
  /// What ClipGetDefault answers.
  Clip *defaultClip = nullptr;
  /// What ScriptExecute and ScriptExecuteHi do with a statement.
  std::function<long long(const char *)> onStatement;
  /// Told of every 16-bit text handed out.
  std::function<void(const std::u16string &)> onTranslated;
  /// Input slots that the user has selected in the dialog, for InputsRemoveSelected.
  std::vector<int> selectedInputs;

  /// Texts shown through Message, in order; a null text is nullopt.
  std::vector<std::optional<std::string>> messages;
  /// What an input threw while an effect asked it for a frame or for sound; the effect was told "none".
  std::exception_ptr inputError;
  /// Misuses of the border: wrong frees, foreign handles.
  std::vector<std::string> complaints;
  /// Every call as text, such as "ParamGetFloat(1, 0, 0.5)", while tracing is on.
  bool tracing = false;
  std::vector<std::string> trace;

  /// The session behind the services that carry no context. Must be one.
  static Session &current();

  /// Holds a text that the library was given, at the same place for as long as the session lives.
  const std::u16string &keep(std::u16string text);

private:
  std::string identity_;
  t_ZoHostInfo info_{};
  std::deque<std::u16string> kept_;
};

/// The table that every session's context points at.
const t_ZoServices &services();

} // namespace zol::host
